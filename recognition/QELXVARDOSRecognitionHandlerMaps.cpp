// The lookup maps of the handler: records by CAD id and by physical id, and where the record of an object may be found.

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSPathUtils.h"
#include "platform/Steps.h"
#include "platform/ZYMIDOMLook.h"
#include "recognition/ObjectsById.h"
#include "recognition/ObjectsOfTree.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "recognition/SharedRecord.h"
#include "records/FileStamp.h"
#include "records/QELXVARDOSIdentifier.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDFactory.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

QELXVARDOS_TRACED_HERE;

namespace {

using Record = QELXIVARDOSLRDObject_var;
using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

/// Whether the object's record file exists; paths then holds its paths and nothing else.
bool TakePathsWithRecord(const ZYMUnicodeString& cadName, const ZYMIDOMNode_var& cadObject,
                         ZYMUnicodeStringZYMUnicodeStringDico& paths) {
  const QELXVARDOSLRDFactory::Paths found = QELXVARDOSLRDFactory().PathsOf(cadName, ZYMIDOMElement_var(cadObject));
  if (!QELVARDOSPathUtils::Exists(found.recordFile)) {
    return false;
  }
  paths.RemoveAll();
  found.PutInto(paths);
  return true;
}

/// Who reads the records that a tree carries; null when nobody serves it.
QELXIVARDOSLRDXMLHandler_var ReaderOf(const QELIVARDOSGlobalConfigObject_var& config, const ZYMIDOMNode_var& node) {
  QELXIVARDOSLRDXMLHandler_var handler;
  QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config, node, handler);
  return handler;
}

}  // namespace

HRESULT QELXVARDOSRecognitionHandler::GetLRDMap(const ZYMIDOMNode_var& request, RecordMap& lrdMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetLRDMap");
  const QELXIVARDOSLRDXMLHandler_var reader = ReaderOf(config_, request);
  if (reader.IsNull()) {
    return step.Return(S_OK);
  }
  RecordMap records;
  return step.Return(UntilFailure([&] { return reader->GetLRDObjects(request, records); },
                                  [&] { return GetCAdIdLRDExceptspecificTypes(records, lrdMap); }));
}

HRESULT QELXVARDOSRecognitionHandler::GetCAdIdLRDExceptspecificTypes(const RecordMap& in, RecordMap& out) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetCAdIdLRDExceptspecificTypes");
  for (const RecordMap::Entry& entry : in) {
    const Record& record = entry.second;
    if (record->GetTypeClasses().Locate(QELXVARDOSLRDConstants::TYPE_OBJECTWITHOUTFILE_LIKE) == 0) {
      out.Insert(record->GetCadId(), record);
    }
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSRecognitionHandler::GetPhidLRDMap(const ZYMIDOMNode_var& node, RecordMap& phidMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetPhidLRDMap");
  RecordMap records;
  const QELXIVARDOSLRDXMLHandler_var reader = ReaderOf(config_, node);
  const HRESULT status = reader ? reader->GetLRDObjects(node, records) : S_OK;
  if (SUCCEEDED(status)) {
    for (const RecordMap::Entry& entry : records) {
      phidMap.Insert(entry.second->GetPhysicalId(), entry.second);
    }
  }
  return step.Return(status);
}

HRESULT QELXVARDOSRecognitionHandler::GetCadidLRDMap(const ZYMIDOMNode_var& node, const RecordMap& phidMap,
                                                     RecordMap& cadidMap, ZYMUnicodeStringList skipList) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetCadidLRDMap");
  const ZYMUnicodeString cadName = CadName();
  std::vector<std::string_view> skipped;
  for (const ZYMUnicodeString& cadId : std::as_const(skipList)) {
    skipped.push_back(cadId.View());
  }
  std::ranges::sort(skipped);
  const ObjectsOfTree objects(node);
  objects.ForEach([&](const ZYMIDOMElement_var& object) {
    const ZYMUnicodeString cadId = Attribute(object, Word::CadId);
    if (std::ranges::binary_search(skipped, cadId.View())) {
      return;
    }
    const QELXVARDOSLRDFactory::Paths paths = QELXVARDOSLRDFactory().PathsOf(cadName, object);
    if (phidMap.Size() == 0) {
      return;
    }
    const ZYMUnicodeString physicalId = Attribute(object, Word::Phid);
    const Record record = phidMap[physicalId];
    if (record.IsNull()) {
      // Derived outputs have no record, so a listed object may be missing from the map.
      Trace.Write("No record for phid : ", physicalId);
      return;
    }
    record->SetObjectFilePath(paths.objectFile);
    record->SetLRDFilePath(paths.recordFile);
    ZYMUnicodeString stamp;
    record->ComputeObjectChangeStamp(stamp);
    cadidMap.Insert(cadId, record);
  });
  return step.Return(objects.Status());
}

HRESULT QELXVARDOSRecognitionHandler::getCadidObjectNodeMap(const ZYMIDOMNode_var& cadobjectlist,
                                                            ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::getCadidObjectNodeMap");
  return step.Return(ObjectsById::MapInto(cadobjectlist, nodeMap));
}

HRESULT QELXVARDOSRecognitionHandler::GetObjectFileLRDFileFromComposition(const ZYMIDOMNode_var& cadObject,
                                                                          ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap,
                                                                          ZYMUnicodeStringZYMUnicodeStringDico& paths) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetObjectFileLRDFileFromComposition");
  ZYMUnicodeStringList compositions;
  QELXVARDOSIdentifier(cadObject).IdentifyComposition(compositions);
  for (const ZYMUnicodeString& cadId : std::as_const(compositions)) {
    const ZYMIDOMNode_var* const object = nodeMap.Find(cadId);
    if (object != nullptr && TakePathsWithRecord(CadName(), *object, paths)) {
      break;
    }
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSRecognitionHandler::GetObjectFileLRDFileFromParent(const ZYMIDOMNode_var& cadObject,
                                                                     ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap,
                                                                     ZYMUnicodeStringZYMUnicodeStringDico& paths) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetObjectFileLRDFileFromParent");
  ZYMUnicodeStringList parents;
  QELXVARDOSIdentifier(cadObject).IdentifyParent(parents);
  if (parents.Size() != 0) {
    const ZYMIDOMNode_var parent = nodeMap[parents[1]];
    if (parent && !TakePathsWithRecord(CadName(), parent, paths)) {
      GetObjectFileLRDFileFromComposition(cadObject, nodeMap, paths);
    }
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSRecognitionHandler::GetchildLRDObjStructureLrdList(const QELXIVARDOSLRDObject_varList& a,
                                                                     const QELXIVARDOSLRDObject_varList& b,
                                                                     QELXIVARDOSLRDObject_var& entry) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetchildLRDObjStructureLrdList");
  if (const Record last = RecordIndex::ById(b).FindLast(a); last) {
    entry = last;
  }
  return step.Return(S_OK);
}

ZYMUnicodeString& QELXVARDOSRecognitionHandler::GetFileTimeStamp(ZYMUnicodeString& stamp,
                                                                 const ZYMUnicodeString& path) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetFileTimeStamp");
  stamp = StampOf(QELVARDOSPathUtils::GetModificationTime(path));
  Trace.Write("File stamp for file ", path, " is : ", stamp);
  step.Return(S_OK);
  return stamp;
}
