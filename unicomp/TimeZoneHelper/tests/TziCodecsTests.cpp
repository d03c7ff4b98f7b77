#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"

#include "diagnostics/tests/recorder/Recorder.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <limits>
#include <random>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tz_help::StringToTZI;
using tz_help::TZIToString;

constexpr LONG Least = std::numeric_limits<LONG>::min();
constexpr LONG Most = std::numeric_limits<LONG>::max();
constexpr const wchar_t* ZeroText = L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000";
constexpr const wchar_t* EasternText = L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";

class TziCodecs : public testing::Test {
protected:
    void SetUp() override { Recorder::Clear(); }
    void TearDown() override { Recorder::Reset(); }

    static std::wstring Text(const TIME_ZONE_INFORMATION& zone) {
        wchar_t text[128];
        TZIToString(zone, text, std::size(text));
        return text;
    }
    static TIME_ZONE_INFORMATION Parsed(const wchar_t* text) {
        TIME_ZONE_INFORMATION zone{};
        EXPECT_TRUE(StringToTZI(text, zone));
        return zone;
    }
    // All fields set, to show which of them a call leaves alone.
    static TIME_ZONE_INFORMATION Filled() {
        TIME_ZONE_INFORMATION zone{};
        zone.Bias = zone.StandardBias = zone.DaylightBias = 7;
        zone.StandardDate = zone.DaylightDate = {1, 2, 3, 4, 5, 6, 7, 8};
        std::fill(std::begin(zone.StandardName), std::end(zone.StandardName), L'S');
        std::fill(std::begin(zone.DaylightName), std::end(zone.DaylightName), L'D');
        return zone;
    }
    static void ExpectRefused(const wchar_t* text) {
        TIME_ZONE_INFORMATION zone = Filled();
        EXPECT_FALSE(StringToTZI(text, zone));
        EXPECT_TRUE(zone == Filled()) << "the target was touched";
    }
};

TEST_F(TziCodecs, EveryPositionIsItsOwnField) {
    const TIME_ZONE_INFORMATION zone = Parsed(L"1,2,3,4,5,06:07:08.0009,10,11,12,13,14:15:16.0017");
    EXPECT_EQ(1, zone.Bias);
    EXPECT_EQ(2, zone.StandardBias);
    EXPECT_EQ((SYSTEMTIME{0, 3, 4, 5, 6, 7, 8, 9}), zone.StandardDate);
    EXPECT_EQ(10, zone.DaylightBias);
    EXPECT_EQ((SYSTEMTIME{0, 11, 12, 13, 14, 15, 16, 17}), zone.DaylightDate);
    EXPECT_EQ(L"1,2,3,4,5,06:07:08.0009,10,11,12,13,14:15:16.0017", Text(zone));
}

TEST_F(TziCodecs, AllZeroRecordRendersSeventeenZerosAndParsesBackToItself) {
    EXPECT_EQ(ZeroText, Text({}));
    EXPECT_TRUE(Parsed(ZeroText) == TIME_ZONE_INFORMATION{});
}

TEST_F(TziCodecs, NegativeBiasKeepsItsSignBothWays) {
    const TIME_ZONE_INFORMATION zone = Parsed(L"-330,-1,0,0,0,00:00:00.0000,-60,0,0,0,00:00:00.0000");
    EXPECT_EQ(-330, zone.Bias);
    EXPECT_EQ(-1, zone.StandardBias);
    EXPECT_EQ(-60, zone.DaylightBias);
    EXPECT_EQ(L"-330,-1,0,0,0,00:00:00.0000,-60,0,0,0,00:00:00.0000", Text(zone));
}

