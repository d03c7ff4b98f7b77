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
//     T* of those values, I**, SAFEARRAY**   out or in/out; the argument must be by reference
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
    std::span<VARIANT* const> Arguments;
    VARIANT* Result = nullptr;
    UINT BadParameter = 0; // index of the parameter that could not be converted
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

// Follows VT_BYREF | VT_VARIANT to the value itself.
VARIANT* Dereference(VARIANT* value);
// Gives the object of a VARIANT as the interface asked for. Nothing (empty, null) gives a null pointer.
HRESULT ObjectOf(VARIANT* value, REFIID iid, void** object);
// Puts the held reference into an out VARIANT as VT_DISPATCH, or VT_UNKNOWN where there is no such interface.
void GiveObject(VARIANT* target, IUnknown* object);

template <class T>
class CArgument;

// A plain value. What is already of the type costs no conversion; a converted text is freed by the holder.
template <class T>
    requires requires { ValueTraits<T>::Type; }
class CArgument<T> {
public:
    static constexpr tagParameterType Describe() { return {ValueTraits<T>::Type, false, nullptr}; }
    HRESULT Load(VARIANT* given) {
        if (!given)
            return S_OK;
        if (given->vt == ValueTraits<T>::Type) {
            m_Value = given->*ValueTraits<T>::Member;
            return S_OK;
        }
        const HRESULT status = VariantChangeType(&m_Converted.Get(), given, 0, ValueTraits<T>::Type);
        if (SUCCEEDED(status))
            m_Value = m_Converted.Get().*ValueTraits<T>::Member;
        return status;
    }
    T Pass() { return m_Value; }
    void Store(VARIANT*) {}

private:
    T m_Value{};
    CVariant m_Converted;
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
        return given ? ObjectOf(given, UuidOf<I>, m_Object.PutVoid()) : S_OK;
    }
    I* Pass() { return m_Object.Get(); }
    void Store(VARIANT*) {}

private:
    CComPtr<I> m_Object;
};

// An out or in/out value: the caller's own place where it fits, a local one otherwise.
template <class T>
    requires requires { ValueTraits<T>::Type; }
class CArgument<T*> {
public:
    static constexpr tagParameterType Describe() { return {ValueTraits<T>::Type, true, nullptr}; }
    ~CArgument() {
        if constexpr (std::is_same_v<T, BSTR>)
            SysFreeString(m_Local);
    }
    HRESULT Load(VARIANT* given) {
        if (!given) {
            m_Place = &m_Local;
            return S_OK;
        }
        if (given->vt == (VT_BYREF | ValueTraits<T>::Type)) {
            m_Place = given->*ValueTraits<T>::Reference;
            return S_OK;
        }
        if (given->vt != (VT_BYREF | VT_VARIANT) || !given->pvarVal)
            return DISP_E_TYPEMISMATCH;
        m_Variant = given->pvarVal;
        m_Place = &m_Local;
        if (m_Variant->vt == VT_EMPTY)
            return S_OK;
        CVariant converted;
        const HRESULT status = VariantChangeType(&converted.Get(), m_Variant, 0, ValueTraits<T>::Type);
        if (SUCCEEDED(status))
            m_Local = std::exchange(converted.Get().*ValueTraits<T>::Member, T{});
        return status;
    }
    T* Pass() { return m_Place; }
    void Store(VARIANT* result) {
        VARIANT* target = m_Variant ? m_Variant : result;
        if (m_Place != &m_Local || !target)
            return;
        VariantClear(target);
        target->vt = ValueTraits<T>::Type;
        target->*ValueTraits<T>::Member = std::exchange(m_Local, T{});
    }

private:
    T m_Local{};
    T* m_Place = nullptr;
    VARIANT* m_Variant = nullptr;
};

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
        if (m_Place != &m_Local.Get() || !result)
            return;
        VariantClear(result);
        *result = m_Local.Detach();
    }

private:
    CVariant m_Local;
    VARIANT* m_Place = nullptr;
};

template <Interface I>
class CArgument<I**> {
public:
    static constexpr tagParameterType Describe() { return {VT_DISPATCH, true, &UuidOf<I>}; }
    HRESULT Load(VARIANT* given) {
        if (!given)
            return S_OK;
        const bool object = given->vt == (VT_BYREF | VT_DISPATCH) || given->vt == (VT_BYREF | VT_UNKNOWN);
        if (!object && given->vt != (VT_BYREF | VT_VARIANT))
            return DISP_E_TYPEMISMATCH;
        m_Given = given;
        return S_OK;
    }
    I** Pass() { return m_Object.Put(); }
    void Store(VARIANT* result) {
        if (!m_Given || m_Given->vt == (VT_BYREF | VT_VARIANT)) {
            if (VARIANT* target = m_Given ? m_Given->pvarVal : result)
                GiveObject(target, m_Object.Get());
            return;
        }
        if (!m_Given->byref)
            return;
        CVariant value;
        GiveObject(&value.Get(), m_Object.Get());
        if (IUnknown* old = *m_Given->ppunkVal)
            old->Release();
        *m_Given->ppunkVal = std::exchange(value.Get().punkVal, nullptr);
    }

private:
    CComPtr<I> m_Object;
    VARIANT* m_Given = nullptr;
};

// Arrays are of BSTR: the one kind that crosses an interface here as an array.
template <>
class CArgument<SAFEARRAY**> {
public:
    static constexpr VARTYPE Type = VT_ARRAY | VT_BSTR;
    static constexpr tagParameterType Describe() { return {Type, true, nullptr}; }
    ~CArgument() { SafeArrayDestroy(m_Local); }
    HRESULT Load(VARIANT* given) {
        m_Place = &m_Local;
        if (!given)
            return S_OK;
        if (given->vt == (VT_BYREF | Type))
            m_Place = given->pparray;
        else if (given->vt == (VT_BYREF | VT_VARIANT) && given->pvarVal)
            m_Variant = given->pvarVal;
        else
            return DISP_E_TYPEMISMATCH;
        return S_OK;
    }
    SAFEARRAY** Pass() { return m_Place; }
    void Store(VARIANT* result) {
        VARIANT* target = m_Variant ? m_Variant : result;
        if (m_Place != &m_Local || !target)
            return;
        VariantClear(target);
        target->vt = m_Local ? Type : static_cast<VARTYPE>(VT_EMPTY);
        target->parray = std::exchange(m_Local, nullptr);
    }

private:
    SAFEARRAY* m_Local = nullptr;
    SAFEARRAY** m_Place = nullptr;
    VARIANT* m_Variant = nullptr;
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
            call.BadParameter = index;
            status = argument.Load(call.Arguments[index]);
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
