#pragma once

#include <string>

#include "platform/QELIVARDOSClientContext.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"

namespace lrd {

/// What a configuration file says, as the module wants to be told.
struct Configuration {
  QELIVARDOSGlobalConfigObject_var object;
  /// null when no command goes without records.
  QELIVARDOSClientContext_var context;

  QELXVARDOSRecognitionFactory RecognitionFactory() const {
    return context.IsNull() ? QELXVARDOSRecognitionFactory() : QELXVARDOSRecognitionFactory(context);
  }
};

/// A file that is not well-formed, holds an element or attribute that is not known, or lacks one that it must have,
/// ends the command.
Configuration ReadConfiguration(const std::string& file);

}  // namespace lrd
