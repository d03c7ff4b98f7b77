#include "platform/com/variant.h"

#include "platform/com/com_error.h"
#include "platform/com/dispatch.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <fmt/xchar.h>
#include <limits>
#include <new>
#include <string>
#include <utility>
#include <variant>

namespace {

using Number = std::variant<std::int64_t, std::uint64_t, double>;

VARIANT Borrowed(VARTYPE type) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    return value;
}

// The counted object of a plain value; null when it holds none.
IUnknown* ObjectIn(const VARIANT& value) {
    if (value.vt == VT_DISPATCH)
        return value.pdispVal;
    return value.vt == VT_UNKNOWN ? value.punkVal : nullptr;
}

// In bytes, of a value that a by-reference VARIANT points at; 0 for a type that there is no such thing of.
std::size_t SizeOf(VARTYPE type) {
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
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
    case VT_R4:
        return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
        return 8;
    default:
        return type & VT_ARRAY ? sizeof(SAFEARRAY*) : 0;
    }
}

// A by-reference value as a plain one that still belongs to its owner. E_INVALIDARG for a null reference.
HRESULT Follow(const VARIANT& source, VARIANT& plain) {
    const VARIANT* value = &source;
    if (value->vt == (VT_BYREF | VT_VARIANT)) {
        value = value->pvarVal;
        if (!value || value->vt == (VT_BYREF | VT_VARIANT))
            return E_INVALIDARG;
    }
    plain = *value;
    if (!(value->vt & VT_BYREF))
        return S_OK;
    if (!value->byref)
        return E_INVALIDARG;
    plain = Borrowed(value->vt & ~VT_BYREF);
    const std::size_t size = SizeOf(plain.vt);
    if (!size)
        return DISP_E_BADVARTYPE;
    std::memcpy(&plain.llVal, value->byref, size);
    return S_OK;
}

std::wstring_view Trim(std::wstring_view text) {
    const auto isBlank = [](wchar_t c) { return c == L' ' || c == L'\t'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// The whole text as a T, or nothing.
template <class T>
bool ParseWhole(std::string_view text, T& value) {
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && rest == text.data() + text.size();
}

// Whether a number that no double can hold is too near to zero, not too far from it.
bool IsTiny(std::string_view text) {
    const std::size_t end = std::min(text.find_first_of("eE"), text.size());
    const std::string_view mantissa = text.substr(0, end);
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<std::int64_t>(mantissa.find_first_of("123456789"));
    std::string_view power = text.substr(std::min(end + 1, text.size()));
    if (power.starts_with('+'))
        power.remove_prefix(1);
    std::int64_t exponent = 0;
    if (!power.empty() && !ParseWhole(power, exponent))
        return power.starts_with('-');
    return point - first + exponent <= 0;
}

// A number too large for a double overflows, one too small is zero.
HRESULT ParseReal(std::string_view text, double& value) {
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || rest != text.data() + text.size())
        return DISP_E_TYPEMISMATCH;
    if (error == std::errc())
        return std::isfinite(value) ? S_OK : DISP_E_TYPEMISMATCH;
    if (!IsTiny(text))
        return DISP_E_OVERFLOW;
    value = 0;
    return S_OK;
}

// A number written out in full, blanks around it allowed.
HRESULT ParseNumber(std::wstring_view wide, Number& number) {
    wide = Trim(wide);
    if (std::ranges::any_of(wide, [](wchar_t c) { return c <= 0 || c > 0x7e; }))
        return DISP_E_TYPEMISMATCH;
    const std::string text(wide.begin(), wide.end());
    std::string_view digits = text;
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1);
    if (std::int64_t whole = 0; ParseWhole(digits, whole)) {
        number = whole;
        return S_OK;
    }
    if (std::uint64_t natural = 0; ParseWhole(digits, natural)) {
        number = natural;
        return S_OK;
    }
    double real = 0;
    const HRESULT status = ParseReal(digits, real);
    if (SUCCEEDED(status))
        number = real;
    return status;
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

// `word` is in small letters.
bool SameWord(std::wstring_view text, std::wstring_view word) {
    return std::ranges::equal(text, word, {},
                              [](wchar_t c) { return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c; });
}

HRESULT ToBool(const VARIANT& source, VARIANT& target) {
    if (source.vt == VT_BSTR) {
        const std::wstring_view text = Trim(platform::ViewOf(source.bstrVal));
        const bool isTrue = SameWord(text, L"true");
        if (isTrue || SameWord(text, L"false")) {
            target.boolVal = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        }
    }
    Number number;
    const HRESULT status = NumberOf(source, number);
    if (SUCCEEDED(status))
        target.boolVal = RealOf(number) != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return status;
}

// The shortest text that reads as the same number. No number is longer than the buffer.
HRESULT WriteNumber(const VARIANT& source, std::array<wchar_t, 32>& buffer, std::wstring_view& text) {
    Number number;
    const HRESULT status = NumberOf(source, number);
    if (FAILED(status))
        return status;
    const auto write = [&](auto value) {
        return fmt::format_to_n(buffer.data(), buffer.size(), L"{}", value).size;
    };
    text = {buffer.data(), source.vt == VT_R4 ? write(source.fltVal) : std::visit(write, number)};
    return S_OK;
}

HRESULT ToText(const VARIANT& source, VARIANT& target) {
    std::array<wchar_t, 32> buffer;
    std::wstring_view text;
    if (source.vt == VT_BOOL)
        text = source.boolVal ? L"True" : L"False";
    else if (source.vt != VT_EMPTY)
        if (const HRESULT status = WriteNumber(source, buffer, text); FAILED(status))
            return status;
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
        IUnknown* object = ObjectIn(source);
        return object && FAILED(object->QueryInterface(iid, &target.byref)) ? DISP_E_TYPEMISMATCH : S_OK;
    }
    if (target.vt == VT_BSTR)
        return ToText(source, target);
    if (target.vt == VT_BOOL)
        return ToBool(source, target);
    return ToNumber(source, target);
}

