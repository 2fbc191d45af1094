#include "records/QELXVARDOSCompositionLRDObject.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSCompositionLRDObject, QELXVARDOSLRDObject)
ZYM_DEFINE_COMPONENT(QELXVARDOSCompositionLRDObject_V1, QELXVARDOSCompositionLRDObject)
ZYM_DEFINE_COMPONENT(QELXVARDOSCompositionLRDObject_V4, QELXVARDOSCompositionLRDObject_V1)

QELXVARDOSCompositionLRDObject::QELXVARDOSCompositionLRDObject(const ZYMIDOMNode_var& cadobject,
                                                               const ZYMUnicodeString& identifier,
                                                               const ZYMUnicodeStringList& members)
    : EntryLRDObject(cadobject, identifier), members_(members) {
  writeFlag_ = true;
}

const ZYMUnicodeString& QELXVARDOSCompositionLRDObject::ElementName() { return Word::Composition; }
