// Invoke: what comes back, where it is put, and what becomes of what stood there.
#include "platform/com/tests/Invocation.h"
#include "platform/com/tests/Thing.h"

#include <cstring>
#include <gtest/gtest.h>
#include <utility>

namespace platform::tests {

namespace {

class DispatchOut : public testing::Test {
protected:
    CComPtr<CThing> Thing = MakeObject<CThing>();
    CInvocation Call;
    const CVariant Text{L"text"};
};

} // namespace

TEST_F(DispatchOut, NumberGoesToThePlaceGiven) {
    LONG sum = 0;
    Call.Add(CVariant(LONG{3})).Add(CVariant(LONG{4})).AddReference(VT_I4, &sum);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(sum, 304);
    EXPECT_EQ(Call.Result.Type(), VT_EMPTY);
}

TEST_F(DispatchOut, NumberGoesIntoAVariant) {
    CVariant sum;
    Call.Add(CVariant(LONG{3})).Add(CVariant(LONG{4})).AddReference(VT_VARIANT, &sum.Get());
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(sum.Type(), VT_I4);
    EXPECT_EQ(sum.Get().lVal, 304);
}

TEST_F(DispatchOut, NumberGoesWhereAVariantRefersTo) {
    LONG place = 0;
    VARIANT inner{};
    inner.vt = VT_BYREF | VT_I4;
    inner.plVal = &place;
    Call.Add(CVariant(LONG{3})).Add(CVariant(LONG{4})).AddReference(VT_VARIANT, &inner);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(place, 304);
    EXPECT_EQ(inner.vt, VT_BYREF | VT_I4);
}

TEST_F(DispatchOut, LastOneIsTheResultAndMayBeThrownAway) {
    Call.Add(CVariant(LONG{3})).Add(CVariant(LONG{4}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(Call.Result.AsLong(), 304);
    EXPECT_EQ(Call.WithoutResult().Run(Thing.Get(), Id_Add), S_OK);
    CInvocation text;
    text.Add(Text).WithoutResult();
    EXPECT_EQ(text.Run(Thing.Get(), Id_Echo), S_OK);
    EXPECT_EQ(Thing->Calls, 3);
}

TEST_F(DispatchOut, LastOneSaidToBeMissingIsTheResult) {
    Call.Add(CVariant(LONG{3})).Add(CVariant(LONG{4})).AddMissing();
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(Call.Result.AsLong(), 304);
}

TEST_F(DispatchOut, OnlyTheLastOneMayBeLeftAway) {
    CBstr tail;
    const CVariant name(L"abc");
    Call.Add(name);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_SplitName), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchOut, InOutNumbersGoBothWays) {
    LONG first = 1;
    CVariant second(L"2");
    Call.AddReference(VT_I4, &first).AddReference(VT_VARIANT, &second.Get());
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Swap), S_OK);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(second.Type(), VT_I4);
    EXPECT_EQ(second.Get().lVal, 1);
}

TEST_F(DispatchOut, InOutNumberLeftAwayComesInAsZero) {
    LONG first = 5;
    Call.AddReference(VT_I4, &first);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Swap), S_OK);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(Call.Result.AsLong(), 5);
}

