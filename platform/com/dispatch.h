// Late binding: IDispatch, and one table for each interface that says all there is to say of its methods.
//
// A table row names a method once:
//
//     template <> struct platform::DispatchTable<IThing> {
//         static constexpr std::array Methods{
//             Method<&IThing::Select>(1, L"Select", L"Request", L"Table"),
//             PropertyGet<&IThing::get_Symbol>(2, L"Symbol", L"Mode", L"Value"),
//             PropertyPut<&IThing::put_Symbol>(2, L"Symbol", L"Mode", L"Value"),
//             Method<&IThing::Notify>(3, L"Notify", L"Mask", Optional(L"Value"))};
//     };
//
// Types, directions and conversions are deduced from the member function's type. GetIDsOfNames, Invoke, a remote
// proxy and a language binding all read the same row.
//
// What a parameter type means:
//     LONG ULONG SHORT double BSTR VARIANT   in, converted from any VARIANT that can be
//     I* with I an interface                 in; VT_DISPATCH or VT_UNKNOWN of an object that has I, or nothing
//     LONG* ... double*, VARIANT*            out or in/out; the argument must be by reference
//     BSTR*, I**, SAFEARRAY**                out; by reference, too. What the caller's place held is freed or
//     released
//                                            once the method has succeeded, and stays when it failed.
// By reference means the exact type, or a VARIANT. A null reference reaches the method, which answers for itself.
// The last parameter, when it is an out parameter, may also be left away; its value then goes to Invoke's result.
//
// An optional in parameter that is not given is 0, null or, for a VARIANT, VT_ERROR with DISP_E_PARAMNOTFOUND.
#pragma once

#include "platform/com/com_ptr.h"
#include "platform/com/variant.h"

#include <array>
#include <concepts>
#include <span>
#include <tuple>

struct ITypeInfo;

struct DISPPARAMS {
    VARIANT* rgvarg; // last argument first; the named ones stand before the others
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    void* pvReserved;
    HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

inline constexpr WORD DISPATCH_METHOD = 1;
inline constexpr WORD DISPATCH_PROPERTYGET = 2;
inline constexpr WORD DISPATCH_PROPERTYPUT = 4;
inline constexpr WORD DISPATCH_PROPERTYPUTREF = 8;
inline constexpr DISPID DISPID_VALUE = 0;
inline constexpr DISPID DISPID_UNKNOWN = -1;
inline constexpr DISPID DISPID_PROPERTYPUT = -3;

struct IDispatch : IUnknown {
    virtual HRESULT GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) = 0;
    virtual HRESULT GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) = 0;
    virtual HRESULT Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                           EXCEPINFO* exception, UINT* badArgument) = 0;

protected:
    ~IDispatch() = default;
};

namespace platform {

template <>
struct InterfaceTraits<IDispatch> {
    static constexpr GUID Uuid = MakeGuid("00020400-0000-0000-c000-000000000046");
    using Base = IUnknown;
};

// An interface of automation: derives from IUnknown, directly or not.
template <class T>
concept Interface = std::derived_from<T, IUnknown>;

// What a parameter is, as the table tells it to whoever has to carry it elsewhere.
struct tagParameterType {
    VARTYPE Type = VT_EMPTY; // with VT_ARRAY for an array, without VT_BYREF
    bool ByReference = false;
    const IID* Object = nullptr; // the interface of an object parameter
};

struct tagParameterName {
    const wchar_t* Name = nullptr;
    bool IsOptional = false;

    constexpr tagParameterName() = default;
    constexpr tagParameterName(const wchar_t* name) : Name(name) {}
    constexpr tagParameterName(const wchar_t* name, bool optional) : Name(name), IsOptional(optional) {}
};

// A parameter that a late-bound caller may leave away.
constexpr tagParameterName Optional(const wchar_t* name) { return {name, true}; }

// One argument after names, positions and defaults are resolved: null when it was not given.
struct tagCall {
    static constexpr UINT NoParameter = ~0U;

