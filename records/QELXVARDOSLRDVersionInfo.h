#pragma once

#include "platform/ZYMIDOM.h"
#include "platform/ZYMUnicodeStringList.h"
#include "records/RecordFormat.h"

/// The table of the format versions: what each can do and which classes read and write it. The tables are made once,
/// when the module is loaded, so an object of this class costs nothing.
class QELXVARDOSLRDVersionInfo {
 public:
  QELXVARDOSLRDVersionInfo() = default;
  QELXVARDOSLRDVersionInfo(const QELXVARDOSLRDVersionInfo&) = default;
  QELXVARDOSLRDVersionInfo& operator=(const QELXVARDOSLRDVersionInfo&) = default;
  virtual ~QELXVARDOSLRDVersionInfo();

  /// Null for a version without entry, which "4.0" is on purpose.
  const ZYMUnicodeStringList* GetCapabilities(const ZYMUnicodeString& version) const;
  /// kind: one of KindName. Empty for a version or a kind without entry.
  ZYMUnicodeString GetClassName(const ZYMUnicodeString& version, const ZYMUnicodeString& kind) const;
  /// The version that a command or response calls for: "2.0" for mode="path" with nocompletion="true", else "4.0";
  /// empty when the node is no element.
  ZYMUnicodeString GetLRDVersion(const ZYMIDOMNode_var& node) const;

  /// What records of that kind are like in that version, and what the class of that name is like; null when there is
  /// none.
  static const RecordFormat* FormatOf(const ZYMUnicodeString& version, RecordKind kind);
  static const RecordFormat* FormatNamed(const ZYMUnicodeString& className);
  static const RecordFormat& Newest(RecordKind kind);
  /// Whether one known version came before another; the empty version is the oldest.
  static bool IsOlder(const ZYMUnicodeString& version, const ZYMUnicodeString& other);
  static const ZYMUnicodeString& NewestVersion();
};
