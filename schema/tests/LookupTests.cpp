#include "StatementTexts.h"
#include "TestDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqSchemaTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Two exchanges, two feeds and five rows in the table under test: three whole ones, one whose exchange is missing
// and one whose feed is.
class Lookup : public testing::Test {
protected:
    void SetUp() override {
        m_Database.Run("INSERT INTO DATA_FEEDS VALUES(5,'Feed','d','{C}',1,1,0,0,'s')");
        m_Database.Run("INSERT INTO DATA_FEEDS VALUES(6,'feed','d','{D}',1,1,0,1,'s')");
        m_Database.Run("INSERT INTO EXCHANGES (EXCHANGE, EXCHANGE_NAME) VALUES (10, 'CME')");
        m_Database.Run("INSERT INTO EXCHANGES (EXCHANGE, EXCHANGE_NAME) VALUES (11, 'cme')");
    }
    std::vector<std::string> Column(const std::string& sql, std::string_view column) {
        return m_Database.Read(sql).Column(column);
    }
    CTestDatabase m_Database;
};

class SymbolJoinTest : public Lookup, public testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        Lookup::SetUp();
        Insert("1", "ESH15", "S&P 500", "1", "5", "10");
        Insert("2", "esm15", "s&p mini", "2", "6", "11");
        Insert("3", "NQH15", "Nasdaq", "1", "5", "11");
        Insert("4", "ESU15", "S&P without exchange", "1", "5", "99");
        Insert("5", "ESZ15", "S&P without feed", "1", "99", "10");
    }
    void Insert(const std::string& key, const std::string& name, const std::string& description,
                const std::string& category, const std::string& feed, const std::string& exchange) {
        m_Database.Run("INSERT INTO " + GetParam() + " VALUES(" + key + ",'" + name + "','ES','" + description +
                       "',''," + category + "," + feed + "," + exchange +
                       ",1,0,1,0,0,3,2015,1250.250000,2,9,'20.03.2015',0,4,'01.01.1900','21.03.2015')");
    }
    // The keys that a form of the join finds with this further condition.
    std::vector<std::string> Keys(std::string_view head, const std::string& condition = "") {
        return Column(OnTable(head, GetParam()) + std::string(SymbolJoin) + condition + " ORDER BY 1", "SYMBOL");
    }
};

INSTANTIATE_TEST_SUITE_P(On, SymbolJoinTest, testing::Values("PORTFOLIO", "DICTIONARY"),
                         [](const auto& info) { return info.param; });

TEST_P(SymbolJoinTest, DropsSymbolsWhoseExchangeOrFeedIsMissing) {
    EXPECT_THAT(Keys(FullSymbolHead), ElementsAre("1", "2", "3"));
    EXPECT_THAT(Keys(ShortSymbolHead), ElementsAre("1", "2", "3"));
    EXPECT_THAT(Keys(FullSymbolHead, " AND P.SYMBOL=4"), IsEmpty());
    EXPECT_THAT(Keys(FullSymbolHead, " AND P.SYMBOL=5"), IsEmpty());
    m_Database.Run("DELETE FROM EXCHANGES WHERE EXCHANGE=11");
    EXPECT_THAT(Keys(FullSymbolHead), ElementsAre("1"));
}

TEST_P(SymbolJoinTest, KeepsSymbolsOfADeletedFeed) {
    m_Database.Run("UPDATE DATA_FEEDS SET DELETED=1");
    EXPECT_THAT(Keys(FullSymbolHead), ElementsAre("1", "2", "3"));
}

TEST_P(SymbolJoinTest, FindsPrefixesWithoutRegardToCase) {
    for (const auto head : {FullSymbolHead, ShortSymbolHead}) {
        EXPECT_THAT(Keys(head, " AND UPPER(P.SYMBOL_NAME) LIKE 'ES%'"), ElementsAre("1", "2"));
        EXPECT_THAT(Keys(head, " AND UPPER(P.DESCRIPTION) STARTING WITH 'S&P'"), ElementsAre("1", "2"));
        EXPECT_THAT(Keys(head, " AND UPPER(P.SYMBOL_NAME) LIKE '%'"), ElementsAre("1", "2", "3"));
        EXPECT_THAT(Keys(head, " AND UPPER(P.SYMBOL_NAME) LIKE 'SH%'"), IsEmpty());
    }
}

TEST_P(SymbolJoinTest, NarrowsByCategoryExchangeAndFeed) {
    EXPECT_THAT(Keys(FullSymbolHead, " AND P.CATEGORY=1"), ElementsAre("1", "3"));
    EXPECT_THAT(Keys(FullSymbolHead, " AND P.EXCHANGE=11"), ElementsAre("2", "3"));
    EXPECT_THAT(Keys(FullSymbolHead, " AND P.DATA_FEED=5"), ElementsAre("1", "3"));
    EXPECT_THAT(Keys(FullSymbolHead,
                     " AND UPPER(P.SYMBOL_NAME) LIKE 'ES%' AND P.CATEGORY=1 AND P.EXCHANGE=10 AND P.DATA_FEED=5"),
                ElementsAre("1"));
}

