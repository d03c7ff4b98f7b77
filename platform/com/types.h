// The fixed-width names and status codes of the automation ABI.
//
// The widths are those of the ABI, not of the compiler: LONG has 32 bits although a C++ long has 64 here. On a
// system that brings these names itself, this header gives way to that system's own.
#pragma once

#include <cstdint>

using BYTE = std::uint8_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using BOOL = std::int32_t;
using FLOAT = float;
using DOUBLE = double;
using HRESULT = std::int32_t;
using SCODE = std::int32_t;
using LCID = std::uint32_t;
using DISPID = std::int32_t;
using VARTYPE = std::uint16_t;
using VARIANT_BOOL = std::int16_t;
using DATE = double;
using OLECHAR = wchar_t;
using LPOLESTR = wchar_t*;
using LPCOLESTR = const wchar_t*;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

// Status codes. A negative value is a failure.
namespace platform {
consteval HRESULT MakeStatus(std::uint32_t code) { return static_cast<HRESULT>(code); }
} // namespace platform

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = platform::MakeStatus(0x80004001U);
inline constexpr HRESULT E_NOINTERFACE = platform::MakeStatus(0x80004002U);
inline constexpr HRESULT E_POINTER = platform::MakeStatus(0x80004003U);
inline constexpr HRESULT E_ABORT = platform::MakeStatus(0x80004004U);
inline constexpr HRESULT E_FAIL = platform::MakeStatus(0x80004005U);
inline constexpr HRESULT E_UNEXPECTED = platform::MakeStatus(0x8000FFFFU);
inline constexpr HRESULT E_ACCESSDENIED = platform::MakeStatus(0x80070005U);
inline constexpr HRESULT E_OUTOFMEMORY = platform::MakeStatus(0x8007000EU);
inline constexpr HRESULT E_INVALIDARG = platform::MakeStatus(0x80070057U);
inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = platform::MakeStatus(0x80020001U);
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = platform::MakeStatus(0x80020003U);
inline constexpr HRESULT DISP_E_PARAMNOTFOUND = platform::MakeStatus(0x80020004U);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = platform::MakeStatus(0x80020005U);
inline constexpr HRESULT DISP_E_UNKNOWNNAME = platform::MakeStatus(0x80020006U);
inline constexpr HRESULT DISP_E_NONAMEDARGS = platform::MakeStatus(0x80020007U);
inline constexpr HRESULT DISP_E_BADVARTYPE = platform::MakeStatus(0x80020008U);
inline constexpr HRESULT DISP_E_EXCEPTION = platform::MakeStatus(0x80020009U);
inline constexpr HRESULT DISP_E_OVERFLOW = platform::MakeStatus(0x8002000AU);
inline constexpr HRESULT DISP_E_BADINDEX = platform::MakeStatus(0x8002000BU);
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = platform::MakeStatus(0x8002000DU);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = platform::MakeStatus(0x8002000EU);
inline constexpr HRESULT DISP_E_PARAMNOTOPTIONAL = platform::MakeStatus(0x8002000FU);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = platform::MakeStatus(0x80040110U);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = platform::MakeStatus(0x80040111U);
inline constexpr HRESULT REGDB_E_READREGDB = platform::MakeStatus(0x80040150U);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = platform::MakeStatus(0x80040154U);
inline constexpr HRESULT CO_E_CLASSSTRING = platform::MakeStatus(0x800401F3U);
inline constexpr HRESULT CO_E_DLLNOTFOUND = platform::MakeStatus(0x800401F8U);
inline constexpr HRESULT CO_E_ERRORINDLL = platform::MakeStatus(0x800401F9U);

constexpr bool SUCCEEDED(HRESULT status) { return status >= 0; }
constexpr bool FAILED(HRESULT status) { return status < 0; }
