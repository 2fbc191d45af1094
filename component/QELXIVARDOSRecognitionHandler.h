#pragma once

#include "component/QELXIVARDOSLRDObject_varZYMUnicodeStringDico.h"
#include "component/QELXIVARDOSObserver.h"
#include "platform/ZYMIDOM.h"
#include "platform/ZYMUnicodeStringList.h"
#include "platform/ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico.h"

/// Decides for every object of a request whether the server knows it, and carries values between requests and records.
///
/// Out maps are filled, not cleared first. A node that is no element is no error: the status is 0 and nothing changes.
/// "Objects" below are the element children of the first "cadobjectlist" below the first "info", or below the node
/// itself where there is no "info".
class ZYM_EXPORT QELXIVARDOSRecognitionHandler : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(QELXIVARDOSRecognitionHandler, "{B23B6ADF-9285-42B6-9EBD-C352A317BA7A}");

 public:
  /// Writes the verdict ("status": "EXISTS", "MODIFIED" or "UNKNOWN"), the remembered stamps and the format version
  /// into every object of the request. lrdMap receives the records that the request itself carries, by CAD id. A record
  /// file that does not parse ends the call with E_FAIL; what was decided before stands. So does a place that could not
  /// be looked at where that might change the verdict: the object gets an empty "status", and
  /// QELVARDOSSystemUtils::LastError() names the place and the reason. E_ABORT: the observer ended it. Changes nothing
  /// on disk.
  virtual HRESULT Recognize(const ZYMIDOMNode_var& request, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& lrdMap) = 0;
  /// The records that the request carries, by CAD id; objects without a file of their own are left out.
  virtual HRESULT GetLRDMap(const ZYMIDOMNode_var& request, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& lrdMap) = 0;
  /// Hands the tree to the response handler that fits it and answers that one's status. Raises ZYMNullHandleError when
  /// no handler fits.
  virtual HRESULT CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                                    const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap) = 0;
  /// Writes the records to their files; their folders must exist. 0, or E_ABORT when the observer ended it.
  virtual HRESULT CreateOrUpdateLRD(const QELXIVARDOSLRDObject_varList& records) = 0;
  /// The records of the tree by physical id; of equal ids the last.
  virtual HRESULT GetPhidLRDMap(const ZYMIDOMNode_var& node, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap) = 0;
  /// Fills "filename", "mxtype", "oid" and "hashcode" of the objects from the records with their physical ids. Raises
  /// ZYMNullHandleError when a physical id has no record.
  virtual HRESULT UpdateInformationFromCache(const ZYMIDOMNode_var& root,
                                             const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap) = 0;
  /// Makes and hides the record folder of each selected record that has a file of its own. The status is that of the
  /// last folder that had to be made.
  virtual HRESULT CreateAndHideLRDFolder(const QELXIVARDOSLRDObject_varList& records) = 0;
  /// The records of phidMap by the CAD ids of the objects, their paths and stamps brought up to date. Objects whose CAD
  /// id is in skipList, or whose physical id has no record, are passed over.
  virtual HRESULT GetCadidLRDMap(const ZYMIDOMNode_var& node,
                                 const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap,
                                 QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap,
                                 ZYMUnicodeStringList skipList) = 0;
  /// Puts file names, hash codes and server types of the records into the objects, and paths and stamps into the
  /// records. cacheInformation: by CAD id, what the client's cache knows of stream objects; its "hashcode" is read.
  virtual HRESULT UpdateRequestAndLRDObjects(
      const ZYMIDOMNode_var& root, const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap,
      const ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico& cacheInformation) = 0;
  /// The records of phidMap by the CAD ids of the objects; a stream object gets a copy of its own. An object whose
  /// physical id has no record is passed over.
  virtual HRESULT GetCadidLRDMapForCache(const ZYMIDOMNode_var& root,
                                         const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap,
                                         QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap) = 0;
  /// Puts the paths that the objects name into the records.
  virtual HRESULT UpdateLRDObjects(const ZYMIDOMNode_var& root,
                                   const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap) = 0;

  /// Whom to tell of what the handler meets from now on; null: nobody.
  virtual void SetObserver(QELXIVARDOSObserver* /*observer*/) {}
  /// Whether Recognize goes on behind an object whose record is damaged or incomplete, or which rests on a place that
  /// could not be looked at; off unless it is turned on. Such an object gets an empty "status" and the format version
  /// of the objects before it, the observer is told RecordDamaged or CannotBeLookedAt of it, and the status is 0;
  /// QELVARDOSSystemUtils::LastError() then names the last such place.
  virtual void SetKeepGoing(bool /*keepGoing*/) {}
};

using QELXIVARDOSRecognitionHandler_var = ZYMHandle<QELXIVARDOSRecognitionHandler>;
