#include "platform/local_time_zone.h"

#include "platform/environment.h"
#include "platform/file.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using namespace platform;

struct tagAnswer {
    DWORD Status;
    TIME_ZONE_INFORMATION Zone;
};

tagAnswer ZoneIn(const std::optional<std::wstring>& tz) {
    const CScopedEnvironment environment(L"TZ", tz);
    tagAnswer answer{};
    answer.Status = GetTimeZoneInformation(&answer.Zone);
    return answer;
}

class LocalTimeZone : public testing::Test {
protected:
    std::wstring WriteZone(const std::filesystem::path& from) {
        const auto path = m_Directory.Path() / "zone";
        WriteFileAtomically(path, ReadFile(from));
        return FromPath(path);
    }

    CTemporaryDirectory m_Directory;
};

TEST_F(LocalTimeZone, NameOfTheDatabase) {
    const auto answer = ZoneIn(L"Asia/Kathmandu");
    EXPECT_EQ(TimeZoneIdUnknown, answer.Status);
    EXPECT_EQ(-345, answer.Zone.Bias);
    EXPECT_EQ(-345, ZoneIn(L":Asia/Kathmandu").Zone.Bias);
}

TEST_F(LocalTimeZone, StatusTellsWhetherDaylightSavingIsInForce) {
    const DWORD north = ZoneIn(L"Europe/Berlin").Status;
    EXPECT_TRUE(north == TimeZoneIdStandard || north == TimeZoneIdDaylight);
    EXPECT_EQ(TimeZoneIdUnknown, ZoneIn(L"Asia/Tokyo").Status);
}

TEST_F(LocalTimeZone, RuleAsPosixWritesIt) {
    const auto answer = ZoneIn(L"AAA3BBB,M3.2.0,M11.1.0");
    EXPECT_EQ(180, answer.Zone.Bias);
    EXPECT_EQ(3, answer.Zone.DaylightDate.wMonth);
    EXPECT_EQ(11, answer.Zone.StandardDate.wMonth);
}

TEST_F(LocalTimeZone, EmptyNameIsUtc) {
    const auto answer = ZoneIn(L"");
    EXPECT_EQ(TimeZoneIdUnknown, answer.Status);
    EXPECT_EQ(0, answer.Zone.Bias);
    EXPECT_STREQ(L"UTC", answer.Zone.StandardName);
    EXPECT_EQ(TimeZoneIdUnknown, ZoneIn(L":").Status);
}

TEST_F(LocalTimeZone, SystemsOwnZoneNeedsNoName) { EXPECT_NE(TimeZoneIdInvalid, ZoneIn(std::nullopt).Status); }

TEST_F(LocalTimeZone, FullPathOfAFileAndItsReplacementAreSeen) {
    const std::wstring path = WriteZone("/usr/share/zoneinfo/Asia/Tokyo");
    EXPECT_EQ(-540, ZoneIn(path).Zone.Bias);
    WriteZone("/usr/share/zoneinfo/Asia/Kolkata");
    EXPECT_EQ(-330, ZoneIn(path).Zone.Bias);
}

TEST_F(LocalTimeZone, DatabaseMayStandElsewhere) {
    WriteZone("/usr/share/zoneinfo/Asia/Tokyo");
    const CScopedEnvironment environment(L"TZDIR", m_Directory.Name());
    EXPECT_EQ(-540, ZoneIn(L"zone").Zone.Bias);
    EXPECT_EQ(TimeZoneIdInvalid, ZoneIn(L"Asia/Tokyo").Status);
}

TEST_F(LocalTimeZone, WhatNamesNoZoneIsInvalidAndLeavesTheRecordAlone) {
    WriteFileAtomically(m_Directory.Path() / "text", "no zone");
    const std::wstring text = m_Directory.Name() + L"/text";
    const std::wstring directory = m_Directory.Name();
    for (const std::wstring& tz : {std::wstring(L"No/Such/Zone"), std::wstring(L":EST5EDT4:nonsense"), text,
                                   directory, std::wstring(L":AAA3"), std::wstring(L"AAA3BBB,nonsense")}) {
        const CScopedEnvironment environment(L"TZ", tz);
        TIME_ZONE_INFORMATION zone{};
        zone.Bias = 77;
        TIME_ZONE_INFORMATION before = zone;
        EXPECT_EQ(TimeZoneIdInvalid, GetTimeZoneInformation(&zone));
        EXPECT_TRUE(zone == before);
    }
}

TEST_F(LocalTimeZone, ManyThreadsMayAskWhileTheFileIsReplaced) {
    const CScopedEnvironment environment(L"TZ", WriteZone("/usr/share/zoneinfo/Asia/Tokyo"));
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int call = 0; call < 200; ++call) {
                TIME_ZONE_INFORMATION zone{};
                EXPECT_EQ(TimeZoneIdUnknown, GetTimeZoneInformation(&zone));
                EXPECT_TRUE(zone.Bias == -540 || zone.Bias == -330) << zone.Bias;
            }
        });
    WriteZone("/usr/share/zoneinfo/Asia/Kolkata");
}

} // namespace
