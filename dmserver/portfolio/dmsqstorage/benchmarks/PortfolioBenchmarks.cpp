// The selection of the portfolio and the cursors over it, against the engine's own object interface in the same
// run, at 10,000, 100,000 and 1,000,000 symbols. What they have to reach:
//
//     whole portfolio     at most 1.3 times the bare fetch of the rows of its six statements,
//                         10 times faster than one GET_SYMBOL_INFO for each symbol,
//                         at most 1.2 times the cost per symbol at 1,000,000 of that at 10,000,
//                         at most 400 bytes a symbol in the filled table
//     first batch         1,000 symbols of a cursor: at most 1.05 times the bare ones
//
// --markdown prints the table of docs/performance.md. --scattered has no two symbols of a root together in the
// file, which is the worst for a reading by name.
#include "Flags.h"
#include "PortfolioStore.h"
#include "dmserver/dmudfcom/interface/TableRows.h"
#include "platform/clock.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <firebird/Interface.h>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace bench;
using Firebird::IMessageMetadata;
using Firebird::IResultSet;
using Firebird::IStatement;
using Firebird::ITransaction;
using IDM_dmudfcom::ITableRows;
using tests::CComPtr;
using tests::NewRequest;
using tests::NewTable;
using Status = Firebird::ThrowStatusWrapper;

constexpr std::array PortfolioStatements{
    "SELECT EXCHANGE, EXCHANGE_NAME, SETTING, SESSION, USE_DAYLIGHT, BIAS, STANDARD_BIAS, STANDARD_MONTH, "
    "STANDARD_DAY_OF_WEEK, STANDARD_DAY, STANDARD_TIME, DAYLIGHT_BIAS, DAYLIGHT_MONTH, DAYLIGHT_DAY_OF_WEEK, "
    "DAYLIGHT_DAY, DAYLIGHT_TIME FROM EXCHANGES",
    "SELECT DATA_FEED, DATA_FEED_NAME FROM DATA_FEEDS",
    "SELECT * FROM SETTINGS",
    "SELECT * FROM SESSIONS",
    "SELECT * FROM SESSION_DETAILS",
    "SELECT SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,SETTING_TYPE,SETTING,"
    "SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,CONTRACT_MONTH,CONTRACT_YEAR,CAST(STRIKE_PRICE AS FLOAT) AS "
    "STRIKE_PRICE,CALL_PUT,MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY FROM "
    "PORTFOLIO ORDER BY SYMBOL_NAME"};

constexpr const char* CursorStatement =
    "SELECT P.SYMBOL,P.SYMBOL_NAME,P.CATEGORY,P.DESCRIPTION,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
    "CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.EXPIRATION_DATE,E.EXCHANGE_NAME FROM "
    "PORTFOLIO P, EXCHANGES E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED";

// The engine without anything of ours, in its best form: statements are prepared once, and rows that come are left
// where they lie. It shares the cache of the storage's connection, and so is opened behind it.
class CBareDatabase {
public:
    explicit CBareDatabase(const std::wstring& path)
        : m_Master(Firebird::fb_get_master_interface()), m_Status(m_Master->getStatus()) {
        static constexpr unsigned char parameters[] = {isc_dpb_version1,
                                                       isc_dpb_lc_ctype,
                                                       4,
                                                       'U',
                                                       'T',
                                                       'F',
                                                       '8',
                                                       isc_dpb_user_name,
                                                       6,
                                                       'S',
                                                       'Y',
                                                       'S',
                                                       'D',
                                                       'B',
                                                       'A'};
        m_Attachment = m_Master->getDispatcher()->attachDatabase(&m_Status, platform::ToUtf8(path).c_str(),
                                                                 sizeof parameters, parameters);
    }
    ~CBareDatabase() {
        for (tagStatement& statement : m_Statements) {
            statement.Metadata->release();
            statement.Handle->free(&m_Status);
        }
        m_Attachment->detach(&m_Status);
    }
    CBareDatabase(const CBareDatabase&) = delete;
    CBareDatabase& operator=(const CBareDatabase&) = delete;

