#include "apps/sqstorage/datasets/ZoneRules.h"
#include "apps/sqstorage/week/ZoneClock.h"

#include <gtest/gtest.h>

namespace sqCliTest {

namespace {

using namespace sqCli;
using namespace std::chrono;

const CZoneClock Chicago(ParseZone("360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000"));
const CZoneClock London(ParseZone("0,0,10,0,5,02:00:00.0000,-60,3,0,5,01:00:00.0000"));
const CZoneClock Sydney(ParseZone("-600,0,4,0,1,03:00:00.0000,-60,10,0,1,02:00:00.0000"));
const CZoneClock Tokyo(ParseZone("-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000"));

sys_seconds Utc(year_month_day day, minutes time = 0min) { return sys_days(day) + time; }
local_seconds At(year_month_day day, minutes time = 0min) { return local_days(day) + time; }

TEST(ZoneClock, NorthOfTheEquatorSummerIsInTheMiddleOfTheYear) {
    EXPECT_EQ(Chicago.OffsetAt(Utc(2026y / 3 / 8, 7h + 59min)), -6h);
    EXPECT_EQ(Chicago.OffsetAt(Utc(2026y / 3 / 8, 8h)), -5h);
    EXPECT_EQ(Chicago.OffsetAt(Utc(2026y / 11 / 1, 6h + 59min)), -5h);
    EXPECT_EQ(Chicago.OffsetAt(Utc(2026y / 11 / 1, 7h)), -6h);
    EXPECT_EQ(London.OffsetAt(Utc(2026y / 3 / 29, 59min)), 0h);
    EXPECT_EQ(London.OffsetAt(Utc(2026y / 3 / 29, 1h)), 1h);
    EXPECT_EQ(London.OffsetAt(Utc(2026y / 10 / 25, 59min)), 1h);
    EXPECT_EQ(London.OffsetAt(Utc(2026y / 10 / 25, 1h)), 0h);
}

TEST(ZoneClock, SouthOfTheEquatorSummerSpansTheTurnOfTheYear) {
    EXPECT_EQ(Sydney.OffsetAt(Utc(2026y / 12 / 31, 23h)), 11h);
    EXPECT_EQ(Sydney.OffsetAt(Utc(2027y / 1 / 1)), 11h);
    EXPECT_EQ(Sydney.OffsetAt(Utc(2026y / 4 / 4, 15h + 59min)), 11h);
    EXPECT_EQ(Sydney.OffsetAt(Utc(2026y / 4 / 4, 16h)), 10h);
    EXPECT_EQ(Sydney.OffsetAt(Utc(2026y / 10 / 3, 15h + 59min)), 10h);
    EXPECT_EQ(Sydney.OffsetAt(Utc(2026y / 10 / 3, 16h)), 11h);
}

TEST(ZoneClock, AZoneWithoutDaylightSavingStaysAsItIs) {
    EXPECT_EQ(Tokyo.OffsetAt(Utc(2026y / 1 / 1)), 9h);
    EXPECT_EQ(Tokyo.OffsetAt(Utc(2026y / 7 / 1)), 9h);
    EXPECT_EQ(CZoneClock({}).OffsetAt(Utc(2026y / 7 / 1)), 0h);
    // The biases of seasons that never come do not count.
    EXPECT_EQ(
        CZoneClock(ParseZone("-540,-30,0,0,0,00:00:00.0000,-60,0,0,0,00:00:00.0000")).OffsetAt(Utc(2026y / 7 / 1)),
        9h);
}

TEST(ZoneClock, ATimeThatTheClockShowsTwiceIsTheFirst) {
    EXPECT_EQ(Chicago.ToUtc(At(2026y / 11 / 1, 1h + 30min)), Utc(2026y / 11 / 1, 6h + 30min));
    EXPECT_EQ(Chicago.ToUtc(At(2026y / 11 / 1, 2h)), Utc(2026y / 11 / 1, 8h));
}

TEST(ZoneClock, ATimeThatTheClockSkipsIsCountedOnFromTheChange) {
    EXPECT_EQ(Chicago.ToUtc(At(2026y / 3 / 8, 2h + 30min)), Utc(2026y / 3 / 8, 8h + 30min));
    EXPECT_EQ(Chicago.ToLocal(Utc(2026y / 3 / 8, 8h + 30min)), At(2026y / 3 / 8, 3h + 30min));
}

TEST(ZoneClock, EveryMomentComesBackFromTheClockButForTheHourThatItRepeats) {
    for (const CZoneClock& clock : {Chicago, London, Sydney, Tokyo})
        for (sys_seconds moment = Utc(2026y / 1 / 1); moment < Utc(2027y / 1 / 1); moment += 30min) {
            const sys_seconds back = clock.ToUtc(clock.ToLocal(moment));
            EXPECT_TRUE(back == moment || (back == moment - 1h && clock.OffsetAt(back) != clock.OffsetAt(moment)));
        }
}

} // namespace

} // namespace sqCliTest
