#include "SymbolFixture.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;

class SymbolCommand : public SymbolSandbox {
protected:
    SymbolCommand() { m_Variables["TZ"] = "UTC"; }

    tagEnd Symbol(const std::string& name, const std::string& feed = "F") {
        return Run({"--format", "json", "symbol", name, "--feed", feed});
    }
    std::string Key(const std::wstring& name) {
        return std::to_string(Number(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='" + name + L"'"));
    }
};

TEST_F(SymbolCommand, ASymbolIsShownWithTheNamesOfWhatItRefersTo) {
    ASSERT_EQ(ImportSymbols("SYMBOL_ROOT,DESCRIPTION,CONTRACT_MONTH,CONTRACT_YEAR,EXPIRATION_DATE",
                            "ES1,3,F,E,ES,it's one,12,2026,2026-12-18\n")
                  .Status,
              0);
    const std::string key = Key(L"ES1");
    EXPECT_EQ(
        Symbol("ES1").Output,
        "[\n  {\"SYMBOL\": " + key +
            ", \"SYMBOL_NAME\": \"ES1\", \"SYMBOL_ROOT\": \"ES\", \"DESCRIPTION\": \"it's one\", \"CUSIP\": "
            "\"\", \"CATEGORY\": 3, \"DATA_FEED_NAME\": \"F\", \"EXCHANGE_NAME\": \"E\", \"SETTING_TYPE\": 1, "
            "\"PRICE_SCALE\": 100, \"POINT_VALUE\": 50, \"DAILY_LIMIT\": 1000, \"MIN_MOVEMENT\": 0.25, "
            "\"SESSION_TYPE\": 1, \"SESSION_NAME\": \"SE\", \"TIME_ZONE\": 2, \"SESSION_TIMES\": \"Mon "
            "09:00-17:00\", \"SESSIONS_STRING\": \"1:1980,2460,0,0,0;\", \"SESSIONS_TIME_ZONE_INFORMATION\": "
            "\"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\", \"CONTRACT_MONTH\": 12, "
            "\"CONTRACT_YEAR\": 2026, \"STRIKE_PRICE\": 0, \"CALL_PUT\": 0, \"MARGIN\": 0, "
            "\"EXPIRATION_DATE\": \"2026-12-18\", \"EXPIRED\": 0, \"EXPIRATION_RULE\": 0, "
            "\"FIRST_NOTICE_DATE\": null, \"DELIVERY\": null, \"EXCHANGE_TIME_ZONE_INFORMATION\": "
            "\"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\", \"EXCHANGE_GMT\": -360, \"LOCAL_GMT\": 0, "
            "\"SETTING_FROM\": \"exchange\", \"SESSION_FROM\": \"exchange\"}\n]\n");
    const tagEnd csv = Run({"--format", "csv", "symbol", "ES1", "--feed", "F"});
    EXPECT_THAT(csv.Output, testing::StartsWith("SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,"));
    EXPECT_THAT(csv.Output, HasSubstr("\n" + key +
                                      ",ES1,ES,it's one,,3,F,E,1,100,50,1000,0.25,1,SE,2,Mon "
                                      "09:00-17:00,\"1:1980,2460,0,0,0;\","));
}

TEST_F(SymbolCommand, TheTableIsForPeople) {
    ASSERT_EQ(
        ImportSymbols(OwnColumns, "A,0,F,X,0,10,0.5,7,0.1,0,Mon 22:00-Tue 05:00; Tue 22:00-Wed 05:00\n").Status, 0);
    const std::string key = Key(L"A");
    const auto line = [](const std::string& field, const std::string& value, const std::string& from) {
        return field + std::string(32 - field.size(), ' ') + value + std::string(50 - value.size(), ' ') + from +
               "\n";
    };
    EXPECT_EQ(
        Run({"symbol", "A", "--feed", "F"}).Output,
        line("FIELD", "VALUE", "FROM") +
            line("------------------------------", "------------------------------------------------", "--------") +
            line("SYMBOL", key, "own") + line("SYMBOL_NAME", "A", "own") + line("SYMBOL_ROOT", "", "own") +
            line("DESCRIPTION", "", "own") + line("CUSIP", "", "own") + line("CATEGORY", "0", "own") +
            line("DATA_FEED_NAME", "F", "own") + line("EXCHANGE_NAME", "X", "own") +
            line("SETTING_TYPE", "0, its own", "own") + line("PRICE_SCALE", "10", "own") +
            line("POINT_VALUE", "0.5", "own") + line("DAILY_LIMIT", "7", "own") +
            line("MIN_MOVEMENT", "0.1", "own") + line("SESSION_TYPE", "0, its own", "own") +
            line("SESSION_NAME", "", "own") + line("TIME_ZONE", "2, the clock of the exchange", "own") +
            line("SESSION_TIMES", "Mon 22:00-Tue 05:00", "own") + line("", "Tue 22:00-Wed 05:00", "own") +
            line("SESSIONS_STRING", "2:2760,3180,0,0,0;4200,4620,0,0,0;", "own") +
            line("SESSIONS_TIME_ZONE_INFORMATION", "-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000", "exchange") +
            line("CONTRACT_MONTH", "0", "own") + line("CONTRACT_YEAR", "0", "own") +
            line("STRIKE_PRICE", "0", "own") + line("CALL_PUT", "0", "own") + line("MARGIN", "0", "own") +
            line("EXPIRATION_DATE", "", "own") + line("EXPIRED", "0", "own") + line("EXPIRATION_RULE", "0", "own") +
            line("FIRST_NOTICE_DATE", "", "own") + line("DELIVERY", "", "own") +
            line("EXCHANGE_TIME_ZONE_INFORMATION", "-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000", "exchange") +
            line("EXCHANGE_GMT", "540", "exchange") + line("LOCAL_GMT", "0", "machine"));
}

TEST_F(SymbolCommand, EachValueSaysWhereItComesFrom) {
    ASSERT_EQ(ImportSymbols(std::string(OwnColumns) + ",SESSION_NAME,TIME_ZONE",
                            "own,0,F,E,0,10,0.5,7,0.1,0,Fri 22:00-24:00,mine,1\n"
                            "template,0,F,E,1,,,,,2,,T,\n"
                            "dictionary,0,F,X,2,,,,,3,,,\n")
                  .Status,
              0);
    EXPECT_THAT(Symbol("own").Output, HasSubstr("\"SETTING_FROM\": \"own\", \"SESSION_FROM\": \"own\""));
    EXPECT_THAT(Symbol("own").Output, HasSubstr("\"SESSION_NAME\": \"mine\", \"TIME_ZONE\": 1, \"SESSION_TIMES\": "
                                                "\"Fri 22:00-24:00\""));
    const std::string shared = Symbol("template").Output;
    EXPECT_THAT(shared, HasSubstr("\"SETTING_FROM\": \"exchange\", \"SESSION_FROM\": \"template\""));
    EXPECT_THAT(shared, HasSubstr("\"SESSION_NAME\": \"T\", \"TIME_ZONE\": 2, \"SESSION_TIMES\": \"Fri "
                                  "08:00-09:00:30\""));
    // Where the dictionary has nothing, it is the exchange that gives.
    const std::string rooted = Symbol("dictionary").Output;
    EXPECT_THAT(rooted, HasSubstr("\"SETTING_TYPE\": 2, \"PRICE_SCALE\": 1, "));
    EXPECT_THAT(rooted, HasSubstr("\"SESSION_TYPE\": 3, \"SESSION_NAME\": \"SX\", "));
    EXPECT_THAT(rooted, HasSubstr("\"SETTING_FROM\": \"exchange\", \"SESSION_FROM\": \"exchange\""));
}

TEST_F(SymbolCommand, TheZoneOfASessionSaysWhoseClockItIs) {
    m_Variables["TZ"] = "EST5";
    ASSERT_EQ(ImportSymbols("SESSION_TYPE,SESSION_TIMES,TIME_ZONE", "A,0,F,X,0,Fri 22:00-24:00,0\n"
                                                                    "B,0,F,X,0,Fri 22:00-24:00,1\n"
                                                                    "C,0,F,X,0,Fri 22:00-24:00,2\n")
                  .Status,
              0);
    const auto zone = [&](const std::string& name) {
        const std::string table = Run({"symbol", name, "--feed", "F"}).Output;
        const std::size_t begin = table.find("SESSIONS_TIME_ZONE_INFORMATION");
        std::string line = table.substr(begin, table.find('\n', begin) - begin);
        line.erase(std::unique(line.begin(), line.end(), [](char a, char b) { return a == ' ' && b == ' '; }),
                   line.end());
        return line;
    };
    EXPECT_EQ(zone("A"), "SESSIONS_TIME_ZONE_INFORMATION 300,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000 machine");
    EXPECT_EQ(zone("B"), "SESSIONS_TIME_ZONE_INFORMATION 0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000 own");
    EXPECT_EQ(zone("C"),
              "SESSIONS_TIME_ZONE_INFORMATION -540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000 exchange");
    CHeldDatabase(Database()).Run(L"UPDATE SESSIONS SET TIME_ZONE=1 WHERE SESSION_NAME='T'");
    CHeldDatabase(Database())
        .Run(L"UPDATE PORTFOLIO SET SESSION_TYPE=2,TEMPLATE_SESSION=(SELECT SESSION FROM SESSIONS WHERE "
             L"SESSION_NAME='T') WHERE SYMBOL_NAME='B'");
    EXPECT_EQ(zone("B"), "SESSIONS_TIME_ZONE_INFORMATION 0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000 template");
}

TEST_F(SymbolCommand, AnUnknownTypeIsTheExchanges) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\n").Status, 0);
    const auto types = [&](const std::wstring& setting, const std::wstring& session) {
        CHeldDatabase(Database())
            .Run(L"UPDATE PORTFOLIO SET SETTING_TYPE=" + setting + L",SESSION_TYPE=" + session);
        return Run({"symbol", "A", "--feed", "F"}).Output;
    };
    for (const std::string type : {"-1", "3", "4"}) {
        const std::wstring number(type.begin(), type.end());
        EXPECT_THAT(types(number, L"1"), testing::ContainsRegex("SETTING_TYPE +" + type +
                                                                ", that of the exchange +own\nPRICE_SCALE +100 "
                                                                "+exchange\n"));
        EXPECT_THAT(types(L"1", number), testing::ContainsRegex("SESSION_TYPE +" + type + ", that of the " +
                                                                (type == "3" ? "dictionary" : "exchange") +
                                                                " +own\nSESSION_NAME +SE +exchange\n"));
    }
    EXPECT_THAT(Symbol("A").Output, HasSubstr("\"SESSION_TYPE\": 4, \"SESSION_NAME\": \"SE\", "));
}

TEST_F(SymbolCommand, ANameTooLongOrEmptyIsStatus2) {
    const auto refusal = [&](const std::string& name, const std::string& feed) {
        const tagEnd end = Symbol(name, feed);
        EXPECT_EQ(end.Status, 2);
        EXPECT_EQ(end.Output, "");
        return end.Errors;
    };
    const std::string longest = "\xd0\xb6" + std::string(30, 'x');
    EXPECT_EQ(Symbol(longest).Status, 1);
    EXPECT_EQ(Symbol("A", longest).Errors, "error: There is no feed \"" + longest +
                                               "\": see \"sqstorage list "
                                               "feeds\".\n");
    // Before the store is opened.
    platform::WriteFileAtomically(Database(), "none");
    EXPECT_EQ(Symbol("A").Status, 3);
    EXPECT_EQ(refusal("", "F"), "error: NAME is empty: give a name.\n");
    EXPECT_EQ(refusal(longest + "x", "F"), "error: NAME has 32 characters, and the store keeps 31: shorten it.\n");
    EXPECT_EQ(refusal("A", ""), "error: --feed is empty: give a name.\n");
    EXPECT_EQ(refusal("A", longest + "x"),
              "error: --feed has 32 characters, and the store keeps 31: shorten it.\n");
}

TEST_F(SymbolCommand, OfTwoFeedsOfOneNameBothAreSearched) {
    ASSERT_EQ(ImportSymbols("", "ESH27,0,F,E\nNQZ26,0,G,E\nESZ26,0,F,E\nESZ26,0,G,E\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE DATA_FEEDS SET DATA_FEED_NAME='F'");
    for (const char* name : {"ESH27", "NQZ26"}) {
        const tagEnd end = Symbol(name);
        EXPECT_EQ(end.Status, 0);
        EXPECT_EQ(end.Errors, "");
        EXPECT_THAT(end.Output, HasSubstr("\"SYMBOL_NAME\": \"" + std::string(name) + "\""));
    }
    const tagEnd both = Symbol("ESZ26");
    EXPECT_EQ(both.Errors, "note: There are 2 symbols of that name; all are shown.\n");
    EXPECT_EQ(std::ranges::count(both.Output, '{'), 2);
    EXPECT_EQ(Symbol("nqz26").Errors, "error: There is no symbol \"nqz26\" in the feed \"F\": there is \"NQZ26\", "
                                      "and letter case counts.\n");
    EXPECT_EQ(Symbol("NQH27").Errors, "error: There is no symbol \"NQH27\" in the feed \"F\": it has \"NQZ26\".\n");
}

TEST_F(SymbolCommand, OfAGoneExchangeSaysSo) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\nA,0,F,X\nB,0,F,E\nB,0,G,E\n").Status, 0);
    CHeldDatabase(Database())
        .Run(L"UPDATE PORTFOLIO SET EXCHANGE=9991 WHERE EXCHANGE=(SELECT EXCHANGE FROM EXCHANGES WHERE "
             L"EXCHANGE_NAME='E')");
    const std::string key = std::to_string(Number(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='B' AND "
                                                  L"DATA_FEED=(SELECT DATA_FEED FROM DATA_FEEDS WHERE "
                                                  L"DATA_FEED_NAME='F')"));
    const tagEnd alone = Symbol("B");
    EXPECT_EQ(alone.Status, 0);
    EXPECT_EQ(alone.Errors,
              "warning: The exchange of the symbol, with the key 9991, is gone: no list shows the "
              "symbol, so import it with an exchange that is there, and have a host delete the one with the key " +
                  key + ".\n");
    EXPECT_THAT(alone.Output, HasSubstr("{\"SYMBOL\": " + key + ", \"SYMBOL_NAME\": \"B\", "));
    EXPECT_THAT(alone.Output, HasSubstr("\"EXCHANGE_NAME\": null, "));
    EXPECT_EQ(std::ranges::count(alone.Output, '{'), 1);
    const tagEnd beside = Symbol("A");
    EXPECT_THAT(beside.Errors,
                testing::StartsWith("note: There are 2 symbols of that name; all are shown.\nwarning: "
                                    "The exchange of the symbol, with the key 9991, is gone: "));
    EXPECT_EQ(std::ranges::count(beside.Output, '{'), 2);
    EXPECT_EQ(Symbol("B ").Status, 1);
}

TEST_F(SymbolCommand, OfAGoneFeedSaysSo) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\nA,0,G,E\nB,0,G,E\n").Status, 0);
    const std::string key = Key(L"B");
    CHeldDatabase(Database())
        .Run(L"UPDATE PORTFOLIO SET DATA_FEED=9991 WHERE DATA_FEED=(SELECT DATA_FEED FROM DATA_FEEDS WHERE "
             L"DATA_FEED_NAME='G')");
    const tagEnd end = Symbol("B");
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Output, "");
    EXPECT_EQ(end.Errors,
              "error: There is no symbol \"B\" in the feed \"F\": one with the key " + key +
                  " has a feed that is gone, with the key 9991, so import it with a feed that is there, "
                  "and have a host delete the old one.\n");
    EXPECT_EQ(Symbol("A").Status, 0);
    EXPECT_EQ(Symbol("A").Errors, "");
}

