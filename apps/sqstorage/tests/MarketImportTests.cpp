// Importing feeds, sessions with their details, exchanges and currencies.
#include "ImportFixture.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* Chicago = "\"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\"";
constexpr const char* Tokyo = "\"-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000\"";

class MarketImport : public ImportSandbox {
protected:
    const std::string FeedHeader = "DATA_FEED_NAME,DATA_FEED_SHORT_NAME,DATA_FEED_DLL_NAME,CLSID,ASCII,ACTIVE\n";
    const std::string SessionHeader = "SESSION_NAME,SESSION_TYPE,TIME_ZONE\n";
    const std::string DetailHeader = "SESSION_NAME,START_DAY,START_TIME,END_DAY,END_TIME\n";
    const std::string ExchangeHeader =
        "EXCHANGE_NAME,HOLIDAY_NAME,SESSION_NAME,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,"
        "MIN_MOVEMENT,EXCHANGE_TIME_ZONE_INFORMATION\n";

    // A calendar H, a session S with a detail, and an exchange E of both.
    void MakeExchange() {
        Write("m/holidays.csv", "HOLIDAY_NAME\nH\n");
        Write("m/sessions.csv", SessionHeader + "S,1,2\n");
        Write("m/session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\n");
        Write("m/exchanges.csv", ExchangeHeader + "E,H,S,100,50,1000000,0.25," + Chicago + "\n");
        const tagEnd end = Run({"import", (Folder() / "m").string()});
        ASSERT_EQ(end.Status, 0) << end.Errors;
    }
    std::string Json(const std::string& what) { return Run({"--format", "json", "list", what}).Output; }
};

TEST_F(MarketImport, TheOrderOfTheFilesIsThatOfWhatTheyReferTo) {
    MakeExchange();
    EXPECT_THAT(
        Json("exchanges"),
        HasSubstr("\"EXCHANGE_NAME\": \"E\", \"DESCRIPTION\": \"\", \"HOLIDAY_NAME\": \"H\", \"SESSION_NAME\": "
                  "\"S\", \"PRICE_SCALE\": 100, \"POINT_VALUE\": 50, \"DAILY_LIMIT\": 1000000, "
                  "\"MIN_MOVEMENT\": 0.25, \"TIME_ZONE\": 0, \"MAP_ID\": \"\", "
                  "\"EXCHANGE_TIME_ZONE_INFORMATION\": "
                  "\"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\"}"));
    EXPECT_THAT(Json("session_details"),
                HasSubstr("\"SESSION_NAME\": \"S\", \"START_DAY\": 1, \"START_TIME\": 32400, \"END_DAY\": 1, "
                          "\"END_TIME\": 61200, \"VALUE5\": 0, \"VALUE6\": 0, \"VALUE7\": 0}"));
}

TEST_F(MarketImport, ADryRunKnowsWhatItsOtherFilesWouldAdd) {
    Write("m/holidays.csv", "HOLIDAY_NAME\nH\n");
    Write("m/sessions.csv", SessionHeader + "S,1,2\n");
    Write("m/session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\n");
    Write("m/exchanges.csv", ExchangeHeader + "E,H,S,100,50,1000000,0.25," + Chicago + "\n");
    const tagEnd end = Run({"import", (Folder() / "m").string(), "--dry-run"});
    EXPECT_EQ(end.Status, 0) << end.Errors;
    EXPECT_EQ(Run({"list", "exchanges"}).Status, 1);
    EXPECT_EQ(Run({"list", "sessions"}).Status, 1);
    EXPECT_EQ(Run({"list", "settings"}).Status, 1);
}

TEST_F(MarketImport, BadFeedsAreNamed) {
    ExpectProblem("feeds.csv", FeedHeader + ",s,d,c,0,1\n", "2: DATA_FEED_NAME is empty: give a name");
    ExpectProblem("feeds.csv", FeedHeader + std::string(32, 'n') + ",s,d,c,0,1\n",
                  "2: DATA_FEED_NAME has 32 characters, and the store keeps 31: shorten it");
    ExpectProblem("feeds.csv", FeedHeader + "n,s,d'd,c,0,1\n",
                  "2: DATA_FEED_DLL_NAME has a single quote in it, which the store cannot keep there: remove it");
    ExpectProblem("feeds.csv", FeedHeader + "n,s,d,c',0,1\n",
                  "2: CLSID has a single quote in it, which the store cannot keep there: remove it");
    ExpectProblem("feeds.csv", FeedHeader + "n,s,d,c,2,1\n", "2: ASCII is \"2\": give a whole number from 0 to 1");
    ExpectProblem("feeds.csv", FeedHeader + "n,s,d,c,0,yes\n",
                  "2: ACTIVE is \"yes\": give a whole number from 0 to 1");
    ExpectProblem("feeds.csv", FeedHeader + "n,s,d,c,0,1\nm,s,d,c,0,1\nn,s,d,x,0,1\n",
                  "4: \"n\" repeats line 2: remove one of them");
    ExpectProblem(
        "feeds.csv", FeedHeader + "n,s,d,c,1,1\nm,s,d,c,1,1\n",
        "3: ASCII is 1 here and at the feed \"n\", and one feed alone can read text files: make it 0 at one "
        "of them");
    EXPECT_EQ(Run({"list", "feeds"}).Status, 1);
}

