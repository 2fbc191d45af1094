#pragma once

#include <optional>

#include "platform/ZYMIDOMLook.h"
#include "platform/ZYMIDOMNode_varZYMUnicodeStringDico.h"
#include "records/QELXVARDOSLRDConstants.h"

/// Calls visit with each object of the list and its CAD id, which may be empty. Answers the status of the last id read.
template <typename Visit>
HRESULT ForEachCadId(const ZYMIDOMNode_var& cadobjectlist, const Visit& visit) {
  HRESULT status = S_OK;
  ForEachChildElement(cadobjectlist, [&](const ZYMIDOMElement_var& object) {
    ZYMUnicodeString cadId;
    status = object->getAttribute(Word::CadId, cadId);
    visit(object, cadId);
    return true;
  });
  return status;
}

/// The objects of a list by their CAD ids, those without one left out; of equal ids the last. They are mapped when they
/// are first asked for, which most requests never come to: the map takes more memory than all else of a recognition.
class ObjectsById {
 public:
  explicit ObjectsById(const ZYMIDOMElement_var& list) : list_(list) {}

  /// Whether the ids can be read: the status of the last one.
  HRESULT Status() const {
    return ForEachCadId(list_, [](const auto&, const auto&) {});
  }
  /// Null when there is none.
  const ZYMIDOMNode_var* Find(const ZYMUnicodeString& cadId) { return Map().Find(cadId); }
  int Size() { return Map().Size(); }

  /// Puts the objects of a list into a map and answers the status of the last id read.
  static HRESULT MapInto(const ZYMIDOMNode_var& list, ZYMIDOMNode_varZYMUnicodeStringDico& map) {
    return ForEachCadId(list, [&map](const ZYMIDOMElement_var& object, const ZYMUnicodeString& cadId) {
      if (!cadId.IsEmpty()) {
        map.Insert(cadId, object);
      }
    });
  }

 private:
  const ZYMIDOMNode_varZYMUnicodeStringDico& Map() {
    if (!map_) {
      MapInto(list_, map_.emplace());
    }
    return *map_;
  }

  ZYMIDOMElement_var list_;
  std::optional<ZYMIDOMNode_varZYMUnicodeStringDico> map_;
};
