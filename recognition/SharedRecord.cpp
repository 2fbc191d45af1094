#include "recognition/SharedRecord.h"

namespace {

using Record = QELXIVARDOSLRDObject_var;

// Depth first, parents before their children: the order in which GetChildObject looks.
void AddWithNested(RecordIndex& index, const QELXIVARDOSLRDObject_varList& records) {
  for (const Record& record : records) {
    index.Add(record->GetId(), record);
    AddWithNested(index, record->GetChildren());
  }
}

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

QELXIVARDOSLRDObject_var SharedRecord::FindChild(const ZYMUnicodeString& id) {
  if (!children_) {
    AddWithNested(children_.emplace(), record_->GetChildren());
  }
  return children_->Find(id);
}

QELXIVARDOSLRDObject_var SharedRecord::FindRelationship(const QELXIVARDOSLRDObject_varList& wanted) {
  if (!relationships_) {
    relationships_ = RecordIndex::ById(record_->GetChildRelationships());
  }
  return relationships_->FindLast(wanted);
}

QELXIVARDOSLRDObject_var SharedRecord::FindRelatedChild(const ZYMUnicodeString& physicalId) {
  if (!relatedChildren_) {
    relatedChildren_.emplace();
    for (const Record& child : record_->GetRelatedChildren()) {
      relatedChildren_->Add(child->GetPhysicalId(), child);
    }
  }
  return relatedChildren_->Find(physicalId);
}

SharedRecords::File& SharedRecords::At(const ZYMUnicodeString& recordFile) {
  const auto [place, added] = files_.try_emplace(recordFile.Str());
  if (added) {
    place->second.facts = QELVARDOSFileLayer::Current().Stat(recordFile.Str());
  }
  return place->second;
}
