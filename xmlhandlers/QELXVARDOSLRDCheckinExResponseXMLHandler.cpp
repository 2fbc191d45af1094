#include "xmlhandlers/QELXVARDOSLRDCheckinExResponseXMLHandler.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMFillDictionary.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "xmlhandlers/InfoSearch.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSLRDCheckinExResponseXMLHandler, QELXVARDOSLRDXMLHandler)

QELXVARDOS_TRACED_HERE;

namespace {

using Record = QELXIVARDOSLRDObject_var;
using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

// A relationship is brought up to date from the relationships alone, even where an object has the same key.
void UpdateChildren(const Record& parent, const RecordMap& answered, const RecordMap& relationships) {
  for (const Record& child : parent->GetChildren()) {
    const RecordMap& source = child->IsAKindOf(ClassName::Rel.CStr()) ? relationships : answered;
    if (const Record found = source[child->GetCadId()]; found) {
      child->updateLRDObject(found);
    }
  }
}

void UpdateRecords(const RecordMap& records, const RecordMap& answered, const RecordMap& relationships) {
  for (const RecordMap::Entry& entry : answered) {
    if (const Record record = records[entry.second->GetCadId()]; record) {
      record->updateLRDObject(entry.second);
      UpdateChildren(record, answered, relationships);
    }
  }
}

}  // namespace

QELXVARDOSLRDCheckinExResponseXMLHandler::QELXVARDOSLRDCheckinExResponseXMLHandler(
    const QELIVARDOSGlobalConfigObject_var& config)
    : QELXVARDOSLRDXMLHandler(config) {}

HRESULT QELXVARDOSLRDCheckinExResponseXMLHandler::GetLRDObjects(const ZYMIDOMNode_var& root, RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDCheckinExResponseXMLHandler::GetLRDObjects");
  const ZYMIDOMElement_var element(root);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  const InfoSearch found = InfoSearch::Below(element);
  if (FAILED(found.search)) {
    return step.Return(found.search);
  }
  return step.Return(found.info ? ReadCadObjectNode(found.info, records) : found.item);
}

HRESULT QELXVARDOSLRDCheckinExResponseXMLHandler::CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                                                                    const RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDCheckinExResponseXMLHandler::CreateOrUpdateLRD");
  RecordMap answered;
  GetLRDObjects(root, answered);
  const ZYMIDOMElement_var element(root);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  const InfoSearch found = InfoSearch::Below(element);
  if (SUCCEEDED(found.search) && found.info) {
    RecordMap relationships;
    ReadRelationshipListNode(found.info, relationships);
    UpdateRecords(records, answered, relationships);
    if (const HRESULT written = WriteSelected(records); FAILED(written)) {
      return step.Return(written);
    }
  }
  return step.Return(found.search);
}
