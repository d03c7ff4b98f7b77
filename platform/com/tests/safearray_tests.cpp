#include "platform/com/safearray.h"
#include "platform/com/tests/Thing.h"
#include "platform/com/variant.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

namespace platform::tests {

namespace {

using CArray = std::unique_ptr<SAFEARRAY, decltype([](SAFEARRAY* array) { SafeArrayDestroy(array); })>;

CArray MakeArray(VARTYPE type, LONG lower, ULONG count) {
    return CArray(SafeArrayCreateVector(type, lower, count));
}

constexpr std::wstring_view WithZero(L"a\0b", 3);

} // namespace

TEST(SafeArray, BoundsAreInclusive) {
    const auto array = MakeArray(VT_I4, -3, 5);
    LONG lower = 0;
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 1, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &upper), S_OK);
    EXPECT_EQ(lower, -3);
    EXPECT_EQ(upper, 1);
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 2, &lower), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 0, &upper), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &lower), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, nullptr), E_INVALIDARG);
}

TEST(SafeArray, EmptyOneEndsBeforeItBegins) {
    const auto array = MakeArray(VT_BSTR, 0, 0);
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &upper), S_OK);
    EXPECT_EQ(upper, -1);
    LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(array.get(), &index, nullptr), DISP_E_BADINDEX);
}

TEST(SafeArray, UpperBoundBeyondALongIsRefused) {
    constexpr LONG top = std::numeric_limits<LONG>::max();
    EXPECT_EQ(SafeArrayCreateVector(VT_UI1, top, 2), nullptr);
    const auto last = MakeArray(VT_UI1, top, 1);
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(last.get(), 1, &upper), S_OK);
    EXPECT_EQ(upper, top);
    BYTE value = 9;
    EXPECT_EQ(SafeArrayPutElement(last.get(), &top, &value), S_OK);
}

TEST(SafeArray, TypeThatIsNoElementIsRefused) {
    EXPECT_EQ(SafeArrayCreateVector(VT_EMPTY, 0, 1), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_ARRAY | VT_I4, 0, 1), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_BYREF | VT_I4, 0, 1), nullptr);
}

TEST(SafeArray, DescriptorTellsSizeTypeAndKindOfElements) {
    constexpr struct {
        VARTYPE Type;
        ULONG Size;
        USHORT Features;
    } cases[] = {{VT_UI1, 1, 0x80},   {VT_I2, 2, 0x80},       {VT_I4, 4, 0x80},        {VT_R8, 8, 0x80},
                 {VT_BSTR, 8, 0x180}, {VT_UNKNOWN, 8, 0x280}, {VT_DISPATCH, 8, 0x480}, {VT_VARIANT, 24, 0x880}};
    for (const auto& expected : cases) {
        const auto array = MakeArray(expected.Type, 0, 2);
        VARTYPE type = VT_EMPTY;
        EXPECT_EQ(SafeArrayGetVartype(array.get(), &type), S_OK);
        EXPECT_EQ(type, expected.Type);
        EXPECT_EQ(array->cDims, 1);
        EXPECT_EQ(array->cbElements, expected.Size);
        EXPECT_EQ(array->fFeatures, expected.Features);
        EXPECT_EQ(array->cLocks, 0u);
    }
}

TEST(SafeArray, TextsAreCopiedInAndOut) {
    const auto array = MakeArray(VT_BSTR, 1, 3);
    LONG index = 1;
    CBstr text(WithZero);
    EXPECT_EQ(SafeArrayPutElement(array.get(), &index, text.Get()), S_OK);
    text.Get()[0] = L'x';
    CBstr read;
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, read.Put()), S_OK);
    EXPECT_EQ(read.View(), WithZero);
    EXPECT_EQ(SafeArrayPutElement(array.get(), &index, text.Get()), S_OK);
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, read.Put()), S_OK);
    EXPECT_EQ(read.View(), std::wstring_view(L"x\0b", 3));
}

