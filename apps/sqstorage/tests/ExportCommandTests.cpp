#include "Sandbox.h"

namespace sqCliTest {

namespace {

constexpr std::array ShippedFiles{"holidays.csv", "holiday_dates.csv",   "settings.csv",  "feeds.csv",
                                  "sessions.csv", "session_details.csv", "exchanges.csv", "symbols.csv"};
// With those that no data are shipped for.
constexpr std::array AllFiles{"holidays.csv",  "holiday_dates.csv", "settings.csv",
                              "feeds.csv",     "sessions.csv",      "session_details.csv",
                              "exchanges.csv", "symbols.csv",       "currencies.csv"};

class ExportCommand : public Sandbox {
protected:
    template <std::size_t Count>
    void ExpectSameFiles(const std::filesystem::path& left, const std::filesystem::path& right,
                         const std::array<const char*, Count>& files) {
        for (const char* file : files)
            EXPECT_EQ(Read(left / file), Read(right / file)) << file;
    }

    // What `source` exports, imported into an empty store and exported again.
    void ExpectRoundTrip() {
        const auto first = Folder() / "first";
        const auto second = Folder() / "second";
        ASSERT_EQ(Run({"export", first.string()}).Status, 0);
        const std::string registry = (Folder() / "registry2").string();
        ASSERT_EQ(RunBare({"--registry", registry, "create", "--database", (Folder() / "2.fdb").string()}).Status,
                  0);
        const tagEnd import = RunBare({"--registry", registry, "import", first.string()});
        ASSERT_EQ(import.Status, 0) << import.Errors;
        ASSERT_EQ(RunBare({"--registry", registry, "export", second.string()}).Status, 0);
        ExpectSameFiles(first, second, AllFiles);
    }
};

TEST_F(ExportCommand, WhatIsShippedComesOutByteForByte) {
    CreateFilled();
    const tagEnd end = Run({"--format", "csv", "export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output,
              "FILE,ROWS\n" + (Folder() / "out/holidays.csv").string() + ",13\n" +
                  (Folder() / "out/holiday_dates.csv").string() + ",359\n" +
                  (Folder() / "out/settings.csv").string() + ",39\n" + (Folder() / "out/feeds.csv").string() +
                  ",4\n" + (Folder() / "out/sessions.csv").string() + ",23\n" +
                  (Folder() / "out/session_details.csv").string() + ",125\n" +
                  (Folder() / "out/exchanges.csv").string() + ",17\n" + (Folder() / "out/symbols.csv").string() +
                  ",7\n" + (Folder() / "out/currencies.csv").string() + ",0\n");
    ExpectSameFiles(ShippedData, Folder() / "out", ShippedFiles);
    ExpectRoundTrip();
}

TEST_F(ExportCommand, AwkwardTextsAndEndDatesMakeTheRoundTrip) {
    Create();
    Write("d/holidays.csv", "HOLIDAY_NAME\n\"O'Neil, \"\"x\"\"\"\nÜber 漢\n 10\n\"two\nlines\"\nempty\n");
    Write("d/holiday_dates.csv", "HOLIDAY_DESCRIPTION,HOLIDAY_END_DATE,HOLIDAY_START_DATE,HOLIDAY_NAME\n"
                                 "\"it's, \"\"so\"\"\",,2027-01-01,Über 漢\n"
                                 "second of the day,,2027-01-01,Über 漢\n"
                                 ",2078-12-31,1900-01-01,\"O'Neil, \"\"x\"\"\"\n");
    Write("d/settings.csv", "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n"
                            "10,0.1,1,0.000001\n9,0.3,2147483647,999999872\n10,0.015625,1,0.5\n");
    const tagEnd import = Run({"import", (Folder() / "d").string()});
    ASSERT_EQ(import.Status, 0) << import.Errors;
    ExpectRoundTrip();
    EXPECT_EQ(Read(Folder() / "first/settings.csv"), "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n"
                                                     "9,0.3,2147483647,999999872\n"
                                                     "10,0.015625,1,0.5\n"
                                                     "10,0.1,1,0.000001\n");
    EXPECT_EQ(Read(Folder() / "first/holiday_dates.csv"),
              "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE,HOLIDAY_DESCRIPTION\n"
              "\"O'Neil, \"\"x\"\"\",1900-01-01,2078-12-31,\n"
              "Über 漢,2027-01-01,,\"it's, \"\"so\"\"\"\n"
              "Über 漢,2027-01-01,,second of the day\n");
}

TEST_F(ExportCommand, EveryKindOfRowMakesTheRoundTrip) {
    Create();
    Write("d/holidays.csv", "HOLIDAY_NAME\nit's\n");
    Write("d/feeds.csv", "DATA_FEED_NAME,DATA_FEED_SHORT_NAME,DATA_FEED_DLL_NAME,CLSID,ASCII,ACTIVE\n"
                         "it's,o'n,a.dll,{1},1,0\n\"Über, \"\"x\"\"\",x,a.dll,{1},0,1\n");
    Write("d/sessions.csv", "SESSION_NAME,SESSION_TYPE,TIME_ZONE\nZ,0,0\na,2,1\nb,3,2147483647\nit's,1,2\n");
    Write("d/session_details.csv", "SESSION_NAME,START_DAY,START_TIME,END_DAY,END_TIME,VALUE5,VALUE6,VALUE7\n"
                                   "it's,Sat,23:00:01,7,05:00,0,0,0\nit's,Sun,00:00,Sat,24:00,0,0,0\n"
                                   "a,Mon,00:00,Mon,00:00:30,1,2,9999999\n");
    Write("d/exchanges.csv",
          "EXCHANGE_NAME,DESCRIPTION,HOLIDAY_NAME,SESSION_NAME,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT,"
          "TIME_ZONE,MAP_ID,EXCHANGE_TIME_ZONE_INFORMATION\n"
          "it's,\"a, \"\"b\"\"\",it's,it's,1,0.1,2147483647,0.000001,-7,\"1,2\","
          "\"-600,15,4,0,1,03:00:59.0000,-60,10,6,5,02:00:00.0000\"\n"
          "none,,,Z,1,1,1,1,0,,\"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000\"\n");
    Write("d/currencies.csv", "ID,CURRENCY_CODE\n-2147483648,2147483647\n-7,0\n10,3\n");
    const tagEnd import = Run({"import", (Folder() / "d").string()});
    ASSERT_EQ(import.Status, 0) << import.Errors;
    ExpectRoundTrip();
    for (const char* file : {"feeds.csv", "sessions.csv", "exchanges.csv", "currencies.csv"})
        EXPECT_EQ(Read(Folder() / "first" / file), Read(Folder() / "d" / file)) << file;
    EXPECT_EQ(Read(Folder() / "first/session_details.csv"),
              "SESSION_NAME,START_DAY,START_TIME,END_DAY,END_TIME,VALUE5,VALUE6,VALUE7\n"
              "a,Mon,00:00,Mon,00:00:30,1,2,9999999\n"
              "it's,Sun,00:00,Sat,24:00,0,0,0\nit's,Sat,23:00:01,7,05:00,0,0,0\n");
    // An exchange's own setting stands with it, and nowhere else.
    EXPECT_EQ(Read(Folder() / "first/settings.csv"), "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n");
}

TEST_F(ExportCommand, SessionsThatShareANameOrHaveNoneGetOneEach) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE SESSIONS SET SESSION_NAME='' WHERE SESSION_NAME IN ('CME','CBOT')");
        database.Run(L"UPDATE SESSIONS SET SESSION_NAME='Grains' WHERE SESSION_NAME='LSE'");
        database.Run(L"UPDATE SESSIONS SET SESSION_NAME='cbot' WHERE SESSION_NAME='Coffee'");
        database.Run(L"UPDATE SESSIONS SET SESSION_NAME='' WHERE SESSION_NAME='Cocoa'");
    }
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors,
              "warning: The session with the key 59 has no name: it is written as \"CBOT 2\".\n"
              "warning: The session with the key 60 has no name: it is written as \"CME\".\n"
              "warning: The session with the key 71 has the name \"Grains\" of another one: it is written "
              "as \"Grains 2\".\n"
              "warning: The session with the key 62 has no name: it is written as \"Session\".\n");
    ExpectRoundTrip();
    EXPECT_THAT(Read(Folder() / "first/session_details.csv"),
                testing::HasSubstr("\nGrains 2,Mon,08:00,Mon,16:30\n"));
    EXPECT_THAT(Read(Folder() / "first/exchanges.csv"),
                testing::HasSubstr("\nLSE,\"London Stock Exchange, equities\",LSE,Grains 2,"));
    // The store knows them by the names that it gave out.
    const tagEnd again = Run({"--format", "csv", "import", (Folder() / "first").string()});
    EXPECT_THAT(again.Output, testing::HasSubstr("sessions.csv,23,0,0,23,0,0\n"));
    EXPECT_THAT(again.Output, testing::HasSubstr("session_details.csv,125,0,0,125,0,0\n"));
    EXPECT_THAT(again.Output, testing::HasSubstr("exchanges.csv,17,0,0,17,0,0\n"));
}

