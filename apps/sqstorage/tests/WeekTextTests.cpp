#include "apps/sqstorage/datasets/WeekText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqCliTest {

namespace {

using namespace sqCli;

using Details = std::vector<tagSessionDetail>;

constexpr tagSessionDetail Overnight{{0}, {17 * 3600}, {1}, {16 * 3600}, 0, 0, 0};
constexpr tagSessionDetail Day{{1}, {9 * 3600 + 30 * 60}, {1}, {16 * 3600}, 0, 0, 0};
constexpr tagSessionDetail IntoNextWeek{{6}, {23 * 3600 + 1}, {7}, {5 * 3600}, 1, 2, 9999999};

// The only reason why the text says no times.
std::string ReasonOf(std::string_view text) {
    std::vector<std::string> reasons;
    EXPECT_EQ(ParseWeek("TIMES", text, reasons), std::nullopt);
    EXPECT_EQ(reasons.size(), 1U);
    return reasons.empty() ? std::string() : reasons.front();
}

Details TimesOf(std::string_view text) {
    std::vector<std::string> reasons;
    const auto details = ParseWeek("TIMES", text, reasons);
    EXPECT_THAT(reasons, testing::IsEmpty());
    return details.value_or(Details());
}

TEST(WeekText, LeavesOutTheEndsDayWhenItIsTheStarts) {
    EXPECT_EQ(StretchText(Overnight), "Sun 17:00-Mon 16:00");
    EXPECT_EQ(StretchText(Day), "Mon 09:30-16:00");
    EXPECT_EQ(StretchText(IntoNextWeek), "Sat 23:00:01-7 05:00 (1 2 9999999)");
    EXPECT_EQ(WeekText(Details{Overnight, Day}), "Sun 17:00-Mon 16:00; Mon 09:30-16:00");
    EXPECT_EQ(WeekText({}), "");
}

TEST(WeekText, ReadsBackWhatItWroteInTheOrderOfTheWeek) {
    const Details details{Overnight, Day, IntoNextWeek};
    EXPECT_EQ(TimesOf(WeekText(details)), details);
    EXPECT_EQ(TimesOf("Sat 23:00:01-7 05:00 (1 2 9999999);Mon 09:30-16:00 ; Sun 17:00 - Mon 16:00;"), details);
    EXPECT_EQ(TimesOf("Mon 00:00-24:00"), (Details{{{1}, {0}, {1}, {86400}, 0, 0, 0}}));
    EXPECT_EQ(TimesOf(""), Details());
}

TEST(WeekText, SaysWhatIsWrongWithATextOfAnotherForm) {
    const std::string advice = ": write times like \"Mon 09:30-16:00; Tue 17:00-Wed 16:00\"";
    EXPECT_EQ(ReasonOf("Mon 09:30"), "TIMES has \"Mon 09:30\" in it" + advice);
    EXPECT_EQ(ReasonOf("Mon 09:30-16:00;; Tue 09:30-16:00"), "TIMES has \"\" in it" + advice);
    EXPECT_EQ(ReasonOf("Mon 09:30-16:00 (1 2)"), "TIMES has \"Mon 09:30-16:00 (1 2)\" in it" + advice);
    EXPECT_EQ(ReasonOf("Mon 09:30-16:00 1 2 3)"), "TIMES has \"Mon 09:30-16:00 1 2 3)\" in it" + advice);
    EXPECT_EQ(ReasonOf("Mon 09:30-16:00 (1 2 3 4)"), "TIMES has \"Mon 09:30-16:00 (1 2 3 4)\" in it" + advice);
}

TEST(WeekText, SaysWhatIsWrongWithAStretch) {
    EXPECT_EQ(ReasonOf("Moon 09:30-Mon 16:00"), "TIMES has \"Moon 09:30-Mon 16:00\" in it, where START_DAY is "
                                                "\"Moon\": give Sun, Mon, Tue, Wed, Thu, Fri or Sat");
    EXPECT_EQ(ReasonOf("Mon 9:30-16:00"),
              "TIMES has \"Mon 9:30-16:00\" in it, where START_TIME is \"9:30\": give a "
              "time like 09:30, from 00:00 to 23:59:59");
    EXPECT_THAT(ReasonOf("Mon 17:00-16:00"), testing::HasSubstr("the end, Mon 16:00, is not after the start"));
    EXPECT_EQ(ReasonOf("Mon 09:30-16:00; Mon 09:30-16:00"), "TIMES has \"Mon 09:30-16:00\" twice: remove one");
}

TEST(WeekText, RefusesMoreStretchesThanHostsRead) {
    std::string text;
    for (int minute = 10; minute < 50; ++minute)
        text += "Mon 09:" + std::to_string(minute) + "-09:59;";
    EXPECT_THAT(ReasonOf(text), testing::HasSubstr("make a text of 643 characters, and hosts read 511"));
}

TEST(SessionsString, SaysTheTimesInMinutes) {
    EXPECT_EQ(ParseSessionsString("2:2010,2400,0,0,0;1020,2400,6,7,5;"),
              (Details{{{0}, {17 * 3600}, {1}, {16 * 3600}, 5, 6, 7}, Day}));
    EXPECT_EQ(ParseSessionsString("0:"), Details());
}

TEST(SessionsString, GivesNothingForAnotherText) {
    for (const char* text : {"", "2:", "1:1,2,3,4,5", "1:1,2,3,4;", "1:1,2,3,4,5;6", "1:1,-2,3,4,5;", "x:", "0"})
        EXPECT_EQ(ParseSessionsString(text), std::nullopt) << text;
}

} // namespace

} // namespace sqCliTest
