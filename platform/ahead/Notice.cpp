#include "platform/ahead/Notice.h"

#include <thread>
#include <utility>

namespace {

using State = AheadLook::State;
using Kind = QELVARDOSFileLook::Kind;

/// Of one content; what is larger is read when it is asked for.
constexpr std::size_t LargestContent = std::size_t{256} << 10U;
constexpr std::size_t MostContent = std::size_t{16} << 20U;

bool Becomes(AheadLook& look, State before, State after) { return look.state.compare_exchange_strong(before, after); }

/// Looks that failed for want of something on our side may succeed when only the caller looks.
bool IsOfOurs(const std::error_code& error) {
  return error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system ||
         error == std::errc::not_enough_memory || error == std::errc::file_too_large;
}

/// Where looks are fast it is over before the system could have put the caller to sleep.
void Await(const AheadLook& look) {
  constexpr int Yields = 32;
  for (int yield = 0; look.state == State::Running && yield < Yields; ++yield) {
    std::this_thread::yield();
  }
  look.state.wait(State::Running);
}

bool IsAtOrBelow(std::string_view path, std::string_view place) {
  return path.size() >= place.size() && path.starts_with(place) &&
         (path.size() == place.size() || path[place.size()] == '/');
}

}  // namespace

Notice::Notice(QELVARDOSFileLayer& disk, std::vector<QELVARDOSFileLook> looks, HeldBytes& held, Listings& listings)
    : disk_(disk),
      held_(held),
      listings_(listings),
      count_(looks.size()),
      looks_(std::make_unique<AheadLook[]>(count_)) {  // NOLINT(cppcoreguidelines-avoid-c-arrays): see the header
  for (std::size_t at = 0; at < count_; ++at) {
    looks_[at].look = std::move(looks[at]);
  }
}

Notice::~Notice() {
  for (std::size_t at = 0; at < count_; ++at) {
    held_ -= looks_[at].bytes.size();
  }
}

AheadLook* Notice::Take(const std::string& path, Kind kind, bool& wasTold) {
  AheadLook* const look = Find(path, kind);
  if (look == nullptr) {
    return nullptr;
  }
  wasTold = true;
  if (Becomes(*look, State::Waiting, State::Gone)) {
    return nullptr;
  }
  Await(*look);
  if (!Becomes(*look, State::Done, State::Gone)) {
    return nullptr;
  }
  held_ -= look->bytes.size();
  return look;
}

/// The next of that path that has not gone.
AheadLook* Notice::Find(const std::string& path, Kind kind) {
  for (std::size_t step = 0; step < count_; ++step) {
    const std::size_t at = asked_ + step < count_ ? asked_ + step : asked_ + step - count_;
    AheadLook& look = looks_[at];
    if (look.look.kind == kind && look.look.path == path && look.state != State::Gone) {
      asked_ = at + 1 < count_ ? at + 1 : 0;
      return &look;
    }
  }
  return nullptr;
}

void Notice::Forget(std::string_view path) {
  for (std::size_t at = 0; at < count_; ++at) {
    AheadLook& look = looks_[at];
    if (IsAtOrBelow(look.look.path, path) && !Becomes(look, State::Waiting, State::Gone) &&
        !Becomes(look, State::Done, State::Gone) && Becomes(look, State::Running, State::Changed)) {
      look.state.notify_all();
    }
  }
}

/// What raises is left to the caller, who then meets it himself.
bool Notice::DoNext() noexcept {
  const std::size_t at = isPassed_ ? count_ : next_.fetch_add(1, std::memory_order_relaxed);
  if (at >= count_) {
    return false;
  }
  AheadLook& look = looks_[at];
  if (Becomes(look, State::Waiting, State::Running)) {
    bool isSeen = false;
    try {
      LookUp(look);
      isSeen = !IsOfOurs(look.error) && !IsOfOurs(look.facts.error);
    } catch (...) {  // NOLINT(bugprone-empty-catch): see above
    }
    if (!isSeen || !Becomes(look, State::Running, State::Done)) {
      look.state = State::Gone;
    }
    look.state.notify_all();
  }
  return true;
}

void Notice::LookUp(AheadLook& look) {
  if (look.look.kind == Kind::Facts) {
    look.facts = disk_.Stat(look.look.path);
  } else if (listings_.TellMissing(look.look.path)) {
    look.error = std::make_error_code(std::errc::no_such_file_or_directory);
  } else {
    Read(look);
  }
}

void Notice::Read(AheadLook& look) {
  // Room is taken for the largest before it is known what is read.
  if (held_.fetch_add(LargestContent) + LargestContent > MostContent) {
    look.error = std::make_error_code(std::errc::not_enough_memory);
  } else {
    look.error = look.look.kind == Kind::Content
                     ? disk_.Read(look.look.path, look.bytes, LargestContent)
                     : disk_.ReadWithFacts(look.look.path, look.bytes, LargestContent, look.facts);
  }
  if (look.error) {
    std::string().swap(look.bytes);
  }
  held_ -= LargestContent - look.bytes.size();
  if (!look.error) {
    listings_.WasFound(look.look.path);
  } else if (look.error == std::errc::no_such_file_or_directory) {
    listings_.WasMissing(look.look.path);
  }
}
