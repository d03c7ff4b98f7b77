#include "StatementTexts.h"
#include "TestDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqSchemaTest {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto GmtZone = "0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000";
constexpr auto ChicagoZone = "360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";
// As a connection tells its machine's zone: minutes, and seventeen numbers like an exchange's.
constexpr auto SetLocalZone = "SELECT RDB$SET_CONTEXT('USER_SESSION','LOCAL_BIAS',?),"
                              "RDB$SET_CONTEXT('USER_SESSION','LOCAL_TIME_ZONE',?) FROM RDB$DATABASE";
constexpr auto BerlinZone = "-60,0,10,0,5,03:00:00.0000,-60,3,0,5,02:00:00.0000";

// One exchange (10) with setting 100 and session 200, a symbol's own setting 101, own session 201 and a template
// 202; symbol 1 and custom future 2 take everything from the exchange.
class Info : public testing::Test {
protected:
    void SetUp() override {
        Run("INSERT INTO DATA_FEEDS VALUES(5,'Feed','d','{C}',1,1,0,0,'s')");
        Run("INSERT INTO EXCHANGES VALUES(10,'CME',0,100,200,0,'m',1,360,0,0,1,11,'02:00:00.0000',-60,0,2,3,"
            "'02:00:00.0000','Chicago')");
        Run("INSERT INTO SETTINGS VALUES(100,100,50.500000,7,0.250000)");
        Run("INSERT INTO SETTINGS VALUES(101,1000,10.000000,8,0.125000)");
        Run("INSERT INTO SESSIONS VALUES(200,1,'exchange',2)");
        Run("INSERT INTO SESSIONS VALUES(201,0,'own',1)");
        Run("INSERT INTO SESSIONS VALUES(202,2,'template',0)");
        AddDetail("200", "1", "30600", "1", "54900");
        AddDetail("200", "2", "30600", "2", "54900");
        Run("INSERT INTO PORTFOLIO VALUES(1,'ESH15','ES','S&P','cusip',1,5,10,1,0,1,0,0,3,2015,1250.250000,2,9,"
            "'20.03.2015',0,4,'01.01.1900','21.03.2015')");
        Run("INSERT INTO CUSTOM_FUTURES VALUES(2,'ES-1','ES','C1','first',18,5,10,1,0,1,0,0,9)");
    }
    void Run(const std::string& sql) { m_Database.Run(sql); }
    void AddDetail(const std::string& session, const std::string& startDay, const std::string& start,
                   const std::string& endDay, const std::string& end, const std::string& rest = "5,6,7") {
        Run("INSERT INTO SESSION_DETAILS VALUES(" + session + "," + startDay + "," + start + "," + endDay + "," +
            end + "," + rest + ")");
    }
    tagRows Symbol() { return m_Database.Read("SELECT * FROM GET_SYMBOL_INFO(1)"); }
    tagRows CustomFuture() { return m_Database.Read("SELECT * FROM GET_CF_INFO(2)"); }
    // The value of a column that both procedures deliver, which has to be one value.
    std::string Both(const std::string& column) {
        const auto symbol = Symbol().Column(column).at(0);
        EXPECT_EQ(symbol, CustomFuture().Column(column).at(0)) << column;
        return symbol;
    }
    void SetBoth(const std::string& assignment) {
        Run("UPDATE PORTFOLIO SET " + assignment);
        Run("UPDATE CUSTOM_FUTURES SET " + assignment);
    }
    // The text of a session that has these details and no others.
    std::string SessionsTextOf(const std::vector<std::string>& details) {
        Run("DELETE FROM SESSION_DETAILS");
        for (const auto& detail : details)
            Run("INSERT INTO SESSION_DETAILS VALUES(200," + detail + ")");
        return Both("SESSIONS_STRING");
    }
    // Details that no text holds: why, and that symbol and custom future come without it and otherwise whole.
    void ExpectNoSessionsText(const std::vector<std::string>& details, const std::string& reason) {
        const auto written = SessionsTextOf({});
        EXPECT_EQ("0:", written);
        auto symbol = Symbol();
        auto future = CustomFuture();
        EXPECT_EQ("NULL", SessionsTextOf(details)) << details.front();
        for (auto* const rows : {&symbol, &future})
            for (auto& value : rows->Rows.at(0))
                if (value == written)
                    value.reset();
        EXPECT_EQ(symbol, Symbol());
        EXPECT_EQ(future, CustomFuture());
        try {
            m_Database.Read("SELECT SESSION_TEXT(200) FROM RDB$DATABASE");
            ADD_FAILURE() << details.front();
        } catch (const CDatabaseError& error) {
            EXPECT_THAT(error.what(), HasSubstr(reason));
        }
    }

