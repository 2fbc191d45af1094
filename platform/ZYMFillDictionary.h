#pragma once

#include <string_view>
#include <type_traits>

#include "platform/ZYMBaseUnknown.h"

/// The framework's class dictionary and creation registry: one for the process, shared by the host and by every module
/// that is loaded into it.

/// Looks the meta-object of a class up by its name and registers it on first use. parent: null for none. A name that is
/// registered already answers the registered meta-object; the other arguments are then without effect. It lives until
/// the last module with a class of that name is unloaded; without one, for good.
ZYM_EXPORT ZYMMetaObject* fct_RetrieveMetaObject(std::string_view className, const ZYMMetaObject* parent,
                                                 std::string_view baseName, std::string_view frameworkName,
                                                 const ZYMGuid* interfaceId = nullptr);

/// The registered meta-object of that name, or null; registers nothing.
ZYM_EXPORT ZYMMetaObject* ZYMFindMetaObject(std::string_view className);

class ZYM_EXPORT ZYMFillDictionary {
 public:
  /// Answers a new component with one reference, which is the caller's.
  using CreationFunction = ZYMBaseUnknown* (*)();

  /// Of several functions for one name the last is in use. className is copied.
  static void RegisterFunctionCreation(const char* className, CreationFunction create);
  /// Takes back what was registered with the same function; others stay, and the last of them is in use.
  static void UnregisterFunctionCreation(const char* className, CreationFunction create);
};

/// A new component of a registered class with one reference, the caller's; null for a name without creation function.
ZYM_EXPORT ZYMBaseUnknown* ZYMCreateByName(const char* className);

/// What happens in the dictionary, in the order in which it happens; for tests and diagnosis of loading.
enum class ZYMDictionaryEvent { MetaObjectAdded, MetaObjectRemoved, CreationAdded, CreationRemoved };
using ZYMDictionaryObserver = void (*)(ZYMDictionaryEvent event, const char* name);
/// null ends the observation. Answers the observer before.
ZYM_EXPORT ZYMDictionaryObserver ZYMObserveDictionary(ZYMDictionaryObserver observer);

/// The bodies that ZYM_DECLARE_INTERFACE declares.
#define ZYM_DEFINE_INTERFACE(Name, Base)                                                      \
  const ZYMGuid& Name::ClassId() {                                                            \
    static constexpr ZYMGuid Id = Name::InterfaceId;                                          \
    return Id;                                                                                \
  }                                                                                           \
  const char* Name::ClassName() { return Name::InterfaceName; }                               \
  ZYMMetaObject* Name::MetaObject() {                                                         \
    static_assert(std::is_base_of_v<Base, Name>, "the meta-object's parent is the C++ base"); \
    static const ZYMRegisteredMetaObject Meta(#Name, Base::MetaObject(), &Name::ClassId());   \
    return Meta.Get();                                                                        \
  }                                                                                           \
  ZYMMetaObject* Name::GetMetaObject() const { return Name::MetaObject(); }                   \
  const char* Name::IsA() const { return Name::MetaObject()->IsA(); }                         \
  bool Name::IsAKindOf(const char* className) const { return Name::MetaObject()->IsAKindOf(className); }

/// The bodies that ZYM_DECLARE_COMPONENT declares. Base: the C++ base class or, for the root of a family, the
/// interface.
#define ZYM_DEFINE_COMPONENT(Name, Base) ZYM_DEFINE_COMPONENT_AS(Name, #Name, Base)

/// The same under a name that differs from the class's own: the dictionary knows no namespaces.
#define ZYM_DEFINE_COMPONENT_AS(Name, registeredName, Base)                                   \
  ZYMMetaObject* Name::MetaObject() {                                                         \
    static_assert(std::is_base_of_v<Base, Name>, "the meta-object's parent is the C++ base"); \
    static const ZYMRegisteredMetaObject Meta(registeredName, Base::MetaObject(), nullptr);   \
    return Meta.Get();                                                                        \
  }                                                                                           \
  ZYMMetaObject* Name::GetMetaObject() const { return Name::MetaObject(); }                   \
  const char* Name::IsA() const { return Name::MetaObject()->IsA(); }                         \
  bool Name::IsAKindOf(const char* className) const { return Name::MetaObject()->IsAKindOf(className); }

/// A meta-object that is registered on first use and given up when the module that holds it is unloaded. Modules may
/// have classes of one name, such as two copies of one module: the first to come registers it, the last to go removes
/// it.
class ZYM_EXPORT ZYMRegisteredMetaObject {
 public:
  ZYMRegisteredMetaObject(const char* className, const ZYMMetaObject* parent, const ZYMGuid* interfaceId);
  ~ZYMRegisteredMetaObject();
  ZYMRegisteredMetaObject(const ZYMRegisteredMetaObject&) = delete;
  ZYMRegisteredMetaObject& operator=(const ZYMRegisteredMetaObject&) = delete;
  ZYMMetaObject* Get() const noexcept { return meta_; }

 private:
  const char* className_;
  ZYMMetaObject* meta_;
};