TEST_F(MarketImport, FeedsAreWrittenWithTheirQuotesAndFlags) {
    ASSERT_EQ(Import("feeds.csv", FeedHeader + "it's,s's,d,c,1,0\nplain,p,d,c,,\n").Status, 0);
    EXPECT_EQ(List("feeds"), "DATA_FEED,DATA_FEED_NAME,DATA_FEED_SHORT_NAME,DATA_FEED_DLL_NAME,CLSID,ASCII,ACTIVE\n"
                             "1,it's,s's,d,c,1,0\n2,plain,p,d,c,0,1\n");
}

TEST_F(MarketImport, AFeedThatComesBackHasItsOldKeyAndItsQuotesOnce) {
    ASSERT_EQ(Import("feeds.csv", FeedHeader + "x,x,d,c,0,1\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE DATA_FEEDS SET DELETED=1");
    ASSERT_EQ(Import("feeds.csv", FeedHeader + "it's,s's,d,c,0,1\n").Status, 0);
    EXPECT_THAT(List("feeds"), HasSubstr("\n1,it's,s's,d,c,0,1\n"));
}

// The store doubles the quotes in the names of a feed that comes back, and these are too long for their columns
// then.
TEST_F(MarketImport, AFeedThatComesBackMayHaveTheLongestNamesWithQuotes) {
    const std::string name = std::string(30, 'n') + "'";
    const std::string shortName = std::string(29, 's') + "''";
    ASSERT_EQ(Import("feeds.csv", FeedHeader + "x,x,d,c,0,1\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE DATA_FEEDS SET DELETED=1");
    const tagEnd end = Import("feeds.csv", FeedHeader + name + "," + shortName + ",d,c,0,1\n");
    EXPECT_EQ(end.Errors, "");
    EXPECT_EQ(end.Output, Summary("feeds.csv", "1,1,0,0,0,0"));
    EXPECT_THAT(List("feeds"), HasSubstr("\n1," + name + "," + shortName + ",d,c,0,1\n"));
    EXPECT_EQ(Import("feeds.csv", FeedHeader + name + "," + shortName + ",d,c,0,1\n").Output,
              Summary("feeds.csv", "1,0,0,1,0,0"));
}

TEST_F(MarketImport, ANewFeedMayHaveTheLongestNamesWithQuotes) {
    const std::string name = std::string(31, '\'');
    EXPECT_EQ(Import("feeds.csv", FeedHeader + name + "," + name + ",d,c,0,0\n").Errors, "");
    EXPECT_THAT(List("feeds"), HasSubstr("\n1," + name + "," + name + ",d,c,0,0\n"));
}

TEST_F(MarketImport, AFeedOfWhichTheSecondStepIsRefusedDoesNotStay) {
    CHeldDatabase(Database()).Run(L"ALTER TABLE DATA_FEEDS ADD CONSTRAINT NO_IDLE CHECK (ACTIVATED<>0)");
    const tagEnd end = Import("feeds.csv", FeedHeader + "n,s,d,c,0,0\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors, HasSubstr("feeds.csv:2: the store refused the row. A value breaks a rule of its table: "
                                      "correct the value.\n"));
    EXPECT_EQ(Run({"list", "feeds"}).Status, 1);
}

TEST_F(MarketImport, AFeedThatCannotBeTakenBackIsToldOf) {
    CHeldDatabase(Database())
        .Run(L"ALTER TABLE DATA_FEEDS ADD CONSTRAINT NO_CHANGE CHECK (ACTIVATED<>0 AND DELETED=0)");
    const tagEnd end = Import("feeds.csv", FeedHeader + "n,s,d,c,0,0\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors, HasSubstr("correct the value. And the feed could not be taken back: it is there with "
                                      "the key 1, as \"sqstorage list feeds\" shows it.\n"));
}

TEST_F(MarketImport, AFeedChangesWithUpdateAlone) {
    ASSERT_EQ(Import("feeds.csv", FeedHeader + "n,s,d,c,0,1\n").Status, 0);
    EXPECT_EQ(Import("feeds.csv", FeedHeader + "n,s2,d,c,0,0\n").Output, Summary("feeds.csv", "1,0,0,0,1,0"));
    EXPECT_THAT(List("feeds"), HasSubstr("\n1,n,s,d,c,0,1\n"));
    EXPECT_EQ(Import("feeds.csv", FeedHeader + "n,s2,d,c,0,0\n", {"--update"}).Output,
              Summary("feeds.csv", "1,0,1,0,0,0"));
    EXPECT_THAT(List("feeds"), HasSubstr("\n1,n,s2,d,c,0,0\n"));
}