    CTestDatabase m_Database;
};

TEST_F(Info, OfASymbolHasItsColumnsInOrderAndType) {
    EXPECT_THAT(
        m_Database.ResultTypes("SELECT * FROM GET_SYMBOL_INFO(1)"),
        ElementsAre("SYMBOL INTEGER", "SYMBOL_NAME VARCHAR(31)", "SYMBOL_ROOT VARCHAR(31)",
                    "DESCRIPTION VARCHAR(63)", "CUSIP VARCHAR(12)", "CATEGORY SMALLINT", "DATA_FEED INTEGER",
                    "EXCHANGE INTEGER", "EXCHANGE_NAME VARCHAR(12)", "EXCHANGE_TIME_ZONE_INFORMATION VARCHAR(128)",
                    "SETTING_TYPE SMALLINT", "SETTING INTEGER", "CUSTOM_SETTING INTEGER", "PRICE_SCALE INTEGER",
                    "POINT_VALUE FLOAT", "DAILY_LIMIT INTEGER", "MIN_MOVEMENT FLOAT", "SESSION_TYPE SMALLINT",
                    "CUSTOM_SESSION INTEGER", "TEMPLATE_SESSION INTEGER", "SESSIONS_STRING VARCHAR(512)",
                    "SESSIONS_TIME_ZONE_INFORMATION VARCHAR(128)", "STRIKE_PRICE FLOAT", "CONTRACT_MONTH SMALLINT",
                    "CONTRACT_YEAR SMALLINT", "CALL_PUT SMALLINT", "MARGIN INTEGER", "EXPIRATION_DATE DATE",
                    "EXPIRED SMALLINT", "EXPIRATION_RULE SMALLINT", "FIRST_NOTICE_DATE DATE", "DELIVERY DATE",
                    "EXCHANGE_GMT INTEGER", "LOCAL_GMT INTEGER"));
}

TEST_F(Info, OfACustomFutureHasItsColumnsInOrderAndType) {
    EXPECT_THAT(m_Database.ResultTypes("SELECT * FROM GET_CF_INFO(2)"),
                ElementsAre("CF INTEGER", "SYMBOL_NAME VARCHAR(31)", "SYMBOL_ROOT VARCHAR(31)",
                            "CF_CODE VARCHAR(126)", "DESCRIPTION VARCHAR(126)", "CATEGORY SMALLINT",
                            "DATA_FEED INTEGER", "EXCHANGE INTEGER", "EXCHANGE_NAME VARCHAR(12)",
                            "EXCHANGE_TIME_ZONE_INFORMATION VARCHAR(64)", "SETTING_TYPE SMALLINT",
                            "SETTING INTEGER", "CUSTOM_SETTING INTEGER", "PRICE_SCALE INTEGER", "POINT_VALUE FLOAT",
                            "DAILY_LIMIT INTEGER", "MIN_MOVEMENT FLOAT", "SESSION_TYPE SMALLINT",
                            "CUSTOM_SESSION INTEGER", "TEMPLATE_SESSION INTEGER", "SESSIONS_STRING VARCHAR(512)",
                            "SESSIONS_TIME_ZONE_INFORMATION VARCHAR(64)", "MARGIN INTEGER", "EXCHANGE_GMT INTEGER",
                            "LOCAL_GMT INTEGER"));
}

