#include "records/QELXVARDOSLRDObject.h"

#include <algorithm>
#include <new>
#include <unordered_set>
#include <utility>
#include <vector>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/Steps.h"
#include "platform/ZYMIDOMLook.h"
#include "records/FileStamp.h"
#include "records/IncompleteRecord.h"
#include "records/Nesting.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDVersionInfo.h"

QELXVARDOS_TRACED_HERE;

namespace {

const ZYMUnicodeString Empty;

constexpr const char* GetChildObjectStep = "QELXVARDOSLRDObject::GetChildObject";

using PendingReleases = std::vector<QELXIVARDOSLRDObject_var>;

// Set while records are being released one after the other. A plain pointer, because an object with a destructor would
// tie the module to the thread and keep it from being unloaded.
thread_local PendingReleases* pendingReleases = nullptr;

// Where there is no memory to put them off, they are released at once, which gives some back.
void MoveInto(PendingReleases& pending, QELXIVARDOSLRDObject_varList& records) noexcept {
  try {
    const std::size_t wanted = pending.size() + static_cast<std::size_t>(records.Size());
    if (wanted > pending.capacity()) {
      pending.reserve(std::max(wanted, 2 * pending.capacity()));
    }
    for (QELXIVARDOSLRDObject_var& record : records) {
      pending.push_back(std::move(record));
    }
  } catch (const std::bad_alloc&) {
  }
  records.RemoveAll();
}

// A new document with its document element.
HRESULT CreateDocument(const ZYMUnicodeString& rootName, ZYMIDOMDocument_var& document, ZYMIDOMElement_var& root) {
  ZYMIXMLDOMDocumentBuilder_var builder;
  if (const HRESULT status = CreateZYMIXMLDOMDocumentBuilder(builder, XML4C); FAILED(status)) {
    return status;
  }
  return builder->CreateDocumentWithRoot(rootName, document, root);
}

}  // namespace

// In the order of a file. The stamps of later formats stand before the last.
constexpr std::array<QELXVARDOSLRDObject::CoreValue, 4> QELXVARDOSLRDObject::CoreValues = {{
    {{Word::Phid, "AddPhysicalIdNode"}, &QELXVARDOSLRDObject::physicalId_},
    {{Word::ObjectChangeStamp, "AddObjectChangeStampNode"}, &QELXVARDOSLRDObject::objectChangeStamp_},
    {{Word::CEStamp, "AddCEStampNode"}, &QELXVARDOSLRDObject::ceStamp_},
    {{Word::Hashcode, "AddHashcodeNode"}, &QELXVARDOSLRDObject::hashcode_},
}};

QELXVARDOSLRDObject::QELXVARDOSLRDObject() : QELXVARDOSLRDObject(Format::Plain) {}

QELXVARDOSLRDObject::QELXVARDOSLRDObject(const ZYMIDOMNode_var& cadobject)
    : QELXVARDOSLRDObject(Format::Plain, cadobject) {}

QELXVARDOSLRDObject::QELXVARDOSLRDObject(const RecordFormat& format) : format_(format) {}

QELXVARDOSLRDObject::QELXVARDOSLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject)
    : format_(format) {
  const ZYMIDOMElement_var element(cadobject);
  if (element.IsNull()) {
    return;
  }
  physicalId_ = Attribute(element, Word::Phid);
  GetLocalFileStamp(element, objectChangeStamp_);
  ceStamp_ = Attribute(element, Word::CEStamp);
  cadId_ = Attribute(element, Word::CadId);
  hashcode_ = Attribute(element, Word::Hashcode);
  if (Attribute(element, Word::Selected) == Word::True || Attribute(element, Word::Download) == Word::True) {
    selectedFlag_ = Word::True;
  }
  mxType_ = Attribute(element, Word::MxType);
  type_ = Attribute(element, Word::Type);

  const ZYMUnicodeString fileName = Attribute(element, Word::FileName);
  const QELVARDOSPath folder = Attribute(element, Word::DirName);
  objectFile_ = folder / fileName;
  recordFolder_ = folder / FileName::RecordFolder;
  recordFile_ = recordFolder_ / (fileName + FileName::RecordSuffix);
}

QELXVARDOSLRDObject::~QELXVARDOSLRDObject() {
  ReleaseLater(children_);
  ReleaseLater(parentRelationships_);
  ReleaseLater(childRelationships_);
  ReleaseLater(relatedChildren_);
}

