#pragma once

#include <pugixml.hpp>
#include <string>
#include <vector>

/// The least that any program has to do for the results that the module gets: pugixml and the system, in the plainest
/// way, and none of our code. What the module's times are held against.
namespace Floors {

/// Recognises each object of the request by its own record. Answers how many of them are EXISTS.
int Recognize(pugi::xml_document& request);

/// Recognises objects without files by their entries in one record file. Answers how many are EXISTS.
int RecognizeInParent(pugi::xml_document& request, const std::string& recordFile);

/// Decides for each object from the request alone. Answers how many are EXISTS.
int RecognizeWithoutRecords(pugi::xml_document& request);

/// Takes everything out of a tree: copies all attributes and stats each object file. Answers how many elements it saw.
int TakeAll(const pugi::xml_document& tree);

/// An entry in a record: its texts as tag and value.
struct Element {
  std::string name;
  std::string id;
  std::vector<std::pair<const char*, std::string>> texts;
};

struct Record {
  std::string folder;
  std::string file;  ///< its name within the folder
  Element object;
  std::vector<Element> nested;
  /// Whose time is to be the "objectChangeStamp"; empty where that is known.
  std::string objectFile;
};

enum class Folders { Exist, Make };

/// Writes all records, each by a temporary file that is renamed when all of them are on the disk.
void Write(const std::vector<Record>& records, Folders folders);

/// Reads all record files. Answers how many bytes they have.
std::size_t Read(const std::vector<Record>& records);

}  // namespace Floors
