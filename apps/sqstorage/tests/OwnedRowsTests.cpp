// What symbols own, as the parts that read and write files are told of it.
#include "HostFixture.h"
#include "apps/sqstorage/datasets/SessionNames.h"
#include "apps/sqstorage/store/Symbols.h"
#include "platform/registry.h"

#include <gmock/gmock.h>

namespace {

using sqCli::CStore;
using sqCli::OwnedBySymbols;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// Two exchanges, 1 and 2, and a feed, 5. The first has the setting 10 and the session 11, the second 20 and 21.
class OwnedRows : public tests::HostTest {
protected:
    void SetUp() override {
        for (const wchar_t* table : {L"PORTFOLIO", L"EXCHANGES", L"DATA_FEEDS", L"SESSIONS"})
            Sql(std::wstring(L"DELETE FROM ") + table);
        Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(1,'E',10,11)");
        Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(2,'X',20,21)");
        Sql(L"INSERT INTO DATA_FEEDS (DATA_FEED,DATA_FEED_NAME,DELETED) VALUES(5,'F',0)");
        m_Store.AfterCalls([this] { ++m_Calls; });
    }

    // Its types and their keys, as in the row.
    static void Add(LONG key, const std::wstring& setting, const std::wstring& session, LONG exchange = 1) {
        Sql(L"INSERT INTO PORTFOLIO "
            L"(SYMBOL,SYMBOL_NAME,CATEGORY,DATA_FEED,EXCHANGE,SETTING_TYPE,SETTING,SESSION_TYPE,"
            L"CUSTOM_SESSION,TEMPLATE_SESSION) VALUES(" +
            Text(key) + L",'S" + Text(key) + L"',0,5," + Text(exchange) + L"," + setting + L"," + session + L")");
    }

    static sqCli::tagSymbol Symbol() {
        sqCli::tagSymbol symbol;
        symbol.Name = "N";
        symbol.Feed = 5;
        symbol.Exchange = 1;
        return symbol;
    }

    CStore m_Store;
    int m_Calls = 0;
};

TEST_F(OwnedRows, AreCountedBySymbolAndNotThoseOfExchangesOrTemplates) {
    Add(100, L"0,30", L"0,31,0");
    Add(101, L"0,30", L"0,32,0");
    Add(102, L"1,33", L"1,33,33");
    Add(103, L"2,33", L"3,33,33");
    Add(104, L"0,20", L"0,11,0", 2);
    Add(105, L"0,34", L"0,35,0");
    Add(106, L"1,0", L"2,33,35");
    Add(107, L"NULL,36", L"NULL,37,0");
    const auto owned = OwnedBySymbols(m_Store);
    EXPECT_THAT(owned.Settings, ElementsAre(Pair(30, 2), Pair(34, 1), Pair(36, 1)));
    EXPECT_THAT(owned.Sessions, ElementsAre(Pair(31, 1), Pair(32, 1), Pair(37, 1)));
}

TEST_F(OwnedRows, OfASymbolWithoutExchangeOrFeedAreItsOwn) {
    Add(100, L"0,30", L"0,31,0", 999);
    Sql(L"UPDATE PORTFOLIO SET DATA_FEED=999");
    Sql(L"INSERT INTO SESSIONS VALUES(31,0,'',2)");
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, ElementsAre(Pair(30, 1)));
    EXPECT_THAT(sqCli::NameSessions(m_Store), IsEmpty());
}

TEST_F(OwnedRows, AreReadWithoutTheSymbolsAndOnceUntilOneIsWritten) {
    Add(100, L"1,0", L"1,0,0");
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, IsEmpty());
    EXPECT_EQ(0, m_Calls);
    Add(101, L"0,30", L"1,0,0");
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, IsEmpty()) << "was asked for again";
    sqCli::InsertSymbol(m_Store, Symbol());
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, ElementsAre(Pair(30, 1)));
    Add(102, L"0,31", L"1,0,0");
    m_Calls = 0;
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, ElementsAre(Pair(30, 1)));
    EXPECT_EQ(1, m_Calls) << "the exchanges";
    sqCli::UpdateSymbol(m_Store, 100, Symbol());
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, ElementsAre(Pair(30, 1), Pair(31, 1)));
    // An exchange may take one at any time.
    Sql(L"UPDATE EXCHANGES SET SETTING=30 WHERE EXCHANGE=2");
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, ElementsAre(Pair(31, 1)));
    Sql(L"UPDATE EXCHANGES SET SETTING=31 WHERE EXCHANGE=2");
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, ElementsAre(Pair(30, 1))) << "and may give one up";
}

TEST_F(OwnedRows, ThatCannotBeReadAreARefusalOfTheStore) {
    const auto key = platform::CRegistryKey::Create(platform::ERegistryRoot::Machine, tests::CStorageHost::Key());
    const std::wstring path = key.ReadText(L"Path").value();
    key.WriteText(L"Path", path + L".gone");
    EXPECT_THROW(static_cast<void>(OwnedBySymbols(m_Store)), sqCli::CStoreRefusal);
    key.WriteText(L"Path", L"");
    EXPECT_THROW(static_cast<void>(OwnedBySymbols(m_Store)), sqCli::CStoreRefusal);
    key.WriteText(L"Path", path);
    EXPECT_THAT(OwnedBySymbols(m_Store).Settings, IsEmpty());
}

TEST_F(OwnedRows, AreNotAskedForWhereEverySessionIsAnExchanges) {
    Sql(L"INSERT INTO SESSIONS VALUES(11,1,'SE',2)");
    Sql(L"INSERT INTO SESSIONS VALUES(21,1,'SX',2)");
    EXPECT_EQ(2U, sqCli::NameSessions(m_Store).size());
    EXPECT_FALSE(m_Store.OwnedRows().IsKept());
    Sql(L"INSERT INTO SESSIONS VALUES(40,2,'T',2)");
    EXPECT_EQ(3U, sqCli::NameSessions(m_Store).size());
    EXPECT_TRUE(m_Store.OwnedRows().IsKept());
}

} // namespace
