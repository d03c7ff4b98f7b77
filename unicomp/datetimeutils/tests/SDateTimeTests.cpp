#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "RangeErrorText.h"

#include <limits>
#include <set>
#include <type_traits>

namespace {

using namespace dmDateTime;

constexpr std::int64_t TicksPerHour = SDateTime::TicksPerDay / 24;

constexpr SDateTime At(JulianDate day, std::int64_t timeTicks = 0) {
    return SDateTime::FromTicks(SDateTime::FromJulian(day).Ticks() + timeTicks);
}
std::string AddError(SDateTime& value, LONG days) {
    return RangeErrorText([&] { value.AddDays(days); });
}

static_assert(sizeof(SDateTime) == 8 && std::is_trivially_copyable_v<SDateTime>);
static_assert(SDateTime::TicksPerDay == 864000000000 && SDateTime::TicksPerSecond == 10000000);
static_assert(SDateTime::JulianOffsetDays == 693593);
static_assert(SDateTime::JulianZeroTicks == 599264352000000000);
static_assert(SDateTime::MinDateTicks == 599266080000000000);
static_assert(At(3).AddDays(-1) == At(2));

TEST(SDateTime, TicksOfADayAreItsNumberSinceYearOneInTicks) {
    for (JulianDate day = 0; day <= LastDate; ++day) {
        ASSERT_EQ((day + 693593) * 864000000000, SDateTime::FromJulian(day).Ticks());
        ASSERT_EQ(day, SDateTime::FromJulian(day).ToJulian());
        ASSERT_EQ(day, At(day, SDateTime::TicksPerDay - 1).ToJulian());
    }
}

TEST(SDateTime, DayNumberIsRoundedTowardTheNullDate) {
    EXPECT_EQ(0, At(0, -1).ToJulian());
    EXPECT_EQ(0, At(-1, 1).ToJulian());
    EXPECT_EQ(-1, At(-1).ToJulian());
    EXPECT_EQ(-1, At(-2, 1).ToJulian());
}

TEST(SDateTime, TimeOfDayIsTheRemainderInSeconds) {
    EXPECT_EQ(0, At(2, 9999999).TimeOfDay());
    EXPECT_EQ(1, At(2, 10000000).TimeOfDay());
    EXPECT_EQ(86399, At(2, -1).TimeOfDay());
    EXPECT_EQ(86399, SDateTime::FromTicks(-1).TimeOfDay());
}

TEST(SDateTime, AnyNumberOfADayOrOfTicksIsHeldWithoutBecomingADate) {
    constexpr LONG Least = std::numeric_limits<LONG>::min();
    constexpr LONG Most = std::numeric_limits<LONG>::max();
    EXPECT_EQ(9981606, SDateTime::FromJulian(Most).ToJulian());
    EXPECT_EQ(-10675199, SDateTime::FromJulian(Least).ToJulian());
    EXPECT_EQ(9981606, SDateTime::FromJulian(9981606).ToJulian());
    EXPECT_EQ(-10675199, SDateTime::FromJulian(-10675199).ToJulian());
    // Where 64 bits would wrap into the calendar again.
    EXPECT_FALSE(details::IsDate(SDateTime::FromJulian(21350398 + 10000).ToJulian()));
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_FALSE(details::IsDate(SDateTime::FromTicks(Limits::min()).ToJulian()));
    EXPECT_FALSE(details::IsDate(SDateTime::FromTicks(Limits::max()).ToJulian()));
}

TEST(SDateTime, OfYearAndMonthIsTheFirstDayAtMidnight) {
    for (LONG year = 1900; year <= 2078; ++year)
        for (LONG month = 1; month <= 12; ++month) {
            const SDateTime value(year, month);
            TDate date{};
            ASSERT_TRUE(details::JulianToDateImpl(value.ToJulian(), date));
            ASSERT_EQ((TDate{static_cast<SHORT>(month), 1, static_cast<SHORT>(year)}), date);
            ASSERT_EQ(0, value.TimeOfDayTicks());
        }
    EXPECT_EQ(SDateTime::MinDateTicks, SDateTime(1900, 1).Ticks());
}

TEST(SDateTime, OfYearAndMonthChecksTheYearThenTheMonthUnderItsOwnName) {
    EXPECT_EQ("dmDateTime::SDateTime::SDateTime: value of 'aYear' is out of range [1900..2078]; aYear = 2079",
              RangeErrorText([] { SDateTime(2079, 13); }));
    EXPECT_EQ("dmDateTime::SDateTime::SDateTime: value of 'aYear' is out of range [1900..2078]; aYear = 67436",
              RangeErrorText([] { SDateTime(65536 + 1900, 1); }));
    EXPECT_EQ("dmDateTime::SDateTime::SDateTime: value of 'aMonth' is out of range [1..12]; aMonth = 13",
              RangeErrorText([] { SDateTime(2000, 13); }));
    EXPECT_EQ("dmDateTime::SDateTime::SDateTime: value of 'aMonth' is out of range [1..12]; aMonth = 0",
              RangeErrorText([] { SDateTime(2000, 0); }));
}

TEST(SDateTime, ComparesAsItsTicksAndOrdersASet) {
    const std::set<SDateTime> days{At(5), At(3), At(5), At(4)};
    EXPECT_EQ((std::vector<SDateTime>{At(3), At(4), At(5)}), std::vector<SDateTime>(days.begin(), days.end()));
    EXPECT_LT(At(3), At(3, 1));
    EXPECT_EQ(1u, days.count(SDateTime::FromJulian(4)));
}

TEST(AddDays, FromDayThreeByMinusOneGivesDayTwo) {
    SDateTime value = At(3);
    EXPECT_EQ(At(2), value.AddDays(-1));
    EXPECT_EQ(At(2), value);
}

TEST(AddDays, KeepsTheTimeOfDayToTheTick) {
    SDateTime value = At(100, 12345678901);
    EXPECT_EQ(At(65380, 12345678901), value.AddDays(65280));
    EXPECT_EQ(At(2, 12345678901), value.AddDays(-65378));
}

TEST(AddDays, MovesInPlaceAndAnswersItself) {
    SDateTime value = At(10);
    EXPECT_EQ(&value, &value.AddDays(1).AddDays(1));
    EXPECT_EQ(At(12), value);
}

TEST(AddDays, OntoDayOneRaisesBecauseItIsNoDate) {
    SDateTime value = At(3);
    EXPECT_EQ("dmDateTime::SDateTime::AddDays : date/time is out of range, date = -1", AddError(value, -2));
    EXPECT_EQ(At(-1), value);
}

TEST(AddDays, OntoTheNullDateIsFineAtMidnightOnly) {
    SDateTime midnight = At(3);
    EXPECT_EQ(At(0), midnight.AddDays(-3));
    SDateTime noon = At(3, 12 * TicksPerHour);
    EXPECT_EQ("dmDateTime::SDateTime::AddDays : date/time is out of range, date = 0.5", AddError(noon, -3));
    EXPECT_EQ(At(0, 12 * TicksPerHour), noon);
}

TEST(AddDays, PastTheLastDateRaisesAndLeavesDayMinusOneWithTheOldTimeOfDay) {
    SDateTime value = At(65380, 6 * TicksPerHour);
    EXPECT_EQ("dmDateTime::SDateTime::AddDays : date/time is out of range, date = -0.75", AddError(value, 1));
    EXPECT_EQ(At(-1, 6 * TicksPerHour), value);
}

TEST(AddDays, ToWhatIsNoDateRaisesWhateverTheTimeOfDay) {
    SDateTime value = At(65380, 1); // less than a second
    EXPECT_EQ("dmDateTime::SDateTime::AddDays : date/time is out of range, date = -1", AddError(value, 1));
    EXPECT_EQ(At(-1, 1), value);
}

TEST(AddDays, ASumBeyond32BitsIsNoDate) {
    constexpr LONG Least = std::numeric_limits<LONG>::min();
    constexpr LONG Most = std::numeric_limits<LONG>::max();
    for (const LONG days : {Least, Most}) {
        SDateTime value = At(65380);
        EXPECT_NE("none", AddError(value, days)) << days;
        EXPECT_EQ(At(-1), value);
    }
}

TEST(ToSystemTime, TellsDateWeekdayClockAndMilliseconds) {
    const SDateTime value = At(65380, 13 * TicksPerHour + 14 * 600000000LL + 15 * 10000000LL + 9876543);
    EXPECT_EQ((SYSTEMTIME{2078, 12, 6, 31, 13, 14, 15, 987}), value.ToSystemTime());
    SYSTEMTIME target{};
    EXPECT_EQ(&target, &value.ToSystemTime(target));
    EXPECT_EQ(value.ToSystemTime(), target);
}

TEST(ToSystemTime, RefusesTheNullDateLeavingTheRecordAlone) {
    SYSTEMTIME target{1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ("dmDateTime::ReplaceDateInSYSTEMTIME: value of 'aDate' is out of range [2..65380]; aDate = 0",
              RangeErrorText([&] { At(0).ToSystemTime(target); }));
    EXPECT_EQ((SYSTEMTIME{1, 2, 3, 4, 5, 6, 7, 8}), target);
}

} // namespace
