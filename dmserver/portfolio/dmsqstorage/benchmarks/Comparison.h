// Two ways to do the same thing, measured in turns within one run. "ratio" is the time of ours over the bare one.
#pragma once

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>

namespace bench {

template <class Call>
double Seconds(Call&& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Counts both sides of a comparison.
class CComparison {
public:
    template <class Ours, class Bare>
    void Round(benchmark::State& state, Ours&& ours, Bare&& bare) {
        Round(state, ours, bare, [] {});
    }
    // `tidy` runs behind each side and is not counted.
    template <class Ours, class Bare, class Tidy>
    void Round(benchmark::State& state, Ours&& ours, Bare&& bare, Tidy&& tidy) {
        // The side that goes first changes, so that neither always pays for the other's traces in the caches.
        double oursNow = 0;
        double bareNow = 0;
        if (m_Rounds++ % 2) {
            bareNow = Seconds(bare);
            tidy();
            oursNow = Seconds(ours);
        } else {
            oursNow = Seconds(ours);
            tidy();
            bareNow = Seconds(bare);
        }
        tidy();
        m_Ours += oursNow;
        m_Bare += bareNow;
        state.SetIterationTime(oursNow);
    }
    void Report(benchmark::State& state) const {
        state.counters["bare_us"] = m_Bare / static_cast<double>(m_Rounds) * 1e6;
        state.counters["ratio"] = m_Ours / m_Bare;
    }

private:
    double m_Ours = 0;
    double m_Bare = 0;
    std::size_t m_Rounds = 0;
};

} // namespace bench