    // Every row of every statement, seen in one state of the data.
    std::size_t FetchAll(std::span<const char* const> statements) {
        static constexpr unsigned char snapshot[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_concurrency};
        ITransaction* transaction = m_Attachment->startTransaction(&m_Status, sizeof snapshot, snapshot);
        std::size_t rows = 0;
        for (const char* sql : statements)
            rows += Fetch(*transaction, Prepared(*transaction, sql), std::numeric_limits<std::size_t>::max());
        transaction->commit(&m_Status);
        return rows;
    }
    // The first rows of one statement; the cursor's end is not counted, and is run by the result.
    std::function<void()> FetchSome(const char* sql, std::size_t count) {
        ITransaction* transaction = m_Attachment->startTransaction(&m_Status, sizeof Reading, Reading);
        tagStatement& statement = Prepared(*transaction, sql);
        IResultSet* rows = Open(*transaction, statement);
        for (std::size_t i = 0; i < count; ++i)
            rows->fetchNext(&m_Status, m_Row.data());
        return [this, transaction, rows] {
            rows->close(&m_Status);
            transaction->commit(&m_Status);
        };
    }
    // One procedure call for each key, prepared once, all in one transaction.
    void CallSymbolInfo(std::span<const LONG> keys) {
        ITransaction* transaction = m_Attachment->startTransaction(&m_Status, sizeof Reading, Reading);
        tagStatement& statement = Prepared(*transaction, "SELECT * FROM GET_SYMBOL_INFO(?)");
        IMessageMetadata* input = statement.Handle->getInputMetadata(&m_Status);
        std::vector<unsigned char> message(input->getMessageLength(&m_Status));
        for (const LONG key : keys) {
            std::memcpy(message.data() + input->getOffset(&m_Status, 0), &key, sizeof key);
            IResultSet* rows =
                statement.Handle->openCursor(&m_Status, transaction, input, message.data(), statement.Metadata, 0);
            m_Row.resize(statement.RowLength);
            while (rows->fetchNext(&m_Status, m_Row.data()) == Firebird::IStatus::RESULT_OK)
                continue;
            rows->close(&m_Status);
        }
        input->release();
        transaction->commit(&m_Status);
    }

private:
    static constexpr unsigned char Reading[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_read_committed,
                                                isc_tpb_rec_version};
    struct tagStatement {
        std::string Sql;
        IStatement* Handle;
        IMessageMetadata* Metadata;
        unsigned RowLength;
    };

    tagStatement& Prepared(ITransaction& transaction, const char* sql) {
        const auto found = std::ranges::find(m_Statements, sql, &tagStatement::Sql);
        if (found != m_Statements.end())
            return *found;
        IStatement* handle =
            m_Attachment->prepare(&m_Status, &transaction, 0, sql, 3, IStatement::PREPARE_PREFETCH_METADATA);
        IMessageMetadata* metadata = handle->getOutputMetadata(&m_Status);
        return m_Statements.emplace_back(sql, handle, metadata, metadata->getMessageLength(&m_Status));
    }
    IResultSet* Open(ITransaction& transaction, const tagStatement& statement) {
        m_Row.resize(statement.RowLength);
        return statement.Handle->openCursor(&m_Status, &transaction, nullptr, nullptr, statement.Metadata, 0);
    }
    std::size_t Fetch(ITransaction& transaction, const tagStatement& statement, std::size_t count) {
        IResultSet* rows = Open(transaction, statement);
        std::size_t fetched = 0;
        while (fetched < count && rows->fetchNext(&m_Status, m_Row.data()) == Firebird::IStatus::RESULT_OK)
            ++fetched;
        rows->close(&m_Status);
        return fetched;
    }

