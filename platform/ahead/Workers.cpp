#include "platform/ahead/Workers.h"

#include <algorithm>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

Workers::~Workers() {
  {
    const std::scoped_lock guard(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) {
    thread.join();
  }
  running_ -= static_cast<int>(threads_.size());
}

void Workers::Help(std::shared_ptr<Work> work, int threads) noexcept {
  try {
    {
      const std::scoped_lock guard(mutex_);
      tasks_.push_back(std::make_shared<Task>(Task{std::move(work), threads}));
    }
    Start(threads);
  } catch (const std::bad_alloc&) {
    // Whoever waits for the work does it himself.
  } catch (const std::system_error&) {
    // The same.
  }
  changed_.notify_all();
}

void Workers::Start(int threads) {
  threads_.reserve(static_cast<std::size_t>(most_));
  while (static_cast<int>(threads_.size()) < threads) {
    if (running_.fetch_add(1) >= most_) {
      --running_;
      return;
    }
    try {
      threads_.emplace_back([this] { Run(); });
    } catch (...) {
      --running_;
      throw;
    }
  }
}

/// A thread that fails leaves what it has not begun to the others, or to the caller.
void Workers::Run() noexcept try {
  disk_.BeginLookups();
  RunUntilEnd();
  disk_.EndLookups();
} catch (...) {  // NOLINT(bugprone-empty-catch): nothing is lost, see above
}

void Workers::RunUntilEnd() {
  while (const std::shared_ptr<Task> task = NextTask()) {
    while (!isEnding_.load(std::memory_order_relaxed) && task->work->DoNext()) {
    }
    const std::scoped_lock guard(mutex_);
    std::erase(tasks_, task);
  }
}

/// Waits for one; null at the end.
std::shared_ptr<Workers::Task> Workers::NextTask() {
  std::unique_lock lock(mutex_);
  std::shared_ptr<Task> next;
  changed_.wait(lock, [this, &next] {
    const auto open =
        std::find_if(tasks_.begin(), tasks_.end(), [](const auto& task) { return task->active < task->most; });
    next = isEnding_ || open == tasks_.end() ? nullptr : *open;
    return isEnding_ || next != nullptr;
  });
  if (next != nullptr) {
    ++next->active;
  }
  return next;
}

namespace {

class Numbers : public Work {
 public:
  Numbers(std::size_t count, const std::function<void(std::size_t)>& each) : count_(count), each_(each) {}

  bool DoNext() noexcept override {
    const std::size_t number = next_.fetch_add(1);
    if (number >= count_) {
      return false;
    }
    try {
      each_(number);
    } catch (...) {
      const std::scoped_lock guard(mutex_);
      raised_ = std::current_exception();
    }
    if (done_.fetch_add(1) + 1 == count_) {
      done_.notify_all();
    }
    return true;
  }

  void Finish() {
    while (DoNext()) {
    }
    for (std::size_t done = done_; done < count_; done = done_) {
      done_.wait(done);
    }
    const std::scoped_lock guard(mutex_);
    if (raised_) {
      std::rethrow_exception(raised_);
    }
  }

 private:
  const std::size_t count_;
  /// Called only before Finish returns, so the caller's will do.
  const std::function<void(std::size_t)>& each_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<std::size_t> done_ = 0;
  std::mutex mutex_;
  std::exception_ptr raised_;
};

}  // namespace

void ForEachSideBySide(Workers& workers, int threads, std::size_t count, const std::function<void(std::size_t)>& each) {
  const auto numbers = std::make_shared<Numbers>(count, each);
  workers.Help(numbers, threads);
  numbers->Finish();
}
