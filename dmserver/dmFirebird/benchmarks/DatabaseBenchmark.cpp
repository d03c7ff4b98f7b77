// What the wrapper costs over the engine's bare calls for the same work. Both sides are measured in turn, so that
// the counters can be compared whatever else the machine does:
//
//   bare_us, ours_us   the time of one operation, in microseconds: the shortest seen, the one that others disturbed
//   least added_us, ratio    their difference and quotient
#include "../FirebirdClient.h"

#include "dmserver/dmFirebird/interface/Database.h"
#include "dmserver/dmudfcom/interface/TableRows.h"
#include "platform/clock.h"
#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/text.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

using namespace IDM_dmFirebird;
using platform::CBstr;
using platform::CComPtr;

constexpr int Rows = 100000;
constexpr unsigned Dialect = 3;
constexpr unsigned char Reading[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_read_committed, isc_tpb_rec_version};
constexpr unsigned char Writing[] = {isc_tpb_version3, isc_tpb_write, isc_tpb_read_committed, isc_tpb_rec_version,
                                     isc_tpb_wait};

constexpr std::wstring_view Table =
    L"CREATE TABLE PORTFOLIO(SYMBOL INTEGER NOT NULL PRIMARY KEY, SYMBOL_NAME VARCHAR(31), SYMBOL_ROOT "
    L"VARCHAR(31), "
    L"DESCRIPTION VARCHAR(63), CUSIP VARCHAR(12), CATEGORY SMALLINT, DATA_FEED INTEGER, EXCHANGE INTEGER, "
    L"SETTING_TYPE "
    L"SMALLINT, SETTING INTEGER, SESSION_TYPE SMALLINT, CUSTOM_SESSION INTEGER, TEMPLATE_SESSION INTEGER, "
    L"CONTRACT_MONTH "
    L"SMALLINT, CONTRACT_YEAR SMALLINT, STRIKE_PRICE DOUBLE PRECISION, CALL_PUT SMALLINT, MARGIN INTEGER, "
    L"EXPIRATION_DATE "
    L"DATE, EXPIRED SMALLINT, EXPIRATION_RULE SMALLINT, FIRST_NOTICE_DATE DATE, DELIVERY DATE)";

std::wstring FillStatement() {
    return L"EXECUTE BLOCK AS DECLARE I INTEGER=0; BEGIN WHILE (I<" + std::to_wstring(Rows) +
           L") DO BEGIN INSERT INTO PORTFOLIO VALUES(:I,'SYM'||:I,'SYM','The description of symbol "
           L"'||:I,'CUSIP',3,1,"
           L"MOD(:I,20),1,MOD(:I,50),1,0,0,MOD(:I,12)+1,2026,1250.5,0,500,'20.03.2026',0,1,'19.03.2026','21.03."
           L"2026'); "
           L"I=I+1; END END";
}

std::wstring InsertStatement(int key) {
    return L"INSERT INTO PORTFOLIO VALUES(" + std::to_wstring(key) +
           L",'SYMBOL','SYM','The "
           L"description','CUSIP',3,1,2,1,4,1,0,0,3,2026,1250.5,0,500,'20.03.2026',0,1,'19.03.2026',"
           L"'21.03.2026')";
}

void Check(HRESULT status, IdmDatabase& database) {
    if (status == S_OK)
        return;
    CBstr text;
    database.get_LastError(text.Put());
    throw std::runtime_error(platform::ToUtf8(text.View()));
}

// The wrapper's side: what a request of the storage does.
class CWrapper {
public:
    explicit CWrapper(const std::wstring& path) {
        if (FAILED(platform::CreateInstance(CLSID_dmDatabase, m_Database)))
            throw std::runtime_error("no database object");
        Check(m_Database->Create(CBstr(path).Get(), CBstr(L"SYSDBA").Get(), nullptr), *m_Database);
        Run(Table, nullptr);
        Run(FillStatement(), nullptr);
    }

