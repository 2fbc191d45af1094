#include "platform/QELVARDOSParallelFileLayer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <new>
#include <numeric>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/ahead/Listings.h"
#include "platform/ahead/Notice.h"
#include "platform/ahead/Pace.h"
#include "platform/ahead/Workers.h"

namespace {

using Clock = std::chrono::steady_clock;
using Kind = QELVARDOSFileLook::Kind;

/// Most of what many looks at once can gain on a file server is gained by these.
constexpr int JobsWhereSlow = 16;
/// More do not get files into one folder any faster.
constexpr int WritersInFolder = 8;
constexpr auto SlowLook = std::chrono::microseconds(100);
constexpr auto SlowWriting = std::chrono::microseconds(400);

template <typename Do>
auto Timed(Pace& pace, const Do& alone) {
  if (!pace.IsTrial()) {
    return alone();
  }
  const Clock::time_point start = Clock::now();
  auto result = alone();
  pace.TookAlone(Clock::now() - start);
  return result;
}

/// Gives away what a look at a file has read.
std::error_code HandOut(AheadLook& look, std::string& bytes, std::uint64_t atMost) {
  bytes = std::move(look.bytes);
  return bytes.size() > atMost ? std::make_error_code(std::errc::file_too_large) : look.error;
}

/// The numbers of files, from one folder after the other in turn, since those of one folder get in each other's way.
struct Order {
  template <typename Files, typename PathOf>
  Order(const Files& files, const PathOf& pathOf) : numbers(files.size()) {
    std::map<std::string_view, std::size_t> taken;
    std::vector<std::size_t> turns;
    for (const auto& file : files) {
      const std::string& path = pathOf(file);
      turns.push_back(taken[std::string_view(path).substr(0, path.rfind('/') + 1)]++);
    }
    folders = taken.size();
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    std::stable_sort(numbers.begin(), numbers.end(),
                     [&turns](std::size_t a, std::size_t b) { return turns[a] < turns[b]; });
  }

  std::vector<std::size_t> numbers;
  std::size_t folders = 0;
};

/// A thread that calls the layer, between its outermost BeginLookups and EndLookups.
struct Caller {
  Caller(QELVARDOSFileLayer& disk, int most, std::atomic<int>& running)
      : listings(disk), workers(disk, most, running) {}
  ~Caller() {
    for (const auto& notice : notices) {
      notice->Pass();
    }
  }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;

  int depth = 1;
  PairPace pair;
  /// The file whose facts were handed out last, as the next question is often the same.
  std::string known;
  QELVARDOSFileFacts facts;
  /// Held while the list changes, and by others who read it.
  std::mutex mutex;
  /// The last two: what an earlier one told of is not asked for any more.
  std::deque<std::shared_ptr<Notice>> notices;
  Listings listings;
  /// Ends first, as it works with all the others.
  Workers workers;
};

}  // namespace

/// The threads that call the layer, and what is found out for them.
class QELVARDOSParallelFileLayer::Callers {
 public:
  Callers(QELVARDOSFileLayer& next, int jobs)
      : next_(next),
        most_((jobs == JobsFoundOut ? JobsWhereSlow : std::min(jobs, MostJobs)) - 1),
        looking_(most_, jobs == JobsFoundOut ? Pace::Duration(SlowLook) : Pace::Given),
        writing_(most_, jobs == JobsFoundOut ? Pace::Duration(SlowWriting) : Pace::Given) {}

  /// 0: looks that are told of would not be taken.
  int Threads() {
    const Caller* const caller = Own();
    const int threads = looking_.Threads();
    return threads == 0 && caller != nullptr && caller->pair.IsPair() ? 1 : threads;
  }

  void Begin() {
    if (Caller* const caller = Own()) {
      ++caller->depth;
      return;
    }
    const std::scoped_lock guard(mutex_);
    own_ = {number_, &callers_.try_emplace(std::this_thread::get_id(), next_, most_, running_).first->second};
  }

  void End() {
    Caller* const caller = Own();
    if (caller == nullptr || --caller->depth > 0) {
      return;
    }
    own_ = {};
    std::map<std::thread::id, Caller>::node_type ended;
    {
      const std::scoped_lock guard(mutex_);
      ended = callers_.extract(std::this_thread::get_id());
    }
  }

