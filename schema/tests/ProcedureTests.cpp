#include "TestDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqSchemaTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Procedure : public testing::Test {
protected:
    void InsertExchange(const std::string& key, const std::string& zoneColumns) {
        m_Database.Run("INSERT INTO EXCHANGES VALUES(" + key + ",'X" + key + "',7,8,9,2,'map'," + zoneColumns +
                       ",'about " + key + "')");
    }
    std::string Zone(const std::string& key) {
        return m_Database.Value("SELECT EXCHANGE_TIME_ZONE_INFORMATION FROM SELECT_EXCHANGE(" + key + ")");
    }
    CTestDatabase m_Database;
};

// --- GENERATE_ID

TEST_F(Procedure, GenerateIdGivesOneRowWithOneIntegerColumn) {
    EXPECT_THAT(m_Database.ResultTypes("SELECT * FROM GENERATE_ID(1)"), ElementsAre("GENERATED_ID INTEGER"));
    EXPECT_EQ(1u, m_Database.Read("SELECT * FROM GENERATE_ID(1)").Rows.size());
}

TEST_F(Procedure, GenerateIdBeginsAboveZeroAndRisesByTheStep) {
    EXPECT_EQ("1", m_Database.Value("SELECT * FROM GENERATE_ID(1)"));
    EXPECT_EQ("2", m_Database.Value("SELECT * FROM GENERATE_ID(1)"));
    EXPECT_EQ("12", m_Database.Value("SELECT * FROM GENERATE_ID(10)"));
}

TEST_F(Procedure, GenerateIdGivesDifferentValuesInOneOpenTransaction) {
    for (const auto mode : {EMode::ReadOnly, EMode::ReadWrite}) {
        CTestTransaction transaction(m_Database, mode);
        const auto first = transaction.Run("SELECT * FROM GENERATE_ID(1)");
        const auto second = transaction.Run("SELECT * FROM GENERATE_ID(1)");
        EXPECT_EQ(std::stol(*first.At(0, "GENERATED_ID")) + 1, std::stol(*second.At(0, "GENERATED_ID")));
        transaction.End(EEnd::Commit);
    }
}

TEST_F(Procedure, GenerateIdIsNotRolledBack) {
    CTestTransaction transaction(m_Database, EMode::ReadWrite);
    EXPECT_EQ("1", *transaction.Run("SELECT * FROM GENERATE_ID(1)").At(0, "GENERATED_ID"));
    transaction.End(EEnd::Rollback);
    EXPECT_EQ("2", m_Database.Value("SELECT * FROM GENERATE_ID(1)"));
}

TEST_F(Procedure, GenerateIdGoesOnAfterTheDatabaseWasClosed) {
    EXPECT_EQ("1", m_Database.Value("SELECT * FROM GENERATE_ID(1)"));
    m_Database.Reconnect();
    EXPECT_EQ("2", m_Database.Value("SELECT * FROM GENERATE_ID(1)"));
}

TEST_F(Procedure, GenerateIdIsExecutable) {
    EXPECT_EQ("1", *m_Database.Run("EXECUTE PROCEDURE GENERATE_ID(1)").At(0, "GENERATED_ID"));
    EXPECT_EQ("2", *m_Database
                        .Run("EXECUTE BLOCK RETURNS (ID INTEGER) AS BEGIN EXECUTE PROCEDURE GENERATE_ID(1) "
                             "RETURNING_VALUES :ID; SUSPEND; END")
                        .At(0, "ID"));
}

TEST_F(Procedure, GenerateIdRefusesKeysThatNoTableCanHold) {
    m_Database.Run("ALTER SEQUENCE GLOBAL_KEY RESTART WITH 2147483647");
    EXPECT_THROW(m_Database.Read("SELECT * FROM GENERATE_ID(1)"), CDatabaseError);
}

// --- DELETE_DATA_FEED

TEST_F(Procedure, DeleteDataFeedMarksTheRow) {
    m_Database.Run("INSERT INTO DATA_FEEDS VALUES(5,'n','d','{C}',1,1,0,0,'s')");
    EXPECT_THAT(m_Database.ResultTypes("SELECT * FROM DELETE_DATA_FEED(5)"), ElementsAre("DELETED INTEGER"));
    EXPECT_THAT(m_Database.Run("SELECT * FROM DELETE_DATA_FEED(5)").Column("DELETED"), ElementsAre("1"));
    EXPECT_EQ("5", m_Database.Value("SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{C}' AND DELETED=1"));
}

