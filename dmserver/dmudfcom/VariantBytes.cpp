#include "VariantBytes.h"

#include "CarrierText.h"
#include "SealedBytes.h"

#include "dmserver/dmudfcom/interface/RequestText.h"

#include <cmath>
#include <utility>

namespace IDM_dmudfcom {

namespace {

namespace wire = sqstorage::carriers;

enum class EKind { None, Nothing, Whole, Real, Text, Bytes };

EKind KindOf(VARTYPE type) {
    switch (type) {
    case VT_EMPTY:
    case VT_NULL:
        return EKind::Nothing;
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_I8:
    case VT_UI8:
    case VT_BOOL:
    case VT_ERROR:
    case VT_CY:
        return EKind::Whole;
    case VT_R4:
    case VT_R8:
    case VT_DATE:
        return EKind::Real;
    case VT_BSTR:
        return EKind::Text;
    case VT_ARRAY | VT_UI1:
        return EKind::Bytes;
    default:
        return EKind::None;
    }
}

std::int64_t WholeOf(const VARIANT& value) {
    switch (value.vt) {
    case VT_I1:
        return value.cVal;
    case VT_UI1:
        return value.bVal;
    case VT_I2:
    case VT_BOOL:
        return value.iVal;
    case VT_UI2:
        return value.uiVal;
    case VT_UI4:
    case VT_UINT:
        return value.ulVal;
    case VT_I8:
    case VT_UI8:
    case VT_CY:
        return value.llVal;
    default:
        return value.lVal;
    }
}

template <class T>
bool Fit(std::int64_t value, T& target) {
    target = static_cast<T>(value);
    return std::in_range<T>(value);
}

bool SetWhole(std::int64_t whole, VARIANT& value) {
    switch (value.vt) {
    case VT_I1:
        return Fit(whole, value.cVal);
    case VT_UI1:
        return Fit(whole, value.bVal);
    case VT_I2:
    case VT_BOOL:
        return Fit(whole, value.iVal);
    case VT_UI2:
        return Fit(whole, value.uiVal);
    case VT_UI4:
    case VT_UINT:
        return Fit(whole, value.ulVal);
    case VT_I8:
    case VT_UI8:
    case VT_CY:
        return Fit(whole, value.llVal);
    default:
        return Fit(whole, value.lVal);
    }
}

bool SetReal(double real, VARIANT& value) {
    if (value.vt != VT_R4) {
        value.dblVal = real;
        return true;
    }
    value.fltVal = static_cast<float>(real);
    return std::isnan(real) || value.fltVal == real;
}

} // namespace

bool CanBeCarried(const VARIANT& value) { return KindOf(value.vt) != EKind::None; }

bool WriteVariant(const VARIANT& value, wire::Variant& target) {
    target.set_type(value.vt);
    switch (KindOf(value.vt)) {
    case EKind::None:
        return false;
    case EKind::Nothing:
        break;
    case EKind::Whole:
        target.set_integer(WholeOf(value));
        break;
    case EKind::Real:
        target.set_real(value.vt == VT_R4 ? value.fltVal : value.dblVal);
        break;
    case EKind::Text: {
        auto text = ToStored(platform::ViewOf(value.bstrVal));
        if (!text)
            return false;
        target.set_bytes(std::move(*text));
        break;
    }
    case EKind::Bytes:
        if (const auto bytes = TakeBytes(value))
            target.set_bytes(std::string(*bytes));
        break;
    }
    return true;
}

std::optional<platform::CVariant> ReadVariant(const wire::Variant& source) {
    if (!std::in_range<VARTYPE>(source.type()))
        return std::nullopt;
    const auto type = static_cast<VARTYPE>(source.type());
    const EKind kind = KindOf(type);
    const bool isText = kind == EKind::Text || kind == EKind::Bytes;
    if (kind == EKind::None || (kind != EKind::Whole && source.integer() != 0) ||
        (kind != EKind::Real && source.real() != 0) || (!isText && !source.bytes().empty()))
        return std::nullopt;
    platform::CVariant value;
    VARIANT& target = value.Get();
    bool isGood = true;
    if (kind == EKind::Bytes) {
        isGood = GiveBytes(source.bytes(), target) == S_OK;
    } else if (kind == EKind::Text) {
        target.bstrVal = IsUtf8(source.bytes()) ? MakeBstr(source.bytes()) : nullptr;
        isGood = target.bstrVal != nullptr;
        target.vt = type;
    } else {
        target.vt = type;
        isGood = kind == EKind::Whole ? SetWhole(source.integer(), target)
                                      : kind != EKind::Real || SetReal(source.real(), target);
    }
    return isGood ? std::optional(std::move(value)) : std::nullopt;
}

} // namespace IDM_dmudfcom
