#pragma once

#include "component/QELXIVARDOSRecognitionHandler.h"

/// Recognition from the request alone: looks at no record and at no file. Every operation but Recognize does nothing
/// and answers 0.
class QELXVARDOSRecognitionHandlerNoLRD : public QELXIVARDOSRecognitionHandler {
  ZYM_DECLARE_COMPONENT(QELXVARDOSRecognitionHandlerNoLRD);

 public:
  explicit QELXVARDOSRecognitionHandlerNoLRD(const ZYMUnicodeString& command);
  ~QELXVARDOSRecognitionHandlerNoLRD() override;

  /// An object with a physical id is EXISTS, or MODIFIED with modified="TRUE"; one without, or with
  /// recognizeasnew="true", is UNKNOWN. Stamps that are missing are written as empty. lrdMap is not used.
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

 private:
  HRESULT RecognizePerNode(const ZYMIDOMNode_var& cadObject, ZYMUnicodeString version);

  ZYMUnicodeString command_;
  QELXIVARDOSObserver* observer_ = nullptr;

  /// Recognises objects that have a physical id as this class does.
  friend class Recognition;
};