TEST_F(Procedure, DeleteDataFeedRefusesWhileASymbolBelongsToIt) {
    for (const auto* user :
         {"PORTFOLIO (SYMBOL, DATA_FEED)", "DICTIONARY (SYMBOL, DATA_FEED)", "CUSTOM_FUTURES (CF, DATA_FEED)"}) {
        CTestDatabase database;
        database.Run("INSERT INTO DATA_FEEDS VALUES(5,'n','d','{C}',1,1,0,0,'s')");
        database.Run("INSERT INTO " + std::string(user) + " VALUES (1, 5)");
        EXPECT_THAT(database.Run("SELECT * FROM DELETE_DATA_FEED(5)").Column("DELETED"), ElementsAre("0")) << user;
        EXPECT_EQ("0", database.Value("SELECT DELETED FROM DATA_FEEDS")) << user;
    }
}

// A feed that was marked before is marked again, and counts as deleted once more.
TEST_F(Procedure, DeleteDataFeedOfADeletedFeedDeletesItAgain) {
    m_Database.Run("INSERT INTO DATA_FEEDS VALUES(5,'n','d','{C}',1,1,1,0,'s')");
    EXPECT_THAT(m_Database.Run("SELECT * FROM DELETE_DATA_FEED(5)").Column("DELETED"), ElementsAre("1"));
    EXPECT_EQ("1", m_Database.Value("SELECT DELETED FROM DATA_FEEDS"));
}

TEST_F(Procedure, DeleteDataFeedTouchesOnlyItsRow) {
    m_Database.Run("INSERT INTO DATA_FEEDS VALUES(5,'n','d','{C}',1,1,0,0,'s')");
    m_Database.Run("INSERT INTO DATA_FEEDS VALUES(6,'n','d','{C}',0,1,0,0,'s')");
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, DATA_FEED) VALUES (1, 6)");
    m_Database.Run("SELECT * FROM DELETE_DATA_FEED(5)");
    EXPECT_THAT(m_Database.Read("SELECT * FROM DATA_FEEDS ORDER BY DATA_FEED").Column("DELETED"),
                ElementsAre("1", "0"));
}

TEST_F(Procedure, DeletesOfUnknownKeysSayThatNothingWasDeleted) {
    for (const auto* call :
         {"DELETE_DATA_FEED(5)", "DELETE_DATA_FEED(NULL)", "DELETE_EXCHANGE(5)", "DELETE_EXCHANGE(NULL)"})
        EXPECT_THAT(m_Database.Run("SELECT * FROM " + std::string(call)).Column("DELETED"), ElementsAre("0"))
            << call;
}

// --- DELETE_EXCHANGE

constexpr auto NoZone = "0,0,0,0,0,0,'00:00:00.0000',0,0,0,0,'00:00:00.0000'";

TEST_F(Procedure, DeleteExchangeRemovesTheRow) {
    InsertExchange("5", NoZone);
    InsertExchange("6", NoZone);
    EXPECT_THAT(m_Database.ResultTypes("SELECT * FROM DELETE_EXCHANGE(5)"), ElementsAre("DELETED INTEGER"));
    EXPECT_THAT(m_Database.Run("SELECT * FROM DELETE_EXCHANGE(5)").Column("DELETED"), ElementsAre("1"));
    EXPECT_THAT(m_Database.Read("SELECT * FROM EXCHANGES").Column("EXCHANGE"), ElementsAre("6"));
}

TEST_F(Procedure, DeleteExchangeOfOneStillInUseAnswersZeroAndLeavesTheRow) {
    for (const auto* user :
         {"PORTFOLIO (SYMBOL, EXCHANGE)", "DICTIONARY (SYMBOL, EXCHANGE)", "CUSTOM_FUTURES (CF, EXCHANGE)"}) {
        CTestDatabase database;
        database.Run("INSERT INTO EXCHANGES (EXCHANGE) VALUES (5)");
        database.Run("INSERT INTO " + std::string(user) + " VALUES (1, 5)");
        EXPECT_THAT(database.Run("SELECT * FROM DELETE_EXCHANGE(5)").Column("DELETED"), ElementsAre("0")) << user;
        EXPECT_EQ("5", database.Value("SELECT EXCHANGE FROM EXCHANGES")) << user;
    }
}

TEST_F(Procedure, DeleteExchangeLeavesTheCalendarSettingAndSessionThatItNames) {
    m_Database.Run("INSERT INTO HOLIDAYS VALUES(7,'calendar')");
    m_Database.Run("INSERT INTO SETTINGS VALUES(8,1,1,1,1)");
    m_Database.Run("INSERT INTO SESSIONS VALUES(9,1,'session',0)");
    InsertExchange("5", NoZone);
    m_Database.Run("SELECT * FROM DELETE_EXCHANGE(5)");
    for (const auto* table : {"HOLIDAYS", "SETTINGS", "SESSIONS"})
        EXPECT_EQ("1", m_Database.Value("SELECT COUNT(*) FROM " + std::string(table))) << table;
}

