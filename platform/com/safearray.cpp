#include "platform/com/safearray.h"

#include "platform/com/variant.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

// Kept in fFeatures, as the ABI has it: what the elements are, and that the type stands before the descriptor.
constexpr USHORT HasVartype = 0x0080;
constexpr USHORT HasBstr = 0x0100;
constexpr USHORT HasUnknown = 0x0200;
constexpr USHORT HasDispatch = 0x0400;
constexpr USHORT HasVariant = 0x0800;

constexpr std::size_t HeaderSize = 16; // before the descriptor; its last four bytes hold the element type

ULONG ElementSize(VARTYPE type) {
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_R4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
        return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
        return 8;
    case VT_VARIANT:
        return sizeof(VARIANT);
    default:
        return 0;
    }
}

USHORT FeaturesOf(VARTYPE type) {
    switch (type) {
    case VT_BSTR:
        return HasVartype | HasBstr;
    case VT_UNKNOWN:
        return HasVartype | HasUnknown;
    case VT_DISPATCH:
        return HasVartype | HasDispatch;
    case VT_VARIANT:
        return HasVartype | HasVariant;
    default:
        return HasVartype;
    }
}

VARTYPE TypeOf(const SAFEARRAY* array) {
    VARTYPE type = VT_EMPTY;
    std::memcpy(&type, reinterpret_cast<const std::byte*>(array) - sizeof(ULONG), sizeof(type));
    return type;
}

void ClearElement(USHORT features, void* element) {
    if (features & HasBstr)
        SysFreeString(*static_cast<BSTR*>(element));
    else if (features & (HasUnknown | HasDispatch)) {
        if (IUnknown* object = *static_cast<IUnknown**>(element))
            object->Release();
    } else if (features & HasVariant)
        VariantClear(static_cast<VARIANT*>(element));
}

HRESULT CopyElement(USHORT features, ULONG size, void* target, const void* source) {
    if (features & HasBstr) {
        const BSTR text = *static_cast<const BSTR*>(source);
        const BSTR copy = text ? SysAllocStringLen(text, SysStringLen(text)) : nullptr;
        if (text && !copy)
            return E_OUTOFMEMORY;
        *static_cast<BSTR*>(target) = copy;
        return S_OK;
    }
    if (features & HasVariant) {
        VariantInit(static_cast<VARIANT*>(target));
        return VariantCopy(static_cast<VARIANT*>(target), static_cast<const VARIANT*>(source));
    }
    if (features & (HasUnknown | HasDispatch)) {
        IUnknown* object = *static_cast<IUnknown* const*>(source);
        if (object)
            object->AddRef();
        *static_cast<IUnknown**>(target) = object;
        return S_OK;
    }
    std::memcpy(target, source, size);
    return S_OK;
}

std::byte* ElementAt(SAFEARRAY* array, ULONG index) {
    return static_cast<std::byte*>(array->pvData) + std::size_t{index} * array->cbElements;
}

// The element of a client's index, or nothing when it lies outside.
std::byte* FindElement(SAFEARRAY* array, const LONG* index) {
    const std::int64_t offset = std::int64_t{*index} - array->rgsabound[0].lLbound;
    if (offset < 0 || offset >= array->rgsabound[0].cElements)
        return nullptr;
    return ElementAt(array, static_cast<ULONG>(offset));
}

} // namespace

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
    const ULONG size = ElementSize(type);
    if (!size || std::int64_t{lowerBound} + count > std::int64_t{std::numeric_limits<LONG>::max()} + 1)
        return nullptr;
    auto* block = static_cast<std::byte*>(std::calloc(1, HeaderSize + sizeof(SAFEARRAY)));
    void* data = std::calloc(count ? count : 1, size);
    if (!block || !data) {
        std::free(block);
        std::free(data);
        return nullptr;
    }
    const ULONG stored = type;
    std::memcpy(block + HeaderSize - sizeof(stored), &stored, sizeof(stored));
    auto* array = reinterpret_cast<SAFEARRAY*>(block + HeaderSize);
    array->cDims = 1;
    array->fFeatures = FeaturesOf(type);
    array->cbElements = size;
    array->pvData = data;
    array->rgsabound[0] = {count, lowerBound};
    return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (!array)
        return S_OK;
    if (array->cLocks)
        return DISP_E_ARRAYISLOCKED;
    if (array->fFeatures & (HasBstr | HasUnknown | HasDispatch | HasVariant))
        for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i)
            ClearElement(array->fFeatures, ElementAt(array, i));
    std::free(array->pvData);
    std::free(reinterpret_cast<std::byte*>(array) - HeaderSize);
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
    if (!copy)
        return E_POINTER;
    *copy = nullptr;
    if (!array)
        return S_OK;
    const SAFEARRAYBOUND& bound = array->rgsabound[0];
    SAFEARRAY* result = SafeArrayCreateVector(TypeOf(array), bound.lLbound, bound.cElements);
    if (!result)
        return E_OUTOFMEMORY;
    for (ULONG i = 0; i < bound.cElements; ++i) {
        const HRESULT status =
            CopyElement(array->fFeatures, array->cbElements, ElementAt(result, i), ElementAt(array, i));
        if (FAILED(status)) {
            SafeArrayDestroy(result);
            return status;
        }
    }
    *copy = result;
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (!array || !data)
        return E_INVALIDARG;
    ++array->cLocks;
    *data = array->pvData;
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    if (!array)
        return E_INVALIDARG;
    if (!array->cLocks)
        return E_UNEXPECTED;
    --array->cLocks;
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (!array || !bound)
        return E_INVALIDARG;
    if (dimension != 1)
        return DISP_E_BADINDEX;
    *bound = array->rgsabound[0].lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    const HRESULT status = SafeArrayGetLBound(array, dimension, bound);
    if (SUCCEEDED(status))
        *bound = static_cast<LONG>(std::int64_t{*bound} + array->rgsabound[0].cElements - 1);
    return status;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (!array || !type)
        return E_INVALIDARG;
    *type = TypeOf(array);
    return S_OK;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* index, void* element) {
    if (!array || !index)
        return E_INVALIDARG;
    const bool byValue = array->fFeatures & (HasBstr | HasUnknown | HasDispatch);
    if (!element && !byValue)
        return E_INVALIDARG;
    std::byte* place = FindElement(array, index);
    if (!place)
        return DISP_E_BADINDEX;
    const void* source = byValue ? static_cast<const void*>(&element) : element;
    alignas(VARIANT) std::byte fresh[sizeof(VARIANT)];
    const HRESULT status = CopyElement(array->fFeatures, array->cbElements, fresh, source);
    if (FAILED(status))
        return status;
    ClearElement(array->fFeatures, place);
    std::memcpy(place, fresh, array->cbElements);
    return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* index, void* element) {
    if (!array || !index || !element)
        return E_INVALIDARG;
    const std::byte* place = FindElement(array, index);
    return place ? CopyElement(array->fFeatures, array->cbElements, element, place) : DISP_E_BADINDEX;
}

namespace platform {

SAFEARRAY* MakeByteArray(std::span<const std::byte> bytes) {
    if (bytes.size() > std::numeric_limits<ULONG>::max())
        return nullptr;
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (array && !bytes.empty())
        std::memcpy(array->pvData, bytes.data(), bytes.size());
    return array;
}

std::span<const std::byte> BytesOf(const SAFEARRAY* array) {
    if (!array || TypeOf(array) != VT_UI1)
        return {};
    return {static_cast<const std::byte*>(array->pvData), array->rgsabound[0].cElements};
}

} // namespace platform
