#include "Sandbox.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class WeekCommand : public Sandbox {
protected:
    void SetUp() override {
        CreateFilled();
        m_Variables["TZ"] = "Asia/Tokyo";
    }
    std::string Week(const std::string& exchange, const std::string& zone, const std::string& date) {
        const tagEnd end = Run({"week", exchange, "--zone", zone, "--date", date});
        EXPECT_EQ(end.Status, 0);
        EXPECT_EQ(end.Errors, "");
        return end.Output;
    }
};

TEST_F(WeekCommand, IsDrawnOnTheClockOfTheExchange) {
    EXPECT_EQ(Week("CME", "exchange", "2026-03-04"),
              "CME, Chicago Mercantile Exchange, equity index futures\n"
              "Week of 2026-03-01 in exchange time (UTC-06:00)\n\n"
              "            0  3  6  9  12 15 18 21\n"
              "Sun  1 Mar  ·················███████  17:00-24:00\n"
              "Mon  2 Mar  ████████████████·███████  00:00-16:00 17:00-24:00\n"
              "Tue  3 Mar  ████████████████·███████  00:00-16:00 17:00-24:00\n"
              "Wed  4 Mar  ████████████████·███████  00:00-16:00 17:00-24:00\n"
              "Thu  5 Mar  ████████████████·███████  00:00-16:00 17:00-24:00\n"
              "Fri  6 Mar  ████████████████········  00:00-16:00\n"
              "Sat  7 Mar  ························\n");
}

TEST_F(WeekCommand, MovesInUtcWhenTheExchangesClockChanges) {
    EXPECT_THAT(Week("CME", "utc", "2026-03-04"), HasSubstr("Mon  2 Mar  ██████████████████████·█  00:00-22:00 "
                                                            "23:00-24:00\n"));
    const std::string after = Week("CME", "utc", "2026-03-08");
    EXPECT_THAT(after, HasSubstr("Week of 2026-03-08 in UTC\n"));
    EXPECT_THAT(after, HasSubstr("Sun  8 Mar  ······················██  22:00-24:00\n"));
    EXPECT_THAT(after, HasSubstr("Mon  9 Mar  █████████████████████·██  00:00-21:00 22:00-24:00\n"));
}

TEST_F(WeekCommand, SaysWhenTheClockChanges) {
    EXPECT_THAT(Week("CME", "exchange", "2026-03-08"),
                HasSubstr("Week of 2026-03-08 in exchange time (UTC-06:00, from 2026-03-08 UTC-05:00)\n"));
    EXPECT_THAT(Week("LSE", "exchange", "2026-10-31"),
                HasSubstr("Week of 2026-10-25 in exchange time (UTC+01:00, from 2026-10-25 UTC+00:00)\n"));
}

TEST_F(WeekCommand, OnTheLocalClockIsThatOfThisMachine) {
    const std::string before = Week("CME", "local", "2026-03-04");
    EXPECT_THAT(before, HasSubstr("Week of 2026-03-01 in local time (UTC+09:00)\n"));
    EXPECT_THAT(before, HasSubstr("Mon  2 Mar  ········████████████████  08:00-24:00\n"));
    EXPECT_THAT(before, HasSubstr("Sat  7 Mar  ███████·················  00:00-07:00\n"));
    EXPECT_THAT(Week("CME", "local", "2026-03-11"),
                HasSubstr("Sat 14 Mar  ██████··················  00:00-06:00\n"));
    m_Variables["TZ"] = "America/New_York";
    EXPECT_THAT(Week("CME", "local", "2026-03-11"), HasSubstr("(UTC-05:00, from 2026-03-08 UTC-04:00)"));
}

TEST_F(WeekCommand, IsThatOfTodayWithoutADate) {
    const tagEnd end = Run({"week", "TSE"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_THAT(end.Output, StartsWith("TSE, Tokyo Stock Exchange, equities\nWeek of 20"));
    EXPECT_THAT(end.Output, HasSubstr("09:00-11:30 12:30-15:30\n"));
}

TEST_F(WeekCommand, ASessionsOwnClockCounts) {
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE SESSIONS SET TIME_ZONE=1 WHERE SESSION_NAME='NYSE'");
        database.Run(L"UPDATE SESSIONS SET TIME_ZONE=0 WHERE SESSION_NAME='TSX'");
        database.Run(L"UPDATE SESSIONS SET TIME_ZONE=5 WHERE SESSION_NAME='LSE'");
    }
    EXPECT_THAT(Week("NYSE", "utc", "2026-03-04"), HasSubstr("09:30-16:00\n"));
    EXPECT_THAT(Week("TSX", "utc", "2026-03-04"), HasSubstr("00:30-07:00\n"));
    const tagEnd end = Run({"week", "LSE"});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Errors,
              "error: The session \"LSE\" has the time zone 5, which says no clock: make it 0, 1 or 2, for "
              "local, UTC or the exchange.\n");
}

TEST_F(WeekCommand, HolidaysOfTheWeekAreNamed) {
    EXPECT_THAT(Week("LSE", "exchange", "2026-04-01"), HasSubstr("\nHoliday: 2026-04-03, Good Friday\n"));
    EXPECT_THAT(Week("LSE", "exchange", "2026-04-08"), HasSubstr("\nHoliday: 2026-04-06, Easter Monday\n"));
    EXPECT_THAT(Week("LSE", "exchange", "2026-03-04"), Not(HasSubstr("Holiday")));
}

