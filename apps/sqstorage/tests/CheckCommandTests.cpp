#include "SymbolFixture.h"

#include <sstream>

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
          std::string("symbols,ok,The store holds 7 symbol(s).\n"),
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
                HasSubstr("holiday_dates,problem,1 date(s) belong to no calendar and have no effect: have a "
                          "host remove them.\n"));
    EXPECT_THAT(end.Output, HasSubstr("settings,problem,The setting with the key 99996 lacks a value: have a host "
                                      "update or delete it.\n"));
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

TEST_F(CheckCommand, ASessionThatCannotBeWrittenAsTextIsNamed) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"INSERT INTO SESSIONS VALUES(99997,1,'Endless',0)");
        database.Run(L"EXECUTE BLOCK AS DECLARE I INTEGER=0; BEGIN WHILE (I<60) DO BEGIN I=I+1; "
                     L"INSERT INTO SESSION_DETAILS VALUES(99997,1,36000,1,39600,0,0,0); END END");
        database.Run(L"INSERT INTO SESSIONS VALUES(99998,1,'Early',0)");
        database.Run(L"INSERT INTO SESSION_DETAILS VALUES(99998,-1,0,1,0,0,0,0)");
    }
    const tagEnd end = Run({"--format", "csv", "check"});
    EXPECT_EQ(end.Status, 1);
    for (const char* session : {"\"\"Endless\"\" with the key 99997", "\"\"Early\"\" with the key 99998"})
        EXPECT_THAT(
            end.Output,
            HasSubstr(std::string("sessions,problem,\"The session ") + session +
                      " has more trading times than a text of 511 characters holds, or a number in them that "
                      "is below 0 or has more than seven digits, and hosts that ask for one of its symbols "
                      "get that without trading times: correct its details.\"\n"));
    EXPECT_THAT(end.Output, testing::Not(HasSubstr("The session \"\"CME")));
}

class CheckSymbols : public SymbolSandbox {
protected:
    static constexpr const char* Types = "SETTING_TYPE,SESSION_TYPE,SESSION_NAME";

    // What the check says of symbols.
    std::string Findings(int status) {
        const tagEnd end = Run({"--format", "csv", "check"});
        EXPECT_EQ(end.Status, status);
        EXPECT_EQ(end.Errors, "");
        std::string found;
        std::istringstream lines(end.Output);
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with("symbols,"))
                found += line + "\n";
        return found;
    }
    void Change(std::wstring_view statement) { CHeldDatabase(Database()).Run(statement); }
    static std::string Effect(const std::string& name) {
        return "symbols,problem,\"Hosts that read the whole portfolio get it without exchange, prices and times "
               "from \"\"" +
               name + "\"\" on, in the order of names: do what is said above.\"\n";
    }
};

TEST_F(CheckSymbols, SymbolsThatHaveEverythingAreCounted) {
    ASSERT_EQ(ImportSymbols(Types, "own,0,F,E,1,1,\nshared,0,G,X,2,2,T\nrooted,1,F,X,2,3,\n").Status, 0);
    EXPECT_EQ(Findings(0), "symbols,ok,The store holds 3 symbol(s).\n");
}

TEST_F(CheckSymbols, AStoreWithoutSymbolsIsGood) {
    EXPECT_EQ(Findings(0), "symbols,ok,The store holds 0 symbol(s).\n");
}

