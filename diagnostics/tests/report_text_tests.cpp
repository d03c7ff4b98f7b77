#include "diagnostics/interface/ReportText.h"

#include <array>
#include <fmt/printf.h>
#include <fmt/xchar.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

using BugSlayerUtil::CArgument;
using BugSlayerUtil::FormatReport;

template <class... A>
std::wstring Format(const wchar_t* format, const A&... arguments) {
    const std::array<CArgument, sizeof...(A)> list{CArgument(arguments)...};
    return FormatReport(format, list);
}

TEST(ReportText, ExpandsAFormatInWideText) {
    EXPECT_EQ(Format(L"sql = '%s'", L"SELECT 1"), L"sql = 'SELECT 1'");
    EXPECT_EQ(Format(L"[Warning] PointValue = %f. [Setting wasn't inserted]", 0.5),
              L"[Warning] PointValue = 0.500000. [Setting wasn't inserted]");
    EXPECT_EQ(Format(L"%d %u %i 100%%", -1, 2u, 3), L"-1 2 3 100%");
}

TEST(ReportText, PrintsANullTextInParentheses) {
    const wchar_t* nothing = nullptr;
    BSTR noText = nullptr;
    const char* narrow = nullptr;
    EXPECT_EQ(Format(L"%s|%s|%s|%s", nothing, noText, narrow, platform::CBstr()), L"(null)|(null)|(null)|(null)");
}

TEST(ReportText, TellsAnEmptyTextFromNull) { EXPECT_EQ(Format(L"<%s>", platform::CBstr(L"")), L"<>"); }

TEST(ReportText, KeepsTheWidthOfANumber) {
    EXPECT_EQ(Format(L"%08X", E_FAIL), L"80004005");
    EXPECT_EQ(Format(L"%u", -1), L"4294967295");
    EXPECT_EQ(Format(L"%lld", std::int64_t{-5'000'000'000}), L"-5000000000");
    EXPECT_EQ(Format(L"%llu", ~std::uint64_t{0}), L"18446744073709551615");
}

// The common conversions are expanded without the library, and must not be told from its own.
TEST(ReportText, SimpleConversionsReadAsInTheLibrary) {
    const int object = 0;
    for (const int number :
         {0, 1, -1, 9, 10, 255, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        for (const wchar_t* format : {L"%d", L"<%d>", L"%X", L"Mask = %X", L"%5d", L"%05X"})
            EXPECT_EQ(Format(format, number), fmt::sprintf(format, number));
    for (const unsigned number : {0u, 10u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        for (const wchar_t* format : {L"%X", L"%u", L"%d", L"%x"})
            EXPECT_EQ(Format(format, number), fmt::sprintf(format, number));
    for (const void* pointer : {static_cast<const void*>(&object), static_cast<const void*>(nullptr),
                                reinterpret_cast<const void*>(0xFEDCBA9876543210)})
        EXPECT_EQ(Format(L"Sink = %p", pointer), fmt::sprintf(L"Sink = %p", pointer));
    EXPECT_EQ(Format(L"%d%%%X|%s|%5.1f", -7, 0xABCDEF, L"text", 2.25),
              fmt::sprintf(L"%d%%%X|%s|%5.1f", -7, 0xABCDEF, L"text", 2.25));
    EXPECT_EQ(Format(L"%s", std::wstring(10'000, L'x')), std::wstring(10'000, L'x'));
    EXPECT_EQ(Format(L"%d", 1, 2), L"1") << "what no conversion asks for is left over";
    EXPECT_EQ(Format(L"a%d", std::int64_t{1}), L"a1");
    EXPECT_EQ(Format(L"%s", std::wstring_view(L"a\0b", 3)), std::wstring_view(L"a\0b", 3));
}

TEST(ReportText, TakesTextOfEveryKind) {
    wchar_t buffer[8] = L"buf";
    EXPECT_EQ(
        Format(L"%s %s %s %s", buffer, std::wstring(L"wide"), std::wstring_view(L"view"), std::string("narrow")),
        L"buf wide view narrow");
    EXPECT_EQ(Format(L"%s", "\xD1\x84"), L"\u0444");
    EXPECT_EQ(Format(L"%s", "\xFF"), L"\u00FF") << "malformed UTF-8 is shown byte by byte";
    EXPECT_EQ(Format(L"%.3s|%5s|%-5s|", L"abcdef", L"ab", L"ab"), L"abc|   ab|ab   |");
    EXPECT_EQ(Format(L"%c%c", L'\u0444', 'x'), L"\u0444x");
}

TEST(ReportText, AFormatThatDoesNotSuitItsArgumentsComesBackWithARemark) {
    EXPECT_TRUE(Format(L"%s and %s", L"one").starts_with(L"%s and %s [the arguments do not suit the format: "));
    EXPECT_TRUE(Format(L"%d", L"text").starts_with(L"%d [the arguments do not suit the format: "));
    EXPECT_TRUE(Format(L"100%").starts_with(L"100%"));
}

TEST(ReportText, ANullFormatIsTheEmptyText) { EXPECT_EQ(Format(nullptr), L""); }

TEST(ReportText, ATextWithoutConversionsStandsAsItIs) { EXPECT_EQ(Format(L"plain {}", 5), L"plain {}"); }

} // namespace
