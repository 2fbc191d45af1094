#include "records/QELXVARDOSLRDVersionInfo.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "platform/ZYMIDOMLook.h"
#include "platform/ZYMLoadOrder.h"
#include "records/QELXVARDOSLRDConstants.h"

namespace {

using Capabilities = ZYMUnicodeStringList;

struct Version {
  const ZYMUnicodeString& name;
  std::optional<Capabilities> capabilities;
  std::array<const RecordFormat*, 4> formats;  // in the order of RecordKind
};

}  // namespace

namespace Format {

// The formats, oldest first, each with the stamp that it brought.
constexpr RecordFormat Plain{.name = ClassName::Plain,
                             .before = nullptr,
                             .meta = MetaObjectOf<Plain>,
                             .tracedReading = {&Plain},
                             .tracedUpdate = {&Plain}};

// "0.0"
constexpr RecordFormat Full{.name = ClassName::Full,
                            .before = &Plain,
                            .meta = MetaObjectOf<Full>,
                            .tracedReading = {&Full, &Plain},
                            .tracedUpdate = {&Full, &Plain}};
constexpr RecordFormat Child{.name = ClassName::Child,
                             .kind = RecordKind::Child,
                             .before = &Plain,
                             .meta = MetaObjectOf<Child>,
                             .tracedReading = {&Child, &Plain},
                             .tracedUpdate = {&Plain}};
constexpr RecordFormat Composition{.name = ClassName::Composition,
                                   .kind = RecordKind::Composition,
                                   .before = &Plain,
                                   .meta = MetaObjectOf<Composition>,
                                   .tracedReading = {&Composition, &Plain},
                                   .tracedUpdate = {&Plain}};
constexpr RecordFormat Rel{.name = ClassName::Rel,
                           .kind = RecordKind::Rel,
                           .before = &Plain,
                           .meta = MetaObjectOf<Rel>,
                           .tracedReading = {&Rel},
                           .tracedUpdate = {&Plain}};

// "1.0"
constexpr RecordStamp MacroCEStamp{
    {Word::MacroCEStamp, "AddMacroCEStampNode"}, &Stamps::macroCE, &QELXIVARDOSLRDObject::GetMacroCEStamp};
constexpr RecordFormat FullV1{.name = ClassName::FullV1,
                              .before = &Full,
                              .meta = MetaObjectOf<FullV1>,
                              .stamps = {{MacroCEStamp, FullV1, false}},
                              .version = RecordFormat::Version::Lost,
                              .tracedReading = {&FullV1, &Full, &Plain},
                              .tracedUpdate = {&FullV1, &Full, &Plain}};
constexpr RecordFormat ChildV1{.name = ClassName::ChildV1,
                               .kind = RecordKind::Child,
                               .before = &Child,
                               .meta = MetaObjectOf<ChildV1>,
                               .stamps = {{MacroCEStamp, ChildV1, false}},
                               .tracedReading = {&ChildV1, &Child, &Plain},
                               .tracedUpdate = {&ChildV1, &Plain}};
constexpr RecordFormat CompositionV1{.name = ClassName::CompositionV1,
                                     .kind = RecordKind::Composition,
                                     .before = &Composition,
                                     .meta = MetaObjectOf<CompositionV1>,
                                     .stamps = {{MacroCEStamp, CompositionV1, false}},
                                     .tracedReading = {&CompositionV1, &Composition, &Plain},
                                     .tracedUpdate = {&CompositionV1, &Plain}};

// "2.0"
constexpr RecordFormat FullV2{.name = ClassName::FullV2,
                              .before = &FullV1,
                              .meta = MetaObjectOf<FullV2>,
                              .stamps = FullV1.stamps,
                              .version = RecordFormat::Version::Lost,
                              .compositionsAlone = true,
                              .tracedReading = {&FullV2, &FullV1, &Full, &Plain},
                              .tracedWriting = ClassName::FullV1,
                              .tracedUpdate = FullV1.tracedUpdate};

// "3.0"
constexpr RecordFormat RelV3{.name = ClassName::RelV3,
                             .kind = RecordKind::Rel,
                             .before = &Rel,
                             .meta = MetaObjectOf<RelV3>,
                             .childPhid = true,
                             .tracedReading = {&RelV3, &Rel},
                             .tracedUpdate = {&Plain}};

// "4.0". Its full record's update goes back beyond "1.0". Its entries have a macro CE stamp anew: the old one is what
// Initialize reads.
constexpr RecordStamp XSStamp{
    {Word::XSStamp, "AddXCADSyncroStampNode"}, &Stamps::xs, &QELXIVARDOSLRDObject::GetXSStamp};
constexpr RecordFormat FullV4{.name = ClassName::FullV4,
                              .before = &FullV1,
                              .meta = MetaObjectOf<FullV4>,
                              .stamps = {{MacroCEStamp, FullV1, false}, {XSStamp, FullV4}},
                              .version = RecordFormat::Version::Kept,
                              .tracedReading = FullV1.tracedReading,
                              .tracedUpdate = {&FullV4, &Full, &Plain}};
constexpr RecordFormat ChildV4{.name = ClassName::ChildV4,
                               .kind = RecordKind::Child,
                               .before = &ChildV1,
                               .meta = MetaObjectOf<ChildV4>,
                               .stamps = {{MacroCEStamp, ChildV4}, {XSStamp, ChildV4}},
                               .tracedReading = ChildV1.tracedReading,
                               .tracedUpdate = {&ChildV4, &ChildV1, &Plain}};
constexpr RecordFormat CompositionV4{.name = ClassName::CompositionV4,
                                     .kind = RecordKind::Composition,
                                     .before = &CompositionV1,
                                     .meta = MetaObjectOf<CompositionV4>,
                                     .stamps = {{MacroCEStamp, CompositionV4}, {XSStamp, CompositionV4}},
                                     .tracedReading = CompositionV1.tracedReading,
                                     .tracedUpdate = {&CompositionV4, &CompositionV1, &Plain}};

// What new records are but for check-out by path. The server must know it before it stands here.
constexpr const ZYMUnicodeString& VersionOfNewRecords = FormatVersion::V4;

// The ledger of the versions, newest first: most files are of the newest.
ZYM_LOADED_AS(Tables)
const std::vector<Version> Ledger = {
    // Brought "xsStamp". Nobody asks for its capabilities; it has no list.
    {FormatVersion::V4, std::nullopt, {&FullV4, &ChildV4, &CompositionV4, &RelV3}},
    // Went on from "1.0", not from "2.0": brought "childPhid" to relationship records.
    {FormatVersion::V3,
     Capabilities{Capability::Baseline, Capability::DeleteFromWebUsingMCES, Capability::RelUUIDRecognition},
     {&FullV1, &ChildV1, &CompositionV1, &RelV3}},
    // For check-out by path: a full record holds composition records alone.
    {FormatVersion::V2,
     Capabilities{Capability::Baseline, Capability::DeleteFromWebUsingMCES, Capability::CheckoutExModePath},
     {&FullV2, &ChildV1, &CompositionV1, &Rel}},
    // Brought "macroceStamp", and "version" on the full record.
    {FormatVersion::V1,
     Capabilities{Capability::Baseline, Capability::DeleteFromWebUsingMCES},
     {&FullV1, &ChildV1, &CompositionV1, &Rel}},
    // The first format.
    {FormatVersion::V0, Capabilities{Capability::Baseline}, {&Full, &Child, &Composition, &Rel}},
};

}  // namespace Format

