#pragma once

#include <map>
#include <string>

#include "lrd/Endings.h"

namespace lrd {

/// Remembers the record files of format versions that the module does not know.
class FormatWatch : public EndingObserver {
 public:
  void UnknownFormat(const ZYMUnicodeString& recordFile, const ZYMUnicodeString& version) override {
    versions_.emplace(recordFile.Str(), version.Str());
  }

  /// From the file to the version.
  const std::map<std::string, std::string>& Found() const noexcept { return versions_; }

 private:
  std::map<std::string, std::string> versions_;
};

}  // namespace lrd
