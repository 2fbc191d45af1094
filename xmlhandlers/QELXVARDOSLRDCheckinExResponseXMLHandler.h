#pragma once

#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

/// The response to a check-in.
class QELXVARDOSLRDCheckinExResponseXMLHandler : public QELXVARDOSLRDXMLHandler {
  ZYM_DECLARE_COMPONENT(QELXVARDOSLRDCheckinExResponseXMLHandler);

 public:
  explicit QELXVARDOSLRDCheckinExResponseXMLHandler(const QELIVARDOSGlobalConfigObject_var& config);

  /// The caller's records take over what the server answered about them and their relationships; then those that are
  /// selected are written.
  HRESULT CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                            const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
  /// The objects below "info", without their structure.
  HRESULT GetLRDObjects(const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
};