TEST_F(ExportCommand, WhatExchangesAndSessionsLackIsWarnedOf) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE EXCHANGES SET HOLIDAY=99999 WHERE EXCHANGE_NAME='ASX'");
        database.Run(L"UPDATE EXCHANGES SET SESSION=99999 WHERE EXCHANGE_NAME='CME'");
        database.Run(L"UPDATE EXCHANGES SET EXCHANGE_NAME='LSE' WHERE EXCHANGE_NAME='LME'");
        database.Run(L"INSERT INTO SESSION_DETAILS VALUES(99998,1,0,1,60,0,0,0)");
        database.Run(L"INSERT INTO SESSION_DETAILS VALUES(57,1,60,1,60,0,0,0)");
        database.Run(L"UPDATE DATA_FEEDS SET DATA_FEED_NAME='Simulation' WHERE DATA_FEED_NAME='End of day'");
    }
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(
        end.Errors,
        "warning: The feed with the key 55 is left out, because another feed is called \"Simulation\", too: rename "
        "one of them.\n"
        "warning: A detail of the session \"ASX\" is left out, because the end, Mon 00:01, is not after the start, "
        "Mon 00:01: exchange them, or give as END_DAY the day on which the trading ends, with 7 for the Sunday "
        "after.\n"
        "warning: 1 detail(s) of the session with the key 99998 are left out, because there is no such session.\n"
        "warning: The exchange \"ASX\" lacks something: its calendar, with the key 99999, is gone.\n"
        "warning: The exchange \"CME\" lacks something: its session, with the key 99999, is gone.\n"
        "warning: The exchange with the key 87 is left out, because SESSION_NAME is empty: name the session of "
        "the exchange.\n"
        "warning: The exchange with the key 101 is left out, because another exchange is called \"LSE\", too: "
        "rename one of them.\n"
        "warning: 2 symbol(s) of the exchange \"CME\" with the key 87 are left out, because the exchange is left "
        "out, too: "
        "correct it as its own warning says.\n"
        "warning: 5 symbol(s) of the feed \"Simulation\" with the key 55 are left out, because the feed is left "
        "out, too: "
        "correct it as its own warning says.\n");
    EXPECT_THAT(Read(Folder() / "out/exchanges.csv"),
                testing::HasSubstr("\nASX,\"Australian Securities Exchange, equities\",,ASX,"));
}

