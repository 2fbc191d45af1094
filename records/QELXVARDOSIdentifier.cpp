#include "records/QELXVARDOSIdentifier.h"

#include <string_view>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

QELXVARDOS_TRACED_HERE;

namespace {

enum class EmptyIds { Drop, Keep };

void AppendIds(const ZYMIDOMElement_var& element, const ZYMUnicodeString& attribute, EmptyIds emptyIds,
               ZYMUnicodeStringList& ids) {
  const ZYMUnicodeString value = Attribute(element, attribute);
  if (value.IsEmpty()) {
    return;
  }
  std::string_view rest = value.View();
  for (bool more = true; more;) {
    const std::size_t comma = rest.find(',');
    const std::string_view id = rest.substr(0, comma);
    if (!id.empty() || emptyIds == EmptyIds::Keep) {
      ids.Append(id);
    }
    more = comma != std::string_view::npos;
    rest.remove_prefix(more ? comma + 1 : rest.size());
  }
}

}  // namespace

QELXVARDOSIdentifier::QELXVARDOSIdentifier(const ZYMIDOMNode_var& cadObject) : cadObject_(cadObject) {}

HRESULT QELXVARDOSIdentifier::IdentifyComposition(ZYMUnicodeStringList& ids) {
  const Step step(Trace, "QELXVARDOSIdentifier::IdentifyComposition");
  if (const ZYMIDOMElement_var element(cadObject_); element) {
    AppendIds(element, Word::FamilyId, EmptyIds::Drop, ids);
    AppendIds(element, Word::ComposerId, EmptyIds::Drop, ids);
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSIdentifier::IdentifyParent(ZYMUnicodeStringList& ids) {
  const Step step(Trace, "QELXVARDOSIdentifier::IdentifyParent");
  if (const ZYMIDOMElement_var element(cadObject_); element) {
    AppendIds(element, Word::ParentId, EmptyIds::Keep, ids);
  }
  return step.Return(S_OK);
}
