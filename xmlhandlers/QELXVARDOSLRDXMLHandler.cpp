#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileNotices.h"
#include "platform/QELVARDOSPathUtils.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMCheckFailure.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMIDOMLook.h"
#include "records/HostLeave.h"
#include "records/Nesting.h"
#include "records/ObjectsAhead.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDFactory.h"
#include "xmlhandlers/CompositionMembers.h"
#include "xmlhandlers/RecordFolder.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSLRDXMLHandler, QELXIVARDOSLRDXMLHandler)

QELXVARDOS_TRACED_HERE;

namespace {

using Record = QELXIVARDOSLRDObject_var;
using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

bool HasTypeClass(const Record& record, const ZYMUnicodeString& typeClass) {
  return record->GetTypeClasses().Locate(typeClass) != 0;
}

/// Why there is no such folder, by the last error.
std::string ReasonAgainst(const ZYMUnicodeString& folder) {
  const std::string& error = QELVARDOSSystemUtils::LastError();
  return error.starts_with(folder.Str() + ": ") ? error.substr(folder.Str().size() + 2) : error;
}

bool IsSelected(const Record& record) { return record->GetSelectedFlag().Matches(Word::UpperTrue); }

}  // namespace

QELXVARDOSLRDXMLHandler::QELXVARDOSLRDXMLHandler() { CreateBuilder(44); }

QELXVARDOSLRDXMLHandler::QELXVARDOSLRDXMLHandler(const QELIVARDOSGlobalConfigObject_var& config) : config_(config) {
  SetLimitsOf(config);
  CreateBuilder(52);
}

QELXVARDOSLRDXMLHandler::~QELXVARDOSLRDXMLHandler() = default;

// The line that the report names is fixed for each constructor, so that support finds the same place in every build.
void QELXVARDOSLRDXMLHandler::CreateBuilder(int line) {
  if (FAILED(CreateZYMIXMLDOMDocumentBuilder(builder_, XML4C))) {
    ZYMReportCheckFailure("ExpressionCheck:SUCCEEDED(::CreateZYMIXMLDOMDocumentBuilder(_DocumentBuilder))",
                          "QELXVARDOSLRDXMLHandler", line);
  }
}

HRESULT QELXVARDOSLRDXMLHandler::CreateOrUpdateLRD(const ZYMIDOMNode_var& /*root*/, const RecordMap& /*records*/) {
  return Step(Trace, "QELXVARDOSLRDXMLHandler::CreateOrUpdateLRD").Return(E_NOTIMPL);
}

HRESULT QELXVARDOSLRDXMLHandler::ReadLRDFile(const ZYMUnicodeString& path, QELXIVARDOSLRDObject_var& record) {
  return Reader().Read(path, record);
}

RecordFileReader QELXVARDOSLRDXMLHandler::Reader() const { return {builder_, largestRecordFile_, observer_}; }

void QELXVARDOSLRDXMLHandler::SetLimitsOf(const QELIVARDOSGlobalConfigObject_var& config) {
  if (config) {
    largestRecordFile_ = config->GetLargestRecordFile();
  }
}

HRESULT QELXVARDOSLRDXMLHandler::WriteToFile(const QELXIVARDOSLRDObject_varList& records) {
  return WriteToFile(records, {});
}

HRESULT QELXVARDOSLRDXMLHandler::WriteToFile(const QELXIVARDOSLRDObject_varList& records,
                                             const RefusedFolders& refused) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::WriteToFile");
  const HRESULT status = RecordFileWriter(builder_, largestRecordFile_, observer_, refused).Write(records);
  // The files that were given up have told their own last error.
  return step.Return(status == E_ABORT ? HostLeave::Ended() : status);
}

HRESULT QELXVARDOSLRDXMLHandler::CreateAndHideLRDFolder(const QELXIVARDOSLRDObject_varList& records) {
  return MakeFolders(records).status;
}

