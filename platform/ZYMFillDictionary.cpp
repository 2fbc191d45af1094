#include "platform/ZYMFillDictionary.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace {

// Guarded by a lock: classes register on first use, and two threads may each use a class of their own for the first
// time.
struct Dictionary {
  std::mutex mutex;
  std::unordered_map<std::string, std::unique_ptr<ZYMMetaObject>> metaObjects;
  std::unordered_map<std::string, ZYMFillDictionary::CreationFunction> creations;
  std::atomic<ZYMDictionaryObserver> observer = nullptr;

  // Called without the lock, so that an observer may ask the dictionary.
  void Tell(ZYMDictionaryEvent event, const char* name) const {
    if (const ZYMDictionaryObserver told = observer; told != nullptr) {
      told(event, name);
    }
  }
};

// Never destroyed: modules and static objects of the host forget their classes while the process ends, in whatever
// order.
Dictionary& TheDictionary() {
  static Dictionary& dictionary = *new Dictionary;
  return dictionary;
}

}  // namespace

ZYMMetaObject* fct_RetrieveMetaObject(std::string_view className, const ZYMMetaObject* parent,
                                      std::string_view baseName, std::string_view frameworkName,
                                      const ZYMGuid* interfaceId) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  std::unique_ptr<ZYMMetaObject>& place = dictionary.metaObjects[std::string(className)];
  const bool added = place == nullptr;
  if (added) {
    place = std::make_unique<ZYMMetaObject>(className, parent, baseName, frameworkName, interfaceId);
  }
  ZYMMetaObject* const meta = place.get();
  lock.unlock();
  if (added) {
    dictionary.Tell(ZYMDictionaryEvent::MetaObjectAdded, meta->IsA());
  }
  return meta;
}

ZYMMetaObject* ZYMFindMetaObject(std::string_view className) {
  Dictionary& dictionary = TheDictionary();
  const std::lock_guard lock(dictionary.mutex);
  const auto found = dictionary.metaObjects.find(std::string(className));
  return found == dictionary.metaObjects.end() ? nullptr : found->second.get();
}

void ZYMForgetMetaObject(std::string_view className) {
  const std::string name(className);
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  const bool removed = dictionary.metaObjects.erase(name) != 0;
  lock.unlock();
  if (removed) {
    dictionary.Tell(ZYMDictionaryEvent::MetaObjectRemoved, name.c_str());
  }
}

void ZYMFillDictionary::RegisterFunctionCreation(const char* className, CreationFunction create) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  dictionary.creations[className] = create;
  lock.unlock();
  dictionary.Tell(ZYMDictionaryEvent::CreationAdded, className);
}

void ZYMFillDictionary::UnregisterFunctionCreation(const char* className) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  const bool removed = dictionary.creations.erase(className) != 0;
  lock.unlock();
  if (removed) {
    dictionary.Tell(ZYMDictionaryEvent::CreationRemoved, className);
  }
}

ZYMBaseUnknown* ZYMCreateByName(const char* className) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  const auto found = dictionary.creations.find(className);
  const ZYMFillDictionary::CreationFunction create = found == dictionary.creations.end() ? nullptr : found->second;
  lock.unlock();
  return create == nullptr ? nullptr : create();
}

ZYMDictionaryObserver ZYMObserveDictionary(ZYMDictionaryObserver observer) {
  return TheDictionary().observer.exchange(observer);
}

ZYMRegisteredMetaObject::ZYMRegisteredMetaObject(const char* className, const ZYMMetaObject* parent,
                                                 const ZYMGuid* interfaceId)
    : className_(className),
      meta_(fct_RetrieveMetaObject(className, parent, "ZYMNull", "QELXVARDOSClientImpl", interfaceId)) {}

ZYMRegisteredMetaObject::~ZYMRegisteredMetaObject() { ZYMForgetMetaObject(className_); }