TEST_F(Info, OfASymbolDeliversTheRowWithAllThatItTakesFromTheExchange) {
    const auto rows = m_Database.Read(std::string(SymbolInfoColumns) + "GET_SYMBOL_INFO(1)");
    ASSERT_THAT(rows.Rows, SizeIs(1));
    EXPECT_THAT(rows.Rows[0],
                ElementsAre("1", "ESH15", "ES", "S&P", "cusip", "1", "5", "10", "CME", ChicagoZone, "1", "100", "0",
                            "100", "50.500000", "7", "0.25000000", "1", "0", "0",
                            "2:1950,2355,6,7,5;3390,3795,6,7,5;", ChicagoZone, "1250.2500", "1250.2500", "3",
                            "2015", "2", "9", "2015-03-20", "0", "4", "1900-01-01", "2015-03-21", "-360", "0"));
}

TEST_F(Info, OfACustomFutureDeliversTheRowWithAllThatItTakesFromTheExchange) {
    const auto rows = CustomFuture();
    ASSERT_THAT(rows.Rows, SizeIs(1));
    EXPECT_THAT(rows.Rows[0], ElementsAre("2", "ES-1", "ES", "C1", "first", "18", "5", "10", "CME", ChicagoZone,
                                          "1", "100", "0", "100", "50.500000", "7", "0.25000000", "1", "0", "0",
                                          "2:1950,2355,6,7,5;3390,3795,6,7,5;", ChicagoZone, "9", "-360", "0"));
}

TEST_F(Info, OfNullOrAnUnknownKeyIsNoRow) {
    for (const auto* call : {"GET_SYMBOL_INFO(NULL)", "GET_SYMBOL_INFO(3)", "GET_CF_INFO(NULL)", "GET_CF_INFO(3)",
                             "GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=5 AND "
                             "UPPER(SYMBOL_NAME)=UPPER('none')))"})
        EXPECT_THAT(m_Database.Read("SELECT * FROM " + std::string(call)).Rows, IsEmpty()) << call;
}

TEST_F(Info, IsFoundByFeedAndNameWithoutRegardToCase) {
    EXPECT_THAT(
        m_Database
            .Read("SELECT * FROM GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=5 AND "
                  "UPPER(SYMBOL_NAME)=UPPER('esh15')))")
            .Column("SYMBOL"),
        ElementsAre("1"));
    EXPECT_THAT(
        m_Database
            .Read("SELECT * FROM GET_CF_INFO((SELECT FIRST(1) SYMBOL FROM CUSTOM_FUTURES WHERE DATA_FEED=5 AND "
                  "UPPER(SYMBOL_NAME)=UPPER('es-1')))")
            .Column("CF"),
        ElementsAre("2"));
}

TEST_F(Info, TakesTheRowsOwnSettingForTypeZero) {
    SetBoth("SETTING_TYPE=0, SETTING=101");
    EXPECT_EQ("101", Both("SETTING"));
    EXPECT_EQ("101", Both("CUSTOM_SETTING"));
    EXPECT_EQ("1000", Both("PRICE_SCALE"));
    EXPECT_EQ("10.000000", Both("POINT_VALUE"));
    EXPECT_EQ("8", Both("DAILY_LIMIT"));
    EXPECT_EQ("0.12500000", Both("MIN_MOVEMENT"));
}

TEST_F(Info, TakesTheExchangesSettingForEveryOtherTypeAndKeepsTheStoredOne) {
    for (const std::string type : {"1", "2", "3", "-1"}) {
        SetBoth("SETTING_TYPE=" + type + ", SETTING=101");
        EXPECT_EQ("100", Both("SETTING")) << type;
        EXPECT_EQ("101", Both("CUSTOM_SETTING")) << type;
        EXPECT_EQ("100", Both("PRICE_SCALE")) << type;
    }
}

