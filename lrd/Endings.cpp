#include "lrd/Endings.h"

#include "lrd/HostError.h"
#include "lrd/HostSystem.h"

namespace lrd {

void EndWhenAsked() {
  switch (NoticedEnding()) {
    case Ending::None:
      return;
    case Ending::Interrupt:
      throw HostError(Interrupted, "interrupted");
    case Ending::Termination:
      throw HostError(Terminated, "terminated");
  }
}

bool EndingObserver::MayGoOn(Stage /*stage*/, int /*done*/, int /*all*/) { return NoticedEnding() == Ending::None; }

}  // namespace lrd
