#pragma once

#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

/// The response to a check-out by path.
class QELXVARDOSLRDCheckoutExPathXMLHandler : public QELXVARDOSLRDXMLHandler {
  ZYM_DECLARE_COMPONENT(QELXVARDOSLRDCheckoutExPathXMLHandler);

 public:
  explicit QELXVARDOSLRDCheckoutExPathXMLHandler(const QELIVARDOSGlobalConfigObject_var& config);

  /// Writes those of the caller's records that are selected. 0, or E_ABORT when the observer ended it.
  HRESULT CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                            const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
  /// The objects below "info", without their structure.
  HRESULT GetLRDObjects(const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
};
