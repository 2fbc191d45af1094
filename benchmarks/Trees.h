#pragma once

#include <pugixml.hpp>
#include <string>

/// The trees that the benchmarks work on, kept as files below the data folder, and what must come of them.
namespace Trees {

/// The root of a tree of exactly so many object files with their records. Made when it is not there yet.
std::string ObjectsWithRecords(const std::string& data, int count);
/// The same, with a relationship in each record.
std::string ObjectsWithRelationships(const std::string& data, int count);

/// Puts text into a file of the data folder, where it is not there yet. Answers its path.
std::string File(const std::string& data, const std::string& name, const std::string& text);

enum class Relationships { Without, With };
/// A request for count parts, numbered from 0, below root, with or without a relationship for each.
std::string Request(const std::string& root, int count, Relationships relationships = Relationships::Without);

/// Throws unless all parts are EXISTS with all that their records tell.
void ExpectRecognized(const pugi::xml_document& request, int count);

}  // namespace Trees