TEST_F(Info, TakesTheSessionThatTheTypeNames) {
    AddDetail("201", "0", "60", "0", "120");
    AddDetail("202", "0", "180", "0", "240");
    const auto textFor = [this](const std::string& type) {
        SetBoth("SESSION_TYPE=" + type + ", CUSTOM_SESSION=201, TEMPLATE_SESSION=202");
        return Both("SESSIONS_STRING");
    };
    EXPECT_EQ("1:1,2,6,7,5;", textFor("0"));
    EXPECT_EQ("1:3,4,6,7,5;", textFor("2"));
    for (const auto* exchange : {"1", "3", "4", "-1"})
        EXPECT_EQ("2:1950,2355,6,7,5;3390,3795,6,7,5;", textFor(exchange)) << exchange;
}

TEST_F(Info, WritesASessionWithoutDetailsAsZero) { EXPECT_EQ("0:", SessionsTextOf({})); }

// Which is not always the order in which they were inserted: new rows take the places of deleted ones.
TEST_F(Info, WritesDetailsInTheOrderInWhichATableScanGivesThem) {
    const auto text = SessionsTextOf({"3,0,3,60,0,0,0", "1,0,1,60,0,0,0", "2,0,2,60,0,0,0"});
    std::string expected = "3:";
    for (const auto& day : m_Database.Read("SELECT * FROM SESSION_DETAILS").Column("START_DAY")) {
        const auto minute = std::stoi(day) * 1440;
        expected += std::to_string(minute) + "," + std::to_string(minute + 1) + ",0,0,0;";
    }
    EXPECT_EQ(expected, text);
}

TEST_F(Info, CutsSecondsOffTheMinutes) { EXPECT_EQ("1:1440,2879,0,0,0;", SessionsTextOf({"1,59,1,86399,0,0,0"})); }

TEST_F(Info, TakesMissingDetailsForZero) {
    EXPECT_EQ("1:0,0,0,0,0;", SessionsTextOf({"NULL,NULL,NULL,NULL,NULL,NULL,NULL"}));
}

TEST_F(Info, WritesTheLargestValuesOfSevenDigits) {
    EXPECT_EQ("1:9999999,9999999,9999999,9999999,9999999;",
              SessionsTextOf({"6944,38340,6944,38399,9999999,9999999,9999999"}));
}

TEST_F(Info, OfASymbolWhoseDetailsTheTextCannotHoldLacksTheTextAlone) {
    for (const auto* detail : {"6944,38400,1,0,0,0,0", "1,0,2147483647,2147483647,0,0,0", "-1,0,1,0,0,0,0",
                               "1,0,-1,0,0,0,0", "1,0,1,0,-1,0,0", "1,0,1,0,0,-1,0", "1,0,1,0,0,0,10000000"})
        ExpectNoSessionsText({detail}, "A detail of session 200 has a negative value or one of more than seven "
                                       "digits. Correct the details of the session.");
}

TEST_F(Info, WritesSessionsUpTo511CharactersAndLeavesOutLongerOnes) {
    const std::string twenty = "6944,0,6944,0,0,0,10"; // 9999360,9999360,0,10,0; is 23 characters
    std::vector<std::string> details(22, twenty);      // with "22:" 509 characters
    const auto text = SessionsTextOf(details);
    EXPECT_EQ(509u, text.size());
    EXPECT_TRUE(text.starts_with("22:9999360,9999360,0,10,0;")) << text;
    details.front() = "6944,0,6944,0,0,100,10"; // two characters more
    EXPECT_EQ(511u, SessionsTextOf(details).size());
    details.front() = "6944,0,6944,0,0,1000,10";
    ExpectNoSessionsText(details, "Session 200 has more details than fit into a text of 511 characters.");
}