    LONG Run(std::wstring_view statement, IDispatch* result) {
        const CBstr text(statement);
        CComPtr<IdmDatabaseTransaction> transaction;
        Check(m_Database->GetTransaction(transaction.Put()), *m_Database);
        CComPtr<IdmDatabaseQuery> query;
        Check(transaction->GetQuery(query.Put()), *m_Database);
        Check(query->Open(text.Get(), nullptr, result), *m_Database);
        LONG count = 0;
        Check(query->Fetch(&count), *m_Database);
        Check(query->Close(), *m_Database);
        Check(transaction->Finish(), *m_Database);
        return count;
    }

private:
    CComPtr<IdmDatabase> m_Database;
};

// The engine's bare calls, with the statement prepared once where the wrapper does so too.
class CBare {
public:
    explicit CBare(const std::wstring& path) {
        const CFbPtr<Firebird::IProvider> provider(Master()->getDispatcher());
        const CFbDisposable<Firebird::IXpbBuilder> block(
            Master()->getUtilInterface()->getXpbBuilder(&m_Status, Firebird::IXpbBuilder::DPB, nullptr, 0));
        block->insertString(&m_Status, isc_dpb_lc_ctype, "UTF8");
        block->insertString(&m_Status, isc_dpb_user_name, "SYSDBA");
        m_Attachment.reset(provider->attachDatabase(&m_Status, platform::ToUtf8(path).c_str(),
                                                    block->getBufferLength(&m_Status),
                                                    block->getBuffer(&m_Status)));
    }
    ~CBare() {
        m_Statement.reset();
        GiveUp(m_Attachment, [this](Firebird::IAttachment* attachment) { attachment->detach(&m_Status); });
    }

    void Prepare(const std::string& statement) {
        auto transaction = Start(Reading);
        m_Statement.reset(m_Attachment->prepare(&m_Status, transaction.get(),
                                                static_cast<unsigned>(statement.size()), statement.data(), Dialect,
                                                Firebird::IStatement::PREPARE_PREFETCH_METADATA));
        m_Metadata.reset(m_Statement->getOutputMetadata(&m_Status));
        m_Row.resize(m_Metadata->getMessageLength(&m_Status));
        Commit(transaction);
    }
    int Select() {
        auto transaction = Start(Reading);
        CFbPtr<Firebird::IResultSet> rows(
            m_Statement->openCursor(&m_Status, transaction.get(), nullptr, nullptr, m_Metadata.get(), 0));
        int count = 0;
        while (rows->fetchNext(&m_Status, m_Row.data()) == Firebird::IStatus::RESULT_OK)
            ++count;
        GiveUp(rows, [this](Firebird::IResultSet* cursor) { cursor->close(&m_Status); });
        Commit(transaction);
        return count;
    }
    void Execute(const std::string& statement) {
        auto transaction = Start(Writing);
        m_Attachment->execute(&m_Status, transaction.get(), static_cast<unsigned>(statement.size()),
                              statement.data(), Dialect, nullptr, nullptr, nullptr, nullptr);
        Commit(transaction);
    }

private:
    CFbPtr<Firebird::ITransaction> Start(std::span<const unsigned char> block) {
        return CFbPtr<Firebird::ITransaction>(
            m_Attachment->startTransaction(&m_Status, static_cast<unsigned>(block.size()), block.data()));
    }
    void Commit(CFbPtr<Firebird::ITransaction>& transaction) {
        GiveUp(transaction, [this](Firebird::ITransaction* part) { part->commit(&m_Status); });
    }

    CStatus m_Status;
    CFbPtr<Firebird::IAttachment> m_Attachment;
    CFbPtr<Firebird::IStatement> m_Statement;
    CFbPtr<Firebird::IMessageMetadata> m_Metadata;
    std::vector<unsigned char> m_Row;
};

class CResultTable {
public:
    CResultTable() {
        if (FAILED(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, m_Table)))
            throw std::runtime_error("no table object");
    }
    IDispatch* Get() const { return m_Table.Get(); }
    // Keeps the fields.
    void Clear() { m_Table->Clear(); }

private:
    CComPtr<IDM_dmudfcom::IdmTable> m_Table;
};

struct tagSides {
    tagSides() : Wrapper(Path), Bare(Path) {}
    platform::CTemporaryDirectory Directory;
    std::wstring Path = Directory.Name() + L"/bench.fdb";
    CWrapper Wrapper;
    CBare Bare;
};

