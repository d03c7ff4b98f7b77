#include "SymbolFixture.h"

#include <fmt/format.h>

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::Not;

class SymbolExport : public SymbolSandbox {
protected:
    // What an import of the export into an empty store gives.
    std::string ExportedAgain(const std::string& file) {
        const std::string registry = (Folder() / "registry2").string();
        EXPECT_EQ(RunBare({"--registry", registry, "create", "--database", (Folder() / "2.fdb").string()}).Status,
                  0);
        const tagEnd import = RunBare({"--registry", registry, "import", (Folder() / "exported").string()});
        EXPECT_EQ(import.Status, 0) << import.Errors;
        EXPECT_EQ(RunBare({"--registry", registry, "export", (Folder() / "again").string()}).Status, 0);
        return Read(Folder() / "again" / file);
    }
};

TEST_F(SymbolExport, EveryKindOfSymbolMakesTheRoundTripByteForByte) {
    const std::string rows =
        "b,ROOT,\"it's, \"\"so\"\"\",123456789012,32767,F,E,1,,,,,1,,,,12,2026,-0.25,-1,-7,2026-12-18,1,32767,"
        "1900-01-02,2078-12-31\n"
        "it's,,,,0,F,E,0,7,0.1,2147483647,0.000001,1,,,,0,0,0,0,0,,0,0,,\n"
        "own,,,,0,F,E,0,9,0.3,1,1,0,my own,1,Sun 17:00-Mon 16:00; Sat 23:00:01-7 05:00 (1 2 3),0,0,0,0,0,,0,0,,\n"
        "own,,,,0,G,E,2,,,,,0,,0,Mon 00:00-24:00,0,0,0,0,0,,0,0,,\n"
        "own,,,,1,F,E,1,,,,,0,my own,2,Mon 00:00-24:00,0,0,0,0,0,,0,0,,\n"
        "über,,,,0,F,E,1,,,,,2,T,,,0,0,0,0,0,,0,0,,\n"
        "a,,,,0,F,X,1,,,,,3,,,,0,0,0,0,0,,0,0,,\n";
    ASSERT_EQ(Import("symbols.csv", AllColumns + rows).Status, 0);
    EXPECT_EQ(Exported(), AllColumns + rows);
    EXPECT_EQ(ExportedAgain("symbols.csv"), AllColumns + rows);
    // What a symbol owns stands with it, and nowhere else.
    for (const char* file : {"settings.csv", "sessions.csv", "session_details.csv", "exchanges.csv"})
        EXPECT_EQ(Read(Folder() / "again" / file), Read(Folder() / "exported" / file)) << file;
    EXPECT_EQ(Read(Folder() / "exported/settings.csv"), "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n");
    EXPECT_EQ(Read(Folder() / "exported/sessions.csv"),
              "SESSION_NAME,SESSION_TYPE,TIME_ZONE\nSE,1,2\nSX,1,1\nT,2,2\n");
    EXPECT_THAT(Read(Folder() / "exported/session_details.csv"), Not(HasSubstr("my own")));
}

// Of each setting type, session type and kind of category one, with texts that are easily spoilt on the way.
TEST_F(SymbolExport, EveryCombinationOfTypesMakesTheRoundTripByteForByte) {
    const std::vector<std::string> settings{"0,100,12.5,2147483647,0.25", "1,,,,", "2,,,,"};
    const std::vector<std::string> sessions{"0,\"its \"\"own\"\", 夜\",1,Mon 09:30-16:00; Tue 17:00-Wed 16:00",
                                            "1,,,", "2,T,,", "3,,,"};
    const std::vector<std::string> descriptions{"\"Золото, «Москва» it's \"\"so\"\"\"",
                                                "東京 金先物 😀",
                                                "שמן ''זית''",
                                                "\"two\nlines\"",
                                                std::string(63, '\''),
                                                "  blanks  "};
    const std::vector<std::string> ends{"12,2026,4500.25,1,-2147483648,2026-12-18,1,7,2026-11-30,2027-01-04",
                                        "1,9999,-0.1,-1,2147483647,2078-12-31,-1,-32768,1900-01-02,2078-12-31",
                                        "0,0,0.000001,0,0,,0,0,,", "6,1999,16777216,32767,1,1999-12-31,0,32767,,"};
    std::string rows;
    std::size_t number = 0;
    for (const std::string& setting : settings)
        for (const std::string& session : sessions)
            for (const char* category : {"0", "1", "2", "253", "255", "32767"}) {
                rows +=
                    fmt::format("N{:03},ROOT{},{},{},{},F,E,{},{},{}\n", number, number % 7,
                                descriptions[number % descriptions.size()], number % 3 == 0 ? "123456789012" : "",
                                category, setting, session, ends[number % ends.size()]);
                ++number;
            }
    ASSERT_EQ(Import("currencies.csv", "ID,CURRENCY_CODE\n-7,0\n10,3\n").Status, 0);
    const tagEnd import = Import("symbols.csv", AllColumns + rows);
    ASSERT_EQ(import.Status, 0) << import.Errors;
    EXPECT_EQ(Exported(), AllColumns + rows);
    EXPECT_EQ(ExportedAgain("symbols.csv"), AllColumns + rows);
    for (const char* file : {"settings.csv", "feeds.csv", "sessions.csv", "session_details.csv", "exchanges.csv",
                             "currencies.csv", "holidays.csv", "holiday_dates.csv"})
        EXPECT_EQ(Read(Folder() / "again" / file), Read(Folder() / "exported" / file)) << file;
    EXPECT_EQ(Read(Folder() / "again/currencies.csv"), "ID,CURRENCY_CODE\n-7,0\n10,3\n");
}

