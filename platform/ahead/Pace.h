#pragma once

#include <atomic>
#include <chrono>
#include <mutex>

/// Finds out how many threads are worth having beside the caller's. Some operations are timed in the caller's thread:
/// where most of them are slow, many are tried; where a second core may be idle and there is much to do, one. Whatever
/// is tried goes on for as long as the caller waits for less. May be used by many threads at once.
class Pace {
 public:
  using Duration = std::chrono::steady_clock::duration;

  /// most: threads where operations are slow. slow: from when on one is.
  Pace(int most, Duration slow) : most_(most), slow_(slow) {}
  /// A pace that was given and stays.
  static constexpr Duration Given = Duration::min();

  /// 0: the caller is to be alone.
  int Threads() const { return threads_.load(std::memory_order_relaxed); }

  /// Whether the next operation that the caller does alone is to be timed. Those that go uncounted between two threads
  /// do no harm.
  bool IsTrial();
  void TookAlone(Duration took);
  /// How long the caller waited for an operation that others were to do for him.
  void Waited(Duration waited);

 private:
  void Use(int threads);

  const int most_;
  const Duration slow_;
  std::atomic<int> threads_ = slow_ == Given ? most_ : 0;
  /// So many operations more pass before the next trial.
  std::atomic<int> pause_ = 0;
  std::mutex mutex_;
  int counted_ = 0;
  int slowOnes_ = 0;
  Duration sum_{};
  /// What an operation took when it was done alone.
  Duration alone_{};
  int rounds_ = 0;
  int failures_ = 0;
};

/// Finds out whether one thread beside the caller's is worth having where operations are fast and many: compares how
/// fast the caller gets on with it and without. Of one caller.
class PairPace {
 public:
  using Clock = std::chrono::steady_clock;

  PairPace();

  bool IsPair() const { return isPair_; }
  /// Told of each operation.
  void Count() {
    if (--left_ == 0) {
      Decide();
    }
  }

 private:
  enum class Phase { Idle, Alone, Starting, Pair, Kept };

  void Decide();
  void Enter(Phase phase, int operations);

  Phase phase_ = Phase::Idle;
  /// Operations that pass until the next decision.
  int left_;
  int pause_;
  bool isPair_ = false;
  Clock::time_point start_;
  Clock::duration alone_{};
};
