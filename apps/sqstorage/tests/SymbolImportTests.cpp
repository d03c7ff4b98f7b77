#include "SymbolFixture.h"

#include <fmt/format.h>
#include <map>
#include <sstream>

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class SymbolImport : public SymbolSandbox {};

TEST_F(SymbolImport, ASymbolTakesWhatItsRowDoesNotSayFromItsExchange) {
    const tagEnd end =
        ImportSymbols("SYMBOL_ROOT,DESCRIPTION,EXPIRATION_DATE", "ES1,0,F,E,es,it's one,2026-12-18\n");
    EXPECT_EQ(end.Status, 0) << end.Errors;
    EXPECT_EQ(end.Output, Counts("1,1,0,0,0,0"));
    EXPECT_EQ(OwnableRows(), "2 3 3");
    EXPECT_EQ(
        Number(L"SELECT COUNT(*) FROM PORTFOLIO WHERE SYMBOL_NAME='ES1' AND SYMBOL_ROOT='ES' AND "
               L"DESCRIPTION='it''s one' AND CUSIP='' AND CATEGORY=0 AND SETTING_TYPE=1 AND SETTING=0 AND "
               L"SESSION_TYPE=1 AND CUSTOM_SESSION=0 AND TEMPLATE_SESSION=0 AND EXPIRATION_DATE='18.12.2026' "
               L"AND FIRST_NOTICE_DATE='1.1.1900' AND DELIVERY='1.1.1900' AND DATA_FEED=(SELECT DATA_FEED FROM "
               L"DATA_FEEDS WHERE DATA_FEED_NAME='F') AND EXCHANGE=(SELECT EXCHANGE FROM EXCHANGES WHERE "
               L"EXCHANGE_NAME='E')"),
        1);
}

TEST_F(SymbolImport, ASymbolOwnsTheSettingAndTheSessionOfItsRow) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "ES1,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30; Mon 22:00-Tue 05:00\n").Status,
              0);
    EXPECT_EQ(OwnableRows(), "3 4 5");
    EXPECT_EQ(
        Number(L"SELECT COUNT(*) FROM PORTFOLIO P JOIN SETTINGS N ON N.SETTING=P.SETTING JOIN SESSIONS S ON "
               L"S.SESSION=P.CUSTOM_SESSION WHERE P.SETTING_TYPE=0 AND N.PRICE_SCALE=10 AND N.DAILY_LIMIT=7 AND "
               L"P.SESSION_TYPE=0 AND S.SESSION_TYPE=0 AND S.SESSION_NAME='' AND S.TIME_ZONE=2 AND (SELECT "
               L"COUNT(*) FROM SESSION_DETAILS D WHERE D.SESSION=S.SESSION)=2"),
        1);
}

TEST_F(SymbolImport, ATemplateIsNamedAndShared) {
    ASSERT_EQ(ImportSymbols("SESSION_TYPE,SESSION_NAME", "A,0,F,E,2,T\nB,0,F,E,2,T\n").Status, 0);
    EXPECT_EQ(OwnableRows(), "2 3 3");
    EXPECT_EQ(
        Number(L"SELECT COUNT(*) FROM PORTFOLIO WHERE SESSION_TYPE=2 AND CUSTOM_SESSION=0 AND TEMPLATE_SESSION="
               L"(SELECT SESSION FROM SESSIONS WHERE SESSION_NAME='T')"),
        2);
}

TEST_F(SymbolImport, BadRowsAreNamedAndNothingIsTaken) {
    const std::string file = (Folder() / "symbols.csv").string();
    const tagEnd end = ImportSymbols("SESSION_TYPE,SESSION_NAME,STRIKE_PRICE", "good,0,F,E,,,\n"
                                                                               "feed,0,Q,E,,,\n"
                                                                               "exchange,0,F,Q,,,\n"
                                                                               "session,0,F,E,2,Q,\n"
                                                                               "strike,0,F,E,,,x\n"
                                                                               "good,0,F,E,,,1\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Counts("6,0,0,0,0,5"));
    EXPECT_EQ(
        end.Errors,
        "error: " + file + ":3: there is no feed \"Q\": correct the name, or add it to feeds.csv.\n" +
            "error: " + file + ":4: there is no exchange \"Q\": correct the name, or add it to exchanges.csv.\n" +
            "error: " + file + ":5: there is no session \"Q\": correct the name, or add it to sessions.csv.\n" +
            "error: " + file +
            ":6: STRIKE_PRICE is \"x\": give a number above -1000000000 and below 1000000000, with a decimal "
            "point.\n" +
            "error: " + file +
            ":7: \"good\" repeats line 2 in name, category, feed and exchange: remove one of them.\n" +
            "warning: Nothing is taken from " + file + ": correct the rows named above and import it again.\n");
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 0);
}

