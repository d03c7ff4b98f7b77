#include "platform/com/variant.h"

#include "platform/com/dispatch.h"

#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <fmt/xchar.h>
#include <limits>
#include <utility>
#include <new>
#include <variant>

namespace {

using Number = std::variant<std::int64_t, std::uint64_t, double>;

VARIANT Borrowed(VARTYPE type) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    return value;
}

// A by-reference value as a plain one that still belongs to its owner. E_INVALIDARG for a null reference.
HRESULT Follow(const VARIANT& source, VARIANT& plain) {
    plain = source;
    if (!(source.vt & VT_BYREF))
        return S_OK;
    if (!source.byref)
        return E_INVALIDARG;
    if (source.vt == (VT_BYREF | VT_VARIANT)) {
        if (source.pvarVal->vt & VT_BYREF)
            return Follow(*source.pvarVal, plain);
        plain = *source.pvarVal;
        return S_OK;
    }
    plain = Borrowed(source.vt & ~VT_BYREF);
    if (source.vt & VT_ARRAY) {
        plain.parray = *source.pparray;
        return S_OK;
    }
    switch (plain.vt) {
    case VT_I1:
    case VT_UI1:
        plain.bVal = *source.pbVal;
        return S_OK;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        plain.iVal = *source.piVal;
        return S_OK;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
    case VT_R4:
        plain.lVal = *source.plVal;
        return S_OK;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
        plain.llVal = *source.pllVal;
        return S_OK;
    default:
        return DISP_E_BADVARTYPE;
    }
}

// A number written out in full, blanks around it allowed.
HRESULT ParseNumber(std::wstring_view text, Number& number) {
    const auto first = text.find_first_not_of(L" \t");
    if (first == std::wstring_view::npos)
        return DISP_E_TYPEMISMATCH;
    text = text.substr(first, text.find_last_not_of(L" \t") - first + 1);
    std::string narrow;
    for (const wchar_t c : text) {
        if (c <= 0 || c > 0x7e)
            return DISP_E_TYPEMISMATCH;
        narrow.push_back(static_cast<char>(c));
    }
    const char* begin = narrow.data() + (narrow.front() == '+' ? 1 : 0);
    const char* end = narrow.data() + narrow.size();
    std::int64_t whole = 0;
    if (const auto [rest, error] = std::from_chars(begin, end, whole); error == std::errc() && rest == end) {
        number = whole;
        return S_OK;
    }
    double real = 0;
    const auto [rest, error] = std::from_chars(begin, end, real);
    if (error == std::errc::result_out_of_range)
        return DISP_E_OVERFLOW;
    if (error != std::errc() || rest != end || !std::isfinite(real))
        return DISP_E_TYPEMISMATCH;
    number = real;
    return S_OK;
}

