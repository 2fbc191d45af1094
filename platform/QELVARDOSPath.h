#pragma once

#include <initializer_list>
#include <string_view>

#include "platform/ZYMUnicodeString.h"

/// A file-system path as text, UTF-8, "/" on every system; empty by default. Splitting and joining never look at the
/// disk.
class ZYM_EXPORT QELVARDOSPath {
 public:
  QELVARDOSPath() = default;
  QELVARDOSPath(ZYMUnicodeString path) : path_(std::move(path)) {}
  QELVARDOSPath(const char* path) : path_(path) {}

  const ZYMUnicodeString& ToString() const& noexcept { return path_; }
  ZYMUnicodeString ToString() && noexcept { return std::move(path_); }
  bool IsEmpty() const noexcept { return path_.IsEmpty(); }

  /// All before the last "/", or "/" where that is the first character; empty when there is none.
  QELVARDOSPath GetDirName() const;
  /// All behind the last "/".
  ZYMUnicodeString GetFileName() const;
  /// The file name up to its last dot; a name whose only dot leads (".xml") is all base name.
  ZYMUnicodeString GetBaseName() const;
  /// What follows that dot, without it; empty when there is none.
  ZYMUnicodeString GetExtension() const;

  /// GetExtension of a path that is no object of this class.
  static std::string_view ExtensionOf(std::string_view path) noexcept;

  /// All parts joined from left to right as by operator/, but with one allocation.
  static QELVARDOSPath Join(std::initializer_list<std::string_view> parts);
  /// Textual: an empty side yields the other side, one "/" stands between, an absolute right side does not replace the
  /// left.
  friend ZYM_EXPORT QELVARDOSPath operator/(const QELVARDOSPath& folder, const QELVARDOSPath& name);
  friend bool operator==(const QELVARDOSPath& a, const QELVARDOSPath& b) noexcept = default;

 private:
  ZYMUnicodeString path_;
};
