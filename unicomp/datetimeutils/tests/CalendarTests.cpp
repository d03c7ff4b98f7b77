#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "RangeErrorText.h"

#include <chrono>
#include <limits>
#include <type_traits>

namespace {

using namespace dmDateTime;
using details::DateToJulianImpl;
using details::GetDayOfWeekImpl;
using details::JulianToDateImpl;

constexpr std::chrono::sys_days NullDay = std::chrono::year(1899) / std::chrono::December / 30;
constexpr JulianDate Untouched = -77;

constexpr JulianDate ToDays(SHORT year, SHORT month, SHORT day) {
    JulianDate days = Untouched;
    DateToJulianImpl({month, day, year}, days);
    return days;
}
constexpr TDate ToDate(JulianDate days) {
    TDate date{-1, -1, -1};
    JulianToDateImpl(days, date);
    return date;
}
std::string DateError(SHORT year, SHORT month, SHORT day) {
    return RangeErrorText([&] { ToDays(year, month, day); });
}

// Month first, and nothing between the fields.
static_assert(sizeof(TDate) == 6 && offsetof(TDate, Month) == 0 && offsetof(TDate, Day) == 2 &&
              offsetof(TDate, Year) == 4);
static_assert(sizeof(TTime) == 6 && offsetof(TTime, Hour) == 0 && offsetof(TTime, Minute) == 2 &&
              offsetof(TTime, Second) == 4);
static_assert(std::is_same_v<JulianDate, LONG> && std::is_same_v<DaySeconds, LONG>);

// The whole calendar is there at compile time.
static_assert(ToDays(1900, 1, 1) == 2 && ToDays(2078, 12, 31) == 65380 && ToDays(2038, 1, 1) == 50406);
static_assert(ToDate(65380) == TDate{12, 31, 2078});

TEST(Calendar, AgreesWithTheCivilCalendarOnEveryDayFrom1900To2078) {
    using namespace std::chrono;
    JulianDate day = FirstDate;
    for (sys_days civil = year(1900) / January / 1; civil <= sys_days(year(2078) / December / 31);
         civil += days(1)) {
        const year_month_day expected(civil);
        const TDate date = ToDate(day);
        ASSERT_EQ(day, (civil - NullDay).count());
        ASSERT_EQ(static_cast<int>(expected.year()), date.Year) << day;
        ASSERT_EQ(static_cast<unsigned>(expected.month()), static_cast<unsigned>(date.Month)) << day;
        ASSERT_EQ(static_cast<unsigned>(expected.day()), static_cast<unsigned>(date.Day)) << day;
        ASSERT_EQ(day, ToDays(date.Year, date.Month, date.Day));
        ASSERT_EQ(static_cast<LONG>(weekday(civil).c_encoding()), GetDayOfWeekImpl(day)) << day;
        ++day;
    }
    EXPECT_EQ(LastDate + 1, day);
}

TEST(Calendar, MonthLengthsAgreeWithTheCivilCalendarInEveryYear) {
    using namespace std::chrono;
    for (LONG y = -400; y <= 4000; ++y)
        for (LONG m = 1; m <= 12; ++m) {
            const year_month_day_last last(year(y) / month(static_cast<unsigned>(m)) / std::chrono::last);
            ASSERT_EQ(static_cast<LONG>(static_cast<unsigned>(last.day())), GetDaysInMonth(y, m)) << y << ' ' << m;
        }
}

TEST(Calendar, EveryDateThatDoesNotExistIsRefused) {
    for (SHORT year = 1895; year <= 2085; ++year)
        for (SHORT month = -1; month <= 14; ++month)
            for (SHORT day = -1; day <= 33; ++day) {
                const std::chrono::year_month_day civil{std::chrono::year(year),
                                                        std::chrono::month(static_cast<unsigned>(month)),
                                                        std::chrono::day(static_cast<unsigned>(day))};
                const bool real = year >= 1900 && year <= 2078 && month >= 1 && day >= 1 && civil.ok();
                ASSERT_EQ(real, DateError(year, month, day) == "none") << year << '-' << month << '-' << day;
            }
}

TEST(Calendar, YearTableRunsFrom1900To2078) {
    EXPECT_EQ(179u, details::YearStarts.size());
    EXPECT_EQ(2, details::YearStarts[0]);
    EXPECT_EQ(367, details::YearStarts[1]);
    EXPECT_EQ(65016, details::YearStarts[178]);
}

TEST(Calendar, MonthTablesHoldTheDaysBeforeEachMonth) {
    EXPECT_EQ((details::MonthTable{0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334}),
              details::DaysBeforeMonth[0]);
    EXPECT_EQ((details::MonthTable{0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335}),
              details::DaysBeforeMonth[1]);
}

TEST(DateToJulian, FirstOfJanuary1900IsTwo) { EXPECT_EQ(2, ToDays(1900, 1, 1)); }

TEST(DateToJulian, LastOfDecember2078Is65380) { EXPECT_EQ(65380, ToDays(2078, 12, 31)); }

TEST(DateToJulian, AnswersTrue) {
    JulianDate days = 0;
    EXPECT_TRUE(DateToJulianImpl({1, 1, 1900}, days));
}

TEST(DateToJulian, FirstOfJanuary2079RaisesTheYearError) {
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Year' is out of range [1900..2078]; "
              "aDate.Year = 2079",
              DateError(2079, 1, 1));
}

