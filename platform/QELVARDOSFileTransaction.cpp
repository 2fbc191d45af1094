#include "platform/QELVARDOSFileTransaction.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <numeric>
#include <random>
#include <set>
#include <utility>

#include "platform/QELVARDOSFileError.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace {

constexpr std::string_view TemporaryPrefix = ".~";
constexpr std::string_view HexDigits = "0123456789abcdef";
constexpr std::size_t TemporaryLength = 32;
constexpr std::size_t NumberDigits = 8;
/// The digit behind the prefix.
constexpr char Claimed = '0';
constexpr char Unclaimed = 'f';

void AppendHex(std::string& text, std::uint32_t value, std::size_t digits) {
  for (std::size_t left = digits; left > 0; --left) {
    text += HexDigits[(value >> (4 * (left - 1))) & 0xFU];
  }
}

/// The digits of a name that chance alone keeps from being another's.
std::string RandomStart() {
  constexpr std::size_t Digits = TemporaryLength - TemporaryPrefix.size() - 1 - NumberDigits;
  std::random_device random;
  std::string text;
  while (text.size() < Digits) {
    AppendHex(text, random(), 8);
  }
  text.resize(Digits);
  return text;
}

/// Of "a/b" it is "a", of "/b" it is "/", of "b" nothing: the working folder.
std::string_view FolderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, std::max<std::size_t>(slash, 1));
}

std::string Beside(std::string_view path, const std::string& name) {
  return std::string(path.substr(0, path.rfind('/') + 1)) + name;
}

std::string In(const std::string& folder, const std::string& name) {
  return folder.empty() ? name : folder + (folder.ends_with('/') ? "" : "/") + name;
}

/// What the layer has not answered for.
std::error_code Unfinished() { return std::make_error_code(std::errc::operation_in_progress); }

/// Only a file can be replaced: a rename would put one in the place of a device or a pipe.
std::error_code Refusal(const QELVARDOSFileFacts& facts) {
  using Kind = QELVARDOSFileFacts::Kind;
  switch (facts.kind) {
    case Kind::Folder:
      return std::make_error_code(std::errc::is_a_directory);
    case Kind::Other:
      return std::make_error_code(std::errc::not_supported);
    default:
      return facts.error;
  }
}

}  // namespace

QELVARDOSFileTransaction::QELVARDOSFileTransaction() : layer_(QELVARDOSFileLayer::Current()) {}

QELVARDOSFileTransaction::~QELVARDOSFileTransaction() {
  try {
    Abandon();
  } catch (...) {
    // A layer that throws while files are abandoned keeps what it has of them; nothing may leave a destructor.
    staged_.clear();
  }
}

std::error_code QELVARDOSFileTransaction::Replace(const std::string& path, std::string_view bytes) {
  Staged file{path, {}, QELVARDOSReplacement::Written, {}};
  if (const std::error_code error = Stage(path, bytes, file)) {
    Tell(path, QELVARDOSReplacement::Failed, error, {});
    return error;
  }
  const bool isSame = file.outcome == QELVARDOSReplacement::AlreadyTheSame;
  staged_.push_back(std::move(file));
  if (!isSame) {
    WriteLater(bytes);
  }
  return {};
}

/// Reading comes first: records that did not change are the common case, and it tells at once whether there is a file
/// at all.
std::error_code QELVARDOSFileTransaction::Stage(const std::string& path, std::string_view bytes, Staged& file) {
  constexpr std::uint64_t Comparable = std::uint64_t{64} << 20U;
  if (path.empty()) {
    return std::make_error_code(std::errc::no_such_file_or_directory);
  }
  const std::error_code unread = layer_.Read(path, present_, std::max<std::uint64_t>(bytes.size(), Comparable));
  if (!unread && present_ == bytes) {
    file.outcome = QELVARDOSReplacement::AlreadyTheSame;
    return {};
  }
  if (unread) {
    present_.clear();
  }
  file.isNew = unread && QELVARDOSFileLayer::MeansMissing(unread, path);
  // What could be read is a file.
  const std::error_code refusal = unread && !file.isNew ? Refusal(layer_.Stat(path)) : std::error_code();
  return refusal ? refusal : Enter(FolderOf(path));
}

