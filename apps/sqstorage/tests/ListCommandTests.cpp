#include "Sandbox.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;

class ListCommand : public Sandbox {};

TEST_F(ListCommand, AnEmptyStoreIsStatus1) {
    Create();
    const tagEnd end = Run({"list", "holidays"});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Output, "");
    EXPECT_EQ(end.Errors, "note: The store holds none yet: \"sqstorage import\" brings them in.\n");
    EXPECT_EQ(Run({"--format", "json", "list", "settings"}).Output, "[]\n");
    EXPECT_EQ(Run({"--format", "csv", "list", "settings"}).Output,
              "SETTING,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n");
}

TEST_F(ListCommand, DatesOfACalendarAndAYear) {
    CreateFilled();
    const tagEnd end = Run({"--format", "csv", "list", "holiday_dates", "--calendar", "CME", "--from", "2027-01-01",
                            "--to", "2027-12-31"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors, "");
    EXPECT_EQ(end.Output, "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE,HOLIDAY_DESCRIPTION\n"
                          "CME,2027-01-01,,New Year's Day\n"
                          "CME,2027-03-26,,Good Friday\n"
                          "CME,2027-12-24,,Christmas Day (observed)\n");
}

TEST_F(ListCommand, JsonHasNumbersDatesAndNulls) {
    Create();
    Write("d/holidays.csv", "HOLIDAY_NAME\n\"A \"\"x\"\"\"\n");
    Write("d/holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE\n\"A \"\"x\"\"\",2027-01-01\n");
    Write("d/settings.csv", "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n100000,125000,1000000,0.00005\n");
    ASSERT_EQ(Run({"import", (Folder() / "d").string()}).Status, 0);
    EXPECT_EQ(Run({"--format", "json", "list", "holidays"}).Output,
              "[\n  {\"HOLIDAY\": 1, \"HOLIDAY_NAME\": \"A \\\"x\\\"\"}\n]\n");
    EXPECT_EQ(
        Run({"--format", "json", "list", "holiday_dates"}).Output,
        "[\n  {\"HOLIDAY_NAME\": \"A \\\"x\\\"\", \"HOLIDAY_START_DATE\": \"2027-01-01\", \"HOLIDAY_END_DATE\": "
        "null, \"HOLIDAY_DESCRIPTION\": \"\"}\n]\n");
    EXPECT_EQ(Run({"--format", "json", "list", "settings"}).Output,
              "[\n  {\"SETTING\": 2, \"PRICE_SCALE\": 100000, \"POINT_VALUE\": 125000, \"DAILY_LIMIT\": 1000000, "
              "\"MIN_MOVEMENT\": 0.00005}\n]\n");
}

TEST_F(ListCommand, ADateOfSeveralDaysIsListedWhenOneOfThemIsWithin) {
    Create();
    Write("d/holidays.csv", "HOLIDAY_NAME\nX\n");
    Write("d/holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE\nX,2027-01-01,2027-01-05\n");
    ASSERT_EQ(Run({"import", (Folder() / "d").string()}).Status, 0);
    EXPECT_EQ(Run({"list", "holiday_dates", "--from", "2027-01-05"}).Status, 0);
    EXPECT_EQ(Run({"list", "holiday_dates", "--to", "2027-01-01"}).Status, 0);
    EXPECT_EQ(Run({"list", "holiday_dates", "--from", "2027-01-06"}).Status, 1);
    EXPECT_EQ(Run({"list", "holiday_dates", "--to", "2026-12-31"}).Status, 1);
}

TEST_F(ListCommand, AnUnknownCalendarIsStatus1) {
    Create();
    const tagEnd end = Run({"list", "holiday_dates", "--calendar", "NYSEE"});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Errors, "error: There is no calendar \"NYSEE\": see \"sqstorage list holidays\".\n");
}

TEST_F(ListCommand, ExchangesNameWhatTheyReferTo) {
    CreateFilled();
    const tagEnd end = Run({"--format", "csv", "list", "exchanges"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_THAT(end.Output,
                testing::StartsWith("EXCHANGE,EXCHANGE_NAME,DESCRIPTION,HOLIDAY_NAME,SESSION_NAME,PRICE_SCALE,"
                                    "POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT,TIME_ZONE,MAP_ID,"
                                    "EXCHANGE_TIME_ZONE_INFORMATION\n"));
    EXPECT_THAT(end.Output, HasSubstr(",NASDAQ,Nasdaq Stock Market,NYSE,NASDAQ,100,1,1000000,0.01,0,,"
                                      "\"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\"\n"));
}

TEST_F(ListCommand, SessionsAndTheirDetails) {
    CreateFilled();
    EXPECT_THAT(Run({"--format", "csv", "list", "sessions"}).Output,
                testing::StartsWith("SESSION,SESSION_NAME,SESSION_TYPE,TIME_ZONE\n57,ASX,1,2\n"));
    const tagEnd end = Run({"--format", "csv", "list", "session_details", "--session", "ICE Europe"});
    EXPECT_EQ(end.Output, "SESSION,SESSION_NAME,START_DAY,START_TIME,END_DAY,END_TIME,VALUE5,VALUE6,VALUE7\n"
                          "68,ICE Europe,Sun,23:00,Mon,23:00,0,0,0\n68,ICE Europe,Tue,01:00,Tue,23:00,0,0,0\n"
                          "68,ICE Europe,Wed,01:00,Wed,23:00,0,0,0\n68,ICE Europe,Thu,01:00,Thu,23:00,0,0,0\n"
                          "68,ICE Europe,Fri,01:00,Fri,23:00,0,0,0\n");
    const tagEnd none = Run({"list", "session_details", "--session", "ICE"});
    EXPECT_EQ(none.Status, 1);
    EXPECT_EQ(none.Errors, "error: There is no session \"ICE\": see \"sqstorage list sessions\".\n");
}

TEST_F(ListCommand, AFilterThatDoesNotBelongIsStatus2) {
    Create();
    const tagEnd end = Run({"list", "exchanges", "--session", "CME"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors, "error: --session does not go with exchanges: leave it out.\n");
    EXPECT_EQ(Run({"list", "session_details", "--from", "2027-01-01"}).Status, 2);
    EXPECT_EQ(Run({"list", "settings", "--calendar", "CME"}).Status, 2);
}

TEST_F(ListCommand, RowsAreSortedAndTheTableIsForPeople) {
    CreateFilled();
    const tagEnd end = Run({"list", "holidays"});
    EXPECT_THAT(end.Output, testing::StartsWith("HOLIDAY  HOLIDAY_NAME\n-------  ------------\n      1  ASX\n"));
    EXPECT_THAT(Run({"list", "settings"}).Output, HasSubstr("100000"));
}

} // namespace

} // namespace sqCliTest
