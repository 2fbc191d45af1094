#pragma once

#include "component/QELXIVARDOSObserver.h"
#include "platform/HRESULT.h"
#include "platform/QELVARDOSSystemUtils.h"

/// Asks the host from time to time whether a call may go on. Without an observer it always may.
class HostLeave {
 public:
  using Stage = QELXIVARDOSObserver::Stage;

  /// observer: may be null, not owned. all: how many things the call goes through.
  HostLeave(QELXIVARDOSObserver* observer, Stage stage, int all) : observer_(observer), stage_(stage), all_(all) {}

  /// E_ABORT when the call is to end here, with done things behind it.
  HRESULT Ask(int done) const {
    return observer_ == nullptr || observer_->MayGoOn(stage_, done, all_) ? S_OK : Ended();
  }
  /// The status of a call that was ended, which the last error tells too.
  static HRESULT Ended() {
    QELVARDOSSystemUtils::SetLastError("ended by the host");
    return E_ABORT;
  }

 private:
  QELXIVARDOSObserver* observer_;
  Stage stage_;
  int all_;
};
