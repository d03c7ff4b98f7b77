#include "Sandbox.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;

class CheckCommand : public Sandbox {};

TEST_F(CheckCommand, AGoodStoreIsStatus0) {
    CreateFilled();
    const tagEnd end = Run({"--format", "csv", "check"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors, "");
    EXPECT_THAT(end.Output, testing::StartsWith("CHECK,RESULT,FINDING\n"));
    for (const std::string& finding :
         {"registry,ok,The registry entries are in " + Registry().string() + ".\n",
          "database,ok,\"The database is " + Database().string() + ", opened as SYSDBA.\"\n",
          std::string("store,ok,The store opens.\n"),
          std::string("schema,ok,The schema has version 2; this program works with version 2.\n"),
          std::string("engine,ok,\"Engine and client are "), std::string("holidays,ok,The store holds 13 holiday"),
          std::string("holiday_dates,ok,The store holds 359 holiday date"),
          std::string("settings,ok,The store holds 60 price setting"),
          std::string("feeds,ok,The store holds 4 data feed(s)"),
          std::string("sessions,ok,The store holds 24 trading session(s)"),
          std::string("exchanges,ok,The store holds 17 exchange(s)"),
          "log,ok,The log is " + (Folder() / "state").string()})
        EXPECT_THAT(end.Output, HasSubstr(finding));
}

TEST_F(CheckCommand, InconsistenciesAreStatus1) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"INSERT INTO HOLIDAYS VALUES(99999,'NYSE')");
        database.Run(L"INSERT INTO HOLIDAYS VALUES(99998,NULL)");
        database.Run(L"INSERT INTO HOLIDAY_DETAILS VALUES(77777,'x','1.1.2027',NULL)");
        database.Run(L"INSERT INTO SETTINGS VALUES(99996,NULL,1,1,1)");
    }
    const tagEnd end = Run({"--format", "csv", "check"});
    EXPECT_EQ(end.Status, 1);
    EXPECT_THAT(end.Output, HasSubstr("holidays,problem,A holiday calendar has no name: give it one.\n"));
    EXPECT_THAT(end.Output,
                HasSubstr("holidays,problem,\"2 calendars are called \"\"NYSE\"\", so that an import cannot "
                          "tell which is meant: rename all but one.\"\n"));
    EXPECT_THAT(end.Output,
                HasSubstr("holiday_dates,problem,1 date(s) belong to no calendar and have no effect: remove "
                          "them.\n"));
    EXPECT_THAT(end.Output,
                HasSubstr("settings,problem,The setting with the key 99996 lacks a value: update or delete "
                          "it.\n"));
}

TEST_F(CheckCommand, WhatAnExchangeLacksIsNamed) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE EXCHANGES SET HOLIDAY=99999 WHERE EXCHANGE_NAME='ASX'");
        database.Run(L"UPDATE EXCHANGES SET SETTING=99999 WHERE EXCHANGE_NAME='CBOT'");
        database.Run(L"UPDATE EXCHANGES SET SESSION=99999 WHERE EXCHANGE_NAME='CME'");
        database.Run(L"UPDATE EXCHANGES SET SESSION=(SELECT SESSION FROM SESSIONS WHERE SESSION_NAME='NYSE') WHERE "
                     L"EXCHANGE_NAME='NASDAQ'");
        database.Run(L"DELETE FROM SESSION_DETAILS WHERE SESSION=(SELECT SESSION FROM SESSIONS WHERE "
                     L"SESSION_NAME='TSX')");
        database.Run(L"UPDATE EXCHANGES SET EXCHANGE_NAME='LSE' WHERE EXCHANGE_NAME='LME'");
        database.Run(L"UPDATE DATA_FEEDS SET DATA_FEED_NAME='Simulation' WHERE DATA_FEED_NAME='End of day'");
    }
    const tagEnd end = Run({"--format", "csv", "check"});
    EXPECT_EQ(end.Status, 1);
    for (const char* finding :
         {"exchanges,problem,\"The exchange \"\"ASX\"\" has a calendar that is gone: give it another.\"\n",
          "exchanges,problem,\"The exchange \"\"CBOT\"\" has a price setting that is gone: give it another.\"\n",
          "exchanges,problem,\"The exchange \"\"CME\"\" has a session that is gone: give it another.\"\n",
          "exchanges,problem,\"The exchange \"\"NYSE\"\" shares its session with \"\"NASDAQ\"\", and deleting one "
          "takes it "
          "from the other: give each a session of its own.\"\n",
          "exchanges,problem,\"The exchange \"\"TSX\"\" has the session \"\"TSX\"\" without trading times: import "
          "session_details.csv.\"\n",
          "exchanges,problem,\"The exchange \"\"LSE\"\" has its name in common with another: rename one of "
          "them.\"\n",
          "feeds,problem,\"2 feeds are called \"\"Simulation\"\": rename all but one.\"\n"})
        EXPECT_THAT(end.Output, HasSubstr(finding));
}

TEST_F(CheckCommand, AStoreThatDoesNotOpenIsStatus3) {
    Register(Database());
    const tagEnd end = Run({"--format", "csv", "check"});
    EXPECT_EQ(end.Status, 3);
    EXPECT_THAT(end.Output, HasSubstr("registry,ok,"));
    EXPECT_THAT(end.Output, HasSubstr("store,error,\"The database file \"\"" + Database().string() +
                                      "\"\" does not exist: create the database first, or correct the path.\"\n"));
    EXPECT_EQ(end.Errors, "error: The database file \"" + Database().string() +
                              "\" does not exist: create the database first, or correct the path.\n");
}

TEST_F(CheckCommand, TheDictionaryIsLookedFor) {
    ASSERT_EQ(
        Run({"create", "--database", Database().string(), "--dictionary", (Folder() / "r.csv").string()}).Status,
        0);
    EXPECT_THAT(Run({"check"}).Output, HasSubstr((Folder() / "r.csv").string() + " is not there yet."));
    Write("r.csv", "x");
    EXPECT_THAT(Run({"check"}).Output, HasSubstr("The dictionary file is " + (Folder() / "r.csv").string() + "."));
}

} // namespace

} // namespace sqCliTest
