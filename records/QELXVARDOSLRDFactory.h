#pragma once

#include "component/QELXIVARDOSLRDObject.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/ZYMUnicodeStringZYMUnicodeStringDico.h"

struct RecordFormat;

/// The one place where records are made. Every status is 0: what could not be made shows as a handle that stays as it
/// came. A null configuration, and a null record where one is needed, raise ZYMNullHandleError.
class QELXVARDOSLRDFactory {
 public:
  QELXVARDOSLRDFactory() = default;
  QELXVARDOSLRDFactory(const QELXVARDOSLRDFactory&) = default;
  QELXVARDOSLRDFactory& operator=(const QELXVARDOSLRDFactory&) = default;
  virtual ~QELXVARDOSLRDFactory();

  /// The record that an element of a record file holds, by the name of its class. Nested records are not read.
  HRESULT CreateObject(const ZYMUnicodeString& className, const ZYMIDOMNode_var& element, bool& fromFile,
                       QELXIVARDOSLRDObject_var& record);
  /// The same, the class chosen by the element's name and the version of its file; an empty version is the oldest.
  HRESULT GetLRDObjectFromLRDFile(const ZYMIDOMNode_var& element, const ZYMUnicodeString& version,
                                  QELXIVARDOSLRDObject_var& record);
  /// The record of a "cadobject" or "relationship" of a request or response, in the format that command calls for; a
  /// cadobject's with its child and composition records, its record file and its type classes. A cadobject under a
  /// command that is no element raises ZYMNullHandleError.
  HRESULT GetLRDObject(const QELIVARDOSGlobalConfigObject_var& config, const ZYMIDOMNode_var& command,
                       const ZYMIDOMNode_var& object, QELXIVARDOSLRDObject_var& record);
  /// Adds the type classes that the record's type and origin call for.
  HRESULT ClassifyLRDObject(const QELIVARDOSGlobalConfigObject_var& config, const ZYMIDOMNode_var& command,
                            const QELXIVARDOSLRDObject_var& record);
  /// What tells the object apart in the record of its parent; empty when its type has no identifying attribute.
  ZYMUnicodeString GetIdentifier(const QELIVARDOSGlobalConfigObject_var& config, const ZYMIDOMNode_var& object);
  /// Puts the path of the object file under "objectfile" and that of its record under "lrdfile", always both. All
  /// versions of one Creo file in one folder share a record file.
  HRESULT GetObjectFileLRDFile(const ZYMUnicodeString& cadName, const ZYMIDOMNode_var& cadobject,
                               ZYMUnicodeStringZYMUnicodeStringDico& paths);
  /// Gives the record and its child and composition records the record file of the cadobject.
  HRESULT SetLRDFile(const QELIVARDOSGlobalConfigObject_var& config, const ZYMIDOMNode_var& cadobject,
                     const QELXIVARDOSLRDObject_var& record);

  /// What GetObjectFileLRDFile puts into its dictionary, for callers that need no dictionary.
  struct Paths {
    /// Under the keys of the dictionary; others in it stay.
    void PutInto(ZYMUnicodeStringZYMUnicodeStringDico& paths) const;

    QELVARDOSPath objectFile;
    ZYMUnicodeString recordFile;
  };
  Paths PathsOf(const ZYMUnicodeString& cadName, const ZYMIDOMElement_var& cadobject);
  /// The same, of an object whose turn has not come: nothing is traced.
  static Paths PathsAhead(const ZYMUnicodeString& cadName, const ZYMIDOMElement_var& cadobject);

 private:
  HRESULT CreateObject(const RecordFormat* format, const ZYMIDOMNode_var& element, bool& fromFile,
                       QELXIVARDOSLRDObject_var& record);
  QELXIVARDOSLRDObject_var MakeFullRecord(const ZYMUnicodeString& version, const ZYMIDOMNode_var& object,
                                          const ZYMUnicodeString& identifier);
};
