#pragma once

#include "component/QELXIVARDOSRecognitionHandler.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/ZYMIDOMNode_varZYMUnicodeStringDico.h"
#include "platform/ZYMUnicodeStringZYMUnicodeStringDico.h"

/// Recognition against the local records. A verdict comes from the first of these that applies: the physical id that
/// the request gives the object; the stamp in the object's own record file; the entry of the object in the record file
/// of its composition, or in its own where it has no file any more.
class QELXVARDOSRecognitionHandler : public QELXIVARDOSRecognitionHandler {
  ZYM_DECLARE_COMPONENT(QELXVARDOSRecognitionHandler);

 public:
  /// As the creation registry makes it: no command and no configuration.
  QELXVARDOSRecognitionHandler();
  /// Keeps a reference to the configuration. command may be a command's name or "CREO".
  QELXVARDOSRecognitionHandler(const ZYMUnicodeString& command, const QELIVARDOSGlobalConfigObject_var& config);
  ~QELXVARDOSRecognitionHandler() override;

  HRESULT Recognize(const ZYMIDOMNode_var& request, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& lrdMap) override;
  HRESULT GetLRDMap(const ZYMIDOMNode_var& request, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& lrdMap) override;
  HRESULT CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                            const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap) override;
  HRESULT CreateOrUpdateLRD(const QELXIVARDOSLRDObject_varList& records) override;
  HRESULT GetPhidLRDMap(const ZYMIDOMNode_var& node, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap) override;
  HRESULT UpdateInformationFromCache(const ZYMIDOMNode_var& root,
                                     const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap) override;
  HRESULT CreateAndHideLRDFolder(const QELXIVARDOSLRDObject_varList& records) override;
  HRESULT GetCadidLRDMap(const ZYMIDOMNode_var& node, const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap,
                         QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap,
                         ZYMUnicodeStringList skipList) override;
  HRESULT UpdateRequestAndLRDObjects(
      const ZYMIDOMNode_var& root, const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap,
      const ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico& cacheInformation) override;
  HRESULT GetCadidLRDMapForCache(const ZYMIDOMNode_var& root,
                                 const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& phidMap,
                                 QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap) override;
  HRESULT UpdateLRDObjects(const ZYMIDOMNode_var& root,
                           const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& cadidMap) override;
  void SetObserver(QELXIVARDOSObserver* observer) override { observer_ = observer; }
  void SetKeepGoing(bool keepGoing) override { keepGoing_ = keepGoing; }

  /// Without the records of type class "TYPE_OBJECT_WITHOUT_FILE", under their own CAD ids. Always 0.
  HRESULT GetCAdIdLRDExceptspecificTypes(const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& in,
                                         QELXIVARDOSLRDObject_varZYMUnicodeStringDico& out);
  /// The elements of the list by CAD id, those without one left out; of equal ids the last. The status is that of the
  /// last id read.
  HRESULT getCadidObjectNodeMap(const ZYMIDOMNode_var& cadobjectlist, ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap);
  /// The paths of the first object of the composition whose record file exists; paths stays as it was when there is
  /// none. An id that the map lacks is passed over. Always 0.
  HRESULT GetObjectFileLRDFileFromComposition(const ZYMIDOMNode_var& cadObject,
                                              ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap,
                                              ZYMUnicodeStringZYMUnicodeStringDico& paths);
  /// The same for the first parent, and for the composition when the parent has no record file. Recognize never comes
  /// to this lookup, since every object has paths of its own. Always 0.
  HRESULT GetObjectFileLRDFileFromParent(const ZYMIDOMNode_var& cadObject, ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap,
                                         ZYMUnicodeStringZYMUnicodeStringDico& paths);
  /// The record of b that has the id of a record of a; of several the match of the last in a. Empty ids match nothing.
  /// Always 0.
  HRESULT GetchildLRDObjStructureLrdList(const QELXIVARDOSLRDObject_varList& a, const QELXIVARDOSLRDObject_varList& b,
                                         QELXIVARDOSLRDObject_var& entry);
  /// The file's modification time, "0" when there is no file. Answers stamp.
  ZYMUnicodeString& GetFileTimeStamp(ZYMUnicodeString& stamp, const ZYMUnicodeString& path);
  /// Gives the relationships below node that have no physical id the one that the record knows. Always 0.
  HRESULT UpdateRelNode(const ZYMIDOMNode_var& node, const QELXIVARDOSLRDObject_var& record);

 private:
  /// The CAD system's name for record paths. Some clients hand it in as the command; the others' configuration knows
  /// it.
  ZYMUnicodeString CadName() const;

  ZYMUnicodeString command_;
  QELIVARDOSGlobalConfigObject_var config_;
  QELXIVARDOSObserver* observer_ = nullptr;
  bool keepGoing_ = false;
};

/// What the creation registry calls for "QELXVARDOSRecognitionHandler": a new handler with one reference, the caller's.
ZYM_EXPORT ZYMBaseUnknown* CreateBOAQELXIVARDOSRecognitionHandlerQELXVARDOSRecognitionHandler();
