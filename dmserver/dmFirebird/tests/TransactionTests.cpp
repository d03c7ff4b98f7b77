#include "TestStore.h"

#include "../FirebirdClient.h"

#include "platform/text.h"

namespace dmFirebirdTest {
namespace {

using IDM_dmFirebird::isolationSnapshot;
using IDM_dmFirebird::isolationStatement;
using testing::StartsWith;

class Transaction : public CStoreTest {
protected:
    Transaction() { Run(L"CREATE TABLE T(A INTEGER)"); }

    // One statement in a transaction that goes on.
    static LONG RunIn(IdmDatabaseTransaction& transaction, std::wstring_view statement) {
        const auto query = NewQuery(transaction);
        EXPECT_EQ(S_OK, Open(*query, statement));
        return Fetch(*query);
    }
    static std::int64_t NumberIn(IdmDatabaseTransaction& transaction, std::wstring_view statement) {
        const auto query = NewQuery(transaction);
        const CTable table;
        EXPECT_EQ(S_OK, Open(*query, statement, nullptr, table.Get()));
        EXPECT_EQ(1, Fetch(*query));
        return table.Count() == 1 ? table.Rows().Integer(0, 0) : -1;
    }
    // Counted after the fact, so that the count's own transaction is not in it.
    std::int64_t NextTransaction() { return Number(L"SELECT MON$NEXT_TRANSACTION FROM MON$DATABASE"); }
    std::int64_t RowCount() { return Number(L"SELECT COUNT(*) FROM T"); }
};

constexpr std::wstring_view WhetherReadOnly =
    L"SELECT MON$READ_ONLY FROM MON$TRANSACTIONS WHERE MON$TRANSACTION_ID=CURRENT_TRANSACTION";
constexpr std::wstring_view WhichIsolation =
    L"SELECT MON$ISOLATION_MODE FROM MON$TRANSACTIONS WHERE MON$TRANSACTION_ID=CURRENT_TRANSACTION";
constexpr std::wstring_view WhichTimeout =
    L"SELECT MON$LOCK_TIMEOUT FROM MON$TRANSACTIONS WHERE MON$TRANSACTION_ID=CURRENT_TRANSACTION";
constexpr std::int64_t Snapshot = 1;
constexpr std::int64_t ReadCommittedRecordVersion = 2;

TEST_F(Transaction, FinishCommits) {
    const auto transaction = NewTransaction(Database());
    RunIn(*transaction, L"INSERT INTO T VALUES(1)");
    EXPECT_EQ(0, RowCount());
    EXPECT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(1, RowCount());
}

TEST_F(Transaction, LetGoWithoutFinishIsRolledBack) {
    RunIn(*NewTransaction(Database()), L"INSERT INTO T VALUES(1)");
    EXPECT_EQ(0, RowCount());
}

TEST_F(Transaction, RollbackUndoes) {
    const auto transaction = NewTransaction(Database());
    RunIn(*transaction, L"INSERT INTO T VALUES(1)");
    EXPECT_EQ(S_OK, transaction->Rollback());
    EXPECT_EQ(0, RowCount());
}

TEST_F(Transaction, NothingIsStartedBeforeTheFirstStatement) {
    const std::int64_t before = NextTransaction();
    for (int i = 0; i < 10; ++i) {
        const auto transaction = NewTransaction(Database());
        NewQuery(*transaction);
        EXPECT_EQ(S_OK, transaction->Finish());
    }
    EXPECT_EQ(before + 1, NextTransaction());
}

TEST_F(Transaction, SelectRunsReadOnlyAtReadCommitted) {
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(1, NumberIn(*transaction, WhetherReadOnly));
    EXPECT_EQ(ReadCommittedRecordVersion, NumberIn(*transaction, WhichIsolation));
}

TEST_F(Transaction, AfterAWriteReadsSeeItAndRunWhereItRan) {
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(0, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    RunIn(*transaction, L"INSERT INTO T VALUES(1)");
    EXPECT_EQ(1, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    EXPECT_EQ(0, NumberIn(*transaction, WhetherReadOnly));
    EXPECT_EQ(ReadCommittedRecordVersion, NumberIn(*transaction, WhichIsolation));
    EXPECT_EQ(10, NumberIn(*transaction, WhichTimeout));
}

TEST_F(Transaction, EachStatementSeesWhatIsCommittedWhenItRuns) {
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(0, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    Run(L"INSERT INTO T VALUES(1)");
    EXPECT_EQ(1, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
}

TEST_F(Transaction, SnapshotShowsOneStateToAllStatements) {
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(S_OK, transaction->Begin(isolationSnapshot));
    EXPECT_EQ(0, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    Run(L"INSERT INTO T VALUES(1)");
    EXPECT_EQ(0, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    EXPECT_EQ(1, NumberIn(*transaction, WhetherReadOnly));
    EXPECT_EQ(Snapshot, NumberIn(*transaction, WhichIsolation));
    EXPECT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(1, RowCount());
}

TEST_F(Transaction, SnapshotThatWritesFirstReadsItsOwnWork) {
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(S_OK, transaction->Begin(isolationSnapshot));
    RunIn(*transaction, L"INSERT INTO T VALUES(1)");
    Run(L"INSERT INTO T VALUES(2)");
    EXPECT_EQ(1, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    EXPECT_EQ(Snapshot, NumberIn(*transaction, WhichIsolation));
    EXPECT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(2, RowCount());
}

TEST_F(Transaction, SnapshotThatHasReadRefusesToWrite) {
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(S_OK, transaction->Begin(isolationSnapshot));
    EXPECT_EQ(0, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    EXPECT_EQ(E_UNEXPECTED, Open(*NewQuery(*transaction), L"INSERT INTO T VALUES(1)"));
    EXPECT_THAT(Error(), StartsWith(L"The transaction shows one unchanging state of the data and cannot write"));
    EXPECT_EQ(0, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
}

TEST_F(Transaction, BeginAfterTheFirstStatementOrWithNonsenseIsRefused) {
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(E_INVALIDARG, transaction->Begin(2));
    EXPECT_EQ(S_OK, transaction->Begin(isolationSnapshot));
    EXPECT_EQ(S_OK, transaction->Begin(isolationStatement));
    EXPECT_EQ(0, NumberIn(*transaction, L"SELECT COUNT(*) FROM T"));
    EXPECT_EQ(E_UNEXPECTED, transaction->Begin(isolationSnapshot));
    EXPECT_EQ(E_UNEXPECTED, transaction->Begin(isolationStatement));
}

TEST_F(Transaction, FinishedOneIsOver) {
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    ASSERT_EQ(S_OK, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE"));
    EXPECT_EQ(S_OK, transaction->Finish());
    LONG count = 0;
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
    EXPECT_EQ(L"The transaction is finished: ask the database for a new one.", Error());
    EXPECT_EQ(E_UNEXPECTED, query->Close());
    EXPECT_EQ(E_UNEXPECTED, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE"));
    EXPECT_EQ(E_UNEXPECTED, transaction->Finish());
    EXPECT_EQ(E_UNEXPECTED, transaction->Rollback());
    EXPECT_EQ(E_UNEXPECTED, transaction->Begin(isolationStatement));
    CComPtr<IdmDatabaseQuery> late;
    EXPECT_EQ(E_UNEXPECTED, transaction->GetQuery(late.Put()));
    EXPECT_FALSE(late);
}

TEST_F(Transaction, SeveralQueriesReadSideBySide) {
    Run(L"INSERT INTO T VALUES(1)");
    Run(L"INSERT INTO T VALUES(2)");
    const auto transaction = NewTransaction(Database());
    const auto first = NewQuery(*transaction);
    const auto second = NewQuery(*transaction);
    const CTable a;
    const CTable b;
    ASSERT_EQ(S_OK, Open(*first, L"SELECT A FROM T ORDER BY A", nullptr, a.Get()));
    ASSERT_EQ(S_OK, Open(*second, L"SELECT A FROM T ORDER BY A", nullptr, b.Get()));
    EXPECT_EQ(1, Fetch(*first, 1));
    EXPECT_EQ(2, Fetch(*second));
    EXPECT_EQ(1, Fetch(*first));
    EXPECT_EQ(2, a.Integer(1, "A"));
    EXPECT_EQ(2, b.Integer(1, "A"));
}

TEST_F(Transaction, StatementsThatEndTransactionsAreRefused) {
    for (const std::wstring_view text : {L"COMMIT", L"ROLLBACK", L"SET TRANSACTION READ ONLY"}) {
        EXPECT_EQ(E_INVALIDARG, TryRun(text)) << testing::PrintToString(std::wstring(text));
        EXPECT_THAT(Error(), StartsWith(L"A transaction is not ended or begun by a statement"));
    }
}

TEST_F(Transaction, SelectThatWritesIsRunAgainWhereItMayWrite) {
    Run(L"INSERT INTO T VALUES(1)");
    Run(L"CREATE PROCEDURE DELETE_ALL RETURNS (DELETED INTEGER) AS BEGIN DELETE FROM T; DELETED=ROW_COUNT; "
        L"SUSPEND; END");
    for (const int expected : {1, 0}) { // the second time it is known to write
        const CTable table = Select(L"SELECT * FROM DELETE_ALL");
        ASSERT_EQ(1U, table.Count());
        EXPECT_EQ(expected, table.Integer(0, "DELETED"));
    }
    EXPECT_EQ(0, RowCount());
}

TEST_F(Transaction, SelectThatWritesAfterItsFirstRowGivesEachRowOnce) {
    Run(L"CREATE PROCEDURE LATE RETURNS (N INTEGER) AS BEGIN N=1; SUSPEND; N=2; SUSPEND; INSERT INTO T VALUES(1); "
        L"N=3; "
        L"SUSPEND; END");
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    const CTable table;
    ASSERT_EQ(S_OK, Open(*query, L"SELECT N FROM LATE", nullptr, table.Get()));
    EXPECT_EQ(1, Fetch(*query, 1));
    EXPECT_EQ(2, Fetch(*query));
    EXPECT_EQ(0, Fetch(*query));
    for (ULONG row = 0; row < 3; ++row)
        EXPECT_EQ(row + 1, table.Integer(row, "N"));
    EXPECT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(1, RowCount());
}

TEST_F(Transaction, SelectThatWritesIsAllOrNothing) {
    Run(L"CREATE PROCEDURE FAILING RETURNS (N INTEGER) AS BEGIN INSERT INTO T VALUES(1); N=1; SUSPEND; N=1/0; "
        L"SUSPEND; END");
    EXPECT_EQ(E_FAIL, TryRun(L"SELECT N FROM FAILING"));
    EXPECT_EQ(0, RowCount());
}

TEST_F(Transaction, SelectThatWritesWorksAsTheFirstStatementOfASnapshotOnly) {
    Run(L"CREATE PROCEDURE ADD_ONE RETURNS (N INTEGER) AS BEGIN INSERT INTO T VALUES(1); N=1; SUSPEND; END");
    const auto first = NewTransaction(Database());
    first->Begin(isolationSnapshot);
    EXPECT_EQ(1, NumberIn(*first, L"SELECT N FROM ADD_ONE"));
    EXPECT_EQ(S_OK, first->Finish());
    const auto second = NewTransaction(Database());
    second->Begin(isolationSnapshot);
    EXPECT_EQ(1, NumberIn(*second, L"SELECT COUNT(*) FROM T"));
    EXPECT_EQ(E_UNEXPECTED, Open(*NewQuery(*second), L"SELECT N FROM ADD_ONE"));
    EXPECT_EQ(1, RowCount());
}

TEST_F(Transaction, SequenceAdvancesInAReadOnlyTransaction) {
    Run(L"CREATE SEQUENCE G");
    Run(L"CREATE PROCEDURE GENERATE_ID(STEP INTEGER) RETURNS (ID INTEGER) AS BEGIN ID=GEN_ID(G,:STEP); SUSPEND; "
        L"END");
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(1, NumberIn(*transaction, L"SELECT * FROM GENERATE_ID(1)"));
    EXPECT_EQ(2, NumberIn(*transaction, L"SELECT * FROM GENERATE_ID(1)"));
    EXPECT_EQ(1, NumberIn(*transaction, WhetherReadOnly));
}

TEST_F(Transaction, ConflictingWriterWaitsAndThenIsToldWhy) {
    Run(L"INSERT INTO T VALUES(1)");
    const auto holder = NewTransaction(Database());
    RunIn(*holder, L"UPDATE T SET A=2");
    EXPECT_EQ(E_FAIL, TryRun(L"UPDATE T SET A=3"));
    EXPECT_THAT(Error(), StartsWith(L"Another transaction has changed the same row, or is still changing it"));
    EXPECT_EQ(S_OK, holder->Finish());
    EXPECT_EQ(2, Number(L"SELECT A FROM T"));
}

// A row's old versions can go only when no transaction may still want them. What an identifier generator holds open
// for the life of the store must not be one of those that do.
class GarbageCollection : public Transaction {
protected:
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr int Updates = 5000;
#else
    static constexpr int Updates = 200000;
#endif
    // Which versions there are does not depend on when they reach the disk, but the length of the test does.
    void SwitchOffForcedWrites() {
        using namespace IDM_dmFirebird;
        Database().Close();
        CStatus status;
        const CFbPtr<Firebird::IProvider> provider(Master()->getDispatcher());
        const CFbDisposable<Firebird::IXpbBuilder> block(
            Master()->getUtilInterface()->getXpbBuilder(&status, Firebird::IXpbBuilder::DPB, nullptr, 0));
        block->insertString(&status, isc_dpb_user_name, "SYSDBA");
        block->insertInt(&status, isc_dpb_force_write, 0);
        CFbPtr<Firebird::IAttachment> attachment(provider->attachDatabase(
            &status, platform::ToUtf8(Path()).c_str(), block->getBufferLength(&status), block->getBuffer(&status)));
        GiveUp(attachment, [&](Firebird::IAttachment* handle) { handle->detach(&status); });
        ASSERT_EQ(S_OK, dmFirebirdTest::Open(Database(), Path()));
    }
    void UpdateOneRow(int times) {
        Run(L"EXECUTE BLOCK AS DECLARE I INTEGER=0; BEGIN WHILE (I<" + std::to_wstring(times) +
            L") DO BEGIN IN AUTONOMOUS TRANSACTION DO UPDATE T SET A=A+1; I=I+1; END END");
    }
    // Old versions that this connection has looked at so far.
    std::int64_t BackVersionReads() {
        return Number(L"SELECT R.MON$BACKVERSION_READS FROM MON$ATTACHMENTS A JOIN MON$RECORD_STATS R ON "
                      L"R.MON$STAT_ID=A.MON$STAT_ID WHERE A.MON$ATTACHMENT_ID=CURRENT_CONNECTION");
    }
    std::int64_t BackVersionsOfOneSelect() {
        Number(L"SELECT A FROM T"); // collects what may be collected
        const std::int64_t before = BackVersionReads();
        Number(L"SELECT A FROM T");
        return BackVersionReads() - before;
    }
};

TEST_F(GarbageCollection, IsNotHeldBackByALongLivedTransactionThatOnlyReads) {
    Run(L"CREATE SEQUENCE G");
    Run(L"CREATE PROCEDURE GENERATE_ID(STEP INTEGER) RETURNS (ID INTEGER) AS BEGIN ID=GEN_ID(G,:STEP); SUSPEND; "
        L"END");
    Run(L"INSERT INTO T VALUES(0)");
    SwitchOffForcedWrites();
    const auto generator = NewTransaction(Database());
    EXPECT_EQ(1, NumberIn(*generator, L"SELECT * FROM GENERATE_ID(1)"));
    UpdateOneRow(Updates);
    EXPECT_EQ(0, BackVersionsOfOneSelect());
    EXPECT_EQ(Updates, Number(L"SELECT A FROM T"));
    const CTable marks = Select(L"SELECT MON$NEXT_TRANSACTION-MON$OLDEST_SNAPSHOT AS KEPT FROM MON$DATABASE");
    EXPECT_LT(marks.Integer(0, "KEPT"), 10);
    EXPECT_EQ(2, NumberIn(*generator, L"SELECT * FROM GENERATE_ID(1)"));
}

TEST_F(GarbageCollection, IsHeldBackByAnOpenSnapshot) {
    Run(L"INSERT INTO T VALUES(0)");
    const auto snapshot = NewTransaction(Database());
    snapshot->Begin(isolationSnapshot);
    EXPECT_EQ(0, NumberIn(*snapshot, L"SELECT A FROM T"));
    UpdateOneRow(50);
    EXPECT_EQ(0, NumberIn(*snapshot, L"SELECT A FROM T"));
    const CTable marks = Select(L"SELECT MON$NEXT_TRANSACTION-MON$OLDEST_SNAPSHOT AS KEPT FROM MON$DATABASE");
    EXPECT_GE(marks.Integer(0, "KEPT"), 50);
    const std::int64_t before = BackVersionReads();
    EXPECT_EQ(0, NumberIn(*snapshot, L"SELECT A FROM T"));
    EXPECT_GE(BackVersionReads() - before, 1);
}

} // namespace
} // namespace dmFirebirdTest
