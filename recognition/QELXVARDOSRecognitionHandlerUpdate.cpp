// The write-back of the handler: values from records into requests, and from requests into records and their files.

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMIDOMLook.h"
#include "recognition/AttributeWrites.h"
#include "recognition/ObjectsOfTree.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "recognition/RequestRelationships.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDFactory.h"
#include "records/QELXVARDOSLRDObject.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

QELXVARDOS_TRACED_HERE;

namespace {

using Record = QELXIVARDOSLRDObject_var;
using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;
using CacheInformation = ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico;

void TakeHashcodeFromCache(const Record& record, const CacheInformation& cache, const ZYMUnicodeString& cadId) {
  if (const auto* known = cache.Find(cadId); known != nullptr) {
    if (const ZYMUnicodeString* hashcode = known->Find(Word::HashcodeOfRequest); hashcode != nullptr) {
      record->SetHashcode(*hashcode);
    }
  }
}

void DescribeObject(const ZYMIDOMElement_var& object, const Record& record, AttributeWrites& writes) {
  if (Attribute(object, Word::FileName).IsEmpty()) {
    const ZYMUnicodeString fileName = record->GetObjectFilePath().GetFileName();
    Trace.Write("Set FileName on xml Node : ", fileName);
    writes.Set(object, Word::FileName, fileName);
  }
  Trace.Write("Set hasCode on xml Node : ", record->GetHashcode());
  writes.Set(object, Word::HashcodeOfRequest, record->GetHashcode());
}

}  // namespace

HRESULT QELXVARDOSRecognitionHandler::UpdateRequestAndLRDObjects(const ZYMIDOMNode_var& root, const RecordMap& cadidMap,
                                                                 const CacheInformation& cacheInformation) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::UpdateRequestAndLRDObjects");
  const ObjectsOfTree objects(root);
  if (!objects.HasRoot()) {
    return step.Return(S_OK);
  }
  Trace.Write(objects.InInfo() ? "Processing Info Node" : "Processing Command Node");
  Trace.Write("cadobjectNode count : ", objects.ChildCount());
  const ZYMUnicodeString cadName = CadName();
  AttributeWrites writes;
  objects.ForEach([&](const ZYMIDOMElement_var& object) {
    const ZYMUnicodeString cadId = Attribute(object, Word::CadId);
    Trace.Write("Processing object with CADID : ", cadId);
    const Record record = cadidMap[cadId];
    if (record.IsNull()) {
      return;
    }
    if (Attribute(object, Word::StreamKind).IsEmpty()) {
      DescribeObject(object, record, writes);
    } else {
      Trace.Write("Processing Stream King");
      TakeHashcodeFromCache(record, cacheInformation, cadId);
    }
    Trace.Write("Set mxType on xml Node : ", record->GetMxType());
    writes.Set(object, Word::MxType, record->GetMxType());

    const QELXVARDOSLRDFactory::Paths paths = QELXVARDOSLRDFactory().PathsOf(cadName, object);
    Trace.Write("Setting objectFile, lrdFile, fileStamp");
    record->SetObjectFilePath(paths.objectFile);
    record->SetLRDFilePath(paths.recordFile);
    ZYMUnicodeString stamp;
    record->ComputeObjectChangeStamp(stamp);
  });
  return step.Return(FAILED(writes.Status()) ? writes.Status() : objects.Status());
}

HRESULT QELXVARDOSRecognitionHandler::UpdateLRDObjects(const ZYMIDOMNode_var& root, const RecordMap& cadidMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::UpdateLRDObjects");
  const ZYMUnicodeString cadName = CadName();
  const ObjectsOfTree objects(root);
  objects.ForEach([&](const ZYMIDOMElement_var& object) {
    const QELXVARDOSLRDFactory::Paths paths = QELXVARDOSLRDFactory().PathsOf(cadName, object);
    if (const Record record = cadidMap[Attribute(object, Word::CadId)]; record) {
      record->SetObjectFilePath(paths.objectFile);
      record->SetLRDFilePath(paths.recordFile);
    }
  });
  return step.Return(objects.Status());
}

