// Invoke: where arguments go, how they are converted, and which status answers a wrong one.
#include "platform/com/tests/Invocation.h"
#include "platform/com/tests/Thing.h"

#include <gtest/gtest.h>

namespace platform::tests {

namespace {

class Dispatch : public testing::Test {
protected:
    CComPtr<CThing> Thing = MakeObject<CThing>();
    CInvocation Call;
};

using DispatchArguments = Dispatch;
using DispatchConversion = Dispatch;
using DispatchStatus = Dispatch;

constexpr std::wstring_view WithZero(L"a\0b", 3);

} // namespace

TEST_F(DispatchArguments, StandInReverse) {
    Call.Add(CVariant(LONG{3})).Add(CVariant(LONG{4}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(Call.Result.Type(), VT_I4);
    EXPECT_EQ(Call.Result.Get().lVal, 304);
}

TEST_F(DispatchArguments, AreFoundByName) {
    Call.AddNamed(1, CVariant(LONG{4})).AddNamed(0, CVariant(LONG{3}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(Call.Result.AsLong(), 304);
}

TEST_F(DispatchArguments, NamedAndPositionalMix) {
    const CVariant text(L"text");
    Call.Add(CVariant(ULONG{9})).AddNamed(2, text);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Notify), S_OK);
    EXPECT_EQ(Thing->LastMask, 9u);
    EXPECT_EQ(Thing->LastCount, 0);
    EXPECT_EQ(Thing->Text.View(), L"text");
    EXPECT_EQ(Thing->LastValue.vt, VT_ERROR);
    EXPECT_EQ(Thing->LastValue.scode, DISP_E_PARAMNOTFOUND);
}

TEST_F(DispatchArguments, OptionalOnesMayBeLeftAway) {
    Call.Add(CVariant(ULONG{9}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Notify), S_OK);
    EXPECT_EQ(Thing->LastCount, 0);
    EXPECT_TRUE(Thing->Text.IsNull());
    EXPECT_EQ(Thing->LastValue.scode, DISP_E_PARAMNOTFOUND);
}

TEST_F(DispatchArguments, OptionalOnesMayBeSaidToBeMissing) {
    const CVariant text(L"text");
    Call.Add(CVariant(ULONG{9})).AddMissing().Add(text).AddMissing();
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Notify), S_OK);
    EXPECT_EQ(Thing->LastCount, 0);
    EXPECT_EQ(Thing->Text.View(), L"text");
    EXPECT_EQ(Thing->LastValue.vt, VT_ERROR);
}

TEST_F(DispatchArguments, RequiredOneSaidToBeMissingIsNamed) {
    Call.AddMissing().Add(CVariant(LONG{2}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), DISP_E_PARAMNOTOPTIONAL);
    EXPECT_EQ(Call.Bad, 1u);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchArguments, TooFewOrTooManyAreRefused) {
    Call.Add(CVariant(LONG{1}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Nothing), DISP_E_BADPARAMCOUNT);
    Call.Add(CVariant(LONG{1})).Add(CVariant(LONG{1})).Add(CVariant(LONG{1}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(Call.Bad, CInvocation::NotSet);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchArguments, NameThatNoParameterHasIsReported) {
    for (const DISPID name : {DISPID{3}, DISPID{-1}, DISPID_PROPERTYPUT}) {
        CInvocation call;
        call.AddNamed(name, CVariant(LONG{1})).Add(CVariant(LONG{1}));
        EXPECT_EQ(call.Run(Thing.Get(), Id_Add), DISP_E_PARAMNOTFOUND);
        EXPECT_EQ(call.Bad, 0u);
    }
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchArguments, ParameterGivenTwiceIsReported) {
    Call.Add(CVariant(LONG{1})).AddNamed(1, CVariant(LONG{2})).AddNamed(0, CVariant(LONG{3}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(Call.Bad, 1u);
}

TEST_F(DispatchArguments, PropertyPutNamesItsValue) {
    const CVariant text(L"new");
    Call.Add(CVariant(LONG{5})).AddNamed(DISPID_PROPERTYPUT, text);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Text, DISPATCH_PROPERTYPUT), S_OK);
    EXPECT_EQ(Thing->Text.View(), L"new");
    EXPECT_EQ(Thing->LastMode, 5);
    CInvocation get;
    get.Add(CVariant(LONG{6}));
    EXPECT_EQ(get.Run(Thing.Get(), Id_Text, DISPATCH_PROPERTYGET), S_OK);
    EXPECT_EQ(get.Result.AsText(), L"new");
    EXPECT_EQ(Thing->LastMode, 6);
}

TEST_F(DispatchArguments, PropertyIsReadByACallThatMayBeEither) {
    Call.Add(CVariant(LONG{6}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Text, DISPATCH_METHOD | DISPATCH_PROPERTYGET), S_OK);
    EXPECT_EQ(Thing->LastMode, 6);
}

TEST_F(DispatchConversion, AnyNumberOrTextBecomesTheParametersType) {
    Call.Add(CVariant(L" 2 ")).Add(CVariant(1.5)).Add(CVariant(true));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Multiply), S_OK);
    EXPECT_EQ(Call.Result.Type(), VT_R8);
    EXPECT_EQ(Call.Result.Get().dblVal, -3.0);
}

TEST_F(DispatchConversion, NumberBecomesText) {
    Call.Add(CVariant(LONG{12}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Echo), S_OK);
    EXPECT_EQ(Call.Result.Type(), VT_BSTR);
    EXPECT_EQ(Call.Result.AsText(), L"12");
}

TEST_F(DispatchConversion, ReferencesAreFollowed) {
    LONG first = 3;
    CVariant second(L"4");
    Call.AddReference(VT_I4, &first).AddReference(VT_VARIANT, &second.Get());
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), S_OK);
    EXPECT_EQ(Call.Result.AsLong(), 304);
}