    Firebird::IMaster* m_Master;
    Status m_Status;
    Firebird::IAttachment* m_Attachment = nullptr;
    std::vector<tagStatement> m_Statements;
    std::vector<unsigned char> m_Row;
};

ELayout g_Layout = ELayout::RootByRoot;

CPortfolioStore& Store(LONG symbols) {
    static CPortfolioStore store(g_Layout);
    store.GrowTo(symbols);
    return store;
}

// The time of one side: the shortest seen, which others disturbed least, and the processor's time of all together,
// which a busy machine changes least.
struct tagSide {
    double Shortest = std::numeric_limits<double>::infinity(); // seconds
    double Last = 0;
    double Processor = 0; // seconds

    void Run(const std::function<void()>& work) {
        const std::clock_t ticks = std::clock();
        const double start = platform::MillisecondClock();
        work();
        Last = (platform::MillisecondClock() - start) / 1000;
        Processor += static_cast<double>(std::clock() - ticks) / CLOCKS_PER_SEC;
        Shortest = std::min(Shortest, Last);
    }
};

// The side that goes first changes from round to round, so that neither profits from the other's traces in the
// caches. `tidy` runs behind each and is not counted.
class CComparison {
public:
    void Round(
        const std::function<void()>& bare, const std::function<void()>& ours,
        const std::function<void()>& tidy = [] {}) {
        m_BareFirst = !m_BareFirst;
        for (const bool isBare : {m_BareFirst, !m_BareFirst}) {
            (isBare ? m_Bare : m_Ours).Run(isBare ? bare : ours);
            tidy();
        }
    }
    const tagSide& Bare() const { return m_Bare; }
    const tagSide& Ours() const { return m_Ours; }
    void Report(benchmark::State& state) const {
        state.counters["bare_us"] = m_Bare.Shortest * 1e6;
        state.counters["ours_us"] = m_Ours.Shortest * 1e6;
        state.counters["ratio"] = m_Ours.Shortest / m_Bare.Shortest;
        state.counters["cpu_ratio"] = m_Ours.Processor / m_Bare.Processor;
    }

private:
    tagSide m_Bare;
    tagSide m_Ours;
    bool m_BareFirst = false;
};

void Require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(what);
}

ULONG RowCount(const CComPtr<IDM_dmudfcom::IdmTable>& table) { return table.As<ITableRows>()->RowCount(); }

// Of this process, in bytes: the engine's cache, the table and all the rest.
double Resident() {
    constexpr double PageSize = 4096;
    std::ifstream file("/proc/self/statm");
    double whole = 0;
    double resident = 0;
    file >> whole >> resident;
    return resident * PageSize;
}

void WholePortfolio(benchmark::State& state) {
    const auto symbols = static_cast<LONG>(state.range(0));
    CPortfolioStore& store = Store(symbols);
    IDM_qxStorage::IqxStorage& storage = store.Storage();
    CBareDatabase bare(store.Path());
    CComPtr<IDM_dmudfcom::IdmTable> table;
    std::size_t memory = 0;
    CComparison comparison;
    for (auto _ : state) {
        comparison.Round([&] { bare.FetchAll(PortfolioStatements); },
                         [&] {
                             table = NewTable();
                             storage.SelectPortfolio(0, nullptr, table.Get());
                         },
                         [&] {
                             if (!table)
                                 return;
                             const auto rows = table.As<ITableRows>();
                             Require(rows->RowCount() == static_cast<ULONG>(symbols), "symbols are missing");
                             Require(!rows->IsNull(static_cast<ULONG>(symbols) - 1,
                                                   static_cast<ULONG>(rows->FindColumn("EXCHANGE_GMT"))),
                                     "the walk has ended before the last symbol");
                             memory = rows->MemoryUse();
                             state.counters["resident_mb"] = Resident() / 1e6;
                             table.Reset();
                         });
        state.SetIterationTime(comparison.Ours().Last);
    }
    comparison.Report(state);
    state.counters["us_per_symbol"] = comparison.Ours().Shortest / symbols * 1e6;
    state.counters["bytes_per_symbol"] = static_cast<double>(memory) / symbols;
}