void QELVARDOSFileTransaction::WriteLater(std::string_view bytes) {
  constexpr std::size_t MostFiles = 1024;
  constexpr std::size_t MostBytes = std::size_t{1} << 20U;
  try {
    unwritten_.push_back({staged_.size() - 1, std::string(bytes)});
  } catch (...) {
    staged_.pop_back();
    throw;
  }
  unwrittenBytes_ += bytes.size();
  if (unwritten_.size() >= MostFiles || unwrittenBytes_ >= MostBytes) {
    WriteTemporaries();
  }
}

/// However it ends, each of these files has a whole temporary file afterwards or has failed.
void QELVARDOSFileTransaction::WriteTemporaries() {
  const std::vector<Unwritten> unwritten = std::exchange(unwritten_, {});
  unwrittenBytes_ = 0;
  std::vector<QELVARDOSNewFile> temporaries;
  const auto settle = [&](std::errc unfinished) {
    for (std::size_t at = 0; at < unwritten.size(); ++at) {
      Settle(unwritten[at].staged, at < temporaries.size() ? &temporaries[at] : nullptr, make_error_code(unfinished));
    }
  };
  try {
    temporaries.reserve(unwritten.size());
    for (const Unwritten& each : unwritten) {
      temporaries.push_back(TemporaryFor(staged_[each.staged], each.bytes));
    }
    layer_.WriteAllNew(temporaries);
    for (std::size_t at = 0; at < unwritten.size(); ++at) {
      while (temporaries[at].error == std::errc::file_exists) {
        temporaries[at] = TemporaryFor(staged_[unwritten[at].staged], unwritten[at].bytes);
        layer_.WriteAllNew({&temporaries[at], 1});
      }
    }
  } catch (const std::bad_alloc&) {
    settle(std::errc::not_enough_memory);
    return;
  } catch (...) {
    settle(std::errc::operation_canceled);
    throw;
  }
  settle(std::errc::operation_canceled);
}

/// temporary: null when it did not come to one. Of what was begun and not finished, nobody knows what is there.
void QELVARDOSFileTransaction::Settle(std::size_t staged, const QELVARDOSNewFile* temporary,
                                      const std::error_code& unfinished) {
  Staged& file = staged_[staged];
  if (temporary == nullptr || temporary->error == Unfinished()) {
    Fail(file, unfinished);
  } else if (temporary->error) {
    file.temporary.clear();
    Fail(file, temporary->error);
  } else {
    file.isDurable = temporary->isDurable;
  }
}

/// A claim may cost an open file, so only so many folders are claimed at a time. Where none is to be had, files are
/// written all the same, unless there is no folder to write them in.
std::error_code QELVARDOSFileTransaction::Enter(std::string_view folder) {
  constexpr std::size_t MostClaims = 400;
  if (entered_.contains(folder)) {
    return {};
  }
  Entered entered;
  const std::string name(folder);
  const std::error_code error = layer_.ClaimFolder(name, QELVARDOSFolderUse::Write, entered.claim);
  if (error == QELVARDOSFileError::ForeignLink || error == std::errc::no_such_file_or_directory) {
    return error;
  }
  entered.flushesEach = error == std::errc::not_supported;
  if (entered_.size() >= MostClaims) {
    entered.claim.reset();
  }
  entered_.emplace(name, std::move(entered));
  return {};
}

/// A file that is to be renamed to path, in the folder that was entered for it.
QELVARDOSNewFile QELVARDOSFileTransaction::TemporaryFor(Staged& file, std::string_view bytes) {
  const Entered& folder = entered_.find(FolderOf(file.path))->second;
  file.temporary = Beside(file.path, NextName(folder.claim != nullptr));
  return {file.temporary, bytes, file.isNew ? "" : file.path, folder.flushesEach, Unfinished(), false};
}

std::string QELVARDOSFileTransaction::NextName(bool claimed) {
  if (nameStart_.empty()) {
    nameStart_ = RandomStart();
  }
  std::string name(TemporaryPrefix);
  name += claimed ? Claimed : Unclaimed;
  name += nameStart_;
  AppendHex(name, nameNumber_, NumberDigits);
  if (++nameNumber_ == 0) {
    nameStart_ = RandomStart();
  }
  return name;
}

void QELVARDOSFileTransaction::Refuse(const std::string& path, const std::error_code& error,
                                      const std::string& reason) {
  Tell(path, QELVARDOSReplacement::Failed, error, reason);
}

