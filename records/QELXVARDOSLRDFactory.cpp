#include "records/QELXVARDOSLRDFactory.h"

#include <optional>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSPath.h"
#include "platform/QELXVARDOSCreoUtil.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSChildLRDObject.h"
#include "records/QELXVARDOSCompositionLRDObject.h"
#include "records/QELXVARDOSFullLRDObject.h"
#include "records/QELXVARDOSIdentifier.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDVersionInfo.h"
#include "records/QELXVARDOSRelLRDObject.h"

QELXVARDOS_TRACED_HERE;

namespace {

using Record = QELXIVARDOSLRDObject_var;

// What an object of a request or a response brings beside its element.
struct Origin {
  ZYMUnicodeString version;
  ZYMUnicodeString identifier;
  ZYMUnicodeStringList members;
};

Record FromFile(const RecordFormat& format, const ZYMIDOMNode_var& element, bool& fromFile) {
  switch (format.kind) {
    case RecordKind::Full:
      return ZYMMakeComponent<QELXVARDOSFullLRDObject>(format, element, fromFile);
    case RecordKind::Child:
      return ZYMMakeComponent<QELXVARDOSChildLRDObject>(format, element, fromFile);
    case RecordKind::Composition:
      return ZYMMakeComponent<QELXVARDOSCompositionLRDObject>(format, element, fromFile);
    case RecordKind::Rel:
      return ZYMMakeComponent<QELXVARDOSRelLRDObject>(format, element, fromFile);
  }
  return {};
}

Record FromObject(const RecordFormat& format, const ZYMIDOMNode_var& object, const Origin& origin) {
  switch (format.kind) {
    case RecordKind::Full:
      return ZYMMakeComponent<QELXVARDOSFullLRDObject>(format, object, origin.version);
    case RecordKind::Child:
      return ZYMMakeComponent<QELXVARDOSChildLRDObject>(format, object, origin.identifier);
    case RecordKind::Composition:
      return ZYMMakeComponent<QELXVARDOSCompositionLRDObject>(format, object, origin.identifier, origin.members);
    case RecordKind::Rel:
      return ZYMMakeComponent<QELXVARDOSRelLRDObject>(format, object);
  }
  return {};
}

// Which kind of record an element of a record file holds; none for any other element.
std::optional<RecordKind> KindOf(const ZYMUnicodeString& elementName) {
  if (elementName == Word::Object) {
    return RecordKind::Full;
  }
  if (elementName == Word::Structure) {
    return RecordKind::Child;
  }
  if (elementName == Word::Rel) {
    return RecordKind::Rel;
  }
  return elementName == Word::Composition ? std::optional(RecordKind::Composition) : std::nullopt;
}

void TraceCreated(const Record& record) {
  if (record) {
    Trace.Write("LRDObject of class: ", record, " created");
  }
}

}  // namespace

QELXVARDOSLRDFactory::~QELXVARDOSLRDFactory() = default;

HRESULT QELXVARDOSLRDFactory::CreateObject(const ZYMUnicodeString& className, const ZYMIDOMNode_var& element,
                                           bool& fromFile, QELXIVARDOSLRDObject_var& record) {
  return CreateObject(QELXVARDOSLRDVersionInfo::FormatNamed(className), element, fromFile, record);
}

