#pragma once

#include "records/EntryLRDObject.h"

/// A composition record says that an object belongs to others, for example an instance to its family table: an element
/// "composition" in the record file of each member. Its write flag is true.
class QELXVARDOSCompositionLRDObject : public EntryLRDObject {
 public:
  static ZYMMetaObject* MetaObject() { return Format::Composition.meta(); }

  /// From an object of a request or a response. members: the CAD ids of the objects that it belongs to.
  QELXVARDOSCompositionLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject,
                                 const ZYMUnicodeString& identifier, const ZYMUnicodeStringList& members)
      : EntryLRDObject(format, cadobject, identifier), members_(members) {
    writeFlag_ = true;
  }
  /// From an element of a record file; the flag is not read. The members are not in a file.
  QELXVARDOSCompositionLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& element, bool& fromFile)
      : EntryLRDObject(format, element, fromFile) {}
  /// Both in format "0.0".
  QELXVARDOSCompositionLRDObject(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier,
                                 const ZYMUnicodeStringList& members)
      : QELXVARDOSCompositionLRDObject(Format::Composition, cadobject, identifier, members) {}
  QELXVARDOSCompositionLRDObject(const ZYMIDOMNode_var& element, bool& fromFile)
      : QELXVARDOSCompositionLRDObject(Format::Composition, element, fromFile) {}

  ZYMUnicodeStringList GetCompositionList() const override { return members_; }

 private:
  ZYMUnicodeStringList members_;
};

using QELXVARDOSCompositionLRDObject_V1 = RecordOf<QELXVARDOSCompositionLRDObject, Format::CompositionV1>;
using QELXVARDOSCompositionLRDObject_V4 = RecordOf<QELXVARDOSCompositionLRDObject, Format::CompositionV4>;