HRESULT QELXVARDOSRecognitionHandler::UpdateInformationFromCache(const ZYMIDOMNode_var& root,
                                                                 const RecordMap& phidMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::UpdateInformationFromCache");
  const ZYMIDOMElement_var element(root);
  const ZYMIDOMElement_var list = element ? FirstElement(element, Word::CadObjectList) : ZYMIDOMElement_var();
  AttributeWrites writes;
  if (list) {
    ForEachChildElement(list, [&](const ZYMIDOMElement_var& object) {
      const ZYMUnicodeString physicalId = Attribute(object, Word::Phid);
      Trace.Write("Updating node with phid : ", physicalId);
      const Record record = phidMap[physicalId];
      const QELVARDOSPath& file = record->GetObjectFilePath();
      const auto setAndTrace = [&](const ZYMUnicodeString& attribute, const ZYMUnicodeString& value) {
        writes.Set(object, attribute, value);
        Trace.Write(attribute, " : ", value);
      };
      setAndTrace(Word::FileName, file.GetBaseName() + "." + file.GetExtension());
      setAndTrace(Word::MxType, record->GetMxType());
      setAndTrace(Word::Oid, physicalId);
      setAndTrace(Word::HashcodeOfRequest, record->GetHashcode());
      return true;
    });
  }
  return step.Return(writes.Status());
}

HRESULT QELXVARDOSRecognitionHandler::GetCadidLRDMapForCache(const ZYMIDOMNode_var& root, const RecordMap& phidMap,
                                                             RecordMap& cadidMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetCadidLRDMapForCache");
  const ObjectsOfTree objects(root);
  objects.ForEach([&](const ZYMIDOMElement_var& object) {
    const ZYMUnicodeString physicalId = Attribute(object, Word::Phid);
    Record record = phidMap[physicalId];
    if (record.IsNull()) {
      Trace.Write("No record for phid : ", physicalId);
      return;
    }
    if (!Attribute(object, Word::StreamKind).IsEmpty()) {
      const Record copy = ZYMMakeComponent<QELXVARDOSLRDObject>();
      copy->CopyFromLRDObject(record);
      record = copy;
    }
    cadidMap.Insert(Attribute(object, Word::CadId), record);
  });
  return step.Return(objects.Status());
}

HRESULT QELXVARDOSRecognitionHandler::UpdateRelNode(const ZYMIDOMNode_var& node, const Record& record) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::UpdateRelNode");
  const bool hasAny = record->GetChildRelationships().Size() != 0;
  return step.Return(hasAny ? RequestRelationships(node).Complete(record) : S_OK);
}

HRESULT QELXVARDOSRecognitionHandler::CreateOrUpdateLRD(const ZYMIDOMNode_var& root, const RecordMap& cadidMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::CreateOrUpdateLRD");
  QELXIVARDOSLRDXMLHandler_var handler;
  QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config_, root, handler);
  if (handler) {
    handler->SetObserver(observer_);
  }
  return step.Return(handler->CreateOrUpdateLRD(root, cadidMap));
}

HRESULT QELXVARDOSRecognitionHandler::CreateOrUpdateLRD(const QELXIVARDOSLRDObject_varList& records) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::CreateOrUpdateLRD");
  const auto files = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>();
  files->SetObserver(observer_);
  files->SetLimitsOf(config_);
  return step.Return(files->WriteToFile(records));
}

HRESULT QELXVARDOSRecognitionHandler::CreateAndHideLRDFolder(const QELXIVARDOSLRDObject_varList& records) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::CreateAndHideLRDFolder");
  return step.Return(ZYMMakeComponent<QELXVARDOSLRDXMLHandler>()->CreateAndHideLRDFolder(records));
}