namespace {

const Version* Find(const ZYMUnicodeString& name) {
  const auto found = std::find_if(Format::Ledger.begin(), Format::Ledger.end(),
                                  [&name](const Version& version) { return version.name == name; });
  return found == Format::Ledger.end() ? nullptr : &*found;
}

}  // namespace

QELXVARDOSLRDVersionInfo::~QELXVARDOSLRDVersionInfo() = default;

const RecordFormat* QELXVARDOSLRDVersionInfo::FormatOf(const ZYMUnicodeString& version, RecordKind kind) {
  const Version* found = Find(version);
  return found == nullptr ? nullptr : found->formats[static_cast<std::size_t>(kind)];
}

const RecordFormat* QELXVARDOSLRDVersionInfo::FormatNamed(const ZYMUnicodeString& className) {
  for (const Version& version : Format::Ledger) {
    for (const RecordFormat* format : version.formats) {
      if (format->name == className) {
        return format;
      }
    }
  }
  return nullptr;
}

const RecordFormat& QELXVARDOSLRDVersionInfo::Newest(RecordKind kind) {
  return *Format::Ledger.front().formats[static_cast<std::size_t>(kind)];
}

bool QELXVARDOSLRDVersionInfo::IsOlder(const ZYMUnicodeString& version, const ZYMUnicodeString& other) {
  const auto age = [](const ZYMUnicodeString& name) { return Find(name.IsEmpty() ? FormatVersion::V0 : name); };
  return age(version) > age(other);
}

const ZYMUnicodeString& QELXVARDOSLRDVersionInfo::NewestVersion() { return Format::Ledger.front().name; }

const ZYMUnicodeStringList* QELXVARDOSLRDVersionInfo::GetCapabilities(const ZYMUnicodeString& version) const {
  const Version* found = Find(version);
  return found == nullptr || !found->capabilities ? nullptr : &*found->capabilities;
}

ZYMUnicodeString QELXVARDOSLRDVersionInfo::GetClassName(const ZYMUnicodeString& version,
                                                        const ZYMUnicodeString& kind) const {
  const std::array kinds = {&KindName::Full, &KindName::Child, &KindName::Composition, &KindName::Rel};
  const auto found = std::find_if(kinds.begin(), kinds.end(), [&kind](const auto* name) { return *name == kind; });
  const RecordFormat* format =
      found == kinds.end() ? nullptr : FormatOf(version, static_cast<RecordKind>(found - kinds.begin()));
  return format == nullptr ? ZYMUnicodeString() : format->name;
}

ZYMUnicodeString QELXVARDOSLRDVersionInfo::GetLRDVersion(const ZYMIDOMNode_var& node) const {
  const ZYMIDOMElement_var element(node);
  if (element.IsNull()) {
    return {};
  }
  const bool byPath =
      Attribute(element, Word::ModeOfVersion) == Word::Path && Attribute(element, Word::NoCompletion) == Word::True;
  return byPath ? FormatVersion::V2 : Format::VersionOfNewRecords;
}
