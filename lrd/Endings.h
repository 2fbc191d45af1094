#pragma once

#include "component/QELXIVARDOSObserver.h"

namespace lrd {

/// Ends the command when Ctrl-C or the request to terminate was noticed: asked wherever nothing is half done.
void EndWhenAsked();

/// Has a call of the module end for the same reason.
class EndingObserver : public QELXIVARDOSObserver {
 public:
  bool MayGoOn(Stage stage, int done, int all) override;
};

}  // namespace lrd
