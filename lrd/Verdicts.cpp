#include "lrd/Verdicts.h"

#include <algorithm>
#include <span>

#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/RecordFiles.h"
#include "lrd/RecordReader.h"
#include "lrd/XmlFile.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace lrd {

namespace {

constexpr const char* CommandName = "synclocalrecognition";
constexpr std::size_t LargestRequest = 1024;

/// A request for some objects, as the client would send it before a synchronisation.
class Request {
 public:
  explicit Request(std::span<const CadObject> objects) {
    MakeDocumentBuilder()->CreateDocument(document_);
    root_ = Append(document_, "command");
    root_->setAttribute("cname", CommandName);
    const ZYMIDOMElement_var list = Append(root_, "cadobjectlist");
    std::size_t count = 0;
    for (const CadObject& object : objects) {
      const ZYMIDOMElement_var element = Append(list, "cadobject");
      element->setAttribute("cadid", std::to_string(++count));
      element->setAttribute("filename", object.name);
      element->setAttribute("dirname", object.folder);
    }
  }

  const ZYMIDOMElement_var& Root() const { return root_; }

 private:
  ZYMIDOMElement_var Append(const ZYMIDOMNode_var& parent, const char* name) const {
    ZYMIDOMElement_var element;
    ZYMIDOMNode_var appended;
    document_->createElement(name, element);
    parent->appendChild(element, appended);
    return element;
  }

  ZYMIDOMDocument_var document_;
  ZYMIDOMElement_var root_;
};

/// Takes down what becomes of objects, which the module tells in order.
class Listener : public EndingObserver {
 public:
  Listener(std::span<CadObject> objects, bool wantsDetails) : next_(objects.begin()), wantsDetails_(wantsDetails) {}
  Reasons WantsReasons() override { return wantsDetails_ ? Reasons::Detailed : Reasons::Plain; }
  void Decided(const ZYMIDOMElement_var& element, const QELXVARDOSReason& reason) override {
    CadObject& object = *next_++;
    object.verdict = VerdictOf(Attribute(element, "status"));
    if (object.verdict == Verdict::Damaged) {
      Blame(object, reason);
    }
    object.reason = reason;
    // What is known here, or can be said in fewer words; many objects need much memory.
    object.reason.recordFile = object.reason.identifier = {};
    if (object.verdict == Verdict::Damaged) {
      object.reason.failure = {};
    }
    if (reason.kind != QELXVARDOSReason::Kind::UnknownFormat) {
      object.reason.formatVersion = {};
    }
  }

 private:
  /// In the module's own words.
  static void Blame(CadObject& object, const QELXVARDOSReason& reason) {
    const std::string file = RecordFileOf(object.folder, object.record);
    const bool isUnseen = reason.kind == QELXVARDOSReason::Kind::CannotBeLookedAt;
    object.damage = isUnseen ? reason.failure.Str() : file + ": " + WithoutFile(reason.failure.Str(), file);
  }

  std::span<CadObject>::iterator next_;
  bool wantsDetails_;
};

void DecideTogether(std::span<CadObject> objects, const Configuration& configuration, bool wantsDetails) {
  const Request request(objects);
  Listener listener(objects, wantsDetails);
  QELXIVARDOSRecognitionHandler_var handler;
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico records;
  // A person asks what the records say, also when the client would send this very command without them.
  QELXVARDOSRecognitionFactory().GetRecognitionHandler(CommandName, configuration.object, request.Root(), handler);
  handler->SetObserver(&listener);
  handler->SetKeepGoing(true);
  const HRESULT status = handler->Recognize(request.Root(), records);
  EndWhenAsked();
  if (FAILED(status)) {
    throw HostError(ModuleRefused, "Recognize: " + QELVARDOSSystemUtils::LastError());
  }
}

}  // namespace

void Decide(std::vector<CadObject>& objects, const Configuration& configuration, bool wantsDetails,
            const std::function<void(std::size_t decided)>& tell) {
  for (std::span<CadObject> rest(objects); !rest.empty();) {
    const std::size_t asked = std::min(LargestRequest, rest.size());
    DecideTogether(rest.first(asked), configuration, wantsDetails);
    rest = rest.subspan(asked);
    tell(objects.size() - rest.size());
  }
}

}  // namespace lrd
