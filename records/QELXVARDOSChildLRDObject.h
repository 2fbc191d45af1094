#pragma once

#include "records/EntryLRDObject.h"

/// A child record places an object in the structure of its parent: an element "structure" in the parent's record file.
class QELXVARDOSChildLRDObject : public EntryLRDObject {
 public:
  static ZYMMetaObject* MetaObject() { return Format::Child.meta(); }

  /// From an object of a request or a response. The write flag is true when the object file does not exist.
  QELXVARDOSChildLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject,
                           const ZYMUnicodeString& identifier);
  /// From an element of a record file; the flag is not read.
  QELXVARDOSChildLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& element, bool& fromFile)
      : EntryLRDObject(format, element, fromFile) {}
  /// Both in format "0.0".
  QELXVARDOSChildLRDObject(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier)
      : QELXVARDOSChildLRDObject(Format::Child, cadobject, identifier) {}
  QELXVARDOSChildLRDObject(const ZYMIDOMNode_var& element, bool& fromFile)
      : QELXVARDOSChildLRDObject(Format::Child, element, fromFile) {}

  /// Whether the file that the element names is there; false without a file name.
  bool DoesFileExists(const ZYMIDOMNode_var& cadobject);
};

using QELXVARDOSChildLRDObject_V1 = RecordOf<QELXVARDOSChildLRDObject, Format::ChildV1>;
using QELXVARDOSChildLRDObject_V4 = RecordOf<QELXVARDOSChildLRDObject, Format::ChildV4>;
