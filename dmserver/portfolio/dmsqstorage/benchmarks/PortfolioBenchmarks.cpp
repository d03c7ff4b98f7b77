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
#include "BareDatabase.h"
#include "Comparison.h"
#include "Flags.h"
#include "PortfolioStore.h"
#include "dmserver/dmudfcom/interface/TableRows.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace bench;
using IDM_dmudfcom::ITableRows;
using tests::CComPtr;
using tests::NewRequest;
using tests::NewTable;

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

ELayout g_Layout = ELayout::RootByRoot;

CPortfolioStore& Store(LONG symbols) {
    static CPortfolioStore store(g_Layout);
    store.GrowTo(symbols);
    return store;
}

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

void Report(const CComparison& comparison, benchmark::State& state) {
    comparison.Report(state);
    state.counters["best_us"] = comparison.Ours().Shortest() * 1e6;
    state.counters["best_bare_us"] = comparison.Bare().Shortest() * 1e6;
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
        comparison.Round(
            state,
            [&] {
                table = NewTable();
                storage.SelectPortfolio(0, nullptr, table.Get());
            },
            [&] { bare.SelectAll(PortfolioStatements); },
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
    }
    Report(comparison, state);
    state.counters["us_per_symbol"] = comparison.Ours().Shortest() / symbols * 1e6;
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
        comparison.Round(
            state,
            [&] {
                table = NewTable();
                LONG count = batch;
                portfolio->Advise(0, request.Get(), table.Get(), &cursor);
                portfolio->Fetch(cursor, &count);
                Require(count == batch, "the batch is not full");
                end = [&] { portfolio->Unadvise(cursor); };
            },
            [&] { end = bare.SelectFirst(CursorStatement, static_cast<std::size_t>(batch)); }, [&] { end(); });
    }
    Report(comparison, state);
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
        comparison.Round(
            state,
            [&] {
                for (const LONG key : keys) {
                    request->put_Symbol(0, key);
                    storage.SelectPortfolio(0, request.Get(), table.Get());
                }
                Require(RowCount(table) == Sample, "symbols are missing");
            },
            [&] { bare.SelectByKeys("SELECT * FROM GET_SYMBOL_INFO(?)", keys); }, [&] { table->Clear(); });
    }
    Report(comparison, state);
    state.counters["bare_us_per_symbol"] = comparison.Bare().Shortest() / Sample * 1e6;
    state.counters["us_per_symbol"] = comparison.Ours().Shortest() / Sample * 1e6;
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
        Line("whole portfolio, ms", "", [&](LONG n) { return whole(n, "best_us") / 1e3; });
        Line("bare fetch of its six statements, ms", "", [&](LONG n) { return whole(n, "best_bare_us") / 1e3; });
        Line("times the bare fetch", "1.3", [&](LONG n) { return whole(n, "best_ratio"); });
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
            Line(name + "microseconds", "", [&](LONG n) { return first(n, "best_us"); });
            Line(name + "times the bare one", batch == 1000 ? "1.05" : "",
                 [&](LONG n) { return first(n, "best_ratio"); });
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