  /// Memory that is not to be had costs no more than the looks that would have been taken.
  void Add(std::vector<QELVARDOSFileLook> looks) noexcept try {
    Caller* const caller = Own();
    const int threads = Threads();
    if (caller == nullptr || threads == 0 || looks.empty()) {
      return;
    }
    const auto notice = std::make_shared<Notice>(next_, std::move(looks), held_, caller->listings);
    {
      const std::scoped_lock guard(caller->mutex);
      caller->notices.push_back(notice);
      if (caller->notices.size() > 2) {
        caller->notices.front()->Pass();
        caller->notices.pop_front();
      }
    }
    caller->workers.Help(notice, threads);
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): see above
  }

  /// Calls handOut with what was seen at a path, or alone when it is to be looked at now.
  template <typename HandOut, typename Alone>
  auto Look(const std::string& path, Kind kind, const HandOut& handOut, const Alone& alone) {
    Caller* const caller = Own();
    if (caller == nullptr) {
      return Timed(looking_, alone);
    }
    caller->pair.Count();
    const bool isTimed = looking_.Threads() > 0;
    const Clock::time_point start = isTimed ? Clock::now() : Clock::time_point();
    bool wasTold = false;
    for (const auto& notice : caller->notices) {
      if (AheadLook* const look = notice->Take(path, kind, wasTold)) {
        auto result = handOut(*look);
        Waited(isTimed, start);
        return result;
      }
    }
    if (!wasTold) {
      return Timed(looking_, alone);
    }
    auto result = alone();
    Waited(isTimed, start);
    return result;
  }

  QELVARDOSFileFacts Facts(const std::string& path) {
    Caller* const caller = Own();
    if (caller != nullptr && !caller->known.empty() && caller->known == path) {
      return caller->facts;
    }
    const QELVARDOSFileFacts facts = Look(
        path, Kind::Facts, [](const AheadLook& look) { return look.facts; }, [&] { return next_.Stat(path); });
    if (caller != nullptr) {
      caller->known = path;
      caller->facts = facts;
    }
    return facts;
  }

  /// Calls each for every number in order, side by side where that pays. folders: how many these are in. each answers
  /// how it ended; where too many files were open at once it is called again when the others are done.
  void ForEach(const std::vector<std::size_t>& order, std::size_t folders,
               const std::function<std::error_code(std::size_t)>& each) {
    Caller* const caller = Own();
    std::size_t done = 0;
    for (; done < order.size() && (caller == nullptr || writing_.Threads() == 0); ++done) {
      Timed(writing_, [&] { return each(order[done]); });
    }
    if (done < order.size()) {
      SideBySide(*caller, {order.begin() + static_cast<std::ptrdiff_t>(done), order.end()}, folders, each);
    }
  }

  void Forget(const std::string& path) {
    if (Caller* const own = Own()) {
      own->known.clear();
    }
    const std::scoped_lock guard(mutex_);
    for (auto& [thread, caller] : callers_) {
      const std::scoped_lock own(caller.mutex);
      for (const auto& notice : caller.notices) {
        notice->Forget(path);
      }
      caller.listings.Changed(path);
    }
  }

 private:
  /// The one of this thread, so that it need not be searched for at each look.
  struct OwnCaller {
    std::uint64_t layer = 0;
    Caller* caller = nullptr;
  };

  Caller* Own() {
    if (own_.layer == number_) {
      return own_.caller;
    }
    const std::scoped_lock guard(mutex_);
    const auto place = callers_.find(std::this_thread::get_id());
    return place == callers_.end() ? nullptr : &place->second;
  }

  void SideBySide(Caller& caller, const std::vector<std::size_t>& order, std::size_t folders,
                  const std::function<std::error_code(std::size_t)>& each) {
    const auto writers = static_cast<int>(std::min<std::size_t>(folders * WritersInFolder, MostJobs));
    std::vector<std::error_code> errors(order.size());
    const Clock::time_point start = Clock::now();
    ForEachSideBySide(caller.workers, std::min(writing_.Threads(), writers - 1), order.size(),
                      [&](std::size_t at) { errors[at] = each(order[at]); });
    const Clock::duration took = (Clock::now() - start) / static_cast<Clock::rep>(order.size());
    for (std::size_t at = 0; at < order.size(); ++at) {
      writing_.Waited(took);
      if (errors[at] == std::errc::too_many_files_open || errors[at] == std::errc::too_many_files_open_in_system) {
        each(order[at]);
      }
    }
  }

  void Waited(bool isTimed, Clock::time_point start) {
    if (isTimed) {
      looking_.Waited(Clock::now() - start);
    }
  }

  static std::uint64_t NextNumber() {
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
  }

  static thread_local OwnCaller own_;

  /// No other layer ever has it.
  const std::uint64_t number_ = NextNumber();
  QELVARDOSFileLayer& next_;
  const int most_;
  Pace looking_;
  Pace writing_;
  HeldBytes held_ = 0;
  std::atomic<int> running_ = 0;
  std::mutex mutex_;
  std::map<std::thread::id, Caller> callers_;
};

thread_local QELVARDOSParallelFileLayer::Callers::OwnCaller QELVARDOSParallelFileLayer::Callers::own_;

namespace {

/// Forgets what was seen at a place when the change there is over, however it ends: a look that was taken meanwhile may
/// have seen either.
template <typename Callers>
class Change {
 public:
  Change(Callers* callers, const std::string& path) : callers_(callers), path_(path) {}
  ~Change() {
    if (callers_ != nullptr) {
      callers_->Forget(path_);
    }
  }
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;

 private:
  Callers* callers_;
  const std::string& path_;
};

}  // namespace