TEST(SafeArray, NullAndEmptyTextStayApart) {
    const auto array = MakeArray(VT_BSTR, 0, 2);
    const LONG null = 0;
    const LONG empty = 1;
    EXPECT_EQ(SafeArrayPutElement(array.get(), &null, CBstr(L"to be replaced").Get()), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array.get(), &null, nullptr), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array.get(), &empty, CBstr(L"").Get()), S_OK);
    SAFEARRAY* raw = nullptr;
    ASSERT_EQ(SafeArrayCopy(array.get(), &raw), S_OK);
    const CArray copy(raw);
    for (SAFEARRAY* each : {array.get(), copy.get()}) {
        CBstr text(L"before");
        EXPECT_EQ(SafeArrayGetElement(each, &null, text.Put()), S_OK);
        EXPECT_TRUE(text.IsNull());
        EXPECT_EQ(SafeArrayGetElement(each, &empty, text.Put()), S_OK);
        EXPECT_FALSE(text.IsNull());
    }
}

TEST(SafeArray, ObjectsAreCounted) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    const LONG index = 0;
    {
        const auto array = MakeArray(VT_DISPATCH, 0, 1);
        EXPECT_EQ(SafeArrayPutElement(array.get(), &index, part.Get()), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 2u);
        SAFEARRAY* copy = nullptr;
        ASSERT_EQ(SafeArrayCopy(array.get(), &copy), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 3u);
        EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 2u);
        CComPtr<IDispatch> out;
        EXPECT_EQ(SafeArrayGetElement(array.get(), &index, out.Put()), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 3u);
        EXPECT_EQ(SafeArrayPutElement(array.get(), &index, nullptr), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 2u);
        EXPECT_EQ(SafeArrayPutElement(array.get(), &index, part.Get()), S_OK);
    }
    EXPECT_EQ(CountOf(part.Get()), 1u);
}

TEST(SafeArray, VariantsAreCopiedAndCleared) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    const LONG index = 0;
    {
        const auto array = MakeArray(VT_VARIANT, 0, 1);
        CVariant value(static_cast<IDispatch*>(part.Get()));
        EXPECT_EQ(SafeArrayPutElement(array.get(), &index, &value.Get()), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 3u);
        CVariant read;
        EXPECT_EQ(SafeArrayGetElement(array.get(), &index, read.Put()), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 4u);
        EXPECT_EQ(SafeArrayPutElement(array.get(), &index, nullptr), E_INVALIDARG);
        EXPECT_EQ(SafeArrayPutElement(array.get(), &index, &CVariant(LONG{1}).Get()), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 3u);
    }
    EXPECT_EQ(CountOf(part.Get()), 1u);
}

TEST(SafeArray, IndexOutsideTouchesNothing) {
    const auto array = MakeArray(VT_I4, 10, 2);
    LONG value = 5;
    for (const LONG index : {9, 12, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()}) {
        EXPECT_EQ(SafeArrayPutElement(array.get(), &index, &value), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayGetElement(array.get(), &index, &value), DISP_E_BADINDEX);
    }
    EXPECT_EQ(value, 5);
    const LONG index = 11;
    EXPECT_EQ(SafeArrayPutElement(nullptr, &index, &value), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(array.get(), nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, nullptr), E_INVALIDARG);
}

TEST(SafeArray, AccessLocksAgainstDestruction) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_I4, 0, 2);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    static_cast<LONG*>(data)[1] = 42;
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(array), E_UNEXPECTED);
    const LONG index = 1;
    LONG value = 0;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &value), S_OK);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, NullIsDestroyedAndCopiedAsNull) {
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    SAFEARRAY* copy = reinterpret_cast<SAFEARRAY*>(&copy);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(SafeArrayCopy(nullptr, nullptr), E_POINTER);
}

TEST(SafeArray, ByteArrayHoldsTheBytes) {
    constexpr std::byte bytes[] = {std::byte{0}, std::byte{255}, std::byte{7}};
    const CArray array(MakeByteArray(bytes));
    VARTYPE type = VT_EMPTY;
    SafeArrayGetVartype(array.get(), &type);
    EXPECT_EQ(VT_ARRAY | type, 0x2011);
    EXPECT_TRUE(std::ranges::equal(BytesOf(array.get()), bytes));
    const CArray none(MakeByteArray({}));
    ASSERT_TRUE(none);
    EXPECT_TRUE(BytesOf(none.get()).empty());
    EXPECT_TRUE(BytesOf(nullptr).empty());
    EXPECT_TRUE(BytesOf(MakeArray(VT_I1, 0, 3).get()).empty());
}

} // namespace platform::tests
