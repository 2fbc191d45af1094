#pragma once

#include <string>
#include <string_view>

#include "benchmarks/Floors.h"

/// The made-up objects that everything here works on: part i with its file, its record and what a request or a response
/// says of it, 500 in a folder.
namespace Parts {

constexpr int PerFolder = 500;

std::string Folder(const std::string& root, int part);
std::string RecordFolder(const std::string& root, int part);
std::string FileName(int part);
std::string RecordName(int part);
std::string CadId(int part);
std::string Phid(int part);
std::string RelationshipId(int part);
std::string RelationshipPhid(int part);
/// The time that the object file gets, and the stamp of it.
std::int64_t Time(int part);

/// The six texts of the part's record or of its entry in another one. edition: makes another CE stamp.
Floors::Element Facts(int part, const char* elementName, int edition = 0);
/// A "rel" entry for the part.
Floors::Element Relationship(int part);
Floors::Record Record(const std::string& root, int part, int edition = 0);
/// The text of a record as the module writes it.
std::string RecordText(const Floors::Record& record);

/// The attributes of the part's "cadobject" in a request, and in the answer of a server.
std::string RequestAttributes(const std::string& root, int part);
std::string AnswerAttributes(const std::string& root, int part);

/// These four for count parts, numbered from 0.
void MakeFolders(const std::string& root, int count);
/// Their folders too.
void MakeRecordFolders(const std::string& root, int count);
void MakeObjectFiles(const std::string& root, int count);
/// A record beside each object file, written by hand.
void MakeRecordFiles(const std::string& root, int count, bool withRelationships);

void WriteTextFile(const std::string& path, std::string_view text);
std::string ReadTextFile(const std::string& path);
/// So that what was prepared is not paid for by what is measured.
void FlushDiskOf(const std::string& path);

}  // namespace Parts
