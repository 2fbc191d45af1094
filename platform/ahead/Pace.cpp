#include "platform/ahead/Pace.h"

#include <algorithm>
#include <limits>
#include <thread>

namespace {

/// As few as tell, since each of them may cost a round trip to a server.
constexpr int Trial = 8;
/// So many pass from one trial to the next.
constexpr int Pause = 1024;
/// A trial that failed is repeated the more seldom the more often it did.
constexpr int MostFailures = 6;
constexpr int Round = 128;
/// After these the disk may have become another.
constexpr int MostRounds = 64;

/// What passes before one thread is tried, and what is measured with it and without.
constexpr int PairPause = 2048;
constexpr int PairRound = 1024;
/// From then on it is measured anew.
constexpr int PairRun = 65536;

}  // namespace

bool Pace::IsTrial() {
  if (Threads() > 0) {
    return false;
  }
  const int left = pause_.load(std::memory_order_relaxed);
  pause_.store(std::max(left - 1, 0), std::memory_order_relaxed);
  return left == 0;
}

void Pace::TookAlone(Duration took) {
  const std::scoped_lock guard(mutex_);
  ++counted_;
  slowOnes_ += took > slow_ ? 1 : 0;
  sum_ += took;
  if (counted_ < Trial) {
    return;
  }
  alone_ = sum_ / counted_;
  Use(2 * slowOnes_ >= counted_ ? most_ : 0);
}

void Pace::Waited(Duration waited) {
  if (slow_ == Given) {
    return;
  }
  const std::scoped_lock guard(mutex_);
  ++counted_;
  sum_ += waited;
  if (counted_ < Round) {
    return;
  }
  const bool pays = 4 * (sum_ / counted_) < 3 * alone_;
  failures_ = pays ? 0 : std::min(failures_ + 1, MostFailures);
  const bool goesOn = pays && ++rounds_ % MostRounds != 0;
  Use(goesOn ? Threads() : 0);
  if (pays) {
    // What paid so far is measured anew at once.
    pause_.store(0, std::memory_order_relaxed);
  }
}

void Pace::Use(int threads) {
  threads_.store(threads, std::memory_order_relaxed);
  pause_.store(Pause << failures_, std::memory_order_relaxed);
  counted_ = 0;
  slowOnes_ = 0;
  sum_ = {};
}

PairPace::PairPace()
    : left_(std::thread::hardware_concurrency() > 1 ? PairPause : std::numeric_limits<int>::max()), pause_(PairPause) {}

void PairPace::Decide() {
  const Clock::duration took = Clock::now() - start_;
  switch (phase_) {
    case Phase::Idle:
      return Enter(Phase::Alone, PairRound);
    case Phase::Alone:
      alone_ = took;
      // What was told of before is still looked at alone.
      return Enter(Phase::Starting, PairRound);
    case Phase::Starting:
      return Enter(Phase::Pair, PairRound);
    case Phase::Pair:
      if (20 * took < 19 * alone_) {
        return Enter(Phase::Kept, PairRun);
      }
      pause_ = std::min(2 * pause_, PairRun);
      return Enter(Phase::Idle, pause_);
    case Phase::Kept:
      pause_ = PairPause;
      return Enter(Phase::Idle, pause_);
  }
}

void PairPace::Enter(Phase phase, int operations) {
  phase_ = phase;
  isPair_ = phase == Phase::Starting || phase == Phase::Pair || phase == Phase::Kept;
  left_ = operations;
  start_ = Clock::now();
}
