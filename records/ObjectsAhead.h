#pragma once

#include "platform/QELVARDOSFileNotices.h"
#include "platform/ZYMIDOM.h"
#include "platform/ZYMUnicodeString.h"

/// Tells the file layer which files the objects ahead in a list will have looked at, if it wants to know.
class ObjectsAhead {
 public:
  /// list: of objects that are to be recognised. cadName: for the paths of their records. Both must outlive this.
  /// ofRecord: what is wanted of each record file.
  ObjectsAhead(const ZYMIDOMElement_var& list, const ZYMUnicodeString& cadName, QELVARDOSFileLook::Kind ofRecord)
      : list_(list), cadName_(&cadName), ofRecord_(ofRecord) {}
  /// list: of objects that records are made of, which must outlive this.
  explicit ObjectsAhead(const ZYMIDOMElement_var& list) : list_(list) {}

  /// object: counted from 0.
  void Before(int object) {
    notices_.Before(object, [this](int ahead, QELVARDOSFileNotices::Looks& looks) { return Add(ahead, looks); });
  }

 private:
  bool Add(int object, QELVARDOSFileNotices::Looks& looks);
  void AddRecognition(const ZYMIDOMElement_var& element, QELVARDOSFileNotices::Looks& looks) const;
  ZYMIDOMElement_var GoTo(int object);

  const ZYMIDOMElement_var& list_;
  /// Null when no record is looked at.
  const ZYMUnicodeString* cadName_ = nullptr;
  QELVARDOSFileLook::Kind ofRecord_ = QELVARDOSFileLook::Kind::Content;
  QELVARDOSFileNotices notices_;
  /// Where the next object is looked for in the list, and its number.
  ZYMIDOMNodeList_var nodes_;
  int node_ = 0;
  int object_ = 0;
};