TEST_F(SymbolCommand, WhatTheExchangeLacksIsTheExchangesToMend) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE EXCHANGES SET SETTING=9991,SESSION=9992");
    const tagEnd end = Symbol("A");
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors,
              "warning: The price setting of the exchange, with the key 9991, is gone: import the exchange "
              "with prices and --update.\n"
              "warning: The session of the exchange, with the key 9992, is gone: import the exchange with "
              "another one and --update.\n");
}

TEST_F(SymbolCommand, ANameThatIsNotThereIsStatus1WithAdvice) {
    ASSERT_EQ(ImportSymbols("", "ESH27,0,F,E\nESM27,0,F,E\nESZ26,0,G,E\nNQZ26,0,F,E\nNqZ26,1,F,E\n").Status, 0);
    const auto advice = [&](const std::string& name) {
        const tagEnd end = Symbol(name);
        EXPECT_EQ(end.Status, 1);
        EXPECT_EQ(end.Output, "");
        return end.Errors;
    };
    EXPECT_EQ(advice("ESZ26"), "error: There is no symbol \"ESZ26\" in the feed \"F\": the feed \"G\" has one.\n");
    EXPECT_EQ(advice("nqz26"), "error: There is no symbol \"nqz26\" in the feed \"F\": there is \"NQZ26\", "
                               "\"NqZ26\", and letter case counts.\n");
    EXPECT_EQ(advice("ESU27"), "error: There is no symbol \"ESU27\" in the feed \"F\": it has \"ESH27\", "
                               "\"ESM27\".\n");
    EXPECT_EQ(advice("Q"),
              "error: There is no symbol \"Q\" in the feed \"F\": see \"sqstorage list symbols --feed 'F'\".\n");
    const tagEnd feed = Symbol("ESZ26", "Q");
    EXPECT_EQ(feed.Status, 1);
    EXPECT_EQ(feed.Errors, "error: There is no feed \"Q\": see \"sqstorage list feeds\".\n");
    EXPECT_EQ(Run({"symbol", "ESZ26"}).Status, 2);
}

