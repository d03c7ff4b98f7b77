#pragma once
// The calendar: day numbers, ticks, dates and times of day, and every conversion between them.
//
// It covers the years 1900 to 2078, by the Gregorian rule throughout. Weekdays are numbered from 0, Sunday. Pure
// functions that any thread may call; none allocates unless it fails. What is out of range is refused with a
// std::range_error that names the function, the argument, its bounds and its value; nothing is written then, except
// where it says so.

#include "platform/com/system_time.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace dmDateTime {

// Days since 30 December 1899, which is 0, the null date. 1 is no date; 2 is 1 January 1900.
using JulianDate = LONG;
// Seconds since midnight.
using DaySeconds = LONG;

// Month first.
struct TDate {
    SHORT Month;
    SHORT Day;
    SHORT Year;
    friend constexpr bool operator==(const TDate&, const TDate&) = default;
};

struct TTime {
    WORD Hour;
    WORD Minute;
    WORD Second;
    friend constexpr bool operator==(const TTime&, const TTime&) = default;
};

inline constexpr LONG FirstYear = 1900;
inline constexpr LONG LastYear = 2078;
inline constexpr JulianDate NullDate = 0;
inline constexpr JulianDate FirstDate = 2;    // 1 January 1900
inline constexpr JulianDate LastDate = 65380; // 31 December 2078
inline constexpr DaySeconds SecondsPerDay = 86400;

