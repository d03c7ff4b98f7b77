#include "platform/clock.h"

#include <gtest/gtest.h>

#include <cmath>

namespace platform {
namespace {

TEST(Clock, NeverGoesBack) {
    double before = MillisecondClock();
    for (int i = 0; i < 1000; ++i) {
        const double now = MillisecondClock();
        ASSERT_GE(now, before);
        before = now;
    }
}

TEST(Clock, CountsMillisecondsWithTheirFraction) {
    const auto start = std::chrono::steady_clock::now();
    const double first = MillisecondClock();
    double second = first;
    while (second == first)
        second = MillisecondClock();
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - start;
    EXPECT_LE(second - first, passed.count());
    EXPECT_NE(std::fmod(second - first, 1.0), 0.0);
}

TEST(Clock, TellsTheTimeOfDayInBetweenTwoOthers) {
    const auto before = std::chrono::system_clock::now();
    const auto now = WallClock();
    EXPECT_LE(before, now);
    EXPECT_LE(now, std::chrono::system_clock::now());
}

} // namespace
} // namespace platform