void FirstBatch(benchmark::State& state) {
    CPortfolioStore& store = Store(static_cast<LONG>(state.range(0)));
    const auto batch = static_cast<LONG>(state.range(1));
    const auto portfolio = CComPtr<IDM_qxStorage::IqxStorage>(&store.Storage()).As<IDM_qxStorage::IqxPortfolio>();
    CBareDatabase bare(store.Path());
    const auto request = NewRequest();
    request->put_Category(0, -1);
    CComPtr<IDM_dmudfcom::IdmTable> table;
    LONG cursor = 0;
    std::function<void()> end;
    CComparison comparison;
    for (auto _ : state) {
        comparison.Round([&] { end = bare.FetchSome(CursorStatement, static_cast<std::size_t>(batch)); },
                         [&] {
                             table = NewTable();
                             LONG count = batch;
                             portfolio->Advise(0, request.Get(), table.Get(), &cursor);
                             portfolio->Fetch(cursor, &count);
                             Require(count == batch, "the batch is not full");
                             end = [&] { portfolio->Unadvise(cursor); };
                         },
                         [&] { end(); });
        state.SetIterationTime(comparison.Ours().Last);
    }
    comparison.Report(state);
}

// A sample of symbols, each asked for by itself.
void SymbolBySymbol(benchmark::State& state) {
    constexpr LONG Sample = 2000;
    const auto symbols = static_cast<LONG>(state.range(0));
    CPortfolioStore& store = Store(symbols);
    IDM_qxStorage::IqxStorage& storage = store.Storage();
    CBareDatabase bare(store.Path());
    std::vector<LONG> keys;
    for (LONG i = 0; i < Sample; ++i)
        keys.push_back(CPortfolioStore::FirstSymbol + static_cast<LONG>(std::int64_t{i} * 7919 % symbols));
    const auto request = NewRequest();
    const auto table = NewTable();
    CComparison comparison;
    for (auto _ : state) {
        comparison.Round([&] { bare.CallSymbolInfo(keys); },
                         [&] {
                             for (const LONG key : keys) {
                                 request->put_Symbol(0, key);
                                 storage.SelectPortfolio(0, request.Get(), table.Get());
                             }
                             Require(RowCount(table) == Sample, "symbols are missing");
                         },
                         [&] { table->Clear(); });
        state.SetIterationTime(comparison.Ours().Last);
    }
    comparison.Report(state);
    state.counters["bare_us_per_symbol"] = comparison.Bare().Shortest / Sample * 1e6;
    state.counters["us_per_symbol"] = comparison.Ours().Shortest / Sample * 1e6;
}

constexpr std::array<LONG, 3> Sizes{10000, 100000, 1000000};
constexpr std::array<LONG, 2> Batches{1000, 100};

std::string NameOf(const char* what, LONG symbols, LONG batch = 0) {
    return what + ("/" + std::to_string(symbols)) + (batch == 0 ? "" : "/" + std::to_string(batch));
}

// Size after size, since the store only grows.
void RegisterAll() {
    for (const LONG symbols : Sizes) {
        benchmark::RegisterBenchmark(NameOf("WholePortfolio", symbols).c_str(), WholePortfolio)
            ->Args({symbols})
            ->Iterations(symbols < 1000000 ? 20 : 5)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(NameOf("SymbolBySymbol", symbols).c_str(), SymbolBySymbol)
            ->Args({symbols})
            ->Iterations(3)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        for (const LONG batch : Batches)
            benchmark::RegisterBenchmark(NameOf("FirstBatch", symbols, batch).c_str(), FirstBatch)
                ->Args({symbols, batch})
                ->Iterations(3000000 / batch)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
    }
}