TEST_F(SymbolExport, TheStoreKnowsItsOwnExport) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "A,0,F,E,0,10,0.5,7,0.1,0,Tue 08:00-09:30\nit's,1,G,X,1,,,,,1,\n").Status,
              0);
    static_cast<void>(Exported());
    const tagEnd end = Run({"--format", "csv", "import", (Folder() / "exported").string(), "--update"});
    EXPECT_EQ(end.Status, 0) << end.Errors;
    EXPECT_THAT(end.Output, HasSubstr("exported/symbols.csv,2,0,0,2,0,0\n"));
    EXPECT_EQ(OwnableRows(), "3 4 4");
}

TEST_F(SymbolExport, ARootInSmallLettersIsWrittenAsTheStoreWouldAddIt) {
    ASSERT_EQ(ImportSymbols("SYMBOL_ROOT", "A,0,F,E,r\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE PORTFOLIO SET SYMBOL_ROOT='r'");
    const std::string first = Exported();
    EXPECT_THAT(first, HasSubstr("\nA,R,"));
    EXPECT_EQ(ExportedAgain("symbols.csv"), first);
}

TEST_F(SymbolExport, AnExchangesSessionStaysItsOwnWhenASymbolCallsItSo) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\n").Status, 0);
    CHeldDatabase(Database())
        .Run(L"UPDATE PORTFOLIO SET SESSION_TYPE=0,CUSTOM_SESSION=(SELECT SESSION FROM EXCHANGES WHERE "
             L"EXCHANGE_NAME='E')");
    EXPECT_THAT(Exported(), HasSubstr("\nA,,,,0,F,E,1,,,,,0,SE,2,Mon 09:00-17:00,"));
    EXPECT_THAT(Read(Folder() / "exported/sessions.csv"), HasSubstr("\nSE,1,2\n"));
}