TEST_F(WeekCommand, AHolidayOfSeveralDaysIsNamedInEachWeekThatItTouches) {
    CHeldDatabase(Database())
        .Run(L"INSERT INTO HOLIDAY_DETAILS SELECT HOLIDAY,'Long one','05.03.2026','16.03.2026' FROM HOLIDAYS WHERE "
             L"HOLIDAY_NAME='LSE'");
    const std::string line = "\nHoliday: 2026-03-05 to 2026-03-16, Long one\n";
    EXPECT_THAT(Week("LSE", "exchange", "2026-02-25"), Not(HasSubstr("Holiday")));
    EXPECT_THAT(Week("LSE", "exchange", "2026-03-04"), HasSubstr(line)) << "it begins there";
    EXPECT_THAT(Week("LSE", "exchange", "2026-03-11"), HasSubstr(line)) << "all of that week";
    EXPECT_THAT(Week("LSE", "exchange", "2026-03-18"), HasSubstr(line)) << "it ends there";
    EXPECT_THAT(Week("LSE", "exchange", "2026-03-22"), Not(HasSubstr("Holiday")));
}

TEST_F(WeekCommand, AHolidayThatEndsOnItsDayIsOfOneDay) {
    CHeldDatabase(Database())
        .Run(L"INSERT INTO HOLIDAY_DETAILS SELECT HOLIDAY,'','05.03.2026','05.03.2026' FROM HOLIDAYS WHERE "
             L"HOLIDAY_NAME='LSE'");
    EXPECT_THAT(Week("LSE", "exchange", "2026-03-04"), HasSubstr("\nHoliday: 2026-03-05\n"));
}

TEST_F(WeekCommand, RowsAreWholeStretchesWithTheirDistanceFromUtc) {
    const tagEnd csv = Run({"--format", "csv", "week", "CME", "--date", "2026-03-08"});
    EXPECT_EQ(csv.Output, "EXCHANGE_NAME,ZONE,START,END\n"
                          "CME,exchange,2026-03-08T17:00:00-05:00,2026-03-09T16:00:00-05:00\n"
                          "CME,exchange,2026-03-09T17:00:00-05:00,2026-03-10T16:00:00-05:00\n"
                          "CME,exchange,2026-03-10T17:00:00-05:00,2026-03-11T16:00:00-05:00\n"
                          "CME,exchange,2026-03-11T17:00:00-05:00,2026-03-12T16:00:00-05:00\n"
                          "CME,exchange,2026-03-12T17:00:00-05:00,2026-03-13T16:00:00-05:00\n");
    const tagEnd json = Run({"--format", "json", "week", "CME", "--zone", "utc", "--date", "2026-03-01"});
    EXPECT_THAT(json.Output,
                StartsWith("[\n  {\"EXCHANGE_NAME\": \"CME\", \"ZONE\": \"utc\", \"START\": "
                           "\"2026-03-01T23:00:00+00:00\", \"END\": \"2026-03-02T22:00:00+00:00\"},\n"));
}

TEST_F(WeekCommand, WhatCannotBeDrawnIsStatus1) {
    tagEnd end = Run({"week", "CMEE"});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Errors, "error: There is no exchange \"CMEE\": see \"sqstorage list exchanges\".\n");
    {
        CHeldDatabase database(Database());
        database.Run(L"DELETE FROM SESSION_DETAILS WHERE SESSION=(SELECT SESSION FROM EXCHANGES WHERE "
                     L"EXCHANGE_NAME='CME')");
        database.Run(L"UPDATE EXCHANGES SET SESSION=99999 WHERE EXCHANGE_NAME='LSE'");
    }
    end = Run({"week", "CME"});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Errors, "error: The session \"CME\" of the exchange \"CME\" has no trading times: import "
                          "session_details.csv.\n");
    end = Run({"week", "LSE"});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Errors,
              "error: The exchange \"LSE\" has no session: name one in exchanges.csv and import it with "
              "--update.\n");
}

TEST_F(WeekCommand, WrongUsageIsStatus2) {
    EXPECT_EQ(Run({"week"}).Status, 2);
    const tagEnd zone = Run({"week", "CME", "--zone", "mars"});
    EXPECT_EQ(zone.Status, 2);
    EXPECT_EQ(zone.Output, "");
    EXPECT_EQ(zone.Errors, "error: --zone: \"mars\" is none of exchange, local, utc: see \"sqstorage --help\".\n");
    const tagEnd end = Run({"week", "CME", "--date", "2026-02-30"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors, "error: --date: there is no day 2026-02-30: correct the month or the day.\n");
}

TEST_F(WeekCommand, AMachineWithoutATimeZoneHasNoLocalClock) {
    m_Variables["TZ"] = ":No/Such/Zone";
    const tagEnd end = Run({"week", "CME", "--zone", "local"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors,
              "error: The time zone of this machine is not known: correct the environment variable TZ.\n");
    EXPECT_EQ(Run({"week", "CME"}).Status, 0);
}

TEST_F(WeekCommand, OnATerminalBlocksAreGreenAndFillItsWidth) {
    // The terminal has 100 columns.
    EXPECT_THAT(RunOnTerminal({"week", "CME", "--date", "2026-03-04"}).Output,
                HasSubstr("Sat  7 Mar  \x1b[32m················································\x1b[0m"));
    m_Variables["NO_COLOR"] = "1";
    EXPECT_THAT(RunOnTerminal({"week", "CME", "--date", "2026-03-04"}).Output, Not(HasSubstr("\x1b")));
}

} // namespace

} // namespace sqCliTest