TEST_F(MarketImport, TheTextFeedMovesWithUpdateAlone) {
    ASSERT_EQ(Import("feeds.csv", FeedHeader + "a,a,d,c1,1,1\nb,b,d,c2,0,1\n").Status, 0);
    const std::string moved = FeedHeader + "a,a,d,c1,0,1\nb,b,d,c2,1,1\n";
    ExpectProblem(
        "feeds.csv", moved,
        "3: ASCII is 1 here and at the feed \"a\", and one feed alone can read text files: make it 0 at one "
        "of them");
    EXPECT_EQ(Import("feeds.csv", moved, {"--update"}).Output, Summary("feeds.csv", "2,0,2,0,0,0"));
    EXPECT_THAT(List("feeds"), HasSubstr("\n1,a,a,d,c1,0,1\n2,b,b,d,c2,1,1\n"));
    // Whichever row comes first.
    const std::string back = FeedHeader + "a,a,d,c1,1,1\nb,b,d,c2,,1\n";
    EXPECT_EQ(Import("feeds.csv", back, {"--update"}).Output, Summary("feeds.csv", "2,0,2,0,0,0"));
    EXPECT_THAT(List("feeds"), HasSubstr("\n1,a,a,d,c1,1,1\n2,b,b,d,c2,0,1\n"));
    // A file that says nothing of the other leaves it the flag.
    EXPECT_EQ(Import("feeds.csv", FeedHeader + "b,b,d,c2,1,1\n", {"--update"}).Status, 4);
}

TEST_F(MarketImport, AFeedNameThatIsThereTwiceIsRefused) {
    ASSERT_EQ(Import("feeds.csv", FeedHeader + "n,s,d,c,0,1\nm,s,d,c,0,1\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE DATA_FEEDS SET DATA_FEED_NAME='n'");
    ExpectProblem("feeds.csv", FeedHeader + "n,s,d,c,0,1\n",
                  "2: the store has 2 feeds \"n\": rename all but one of them");
}

TEST_F(MarketImport, BadSessionsAreNamed) {
    ExpectProblem("sessions.csv", SessionHeader + "\"\",1,2\n", "2: SESSION_NAME is empty: give a name");
    ExpectProblem("sessions.csv", SessionHeader + "S,-1,2\n",
                  "2: SESSION_TYPE is \"-1\": give a whole number from 0 to 3");
    // No list would show it.
    ExpectProblem("sessions.csv", SessionHeader + "S,3,2\nT,4,2\n",
                  "3: SESSION_TYPE is \"4\": give a whole number from 0 to 3");
    ExpectProblem("sessions.csv", SessionHeader + "S,1,exchange\n",
                  "2: TIME_ZONE is \"exchange\": give a whole number from 0 to 2147483647");
    ExpectProblem("sessions.csv", SessionHeader + "S,1,2\n\ns,2,2\n",
                  "4: \"s\" repeats line 2: remove one of them");
    ExpectProblem("sessions.csv", SessionHeader + "S,1,2\n\"S  \",2,2\n",
                  "3: \"S  \" repeats line 2: remove one of them");
    EXPECT_EQ(Run({"list", "sessions"}).Status, 1);
}

TEST_F(MarketImport, ASessionChangesWithUpdateAlone) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    EXPECT_EQ(Import("sessions.csv", SessionHeader + "S,2,1\n").Output, Summary("sessions.csv", "1,0,0,0,1,0"));
    EXPECT_EQ(Import("sessions.csv", SessionHeader + "S,2,1\n", {"--update"}).Output,
              Summary("sessions.csv", "1,0,1,0,0,0"));
    EXPECT_EQ(List("sessions"), "SESSION,SESSION_NAME,SESSION_TYPE,TIME_ZONE\n1,S,2,1\n");
}

TEST_F(MarketImport, ASessionOfAnyTypeThatHasDetailsIsListed) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE SESSIONS SET SESSION_TYPE=77");
    EXPECT_EQ(Run({"list", "sessions"}).Status, 1);
    CHeldDatabase(Database()).Run(L"INSERT INTO SESSION_DETAILS VALUES(1,1,0,1,60,0,0,0)");
    EXPECT_THAT(List("sessions"), HasSubstr("\n1,S,77,2\n"));
}

TEST_F(MarketImport, ANameThatTheStoreWouldCutIsRefusedWhenItsSessionChanges) {
    const std::string name(63, 'x');
    ASSERT_EQ(Import("sessions.csv", SessionHeader + name + ",1,2\n").Status, 0);
    const tagEnd end = Import("sessions.csv", SessionHeader + name + ",2,2\n", {"--update"});
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors,
                HasSubstr("sessions.csv:2: the store refused the row. It cuts a name of more than 62 "
                          "characters, quotes counted twice, when a session changes: shorten the name.\n"));
    EXPECT_THAT(List("sessions"), HasSubstr(name + ",1,2\n"));
}

TEST_F(MarketImport, BadDetailsAreNamed) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    ExpectProblem("session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\nT,Mon,09:00,Mon,17:00\n",
                  "3: there is no session \"T\": correct the name, or add it to sessions.csv");
    ExpectProblem(
        "session_details.csv", DetailHeader + "S,Mon,17:00,Mon,09:00\n",
        "2: the end, Mon 09:00, is not after the start, Mon 17:00: exchange them, or give as END_DAY the day "
        "on which the trading ends, with 7 for the Sunday after");
    ExpectProblem("session_details.csv", DetailHeader + "S,Moon,09:00,Mon,17:00\n",
                  "2: START_DAY is \"Moon\": give Sun, Mon, Tue, Wed, Thu, Fri or Sat");
    ExpectProblem("session_details.csv", DetailHeader + "S,Mon,9:00,Mon,17:00\n",
                  "2: START_TIME is \"9:00\": give a time like 09:30, from 00:00 to 23:59:59");
    ExpectProblem("session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\nS,Mon,09:00,Mon,17:00\n",
                  "3: the row says the same as line 2: remove one of them");
    std::string rows;
    for (int minute = 10; minute < 50; ++minute)
        rows += "S,Mon,09:" + std::to_string(minute) + ",Mon,09:59\n";
    ExpectProblem("session_details.csv", DetailHeader + rows,
                  "2: the 40 rows of the session make a text of 643 characters, and hosts read 511: join or remove "
                  "some of them");
    EXPECT_EQ(Run({"list", "session_details"}).Status, 1);
}

