#include "recognition/RecognizeCall.h"

#include <bit>
#include <functional>
#include <utility>

#include "platform/QELVARDOSFileError.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

namespace {

using Record = QELXIVARDOSLRDObject_var;

// Depth first, parents before their children: the order in which GetChildObject looks.
void AddWithNested(RecordIndex& index, const QELXIVARDOSLRDObject_varList& records) {
  for (const Record& record : records) {
    index.Add(record->GetId(), record);
    AddWithNested(index, record->GetChildren());
  }
}

std::uint32_t HashOf(const ZYMUnicodeString& text) {
  return static_cast<std::uint32_t>(std::hash<ZYMUnicodeString>()(text));
}

QELVARDOSFileFacts Facts(const ZYMUnicodeString& path) { return QELVARDOSFileLayer::Current().Stat(path.Str()); }

}  // namespace

RecordIndex RecordIndex::ById(const QELXIVARDOSLRDObject_varList& records) {
  RecordIndex index;
  for (const Record& record : records) {
    index.Add(record->GetId(), record);
  }
  return index;
}

QELXIVARDOSLRDObject_var RecordIndex::FindLast(const QELXIVARDOSLRDObject_varList& wanted) const {
  Record last;
  for (const Record& record : wanted) {
    if (const Record found = Find(record->GetId()); found) {
      last = found;
    }
  }
  return last;
}

QELXIVARDOSLRDObject_var ParentRecord::FindChild(const ZYMUnicodeString& id) {
  if (!children_) {
    AddWithNested(children_.emplace(), record_->GetChildren());
  }
  return children_->Find(id);
}

QELXIVARDOSLRDObject_var ParentRecord::FindRelationship(const QELXIVARDOSLRDObject_varList& wanted) {
  if (!relationships_) {
    relationships_ = RecordIndex::ById(record_->GetChildRelationships());
  }
  return relationships_->FindLast(wanted);
}

QELXIVARDOSLRDObject_var ParentRecord::FindRelatedChild(const ZYMUnicodeString& physicalId) {
  if (!relatedChildren_) {
    relatedChildren_.emplace();
    for (const Record& child : record_->GetRelatedChildren()) {
      relatedChildren_->Add(child->GetPhysicalId(), child);
    }
  }
  return relatedChildren_->Find(physicalId);
}

RequestRelationships::RequestRelationships(const ZYMIDOMNode_var& request) {
  const ZYMIDOMElement_var element(request);
  const ZYMIDOMElement_var list = element ? FirstElement(element, Word::RelationshipList) : ZYMIDOMElement_var();
  if (list.IsNull()) {
    return;
  }
  ForEachChildElement(list, [this](const ZYMIDOMElement_var& relationship) {
    const ZYMUnicodeString id = Attribute(relationship, Word::RelUuid);
    if (!id.IsEmpty() && Attribute(relationship, Word::Phid).IsEmpty()) {
      entries_.push_back({relationship, HashOf(id), 0});
    }
    return true;
  });
  untouched_.resize(std::bit_ceil(entries_.size()));
  emptied_.resize(untouched_.size());
  for (Number number = 1; number <= entries_.size(); ++number) {
    Entry& entry = entries_[number - 1];
    entry.next = std::exchange(ChainOf(untouched_, entry.hash), number);
  }
}

void RequestRelationships::Complete(const QELXIVARDOSLRDObject_var& record) {
  for (const Record& relationship : record->GetChildRelationships()) {
    if (!entries_.empty() && !relationship->GetId().IsEmpty()) {
      Complete(relationship->GetId(), relationship->GetPhysicalId());
    }
  }
}

void RequestRelationships::Complete(const ZYMUnicodeString& id, const ZYMUnicodeString& physicalId) {
  const std::uint32_t hash = HashOf(id);
  CompleteThoseIn(untouched_, id, hash, physicalId);
  if (!physicalId.IsEmpty()) {
    CompleteThoseIn(emptied_, id, hash, physicalId);
  }
}

// What is completed leaves its chain, so that nobody walks past it again.
void RequestRelationships::CompleteThoseIn(Chains& chains, const ZYMUnicodeString& id, std::uint32_t hash,
                                           const ZYMUnicodeString& physicalId) {
  for (Number* link = &ChainOf(chains, hash); *link != 0;) {
    const Number number = *link;
    Entry& entry = entries_[number - 1];
    if (entry.hash != hash || Attribute(entry.element, Word::RelUuid) != id) {
      link = &entry.next;
      continue;
    }
    entry.element->setAttribute(Word::Phid, physicalId);
    *link = entry.next;
    if (physicalId.IsEmpty()) {
      entry.next = std::exchange(ChainOf(emptied_, hash), number);
    }
  }
}