TEST_F(SymbolImport, EveryKindOfBadValueIsNamedWithItsLineAndWhatToDo) {
    struct tagBad {
        std::map<std::string, std::string> Values; // over those of a good row
        std::string Problem;
    };
    const std::string category = "give a whole number from 0 to 32767";
    const std::string date = " is not a date in the form YYYY-MM-DD: write it like 2027-12-24";
    const std::vector<tagBad> bad{
        {{{"SYMBOL_NAME", ""}}, "SYMBOL_NAME is empty: give a name"},
        {{{"SYMBOL_NAME", std::string(32, 'n')}},
         "SYMBOL_NAME has 32 characters, and the store keeps 31: shorten it"},
        {{{"SYMBOL_ROOT", std::string(32, 'r')}},
         "SYMBOL_ROOT has 32 characters, and the store keeps 31: shorten it"},
        {{{"DESCRIPTION", std::string(64, 'd')}},
         "DESCRIPTION has 64 characters, and the store keeps 63: shorten it"},
        {{{"CUSIP", std::string(13, 'c')}}, "CUSIP has 13 characters, and the store keeps 12: shorten it"},
        {{{"CATEGORY", "-1"}}, "CATEGORY is \"-1\": " + category},
        {{{"CATEGORY", "futures"}}, "CATEGORY is \"futures\": " + category},
        {{{"CATEGORY", "32768"}}, "CATEGORY is \"32768\": " + category},
        {{{"CATEGORY", "254"}}, "CATEGORY is 254, by which hosts say that there is none: give another number"},
        {{{"DATA_FEED_NAME", "f"}}, "there is no feed \"f\": correct the name, or add it to feeds.csv"},
        {{{"EXCHANGE_NAME", "e"}}, "there is no exchange \"e\": correct the name, or add it to exchanges.csv"},
        {{{"SESSION_TYPE", "2"}, {"SESSION_NAME", "S"}},
         "there is no session \"S\": correct the name, or add it to sessions.csv"},
        {{{"SESSION_TYPE", "-1"}}, "SESSION_TYPE is \"-1\": give a whole number from 0 to 3"},
        {{{"SETTING_TYPE", "-1"}}, "SETTING_TYPE is \"-1\": give a whole number from 0 to 2"},
        {{{"SETTING_TYPE", "0"},
          {"PRICE_SCALE", "-100"},
          {"POINT_VALUE", "1"},
          {"DAILY_LIMIT", "1"},
          {"MIN_MOVEMENT", "1"}},
         "PRICE_SCALE is \"-100\": give a whole number from 1 to 2147483647"},
        {{{"CONTRACT_MONTH", "-1"}}, "CONTRACT_MONTH is \"-1\": give a whole number from 0 to 12"},
        {{{"CONTRACT_YEAR", "-1"}}, "CONTRACT_YEAR is \"-1\": give a whole number from 0 to 9999"},
        {{{"MARGIN", "2147483648"}},
         "MARGIN is \"2147483648\": give a whole number from -2147483648 to 2147483647"},
        {{{"EXPIRATION_DATE", "18.12.2026"}}, "EXPIRATION_DATE: \"18.12.2026\"" + date},
        {{{"FIRST_NOTICE_DATE", "2026-02-30"}},
         "FIRST_NOTICE_DATE: there is no day 2026-02-30: correct the month or the day"},
        {{{"DELIVERY", "soon"}}, "DELIVERY: \"soon\"" + date}};
    const std::string columns = "SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED_NAME,EXCHANGE_NAME,"
                                "SETTING_TYPE,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT,SESSION_TYPE,"
                                "SESSION_NAME,CONTRACT_MONTH,CONTRACT_YEAR,MARGIN,EXPIRATION_DATE,"
                                "FIRST_NOTICE_DATE,DELIVERY\n";
    std::string rows = "good,,,,0,F,E,,,,,,,,,,,,,\n";
    std::string errors;
    const std::string file = (Folder() / "symbols.csv").string();
    std::size_t line = 3;
    for (const auto& [values, problem] : bad) {
        std::istringstream names(columns.substr(0, columns.size() - 1));
        for (std::string name; std::getline(names, name, ',');) {
            const std::map<std::string, std::string> usual{{"SYMBOL_NAME", "S" + std::to_string(line)},
                                                           {"CATEGORY", "0"},
                                                           {"DATA_FEED_NAME", "F"},
                                                           {"EXCHANGE_NAME", "E"}};
            const auto value = values.find(name);
            const auto other = usual.find(name);
            rows += (name == "SYMBOL_NAME" ? "" : ",") + (value != values.end()  ? value->second
                                                          : other != usual.end() ? other->second
                                                                                 : "");
        }
        rows += "\n";
        errors += "error: " + file + ":" + std::to_string(line++) + ": " + problem + ".\n";
    }
    const tagEnd end = Import("symbols.csv", columns + rows);
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Counts(fmt::format("{},0,0,0,0,{}", bad.size() + 1, bad.size())));
    EXPECT_EQ(end.Errors, errors + "warning: Nothing is taken from " + file +
                              ": correct the rows named above and import it again.\n");
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 0);
    EXPECT_EQ(OwnableRows(), "2 3 3");
}