TEST_F(Procedure, DeletesAreNotRefusedForUsersOfAnotherRow) {
    m_Database.Run("INSERT INTO DATA_FEEDS VALUES(5,'n','d','{C}',1,1,0,0,'s')");
    InsertExchange("5", NoZone);
    m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL, DATA_FEED, EXCHANGE) VALUES (1, 6, 6)");
    m_Database.Run("INSERT INTO DICTIONARY (SYMBOL, DATA_FEED, EXCHANGE) VALUES (2, NULL, NULL)");
    m_Database.Run("INSERT INTO CUSTOM_FUTURES (CF, DATA_FEED, EXCHANGE) VALUES (5, 6, 6)");
    EXPECT_THAT(m_Database.Run("SELECT * FROM DELETE_DATA_FEED(5)").Column("DELETED"), ElementsAre("1"));
    EXPECT_THAT(m_Database.Run("SELECT * FROM DELETE_EXCHANGE(5)").Column("DELETED"), ElementsAre("1"));
}

TEST_F(Procedure, DeletesAreRefusedInAReadOnlyTransactionHavingDoneNothing) {
    InsertExchange("5", NoZone);
    m_Database.Run("INSERT INTO DATA_FEEDS VALUES(5,'n','d','{C}',1,1,0,0,'s')");
    EXPECT_THROW(m_Database.Read("SELECT * FROM DELETE_EXCHANGE(5)"), CDatabaseError);
    EXPECT_THROW(m_Database.Read("SELECT * FROM DELETE_DATA_FEED(5)"), CDatabaseError);
    EXPECT_EQ("1", m_Database.Value("SELECT COUNT(*) FROM EXCHANGES"));
    EXPECT_EQ("0", m_Database.Value("SELECT DELETED FROM DATA_FEEDS"));
}

// --- SELECT_EXCHANGE

TEST_F(Procedure, SelectExchangeListsAllForZeroAndOneForAKey) {
    InsertExchange("9", NoZone);
    InsertExchange("5", NoZone);
    EXPECT_THAT(m_Database.Read("SELECT * FROM SELECT_EXCHANGE(0)").Column("EXCHANGE"), ElementsAre("5", "9"));
    EXPECT_THAT(m_Database.Read("SELECT * FROM SELECT_EXCHANGE(9)").Column("EXCHANGE_NAME"), ElementsAre("X9"));
    EXPECT_THAT(m_Database.Read("SELECT * FROM SELECT_EXCHANGE(6)").Rows, IsEmpty());
    EXPECT_THAT(m_Database.Read("SELECT * FROM SELECT_EXCHANGE(NULL)").Rows, IsEmpty());
}

TEST_F(Procedure, SelectExchangeDeliversTheKeysAndTexts) {
    InsertExchange("5", NoZone);
    const auto rows = m_Database.Read("SELECT * FROM SELECT_EXCHANGE(5)");
    EXPECT_THAT(rows.Columns, ElementsAre("EXCHANGE", "EXCHANGE_NAME", "DESCRIPTION", "HOLIDAY", "SETTING",
                                          "SESSION", "TIME_ZONE", "MAP_ID", "EXCHANGE_TIME_ZONE_INFORMATION"));
    EXPECT_THAT(rows.Rows.at(0), ElementsAre("5", "X5", "about 5", "7", "8", "9", "2", "map",
                                             "0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000"));
}

TEST_F(Procedure, SelectExchangeHasItsColumnsInType) {
    EXPECT_THAT(m_Database.ResultTypes("SELECT * FROM SELECT_EXCHANGE(0)"),
                ElementsAre("EXCHANGE INTEGER", "EXCHANGE_NAME VARCHAR(12)", "DESCRIPTION VARCHAR(255)",
                            "HOLIDAY INTEGER", "SETTING INTEGER", "SESSION INTEGER", "TIME_ZONE INTEGER",
                            "MAP_ID VARCHAR(63)", "EXCHANGE_TIME_ZONE_INFORMATION VARCHAR(128)"));
}

TEST_F(Procedure, SelectExchangePacksTheZoneInTheOrderOfTheText) {
    InsertExchange("1", "1,360,1,2,3,11,'02:03:04.0000',-60,5,4,6,'07:08:09.0000'");
    EXPECT_EQ("360,1,11,2,3,02:03:04.0000,-60,6,5,4,07:08:09.0000", Zone("1"));
}

TEST_F(Procedure, SelectExchangeGivesNoStandardMonthWithoutDaylightSaving) {
    InsertExchange("1", "0,-60,0,2,3,11,'02:00:00.0000',-60,5,4,6,'23:59:59.0000'");
    EXPECT_EQ("-60,0,0,2,3,02:00:00.0000,-60,6,5,4,23:59:59.0000", Zone("1"));
}