HRESULT QELXVARDOSLRDFactory::CreateObject(const RecordFormat* format, const ZYMIDOMNode_var& element, bool& fromFile,
                                           QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSLRDFactory::CreateObject");
  if (format != nullptr) {
    record = FromFile(*format, element, fromFile);
  }
  TraceCreated(record);
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDFactory::GetLRDObjectFromLRDFile(const ZYMIDOMNode_var& element, const ZYMUnicodeString& version,
                                                      QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSLRDFactory::GetLRDObjectFromLRDFile");
  if (const std::optional<RecordKind> kind = KindOf(NodeName(element)); kind) {
    bool fromFile = true;
    CreateObject(QELXVARDOSLRDVersionInfo::FormatOf(version.IsEmpty() ? FormatVersion::Default : version, *kind),
                 element, fromFile, record);
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDFactory::GetLRDObject(const QELIVARDOSGlobalConfigObject_var& config,
                                           const ZYMIDOMNode_var& command, const ZYMIDOMNode_var& object,
                                           QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSLRDFactory::GetLRDObject");
  const ZYMUnicodeString version = QELXVARDOSLRDVersionInfo().GetLRDVersion(command);
  Record made;
  if (object) {
    const ZYMUnicodeString name = NodeName(object);
    if (name == Word::CadObject) {
      made = MakeFullRecord(version, object, GetIdentifier(config, object));
      if (config->GetCADName() == Word::Creo) {
        SetLRDFile(config, object, made);
      }
      ClassifyLRDObject(config, command, made);
    } else if (name == Word::Relationship) {
      // The server's answers lead to the class of the oldest format, whatever the format of the records around it.
      made = FromObject(version == FormatVersion::V3 ? Format::RelV3 : Format::Rel, object, Origin{version, {}, {}});
    }
  }
  if (made) {
    record = made;
  }
  TraceCreated(made);
  return step.Return(S_OK);
}

QELXIVARDOSLRDObject_var QELXVARDOSLRDFactory::MakeFullRecord(const ZYMUnicodeString& version,
                                                              const ZYMIDOMNode_var& object,
                                                              const ZYMUnicodeString& identifier) {
  ZYMUnicodeStringList members;
  QELXVARDOSIdentifier(object).IdentifyComposition(members);
  const Origin origin{version, identifier, members};
  const RecordFormat* format = QELXVARDOSLRDVersionInfo::FormatOf(version, RecordKind::Full);
  if (format == nullptr) {
    return {};
  }
  Record full = FromObject(*format, object, origin);
  const auto addPart = [&](RecordKind kind) {
    full->AddCompositionObject(FromObject(*QELXVARDOSLRDVersionInfo::FormatOf(version, kind), object, origin));
  };
  if (!(version == FormatVersion::V2)) {
    addPart(RecordKind::Child);
  }
  if (members.Size() != 0) {
    addPart(RecordKind::Composition);
  }
  return full;
}

HRESULT QELXVARDOSLRDFactory::ClassifyLRDObject(const QELIVARDOSGlobalConfigObject_var& config,
                                                const ZYMIDOMNode_var& command,
                                                const QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSLRDFactory::ClassifyLRDObject");
  const ZYMUnicodeString type = record->GetType();
  const ZYMUnicodeString mode = Attribute(command, Word::ModeOfVersion);
  Trace.Write("mode = ", mode);

  const auto classify = [&record, &mode](const ZYMUnicodeString& typeClass, const char* identifier) {
    record->AddTypeClass(typeClass);
    Trace.Write("LRD object classidfied as QELXVARDOSLRDConstants::", identifier, mode);
  };
  if (record->GetCadOrigin().IsEmpty() && !(mode == Word::Import)) {
    classify(QELXVARDOSLRDConstants::TYPE_KORVANTHEMIX_LIKE, "TYPE_KORVANTHEMIX_LIKE");
    return step.Return(S_OK);
  }
  if (config->IsTypeInCategory(type, QELXVARDOSLRDConstants::TYPE_EMBEDEDCOMPONENT_LIKE)) {
    classify(QELXVARDOSLRDConstants::TYPE_EMBEDEDCOMPONENT_LIKE, "TYPE_EMBEDEDCOMPONENT_LIKE");
  }
  if (config->IsTypeInCategory(type, QELXVARDOSLRDConstants::TYPE_OBJECTWITHOUTFILE_LIKE)) {
    classify(QELXVARDOSLRDConstants::TYPE_OBJECTWITHOUTFILE_LIKE, "TYPE_OBJECTWITHOUTFILE_LIKE");
  }
  if (config->IsTypeInCategory(type, QELXVARDOSLRDConstants::TYPE_FAMILYITEM_LIKE)) {
    classify(QELXVARDOSLRDConstants::TYPE_FAMILYITEM_LIKE, "TYPE_FAMILYITEM_LIKE");
  }
  return step.Return(S_OK);
}

ZYMUnicodeString QELXVARDOSLRDFactory::GetIdentifier(const QELIVARDOSGlobalConfigObject_var& config,
                                                     const ZYMIDOMNode_var& object) {
  const Step step(Trace, "QELXVARDOSLRDFactory::GetIdentifier");
  ZYMUnicodeString attribute;
  const ZYMUnicodeString type = Attribute(object, Word::Type);
  if (config && !type.IsEmpty()) {
    attribute = config->GetIdentifierAttribute(type);
  }
  ZYMUnicodeString identifier = attribute.IsEmpty() ? ZYMUnicodeString() : Attribute(object, attribute);
  Trace.Write("identifierAttribute : ", attribute, " Identifier: ", identifier);
  if (attribute == Word::FileName && config->GetCADName() == Word::Creo) {
    identifier = QELXVARDOSCreoUtil::fileNameWitoutVersion(identifier);
  }
  step.Return(S_OK);
  return identifier;
}

QELXVARDOSLRDFactory::Paths QELXVARDOSLRDFactory::PathsAhead(const ZYMUnicodeString& cadName,
                                                             const ZYMIDOMElement_var& cadobject) {
  const ZYMUnicodeString folder = Attribute(cadobject, Word::DirName);
  const ZYMUnicodeString fileName = Attribute(cadobject, Word::FileName);
  ZYMUnicodeString recordName = cadName == Word::Creo ? QELXVARDOSCreoUtil::fileNameWitoutVersion(fileName) : fileName;
  recordName += FileName::RecordSuffix;
  return {QELVARDOSPath::Join({folder, fileName}),
          QELVARDOSPath::Join({folder, FileName::RecordFolder, recordName}).ToString()};
}

QELXVARDOSLRDFactory::Paths QELXVARDOSLRDFactory::PathsOf(const ZYMUnicodeString& cadName,
                                                          const ZYMIDOMElement_var& cadobject) {
  const Step step(Trace, "QELXVARDOSLRDFactory::GetObjectFileLRDFile");
  Paths paths = PathsAhead(cadName, cadobject);
  Trace.Write("Object File: ", paths.objectFile.ToString());
  Trace.Write("LRD File: ", paths.recordFile);
  step.Return(S_OK);
  return paths;
}

HRESULT QELXVARDOSLRDFactory::GetObjectFileLRDFile(const ZYMUnicodeString& cadName, const ZYMIDOMNode_var& cadobject,
                                                   ZYMUnicodeStringZYMUnicodeStringDico& paths) {
  PathsOf(cadName, cadobject).PutInto(paths);
  return S_OK;
}

void QELXVARDOSLRDFactory::Paths::PutInto(ZYMUnicodeStringZYMUnicodeStringDico& paths) const {
  paths.Insert(Word::ObjectFile, objectFile.ToString());
  paths.Insert(Word::LRDFile, recordFile);
}

HRESULT QELXVARDOSLRDFactory::SetLRDFile(const QELIVARDOSGlobalConfigObject_var& config,
                                         const ZYMIDOMNode_var& cadobject, const QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSLRDFactory::SetLRDFile");
  const QELVARDOSPath recordFile = PathsOf(config->GetCADName(), cadobject).recordFile;
  record->SetLRDFilePath(recordFile);
  Record child;
  record->GetChildLRDObject(child);
  if (child) {
    child->SetLRDFilePath(recordFile);
  }
  Record composition;
  record->GetCompositionLRDObject(composition);
  if (composition) {
    composition->SetLRDFilePath(recordFile);
  }
  return step.Return(S_OK);
}
