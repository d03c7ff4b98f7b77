#include "TestStore.h"

#include "../Connection.h"

namespace dmFirebirdTest {
namespace {

using IDM_dmFirebird::CConnection;
using IDM_dmFirebird::CFbPtr;
using IDM_dmFirebird::CPreparedStatement;
using IDM_dmFirebird::CStatementCache;
using IDM_dmFirebird::CStatus;

// The cache itself, with statements prepared on a real connection.
class StatementCache : public CStoreTest {
protected:
    StatementCache() {
        Database().Close();
        m_Connection = CConnection::Open(Path(), UserName, Password);
        static constexpr unsigned char Reading[] = {isc_tpb_version3, isc_tpb_read};
        m_Part.reset(m_Connection->Attachment().startTransaction(&m_Status, sizeof Reading, Reading));
    }
    ~StatementCache() override {
        m_Cache.Drop();
        GiveUp(m_Part, [this](Firebird::ITransaction* part) { part->commit(&m_Status); });
    }

    std::unique_ptr<CPreparedStatement> Prepare(const std::wstring& text) {
        return std::make_unique<CPreparedStatement>(m_Status, m_Connection->Attachment(), *m_Part, text,
                                                    IDM_dmFirebird::TranslateStatement(text));
    }
    void Keep(const std::wstring& text) { m_Cache.GiveBack(Prepare(text), m_Cache.Generation()); }
    static std::wstring Text(std::size_t number) {
        return L"SELECT " + std::to_wstring(number) + L" FROM RDB$DATABASE";
    }

    CStatementCache m_Cache;

private:
    std::shared_ptr<CConnection> m_Connection;
    CStatus m_Status;
    CFbPtr<Firebird::ITransaction> m_Part;
};

TEST_F(StatementCache, StatementIsLentToOneUserAtATime) {
    EXPECT_EQ(nullptr, m_Cache.Take(Text(1)));
    Keep(Text(1));
    auto statement = m_Cache.Take(Text(1));
    ASSERT_NE(nullptr, statement);
    EXPECT_EQ(Text(1), statement->Key());
    EXPECT_EQ(nullptr, m_Cache.Take(Text(1)));
    const CPreparedStatement* const same = statement.get();
    m_Cache.GiveBack(std::move(statement), m_Cache.Generation());
    EXPECT_EQ(same, m_Cache.Take(Text(1)).get());
}

TEST_F(StatementCache, WhatWasUsedLongestAgoMakesRoom) {
    for (std::size_t number = 0; number < CStatementCache::Capacity; ++number)
        Keep(Text(number));
    m_Cache.GiveBack(m_Cache.Take(Text(0)), m_Cache.Generation());
    Keep(Text(CStatementCache::Capacity));
    EXPECT_EQ(CStatementCache::Capacity, m_Cache.IdleCount());
    EXPECT_EQ(nullptr, m_Cache.Take(Text(1)));
    EXPECT_NE(nullptr, m_Cache.Take(Text(0)));
    EXPECT_NE(nullptr, m_Cache.Take(Text(CStatementCache::Capacity)));
}

TEST_F(StatementCache, OnlySelectsAndStatementsWithParametersAreKept) {
    Keep(L"UPDATE RDB$DATABASE SET RDB$DESCRIPTION='x'");
    Keep(L"EXECUTE BLOCK AS BEGIN END");
    EXPECT_EQ(0U, m_Cache.IdleCount());
    Keep(L"SELECT 1 FROM RDB$DATABASE");
    Keep(L"UPDATE RDB$DATABASE SET RDB$DESCRIPTION=?");
    Keep(L"EXECUTE BLOCK (A INTEGER=?) AS BEGIN END");
    EXPECT_EQ(3U, m_Cache.IdleCount());
}

TEST_F(StatementCache, DropLetsGoOfIdleStatementsAtOnceAndOfLentOnesOnReturn) {
    Keep(Text(1));
    auto lent = Prepare(Text(2));
    const std::uint64_t generation = m_Cache.Generation();
    m_Cache.Drop();
    EXPECT_EQ(0U, m_Cache.IdleCount());
    m_Cache.GiveBack(std::move(lent), generation);
    EXPECT_EQ(0U, m_Cache.IdleCount());
}

TEST_F(StatementCache, OneTextMayBeKeptTwice) {
    Keep(Text(1));
    Keep(Text(1));
    EXPECT_EQ(2U, m_Cache.IdleCount());
    const auto first = m_Cache.Take(Text(1));
    const auto second = m_Cache.Take(Text(1));
    EXPECT_NE(nullptr, first);
    EXPECT_NE(nullptr, second);
}

// The same, seen through the interfaces.
class CachedStatements : public CStoreTest {
protected:
    // Statements prepared on this connection that are not running now.
    std::int64_t PreparedCount(std::wstring_view text) {
        return Number(L"SELECT COUNT(*) FROM MON$STATEMENTS WHERE MON$ATTACHMENT_ID=CURRENT_CONNECTION AND "
                      L"CAST(MON$SQL_TEXT AS VARCHAR(200))='" +
                      std::wstring(text) + L"'");
    }
};

TEST_F(CachedStatements, SelectIsPreparedOnce) {
    for (int i = 0; i < 5; ++i)
        Number(L"SELECT 123 FROM RDB$DATABASE");
    EXPECT_EQ(1, PreparedCount(L"SELECT 123 FROM RDB$DATABASE"));
}

TEST_F(CachedStatements, WrittenOutStatementIsNotKept) {
    Run(L"CREATE TABLE T(A INTEGER)");
    Run(L"INSERT INTO T VALUES(1)");
    EXPECT_EQ(0, PreparedCount(L"INSERT INTO T VALUES(1)"));
}

TEST_F(CachedStatements, DoNotStandInTheWayOfTheDefinition) {
    Run(L"CREATE TABLE T(A INTEGER)");
    const CTable keys = [] {
        CTable table({{"P", EColumnType::Long}});
        table.Add({1});
        return table;
    }();
    for (int round = 0; round < 3; ++round) {
        EXPECT_THAT(Select(L"SELECT * FROM T").ColumnNames(), testing::SizeIs(static_cast<std::size_t>(round + 1)));
        Run(L"SELECT A FROM T WHERE A=?", &keys);
        Run(L"ALTER TABLE T ADD B" + std::to_wstring(round) + L" INTEGER");
    }
    Run(L"DROP TABLE T");
    EXPECT_EQ(E_FAIL, TryRun(L"SELECT * FROM T"));
    Run(L"CREATE TABLE T(C INTEGER)");
    EXPECT_THAT(Select(L"SELECT * FROM T").ColumnNames(), testing::ElementsAre("C"));
}

TEST_F(CachedStatements, FailedStatementIsPreparedAnew) {
    Run(L"CREATE TABLE T(A INTEGER NOT NULL PRIMARY KEY)");
    CTable table({{"P", EColumnType::Long}});
    table.Add({1});
    EXPECT_EQ(S_OK, TryRun(L"INSERT INTO T VALUES(?)", &table));
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T VALUES(?)", &table));
    EXPECT_EQ(0, PreparedCount(L"INSERT INTO T VALUES(?)"));
    Run(L"DELETE FROM T");
    EXPECT_EQ(S_OK, TryRun(L"INSERT INTO T VALUES(?)", &table));
}

} // namespace
} // namespace dmFirebirdTest
