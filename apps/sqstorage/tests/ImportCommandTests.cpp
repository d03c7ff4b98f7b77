#include "ImportFixture.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::Not;

class ImportCommand : public ImportSandbox {};

TEST_F(ImportCommand, ADirectoryIsTakenWithItsKnownFilesInTheRightOrder) {
    const tagEnd end = Run({"--format", "csv", "import", ShippedData.string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output, Header + (ShippedData / "holidays.csv").string() + ",13,13,0,0,0,0\n" +
                              (ShippedData / "holiday_dates.csv").string() + ",359,359,0,0,0,0\n" +
                              (ShippedData / "settings.csv").string() + ",39,39,0,0,0,0\n" +
                              (ShippedData / "feeds.csv").string() + ",4,4,0,0,0,0\n" +
                              (ShippedData / "sessions.csv").string() + ",23,23,0,0,0,0\n" +
                              (ShippedData / "session_details.csv").string() + ",125,125,0,0,0,0\n" +
                              (ShippedData / "exchanges.csv").string() + ",17,17,0,0,0,0\n" +
                              (ShippedData / "symbols.csv").string() + ",7,7,0,0,0,0\n");
    EXPECT_EQ(end.Errors, "note: " + (ShippedData / "README.md").string() +
                              " is skipped: it is none of the files that can be imported.\n");
}

TEST_F(ImportCommand, RepeatedItChangesNothing) {
    ASSERT_EQ(Run({"import", ShippedData.string()}).Status, 0);
    constexpr std::array names{"holidays", "holiday_dates",   "settings", "feeds",
                               "sessions", "session_details", "exchanges"};
    std::map<std::string, std::string> before;
    for (const char* name : names)
        before[name] = List(name);
    const tagEnd end = Run({"--format", "csv", "import", ShippedData.string(), "--update", "--batch"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output, Header + (ShippedData / "holidays.csv").string() + ",13,0,0,13,0,0\n" +
                              (ShippedData / "holiday_dates.csv").string() + ",359,0,0,359,0,0\n" +
                              (ShippedData / "settings.csv").string() + ",39,0,0,39,0,0\n" +
                              (ShippedData / "feeds.csv").string() + ",4,0,0,4,0,0\n" +
                              (ShippedData / "sessions.csv").string() + ",23,0,0,23,0,0\n" +
                              (ShippedData / "session_details.csv").string() + ",125,0,0,125,0,0\n" +
                              (ShippedData / "exchanges.csv").string() + ",17,0,0,17,0,0\n" +
                              (ShippedData / "symbols.csv").string() + ",7,0,0,7,0,0\n");
    for (const char* name : names)
        EXPECT_EQ(List(name), before[name]) << name;
}

TEST_F(ImportCommand, ADryRunTestsEverythingAndWritesNothing) {
    const tagEnd end = Run({"--format", "csv", "import", ShippedData.string(), "--dry-run"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_THAT(end.Output, HasSubstr("holiday_dates.csv,359,359,0,0,0,0\n"));
    EXPECT_THAT(end.Errors, HasSubstr("note: This was a dry run: the store is as it was.\n"));
    EXPECT_THAT(end.Output, HasSubstr("session_details.csv,125,125,0,0,0,0\n"));
    EXPECT_THAT(end.Output, HasSubstr("exchanges.csv,17,17,0,0,0,0\n"));
    for (const char* what : {"holidays", "holiday_dates", "settings", "feeds", "sessions", "session_details",
                             "exchanges", "currencies"})
        EXPECT_EQ(Run({"list", what}).Status, 1) << what;
    EXPECT_EQ(
        Import("settings.csv", "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n0,1,1,1\n", {"--dry-run"}).Status,
        4);
}

TEST_F(ImportCommand, AFileWithABadRowIsNotTakenAtAll) {
    const tagEnd end = Import("holidays.csv", "HOLIDAY_NAME\nGood\n\"\"\nAlso good\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Summary("holidays.csv", "3,0,0,0,0,1"));
    EXPECT_EQ(Run({"list", "holidays"}).Status, 1);
}

// A row is refused once, whatever is wrong with it, and one of several lines is one row.
TEST_F(ImportCommand, RowsAreCountedAsRefusedAndNotProblemsOrLines) {
    const std::string header = "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE,HOLIDAY_DESCRIPTION\n";
    const tagEnd end =
        Import("holiday_dates.csv", header + "Y,2027-02-29,2027-13-01,\"two\nlines\"\nZ,2027-01-01,,\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Summary("holiday_dates.csv", "2,0,0,0,0,2"));
    EXPECT_THAT(end.Errors, HasSubstr("holiday_dates.csv:4: there is no calendar \"Z\""));
}

// Without its header no row can be taken.
TEST_F(ImportCommand, AFileOfABadHeaderHasAllItsRowsRefused) {
    EXPECT_EQ(Import("holidays.csv", "NAME\nX\nY\nZ\n").Output, Summary("holidays.csv", "3,0,0,0,0,3"));
    const tagEnd bare = Import("holidays.csv", "NAME\n");
    EXPECT_EQ(bare.Status, 4);
    EXPECT_EQ(bare.Output, Summary("holidays.csv", "0,0,0,0,0,0"));
    const tagEnd empty = Import("holidays.csv", "");
    EXPECT_EQ(empty.Status, 4);
    EXPECT_EQ(empty.Output, Summary("holidays.csv", "0,0,0,0,0,0"));
    EXPECT_THAT(empty.Errors, HasSubstr("Nothing is taken from "));
}

TEST_F(ImportCommand, RefusedDatesOfACalendarCountAllItsRows) {
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nX\nY\n").Status, 0);
    CHeldDatabase(Database())
        .Run(L"ALTER TABLE HOLIDAY_DETAILS ADD CONSTRAINT NO_Z CHECK (HOLIDAY_DESCRIPTION<>'z')");
    const tagEnd end = Import("holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_DESCRIPTION\n"
                                                   "X,2027-01-01,a\nX,2027-01-02,z\nY,2027-01-01,a\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Summary("holiday_dates.csv", "3,1,0,0,0,2"));
    EXPECT_THAT(end.Errors, Not(HasSubstr("Nothing is taken")));
}

TEST_F(ImportCommand, TheOtherFilesAreStillTaken) {
    Write("d/holidays.csv", "HOLIDAY_NAME\nX\nX\n");
    Write("d/settings.csv", "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n1,1,1,1\n");
    EXPECT_EQ(Run({"import", (Folder() / "d").string()}).Status, 4);
    EXPECT_EQ(Run({"list", "settings"}).Status, 0);
}

TEST_F(ImportCommand, BadCalendarsAreNamed) {
    ExpectProblem("holidays.csv", "HOLIDAY_NAME\nX\n\nX\n", "4: \"X\" repeats line 2: remove one of them");
    ExpectProblem("holidays.csv", "HOLIDAY_NAME\n\"\"\n", "2: HOLIDAY_NAME is empty: give a name");
    ExpectProblem("holidays.csv", "HOLIDAY_NAME\n" + std::string(64, 'x') + "\n",
                  "2: HOLIDAY_NAME has 64 characters, and the store keeps 63: shorten it");
    ExpectProblem("holidays.csv", std::string_view("HOLIDAY_NAME\na\0b\n", 17),
                  "2: HOLIDAY_NAME has a zero character in it: remove it");
    ExpectProblem(
        "holidays.csv", "HOLIDAY_NAME\nX,Y\n",
        "2: the row has 2 value(s) where the header has 1: add or remove a comma, or put a value with a comma "
        "in quotes");
    ExpectProblem("holidays.csv", "NAME\nX\n",
                  "1: the header has an unknown column \"NAME\": the columns are "
                  "HOLIDAY_NAME.\nerror: " +
                      (Folder() / "holidays.csv").string() +
                      ":1: the header lacks the column HOLIDAY_NAME: the columns are "
                      "HOLIDAY_NAME");
    ExpectProblem("holidays.csv", "HOLIDAY_NAME\n\xFF\n",
                  "2: the text is not UTF-8: save the file in that encoding");
    ExpectProblem("holidays.csv", "", "1: the file is empty: begin it with the header HOLIDAY_NAME");
}

TEST_F(ImportCommand, ANameOf63CharactersIsTaken) {
    std::string name;
    for (int character = 0; character < 63; ++character)
        name += "é";
    EXPECT_EQ(Import("holidays.csv", "HOLIDAY_NAME\n" + name + "\n").Status, 0);
    EXPECT_THAT(List("holidays"), HasSubstr(name));
}

TEST_F(ImportCommand, BadDatesAreNamed) {
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nX\n").Status, 0);
    const std::string header = "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE,HOLIDAY_DESCRIPTION\n";
    ExpectProblem("holiday_dates.csv", header + "Y,2027-01-01,,\n",
                  "2: there is no calendar \"Y\": correct the name, or add it to holidays.csv");
    ExpectProblem("holiday_dates.csv", header + "X,2027-02-29,,\n",
                  "2: HOLIDAY_START_DATE: there is no day 2027-02-29: correct the month or the day");
    ExpectProblem("holiday_dates.csv", header + "X,,,\n",
                  "2: HOLIDAY_START_DATE: \"\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24");
    ExpectProblem(
        "holiday_dates.csv", header + "X,2027-01-01,2027-1-2,\n",
        "2: HOLIDAY_END_DATE: \"2027-1-2\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24");
    ExpectProblem("holiday_dates.csv", header + "X,2027-01-02,2027-01-01,\n",
                  "2: HOLIDAY_END_DATE 2027-01-01 is before HOLIDAY_START_DATE 2027-01-02: exchange them");
    ExpectProblem("holiday_dates.csv", header + "X,2027-01-01,,a\nX,2027-01-01,,a\n",
                  "3: the row says the same as line 2: remove one of them");
    ExpectProblem("holiday_dates.csv", header + "X,2027-01-01,," + std::string(64, 'x') + "\n",
                  "2: HOLIDAY_DESCRIPTION has 64 characters, and the store keeps 63: shorten it");
    EXPECT_EQ(Run({"list", "holiday_dates"}).Status, 1);
}

TEST_F(ImportCommand, BadSettingsAreNamed) {
    const std::string header = "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n";
    ExpectProblem(
        "settings.csv", header + "1,1000000000,1,1\n",
        "2: POINT_VALUE is \"1000000000\": give a number above 0 and below 1000000000, with a decimal point");
    ExpectProblem(
        "settings.csv", header + "1,1,1,0.0078125\n",
        "2: MIN_MOVEMENT is \"0.0078125\", and the store would keep 0.007812: give at most six decimals and "
        "seven digits in all");
    ExpectProblem("settings.csv", header + "5,1,1,1\n5,1.0,1,1\n",
                  "3: the row says the same as line 2: remove one of them");
    EXPECT_EQ(Run({"list", "settings"}).Status, 1);
}

TEST_F(ImportCommand, DatesOfACalendarThatTheSameImportRefusesAreRefused) {
    Write("d/holidays.csv", "HOLIDAY_NAME\nX\nX\n");
    Write("d/holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE\nX,2027-01-01\n");
    const tagEnd end = Run({"import", (Folder() / "d").string()});
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors,
                HasSubstr("holiday_dates.csv:2: there is no calendar \"X\": correct the name, or add it to "
                          "holidays.csv.\n"));
}

TEST_F(ImportCommand, ACalendarKeepsTheDatesThatTheFileDoesNotHave) {
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nX\n").Status, 0);
    const std::string header = "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_DESCRIPTION\n";
    ASSERT_EQ(Import("holiday_dates.csv", header + "X,2027-01-01,a\nX,2027-01-02,b\n").Status, 0);
    const tagEnd end = Import("holiday_dates.csv", header + "X,2027-01-02,other\nX,2027-01-03,c\n");
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output, Summary("holiday_dates.csv", "2,1,0,0,1,0"));
    EXPECT_THAT(end.Errors, HasSubstr("warning: 1 rows of " + (Folder() / "holiday_dates.csv").string() +
                                      " differ from the store, which keeps its own: give --update to take those of "
                                      "the file.\n"));
    EXPECT_EQ(List("holiday_dates"), "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE,HOLIDAY_DESCRIPTION\n"
                                     "X,2027-01-01,,a\nX,2027-01-02,,b\nX,2027-01-03,,c\n");
}

TEST_F(ImportCommand, UpdateChangesTheDaysOfTheFileAndNoOthers) {
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nX\nY\n").Status, 0);
    const std::string header = "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_DESCRIPTION\n";
    ASSERT_EQ(Import("holiday_dates.csv", header + "X,2027-01-01,a\nX,2027-01-02,b\nY,2027-01-01,y\n").Status, 0);
    const tagEnd end = Import("holiday_dates.csv", header + "X,2027-01-02,other\n", {"--update"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output, Summary("holiday_dates.csv", "1,0,1,0,0,0"));
    EXPECT_EQ(List("holiday_dates"), "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE,HOLIDAY_DESCRIPTION\n"
                                     "X,2027-01-01,,a\nX,2027-01-02,,other\nY,2027-01-01,,y\n");
}

TEST_F(ImportCommand, ACalendarNameThatIsThereTwiceIsRefused) {
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nX\n").Status, 0);
    CHeldDatabase(Database()).Run(L"INSERT INTO HOLIDAYS VALUES(9999,'X')");
    ExpectProblem("holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE\nX,2027-01-01\n",
                  "2: the store has 2 calendars \"X\": rename all but one of them");
}

// The store answers its interface with success all the same.
TEST_F(ImportCommand, ARowThatTheDatabaseRefusesIsReported) {
    CHeldDatabase(Database()).Run(L"ALTER TABLE HOLIDAYS ADD CONSTRAINT NO_X CHECK (HOLIDAY_NAME<>'X')");
    const tagEnd end = Import("holidays.csv", "HOLIDAY_NAME\nW\nX\nY\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Summary("holidays.csv", "3,2,0,0,0,1"));
    EXPECT_EQ(end.Errors,
              "error: " + (Folder() / "holidays.csv").string() +
                  ":3: the store refused the row. A value breaks a rule of its table: correct the value.\n");
}

TEST_F(ImportCommand, TheOldDatesComeBackWhenTheDatabaseRefusesTheNew) {
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nX\n").Status, 0);
    const std::string header = "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_DESCRIPTION\n";
    ASSERT_EQ(Import("holiday_dates.csv", header + "X,2027-01-01,a\n").Status, 0);
    const std::string before = List("holiday_dates");
    CHeldDatabase(Database())
        .Run(L"ALTER TABLE HOLIDAY_DETAILS ADD CONSTRAINT NO_Z CHECK (HOLIDAY_DESCRIPTION<>'z')");
    const tagEnd end = Import("holiday_dates.csv", header + "X,2027-01-02,z\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors,
                HasSubstr("the store refused the dates of \"X\". Record 2 of 2 was refused, and nothing of "
                          "the statement is stored. A value breaks a rule of its table: correct the "
                          "value.\n"));
    EXPECT_EQ(List("holiday_dates"), before);
}

TEST_F(ImportCommand, PathsThatCannotBeImported) {
    tagEnd end = Run({"import", (Folder() / "none").string()});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors,
              "error: There is no file or directory " + (Folder() / "none").string() + ": correct the path.\n");
    end = Run({"import", Write("notes.csv", "x").string()});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors,
              "error: " + (Folder() / "notes.csv").string() +
                  " has none of the names that tell what a file holds: call it one of holidays, "
                  "holiday_dates, settings, feeds, sessions, session_details, exchanges, symbols, currencies with "
                  "\".csv\" behind it.\n");
    platform::CreateDirectories(Folder() / "empty");
    EXPECT_EQ(Run({"import", (Folder() / "empty").string()}).Status, 1);
}

TEST_F(ImportCommand, NoBarIsDrawnIntoAPipe) {
    EXPECT_THAT(Run({"import", ShippedData.string()}).Errors, Not(HasSubstr("\r")));
}

TEST_F(ImportCommand, QuietLeavesOutNotesAlone) {
    const tagEnd end = Run({"--quiet", "--format", "csv", "import", ShippedData.string(), "--dry-run"});
    EXPECT_EQ(end.Errors, "");
    EXPECT_THAT(end.Output, testing::StartsWith(Header));
}

} // namespace

} // namespace sqCliTest
