// What becomes of a zone's clock fields when a database keeps them as a text and gives them back as seconds.

#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"
#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "RangeErrorText.h"

namespace {

using namespace dmDateTime;

TIME_ZONE_INFORMATION Parsed(const wchar_t* text) {
    TIME_ZONE_INFORMATION zone{};
    EXPECT_TRUE(tz_help::StringToTZI(text, zone));
    return zone;
}
std::wstring Text(const TIME_ZONE_INFORMATION& zone) {
    wchar_t text[128];
    tz_help::TZIToString(zone, text, std::size(text));
    return text;
}
constexpr DaySeconds Seconds(const SYSTEMTIME& date) {
    return (date.wHour * 60 + date.wMinute) * 60 + date.wSecond;
}

TEST(ZoneColumns, MillisecondsDoNotSurviveTheTrip) {
    TIME_ZONE_INFORMATION zone = Parsed(L"240,0,4,6,1,23:59:58.0999,-60,9,6,1,01:02:03.0004");
    wchar_t column[16];
    FormatDaySeconds(Seconds(zone.StandardDate), column);
    EXPECT_STREQ(L"23:59:58.0000", column);
    ReplaceTimeInSYSTEMTIME(Seconds(zone.StandardDate), zone.StandardDate);
    ReplaceTimeInSYSTEMTIME(Seconds(zone.DaylightDate), zone.DaylightDate);
    EXPECT_EQ(L"240,0,4,6,1,23:59:58.0000,-60,9,6,1,01:02:03.0000", Text(zone));
}

TEST(ZoneColumns, ClockFieldsThatAreNoTimeRaiseTheErrorOfTimeToTTime) {
    const TIME_ZONE_INFORMATION zone = Parsed(L"0,0,4,6,1,24:00:00.0000,0,9,6,1,00:00:00.0000");
    wchar_t column[16];
    EXPECT_EQ("dmDateTime::TimeToTTime: value of 'aTime' is out of range [0..86399]; aTime = 86400",
              RangeErrorText([&] { FormatDaySeconds(Seconds(zone.StandardDate), column); }));
}

TEST(ZoneColumns, SecondsOutsideTheDayRaiseTheErrorOfReplaceTime) {
    TIME_ZONE_INFORMATION zone{};
    EXPECT_EQ("dmDateTime::ReplaceTimeInSYSTEMTIME: value of 'aTime' is out of range [0..86399]; aTime = 90000",
              RangeErrorText([&] { ReplaceTimeInSYSTEMTIME(90000, zone.StandardDate); }));
}

TEST(ZoneColumns, WithoutDaylightSavingTheStandardMonthStaysZero) {
    const TIME_ZONE_INFORMATION zone = Parsed(L"-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000");
    EXPECT_EQ(0, zone.StandardDate.wMonth);
    EXPECT_EQ(L"-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000", Text(zone));
}

TEST(ZoneColumns, ATextThatDoesNotParseLeavesMidnights) {
    TIME_ZONE_INFORMATION zone{};
    EXPECT_FALSE(tz_help::StringToTZI(L"nonsense", zone));
    wchar_t column[16];
    FormatDaySeconds(Seconds(zone.StandardDate), column);
    EXPECT_STREQ(L"00:00:00.0000", column);
    EXPECT_TRUE(zone == TIME_ZONE_INFORMATION{});
}

} // namespace