// The table of docs/performance.md.
class CMarkdownReporter final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            m_Counters[run.run_name.function_name] = run.counters;
    }
    void Finalize() override {
        std::puts("| symbols | 10,000 | 100,000 | 1,000,000 | goal |\n|---|---|---|---|---|");
        const auto whole = [this](LONG symbols, const char* counter) {
            return Value(NameOf("WholePortfolio", symbols), counter);
        };
        Line("whole portfolio, ms", "", [&](LONG n) { return whole(n, "ours_us") / 1e3; });
        Line("bare fetch of its six statements, ms", "", [&](LONG n) { return whole(n, "bare_us") / 1e3; });
        Line("times the bare fetch", "1.3", [&](LONG n) { return whole(n, "ratio"); });
        Line("the same in processor time", "", [&](LONG n) { return whole(n, "cpu_ratio"); });
        Line("microseconds a symbol", "", [&](LONG n) { return whole(n, "us_per_symbol"); });
        Line("times those at 10,000", "1.2",
             [&](LONG n) { return whole(n, "us_per_symbol") / whole(Sizes[0], "us_per_symbol"); });
        Line("filled table, bytes a symbol", "400", [&](LONG n) { return whole(n, "bytes_per_symbol"); });
        Line("process with table and engine's cache, resident MB", "",
             [&](LONG n) { return whole(n, "resident_mb"); });
        const auto single = [this](LONG symbols, const char* counter) {
            return Value(NameOf("SymbolBySymbol", symbols), counter);
        };
        Line("one symbol by request, microseconds", "", [&](LONG n) { return single(n, "us_per_symbol"); });
        Line("times the whole portfolio's", "10 or more",
             [&](LONG n) { return single(n, "us_per_symbol") / whole(n, "us_per_symbol"); });
        Line("one bare GET_SYMBOL_INFO, microseconds", "", [&](LONG n) { return single(n, "bare_us_per_symbol"); });
        Line("times the whole portfolio's", "10 or more",
             [&](LONG n) { return single(n, "bare_us_per_symbol") / whole(n, "us_per_symbol"); });
        for (const LONG batch : Batches) {
            const std::string name = "first batch of " + std::to_string(batch) + ", ";
            const auto first = [&](LONG symbols, const char* counter) {
                return Value(NameOf("FirstBatch", symbols, batch), counter);
            };
            Line(name + "microseconds", "", [&](LONG n) { return first(n, "ours_us"); });
            Line(name + "times the bare one", batch == 1000 ? "1.05" : "",
                 [&](LONG n) { return first(n, "ratio"); });
            Line(name + "the same in processor time", "", [&](LONG n) { return first(n, "cpu_ratio"); });
        }
    }

private:
    double Value(const std::string& run, const char* counter) const {
        const auto found = m_Counters.find(run);
        return found == m_Counters.end() ? 0 : found->second.at(counter).value;
    }
    template <class Figure>
    static void Line(const std::string& what, const char* goal, Figure&& figure) {
        std::printf("| %s |", what.c_str());
        for (const LONG symbols : Sizes) {
            const double value = figure(symbols);
            std::printf(value >= 100 ? " %.0f |" : value >= 10 ? " %.1f |" : " %.2f |", value);
        }
        std::printf(" %s |\n", goal);
    }

    std::map<std::string, benchmark::UserCounters> m_Counters;
};

} // namespace

int main(int count, char** arguments) {
    const bool isMarkdown = TakeFlag(count, arguments, "--markdown");
    if (TakeFlag(count, arguments, "--scattered"))
        g_Layout = ELayout::Scattered;
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 1;
    RegisterAll();
    if (isMarkdown) {
        CMarkdownReporter reporter;
        benchmark::RunSpecifiedBenchmarks(&reporter);
    } else {
        benchmark::RunSpecifiedBenchmarks();
    }
    benchmark::Shutdown();
    return 0;
}