HRESULT NumberOf(const VARIANT& value, Number& number) {
    switch (value.vt) {
    case VT_EMPTY:
        number = std::int64_t{0};
        return S_OK;
    case VT_I1:
        number = std::int64_t{value.cVal};
        return S_OK;
    case VT_UI1:
        number = std::int64_t{value.bVal};
        return S_OK;
    case VT_I2:
    case VT_BOOL:
        number = std::int64_t{value.iVal};
        return S_OK;
    case VT_UI2:
        number = std::int64_t{value.uiVal};
        return S_OK;
    case VT_I4:
    case VT_INT:
        number = std::int64_t{value.lVal};
        return S_OK;
    case VT_UI4:
    case VT_UINT:
        number = std::int64_t{value.ulVal};
        return S_OK;
    case VT_I8:
        number = std::int64_t{value.llVal};
        return S_OK;
    case VT_UI8:
        number = std::uint64_t{value.ullVal};
        return S_OK;
    case VT_R4:
        number = double{value.fltVal};
        return S_OK;
    case VT_R8:
    case VT_DATE:
        number = value.dblVal;
        return S_OK;
    case VT_BSTR:
        return ParseNumber(platform::ViewOf(value.bstrVal), number);
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

// Halves round to the even neighbour, as automation does.
template <class T>
HRESULT Narrow(const Number& number, T& target) {
    const auto fits = [&](auto value) {
        if (!std::in_range<T>(value))
            return DISP_E_OVERFLOW;
        target = static_cast<T>(value);
        return S_OK;
    };
    if (const auto* whole = std::get_if<std::int64_t>(&number))
        return fits(*whole);
    if (const auto* natural = std::get_if<std::uint64_t>(&number))
        return fits(*natural);
    const double rounded = std::nearbyint(std::get<double>(number));
    // The upper limit itself, taken up to a power of two, is the first value that does not fit.
    const double limit = std::ldexp(1.0, std::numeric_limits<T>::digits);
    if (!(rounded >= static_cast<double>(std::numeric_limits<T>::min()) && rounded < limit))
        return DISP_E_OVERFLOW;
    target = static_cast<T>(rounded);
    return S_OK;
}

double RealOf(const Number& number) {
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

HRESULT ToNumber(const VARIANT& source, VARIANT& target) {
    Number number;
    const HRESULT status = NumberOf(source, number);
    if (FAILED(status))
        return status;
    switch (target.vt) {
    case VT_I1:
        return Narrow(number, target.cVal);
    case VT_UI1:
        return Narrow(number, target.bVal);
    case VT_I2:
        return Narrow(number, target.iVal);
    case VT_UI2:
        return Narrow(number, target.uiVal);
    case VT_I4:
    case VT_INT:
        return Narrow(number, target.lVal);
    case VT_UI4:
    case VT_UINT:
        return Narrow(number, target.ulVal);
    case VT_I8:
        return Narrow(number, target.llVal);
    case VT_UI8:
        return Narrow(number, target.ullVal);
    case VT_R4:
        target.fltVal = static_cast<float>(RealOf(number));
        return std::isfinite(target.fltVal) ? S_OK : DISP_E_OVERFLOW;
    case VT_R8:
    case VT_DATE:
        target.dblVal = RealOf(number);
        return S_OK;
    default:
        return DISP_E_BADVARTYPE;
    }
}

HRESULT ToBool(const VARIANT& source, VARIANT& target) {
    if (source.vt == VT_BSTR) {
        const std::wstring_view text = platform::ViewOf(source.bstrVal);
        if (text == L"True" || text == L"False") {
            target.boolVal = text == L"True" ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        }
    }
    Number number;
    const HRESULT status = NumberOf(source, number);
    if (SUCCEEDED(status))
        target.boolVal = RealOf(number) != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return status;
}

HRESULT ToText(const VARIANT& source, VARIANT& target) {
    std::wstring text;
    if (source.vt == VT_BOOL)
        text = source.boolVal ? L"True" : L"False";
    else if (source.vt != VT_EMPTY) {
        Number number;
        const HRESULT status = NumberOf(source, number);
        if (FAILED(status))
            return status;
        if (source.vt == VT_R4)
            text = fmt::format(L"{}", source.fltVal);
        else
            text = std::visit([](auto value) { return fmt::format(L"{}", value); }, number);
        if (text.ends_with(L".0"))
            text.resize(text.size() - 2);
    }
    target.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return target.bstrVal ? S_OK : E_OUTOFMEMORY;
}

HRESULT Convert(const VARIANT& source, VARIANT& target) {
    if (source.vt == VT_NULL || source.vt == VT_ERROR || (source.vt & VT_ARRAY))
        return DISP_E_TYPEMISMATCH;
    if (target.vt == VT_DISPATCH || target.vt == VT_UNKNOWN) {
        if (source.vt != VT_DISPATCH && source.vt != VT_UNKNOWN)
            return DISP_E_TYPEMISMATCH;
        const IID& iid = target.vt == VT_DISPATCH ? platform::UuidOf<IDispatch> : platform::UuidOf<IUnknown>;
        return source.punkVal ? source.punkVal->QueryInterface(iid, &target.byref) : S_OK;
    }
    if (target.vt == VT_BSTR)
        return ToText(source, target);
    if (target.vt == VT_BOOL)
        return ToBool(source, target);
    return ToNumber(source, target);
}

} // namespace

void VariantInit(VARIANT* value) { *value = VARIANT{}; }

HRESULT VariantClear(VARIANT* value) {
    if (!value)
        return E_INVALIDARG;
    if (!(value->vt & VT_BYREF)) {
        if (value->vt & VT_ARRAY) {
            const HRESULT status = SafeArrayDestroy(value->parray);
            if (FAILED(status))
                return status;
        } else if (value->vt == VT_BSTR)
            SysFreeString(value->bstrVal);
        else if ((value->vt == VT_DISPATCH || value->vt == VT_UNKNOWN) && value->punkVal)
            value->punkVal->Release();
    }
    VariantInit(value);
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (!target || !source)
        return E_INVALIDARG;
    if (target == source)
        return S_OK;
    VARIANT copy = *source;
    if (!(source->vt & VT_BYREF)) {
        if (source->vt & VT_ARRAY) {
            const HRESULT status = SafeArrayCopy(source->parray, &copy.parray);
            if (FAILED(status))
                return status;
        } else if (source->vt == VT_BSTR && source->bstrVal) {
            copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
            if (!copy.bstrVal)
                return E_OUTOFMEMORY;
        } else if ((source->vt == VT_DISPATCH || source->vt == VT_UNKNOWN) && source->punkVal)
            source->punkVal->AddRef();
    }
    const HRESULT status = VariantClear(target);
    if (FAILED(status)) {
        VariantClear(&copy);
        return status;
    }
    *target = copy;
    return S_OK;
}

HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source) {
    if (!target || !source)
        return E_INVALIDARG;
    VARIANT plain;
    const HRESULT status = Follow(*source, plain);
    return FAILED(status) ? status : VariantCopy(target, &plain);
}

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT, VARTYPE type) {
    if (!target || !source)
        return E_INVALIDARG;
    VARIANT plain;
    HRESULT status = Follow(*source, plain);
    if (FAILED(status))
        return status;
    if (plain.vt == type) {
        platform::CVariant copy;
        status = VariantCopy(&copy.Get(), &plain);
        if (SUCCEEDED(status))
            status = VariantClear(target);
        if (SUCCEEDED(status))
            *target = copy.Detach();
        return status;
    }
    VARIANT converted = Borrowed(type);
    status = Convert(plain, converted);
    if (SUCCEEDED(status))
        status = VariantClear(target);
    if (SUCCEEDED(status))
        *target = converted;
    return status;
}

