#include "platform/text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <functional>

namespace platform {
namespace {

// The offset at which the conversion stops, and the message in `text`.
std::size_t FaultOf(const std::function<void()>& convert, std::string& text) {
    try {
        convert();
    } catch (const CTextError& error) {
        text = error.what();
        return error.Offset();
    }
    ADD_FAILURE() << "malformed text was taken";
    return std::string::npos;
}

std::size_t FaultOfUtf8(std::string_view bytes, std::string& text) {
    return FaultOf([bytes] { static_cast<void>(FromUtf8(bytes)); }, text);
}

std::size_t FaultOfUtf16(std::string_view bytes, std::string& text) {
    return FaultOf([bytes] { static_cast<void>(FromUtf16Le(bytes)); }, text);
}

TEST(Text, GoesToUtf8AndBack) {
    const std::wstring text = L"a\u00E9\u0416\u20AC\U0001F600";
    const std::string bytes = "a\xC3\xA9\xD0\x96\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(ToUtf8(text), bytes);
    EXPECT_EQ(FromUtf8(bytes), text);
    EXPECT_EQ(ToUtf8(L""), "");
    EXPECT_EQ(FromUtf8(""), L"");
}

TEST(Text, GoesOnBehindAnEmbeddedZero) {
    using namespace std::literals;
    EXPECT_EQ(ToUtf8(L"a\0b"sv), "a\0b"s);
    EXPECT_EQ(FromUtf8("a\0b"sv), L"a\0b"s);
    EXPECT_EQ(ToUtf8(L"a\0\u0416"sv), "a\0\xD0\x96"s);
    EXPECT_EQ(FromUtf8("a\0\xD0\x96"sv), L"a\0\u0416"s);
    EXPECT_EQ(FromCp1251("a\0\xC6"sv), L"a\0\u0416"s);
    EXPECT_EQ(ToUtf16Le(L"a\0b"sv), "a\0\0\0b\0"s);
    EXPECT_EQ(FromUtf16Le("a\0\0\0b\0"sv), L"a\0b"s);
}

TEST(Text, RefusesMalformedUtf8AtItsOffset) {
    std::string text;
    EXPECT_EQ(FaultOfUtf8("abc\xFFxyz", text), 3U);
    EXPECT_EQ(text, "text is no valid UTF-8: byte 0xFF at offset 3");
    EXPECT_EQ(FaultOfUtf8("ab\xE2\x82", text), 2U) << "cut off in the middle of a character";
    EXPECT_EQ(FaultOfUtf8("\xC0\xAF", text), 0U) << "overlong";
    EXPECT_EQ(FaultOfUtf8("\xD0\x96\xED\xA0\x80", text), 2U) << "half of a surrogate pair";
    EXPECT_EQ(FaultOfUtf8("x\xF4\x90\x80\x80", text), 1U) << "beyond U+10FFFF";
}

TEST(Text, RefusesWideCharactersThatAreNone) {
    std::string text;
    const std::wstring surrogate{L'a', static_cast<wchar_t>(0xD800), L'b'};
    const std::wstring beyond{L'a', L'b', static_cast<wchar_t>(0x110000)};
    EXPECT_EQ(FaultOf([&] { static_cast<void>(ToUtf8(surrogate)); }, text), 1U);
    EXPECT_EQ(text, "text is no valid Unicode: character 0xD800 at offset 1");
    EXPECT_EQ(FaultOf([&] { static_cast<void>(ToUtf8(beyond)); }, text), 2U);
    EXPECT_EQ(FaultOf([&] { static_cast<void>(ToUtf16Le(surrogate)); }, text), 1U);
    EXPECT_EQ(FaultOf([&] { static_cast<void>(FoldCase(surrogate)); }, text), 1U);
    EXPECT_EQ(FaultOf([&] { static_cast<void>(ToUpper(surrogate)); }, text), 1U);
}

TEST(Text, GoesToUtf16AndBack) {
    const std::string bytes("a\0\x16\x04\x3D\xD8\x00\xDE", 8);
    EXPECT_EQ(ToUtf16Le(L"a\u0416\U0001F600"), bytes);
    EXPECT_EQ(FromUtf16Le(bytes), L"a\u0416\U0001F600");
    EXPECT_EQ(FromUtf16Le(std::string("\xFF\xFE", 2)), L"\uFEFF") << "the byte order mark stays";
    EXPECT_EQ(FromUtf16Le(""), L"");
}

TEST(Text, RefusesMalformedUtf16AtItsByteOffset) {
    std::string text;
    EXPECT_EQ(FaultOfUtf16(std::string_view("a\0b", 3), text), 2U);
    EXPECT_EQ(text, "text is no valid UTF-16: half a unit at offset 2");
    EXPECT_EQ(FaultOfUtf16(std::string_view("a\0\x3D\xD8", 4), text), 2U) << "the pair is cut off";
    EXPECT_EQ(text, "text is no valid UTF-16: unit 0xD83D at offset 2");
    EXPECT_EQ(FaultOfUtf16(std::string_view("\0\xDE"
                                            "a\0",
                                            4),
                           text),
              0U)
        << "the second half comes first";
}

TEST(Text, ComesFromCodePage1251) {
    EXPECT_EQ(FromCp1251("plain"), L"plain");
    EXPECT_EQ(FromCp1251("\xCC\xEE\xF1\xEA\xE2\xE0 \xB9 \x88"),
              L"\u041C\u043E\u0441\u043A\u0432\u0430 \u2116 \u20AC");
}

TEST(Text, RefusesTheUndefinedByteOfCodePage1251) {
    std::string text;
    EXPECT_EQ(FaultOf([] { static_cast<void>(FromCp1251("\xCC\xEE\x98")); }, text), 2U);
    EXPECT_EQ(text, "text is no valid code page 1251: byte 0x98 at offset 2");
}

TEST(Text, EveryOtherByteOfCodePage1251IsTaken) {
    for (int byte = 0; byte < 256; ++byte) {
        if (byte == 0x98)
            continue;
        EXPECT_EQ(FromCp1251(std::string(1, static_cast<char>(byte))).size(), 1U) << byte;
    }
}

TEST(Text, FoldsCaseBeyondAscii) {
    EXPECT_EQ(FoldCase(L"SOFTWARE\\Abc@[`{1"), L"software\\abc@[`{1");
    EXPECT_EQ(FoldCase(L"\u0416\u00DC-A"), FoldCase(L"\u0436\u00FC-a"));
    EXPECT_NE(FoldCase(L"\u0416"), FoldCase(L"\u0417"));
}

TEST(Text, TurnsEachLetterIntoItsCapital) {
    EXPECT_EQ(ToUpper(L"esZ09 @[`{|"), L"ESZ09 @[`{|");
    EXPECT_EQ(ToUpper(L"\u0436\u00FC\u0416\u4E2D"), L"\u0416\u00DC\u0416\u4E2D");
    EXPECT_EQ(ToUpper(std::wstring(L"a\0b", 3)), std::wstring(L"A\0B", 3));
    EXPECT_EQ(ToUpper(L""), L"");
}

TEST(Text, ALetterWithoutASingleCapitalStays) { EXPECT_EQ(ToUpper(L"gro\u00DF"), L"GRO\u00DF"); }

TEST(Text, DoesNotFollowTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"C", "C.UTF-8"}) {
        std::setlocale(LC_ALL, locale);
        EXPECT_EQ(ToUtf8(L"\u0416"), "\xD0\x96") << locale;
        EXPECT_EQ(FoldCase(L"\u0416"), L"\u0436") << locale;
        EXPECT_EQ(ToUpper(L"\u0436i"), L"\u0416I") << locale;
    }
    std::setlocale(LC_ALL, before.c_str());
}

} // namespace
} // namespace platform
