#pragma once

#include "component/QELXIVARDOSRecognitionHandler.h"
#include "platform/QELIVARDOSClientContext.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"

/// Start here. The entry point of recognition: a client makes one, asks it for the handler that serves a request, and
/// calls Recognize on what it gets.
class ZYM_EXPORT QELXVARDOSRecognitionFactory {
 public:
  /// Without a client context every command may look at local records.
  QELXVARDOSRecognitionFactory();
  /// Keeps a reference to the context.
  explicit QELXVARDOSRecognitionFactory(const QELIVARDOSClientContext_var& context);
  virtual ~QELXVARDOSRecognitionFactory();
  QELXVARDOSRecognitionFactory(const QELXVARDOSRecognitionFactory&) = default;
  QELXVARDOSRecognitionFactory& operator=(const QELXVARDOSRecognitionFactory&) = default;

  /// handler receives the one that decides without records when the context lists the command or the request says
  /// downloadfileonly="TRUE", in upper case; otherwise the one that reads them, which keeps a reference to config. A
  /// request that is no element leaves handler as it was. Always 0: test the handle.
  HRESULT GetRecognitionHandler(const ZYMUnicodeString& command, const QELIVARDOSGlobalConfigObject_var& config,
                                const ZYMIDOMNode_var& request, QELXIVARDOSRecognitionHandler_var& handler);

 private:
  ZYMUnicodeStringList CommandsWithoutRecords() const;

  QELIVARDOSClientContext_var context_;
};
