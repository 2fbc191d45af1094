#include "records/ObjectsAhead.h"

#include "platform/QELVARDOSPath.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDFactory.h"

using Kind = QELVARDOSFileLook::Kind;

/// Which compositions will be asked for shows only when it comes to that.
bool ObjectsAhead::Add(int object, QELVARDOSFileNotices::Looks& looks) {
  const ZYMIDOMElement_var element = GoTo(object);
  if (element.IsNull()) {
    return false;
  }
  if (cadName_ != nullptr) {
    AddRecognition(element, looks);
  } else if (const ZYMUnicodeString fileName = Attribute(element, Word::FileName); !fileName.IsEmpty()) {
    const QELVARDOSPath file = QELVARDOSPath(Attribute(element, Word::DirName)) / fileName;
    looks.push_back({file.ToString().Str(), Kind::Facts});
  }
  return true;
}

/// An object with a physical id is not looked up, and one that is to count as new has its record not read.
void ObjectsAhead::AddRecognition(const ZYMIDOMElement_var& element, QELVARDOSFileNotices::Looks& looks) const {
  if (Attribute(element, Word::Phid).IsEmpty()) {
    const QELXVARDOSLRDFactory::Paths paths = QELXVARDOSLRDFactory::PathsAhead(*cadName_, element);
    const bool isNew = Attribute(element, Word::RecognizeAsNew) == Word::UpperTrue;
    looks.push_back({paths.objectFile.ToString().Str(), Kind::Facts});
    looks.push_back({paths.recordFile.Str(), isNew ? Kind::Facts : ofRecord_});
  }
}

/// Forward alone; null behind the last.
ZYMIDOMElement_var ObjectsAhead::GoTo(int object) {
  if (nodes_.IsNull()) {
    list_->getChildNodes(nodes_);
  }
  int count = 0;
  if (nodes_) {
    nodes_->getLength(count);
  }
  while (node_ < count) {
    ZYMIDOMNode_var node;
    nodes_->item(node_++, node);
    ZYMIDOMElement_var element(node);
    if (element && object_++ == object) {
      return element;
    }
  }
  return {};
}
