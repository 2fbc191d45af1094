#include "lrd/Verdicts.h"

#include <algorithm>
#include <span>

#include "lrd/Endings.h"
#include "lrd/RecordFiles.h"
#include "lrd/RecordReader.h"
#include "lrd/XmlFile.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMNullHandleError.h"

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
    for (const CadObject& object : objects) {
      const ZYMIDOMElement_var element = Append(list, "cadobject");
      element->setAttribute("cadid", std::to_string(elements_.size() + 1));
      element->setAttribute("filename", object.name);
      element->setAttribute("dirname", object.folder);
      elements_.push_back(element);
    }
  }

  const ZYMIDOMElement_var& Root() const { return root_; }
  const ZYMIDOMElement_var& operator[](std::size_t index) const { return elements_[index]; }
  /// How many objects the module has written a verdict into; it goes through them in order.
  std::size_t Decided() const {
    const auto undecided = std::find_if(elements_.begin(), elements_.end(), [](const ZYMIDOMElement_var& element) {
      return !HasAttribute(element, "status");
    });
    return static_cast<std::size_t>(undecided - elements_.begin());
  }

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
  std::vector<ZYMIDOMElement_var> elements_;
};

Verdict VerdictOn(const ZYMIDOMElement_var& element) {
  const ZYMUnicodeString status = Attribute(element, "status");
  return status == "EXISTS" ? Verdict::Exists : status == "MODIFIED" ? Verdict::Modified : Verdict::Unknown;
}

/// Takes down the reasons for the verdicts on objects, which the module gives in order.
class Listener : public EndingObserver {
 public:
  explicit Listener(std::span<CadObject> objects) : next_(objects.begin()) {}
  void Decided(const ZYMIDOMElement_var& /*object*/, const QELXVARDOSReason& reason) override {
    // The paths are known here, and many objects need much memory.
    (next_++)->reason = {reason.kind, {}, reason.fileStamp, reason.recordStamp, {}, reason.failure};
  }

 private:
  std::span<CadObject>::iterator next_;
};

class Recogniser {
 public:
  explicit Recogniser(const Configuration& configuration) : configuration_(configuration) {}

  /// Answers how many objects from the front are decided: all, or those up to the first damaged record, that one
  /// included.
  std::size_t DecideFront(std::span<CadObject> objects) {
    const Request request(objects);
    const std::size_t sound = SoundFront(request, objects);
    for (std::size_t i = 0; i < sound; ++i) {
      objects[i].verdict = VerdictOn(request[i]);
    }
    if (sound == objects.size()) {
      return sound;
    }
    Blame(objects[sound]);
    return sound + 1;
  }

 private:
  /// How many objects the module recognised before it met a record that it cannot take. A file that does not parse
  /// stops it with the verdict on its object written, an incomplete record before that.
  std::size_t SoundFront(const Request& request, std::span<CadObject> objects) {
    Listener listener(objects);
    QELXIVARDOSRecognitionHandler_var handler;
    QELXIVARDOSLRDObject_varZYMUnicodeStringDico records;
    QELVARDOSSystemUtils::SetLastError("");
    // A person asks what the records say, also when the client would send this very command without them.
    QELXVARDOSRecognitionFactory().GetRecognitionHandler(CommandName, configuration_.object, request.Root(), handler);
    try {
      handler->SetObserver(&listener);
      const HRESULT status = handler->Recognize(request.Root(), records);
      EndWhenAsked();
      const std::size_t decided = request.Decided();
      return SUCCEEDED(status) ? objects.size() : decided - std::min<std::size_t>(decided, 1);
    } catch (const ZYMNullHandleError& error) {
      return std::min(request.Decided(), objects.size() - 1);
    }
  }

  /// In the module's own words.
  void Blame(CadObject& object) {
    const std::string file = RecordFileOf(object.folder, object.record);
    const std::string refusal =
        object.reason.failure.IsEmpty() ? QELVARDOSSystemUtils::LastError() : object.reason.failure.Str();
    const bool isUnseen = object.reason.kind == QELXVARDOSReason::Kind::CannotBeLookedAt;
    object.verdict = Verdict::Damaged;
    object.damage = isUnseen ? refusal : file + ": " + WithoutFile(refusal, file);
  }

  const Configuration& configuration_;
};

}  // namespace

void Decide(std::vector<CadObject>& objects, const Configuration& configuration,
            const std::function<void(std::size_t decided)>& tell) {
  Recogniser recogniser(configuration);
  std::span<CadObject> rest(objects);
  // Behind a damaged record the next request is small and grows again with each that goes through, so that even damage
  // everywhere costs time in proportion to the number of objects.
  std::size_t size = LargestRequest;
  while (!rest.empty()) {
    const std::size_t asked = std::min(size, rest.size());
    const std::size_t decided = recogniser.DecideFront(rest.first(asked));
    const bool sound = rest[decided - 1].verdict != Verdict::Damaged;
    size = sound ? std::min(size * 2, LargestRequest) : 1;
    rest = rest.subspan(decided);
    tell(objects.size() - rest.size());
  }
}

}  // namespace lrd
