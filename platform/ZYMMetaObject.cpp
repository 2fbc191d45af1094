#include "platform/ZYMMetaObject.h"

ZYMMetaObject::ZYMMetaObject(std::string_view className, const ZYMMetaObject* parent, std::string_view baseName,
                             std::string_view frameworkName, const ZYMGuid* interfaceId)
    : className_(className),
      parent_(parent),
      baseName_(baseName),
      frameworkName_(frameworkName),
      interfaceId_(interfaceId == nullptr ? std::nullopt : std::optional(*interfaceId)) {}

bool ZYMMetaObject::IsAKindOf(std::string_view className) const noexcept {
  for (const ZYMMetaObject* meta = this; meta != nullptr; meta = meta->parent_) {
    if (meta->className_ == className) {
      return true;
    }
  }
  return false;
}

bool ZYMMetaObject::Offers(std::string_view interfaceName) const noexcept {
  for (const ZYMMetaObject* meta = this; meta != nullptr; meta = meta->parent_) {
    if (meta->interfaceId_ && meta->className_ == interfaceName) {
      return true;
    }
  }
  return false;
}
