#include "platform/com/dispatch.h"

#include <algorithm>
#include <string>
#include <vector>

namespace platform {

namespace {

wchar_t Lower(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; }

// Names of the tables are plain ASCII, so no locale has a say.
bool SameName(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(left, right, {}, Lower, Lower);
}

const tagMethod* FindMethod(std::span<const tagMethod> table, DISPID id, WORD flags) {
    const auto wanted = [=](const tagMethod& method) { return method.Id == id && (method.Kind & flags); };
    // Identifiers mostly count from 1 in the order of the rows, so the row stands there or, behind pairs of get and
    // put, a little further on.
    const std::size_t likely = id > 0 ? std::min(static_cast<std::size_t>(id) - 1, table.size()) : 0;
    for (const auto part : {table.subspan(likely), table.first(likely)})
        if (const auto found = std::ranges::find_if(part, wanted); found != part.end())
            return &*found;
    return nullptr;
}

bool IsMissing(const VARIANT& value) { return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND; }

using Slots = std::array<VARIANT*, MaxParameters>;

void SetBad(UINT* badArgument, UINT index) {
    if (badArgument)
        *badArgument = index;
}

// Brings the given arguments into the order of the parameters.
HRESULT Place(const tagMethod& method, const DISPPARAMS& given, Slots& slots, UINT* badArgument) {
    const UINT count = method.ParameterCount();
    if (given.cNamedArgs > given.cArgs || given.cArgs > count)
        return DISP_E_BADPARAMCOUNT;
    if ((given.cArgs && !given.rgvarg) || (given.cNamedArgs && !given.rgdispidNamedArgs))
        return E_INVALIDARG;
    for (UINT i = given.cNamedArgs; i < given.cArgs; ++i)
        slots[given.cArgs - 1 - i] = &given.rgvarg[i];
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
        DISPID parameter = given.rgdispidNamedArgs[i];
        if (parameter == DISPID_PROPERTYPUT && (method.Kind & DISPATCH_PROPERTYPUT))
            parameter = static_cast<DISPID>(count) - 1;
        if (parameter < 0 || parameter >= static_cast<DISPID>(count) || slots[static_cast<UINT>(parameter)]) {
            SetBad(badArgument, i);
            return DISP_E_PARAMNOTFOUND;
        }
        slots[static_cast<UINT>(parameter)] = &given.rgvarg[i];
    }
    return S_OK;
}

// Leaves a null slot only where a value may be left away.
HRESULT CheckMissing(const tagMethod& method, const DISPPARAMS& given, Slots& slots, UINT* badArgument) {
    const UINT count = method.ParameterCount();
    for (UINT i = 0; i < count; ++i) {
        const bool said = slots[i] && IsMissing(*slots[i]);
        if (slots[i] && !said)
            continue;
        const bool isResult = i + 1 == count && method.HasResult();
        if (!isResult && !method.Names[i].IsOptional) {
            if (!said)
                return DISP_E_BADPARAMCOUNT;
            SetBad(badArgument, static_cast<UINT>(slots[i] - given.rgvarg));
            return DISP_E_PARAMNOTOPTIONAL;
        }
        slots[i] = nullptr;
    }
    return S_OK;
}

} // namespace

namespace detail {

VARIANT* Dereference(VARIANT* value) {
    return value->vt == (VT_BYREF | VT_VARIANT) && value->pvarVal ? value->pvarVal : value;
}

VARIANT* FollowReference(VARIANT* value) {
    VARIANT* inner = Dereference(value);
    return inner->vt & VT_BYREF ? inner : value;
}

HRESULT ObjectOf(VARIANT* value, REFIID iid, void** object) {
    value = Dereference(value);
    IUnknown* source = nullptr;
    switch (value->vt) {
    case VT_EMPTY:
    case VT_NULL:
        break;
    case VT_DISPATCH:
        source = value->pdispVal;
        break;
    case VT_UNKNOWN:
        source = value->punkVal;
        break;
    case VT_BYREF | VT_DISPATCH:
        source = value->ppdispVal ? *value->ppdispVal : nullptr;
        break;
    case VT_BYREF | VT_UNKNOWN:
        source = value->ppunkVal ? *value->ppunkVal : nullptr;
        break;
    default:
        return DISP_E_TYPEMISMATCH;
    }
    return source && FAILED(source->QueryInterface(iid, object)) ? DISP_E_TYPEMISMATCH : S_OK;
}

} // namespace detail

HRESULT FindNames(std::span<const tagMethod> table, REFIID iid, LPOLESTR* names, UINT count, DISPID* ids) {
    if (!names || !ids || count == 0)
        return E_INVALIDARG;
    std::fill_n(ids, count, DISPID_UNKNOWN);
    if (iid != NullGuid)
        return DISP_E_UNKNOWNINTERFACE;
    const auto named = [&](const tagMethod& method) { return names[0] && SameName(method.Name, names[0]); };
    const auto first = std::ranges::find_if(table, named);
    if (first == table.end())
        return DISP_E_UNKNOWNNAME;
    ids[0] = first->Id;
    HRESULT status = S_OK;
    for (UINT i = 1; i < count; ++i) {
        // The put of a property has one parameter more than the get; the last row of the name knows them all.
        for (const tagMethod& method : table)
            for (UINT p = 0; method.Id == ids[0] && p < method.ParameterCount(); ++p)
                if (names[i] && SameName(method.Names[p].Name, names[i]))
                    ids[i] = static_cast<DISPID>(p);
        if (ids[i] == DISPID_UNKNOWN)
            status = DISP_E_UNKNOWNNAME;
    }
    return status;
}

HRESULT InvokeMethod(std::span<const tagMethod> table, IDispatch* object, DISPID id, REFIID iid, WORD flags,
                     DISPPARAMS* parameters, VARIANT* result, UINT* badArgument) {
    if (result)
        VariantInit(result);
    if (iid != NullGuid)
        return DISP_E_UNKNOWNINTERFACE;
    if (!parameters)
        return E_INVALIDARG;
    const tagMethod* method = FindMethod(table, id, flags);
    if (!method)
        return DISP_E_MEMBERNOTFOUND;
    Slots slots{};
    HRESULT status = Place(*method, *parameters, slots, badArgument);
    if (SUCCEEDED(status))
        status = CheckMissing(*method, *parameters, slots, badArgument);
    if (FAILED(status))
        return status;
    tagCall call{std::span<VARIANT* const>(slots).first(method->ParameterCount()), result};
    status = method->Call(object, call);
    if (call.BadParameter != tagCall::NoParameter)
        SetBad(badArgument, static_cast<UINT>(slots[call.BadParameter] - parameters->rgvarg));
    return status;
}

HRESULT CallByName(IDispatch* object, const wchar_t* name, WORD kind, std::span<const VARIANT> arguments,
                   VARIANT* result) {
    if (!object || !name)
        return E_POINTER;
    std::wstring text(name);
    LPOLESTR names = text.data();
    DISPID id = DISPID_UNKNOWN;
    const HRESULT status = object->GetIDsOfNames(NullGuid, &names, 1, 0, &id);
    if (FAILED(status))
        return status;
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPID put = DISPID_PROPERTYPUT;
    const bool isPut = kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
    DISPPARAMS parameters{reversed.data(), isPut ? &put : nullptr, static_cast<UINT>(reversed.size()),
                          isPut ? 1U : 0U};
    return object->Invoke(id, NullGuid, 0, kind, &parameters, result, nullptr, nullptr);
}

} // namespace platform