TEST_F(Info, GivesTheSessionsZoneByItsTimeZone) {
    m_Database.Run(SetLocalZone, {"-60", BerlinZone});
    const auto zoneFor = [this](const std::string& timeZone) {
        Run("UPDATE SESSIONS SET TIME_ZONE=" + timeZone + " WHERE SESSION=200");
        return Both("SESSIONS_TIME_ZONE_INFORMATION");
    };
    EXPECT_EQ(BerlinZone, zoneFor("0"));
    EXPECT_EQ(GmtZone, zoneFor("1"));
    EXPECT_EQ(ChicagoZone, zoneFor("2"));
    EXPECT_EQ("", zoneFor("3"));
    EXPECT_EQ("", zoneFor("-1"));
    EXPECT_EQ(BerlinZone, zoneFor("NULL"));
    EXPECT_EQ(ChicagoZone, Both("EXCHANGE_TIME_ZONE_INFORMATION"));
}

TEST_F(Info, GivesTheDistancesFromGmtWithTheSignTurned) {
    m_Database.Run(SetLocalZone, {"-60", BerlinZone});
    EXPECT_EQ("60", Both("LOCAL_GMT"));
    EXPECT_EQ("-360", Both("EXCHANGE_GMT"));
}

TEST_F(Info, TakesGmtForTheLocalZoneOfAConnectionThatSetNone) {
    Run("UPDATE SESSIONS SET TIME_ZONE=0");
    m_Database.Run(SetLocalZone, {"-60", BerlinZone});
    m_Database.Reconnect();
    EXPECT_EQ("0", Both("LOCAL_GMT"));
    EXPECT_EQ(GmtZone, Both("SESSIONS_TIME_ZONE_INFORMATION"));
}

TEST_F(Info, TakesTheLocalZoneFromTheVariablesOfTheConnection) {
    Run("UPDATE SESSIONS SET TIME_ZONE=0");
    m_Database.Read(SetLocalZone, {"300", BerlinZone}); // a read-only transaction is enough
    EXPECT_EQ("-300", Both("LOCAL_GMT"));
    EXPECT_EQ(BerlinZone, Both("SESSIONS_TIME_ZONE_INFORMATION"));
}

TEST_F(Info, OfASymbolWhoseExchangeIsGoneLacksOnlyWhatCameFromThere) {
    Run("DELETE FROM EXCHANGES");
    for (const auto* column : {"EXCHANGE_NAME", "EXCHANGE_TIME_ZONE_INFORMATION", "PRICE_SCALE", "SESSIONS_STRING",
                               "SESSIONS_TIME_ZONE_INFORMATION", "EXCHANGE_GMT"})
        EXPECT_EQ("NULL", Both(column)) << column;
    EXPECT_EQ("10", Both("EXCHANGE"));
    EXPECT_EQ("0", Both("SETTING"));
    EXPECT_EQ("ESH15", *Symbol().At(0, "SYMBOL_NAME"));
    SetBoth("SETTING_TYPE=0, SETTING=101, SESSION_TYPE=0, CUSTOM_SESSION=201");
    EXPECT_EQ("1000", Both("PRICE_SCALE"));
    EXPECT_EQ("0:", Both("SESSIONS_STRING"));
}

TEST_F(Info, OfASymbolWhoseSettingOrSessionIsGoneIsStillDelivered) {
    Run("DELETE FROM SETTINGS");
    Run("DELETE FROM SESSIONS");
    EXPECT_EQ("100", Both("SETTING"));
    EXPECT_EQ("NULL", Both("POINT_VALUE"));
    EXPECT_EQ("NULL", Both("SESSIONS_STRING"));
    EXPECT_EQ("CME", Both("EXCHANGE_NAME"));
}

TEST_F(Info, FitsTheLongestLegalZoneIntoItsColumns) {
    Run("UPDATE EXCHANGES SET BIAS=-1440, STANDARD_BIAS=-1440, DAYLIGHT_BIAS=-1440, STANDARD_MONTH=12, "
        "STANDARD_DAY_OF_WEEK=6, STANDARD_DAY=31, STANDARD_TIME='23:59:59.0000', DAYLIGHT_MONTH=12, "
        "DAYLIGHT_DAY_OF_WEEK=6, DAYLIGHT_DAY=31, DAYLIGHT_TIME='23:59:59.0000'");
    const auto longest = "-1440,-1440,12,6,31,23:59:59.0000,-1440,12,6,31,23:59:59.0000";
    EXPECT_EQ(longest, Both("EXCHANGE_TIME_ZONE_INFORMATION"));
    EXPECT_EQ(longest, Both("SESSIONS_TIME_ZONE_INFORMATION"));
    EXPECT_THAT(m_Database.Read(AllCustomFutures).Column("EXCHANGE_TIME_ZONE_INFORMATION"), ElementsAre(longest));
}

