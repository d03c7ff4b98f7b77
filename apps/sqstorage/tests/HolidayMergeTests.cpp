#include "apps/sqstorage/datasets/HolidayMerge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sqCli::MergeHolidays;
using sqCli::tagDay;
using sqCli::tagHolidayDate;
using testing::ElementsAre;

tagHolidayDate On(std::int32_t day, const char* description) { return {tagDay{day}, std::nullopt, description}; }

TEST(HolidayMerge, ADayThatTheCalendarLacksIsAdded) {
    const auto merge = MergeHolidays({On(10, "a")}, {On(5, "b")}, false);
    EXPECT_THAT(merge.Dates, ElementsAre(On(5, "b"), On(10, "a")));
    EXPECT_EQ(merge.Counts.Added, 1u);
    EXPECT_TRUE(merge.Changes());
}

TEST(HolidayMerge, TheSameIsUnchanged) {
    const auto merge = MergeHolidays({On(10, "a")}, {On(10, "a")}, true);
    EXPECT_EQ(merge.Counts.Unchanged, 1u);
    EXPECT_FALSE(merge.Changes());
}

TEST(HolidayMerge, AnotherDescriptionStaysWithoutUpdate) {
    const auto merge = MergeHolidays({On(10, "a")}, {On(10, "b")}, false);
    EXPECT_THAT(merge.Dates, ElementsAre(On(10, "a")));
    EXPECT_EQ(merge.Counts.Different, 1u);
    EXPECT_FALSE(merge.Changes());
}

TEST(HolidayMerge, UpdateMakesTheDayWhatTheFileSays) {
    const auto merge = MergeHolidays({On(10, "a"), On(10, "c"), On(11, "d")}, {On(10, "b")}, true);
    EXPECT_THAT(merge.Dates, ElementsAre(On(10, "b"), On(11, "d")));
    EXPECT_EQ(merge.Counts.Updated, 1u);
    EXPECT_EQ(merge.Counts.Added, 0u);
}

TEST(HolidayMerge, AnEndDateIsADifference) {
    const tagHolidayDate longer{tagDay{10}, tagDay{12}, "a"};
    EXPECT_EQ(MergeHolidays({On(10, "a")}, {longer}, false).Counts.Different, 1u);
    EXPECT_THAT(MergeHolidays({On(10, "a")}, {longer}, true).Dates, ElementsAre(longer));
}

TEST(HolidayMerge, TwoHolidaysMayFallOnOneDay) {
    const auto merge = MergeHolidays({}, {On(10, "a"), On(10, "b")}, false);
    EXPECT_THAT(merge.Dates, ElementsAre(On(10, "a"), On(10, "b")));
    EXPECT_EQ(merge.Counts.Added, 2u);
    EXPECT_EQ(MergeHolidays(merge.Dates, {On(10, "b"), On(10, "a")}, true).Counts.Unchanged, 2u);
}

TEST(HolidayMerge, ADateWithoutADayIsKept) {
    const tagHolidayDate without{std::nullopt, std::nullopt, "x"};
    EXPECT_THAT(MergeHolidays({without}, {On(10, "a")}, false).Dates, ElementsAre(without, On(10, "a")));
}

} // namespace
