#include "apps/sqstorage/datasets/WeekRules.h"

#include <gmock/gmock.h>

namespace sqCliTest {

namespace {

using namespace sqCli;
using testing::ElementsAre;
using testing::IsEmpty;

struct tagParsed {
    std::optional<tagSessionDetail> Detail;
    std::vector<std::string> Reasons;
};

tagParsed Parse(const WeekValues& values) {
    tagParsed parsed;
    parsed.Detail = ParseDetail(values, parsed.Reasons);
    return parsed;
}

constexpr const char* DayHint = "give Sun, Mon, Tue, Wed, Thu, Fri or Sat";

TEST(WeekRules, ADetailIsDaysAndTimes) {
    const tagParsed parsed = Parse({"Sun", "17:00", "Mon", "16:00:30", "", "", ""});
    ASSERT_TRUE(parsed.Detail);
    EXPECT_THAT(parsed.Reasons, IsEmpty());
    EXPECT_EQ(*parsed.Detail, (tagSessionDetail{{0}, {61200}, {1}, {57630}, 0, 0, 0}));
}

TEST(WeekRules, TheHostsOwnValuesAreKept) {
    const tagParsed parsed = Parse({"Mon", "09:30", "Mon", "16:00", "1", "9999999", "3"});
    ASSERT_TRUE(parsed.Detail);
    EXPECT_EQ(parsed.Detail->Value5, 1);
    EXPECT_EQ(parsed.Detail->Value6, 9999999);
    EXPECT_EQ(parsed.Detail->Value7, 3);
    EXPECT_THAT(Parse({"Mon", "09:30", "Mon", "16:00", "10000000", "-1", "x"}).Reasons,
                ElementsAre("VALUE5 is \"10000000\": give a whole number from 0 to 9999999",
                            "VALUE6 is \"-1\": give a whole number from 0 to 9999999",
                            "VALUE7 is \"x\": give a whole number from 0 to 9999999"));
}

TEST(WeekRules, TradingMayEndAtMidnightAndInTheWeekAfter) {
    EXPECT_TRUE(Parse({"Sat", "00:00", "Sat", "24:00", "", "", ""}).Detail);
    EXPECT_TRUE(Parse({"Sat", "23:00", "7", "05:00", "", "", ""}).Detail);
    EXPECT_TRUE(Parse({"Sun", "00:00", "7", "00:00", "", "", ""}).Detail);
}

TEST(WeekRules, AnEndThatIsNotAfterTheStartIsRefused) {
    const std::string hint =
        ": exchange them, or give as END_DAY the day on which the trading ends, with 7 for the "
        "Sunday after";
    EXPECT_THAT(Parse({"Fri", "23:00", "Fri", "05:00", "", "", ""}).Reasons,
                ElementsAre("the end, Fri 05:00, is not after the start, Fri 23:00" + hint));
    EXPECT_THAT(Parse({"Fri", "23:00", "Fri", "23:00", "", "", ""}).Reasons,
                ElementsAre("the end, Fri 23:00, is not after the start, Fri 23:00" + hint));
    EXPECT_THAT(Parse({"Sat", "23:00", "Sun", "05:00", "", "", ""}).Reasons,
                ElementsAre("the end, Sun 05:00, is not after the start, Sat 23:00" + hint));
}

TEST(WeekRules, MoreThanAWeekIsRefused) {
    EXPECT_THAT(Parse({"Sun", "00:00", "7", "00:01", "", "", ""}).Reasons,
                ElementsAre("the trading from Sun 00:00 to 7 00:01 is longer than a week: correct a day"));
}

TEST(WeekRules, WhatIsNoDayOrTimeIsRefused) {
    EXPECT_THAT(Parse({"Sunday", "24:00", "14", "9:30", "", "", ""}).Reasons,
                ElementsAre(std::string("START_DAY is \"Sunday\": ") + DayHint,
                            "START_TIME is \"24:00\": give a time like 09:30, from 00:00 to 23:59:59",
                            std::string("END_DAY is \"14\": ") + DayHint +
                                ", or 7 to 13 for Sunday to Saturday of the week after",
                            "END_TIME is \"9:30\": give a time like 09:30, from 00:00 to 24:00"));
    EXPECT_THAT(Parse({"7", "09:60", "Mon", "24:01", "", "", ""}).Reasons,
                ElementsAre(std::string("START_DAY is \"7\": ") + DayHint,
                            "START_TIME is \"09:60\": give a time like 09:30, from 00:00 to 23:59:59",
                            "END_TIME is \"24:01\": give a time like 09:30, from 00:00 to 24:00"));
}

TEST(WeekRules, TheTextThatHostsReadHasRoomForSoManyDetails) {
    // "25:" and 25 times "9960,10020,1000,0,0;" are 503 characters; one more detail is too many.
    const tagSessionDetail detail{{6}, {79200}, {6}, {82800}, 0, 1000, 0};
    std::vector<tagSessionDetail> details(25, detail);
    EXPECT_FALSE(WeekProblem(details));
    details.push_back(detail);
    EXPECT_EQ(WeekProblem(details), "the 26 rows of the session make a text of 523 characters, and hosts read 511: "
                                    "join or remove some of them");
    EXPECT_FALSE(WeekProblem({}));
}

} // namespace

} // namespace sqCliTest