namespace details {

inline constexpr std::size_t MonthCount = 12;
inline constexpr std::size_t YearCount = LastYear - FirstYear + 1;
// A year that divides by 25 and by 4 divides by 100, and then needs 16 to divide by 400. Without a branch, since no
// order of years lets one be foretold.
constexpr bool IsLeapYear(LONG year) { return (year & (year % 25 == 0 ? 15 : 3)) == 0; }

using MonthTable = std::array<LONG, MonthCount>;

constexpr MonthTable MakeDaysBeforeMonth(const MonthTable& lengths) {
    MonthTable table{};
    for (std::size_t month = 1; month < MonthCount; ++month)
        table[month] = table[month - 1] + lengths[month - 1];
    return table;
}
constexpr std::array<JulianDate, YearCount> MakeYearStarts() {
    std::array<JulianDate, YearCount> table{};
    table[0] = FirstDate;
    for (std::size_t i = 1; i < YearCount; ++i)
        table[i] = table[i - 1] + (IsLeapYear(FirstYear + static_cast<LONG>(i) - 1) ? 366 : 365);
    return table;
}

// The first row is for common years, the second for leap years.
inline constexpr std::array MonthLengths{MonthTable{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
                                         MonthTable{31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31}};
inline constexpr std::array DaysBeforeMonth{MakeDaysBeforeMonth(MonthLengths[0]),
                                            MakeDaysBeforeMonth(MonthLengths[1])};
// The day number of each year's 1 January.
inline constexpr auto YearStarts = MakeYearStarts();
static_assert(YearStarts.front() == 2 && YearStarts[1] == 367 && YearStarts.back() == 65016);

// "function: value of 'argument' is out of range [low..high]; argument = value"
[[noreturn]] void RaiseOutOfRange(const char* function, const char* argument, LONG low, LONG high, LONG value);
[[noreturn]] void RaiseDaysOutOfRange(const char* function, JulianDate days);
[[noreturn]] void RaiseNotLeapYear(LONG year);

constexpr void CheckRange(const char* function, const char* argument, LONG low, LONG high, LONG value) {
    if (value < low || value > high) [[unlikely]]
        RaiseOutOfRange(function, argument, low, high, value);
}

constexpr bool IsDate(JulianDate days) { return days == NullDate || (days >= FirstDate && days <= LastDate); }
constexpr void CheckDays(const char* function, JulianDate days) {
    if (!IsDate(days)) [[unlikely]]
        RaiseDaysOutOfRange(function, days);
}

constexpr bool IsDateTime(JulianDate days, DaySeconds time) {
    if (days == NullDate)
        return time == 0;
    return IsDate(days) && time >= 0 && time < SecondsPerDay;
}

} // namespace details

// Months 1 to 12 of any year.
[[nodiscard]] constexpr LONG GetDaysInMonth(LONG aYear, LONG aMonth) {
    details::CheckRange("dmDateTime::GetDaysInMonth", "aMonth", 1, 12, aMonth);
    return details::MonthLengths[details::IsLeapYear(aYear) ? 1 : 0][static_cast<std::size_t>(aMonth - 1)];
}

namespace details {

// Real dates of the calendar; true.
constexpr bool DateToJulianImpl(const TDate& aDate, JulianDate& aDays) {
    constexpr const char* Function = "dmDateTime::details::DateToJulianImpl";
    CheckRange(Function, "aDate.Year", FirstYear, LastYear, aDate.Year);
    CheckRange(Function, "aDate.Month", 1, 12, aDate.Month);
    CheckRange(Function, "aDate.Day", 1, GetDaysInMonth(aDate.Year, aDate.Month), aDate.Day);
    const bool leap = IsLeapYear(aDate.Year);
    // The month's length has refused this date already; the words for it are kept with the rule.
    if (!leap && aDate.Month == 2 && aDate.Day == 29) [[unlikely]]
        RaiseNotLeapYear(aDate.Year);
    const auto year = static_cast<std::size_t>(aDate.Year - FirstYear); // 0 to 178
    const auto month = static_cast<std::size_t>(aDate.Month - 1);       // 0 to 11
    aDays = YearStarts[year] + DaysBeforeMonth[leap ? 1 : 0][month] + aDate.Day - 1;
    return true;
}

// 0, and 2 to 65380; false, writing nothing, for anything else.
//
// H. F. Fliegel and T. C. Van Flandern, "A machine algorithm for processing calendar dates", Communications of the
// ACM 11 (1968), 657, with the Julian Day Number shifted to the day numbers used here. No value is negative, so
// that unsigned division, which is the faster one, gives what truncating signed division does.
constexpr bool JulianToDateImpl(JulianDate aDays, TDate& aDate) {
    if (!IsDate(aDays)) [[unlikely]]
        return false;
    constexpr std::uint32_t Shift = 2415019 + 68569;
    std::uint32_t l = static_cast<std::uint32_t>(aDays) + Shift; // 2483588 to 2548968
    const std::uint32_t n = 4 * l / 146097;                      // 67 to 69
    l -= (146097 * n + 3) / 4;                                   // 0 to 146096
    const std::uint32_t i = 4000 * (l + 1) / 1461001;            // 0 to 399; the product is below 584388001
    l = l - 1461 * i / 4 + 31;                                   // 31 to 396
    const std::uint32_t m = 80 * l / 2447;                       // 1 to 12
    const std::uint32_t k = m >= 11 ? 1 : 0;                     // m / 11
    aDate.Day = static_cast<SHORT>(l - 2447 * m / 80);           // 1 to 31
    aDate.Month = static_cast<SHORT>(m + 2 - 12 * k);            // 1 to 12
    aDate.Year = static_cast<SHORT>(100 * (n - 49) + i + k);     // 1899 to 2078
    return true;
}

// 0 to 65380.
[[nodiscard]] constexpr LONG GetDayOfWeekImpl(JulianDate aDays) {
    CheckRange("dmDateTime::details::GetDayOfWeekImpl", "aDays", 0, LastDate, aDays);
    return aDays == NullDate ? 6 : (aDays - 1) % 7;
}

// Of a time of day that is in range.
constexpr TTime SplitTime(DaySeconds time) {
    const auto seconds = static_cast<std::uint32_t>(time); // 0 to 86399
    return {static_cast<WORD>(seconds / 3600), static_cast<WORD>(seconds % 3600 / 60),
            static_cast<WORD>(seconds % 60)};
}

} // namespace details

// 0 to 86399.
constexpr void TimeToTTime(DaySeconds aTime, TTime& aResult) {
    details::CheckRange("dmDateTime::TimeToTTime", "aTime", 0, SecondsPerDay - 1, aTime);
    aResult = details::SplitTime(aTime);
}

// Sets hour, minute and second, and the milliseconds to 0.
constexpr void ReplaceTimeInSYSTEMTIME(DaySeconds aTime, SYSTEMTIME& aSystemTime) {
    details::CheckRange("dmDateTime::ReplaceTimeInSYSTEMTIME", "aTime", 0, SecondsPerDay - 1, aTime);
    const TTime time = details::SplitTime(aTime);
    aSystemTime.wHour = time.Hour;
    aSystemTime.wMinute = time.Minute;
    aSystemTime.wSecond = time.Second;
    aSystemTime.wMilliseconds = 0;
}

// Sets year, month, day and weekday. The null date is refused.
constexpr void ReplaceDateInSYSTEMTIME(JulianDate aDate, SYSTEMTIME& aSystemTime) {
    details::CheckRange("dmDateTime::ReplaceDateInSYSTEMTIME", "aDate", FirstDate, LastDate, aDate);
    TDate date{};
    details::JulianToDateImpl(aDate, date);
    aSystemTime.wYear = static_cast<WORD>(date.Year);
    aSystemTime.wMonth = static_cast<WORD>(date.Month);
    aSystemTime.wDay = static_cast<WORD>(date.Day);
    aSystemTime.wDayOfWeek = static_cast<WORD>(details::GetDayOfWeekImpl(aDate));
}

// Writes "%H:%M:%S.0000".
void FormatDaySeconds(DaySeconds aTime, wchar_t (&aBuffer)[16]);

// Returns for a date with a time of day, and for the null date at midnight; anything else is traced and raised in
// the caller's name.
void IsDateTimeValid(JulianDate aDate, DaySeconds aTime, const char* aFunction);

// The first date on or after the given one that falls on the weekday. Near the ends of the calendar it may be 1, or
// up to 6 days past the last date.
[[nodiscard]] constexpr JulianDate GetFirstDayOfWeek(JulianDate aDate, LONG aWeekdayShift) {
    constexpr const char* Function = "dmDateTime::GetFirstDayOfWeek";
    details::CheckDays(Function, aDate);
    details::CheckRange(Function, "aWeekdayShift", 0, 6, aWeekdayShift);
    const JulianDate sameWeek = aDate + aWeekdayShift - details::GetDayOfWeekImpl(aDate); // -6 to 65386
    return sameWeek < aDate ? sameWeek + 7 : sameWeek;
}

// A moment as ticks of 100 nanoseconds since 1 January of the year 1. It may hold any count of ticks; what reads
// the calendar out of it checks first.
struct SDateTime {
    static constexpr std::int64_t TicksPerDay = 864000000000;
    static constexpr std::int64_t TicksPerSecond = 10000000;
    static constexpr LONG JulianOffsetDays = 693593;
    static constexpr std::int64_t JulianZeroTicks = JulianOffsetDays * TicksPerDay;
    static constexpr std::int64_t MinDateTicks = (JulianOffsetDays + FirstDate) * TicksPerDay;

