#include "platform/ZYMFillDictionary.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

// Guarded by a lock: classes register on first use, and two threads may each use a class of their own for the first
// time.
struct Dictionary {
  std::mutex mutex;
  struct Class {
    std::unique_ptr<ZYMMetaObject> meta;
    int owners = 0;
  };
  std::unordered_map<std::string, Class> classes;
  std::unordered_map<std::string, std::vector<ZYMFillDictionary::CreationFunction>> creations;
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

namespace {

/// owners: how many more of them the meta-object has.
ZYMMetaObject* Retrieve(std::string_view className, const ZYMMetaObject* parent, std::string_view baseName,
                        std::string_view frameworkName, const ZYMGuid* interfaceId, int owners) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  Dictionary::Class& place = dictionary.classes[std::string(className)];
  const bool added = place.meta == nullptr;
  if (added) {
    place.meta = std::make_unique<ZYMMetaObject>(className, parent, baseName, frameworkName, interfaceId);
  }
  place.owners += owners;
  ZYMMetaObject* const meta = place.meta.get();
  lock.unlock();
  if (added) {
    dictionary.Tell(ZYMDictionaryEvent::MetaObjectAdded, meta->IsA());
  }
  return meta;
}

void GiveUp(const std::string& className) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  const auto found = dictionary.classes.find(className);
  const bool removed = --found->second.owners == 0;
  if (removed) {
    dictionary.classes.erase(found);
  }
  lock.unlock();
  if (removed) {
    dictionary.Tell(ZYMDictionaryEvent::MetaObjectRemoved, className.c_str());
  }
}

}  // namespace

ZYMMetaObject* fct_RetrieveMetaObject(std::string_view className, const ZYMMetaObject* parent,
                                      std::string_view baseName, std::string_view frameworkName,
                                      const ZYMGuid* interfaceId) {
  return Retrieve(className, parent, baseName, frameworkName, interfaceId, 0);
}

ZYMMetaObject* ZYMFindMetaObject(std::string_view className) {
  Dictionary& dictionary = TheDictionary();
  const std::lock_guard lock(dictionary.mutex);
  const auto found = dictionary.classes.find(std::string(className));
  return found == dictionary.classes.end() ? nullptr : found->second.meta.get();
}

void ZYMFillDictionary::RegisterFunctionCreation(const char* className, CreationFunction create) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  dictionary.creations[className].push_back(create);
  lock.unlock();
  dictionary.Tell(ZYMDictionaryEvent::CreationAdded, className);
}

void ZYMFillDictionary::UnregisterFunctionCreation(const char* className, CreationFunction create) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  std::vector<CreationFunction>& functions = dictionary.creations[className];
  const auto last = std::find(functions.rbegin(), functions.rend(), create);
  const bool removed = last != functions.rend();
  if (removed) {
    functions.erase(std::next(last).base());
  }
  if (functions.empty()) {
    dictionary.creations.erase(className);
  }
  lock.unlock();
  if (removed) {
    dictionary.Tell(ZYMDictionaryEvent::CreationRemoved, className);
  }
}

ZYMBaseUnknown* ZYMCreateByName(const char* className) {
  Dictionary& dictionary = TheDictionary();
  std::unique_lock lock(dictionary.mutex);
  const auto found = dictionary.creations.find(className);
  const ZYMFillDictionary::CreationFunction create =
      found == dictionary.creations.end() ? nullptr : found->second.back();
  lock.unlock();
  return create == nullptr ? nullptr : create();
}

ZYMDictionaryObserver ZYMObserveDictionary(ZYMDictionaryObserver observer) {
  return TheDictionary().observer.exchange(observer);
}

ZYMRegisteredMetaObject::ZYMRegisteredMetaObject(const char* className, const ZYMMetaObject* parent,
                                                 const ZYMGuid* interfaceId)
    : className_(className), meta_(Retrieve(className, parent, "ZYMNull", "QELXVARDOSClientImpl", interfaceId, 1)) {}

ZYMRegisteredMetaObject::~ZYMRegisteredMetaObject() { GiveUp(className_); }
