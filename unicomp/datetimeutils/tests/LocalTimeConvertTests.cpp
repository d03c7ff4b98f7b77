#include "unicomp/datetimeutils/interface/LocalTimeConvert.h"

#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/environment.h"
#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"

#include <cstddef>
#include <filesystem>
#include <gmock/gmock.h>

namespace {

using dmDateTime::TimeZoneInformation;
using dmDateTime::ZoneDate;

static_assert(sizeof(ZoneDate) == 12 && offsetof(ZoneDate, Year) == 0 && offsetof(ZoneDate, Minute) == 2 &&
              offsetof(ZoneDate, Milliseconds) == 4 && offsetof(ZoneDate, Day) == 6 &&
              offsetof(ZoneDate, DayOfWeek) == 7 && offsetof(ZoneDate, Hour) == 8 &&
              offsetof(ZoneDate, Month) == 9 && offsetof(ZoneDate, Second) == 10);
static_assert(sizeof(TimeZoneInformation) == 32 && offsetof(TimeZoneInformation, DaylightBias) == 0 &&
              offsetof(TimeZoneInformation, Bias) == 2 && offsetof(TimeZoneInformation, DaylightDate) == 4 &&
              offsetof(TimeZoneInformation, StandardBias) == 16 &&
              offsetof(TimeZoneInformation, StandardDate) == 18 && offsetof(TimeZoneInformation, IsSet) == 30);

class LocalTimeConvert : public testing::Test {
protected:
    void SetUp() override { Recorder::Clear(); }
    void TearDown() override { Recorder::Reset(); }

    static TimeZoneInformation LocalIn(const std::wstring& zone) {
        const platform::CScopedEnvironment environment(L"TZ", zone);
        return TimeZoneInformation::CreateLocal();
    }
};

constexpr const wchar_t* Gmt = L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000";

TEST_F(LocalTimeConvert, ValueOfAllZerosIsGmt) { EXPECT_EQ(Gmt, TimeZoneInformation{}.ToString()); }

TEST_F(LocalTimeConvert, LocalZoneIsFilledFromTheSystem) {
    const TimeZoneInformation zone = LocalIn(L"Europe/Berlin");
    EXPECT_TRUE(zone.IsSet);
    EXPECT_EQ(-60, zone.Bias);
    EXPECT_EQ(0, zone.StandardBias);
    EXPECT_EQ(-60, zone.DaylightBias);
    EXPECT_EQ((ZoneDate{.Day = 5, .DayOfWeek = 0, .Hour = 3, .Month = 10}), zone.StandardDate);
    EXPECT_EQ((ZoneDate{.Day = 5, .DayOfWeek = 0, .Hour = 2, .Month = 3}), zone.DaylightDate);
    EXPECT_EQ(L"-60,0,10,0,5,03:00:00.0000,-60,3,0,5,02:00:00.0000", zone.ToString());
    EXPECT_THAT(Recorder::Asserts(), testing::IsEmpty());
}

TEST_F(LocalTimeConvert, EveryFieldOfADateArrives) {
    EXPECT_EQ(L"240,0,4,6,1,23:59:59.0999,-60,9,6,1,23:59:59.0999",
              LocalIn(L"<-04>4<-03>,M9.1.6/24,M4.1.6/24").ToString());
    EXPECT_EQ(L"60,0,11,2,3,01:02:03.0000,-60,3,5,4,04:05:06.0000",
              LocalIn(L"AAA1BBB,M3.4.5/4:5:6,M11.3.2/1:2:3").ToString());
}

TEST_F(LocalTimeConvert, LocalGmtIsTheBiasWithItsSignTurned) {
    EXPECT_EQ(330, -LONG{LocalIn(L"Asia/Kolkata").Bias});
    EXPECT_EQ(-300, -LONG{LocalIn(L"America/New_York").Bias});
}

TEST_F(LocalTimeConvert, AZoneThatCannotBeToldIsAssertedAndBecomesGmtThatIsSet) {
    const TimeZoneInformation zone = LocalIn(L"No/Such/Zone");
    EXPECT_TRUE(zone.IsSet);
    EXPECT_EQ(Gmt, zone.ToString());
    EXPECT_THAT(Recorder::Asserts(), testing::ElementsAre(L"((DWORD)0xFFFFFFFF) != tziResult"));
    const auto asserts = Recorder::RecordsOf(L"ASSERT");
    ASSERT_EQ(1u, asserts.size());
    EXPECT_EQ("LocalTimeConvert", std::filesystem::path(asserts[0].Value(L"File").AsText()).stem());
    EXPECT_EQ(L"dmDateTime::TimeZoneInformation::CreateLocal", asserts[0].Function);
}

TEST_F(LocalTimeConvert, YearsDoNotAppearInTheText) {
    TimeZoneInformation zone;
    zone.StandardDate.Year = 2024;
    zone.DaylightDate.Year = 2025;
    EXPECT_EQ(Gmt, zone.ToString());
}

TEST_F(LocalTimeConvert, NarrowFieldsAreWidenedWithTheirSign) {
    TimeZoneInformation zone;
    zone.Bias = -32768;
    zone.StandardBias = 32767;
    zone.DaylightBias = -1;
    zone.StandardDate = {65535, 65535, 65535, 255, 255, 255, 255, 255};
    EXPECT_EQ(L"-32768,32767,255,255,255,255:65535:255.65535,-1,0,0,0,00:00:00.0000", zone.ToString());
}

TEST_F(LocalTimeConvert, TextOfALocalZoneParsesBackToTheSameFields) {
    const TimeZoneInformation zone = LocalIn(L"Australia/Lord_Howe");
    TIME_ZONE_INFORMATION parsed{};
    ASSERT_TRUE(tz_help::StringToTZI(zone.ToString().c_str(), parsed));
    EXPECT_EQ(-630, parsed.Bias);
    EXPECT_EQ(-30, parsed.DaylightBias);
    EXPECT_EQ((SYSTEMTIME{0, 4, 0, 1, 2, 0, 0, 0}), parsed.StandardDate);
    EXPECT_EQ((SYSTEMTIME{0, 10, 0, 1, 2, 0, 0, 0}), parsed.DaylightDate);
}

} // namespace
