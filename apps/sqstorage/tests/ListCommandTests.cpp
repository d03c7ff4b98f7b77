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

TEST_F(ListCommand, RowsAreSortedAndTheTableIsForPeople) {
    CreateFilled();
    const tagEnd end = Run({"list", "holidays"});
    EXPECT_THAT(end.Output, testing::StartsWith("HOLIDAY  HOLIDAY_NAME\n-------  ------------\n      1  ASX\n"));
    EXPECT_THAT(Run({"list", "settings"}).Output, HasSubstr("100000"));
}

} // namespace

} // namespace sqCliTest