TEST_F(MarketImport, ATimetableIsTakenOrLeftWhole) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\nT,1,2\n").Status, 0);
    ASSERT_EQ(Import("session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\nS,Tue,09:00,Tue,17:00\n").Status,
              0);
    const std::string other = DetailHeader + "S,Tue,09:00,Tue,17:00\nT,Wed,09:00,Wed,17:00\n";
    EXPECT_EQ(Import("session_details.csv", other).Output, Summary("session_details.csv", "2,1,0,0,1,0"));
    EXPECT_THAT(List("session_details"),
                HasSubstr("1,S,Mon,09:00,Mon,17:00,0,0,0\n1,S,Tue,09:00,Tue,17:00,0,0,0\n"));
    EXPECT_EQ(Import("session_details.csv", other, {"--update"}).Output,
              Summary("session_details.csv", "2,0,1,1,0,0"));
    EXPECT_EQ(List("session_details"),
              "SESSION,SESSION_NAME,START_DAY,START_TIME,END_DAY,END_TIME,VALUE5,VALUE6,VALUE7\n"
              "1,S,Tue,09:00,Tue,17:00,0,0,0\n2,T,Wed,09:00,Wed,17:00,0,0,0\n");
}

TEST_F(MarketImport, TheOldTimetableComesBackWhenTheDatabaseRefusesTheNew) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    ASSERT_EQ(Import("session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\n").Status, 0);
    const std::string before = List("session_details");
    CHeldDatabase(Database()).Run(L"ALTER TABLE SESSION_DETAILS ADD CONSTRAINT NO_FRIDAY CHECK (START_DAY<>5)");
    const tagEnd end = Import("session_details.csv", DetailHeader + "S,Fri,09:00,Fri,17:00\n", {"--update"});
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors, HasSubstr("session_details.csv:2: the store refused the details of \"S\". "));
    EXPECT_EQ(List("session_details"), before);
    EXPECT_EQ(end.Output, Summary("session_details.csv", "1,0,0,0,0,1"));
}

TEST_F(MarketImport, ATimetableThatHostsCannotReadCountsAllItsRows) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\nT,1,2\n").Status, 0);
    std::string rows = "T,Mon,09:00,Mon,17:00\n";
    for (int minute = 10; minute < 50; ++minute)
        rows += "S,Mon,09:" + std::to_string(minute) + ",Mon,09:59\n";
    EXPECT_EQ(Import("session_details.csv", DetailHeader + rows).Output,
              Summary("session_details.csv", "41,0,0,0,0,40"));
}

TEST_F(MarketImport, ARowWithAProblemOfItsOwnCountsOnceWithItsTimetable) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\nT,1,2\n").Status, 0);
    std::string rows = "T,Mon,09:00,Mon,17:00\n";
    for (int minute = 10; minute < 50; ++minute)
        rows += "S,Mon,09:" + std::to_string(minute) + ",Mon,09:59\n";
    const tagEnd end = Import("session_details.csv", DetailHeader + rows + "S,Mon,09:49,Mon,09:59\n");
    EXPECT_EQ(end.Output, Summary("session_details.csv", "42,0,0,0,0,41"));
    EXPECT_THAT(end.Errors, HasSubstr(":43: the row says the same as line 42: remove one of them."));
}

TEST_F(MarketImport, ARefusedTimetableCountsAllItsRows) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\nT,1,2\n").Status, 0);
    CHeldDatabase(Database()).Run(L"ALTER TABLE SESSION_DETAILS ADD CONSTRAINT NO_FRIDAY CHECK (START_DAY<>5)");
    const tagEnd end = Import("session_details.csv", DetailHeader + "S,Thu,09:00,Thu,17:00\nS,Fri,09:00,Fri,17:00\n"
                                                                    "T,Mon,09:00,Mon,17:00\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Summary("session_details.csv", "3,1,0,0,0,2"));
    EXPECT_THAT(end.Errors, Not(HasSubstr("Nothing is taken")));
}

TEST_F(MarketImport, ATimetableThatCannotComeBackIsToldOf) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    ASSERT_EQ(Import("session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\n").Status, 0);
    CHeldDatabase(Database()).Run(L"ALTER TABLE SESSION_DETAILS ADD CONSTRAINT NO_DAY CHECK (START_DAY=2)");
    const tagEnd end = Import("session_details.csv", DetailHeader + "S,Fri,09:00,Fri,17:00\n", {"--update"});
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors, HasSubstr("A value breaks a rule of its table: correct the value. And its old details "
                                      "could not be put back: import them again.\n"));
}

