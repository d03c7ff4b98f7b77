// A million notifications from another thread to one sink, and the same million handlers posted to a Boost.Asio
// io_context that calls the same sink, in the same run. "ratio" is the storage's time over Asio's.
#include "StorageHost.h"
#include "diagnostics/interface/DebugObject.h"
#include "platform/com/object.h"
#include "platform/message_queue.h"
#include "platform/registry.h"

#include <benchmark/benchmark.h>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <functional>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using platform::CComPtr;
using tests::CStorageHost;

constexpr LONG Kind = 0x8;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// Counts, and says when it was told often enough.
class CCountingSink final : public platform::CObject<CCountingSink, platform::ECounter::Interlocked,
                                                     platform::CDispatchImpl<IDM_qxStorage::IqxStorageNotifySink>> {
public:
    void Expect(std::int64_t count, std::function<void()> end) {
        m_Awaited = count;
        m_End = std::move(end);
    }
    HRESULT DataChanged(ULONG, LONG) override {
        if (--m_Awaited == 0)
            m_End();
        return S_OK;
    }
    [[nodiscard]] std::int64_t Awaited() const { return m_Awaited; }

private:
    std::int64_t m_Awaited = 0;
    std::function<void()> m_End;
};

// One store for all benchmarks; it is opened, and told of its changes, on the main thread.
class CNotifyHost {
public:
    CNotifyHost() {
        // A log of every delivery would be what is measured.
        platform::CRegistryKey::Create(platform::ERegistryRoot::User, IDM_BugSlayerUtil::SettingsKey)
            .WriteText(L"Level", L"warning");
        m_Host.Install();
        platform::ThrowIfFailed(CStorageHost::Create(m_Storage));
        m_Smart = m_Storage.As<IDM_qxStorage::IqxStorageSmartNotify>();
        m_Storage.As<IDM_qxStorage::IqxStorageNotify>()->AdviseNotify(Kind, m_Sink.Get());
        m_Queue = platform::CMessageQueueHandle::Current();
    }
    ~CNotifyHost() { m_Storage.As<IDM_qxStorage::IqxStorageNotify>()->UnadviseNotify(Kind, m_Sink.Get()); }

    CCountingSink& Sink() { return *m_Sink; }
    std::uint64_t WakeCount() const { return m_Queue.WakeCount(); }
    std::thread Post(std::int64_t count) {
        return std::thread([this, count] {
            for (std::int64_t i = 0; i < count; ++i)
                m_Smart->SendNotify(Kind);
        });
    }

    static CNotifyHost& Instance() {
        static CNotifyHost host;
        return host;
    }

private:
    CStorageHost m_Host;
    CComPtr<CCountingSink> m_Sink = platform::MakeObject<CCountingSink>();
    CComPtr<tests::IqxStorage> m_Storage;
    CComPtr<IDM_qxStorage::IqxStorageSmartNotify> m_Smart;
    platform::CMessageQueueHandle m_Queue;
};

double RunStorage(std::int64_t count) {
    CNotifyHost& host = CNotifyHost::Instance();
    host.Sink().Expect(count, [] { platform::PostQuitMessage(0); });
    const auto start = Clock::now();
    std::thread poster = host.Post(count);
    platform::RunMessageLoop();
    const double seconds = SecondsSince(start);
    poster.join();
    return seconds;
}

double RunAsio(std::int64_t count) {
    boost::asio::io_context context;
    auto work = boost::asio::make_work_guard(context);
    CCountingSink& sink = CNotifyHost::Instance().Sink();
    sink.Expect(count, [&] { work.reset(); });
    const auto start = Clock::now();
    std::thread poster([&] {
        for (std::int64_t i = 0; i < count; ++i)
            boost::asio::post(context, [&sink] { sink.DataChanged(Kind, 0); });
    });
    context.run();
    const double seconds = SecondsSince(start);
    poster.join();
    return seconds;
}

void PostAndDeliver(benchmark::State& state) {
    const std::int64_t count = state.range(0);
    const std::uint64_t wakesBefore = CNotifyHost::Instance().WakeCount();
    double ours = 0;
    double asio = 0;
    for (auto _ : state) {
        // Turn about, so that neither gets the better half of a busy machine.
        ours += RunStorage(count);
        asio += RunAsio(count);
        ours += RunStorage(count);
        asio += RunAsio(count);
    }
    const double runs = 2.0 * static_cast<double>(state.iterations());
    state.counters["notify_ns"] = ours * 1e9 / runs / static_cast<double>(count);
    state.counters["asio_ns"] = asio * 1e9 / runs / static_cast<double>(count);
    state.counters["ratio"] = ours / asio;
    state.counters["wakes"] = static_cast<double>(CNotifyHost::Instance().WakeCount() - wakesBefore) / runs;
}
BENCHMARK(PostAndDeliver)->Arg(1'000'000)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();

// All are posted before the first is delivered: far more than a window takes, and none may be missing.
void PostThenDeliver(benchmark::State& state) {
    CNotifyHost& host = CNotifyHost::Instance();
    const std::int64_t count = state.range(0);
    std::uint64_t wakes = 0;
    for (auto _ : state) {
        const std::uint64_t before = host.WakeCount();
        host.Sink().Expect(count, [] {});
        host.Post(count).join();
        platform::DispatchPendingMessages();
        wakes += host.WakeCount() - before;
        if (host.Sink().Awaited() != 0)
            state.SkipWithError("notifications were lost");
    }
    state.counters["wakes"] = static_cast<double>(wakes) / static_cast<double>(state.iterations());
}
BENCHMARK(PostThenDeliver)
    ->Arg(1)
    ->Arg(1'000)
    ->Arg(1'000'000)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace

BENCHMARK_MAIN();
