#include "tests/disk/DiskSettings.h"

#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <limits>
#include <sstream>
#include <string_view>
#include <thread>

const char* const DiskSettings::Lines =
    "Control lines, for --set and for the file .test-disk-control in the mounted folder:\n"
    "  delay OPERATION|* MICROSECONDS           each such operation takes longer\n"
    "  fault OPERATION|* PATTERN ERROR [COUNT]  such operations fail, for example: fault getattr */x.prt.1 EACCES\n"
    "                                           (* stands for any text, also with /; a rename has its new path)\n"
    "  times coarse SECONDS                     times are shown rounded down to a multiple\n"
    "  times shifted SECONDS                    modification times are shown that much later\n"
    "  ignore fsync|fsyncdir                    flushes succeed and flush nothing\n"
    "  mark TEXT                                goes to the log\n"
    "  reset                                    counts begin at 0 again\n"
    "  clear                                    ends delays, faults, times and ignoring\n"
    "Reading the control file yields a line with name and number for each operation that was asked for.\n";

namespace {

/// As the kernel asks: it looks up each name on the way to a file, and asks for attributes besides.
constexpr std::string_view Operations =
    " * access create fsync fsyncdir getattr getxattr link listxattr lookup mkdir open opendir read readdir readlink "
    "rename rmdir setattr setxattr symlink unlink write ";

bool IsOperation(const std::string& word) { return Operations.find(" " + word + " ") != std::string_view::npos; }

template <typename Number>
bool Read(const std::string& word, Number& number) {
  const char* const end = word.data() + word.size();
  return std::from_chars(word.data(), end, number) == std::from_chars_result{end, std::errc()};
}

/// 0 when no error has that name.
int ErrorNamed(const std::string& word) {
  for (int error = 1; error < 256; ++error) {
    const char* const name = strerrorname_np(error);
    if (name != nullptr && word == name) {
      return error;
    }
  }
  return 0;
}

std::int64_t RoundedDown(std::int64_t seconds, std::int64_t step) { return seconds - ((seconds % step) + step) % step; }

}  // namespace

bool DiskSettings::Obey(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  const std::size_t count = words.size();
  words.resize(std::max<std::size_t>(count, 5));
  const std::string& verb = words[0];
  const std::string& what = words[1];
  std::int64_t seconds = 0;
  const std::lock_guard lock(mutex_);
  if (verb == "clear" && count == 1) {
    delays_.clear();
    faults_.clear();
    ignored_.clear();
    coarse_ = shift_ = 0;
  } else if (verb == "reset" && count == 1) {
    counts_.clear();
  } else if (std::uint64_t delay = 0; verb == "delay" && count == 3 && IsOperation(what) && Read(words[2], delay)) {
    delays_[what] = delay;
  } else if (verb == "fault" && (count == 4 || count == 5) && IsOperation(what)) {
    Fault fault{what, words[2], ErrorNamed(words[3]), std::numeric_limits<std::uint64_t>::max()};
    if (fault.error == 0 || (count == 5 && !Read(words[4], fault.left))) {
      return false;
    }
    faults_.push_back(fault);
  } else if (verb == "times" && what == "coarse" && count == 3 && Read(words[2], seconds) && seconds > 0) {
    coarse_ = seconds;
  } else if (verb == "times" && what == "shifted" && count == 3 && Read(words[2], seconds)) {
    shift_ = seconds;
  } else if (verb == "ignore" && count == 2 && (what == "fsync" || what == "fsyncdir")) {
    ignored_.insert(what);
  } else {
    return count == 0;
  }
  return true;
}

int DiskSettings::TakeFault(const std::string& operation, const std::string& path) {
  for (Fault& fault : faults_) {
    if (fault.left > 0 && (fault.operation == "*" || fault.operation == operation) &&
        fnmatch(fault.pattern.c_str(), path.c_str(), FNM_NOESCAPE) == 0) {
      --fault.left;
      return fault.error;
    }
  }
  return 0;
}

int DiskSettings::Begin(const std::string& operation, const std::string& path) {
  std::uint64_t delay = 0;
  int error = 0;
  {
    const std::lock_guard lock(mutex_);
    ++counts_[operation];
    const auto own = delays_.find(operation);
    const auto any = delays_.find("*");
    delay = own != delays_.end() ? own->second : any != delays_.end() ? any->second : 0;
    error = TakeFault(operation, path);
  }
  if (delay > 0) {
    std::this_thread::sleep_for(std::chrono::microseconds(delay));
  }
  return error;
}

bool DiskSettings::Ignores(const std::string& operation) const {
  const std::lock_guard lock(mutex_);
  return ignored_.contains(operation);
}

void DiskSettings::Adjust(struct stat& facts) const {
  const std::lock_guard lock(mutex_);
  facts.st_mtim.tv_sec += shift_;
  if (coarse_ == 0) {
    return;
  }
  for (timespec* time : {&facts.st_atim, &facts.st_mtim, &facts.st_ctim}) {
    *time = {RoundedDown(time->tv_sec, coarse_), 0};
  }
}

std::string DiskSettings::Counts() const {
  const std::lock_guard lock(mutex_);
  std::string text;
  for (const auto& [operation, count] : counts_) {
    text += operation + " " + std::to_string(count) + "\n";
  }
  return text;
}