TEST_F(MarketImport, HolidayDatesThatCannotComeBackAreToldOf) {
    const std::string header = "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_DESCRIPTION\n";
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nH\n").Status, 0);
    ASSERT_EQ(Import("holiday_dates.csv", header + "H,2027-01-01,a\n").Status, 0);
    CHeldDatabase(Database())
        .Run(L"ALTER TABLE HOLIDAY_DETAILS ADD CONSTRAINT NO_TEXT CHECK (HOLIDAY_DESCRIPTION='x')");
    const tagEnd end = Import("holiday_dates.csv", header + "H,2027-01-02,b\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors, HasSubstr("A value breaks a rule of its table: correct the value. And its old dates "
                                      "could not be put back: import them again.\n"));
}

TEST_F(MarketImport, BadExchangesAreNamed) {
    ASSERT_EQ(Import("holidays.csv", "HOLIDAY_NAME\nH\n").Status, 0);
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    const auto row = [&](const std::string& start, const std::string& zone = Chicago) {
        return ExchangeHeader + start + "," + zone + "\n";
    };
    ExpectProblem("exchanges.csv", row(",H,S,1,1,1,1"), "2: EXCHANGE_NAME is empty: give a name");
    ExpectProblem("exchanges.csv", row("ThirteenChars,H,S,1,1,1,1"),
                  "2: EXCHANGE_NAME has 13 characters, and the store keeps 12: shorten it");
    ExpectProblem("exchanges.csv", row("E,NYSEE,S,1,1,1,1"),
                  "2: there is no calendar \"NYSEE\": correct the name, or add it to holidays.csv");
    ExpectProblem("exchanges.csv", row("E,H,T,1,1,1,1"),
                  "2: there is no session \"T\": correct the name, or add it to sessions.csv");
    ExpectProblem("exchanges.csv", row("E,H,,1,1,1,1"),
                  "2: SESSION_NAME is empty: name the session of the exchange");
    ExpectProblem("exchanges.csv", row("E,H,S,0,1,1,1"),
                  "2: PRICE_SCALE is \"0\": give a whole number from 1 to 2147483647");
    ExpectProblem("exchanges.csv", row("E,H,S,1,x,1,1"),
                  "2: POINT_VALUE is \"x\": give a number above 0 and below 1000000000, with a decimal point");
    ExpectProblem("exchanges.csv", row("E,H,S,1,1,1,1", "America/Chicago"),
                  "2: EXCHANGE_TIME_ZONE_INFORMATION is \"America/Chicago\", which is no time zone: give seventeen "
                  "numbers like \"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\"");
    ExpectProblem("exchanges.csv", row("E,H,S,1,1,1,1") + "E,H,S,1,1,1,1," + Tokyo + "\n",
                  "3: \"E\" repeats line 2: remove one of them");
    ExpectProblem("exchanges.csv", "MAP_ID,TIME_ZONE," + ExchangeHeader + "x',one,E,H,S,1,1,1,1," + Chicago + "\n",
                  "2: TIME_ZONE is \"one\": give a whole number from -2147483648 to 2147483647.\nerror: " +
                      (Folder() / "exchanges.csv").string() +
                      ":2: MAP_ID has a single quote in it, which the store cannot keep there: remove it");
    EXPECT_EQ(Run({"list", "exchanges"}).Status, 1);
    EXPECT_EQ(Run({"list", "settings"}).Status, 1);
}

TEST_F(MarketImport, AnExchangeNeedsNoCalendar) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    EXPECT_EQ(Import("exchanges.csv", ExchangeHeader + "E,,S,1,1,1,1," + Tokyo + "\n").Status, 0);
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"HOLIDAY_NAME\": \"\""));
}

TEST_F(MarketImport, AnExchangeChangesWithUpdateAloneAndKeepsItsSetting) {
    MakeExchange();
    const std::string settings = List("settings");
    const std::string changed = ExchangeHeader + "E,,S,10,5,7,0.5," + Tokyo + "\n";
    EXPECT_EQ(Import("exchanges.csv", changed).Output, Summary("exchanges.csv", "1,0,0,0,1,0"));
    EXPECT_EQ(List("settings"), settings);
    EXPECT_EQ(Import("exchanges.csv", changed, {"--update"}).Output, Summary("exchanges.csv", "1,0,1,0,0,0"));
    EXPECT_EQ(List("settings"), "SETTING,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n3,10,5,7,0.5\n");
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"HOLIDAY_NAME\": \"\""));
    EXPECT_THAT(Json("exchanges"), HasSubstr("-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000"));
}

TEST_F(MarketImport, ASettingThatTwoExchangesShareStaysWithTheOther) {
    MakeExchange();
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "T,1,2\n").Status, 0);
    ASSERT_EQ(Import("exchanges.csv", ExchangeHeader + "F,H,T,1,1,1,1," + Tokyo + "\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE EXCHANGES SET SETTING=3 WHERE EXCHANGE_NAME='F'");
    ASSERT_EQ(Import("exchanges.csv", ExchangeHeader + "F,H,T,9,9,9,9," + Tokyo + "\n", {"--update"}).Status, 0);
    EXPECT_THAT(Json("exchanges"),
                HasSubstr("\"EXCHANGE_NAME\": \"E\", \"DESCRIPTION\": \"\", \"HOLIDAY_NAME\": \"H\", "
                          "\"SESSION_NAME\": \"S\", \"PRICE_SCALE\": 100"));
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"SESSION_NAME\": \"T\", \"PRICE_SCALE\": 9"));
}