TEST_F(SymbolCommand, ANameInTwoFeedsWantsTheFeed) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\nA,0,G,X\n").Status, 0);
    const tagEnd end = Run({"symbol", "A"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Output, "");
    EXPECT_THAT(end.Errors, testing::AllOf(testing::StartsWith("error: "), HasSubstr("--feed")));
    EXPECT_THAT(Symbol("A").Output, HasSubstr("\"DATA_FEED_NAME\": \"F\", \"EXCHANGE_NAME\": \"E\""));
    EXPECT_THAT(Symbol("A", "G").Output, HasSubstr("\"DATA_FEED_NAME\": \"G\", \"EXCHANGE_NAME\": \"X\""));
    EXPECT_EQ(Symbol("A", "G").Errors, "");
}

TEST_F(SymbolCommand, ANameWithWildcardsOrQuotesIsToTheLetter) {
    ASSERT_EQ(ImportSymbols("", "A_%,0,F,E\nAxy,0,F,E\nit's,0,F,E\n").Status, 0);
    EXPECT_THAT(Symbol("A_%").Output, HasSubstr("\"SYMBOL_NAME\": \"A_%\""));
    EXPECT_THAT(Symbol("A_%").Output, testing::Not(HasSubstr("Axy")));
    EXPECT_THAT(Symbol("it's").Output, HasSubstr("\"SYMBOL_NAME\": \"it's\""));
}

TEST_F(SymbolCommand, SymbolsOfOneNameAreAllShown) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\nA,1,F,E\nA,0,F,X\n").Status, 0);
    const tagEnd end = Symbol("A");
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors, "note: There are 3 symbols of that name; all are shown.\n");
    EXPECT_EQ(std::ranges::count(end.Output, '{'), 3);
}

TEST_F(SymbolCommand, WhatIsGoneIsToldAndTheRestIsShown) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE PORTFOLIO SET SETTING=9991,CUSTOM_SESSION=9992");
    const tagEnd end = Symbol("A");
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors,
              "warning: The own price setting of the symbol, with the key 9991, is gone: import the symbol "
              "with another one and --update.\n"
              "warning: The session of the symbol, with the key 9992, is gone: import the symbol with "
              "another one and --update.\n");
    EXPECT_THAT(end.Output, HasSubstr("\"PRICE_SCALE\": null, "));
    EXPECT_THAT(end.Output, HasSubstr("\"TIME_ZONE\": null, \"SESSION_TIMES\": \"\", \"SESSIONS_STRING\": null, "));
}

} // namespace

} // namespace sqCliTest
