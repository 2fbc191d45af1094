#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "component/QELXVARDOSReason.h"
#include "lrd/FormatWatch.h"
#include "lrd/JsonText.h"
#include "lrd/Verdict.h"
#include "platform/ZYMIDOM.h"

namespace lrd {

/// Why one object of a request got its verdict.
struct ExplainedObject {
  std::string Path() const;

  /// Counted from 0 in the request.
  std::size_t number = 0;
  ZYMUnicodeString cadId;
  ZYMUnicodeString folder;
  ZYMUnicodeString name;
  Verdict verdict = Verdict::NotReached;
  /// Null for one that was not reached.
  const QELXVARDOSReason* reason = nullptr;
};

/// What wants to know of the objects of a recognition, one after another in the order of the request. It takes from
/// each what it needs: of a hundred thousand objects nothing is kept that nobody asks for.
class ExplanationSink {
 public:
  ExplanationSink() = default;
  ExplanationSink(const ExplanationSink&) = delete;
  ExplanationSink& operator=(const ExplanationSink&) = delete;
  virtual ~ExplanationSink() = default;

  /// The object lives as long as the call.
  virtual void Take(const ExplainedObject& object) = 0;
  /// An object that was taken before has the record file of the one with that CAD id.
  virtual void TakeSharing(std::size_t /*number*/, const ZYMUnicodeString& /*with*/) {}
};

/// Listens to the recognition of a request and hands on what becomes of each object. The one place from which all comes
/// that is told of verdicts and their reasons.
class Explainer : public FormatWatch {
 public:
  /// request: the tree that will be recognised.
  explicit Explainer(const ZYMIDOMElement_var& request) : request_(request) {}

  /// Sinks are not owned. Those for details have the module find out what is doubtful, and are told of chosen objects
  /// alone.
  void TellAll(ExplanationSink& sink) { sinks_.push_back(&sink); }
  void TellDetails(ExplanationSink& sink) { detailSinks_.push_back(&sink); }
  /// Answers an id that no object of the request has, if there is one.
  std::optional<std::string> Choose(const std::vector<std::string>& cadIds);
  /// Tells of the objects that were not reached.
  void Finish();

  Reasons WantsReasons() override {
    return !detailSinks_.empty() ? Reasons::Detailed : !sinks_.empty() ? Reasons::Plain : Reasons::None;
  }
  void Decided(const ZYMIDOMElement_var& object, const QELXVARDOSReason& reason) override;
  void SharedRecordFile(int first, int other) override;

 private:
  void Take(const ZYMIDOMElement_var& object, const QELXVARDOSReason* reason);
  void TellSharing(int number, int with);
  const ZYMUnicodeString& CadIdOf(std::size_t number);
  bool IsChosen(std::size_t number) const { return !chosen_ || chosen_->count(number) != 0; }

  ZYMIDOMElement_var request_;
  std::vector<ExplanationSink*> sinks_;
  std::vector<ExplanationSink*> detailSinks_;
  std::optional<std::set<std::size_t>> chosen_;
  std::size_t decided_ = 0;
  /// Used again for each.
  ExplainedObject object_;
  /// Who shares is told once of it.
  std::set<int> sharing_;
  /// Of all objects, from when one is first asked for.
  std::vector<ZYMUnicodeString> cadIds_;
};

/// The lines of objects: "M P2 cad/casing.prt.6: file is newer than its record (...)".
class ExplanationLines : public ExplanationSink {
 public:
  void Take(const ExplainedObject& object) override;
  void TakeSharing(std::size_t number, const ZYMUnicodeString& with) override;
  void Print() const;

 private:
  struct Line {
    std::size_t number;
    std::size_t end;
    Colour colour;
  };
  /// One behind the other.
  std::string text_;
  std::vector<Line> lines_;
  /// What came to be known of an object when its line was written.
  std::map<std::size_t, std::string> later_;
};

/// The same as an array.
class ExplanationJson : public ExplanationSink {
 public:
  void Take(const ExplainedObject& object) override;
  void TakeSharing(std::size_t number, const ZYMUnicodeString& with) override;
  Json Objects() { return std::move(objects_); }

 private:
  Json objects_ = Json::array();
  std::vector<std::size_t> numbers_;
};

/// The objects whose record could not be taken.
class FailedObjects : public ExplanationSink {
 public:
  void Take(const ExplainedObject& object) override;
  /// Names them on standard error; answers whether there are none.
  bool Complain() const;

 private:
  std::vector<std::pair<std::string, std::string>> failures_;
};

}  // namespace lrd