TEST_F(ExportCommand, AnExchangeWhosePriceSettingIsGoneIsLeftOutWithAWarning) {
    CreateFilled();
    CHeldDatabase(Database()).Run(L"UPDATE EXCHANGES SET SETTING=99999 WHERE EXCHANGE_NAME IN ('ASX')");
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_THAT(
        end.Errors,
        testing::ContainsRegex(
            "warning: The exchange \"ASX\" lacks something: its price setting, with the key 99999, is gone.\n"
            "warning: The exchange with the key [0-9]+ is left out, because PRICE_SCALE is \"\": give a "
            "whole number from 1 to 2147483647.\n"));
    EXPECT_THAT(Read(Folder() / "out/exchanges.csv"), testing::Not(testing::HasSubstr("\nASX,")));
    EXPECT_THAT(Read(Folder() / "out/exchanges.csv"), testing::HasSubstr("\nCME,"));
}

TEST_F(ExportCommand, WhatRefersToARowThatIsLeftOutIsLeftOut) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"UPDATE SESSIONS SET SESSION_TYPE=77 WHERE SESSION_NAME IN ('ASX','Grains')");
        database.Run(L"UPDATE HOLIDAYS SET HOLIDAY_NAME='' WHERE HOLIDAY_NAME='JPX'");
    }
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    for (const char* warning :
         {" is left out, because the calendar is left out, too.\n",
          " is left out, because SESSION_TYPE is \"77\": give a whole number from 0 to 3.\n",
          "warning: The details of the session \"ASX\" are left out, because the session is left out, too.\n",
          " is left out, because its session, \"ASX\", is left out.\n",
          "warning: The symbol \"ZCZ26\" with the key "})
        EXPECT_THAT(end.Errors, testing::HasSubstr(warning));
    EXPECT_THAT(end.Errors, testing::ContainsRegex("The exchange with the key [0-9]+ is left out, because its "
                                                   "calendar, with the key [0-9]+, is left out\\.\n"));
    for (const char* file : {"sessions.csv", "session_details.csv", "exchanges.csv"})
        EXPECT_THAT(Read(Folder() / "out" / file), testing::Not(testing::HasSubstr("\nASX,"))) << file;
    EXPECT_THAT(Read(Folder() / "out/exchanges.csv"), testing::Not(testing::HasSubstr("\nTSE,")));
    ExpectRoundTrip();
}

