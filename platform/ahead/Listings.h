#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "platform/QELVARDOSFileLayer.h"

/// What listings tell of files that are not there. A folder in which several files in turn were not found is listed,
/// and what the listing does not name needs no look of its own. Nothing is concluded but absence, and that only of
/// names that mean the same to every file system. May be used by many threads at once.
class Listings {
 public:
  explicit Listings(QELVARDOSFileLayer& disk) : disk_(disk) {}

  bool TellMissing(const std::string& path);
  /// May list the folder, which others do not wait for.
  void WasMissing(const std::string& path);
  /// A listing without a file that is there is not believed.
  void WasFound(const std::string& path);
  /// Something may be there by now.
  void Changed(const std::string& path);

 private:
  struct Folder {
    enum class State { Unlisted, BeingListed, Listed, NotBelieved };

    State state = State::Unlisted;
    std::size_t missing = 0;
    std::size_t found = 0;
    std::set<std::string, std::less<>> names;
  };

  QELVARDOSFileLayer& disk_;
  std::mutex mutex_;
  std::map<std::string, Folder, std::less<>> folders_;
};
