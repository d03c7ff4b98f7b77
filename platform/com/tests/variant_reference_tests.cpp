// By-reference values: each is followed to what it points at, and none is followed into nothing.
#include "platform/com/tests/Thing.h"
#include "platform/com/variant.h"

#include <gtest/gtest.h>

namespace platform::tests {

namespace {

template <class T>
VARIANT Reference(VARTYPE type, T* place) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(VT_BYREF | type);
    value.byref = place;
    return value;
}

template <class T>
std::wstring TextBehind(VARTYPE type, T place) {
    const VARIANT reference = Reference(type, &place);
    CVariant text;
    EXPECT_EQ(VariantChangeType(&text.Get(), &reference, 0, VT_BSTR), S_OK) << type;
    CVariant copy;
    EXPECT_EQ(VariantCopyInd(&copy.Get(), &reference), S_OK) << type;
    EXPECT_EQ(copy.Type(), type);
    EXPECT_EQ(copy.AsText(), text.AsText());
    return text.AsText();
}

} // namespace

TEST(VariantReference, EveryScalarIsFollowed) {
    EXPECT_EQ(TextBehind<signed char>(VT_I1, -1), L"-1");
    EXPECT_EQ(TextBehind<BYTE>(VT_UI1, 255), L"255");
    EXPECT_EQ(TextBehind<SHORT>(VT_I2, -2), L"-2");
    EXPECT_EQ(TextBehind<USHORT>(VT_UI2, 65535), L"65535");
    EXPECT_EQ(TextBehind<LONG>(VT_I4, -4), L"-4");
    EXPECT_EQ(TextBehind<ULONG>(VT_UI4, 4294967295u), L"4294967295");
    EXPECT_EQ(TextBehind<INT>(VT_INT, -5), L"-5");
    EXPECT_EQ(TextBehind<UINT>(VT_UINT, 5), L"5");
    EXPECT_EQ(TextBehind<LONGLONG>(VT_I8, -8), L"-8");
    EXPECT_EQ(TextBehind<ULONGLONG>(VT_UI8, 8), L"8");
    EXPECT_EQ(TextBehind<FLOAT>(VT_R4, 0.5f), L"0.5");
    EXPECT_EQ(TextBehind<DOUBLE>(VT_R8, 0.25), L"0.25");
    EXPECT_EQ(TextBehind<DATE>(VT_DATE, 1.5), L"1.5");
    EXPECT_EQ(TextBehind<VARIANT_BOOL>(VT_BOOL, VARIANT_TRUE), L"True");
}

TEST(VariantReference, TextIsCopied) {
    const CBstr text(L"abc");
    BSTR raw = text.Get();
    EXPECT_EQ(TextBehind<BSTR>(VT_BSTR, raw), L"abc");
    BSTR null = nullptr;
    const VARIANT reference = Reference(VT_BSTR, &null);
    CVariant copy(L"before");
    EXPECT_EQ(VariantCopyInd(&copy.Get(), &reference), S_OK);
    EXPECT_EQ(copy.Type(), VT_BSTR);
    EXPECT_EQ(copy.Get().bstrVal, nullptr);
}

TEST(VariantReference, ObjectsAreCounted) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    IDispatch* dispatch = part.Get();
    IUnknown* unknown = part.Get();
    {
        CVariant first;
        CVariant second;
        const VARIANT one = Reference(VT_DISPATCH, &dispatch);
        const VARIANT two = Reference(VT_UNKNOWN, &unknown);
        EXPECT_EQ(VariantCopyInd(&first.Get(), &one), S_OK);
        EXPECT_EQ(VariantChangeType(&second.Get(), &two, 0, VT_DISPATCH), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 3u);
    }
    EXPECT_EQ(CountOf(part.Get()), 1u);
}

TEST(VariantReference, ArrayIsCopied) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 3);
    const VARIANT reference = Reference(VT_ARRAY | VT_I4, &array);
    CVariant copy;
    EXPECT_EQ(VariantCopyInd(&copy.Get(), &reference), S_OK);
    EXPECT_EQ(copy.Type(), VT_ARRAY | VT_I4);
    EXPECT_NE(copy.Get().parray, array);
    EXPECT_EQ(VariantChangeType(copy.Put(), &reference, 0, VT_BSTR), DISP_E_TYPEMISMATCH);
    SafeArrayDestroy(array);
}

TEST(VariantReference, VariantIsFollowedAndWhatItRefersTo) {
    CVariant inner(L"17");
    VARIANT outer = Reference(VT_VARIANT, &inner.Get());
    CVariant number;
    EXPECT_EQ(VariantChangeType(&number.Get(), &outer, 0, VT_I4), S_OK);
    EXPECT_EQ(number.Get().lVal, 17);
    LONG place = 23;
    VARIANT reference = Reference(VT_I4, &place);
    outer = Reference(VT_VARIANT, &reference);
    EXPECT_EQ(VariantChangeType(&number.Get(), &outer, 0, VT_I4), S_OK);
    EXPECT_EQ(number.Get().lVal, 23);
}

TEST(VariantReference, CircleIsRefused) {
    VARIANT circle{};
    circle.vt = VT_BYREF | VT_VARIANT;
    circle.pvarVal = &circle;
    CVariant target(L"untouched");
    EXPECT_EQ(VariantChangeType(&target.Get(), &circle, 0, VT_I4), E_INVALIDARG);
    EXPECT_EQ(VariantCopyInd(&target.Get(), &circle), E_INVALIDARG);
    EXPECT_EQ(target.AsText(), L"untouched");
}

TEST(VariantReference, NullReferenceIsRefusedWhateverItsType) {
    for (const VARTYPE type : {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8, VT_UI8, VT_R4,
                               VT_R8, VT_DATE, VT_BOOL, VT_BSTR, VT_DISPATCH, VT_UNKNOWN, VT_VARIANT, VT_ERROR}) {
        const VARIANT reference = Reference<void>(type, nullptr);
        CVariant target(L"untouched");
        EXPECT_EQ(VariantChangeType(&target.Get(), &reference, 0, VT_I4), E_INVALIDARG) << type;
        EXPECT_EQ(VariantCopyInd(&target.Get(), &reference), E_INVALIDARG) << type;
        EXPECT_EQ(target.AsText(), L"untouched");
    }
}

TEST(VariantReference, TypeThatCannotBeReferredToIsRefused) {
    LONG place = 0;
    const VARIANT reference = Reference(VT_EMPTY, &place);
    CVariant target;
    EXPECT_EQ(VariantChangeType(&target.Get(), &reference, 0, VT_I4), DISP_E_BADVARTYPE);
}

TEST(VariantReference, SourceMayReferToTheTarget) {
    CVariant value(L"31");
    const VARIANT reference = Reference(VT_VARIANT, &value.Get());
    EXPECT_EQ(VariantChangeType(&value.Get(), &reference, 0, VT_I4), S_OK);
    EXPECT_EQ(value.Type(), VT_I4);
    EXPECT_EQ(value.Get().lVal, 31);
}

} // namespace platform::tests