TEST_F(MarketImport, ASettingThatTwoExchangesSharedGoesToTheLastWhenBothChange) {
    MakeExchange();
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "T,1,2\n").Status, 0);
    ASSERT_EQ(Import("exchanges.csv", ExchangeHeader + "F,H,T,1,1,1,1," + Tokyo + "\n").Status, 0);
    {
        CHeldDatabase database(Database());
        database.Run(L"DELETE FROM SETTINGS WHERE SETTING<>3");
        database.Run(L"UPDATE EXCHANGES SET SETTING=3");
    }
    const tagEnd end =
        Import("exchanges.csv", ExchangeHeader + "E,H,S,8,8,8,8," + Chicago + "\nF,H,T,9,9,9,9," + Tokyo + "\n",
               {"--update"});
    EXPECT_EQ(end.Output, Summary("exchanges.csv", "2,0,2,0,0,0"));
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"SESSION_NAME\": \"S\", \"PRICE_SCALE\": 8"));
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"SESSION_NAME\": \"T\", \"PRICE_SCALE\": 9"));
    EXPECT_EQ(CHeldDatabase(Database()).Number(L"SELECT COUNT(*) AS SETTING FROM SETTINGS"), 2)
        << "one for each, and none that belongs to nobody";
}

TEST_F(MarketImport, ARefusedChangeLeavesTheSharedSettingToBothExchanges) {
    MakeExchange();
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "T,1,2\n").Status, 0);
    ASSERT_EQ(Import("exchanges.csv", ExchangeHeader + "F,H,T,1,1,1,1," + Tokyo + "\n").Status, 0);
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE EXCHANGES SET SETTING=3");
        database.Run(L"ALTER TABLE EXCHANGES ADD CONSTRAINT NO_X CHECK (MAP_ID<>'x')");
    }
    const std::string rows = "E,x,H,S,8,8,8,8," + std::string(Chicago) + "\nF,,H,T,9,9,9,9," + Tokyo + "\n";
    const tagEnd end = Import("exchanges.csv",
                              "EXCHANGE_NAME,MAP_ID,HOLIDAY_NAME,SESSION_NAME,PRICE_SCALE,POINT_VALUE,"
                              "DAILY_LIMIT,MIN_MOVEMENT,EXCHANGE_TIME_ZONE_INFORMATION\n" +
                                  rows,
                              {"--update"});
    EXPECT_EQ(end.Output, Summary("exchanges.csv", "2,0,1,0,0,1"));
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"SESSION_NAME\": \"S\", \"PRICE_SCALE\": 100"));
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"SESSION_NAME\": \"T\", \"PRICE_SCALE\": 9"));
}

TEST_F(MarketImport, ARefusedExchangeLeavesNoSettingBehind) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    CHeldDatabase(Database()).Run(L"ALTER TABLE EXCHANGES ADD CONSTRAINT NO_X CHECK (EXCHANGE_NAME<>'X')");
    const tagEnd end = Import("exchanges.csv", ExchangeHeader + "X,,S,1,1,1,1," + Tokyo + "\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors,
                HasSubstr("exchanges.csv:2: the store refused the row. A value breaks a rule of its table: "
                          "correct the value.\n"));
    EXPECT_EQ(Run({"list", "settings"}).Status, 1);
}

TEST_F(MarketImport, ARefusedChangeOfAnExchangeLeavesItsPricesAsTheyWere) {
    MakeExchange();
    const std::string before = Json("exchanges");
    const std::string settings = List("settings");
    CHeldDatabase(Database()).Run(L"ALTER TABLE EXCHANGES ADD CONSTRAINT NEEDS_H CHECK (HOLIDAY>0)");
    const tagEnd end = Import("exchanges.csv", ExchangeHeader + "E,,S,10,5,7,0.5," + Chicago + "\n", {"--update"});
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors,
                HasSubstr("exchanges.csv:2: the store refused the row. A value breaks a rule of its table: "
                          "correct the value.\n"));
    EXPECT_EQ(Json("exchanges"), before);
    EXPECT_EQ(List("settings"), settings);
}

TEST_F(MarketImport, ARefusedChangeOfAnExchangeOfASharedSettingLeavesNoSettingBehind) {
    MakeExchange();
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "T,1,2\n").Status, 0);
    ASSERT_EQ(Import("exchanges.csv", ExchangeHeader + "F,H,T,1,1,1,1," + Tokyo + "\n").Status, 0);
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE EXCHANGES SET SETTING=3 WHERE EXCHANGE_NAME='F'");
        database.Run(L"ALTER TABLE EXCHANGES ADD CONSTRAINT NEEDS_H CHECK (HOLIDAY>0)");
    }
    const std::string settings = List("settings");
    EXPECT_EQ(Import("exchanges.csv", ExchangeHeader + "F,,T,9,9,9,9," + Tokyo + "\n", {"--update"}).Status, 4);
    EXPECT_EQ(List("settings"), settings);
}