TEST_F(TziCodecs, ZoneWithDaylightSavingParsesBackToItself) {
    EXPECT_EQ(EasternText, Text(Parsed(EasternText)));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(TziCodecs, NullTextIsRefusedSilently) {
    ExpectRefused(nullptr);
    EXPECT_THAT(Recorder::Records(), IsEmpty());
}

TEST_F(TziCodecs, SixteenOrEighteenNumbersAreRefusedAndChangeNothing) {
    ExpectRefused(L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00");
    ExpectRefused(L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000,0");
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"0", L"0"));
}

TEST_F(TziCodecs, EmptyTextIsRefusedWithTheAssertion) {
    ExpectRefused(L"");
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"0"));
}

TEST_F(TziCodecs, TextOfDelimitersAloneHasNoNumbers) {
    ExpectRefused(L",,,,,,,,,,,,,,,,,:.:.");
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"0"));
}

TEST_F(TziCodecs, AssertionNamesItsSourceAndFunction) {
    ExpectRefused(L"1");
    const auto records = Recorder::RecordsOf(L"ASSERT");
    ASSERT_EQ(1u, records.size());
    EXPECT_EQ("TziCodecs", std::filesystem::path(records[0].Value(L"File").AsText()).stem());
    EXPECT_EQ(L"tz_help::StringToTZI", records[0].Function);
}

TEST_F(TziCodecs, DelimitersAreInterchangeableAndARunCountsAsOne) {
    const TIME_ZONE_INFORMATION expected = Parsed(L"1,2,3,4,5,06:07:08.0009,10,11,12,13,14:15:16.0017");
    EXPECT_TRUE(Parsed(L"1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17") == expected);
    EXPECT_TRUE(Parsed(L"1:2:3:4:5.6.7.8.9.10,11:12.13,14,15,16,17") == expected);
    EXPECT_TRUE(Parsed(L".:,1,,2::3..4,.:5,6,7,8,9,10,11,12,13,14,15,16,17,:.") == expected);
}

TEST_F(TziCodecs, EmptyFieldIsNoField) { ExpectRefused(L"1,,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17"); }

TEST_F(TziCodecs, NumbersStopAtWhatIsNoDigit) {
    const TIME_ZONE_INFORMATION zone = Parsed(L"12x34, -5 6,+7,x,\t8y,6,7,8,9,--1,11,12,13,14,15,16,17");
    EXPECT_EQ(12, zone.Bias);
    EXPECT_EQ(-5, zone.StandardBias);
    EXPECT_EQ(7, zone.StandardDate.wMonth);
    EXPECT_EQ(0, zone.StandardDate.wDayOfWeek) << "a piece without digits counts as 0, and as a field";
    EXPECT_EQ(8, zone.StandardDate.wDay);
    EXPECT_EQ(0, zone.DaylightBias);
}

TEST_F(TziCodecs, BlankPieceIsAFieldOfZero) {
    EXPECT_EQ(0, Parsed(L" ,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17").Bias);
    EXPECT_EQ(0, Parsed(L"-,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17").Bias);
}

TEST_F(TziCodecs, BiasIsStoredWholeAndHeldWithin32Bits) {
    EXPECT_EQ(Least, Parsed(L"-2147483648,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17").Bias);
    EXPECT_EQ(Most, Parsed(L"2147483647,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17").Bias);
    EXPECT_EQ(Most, Parsed(L"2147483648,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17").Bias);
    EXPECT_EQ(Least, Parsed(L"-99999999999999999999999,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17").Bias);
}

TEST_F(TziCodecs, NumbersOfADateAreCutTo16Bits) {
    const TIME_ZONE_INFORMATION zone = Parsed(L"1,2,65536,65537,-1,131071,7,8,9,10,11,12,13,14,15,16,-65535");
    EXPECT_EQ(0, zone.StandardDate.wMonth);
    EXPECT_EQ(1, zone.StandardDate.wDayOfWeek);
    EXPECT_EQ(65535, zone.StandardDate.wDay);
    EXPECT_EQ(65535, zone.StandardDate.wHour);
    EXPECT_EQ(1, zone.DaylightDate.wMilliseconds);
}

