#include "platform/ZYMFillDictionary.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

struct Dictionary {
  std::unordered_map<std::string, std::unique_ptr<ZYMMetaObject>> metaObjects;
  std::unordered_map<std::string, ZYMFillDictionary::CreationFunction> creations;
  ZYMDictionaryObserver observer = nullptr;

  void Tell(ZYMDictionaryEvent event, const char* name) const {
    if (observer != nullptr) {
      observer(event, name);
    }
  }
};

// Never destroyed: modules and static objects of the host forget their classes while the process ends, in whatever order.
Dictionary& TheDictionary() {
  static Dictionary& dictionary = *new Dictionary;
  return dictionary;
}

}  // namespace

ZYMMetaObject* fct_RetrieveMetaObject(std::string_view className, const ZYMMetaObject* parent,
                                      std::string_view baseName, std::string_view frameworkName,
                                      const ZYMGuid* interfaceId) {
  std::unique_ptr<ZYMMetaObject>& meta = TheDictionary().metaObjects[std::string(className)];
  if (meta == nullptr) {
    meta = std::make_unique<ZYMMetaObject>(className, parent, baseName, frameworkName, interfaceId);
    TheDictionary().Tell(ZYMDictionaryEvent::MetaObjectAdded, meta->IsA());
  }
  return meta.get();
}

ZYMMetaObject* ZYMFindMetaObject(std::string_view className) {
  const auto found = TheDictionary().metaObjects.find(std::string(className));
  return found == TheDictionary().metaObjects.end() ? nullptr : found->second.get();
}

void ZYMForgetMetaObject(std::string_view className) {
  const std::string name(className);
  if (TheDictionary().metaObjects.erase(name) != 0) {
    TheDictionary().Tell(ZYMDictionaryEvent::MetaObjectRemoved, name.c_str());
  }
}

void ZYMFillDictionary::RegisterFunctionCreation(const char* className, CreationFunction create) {
  TheDictionary().creations[className] = create;
  TheDictionary().Tell(ZYMDictionaryEvent::CreationAdded, className);
}

void ZYMFillDictionary::UnregisterFunctionCreation(const char* className) {
  if (TheDictionary().creations.erase(className) != 0) {
    TheDictionary().Tell(ZYMDictionaryEvent::CreationRemoved, className);
  }
}

ZYMBaseUnknown* ZYMCreateByName(const char* className) {
  const auto found = TheDictionary().creations.find(className);
  return found == TheDictionary().creations.end() ? nullptr : found->second();
}

ZYMDictionaryObserver ZYMObserveDictionary(ZYMDictionaryObserver observer) {
  return std::exchange(TheDictionary().observer, observer);
}

ZYMRegisteredMetaObject::ZYMRegisteredMetaObject(const char* className, const ZYMMetaObject* parent,
                                                 const ZYMGuid* interfaceId)
    : className_(className),
      meta_(fct_RetrieveMetaObject(className, parent, "ZYMNull", "QELXVARDOSClientImpl", interfaceId)) {}

ZYMRegisteredMetaObject::~ZYMRegisteredMetaObject() { ZYMForgetMetaObject(className_); }