tagSides& Sides() {
    static tagSides sides;
    return sides;
}

// The times of one side.
class CTimes {
public:
    void Run(const std::function<void()>& work) {
        const std::clock_t cpu = std::clock();
        const double start = platform::MillisecondClock();
        work();
        m_Last = (platform::MillisecondClock() - start) * 1000;
        m_Cpu += static_cast<double>(std::clock() - cpu);
        m_Shortest = std::min(m_Shortest, m_Last);
    }
    double Last() const { return m_Last; } // microseconds
    double Shortest() const { return m_Shortest; }
    double Cpu() const { return m_Cpu; } // ticks

private:
    double m_Last = 0;
    double m_Shortest = std::numeric_limits<double>::infinity();
    double m_Cpu = 0;
};

// Which side goes first changes from round to round, so that none profits from the other's warm caches.
void Compare(benchmark::State& state, const std::function<void()>& bare, const std::function<void()>& ours) {
    bare();
    ours();
    CTimes bareTimes;
    CTimes ourTimes;
    bool bareFirst = false;
    for (auto _ : state) {
        bareFirst = !bareFirst;
        if (bareFirst)
            bareTimes.Run(bare);
        ourTimes.Run(ours);
        if (!bareFirst)
            bareTimes.Run(bare);
        state.SetIterationTime(ourTimes.Last() / 1e6);
    }
    state.counters["bare_us"] = bareTimes.Shortest();
    state.counters["ours_us"] = ourTimes.Shortest();
    state.counters["added_us"] = ourTimes.Shortest() - bareTimes.Shortest();
    state.counters["ratio"] = ourTimes.Shortest() / bareTimes.Shortest();
    state.counters["cpu_ratio"] = ourTimes.Cpu() / bareTimes.Cpu();
}

void PointSelect(benchmark::State& state) {
    CResultTable table;
    Sides().Bare.Prepare("SELECT * FROM PORTFOLIO WHERE SYMBOL=4711");
    Compare(
        state, [] { Sides().Bare.Select(); },
        [&] {
            table.Clear();
            Sides().Wrapper.Run(L"SELECT * FROM PORTFOLIO WHERE SYMBOL=4711", table.Get());
        });
}
BENCHMARK(PointSelect)->Iterations(20000)->UseManualTime()->Unit(benchmark::kMicrosecond);

void NarrowPointSelect(benchmark::State& state) {
    CResultTable table;
    Sides().Bare.Prepare("SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL=4711");
    Compare(
        state, [] { Sides().Bare.Select(); },
        [&] {
            table.Clear();
            Sides().Wrapper.Run(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL=4711", table.Get());
        });
}
BENCHMARK(NarrowPointSelect)->Iterations(20000)->UseManualTime()->Unit(benchmark::kMicrosecond);

void Insert(benchmark::State& state) {
    int key = Rows;
    Compare(
        state, [&] { Sides().Bare.Execute(platform::ToUtf8(InsertStatement(key++))); },
        [&] { Sides().Wrapper.Run(InsertStatement(key++), nullptr); });
    Sides().Bare.Execute("DELETE FROM PORTFOLIO WHERE SYMBOL>=" + std::to_string(Rows));
}
BENCHMARK(Insert)->Iterations(300)->UseManualTime()->Unit(benchmark::kMicrosecond);

void FetchWholeTable(benchmark::State& state) {
    Sides().Bare.Prepare("SELECT * FROM PORTFOLIO");
    Compare(
        state, [] { Sides().Bare.Select(); },
        [] {
            CResultTable table;
            Sides().Wrapper.Run(L"SELECT * FROM PORTFOLIO", table.Get());
        });
}
BENCHMARK(FetchWholeTable)->Iterations(12)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace

int main(int count, char** arguments) {
    // Outlives the databases, which keep lock files in it.
    static const platform::CTemporaryDirectory state;
    platform::SetEnvironment(L"XDG_RUNTIME_DIR", std::nullopt);
    platform::SetEnvironment(L"SQSTORAGE_STATE_DIR", state.Name());
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
