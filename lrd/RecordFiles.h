#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lrd {

/// How the name of an object file leads to that of its record file.
enum class Naming {
  /// Name and ".xml".
  Whole,
  /// All versions "part.prt.N" of a file share the record "part.prt.xml".
  Creo,
  /// Not known: as Creo, but a file that has a record of its whole name keeps it.
  Either
};

std::string Join(const std::string& folder, const std::string& name);
/// The record file of the object that is called record in that folder.
std::string RecordFileOf(const std::string& folder, const std::string& record);

/// A folder of CAD object files and the record files beside them.
struct CadFolder {
  /// Empty for the working folder.
  std::string path;
  std::set<std::string> files;
  /// Why the folder cannot be listed, so that files may be missing above; empty when it can.
  std::string fault;
  /// The files in the record folder.
  std::set<std::string> recordFolder;
  /// What else lies there: folders, pipes, sockets, devices, links to nothing.
  std::set<std::string> strangers;
  /// Those of them that are folders.
  std::set<std::string> innerFolders;
  /// Why the record folder cannot be listed, or is none; empty when it can, or when there is none.
  std::string recordFolderFault;

  std::string RecordFolderPath() const;
  /// The records by name: their files' names without ".xml". Temporary files are none, and a file without a name.
  std::set<std::string> Records() const;
  /// From the name of a record, there or not, to the object file that it speaks of: the newest version.
  std::map<std::string, std::string> NewestObjectFiles(Naming naming) const;
};

/// What a place is called that was one thing at one look and another at the next.
std::string ChangedMeanwhile();

/// What the name of a record file ends with.
inline constexpr std::string_view RecordSuffix = ".xml";

/// The record files that lie in folders inside the record folder, where the module looks for none. complain is told of
/// folders that cannot be listed.
std::vector<std::string> MisplacedRecords(
    const CadFolder& folder, const std::function<void(const std::string& path, const std::string& reason)>& complain);

/// What is in one folder.
CadFolder ListCadFolder(const std::string& path);

/// Shows visit every folder below the roots, the roots included, each once, in the order of their paths, whatever
/// spellings or links the roots lead to it by; of equal roots the first spelling counts. Links to folders are not
/// followed and hidden folders not entered. A root that is a record folder stands for the folder above it, alone. A
/// root that is no folder ends the command; complain is told of folders that cannot be listed.
void WalkCadFolders(const std::vector<std::string>& roots, const std::function<void(const CadFolder&)>& visit,
                    const std::function<void(const std::string& path, const std::string& reason)>& complain);

/// The folder above the record folder in which a record file lies, and the record's name; the name is empty when the
/// file lies in no record folder.
struct RecordPlace {
  std::string folder;
  std::string record;
};
RecordPlace PlaceOf(const std::string& recordFile);

}  // namespace lrd
