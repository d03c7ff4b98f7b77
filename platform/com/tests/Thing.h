// The interfaces and objects that the tests of this folder call: one method for each kind of parameter.
#pragma once

#include "platform/com/dispatch.h"
#include "platform/com/object.h"

#include <string>
#include <vector>

namespace platform::tests {

struct IPart : IDispatch {
    virtual HRESULT get_Number(LONG* Value) = 0;

protected:
    ~IPart() = default;
};

// Not late-bound.
struct IPlain : IUnknown {
    virtual HRESULT Touch() = 0;

protected:
    ~IPlain() = default;
};

struct IThing : IDispatch {
    virtual HRESULT Add(LONG First, LONG Second, LONG* Sum) = 0;
    virtual HRESULT get_Text(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_Text(LONG Mode, BSTR Value) = 0;
    virtual HRESULT Notify(ULONG Mask, LONG Count, BSTR Text, VARIANT Value) = 0;
    virtual HRESULT Swap(LONG* First, LONG* Second) = 0;
    virtual HRESULT Echo(BSTR Text, BSTR* Copy) = 0;
    virtual HRESULT Register(IDispatch* Sink) = 0;
    virtual HRESULT AttachPart(IPart* Part) = 0;
    virtual HRESULT GetPart(IPart** Part) = 0;
    virtual HRESULT GetPlain(IPlain** Plain) = 0;
    virtual HRESULT List(SAFEARRAY** Names) = 0;
    virtual HRESULT Answer(LONG Status, LONG* Value) = 0;
    virtual HRESULT Carry(VARIANT* Data) = 0;
    virtual HRESULT Multiply(SHORT First, FLOAT Second, DOUBLE Third, DOUBLE* Product) = 0;
    virtual HRESULT Nothing() = 0;
    virtual HRESULT SplitName(BSTR Whole, BSTR* Head, BSTR* Tail) = 0;

protected:
    ~IThing() = default;
};

} // namespace platform::tests

template <>
struct platform::InterfaceTraits<platform::tests::IPart> {
    static constexpr GUID Uuid = MakeGuid("5b4e2c10-1111-4c6a-9d0e-7a3a51f0aa01");
    using Base = IDispatch;
};
template <>
struct platform::InterfaceTraits<platform::tests::IPlain> {
    static constexpr GUID Uuid = MakeGuid("5b4e2c10-1111-4c6a-9d0e-7a3a51f0aa02");
    using Base = IUnknown;
};
template <>
struct platform::InterfaceTraits<platform::tests::IThing> {
    static constexpr GUID Uuid = MakeGuid("5b4e2c10-1111-4c6a-9d0e-7a3a51f0aa03");
    using Base = IDispatch;
};

template <>
struct platform::DispatchTable<platform::tests::IPart> {
    using I = tests::IPart;
    static constexpr std::array Methods{PropertyGet<&I::get_Number>(1, L"Number", L"Value")};
};

template <>
struct platform::DispatchTable<platform::tests::IThing> {
    using I = tests::IThing;
    static constexpr std::array Methods{
        Method<&I::Add>(1, L"Add", L"First", L"Second", L"Sum"),
        PropertyGet<&I::get_Text>(2, L"Text", L"Mode", L"Value"),
        PropertyPut<&I::put_Text>(2, L"Text", L"Mode", L"Value"),
        Method<&I::Notify>(3, L"Notify", L"Mask", Optional(L"Count"), Optional(L"Text"), Optional(L"Value")),
        Method<&I::Swap>(4, L"Swap", L"First", L"Second"), Method<&I::Echo>(5, L"Echo", L"Text", L"Copy"),
        Method<&I::Register>(6, L"Register", L"Sink"), Method<&I::AttachPart>(7, L"AttachPart", L"Part"),
        Method<&I::GetPart>(8, L"GetPart", L"Part"), Method<&I::GetPlain>(9, L"GetPlain", L"Plain"),
        Method<&I::List>(10, L"List", L"Names"), Method<&I::Answer>(11, L"Answer", L"Status", L"Value"),
        Method<&I::Carry>(12, L"Carry", L"Data"),
        Method<&I::Multiply>(13, L"Multiply", L"First", L"Second", L"Third", L"Product"),
        Method<&I::Nothing>(14, L"Nothing"),
        // Out of the run of identifiers, and before a smaller one.
        Method<&I::SplitName>(60, L"SplitName", L"Whole", L"Head", L"Tail")};
};

namespace platform::tests {

// The references that stand on an object.
inline ULONG CountOf(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

class CPart final : public CObject<CPart, ECounter::Interlocked, CDispatchImpl<IPart>, IPlain> {
public:
    explicit CPart(LONG number = 0) : m_Number(number) { ++Alive; }
    ~CPart() { --Alive; }

    HRESULT get_Number(LONG* Value) override {
        if (!Value)
            return E_POINTER;
        *Value = m_Number;
        return S_OK;
    }
    HRESULT Touch() override { return S_OK; }

    static inline std::atomic<int> Alive{0};

private:
    LONG m_Number;
};

class CPlain final : public CObject<CPlain, ECounter::Plain, IPlain> {
public:
    HRESULT Touch() override { return S_OK; }
};

// Answers, and keeps what it was given for the test to look at.
class CThing final : public CObject<CThing, ECounter::Plain, CDispatchImpl<IThing>> {
public:
    HRESULT Add(LONG First, LONG Second, LONG* Sum) override {
        ++Calls;
        if (!Sum)
            return E_POINTER;
        *Sum = First * 100 + Second;
        return S_OK;
    }
    HRESULT get_Text(LONG Mode, BSTR* Value) override {
        ++Calls;
        if (!Value)
            return E_POINTER;
        LastMode = Mode;
        *Value = CBstr(Text).Detach();
        return S_OK;
    }
    HRESULT put_Text(LONG Mode, BSTR Value) override {
        ++Calls;
        LastMode = Mode;
        Text = CBstr::Copy(Value);
        return S_OK;
    }
    HRESULT Notify(ULONG Mask, LONG Count, BSTR TextArgument, VARIANT Value) override {
        ++Calls;
        LastMask = Mask;
        LastCount = Count;
        Text = CBstr::Copy(TextArgument);
        LastValue = Value;
        return S_OK;
    }
    HRESULT Swap(LONG* First, LONG* Second) override {
        ++Calls;
        if (!First || !Second)
            return E_POINTER;
        std::swap(*First, *Second);
        return S_OK;
    }
    HRESULT Echo(BSTR TextArgument, BSTR* Copy) override {
        ++Calls;
        if (!Copy)
            return E_POINTER;
        *Copy = CBstr::Copy(TextArgument).Detach();
        return StatusOfEcho;
    }
    HRESULT Register(IDispatch* Sink) override {
        ++Calls;
        LastSink = Sink;
        return Sink ? S_OK : S_FALSE;
    }
    HRESULT AttachPart(IPart* Argument) override {
        ++Calls;
        Part = Argument;
        return S_OK;
    }
    HRESULT GetPart(IPart** Argument) override {
        ++Calls;
        if (!Argument)
            return E_POINTER;
        Part.CopyTo(Argument);
        return StatusOfPart;
    }
    HRESULT GetPlain(IPlain** Argument) override {
        ++Calls;
        if (!Argument)
            return E_POINTER;
        Plain.CopyTo(Argument);
        return S_OK;
    }
    HRESULT List(SAFEARRAY** Names) override {
        ++Calls;
        if (!Names)
            return E_POINTER;
        *Names = SafeArrayCreateVector(VT_BSTR, 0, 2);
        for (LONG i = 0; i < 2; ++i)
            SafeArrayPutElement(*Names, &i, CBstr(i ? L"two" : L"one").Get());
        return S_OK;
    }
    HRESULT Answer(LONG Status, LONG* Value) override {
        ++Calls;
        *Value = 7;
        return Status;
    }
    HRESULT Carry(VARIANT* Data) override {
        ++Calls;
        if (!Data)
            return E_POINTER;
        LastType = Data->vt;
        VariantClear(Data);
        *Data = CVariant(L"carried").Detach();
        return S_OK;
    }
    HRESULT Multiply(SHORT First, FLOAT Second, DOUBLE Third, DOUBLE* Product) override {
        ++Calls;
        *Product = First * static_cast<double>(Second) * Third;
        return S_OK;
    }
    HRESULT Nothing() override {
        ++Calls;
        return S_OK;
    }
    HRESULT SplitName(BSTR Whole, BSTR* Head, BSTR* Tail) override {
        ++Calls;
        if (!Head || !Tail)
            return E_POINTER;
        const std::wstring_view text = ViewOf(Whole);
        *Head = CBstr(text.substr(0, 1)).Detach();
        *Tail = CBstr(text.substr(1)).Detach();
        return S_OK;
    }

    int Calls = 0;
    CBstr Text;
    LONG LastMode = 0;
    ULONG LastMask = 0;
    LONG LastCount = 0;
    VARIANT LastValue{}; // borrowed while the call lasts
    VARTYPE LastType = VT_EMPTY;
    IDispatch* LastSink = nullptr; // not counted
    CComPtr<IPart> Part;
    CComPtr<IPlain> Plain;
    HRESULT StatusOfEcho = S_OK;
    HRESULT StatusOfPart = S_OK;
};

} // namespace platform::tests
