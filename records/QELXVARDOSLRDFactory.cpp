#include "records/QELXVARDOSLRDFactory.h"

#include <algorithm>
#include <array>
#include <utility>

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

namespace {

ZYM_LOADED_AS(TraceChannels) const QELXVARDOSTraceChannels Channels;
const QELVARDOSClientTrace& Trace = Channels.details;

using Step = QELVARDOSClientTraceStep;
using Record = QELXIVARDOSLRDObject_var;

// What an object of a request or a response brings beside its element.
struct Origin {
  ZYMUnicodeString version;
  ZYMUnicodeString identifier;
  ZYMUnicodeStringList members;
};

template <typename Class>
Record FromFile(const ZYMIDOMNode_var& element, bool& fromFile) {
  return ZYMMakeComponent<Class>(element, fromFile);
}
template <typename Class>
Record Full(const ZYMIDOMNode_var& object, const Origin& origin) {
  return ZYMMakeComponent<Class>(object, origin.version);
}
template <>
Record Full<QELXVARDOSFullLRDObject>(const ZYMIDOMNode_var& object, const Origin& /*origin*/) {
  return ZYMMakeComponent<QELXVARDOSFullLRDObject>(object);
}
template <typename Class>
Record Child(const ZYMIDOMNode_var& object, const Origin& origin) {
  return ZYMMakeComponent<Class>(object, origin.identifier);
}
template <typename Class>
Record Composition(const ZYMIDOMNode_var& object, const Origin& origin) {
  return ZYMMakeComponent<Class>(object, origin.identifier, origin.members);
}
template <typename Class>
Record Relationship(const ZYMIDOMNode_var& object, const Origin& /*origin*/) {
  return ZYMMakeComponent<Class>(object);
}

struct RecordClass {
  const ZYMUnicodeString& name;
  Record (*fromFile)(const ZYMIDOMNode_var& element, bool& fromFile);
  Record (*fromObject)(const ZYMIDOMNode_var& object, const Origin& origin);
};

// Every record class: its name, how it is made from a file, how from an object of a tree. A new class is a row.
const std::array<RecordClass, 12> RecordClasses = {{
    {ClassName::FullV1, FromFile<QELXVARDOSFullLRDObject_V1>, Full<QELXVARDOSFullLRDObject_V1>},
    {ClassName::FullV2, FromFile<QELXVARDOSFullLRDObject_V2>, Full<QELXVARDOSFullLRDObject_V2>},
    {ClassName::Full, FromFile<QELXVARDOSFullLRDObject>, Full<QELXVARDOSFullLRDObject>},
    {ClassName::Child, FromFile<QELXVARDOSChildLRDObject>, Child<QELXVARDOSChildLRDObject>},
    {ClassName::ChildV1, FromFile<QELXVARDOSChildLRDObject_V1>, Child<QELXVARDOSChildLRDObject_V1>},
    {ClassName::Composition, FromFile<QELXVARDOSCompositionLRDObject>, Composition<QELXVARDOSCompositionLRDObject>},
    {ClassName::CompositionV1, FromFile<QELXVARDOSCompositionLRDObject_V1>,
     Composition<QELXVARDOSCompositionLRDObject_V1>},
    {ClassName::Rel, FromFile<QELXVARDOSRelLRDObject>, Relationship<QELXVARDOSRelLRDObject>},
    {ClassName::RelV3, FromFile<QELXVARDOSRelLRDObject_V3>, Relationship<QELXVARDOSRelLRDObject_V3>},
    {ClassName::ChildV4, FromFile<QELXVARDOSChildLRDObject_V4>, Child<QELXVARDOSChildLRDObject_V4>},
    {ClassName::FullV4, FromFile<QELXVARDOSFullLRDObject_V4>, Full<QELXVARDOSFullLRDObject_V4>},
    {ClassName::CompositionV4, FromFile<QELXVARDOSCompositionLRDObject_V4>,
     Composition<QELXVARDOSCompositionLRDObject_V4>},
}};

const RecordClass* FindClass(const ZYMUnicodeString& name) {
  // Most records are of the newest classes.
  const auto found = std::find_if(RecordClasses.rbegin(), RecordClasses.rend(),
                                  [&name](const RecordClass& recordClass) { return recordClass.name == name; });
  return found == RecordClasses.rend() ? nullptr : &*found;
}

Record MakeFromObject(const ZYMUnicodeString& className, const ZYMIDOMNode_var& object, const Origin& origin) {
  const RecordClass* recordClass = FindClass(className);
  return recordClass == nullptr ? Record() : recordClass->fromObject(object, origin);
}

// Which kind of record an element of a record file holds; empty for any other element.
const ZYMUnicodeString& KindOf(const ZYMUnicodeString& elementName) {
  static const ZYMUnicodeString None;
  if (elementName == Word::Object) {
    return KindName::Full;
  }
  if (elementName == Word::Structure) {
    return KindName::Child;
  }
  if (elementName == Word::Rel) {
    return KindName::Rel;
  }
  return elementName == Word::Composition ? KindName::Composition : None;
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
  const Step step(Trace, "QELXVARDOSLRDFactory::CreateObject");
  if (const RecordClass* recordClass = FindClass(className); recordClass != nullptr) {
    record = recordClass->fromFile(element, fromFile);
  }
  TraceCreated(record);
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDFactory::GetLRDObjectFromLRDFile(const ZYMIDOMNode_var& element, const ZYMUnicodeString& version,
                                                      QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSLRDFactory::GetLRDObjectFromLRDFile");
  const ZYMUnicodeString& kind = KindOf(NodeName(element));
  if (!kind.IsEmpty()) {
    bool fromFile = true;
    CreateObject(QELXVARDOSLRDVersionInfo::ClassName(version.IsEmpty() ? FormatVersion::Default : version, kind),
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
      const ZYMUnicodeString& className = version == FormatVersion::V3 ? ClassName::RelV3 : ClassName::Rel;
      made = MakeFromObject(className, object, Origin{version, {}, {}});
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

  Record full = MakeFromObject(QELXVARDOSLRDVersionInfo::ClassName(version, KindName::Full), object, origin);
  if (full.IsNull()) {
    return full;
  }
  if (!(version == FormatVersion::V2)) {
    full->AddCompositionObject(
        MakeFromObject(QELXVARDOSLRDVersionInfo::ClassName(version, KindName::Child), object, origin));
  }
  if (members.Size() != 0) {
    full->AddCompositionObject(
        MakeFromObject(QELXVARDOSLRDVersionInfo::ClassName(version, KindName::Composition), object, origin));
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

QELXVARDOSLRDFactory::Paths QELXVARDOSLRDFactory::PathsOf(const ZYMUnicodeString& cadName,
                                                          const ZYMIDOMElement_var& cadobject) {
  const Step step(Trace, "QELXVARDOSLRDFactory::GetObjectFileLRDFile");
  const ZYMUnicodeString folder = Attribute(cadobject, Word::DirName);
  const ZYMUnicodeString fileName = Attribute(cadobject, Word::FileName);
  ZYMUnicodeString recordName = cadName == Word::Creo ? QELXVARDOSCreoUtil::fileNameWitoutVersion(fileName) : fileName;
  recordName += FileName::RecordSuffix;
  Paths paths{QELVARDOSPath::Join({folder, fileName}),
              QELVARDOSPath::Join({folder, FileName::RecordFolder, recordName}).ToString()};
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
