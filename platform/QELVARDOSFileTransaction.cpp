#include "platform/QELVARDOSFileTransaction.h"

#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <random>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSProcess.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace {

/// What the name of a temporary file tells. It is of one length whatever the target's name is, since that may use all
/// that the file system allows, and it tells enough for any process to know whether anybody still needs the file.
struct TemporaryName {
  std::uint64_t target = 0;  ///< hash of the name of the file to be replaced
  std::uint64_t host = 0;    ///< hash of the machine's name: elsewhere the process number means nothing
  std::uint64_t process = 0;
  std::uint64_t transaction = 0;
  std::uint64_t number = 0;  ///< tells files of one transaction apart
};

struct NamePart {
  std::uint64_t TemporaryName::*value;
  std::size_t digits;
};

constexpr std::string_view TemporaryPrefix = ".~";
constexpr std::string_view HexDigits = "0123456789abcdef";
constexpr std::size_t TransactionDigits = 6;
constexpr std::array<NamePart, 5> NameParts = {{{&TemporaryName::target, 10},
                                                {&TemporaryName::host, 4},
                                                {&TemporaryName::process, 6},
                                                {&TemporaryName::transaction, TransactionDigits},
                                                {&TemporaryName::number, 4}}};
constexpr std::size_t TemporaryLength = 32;

constexpr std::uint64_t Lowest(std::uint64_t value, std::size_t digits) {
  return value & ((std::uint64_t{1} << (4 * digits)) - 1);
}

std::string Format(const TemporaryName& name) {
  std::string text(TemporaryPrefix);
  for (const auto& [value, digits] : NameParts) {
    for (std::size_t left = digits; left > 0; --left) {
      text += HexDigits[(name.*value >> (4 * (left - 1))) & 0xF];
    }
  }
  return text;
}

std::optional<TemporaryName> Parse(std::string_view text) {
  if (!QELVARDOSFileTransaction::IsTemporaryName(text)) {
    return std::nullopt;
  }
  TemporaryName name;
  text.remove_prefix(TemporaryPrefix.size());
  for (const auto& [value, digits] : NameParts) {
    std::from_chars(text.data(), text.data() + digits, name.*value, 16);
    text.remove_prefix(digits);
  }
  return name;
}

/// FNV-1a: names outlive the program, so their hashes may not depend on how it was built.
std::uint64_t HashOf(std::string_view text, std::size_t digits) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  }
  return Lowest(hash ^ (hash >> 32U), digits);
}

/// The path up to and with its last "/"; empty when there is none.
std::string_view FolderPart(std::string_view path) { return path.substr(0, path.rfind('/') + 1); }

std::uint64_t TargetHash(std::string_view path) { return HashOf(path.substr(FolderPart(path).size()), 10); }

std::string Beside(std::string_view folderPart, const std::string& name) { return std::string(folderPart) + name; }

/// The transactions that are open in this process, on whatever thread, by the number in the names of their files.
class OpenTransactions {
 public:
  std::uint64_t Add() {
    std::random_device random;
    const std::lock_guard lock(mutex_);
    std::uint64_t number = 0;
    do {
      number = Lowest(random(), TransactionDigits);
    } while (!numbers_.insert(number).second);
    return number;
  }
  void Remove(std::uint64_t number) {
    const std::lock_guard lock(mutex_);
    numbers_.erase(number);
  }
  bool Has(std::uint64_t number) {
    const std::lock_guard lock(mutex_);
    return numbers_.contains(number);
  }

 private:
  std::mutex mutex_;
  std::unordered_set<std::uint64_t> numbers_;
};

OpenTransactions& OpenInProcess() {
  static OpenTransactions transactions;
  return transactions;
}

/// The transaction that is open on this thread, and what it keeps besides its files.
struct OpenTransaction {
  QELVARDOSFileTransaction* transaction = nullptr;
  QELVARDOSFileLayer* layer = nullptr;
  TemporaryName nextName;
  std::string present;  ///< the file that is being compared; its room serves the next
};

thread_local OpenTransaction current;

TemporaryName FirstName() {
  TemporaryName name;
  name.host = HashOf(QELVARDOSProcess::HostName(), 4);
  name.process = Lowest(QELVARDOSProcess::Id(), 6);
  name.transaction = OpenInProcess().Add();
  return name;
}

std::string NextName(const std::string& path) {
  current.nextName.target = TargetHash(path);
  ++current.nextName.number;
  return Format(current.nextName);
}

bool IsOlderThanADay(const std::string& path) {
  using namespace std::chrono;
  const auto now = duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
  return current.layer->Stat(path).modified < now - seconds(24h).count();
}

/// Whether nobody will rename the file any more. The number of a process that stopped may since have been given to
/// another, even to this one; then the transaction's number or at last the file's age tells.
bool IsLeftOver(const TemporaryName& name, const std::string& path) {
  const TemporaryName& own = current.nextName;
  if (name.host == own.host && name.process == own.process) {
    return !OpenInProcess().Has(name.transaction);
  }
  if (name.host == own.host && !QELVARDOSProcess::Lives(static_cast<std::uint32_t>(name.process))) {
    return true;
  }
  return IsOlderThanADay(path);
}

