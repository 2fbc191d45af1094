#pragma once

#include "component/QELXIVARDOSLRDObject_varZYMUnicodeStringDico.h"
#include "component/QELXIVARDOSObserver.h"
#include "platform/ZYMIDOM.h"

/// Reads record files and turns the trees of commands and server responses into records.
class ZYM_EXPORT QELXIVARDOSLRDXMLHandler : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(QELXIVARDOSLRDXMLHandler, "{32BA92C8-E5E3-4342-9D70-7A24668122E0}");

 public:
  /// Reads a record file with its nested records. E_FAIL when it is missing, does not parse or is nested deeper than
  /// 256 records; record is as it was. A file that holds no record of a known kind or version: 0, and record is as it
  /// was. Raises ZYMNullHandleError when an element that a record must have is missing.
  virtual HRESULT ReadLRDFile(const ZYMUnicodeString& path, QELXIVARDOSLRDObject_var& record) = 0;
  /// Brings the record files on disk up to date after a response. records: the caller's, by CAD id; which of them are
  /// updated and written depends on the command. A handler that only reads answers E_NOTIMPL. E_ABORT: the observer
  /// ended it.
  virtual HRESULT CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                                    const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) = 0;
  /// Fills records, by CAD id, from the tree, linked into their structure where the command has one.
  virtual HRESULT GetLRDObjects(const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) = 0;

  /// Whom to tell of what the handler meets from now on; null: nobody.
  virtual void SetObserver(QELXIVARDOSObserver* /*observer*/) {}
};

using QELXIVARDOSLRDXMLHandler_var = ZYMHandle<QELXIVARDOSLRDXMLHandler>;