QELXVARDOSLRDXMLHandler::Folders QELXVARDOSLRDXMLHandler::MakeFolders(const QELXIVARDOSLRDObject_varList& records) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::CreateAndHideLRDFolder");
  Folders folders;
  // Each folder is looked at once.
  std::set<std::string, std::less<>> present;
  for (const Record& record : records) {
    if (!IsSelected(record) || HasTypeClass(record, QELXVARDOSLRDConstants::TYPE_OBJECTWITHOUTFILE_LIKE)) {
      continue;
    }
    const ZYMUnicodeString folder = record->GetLRDFolderPath();
    if (RefusalOf(folder) != QELVARDOSNameRules::Refusal::None) {
      Trace.Write("Refused to leave the record folder : ", folder);
      continue;
    }
    if (present.contains(folder.View()) || QELVARDOSPathUtils::IsDir(folder)) {
      Trace.Write("Directory is already on disc: ", folder);
      present.emplace(folder.View());
      continue;
    }
    folders.status = QELVARDOSPathUtils::MakeDirs(folder, folders.made);
    if (FAILED(folders.status)) {
      Trace.Write("Failed to create directory: ", folder);
      folders.refused.insert_or_assign(folder.Str(), ReasonAgainst(folder));
      continue;
    }
    Trace.Write("Directory Created : ", folder);
    QELVARDOSPathUtils::HideFolder(folder);
    Trace.Write("Directory is marked hidden : ", folder);
    folders.refused.erase(folder.Str());
    present.emplace(folder.View());
  }
  for (const auto& [folder, error] : QELVARDOSPathUtils::KeepDirs(folders.made)) {
    // As for folders that could not be made, the last one's fate is the status.
    folders.status = folder == folders.made.back() ? E_FAIL : folders.status;
    folders.refused.insert_or_assign(folder.ToString().Str(), error.message());
  }
  step.Return(folders.status);
  return folders;
}

HRESULT QELXVARDOSLRDXMLHandler::GetLRDObjects(const ZYMIDOMNode_var& root, RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::GetLRDObjects");
  ReadCadObjectNode(root, records);
  RecordMap relationships;
  HRESULT status = ReadRelationshipListNode(root, relationships);
  if (SUCCEEDED(status)) {
    status = PrepareStructure(root, records, relationships);
  }
  return step.Return(status);
}

HRESULT QELXVARDOSLRDXMLHandler::ReadCadObjectNode(const ZYMIDOMNode_var& root, RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::ReadCadObjectNode");
  if (const ZYMIDOMElement_var element(root); element) {
    if (const ZYMIDOMElement_var list = FirstElement(element, Word::CadObjectList); list) {
      GetCadIdLrdObject(root, list, records);
      PrepareComposition(records);
    }
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDXMLHandler::ReadRelationshipListNode(const ZYMIDOMNode_var& root, RecordMap& relationships) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::ReadRelationshipListNode");
  HRESULT status = S_OK;
  if (const ZYMIDOMElement_var element(root); element) {
    if (const ZYMIDOMElement_var list = FirstElement(element, Word::RelationshipList); list) {
      status = GetCadIdLrdObject(root, list, relationships);
    }
  }
  return step.Return(status);
}

HRESULT QELXVARDOSLRDXMLHandler::GetCadIdLrdObject(const ZYMIDOMNode_var& root, const ZYMIDOMNode_var& list,
                                                   RecordMap& out) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::GetCadIdLrdObject");
  if (list.IsNull()) {
    return step.Return(S_OK);
  }
  QELXVARDOSLRDFactory factory;
  const QELVARDOSFileLookups lookups;
  const ZYMIDOMElement_var objects(list);
  ObjectsAhead ahead(objects);
  int done = 0;
  ForEachChildElement(list, [&](const ZYMIDOMElement_var& object) {
    ahead.Before(done++);
    if (!IsDerivedOutputLike(object)) {
      Record record;
      factory.GetLRDObject(config_, root, object, record);
      if (record) {
        out.Insert(record->GetCadId(), record);
      }
    }
    return true;
  });
  return step.Return(S_OK);
}

bool QELXVARDOSLRDXMLHandler::IsDerivedOutputLike(const ZYMIDOMElement_var& element) {
  using namespace QELXVARDOSLRDConstants;
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::IsDerivedOutputLike");
  const ZYMUnicodeString type = Attribute(element, Word::TypeOfDerivedOutput);
  const ZYMUnicodeString relationshipType = Attribute(element, Word::CadRelationship);
  const auto typeIs = [&](const ZYMUnicodeString& category) { return config_->IsTypeInCategory(type, category); };
  const auto relationshipIs = [&](const ZYMUnicodeString& category) {
    return config_->IsRelTypeInCategory(relationshipType, category);
  };
  bool derived = false;
  if (!type.IsEmpty()) {
    derived = typeIs(TYPE_DERIVED_OUTPUT_LIKE) || typeIs(TYPE_DO_DOCUMENT_LIKE) || typeIs(TYPE_VISUALIZATION_LIKE) ||
              typeIs(TYPE_BREP_LIKE);
  } else if (!relationshipType.IsEmpty()) {
    derived = relationshipIs(REL_DERIVED_OUTPUT_LIKE) || relationshipIs(REL_DO_DOCUMENT_LIKE) ||
              relationshipIs(REL_VISUALIZATION_LIKE) || relationshipIs(REL_BREP_LIKE);
  }
  return step.Return(derived ? 1 : 0) != 0;
}