HRESULT QELXVARDOSLRDObject::GetLocalFileStamp(const ZYMIDOMElement_var& element, ZYMUnicodeString& stamp) {
  const Step step(Trace, "QELXVARDOSLRDObject::GetLocalFileStamp");
  const ZYMUnicodeString fileName = Attribute(element, Word::FileName);
  const QELVARDOSPath file =
      fileName.IsEmpty() ? QELVARDOSPath() : QELVARDOSPath(Attribute(element, Word::DirName)) / fileName;
  stamp = FileStamp(file, unseen_);
  Trace.Write("FileStamp for file : ", file.ToString(), " is : ", stamp);
  return step.Return(S_OK);
}

void QELXVARDOSLRDObject::TraceSteps(RecordFormat::Classes classes, const char* operation) {
  for (const RecordFormat* format : classes) {
    const Step step(Trace, format->name.CStr(), operation);
  }
}

HRESULT QELXVARDOSLRDObject::TraceReturns(RecordFormat::Classes classes, HRESULT status) {
  for (std::size_t open = classes.size(); open != 0; --open) {
    Step::Close(Trace, status);
  }
  return status;
}

HRESULT QELXVARDOSLRDObject::Initialize(const ZYMIDOMNode_var& node) {
  TraceSteps(format_.tracedReading, "Initialize");
  writeFlag_ = false;
  stateFlag_ = false;
  if (const ZYMIDOMElement_var element(node); element) {
    for (const CoreValue& value : CoreValues) {
      Read(value, element);
    }
  }
  return TraceReturns(format_.tracedReading, S_OK);
}

void QELXVARDOSLRDObject::ReadPhysicalId(const ZYMIDOMElement_var& element) { Read(CoreValues.front(), element); }

void QELXVARDOSLRDObject::Read(const CoreValue& value, const ZYMIDOMElement_var& element) {
  if (!TakeTextOfFirst(element, value.word, this->*value.field)) {
    throw IncompleteRecord(ZYMIDOMNode::ClassName(),
                           "<" + NodeName(element).Str() + "> lacks the element <" + value.word.Str() + ">");
  }
}

HRESULT QELXVARDOSLRDObject::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) {
  const Step step(Trace, "QELXVARDOSLRDObject::GetXMLFormat");
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var object;
  if (const HRESULT status = BeginXML(visited, Word::Object, document, object); FAILED(status)) {
    return step.Return(status);
  }
  HRESULT status = AddValues(document, object);
  QELXIVARDOSLRDObject_varList path(visited);
  path.Append(QELXIVARDOSLRDObject_var(this));
  for (const QELXIVARDOSLRDObject_var& child : std::as_const(children_)) {
    if (visited.Locate(child) != 0) {
      continue;
    }
    if (SUCCEEDED(status) && child->GetWriteFlag()) {
      status = AppendChild(child, path, object);
    }
    // Inside the loop on purpose: a plain record without children hands out no element.
    element = object;
  }
  return step.Return(status);
}

HRESULT QELXVARDOSLRDObject::AppendChild(const QELXIVARDOSLRDObject_var& child,
                                         const QELXIVARDOSLRDObject_varList& path, const ZYMIDOMElement_var& object) {
  ZYMIDOMElement_var nested;
  ZYMIDOMNode_var appended;
  const HRESULT status = child->GetXMLFormat(path, nested);
  return SUCCEEDED(status) && nested ? object->appendChild(nested, appended) : status;
}

HRESULT QELXVARDOSLRDObject::BeginXML(const QELXIVARDOSLRDObject_varList& visited, const ZYMUnicodeString& rootName,
                                      ZYMIDOMDocument_var& document, ZYMIDOMElement_var& root) const {
  if (visited.Size() > DeepestNesting) {
    QELVARDOSSystemUtils::SetLastError("records are nested too deep");
    return E_FAIL;
  }
  if (unseen_) {
    QELVARDOSSystemUtils::SetLastError(objectFile_.ToString().Str() + ": " + unseen_.message());
    return E_FAIL;
  }
  return CreateDocument(rootName, document, root);
}

HRESULT QELXVARDOSLRDObject::AppendTextNode(const ZYMUnicodeString& tag, const ZYMUnicodeString& value,
                                            const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) {
  const Step step(Trace, "QELXVARDOSLRDObject::CreateTextNode");
  return step.Return(parent->appendTextElement(document, tag, value));
}

