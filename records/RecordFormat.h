#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "component/QELXIVARDOSLRDObject.h"
#include "platform/ZYMFillDictionary.h"

/// The stamps that formats brought after the first; a record keeps those that its format does not have empty.
struct Stamps {
  ZYMUnicodeString macroCE;
  ZYMUnicodeString xs;
};

/// A value of record files.
struct RecordValue {
  const ZYMUnicodeString& word;
  const char* adder = nullptr;  ///< the step of the trace that writes it
};

/// A stamp as all formats know it: an element of a record file, and an attribute of an object in a server's answer.
struct RecordStamp {
  RecordValue value;
  ZYMUnicodeString Stamps::*field = nullptr;
  ZYMUnicodeString (QELXIVARDOSLRDObject::*getter)() const = nullptr;  ///< of any record; null: GetStamp
};

enum class RecordKind : std::uint8_t { Full, Child, Composition, Rel };

/// What a class of records reads, writes and updates beside the values that every record of its kind has.
struct RecordFormat {
  struct Holding {
    const RecordStamp& stamp;
    const RecordFormat& adder;  ///< of the class that the trace names for writing it
    bool readLate = true;       ///< by the constructor from a file, not by Initialize
  };
  /// The classes that the trace names for one operation, outermost first.
  using Classes = std::initializer_list<const RecordFormat*>;
  /// What becomes of the version of a full record that was read, when it is written.
  enum class Version : std::uint8_t { HasNone, Lost, Kept };

  const ZYMUnicodeString& name;
  RecordKind kind = RecordKind::Full;
  const RecordFormat* before = nullptr;  ///< that of the class it derives from; null: of the interface
  ZYMMetaObject* (*meta)() = nullptr;
  std::initializer_list<Holding> stamps = {};  ///< in the order of a file
  Version version = Version::HasNone;
  bool compositionsAlone = false;  ///< takes no other children
  bool childPhid = false;

  // Whose steps the trace opens. They name classes, and steer nothing else.
  Classes tracedReading = {};
  const ZYMUnicodeString& tracedWriting = name;
  Classes tracedUpdate = {};
};

/// The meta-object of a format's class.
template <const RecordFormat& Format>
ZYMMetaObject* MetaObjectOf() {
  static const ZYMRegisteredMetaObject Meta(
      Format.name.CStr(), Format.before == nullptr ? QELXIVARDOSLRDObject::MetaObject() : Format.before->meta(),
      nullptr);
  return Meta.Get();
}

/// The formats of the classes that have a name in C++.
namespace Format {
extern const RecordFormat Plain;
extern const RecordFormat Full;
extern const RecordFormat FullV1;
extern const RecordFormat FullV2;
extern const RecordFormat FullV4;
extern const RecordFormat Child;
extern const RecordFormat ChildV1;
extern const RecordFormat ChildV4;
extern const RecordFormat Composition;
extern const RecordFormat CompositionV1;
extern const RecordFormat CompositionV4;
extern const RecordFormat Rel;
extern const RecordFormat RelV3;
}  // namespace Format

/// The records of a kind that have this format, as a class: what its constructors take beside the node is the kind's.
template <typename Kind, const RecordFormat& Of>
class RecordOf : public Kind {
 public:
  static ZYMMetaObject* MetaObject() { return Of.meta(); }

  template <typename... Facts>
  explicit RecordOf(const ZYMIDOMNode_var& node, Facts&&... facts) : Kind(Of, node, std::forward<Facts>(facts)...) {}
};
