#include "records/QELXVARDOSChildLRDObject.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSFileLayer.h"
#include "records/QELXVARDOSLRDConstants.h"

QELXVARDOS_TRACED_HERE;

QELXVARDOSChildLRDObject::QELXVARDOSChildLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject,
                                                   const ZYMUnicodeString& identifier)
    : EntryLRDObject(format, cadobject, identifier) {
  writeFlag_ = !DoesFileExists(cadobject);
}

bool QELXVARDOSChildLRDObject::DoesFileExists(const ZYMIDOMNode_var& cadobject) {
  const Step step(Trace, "QELXVARDOSChildLRDObject::DoesFileExists");
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
