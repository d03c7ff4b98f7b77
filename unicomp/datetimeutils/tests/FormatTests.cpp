#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "RangeErrorText.h"

#include "platform/environment.h"

#include <array>
#include <chrono>

namespace {

using namespace dmDateTime;

SDateTime At(JulianDate day, std::int64_t timeTicks = 0) {
    return SDateTime::FromTicks(SDateTime::FromJulian(day).Ticks() + timeTicks);
}
constexpr std::int64_t Ticks(int hour, int minute, int second, int fraction) {
    return ((hour * 60 + minute) * 60 + second) * SDateTime::TicksPerSecond + fraction;
}

// In a locale whose names are known on every machine.
class Format : public testing::Test {
protected:
    static std::wstring Text(const SDateTime& moment, const wchar_t* format, std::size_t capacity = 255) {
        std::array<wchar_t, 256> buffer;
        buffer.fill(L'#');
        const std::size_t written = moment.Format(buffer.data(), capacity, format);
        EXPECT_EQ(L'\0', buffer[written]);
        EXPECT_EQ(L'#', buffer[capacity]) << "wrote behind the buffer";
        const std::wstring text(buffer.data());
        EXPECT_EQ(text.size(), written);
        return text;
    }
    static std::string Error(const SDateTime& moment) {
        return RangeErrorText([&] { Text(moment, L"%d"); });
    }