    std::span<VARIANT* const> Arguments;
    VARIANT* Result = nullptr; // empty before the call
    // Index of the parameter that could not be converted; NoParameter when the status is the method's own.
    UINT BadParameter = NoParameter;
};

inline constexpr std::size_t MaxParameters = 26;

// One row of a dispatch table.
struct tagMethod {
    DISPID Id = DISPID_UNKNOWN;
    const wchar_t* Name = nullptr;
    WORD Kind = DISPATCH_METHOD;
    std::span<const tagParameterType> Types;
    std::array<tagParameterName, MaxParameters> Names{};
    HRESULT (*Call)(IDispatch* object, tagCall& call) = nullptr;

    constexpr UINT ParameterCount() const { return static_cast<UINT>(Types.size()); }
    // The last parameter can be delivered as the result of the call.
    constexpr bool HasResult() const { return !Types.empty() && Types.back().ByReference; }
};

template <class I>
struct DispatchTable;

namespace detail {

// The value of a by-value parameter type in a VARIANT.
template <class T>
struct ValueTraits;

template <>
struct ValueTraits<LONG> {
    static constexpr VARTYPE Type = VT_I4;
    static constexpr auto Member = &VARIANT::lVal;
    static constexpr auto Reference = &VARIANT::plVal;
};
template <>
struct ValueTraits<ULONG> {
    static constexpr VARTYPE Type = VT_UI4;
    static constexpr auto Member = &VARIANT::ulVal;
    static constexpr auto Reference = &VARIANT::pulVal;
};
template <>
struct ValueTraits<SHORT> {
    static constexpr VARTYPE Type = VT_I2;
    static constexpr auto Member = &VARIANT::iVal;
    static constexpr auto Reference = &VARIANT::piVal;
};
template <>
struct ValueTraits<FLOAT> {
    static constexpr VARTYPE Type = VT_R4;
    static constexpr auto Member = &VARIANT::fltVal;
    static constexpr auto Reference = &VARIANT::pfltVal;
};
template <>
struct ValueTraits<DOUBLE> {
    static constexpr VARTYPE Type = VT_R8;
    static constexpr auto Member = &VARIANT::dblVal;
    static constexpr auto Reference = &VARIANT::pdblVal;
};
template <>
struct ValueTraits<BSTR> {
    static constexpr VARTYPE Type = VT_BSTR;
    static constexpr auto Member = &VARIANT::bstrVal;
    static constexpr auto Reference = &VARIANT::pbstrVal;
};

// Follows one VT_BYREF | VT_VARIANT to the value itself.
VARIANT* Dereference(VARIANT* value);
// Where an out argument points in the end: a VARIANT in between that is a reference itself is passed over.
VARIANT* FollowReference(VARIANT* value);
// Gives the object of a VARIANT as the interface asked for. Nothing (empty, null) gives a null pointer.
HRESULT ObjectOf(VARIANT* value, REFIID iid, void** object);

template <class T>
concept Value = requires {
    ValueTraits<T>::Type;
};
template <class T>
concept Number = Value<T> && !std::is_same_v<T, BSTR>;

// What is of the type already costs no conversion.
template <Number T>
HRESULT ReadNumber(const VARIANT* given, T& value) {
    if (given->vt == ValueTraits<T>::Type) {
        value = given->*ValueTraits<T>::Member;
        return S_OK;
    }
    VARIANT converted{};
    const HRESULT status = VariantChangeType(&converted, given, 0, ValueTraits<T>::Type);
    if (SUCCEEDED(status))
        value = converted.*ValueTraits<T>::Member;
    return status;
}

// One parameter of one call: Load takes the argument (null when it was not given), Pass hands it to the method, and
// Store, after a success, delivers what came out (`result` is null but for the last parameter).
template <class T>
class CArgument;

template <Number T>
class CArgument<T> {
public:
    static constexpr tagParameterType Describe() { return {ValueTraits<T>::Type, false, nullptr}; }
    HRESULT Load(VARIANT* given) { return given ? ReadNumber(given, m_Value) : S_OK; }
    T Pass() { return m_Value; }
    void Store(VARIANT*) {}

private:
    T m_Value{};
};

template <>
class CArgument<BSTR> {
public:
    static constexpr tagParameterType Describe() { return {VT_BSTR, false, nullptr}; }
    HRESULT Load(VARIANT* given) {
        if (!given || given->vt == VT_BSTR) {
            m_Value = given ? given->bstrVal : nullptr;
            return S_OK;
        }
        VARIANT converted{};
        const HRESULT status = VariantChangeType(&converted, given, 0, VT_BSTR);
        if (FAILED(status))
            return status;
        m_Converted.Attach(converted.bstrVal);
        m_Value = m_Converted.Get();
        return S_OK;
    }
    BSTR Pass() { return m_Value; }
    void Store(VARIANT*) {}

private:
    BSTR m_Value = nullptr; // the caller's, or the converted one
    CBstr m_Converted;
};

template <>
class CArgument<VARIANT> {
public:
    static constexpr tagParameterType Describe() { return {VT_VARIANT, false, nullptr}; }
    HRESULT Load(VARIANT* given) {
        if (given)
            m_Value = *Dereference(given);
        else {
            m_Value.vt = VT_ERROR;
            m_Value.scode = DISP_E_PARAMNOTFOUND;
        }
        return S_OK;
    }
    VARIANT Pass() { return m_Value; }
    void Store(VARIANT*) {}

private:
    VARIANT m_Value{}; // borrowed from the caller for the length of the call
};

template <Interface I>
class CArgument<I*> {
public:
    static constexpr tagParameterType Describe() { return {VT_DISPATCH, false, &UuidOf<I>}; }
    HRESULT Load(VARIANT* given) {
        // The very pointer that the caller gave: a sink is told from another one by it.
        if constexpr (std::is_same_v<I, IDispatch>)
            if (given && given->vt == VT_DISPATCH) {
                m_Object = given->pdispVal;
                return S_OK;
            }
        return given ? ObjectOf(given, UuidOf<I>, m_Object.PutVoid()) : S_OK;
    }
    I* Pass() { return m_Object.Get(); }
    void Store(VARIANT*) {}

private:
    CComPtr<I> m_Object;
};

// An out or in/out number: the caller's own place where it fits, a local one otherwise.
template <Number T>
class CArgument<T*> {
public:
    static constexpr tagParameterType Describe() { return {ValueTraits<T>::Type, true, nullptr}; }
    HRESULT Load(VARIANT* given) {
        m_Place = &m_Local;
        if (!given)
            return S_OK;
        given = FollowReference(given);
        if (given->vt == (VT_BYREF | ValueTraits<T>::Type)) {
            m_Place = given->*ValueTraits<T>::Reference;
            return S_OK;
        }
        if (given->vt != (VT_BYREF | VT_VARIANT))
            return DISP_E_TYPEMISMATCH;
        m_Variant = given->pvarVal;
        if (!m_Variant)
            m_Place = nullptr;
        return m_Variant && m_Variant->vt != VT_EMPTY ? ReadNumber(m_Variant, m_Local) : S_OK;
    }
    T* Pass() { return m_Place; }
    void Store(VARIANT* result) {
        VARIANT* target = m_Variant ? m_Variant : result;
        if (m_Place != &m_Local || !target)
            return;
        VariantClear(target);
        target->vt = ValueTraits<T>::Type;
        target->*ValueTraits<T>::Member = m_Local;
    }

private:
    T m_Local{};
    T* m_Place = nullptr;
    VARIANT* m_Variant = nullptr;
};

// An out value that has an owner. The method fills a local place, so that what the caller had is neither lost when
// the method fails nor leaked when it succeeds. `Traits` say where it stands in a VARIANT and how it is freed.
template <class T, class Traits>
class COwnedOut {
public:
    static constexpr tagParameterType Describe() { return {Traits::Type, true, Traits::Object}; }
    COwnedOut() = default;
    COwnedOut(const COwnedOut&) = delete;
    COwnedOut& operator=(const COwnedOut&) = delete;
    ~COwnedOut() { Traits::Free(m_Local); }

