#include "platform/com/bstr.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>

namespace platform {

namespace {

constexpr std::wstring_view WithZeros(L"a\0b\0", 4);

} // namespace

TEST(Bstr, LengthStandsBeforeTheTextInBytes) {
    const CBstr text(L"abc");
    UINT length = 0;
    std::memcpy(&length, reinterpret_cast<const std::byte*>(text.Get()) - 4, 4);
    EXPECT_EQ(length, 3 * sizeof(wchar_t));
    EXPECT_EQ(SysStringByteLen(text.Get()), 3 * sizeof(wchar_t));
    EXPECT_EQ(SysStringLen(text.Get()), 3u);
    EXPECT_EQ(text.Get()[3], L'\0');
}

TEST(Bstr, TextIsAlignedForTheWidestCharacterCopies) {
    const CBstr text(L"x");
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(text.Get()) % 16, 0u);
}

TEST(Bstr, NullHasNoLengthAndMayBeFreed) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysStringByteLen(nullptr), 0u);
    SysFreeString(nullptr);
}

TEST(Bstr, LengthWithoutTextGivesZeros) {
    CBstr text;
    text.Attach(SysAllocStringLen(nullptr, 3));
    EXPECT_EQ(text.View(), std::wstring_view(L"\0\0\0", 3));
}

TEST(Bstr, LengthThatDoesNotFitThePrefixIsRefused) {
    EXPECT_EQ(SysAllocStringLen(nullptr, std::numeric_limits<UINT>::max() / sizeof(wchar_t) + 1), nullptr);
}

TEST(Bstr, EmptyIsNotNull) {
    const CBstr empty(L"");
    EXPECT_FALSE(empty.IsNull());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_TRUE(CBstr().IsNull());
    EXPECT_TRUE(CBstr(nullptr).IsNull());
    EXPECT_TRUE(CBstr(static_cast<const wchar_t*>(nullptr)).IsNull());
    EXPECT_FALSE(CBstr(std::wstring_view()).IsNull());
}

TEST(Bstr, CopiesKeepNullAndEmptyApart) {
    const CBstr null;
    const CBstr empty(L"");
    EXPECT_TRUE(CBstr(null).IsNull());
    EXPECT_FALSE(CBstr(empty).IsNull());
    EXPECT_TRUE(CBstr::Copy(nullptr).IsNull());
    EXPECT_FALSE(CBstr::Copy(empty.Get()).IsNull());
    CBstr assigned(L"before");
    assigned = null;
    EXPECT_TRUE(assigned.IsNull());
    assigned = empty;
    EXPECT_FALSE(assigned.IsNull());
}

TEST(Bstr, CopiesKeepEmbeddedZeros) {
    const CBstr text(WithZeros);
    EXPECT_EQ(text.Length(), 4u);
    EXPECT_EQ(CBstr(text).View(), WithZeros);
    EXPECT_EQ(CBstr::Copy(text.Get()).View(), WithZeros);
    CBstr assigned;
    assigned = text;
    EXPECT_EQ(assigned.View(), WithZeros);
}

TEST(Bstr, CopyIsAStringOfItsOwn) {
    CBstr first(L"abc");
    const CBstr second(first);
    first.Get()[0] = L'x';
    EXPECT_EQ(second.View(), L"abc");
    CBstr& self = first;
    first = self;
    EXPECT_EQ(first.View(), L"xbc");
}

TEST(Bstr, OwnershipMoves) {
    CBstr first(L"abc");
    BSTR const raw = first.Get();
    CBstr second(std::move(first));
    EXPECT_TRUE(first.IsNull());
    EXPECT_EQ(second.Get(), raw);
    EXPECT_EQ(second.Detach(), raw);
    EXPECT_TRUE(second.IsNull());
    second.Attach(raw);
    *second.Put() = SysAllocString(L"new");
    EXPECT_EQ(second.View(), L"new");
    second.Clear();
    EXPECT_STREQ(second.Text(), L"");
}

} // namespace platform
