#include "platform/clock.h"
#include "platform/environment.h"

#include <gtest/gtest.h>

namespace platform {

namespace {

using namespace std::chrono;

seconds OffsetIn(const wchar_t* zone, sys_days day) {
    const CScopedEnvironment environment(L"TZ", zone);
    return UtcOffset(system_clock::time_point(day));
}

TEST(UtcOffset, FollowsTheSeason) {
    EXPECT_EQ(hours(1), OffsetIn(L"Europe/Berlin", 2027y / January / 1));
    EXPECT_EQ(hours(2), OffsetIn(L"Europe/Berlin", 2027y / July / 1));
    EXPECT_EQ(hours(-5), OffsetIn(L"America/New_York", 2027y / January / 1));
}

TEST(UtcOffset, MayHavePartsOfAnHour) {
    EXPECT_EQ(minutes(345), OffsetIn(L"Asia/Kathmandu", 2027y / January / 1));
    EXPECT_EQ(seconds(0), OffsetIn(L"", 2027y / January / 1));
}

} // namespace

} // namespace platform
