#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/ZYMExport.h"

/// What is known of a path. Symbolic links are followed.
struct QELVARDOSFileFacts {
  enum class Kind { Missing, File, Folder, Other };

  Kind kind = Kind::Missing;
  /// Whole seconds since 1970-01-01 UTC, rounded down; 0 for what is missing.
  std::int64_t modified = 0;
  std::uint64_t size = 0;
  /// The permission bits.
  std::uint32_t mode = 0;

  bool Exists() const noexcept { return kind != Kind::Missing; }
};

/// What became of a file that was to be replaced.
enum class QELVARDOSReplacement { Written, AlreadyTheSame, Failed };

/// The one way to the disk: everything that the module reads, writes or asks of the file system goes through the layer
/// in use. A test puts its own in front to fail, stop or record it; a host to run dry. Paths are UTF-8; the empty path
/// does not exist. An error code that is false means success.
class ZYM_EXPORT QELVARDOSFileLayer {
 public:
  QELVARDOSFileLayer() = default;
  QELVARDOSFileLayer(const QELVARDOSFileLayer&) = delete;
  QELVARDOSFileLayer& operator=(const QELVARDOSFileLayer&) = delete;
  virtual ~QELVARDOSFileLayer();

  virtual QELVARDOSFileFacts Stat(const std::string& path) = 0;
  /// bytes receives the whole file; after an error its content is unspecified.
  virtual std::error_code Read(const std::string& path, std::string& bytes) = 0;
  /// The names in a folder without "." and "..", in no order.
  virtual std::error_code List(const std::string& folder, std::vector<std::string>& names) = 0;

  /// Between the two calls many files are looked up by Stat and Read, and the layer may keep folders open to find them
  /// faster; it may not notice then that such a folder was replaced by another of its name. The calls nest. Both do
  /// nothing here; use QELVARDOSFileLookups.
  virtual void BeginLookups();
  virtual void EndLookups();

  /// One level; a folder that exists is an error.
  virtual std::error_code MakeFolder(const std::string& path) = 0;
  virtual std::error_code HideFolder(const std::string& path) = 0;
  /// Creates a file that must not exist yet, with these bytes; it need not be durable yet. mode: its permission bits; 0
  /// for those of a plainly created file. After an error no file is left.
  virtual std::error_code WriteNew(const std::string& path, std::string_view bytes, std::uint32_t mode) = 0;
  /// Returns when the content of all these files would survive a loss of power. A file that is gone is passed over.
  virtual std::error_code MakeDurable(const std::vector<std::string>& paths) = 0;
  /// Replaces to, if it exists, in one step.
  virtual std::error_code Rename(const std::string& from, const std::string& to) = 0;
  virtual std::error_code Remove(const std::string& path) = 0;

  /// Told once for every file that a QELVARDOSFileTransaction was to replace, when its fate is settled. error is set
  /// for Failed alone. Does nothing here.
  virtual void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error);

  /// The layer in use: the system's own unless a host has put another there.
  static QELVARDOSFileLayer& Current();
  /// The layer that works on the real disk.
  static QELVARDOSFileLayer& System();
  /// Not owned; null puts the system's own back. Answers the layer before, null for the system's own.
  static QELVARDOSFileLayer* Use(QELVARDOSFileLayer* layer);
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

/// A layer that passes every operation on to another: the base of layers that watch, refuse or stop.
class ZYM_EXPORT QELVARDOSFileLayerFilter : public QELVARDOSFileLayer {
 public:
  explicit QELVARDOSFileLayerFilter(QELVARDOSFileLayer& next) : next_(next) {}

  QELVARDOSFileFacts Stat(const std::string& path) override { return next_.Stat(path); }
  std::error_code Read(const std::string& path, std::string& bytes) override { return next_.Read(path, bytes); }
  std::error_code List(const std::string& folder, std::vector<std::string>& names) override {
    return next_.List(folder, names);
  }
  void BeginLookups() override { next_.BeginLookups(); }
  void EndLookups() override { next_.EndLookups(); }
  std::error_code MakeFolder(const std::string& path) override { return next_.MakeFolder(path); }
  std::error_code HideFolder(const std::string& path) override { return next_.HideFolder(path); }
  std::error_code WriteNew(const std::string& path, std::string_view bytes, std::uint32_t mode) override {
    return next_.WriteNew(path, bytes, mode);
  }
  std::error_code MakeDurable(const std::vector<std::string>& paths) override { return next_.MakeDurable(paths); }
  std::error_code Rename(const std::string& from, const std::string& to) override { return next_.Rename(from, to); }
  std::error_code Remove(const std::string& path) override { return next_.Remove(path); }
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error) override {
    next_.Replaced(path, outcome, error);
  }

 protected:
  QELVARDOSFileLayer& Next() noexcept { return next_; }

 private:
  QELVARDOSFileLayer& next_;
};