HRESULT QELXVARDOSLRDXMLHandler::PrepareComposition(const RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::PrepareComposition");
  for (const RecordMap::Entry& entry : records) {
    Record composition;
    entry.second->GetCompositionLRDObject(composition);
    if (composition) {
      for (const ZYMUnicodeString& member : composition->GetCompositionList()) {
        records[member]->AddChild(composition);
      }
    }
  }
  return step.Return(S_OK);
}

/// Walks a structure depth first with a stack of its own, since its depth is the server's to choose. Every level knows
/// the first "relationship" below it by the time it is left, so that no subtree is searched twice.
class QELXVARDOSLRDXMLHandler::StructureWalk {
 public:
  StructureWalk(QELXVARDOSLRDXMLHandler& handler, const RecordMap& records, const RecordMap& relationships)
      : handler_(handler), records_(records), relationships_(relationships), members_(records) {}

  /// Links all that stands below top. Answers the first "relationship" below it, or null.
  ZYMIDOMElement_var Run(const ZYMIDOMNode_var& top) {
    Enter(top);
    for (;;) {
      if (levels_.back().next < levels_.back().count) {
        VisitNextChild();
        continue;
      }
      const Level left = std::move(levels_.back());
      levels_.pop_back();
      Step::Close(Trace, S_OK);
      if (levels_.empty()) {
        return left.relationship;
      }
      LinkToParent(left);
    }
  }

 private:
  struct Level {
    ZYMIDOMNode_var node;
    ZYMIDOMNodeList_var children;
    int count = 0;
    int next = 0;
    ZYMIDOMElement_var relationship;
  };

  void Enter(const ZYMIDOMNode_var& node) {
    const Step step(Trace, "QELXVARDOSLRDXMLHandler::BuildStructureUnderNode");
    Level level;
    level.node = node;
    node->getChildNodes(level.children);
    if (level.children) {
      level.children->getLength(level.count);
    }
    levels_.push_back(std::move(level));
  }

  void VisitNextChild() {
    Level& level = levels_.back();
    ZYMIDOMNode_var child;
    level.children->item(level.next++, child);
    const ZYMUnicodeString name = NodeName(child);
    if (!name.Matches(Word::CadObject)) {
      if (level.relationship.IsNull()) {
        level.relationship = RelationshipAtOrBelow(child, name);
      }
      return;
    }
    const Step step(Trace, "QELXVARDOSLRDXMLHandler::Build");
    Enter(child);
  }

  void LinkToParent(const Level& left) {
    Level& parent = levels_.back();
    handler_.Link(ZYMIDOMElement_var(left.node), parent.node, left.relationship, records_, relationships_, members_);
    if (parent.relationship.IsNull()) {
      parent.relationship = left.relationship;
    }
    Step::Close(Trace, S_OK);
  }

  static ZYMIDOMElement_var RelationshipAtOrBelow(const ZYMIDOMNode_var& node, const ZYMUnicodeString& name) {
    ZYMIDOMElement_var element(node);
    if (element.IsNull() || name == Word::Relationship) {
      return element;
    }
    return FirstElement(element, Word::Relationship);
  }

  QELXVARDOSLRDXMLHandler& handler_;
  const RecordMap& records_;
  const RecordMap& relationships_;
  CompositionMembers members_;
  std::vector<Level> levels_;
};