    HRESULT Load(VARIANT* given) {
        if (!given)
            return S_OK;
        given = FollowReference(given);
        if (given->vt != (VT_BYREF | VT_VARIANT) && !Traits::Fits(given->vt))
            return DISP_E_TYPEMISMATCH;
        m_Given = given;
        return S_OK;
    }
    T* Pass() { return m_Given && !m_Given->byref ? nullptr : &m_Local; }
    void Store(VARIANT* result) {
        if (m_Given && !m_Given->byref)
            return;
        const bool typed = m_Given && m_Given->vt != (VT_BYREF | VT_VARIANT);
        if (typed)
            Traits::Replace(*m_Given, std::exchange(m_Local, nullptr));
        else if (VARIANT* target = m_Given ? m_Given->pvarVal : result) {
            VariantClear(target);
            Traits::Give(*target, std::exchange(m_Local, nullptr));
        }
    }

private:
    T m_Local = nullptr;
    VARIANT* m_Given = nullptr;
};

struct TextOut {
    static constexpr VARTYPE Type = VT_BSTR;
    static constexpr const IID* Object = nullptr;
    static bool Fits(VARTYPE type) { return type == (VT_BYREF | VT_BSTR); }
    static void Free(BSTR text) { SysFreeString(text); }
    static void Replace(VARIANT& reference, BSTR text) { SysFreeString(std::exchange(*reference.pbstrVal, text)); }
    static void Give(VARIANT& target, BSTR text) {
        target.vt = VT_BSTR;
        target.bstrVal = text;
    }
};

// Arrays are of BSTR: the one kind that crosses an interface here as an array.
struct ArrayOut {
    static constexpr VARTYPE Type = VT_ARRAY | VT_BSTR;
    static constexpr const IID* Object = nullptr;
    static bool Fits(VARTYPE type) { return type == (VT_BYREF | Type); }
    static void Free(SAFEARRAY* array) { SafeArrayDestroy(array); }
    static void Replace(VARIANT& reference, SAFEARRAY* array) {
        SafeArrayDestroy(std::exchange(*reference.pparray, array));
    }
    static void Give(VARIANT& target, SAFEARRAY* array) {
        target.vt = array ? Type : static_cast<VARTYPE>(VT_EMPTY);
        target.parray = array;
    }
};

// An interface that is late-bound itself is handed out as it is; another one as VT_UNKNOWN.
template <Interface I>
struct ObjectOut {
    static constexpr bool IsLateBound = std::derived_from<I, IDispatch>;
    static constexpr VARTYPE Type = IsLateBound ? VT_DISPATCH : VT_UNKNOWN;
    static constexpr const IID* Object = &UuidOf<I>;
    static bool Fits(VARTYPE type) {
        return type == (VT_BYREF | VT_UNKNOWN) || (IsLateBound && type == (VT_BYREF | VT_DISPATCH));
    }
    static void Free(IUnknown* object) {
        if (object)
            object->Release();
    }
    static void Replace(VARIANT& reference, I* object) {
        if constexpr (IsLateBound)
            if (reference.vt == (VT_BYREF | VT_DISPATCH))
                return Free(std::exchange(*reference.ppdispVal, object));
        Free(std::exchange(*reference.ppunkVal, object));
    }
    static void Give(VARIANT& target, I* object) {
        target.vt = Type;
        if constexpr (IsLateBound)
            target.pdispVal = object;
        else
            target.punkVal = object;
    }
};

template <>
class CArgument<BSTR*> : public COwnedOut<BSTR, TextOut> {};
template <>
class CArgument<SAFEARRAY**> : public COwnedOut<SAFEARRAY*, ArrayOut> {};
template <Interface I>
class CArgument<I**> : public COwnedOut<I*, ObjectOut<I>> {};

template <>
class CArgument<VARIANT*> {
public:
    static constexpr tagParameterType Describe() { return {VT_VARIANT, true, nullptr}; }
    HRESULT Load(VARIANT* given) {
        if (given && given->vt != (VT_BYREF | VT_VARIANT))
            return DISP_E_TYPEMISMATCH;
        m_Place = given ? given->pvarVal : &m_Local.Get();
        return S_OK;
    }
    VARIANT* Pass() { return m_Place; }
    void Store(VARIANT* result) {
        if (m_Place == &m_Local.Get() && result)
            *result = m_Local.Detach();
    }

private:
    CVariant m_Local;
    VARIANT* m_Place = nullptr;
};

template <class Member>
struct MemberTraits;

template <class I, class... P>
struct MemberTraits<HRESULT (I::*)(P...)> {
    using Owner = I;
    static constexpr std::size_t Count = sizeof...(P);
    static_assert(Count <= MaxParameters);
    static constexpr std::array<tagParameterType, Count> Types{CArgument<P>::Describe()...};

