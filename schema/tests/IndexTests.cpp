#include "StatementTexts.h"
#include "TestDatabase.h"
#include "schema/interface/Schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqSchemaTest {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

// Plans are looked at twice: in a fresh database, whose index statistics say nothing, and in one that was filled.
class Index : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam())
            Fill();
    }
    void Fill();

    void ExpectIndex(const std::string& sql, const std::string& index) {
        EXPECT_THAT(m_Database.Plan(sql), HasSubstr(index)) << sql;
    }

    CTestDatabase m_Database;
};

void Index::Fill() {
    m_Database.Run("EXECUTE BLOCK AS DECLARE I INTEGER = 0; BEGIN "
                   "WHILE (I < 5) DO BEGIN I = I + 1; "
                   "INSERT INTO DATA_FEEDS VALUES(:I,'f'||:I,'d','{'||:I||'}',1,1,0,0,'s'); END "
                   "I = 0; WHILE (I < 40) DO BEGIN I = I + 1; "
                   "INSERT INTO EXCHANGES (EXCHANGE, EXCHANGE_NAME) VALUES (:I, 'E'||:I); "
                   "INSERT INTO SETTINGS VALUES(:I,100,1,1,1); END "
                   "I = 0; WHILE (I < 500) DO BEGIN I = I + 1; "
                   "INSERT INTO SESSIONS VALUES(:I,IIF(MOD(:I,50)=0,2,0),'s'||:I,0); "
                   "INSERT INTO SESSION_DETAILS VALUES(:I,1,0,1,0,0,0,0); "
                   "INSERT INTO HOLIDAY_DETAILS VALUES(MOD(:I,20),'h',DATE '2015-01-01'+:I,NULL); "
                   "INSERT INTO ASC_MAP (ID, SYMBOL) VALUES (:I, :I); "
                   "INSERT INTO ASC_TEMPLATES VALUES(:I,1,1,'x'); "
                   "INSERT INTO CUSTOM_FUTURES VALUES(:I,'c'||:I,'R','C','d',18,MOD(:I,5)+1,MOD(:I,40)+1,1,0,"
                   "MOD(:I,3),0,MOD(:I,10),0); END END");
    for (const std::string table : {"PORTFOLIO", "DICTIONARY"})
        m_Database.Run("EXECUTE BLOCK AS DECLARE I INTEGER = 0; BEGIN WHILE (I < 5000) DO BEGIN I = I + 1; "
                       "INSERT INTO " +
                       table +
                       " VALUES(:I,'S'||:I,'R','about '||:I,'',MOD(:I,3),MOD(:I,5)+1,MOD(:I,40)+1,1,0,MOD(:I,3),0,"
                       "MOD(:I,100),0,0,0,0,0,NULL,0,0,NULL,NULL); END END");
    m_Database.Run(sqSchema::RefreshStatisticsStatement);
    m_Database.Reconnect();
}

INSTANTIATE_TEST_SUITE_P(InFreshAndFilledDatabase, Index, testing::Bool(),
                         [](const auto& info) { return std::string(info.param ? "Filled" : "Fresh"); });

TEST_P(Index, ServesTheIdentityOfASymbol) {
    for (const std::string table : {"PORTFOLIO", "DICTIONARY"})
        ExpectIndex("SELECT SYMBOL FROM " + table +
                        " WHERE SYMBOL_NAME='ES' AND CATEGORY=1 AND EXCHANGE=2 AND DATA_FEED=3",
                    table + "_IDENTITY");
}

TEST_P(Index, ServesExactNamesAndTheirOrder) {
    ExpectIndex("SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=1 AND SYMBOL_NAME='ES'", "PORTFOLIO_IDENTITY");
    ExpectIndex(std::string(WholePortfolio), "ORDER PORTFOLIO_IDENTITY");
    ExpectIndex("SELECT CF FROM CUSTOM_FUTURES ORDER BY SYMBOL_NAME", "ORDER CUSTOM_FUTURES_NAME");
}

