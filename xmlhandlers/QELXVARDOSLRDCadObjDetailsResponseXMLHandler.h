#pragma once

#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

/// The response to a query of object details: it only reads.
class QELXVARDOSLRDCadObjDetailsResponseXMLHandler : public QELXVARDOSLRDXMLHandler {
  ZYM_DECLARE_COMPONENT(QELXVARDOSLRDCadObjDetailsResponseXMLHandler);

 public:
  explicit QELXVARDOSLRDCadObjDetailsResponseXMLHandler(const QELIVARDOSGlobalConfigObject_var& config);

  /// The objects below "info", without their structure. Unlike the other handlers it does not test its root: one that
  /// is no element raises ZYMNullHandleError.
  HRESULT GetLRDObjects(const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
};
