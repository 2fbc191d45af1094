#include "records/QELXVARDOSLRDVersionInfo.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/ZYMIDOMLook.h"
#include "platform/ZYMLoadOrder.h"
#include "records/QELXVARDOSLRDConstants.h"

namespace {

struct Version {
  const ZYMUnicodeString& name;
  std::optional<ZYMUnicodeStringList> capabilities;
  const ZYMUnicodeString& full;
  const ZYMUnicodeString& child;
  const ZYMUnicodeString& composition;
  const ZYMUnicodeString& rel;
};

using Capabilities = ZYMUnicodeStringList;

// The ledger of the formats, oldest first: what each can do, then its classes of full, child, composition and
// relationship records.
ZYM_LOADED_AS(Tables)
const std::vector<Version> Ledger = {
    // The first format.
    {FormatVersion::V0, Capabilities{Capability::Baseline},  //
     ClassName::Full, ClassName::Child, ClassName::Composition, ClassName::Rel},
    // Brought "macroceStamp", and "version" on the full record.
    {FormatVersion::V1, Capabilities{Capability::Baseline, Capability::DeleteFromWebUsingMCES},  //
     ClassName::FullV1, ClassName::ChildV1, ClassName::CompositionV1, ClassName::Rel},
    // For check-out by path: a full record holds composition records alone.
    {FormatVersion::V2,
     Capabilities{Capability::Baseline, Capability::DeleteFromWebUsingMCES, Capability::CheckoutExModePath},
     ClassName::FullV2, ClassName::ChildV1, ClassName::CompositionV1, ClassName::Rel},
    // Went on from "1.0", not from "2.0": brought "childPhid" to relationship records.
    {FormatVersion::V3,
     Capabilities{Capability::Baseline, Capability::DeleteFromWebUsingMCES, Capability::RelUUIDRecognition},
     ClassName::FullV1, ClassName::ChildV1, ClassName::CompositionV1, ClassName::RelV3},
    // Brought "xsStamp". Nobody asks for its capabilities; it has no list.
    {FormatVersion::V4, std::nullopt,  //
     ClassName::FullV4, ClassName::ChildV4, ClassName::CompositionV4, ClassName::RelV3},
};

const Version* Find(const ZYMUnicodeString& name) {
  // Most files are of the newest format.
  const auto found =
      std::find_if(Ledger.rbegin(), Ledger.rend(), [&name](const Version& version) { return version.name == name; });
  return found == Ledger.rend() ? nullptr : &*found;
}

}  // namespace

QELXVARDOSLRDVersionInfo::~QELXVARDOSLRDVersionInfo() = default;

const ZYMUnicodeStringList* QELXVARDOSLRDVersionInfo::GetCapabilities(const ZYMUnicodeString& version) const {
  const Version* found = Find(version);
  return found == nullptr || !found->capabilities ? nullptr : &*found->capabilities;
}

const ZYMUnicodeString& QELXVARDOSLRDVersionInfo::ClassName(const ZYMUnicodeString& version,
                                                            const ZYMUnicodeString& kind) {
  static const ZYMUnicodeString None;
  const Version* found = Find(version);
  if (found == nullptr) {
    return None;
  }
  if (kind == KindName::Full) {
    return found->full;
  }
  if (kind == KindName::Child) {
    return found->child;
  }
  if (kind == KindName::Composition) {
    return found->composition;
  }
  return kind == KindName::Rel ? found->rel : None;
}

ZYMUnicodeString QELXVARDOSLRDVersionInfo::GetLRDVersion(const ZYMIDOMNode_var& node) const {
  const ZYMIDOMElement_var element(node);
  if (element.IsNull()) {
    return {};
  }
  const bool byPath =
      Attribute(element, Word::ModeOfVersion) == Word::Path && Attribute(element, Word::NoCompletion) == Word::True;
  return byPath ? FormatVersion::V2 : FormatVersion::V4;
}