    // The month's first day at midnight.
    constexpr SDateTime(LONG aYear, LONG aMonth) : m_Ticks(0) {
        constexpr const char* Function = "dmDateTime::SDateTime::SDateTime";
        details::CheckRange(Function, "aYear", FirstYear, LastYear, aYear);
        details::CheckRange(Function, "aMonth", 1, 12, aMonth);
        JulianDate days = NullDate;
        details::DateToJulianImpl({static_cast<SHORT>(aMonth), 1, static_cast<SHORT>(aYear)}, days);
        m_Ticks = FromJulian(days).m_Ticks;
    }

    [[nodiscard]] static constexpr SDateTime FromTicks(std::int64_t ticks) { return SDateTime(ticks); }
    // Midnight of that day. Nothing is checked; a day that no count of ticks reaches becomes the farthest one that
    // does, which is far from any date.
    [[nodiscard]] static constexpr SDateTime FromJulian(JulianDate days) {
        // So that neither the ticks nor their distance from JulianZeroTicks needs more than 64 bits.
        constexpr std::int64_t Last = std::numeric_limits<std::int64_t>::max() / TicksPerDay; // 10675199
        constexpr std::int64_t First = JulianOffsetDays - Last;                               // -9981606
        const std::int64_t sinceYearOne = std::int64_t{days} + JulianOffsetDays;
        const std::int64_t held = sinceYearOne > Last ? Last : sinceYearOne < First ? First : sinceYearOne;
        return SDateTime(held * TicksPerDay);
    }

