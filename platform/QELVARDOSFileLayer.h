#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/ZYMExport.h"

/// What is known of a path. Symbolic links are followed.
struct QELVARDOSFileFacts {
  /// Unseen: the system did not let us look, so whether anything is there is not known.
  enum class Kind { Missing, File, Folder, Other, Unseen };

  Kind kind = Kind::Missing;
  /// Whole seconds since 1970-01-01 UTC, rounded down; 0 for what is missing or unseen.
  std::int64_t modified = 0;
  std::uint64_t size = 0;
  /// Why nothing is known; set for Unseen alone.
  std::error_code error;
  /// What modified leaves out, 0 to 999,999,999; none where the layer cannot tell. A file system that keeps no
  /// fractions of seconds shows 0.
  std::optional<std::int32_t> nanoseconds = std::nullopt;

  bool Exists() const noexcept { return kind != Kind::Missing && kind != Kind::Unseen; }
};

/// What became of a file that was to be replaced.
enum class QELVARDOSReplacement { Written, AlreadyTheSame, Failed };

/// What a folder is held for: to write in it, beside any number of others, or to remove what writers left in it, alone.
enum class QELVARDOSFolderUse { Write, Clean };

/// A folder that is held. It is given back with the last copy, at the latest when the process ends; null holds nothing.
using QELVARDOSFolderClaim = std::shared_ptr<const void>;

/// A file that is to be created, and what became of it.
struct QELVARDOSNewFile {
  std::string path;
  /// Must live for as long as the call that gets them.
  std::string_view bytes;
  /// As for WriteNew.
  std::string like;
  /// Whether it is to be made durable at once, if that is cheaper while it is open.
  bool atOnce = false;

  /// Set by the layer.
  std::error_code error;
  bool isDurable = false;
};

/// A file that is to be renamed, and what became of it.
struct QELVARDOSFileRenaming {
  std::string from;
  std::string to;

  /// Set by the layer.
  std::error_code error;
};

/// A look at the disk that will be taken soon.
struct QELVARDOSFileLook {
  /// Facts: as by Stat. Content: as by Read. ContentWithFacts: as by ReadWithFacts.
  enum class Kind { Facts, Content, ContentWithFacts };

  std::string path;
  Kind kind = Kind::Facts;

  bool operator==(const QELVARDOSFileLook& other) const = default;
};

/// The one way to the disk: everything that the module reads, writes or asks of the file system goes through the layer
/// in use. A test puts its own in front to fail, stop or record it; a host to run dry. Paths are UTF-8; the empty path
/// does not exist. An error code that is false means success.
///
/// What an error says of the place itself is told by MeansMissing: nothing is there, or it could not be looked at. The
/// two must not be mixed up, as a record that is not seen would make its object new to the server.
///
/// Threads: the module calls a layer in the thread that called the module, and in no other. Any operation is called by
/// several threads at once when several use the module; Stat, Read, ReadWithFacts, List, BeginLookups, EndLookups,
/// WriteAllNew, RenameAll and MakeFoldersDurable also when a QELVARDOSParallelFileLayer stands in front.
class ZYM_EXPORT QELVARDOSFileLayer {
 public:
  static constexpr std::uint64_t AnySize = std::numeric_limits<std::uint64_t>::max();

  QELVARDOSFileLayer() = default;
  QELVARDOSFileLayer(const QELVARDOSFileLayer&) = delete;
  QELVARDOSFileLayer& operator=(const QELVARDOSFileLayer&) = delete;
  virtual ~QELVARDOSFileLayer();

  /// Whether an error that looking at path ended with says that nothing is there: a name on the way is missing or no
  /// folder, or one name is longer than any can be. After any other error the place could not be looked at.
  static bool MeansMissing(const std::error_code& error, std::string_view path) noexcept;

