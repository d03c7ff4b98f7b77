#include "platform/com/tests/Thing.h"
#include "platform/com/variant.h"

#include <gtest/gtest.h>

namespace platform::tests {

namespace {

constexpr std::wstring_view WithZero(L"a\0b", 3);

} // namespace

TEST(Variant, ClearFreesAndEmpties) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    VARIANT value = CVariant(static_cast<IUnknown*>(part.Get())).Detach();
    EXPECT_EQ(value.vt, VT_UNKNOWN);
    EXPECT_EQ(CountOf(part.Get()), 2u);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(value.punkVal, nullptr);
    EXPECT_EQ(CountOf(part.Get()), 1u);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
}

TEST(Variant, ClearLeavesWhatIsOnlyReferredTo) {
    LONG number = 3;
    CBstr text(L"kept");
    BSTR raw = text.Get();
    VARIANT value{};
    value.vt = VT_BYREF | VT_I4;
    value.plVal = &number;
    EXPECT_EQ(VariantClear(&value), S_OK);
    value.vt = VT_BYREF | VT_BSTR;
    value.pbstrVal = &raw;
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(text.View(), L"kept");
    EXPECT_EQ(number, 3);
}

TEST(Variant, ClearOfALockedArrayFailsAndKeepsIt) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 4);
    CVariant value = CVariant::FromArray(array, VT_UI1);
    EXPECT_EQ(value.Type(), 0x2011);
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    EXPECT_EQ(VariantClear(&value.Get()), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(value.Get().parray, array);
    EXPECT_EQ(VariantCopy(&value.Get(), &CVariant(LONG{1}).Get()), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(VariantChangeType(&value.Get(), &CVariant(LONG{1}).Get(), 0, VT_BSTR), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(value.Get().parray, array);
    SafeArrayUnaccessData(array);
}

TEST(Variant, CopyKeepsNullAndEmptyTextApart) {
    const CVariant null(static_cast<const wchar_t*>(nullptr));
    const CVariant empty(L"");
    ASSERT_EQ(null.Type(), VT_BSTR);
    ASSERT_EQ(null.Get().bstrVal, nullptr);
    ASSERT_NE(empty.Get().bstrVal, nullptr);
    EXPECT_EQ(CVariant(null).Get().bstrVal, nullptr);
    EXPECT_NE(CVariant(empty).Get().bstrVal, nullptr);
    EXPECT_EQ(CVariant::FromBstr(nullptr).Get().bstrVal, nullptr);
    EXPECT_NE(CVariant::FromBstr(empty.Get().bstrVal).Get().bstrVal, nullptr);
    CVariant same;
    EXPECT_EQ(VariantChangeType(&same.Get(), &null.Get(), 0, VT_BSTR), S_OK);
    EXPECT_EQ(same.Type(), VT_BSTR);
    EXPECT_EQ(same.Get().bstrVal, nullptr);
    EXPECT_EQ(VariantChangeType(&same.Get(), &empty.Get(), 0, VT_BSTR), S_OK);
    EXPECT_NE(same.Get().bstrVal, nullptr);
}

TEST(Variant, CopyKeepsEmbeddedZeros) {
    const CVariant text(WithZero);
    EXPECT_EQ(ViewOf(CVariant(text).Get().bstrVal), WithZero);
    EXPECT_EQ(ViewOf(CVariant::FromBstr(text.Get().bstrVal).Get().bstrVal), WithZero);
    EXPECT_EQ(text.AsText(), WithZero);
}

TEST(Variant, CopyOwnsItsTextAndItsArray) {
    CVariant text(L"abc");
    const CVariant copy(text);
    text.Get().bstrVal[0] = L'x';
    EXPECT_EQ(copy.AsText(), L"abc");
    const CVariant array = CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 1), VT_I4);
    const CVariant other(array);
    EXPECT_NE(other.Get().parray, array.Get().parray);
}

TEST(Variant, CopiesAndMovesCountObjectsExactly) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    {
        CVariant first(static_cast<IDispatch*>(part.Get()));
        EXPECT_EQ(first.Type(), VT_DISPATCH);
        EXPECT_EQ(CountOf(part.Get()), 2u);
        CVariant second(first);
        EXPECT_EQ(CountOf(part.Get()), 3u);
        const CVariant third(std::move(second));
        EXPECT_EQ(second.Type(), VT_EMPTY);
        EXPECT_EQ(CountOf(part.Get()), 3u);
        EXPECT_EQ(VariantCopy(&first.Get(), &first.Get()), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 3u);
        first = third;
        EXPECT_EQ(CountOf(part.Get()), 3u);
        first.Put();
        EXPECT_EQ(CountOf(part.Get()), 2u);
    }
    EXPECT_EQ(CountOf(part.Get()), 1u);
}

TEST(Variant, NullObjectsAreValues) {
    const CVariant value(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(value.Type(), VT_DISPATCH);
    EXPECT_EQ(CVariant(value).Get().pdispVal, nullptr);
}

TEST(Variant, CopyOfAReferenceRefersToTheSame) {
    LONG number = 3;
    VARIANT value{};
    value.vt = VT_BYREF | VT_I4;
    value.plVal = &number;
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &value), S_OK);
    EXPECT_EQ(copy.vt, VT_BYREF | VT_I4);
    EXPECT_EQ(copy.plVal, &number);
    EXPECT_EQ(VariantCopyInd(&copy, &value), S_OK);
    EXPECT_EQ(copy.vt, VT_I4);
    EXPECT_EQ(copy.lVal, 3);
}

TEST(Variant, NullPointersAreRefused) {
    VARIANT value{};
    EXPECT_EQ(VariantCopy(nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(VariantCopy(&value, nullptr), E_INVALIDARG);
    EXPECT_EQ(VariantCopyInd(&value, nullptr), E_INVALIDARG);
    EXPECT_EQ(VariantChangeType(nullptr, &value, 0, VT_I4), E_INVALIDARG);
    EXPECT_EQ(VariantChangeType(&value, nullptr, 0, VT_I4), E_INVALIDARG);
}

TEST(Variant, ConstructorsChooseTheType) {
    EXPECT_EQ(CVariant().Type(), VT_EMPTY);
    EXPECT_EQ(CVariant(LONG{1}).Type(), VT_I4);
    EXPECT_EQ(CVariant(ULONG{1}).Type(), VT_UI4);
    EXPECT_EQ(CVariant(LONGLONG{1}).Type(), VT_I8);
    EXPECT_EQ(CVariant(1.0).Type(), VT_R8);
    EXPECT_EQ(CVariant(true).Type(), VT_BOOL);
    EXPECT_EQ(CVariant(true).Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(CVariant(std::wstring(L"x")).Type(), VT_BSTR);
}

TEST(Variant, ReadsAsAnyTypeOrAsTheDefault) {
    EXPECT_EQ(CVariant(L" 12 ").AsLong(), 12);
    EXPECT_EQ(CVariant(L"x").AsLong(-5), -5);
    EXPECT_EQ(CVariant(L"2.5").AsDouble(), 2.5);
    EXPECT_EQ(CVariant(LONG{-7}).AsText(), L"-7");
    EXPECT_EQ(CVariant().AsText(), L"");
}

} // namespace platform::tests
