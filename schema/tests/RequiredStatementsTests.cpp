#include "StatementTexts.h"
#include "TestDatabase.h"
#include "schema/interface/Schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqSchemaTest {
namespace {

using testing::ElementsAre;

std::vector<std::string> HolidayStatements() {
    return {
        "SELECT * FROM HOLIDAYS",
        "SELECT * FROM HOLIDAYS WHERE HOLIDAY=1",
        "INSERT INTO HOLIDAYS VALUES(1,'New York')",
        "DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=1",
        "DELETE FROM HOLIDAYS WHERE HOLIDAY=1",
        "UPDATE HOLIDAYS SET HOLIDAY_NAME='o''clock' WHERE HOLIDAY=1 ",
        "SELECT * FROM HOLIDAY_DETAILS",
        "SELECT * FROM HOLIDAY_DETAILS WHERE HOLIDAY=1",
        "INSERT INTO HOLIDAY_DETAILS VALUES(?,?,?,?)",
        "DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=1 AND HOLIDAY_START_DATE='25.12.2015'",
    };
}

std::vector<std::string> SettingStatements() {
    return {
        "SELECT * FROM SETTINGS",
        "SELECT * FROM SETTINGS WHERE SETTING=1",
        "INSERT INTO SETTINGS VALUES(1,100,12.500000,5,0.250000)",
        "DELETE FROM SETTINGS WHERE SETTING=1",
        "UPDATE SETTINGS SET PRICE_SCALE=1, POINT_VALUE=0.100000, DAILY_LIMIT=2, MIN_MOVEMENT=1.000000 WHERE "
        "SETTING=1",
    };
}

std::vector<std::string> DataFeedStatements() {
    return {
        "SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, ACTIVATED AS "
        "\"ACTIVE\", "
        "DELETED FROM DATA_FEEDS WHERE ACTIVATED=1 AND DELETED=0",
        "SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, ACTIVATED AS "
        "\"ACTIVE\", "
        "DELETED FROM DATA_FEEDS WHERE DATA_FEED=1 AND ACTIVATED=1 AND DELETED=0",
        "SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{0}' AND DELETED=1",
        "SELECT COUNT(*) AS DATA_FEED FROM DATA_FEEDS WHERE CLSID='{0}'",
        "INSERT INTO DATA_FEEDS VALUES(1,'name','file.dll','{C}',1,1,0,0,'short')",
        "SELECT * FROM DELETE_DATA_FEED(1)",
        "UPDATE DATA_FEEDS SET DATA_FEED_NAME='n', DATA_FEED_SHORT_NAME='s', DATA_FEED_DLL_NAME='d', CLSID='{C}', "
        "ASCII=1, ACTIVATED=1, DELETED=0 WHERE DATA_FEED=1",
        "SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='n' AND DELETED=0",
        "SELECT DATA_FEED FROM DATA_FEEDS WHERE ASCII=1",
        "SELECT DATA_FEED, DATA_FEED_NAME FROM DATA_FEEDS",
    };
}

std::vector<std::string> ExchangeStatements() {
    return {
        "SELECT * FROM SELECT_EXCHANGE(1)",
        "SELECT EXCHANGE_NAME, EXCHANGE_TIME_ZONE_INFORMATION FROM SELECT_EXCHANGE(0)",
        "INSERT INTO EXCHANGES VALUES(1,'CME',2,3,4,5,'map',1,360,0,0,1,11,'02:00:00.0000',-60,0,2,3,"
        "'02:00:00.0000','Chicago')",
        "UPDATE EXCHANGES SET "
        "EXCHANGE_NAME='CME',HOLIDAY=1,SETTING=2,SESSION=3,TIME_ZONE=0,MAP_ID='m',USE_DAYLIGHT=1,"
        "BIAS=360,STANDARD_BIAS=0,STANDARD_DAY_OF_WEEK=0,STANDARD_DAY=1,STANDARD_MONTH=11,"
        "STANDARD_TIME='02:00:00.0000',DAYLIGHT_BIAS=-60,DAYLIGHT_DAY_OF_WEEK=0,DAYLIGHT_DAY=2,DAYLIGHT_MONTH=3,"
        "DAYLIGHT_TIME='02:00:00.0000',DESCRIPTION='d' WHERE EXCHANGE=1",
        "SELECT SETTING,SESSION FROM EXCHANGES WHERE EXCHANGE=1",
        "SELECT * FROM DELETE_EXCHANGE(1)",
        "SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='CME'",
        "SELECT EXCHANGE, EXCHANGE_NAME, SETTING, SESSION, USE_DAYLIGHT, BIAS, STANDARD_BIAS, STANDARD_MONTH, "
        "STANDARD_DAY_OF_WEEK, STANDARD_DAY, STANDARD_TIME, DAYLIGHT_BIAS, DAYLIGHT_MONTH, DAYLIGHT_DAY_OF_WEEK, "
        "DAYLIGHT_DAY, DAYLIGHT_TIME FROM EXCHANGES",
    };
}

std::vector<std::string> SessionStatements() {
    return {
        "SELECT SESSION FROM SESSIONS WHERE SESSION_TYPE=2 AND UPPER(SESSION_NAME)=UPPER('abc')",
        "SELECT SYMBOL FROM PORTFOLIO WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=1",
        "SELECT CF FROM CUSTOM_FUTURES WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=1",
        "SELECT * FROM SESSIONS",
        "SELECT * FROM SESSIONS WHERE SESSION=1",
        "SELECT * FROM SESSIONS WHERE SESSION_TYPE=2",
        "INSERT INTO SESSIONS VALUES(1,2,'name',0)",
        "UPDATE SESSIONS SET SESSION=1, SESSION_TYPE=2, SESSION_NAME='n', TIME_ZONE=1 WHERE SESSION=1",
        "DELETE FROM SESSIONS WHERE SESSION=1",
        "SELECT * FROM SESSION_DETAILS",
        "SELECT * FROM SESSION_DETAILS WHERE SESSION=1",
        "INSERT INTO SESSION_DETAILS VALUES(?,?,?,?,?,?,?,?)",
        "DELETE FROM SESSION_DETAILS WHERE SESSION=1",
    };
}

std::vector<std::string> CurrencyStatements() {
    return {
        "SELECT * FROM CURRENCY",
        "SELECT * FROM CURRENCY WHERE ID=1",
        "UPDATE CURRENCY SET CURRENCY_CODE=1 WHERE ID=1",
        "INSERT INTO CURRENCY VALUES(1,2)",
        "DELETE FROM CURRENCY WHERE ID=1",
    };
}

std::vector<std::string> ExpirationRuleStatements() {
    return {
        "SELECT * FROM EXPIRATION_RULES",
        "SELECT * FROM EXPIRATION_RULES WHERE ID=1",
        "INSERT INTO EXPIRATION_RULES VALUES(1, 'third Friday',0, 1, 1, 0, 1, 3, 5, 1)",
        "UPDATE EXPIRATION_RULES SET NAME='n', \"OFFSET\"=1, OFFSETTYPE=1, EXPIRATIONDATEMETHOD=1, BYDAYSNUMBER=1, "
        "BYDAYSMONTHTYPE=1, BYDAYSOFWEEKNUMBER=1, DAYOFWEEK=1, BYDAYSOFWEEKMONTHTYPE=1 WHERE ID=1",
        "DELETE FROM EXPIRATION_RULES WHERE ID=1",
    };
}

std::vector<std::string> SymbolStatements(const std::string& table) {
    const auto full = OnTable(FullSymbolHead, table) + std::string(SymbolJoin);
    const auto brief = OnTable(ShortSymbolHead, table) + std::string(SymbolJoin);
    const std::string update =
        "UPDATE " + table +
        " SET SYMBOL_NAME='n',SYMBOL_ROOT='r',DESCRIPTION='d',CUSIP='c',CATEGORY=1,DATA_FEED=2,EXCHANGE=3,"
        "SETTING_TYPE=0,SESSION_TYPE=1,CUSTOM_SESSION=0,TEMPLATE_SESSION=0,CONTRACT_MONTH=9,CONTRACT_YEAR=2015,"
        "STRIKE_PRICE=1250.250000,CALL_PUT=1,MARGIN=4,EXPIRATION_DATE='20.03.2015',EXPIRED=0,EXPIRATION_RULE=0,"
        "FIRST_NOTICE_DATE='01.01.1900',DELIVERY='01.01.1900'";
    return {
        full,
        full + " AND P.SYMBOL=1",
        full + " AND UPPER(P.SYMBOL_NAME) LIKE 'ES%' AND P.CATEGORY=1 AND P.EXCHANGE=2 AND P.DATA_FEED=3",
        full + " AND UPPER(P.DESCRIPTION) STARTING WITH 'AB'",
        brief,
        brief + " AND UPPER(P.SYMBOL_NAME) LIKE '%' AND P.CATEGORY=0",
        brief + " AND UPPER(P.DESCRIPTION) STARTING WITH 'AB' AND P.DATA_FEED=3",
        "INSERT INTO " + table +
            " VALUES(1,'ESH15','ES','S&P','',1,2,3,0,4,1,0,0,3,2015,1250.250000,0,0,'20.03.2015',0,0,'01.01.1900',"
            "'01.01.1900')",
        update + ",SETTING=7 WHERE SYMBOL=1",
        update + " WHERE SYMBOL=1",
        "DELETE FROM " + table + " WHERE SYMBOL=1",
        "SELECT SETTING_TYPE,SESSION_TYPE,SETTING,CUSTOM_SESSION FROM " + table + " WHERE SYMBOL=1",
    };
}

std::vector<std::string> PortfolioStatements() {
    const std::string info(SymbolInfoColumns);
    const std::string byName = info +
                               "GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=1 AND "
                               "UPPER(SYMBOL_NAME)=UPPER('es')";
    return {
        std::string(WholePortfolio),
        std::string(DictionaryRow),
        info + "GET_SYMBOL_INFO(1)",
        byName + "))",
        byName + " AND EXCHANGE=2))",
        byName + " AND CATEGORY=3))",
        byName + " AND CATEGORY=3 AND EXCHANGE=2))",
        "SELECT * FROM GET_SYMBOL_INFO(1)",
        "SELECT * FROM GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=1 AND "
        "UPPER(SYMBOL_NAME)=UPPER('es')))",
        "SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='ES' AND CATEGORY=1 AND EXCHANGE=2 AND DATA_FEED=3",
        "SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=1 AND SYMBOL_NAME='ES'",
        "SELECT SYMBOL,SYMBOL_NAME FROM PORTFOLIO WHERE DATA_FEED=1 AND DESCRIPTION='d'",
        "SELECT * FROM GET_AVAILABLE_SESSIONS(1)",
        BatchInsert(false),
        BatchInsert(true),
        "SELECT ID FROM ASC_MAP WHERE SYMBOL=1",
        "SELECT * FROM ASC_MAP ORDER BY ID",
        "SELECT * FROM ASC_TEMPLATES ORDER BY ID, FIELD_ORDER",
        "DELETE FROM ASC_MAP",
        "INSERT INTO ASC_MAP VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
        "DELETE FROM ASC_TEMPLATES",
        "INSERT INTO ASC_TEMPLATES VALUES(?,?,?,?)",
        "DELETE FROM ASC_MAP WHERE ID=1",
        "DELETE FROM ASC_TEMPLATES WHERE ID=1",
    };
}

std::vector<std::string> CustomFutureStatements() {
    const std::string info(CustomFutureInfoColumns);
    const std::string byName = info + "GET_CF_INFO((SELECT FIRST(1) CF FROM CUSTOM_FUTURES WHERE DATA_FEED=1 AND "
                                      "UPPER(SYMBOL_NAME)=UPPER('es')";
    const auto filtered = std::string(CustomFutureHead) + std::string(SymbolJoin);
    const std::string update =
        "UPDATE CUSTOM_FUTURES SET "
        "SYMBOL_NAME='n',SYMBOL_ROOT='r',CF_CODE='c',DESCRIPTION='d',CATEGORY=18,DATA_FEED=1,"
        "EXCHANGE=2,SETTING_TYPE=0,SESSION_TYPE=1,CUSTOM_SESSION=0,TEMPLATE_SESSION=0,MARGIN=5";
    return {
        std::string(AllCustomFutures),
        info + "GET_CF_INFO(1)",
        byName + "))",
        byName + " AND EXCHANGE=2))",
        "SELECT * FROM GET_CF_INFO(1)",
        "SELECT * FROM GET_CF_INFO((SELECT FIRST(1) SYMBOL FROM CUSTOM_FUTURES WHERE DATA_FEED=1 AND "
        "UPPER(SYMBOL_NAME)=UPPER('es')))",
        filtered,
        filtered + " AND P.CF=1",
        filtered + " AND UPPER(P.SYMBOL_NAME) LIKE 'ES%' AND P.EXCHANGE=1 AND P.DATA_FEED=2 AND "
                   "UPPER(P.SYMBOL_ROOT)=UPPER('es')",
        filtered + " AND UPPER(P.DESCRIPTION) STARTING WITH 'AB'",
        "INSERT INTO CUSTOM_FUTURES VALUES(1,'n','R','C','d',18,1,2,0,3,1,0,0,4)",
        update + ",SETTING=3 WHERE CF=1",
        update + " WHERE CF=1",
        "UPDATE CUSTOM_FUTURES SET SYMBOL_ROOT='r',CF_CODE='c',DESCRIPTION='d' WHERE CF=1",
        "SELECT SETTING_TYPE,SESSION_TYPE,SETTING,CUSTOM_SESSION FROM CUSTOM_FUTURES WHERE CF=1",
        "DELETE FROM CUSTOM_FUTURES WHERE CF=1",
    };
}

class RequiredStatements : public testing::Test {
protected:
    void ExpectPrepared(const std::vector<std::string>& statements) {
        for (const auto& statement : statements)
            EXPECT_NO_THROW(m_Database.Prepare(statement)) << statement;
    }
    CTestDatabase m_Database;
};

TEST_F(RequiredStatements, OnHolidaysPrepare) { ExpectPrepared(HolidayStatements()); }
TEST_F(RequiredStatements, OnSettingsPrepare) { ExpectPrepared(SettingStatements()); }
TEST_F(RequiredStatements, OnDataFeedsPrepare) { ExpectPrepared(DataFeedStatements()); }
TEST_F(RequiredStatements, OnExchangesPrepare) { ExpectPrepared(ExchangeStatements()); }
TEST_F(RequiredStatements, OnSessionsPrepare) { ExpectPrepared(SessionStatements()); }
TEST_F(RequiredStatements, OnCurrenciesPrepare) { ExpectPrepared(CurrencyStatements()); }
TEST_F(RequiredStatements, OnExpirationRulesPrepare) { ExpectPrepared(ExpirationRuleStatements()); }
TEST_F(RequiredStatements, OnSymbolsPrepareForPortfolio) { ExpectPrepared(SymbolStatements("PORTFOLIO")); }
TEST_F(RequiredStatements, OnSymbolsPrepareForDictionary) { ExpectPrepared(SymbolStatements("DICTIONARY")); }
TEST_F(RequiredStatements, OnThePortfolioPrepare) { ExpectPrepared(PortfolioStatements()); }
TEST_F(RequiredStatements, OnCustomFuturesPrepare) { ExpectPrepared(CustomFutureStatements()); }

TEST_F(RequiredStatements, OnTheWholeDatabasePrepare) {
    ExpectPrepared({"SELECT * FROM GENERATE_ID(1)", std::string(sqSchema::SelectVersionStatement),
                    std::string(sqSchema::RefreshStatisticsStatement)});
}

TEST_F(RequiredStatements, BindHolidayDetailsByPosition) {
    m_Database.Run("INSERT INTO HOLIDAY_DETAILS VALUES(?,?,?,?)", {"1", "Christmas", "25.12.2015", "26.12.2015"});
    m_Database.Run("INSERT INTO HOLIDAY_DETAILS VALUES(?,?,?,?)", {"1", std::nullopt, "01.01.2016", std::nullopt});
    EXPECT_THAT(m_Database.Read("SELECT * FROM HOLIDAY_DETAILS WHERE HOLIDAY=1").Column("HOLIDAY_START_DATE"),
                ElementsAre("2015-12-25", "2016-01-01"));
    m_Database.Run("DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=1 AND HOLIDAY_START_DATE='25.12.2015'");
    EXPECT_EQ("1", m_Database.Value("SELECT COUNT(*) FROM HOLIDAY_DETAILS"));
}

TEST_F(RequiredStatements, BindTextFileMapsByPosition) {
    const std::vector<tagValue> map{"2", "7",        "es.txt", "1", "60",         "1",          ",",
                                    ".", "%d.%m.%Y", "%H:%M",  "0", "01.01.2010", std::nullopt, "0"};
    m_Database.Run("INSERT INTO ASC_MAP VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?)", map);
    for (const auto* order : {"2", "1"})
        m_Database.Run("INSERT INTO ASC_TEMPLATES VALUES(?,?,?,?)", {"2", order, "3", "close"});
    EXPECT_EQ("2", m_Database.Value("SELECT ID FROM ASC_MAP WHERE SYMBOL=7"));
    EXPECT_THAT(m_Database.Read("SELECT * FROM ASC_TEMPLATES ORDER BY ID, FIELD_ORDER").Column("FIELD_ORDER"),
                ElementsAre("1", "2"));
}

class BatchInsertTest : public testing::Test {
protected:
    std::string Insert(bool updateExisting, const std::string& name, const std::string& margin) {
        return m_Database
            .Run(BatchInsert(updateExisting),
                 {name, "ES", "d",    "",     "1", "2",    "3",          "1", "0", "1",          "0",
                  "0",  "9",  "2015", "12.5", "0", margin, "20.03.2015", "0", "0", "01.01.1900", "01.01.1900"})
            .At(0, "SYMBOL")
            .value();
    }
    CTestDatabase m_Database;
};

TEST_F(BatchInsertTest, GivesNewSymbolsKeysOfTheSequence) {
    const auto first = std::stol(Insert(false, "ESH15", "1"));
    EXPECT_EQ(first + 1, std::stol(Insert(false, "ESM15", "1")));
    EXPECT_EQ("2", m_Database.Value("SELECT COUNT(*) FROM PORTFOLIO"));
}

TEST_F(BatchInsertTest, LeavesAnExistingRowAloneAndGivesItsKey) {
    const auto key = Insert(false, "ESH15", "1");
    EXPECT_EQ(key, Insert(false, "ESH15", "2"));
    EXPECT_EQ("1", m_Database.Value("SELECT MARGIN FROM PORTFOLIO"));
}

TEST_F(BatchInsertTest, OverwritesAnExistingRowUnderItsKeyWhenAskedTo) {
    const auto key = Insert(true, "ESH15", "1");
    EXPECT_EQ(key, Insert(true, "ESH15", "2"));
    EXPECT_EQ("2", m_Database.Value("SELECT MARGIN FROM PORTFOLIO"));
    EXPECT_EQ("1", m_Database.Value("SELECT COUNT(*) FROM PORTFOLIO"));
}

TEST_F(BatchInsertTest, TellsNamesThatDifferInCaseApart) {
    EXPECT_NE(Insert(false, "ESH15", "1"), Insert(false, "esh15", "1"));
}

TEST_F(BatchInsertTest, TakesNamesThatDifferInBlanksAtTheEndForOneSymbol) {
    EXPECT_EQ(Insert(false, "ESH15", "1"), Insert(false, "ESH15 ", "1"));
    EXPECT_NE(Insert(false, "ESH15", "1"), Insert(false, " ESH15", "1"));
}

} // namespace
} // namespace sqSchemaTest
