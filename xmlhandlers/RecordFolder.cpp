#include "xmlhandlers/RecordFolder.h"

#include <string_view>

#include "records/QELXVARDOSLRDConstants.h"

bool LeavesRecordFolder(const ZYMUnicodeString& path) {
  std::string_view rest = path.View();
  if (rest.find("..") == std::string_view::npos) {
    return false;
  }
  bool inside = false;
  while (!rest.empty()) {
    const std::size_t slash = rest.find('/');
    const std::string_view part = rest.substr(0, slash);
    if (inside && part == "..") {
      return true;
    }
    inside = inside || part == FileName::RecordFolder.View();
    rest.remove_prefix(slash == std::string_view::npos ? rest.size() : slash + 1);
  }
  return false;
}
