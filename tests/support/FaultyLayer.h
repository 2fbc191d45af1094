#pragma once

#include <map>
#include <string>
#include <system_error>

#include "platform/QELVARDOSFileLayer.h"

/// Lets what is done with some paths end with an error, as a folder without rights or a failing disk would.
class FaultyLayer : public QELVARDOSFileLayerFilter {
 public:
  FaultyLayer() : QELVARDOSFileLayerFilter(Current()) {}

  QELVARDOSFileFacts Stat(const std::string& path) override {
    const auto fault = unseen.find(path);
    return fault == unseen.end() ? Next().Stat(path)
                                 : QELVARDOSFileFacts{QELVARDOSFileFacts::Kind::Unseen, 0, 0, Error(fault->second)};
  }
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override {
    for (const auto* faults : {&unseen, &unread}) {
      if (const auto fault = faults->find(path); fault != faults->end()) {
        return Error(fault->second);
      }
    }
    return Next().Read(path, bytes, atMost);
  }
  std::error_code Rename(const std::string& from, const std::string& to) override {
    const auto fault = unreplaced.find(to);
    return fault == unreplaced.end() ? Next().Rename(from, to) : Error(fault->second);
  }
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error) override {
    outcomes[path] = outcome;
    Next().Replaced(path, outcome, error);
  }

  /// What every look at a path ends with.
  std::map<std::string, std::errc> unseen;
  /// What only reading ends with.
  std::map<std::string, std::errc> unread;
  /// What taking the place of a file ends with.
  std::map<std::string, std::errc> unreplaced;
  std::map<std::string, QELVARDOSReplacement> outcomes;

 private:
  static std::error_code Error(std::errc reason) { return std::make_error_code(reason); }

  const QELVARDOSUseFileLayer use_{*this};
};