TEST_F(DispatchConversion, TextKeepsNullEmptyAndZeros) {
    for (const CVariant& text : {CVariant::FromBstr(nullptr), CVariant(L""), CVariant(WithZero)}) {
        CInvocation call;
        call.Add(text);
        EXPECT_EQ(call.Run(Thing.Get(), Id_Echo), S_OK);
        ASSERT_EQ(call.Result.Type(), VT_BSTR);
        EXPECT_EQ(call.Result.Get().bstrVal == nullptr, text.Get().bstrVal == nullptr);
        EXPECT_EQ(ViewOf(call.Result.Get().bstrVal), ViewOf(text.Get().bstrVal));
    }
}

TEST_F(DispatchConversion, EmptyBecomesEmptyTextAndNullIsRefused) {
    Call.Add(CVariant());
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Echo), S_OK);
    EXPECT_NE(Call.Result.Get().bstrVal, nullptr);
    VARIANT null{};
    null.vt = VT_NULL;
    CInvocation refused;
    refused.Add(null);
    EXPECT_EQ(refused.Run(Thing.Get(), Id_Echo), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(refused.Bad, 0u);
}

TEST_F(DispatchConversion, MismatchNamesTheArgumentAndNothingIsCalled) {
    const CVariant text(L"x");
    Call.Add(text).Add(CVariant(LONG{1}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Call.Bad, 1u);
    CInvocation second;
    second.Add(CVariant(LONG{1})).Add(text);
    EXPECT_EQ(second.Run(Thing.Get(), Id_Add), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(second.Bad, 0u);
    CInvocation named;
    named.AddNamed(1, CVariant(LONG{1})).AddNamed(0, text);
    EXPECT_EQ(named.Run(Thing.Get(), Id_Add), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(named.Bad, 1u);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchConversion, OverflowNamesTheArgument) {
    Call.Add(CVariant(LONG{70000})).Add(CVariant(1.0)).Add(CVariant(1.0));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Multiply), DISP_E_OVERFLOW);
    EXPECT_EQ(Call.Bad, 2u);
    CInvocation negative;
    negative.Add(CVariant(LONG{-1}));
    EXPECT_EQ(negative.Run(Thing.Get(), Id_Notify), DISP_E_OVERFLOW);
    EXPECT_EQ(negative.Bad, 0u);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchConversion, NullReferenceForAValueIsRefused) {
    Call.AddReference<LONG>(VT_I4, nullptr).Add(CVariant(LONG{1}));
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Add), E_INVALIDARG);
    EXPECT_EQ(Call.Bad, 1u);
    EXPECT_EQ(Thing->Calls, 0);
}

TEST_F(DispatchConversion, VariantParameterTakesAnyValueAsItIs) {
    VARIANT null{};
    null.vt = VT_NULL;
    Call.Add(CVariant(ULONG{1})).AddMissing().AddMissing().Add(null);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Notify), S_OK);
    EXPECT_EQ(Thing->LastValue.vt, VT_NULL);
    CVariant text(L"inner");
    CInvocation reference;
    reference.Add(CVariant(ULONG{1})).AddMissing().AddMissing().AddReference(VT_VARIANT, &text.Get());
    EXPECT_EQ(reference.Run(Thing.Get(), Id_Notify), S_OK);
    EXPECT_EQ(Thing->LastValue.vt, VT_BSTR);
    EXPECT_EQ(Thing->LastValue.bstrVal, text.Get().bstrVal);
}

TEST_F(DispatchStatus, UnknownMemberIsRefused) {
    for (const DISPID id : {DISPID{0}, DISPID{-1}, DISPID{15}, DISPID{59}, DISPID{61}, DISPID{0x7fffffff}})
        EXPECT_EQ(Call.Run(Thing.Get(), id), DISP_E_MEMBERNOTFOUND) << id;
}