QELVARDOSParallelFileLayer::QELVARDOSParallelFileLayer(QELVARDOSFileLayer& next, int jobs)
    : QELVARDOSFileLayerFilter(next), callers_(jobs == 1 ? nullptr : std::make_unique<Callers>(next, jobs)) {}

QELVARDOSParallelFileLayer::~QELVARDOSParallelFileLayer() = default;

QELVARDOSFileFacts QELVARDOSParallelFileLayer::Stat(const std::string& path) {
  return callers_ == nullptr ? Next().Stat(path) : callers_->Facts(path);
}

std::error_code QELVARDOSParallelFileLayer::Read(const std::string& path, std::string& bytes, std::uint64_t atMost) {
  const auto alone = [&] { return Next().Read(path, bytes, atMost); };
  const auto handOut = [&](AheadLook& look) { return HandOut(look, bytes, atMost); };
  return callers_ == nullptr ? alone() : callers_->Look(path, Kind::Content, handOut, alone);
}

std::error_code QELVARDOSParallelFileLayer::ReadWithFacts(const std::string& path, std::string& bytes,
                                                          std::uint64_t atMost, QELVARDOSFileFacts& facts) {
  const auto alone = [&] { return Next().ReadWithFacts(path, bytes, atMost, facts); };
  const auto handOut = [&](AheadLook& look) {
    facts = look.facts;
    return HandOut(look, bytes, atMost);
  };
  return callers_ == nullptr ? alone() : callers_->Look(path, Kind::ContentWithFacts, handOut, alone);
}

void QELVARDOSParallelFileLayer::BeginLookups() {
  Next().BeginLookups();
  if (callers_ != nullptr) {
    try {
      callers_->Begin();
    } catch (...) {
      Next().EndLookups();
      throw;
    }
  }
}

void QELVARDOSParallelFileLayer::EndLookups() {
  if (callers_ != nullptr) {
    callers_->End();
  }
  Next().EndLookups();
}

std::error_code QELVARDOSParallelFileLayer::MakeFolder(const std::string& path) {
  const Change change(callers_.get(), path);
  return Next().MakeFolder(path);
}

std::error_code QELVARDOSParallelFileLayer::HideFolder(const std::string& path) {
  const Change change(callers_.get(), path);
  return Next().HideFolder(path);
}

std::error_code QELVARDOSParallelFileLayer::WriteNew(const std::string& path, std::string_view bytes,
                                                     const std::string& like) {
  const Change change(callers_.get(), path);
  return Next().WriteNew(path, bytes, like);
}

void QELVARDOSParallelFileLayer::WriteAllNew(std::span<QELVARDOSNewFile> files) {
  if (callers_ == nullptr) {
    Next().WriteAllNew(files);
    return;
  }
  const Order order(files, [](const QELVARDOSNewFile& file) -> const std::string& { return file.path; });
  callers_->ForEach(order.numbers, order.folders, [&](std::size_t at) {
    const Change change(callers_.get(), files[at].path);
    Next().WriteAllNew(files.subspan(at, 1));
    return files[at].error;
  });
}

std::vector<std::error_code> QELVARDOSParallelFileLayer::MakeFoldersDurable(const std::vector<std::string>& folders) {
  if (callers_ == nullptr) {
    return Next().MakeFoldersDurable(folders);
  }
  std::vector<std::error_code> errors(folders.size());
  const Order order(folders, [](const std::string& folder) -> const std::string& { return folder; });
  callers_->ForEach(order.numbers, folders.size(),
                    [&](std::size_t at) { return errors[at] = Next().MakeFoldersDurable({folders[at]}).front(); });
  return errors;
}

std::error_code QELVARDOSParallelFileLayer::Rename(const std::string& from, const std::string& to) {
  const Change ofOld(callers_.get(), from);
  const Change ofNew(callers_.get(), to);
  return Next().Rename(from, to);
}

void QELVARDOSParallelFileLayer::RenameAll(std::span<QELVARDOSFileRenaming> files) {
  if (callers_ == nullptr) {
    Next().RenameAll(files);
    return;
  }
  const Order order(files, [](const QELVARDOSFileRenaming& file) -> const std::string& { return file.to; });
  callers_->ForEach(order.numbers, order.folders, [&](std::size_t at) {
    const Change ofOld(callers_.get(), files[at].from);
    const Change ofNew(callers_.get(), files[at].to);
    Next().RenameAll(files.subspan(at, 1));
    return files[at].error;
  });
}

std::error_code QELVARDOSParallelFileLayer::Remove(const std::string& path) {
  const Change change(callers_.get(), path);
  return Next().Remove(path);
}

bool QELVARDOSParallelFileLayer::WantsNotice() const { return callers_ != nullptr && callers_->Threads() > 0; }

void QELVARDOSParallelFileLayer::LookAhead(std::vector<QELVARDOSFileLook>&& looks) {
  if (callers_ != nullptr) {
    callers_->Add(std::move(looks));
  }
}