    platform::CScopedEnvironment m_Locale{L"LC_ALL", L"C"};
    SDateTime m_Moment = At(2, Ticks(3, 4, 5, 67891)); // Monday, 1 January 1900, 03:04:05.0067891
};

TEST_F(Format, DayNumberBecomesTheDateOfSqlText) {
    EXPECT_EQ(L"31.12.2037", Text(At(50405), L"%d.%m.%Y"));
    EXPECT_EQ(L"01.01.1900", Text(At(2), L"%d.%m.%Y"));
    EXPECT_EQ(L"31.12.2078", Text(At(65380), L"%d.%m.%Y"));
}

TEST_F(Format, NullDateIs30December1899) { EXPECT_EQ(L"30.12.1899", Text(At(0), L"%d.%m.%Y")); }

TEST_F(Format, EveryCodeOfDateAndClock) {
    EXPECT_EQ(L"%", Text(m_Moment, L"%%"));
    EXPECT_EQ(L"01", Text(m_Moment, L"%d"));
    EXPECT_EQ(L"01", Text(m_Moment, L"%m"));
    EXPECT_EQ(L"1900", Text(m_Moment, L"%Y"));
    EXPECT_EQ(L"00", Text(m_Moment, L"%y"));
    EXPECT_EQ(L"78", Text(At(65380), L"%y"));
    EXPECT_EQ(L"03", Text(m_Moment, L"%H"));
    EXPECT_EQ(L"04", Text(m_Moment, L"%M"));
    EXPECT_EQ(L"05", Text(m_Moment, L"%S"));
    EXPECT_EQ(L"5", Text(m_Moment, L"%s"));
    EXPECT_EQ(L"55", Text(At(2, Ticks(0, 0, 55, 0)), L"%s"));
}

TEST_F(Format, FractionsWithAndWithoutLeadingZeros) {
    EXPECT_EQ(L"006|6|006789|6789", Text(m_Moment, L"%F|%f|%G|%g"));
    EXPECT_EQ(L"000|0|000000|0", Text(At(2), L"%F|%f|%G|%g"));
    EXPECT_EQ(L"999|999|999999|999999", Text(At(2, 9999999), L"%F|%f|%G|%g"));
}

TEST_F(Format, CopiesWhatIsNoCode) { EXPECT_EQ(L"d 01 Ж{}", Text(m_Moment, L"d %d Ж{}")); }

TEST_F(Format, UnknownCodeWritesNothingAndIsConsumed) {
    EXPECT_EQ(L"[]", Text(m_Moment, L"[%q%Z%1% ]"));
    EXPECT_EQ(L"d", Text(m_Moment, L"%qd"));
}

TEST_F(Format, PercentSignAtTheEndWritesNothing) {
    EXPECT_EQ(L"01", Text(m_Moment, L"%d%"));
    EXPECT_EQ(L"", Text(m_Moment, L"%"));
}

TEST_F(Format, StopsWhenTheBufferIsFullAndTerminates) {
    EXPECT_EQ(L"01.01.190", Text(m_Moment, L"%d.%m.%Y", 10));
    EXPECT_EQ(L"01.01.1900", Text(m_Moment, L"%d.%m.%Y", 11));
    EXPECT_EQ(L"0", Text(m_Moment, L"%d", 2));
    EXPECT_EQ(L"", Text(m_Moment, L"%d", 1));
    EXPECT_EQ(L"Jan", Text(m_Moment, L"%B", 4));
    EXPECT_EQ(L"01/0", Text(m_Moment, L"%D", 5));
}

TEST_F(Format, NoBufferIsLeftAlone) {
    wchar_t untouched = L'#';
    EXPECT_EQ(0u, m_Moment.Format(&untouched, 0, L"%d"));
    EXPECT_EQ(L'#', untouched);
    EXPECT_EQ(0u, m_Moment.Format(nullptr, 10, L"%d"));
}

TEST_F(Format, NoFormatIsAnEmptyText) {
    EXPECT_EQ(L"", Text(m_Moment, nullptr));
    EXPECT_EQ(L"", Text(m_Moment, L""));
}

TEST_F(Format, WhatIsNoDateRaisesInTheNameOfTheConversion) {
    EXPECT_EQ("dmDateTime::details::JulianToDateImpl : 'days' parameter is out of range (days = 1)", Error(At(1)));
    EXPECT_EQ("dmDateTime::details::JulianToDateImpl : 'days' parameter is out of range (days = -1)",
              Error(At(-1)));
    EXPECT_EQ("dmDateTime::details::JulianToDateImpl : 'days' parameter is out of range (days = 65381)",
              Error(At(65381)));
    EXPECT_THROW((void)At(1).Format(nullptr, 0, nullptr), std::range_error);
}

TEST_F(Format, TimeOfTheInvariantLocaleHas24Hours) {
    EXPECT_EQ(L"03:04:05", Text(m_Moment, L"%T"));
    EXPECT_EQ(L"23:59:59", Text(At(2, -1 + SDateTime::TicksPerDay), L"%T"));
}

TEST_F(Format, MonthNamesAreThoseOfTheMonth) {
    EXPECT_EQ(L"Jan January", Text(SDateTime(2024, 1), L"%b %B"));
    EXPECT_EQ(L"May May", Text(SDateTime(2024, 5), L"%b %B"));
    EXPECT_EQ(L"Dec December", Text(SDateTime(2024, 12), L"%b %B"));
}

TEST_F(Format, WeekdayNamesAreOneStepAhead) {
    EXPECT_EQ(L"Tue Tuesday", Text(At(2), L"%a %A")); // a Monday
    EXPECT_EQ(L"Wed Wednesday", Text(At(3), L"%a %A"));
    EXPECT_EQ(L"Thu Thursday", Text(At(4), L"%a %A"));
    EXPECT_EQ(L"Fri Friday", Text(At(5), L"%a %A"));
    EXPECT_EQ(L"Sat Saturday", Text(At(6), L"%a %A"));
    EXPECT_EQ(L"Sun Sunday", Text(At(7), L"%a %A")); // a Saturday
}

TEST_F(Format, WeekdayNameOfSundayFallsPastTheEndOfItsBlock) {
    EXPECT_EQ(L"January", Text(At(8), L"%a"));
    EXPECT_EQ(L"Mon", Text(At(8), L"%A"));
}

TEST_F(Format, ShortDateIsThatOfTheUsersLocale) { EXPECT_EQ(L"12/31/78", Text(At(65380), L"%D")); }

TEST_F(Format, AgreesWithTheCivilCalendarOnEveryDay) {
    using namespace std::chrono;
    const sys_days nullDay = year(1899) / December / 30;
    for (JulianDate day = FirstDate; day <= LastDate; ++day) {
        const year_month_day date(nullDay + days(day));
        wchar_t expected[16];
        std::swprintf(expected, std::size(expected), L"%02u.%02u.%04d", static_cast<unsigned>(date.day()),
                      static_cast<unsigned>(date.month()), static_cast<int>(date.year()));
        ASSERT_EQ(expected, Text(At(day), L"%d.%m.%Y"));
    }
}

} // namespace
