#include "recognition/SharedRecord.h"

#include <algorithm>

#include "component/QELXVARDOSReason.h"
#include "platform/QELXVARDOSCreoUtil.h"

namespace {

using Record = QELXIVARDOSLRDObject_var;

// Depth first, parents before their children: the order in which GetChildObject looks.
void AddWithNested(RecordIndex& index, const QELXIVARDOSLRDObject_varList& records) {
  for (const Record& record : records) {
    index.Add(record->GetId(), record);
    AddWithNested(index, record->GetChildren());
  }
}

std::string WithoutCaseAndVersion(const ZYMUnicodeString& id) {
  std::string text = QELXVARDOSCreoUtil::fileNameWitoutVersion(id).Str();
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

template <typename Likenesses>
void AddLikenesses(Likenesses& likenesses, const QELXIVARDOSLRDObject_varList& records) {
  for (const Record& record : records) {
    if (!record->GetId().IsEmpty()) {
      std::vector<ZYMUnicodeString>& alike = likenesses[WithoutCaseAndVersion(record->GetId())];
      if (alike.size() < QELXVARDOSReason::MostNearMisses) {
        alike.push_back(record->GetId());
      }
    }
    AddLikenesses(likenesses, record->GetChildren());
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

std::vector<ZYMUnicodeString> SharedRecord::IdentifiersLike(const ZYMUnicodeString& id) {
  if (!likenesses_) {
    AddLikenesses(likenesses_.emplace(), record_->GetChildren());
  }
  const auto found = likenesses_->find(WithoutCaseAndVersion(id));
  return found == likenesses_->end() ? std::vector<ZYMUnicodeString>() : found->second;
}

SharedRecords::File& SharedRecords::At(const ZYMUnicodeString& recordFile) {
  const auto [place, added] = files_.try_emplace(recordFile.Str());
  if (added) {
    place->second.facts = QELVARDOSFileLayer::Current().Stat(recordFile.Str());
  }
  return place->second;
}
