#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "RangeErrorText.h"

#include "diagnostics/tests/recorder/Recorder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <limits>

namespace {

using namespace dmDateTime;

class IsDateTimeValid : public testing::Test {
protected:
    void SetUp() override { Recorder::Clear(); }
    void TearDown() override { Recorder::Reset(); }
};

std::string Error(JulianDate day, DaySeconds time) {
    return RangeErrorText([&] { dmDateTime::IsDateTimeValid(day, time, "Caller"); });
}

TEST_F(IsDateTimeValid, AcceptsEveryDateWithATimeOfDayAndReportsNothing) {
    EXPECT_EQ("none", Error(2, 0));
    EXPECT_EQ("none", Error(2, 86399));
    EXPECT_EQ("none", Error(65380, 0));
    EXPECT_EQ("none", Error(65380, 86399));
    EXPECT_THAT(Recorder::Records(), testing::IsEmpty());
}

TEST_F(IsDateTimeValid, AcceptsTheNullDateAtMidnightOnly) {
    EXPECT_EQ("none", Error(0, 0));
    EXPECT_EQ("Caller : date/time is out of range, date = 0.25", Error(0, 21600));
}

TEST_F(IsDateTimeValid, RaisesInTheCallersNameWithTheDayAndItsFraction) {
    EXPECT_EQ("Caller : date/time is out of range, date = 1", Error(1, 0));
    EXPECT_EQ("Caller : date/time is out of range, date = 65381.5", Error(65381, 43200));
    EXPECT_EQ("Caller : date/time is out of range, date = 3", Error(2, 86400));
    EXPECT_EQ("Caller : date/time is out of range, date = -0.5", Error(-1, 43200));
    EXPECT_EQ("Caller : date/time is out of range, date = 1.999988425925926", Error(2, -1));
}

TEST_F(IsDateTimeValid, TakesAnyNumbers) {
    constexpr LONG Least = std::numeric_limits<LONG>::min();
    constexpr LONG Most = std::numeric_limits<LONG>::max();
    EXPECT_EQ("Caller : date/time is out of range, date = -2147508503.1348147", Error(Least, Least));
    EXPECT_EQ("Caller : date/time is out of range, date = 2147508502.1348033", Error(Most, Most));
}

TEST_F(IsDateTimeValid, TracesDayAndSecondsBeforeItRaises) {
    Error(65381, 7);
    EXPECT_THAT(Recorder::Messages(), testing::ElementsAre(L"65381 - 7"));
    const auto trace = Recorder::RecordsOf(L"TRACE");
    ASSERT_FALSE(trace.empty());
    EXPECT_EQ(L"dmDateTime::IsDateTimeValid", trace.front().Function);
    EXPECT_EQ("DateTimeUtilsCore", std::filesystem::path(trace.front().Value(L"File").AsText()).stem());
}

TEST_F(IsDateTimeValid, TracesWhatAddDaysArrivedAt) {
    SDateTime value = SDateTime::FromTicks(SDateTime::FromJulian(65380).Ticks() + 5 * SDateTime::TicksPerSecond);
    EXPECT_THROW(value.AddDays(1), std::range_error);
    EXPECT_THAT(Recorder::Messages(), testing::ElementsAre(L"-1 - 5"));
}

TEST_F(IsDateTimeValid, AddDaysWithinTheCalendarReportsNothing) {
    SDateTime value = SDateTime::FromJulian(2);
    value.AddDays(1);
    EXPECT_THAT(Recorder::Records(), testing::IsEmpty());
}

} // namespace