TEST_F(CheckSymbols, WhatASymbolLacksIsNamed) {
    ASSERT_EQ(ImportSymbols(Types, "a,0,F,E,1,1,\nb,0,F,E,1,1,\nc,0,F,E,1,1,\nd,0,F,E,1,1,\ne,0,F,E,1,1,\n"
                                   "good,0,F,E,1,1,\nt,0,F,E,1,2,T\n")
                  .Status,
              0);
    Change(L"UPDATE PORTFOLIO SET EXCHANGE=9991 WHERE SYMBOL_NAME='a'");
    Change(L"UPDATE PORTFOLIO SET DATA_FEED=9992 WHERE SYMBOL_NAME='b'");
    Change(L"UPDATE PORTFOLIO SET SETTING_TYPE=0,SETTING=9993 WHERE SYMBOL_NAME='c'");
    Change(L"UPDATE PORTFOLIO SET SESSION_TYPE=0,CUSTOM_SESSION=9994 WHERE SYMBOL_NAME='d'");
    Change(L"UPDATE PORTFOLIO SET TEMPLATE_SESSION=9995 WHERE SYMBOL_NAME='t'");
    Change(L"UPDATE PORTFOLIO SET SETTING_TYPE=NULL,SETTING=NULL WHERE SYMBOL_NAME='e'");
    EXPECT_EQ(
        Findings(1),
        "symbols,ok,The store holds 7 symbol(s).\n"
        "symbols,problem,\"1 symbol(s) have an exchange that is gone, and no list shows them (\"\"a\"\"): import "
        "them with an exchange that is there, and have a host delete the old ones.\"\n"
        "symbols,problem,\"1 symbol(s) have a feed that is gone, and no list shows them (\"\"b\"\"): import them "
        "with a feed that is there, and have a host delete the old ones.\"\n"
        "symbols,problem,\"2 symbol(s) have a price setting of their own that is gone (\"\"c\"\", \"\"e\"\"): "
        "import them with prices and --update.\"\n"
        "symbols,problem,\"1 symbol(s) have a session of their own that is gone (\"\"d\"\"): import them with "
        "SESSION_TIMES and --update.\"\n"
        "symbols,problem,\"1 symbol(s) have a template session that is gone (\"\"t\"\"): import them with one "
        "that is there and --update.\"\n" +
            Effect("a"));
}

TEST_F(CheckSymbols, WhatTheirExchangeLacksIsToldOfAllThatTakeItFromThere) {
    ASSERT_EQ(ImportSymbols(Types, "a,0,F,E,1,1,\nb,0,F,E,2,2,T\nc,0,F,E,1,3,\nx,0,F,X,1,1,\n").Status, 0);
    Change(L"UPDATE EXCHANGES SET SETTING=9991,SESSION=9992 WHERE EXCHANGE_NAME='E'");
    // Types that are unknown take the exchange's, too.
    Change(L"UPDATE PORTFOLIO SET SETTING_TYPE=4,SESSION_TYPE=-1 WHERE SYMBOL_NAME='a'");
    EXPECT_EQ(Findings(1),
              "symbols,ok,The store holds 4 symbol(s).\n"
              "symbols,problem,\"3 symbol(s) have the price setting of their exchange, which is gone (\"\"a\"\", "
              "\"\"b\"\", \"\"c\"\"): import the exchange with prices and --update.\"\n"
              "symbols,problem,\"2 symbol(s) have the session of their exchange, which is gone (\"\"a\"\", "
              "\"\"c\"\"): import the exchange with a session that is there and --update.\"\n" +
                  Effect("a"));
}

TEST_F(CheckSymbols, ASessionThatCannotBeWrittenEndsTheWholePortfolioAsWhatIsGoneDoes) {
    ASSERT_EQ(ImportSymbols(Types, "a,0,F,E,1,1,\nb,0,F,X,1,1,\nc,0,F,E,1,2,T\nd,0,F,E,1,1,\n").Status, 0);
    Change(L"UPDATE PORTFOLIO SET EXCHANGE=9991 WHERE SYMBOL_NAME='d'");
    // One that no symbol has does nothing to them; there are more than one list of keys holds.
    Change(
        L"EXECUTE BLOCK AS DECLARE K INTEGER=90000; BEGIN WHILE (K<91600) DO BEGIN K=K+1; "
        L"INSERT INTO SESSIONS VALUES(:K,0,'',0); INSERT INTO SESSION_DETAILS VALUES(:K,-1,0,1,0,0,0,0); END END");
    const std::string gone =
        "symbols,ok,The store holds 4 symbol(s).\n"
        "symbols,problem,\"1 symbol(s) have an exchange that is gone, and no list shows them (\"\"d\"\"): import "
        "them with an exchange that is there, and have a host delete the old ones.\"\n";
    EXPECT_EQ(Findings(1), gone + Effect("d"));
    Change(L"UPDATE SESSION_DETAILS SET START_DAY=-1 WHERE SESSION IN (SELECT SESSION FROM SESSIONS WHERE "
           L"SESSION_NAME IN ('SX','T'))");
    EXPECT_EQ(Findings(1), gone +
                               "symbols,problem,\"2 symbol(s) have a session that cannot be written as text "
                               "(\"\"b\"\", \"\"c\"\"): correct its details.\"\n" +
                               Effect("b"));
}

