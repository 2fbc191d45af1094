#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/ZYMExport.h"
#include "platform/ZYMGuid.h"

/// What the framework knows of a class or an interface: its name, what it derives from, and, for an interface, its
/// identity. Meta-objects live in the class dictionary from their registration until the last module with a class of
/// that name is unloaded.
class ZYM_EXPORT ZYMMetaObject {
 public:
  /// parent: null for a root. interfaceId: null for an implementation class; copied.
  ZYMMetaObject(std::string_view className, const ZYMMetaObject* parent, std::string_view baseName,
                std::string_view frameworkName, const ZYMGuid* interfaceId);

  const char* IsA() const noexcept { return className_.c_str(); }
  /// True for the own name and for the name of every meta-object up the chain of parents.
  bool IsAKindOf(std::string_view className) const noexcept;
  /// True when this or a parent is the interface of that identity.
  bool Offers(const ZYMGuid& interfaceId) const noexcept {
    for (const ZYMMetaObject* meta = this; meta != nullptr; meta = meta->parent_) {
      if (meta->interfaceId_ && *meta->interfaceId_ == interfaceId) {
        return true;
      }
    }
    return false;
  }
  /// The same question by the interface's name; the name of an implementation class is no interface.
  bool Offers(std::string_view interfaceName) const noexcept;

  const ZYMMetaObject* Parent() const noexcept { return parent_; }
  const std::string& BaseName() const noexcept { return baseName_; }
  const std::string& FrameworkName() const noexcept { return frameworkName_; }

 private:
  std::string className_;
  const ZYMMetaObject* parent_;
  std::string baseName_;
  std::string frameworkName_;
  std::optional<ZYMGuid> interfaceId_;
};
