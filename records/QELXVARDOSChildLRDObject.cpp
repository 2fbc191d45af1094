#include "records/QELXVARDOSChildLRDObject.h"

#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSChildLRDObject, QELXVARDOSLRDObject)
ZYM_DEFINE_COMPONENT(QELXVARDOSChildLRDObject_V1, QELXVARDOSChildLRDObject)
ZYM_DEFINE_COMPONENT(QELXVARDOSChildLRDObject_V4, QELXVARDOSChildLRDObject_V1)

namespace {

ZYM_LOADED_AS(TraceChannels) const QELXVARDOSTraceChannels Channels;

}  // namespace

const QELVARDOSClientTrace& EntryTrace() { return Channels.details; }

QELXVARDOSChildLRDObject::QELXVARDOSChildLRDObject(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier)
    : EntryLRDObject(cadobject, identifier) {
  writeFlag_ = !DoesFileExists(cadobject);
}

const ZYMUnicodeString& QELXVARDOSChildLRDObject::ElementName() { return Word::Structure; }

bool QELXVARDOSChildLRDObject::DoesFileExists(const ZYMIDOMNode_var& cadobject) {
  const QELVARDOSClientTraceStep step(EntryTrace(), "QELXVARDOSChildLRDObject::DoesFileExists");
  bool exists = false;
  ZYMUnicodeString fileName;
  ZYMUnicodeString folder;
  const ZYMIDOMElement_var element(cadobject);
  if (element && SUCCEEDED(element->getAttribute(Word::FileName, fileName)) &&
      SUCCEEDED(element->getAttribute(Word::DirName, folder)) && !fileName.IsEmpty()) {
    const QELVARDOSPath file = QELVARDOSPath(folder) / fileName;
    const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(file.ToString().Str());
    // That the file can be seen now does not bring back a stamp that could not be read before.
    if (facts.error) {
      unseen_ = facts.error;
    }
    exists = facts.Exists();
  }
  return step.Return(exists ? 1 : 0) != 0;
}
