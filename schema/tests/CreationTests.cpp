#include "TestDatabase.h"
#include "schema/interface/Schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqSchemaTest {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

std::vector<std::string> ColumnsOf(CTestDatabase& database, const std::string& table) {
    return database.ResultTypes("SELECT * FROM " + table);
}

const std::vector<std::string> SymbolColumns{"SYMBOL INTEGER",
                                             "SYMBOL_NAME VARCHAR(31)",
                                             "SYMBOL_ROOT VARCHAR(31)",
                                             "DESCRIPTION VARCHAR(63)",
                                             "CUSIP VARCHAR(12)",
                                             "CATEGORY SMALLINT",
                                             "DATA_FEED INTEGER",
                                             "EXCHANGE INTEGER",
                                             "SETTING_TYPE SMALLINT",
                                             "SETTING INTEGER",
                                             "SESSION_TYPE SMALLINT",
                                             "CUSTOM_SESSION INTEGER",
                                             "TEMPLATE_SESSION INTEGER",
                                             "CONTRACT_MONTH SMALLINT",
                                             "CONTRACT_YEAR SMALLINT",
                                             "STRIKE_PRICE FLOAT",
                                             "CALL_PUT SMALLINT",
                                             "MARGIN INTEGER",
                                             "EXPIRATION_DATE DATE",
                                             "EXPIRED SMALLINT",
                                             "EXPIRATION_RULE SMALLINT",
                                             "FIRST_NOTICE_DATE DATE",
                                             "DELIVERY DATE"};

class Creation : public testing::Test {
protected:
    CTestDatabase m_Database;
};

TEST(CreationStatements, BeginWithTheirFirstWordAndHaveNoTerminator) {
    for (const auto statement : sqSchema::CreateStatements()) {
        EXPECT_TRUE(statement.starts_with("CREATE ") || statement.starts_with("ALTER ") ||
                    statement.starts_with("INSERT "))
            << statement;
        EXPECT_NE('^', statement.back());
    }
}

TEST(CreationStatements, LeaveNoVersionBehindUntilTheLastOne) {
    CTestDatabase database(CTestDatabase::EContent::Empty);
    EXPECT_THROW(database.Prepare(sqSchema::SelectVersionStatement), CDatabaseError);
    const auto all = sqSchema::CreateStatements();
    for (const auto statement : all.first(all.size() - 1))
        database.Run(statement);
    EXPECT_TRUE(database.Read(sqSchema::SelectVersionStatement).Rows.empty());
    database.Run(all.back());
    EXPECT_EQ(std::to_string(sqSchema::CurrentVersion), database.Value(sqSchema::SelectVersionStatement));
}

TEST(CreationStatements, RunInOneTransactionUpToTheFirstRow) {
    CTestDatabase database(CTestDatabase::EContent::Empty);
    const auto all = sqSchema::CreateStatements();
    CTestTransaction transaction(database, EMode::ReadWrite);
    for (const auto statement : all.first(all.size() - 1))
        ASSERT_NO_THROW(transaction.Run(statement)) << statement;
    transaction.End(EEnd::Commit);
    database.Run(all.back());
    EXPECT_EQ("1", database.Value("SELECT COUNT(*) FROM SCHEMA_INFO"));
}

TEST_F(Creation, WritesTheVersionAndTheTimeOnce) {
    const auto rows = m_Database.Read("SELECT SCHEMA_VERSION, CREATED_AT FROM SCHEMA_INFO");
    ASSERT_EQ(1u, rows.Rows.size());
    EXPECT_EQ(std::to_string(sqSchema::CurrentVersion), rows.At(0, "SCHEMA_VERSION"));
    EXPECT_TRUE(rows.At(0, "CREATED_AT").has_value());
    EXPECT_THROW(m_Database.Run("INSERT INTO SCHEMA_INFO (SCHEMA_VERSION) VALUES (2)"), CDatabaseError);
    EXPECT_THROW(m_Database.Run("INSERT INTO SCHEMA_INFO (SCHEMA_VERSION, SINGLE_ROW) VALUES (2, 2)"),
                 CDatabaseError);
}