std::vector<QELVARDOSFileTransaction::Failure> QELVARDOSFileTransaction::Commit() {
  WriteTemporaries();
  DropSuperseded();
  MakeContentDurable();
  RenameAll();
  MakeFoldersDurable();
  RemoveLeftOvers();
  std::vector<Failure> failures;
  for (const Staged& file : std::exchange(staged_, {})) {
    if (file.error) {
      failures.push_back({file.path, file.error});
    }
    const std::error_code* const unflushed = file.error == QELVARDOSFileError::MayBeLost ? UnflushedFor(file) : nullptr;
    Tell(file.path, file.outcome, file.error,
         unflushed == nullptr ? std::string() : file.error.message() + ": " + unflushed->message());
  }
  return failures;
}

/// Of equal paths the last stays, even where it was found to be on the disk already.
void QELVARDOSFileTransaction::DropSuperseded() {
  std::vector<Staged*> byPath(staged_.size());
  std::transform(staged_.begin(), staged_.end(), byPath.begin(), [](Staged& file) { return &file; });
  std::stable_sort(byPath.begin(), byPath.end(), [](const Staged* a, const Staged* b) { return a->path < b->path; });
  bool dropped = false;
  for (std::size_t at = 0; at + 1 < byPath.size(); ++at) {
    if (byPath[at]->path == byPath[at + 1]->path) {
      RemoveTemporary(*byPath[at]);
      byPath[at]->path.clear();
      dropped = true;
    }
  }
  if (dropped) {
    std::erase_if(staged_, [](const Staged& file) { return file.path.empty(); });
  }
}

void QELVARDOSFileTransaction::MakeContentDurable() {
  std::vector<Staged*> files;
  std::vector<std::string> temporaries;
  for (Staged& file : staged_) {
    if (!file.temporary.empty() && !file.isDurable) {
      files.push_back(&file);
      temporaries.push_back(file.temporary);
    }
  }
  const std::vector<std::error_code> errors =
      temporaries.empty() ? std::vector<std::error_code>() : layer_.MakeDurable(temporaries);
  for (std::size_t at = 0; at < errors.size(); ++at) {
    if (errors[at]) {
      Fail(*files[at], errors[at]);
    }
  }
}

/// A file that is in its place counts as failed until its folders are known to be durable.
void QELVARDOSFileTransaction::RenameAll() {
  std::vector<Staged*> files;
  std::vector<QELVARDOSFileRenaming> renamings;
  for (Staged& file : staged_) {
    if (!file.temporary.empty()) {
      files.push_back(&file);
      renamings.push_back({file.temporary, file.path, Unfinished()});
    }
  }
  if (renamings.empty()) {
    return;
  }
  const auto settle = [&] {
    for (std::size_t at = 0; at < files.size(); ++at) {
      const std::error_code& error = renamings[at].error;
      if (!error) {
        files[at]->temporary.clear();
      }
      if (error != Unfinished()) {
        Fail(*files[at], error ? error : QELVARDOSFileError::MayBeLost);
      }
    }
  };
  try {
    layer_.RenameAll(renamings);
  } catch (...) {
    settle();
    throw;
  }
  settle();
}

void QELVARDOSFileTransaction::MakeFoldersDurable() {
  FlushFolders();
  for (Staged& file : staged_) {
    if (file.error && file.error != QELVARDOSFileError::MayBeLost) {
      continue;
    }
    if (UnflushedFor(file) != nullptr) {
      Fail(file, QELVARDOSFileError::MayBeLost);
    } else if (file.error) {
      file.outcome = QELVARDOSReplacement::Written;
      file.error.clear();
    }
  }
}

/// Also where every file was as it should be: a process that ended before it came to this may have left it so. The same
/// holds for a folder that a file is new in, as whoever made it may have ended before its own folder was flushed.
void QELVARDOSFileTransaction::FlushFolders() {
  flushed_.clear();
  const auto add = [this](std::string_view folder) {
    if (flushed_.find(folder) == flushed_.end()) {
      flushed_.emplace(folder, std::error_code());
    }
  };
  for (const Staged& file : staged_) {
    if (!file.error || file.error == QELVARDOSFileError::MayBeLost) {
      add(FolderOf(file.path));
      if (file.isNew && !FolderOf(file.path).empty()) {
        add(FolderOf(FolderOf(file.path)));
      }
    }
  }
  std::vector<std::string> folders(flushed_.size());
  std::transform(flushed_.begin(), flushed_.end(), folders.begin(), [](const auto& entry) { return entry.first; });
  const std::vector<std::error_code> errors =
      folders.empty() ? std::vector<std::error_code>() : layer_.MakeFoldersDurable(folders);
  for (std::size_t at = 0; at < errors.size(); ++at) {
    flushed_[folders[at]] = errors[at];
  }
}

