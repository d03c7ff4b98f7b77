// Invoke: objects that go in and come out, and every reference that stands on them.
#include "platform/com/tests/Invocation.h"
#include "platform/com/tests/Thing.h"

#include <gtest/gtest.h>

namespace platform::tests {

struct IFront : IDispatch {
    virtual HRESULT Front() = 0;

protected:
    ~IFront() = default;
};

} // namespace platform::tests

template <>
struct platform::InterfaceTraits<platform::tests::IFront> {
    static constexpr GUID Uuid = MakeGuid("5b4e2c10-1111-4c6a-9d0e-7a3a51f0aa04");
    using Base = IDispatch;
};
template <>
struct platform::DispatchTable<platform::tests::IFront> {
    static constexpr std::array Methods{Method<&tests::IFront::Front>(1, L"Front")};
};

namespace platform::tests {

namespace {

class DispatchObjects : public testing::Test {
protected:
    static CVariant AsDispatch(IDispatch* object) { return CVariant(object); }
    static CVariant AsUnknown(IUnknown* object) { return CVariant(object); }

    CComPtr<CThing> Thing = MakeObject<CThing>();
    CComPtr<CPart> Object = MakeObject<CPart>(17);
    IPart* Part = Object.Get();
    CInvocation Call;
};

// Its identity, and so its IDispatch, is another table than that of IPart.
class CTwoFaced final : public CObject<CTwoFaced, ECounter::Plain, CDispatchImpl<IFront>, CDispatchImpl<IPart>> {
public:
    HRESULT Front() override { return S_OK; }
    HRESULT get_Number(LONG* Value) override {
        *Value = 3;
        return S_OK;
    }
};

} // namespace

TEST_F(DispatchObjects, InArgumentIsAskedForItsInterface) {
    {
        const CVariant dispatch = AsDispatch(Part);
        EXPECT_EQ(Call.Add(dispatch).Run(Thing.Get(), Id_AttachPart), S_OK);
        EXPECT_EQ(Thing->Part.Get(), Part);
        Thing->Part.Reset();
        const CVariant unknown = AsUnknown(static_cast<IPlain*>(Object.Get()));
        CInvocation second;
        EXPECT_EQ(second.Add(unknown).Run(Thing.Get(), Id_AttachPart), S_OK);
        EXPECT_EQ(Thing->Part.Get(), Part);
        Thing->Part.Reset();
    }
    EXPECT_EQ(CountOf(Part), 1u);
}

TEST_F(DispatchObjects, InArgumentByReference) {
    IDispatch* dispatch = Part;
    IUnknown* unknown = Part;
    CVariant variant = AsDispatch(Part);
    for (const auto& [type, place] : {std::pair<VARTYPE, void*>{VT_DISPATCH, &dispatch},
                                      {VT_UNKNOWN, &unknown},
                                      {VT_VARIANT, &variant.Get()}}) {
        CInvocation call;
        EXPECT_EQ(call.AddReference(type, place).Run(Thing.Get(), Id_AttachPart), S_OK) << type;
        EXPECT_EQ(Thing->Part.Get(), Part);
        Thing->Part.Reset();
    }
    variant.Put();
    EXPECT_EQ(CountOf(Part), 1u);
}

TEST_F(DispatchObjects, NothingIsANullObject) {
    VARIANT null{};
    null.vt = VT_NULL;
    for (const VARIANT& value : {VARIANT{}, null, AsDispatch(nullptr).Get(), AsUnknown(nullptr).Get()}) {
        Thing->Part = Part;
        CInvocation call;
        EXPECT_EQ(call.Add(value).Run(Thing.Get(), Id_AttachPart), S_OK) << value.vt;
        EXPECT_EQ(Thing->Part, nullptr);
    }
    EXPECT_EQ(Call.Add(VARIANT{}).Run(Thing.Get(), Id_Register), S_FALSE);
}

TEST_F(DispatchObjects, ObjectWithoutTheInterfaceIsAMismatch) {
    const auto other = MakeObject<CThing>();
    {
        const CVariant value = AsDispatch(other.Get());
        EXPECT_EQ(Call.Add(value).Run(Thing.Get(), Id_AttachPart), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(Call.Bad, 0u);
    }
    EXPECT_EQ(CountOf(other.Get()), 1u);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchObjects, ValueThatIsNoObjectIsAMismatch) {
    EXPECT_EQ(Call.Add(CVariant(LONG{0})).Run(Thing.Get(), Id_AttachPart), DISP_E_TYPEMISMATCH);
    const CVariant text(L"x");
    CInvocation second;
    EXPECT_EQ(second.Add(text).Run(Thing.Get(), Id_Register), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Thing->Calls, 0);
}

// A sink is known by its pointer, early or late bound.
TEST_F(DispatchObjects, DispatchArgumentIsTheVeryPointerGiven) {
    const auto object = MakeObject<CTwoFaced>();
    IPart* const face = object.Get();
    ASSERT_NE(CComPtr<IPart>(face).As<IDispatch>().Get(), static_cast<IDispatch*>(face));
    {
        const CVariant value = AsDispatch(face);
        EXPECT_EQ(Call.Add(value).Run(Thing.Get(), Id_Register), S_OK);
        EXPECT_EQ(Thing->LastSink, static_cast<IDispatch*>(face));
    }
    EXPECT_EQ(CountOf(face), 1u);
}

// A late-bound caller must reach the interface that the method gave it.
TEST_F(DispatchObjects, OutObjectIsTheInterfaceOfTheParameter) {
    const auto object = MakeObject<CTwoFaced>();
    Thing->Part = static_cast<IPart*>(object.Get());
    EXPECT_EQ(Call.Run(Thing.Get(), Id_GetPart), S_OK);
    ASSERT_EQ(Call.Result.Type(), VT_DISPATCH);
    CVariant number;
    EXPECT_EQ(CallByName(Call.Result.Get().pdispVal, L"Number", DISPATCH_PROPERTYGET, {}, number.Put()), S_OK);
    EXPECT_EQ(number.AsLong(), 3);
}

TEST_F(DispatchObjects, OutObjectIsCountedOnceInEveryPlace) {
    Thing->Part = Part;
    ASSERT_EQ(CountOf(Part), 2u);
    IDispatch* dispatch = nullptr;
    IUnknown* unknown = nullptr;
    CVariant variant;
    for (const auto& [type, place] : {std::pair<VARTYPE, void*>{VT_DISPATCH, &dispatch},
                                      {VT_UNKNOWN, &unknown},
                                      {VT_VARIANT, &variant.Get()}}) {
        CInvocation call;
        EXPECT_EQ(call.AddReference(type, place).Run(Thing.Get(), Id_GetPart), S_OK);
    }
    EXPECT_EQ(Call.Run(Thing.Get(), Id_GetPart), S_OK);
    EXPECT_EQ(CountOf(Part), 6u);
    EXPECT_EQ(variant.Type(), VT_DISPATCH);
    EXPECT_EQ(Call.Result.Type(), VT_DISPATCH);
    dispatch->Release();
    unknown->Release();
    variant.Put();
    Call.Result.Put();
    EXPECT_EQ(CountOf(Part), 2u);
    EXPECT_EQ(Call.WithoutResult().Run(Thing.Get(), Id_GetPart), S_OK);
    EXPECT_EQ(CountOf(Part), 2u);
}

TEST_F(DispatchObjects, OutObjectReplacesTheOneThatStoodThere) {
    Thing->Part = Part;
    CComPtr<IDispatch> place = static_cast<IPart*>(MakeObject<CPart>().Get());
    IDispatch* raw = place.Get();
    raw->AddRef();
    EXPECT_EQ(Call.AddReference(VT_DISPATCH, &raw).Run(Thing.Get(), Id_GetPart), S_OK);
    EXPECT_EQ(CountOf(place.Get()), 1u);
    EXPECT_EQ(raw, Part);
    raw->Release();
    EXPECT_EQ(CountOf(Part), 2u);
}

TEST_F(DispatchObjects, FailureLeavesTheObjectThatStoodThere) {
    Thing->Part = Part;
    Thing->StatusOfPart = E_FAIL;
    const CComPtr<IPart> old = MakeObject<CPart>();
    IDispatch* raw = old.Get();
    EXPECT_EQ(Call.AddReference(VT_DISPATCH, &raw).Run(Thing.Get(), Id_GetPart), E_FAIL);
    EXPECT_EQ(raw, old.Get());
    EXPECT_EQ(CountOf(old.Get()), 1u);
    EXPECT_EQ(CountOf(Part), 2u);
}

TEST_F(DispatchObjects, NullOutObjectIsANullDispatch) {
    EXPECT_EQ(Call.Run(Thing.Get(), Id_GetPart), S_OK);
    EXPECT_EQ(Call.Result.Type(), VT_DISPATCH);
    EXPECT_EQ(Call.Result.Get().pdispVal, nullptr);
}

TEST_F(DispatchObjects, OutObjectThatIsNotLateBoundIsUnknown) {
    const CComPtr<IPlain> plain = MakeObject<CPlain>();
    Thing->Plain = plain;
    EXPECT_EQ(Call.Run(Thing.Get(), Id_GetPlain), S_OK);
    EXPECT_EQ(Call.Result.Type(), VT_UNKNOWN);
    EXPECT_EQ(CountOf(plain.Get()), 3u);
    Call.Result.Put();
    IDispatch* wrong = nullptr;
    CInvocation mismatch;
    EXPECT_EQ(mismatch.AddReference(VT_DISPATCH, &wrong).Run(Thing.Get(), Id_GetPlain), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(wrong, nullptr);
    IUnknown* right = nullptr;
    CInvocation exact;
    EXPECT_EQ(exact.AddReference(VT_UNKNOWN, &right).Run(Thing.Get(), Id_GetPlain), S_OK);
    EXPECT_EQ(right, plain.Get());
    right->Release();
    EXPECT_EQ(CountOf(plain.Get()), 2u);
}

TEST_F(DispatchObjects, VariantArgumentIsBorrowed) {
    const CVariant value = AsDispatch(Part);
    Call.Add(CVariant(ULONG{1})).AddMissing().AddMissing().Add(value);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Notify), S_OK);
    EXPECT_EQ(CountOf(Part), 2u);
}

} // namespace platform::tests