TEST_F(DispatchOut, ReferenceMustBeOfTheVeryType) {
    SHORT narrow = 0;
    double wide = 0;
    ULONG other = 0;
    CBstr text;
    for (const auto& [type, place] :
         {std::pair<VARTYPE, void*>{VT_I2, &narrow}, {VT_R8, &wide}, {VT_UI4, &other}, {VT_BSTR, text.Put()}}) {
        CInvocation call;
        call.Add(CVariant(LONG{1})).Add(CVariant(LONG{1})).AddReference(type, place);
        EXPECT_EQ(call.Run(Thing.Get(), Id_Add), DISP_E_TYPEMISMATCH) << type;
        EXPECT_EQ(call.Bad, 0u);
    }
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchOut, ValueWhereAReferenceBelongsIsRefused) {
    Call.Add(CVariant(LONG{1})).Add(CVariant(LONG{1})).Add(CVariant(LONG{1}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Call.Bad, 0u);
    CInvocation text;
    text.Add(Text).Add(Text);
    EXPECT_EQ(text.Run(Thing.Get(), Id_Echo), DISP_E_TYPEMISMATCH);
    CInvocation variant;
    variant.Add(CVariant(LONG{1}));
    EXPECT_EQ(variant.Run(Thing.Get(), Id_Carry), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchOut, InOutVariantThatIsNoNumberIsRefused) {
    CVariant first(L"x");
    LONG second = 1;
    Call.AddReference(VT_VARIANT, &first.Get()).AddReference(VT_I4, &second);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Swap), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Call.Bad, 1u);
    EXPECT_EQ(first.AsText(), L"x");
}

// The method's own test for null answers, not the layer.
TEST_F(DispatchOut, NullReferenceReachesTheMethod) {
    for (const VARTYPE type : {VT_I4, VT_VARIANT}) {
        CInvocation call;
        call.Add(CVariant(LONG{1})).Add(CVariant(LONG{1})).AddReference<void>(type, nullptr);
        EXPECT_EQ(call.Run(Thing.Get(), Id_Add), E_POINTER) << type;
        EXPECT_EQ(call.Bad, CInvocation::NotSet);
    }
    for (const auto& [id, type] : {std::pair<DISPID, VARTYPE>{Id_List, VT_ARRAY | VT_BSTR},
                                   {Id_List, VT_VARIANT},
                                   {Id_Carry, VT_VARIANT},
                                   {Id_GetPart, VT_DISPATCH},
                                   {Id_GetPart, VT_UNKNOWN},
                                   {Id_GetPart, VT_VARIANT}}) {
        CInvocation call;
        call.AddReference<void>(type, nullptr);
        EXPECT_EQ(call.Run(Thing.Get(), id), E_POINTER) << id << " " << type;
    }
    for (const VARTYPE type : {VT_BSTR, VT_VARIANT}) {
        CInvocation call;
        call.Add(Text).AddReference<void>(type, nullptr);
        EXPECT_EQ(call.Run(Thing.Get(), Id_Echo), E_POINTER) << type;
    }
    EXPECT_EQ(Thing->Calls, 10);
}

TEST_F(DispatchOut, TextReplacesWhatStoodInThePlace) {
    CBstr place(L"before");
    BSTR raw = place.Detach();
    Call.Add(Text).AddReference(VT_BSTR, &raw);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Echo), S_OK);
    place.Attach(raw);
    EXPECT_EQ(place.View(), L"text");
    CVariant variant(L"before");
    CInvocation second;
    second.Add(Text).AddReference(VT_VARIANT, &variant.Get());
    EXPECT_EQ(second.Run(Thing.Get(), Id_Echo), S_OK);
    EXPECT_EQ(variant.AsText(), L"text");
}

TEST_F(DispatchOut, FailureLeavesWhatStoodInThePlace) {
    Thing->StatusOfEcho = E_FAIL;
    CBstr place(L"before");
    BSTR raw = place.Get();
    CVariant variant(L"before");
    Call.Add(Text).AddReference(VT_BSTR, &raw);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Echo), E_FAIL);
    EXPECT_EQ(raw, place.Get());
    CInvocation second;
    second.Add(Text).AddReference(VT_VARIANT, &variant.Get());
    EXPECT_EQ(second.Run(Thing.Get(), Id_Echo), E_FAIL);
    EXPECT_EQ(variant.AsText(), L"before");
    CInvocation third;
    third.Add(Text);
    EXPECT_EQ(third.Run(Thing.Get(), Id_Echo), E_FAIL);
    EXPECT_EQ(third.Result.Type(), VT_EMPTY);
}