TEST_F(SymbolExport, WhatCouldNotBeImportedAgainIsLeftOutWithAWarning) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "category,0,F,E,1,,,,,1,\n"
                                        "other,0,F,E,1,,,,,1,\n"
                                        "session,0,F,E,1,,,,,0,Tue 08:00-09:30\n"
                                        "setting,0,F,E,0,10,0.5,7,0.1,1,\n"
                                        "template,0,F,E,1,,,,,1,\n"
                                        "times,0,F,E,1,,,,,0,Tue 08:00-09:30\n"
                                        "twice,0,F,E,1,,,,,1,\n"
                                        "z,0,G,E,1,,,,,1,\n")
                  .Status,
              0);
    const auto key = [&](const std::wstring& name) {
        return std::to_string(Number(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='" + name + L"'"));
    };
    const std::string other = key(L"other");
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE PORTFOLIO SET CATEGORY=254 WHERE SYMBOL_NAME='category'");
        database.Run(L"DELETE FROM SESSION_DETAILS WHERE SESSION=(SELECT CUSTOM_SESSION FROM PORTFOLIO WHERE "
                     L"SYMBOL_NAME='session')");
        database.Run(L"DELETE FROM SESSIONS WHERE SESSION=(SELECT CUSTOM_SESSION FROM PORTFOLIO WHERE "
                     L"SYMBOL_NAME='session')");
        database.Run(L"UPDATE PORTFOLIO SET CUSTOM_SESSION=9991 WHERE SYMBOL_NAME='session'");
        database.Run(L"UPDATE PORTFOLIO SET SETTING=9992 WHERE SYMBOL_NAME='setting'");
        database.Run(L"UPDATE PORTFOLIO SET SESSION_TYPE=2,TEMPLATE_SESSION=9993 WHERE SYMBOL_NAME='template'");
        database.Run(L"DELETE FROM SESSION_DETAILS WHERE SESSION=(SELECT CUSTOM_SESSION FROM PORTFOLIO WHERE "
                     L"SYMBOL_NAME='times')");
        database.Run(L"UPDATE PORTFOLIO SET SYMBOL_NAME='twice',MARGIN=1 WHERE SYMBOL_NAME='other'");
        database.Run(L"UPDATE DATA_FEEDS SET DELETED=1 WHERE DATA_FEED_NAME='G'");
    }
    const LONG feed = Number(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='G'");
    const LONG twice = Number(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='twice' AND MARGIN=0");
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(
        end.Errors,
        "warning: The symbol \"category\" with the key " + key(L"category") +
            " is left out, because CATEGORY is 254, by which hosts say that there is none: give another "
            "number.\n"
            "warning: The symbol \"session\" with the key " +
            key(L"session") +
            " is left out, because its own session, with the key 9991, is gone: import the symbol with another one "
            "and --update.\n"
            "warning: The symbol \"setting\" with the key " +
            key(L"setting") +
            " is left out, because its own price setting, with the key 9992, is gone: import the symbol with "
            "another "
            "one and --update.\n"
            "warning: The symbol \"template\" with the key " +
            key(L"template") +
            " is left out, because its template session, with the key 9993, is gone: import the symbol with "
            "another "
            "one and --update.\n"
            "warning: The symbol \"times\" with the key " +
            key(L"times") +
            " is left out, because SESSION_TIMES is empty, and SESSION_TYPE 0 wants the symbol's own times: give "
            "them like \"Mon 09:30-16:00; Tue 17:00-Wed 16:00\".\n"
            "warning: The symbol \"twice\" with the key " +
            std::to_string(twice) +
            " is left out, because another symbol has its name, category, feed and exchange: rename one of "
            "them.\n"
            "warning: 1 symbol(s) of the feed with the key " +
            std::to_string(feed) +
            " are left out, because the feed is deleted: import one of its CLSID to have it back.\n");
    EXPECT_EQ(Read(Folder() / "out/symbols.csv"),
              AllColumns + std::string("twice,,,,0,F,E,1,,,,,1,,,,0,0,0,0,1,,0,0,,\n"));
}

TEST_F(SymbolExport, WhatTheWarningsAdviseBringsTheSymbolsBack) {
    ASSERT_EQ(ImportSymbols(OwnColumns, "session,0,F,E,1,,,,,0,Tue 08:00-09:30\n"
                                        "setting,0,F,E,0,10,0.5,7,0.1,1,\n"
                                        "template,0,F,E,1,,,,,1,\n"
                                        "z,0,G,E,1,,,,,1,\n")
                  .Status,
              0);
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE PORTFOLIO SET CUSTOM_SESSION=9991 WHERE SYMBOL_NAME='session'");
        database.Run(L"UPDATE PORTFOLIO SET SETTING=9992 WHERE SYMBOL_NAME='setting'");
        database.Run(L"UPDATE PORTFOLIO SET SESSION_TYPE=2,TEMPLATE_SESSION=9993 WHERE SYMBOL_NAME='template'");
        database.Run(L"UPDATE DATA_FEEDS SET DELETED=1 WHERE DATA_FEED_NAME='G'");
    }
    const std::string head = "SESSION_NAME," + std::string(OwnColumns);
    const tagEnd symbols = ImportSymbols(head,
                                         "session,0,F,E,,1,,,,,0,Wed 08:00-09:30\n"
                                         "setting,0,F,E,,0,20,0.5,7,0.1,1,\n"
                                         "template,0,F,E,T,1,,,,,2,\n",
                                         {"--update"});
    EXPECT_EQ(symbols.Status, 0) << symbols.Errors;
    const tagEnd feed =
        Import("feeds.csv", "DATA_FEED_NAME,DATA_FEED_SHORT_NAME,DATA_FEED_DLL_NAME,CLSID\nnew,g,g.dll,"
                            "{g}\n");
    EXPECT_EQ(feed.Status, 0) << feed.Errors;
    // The session of before names no symbol any more, and is a session like others.
    CHeldDatabase(Database())
        .Run(L"UPDATE SESSIONS SET SESSION_NAME='lost' WHERE SESSION_NAME='' AND SESSION NOT IN (SELECT "
             L"CUSTOM_SESSION FROM PORTFOLIO)");
    EXPECT_THAT(Exported(), HasSubstr("\nsession,,,,0,F,E,1,,,,,0,,2,Wed 08:00-09:30,0,"));
    EXPECT_THAT(Exported(), HasSubstr("\nsetting,,,,0,F,E,0,20,0.5,7,0.1,1,"));
    EXPECT_THAT(Exported(), HasSubstr("\ntemplate,,,,0,F,E,1,,,,,2,T,"));
    EXPECT_THAT(Exported(), HasSubstr("\nz,,,,0,new,E,1,"));
}

// A store in which some rows that symbols refer to are such that no import takes them.
class SpoiltReferences : public SymbolExport {
protected:
    void SetUp() override {
        SymbolExport::SetUp();
        Write("m/holidays.csv", "HOLIDAY_NAME\nH\n");
        Write("m/feeds.csv", "DATA_FEED_NAME,DATA_FEED_SHORT_NAME,DATA_FEED_DLL_NAME,CLSID\nF,f,f.dll,{f}\n"
                             "K,k,k.dll,{k}\nL,l,l.dll,{l}\nQ,q,q.dll,{q}\n");
        Write("m/sessions.csv",
              "SESSION_NAME,SESSION_TYPE,TIME_ZONE\nA1,1,2\nA2,1,2\nA3,1,2\nA4,1,2\nA5,1,2\nU,2,2\n");
        Write("m/session_details.csv",
              "SESSION_NAME,START_DAY,START_TIME,END_DAY,END_TIME\nA1,Mon,09:00,Mon,17:00\n");
        const std::string zone = ",\"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000\"\n";
        Write("m/exchanges.csv", "EXCHANGE_NAME,HOLIDAY_NAME,SESSION_NAME,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,"
                                 "MIN_MOVEMENT,EXCHANGE_TIME_ZONE_INFORMATION\n"
                                 "Calendar,H,A1,1,1,1,1" +
                                     zone + "Map,,A2,1,1,1,1" + zone + "Prices,,A3,2,1,1,1" + zone +
                                     "Session,,A4,1,1,1,1" + zone + "Zone,,A5,1,1,1,1" + zone);
        Write("m/symbols.csv", Head("SESSION_TYPE,SESSION_NAME") +
                                   "a,0,F,Calendar,1,\nb,0,F,Map,1,\nb2,0,F,Map,1,\nc,0,F,Prices,1,\n"
                                   "d,0,F,Session,1,\ne,0,F,Zone,1,\nf,0,Q,E,1,\ng,0,K,E,1,\nh,0,L,E,1,\n"
                                   "i,0,F,E,2,U\nj,0,F,E,2,T\nk,0,F,X,1,\nl,0,L,X,1,\nm,0,L,Zone,1,\n");
        const tagEnd end = Run({"import", (Folder() / "m").string()});
        ASSERT_EQ(end.Status, 0) << end.Errors;
        Spoil();
    }

    void Spoil() {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE HOLIDAYS SET HOLIDAY_NAME=''");
        database.Run(L"UPDATE EXCHANGES SET MAP_ID='it''s' WHERE EXCHANGE_NAME='Map'");
        database.Run(L"UPDATE EXCHANGES SET SETTING=9991 WHERE EXCHANGE_NAME='Prices'");
        database.Run(L"UPDATE SESSIONS SET TIME_ZONE=-1 WHERE SESSION_NAME IN ('A4','U')");
        database.Run(L"UPDATE EXCHANGES SET DAYLIGHT_MONTH=77, STANDARD_MONTH=77, USE_DAYLIGHT=1 WHERE "
                     L"EXCHANGE_NAME='Zone'");
        database.Run(L"UPDATE DATA_FEEDS SET CLSID='it''s' WHERE DATA_FEED_NAME='Q'");
        database.Run(L"UPDATE DATA_FEEDS SET DATA_FEED_NAME='K' WHERE DATA_FEED_NAME='L'");
    }
    // The key of a row, as a text.
    std::string KeyOf(const std::wstring& select) { return std::to_string(Number(select)); }
    std::string Exchange(const std::wstring& name) {
        return KeyOf(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='" + name + L"'");
    }
};

TEST_F(SpoiltReferences, SymbolsOfARowThatIsLeftOutAreLeftOutWithAWarning) {
    const tagEnd end = Run({"export", (Folder() / "exported").string()});
    EXPECT_EQ(end.Status, 0);
    const auto exchange = [&](const std::string& count, const std::string& name, const std::string& key) {
        return "warning: " + count + " symbol(s) of the exchange \"" + name + "\" with the key " + key +
               " are left out, because the exchange is left out, too: correct it as its own warning says.\n";
    };
    const auto feed = [&](const std::string& count, const std::string& name, const std::string& key) {
        return "warning: " + count + " symbol(s) of the feed \"" + name + "\" with the key " + key +
               " are left out, because the feed is left out, too: correct it as its own warning says.\n";
    };
    const std::string expected =
        exchange("1", "Calendar", Exchange(L"Calendar")) + "warning: The symbol \"i\" with the key " +
        KeyOf(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='i'") +
        " is left out, because its template session, with the key " +
        KeyOf(L"SELECT SESSION FROM SESSIONS WHERE SESSION_NAME='U'") +
        ", is left out, too: correct that as its own warning says.\n" + exchange("2", "Map", Exchange(L"Map")) +
        exchange("1", "Prices", Exchange(L"Prices")) + exchange("1", "Session", Exchange(L"Session")) +
        exchange("2", "Zone", Exchange(L"Zone")) +
        feed("2", "K", KeyOf(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{l}'")) +
        feed("1", "Q", KeyOf(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='Q'"));
    EXPECT_THAT(end.Errors, testing::EndsWith(expected));
    EXPECT_EQ(Read(Folder() / "exported/symbols.csv"),
              AllColumns + std::string("g,,,,0,K,E,1,,,,,1,,,,0,0,0,0,0,,0,0,,\n"
                                       "j,,,,0,F,E,1,,,,,2,T,,,0,0,0,0,0,,0,0,,\n"
                                       "k,,,,0,F,X,1,,,,,1,,,,0,0,0,0,0,,0,0,,\n"));
}

TEST_F(SpoiltReferences, AnEmptyStoreTakesAllOfTheExport) {
    ASSERT_EQ(Run({"export", (Folder() / "exported").string()}).Status, 0);
    const std::string symbols = Read(Folder() / "exported/symbols.csv");
    EXPECT_EQ(ExportedAgain("symbols.csv"), symbols);
    for (const char* file : {"holidays.csv", "feeds.csv", "sessions.csv", "session_details.csv", "exchanges.csv"})
        EXPECT_EQ(Read(Folder() / "again" / file), Read(Folder() / "exported" / file)) << file;
}

TEST_F(SymbolExport, TheSymbolsOfAnExchangeWhoseNameAnotherHasAreLeftOutTogether) {
    ASSERT_EQ(ImportSymbols("", "A,0,F,E\nB,0,F,X\nC,0,F,X\n").Status, 0);
    CHeldDatabase(Database()).Run(L"UPDATE EXCHANGES SET EXCHANGE_NAME='E'");
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_THAT(end.Errors, HasSubstr("warning: 2 symbol(s) of the exchange \"E\" with the key " +
                                      std::to_string(Number(L"SELECT MAX(EXCHANGE) FROM EXCHANGES")) +
                                      " are left out, because another exchange has its name, too: rename one of "
                                      "them.\n"));
    EXPECT_EQ(Read(Folder() / "out/symbols.csv"),
              AllColumns + std::string("A,,,,0,F,E,1,,,,,1,,,,0,0,0,0,0,,0,0,,\n"));
}

TEST_F(SymbolExport, MoreSymbolsThanABatchAreSortedTogether) {
    std::string rows;
    for (int number = 0; number < 1100; ++number)
        rows += "N" + std::to_string(10000 + number) + ",,,,0,F,E,1,,,,,1,,,,0,0,0,0,0,,0,0,,\n";
    CHeldDatabase(Database())
        .Run(L"EXECUTE BLOCK AS DECLARE VARIABLE I INTEGER = 1100; DECLARE VARIABLE F INTEGER; DECLARE VARIABLE E "
             L"INTEGER; BEGIN SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='F' INTO :F; SELECT EXCHANGE "
             L"FROM "
             L"EXCHANGES WHERE EXCHANGE_NAME='E' INTO :E; WHILE (I > 0) DO BEGIN I = I - 1; INSERT INTO PORTFOLIO "
             L"VALUES(20000-:I,'N'||(10000+:I),'','','',0,:F,:E,1,0,1,0,0,0,0,0,0,0,NULL,0,0,'1.1.1900',NULL); END "
             L"END");
    EXPECT_EQ(Exported(), AllColumns + rows);
}

} // namespace

} // namespace sqCliTest