TEST_P(Index, ServesNamesWithoutRegardToCase) {
    ExpectIndex("SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=1 AND UPPER(SYMBOL_NAME)=UPPER('es')",
                "PORTFOLIO_UPPER_NAME");
    ExpectIndex("SELECT FIRST(1) CF FROM CUSTOM_FUTURES WHERE DATA_FEED=1 AND UPPER(SYMBOL_NAME)=UPPER('es')",
                "CUSTOM_FUTURES_UPPER_NAME");
}

TEST_P(Index, ServesPrefixesOfNamesAndDescriptionsInTheJoin) {
    for (const std::string table : {"PORTFOLIO", "DICTIONARY"}) {
        const auto join = OnTable(FullSymbolHead, table) + std::string(SymbolJoin);
        ExpectIndex(join + " AND UPPER(P.SYMBOL_NAME) LIKE 'ES%'", table + "_UPPER_NAME");
        ExpectIndex(join + " AND UPPER(P.DESCRIPTION) STARTING WITH 'AB'", table + "_UPPER_DESCRIPTION");
        ExpectIndex(join + " AND P.SYMBOL=5", table + "_KEY");
    }
}

TEST_P(Index, ServesDescriptionsOfAFeed) {
    ExpectIndex("SELECT SYMBOL,SYMBOL_NAME FROM PORTFOLIO WHERE DATA_FEED=1 AND DESCRIPTION='d'",
                "PORTFOLIO_FEED_DESCRIPTION");
}

TEST_P(Index, ServesTheGuardsOfDeletes) {
    ExpectIndex("SELECT 1 FROM PORTFOLIO WHERE DATA_FEED=1", "PORTFOLIO_FEED_DESCRIPTION");
    ExpectIndex("SELECT 1 FROM PORTFOLIO WHERE EXCHANGE=1", "PORTFOLIO_EXCHANGE");
    ExpectIndex("SELECT 1 FROM DICTIONARY WHERE DATA_FEED=1", "DICTIONARY_FEED_DESCRIPTION");
    ExpectIndex("SELECT 1 FROM DICTIONARY WHERE EXCHANGE=1", "DICTIONARY_EXCHANGE");
    ExpectIndex("SELECT 1 FROM CUSTOM_FUTURES WHERE DATA_FEED=1", "CUSTOM_FUTURES_DATA_FEED");
    ExpectIndex("SELECT 1 FROM CUSTOM_FUTURES WHERE EXCHANGE=1", "CUSTOM_FUTURES_EXCHANGE");
    ExpectIndex("SELECT SYMBOL FROM PORTFOLIO WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=1",
                "PORTFOLIO_TEMPLATE_SESSION");
    ExpectIndex("SELECT CF FROM CUSTOM_FUTURES WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=1",
                "CUSTOM_FUTURES_TEMPLATE_SESSION");
}

TEST_P(Index, ServesReferenceDataByKey) {
    ExpectIndex("SELECT * FROM HOLIDAY_DETAILS WHERE HOLIDAY=1", "HOLIDAY_DETAILS_HOLIDAY");
    ExpectIndex("SELECT * FROM SESSION_DETAILS WHERE SESSION=1", "SESSION_DETAILS_SESSION");
    ExpectIndex("SELECT SESSION FROM SESSIONS WHERE SESSION_TYPE=2 AND UPPER(SESSION_NAME)=UPPER('abc')",
                "SESSIONS_TYPE");
    ExpectIndex("SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{0}' AND DELETED=1", "DATA_FEEDS_CLSID");
    ExpectIndex("SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='CME'", "EXCHANGES_NAME");
    ExpectIndex("SELECT ID FROM ASC_MAP WHERE SYMBOL=1", "ASC_MAP_SYMBOL");
    ExpectIndex("DELETE FROM ASC_TEMPLATES WHERE ID=1", "ASC_TEMPLATES_ID");
    ExpectIndex("SELECT * FROM ASC_MAP ORDER BY ID", "ORDER ASC_MAP_KEY");
}

} // namespace
} // namespace sqSchemaTest
