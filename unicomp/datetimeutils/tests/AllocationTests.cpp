// Nothing here may allocate when it succeeds. The program counts what passes through operator new.

#include "platform/tests/heap/HeapProbe.h"
#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"
#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include <gtest/gtest.h>

namespace {

using namespace dmDateTime;

template <class Call>
std::size_t AllocationsOf(Call&& call) {
    const std::size_t before = HeapProbe::Allocations();
    call();
    return HeapProbe::Allocations() - before;
}

TEST(Allocation, TheCounterCounts) {
    EXPECT_EQ(1u, AllocationsOf([] { ::operator delete(::operator new(1)); }));
}

TEST(Allocation, NoConversionAllocates) {
    EXPECT_EQ(0u, AllocationsOf([] {
                  for (JulianDate day = FirstDate; day < LastDate; day += 7) {
                      TDate date{};
                      JulianDate back = 0;
                      TTime time{};
                      ASSERT_TRUE(details::JulianToDateImpl(day, date));
                      ASSERT_TRUE(details::DateToJulianImpl(date, back));
                      TimeToTTime(day, time);
                      SDateTime value(date.Year, date.Month);
                      value.AddDays(date.Day - 1);
                      ASSERT_EQ(day, value.ToJulian());
                      ASSERT_EQ(day, GetFirstDayOfWeek(day, value.ToSystemTime().wDayOfWeek));
                      IsDateTimeValid(day, 0, "Test");
                  }
              }));
}

TEST(Allocation, NoFormatterAllocates) {
    wchar_t date[255];
    wchar_t time[16];
    const SDateTime value = SDateTime::FromJulian(50406);
    EXPECT_EQ(0u, AllocationsOf([&] { value.Format(date, std::size(date), L"%d.%m.%Y %H:%M:%S %F %G %T"); }));
    EXPECT_EQ(0u, AllocationsOf([&] { FormatDaySeconds(86399, time); }));
    EXPECT_STREQ(L"01.01.2038 00:00:00 000 000000 00:00:00", date);
    EXPECT_STREQ(L"23:59:59.0000", time);
}

TEST(Allocation, NoTimeZoneStringIsReadOrWrittenWithOne) {
    TIME_ZONE_INFORMATION zone{};
    wchar_t text[128];
    bool parsed = false;
    EXPECT_EQ(0u, AllocationsOf([&] {
                  parsed = tz_help::StringToTZI(L"-60,0,10,0,5,03:00:00.0000,-60,3,0,5,02:00:00.0000", zone);
                  tz_help::TZIToString(zone, text, std::size(text));
              }));
    EXPECT_TRUE(parsed);
    EXPECT_STREQ(L"-60,0,10,0,5,03:00:00.0000,-60,3,0,5,02:00:00.0000", text);
}

} // namespace