TEST_F(MarketImport, PricesThatCannotComeBackAreToldOf) {
    MakeExchange();
    {
        CHeldDatabase database(Database());
        database.Run(L"ALTER TABLE EXCHANGES ADD CONSTRAINT NEEDS_H CHECK (HOLIDAY>0)");
        database.Run(L"ALTER TABLE SETTINGS ADD CONSTRAINT NO_HUNDRED CHECK (PRICE_SCALE<>100)");
    }
    const tagEnd end = Import("exchanges.csv", ExchangeHeader + "E,,S,10,5,7,0.5," + Chicago + "\n", {"--update"});
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors, HasSubstr("correct the value. And its old prices could not be put back: import them "
                                      "again.\n"));
}

TEST_F(MarketImport, ASessionIsKnownInWhateverLetterCaseAndWithBlanksAtTheEnd) {
    MakeExchange();
    EXPECT_EQ(Import("sessions.csv", SessionHeader + "s,1,2\n").Output, Summary("sessions.csv", "1,0,0,0,1,0"));
    EXPECT_EQ(Import("session_details.csv", DetailHeader + "s,Mon,09:00,Mon,17:00\n").Output,
              Summary("session_details.csv", "1,0,0,1,0,0"));
    EXPECT_EQ(Import("exchanges.csv", ExchangeHeader + "E,H,s,100,50,1000000,0.25," + Chicago + "\n").Output,
              Summary("exchanges.csv", "1,0,0,1,0,0"));
    EXPECT_EQ(Import("exchanges.csv", ExchangeHeader + "E,H,\"S \",100,50,1000000,0.25," + Chicago + "\n").Output,
              Summary("exchanges.csv", "1,0,0,1,0,0"));
    EXPECT_THAT(Import("exchanges.csv", ExchangeHeader + "F,H,s,1,1,1,1," + Tokyo + "\n").Errors,
                HasSubstr("The exchanges \"E\" and \"F\" share the session \"S\""));
    EXPECT_THAT(Run({"list", "session_details", "--session", "s"}).Output, HasSubstr("09:00"));
}

TEST_F(MarketImport, TheRowsOfASessionAreOneTimetableInWhateverLetterCase) {
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "S,1,2\n").Status, 0);
    EXPECT_EQ(Import("session_details.csv", DetailHeader + "S,Tue,09:00,Tue,17:00\ns,Mon,09:00,Mon,17:00\n").Status,
              0);
    EXPECT_THAT(List("session_details"),
                HasSubstr("1,S,Mon,09:00,Mon,17:00,0,0,0\n1,S,Tue,09:00,Tue,17:00,0,0,0\n"));
    ExpectProblem("session_details.csv", DetailHeader + "S,Tue,09:00,Tue,17:00\ns,Tue,09:00,Tue,17:00\n",
                  "3: the row says the same as line 2: remove one of them");
}

TEST_F(MarketImport, ADryRunKnowsAPlannedSessionInWhateverLetterCase) {
    Write("m/sessions.csv", SessionHeader + "S,1,2\n");
    Write("m/session_details.csv", DetailHeader + "s,Mon,09:00,Mon,17:00\n");
    Write("m/exchanges.csv", ExchangeHeader + "E,,s,1,1,1,1," + Chicago + "\n");
    const tagEnd end = Run({"import", (Folder() / "m").string(), "--dry-run"});
    EXPECT_EQ(end.Status, 0) << end.Errors;
}

TEST_F(MarketImport, ExchangesThatShareASessionAreWarnedOf) {
    MakeExchange();
    const tagEnd end = Import("exchanges.csv", ExchangeHeader + "F,H,S,1,1,1,1," + Tokyo + "\n");
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors,
              "warning: The exchanges \"E\" and \"F\" share the session \"S\", which goes when one of them is "
              "deleted: give each a session of its own.\n");
    EXPECT_EQ(Import("exchanges.csv", ExchangeHeader + "E,H,S,100,50,1000000,0.25," + Chicago + "\n").Errors, "");
}

TEST_F(MarketImport, ExchangesThatChangeTheirSessionsForEachOthersShareNone) {
    MakeExchange();
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "T,1,2\n").Status, 0);
    ASSERT_EQ(Import("exchanges.csv", ExchangeHeader + "F,H,T,1,1,1,1," + Tokyo + "\n").Status, 0);
    const std::string swapped =
        ExchangeHeader + "F,H,S,1,1,1,1," + Tokyo + "\nE,H,T,100,50,1000000,0.25," + Chicago + "\n";
    const tagEnd kept = Import("exchanges.csv", swapped);
    EXPECT_EQ(kept.Output, Summary("exchanges.csv", "2,0,0,0,2,0"));
    EXPECT_THAT(kept.Errors, Not(HasSubstr("share")));
    EXPECT_EQ(Import("exchanges.csv", swapped, {"--update", "--dry-run", "--quiet"}).Errors, "");
    EXPECT_EQ(Import("exchanges.csv", swapped, {"--update"}).Errors, "");
    EXPECT_THAT(Json("exchanges"), HasSubstr("\"EXCHANGE_NAME\": \"F\", \"DESCRIPTION\": \"\", \"HOLIDAY_NAME\": "
                                             "\"H\", \"SESSION_NAME\": \"S\""));
}

