// A million posted calls from one thread to another: through the window transport, and through a Boost.Asio
// io_context, in the same run. The counter `ratio` is the one by the other.

#include "platform/message_queue.h"
#include "unicomp/LocalRPC/interface/LocalRPC.h"

#include <benchmark/benchmark.h>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <chrono>
#include <thread>

namespace {

constexpr int Calls = 1'000'000;

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

struct tagRun {
    double Seconds;
    double Wakes;
};

tagRun RunWindowTransport() {
    const auto queue = platform::CMessageQueueHandle::Current();
    LocalRPC::CActiveObject_WndMsg object(true);
    const std::uint64_t before = queue.WakeCount();
    int count = 0;
    const auto start = Clock::now();
    std::thread poster([&] {
        for (int i = 0; i < Calls; ++i)
            object.Post(LocalRPC::MakeAsyncTask([&count] {
                if (++count == Calls)
                    platform::PostQuitMessage(0);
            }));
    });
    platform::RunMessageLoop();
    const double seconds = SecondsSince(start);
    poster.join();
    return {seconds, static_cast<double>(queue.WakeCount() - before)};
}

tagRun RunAsio() {
    boost::asio::io_context context;
    auto work = boost::asio::make_work_guard(context);
    int count = 0;
    const auto start = Clock::now();
    std::thread poster([&] {
        for (int i = 0; i < Calls; ++i)
            boost::asio::post(context, [&] {
                if (++count == Calls)
                    work.reset();
            });
    });
    context.run();
    const double seconds = SecondsSince(start);
    poster.join();
    return {seconds, 0};
}

void PostMillionCalls(benchmark::State& state) {
    double ours = 0;
    double asio = 0;
    double wakes = 0;
    for (auto _ : state) {
        // Turn about, so that neither gets the better half of a busy machine.
        for (int turn = 0; turn < 2; ++turn) {
            const tagRun run = RunWindowTransport();
            ours += run.Seconds;
            wakes += run.Wakes;
            asio += RunAsio().Seconds;
        }
    }
    const double runs = 2.0 * static_cast<double>(state.iterations());
    state.counters["window_ns_per_call"] = ours * 1e9 / runs / Calls;
    state.counters["asio_ns_per_call"] = asio * 1e9 / runs / Calls;
    state.counters["ratio"] = ours / asio;
    state.counters["wakes_per_million"] = wakes / runs;
}
BENCHMARK(PostMillionCalls)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();

// One call and the way back: posted, run on the object's thread, and waited for.
void CallAndWait(benchmark::State& state) {
    LocalRPC::CActiveObject_thread object(0);
    int count = 0;
    for (auto _ : state)
        LocalRPC::CallSync(
            object, [&count] { ++count; }, platform::Infinite);
    benchmark::DoNotOptimize(count);
}
BENCHMARK(CallAndWait)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