TEST_F(DispatchOut, NullAndEmptyTextStayApart) {
    for (const CVariant& text : {CVariant::FromBstr(nullptr), CVariant(L"")}) {
        CBstr place(L"before");
        BSTR raw = place.Detach();
        CVariant variant;
        CInvocation first;
        first.Add(text).AddReference(VT_BSTR, &raw);
        EXPECT_EQ(first.Run(Thing.Get(), Id_Echo), S_OK);
        place.Attach(raw);
        CInvocation second;
        second.Add(text).AddReference(VT_VARIANT, &variant.Get());
        EXPECT_EQ(second.Run(Thing.Get(), Id_Echo), S_OK);
        EXPECT_EQ(variant.Type(), VT_BSTR);
        EXPECT_EQ(place.IsNull(), text.Get().bstrVal == nullptr);
        EXPECT_EQ(variant.Get().bstrVal == nullptr, text.Get().bstrVal == nullptr);
    }
}

TEST_F(DispatchOut, ArrayOfTextsInEveryPlace) {
    SAFEARRAY* typed = SafeArrayCreateVector(VT_BSTR, 0, 5);
    CVariant variant(L"before");
    CInvocation first;
    CInvocation second;
    EXPECT_EQ(first.AddReference(VT_ARRAY | VT_BSTR, &typed).Run(Thing.Get(), Id_List), S_OK);
    EXPECT_EQ(second.AddReference(VT_VARIANT, &variant.Get()).Run(Thing.Get(), Id_List), S_OK);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_List), S_OK);
    const CVariant owner = CVariant::FromArray(typed, VT_BSTR);
    for (const CVariant* value : {&owner, &std::as_const(variant), &std::as_const(Call.Result)}) {
        ASSERT_EQ(value->Type(), VT_ARRAY | VT_BSTR);
        LONG upper = 0;
        SafeArrayGetUBound(value->Get().parray, 1, &upper);
        EXPECT_EQ(upper, 1);
        CBstr name;
        SafeArrayGetElement(value->Get().parray, &upper, name.Put());
        EXPECT_EQ(name.View(), L"two");
    }
}

TEST_F(DispatchOut, ArrayOfOtherElementsIsRefused) {
    SAFEARRAY* array = nullptr;
    Call.AddReference(VT_ARRAY | VT_I4, &array);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_List), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchOut, VariantComesInAndGoesOut) {
    CVariant data(LONG{5});
    Call.AddReference(VT_VARIANT, &data.Get());
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Carry), S_OK);
    EXPECT_EQ(Thing->LastType, VT_I4);
    EXPECT_EQ(data.AsText(), L"carried");
    CInvocation result;
    EXPECT_EQ(result.Run(Thing.Get(), Id_Carry), S_OK);
    EXPECT_EQ(Thing->LastType, VT_EMPTY);
    EXPECT_EQ(result.Result.AsText(), L"carried");
}

TEST_F(DispatchOut, ResultIsAPlainOutParameter) {
    VARIANT result;
    std::memset(&result, 0xCC, sizeof(result));
    DISPPARAMS none{};
    EXPECT_EQ(Thing->Invoke(Id_Carry, NullGuid, 0, DISPATCH_METHOD, &none, &result, nullptr, nullptr), S_OK);
    EXPECT_EQ(result.vt, VT_BSTR);
    VariantClear(&result);
    std::memset(&result, 0xCC, sizeof(result));
    EXPECT_EQ(Thing->Invoke(99, NullGuid, 0, DISPATCH_METHOD, &none, &result, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(result.vt, VT_EMPTY);
    EXPECT_EQ(Thing->Invoke(Id_Nothing, NullGuid, 0, DISPATCH_METHOD, &none, &result, nullptr, nullptr), S_OK);
    EXPECT_EQ(result.vt, VT_EMPTY);
}

} // namespace platform::tests
