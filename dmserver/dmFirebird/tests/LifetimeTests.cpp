#include "TestStore.h"

#include <atomic>
#include <barrier>
#include <thread>

namespace dmFirebirdTest {
namespace {

using testing::IsEmpty;
using testing::StartsWith;

class Lifetime : public CStoreTest {
protected:
    Lifetime() {
        Run(L"CREATE TABLE T(A INTEGER)");
        Run(L"EXECUTE BLOCK AS DECLARE I INTEGER=0; BEGIN WHILE (I<100) DO BEGIN INSERT INTO T VALUES(:I); I=I+1; "
            L"END END");
    }
};

TEST_F(Lifetime, CloseEndsLiveTransactionsAndWhatIsCalledLaterFails) {
    const auto reader = NewTransaction(Database());
    const auto reading = NewQuery(*reader);
    const CTable table;
    ASSERT_EQ(S_OK, Open(*reading, L"SELECT A FROM T", nullptr, table.Get()));
    EXPECT_EQ(10, Fetch(*reading, 10));
    const auto writer = NewTransaction(Database());
    const auto writing = NewQuery(*writer);
    ASSERT_EQ(S_OK, Open(*writing, L"INSERT INTO T VALUES(1000)"));
    EXPECT_EQ(S_OK, Database().Close());

    LONG count = 0;
    EXPECT_EQ(E_UNEXPECTED, reading->Fetch(&count));
    EXPECT_EQ(0, count);
    EXPECT_THAT(Error(), StartsWith(L"The database was closed and took the transaction with it"));
    EXPECT_EQ(E_UNEXPECTED, reading->Close());
    EXPECT_EQ(E_UNEXPECTED, Open(*reading, L"SELECT A FROM T"));
    EXPECT_EQ(E_UNEXPECTED, reader->Finish());
    EXPECT_EQ(E_UNEXPECTED, writer->Finish());
    EXPECT_EQ(E_UNEXPECTED, writer->Rollback());
    CComPtr<IdmDatabaseQuery> query;
    EXPECT_EQ(E_UNEXPECTED, writer->GetQuery(query.Put()));

    ASSERT_EQ(S_OK, Open(Database(), Path()));
    EXPECT_EQ(100, Number(L"SELECT COUNT(*) FROM T"));
    EXPECT_EQ(E_UNEXPECTED, writer->Finish());
}

TEST_F(Lifetime, QueryKeepsItsTransactionAndDatabase) {
    CComPtr<IdmDatabaseQuery> query;
    const CTable table;
    {
        const auto database = NewDatabase();
        ASSERT_EQ(S_OK, Create(*database, InDirectory(L"other.fdb")));
        query = NewQuery(*database);
    }
    EXPECT_EQ(S_OK, Open(*query, L"SELECT 5 AS A FROM RDB$DATABASE", nullptr, table.Get()));
    EXPECT_EQ(1, Fetch(*query));
    EXPECT_EQ(5, table.Integer(0, "A"));
}

TEST_F(Lifetime, LettingGoOfAllReleasesTheFile) {
    {
        const auto query = NewQuery(Database());
        ASSERT_EQ(S_OK, Open(*query, L"SELECT A FROM T"));
        EXPECT_EQ(S_OK, Database().Close());
    }
    const auto other = NewDatabase();
    EXPECT_EQ(S_OK, Open(*other, Path()));
}

TEST_F(Lifetime, TablesAreLetGoWithTheStatement) {
    CTable table;
    const auto references = [&] {
        table.Rows().AddRef();
        return table.Rows().Release();
    };
    const auto query = NewQuery(Database());
    const ULONG before = references();
    ASSERT_EQ(S_OK, Open(*query, L"SELECT A FROM T", nullptr, table.Get()));
    EXPECT_EQ(before + 1, references());
    EXPECT_EQ(S_OK, query->Close());
    EXPECT_EQ(before, references());
    EXPECT_EQ(E_FAIL, Open(*query, L"SELECT NONSENSE FROM T", nullptr, table.Get()));
    EXPECT_EQ(before, references());
}

TEST_F(Lifetime, LastErrorIsKeptForEachThreadAndDatabase) {
    EXPECT_EQ(E_FAIL, TryRun(L"NONSENSE"));
    const std::wstring here = Error();
    EXPECT_THAT(here, StartsWith(L"The statement is not understood"));
    std::thread([&] {
        EXPECT_THAT(Error(), IsEmpty());
        EXPECT_EQ(E_FAIL, TryRun(L"SELECT * FROM NOWHERE"));
        EXPECT_THAT(Error(), StartsWith(L"The database has no such table"));
    }).join();
    EXPECT_EQ(here, Error());
    EXPECT_THAT(LastError(*NewDatabase()), IsEmpty());
    EXPECT_EQ(1, Number(L"SELECT 1 FROM RDB$DATABASE"));
    EXPECT_EQ(here, Error());
}

class Threads : public Lifetime {
protected:
    static constexpr int Count = 4;
    static constexpr int Rounds = 50;

    template <class Body>
    static void RunTogether(Body body) {
        std::barrier start(Count);
        std::vector<std::jthread> threads;
        for (int index = 0; index < Count; ++index)
            threads.emplace_back([&, index] {
                start.arrive_and_wait();
                body(index);
            });
    }
};

TEST_F(Threads, OneDatabaseServesStatementsSideBySide) {
    Run(L"CREATE TABLE U(THREAD INTEGER, ROUND_NO INTEGER)");
    RunTogether([this](int index) {
        for (int round = 0; round < Rounds; ++round) {
            EXPECT_EQ(100, Run(L"SELECT A FROM T"));
            EXPECT_EQ(
                0, Run(L"INSERT INTO U VALUES(" + std::to_wstring(index) + L"," + std::to_wstring(round) + L")"));
            const CTable table;
            EXPECT_EQ(1, Run(L"SELECT A FROM T WHERE A=42", nullptr, &table));
            EXPECT_EQ(42, table.Integer(0, "A"));
        }
    });
    EXPECT_EQ(Count * Rounds, Number(L"SELECT COUNT(*) FROM U"));
}

TEST_F(Threads, OneTextIsNeverPreparedForTwoAtATime) {
    RunTogether([this](int) {
        for (int round = 0; round < Rounds; ++round) {
            const auto first = NewQuery(Database());
            const auto second = NewQuery(Database());
            ASSERT_EQ(S_OK, Open(*first, L"SELECT A FROM T"));
            ASSERT_EQ(S_OK, Open(*second, L"SELECT A FROM T"));
            EXPECT_EQ(7, Fetch(*first, 7));
            EXPECT_EQ(100, Fetch(*second));
            EXPECT_EQ(93, Fetch(*first));
        }
    });
}

TEST_F(Threads, CloseComesBetweenStatementsOfOthers) {
    std::atomic<int> refused = 0;
    std::barrier start(Count + 1);
    std::vector<std::jthread> threads;
    for (int index = 0; index < Count; ++index)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (;;) {
                CComPtr<IdmDatabaseTransaction> transaction;
                CComPtr<IdmDatabaseQuery> query;
                LONG count = 0;
                if (FAILED(Database().GetTransaction(transaction.Put())) ||
                    FAILED(transaction->GetQuery(query.Put())) || FAILED(Open(*query, L"SELECT A FROM T")) ||
                    FAILED(query->Fetch(&count)))
                    break;
                EXPECT_EQ(100, count);
            }
            ++refused;
        });
    start.arrive_and_wait();
    EXPECT_EQ(S_OK, Database().Close());
    threads.clear();
    EXPECT_EQ(Count, refused);
}

} // namespace
} // namespace dmFirebirdTest
