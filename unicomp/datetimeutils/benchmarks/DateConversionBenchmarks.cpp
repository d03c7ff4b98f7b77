// Conversions over the whole calendar beside those of the standard library over the same days, in the same run.
// Each iteration converts every day once, in an order that no branch predictor learns.

#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <vector>

namespace {

using namespace std::chrono;
using dmDateTime::JulianDate;
using dmDateTime::TDate;

constexpr sys_days NullDay = 1899y / December / 30;

std::vector<JulianDate> ShuffledDays() {
    std::vector<JulianDate> result;
    for (JulianDate day = dmDateTime::FirstDate; day <= dmDateTime::LastDate; ++day)
        result.push_back(day);
    std::shuffle(result.begin(), result.end(), std::mt19937(1));
    return result;
}

template <class Source, class Convert>
void ConvertAll(benchmark::State& state, const std::vector<Source>& sources, Convert convert) {
    for (auto _ : state) {
        for (const Source& source : sources)
            benchmark::DoNotOptimize(convert(source));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sources.size()));
}

TDate ToDate(JulianDate day) {
    TDate date{};
    dmDateTime::details::JulianToDateImpl(day, date);
    return date;
}

void DayNumberToDate(benchmark::State& state) { ConvertAll(state, ShuffledDays(), ToDate); }

void DayNumberToDateByTheStandardLibrary(benchmark::State& state) {
    std::vector<sys_days> sources;
    for (const JulianDate day : ShuffledDays())
        sources.push_back(NullDay + days(day));
    ConvertAll(state, sources, [](sys_days day) { return year_month_day(day); });
}

void DateToDayNumber(benchmark::State& state) {
    std::vector<TDate> sources;
    for (const JulianDate day : ShuffledDays())
        sources.push_back(ToDate(day));
    ConvertAll(state, sources, [](const TDate& date) {
        JulianDate day = 0;
        dmDateTime::details::DateToJulianImpl(date, day);
        return day;
    });
}

void DateToDayNumberByTheStandardLibrary(benchmark::State& state) {
    std::vector<year_month_day> sources;
    for (const JulianDate day : ShuffledDays())
        sources.push_back(year_month_day(NullDay + days(day)));
    // Ours refuses what is no date, so the other asks too.
    ConvertAll(state, sources, [](year_month_day date) { return date.ok() ? sys_days(date) : NullDay; });
}

BENCHMARK(DayNumberToDate);
BENCHMARK(DayNumberToDateByTheStandardLibrary);
BENCHMARK(DateToDayNumber);
BENCHMARK(DateToDayNumberByTheStandardLibrary);

} // namespace

BENCHMARK_MAIN();