HRESULT QELXVARDOSLRDObject::AddValue(const RecordFormat& adder, const RecordValue& value, const ZYMUnicodeString& text,
                                      const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) {
  const Step step(Trace, adder.name.CStr(), value.adder);
  const HRESULT status = AppendTextNode(value.word, text, document, parent);
  if (SUCCEEDED(status)) {
    Trace.Write(value.word, " node added with value : ", text);
  }
  return step.Return(status);
}

HRESULT QELXVARDOSLRDObject::Add(const CoreValue& value, const ZYMIDOMDocument_var& document,
                                 const ZYMIDOMElement_var& parent) const {
  return AddValue(Format::Plain, value, this->*value.field, document, parent);
}

HRESULT QELXVARDOSLRDObject::AddPhysicalIdNode(const ZYMIDOMDocument_var& document,
                                               const ZYMIDOMElement_var& parent) const {
  return Add(CoreValues.front(), document, parent);
}

HRESULT QELXVARDOSLRDObject::AddStamps(const ZYMIDOMDocument_var& /*document*/,
                                       const ZYMIDOMElement_var& /*parent*/) const {
  return S_OK;
}

HRESULT QELXVARDOSLRDObject::AddValues(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const {
  HRESULT status = S_OK;
  for (const CoreValue& value : CoreValues) {
    if (SUCCEEDED(status) && &value == &CoreValues.back()) {
      status = AddStamps(document, parent);
    }
    if (SUCCEEDED(status)) {
      status = Add(value, document, parent);
    }
  }
  return status;
}

void QELXVARDOSLRDObject::SetLRDFilePath(const QELVARDOSPath& path) {
  recordFile_ = path;
  recordFolder_ = path.GetDirName();
}

const ZYMUnicodeString& QELXVARDOSLRDObject::GetId() const { return Empty; }

void QELXVARDOSLRDObject::AddParentRelationship(const QELXIVARDOSLRDObject_var& relationship) {
  parentRelationships_.Append(relationship);
}

void QELXVARDOSLRDObject::AddChildRelationship(const QELXIVARDOSLRDObject_var& relationship) {
  childRelationships_.Append(relationship);
}

HRESULT QELXVARDOSLRDObject::ComputeObjectChangeStamp(ZYMUnicodeString& stamp) {
  const Step step(Trace, "QELXVARDOSLRDObject::ComputeObjectChangeStamp");
  stamp = FileStamp(objectFile_, unseen_);
  if (!stamp.IsEmpty()) {
    objectChangeStamp_ = stamp;
  }
  Trace.Write("Object Change stamp computed : ", stamp);
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDObject::GetRootDocument(ZYMIDOMDocument_var& document) {
  const Step step(Trace, "QELXVARDOSLRDObject::GetRootDocument");
  ZYMIDOMDocument_var created;
  ZYMIDOMElement_var object;
  const HRESULT status = CreateDocument(Word::Object, created, object);
  if (SUCCEEDED(status)) {
    document = created;
  }
  return step.Return(status);
}

// Depth first with a stack of its own, since callers may build chains of any length. The trace has a step for each
// record that is asked, as if each asked its children in turn. A record that was searched without success is not
// searched again, so a record on its own path ends the search there and shared records cost nothing.
HRESULT QELXVARDOSLRDObject::GetChildObject(const ZYMUnicodeString& id, QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, GetChildObjectStep);
  struct Position {
    QELXIVARDOSLRDObject_varList::const_iterator next;
    QELXIVARDOSLRDObject_varList::const_iterator end;
  };
  const auto below = [](const QELXIVARDOSLRDObject& parent) {
    const QELXIVARDOSLRDObject_varList& children = parent.GetChildren();
    return Position{children.begin(), children.end()};
  };
  std::unordered_set<const QELXIVARDOSLRDObject*> searched{this};
  std::vector<Position> path{below(*this)};
  while (!path.empty()) {
    if (path.back().next == path.back().end) {
      path.pop_back();
      Step::Close(Trace, E_FAIL);
      continue;
    }
    const QELXIVARDOSLRDObject_var& child = *path.back().next++;
    if (child->GetId() == id) {
      record = child;
      for (; !path.empty(); path.pop_back()) {
        Step::Close(Trace, S_OK);
      }
      return S_OK;
    }
    const Step asked(Trace, GetChildObjectStep);
    if (child->GetChildren().Size() != 0 && searched.insert(child.Get()).second) {
      path.push_back(below(*child));
    } else {
      asked.Return(E_FAIL);
    }
  }
  return E_FAIL;
}

void QELXVARDOSLRDObject::AddChild(const ZYMBaseUnknown_var& child) {
  children_.Append(QELXIVARDOSLRDObject_var(child));
}

HRESULT QELXVARDOSLRDObject::CopyFromLRDObject(const QELXIVARDOSLRDObject_var& other) {
  const Step step(Trace, "QELXVARDOSLRDObject::CopyFromLRDObject");
  physicalId_ = other->GetPhysicalId();
  objectChangeStamp_ = other->GetObjectChangeStamp();
  const auto* const own = dynamic_cast<const QELXVARDOSLRDObject*>(other.Get());
  unseen_ = own == nullptr ? std::error_code() : own->unseen_;
  ceStamp_ = other->GetCEStamp();
  cadId_ = other->GetCadId();
  hashcode_ = other->GetHashcode();
  mxType_ = other->GetMxType();
  type_ = other->GetType();
  recordFolder_ = other->GetLRDFolderPath();
  recordFile_ = other->GetLRDFilePath();
  objectFile_ = other->GetObjectFilePath();
  writeFlag_ = other->GetWriteFlag();
  // The handle may lie among the children that are replaced, and be the last one to its record: they go last of all.
  QELXIVARDOSLRDObject_varList children = other->GetChildren();
  std::swap(children_, children);
  typeClasses_ = other->GetTypeClasses();
  selectedFlag_ = other->GetSelectedFlag();
  return step.Return(S_OK);
}

void QELXVARDOSLRDObject::updateLRDObject(const QELXIVARDOSLRDObject_var& other) {
  TraceSteps(format_.tracedUpdate, "updateLRDObject");
  physicalId_ = other->GetPhysicalId();
  ceStamp_ = other->GetCEStamp();
  Trace.Write("physicaid : ", physicalId_, "CEStamp : ", ceStamp_, " Updated");
}

HRESULT QELXVARDOSLRDObject::GetChildLRDObject(QELXIVARDOSLRDObject_var& /*record*/) {
  return Step(Trace, "QELXVARDOSLRDObject::GetChildLRDObject").Return(S_OK);
}

HRESULT QELXVARDOSLRDObject::GetCompositionLRDObject(QELXIVARDOSLRDObject_var& /*record*/) {
  return Step(Trace, "QELXVARDOSLRDObject::GetCompositionLRDObject").Return(S_OK);
}

HRESULT QELXVARDOSLRDObject::UpdateLRDObjectFromXML(const ZYMIDOMNode_var& /*element*/) {
  return Step(Trace, "QELXVARDOSLRDObject::UpdateLRDObjectFromXML").Return(S_OK);
}

void QELXVARDOSLRDObject::AddCompositionObject(const QELXIVARDOSLRDObject_var& /*record*/) {}

HRESULT QELXVARDOSLRDObject::updateLRDObjectCEStampOnly(const QELXIVARDOSLRDObject_var& other) {
  // The step carries the name of the class that the operation was made for.
  const Step step(Trace, "QELXVARDOSFullLRDObject_V4::updateLRDObjectCEStampOnly");
  ceStamp_ = other->GetCEStamp();
  return step.Return(S_OK);
}

ZYMUnicodeStringList QELXVARDOSLRDObject::GetStampNames() const {
  ZYMUnicodeStringList names;
  for (const RecordFormat::Holding& held : QELXVARDOSLRDVersionInfo::Newest(RecordKind::Full).stamps) {
    names.Append(held.stamp.value.word);
  }
  return names;
}

void QELXVARDOSLRDObject::ReleaseLater(QELXIVARDOSLRDObject_varList& records) noexcept {
  if (records.Size() == 0) {
    return;
  }
  if (pendingReleases != nullptr) {
    MoveInto(*pendingReleases, records);
    return;
  }
  PendingReleases pending;
  pendingReleases = &pending;
  MoveInto(pending, records);
  while (!pending.empty()) {
    const QELXIVARDOSLRDObject_var record = std::move(pending.back());
    pending.pop_back();
  }
  pendingReleases = nullptr;
}
