#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "platform/ZYMBaseUnknown.h"
#include "platform/ZYMNullHandleError.h"

/// A handle to a component through one of its interfaces: the template behind every `..._var`. It holds one reference.
/// A null handle denotes no component; dereferencing it raises ZYMNullHandleError. Handles compare by component
/// identity, and null equals null.
template <typename Interface>
class ZYMHandle {
 public:
  ZYMHandle() noexcept = default;
  ZYMHandle(std::nullptr_t) noexcept {}
  /// Adds a reference.
  ZYMHandle(const ZYMHandle& other) noexcept : component_(other.component_) { Retain(); }
  /// Takes the reference over; other is null afterwards.
  ZYMHandle(ZYMHandle&& other) noexcept : component_(std::exchange(other.component_, nullptr)) {}
  /// Narrows: null when the component does not offer the interface. Adds a reference when it does.
  template <std::derived_from<ZYMBaseUnknown> Other>
  ZYMHandle(Other* component) : component_(Narrow(component)) {}
  template <typename Other>
  ZYMHandle(const ZYMHandle<Other>& other) : component_(Narrow(other.Get())) {}
  ~ZYMHandle() {
    if (component_ != nullptr) {
      component_->Release();
    }
  }

  ZYMHandle& operator=(const ZYMHandle& other) noexcept {
    ZYMHandle(other).Swap(*this);
    return *this;
  }
  ZYMHandle& operator=(ZYMHandle&& other) noexcept {
    ZYMHandle(std::move(other)).Swap(*this);
    return *this;
  }

  /// Takes over a reference that the caller owns, as a creation hands it out; adds none.
  static ZYMHandle Adopt(Interface* component) noexcept {
    ZYMHandle handle;
    handle.component_ = component;
    return handle;
  }

  Interface* operator->() const {
    if (component_ == nullptr) {
      ZYMRaiseNullHandle(Interface::InterfaceName);
    }
    return component_;
  }
  Interface& operator*() const { return *operator->(); }
  /// The component without a reference added; null for a null handle.
  Interface* Get() const noexcept { return component_; }
  bool IsNull() const noexcept { return component_ == nullptr; }
  explicit operator bool() const noexcept { return component_ != nullptr; }
  void Swap(ZYMHandle& other) noexcept { std::swap(component_, other.component_); }

  friend bool operator==(const ZYMHandle& a, const ZYMHandle& b) noexcept { return a.component_ == b.component_; }
  friend bool operator==(const ZYMHandle& a, std::nullptr_t) noexcept { return a.component_ == nullptr; }

 private:
  void Retain() noexcept {
    if (component_ != nullptr) {
      component_->AddRef();
    }
  }

  template <typename Other>
  static Interface* Narrow(Other* component) {
    if (component == nullptr) {
      return nullptr;
    }
    if constexpr (std::is_base_of_v<Interface, Other>) {
      component->AddRef();
      return component;
    } else {
      // A value of its own, so that narrowing needs no symbol of the library that holds the interface.
      constexpr ZYMGuid Id = Interface::InterfaceId;
      void* narrowed = nullptr;
      if (FAILED(component->QueryInterface(Id, &narrowed))) {
        return nullptr;
      }
      return static_cast<Interface*>(static_cast<ZYMBaseUnknown*>(narrowed));
    }
  }

  Interface* component_ = nullptr;
};

template <typename Interface>
struct std::hash<ZYMHandle<Interface>> {
  std::size_t operator()(const ZYMHandle<Interface>& handle) const noexcept {
    return std::hash<const Interface*>()(handle.Get());
  }
};

using ZYMBaseUnknown_var = ZYMHandle<ZYMBaseUnknown>;

/// Creates a component; its one reference goes into the handle.
template <typename Component, typename... Arguments>
ZYMHandle<Component> ZYMMakeComponent(Arguments&&... arguments) {
  return ZYMHandle<Component>::Adopt(new Component(std::forward<Arguments>(arguments)...));
}
