#include "apps/sqstorage/rows/Numbers.h"

#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using sqCli::ClockText;
using sqCli::DayText;
using sqCli::ParseClock;
using sqCli::ParseDay;
using sqCli::ParseInteger;
using sqCli::ParseReal;
using sqCli::ParseWeekday;
using sqCli::ShortestText;
using sqCli::tagDay;
using sqCli::WeekdayText;

TEST(Numbers, AFloatIsWrittenAsTheShortestTextThatGivesItBack) {
    EXPECT_EQ(ShortestText(0.1F), "0.1");
    EXPECT_EQ(ShortestText(0.00005F), "0.00005");
    EXPECT_EQ(ShortestText(0.015625F), "0.015625");
    EXPECT_EQ(ShortestText(125000.0F), "125000");
    EXPECT_EQ(ShortestText(1e9F), "1000000000");
    EXPECT_EQ(ShortestText(16777216.0F), "16777216");
}

TEST(Numbers, EveryFloatReadsBackFromItsText) {
    for (float value = 1e-6F; value < 1e9F; value = std::nextafter(value, 1e10F) * 1.37F)
        EXPECT_EQ(static_cast<float>(*ParseReal(ShortestText(value))), value);
    EXPECT_TRUE(ParseReal(ShortestText(std::numeric_limits<float>::max())).has_value());
    EXPECT_TRUE(ParseReal(ShortestText(std::numeric_limits<float>::denorm_min())).has_value());
}

TEST(Numbers, OnlyAWholeTextIsANumber) {
    EXPECT_EQ(ParseInteger("-12"), -12);
    EXPECT_EQ(ParseReal("0.25"), 0.25);
    for (const char* text : {"", " 1", "1 ", "1,5", "x", "+1", "99999999999999999999"})
        EXPECT_FALSE(ParseInteger(text).has_value()) << text;
    for (const char* text : {"", " 1", "1 ", "1,5", "x", "nan", "inf", "1e999", "0x1"})
        EXPECT_FALSE(ParseReal(text).has_value()) << text;
}

TEST(Numbers, DaysCountFromThe30thOfDecember1899) {
    EXPECT_EQ(DayText(tagDay{0}), "1899-12-30");
    EXPECT_EQ(DayText(tagDay{2}), "1900-01-01");
    EXPECT_EQ(DayText(tagDay{50406}), "2038-01-01");
    EXPECT_EQ(DayText(tagDay{65380}), "2078-12-31");
}

TEST(Numbers, EveryDayOfTheCalendarReadsBack) {
    std::string reason;
    for (tagDay day = sqCli::FirstDay; day <= sqCli::LastDay; ++day.Number)
        ASSERT_EQ(ParseDay(DayText(day), reason), day);
}

TEST(Numbers, WhatIsNoDateSaysWhy) {
    const auto reasonOf = [](std::string_view text) {
        std::string reason;
        EXPECT_FALSE(ParseDay(text, reason).has_value());
        return reason;
    };
    EXPECT_EQ(reasonOf("1.1.2027"), "\"1.1.2027\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24");
    EXPECT_EQ(reasonOf("2027-1-001"),
              "\"2027-1-001\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24");
    EXPECT_EQ(reasonOf("-027-01-01"),
              "\"-027-01-01\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24");
    EXPECT_EQ(reasonOf(""), "\"\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24");
    EXPECT_EQ(reasonOf("2027-02-29"), "there is no day 2027-02-29: correct the month or the day");
    EXPECT_EQ(reasonOf("1900-02-29"), "there is no day 1900-02-29: correct the month or the day");
    EXPECT_EQ(reasonOf("2027-13-01"), "there is no day 2027-13-01: correct the month or the day");
    EXPECT_EQ(reasonOf("2027-00-00"), "there is no day 2027-00-00: correct the month or the day");
    EXPECT_EQ(reasonOf("1899-12-31"),
              "1899-12-31 is outside the calendar of the store: give a date from 1900-01-01 to "
              "2078-12-31");
    EXPECT_EQ(reasonOf("2079-01-01"),
              "2079-01-01 is outside the calendar of the store: give a date from 1900-01-01 to "
              "2078-12-31");
}

TEST(Numbers, WeekdaysHaveThreeLettersAndThoseOfTheWeekAfterNumbers) {
    EXPECT_EQ(WeekdayText({0}), "Sun");
    EXPECT_EQ(WeekdayText({6}), "Sat");
    EXPECT_EQ(WeekdayText({7}), "7");
    EXPECT_EQ(WeekdayText({-1}), "-1");
    for (std::int32_t day = 0; day <= 13; ++day)
        EXPECT_EQ(ParseWeekday(WeekdayText({day}))->Number, day);
    for (const char* text : {"", "sun", "Sunday", "0", "6", "14", "-1", "Sun "})
        EXPECT_FALSE(ParseWeekday(text)) << text;
}

TEST(Numbers, TimesReachToMidnightAtTheEndOfTheDay) {
    EXPECT_EQ(ClockText({0}), "00:00");
    EXPECT_EQ(ClockText({61200}), "17:00");
    EXPECT_EQ(ClockText({61205}), "17:00:05");
    EXPECT_EQ(ClockText({86400}), "24:00");
    for (std::int32_t time = 0; time <= 86400; time += 7)
        EXPECT_EQ(ParseClock(ClockText({time}))->Seconds, time);
    for (const char* text : {"", "9:30", "09:60", "24:01", "25:00", "09:30:60", "09:30:", "0930", "09.30", "aa:00",
                             "-1:00", "09:30:0x", "09:30 "})
        EXPECT_FALSE(ParseClock(text)) << text;
}

} // namespace
