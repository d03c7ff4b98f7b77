#include "platform/posix/zone_rule.h"

#include <gtest/gtest.h>

namespace {

using namespace platform;
using std::chrono::sys_days;
using std::chrono::year;

TIME_ZONE_INFORMATION ZoneOf(std::string_view text, int inYear = 2025) {
    const auto rule = ParseZoneRule(text);
    EXPECT_TRUE(rule) << text;
    if (!rule)
        return {};
    return ToTimeZoneInformation(NormalizedFor(*rule, year(inYear)), year(inYear));
}
constexpr SYSTEMTIME Rule(WORD month, WORD week, WORD weekday, WORD hour, WORD minute = 0, WORD second = 0,
                          WORD milliseconds = 0) {
    return {0, month, weekday, week, hour, minute, second, milliseconds};
}

TEST(ZoneRule, StandardTimeAlone) {
    const auto zone = ZoneOf("IST-5:30");
    EXPECT_EQ(-330, zone.Bias);
    EXPECT_STREQ(L"IST", zone.StandardName);
    EXPECT_EQ(0, zone.StandardDate.wMonth);
    EXPECT_EQ(SYSTEMTIME{}, zone.DaylightDate);
    EXPECT_EQ(0, zone.DaylightBias);
    EXPECT_STREQ(L"", zone.DaylightName);
}

TEST(ZoneRule, ChangesAreToldOnTheClockBeforeThem) {
    const auto zone = ZoneOf("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(-60, zone.Bias);
    EXPECT_EQ(0, zone.StandardBias);
    EXPECT_EQ(-60, zone.DaylightBias);
    EXPECT_EQ(Rule(3, 5, 0, 2), zone.DaylightDate);
    EXPECT_EQ(Rule(10, 5, 0, 3), zone.StandardDate);
    EXPECT_STREQ(L"CET", zone.StandardName);
    EXPECT_STREQ(L"CEST", zone.DaylightName);
}

TEST(ZoneRule, NamesInBracketsAndOffsetsToTheMinute) {
    const auto zone = ZoneOf("<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45");
    EXPECT_EQ(-765, zone.Bias);
    EXPECT_EQ(-60, zone.DaylightBias);
    EXPECT_EQ(Rule(9, 5, 0, 2, 45), zone.DaylightDate);
    EXPECT_EQ(Rule(4, 1, 0, 3, 45), zone.StandardDate);
    EXPECT_STREQ(L"+1245", zone.StandardName);
}

TEST(ZoneRule, DaylightSavingOfItsOwnOffset) {
    EXPECT_EQ(-30, ZoneOf("<+1030>-10:30<+11>-11,M10.1.0,M4.1.0").DaylightBias);
    EXPECT_EQ(-120, ZoneOf("<+00>0<+02>-2,M3.5.0/1,M10.5.0/3").DaylightBias);
}

TEST(ZoneRule, MidnightAtTheEndOfADayIsItsLastMillisecond) {
    const auto zone = ZoneOf("<-04>4<-03>,M9.1.6/24,M4.1.6/24");
    EXPECT_EQ(Rule(9, 1, 6, 23, 59, 59, 999), zone.DaylightDate);
    EXPECT_EQ(Rule(4, 1, 6, 23, 59, 59, 999), zone.StandardDate);
}

TEST(ZoneRule, DaylightSavingInWinterIsTurnedRound) {
    const auto zone = ZoneOf("IST-1GMT0,M10.5.0,M3.5.0/1");
    EXPECT_EQ(0, zone.Bias);
    EXPECT_EQ(-60, zone.DaylightBias);
    EXPECT_EQ(Rule(3, 5, 0, 1), zone.DaylightDate);
    EXPECT_EQ(Rule(10, 5, 0, 2), zone.StandardDate);
    EXPECT_STREQ(L"GMT", zone.StandardName);
    EXPECT_STREQ(L"IST", zone.DaylightName);
}

TEST(ZoneRule, DaylightSavingAllTheYearIsAStandardTime) {
    for (const int inYear : {2024, 2025}) {
        const auto zone = ZoneOf("XXX3EDT4,0/0,J365/23", inYear);
        EXPECT_EQ(240, zone.Bias);
        EXPECT_STREQ(L"EDT", zone.StandardName);
        EXPECT_EQ(0, zone.StandardDate.wMonth);
        EXPECT_EQ(0, zone.DaylightBias);
    }
}

TEST(ZoneRule, DaylightSavingOfNoLengthIsNone) {
    const auto zone = ZoneOf("EST5EDT,M3.2.0/2,M3.2.0/3");
    EXPECT_EQ(300, zone.Bias);
    EXPECT_EQ(0, zone.StandardDate.wMonth);
}

TEST(ZoneRule, NoDatesMeansThoseOfTheUnitedStates) {
    const auto zone = ZoneOf("EST5EDT");
    EXPECT_EQ(300, zone.Bias);
    EXPECT_EQ(-60, zone.DaylightBias);
    EXPECT_EQ(Rule(3, 2, 0, 2), zone.DaylightDate);
    EXPECT_EQ(Rule(11, 1, 0, 2), zone.StandardDate);
}

TEST(ZoneRule, DayOfTheYearBecomesItsWeekdayInThatYear) {
    // 1 March and 30 September, a Saturday and a Tuesday in 2025.
    const auto zone = ZoneOf("AAA3BBB,J60/0,J273/1", 2025);
    EXPECT_EQ(Rule(3, 1, 6, 0), zone.DaylightDate);
    EXPECT_EQ(Rule(9, 5, 2, 1), zone.StandardDate);
    // The 60th day of a leap year is 1 March without the leap day, and 29 February, a Thursday, with it.
    EXPECT_EQ(Rule(3, 1, 5, 0), ZoneOf("AAA3BBB,J60/0,J273/1", 2024).DaylightDate);
    EXPECT_EQ(Rule(2, 5, 4, 0), ZoneOf("AAA3BBB,59/0,J273/1", 2024).DaylightDate);
    EXPECT_EQ(Rule(2, 4, 5, 0), ZoneOf("AAA3BBB,J59/0,J273/1", 2025).DaylightDate);
}

TEST(ZoneRule, TimeOutsideTheNamedDayBecomesTheDayOnWhichItFallsInThatYear) {
    // The Friday before the last Sunday of March is the fourth in 2025 and the fifth in 2030.
    EXPECT_EQ(Rule(3, 4, 5, 2), ZoneOf("IST-2IDT,M3.4.4/26,M10.5.0", 2025).DaylightDate);
    EXPECT_EQ(Rule(3, 5, 5, 2), ZoneOf("IST-2IDT,M3.4.4/26,M10.5.0", 2030).DaylightDate);
    // An hour before the last Sunday of March, on the evening of the fifth Saturday.
    EXPECT_EQ(Rule(3, 5, 6, 23), ZoneOf("<-02>2<-01>,M3.5.0/-1,M10.5.0/0", 2025).DaylightDate);
    EXPECT_EQ(Rule(3, 4, 6, 23), ZoneOf("<-02>2<-01>,M3.5.0/-1,M10.5.0/0", 2026).DaylightDate);
    // Before the first day of a month and of a year.
    EXPECT_EQ(Rule(2, 4, 5, 23), ZoneOf("AAA3BBB,M3.1.6/-1,M10.5.0", 2025).DaylightDate);
    EXPECT_EQ(Rule(12, 5, 2, 23), ZoneOf("AAA3BBB,J1/-1,M10.5.0", 2025).DaylightDate);
}

TEST(ZoneRule, OffsetsWithSecondsAreRoundedToTheMinute) {
    EXPECT_EQ(-90, ZoneOf("LMT-1:29:30").Bias);
    EXPECT_EQ(-89, ZoneOf("LMT-1:29:29").Bias);
    EXPECT_EQ(90, ZoneOf("LMT+1:29:30").Bias);
}

TEST(ZoneRule, LongNamesAreCutToTheRecord) {
    const auto zone = ZoneOf("<" + std::string(40, 'A') + ">0");
    EXPECT_EQ(std::wstring(31, L'A'), zone.StandardName);
}

TEST(ZoneRule, WidestTimesAreTaken) {
    EXPECT_TRUE(ParseZoneRule("AAA24BBB-24,M1.1.0/167:59:59,M12.5.6/-167:59:59"));
    EXPECT_TRUE(ParseZoneRule("AAA0BBB,0,365"));
    EXPECT_TRUE(ParseZoneRule("AAA+0BBB+1,J1/+0,J365/0"));
}

TEST(ZoneRule, AnythingElseIsRefused) {
    for (const std::string_view text : {"",
                                        "A",
                                        "AB3",
                                        "ABC",
                                        "3",
                                        "ABC:",
                                        "ABC3:",
                                        "ABC25",
                                        "ABC3:60",
                                        "ABC3:00:60",
                                        "ABC3:0:0:0",
                                        "ABC3 ",
                                        "<ABC3",
                                        "<AB>3",
                                        "<A_C>3",
                                        "AAA3BBB,",
                                        "AAA3BB",
                                        "AAA3BBB4,M3.1.0",
                                        "AAA3BBB,M3.1.0,",
                                        "AAA3BBB,M0.1.0,M10.1.0",
                                        "AAA3BBB,M13.1.0,M10.1.0",
                                        "AAA3BBB,M3.0.0,M10.1.0",
                                        "AAA3BBB,M3.6.0,M10.1.0",
                                        "AAA3BBB,M3.1.7,M10.1.0",
                                        "AAA3BBB,M3.1,M10.1.0",
                                        "AAA3BBB,M3-1-0,M10.1.0",
                                        "AAA3BBB,J0,J1",
                                        "AAA3BBB,J366,J1",
                                        "AAA3BBB,366,1",
                                        "AAA3BBB,-1,1",
                                        "AAA3BBB,M3.1.0/168,M10.1.0",
                                        "AAA3BBB,M3.1.0/,M10.1.0",
                                        "AAA3BBB,M3.1.0,M10.1.0 ",
                                        "AAA3BBB,M3.1.0,M10.1.0,",
                                        "AAA99999999999999999999",
                                        "AAA--3",
                                        "Europe/Berlin",
                                        "AAA3BBB25"})
        EXPECT_FALSE(ParseZoneRule(text)) << text;
}

TEST(ZoneRule, SeasonsOfBothHemispheres) {
    const auto north = NormalizedFor(*ParseZoneRule("CET-1CEST,M3.5.0,M10.5.0/3"), year(2025));
    using std::chrono::hours;
    using std::chrono::seconds;
    const auto spring = sys_days(year(2025) / 3 / 30) + hours(1);
    const auto autumn = sys_days(year(2025) / 10 / 26) + hours(1);
    EXPECT_FALSE(IsDaylight(north, spring - seconds(1)));
    EXPECT_TRUE(IsDaylight(north, spring));
    EXPECT_TRUE(IsDaylight(north, autumn - seconds(1)));
    EXPECT_FALSE(IsDaylight(north, autumn));
    const auto south = NormalizedFor(*ParseZoneRule("NZST-12NZDT,M9.5.0,M4.1.0/3"), year(2025));
    EXPECT_TRUE(IsDaylight(south, sys_days(year(2025) / 1 / 1)));
    EXPECT_FALSE(IsDaylight(south, sys_days(year(2025) / 7 / 1)));
    EXPECT_TRUE(IsDaylight(south, sys_days(year(2025) / 12 / 31)));
    EXPECT_FALSE(IsDaylight(*ParseZoneRule("UTC0"), spring));
}

} // namespace
