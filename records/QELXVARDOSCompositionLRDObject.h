#pragma once

#include "records/EntryLRDObject.h"

/// A composition record says that an object belongs to others, for example an instance to its family table: an element
/// "composition" in the record file of each member. Its write flag is true. Format "0.0".
class QELXVARDOSCompositionLRDObject : public EntryLRDObject<QELXVARDOSCompositionLRDObject> {
  ZYM_DECLARE_COMPONENT(QELXVARDOSCompositionLRDObject);

 public:
  /// From an object of a request or a response. members: the CAD ids of the objects that it belongs to.
  QELXVARDOSCompositionLRDObject(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier,
                                 const ZYMUnicodeStringList& members);
  /// From an element of a record file; the flag is not read. The members are not in a file.
  QELXVARDOSCompositionLRDObject(const ZYMIDOMNode_var& element, bool& fromFile) : EntryLRDObject(element, fromFile) {}

  static const ZYMUnicodeString& ElementName();
  ZYMUnicodeStringList GetCompositionList() const override { return members_; }

 protected:
  QELXVARDOSCompositionLRDObject() = default;

 private:
  ZYMUnicodeStringList members_;
};

/// Formats "1.0" to "3.0": "macroceStamp".
class QELXVARDOSCompositionLRDObject_V1
    : public EntryLRDObject_V1<QELXVARDOSCompositionLRDObject_V1, QELXVARDOSCompositionLRDObject> {
  ZYM_DECLARE_COMPONENT(QELXVARDOSCompositionLRDObject_V1);

 public:
  using EntryLRDObject_V1::EntryLRDObject_V1;
};

/// Format "4.0": "xsStamp".
class QELXVARDOSCompositionLRDObject_V4
    : public EntryLRDObject_V4<QELXVARDOSCompositionLRDObject_V4, QELXVARDOSCompositionLRDObject_V1> {
  ZYM_DECLARE_COMPONENT(QELXVARDOSCompositionLRDObject_V4);

 public:
  using EntryLRDObject_V4::EntryLRDObject_V4;
};
