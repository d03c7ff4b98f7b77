// Two ways to do the same thing, measured in turns within one run. "ratio" is the time of ours over the bare one,
// and "best_ratio" the same of the shortest runs, which others disturbed least; "cpu_ratio" is that of the
// processor time, which a busy machine changes least.
#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <limits>

namespace bench {

// What a side has taken so far.
class CTimes {
public:
    // Returns what this run took, in seconds.
    template <class Call>
    double Run(Call&& call) {
        const std::clock_t cpu = std::clock();
        const auto start = std::chrono::steady_clock::now();
        call();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        m_Cpu += static_cast<double>(std::clock() - cpu);
        m_Seconds += seconds;
        m_Shortest = std::min(m_Shortest, seconds);
        return seconds;
    }
    double Seconds() const { return m_Seconds; }
    double Shortest() const { return m_Shortest; }
    double Cpu() const { return m_Cpu; } // ticks

private:
    double m_Seconds = 0;
    double m_Shortest = std::numeric_limits<double>::infinity();
    double m_Cpu = 0;
};

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
        const bool isBareFirst = m_Rounds++ % 2 != 0;
        if (isBareFirst) {
            m_Bare.Run(bare);
            tidy();
        }
        state.SetIterationTime(m_Ours.Run(ours));
        tidy();
        if (!isBareFirst) {
            m_Bare.Run(bare);
            tidy();
        }
    }
    const CTimes& Ours() const { return m_Ours; }
    const CTimes& Bare() const { return m_Bare; }
    void Report(benchmark::State& state) const {
        state.counters["bare_us"] = m_Bare.Seconds() / static_cast<double>(m_Rounds) * 1e6;
        state.counters["ratio"] = m_Ours.Seconds() / m_Bare.Seconds();
        state.counters["best_ratio"] = m_Ours.Shortest() / m_Bare.Shortest();
        state.counters["cpu_ratio"] = m_Ours.Cpu() / m_Bare.Cpu();
    }

private:
    CTimes m_Ours;
    CTimes m_Bare;
    std::size_t m_Rounds = 0;
};

} // namespace bench