TEST_F(Creation, GivesPortfolioAndDictionaryTheSameColumnsInOrder) {
    EXPECT_THAT(ColumnsOf(m_Database, "PORTFOLIO"), ElementsAreArray(SymbolColumns));
    EXPECT_THAT(ColumnsOf(m_Database, "DICTIONARY"), ElementsAreArray(SymbolColumns));
}

TEST_F(Creation, GivesCustomFuturesFourteenColumnsAndTheKeyUnderASecondName) {
    EXPECT_THAT(ColumnsOf(m_Database, "CUSTOM_FUTURES"),
                ElementsAre("CF INTEGER", "SYMBOL_NAME VARCHAR(31)", "SYMBOL_ROOT VARCHAR(31)",
                            "CF_CODE VARCHAR(126)", "DESCRIPTION VARCHAR(126)", "CATEGORY SMALLINT",
                            "DATA_FEED INTEGER", "EXCHANGE INTEGER", "SETTING_TYPE SMALLINT", "SETTING INTEGER",
                            "SESSION_TYPE SMALLINT", "CUSTOM_SESSION INTEGER", "TEMPLATE_SESSION INTEGER",
                            "MARGIN INTEGER", "SYMBOL INTEGER"));
    m_Database.Run("INSERT INTO CUSTOM_FUTURES VALUES(77,'n','R','C','d',18,1,2,0,3,1,0,0,9)");
    EXPECT_EQ("77", m_Database.Value("SELECT FIRST(1) SYMBOL FROM CUSTOM_FUTURES WHERE DATA_FEED=1 AND "
                                     "UPPER(SYMBOL_NAME)=UPPER('N')"));
    EXPECT_EQ("9", m_Database.Value("SELECT MARGIN FROM CUSTOM_FUTURES"));
}

TEST_F(Creation, GivesDataFeedsTheirColumnsInOrderAndType) {
    EXPECT_THAT(ColumnsOf(m_Database, "DATA_FEEDS"),
                ElementsAre("DATA_FEED INTEGER", "DATA_FEED_NAME VARCHAR(31)", "DATA_FEED_DLL_NAME VARCHAR(255)",
                            "CLSID VARCHAR(63)", "PRIMARY_INSTANCE SMALLINT", "ACTIVATED SMALLINT",
                            "DELETED SMALLINT", "ASCII SMALLINT", "DATA_FEED_SHORT_NAME VARCHAR(31)"));
}

TEST_F(Creation, GivesExchangesTheirColumnsInOrderAndType) {
    EXPECT_THAT(ColumnsOf(m_Database, "EXCHANGES"),
                ElementsAre("EXCHANGE INTEGER", "EXCHANGE_NAME VARCHAR(12)", "HOLIDAY INTEGER", "SETTING INTEGER",
                            "SESSION INTEGER", "TIME_ZONE INTEGER", "MAP_ID VARCHAR(63)", "USE_DAYLIGHT SMALLINT",
                            "BIAS INTEGER", "STANDARD_BIAS INTEGER", "STANDARD_DAY_OF_WEEK INTEGER",
                            "STANDARD_DAY INTEGER", "STANDARD_MONTH INTEGER", "STANDARD_TIME TIME",
                            "DAYLIGHT_BIAS INTEGER", "DAYLIGHT_DAY_OF_WEEK INTEGER", "DAYLIGHT_DAY INTEGER",
                            "DAYLIGHT_MONTH INTEGER", "DAYLIGHT_TIME TIME", "DESCRIPTION VARCHAR(255)"));
}

TEST_F(Creation, GivesSettingsAndSessionsTheirColumnsInOrderAndType) {
    EXPECT_THAT(ColumnsOf(m_Database, "SETTINGS"),
                ElementsAre("SETTING INTEGER", "PRICE_SCALE INTEGER", "POINT_VALUE FLOAT", "DAILY_LIMIT INTEGER",
                            "MIN_MOVEMENT FLOAT"));
    EXPECT_THAT(ColumnsOf(m_Database, "SESSIONS"), ElementsAre("SESSION INTEGER", "SESSION_TYPE INTEGER",
                                                               "SESSION_NAME VARCHAR(63)", "TIME_ZONE INTEGER"));
    EXPECT_THAT(ColumnsOf(m_Database, "SESSION_DETAILS"),
                ElementsAre("SESSION INTEGER", "START_DAY INTEGER", "START_TIME INTEGER", "END_DAY INTEGER",
                            "END_TIME INTEGER", "VALUE5 INTEGER", "VALUE6 INTEGER", "VALUE7 INTEGER"));
}