TEST_F(SymbolImport, ABadRowSaysAllThatIsWrongWithItAndLeavesOtherFilesAlone) {
    Write("d/feeds.csv", "DATA_FEED_NAME,DATA_FEED_SHORT_NAME,DATA_FEED_DLL_NAME,CLSID\nH,h,h.dll,{h}\n");
    const std::string file = Write("d/symbols.csv", Head("EXPIRATION_DATE") + "A,-1,Q,R,x\nB,0,Q,R,\n").string();
    const tagEnd end = Run({"import", (Folder() / "d").string()});
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(
        end.Errors,
        "error: " + file + ":2: CATEGORY is \"-1\": give a whole number from 0 to 32767.\n" + "error: " + file +
            ":2: EXPIRATION_DATE: \"x\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24.\n" +
            "error: " + file + ":3: there is no feed \"Q\": correct the name, or add it to feeds.csv.\n" +
            "error: " + file + ":3: there is no exchange \"R\": correct the name, or add it to exchanges.csv.\n" +
            "warning: Nothing is taken from " + file + ": correct the rows named above and import it again.\n");
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM DATA_FEEDS WHERE DATA_FEED_NAME='H'"), 1);
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 0);
}

TEST_F(SymbolImport, TheSameNameInAnotherCaseCategoryFeedOrExchangeIsAnotherSymbol) {
    const std::string rows = "ES1,0,F,E\nes1,0,F,E\nES1,1,F,E\nES1,0,G,E\nES1,0,F,X\n";
    EXPECT_EQ(ImportSymbols("", rows).Output, Counts("5,5,0,0,0,0"));
    // The store alone would not find the one that stands behind the other case, and add it again.
    EXPECT_EQ(ImportSymbols("", rows).Output, Counts("5,0,0,5,0,0"));
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 5);
}

TEST_F(SymbolImport, ANameWithAQuoteIsFoundAgain) {
    EXPECT_EQ(ImportSymbols("", "it's,0,F,E\n").Output, Counts("1,1,0,0,0,0"));
    EXPECT_EQ(ImportSymbols("", "it's,0,F,E\n").Output, Counts("1,0,0,1,0,0"));
}

