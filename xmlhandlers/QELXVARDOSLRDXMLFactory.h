#pragma once

#include "component/QELXIVARDOSLRDXMLHandler.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"

/// Chooses the XML handler for the tree of a command or of a server response.
class ZYM_EXPORT QELXVARDOSLRDXMLFactory {
 public:
  /// The plain handler, which reads record files without a command. Always 0.
  HRESULT GetLRDXMLHandler(const QELIVARDOSGlobalConfigObject_var& config, QELXIVARDOSLRDXMLHandler_var& handler);
  /// The handler that serves the tree whose root is node, chosen by the root's name, its "cname" and its "mode". A tree
  /// that none serves leaves handler as it was. Always 0: test the handle. A null node raises ZYMNullHandleError.
  HRESULT GetLRDXMLHandler(const QELIVARDOSGlobalConfigObject_var& config, const ZYMIDOMNode_var& node,
                           QELXIVARDOSLRDXMLHandler_var& handler);
};