// `target` is empty, and stays so on failure.
HRESULT ConvertInto(const VARIANT& source, VARTYPE type, VARIANT& target) {
    VARIANT fresh = Borrowed(type);
    HRESULT status = E_OUTOFMEMORY;
    try {
        status = Convert(source, fresh);
    } catch (const std::bad_alloc&) {
    }
    if (SUCCEEDED(status))
        target = fresh;
    return status;
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
        else if (IUnknown* object = ObjectIn(*value))
            object->Release();
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
        } else if (IUnknown* object = ObjectIn(*source))
            object->AddRef();
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
    platform::CVariant converted;
    if (plain.vt == type)
        status = VariantCopy(&converted.Get(), &plain);
    else
        status = ConvertInto(plain, type, converted.Get());
    if (SUCCEEDED(status))
        status = VariantClear(target);
    if (SUCCEEDED(status))
        *target = converted.Detach();
    return status;
}

namespace platform {

CVariant::CVariant(std::wstring_view text) : CVariant() {
    m_Value.bstrVal = CBstr(text).Detach();
    m_Value.vt = VT_BSTR;
}

CVariant::CVariant(const wchar_t* text) : CVariant() {
    m_Value.bstrVal = CBstr(text).Detach();
    m_Value.vt = VT_BSTR;
}

CVariant::CVariant(IUnknown* object) : CVariant() {
    if (object)
        object->AddRef();
    m_Value.punkVal = object;
    m_Value.vt = VT_UNKNOWN;
}

CVariant::CVariant(IDispatch* object) : CVariant() {
    if (object)
        object->AddRef();
    m_Value.pdispVal = object;
    m_Value.vt = VT_DISPATCH;
}

CVariant::CVariant(const CVariant& other) : CVariant() { ThrowIfFailed(VariantCopy(&m_Value, &other.m_Value)); }

CVariant CVariant::FromBstr(BSTR text) {
    CVariant value;
    value.m_Value.bstrVal = CBstr::Copy(text).Detach();
    value.m_Value.vt = VT_BSTR;
    return value;
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
