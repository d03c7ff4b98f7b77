// What the storage adds to the bare database, measured in the same run: each iteration makes one call through the
// interface and the same statements, in the same transactions, through the engine's own object interface.
#include "BareDatabase.h"
#include "BenchmarkStore.h"
#include "Comparison.h"

namespace {

using namespace bench;
using tests::CBstr;

void InsertHoliday(benchmark::State& state) {
    tagStore& store = Store();
    CBareDatabase bare(store.Host.Connection().Path);
    const CBstr name(L"Independence Day");
    CComparison comparison;
    for (auto _ : state) {
        LONG key = 0;
        comparison.Round(
            state, [&] { store.Storage->InsertHoliday(name.Get(), &key); },
            [&] {
                const std::string own = std::to_string(bare.GenerateId());
                bare.Write("INSERT INTO HOLIDAYS VALUES(" + own + ",'Independence Day')");
            });
    }
    comparison.Report(state);
}
BENCHMARK(InsertHoliday)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);

void SelectHoliday(benchmark::State& state) {
    tagStore& store = Store();
    CBareDatabase bare(store.Host.Connection().Path);
    LONG key = 0;
    store.Storage->InsertHoliday(CBstr(L"Independence Day").Get(), &key);
    const std::string sql = "SELECT * FROM HOLIDAYS WHERE HOLIDAY=" + std::to_string(key);
    const auto request = tests::NewRequest();
    request->put_HolidayId(key);
    const auto table = tests::NewTable();
    CComparison comparison;
    for (auto _ : state)
        comparison.Round(
            state,
            [&] {
                table->Clear();
                store.Storage->SelectHoliday(request.Get(), table.Get());
            },
            [&] { benchmark::DoNotOptimize(bare.Select(sql)); });
    comparison.Report(state);
}
BENCHMARK(SelectHoliday)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(20000);

} // namespace

BENCHMARK_MAIN();