TEST(DateToJulian, YearBefore1900RaisesTheYearError) {
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Year' is out of range [1900..2078]; "
              "aDate.Year = 1899",
              DateError(1899, 12, 30));
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Year' is out of range [1900..2078]; "
              "aDate.Year = -32768",
              DateError(-32768, 1, 1));
}

TEST(DateToJulian, MonthOutOfRangeRaisesTheMonthError) {
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Month' is out of range [1..12]; "
              "aDate.Month = 13",
              DateError(2000, 13, 1));
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Month' is out of range [1..12]; "
              "aDate.Month = 0",
              DateError(2000, 0, 1));
}

TEST(DateToJulian, DayOutOfRangeRaisesTheDayErrorWithTheMonthsLength) {
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Day' is out of range [1..30]; aDate.Day = 31",
              DateError(2001, 4, 31));
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Day' is out of range [1..31]; aDate.Day = 0",
              DateError(2001, 12, 0));
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Day' is out of range [1..29]; aDate.Day = 30",
              DateError(2000, 2, 30));
}

TEST(DateToJulian, LeapDayOf1900RaisesTheDayErrorAndThatOf2000Converts) {
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Day' is out of range [1..28]; aDate.Day = 29",
              DateError(1900, 2, 29));
    EXPECT_EQ(36585, ToDays(2000, 2, 29));
}

TEST(DateToJulian, LeapDayOfACommonYearHasTheWordsOfTheDayCheck) {
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl: value of 'aDate.Day' is out of range [1..28]; aDate.Day = 29",
              DateError(2001, 2, 29));
}

TEST(DateToJulian, NotLeapYearMessageIsKeptBehindTheDayCheck) {
    EXPECT_EQ("dmDateTime::details::DateToJulianImpl : TDate out of range (not leap year! 29 Feb 2001)",
              RangeErrorText([] { details::RaiseNotLeapYear(2001); }));
}

TEST(DateToJulian, YearIsCheckedBeforeMonthAndMonthBeforeDay) {
    EXPECT_NE(std::string::npos, DateError(1, 99, 99).find("'aDate.Year'"));
    EXPECT_NE(std::string::npos, DateError(2000, 99, 99).find("'aDate.Month'"));
}

TEST(DateToJulian, WritesNothingWhenItRaises) {
    JulianDate days = Untouched;
    EXPECT_THROW(DateToJulianImpl({2, 30, 2000}, days), std::range_error);
    EXPECT_EQ(Untouched, days);
}

TEST(JulianToDate, NullDateIs30December1899) {
    TDate date{};
    EXPECT_TRUE(JulianToDateImpl(0, date));
    EXPECT_EQ((TDate{12, 30, 1899}), date);
}

TEST(JulianToDate, AnswersFalseWritingNothingOutsideTheCalendar) {
    constexpr LONG Least = std::numeric_limits<LONG>::min();
    constexpr LONG Most = std::numeric_limits<LONG>::max();
    for (const JulianDate days : {1, 65381, -1, Least, Most}) {
        TDate date{7, 7, 7};
        EXPECT_FALSE(JulianToDateImpl(days, date)) << days;
        EXPECT_EQ((TDate{7, 7, 7}), date);
    }
}

