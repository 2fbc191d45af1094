#pragma once

#include "records/EntryLRDObject.h"

/// A child record places an object in the structure of its parent: an element "structure" in the parent's record file.
/// Format "0.0".
class QELXVARDOSChildLRDObject : public EntryLRDObject<QELXVARDOSChildLRDObject> {
  ZYM_DECLARE_COMPONENT(QELXVARDOSChildLRDObject);

 public:
  /// From an object of a request or a response. The write flag is true when the object file does not exist.
  QELXVARDOSChildLRDObject(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier);
  /// From an element of a record file; the flag is not read.
  using EntryLRDObject::EntryLRDObject;

  static const ZYMUnicodeString& ElementName();
  /// Whether the file that the element names is there; false without a file name.
  bool DoesFileExists(const ZYMIDOMNode_var& cadobject);

 protected:
  QELXVARDOSChildLRDObject() = default;
};

/// Formats "1.0" to "3.0": "macroceStamp".
class QELXVARDOSChildLRDObject_V1 : public EntryLRDObject_V1<QELXVARDOSChildLRDObject_V1, QELXVARDOSChildLRDObject> {
  ZYM_DECLARE_COMPONENT(QELXVARDOSChildLRDObject_V1);

 public:
  using EntryLRDObject_V1::EntryLRDObject_V1;
};

/// Format "4.0": "xsStamp".
class QELXVARDOSChildLRDObject_V4 : public EntryLRDObject_V4<QELXVARDOSChildLRDObject_V4, QELXVARDOSChildLRDObject_V1> {
  ZYM_DECLARE_COMPONENT(QELXVARDOSChildLRDObject_V4);

 public:
  using EntryLRDObject_V4::EntryLRDObject_V4;
};
