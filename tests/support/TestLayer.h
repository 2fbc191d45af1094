#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"

/// The layer in use under a test's eyes: it notes what is asked of it, and lets operations end with an error, as a
/// folder without rights or a failing disk would.
class TestLayer : public QELVARDOSFileLayerFilter {
 public:
  using Names = std::vector<std::string>;
  using Errors = std::vector<std::error_code>;
  /// Asked before each operation, for each of its paths; what it answers is the operation's error, if it is one.
  using Ask = std::function<std::error_code(const std::string& operation, const std::string& path)>;

  explicit TestLayer(Ask ask = {}) : QELVARDOSFileLayerFilter(Current()), ask_(std::move(ask)) {}

  /// Every look at the path ends with the error.
  void Hide(const std::string& path, std::errc error) { failing["Stat " + path] = failing["Read " + path] = error; }
  /// What was asked for by this operation: its path, or its paths with blanks between them.
  Names Of(const std::string& operation) const {
    Names paths;
    for (const std::string& call : calls) {
      if (call.starts_with(operation + " ")) {
        paths.push_back(call.substr(operation.size() + 1));
      }
    }
    return paths;
  }
  /// The calls that are to change something.
  Names Changes() const {
    Names changes;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(changes), [](const std::string& call) {
      const std::string operation = call.substr(0, call.find(' '));
      return operation != "Stat" && operation != "Read" && operation != "List" && operation != "ClaimFolder";
    });
    return changes;
  }

  QELVARDOSFileFacts Stat(const std::string& path) override {
    const std::error_code error = ErrorOf("Stat", {path});
    QELVARDOSFileFacts facts =
        error ? QELVARDOSFileFacts{QELVARDOSFileFacts::Kind::Unseen, 0, 0, error} : Next().Stat(path);
    if (tellsNoNanoseconds) {
      facts.nanoseconds = std::nullopt;
    }
    return facts;
  }
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override {
    const std::error_code error = ErrorOf("Read", {path});
    return error ? error : Next().Read(path, bytes, atMost);
  }
  std::error_code List(const std::string& folder, Names& names) override {
    const std::error_code error = ErrorOf("List", {folder});
    return error ? error : Next().List(folder, names);
  }
  std::error_code ClaimFolder(const std::string& folder, QELVARDOSFolderUse use, QELVARDOSFolderClaim& claim) override {
    const std::error_code error = ErrorOf("ClaimFolder", {folder});
    return error ? error : Next().ClaimFolder(folder, use, claim);
  }
  std::error_code MakeFolder(const std::string& path) override {
    const std::error_code error = ErrorOf("MakeFolder", {path});
    return error ? error : Next().MakeFolder(path);
  }
  std::error_code HideFolder(const std::string& path) override {
    const std::error_code error = ErrorOf("HideFolder", {path});
    return error ? error : Next().HideFolder(path);
  }
  std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) override {
    const std::error_code error = ErrorOf("WriteNew", {path});
    return error ? error : Next().WriteNew(path, bytes, like);
  }
  Errors MakeDurable(const Names& paths) override {
    const Errors errors = ErrorsOf("MakeDurable", paths);
    return Joined(errors, Next().MakeDurable(paths));
  }
  Errors MakeFoldersDurable(const Names& paths) override {
    const Errors errors = ErrorsOf("MakeFoldersDurable", paths);
    return Joined(errors, Next().MakeFoldersDurable(paths));
  }
  std::error_code Rename(const std::string& from, const std::string& to) override {
    const std::error_code error = ErrorOf("Rename", {to});
    return error ? error : Next().Rename(from, to);
  }
  std::error_code Remove(const std::string& path) override {
    const std::error_code error = ErrorOf("Remove", {path});
    return error ? error : Next().Remove(path);
  }
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error) override {
    EXPECT_EQ(outcome == QELVARDOSReplacement::Failed, static_cast<bool>(error));
    const std::string fate = error                                             ? error.message()
                             : outcome == QELVARDOSReplacement::AlreadyTheSame ? "already the same"
                                                                               : "written";
    fates.push_back(std::filesystem::path(path).filename().string() + ": " + fate);
    Next().Replaced(path, outcome, error);
  }

  /// As a host's own layer may be that was written before it could.
  bool tellsNoNanoseconds = false;
  /// "Operation path" of what fails.
  std::map<std::string, std::errc> failing;
  /// "Operation path" of all that was asked for. A test may hold the layer as a constant, and it is asked nevertheless.
  mutable Names calls;
  /// What became of each file that was to be replaced: "name: words".
  mutable Names fates;

 private:
  Errors ErrorsOf(const std::string& operation, const Names& paths) const {
    std::string call = operation;
    Errors errors;
    for (const std::string& path : paths) {
      call.append(" ").append(path);
      const auto fault = failing.find(std::string(operation).append(" ").append(path));
      const std::error_code asked = ask_ ? ask_(operation, path) : std::error_code();
      errors.push_back(fault == failing.end() ? asked : std::make_error_code(fault->second));
    }
    const std::scoped_lock guard(mutex_);
    calls.push_back(call);
    return errors;
  }
  std::error_code ErrorOf(const std::string& operation, const Names& path) const {
    return ErrorsOf(operation, path).front();
  }
  static Errors Joined(Errors wanted, const Errors& real) {
    std::transform(wanted.begin(), wanted.end(), real.begin(), wanted.begin(),
                   [](const std::error_code& a, const std::error_code& b) { return a ? a : b; });
    return wanted;
  }

  Ask ask_;
  /// Operations may come from several threads at once.
  mutable std::mutex mutex_;
  const QELVARDOSUseFileLayer use_{*this};
};