/// Null when the folders of the file are durable.
const std::error_code* QELVARDOSFileTransaction::UnflushedFor(const Staged& file) const {
  const std::string_view own = FolderOf(file.path);
  for (const std::string_view folder : {own, file.isNew ? FolderOf(own) : own}) {
    if (const auto place = flushed_.find(folder); place != flushed_.end() && place->second) {
      return &place->second;
    }
  }
  return nullptr;
}

void QELVARDOSFileTransaction::RemoveLeftOvers() {
  for (auto& [folder, entered] : std::exchange(entered_, {})) {
    if (entered.claim != nullptr) {
      entered.claim.reset();
      RemoveLeftOversIn(folder);
    }
  }
}

void QELVARDOSFileTransaction::RemoveLeftOversIn(const std::string& folder) {
  QELVARDOSFolderClaim alone;
  if (!ListingPays(folder) || layer_.ClaimFolder(folder, QELVARDOSFolderUse::Clean, alone)) {
    return;
  }
  std::vector<std::string> names;
  layer_.List(folder.empty() ? "." : folder, names);
  for (const std::string& name : names) {
    if (IsTemporaryName(name) && IsUnderClaim(name)) {
      layer_.Remove(In(folder, name));
    }
  }
}

/// A short listing costs less than the writing did. A long one is made the more seldom the longer it is, so that
/// writing many files one after the other costs each no more than a short listing.
bool QELVARDOSFileTransaction::ListingPays(const std::string& folder) {
  constexpr std::uint64_t Short = 8192;
  const std::uint64_t size = layer_.Stat(folder.empty() ? "." : folder).size;
  return size <= Short || std::random_device()() % (size / Short) < std::max<std::size_t>(staged_.size() / 64, 1);
}

void QELVARDOSFileTransaction::Fail(Staged& file, const std::error_code& error) {
  file.outcome = QELVARDOSReplacement::Failed;
  file.error = error;
  RemoveTemporary(file);
}

void QELVARDOSFileTransaction::RemoveTemporary(Staged& file) {
  if (!file.temporary.empty()) {
    layer_.Remove(std::exchange(file.temporary, {}));
  }
}

void QELVARDOSFileTransaction::Tell(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error,
                                    const std::string& reason) {
  if (error) {
    QELVARDOSSystemUtils::SetLastError(path + ": " + (reason.empty() ? error.message() : reason));
  }
  layer_.Replaced(path, outcome, error);
}

/// Nothing stays on the disk, even when telling of it fails.
void QELVARDOSFileTransaction::Abandon() {
  for (const Unwritten& file : std::exchange(unwritten_, {})) {
    Fail(staged_[file.staged], std::make_error_code(std::errc::operation_canceled));
  }
  for (Staged& file : staged_) {
    if (!file.temporary.empty()) {
      Fail(file, std::make_error_code(std::errc::operation_canceled));
    }
  }
  for (const Staged& file : std::exchange(staged_, {})) {
    Tell(file.path, file.outcome, file.error, {});
  }
}

bool QELVARDOSFileTransaction::IsTemporaryName(std::string_view fileName) noexcept {
  return fileName.size() == TemporaryLength && fileName.starts_with(TemporaryPrefix) &&
         fileName.find_first_not_of(HexDigits, TemporaryPrefix.size()) == std::string_view::npos;
}

bool QELVARDOSFileTransaction::IsUnderClaim(std::string_view temporaryName) noexcept {
  return !temporaryName.substr(TemporaryPrefix.size()).starts_with(Unclaimed);
}

std::error_code QELVARDOSReplaceFile(const std::string& path, std::string_view bytes) {
  QELVARDOSFileTransaction transaction;
  if (const std::error_code error = transaction.Replace(path, bytes)) {
    return error;
  }
  const auto failures = transaction.Commit();
  return failures.empty() ? std::error_code() : failures.front().error;
}
