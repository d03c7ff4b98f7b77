// What the storage adds to the bare database when symbols are written and looked up, in a small portfolio and in
// one of a million: each iteration makes one call through the interface and the same statements, in the same kinds
// of transactions, through the engine's own object interface. Every statement has a text of its own, so each side
// prepares it.
#include "BareDatabase.h"
#include "Comparison.h"
#include "Flags.h"
#include "PortfolioStore.h"
#include "SymbolArguments.h"
#include "platform/text.h"

#include <fmt/core.h>
#include <memory>

namespace {

using namespace bench;
using tests::CBstr;
using tests::tagSymbolArguments;

constexpr LONG Small = 10000;
constexpr LONG Large = 1000000;
// Each with a symbol of its own.
constexpr benchmark::IterationCount Rounds = 3000;

struct tagPortfolio {
    explicit tagPortfolio(LONG symbols) {
        Store.GrowTo(symbols);
        Bare = std::make_unique<CBareDatabase>(Store.Path());
        // Behind all keys that the growing will give out by itself.
        Bare->Write("ALTER SEQUENCE GLOBAL_KEY RESTART WITH 100000000");
    }
    CPortfolioStore Store;
    std::unique_ptr<CBareDatabase> Bare;
};

// One database for all sizes, which come in rising order; the growing wants it for itself.
tagPortfolio& Portfolio(LONG symbols) {
    static tagPortfolio portfolio(symbols);
    if (portfolio.Store.Symbols() < symbols) {
        portfolio.Bare.reset();
        portfolio.Store.GrowTo(symbols);
        portfolio.Bare = std::make_unique<CBareDatabase>(portfolio.Store.Path());
    }
    return portfolio;
}

// Symbols that no run before this one has written.
tagSymbolArguments NewSymbol(const wchar_t* prefix) {
    static LONG number = 0;
    tagSymbolArguments symbol;
    symbol.SymbolName = prefix + std::to_wstring(++number);
    symbol.Datafeed = number % 4 + 1;
    symbol.Exchange = number % 60 + 1;
    return symbol;
}

std::string Name(const tagSymbolArguments& symbol) { return platform::ToUtf8(*symbol.SymbolName); }

std::string DuplicateSelect(const tagSymbolArguments& symbol) {
    return fmt::format(
        "SELECT SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,EXCHANGE_NAME,"
        "EXCHANGE_TIME_ZONE_INFORMATION,SETTING_TYPE,SETTING,CUSTOM_SETTING,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,"
        "MIN_MOVEMENT,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,SESSIONS_STRING,SESSIONS_TIME_ZONE_INFORMATION,"
        "STRIKE_PRICE,CAST(STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,CONTRACT_MONTH,CONTRACT_YEAR,CALL_PUT,"
        "MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY,EXCHANGE_GMT,LOCAL_GMT FROM "
        "GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED={} AND "
        "UPPER(SYMBOL_NAME)=UPPER('{}') "
        "AND CATEGORY=1 AND EXCHANGE={}))",
        symbol.Datafeed, Name(symbol), symbol.Exchange);
}

std::string InsertStatement(LONG key, const tagSymbolArguments& symbol) {
    return fmt::format("INSERT INTO PORTFOLIO VALUES({},'{}','ES','E-mini','78378X107',1,{},{},1,0,1,0,0,12,2009,"
                       "0.000000,0,0,'18.12.2009',0,0,'01.01.1900','01.01.1900')",
                       key, Name(symbol), symbol.Datafeed, symbol.Exchange);
}

std::string NameSelect(const tagSymbolArguments& symbol) {
    return fmt::format("SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED={} AND SYMBOL_NAME='{}'", symbol.Datafeed,
                       Name(symbol));
}

void InsertPortfolio(benchmark::State& state) {
    tagPortfolio& portfolio = Portfolio(static_cast<LONG>(state.range(0)));
    CBareDatabase& bare = *portfolio.Bare;
    CComparison comparison;
    for (auto _ : state) {
        const tagSymbolArguments ours = NewSymbol(L"OURS");
        const tagSymbolArguments bares = NewSymbol(L"BARE");
        LONG key = 0;
        comparison.Round(
            state, [&] { tests::InsertPortfolio(portfolio.Store.Storage(), ours, &key); },
            [&] {
                benchmark::DoNotOptimize(bare.SelectOnce(DuplicateSelect(bares)));
                bare.Write(InsertStatement(bare.GenerateId(), bares));
            });
        if (key == 0)
            state.SkipWithError("nothing was inserted");
    }
    comparison.Report(state);
}

void GetSymbolByName(benchmark::State& state) {
    tagPortfolio& portfolio = Portfolio(static_cast<LONG>(state.range(0)));
    std::vector<tagSymbolArguments> symbols;
    for (benchmark::IterationCount i = 0; i < Rounds; ++i) {
        symbols.push_back(NewSymbol(L"FIND"));
        portfolio.Bare->Write(InsertStatement(portfolio.Bare->GenerateId(), symbols.back()));
    }
    std::size_t next = 0;
    CComparison comparison;
    for (auto _ : state) {
        const tagSymbolArguments& symbol = symbols.at(next++);
        const std::string sql = NameSelect(symbol);
        const CBstr name(*symbol.SymbolName);
        LONG key = 0;
        int bareKey = 0;
        comparison.Round(
            state, [&] { portfolio.Store.Storage().GetSymbolByName(symbol.Datafeed, name.Get(), &key); },
            [&] { bareKey = portfolio.Bare->SelectOnce(sql); });
        if (key == 0 || key != bareKey)
            state.SkipWithError("the two found different symbols");
    }
    comparison.Report(state);
}

void InTurns(benchmark::internal::Benchmark* benchmark, LONG symbols) {
    benchmark->Arg(symbols)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(Rounds);
}
// The portfolio only grows.
void InSmall(benchmark::internal::Benchmark* benchmark) { InTurns(benchmark, Small); }
void InLarge(benchmark::internal::Benchmark* benchmark) { InTurns(benchmark, Large); }

BENCHMARK(InsertPortfolio)->Apply(InSmall);
BENCHMARK(GetSymbolByName)->Apply(InSmall);
BENCHMARK(InsertPortfolio)->Apply(InLarge);
BENCHMARK(GetSymbolByName)->Apply(InLarge);

void TellPlans(LONG symbols) {
    CBareDatabase& bare = *Portfolio(symbols).Bare;
    const tagSymbolArguments symbol = NewSymbol(L"PLAN");
    fmt::print("\nThe test for a duplicate among {} symbols:{}\n\nGetSymbolByName among as many:{}\n", symbols,
               bare.PlanOf(DuplicateSelect(symbol)), bare.PlanOf(NameSelect(symbol)));
}

} // namespace

// --plans also prints how the engine finds a symbol in the large portfolio.
int main(int count, char** arguments) {
    const bool wantsPlans = TakeFlag(count, arguments, "--plans");
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    if (wantsPlans)
        TellPlans(Large);
    benchmark::Shutdown();
    return 0;
}