TEST_F(ExportCommand, ADeletedTextFeedIsWarnedOf) {
    CreateFilled();
    CHeldDatabase(Database()).Run(L"UPDATE DATA_FEEDS SET DELETED=1 WHERE ASCII=1");
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_THAT(
        end.Errors,
        testing::ContainsRegex("warning: The feed that reads text files, with the key [0-9]+, is deleted, so ASCII "
                               "is 0 in all rows: make it 1 in that of the feed that is to read them.\n"));
}

TEST_F(ExportCommand, AnEmptyStoreGivesHeaders) {
    Create();
    EXPECT_EQ(Run({"export", (Folder() / "out").string()}).Status, 0);
    EXPECT_EQ(Read(Folder() / "out/holidays.csv"), "HOLIDAY_NAME\n");
    EXPECT_EQ(Read(Folder() / "out/holiday_dates.csv"), "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_DESCRIPTION\n");
    ExpectRoundTrip();
}

TEST_F(ExportCommand, WhatCouldNotBeImportedAgainIsLeftOutWithAWarning) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"INSERT INTO HOLIDAY_DETAILS VALUES(99999,'x','1.1.2027',NULL)");
        database.Run(L"INSERT INTO HOLIDAYS VALUES(99998,'')");
        database.Run(L"INSERT INTO SETTINGS VALUES(99997,1,0.0078125,1,1)");
        database.Run(L"INSERT INTO SETTINGS VALUES(99996,NULL,1,1,1)");
    }
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    ExpectSameFiles(ShippedData, Folder() / "out", ShippedFiles);
    EXPECT_EQ(
        end.Errors,
        "warning: The calendar with the key 99998 is left out, because HOLIDAY_NAME is empty: give a name.\n"
        "warning: A date of the calendar with the key 99999 is left out, because there is no such calendar.\n"
        "warning: The setting with the key 99996 is left out, because its PRICE_SCALE is \"\": give a whole "
        "number from 1 to 2147483647.\n"
        "warning: The setting with the key 99997 is left out, because its POINT_VALUE is \"0.0078125\", and the "
        "store would keep 0.007812: give at most six decimals and seven digits in all.\n");
}

TEST_F(ExportCommand, ARowThatTheStoreHasTwiceIsWrittenOnce) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(
            L"INSERT INTO SETTINGS SELECT SETTING+1000,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT FROM "
            L"SETTINGS");
        database.Run(L"INSERT INTO HOLIDAYS SELECT HOLIDAY+1000,HOLIDAY_NAME FROM HOLIDAYS");
        database.Run(L"INSERT INTO HOLIDAY_DETAILS SELECT * FROM HOLIDAY_DETAILS");
    }
    EXPECT_EQ(Run({"export", (Folder() / "out").string()}).Status, 0);
    ExpectSameFiles(ShippedData, Folder() / "out", ShippedFiles);
}

TEST_F(ExportCommand, AFolderThatCannotBeMadeIsStatus2) {
    Create();
    const auto file = Write("file", "x");
    const tagEnd end = Run({"export", (file / "out").string()});
    EXPECT_EQ(end.Status, 2);
    EXPECT_THAT(end.Errors, testing::StartsWith("error: The program cannot create directory \"" + file.string()));
}

} // namespace

} // namespace sqCliTest