TEST_F(DispatchStatus, MemberOfAnotherKindIsNotFound) {
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Nothing, DISPATCH_PROPERTYGET), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Nothing, DISPATCH_PROPERTYPUT), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Text, DISPATCH_METHOD), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Call.Run(Thing.Get(), Id_Nothing, 0), DISP_E_MEMBERNOTFOUND);
}

TEST_F(DispatchStatus, MembersOutsideTheRunOfIdentifiersAreFound) {
    const CVariant whole(L"abc");
    CBstr head;
    Call.Add(whole).AddReference(VT_BSTR, head.Put());
    EXPECT_EQ(Call.Run(Thing.Get(), Id_SplitName), S_OK);
    EXPECT_EQ(head.View(), L"a");
    EXPECT_EQ(Call.Result.AsText(), L"bc");
}

TEST_F(DispatchStatus, InterfaceArgumentMustBeNull) {
    DISPPARAMS none{};
    EXPECT_EQ(Thing->Invoke(Id_Nothing, UuidOf<IThing>, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(Thing->Invoke(Id_Nothing, NullGuid, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
              E_INVALIDARG);
    EXPECT_EQ(Thing->Invoke(Id_Nothing, NullGuid, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(Thing->Calls, 1);
}

TEST_F(DispatchStatus, CountsWithoutTheirArraysAreRefused) {
    DISPPARAMS parameters{nullptr, nullptr, 2, 0};
    EXPECT_EQ(Thing->Invoke(Id_Add, NullGuid, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
              E_INVALIDARG);
    VARIANT arguments[2]{};
    parameters = {arguments, nullptr, 2, 1};
    EXPECT_EQ(Thing->Invoke(Id_Add, NullGuid, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
              E_INVALIDARG);
    DISPID names[3]{};
    parameters = {arguments, names, 2, 3};
    EXPECT_EQ(Thing->Invoke(Id_Add, NullGuid, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
              DISP_E_BADPARAMCOUNT);
}

TEST_F(DispatchStatus, MethodsOwnStatusPassesThrough) {
    for (const HRESULT status : {S_FALSE, HRESULT{5}, E_FAIL, E_ABORT}) {
        CInvocation call;
        call.Add(CVariant(status));
        EXPECT_EQ(call.Run(Thing.Get(), Id_Answer), status);
        EXPECT_EQ(call.Bad, CInvocation::NotSet);
        EXPECT_EQ(call.Result.Type(), SUCCEEDED(status) ? VT_I4 : VT_EMPTY);
        EXPECT_EQ(call.Result.AsLong(0), SUCCEEDED(status) ? 7 : 0);
    }
    EXPECT_EQ(Thing->Calls, 4);
}

// Statuses that Invoke itself answers with must not look as if an argument had been refused.
TEST_F(DispatchStatus, MethodsOwnMismatchBlamesNoArgument) {
    for (const HRESULT status : {DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, DISP_E_PARAMNOTFOUND, E_INVALIDARG}) {
        LONG value = 0;
        CInvocation call;
        call.Add(CVariant(status)).AddReference(VT_I4, &value);
        EXPECT_EQ(call.Run(Thing.Get(), Id_Answer), status);
        EXPECT_EQ(call.Bad, CInvocation::NotSet);
    }
    EXPECT_EQ(Thing->Calls, 4);
}

TEST_F(DispatchStatus, WrongArgumentWithoutAPlaceForItsIndex) {
    VARIANT arguments[] = {CVariant(L"x").Detach(), CVariant(LONG{1}).Detach()};
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    EXPECT_EQ(Thing->Invoke(Id_Add, NullGuid, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
              DISP_E_TYPEMISMATCH);
    VariantClear(&arguments[0]);
}

TEST_F(DispatchStatus, CallByNameReversesItsArguments) {
    const VARIANT arguments[] = {CVariant(LONG{3}).Get(), CVariant(LONG{4}).Get()};
    CVariant sum;
    EXPECT_EQ(CallByName(Thing.Get(), L"add", DISPATCH_METHOD, arguments, sum.Put()), S_OK);
    EXPECT_EQ(sum.AsLong(), 304);
    const CVariant text(L"set");
    const VARIANT put[] = {CVariant(LONG{1}).Get(), text.Get()};
    EXPECT_EQ(CallByName(Thing.Get(), L"Text", DISPATCH_PROPERTYPUT, put, nullptr), S_OK);
    EXPECT_EQ(Thing->Text.View(), L"set");
    EXPECT_EQ(CallByName(Thing.Get(), L"Missing", DISPATCH_METHOD, {}, nullptr), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(CallByName(nullptr, L"Add", DISPATCH_METHOD, {}, nullptr), E_POINTER);
    EXPECT_EQ(CallByName(Thing.Get(), nullptr, DISPATCH_METHOD, {}, nullptr), E_POINTER);
}

} // namespace platform::tests