TEST_F(MarketImport, AShareThatComesAboutIsWarnedOfOnceWhicheverWay) {
    MakeExchange();
    ASSERT_EQ(Import("sessions.csv", SessionHeader + "T,1,2\n").Status, 0);
    ASSERT_EQ(Import("exchanges.csv", ExchangeHeader + "F,H,T,1,1,1,1," + Tokyo + "\n").Status, 0);
    const auto warning = [](const std::string& one, const std::string& other, const std::string& session) {
        return "warning: The exchanges \"" + one + "\" and \"" + other + "\" share the session \"" + session +
               "\", which goes when one of them is deleted: give each a session of its own.\n";
    };
    // The first comes to the session of the second.
    const std::string moved = ExchangeHeader + "E,H,T,100,50,1000000,0.25," + Chicago + "\n";
    EXPECT_EQ(Import("exchanges.csv", moved, {"--update", "--dry-run", "--quiet"}).Errors, warning("F", "E", "T"));
    EXPECT_EQ(Import("exchanges.csv", moved, {"--update"}).Errors, warning("F", "E", "T"));
    EXPECT_EQ(Import("exchanges.csv", moved, {"--update"}).Errors, "") << "it was so before";
    // Two new ones.
    EXPECT_EQ(Import("exchanges.csv", ExchangeHeader + "G,H,S,1,1,1,1," + Tokyo + "\nH,H,s,1,1,1,1," + Tokyo + "\n")
                  .Errors,
              warning("G", "H", "S"));
}

TEST_F(MarketImport, AFileThatIsNotTakenIsWarnedOfNoShares) {
    MakeExchange();
    EXPECT_THAT(
        Import("exchanges.csv", ExchangeHeader + "F,H,S,1,1,1,1," + Tokyo + "\nG,H,S,0,1,1,1," + Tokyo + "\n")
            .Errors,
        Not(HasSubstr("share")));
}

TEST_F(MarketImport, AnExchangeThatTheStoreRefusesSharesNothing) {
    MakeExchange();
    CHeldDatabase(Database()).Run(L"ALTER TABLE EXCHANGES ADD CONSTRAINT NO_F CHECK (EXCHANGE_NAME<>'F')");
    const tagEnd end = Import("exchanges.csv", ExchangeHeader + "F,H,S,1,1,1,1," + Tokyo + "\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(end.Errors, Not(HasSubstr("share")));
}

TEST_F(MarketImport, CurrenciesAreTwoNumbers) {
    ASSERT_EQ(Import("currencies.csv", "ID,CURRENCY_CODE\n7,840\n-1,978\n").Status, 0);
    EXPECT_EQ(Import("currencies.csv", "ID,CURRENCY_CODE\n7,826\n").Output,
              Summary("currencies.csv", "1,0,0,0,1,0"));
    EXPECT_EQ(Import("currencies.csv", "ID,CURRENCY_CODE\n7,826\n", {"--update"}).Output,
              Summary("currencies.csv", "1,0,1,0,0,0"));
    EXPECT_EQ(List("currencies"), "ID,CURRENCY_CODE\n-1,978\n7,826\n");
    ExpectProblem("currencies.csv", "ID,CURRENCY_CODE\nUSD,840\n",
                  "2: ID is \"USD\": give a whole number from -2147483648 to 2147483647");
    ExpectProblem("currencies.csv", "ID,CURRENCY_CODE\n7,2147483648\n",
                  "2: CURRENCY_CODE is \"2147483648\": give a whole number from -2147483648 to 2147483647");
    ExpectProblem("currencies.csv", "ID,CURRENCY_CODE\n7,1\n7,2\n", "3: \"7\" repeats line 2: remove one of them");
}

TEST_F(MarketImport, AFileWithABadRowChangesNothingAndTheOthersAreTaken) {
    Write("m/sessions.csv", SessionHeader + "S,1,2\n");
    Write("m/session_details.csv", DetailHeader + "S,Mon,09:00,Mon,17:00\nS,Mon,17:00,Mon,09:00\n");
    Write("m/exchanges.csv", ExchangeHeader + "E,,S,1,1,1,1," + Tokyo + "\n");
    EXPECT_EQ(Run({"import", (Folder() / "m").string()}).Status, 4);
    EXPECT_EQ(Run({"list", "session_details"}).Status, 1);
    EXPECT_EQ(Run({"list", "exchanges"}).Status, 0);
}

TEST_F(MarketImport, ALargeImportRefreshesTheCountsOfTheIndexes) {
    CHeldDatabase(Database()).Run(L"INSERT INTO SETTINGS VALUES(999999,1,1,1,1)");
    std::string rows = "ID,CURRENCY_CODE\n";
    for (int id = 0; id < 1000; ++id)
        rows += std::to_string(id) + ",1\n";
    const auto counted = [&] {
        return CHeldDatabase(Database())
            .Number(L"SELECT COUNT(*) AS DATA_FEED FROM RDB$INDICES WHERE "
                    L"RDB$INDEX_NAME='CURRENCY_KEY' AND RDB$STATISTICS>0");
    };
    ASSERT_EQ(Import("currencies.csv", "ID,CURRENCY_CODE\n-1,1\n").Status, 0);
    EXPECT_EQ(counted(), 0);
    ASSERT_EQ(Import("currencies.csv", rows, {"--dry-run"}).Status, 0);
    EXPECT_EQ(counted(), 0);
    ASSERT_EQ(Import("currencies.csv", rows).Status, 0);
    EXPECT_EQ(counted(), 1);
}

} // namespace

} // namespace sqCliTest