TEST_F(Procedure, SelectExchangeDropsFractionsOfASecond) {
    InsertExchange("1", "1,0,0,0,0,1,'02:00:00.5678',0,0,0,0,'00:00:00.9999'");
    EXPECT_EQ("0,0,1,0,0,02:00:00.0000,0,0,0,0,00:00:00.0000", Zone("1"));
}

TEST_F(Procedure, SelectExchangeTakesMissingZoneColumnsForZero) {
    m_Database.Run("INSERT INTO EXCHANGES (EXCHANGE) VALUES (1)");
    EXPECT_EQ("0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000", Zone("1"));
}

TEST_F(Procedure, SelectExchangeWritesEveryZoneThatTheColumnsHold) {
    const std::string wide = "65535,65535,65535,'23:59:59.0000'";
    InsertExchange("1", "1,-2147483648,-2147483648," + wide + ",-2147483648," + wide);
    EXPECT_EQ("-2147483648,-2147483648,65535,65535,65535,23:59:59.0000,-2147483648,65535,65535,65535,23:59:59.0000",
              Zone("1"));
}

// --- GET_AVAILABLE_SESSIONS

class AvailableSessions : public testing::Test {
protected:
    void SetUp() override {
        m_Database.Run("INSERT INTO SESSIONS VALUES(1,0,'own',0)");
        m_Database.Run("INSERT INTO SESSIONS VALUES(2,1,'exchange',1)");
        m_Database.Run("INSERT INTO SESSIONS VALUES(3,2,'template',2)");
        m_Database.Run("INSERT INTO SESSIONS VALUES(4,2,'other template',2)");
        m_Database.Run("INSERT INTO SESSIONS VALUES(5,0,'of another symbol',0)");
        m_Database.Run("INSERT INTO EXCHANGES (EXCHANGE, SESSION) VALUES (10, 2)");
        m_Database.Run("INSERT INTO EXCHANGES (EXCHANGE, SESSION) VALUES (11, 3)");
    }
    std::vector<std::string> Of(const std::string& exchange, const std::string& own, const std::string& shared) {
        m_Database.Run(
            "UPDATE OR INSERT INTO PORTFOLIO (SYMBOL, EXCHANGE, CUSTOM_SESSION, TEMPLATE_SESSION) VALUES "
            "(20, " +
            exchange + ", " + own + ", " + shared + ")");
        return m_Database.Read("SELECT * FROM GET_AVAILABLE_SESSIONS(20) ORDER BY SESSION").Column("SESSION");
    }
    CTestDatabase m_Database;
};

TEST_F(AvailableSessions, AreTheOwnTheExchangesAndAllTemplates) {
    EXPECT_THAT(Of("10", "1", "0"), ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(Of("10", "0", "0"), ElementsAre("2", "3", "4"));
}

TEST_F(AvailableSessions, ComeOnceEach) {
    EXPECT_THAT(Of("11", "3", "3"), ElementsAre("3", "4"));
    EXPECT_THAT(Of("10", "2", "4"), ElementsAre("2", "3", "4"));
}

TEST_F(AvailableSessions, IncludeTheOneThatTheRowNamesAsTemplateWhateverItsType) {
    EXPECT_THAT(Of("10", "0", "5"), ElementsAre("2", "3", "4", "5"));
    EXPECT_THAT(Of("10", "1", "5"), ElementsAre("1", "2", "3", "4", "5"));
    EXPECT_THAT(Of("10", "5", "5"), ElementsAre("2", "3", "4", "5"));
}

TEST_F(AvailableSessions, DoWithoutAMissingExchangeOrSession) {
    EXPECT_THAT(Of("99", "88", "77"), ElementsAre("3", "4"));
    EXPECT_THAT(Of("NULL", "NULL", "NULL"), ElementsAre("3", "4"));
}

TEST_F(AvailableSessions, AreNoneForAnUnknownSymbol) {
    EXPECT_THAT(m_Database.Read("SELECT * FROM GET_AVAILABLE_SESSIONS(21)").Rows, IsEmpty());
    EXPECT_THAT(m_Database.Read("SELECT * FROM GET_AVAILABLE_SESSIONS(NULL)").Rows, IsEmpty());
}

TEST_F(AvailableSessions, HaveTheColumnsOfASession) {
    EXPECT_EQ(m_Database.ResultTypes("SELECT * FROM SESSIONS"),
              m_Database.ResultTypes("SELECT * FROM GET_AVAILABLE_SESSIONS(1)"));
    Of("10", "1", "0");
    EXPECT_EQ(m_Database.Read("SELECT * FROM SESSIONS WHERE SESSION=3"),
              m_Database.Read("SELECT * FROM GET_AVAILABLE_SESSIONS(20) WHERE SESSION=3"));
}

} // namespace
} // namespace sqSchemaTest