TEST_F(Creation, GivesHolidaysRulesAndCurrenciesTheirColumnsInOrderAndType) {
    EXPECT_THAT(ColumnsOf(m_Database, "HOLIDAYS"), ElementsAre("HOLIDAY INTEGER", "HOLIDAY_NAME VARCHAR(63)"));
    EXPECT_THAT(ColumnsOf(m_Database, "HOLIDAY_DETAILS"),
                ElementsAre("HOLIDAY INTEGER", "HOLIDAY_DESCRIPTION VARCHAR(63)", "HOLIDAY_START_DATE DATE",
                            "HOLIDAY_END_DATE DATE"));
    EXPECT_THAT(ColumnsOf(m_Database, "EXPIRATION_RULES"),
                ElementsAre("ID INTEGER", "NAME VARCHAR(126)", "OFFSET INTEGER", "OFFSETTYPE INTEGER",
                            "EXPIRATIONDATEMETHOD INTEGER", "BYDAYSNUMBER INTEGER", "BYDAYSMONTHTYPE INTEGER",
                            "BYDAYSOFWEEKNUMBER INTEGER", "DAYOFWEEK INTEGER", "BYDAYSOFWEEKMONTHTYPE INTEGER"));
    EXPECT_THAT(ColumnsOf(m_Database, "CURRENCY"), ElementsAre("ID INTEGER", "CURRENCY_CODE INTEGER"));
}

TEST_F(Creation, GivesTextFileMapsAsManyColumnsAsAreBound) {
    EXPECT_EQ(14u, ColumnsOf(m_Database, "ASC_MAP").size());
    EXPECT_EQ(4u, ColumnsOf(m_Database, "ASC_TEMPLATES").size());
}

TEST_F(Creation, ForbidsDuplicateKeys) {
    for (const auto* insert :
         {"INSERT INTO PORTFOLIO (SYMBOL) VALUES (1)", "INSERT INTO DICTIONARY (SYMBOL) VALUES (1)",
          "INSERT INTO CUSTOM_FUTURES (CF) VALUES (1)", "INSERT INTO DATA_FEEDS (DATA_FEED) VALUES (1)",
          "INSERT INTO EXCHANGES (EXCHANGE) VALUES (1)", "INSERT INTO SETTINGS (SETTING) VALUES (1)",
          "INSERT INTO SESSIONS (SESSION) VALUES (1)", "INSERT INTO HOLIDAYS (HOLIDAY) VALUES (1)",
          "INSERT INTO EXPIRATION_RULES (ID) VALUES (1)", "INSERT INTO CURRENCY (ID) VALUES (1)",
          "INSERT INTO ASC_MAP (ID) VALUES (1)"}) {
        EXPECT_NO_THROW(m_Database.Run(insert)) << insert;
        EXPECT_THROW(m_Database.Run(insert), CDatabaseError) << insert;
    }
}

TEST_F(Creation, ComparesNamesExactlyAndUpperCasesEveryAlphabet) {
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, SYMBOL_NAME) VALUES (1, 'Größe')");
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, SYMBOL_NAME) VALUES (2, 'нефть')");
    EXPECT_EQ("0", m_Database.Value("SELECT COUNT(*) FROM PORTFOLIO WHERE SYMBOL_NAME='größe'"));
    EXPECT_EQ("2", m_Database.Value("SELECT SYMBOL FROM PORTFOLIO WHERE UPPER(SYMBOL_NAME)=UPPER('Нефть')"));
    EXPECT_EQ("1", m_Database.Value("SELECT SYMBOL FROM PORTFOLIO WHERE UPPER(SYMBOL_NAME) LIKE 'GRÖ%'"));
}