    template <auto Member>
    static HRESULT Call(IDispatch* object, tagCall& call) {
        return CallWith<Member>(static_cast<I*>(object), call, std::index_sequence_for<P...>{});
    }

private:
    template <auto Member, std::size_t... Index>
    static HRESULT CallWith(I* object, [[maybe_unused]] tagCall& call, std::index_sequence<Index...>) {
        [[maybe_unused]] std::tuple<CArgument<P>...> arguments;
        HRESULT status = S_OK;
        [[maybe_unused]] const auto load = [&](auto& argument, UINT index) {
            status = argument.Load(call.Arguments[index]);
            if (FAILED(status))
                call.BadParameter = index;
            return SUCCEEDED(status);
        };
        if (!(load(std::get<Index>(arguments), static_cast<UINT>(Index)) && ... && true))
            return status;
        status = (object->*Member)(std::get<Index>(arguments).Pass()...);
        if (SUCCEEDED(status))
            (std::get<Index>(arguments).Store(Index + 1 == sizeof...(P) ? call.Result : nullptr), ...);
        return status;
    }
};

template <auto Member, class... Names>
consteval tagMethod MakeMethod(DISPID id, WORD kind, const wchar_t* name, Names... names) {
    using Traits = MemberTraits<decltype(Member)>;
    static_assert(sizeof...(Names) == Traits::Count, "name every parameter of the method");
    tagMethod method;
    method.Id = id;
    method.Name = name;
    method.Kind = kind;
    method.Types = Traits::Types;
    method.Call = &Traits::template Call<Member>;
    [[maybe_unused]] std::size_t index = 0;
    ((method.Names[index++] = tagParameterName(names)), ...);
    return method;
}

} // namespace detail

template <auto Member, class... Names>
consteval tagMethod Method(DISPID id, const wchar_t* name, Names... names) {
    return detail::MakeMethod<Member>(id, DISPATCH_METHOD, name, names...);
}
template <auto Member, class... Names>
consteval tagMethod PropertyGet(DISPID id, const wchar_t* name, Names... names) {
    return detail::MakeMethod<Member>(id, DISPATCH_PROPERTYGET, name, names...);
}
template <auto Member, class... Names>
consteval tagMethod PropertyPut(DISPID id, const wchar_t* name, Names... names) {
    return detail::MakeMethod<Member>(id, DISPATCH_PROPERTYPUT, name, names...);
}

// The two halves of IDispatch, for any table. Names compare without case. `ids[1..]` are parameter indices.
// `result` is a plain out parameter: what it holds before the call is not looked at, and it is empty after a
// failure. `badArgument` is the index in rgvarg of an argument that was refused; it is set only when one was.
HRESULT FindNames(std::span<const tagMethod> table, REFIID iid, LPOLESTR* names, UINT count, DISPID* ids);
HRESULT InvokeMethod(std::span<const tagMethod> table, IDispatch* object, DISPID id, REFIID iid, WORD flags,
                     DISPPARAMS* parameters, VARIANT* result, UINT* badArgument);

// The table as a plain list, for whoever does not know the interface at compile time.
template <class I>
constexpr std::span<const tagMethod> MethodsOf() {
    return DispatchTable<I>::Methods;
}

// IDispatch of interface I over its table. There is no type information: callers bind by name.
template <class I>
class CDispatchImpl : public I {
public:
    using Implemented = I;

    HRESULT GetTypeInfoCount(UINT* count) override {
        if (!count)
            return E_POINTER;
        *count = 0;
        return S_OK;
    }
    HRESULT GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        if (info)
            *info = nullptr;
        return E_NOTIMPL;
    }
    HRESULT GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        return FindNames(MethodsOf<I>(), iid, names, count, ids);
    }
    HRESULT Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result, EXCEPINFO*,
                   UINT* badArgument) override {
        return InvokeMethod(MethodsOf<I>(), this, id, iid, flags, parameters, result, badArgument);
    }
};

// A late-bound call by name: arguments in the order of the parameters. For scripts, tests and bindings.
HRESULT CallByName(IDispatch* object, const wchar_t* name, WORD kind, std::span<const VARIANT> arguments,
                   VARIANT* result);

} // namespace platform
