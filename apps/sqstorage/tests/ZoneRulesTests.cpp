#include "apps/sqstorage/datasets/ZoneRules.h"

#include <gmock/gmock.h>

namespace sqCliTest {

namespace {

using namespace sqCli;

std::optional<std::string> Problem(const std::string& text) { return ZoneProblem("ZONE", text); }

std::string OutOfRange(const std::string& text) {
    return "ZONE is \"" + text +
           "\", where a bias, a month, a weekday, a week or a time is out of range: write it like "
           "\"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\"";
}

TEST(ZoneRules, ZonesWithAndWithoutDaylightSavingAreTaken) {
    EXPECT_FALSE(Problem("360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000"));
    EXPECT_FALSE(Problem("-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000"));
    EXPECT_FALSE(Problem("-540,0,0,0,0,00:00:00.0000,0,4,0,1,02:00:00.0000"));
}

TEST(ZoneRules, MoreOrFewerThanSeventeenNumbersAreNoZone) {
    EXPECT_EQ(Problem("America/Chicago"),
              "ZONE is \"America/Chicago\", which is no time zone: give seventeen numbers "
              "like \"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\"");
    EXPECT_TRUE(Problem(""));
    EXPECT_TRUE(Problem("360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00"));
    EXPECT_TRUE(Problem("360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000,1"));
}

TEST(ZoneRules, NumbersThatNoCalendarHasAreRefused) {
    for (const std::string text :
         {"360,0,13,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000",
          "360,0,11,7,1,02:00:00.0000,-60,3,0,2,02:00:00.0000",
          "360,0,11,0,6,02:00:00.0000,-60,3,0,2,02:00:00.0000",
          "360,0,11,0,1,24:00:00.0000,-60,3,0,2,02:00:00.0000",
          "360,0,11,0,1,02:00:00.0000,-60,0,0,2,02:00:00.0000",
          "1441,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000", "0,0,0,0,0,25:00:00.0000,0,0,0,0,00:00:00.0000"})
        EXPECT_EQ(Problem(text), OutOfRange(text));
}

TEST(ZoneRules, WhatTheStoreWouldNotGiveBackIsRefusedWithWhatItWould) {
    EXPECT_EQ(Problem("360,0,11,0,1,02:00:00.0500,-60,3,0,2,02:00:00.0000"),
              "ZONE is \"360,0,11,0,1,02:00:00.0500,-60,3,0,2,02:00:00.0000\", and the store would keep "
              "\"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\": write it so, or correct it");
    EXPECT_TRUE(Problem("360,0,11,0,1,2,0,0,0,-60,3,0,2,2,0,0,0"));
    EXPECT_TRUE(Problem("x,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000"));
}

} // namespace

} // namespace sqCliTest