/// What becomes of one file in a commit.
struct Fate {
  std::string path;
  /// Empty when the file held the bytes already.
  std::string temporary;
  QELVARDOSReplacement outcome;
  std::error_code error;
};

void Fail(Fate& fate, const std::error_code& error) {
  fate.outcome = QELVARDOSReplacement::Failed;
  fate.error = error;
  current.layer->Remove(fate.temporary);
}

/// Of equal paths the last stays, even where it was found to be on the disk already.
void DropSuperseded(std::vector<Fate>& fates) {
  std::unordered_set<std::string_view> seen(fates.size());
  for (std::size_t at = fates.size(); at-- > 0;) {
    Fate& fate = fates[at];
    if (!seen.insert(fate.path).second) {
      if (!fate.temporary.empty()) {
        current.layer->Remove(fate.temporary);
      }
      fate.path.clear();
    }
  }
  std::erase_if(fates, [](const Fate& fate) { return fate.path.empty(); });
}

/// Whether two of the files may be one. A table in one piece tells far sooner than one of nodes that no two are.
template <typename Staged>
bool MayRepeat(const std::vector<Staged>& staged) {
  std::vector<std::size_t> hashes(std::bit_ceil(2 * staged.size() + 1));
  const std::size_t mask = hashes.size() - 1;
  for (const Staged& file : staged) {
    const std::size_t hash = file.hash == 0 ? 1 : file.hash;
    std::size_t at = hash & mask;
    while (hashes[at] != 0 && hashes[at] != hash) {
      at = (at + 1) & mask;
    }
    if (hashes[at] == hash) {
      return true;
    }
    hashes[at] = hash;
  }
  return false;
}

void MakeDurable(std::vector<Fate>& fates) {
  std::vector<std::string> temporaries;
  for (const Fate& fate : fates) {
    if (!fate.temporary.empty()) {
      temporaries.push_back(fate.temporary);
    }
  }
  const std::error_code error = temporaries.empty() ? std::error_code() : current.layer->MakeDurable(temporaries);
  for (Fate& fate : fates) {
    if (error && !fate.temporary.empty()) {
      Fail(fate, error);
    }
  }
}

void RenameAll(std::vector<Fate>& fates) {
  for (Fate& fate : fates) {
    if (fate.outcome == QELVARDOSReplacement::Written) {
      if (const std::error_code error = current.layer->Rename(fate.temporary, fate.path)) {
        Fail(fate, error);
      }
    }
  }
}

/// The names of the files whose replacement succeeded, by their folders.
class Targets {
 public:
  explicit Targets(const std::vector<Fate>& fates) {
    for (const Fate& fate : fates) {
      if (fate.outcome != QELVARDOSReplacement::Failed) {
        hashes_[FolderPart(fate.path)].insert(TargetHash(fate.path));
      }
    }
  }
  bool Has(std::string_view folderPart, std::uint64_t target) const {
    const auto found = hashes_.find(folderPart);
    return found != hashes_.end() && found->second.contains(target);
  }

 private:
  std::unordered_map<std::string_view, std::unordered_set<std::uint64_t>> hashes_;
};

/// The folders in which a replacement succeeded, each once.
std::vector<std::string_view> FoldersOf(const std::vector<Fate>& fates) {
  std::vector<std::string_view> folders;
  std::unordered_set<std::string_view> seen;
  for (const Fate& fate : fates) {
    const std::string_view folderPart = FolderPart(fate.path);
    const bool again = !folders.empty() && folders.back() == folderPart;
    if (fate.outcome != QELVARDOSReplacement::Failed && !again && seen.insert(folderPart).second) {
      folders.push_back(folderPart);
    }
  }
  return folders;
}

/// One listing of each folder, however many of its files were replaced. Files that were left over are rare, so it is
/// then that the targets are looked at.
void RemoveLeftOvers(const std::vector<Fate>& fates) {
  std::optional<Targets> targets;
  for (const std::string_view folderPart : FoldersOf(fates)) {
    std::vector<std::string> names;
    current.layer->List(folderPart.empty() ? "." : std::string(folderPart), names);
    for (const std::string& text : names) {
      const std::optional<TemporaryName> name = Parse(text);
      if (name && !targets) {
        targets.emplace(fates);
      }
      if (name && targets->Has(folderPart, name->target) && IsLeftOver(*name, Beside(folderPart, text))) {
        current.layer->Remove(Beside(folderPart, text));
      }
    }
  }
}

void Tell(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error = {}) {
  if (error) {
    QELVARDOSSystemUtils::SetLastError(path + ": " + error.message());
  }
  current.layer->Replaced(path, outcome, error);
}