TEST_F(Creation, TakesBlanksAtTheEndForNothingInAComparisonOfWholeNames) {
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, SYMBOL_NAME) VALUES (1, 'ES ')");
    const auto count = [this](const std::string& condition) {
        return m_Database.Value("SELECT COUNT(*) FROM PORTFOLIO WHERE " + condition);
    };
    EXPECT_EQ("1", count("SYMBOL_NAME='ES'"));
    EXPECT_EQ("1", count("SYMBOL_NAME='ES  '"));
    EXPECT_EQ("1", count("UPPER(SYMBOL_NAME)=UPPER('es')"));
    EXPECT_EQ("0", count("SYMBOL_NAME=' ES'"));
    EXPECT_EQ("0", count("UPPER(SYMBOL_NAME) LIKE 'ES'"));
    EXPECT_EQ("1", count("UPPER(SYMBOL_NAME) LIKE 'ES %'"));
    EXPECT_EQ("0", count("SYMBOL_NAME STARTING WITH 'ES  '"));
    EXPECT_EQ("3", m_Database.Value("SELECT CHAR_LENGTH(SYMBOL_NAME) FROM PORTFOLIO")); // kept as it was given
}

TEST_F(Creation, HoldsTextsOfFullWidthInCharactersNotBytes) {
    std::string wide;
    for (int i = 0; i < 63; ++i)
        wide += "ж";
    m_Database.Run("INSERT INTO SESSIONS VALUES(1,2,?,0)", {wide});
    EXPECT_EQ(wide, m_Database.Value("SELECT SESSION_NAME FROM SESSIONS"));
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, DESCRIPTION) VALUES (1, ?)", {wide});
    EXPECT_EQ(wide, m_Database.Value("SELECT DESCRIPTION FROM PORTFOLIO"));
    EXPECT_THROW(m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, DESCRIPTION) VALUES (2, ?)", {wide + "x"}),
                 CDatabaseError);
}

TEST_F(Creation, LetsDanglingRowsBe) {
    m_Database.Run("INSERT INTO HOLIDAYS VALUES(1,'h')");
    m_Database.Run("INSERT INTO SETTINGS VALUES(2,100,1.5,1,0.25)");
    m_Database.Run("INSERT INTO EXCHANGES (EXCHANGE, HOLIDAY, SETTING, SESSION) VALUES (5, 1, 2, 999)");
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, EXCHANGE, DATA_FEED) VALUES (6, 888, 777)");
    m_Database.Run("INSERT INTO SESSION_DETAILS VALUES(?,?,?,?,?,?,?,?)", {"4", "1", "2", "3", "4", "5", "6", "7"});
    EXPECT_NO_THROW(m_Database.Run("DELETE FROM HOLIDAYS WHERE HOLIDAY=1"));
    EXPECT_NO_THROW(m_Database.Run("DELETE FROM SETTINGS WHERE SETTING=2"));
}

TEST_F(Creation, ShowsTheSameStrikeAsNumberAndAsText) {
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, STRIKE_PRICE) VALUES (1, 1250.250000)");
    const auto rows = m_Database.Read("SELECT CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
                                      "CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME FROM PORTFOLIO P");
    EXPECT_EQ("1250.2500", rows.At(0, "STRIKE_PRICE"));
    EXPECT_EQ("1250.2500", rows.At(0, "STRIKE_PRICE_NAME"));
}

TEST_F(Creation, RefreshesTheStatisticsOfAllIndexes) {
    for (int i = 1; i <= 10; ++i)
        m_Database.Run("INSERT INTO SESSION_DETAILS (SESSION) VALUES (" + std::to_string(i) + ")");
    const auto unknown = "SELECT COUNT(*) FROM RDB$INDICES WHERE RDB$INDEX_NAME='SESSION_DETAILS_SESSION' AND "
                         "RDB$STATISTICS=0";
    EXPECT_EQ("1", m_Database.Value(unknown));
    m_Database.Run(sqSchema::RefreshStatisticsStatement);
    EXPECT_EQ("0", m_Database.Value(unknown));
}

} // namespace
} // namespace sqSchemaTest
