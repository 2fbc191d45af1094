#pragma once

#include <cstdint>

#include "platform/ZYMHandle.h"
#include "platform/ZYMUnicodeString.h"

/// What the client tells the module about the CAD system and its object types. The client implements it.
class ZYM_EXPORT QELIVARDOSGlobalConfigObject : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(QELIVARDOSGlobalConfigObject, "{167F9DA2-90A5-4199-ABB4-F0325C945D85}");

 public:
  /// "CREO" for Creo.
  virtual ZYMUnicodeString GetCADName() = 0;
  /// The name of the attribute that tells objects of this type apart; empty when there is none.
  virtual ZYMUnicodeString GetIdentifierAttribute(const ZYMUnicodeString& type) = 0;
  /// Whether an object type belongs to a type class, for example "TYPE_OBJECT_WITHOUT_FILE".
  virtual bool IsTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) = 0;
  /// Whether a relationship type belongs to a relationship class, for example "REL_BREP_LIKE".
  virtual bool IsRelTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) = 0;

  static constexpr std::uint64_t UsualLargestRecordFile = std::uint64_t{512} << 20U;
  /// In bytes. A larger record file counts as one that does not parse, and none that is larger is written.
  virtual std::uint64_t GetLargestRecordFile() { return UsualLargestRecordFile; }
};

using QELIVARDOSGlobalConfigObject_var = ZYMHandle<QELIVARDOSGlobalConfigObject>;
