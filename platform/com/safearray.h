// One-dimensional automation arrays: the 32-byte descriptor and the few functions this system needs.
//
// An array owns its elements: destroying an array of BSTR frees the strings, one of interface pointers releases
// them, one of VARIANT clears them.
#pragma once

#include "platform/com/bstr.h"

#include <span>

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    void* pvData;
    SAFEARRAYBOUND rgsabound[1];
};

// Null when there is no memory, the type cannot be an element, or an index would not fit a LONG.
SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count);
// Accepts null. DISP_E_ARRAYISLOCKED, and the array stays, while its data is accessed.
HRESULT SafeArrayDestroy(SAFEARRAY* array);
HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
// `index` points at one index. A BSTR is copied in and out, an interface pointer is counted. Put takes these two
// themselves, null too, as `element`; anything else is pointed at. Get points at a place that holds nothing yet.
HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* index, void* element);
HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* index, void* element);

namespace platform {

// An array of unsigned bytes that holds a copy of `bytes`; null when there is no memory.
SAFEARRAY* MakeByteArray(std::span<const std::byte> bytes);
// The bytes of an array of unsigned bytes; empty for any other array.
std::span<const std::byte> BytesOf(const SAFEARRAY* array);

} // namespace platform
