#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"

/// Pieces of work that several threads take from each other.
class Work {
 public:
  Work() = default;
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  virtual ~Work() = default;

  /// Does one piece; false when none is left to begin. Never raises.
  virtual bool DoNext() noexcept = 0;
};

/// The threads that help one caller. They end with this object, each after the piece that it has begun.
class Workers {
 public:
  /// Each thread looks many things up on this disk. most: threads at once, for all who share running.
  Workers(QELVARDOSFileLayer& disk, int most, std::atomic<int>& running)
      : disk_(disk), most_(most), running_(running) {}
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  /// Returns at once. At most so many threads help with this work. Where no thread or no memory is to be had, fewer do,
  /// or none.
  void Help(std::shared_ptr<Work> work, int threads) noexcept;

 private:
  struct Task {
    std::shared_ptr<Work> work;
    int most = 0;
    int active = 0;
  };

  void Start(int threads);
  void Run() noexcept;
  void RunUntilEnd();
  std::shared_ptr<Task> NextTask();

  QELVARDOSFileLayer& disk_;
  const int most_;
  std::atomic<int>& running_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::shared_ptr<Task>> tasks_;
  std::vector<std::thread> threads_;
  std::atomic<bool> isEnding_ = false;
};

/// Calls a function for each number below count, in several threads and the caller's, and returns when all are done.
/// What one of them raised is raised again.
void ForEachSideBySide(Workers& workers, int threads, std::size_t count, const std::function<void(std::size_t)>& each);