TEST_P(SymbolJoinTest, DeliversTheRowWithTheNamesOfItsExchangeAndFeed) {
    const auto rows =
        m_Database.Read(OnTable(FullSymbolHead, GetParam()) + std::string(SymbolJoin) + " AND P.SYMBOL=2");
    ASSERT_EQ(1u, rows.Rows.size());
    EXPECT_THAT(rows.Rows[0], ElementsAre("2", "esm15", "ES", "s&p mini", "", "2", "6", "feed", "11", "1", "0", "1",
                                          "0", "0", "3", "2015", "1250.2500", "1250.2500", "2", "9", "2015-03-20",
                                          "0", "4", "1900-01-01", "2015-03-21", "cme"));
    const auto brief =
        m_Database.Read(OnTable(ShortSymbolHead, GetParam()) + std::string(SymbolJoin) + " AND P.SYMBOL=2");
    ASSERT_EQ(1u, brief.Rows.size());
    EXPECT_THAT(brief.Rows[0],
                ElementsAre("2", "esm15", "2", "s&p mini", "1250.2500", "1250.2500", "2", "2015-03-20", "cme"));
}

TEST_F(Lookup, JoinOfCustomFuturesDropsThoseWhoseExchangeOrFeedIsMissing) {
    m_Database.Run("INSERT INTO CUSTOM_FUTURES VALUES(1,'ES-1','ES','C1','first',18,5,10,1,0,1,0,0,9)");
    m_Database.Run("INSERT INTO CUSTOM_FUTURES VALUES(2,'ES-2','es','C2','second',18,6,11,1,0,1,0,0,9)");
    m_Database.Run("INSERT INTO CUSTOM_FUTURES VALUES(3,'ES-3','ES','C3','third',18,5,99,1,0,1,0,0,9)");
    m_Database.Run("INSERT INTO CUSTOM_FUTURES VALUES(4,'ES-4','ES','C4','fourth',18,99,10,1,0,1,0,0,9)");
    const auto join = std::string(CustomFutureHead) + std::string(SymbolJoin);
    EXPECT_THAT(Column(join + " ORDER BY 1", "CF"), ElementsAre("1", "2"));
    EXPECT_THAT(Column(join + " AND UPPER(P.SYMBOL_ROOT)=UPPER('Es') ORDER BY 1", "CF"), ElementsAre("1", "2"));
    EXPECT_THAT(m_Database.Read(join + " AND P.CF=2").Rows.at(0),
                ElementsAre("2", "ES-2", "es", "C2", "second", "18", "6", "feed", "11", "1", "0", "1", "0", "0",
                            "9", "cme"));
}

TEST_F(Lookup, OfAnExchangeByNameIsExact) {
    const auto keys = [this](const std::string& name) {
        return Column("SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='" + name + "'", "EXCHANGE");
    };
    EXPECT_THAT(keys("CME"), ElementsAre("10"));
    EXPECT_THAT(keys("cme"), ElementsAre("11"));
    for (const auto* other : {"Cme", "CM", "CMEX", "CM_", "CM%", " CME", ""})
        EXPECT_THAT(keys(other), IsEmpty()) << other;
}

TEST_F(Lookup, OfAFeedByNameIsExactAndPassesDeletedOnesOver) {
    const auto keys = [this](const std::string& name) {
        return Column("SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='" + name + "' AND DELETED=0",
                      "DATA_FEED");
    };
    EXPECT_THAT(keys("Feed"), ElementsAre("5"));
    EXPECT_THAT(keys("feed"), ElementsAre("6"));
    for (const auto* other : {"FEED", "Fee", "Feeds", "Fee_", "Fe%", " Feed", ""})
        EXPECT_THAT(keys(other), IsEmpty()) << other;
    m_Database.Run("UPDATE DATA_FEEDS SET DELETED=1 WHERE DATA_FEED=5");
    EXPECT_THAT(keys("Feed"), IsEmpty());
}

TEST_F(Lookup, OfASymbolByNameIsExact) {
    for (const std::string row : {"(1,'ES',1,5,10)", "(2,'es',1,5,10)", "(3,'ES',1,6,10)", "(4,'ES',1,5,11)"})
        m_Database.Run("INSERT INTO PORTFOLIO (SYMBOL,SYMBOL_NAME,CATEGORY,DATA_FEED,EXCHANGE) VALUES " + row);
    EXPECT_THAT(Column("SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='ES' AND CATEGORY=1 AND EXCHANGE=10 AND "
                       "DATA_FEED=5",
                       "SYMBOL"),
                ElementsAre("1"));
    EXPECT_THAT(Column("SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=5 AND SYMBOL_NAME='es'", "SYMBOL"),
                ElementsAre("2"));
    EXPECT_THAT(Column("SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=5 AND SYMBOL_NAME='Es'", "SYMBOL"), IsEmpty());
}

} // namespace
} // namespace sqSchemaTest