namespace platform {

CVariant::CVariant(std::wstring_view text) : CVariant() {
    m_Value.bstrVal = CBstr(text).Detach();
    m_Value.vt = VT_BSTR;
}

CVariant::CVariant(IUnknown* object) : CVariant() {
    if (object)
        object->AddRef();
    m_Value.punkVal = object;
    m_Value.vt = VT_UNKNOWN;
}

CVariant CVariant::FromArray(SAFEARRAY* array, VARTYPE elementType) {
    CVariant value;
    value.m_Value.vt = static_cast<VARTYPE>(VT_ARRAY | elementType);
    value.m_Value.parray = array;
    return value;
}

LONG CVariant::AsLong(LONG fallback) const {
    CVariant number;
    return SUCCEEDED(VariantChangeType(&number.m_Value, &m_Value, 0, VT_I4)) ? number.m_Value.lVal : fallback;
}

double CVariant::AsDouble(double fallback) const {
    CVariant number;
    return SUCCEEDED(VariantChangeType(&number.m_Value, &m_Value, 0, VT_R8)) ? number.m_Value.dblVal : fallback;
}

std::wstring CVariant::AsText() const {
    CVariant text;
    if (FAILED(VariantChangeType(&text.m_Value, &m_Value, 0, VT_BSTR)))
        return {};
    return std::wstring(ViewOf(text.m_Value.bstrVal));
}

} // namespace platform