/// Only a file can be replaced: a rename would put one in the place of a device or a pipe.
std::error_code Refusal(const std::string& path, const QELVARDOSFileFacts& facts) {
  using Kind = QELVARDOSFileFacts::Kind;
  if (facts.kind == Kind::Folder) {
    return std::make_error_code(std::errc::is_a_directory);
  }
  if (facts.kind == Kind::Other) {
    return std::make_error_code(std::errc::not_supported);
  }
  return path.empty() ? std::make_error_code(std::errc::no_such_file_or_directory) : std::error_code();
}

/// temporary receives the path of the new file. Of a process that had our number once, files may stand under the first
/// names that we try.
std::error_code WriteTemporary(const std::string& path, std::string_view bytes, std::uint32_t mode,
                               std::string& temporary) {
  constexpr int Tries = 16;
  std::error_code error = std::make_error_code(std::errc::file_exists);
  for (int tried = 0; tried < Tries && error == std::errc::file_exists; ++tried) {
    temporary = Beside(FolderPart(path), NextName(path));
    error = current.layer->WriteNew(temporary, bytes, mode);
  }
  return error;
}

/// temporary stays empty when the file holds the bytes already. Reading comes first: records that did not change are
/// the common case, and it tells at once whether there is a file at all.
std::error_code Stage(const std::string& path, std::string_view bytes, std::string& temporary) {
  const std::error_code unreadable = current.layer->Read(path, current.present);
  if (!unreadable && current.present == bytes) {
    return {};
  }
  const QELVARDOSFileFacts facts = current.layer->Stat(path);
  if (const std::error_code refusal = Refusal(path, facts)) {
    return refusal;
  }
  return WriteTemporary(path, bytes, facts.mode, temporary);
}

}  // namespace

QELVARDOSFileTransaction::QELVARDOSFileTransaction() {
  if (current.transaction != nullptr) {
    throw std::logic_error("a file transaction is open on this thread already");
  }
  current = {this, &QELVARDOSFileLayer::Current(), FirstName(), {}};
}

QELVARDOSFileTransaction::~QELVARDOSFileTransaction() {
  Abandon();
  OpenInProcess().Remove(current.nextName.transaction);
  current = {};
}

std::error_code QELVARDOSFileTransaction::Replace(const std::string& path, std::string_view bytes) {
  std::string temporary;
  const std::error_code error = Stage(path, bytes, temporary);
  if (error) {
    Tell(path, QELVARDOSReplacement::Failed, error);
    lastFailure_ = path;
  } else {
    staged_.push_back({path, std::move(temporary), std::hash<std::string>()(path)});
  }
  return error;
}

void QELVARDOSFileTransaction::Refuse(const std::string& path, const std::error_code& error) {
  if (path != lastFailure_) {
    Tell(path, QELVARDOSReplacement::Failed, error);
  }
}

std::vector<QELVARDOSFileTransaction::Failure> QELVARDOSFileTransaction::Commit() {
  const bool mayRepeat = MayRepeat(staged_);
  std::vector<Fate> fates;
  fates.reserve(staged_.size());
  for (Staged& staged : std::exchange(staged_, {})) {
    const auto outcome =
        staged.temporary.empty() ? QELVARDOSReplacement::AlreadyTheSame : QELVARDOSReplacement::Written;
    fates.push_back({std::move(staged.path), std::move(staged.temporary), outcome, {}});
  }
  if (mayRepeat) {
    DropSuperseded(fates);
  }
  MakeDurable(fates);
  RenameAll(fates);
  RemoveLeftOvers(fates);
  std::vector<Failure> failures;
  for (Fate& fate : fates) {
    Tell(fate.path, fate.outcome, fate.error);
    if (fate.error) {
      failures.push_back({std::move(fate.path), fate.error});
    }
  }
  return failures;
}

void QELVARDOSFileTransaction::Abandon() {
  for (const Staged& staged : staged_) {
    if (staged.temporary.empty()) {
      Tell(staged.path, QELVARDOSReplacement::AlreadyTheSame);
    } else {
      current.layer->Remove(staged.temporary);
      Tell(staged.path, QELVARDOSReplacement::Failed, std::make_error_code(std::errc::operation_canceled));
    }
  }
  staged_.clear();
}

QELVARDOSFileTransaction* QELVARDOSFileTransaction::Open() noexcept { return current.transaction; }

bool QELVARDOSFileTransaction::IsTemporaryName(std::string_view fileName) noexcept {
  return fileName.size() == TemporaryLength && fileName.starts_with(TemporaryPrefix) &&
         fileName.find_first_not_of(HexDigits, TemporaryPrefix.size()) == std::string_view::npos;
}

std::error_code QELVARDOSReplaceFile(const std::string& path, std::string_view bytes) {
  if (QELVARDOSFileTransaction* open = QELVARDOSFileTransaction::Open()) {
    return open->Replace(path, bytes);
  }
  QELVARDOSFileTransaction transaction;
  if (const std::error_code error = transaction.Replace(path, bytes)) {
    return error;
  }
  const auto failures = transaction.Commit();
  return failures.empty() ? std::error_code() : failures.front().error;
}