    [[nodiscard]] constexpr std::int64_t Ticks() const { return m_Ticks; }
    // Rounded toward the null date, so a moment in the day before it counts to it.
    [[nodiscard]] constexpr JulianDate ToJulian() const {
        // A distance that needs more than 64 bits wraps to a day number above 9981606, which is no date either.
        const std::uint64_t sinceZero =
            static_cast<std::uint64_t>(m_Ticks) - static_cast<std::uint64_t>(JulianZeroTicks);
        return static_cast<JulianDate>(static_cast<std::int64_t>(sinceZero) / TicksPerDay); // within +-10675199
    }
    // Ticks since midnight, never negative.
    [[nodiscard]] constexpr std::int64_t TimeOfDayTicks() const {
        const std::int64_t remainder = m_Ticks % TicksPerDay;
        return remainder < 0 ? remainder + TicksPerDay : remainder;
    }
    [[nodiscard]] constexpr DaySeconds TimeOfDay() const {
        return static_cast<DaySeconds>(TimeOfDayTicks() / TicksPerSecond); // 0 to 86399
    }

    // Moves in place, keeping the time of day. When the new day is no date, the value is day -1 with the old time
    // of day, and then the error is raised; the null date is a result only at midnight, and otherwise stored and
    // refused.
    constexpr SDateTime& AddDays(LONG aDays) {
        // In 32 bits, wrapping: a sum beyond them is no date wherever it lands, since a day number reaches no
        // farther than +-10675199.
        const auto moved = static_cast<JulianDate>(static_cast<ULONG>(ToJulian()) + static_cast<ULONG>(aDays));
        const JulianDate day = details::IsDate(moved) ? moved : -1;
        const DaySeconds time = TimeOfDay();
        m_Ticks = FromJulian(day).m_Ticks + TimeOfDayTicks();
        if (!details::IsDateTime(day, time)) [[unlikely]]
            IsDateTimeValid(day, time, "dmDateTime::SDateTime::AddDays");
        return *this;
    }

    // Refuses what ReplaceDateInSYSTEMTIME does, the null date with it.
    constexpr SYSTEMTIME& ToSystemTime(SYSTEMTIME& aTarget) const {
        ReplaceDateInSYSTEMTIME(ToJulian(), aTarget);
        ReplaceTimeInSYSTEMTIME(TimeOfDay(), aTarget);
        aTarget.wMilliseconds = static_cast<WORD>(TimeOfDayTicks() % TicksPerSecond / 10000); // 0 to 999
        return aTarget;
    }
    [[nodiscard]] constexpr SYSTEMTIME ToSystemTime() const {
        SYSTEMTIME result{};
        return ToSystemTime(result);
    }

    // Copies the format into the buffer with these codes replaced, until either ends, and ends the text with a
    // zero. Answers the number of characters in front of the zero. A null buffer or one of no characters is left
    // alone, a null format is an empty one, and an unknown code writes nothing. The null date is formatted like any
    // other.
    //
    //   %d %m %Y %y   day, month, year of four and of two digits    %%       a percent sign
    //   %H %M %S %s   hour, minute, second, second in one digit if it can be
    //   %F %f %G %g   milliseconds and microseconds of the second, with and without leading zeros
    //   %a %A %b %B   the user's short and long weekday and month   %D       the user's short date
    //   %T            24-hour time
    //
    // The weekday names are one step ahead: Monday prints the name of Tuesday. Sunday prints the name that stands
    // behind its block: with %A the short name of Monday, with %a the long name of January.
    std::size_t Format(wchar_t* aBuffer, std::size_t aCapacity, const wchar_t* aFormat) const;

    friend constexpr auto operator<=>(const SDateTime&, const SDateTime&) = default;

private:
    explicit constexpr SDateTime(std::int64_t ticks) : m_Ticks(ticks) {}

    std::int64_t m_Ticks;
};

static_assert(SDateTime::JulianZeroTicks == 599264352000000000 && SDateTime::MinDateTicks == 599266080000000000);

} // namespace dmDateTime