  /// Missing and Unseen are told apart as by MeansMissing.
  virtual QELVARDOSFileFacts Stat(const std::string& path) = 0;
  /// bytes receives the whole file; after an error its content is unspecified. file_too_large: it holds more than
  /// atMost bytes, and is not read. is_a_directory, not_supported: it is there, but no file. Any other error is one for
  /// MeansMissing.
  virtual std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) = 0;
  /// The same, and where it succeeds what is known of the file that was read: here by a look at its path, which a layer
  /// can spare that has the file at hand. A layer that is only derived from this class need not know of it.
  virtual std::error_code ReadWithFacts(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                        QELVARDOSFileFacts& facts);
  /// The names in a folder without "." and "..", in no order. An error is one for MeansMissing, and names may then hold
  /// some of them.
  virtual std::error_code List(const std::string& folder, std::vector<std::string>& names) = 0;

  /// Between the two calls many files are looked up by Stat and Read, and the layer may keep folders open to find them
  /// faster; it may not notice then that such a folder was replaced by another of its name. It may also answer a thread
  /// that asks for the same facts twice in a row as it did before. The calls nest, in each thread by themselves. Both
  /// do nothing here; use QELVARDOSFileLookups.
  virtual void BeginLookups();
  virtual void EndLookups();

  /// One level; a folder that exists is an error: file_exists.
  virtual std::error_code MakeFolder(const std::string& path) = 0;
  virtual std::error_code HideFolder(const std::string& path) = 0;
  /// Holds a folder as a writer, or alone. device_or_resource_busy: others hold it in a way that does not go with this.
  /// QELVARDOSFileError::ForeignLink: nothing is to be written there. After any other error it is held by nobody,
  /// since the folder cannot be opened, its file system is none on which a claim is seen by all who may write there, or
  /// claims would take too many of the files that a process may have open. Here: not_supported.
  virtual std::error_code ClaimFolder(const std::string& folder, QELVARDOSFolderUse use, QELVARDOSFolderClaim& claim);
  /// Creates a file that must not exist yet (file_exists), with these bytes, never through a link; it need not be
  /// durable yet. like: a file whose owner, group, mode and extended attributes it gets as far as the process may set
  /// them, and than which it is never more open; empty: as a plainly created file. OwnerWouldLoseAccess: the owner of
  /// like could not read it. After an error no file is left.
  virtual std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) = 0;
  /// As WriteNew of each, in any order or at once; an answer stands in each. Here: WriteNew of one after the other.
  virtual void WriteAllNew(std::span<QELVARDOSNewFile> files);
  /// Returns when the content of these files would survive a loss of power: an answer for each, in their order. A file
  /// that is gone is passed over.
  virtual std::vector<std::error_code> MakeDurable(const std::vector<std::string>& paths) = 0;
  /// The same for what the folders list: which names are there and which files they mean. "" is the working folder.
  virtual std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) = 0;
  /// Replaces to, if it exists, in one step.
  virtual std::error_code Rename(const std::string& from, const std::string& to) = 0;
  /// As Rename of each, in any order or at once; an answer stands in each. Here: Rename of one after the other.
  virtual void RenameAll(std::span<QELVARDOSFileRenaming> files);
  /// A file, a link or an empty folder.
  virtual std::error_code Remove(const std::string& path) = 0;

  /// Told once for every file that a QELVARDOSFileTransaction was to replace, when its fate is settled. error is set
  /// for Failed alone; QELVARDOSSystemUtils::LastError() then tells path and reason. Written means that
  /// the file would survive a loss of power; AlreadyTheSame the same of a file that was written so. Does nothing here.
  virtual void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error);

  /// Whether LookAhead does anything now: only then is it worth finding out what is coming. Not so here.
  virtual bool WantsNotice() const;
  /// Tells which looks this thread will take soon, as far as is known, in their order: a hint between BeginLookups and
  /// EndLookups. Others may come, and some of these may not. What was told of before the last notice may be forgotten.
  /// Does nothing here; use QELVARDOSFileNotices.
  virtual void LookAhead(std::vector<QELVARDOSFileLook>&& looks);

  /// The layer in use: the system's own unless a host has put another there.
  static QELVARDOSFileLayer& Current();
  /// The layer that works on the real disk.
  static QELVARDOSFileLayer& System();
  /// Not owned; null puts the system's own back. Answers the layer before, null for the system's own.
  static QELVARDOSFileLayer* Use(QELVARDOSFileLayer* layer);
};