TEST_F(TziCodecs, YearsBecomeZeroAndNamesAreKept) {
    TIME_ZONE_INFORMATION zone = Filled();
    ASSERT_TRUE(StringToTZI(EasternText, zone));
    EXPECT_EQ(0, zone.StandardDate.wYear);
    EXPECT_EQ(0, zone.DaylightDate.wYear);
    EXPECT_TRUE(std::ranges::equal(Filled().StandardName, zone.StandardName));
    EXPECT_TRUE(std::ranges::equal(Filled().DaylightName, zone.DaylightName));
}

TEST_F(TziCodecs, CallersTextIsNotWrittenTo) {
    wchar_t text[64];
    std::copy_n(EasternText, std::wcslen(EasternText) + 1, text);
    TIME_ZONE_INFORMATION zone{};
    ASSERT_TRUE(StringToTZI(text, zone));
    EXPECT_STREQ(EasternText, text);
}

TEST_F(TziCodecs, LongTextIsRefusedWhateverItsLength) {
    std::wstring text;
    for (int i = 0; i < 100000; ++i)
        text += L"1,";
    ExpectRefused(text.c_str());
}

TEST_F(TziCodecs, YearsDoNotAppearInTheText) {
    TIME_ZONE_INFORMATION zone{};
    zone.StandardDate.wYear = 2024;
    zone.DaylightDate.wYear = 2025;
    EXPECT_EQ(ZeroText, Text(zone));
}

TEST_F(TziCodecs, MillisecondsPrintInFourDigitsAndTheClockInTwo) {
    TIME_ZONE_INFORMATION zone{};
    zone.StandardDate = {0, 10, 0, 5, 3, 4, 5, 67};
    zone.DaylightDate = {0, 3, 0, 5, 23, 59, 59, 999};
    EXPECT_EQ(L"0,0,10,0,5,03:04:05.0067,0,3,0,5,23:59:59.0999", Text(zone));
}

TEST_F(TziCodecs, TextIsCutToTheBufferAndTerminated) {
    const std::wstring whole = EasternText;
    const TIME_ZONE_INFORMATION zone = Parsed(EasternText);
    for (std::size_t capacity = 1; capacity <= whole.size() + 2; ++capacity) {
        std::array<wchar_t, 64> buffer;
        buffer.fill(L'#');
        TZIToString(zone, buffer.data(), capacity);
        ASSERT_EQ(whole.substr(0, capacity - 1), buffer.data());
        ASSERT_EQ(L'#', buffer[capacity]);
    }
}

TEST_F(TziCodecs, NoBufferIsLeftAlone) {
    TZIToString({}, nullptr, 128);
    wchar_t untouched = L'#';
    TZIToString({}, &untouched, 0);
    EXPECT_EQ(L'#', untouched);
}

TEST_F(TziCodecs, LongestZoneFits128Characters) {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = zone.StandardBias = zone.DaylightBias = Least;
    zone.StandardDate = zone.DaylightDate = {65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535};
    const std::wstring text = Text(zone);
    EXPECT_TRUE(text.ends_with(L",65535:65535:65535.65535")) << text.size();
    zone.StandardDate.wYear = zone.DaylightDate.wYear = 0;
    EXPECT_TRUE(Parsed(text.c_str()) == zone);
}

TEST_F(TziCodecs, AnyRecordSurvivesTheRoundTrip) {
    std::mt19937 random(1);
    for (int i = 0; i < 10000; ++i) {
        TIME_ZONE_INFORMATION zone{};
        for (LONG* bias : {&zone.Bias, &zone.StandardBias, &zone.DaylightBias})
            *bias = static_cast<LONG>(random());
        for (SYSTEMTIME* date : {&zone.StandardDate, &zone.DaylightDate})
            for (WORD* field : {&date->wMonth, &date->wDayOfWeek, &date->wDay, &date->wHour, &date->wMinute,
                                &date->wSecond, &date->wMilliseconds})
                *field = static_cast<WORD>(random());
        ASSERT_TRUE(Parsed(Text(zone).c_str()) == zone) << i;
    }
}

} // namespace
