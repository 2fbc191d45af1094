#pragma once

#include <cstdint>

#include "platform/HRESULT.h"
#include "platform/ZYMExport.h"
#include "platform/ZYMGuid.h"
#include "platform/ZYMMetaObject.h"

/// The root of every component. A component is created with one reference, which belongs to its creator, and destroys
/// itself with the last Release. References are counted without locks: a component belongs to one thread at a time.
///
/// Components use single inheritance alone, so every interface of one component has one address, and two handles denote
/// the same component exactly when their addresses agree.
class ZYM_EXPORT ZYMBaseUnknown {
 public:
  ZYMBaseUnknown(const ZYMBaseUnknown&) = delete;
  ZYMBaseUnknown& operator=(const ZYMBaseUnknown&) = delete;

  /// On success object receives the interface with a reference added, the caller's. An interface that the component
  /// does not offer: E_FAIL, and object is null.
  virtual HRESULT QueryInterface(const ZYMGuid& interfaceId, void** object);
  /// Both answer the number of references after the call.
  virtual std::uint32_t AddRef();
  virtual std::uint32_t Release();
  /// Automation is not offered: the four answer E_NOTIMPL and touch nothing.
  virtual HRESULT GetTypeInfoCount(std::uint32_t* count);
  virtual HRESULT GetTypeInfo(std::uint32_t index, std::uint32_t locale, void** info);
  virtual HRESULT GetIDsOfNames(const ZYMGuid& interfaceId, const char* const* names, std::uint32_t count,
                                std::uint32_t locale, std::int32_t* ids);
  virtual HRESULT Invoke(std::int32_t member, const ZYMGuid& interfaceId, std::uint32_t locale, void* arguments);
  /// As above, by the interface's name, for example "QELXIVARDOSLRDObject".
  virtual HRESULT QueryInterface(const char* interfaceName, void** object);
  virtual ~ZYMBaseUnknown();
  virtual ZYMMetaObject* GetMetaObject() const;
  virtual const char* IsA() const;
  virtual bool IsAKindOf(const char* className) const;
  /// A component is its own implementation; there is no delegation, so SetImpl is without effect.
  virtual ZYMBaseUnknown* GetImpl() const;
  virtual void SetImpl(ZYMBaseUnknown* implementation);
  virtual bool IsNull() const;
  virtual bool IsEqual(const ZYMBaseUnknown* other) const;
  virtual HRESULT ChangeComponentState(std::int32_t from, std::int32_t to);

  static constexpr ZYMGuid InterfaceId{"{6F1D2C40-8E0B-4B57-9C3A-2D5E7A90B1F4}"};
  static constexpr const char* InterfaceName = "ZYMBaseUnknown";
  static const ZYMGuid& ClassId();
  static const char* ClassName();
  static ZYMMetaObject* MetaObject();

  /// How many components exist in this process: a test that ends where it began has released everything.
  static std::int64_t LivingComponents() noexcept;

 protected:
  ZYMBaseUnknown();

 private:
  std::uint32_t references_ = 1;
};

/// For the body of a published interface: its identity, its name and its meta-object. Identity and name are values in
/// the header too, so that a host narrows handles to an interface of a module that it only loads; what is a function
/// belongs to the library that holds the interface.
#define ZYM_DECLARE_INTERFACE(Name, guid)             \
 public:                                              \
  static constexpr ZYMGuid InterfaceId{guid};         \
  static constexpr const char* InterfaceName = #Name; \
  static const ZYMGuid& ClassId();                    \
  static const char* ClassName();                     \
  static ZYMMetaObject* MetaObject();                 \
  ZYMMetaObject* GetMetaObject() const override;      \
  const char* IsA() const override;                   \
  bool IsAKindOf(const char* className) const override

/// For the body of an implementation class: it answers the kind test from its own meta-object.
#define ZYM_DECLARE_COMPONENT(Name)              \
 public:                                         \
  static ZYMMetaObject* MetaObject();            \
  ZYMMetaObject* GetMetaObject() const override; \
  const char* IsA() const override;              \
  bool IsAKindOf(const char* className) const override
