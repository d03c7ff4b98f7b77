#include "apps/sqstorage/datasets/ZoneRules.h"
#include "apps/sqstorage/week/TradingWeek.h"
#include "apps/sqstorage/week/WeekStrip.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace sqCliTest {

namespace {

using namespace sqCli;
using namespace std::chrono;
using testing::ElementsAre;
using testing::HasSubstr;

const CZoneClock Chicago(ParseZone("360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000"));
const CZoneClock Tokyo(ParseZone("-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000"));
const CZoneClock Gmt{TIME_ZONE_INFORMATION{}};

tagSessionDetail Detail(int startDay, minutes start, int endDay, minutes end) {
    return {{startDay}, {static_cast<std::int32_t>(seconds(start).count())},
            {endDay},   {static_cast<std::int32_t>(seconds(end).count())},
            0,          0,
            0};
}

// Sunday evening to Friday afternoon with an hour's pause a day.
std::vector<tagSessionDetail> Futures() {
    std::vector<tagSessionDetail> details;
    for (int day = 0; day < 5; ++day)
        details.push_back(Detail(day, 17h, day + 1, 16h));
    return details;
}

std::vector<std::string> Times(const CZoneClock& shown, const CZoneClock& session, year_month_day day,
                               const std::vector<tagSessionDetail>& details) {
    const tagWeek week = WeekOf(shown, local_days(day));
    std::vector<std::string> times;
    for (const DayMinutes& minutes : MinutesOf(week, shown, TradingIn(week.Span, session, details)))
        times.push_back(TimesText(minutes));
    return times;
}

TEST(TradingWeek, BeginsOnTheSundayOnOrBeforeTheDay) {
    for (const unsigned day : {8, 11, 14})
        EXPECT_EQ(WeekOf(Chicago, local_days(2026y / 3 / day)).Sunday, local_days(2026y / 3 / 8));
    EXPECT_EQ(WeekOf(Chicago, local_days(2026y / 3 / 7)).Sunday, local_days(2026y / 3 / 1));
}

TEST(TradingWeek, IsAnHourShorterOrLongerWhenTheClockChanges) {
    const auto length = [](year_month_day day) {
        const tagInterval span = WeekOf(Chicago, local_days(day)).Span;
        return span.End - span.Start;
    };
    EXPECT_EQ(length(2026y / 3 / 1), hours(168));
    EXPECT_EQ(length(2026y / 3 / 8), hours(167));
    EXPECT_EQ(length(2026y / 11 / 1), hours(169));
}

TEST(TradingWeek, CrossesMidnightAndOpensOnSundayEvening) {
    EXPECT_THAT(Times(Chicago, Chicago, 2026y / 1 / 14, Futures()),
                ElementsAre("17:00-24:00", "00:00-16:00 17:00-24:00", "00:00-16:00 17:00-24:00",
                            "00:00-16:00 17:00-24:00", "00:00-16:00 17:00-24:00", "00:00-16:00", ""));
}

TEST(TradingWeek, MovesOnAnotherClockWithTheExchangesDaylightSaving) {
    EXPECT_THAT(Times(Gmt, Chicago, 2026y / 3 / 4, Futures()),
                ElementsAre("23:00-24:00", "00:00-22:00 23:00-24:00", "00:00-22:00 23:00-24:00",
                            "00:00-22:00 23:00-24:00", "00:00-22:00 23:00-24:00", "00:00-22:00", ""));
    EXPECT_THAT(Times(Gmt, Chicago, 2026y / 3 / 11, Futures()),
                ElementsAre("22:00-24:00", "00:00-21:00 22:00-24:00", "00:00-21:00 22:00-24:00",
                            "00:00-21:00 22:00-24:00", "00:00-21:00 22:00-24:00", "00:00-21:00", ""));
}

TEST(TradingWeek, OfAClockFarAheadEndsOnItsSaturday) {
    EXPECT_THAT(Times(Tokyo, Chicago, 2026y / 1 / 14, Futures()),
                ElementsAre("", "08:00-24:00", "00:00-07:00 08:00-24:00", "00:00-07:00 08:00-24:00",
                            "00:00-07:00 08:00-24:00", "00:00-07:00 08:00-24:00", "00:00-07:00"));
}

TEST(TradingWeek, HoldsWhatBeganInTheWeekBeforeOnTheSessionsClock) {
    // Sunday morning in Tokyo is still Saturday in Chicago.
    EXPECT_THAT(Times(Tokyo, Chicago, 2026y / 1 / 14, {Detail(6, 16h, 6, 24h)}),
                ElementsAre("07:00-15:00", "", "", "", "", "", ""));
    EXPECT_THAT(Times(Chicago, Chicago, 2026y / 1 / 14, {Detail(6, 23h, 7, 5h)}),
                ElementsAre("00:00-05:00", "", "", "", "", "", "23:00-24:00"));
    EXPECT_THAT(Times(Chicago, Chicago, 2026y / 1 / 14, {Detail(5, 0h, 12, 0h)}),
                ElementsAre("00:00-24:00", "00:00-24:00", "00:00-24:00", "00:00-24:00", "00:00-24:00",
                            "00:00-24:00", "00:00-24:00"));
}

TEST(TradingWeek, HasNoHoleWhereTheClockSkipsAnHour) {
    EXPECT_THAT(Times(Chicago, Chicago, 2026y / 3 / 8, {Detail(0, 0h, 0, 6h)})[0], "00:00-06:00");
    EXPECT_THAT(Times(Chicago, Chicago, 2026y / 3 / 8, {Detail(0, 3h, 0, 6h)})[0], "03:00-06:00");
}

TEST(TradingWeek, ShowsAnHourThatTheClockRepeatsOnce) {
    EXPECT_THAT(Times(Chicago, Chicago, 2026y / 11 / 1, {Detail(0, 0h, 0, 6h)})[0], "00:00-06:00");
    const tagWeek week = WeekOf(Chicago, local_days(2026y / 11 / 1));
    const auto trading = TradingIn(week.Span, Chicago, std::vector{Detail(0, 0h, 0, 6h)});
    ASSERT_EQ(trading.size(), 1U);
    EXPECT_EQ(trading[0].End - trading[0].Start, hours(7));
}

TEST(TradingWeek, GivesWholeStretchesInTheirOrder) {
    const tagWeek week = WeekOf(Gmt, local_days(2026y / 1 / 14));
    const auto trading = TradingIn(week.Span, Tokyo, std::vector{Detail(2, 9h, 2, 15h), Detail(0, 8h, 0, 10h)});
    // The Sunday in Tokyo at the end of the week has begun, too.
    EXPECT_THAT(trading, ElementsAre(tagInterval{sys_days(2026y / 1 / 10) + 23h, sys_days(2026y / 1 / 11) + 1h},
                                     tagInterval{sys_days(2026y / 1 / 13), sys_days(2026y / 1 / 13) + 6h},
                                     tagInterval{sys_days(2026y / 1 / 17) + 23h, sys_days(2026y / 1 / 18) + 1h}));
}

std::string Draw(int width, const std::vector<tagSessionDetail>& details, bool colours = false) {
    const tagWeek week = WeekOf(Gmt, local_days(2026y / 1 / 14));
    return DrawWeek(week.Sunday, MinutesOf(week, Gmt, TradingIn(week.Span, Gmt, details)), width, colours);
}

std::size_t WidestLine(const std::string& text) {
    std::size_t widest = 0;
    std::size_t width = 0;
    for (const char c : text) {
        width = c == '\n' ? 0 : width + ((static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0);
        widest = std::max(widest, width);
    }
    return widest;
}

TEST(WeekStrip, DrawsHalvesAndPartsOfAnHour) {
    EXPECT_EQ(
        Draw(50, {Detail(1, 9h + 30min, 1, 15h), Detail(2, 9h, 2, 15h + 30min), Detail(3, 9h + 5min, 3, 10h)}),
        "            0  3  6  9  12 15 18 21\n"
        "Sun 11 Jan  ························\n"
        "Mon 12 Jan  ·········▐█████·········  09:30-15:00\n"
        "Tue 13 Jan  ·········██████▌········  09:00-15:30\n"
        "Wed 14 Jan  ·········▒··············  09:05-10:00\n"
        "Thu 15 Jan  ························\n"
        "Fri 16 Jan  ························\n"
        "Sat 17 Jan  ························\n");
}

TEST(WeekStrip, FitsTheWidthAndIsAsFineAsItAllows) {
    const std::vector details{Detail(1, 9h + 30min, 1, 16h)};
    for (int width = 24; width <= 200; ++width)
        EXPECT_LE(WidestLine(Draw(width, details)), static_cast<std::size_t>(width));
    EXPECT_THAT(Draw(24, details), HasSubstr("Mon 12 Jan  ····▒███····\n"));
    EXPECT_THAT(Draw(37, details), HasSubstr("Mon 12 Jan  ····▒███····  09:30-16:00\n"));
    EXPECT_THAT(Draw(72, details), HasSubstr("0  3  6  9  12 15 18 21\n"));
    EXPECT_THAT(Draw(73, details), HasSubstr("0     3     6     9     12    15    18    21\n"));
    EXPECT_THAT(Draw(73, details),
                HasSubstr("Mon 12 Jan  ···················█████████████················  09:30-16:00\n"));
    EXPECT_THAT(Draw(121, details), HasSubstr("0           3           6           9           12"));
}

TEST(WeekStrip, IsGreenWithColours) {
    EXPECT_THAT(Draw(80, Futures(), true), HasSubstr("\x1b[32m"));
    EXPECT_THAT(Draw(80, Futures()), testing::Not(HasSubstr("\x1b")));
}

} // namespace

} // namespace sqCliTest