TEST_F(Info, OfACustomFutureTakesAZoneOf64CharactersAndRefusesALongerOne) {
    const auto setBias = [this](const std::string& bias) {
        Run("UPDATE EXCHANGES SET BIAS=" + bias +
            ", STANDARD_BIAS=-1440, DAYLIGHT_BIAS=-1440, STANDARD_MONTH=12, "
            "STANDARD_DAY=31, DAYLIGHT_MONTH=12, DAYLIGHT_DAY=31");
    };
    setBias("-1234567");
    EXPECT_EQ("-1234567,-1440,12,0,31,02:00:00.0000,-1440,12,0,31,02:00:00.0000",
              Both("EXCHANGE_TIME_ZONE_INFORMATION"));
    setBias("-12345678");
    EXPECT_EQ(65u, Symbol().Column("EXCHANGE_TIME_ZONE_INFORMATION").at(0).size());
    for (const auto sql : {std::string_view("SELECT * FROM GET_CF_INFO(2)"), AllCustomFutures}) {
        try {
            m_Database.Read(sql);
            ADD_FAILURE() << sql;
        } catch (const CDatabaseError& error) {
            EXPECT_THAT(error.what(),
                        HasSubstr("The time zone of exchange 10 takes more than 64 characters: "
                                  "-12345678,-1440,12,0,31,02:00:00.0000,-1440,12,0,31,02:00:00.0000. "
                                  "Correct the time zone of the exchange."));
        }
    }
}

TEST_F(Info, OfAllCustomFuturesComesWithThoseWhoseSessionTheTextCannotHold) {
    AddDetail("200", "-1", "0", "0", "0");
    Run("INSERT INTO CUSTOM_FUTURES VALUES(3,'A','A','C2','second',18,5,10,0,101,2,0,202,1)");
    const auto rows = m_Database.Read(AllCustomFutures);
    EXPECT_THAT(rows.Column("CF"), ElementsAre("3", "2"));
    EXPECT_THAT(rows.Column("SESSIONS_STRING"), ElementsAre("0:", "NULL"));
    EXPECT_THAT(rows.Column("PRICE_SCALE"), ElementsAre("1000", "100"));
}

TEST_F(Info, OfAllCustomFuturesComesInTheOrderOfTheirNames) {
    Run("INSERT INTO CUSTOM_FUTURES VALUES(3,'A','A','C2','second',18,5,10,0,101,2,0,202,1)");
    const auto rows = m_Database.Read(AllCustomFutures);
    EXPECT_THAT(rows.Column("CF"), ElementsAre("3", "2"));
    EXPECT_THAT(rows.Column("CF_CODE"), ElementsAre("C2", "C1"));
    EXPECT_THAT(rows.Column("DATA_FEED_NAME"), ElementsAre("Feed", "Feed"));
    EXPECT_THAT(rows.Column("SETTING"), ElementsAre("101", "100"));
    EXPECT_THAT(rows.Column("SESSIONS_STRING"), ElementsAre("0:", "2:1950,2355,6,7,5;3390,3795,6,7,5;"));
    EXPECT_THAT(rows.Column("EXCHANGE_GMT"), Each("-360"));
}

TEST_F(Info, OfASymbolAgreesWithTheRowOfTheWholePortfolio) {
    const auto whole = m_Database.Read(WholePortfolio);
    const auto info = Symbol();
    for (const auto& column : whole.Columns)
        EXPECT_EQ(whole.At(0, column), info.At(0, column == "SETTING" ? "CUSTOM_SETTING" : column)) << column;
}

} // namespace
} // namespace sqSchemaTest
