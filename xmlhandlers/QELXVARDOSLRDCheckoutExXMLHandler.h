#pragma once

#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

/// The response to a check-out or to a synchronisation.
class QELXVARDOSLRDCheckoutExXMLHandler : public QELXVARDOSLRDXMLHandler {
  ZYM_DECLARE_COMPONENT(QELXVARDOSLRDCheckoutExXMLHandler);

 public:
  explicit QELXVARDOSLRDCheckoutExXMLHandler(const QELIVARDOSGlobalConfigObject_var& config);

  /// Writes the selected records of the response itself; the caller's are not used.
  HRESULT CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                            const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
  /// The objects below "info" with their structure.
  HRESULT GetLRDObjects(const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
};
