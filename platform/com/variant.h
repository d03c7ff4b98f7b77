// VARIANT: the tagged value of late-bound calls. 24 bytes, the type in the first two, the value at offset 8.
//
// VariantChangeType converts among numbers, BSTR and VARIANT_BOOL, follows by-reference values and never depends on
// a locale: a decimal separator is a point. It refuses text that is no number as a whole (blanks around it are no
// harm). Halves round to the even neighbour. A by-reference VARIANT may not lead to another one.
#pragma once

#include "platform/com/safearray.h"
#include "platform/com/unknown.h"

#include <string_view>

struct IDispatch;
struct VARIANT;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0xFFF,
};

struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        FLOAT fltVal;
        DOUBLE dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        BYTE* pbVal;
        SHORT* piVal;
        LONG* plVal;
        LONGLONG* pllVal;
        FLOAT* pfltVal;
        DOUBLE* pdblVal;
        VARIANT_BOOL* pboolVal;
        SCODE* pscode;
        DATE* pdate;
        BSTR* pbstrVal;
        IUnknown** ppunkVal;
        IDispatch** ppdispVal;
        SAFEARRAY** pparray;
        VARIANT* pvarVal;
        void* byref;
        signed char cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
        USHORT* puiVal;
        ULONG* pulVal;
        ULONGLONG* pullVal;
        // Two pointers wide in the ABI, so that the structure has 24 bytes.
        struct {
            void* pvRecord;
            void* pRecInfo;
        } brecVal;
    };
};

void VariantInit(VARIANT* value);
HRESULT VariantClear(VARIANT* value);
HRESULT VariantCopy(VARIANT* target, const VARIANT* source);
// As VariantCopy, and a by-reference value is copied by value.
HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source);
// `target` may be `source`. On failure the target keeps what it held.
HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type);

namespace platform {

// Owns one VARIANT.
class CVariant {
public:
    CVariant() { VariantInit(&m_Value); }
    explicit CVariant(LONG value) : CVariant() {
        m_Value.vt = VT_I4;
        m_Value.lVal = value;
    }
    explicit CVariant(ULONG value) : CVariant() {
        m_Value.vt = VT_UI4;
        m_Value.ulVal = value;
    }
    explicit CVariant(double value) : CVariant() {
        m_Value.vt = VT_R8;
        m_Value.dblVal = value;
    }
    explicit CVariant(bool value) : CVariant() {
        m_Value.vt = VT_BOOL;
        m_Value.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    explicit CVariant(LONGLONG value) : CVariant() {
        m_Value.vt = VT_I8;
        m_Value.llVal = value;
    }
    explicit CVariant(std::wstring_view text);
    // Up to the first zero; null gives a null BSTR.
    explicit CVariant(const wchar_t* text);
    // As for CBstr: a BSTR goes through FromBstr, a buffer is given as a view.
    explicit CVariant(wchar_t* text) = delete;
    // Counts the pointer, which may be null.
    explicit CVariant(IUnknown* object);
    explicit CVariant(IDispatch* object);
    // Throws CComError when there is no memory.
    CVariant(const CVariant& other);
    CVariant(CVariant&& other) noexcept : m_Value(other.m_Value) { VariantInit(&other.m_Value); }
    CVariant& operator=(CVariant other) noexcept {
        std::swap(m_Value, other.m_Value);
        return *this;
    }
    ~CVariant() { VariantClear(&m_Value); }

    // Copies; null and empty stay apart.
    static CVariant FromBstr(BSTR text);
    // Takes the array over.
    static CVariant FromArray(SAFEARRAY* array, VARTYPE elementType);

    const VARIANT& Get() const { return m_Value; }
    VARIANT& Get() { return m_Value; }
    VARIANT* Put() {
        VariantClear(&m_Value);
        return &m_Value;
    }
    VARTYPE Type() const { return m_Value.vt; }
    // The value as a number or text after conversion, or the default when it cannot be converted.
    LONG AsLong(LONG fallback = 0) const;
    double AsDouble(double fallback = 0) const;
    std::wstring AsText() const;
    VARIANT Detach() {
        VARIANT value = m_Value;
        VariantInit(&m_Value);
        return value;
    }

private:
    VARIANT m_Value;
};

} // namespace platform