HRESULT QELXVARDOSLRDXMLHandler::PrepareStructure(const ZYMIDOMNode_var& root, const RecordMap& records,
                                                  const RecordMap& relationships) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::PrepareStructure");
  const ZYMIDOMElement_var element(root);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  ZYMIDOMNodeList_var found;
  if (const HRESULT status = element->getElementsByTagName(Word::Structure, found); FAILED(status)) {
    return step.Return(status);
  }
  ZYMIDOMNode_var first;
  found->item(0, first);
  const ZYMIDOMElement_var structure(first);
  if (structure.IsNull()) {
    return step.Return(S_OK);
  }
  // One walk for all of it, since it remembers what it looked up.
  StructureWalk walk(*this, records, relationships);
  const auto buildBelow = [&walk](const ZYMIDOMElement_var& group) {
    ForEachChild(group, [&walk](const ZYMIDOMNode_var& object) {
      walk.Run(object);
      return true;
    });
  };
  const ZYMIDOMElement_var active = FirstElement(structure, Word::Active);
  const ZYMIDOMElement_var family = FirstElement(structure, Word::Family);
  if (active.IsNull()) {
    buildBelow(structure);
  } else {
    buildBelow(active);
    if (family) {
      buildBelow(family);
    }
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDXMLHandler::BuildStructureUnderNode(const ZYMIDOMNode_var& node, const ZYMIDOMNode_var& /*outer*/,
                                                         const RecordMap& records, const RecordMap& relationships) {
  StructureWalk(*this, records, relationships).Run(node);
  return S_OK;
}

HRESULT QELXVARDOSLRDXMLHandler::Build(const ZYMIDOMNode_var& object, const ZYMIDOMNode_var& parent,
                                       const RecordMap& records, const RecordMap& relationships) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::Build");
  if (SUCCEEDED(BuildStructureUnderNode(object, parent, records, relationships))) {
    createRelationship(object, parent, records, relationships);
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDXMLHandler::createRelationship(const ZYMIDOMNode_var& object, const ZYMIDOMNode_var& parent,
                                                    const RecordMap& records, const RecordMap& relationships) {
  const ZYMIDOMElement_var element(object);
  CompositionMembers members(records);
  return Link(element, parent, element ? FirstElement(element, Word::Relationship) : ZYMIDOMElement_var(), records,
              relationships, members);
}

HRESULT QELXVARDOSLRDXMLHandler::Link(const ZYMIDOMElement_var& object, const ZYMIDOMNode_var& parent,
                                      const ZYMIDOMElement_var& relationship, const RecordMap& records,
                                      const RecordMap& relationships, CompositionMembers& members) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::createRelationship");
  if (object.IsNull() || relationship.IsNull()) {
    return step.Return(S_OK);
  }
  const ZYMUnicodeString objectId = Attribute(object, Word::CadId);
  const ZYMUnicodeString parentId = Attribute(ZYMIDOMElement_var(parent), Word::CadId);
  const Record link = relationships[Attribute(relationship, Word::Rid)];
  if (link.IsNull()) {
    return E_FAIL;
  }
  Record above;
  ZYMUnicodeString childId;
  const ZYMUnicodeString topNode = link->GetTopNode();
  if (topNode.Matches(Word::Dpt)) {
    above = records[parentId];
    childId = objectId;
  } else if (topNode.Matches(Word::Dpe)) {
    // The direction is reversed: the object stands above the node that encloses it.
    above = records[objectId];
    childId = parentId;
  }
  const Record full = childId.IsEmpty() ? Record() : records[childId];
  Record child;
  if (full) {
    full->GetChildLRDObject(child);
  }
  if (above.IsNull() || child.IsNull()) {
    return E_FAIL;
  }
  above->AddChild(link);
  above->AddChild(child);
  link->AddChild(child);
  child->AddParentRelationship(link);
  above->AddChildRelationship(link);
  above->AddRelatedChild(child);

  Record composition;
  full->GetCompositionLRDObject(composition);
  if (composition) {
    for (const Record& member : members.Lacking(composition)) {
      member->AddChild(link);
      member->AddChild(child);
    }
  }
  return step.Return(S_OK);
}

void QELXVARDOSLRDXMLHandler::ComputeStamps(const QELXIVARDOSLRDObject_varList& records) {
  const QELVARDOSFileLookups lookups;
  QELVARDOSFileNotices notices;
  const auto addLook = [&records](int at, QELVARDOSFileNotices::Looks& looks) {
    if (at < records.Size()) {
      looks.push_back({records[at + 1]->GetObjectFilePath().ToString().Str(), QELVARDOSFileLook::Kind::Facts});
    }
    return at < records.Size();
  };
  for (int at = 0; at < records.Size(); ++at) {
    notices.Before(at, addLook);
    ZYMUnicodeString stamp;
    records[at + 1]->ComputeObjectChangeStamp(stamp);
  }
}

HRESULT QELXVARDOSLRDXMLHandler::WriteSelected(const RecordMap& records) {
  QELXIVARDOSLRDObject_varList selected;
  for (const RecordMap::Entry& entry : records) {
    const Record& record = entry.second;
    if (IsSelected(record) && !HasTypeClass(record, QELXVARDOSLRDConstants::TYPE_OBJECTWITHOUTFILE_LIKE) &&
        !HasTypeClass(record, QELXVARDOSLRDConstants::TYPE_KORVANTHEMIX_LIKE)) {
      selected.Append(record);
    }
  }
  ComputeStamps(selected);
  Folders folders = MakeFolders(selected);
  const HRESULT status = WriteToFile(selected, folders.refused);
  if (status == E_ABORT) {
    // Only one that is empty can be removed, so what somebody else put there meanwhile stays.
    for (; !folders.made.empty(); folders.made.pop_back()) {
      QELVARDOSFileLayer::Current().Remove(folders.made.back().ToString().Str());
    }
  }
  return status;
}
