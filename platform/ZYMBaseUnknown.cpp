#include "platform/ZYMBaseUnknown.h"

#include <atomic>
#include <type_traits>

#include "platform/ZYMFillDictionary.h"

namespace {

std::atomic<std::int64_t> living{0};

}  // namespace

ZYMBaseUnknown::ZYMBaseUnknown() { living.fetch_add(1, std::memory_order_relaxed); }

ZYMBaseUnknown::~ZYMBaseUnknown() { living.fetch_sub(1, std::memory_order_relaxed); }

std::int64_t ZYMBaseUnknown::LivingComponents() noexcept { return living.load(std::memory_order_relaxed); }

HRESULT ZYMBaseUnknown::QueryInterface(const ZYMGuid& interfaceId, void** object) {
  const bool offered = GetMetaObject()->Offers(interfaceId);
  *object = offered ? this : nullptr;
  if (!offered) {
    return E_FAIL;
  }
  AddRef();
  return S_OK;
}

HRESULT ZYMBaseUnknown::QueryInterface(const char* interfaceName, void** object) {
  const bool offered = interfaceName != nullptr && GetMetaObject()->Offers(std::string_view(interfaceName));
  *object = offered ? this : nullptr;
  if (!offered) {
    return E_FAIL;
  }
  AddRef();
  return S_OK;
}

std::uint32_t ZYMBaseUnknown::AddRef() { return ++references_; }

std::uint32_t ZYMBaseUnknown::Release() {
  const std::uint32_t left = --references_;
  if (left == 0) {
    delete this;
  }
  return left;
}

HRESULT ZYMBaseUnknown::GetTypeInfoCount(std::uint32_t* /*count*/) { return E_NOTIMPL; }

HRESULT ZYMBaseUnknown::GetTypeInfo(std::uint32_t /*index*/, std::uint32_t /*locale*/, void** /*info*/) {
  return E_NOTIMPL;
}

HRESULT ZYMBaseUnknown::GetIDsOfNames(const ZYMGuid& /*interfaceId*/, const char* const* /*names*/,
                                      std::uint32_t /*count*/, std::uint32_t /*locale*/, std::int32_t* /*ids*/) {
  return E_NOTIMPL;
}

HRESULT ZYMBaseUnknown::Invoke(std::int32_t /*member*/, const ZYMGuid& /*interfaceId*/, std::uint32_t /*locale*/,
                               void* /*arguments*/) {
  return E_NOTIMPL;
}

ZYMMetaObject* ZYMBaseUnknown::GetMetaObject() const { return ZYMBaseUnknown::MetaObject(); }

const char* ZYMBaseUnknown::IsA() const { return ZYMBaseUnknown::MetaObject()->IsA(); }

bool ZYMBaseUnknown::IsAKindOf(const char* className) const {
  return ZYMBaseUnknown::MetaObject()->IsAKindOf(className);
}

ZYMBaseUnknown* ZYMBaseUnknown::GetImpl() const { return const_cast<ZYMBaseUnknown*>(this); }

void ZYMBaseUnknown::SetImpl(ZYMBaseUnknown* /*implementation*/) {}

bool ZYMBaseUnknown::IsNull() const { return false; }

bool ZYMBaseUnknown::IsEqual(const ZYMBaseUnknown* other) const { return this == other; }

HRESULT ZYMBaseUnknown::ChangeComponentState(std::int32_t /*from*/, std::int32_t /*to*/) { return S_OK; }

const ZYMGuid& ZYMBaseUnknown::ClassId() {
  static constexpr ZYMGuid Id = InterfaceId;
  return Id;
}

const char* ZYMBaseUnknown::ClassName() { return InterfaceName; }

ZYMMetaObject* ZYMBaseUnknown::MetaObject() {
  static const ZYMRegisteredMetaObject Meta(InterfaceName, nullptr, &ZYMBaseUnknown::ClassId());
  return Meta.Get();
}
