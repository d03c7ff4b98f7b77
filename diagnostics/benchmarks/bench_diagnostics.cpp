// What reporting costs. The program runs each measurement in one of two states of the client, which a process has
// but once:  bench_diagnostics inactive  finds no library;  bench_diagnostics [info|trace]  writes the real log.
// Compare with the clock, which every scope reads: it is the floor.

#include "diagnostics/interface/BugSlayer.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/registry.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <string_view>

namespace {

using BugSlayerUtil::CScope;

void BM_Clock(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(platform::MillisecondClock());
}
BENCHMARK(BM_Clock);

void BM_Scope(benchmark::State& state) {
    for (auto _ : state)
        const CScope scope;
}
BENCHMARK(BM_Scope);
BENCHMARK(BM_Scope)->Threads(2);

void BM_Trace(benchmark::State& state) {
    const CScope scope;
    for (auto _ : state)
        scope.Trace(L"sql = '%s'", L"INSERT INTO HOLIDAYS VALUES(1,'New Year')");
}
BENCHMARK(BM_Trace);
BENCHMARK(BM_Trace)->Threads(2);

void BM_AssertThatHolds(benchmark::State& state) {
    const CScope scope;
    bool holds = true;
    for (auto _ : state) {
        benchmark::DoNotOptimize(holds);
        scope.Assert(holds, L"x");
    }
}
BENCHMARK(BM_AssertThatHolds);

void BM_GuardWithoutException(benchmark::State& state) {
    const CScope scope;
    for (auto _ : state)
        benchmark::DoNotOptimize(scope.Guard([&] { return state.iterations(); }, benchmark::IterationCount{0}));
}
BENCHMARK(BM_GuardWithoutException);

void BM_FailedCheck(benchmark::State& state) {
    const CScope scope;
    for (auto _ : state)
        scope.Check(E_FAIL, L"Execute");
}
BENCHMARK(BM_FailedCheck);

} // namespace

int main(int count, char** arguments) {
    const std::string_view mode = count > 1 ? arguments[count - 1] : "info";
    benchmark::Initialize(&count, arguments);
    const platform::CTemporaryDirectory directory;
    platform::SetEnvironment(L"SQSTORAGE_REGISTRY_DIR", directory.Name() + L"/registry");
    platform::SetEnvironment(L"SQSTORAGE_STATE_DIR", directory.Name() + L"/state");
    if (mode == "inactive") {
        // A file of the library's name that is none.
        platform::WriteFileAtomically(directory.Path() / "libBugSlayerUtil3.0_x64.so", "");
        platform::SetEnvironment(L"SQSTORAGE_MODULE_PATH", directory.Name());
    } else {
        platform::CRegistryKey::Create(platform::ERegistryRoot::User, L"Software\\DM Support\\BugSlayer")
            .WriteText(L"Level", mode == "trace" ? L"trace" : L"info");
    }
    const bool active = BugSlayerUtil::GetClient().Ready();
    std::printf("the client is %s\n", active ? "active" : "inactive");
    benchmark::RunSpecifiedBenchmarks();
    BugSlayerUtil::GetClient().Shutdown();
}