QELXVARDOSRecognitionHandler::RecognizeCall::RecognizeCall(QELXVARDOSRecognitionHandler& handler,
                                                           const ZYMIDOMNode_var& request,
                                                           const ZYMIDOMElement_var& unmapped)
    : handler_(handler),
      request_(request),
      unmapped_(unmapped),
      cadName_(handler.CadName()),
      reader_(ReaderFor(handler)),
      byPhysicalId_(ZYMMakeComponent<QELXVARDOSRecognitionHandlerNoLRD>(handler.command_)) {
  handler_.call_ = this;
}

RecordFileReader QELXVARDOSRecognitionHandler::RecognizeCall::ReaderFor(const QELXVARDOSRecognitionHandler& handler) {
  const auto files = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>(handler.config_);
  files->SetObserver(handler.observer_);
  return files->Reader();
}

QELXVARDOSRecognitionHandler::RecognizeCall::~RecognizeCall() { handler_.call_ = nullptr; }

const ZYMIDOMNode_varZYMUnicodeStringDico& QELXVARDOSRecognitionHandler::RecognizeCall::Filled(
    ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap) {
  if (unmapped_) {
    handler_.getCadidObjectNodeMap(std::exchange(unmapped_, nullptr), nodeMap);
  }
  return nodeMap;
}

void QELXVARDOSRecognitionHandler::RecognizeCall::Begin(const ZYMIDOMElement_var& object) {
  object_.paths = factory_.PathsOf(cadName_, object);
  object_.file = Facts(object_.paths.objectFile.ToString());
  doubt_.reset();
}

QELXVARDOSRecognitionHandler::RecognizeCall::ParentFile& QELXVARDOSRecognitionHandler::RecognizeCall::ParentAt(
    const ZYMUnicodeString& recordFile) {
  const auto [place, added] = parents_.try_emplace(recordFile.Str());
  if (added) {
    place->second.facts = Facts(recordFile);
  }
  return place->second;
}

const QELVARDOSFileFacts& QELXVARDOSRecognitionHandler::RecognizeCall::ParentFacts(const ZYMUnicodeString& recordFile) {
  return ParentAt(recordFile).facts;
}

HRESULT QELXVARDOSRecognitionHandler::RecognizeCall::ReadParent(const ZYMUnicodeString& recordFile,
                                                                QELXIVARDOSLRDObject_var& record) {
  ParentFile& file = ParentAt(recordFile);
  parent_ = &file.record;
  if (!file.read) {
    Record read;
    std::error_code error;
    const HRESULT status = reader_.ReadIfPresent(recordFile, read, error);
    if (error && SUCCEEDED(status)) {
      // It was there when the composition was looked for.
      return CannotTell(recordFile, QELVARDOSFileError::ChangedMeanwhile);
    }
    if (RecordFileReader::LeavesOpen(error, recordFile)) {
      return CannotTell(recordFile, error);
    }
    if (FAILED(status)) {
      return status;
    }
    file.record = ParentRecord(read);
    file.read = true;
  }
  record = file.record.Get();
  return S_OK;
}

QELVARDOSFileFacts QELXVARDOSRecognitionHandler::RecognizeCall::OwnRecordFacts() const {
  return Facts(object_.paths.recordFile);
}

HRESULT QELXVARDOSRecognitionHandler::RecognizeCall::CannotTell(const ZYMUnicodeString& path,
                                                                const std::error_code& reason) {
  doubt_ = Doubt{path, reason};
  return E_FAIL;
}

HRESULT QELXVARDOSRecognitionHandler::RecognizeCall::ReadOwn(QELXIVARDOSLRDObject_var& record) {
  const ZYMUnicodeString& path = object_.paths.recordFile;
  std::error_code error;
  const HRESULT status = reader_.ReadIfPresent(path, record, error);
  own_ = ParentRecord(record);
  parent_ = &own_;
  return RecordFileReader::LeavesOpen(error, path) ? CannotTell(path, error) : status;
}

RequestRelationships& QELXVARDOSRecognitionHandler::RecognizeCall::Relationships() {
  if (!relationships_) {
    relationships_.emplace(request_);
  }
  return *relationships_;
}