/// Puts a layer in use for as long as it lives, and then the one before.
class ZYM_EXPORT QELVARDOSUseFileLayer {
 public:
  explicit QELVARDOSUseFileLayer(QELVARDOSFileLayer& layer) : before_(QELVARDOSFileLayer::Use(&layer)) {}
  ~QELVARDOSUseFileLayer() { QELVARDOSFileLayer::Use(before_); }
  QELVARDOSUseFileLayer(const QELVARDOSUseFileLayer&) = delete;
  QELVARDOSUseFileLayer& operator=(const QELVARDOSUseFileLayer&) = delete;

 private:
  QELVARDOSFileLayer* before_;
};

/// For as long as it lives, many files are looked up through the layer that was in use when it was made.
class ZYM_EXPORT QELVARDOSFileLookups {
 public:
  QELVARDOSFileLookups() : layer_(QELVARDOSFileLayer::Current()) { layer_.BeginLookups(); }
  ~QELVARDOSFileLookups() { layer_.EndLookups(); }
  QELVARDOSFileLookups(const QELVARDOSFileLookups&) = delete;
  QELVARDOSFileLookups& operator=(const QELVARDOSFileLookups&) = delete;

 private:
  QELVARDOSFileLayer& layer_;
};

/// A layer that passes every operation on to another: the base of layers that watch, refuse or stop. Files that come
/// many at once are taken one by one, so that WriteNew and Rename of the derived see them all; a filter that has no
/// interest in them overrides WriteAllNew and RenameAll to pass them on as they come.
class ZYM_EXPORT QELVARDOSFileLayerFilter : public QELVARDOSFileLayer {
 public:
  explicit QELVARDOSFileLayerFilter(QELVARDOSFileLayer& next) : next_(next) {}

  QELVARDOSFileFacts Stat(const std::string& path) override { return next_.Stat(path); }
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override {
    return next_.Read(path, bytes, atMost);
  }
  std::error_code List(const std::string& folder, std::vector<std::string>& names) override {
    return next_.List(folder, names);
  }
  void BeginLookups() override { next_.BeginLookups(); }
  void EndLookups() override { next_.EndLookups(); }
  std::error_code MakeFolder(const std::string& path) override { return next_.MakeFolder(path); }
  std::error_code HideFolder(const std::string& path) override { return next_.HideFolder(path); }
  std::error_code ClaimFolder(const std::string& folder, QELVARDOSFolderUse use, QELVARDOSFolderClaim& claim) override {
    return next_.ClaimFolder(folder, use, claim);
  }
  std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) override {
    return next_.WriteNew(path, bytes, like);
  }
  std::vector<std::error_code> MakeDurable(const std::vector<std::string>& paths) override {
    return next_.MakeDurable(paths);
  }
  std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) override {
    return next_.MakeFoldersDurable(folders);
  }
  std::error_code Rename(const std::string& from, const std::string& to) override { return next_.Rename(from, to); }
  std::error_code Remove(const std::string& path) override { return next_.Remove(path); }
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error) override {
    next_.Replaced(path, outcome, error);
  }
  bool WantsNotice() const override { return next_.WantsNotice(); }
  void LookAhead(std::vector<QELVARDOSFileLook>&& looks) override { next_.LookAhead(std::move(looks)); }

 protected:
  QELVARDOSFileLayer& Next() noexcept { return next_; }

 private:
  QELVARDOSFileLayer& next_;
};