TEST_F(CheckSymbols, OfManyTheFirstThreeAreNamed) {
    ASSERT_EQ(ImportSymbols("", "d,0,F,E\na,0,F,E\na,1,F,E\nc,0,F,E\nb,0,F,E\ngood,0,F,X\n").Status, 0);
    Change(L"UPDATE PORTFOLIO SET EXCHANGE=9991 WHERE SYMBOL_NAME<>'good'");
    EXPECT_EQ(Findings(1),
              "symbols,ok,The store holds 6 symbol(s).\n"
              "symbols,problem,\"5 symbol(s) have an exchange that is gone, and no list shows them (\"\"a\"\", "
              "\"\"b\"\", \"\"c\"\" and others): import them with an exchange that is there, and have a host "
              "delete the old ones.\"\n" +
                  Effect("a"));
}

TEST_F(CheckSymbols, ADeletedFeedTakesNothingFromHostsAndIsToldAllTheSame) {
    ASSERT_EQ(ImportSymbols("", "a,0,F,E\nb,0,G,E\n").Status, 0);
    Change(L"UPDATE DATA_FEEDS SET DELETED=1 WHERE DATA_FEED_NAME='F'");
    EXPECT_EQ(Findings(1),
              "symbols,ok,The store holds 2 symbol(s).\n"
              "symbols,problem,\"1 symbol(s) have a feed that is deleted (\"\"a\"\"): import a feed of "
              "its CLSID to have it back, or have a host delete the symbols.\"\n");
}

TEST_F(CheckSymbols, DuplicatesAreThoseThatAnInsertTakesForTheSame) {
    ASSERT_EQ(ImportSymbols("", "a,0,F,E\nb,0,F,E\nc,0,F,E\n").Status, 0);
    const auto copy = [&](const std::wstring& name, const std::wstring& changes) {
        Change(L"INSERT INTO PORTFOLIO SELECT 90000+(SELECT COUNT(*) FROM PORTFOLIO)," + changes +
               L",SETTING_TYPE,SETTING,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,CONTRACT_MONTH,CONTRACT_YEAR,"
               L"STRIKE_PRICE,CALL_PUT,MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY "
               L"FROM PORTFOLIO WHERE SYMBOL_NAME='" +
               name + L"' AND CATEGORY=0");
    };
    copy(L"a", L"'A','','','',CATEGORY,DATA_FEED,EXCHANGE");
    copy(L"a", L"'a ','','','',CATEGORY,DATA_FEED,EXCHANGE");
    copy(L"b", L"SYMBOL_NAME,'','','',1,DATA_FEED,EXCHANGE");
    EXPECT_EQ(Findings(0), "symbols,ok,The store holds 6 symbol(s).\n");
    copy(L"b", L"SYMBOL_NAME,'r','d','',CATEGORY,DATA_FEED,EXCHANGE");
    copy(L"c", L"SYMBOL_NAME,'','','',CATEGORY,DATA_FEED,EXCHANGE");
    EXPECT_EQ(Findings(1),
              "symbols,ok,The store holds 8 symbol(s).\n"
              "symbols,problem,\"2 symbol(s) are there more than once, with the same category, feed and "
              "exchange (\"\"b\"\", \"\"c\"\"): have a host delete all but one of each.\"\n");
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