TEST(DayOfWeek, StartsWithSaturdayOnTheNullDate) {
    EXPECT_EQ(6, GetDayOfWeekImpl(0));
    EXPECT_EQ(0, GetDayOfWeekImpl(1));
    EXPECT_EQ(1, GetDayOfWeekImpl(2));
    EXPECT_EQ(6, GetDayOfWeekImpl(65380));
}

TEST(DayOfWeek, RaisesOutsideZeroTo65380) {
    EXPECT_EQ("dmDateTime::details::GetDayOfWeekImpl: value of 'aDays' is out of range [0..65380]; aDays = 65381",
              RangeErrorText([] { (void)GetDayOfWeekImpl(65381); }));
    EXPECT_EQ("dmDateTime::details::GetDayOfWeekImpl: value of 'aDays' is out of range [0..65380]; aDays = -1",
              RangeErrorText([] { (void)GetDayOfWeekImpl(-1); }));
}

TEST(DaysInMonth, RaisesForAMonthOutsideOneTo12AndTakesAnyYear) {
    EXPECT_EQ("dmDateTime::GetDaysInMonth: value of 'aMonth' is out of range [1..12]; aMonth = 0",
              RangeErrorText([] { (void)GetDaysInMonth(2000, 0); }));
    EXPECT_EQ("dmDateTime::GetDaysInMonth: value of 'aMonth' is out of range [1..12]; aMonth = 13",
              RangeErrorText([] { (void)GetDaysInMonth(2000, 13); }));
    EXPECT_EQ(29, GetDaysInMonth(4, 2));
    EXPECT_EQ(28, GetDaysInMonth(std::numeric_limits<LONG>::max(), 2));
    EXPECT_EQ(29, GetDaysInMonth(std::numeric_limits<LONG>::min(), 2)); // it divides by 16, and not by 25
}

TEST(FirstDayOfWeek, OfAMondayWithMondayIsThatSameDate) { EXPECT_EQ(2, GetFirstDayOfWeek(2, 1)); }

TEST(FirstDayOfWeek, OfAMondayWithSundayIsSixDaysLater) { EXPECT_EQ(8, GetFirstDayOfWeek(2, 0)); }

TEST(FirstDayOfWeek, IsTheFirstSuchDayOnOrAfterEveryDate) {
    for (JulianDate day = FirstDate; day <= LastDate - 6; ++day)
        for (LONG weekday = 0; weekday <= 6; ++weekday) {
            const JulianDate first = GetFirstDayOfWeek(day, weekday);
            ASSERT_TRUE(first >= day && first <= day + 6) << day << ' ' << weekday;
            ASSERT_EQ(weekday, GetDayOfWeekImpl(first));
        }
}

TEST(FirstDayOfWeek, IsNotHeldWithinTheCalendar) {
    EXPECT_EQ(65381, GetFirstDayOfWeek(65380, 0));
    EXPECT_EQ(65386, GetFirstDayOfWeek(65380, 5));
    EXPECT_EQ(1, GetFirstDayOfWeek(0, 0));
    EXPECT_EQ(0, GetFirstDayOfWeek(0, 6));
}

TEST(FirstDayOfWeek, RaisesForWhatIsNoDateBeforeItLooksAtTheWeekday) {
    for (const JulianDate days : {1, 65381, -1}) {
        const std::string expected =
            "dmDateTime::GetFirstDayOfWeek : 'days' parameter is out of range (days = " + std::to_string(days) +
            ")";
        EXPECT_EQ(expected, RangeErrorText([&] { (void)GetFirstDayOfWeek(days, 99); }));
    }
}

TEST(FirstDayOfWeek, RaisesForAWeekdayOutsideZeroToSixNegativeOnesIncluded) {
    EXPECT_EQ("dmDateTime::GetFirstDayOfWeek: value of 'aWeekdayShift' is out of range [0..6]; aWeekdayShift = 7",
              RangeErrorText([] { (void)GetFirstDayOfWeek(2, 7); }));
    EXPECT_EQ("dmDateTime::GetFirstDayOfWeek: value of 'aWeekdayShift' is out of range [0..6]; aWeekdayShift = -1",
              RangeErrorText([] { (void)GetFirstDayOfWeek(2, -1); }));
}

} // namespace
