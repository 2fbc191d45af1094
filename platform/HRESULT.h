#pragma once

#include <cstdint>

/// The result of an operation: 0 for success, negative for failure.
using HRESULT = std::int32_t;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
/// A call that the host ended.
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004U);
/// Memory ran out.
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);

constexpr bool SUCCEEDED(HRESULT status) noexcept { return status >= 0; }
constexpr bool FAILED(HRESULT status) noexcept { return status < 0; }
