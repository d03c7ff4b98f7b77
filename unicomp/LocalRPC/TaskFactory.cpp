#include "unicomp/LocalRPC/interface/TaskFactory.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/message_queue.h"

#include <thread>

namespace LocalRPC::details {

namespace {

constexpr int SpinRounds = 25;
// How long the messages of one round may hold up the test of the event.
constexpr DWORD PumpMilliseconds = 11;

// A loop above this wait must meet the quit message. Posted again at once, it would keep this wait from sleeping.
class CQuitKeeper {
public:
    CQuitKeeper() = default;
    ~CQuitKeeper() {
        if (m_Met)
            platform::PostQuitMessage(0);
    }
    CQuitKeeper(const CQuitKeeper&) = delete;
    CQuitKeeper& operator=(const CQuitKeeper&) = delete;

    void See(const platform::tagMessage& message) noexcept {
        m_Met = m_Met || message.Message == platform::QuitMessage;
    }

private:
    bool m_Met = false;
};

} // namespace

DWORD tagWait::Run() const { return (Flags & PumpsMessages) != 0 ? RunPumping() : Handle.Wait(Timeout); }

DWORD tagWait::RunPumping() const {
    CQuitKeeper quit;
    for (;;) {
        const DWORD polled = Handle.Wait(0);
        if (polled != platform::WaitTimeout)
            return polled;
        const DWORD waited = platform::WaitForEventOrMessages(&Handle, Timeout);
        if (waited != platform::WaitInput)
            return waited;
        const DWORD start = platform::TickCount();
        platform::tagMessage message;
        while (platform::TickCount() - start < PumpMilliseconds && platform::TakeMessage(message)) {
            quit.See(message);
            platform::DispatchMessage(message);
        }
    }
}

CSyncTaskEvent::CSyncTaskEvent() {
    auto event = platform::CEvent::Create(platform::EEventReset::Automatic, false);
    if (!event)
        throw std::runtime_error("can't create event");
    m_Handle = std::move(*event);
}

CSyncTaskEvent::~CSyncTaskEvent() {
    const int _res = m_Handle.Close() ? 1 : 0;
    BugSlayerUtil::Assert(1 == _res, L"1==_res");
}

void CSyncTaskEvent::Signal() noexcept {
    m_State.exchange(0);
    m_Handle.Set();
}

void CSyncTaskEvent::Abandon() noexcept {
    m_Abandoned = true;
    Signal();
}

DWORD CSyncTaskEvent::Wait(ULONG timeout, ULONG flags) const {
    DWORD result = platform::WaitTimeout;
    for (int i = 0; i < SpinRounds && result != platform::WaitSignalled; ++i) {
        if (m_State.load() == 0)
            result = platform::WaitSignalled;
        else
            std::this_thread::yield();
    }
    if (result != platform::WaitSignalled)
        result = tagWait{m_Handle, timeout, flags}.Run();
    return result == platform::WaitSignalled && m_Abandoned ? platform::WaitAbandoned : result;
}

void PostAndWait(CActiveObject_base& object, const CTaskPtr& task) {
    const bool accepted = object.Post(CTaskPtr(task));
    // What was refused may still stand in the queue, but its caller will not be there any more.
    if (!accepted)
        task->Drop();
    const DWORD waited = task->Wait(platform::Infinite, 0);
    if (!accepted || waited == platform::WaitAbandoned)
        throw local_rpc_exception("Synchronous function execution failed!");
}

} // namespace LocalRPC::details