TEST_F(SymbolImport, ASymbolThatTheStoreHasTwiceIsToldWithItsKeys) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\nB,0,F,E\n").Status, 0);
    const LONG first = Number(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='A'");
    CHeldDatabase(Database()).Run(L"UPDATE PORTFOLIO SET SYMBOL_NAME='A'");
    ExpectProblem("symbols.csv", Head() + "A,0,F,E\n",
                  "2: the store has \"A\" twice in that category, feed and exchange, with the keys " +
                      std::to_string(first) + " and " + std::to_string(first + 1) +
                      ": have a host delete one of them");
}

TEST_F(SymbolImport, ADescriptionAsLongAsItsColumnIsKeptWhole) {
    const std::string longest(63, 'x');
    const std::string quotes(40, '\'');
    EXPECT_EQ(ImportSymbols("DESCRIPTION", "A,0,F,E," + longest + "\nB,0,F,E," + quotes + "\n").Status, 0);
    EXPECT_THAT(Exported(), HasSubstr("A,," + longest + ",,0,F,E,"));
    EXPECT_THAT(Exported(), HasSubstr("B,," + quotes + ",,0,F,E,"));
}

TEST_F(SymbolImport, AnUpdateChangesWhatTheRowSays) {
    ASSERT_EQ(ImportSymbols("SYMBOL_ROOT,MARGIN", "A,0,F,E,r,1\n").Status, 0);
    const tagEnd kept = ImportSymbols("SYMBOL_ROOT,MARGIN,SESSION_TYPE,SESSION_NAME", "A,0,F,E,q,2,2,T\n");
    EXPECT_EQ(kept.Status, 0);
    EXPECT_EQ(kept.Output, Counts("1,0,0,0,1,0"));
    EXPECT_EQ(
        ImportSymbols("SYMBOL_ROOT,MARGIN,SESSION_TYPE,SESSION_NAME", "A,0,F,E,q,2,2,T\n", {"--update"}).Output,
        Counts("1,0,1,0,0,0"));
    EXPECT_EQ(Exported(), std::string(AllColumns) + "A,Q,,,0,F,E,1,,,,,2,T,,,0,0,0,0,2,,0,0,,\n");
}

TEST_F(SymbolImport, WhatASymbolNoLongerOwnsGoesAndWhatItKeepsStays) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\n").Status, 0);
    const LONG setting = Number(L"SELECT SETTING FROM PORTFOLIO");
    const LONG session = Number(L"SELECT CUSTOM_SESSION FROM PORTFOLIO");
    // Only the session changes.
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:45\n", {"--update"}).Status, 0);
    EXPECT_EQ(Number(L"SELECT SETTING FROM PORTFOLIO"), setting);
    EXPECT_NE(Number(L"SELECT CUSTOM_SESSION FROM PORTFOLIO"), session);
    EXPECT_EQ(OwnableRows(), "3 4 4");
    // Only the setting changes.
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,20,0.5,7,0.1,0,Tue 08:00-09:45\n", {"--update"}).Status, 0);
    EXPECT_NE(Number(L"SELECT SETTING FROM PORTFOLIO"), setting);
    EXPECT_EQ(OwnableRows(), "3 4 4");
    // Both are given up.
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\n", {"--update"}).Status, 0);
    EXPECT_EQ(OwnableRows(), "2 3 3");
}

TEST_F(SymbolImport, ASettingThatTwoSymbolsHaveGoesWithTheSecond) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,1,\nB,0,F,E,0,10,0.5,7,0.1,1,\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE PORTFOLIO SET SETTING=(SELECT MIN(SETTING) FROM PORTFOLIO)");
    CHeldDatabase(Database()).Run(L"DELETE FROM SETTINGS WHERE SETTING>(SELECT MIN(SETTING) FROM PORTFOLIO)");
    ASSERT_EQ(OwnableRows(), "3 3 3");
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\n", {"--update"}).Status, 0);
    EXPECT_EQ(OwnableRows(), "3 3 3");
    ASSERT_EQ(ImportSymbols("", "B,0,F,E\n", {"--update"}).Status, 0);
    EXPECT_EQ(OwnableRows(), "2 3 3");
}

