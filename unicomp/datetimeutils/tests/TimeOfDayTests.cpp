#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "RangeErrorText.h"

namespace {

using namespace dmDateTime;

constexpr SYSTEMTIME AllSet{1, 2, 3, 4, 5, 6, 7, 8};

TEST(TimeToTTime, SplitsEverySecondOfTheDay) {
    DaySeconds seconds = 0;
    for (WORD hour = 0; hour < 24; ++hour)
        for (WORD minute = 0; minute < 60; ++minute)
            for (WORD second = 0; second < 60; ++second) {
                TTime time{};
                TimeToTTime(seconds, time);
                ASSERT_EQ((TTime{hour, minute, second}), time) << seconds;
                ++seconds;
            }
}

TEST(TimeToTTime, RaisesOutsideTheDayWritingNothing) {
    TTime time{9, 9, 9};
    EXPECT_EQ("dmDateTime::TimeToTTime: value of 'aTime' is out of range [0..86399]; aTime = 86400",
              RangeErrorText([&] { TimeToTTime(86400, time); }));
    EXPECT_EQ("dmDateTime::TimeToTTime: value of 'aTime' is out of range [0..86399]; aTime = -1",
              RangeErrorText([&] { TimeToTTime(-1, time); }));
    EXPECT_EQ((TTime{9, 9, 9}), time);
}

TEST(ReplaceTime, SetsTheClockAndClearsTheMilliseconds) {
    SYSTEMTIME moment = AllSet;
    ReplaceTimeInSYSTEMTIME(86399, moment);
    EXPECT_EQ((SYSTEMTIME{1, 2, 3, 4, 23, 59, 59, 0}), moment);
}

TEST(ReplaceTime, RaisesOutsideTheDayWritingNothing) {
    SYSTEMTIME moment = AllSet;
    EXPECT_EQ("dmDateTime::ReplaceTimeInSYSTEMTIME: value of 'aTime' is out of range [0..86399]; aTime = 86400",
              RangeErrorText([&] { ReplaceTimeInSYSTEMTIME(86400, moment); }));
    EXPECT_EQ("dmDateTime::ReplaceTimeInSYSTEMTIME: value of 'aTime' is out of range [0..86399]; aTime = -1",
              RangeErrorText([&] { ReplaceTimeInSYSTEMTIME(-1, moment); }));
    EXPECT_EQ(AllSet, moment);
}

TEST(ReplaceDate, SetsTheDateAndItsWeekdayAndKeepsTheClock) {
    SYSTEMTIME moment = AllSet;
    ReplaceDateInSYSTEMTIME(65380, moment);
    EXPECT_EQ((SYSTEMTIME{2078, 12, 6, 31, 5, 6, 7, 8}), moment);
    ReplaceDateInSYSTEMTIME(2, moment);
    EXPECT_EQ((SYSTEMTIME{1900, 1, 1, 1, 5, 6, 7, 8}), moment);
}

TEST(ReplaceDate, RaisesForTheNullDateThatAConversionAccepts) {
    SYSTEMTIME moment = AllSet;
    EXPECT_EQ("dmDateTime::ReplaceDateInSYSTEMTIME: value of 'aDate' is out of range [2..65380]; aDate = 0",
              RangeErrorText([&] { ReplaceDateInSYSTEMTIME(0, moment); }));
    EXPECT_EQ("dmDateTime::ReplaceDateInSYSTEMTIME: value of 'aDate' is out of range [2..65380]; aDate = 1",
              RangeErrorText([&] { ReplaceDateInSYSTEMTIME(1, moment); }));
    EXPECT_EQ("dmDateTime::ReplaceDateInSYSTEMTIME: value of 'aDate' is out of range [2..65380]; aDate = 65381",
              RangeErrorText([&] { ReplaceDateInSYSTEMTIME(65381, moment); }));
    EXPECT_EQ(AllSet, moment);
}

std::wstring DaySecondsText(DaySeconds time) {
    wchar_t text[16];
    FormatDaySeconds(time, text);
    return text;
}

TEST(FormatDaySeconds, WritesTheClockAndAFractionOfFourZeros) {
    EXPECT_EQ(L"00:00:00.0000", DaySecondsText(0));
    EXPECT_EQ(L"23:59:59.0000", DaySecondsText(86399));
    EXPECT_EQ(L"09:05:07.0000", DaySecondsText((9 * 60 + 5) * 60 + 7));
}

TEST(FormatDaySeconds, RaisesTheErrorOfTimeToTTime) {
    EXPECT_EQ("dmDateTime::TimeToTTime: value of 'aTime' is out of range [0..86399]; aTime = 86400",
              RangeErrorText([] { DaySecondsText(86400); }));
    EXPECT_EQ("dmDateTime::TimeToTTime: value of 'aTime' is out of range [0..86399]; aTime = -1",
              RangeErrorText([] { DaySecondsText(-1); }));
}

} // namespace