TEST_F(SymbolImport, ARefusedSymbolLeavesNothingBehindAndTheOthersAreTaken) {
    CHeldDatabase(Database()).Run(L"ALTER TABLE PORTFOLIO ADD CONSTRAINT NOT_BAD CHECK (SYMBOL_NAME<>'bad')");
    const tagEnd end = ImportSymbols(OwnColumns, "bad,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\n"
                                                 "good,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\n");
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, Counts("2,1,0,0,0,1"));
    EXPECT_THAT(end.Errors, StartsWith("error: " + (Folder() / "symbols.csv").string() +
                                       ":2: the store refused the row. A value breaks a rule of its table: "));
    EXPECT_EQ(OwnableRows(), "3 4 4");
}

TEST_F(SymbolImport, ARefusedSessionLeavesNoSettingBehind) {
    CHeldDatabase(Database()).Run(L"ALTER TABLE SESSION_DETAILS ADD CONSTRAINT NO_FRIDAY CHECK (START_DAY<>5)");
    EXPECT_EQ(ImportSymbols(OwnColumns, "bad,0,F,E,0,10,0.5,7,0.1,0,Fri 08:00-09:30\n").Status, 4);
    EXPECT_EQ(OwnableRows(), "2 3 3");
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 0);
}

TEST_F(SymbolImport, ARefusedUpdateLeavesTheSymbolWithWhatItHad) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\n").Status, 0);
    const std::string before = Exported();
    CHeldDatabase(Database()).Run(L"ALTER TABLE PORTFOLIO ADD CONSTRAINT NO_MARGIN CHECK (MARGIN=0)");
    EXPECT_EQ(ImportSymbols(OwnColumns + std::string(",MARGIN"), "A,0,F,E,0,20,0.5,7,0.1,0,Wed 08:00-09:30,1\n",
                            {"--update"})
                  .Status,
              4);
    EXPECT_EQ(OwnableRows(), "3 4 4");
    EXPECT_EQ(Exported(), before);
}

TEST_F(SymbolImport, ALongDescriptionThatIsRefusedLeavesNoSymbolBehind) {
    CHeldDatabase(Database())
        .Run(L"ALTER TABLE PORTFOLIO ADD CONSTRAINT SHORT_TEXT CHECK (CHAR_LENGTH(DESCRIPTION)<63)");
    EXPECT_EQ(ImportSymbols(OwnColumns + std::string(",DESCRIPTION"),
                            "A,0,F,E,0,20,0.5,7,0.1,0,Wed 08:00-09:30," + std::string(63, 'x') + "\n")
                  .Status,
              4);
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 0);
    EXPECT_EQ(OwnableRows(), "2 3 3");
}

TEST_F(SymbolImport, AnOwnSessionDoesNotTakeTheNameOfATemplate) {
    ExpectProblem("symbols.csv", Head("SESSION_TYPE,SESSION_NAME,SESSION_TIMES") + "A,0,F,E,0,t,Mon 08:00-09:00\n",
                  "2: the own session is called \"t\", which is a template's name: choose another, or make "
                  "SESSION_TYPE 2 to use the template");
}

TEST_F(SymbolImport, ADryRunTestsEverythingAndWritesNothing) {
    const tagEnd end = ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\n", {"--dry-run"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output, Counts("1,1,0,0,0,0"));
    EXPECT_EQ(ImportSymbols("", "A,0,F,Q\n", {"--dry-run"}).Status, 4);
    EXPECT_EQ(OwnableRows(), "2 3 3");
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 0);
}

class SymbolImportIntoAnEmptyStore : public SymbolSandbox {
protected:
    void SetUp() override { Create(); }
};

TEST_F(SymbolImportIntoAnEmptyStore, ADryRunKnowsTheFilesThatSymbolsReferTo) {
    WriteMarket("d");
    Write("d/symbols.csv", Head("SESSION_TYPE,SESSION_NAME") + "A,0,F,E,2,T\n");
    const tagEnd dry = Run({"import", (Folder() / "d").string(), "--dry-run"});
    EXPECT_EQ(dry.Status, 0) << dry.Errors;
    const tagEnd end = Run({"import", (Folder() / "d").string()});
    EXPECT_EQ(end.Status, 0) << end.Errors;
    EXPECT_EQ(Number(L"SELECT COUNT(*) FROM PORTFOLIO"), 1);
}

} // namespace

} // namespace sqCliTest
