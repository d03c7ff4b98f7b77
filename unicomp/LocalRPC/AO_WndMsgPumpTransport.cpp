#include "AO_WndMsgPumpTransport.h"

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "unicomp/LocalRPC/interface/AO_WndMsgPumpTransport.h"

#include <utility>

namespace LocalRPC {

namespace details {

// ---- CWindowSlot ----

std::shared_ptr<CWndImpl> CWindowSlot::Exchange(std::shared_ptr<CWndImpl> window) {
    const std::scoped_lock lock(m_Lock);
    m_Window.swap(window);
    m_OwnerThread = m_Window ? m_Window->OwnerThread() : NoThread;
    m_PendingWakes = 0;
    m_IsLost = false;
    return window;
}

bool CWindowSlot::Wake(bool sync) {
    const bool own = IsOwnThread();
    if (!own && IsUnderWay())
        return true;
    std::unique_lock lock(m_Lock);
    if (!m_Window || m_IsLost)
        return false;
    // Another thread may have come first.
    if (!own)
        return IsUnderWay() || PostWake();
    const platform::CWindowHandle handle = m_Window->Handle();
    if (!sync)
        return PostOwnWake(handle);
    // Runs tasks, which is not for this lock.
    lock.unlock();
    return SendOwnWake(handle);
}

bool CWindowSlot::PostWake() {
    m_PendingWakes = BeingPosted;
    const bool success = m_Window->Handle().Post(CWndImpl::ProcessMessage);
    // Otherwise the window's thread has already served it.
    LONG pending = BeingPosted;
    m_PendingWakes.compare_exchange_strong(pending, success ? 1 : 0);
    return success;
}

// On the window's own thread, which cannot serve the message before it is counted.
bool CWindowSlot::PostOwnWake(const platform::CWindowHandle& window) {
    const bool success = window.Post(CWndImpl::ProcessMessage);
    if (success)
        ++m_PendingWakes;
    return success;
}

bool CWindowSlot::SendOwnWake(const platform::CWindowHandle& window) {
    ++m_PendingWakes;
    const bool success = window.SendTimeout(CWndImpl::ProcessMessage, 0, 0, true, platform::Infinite).has_value();
    if (!success)
        m_PendingWakes = 0;
    return success;
}

bool CWindowSlot::WakeAgain() {
    const std::scoped_lock lock(m_Lock);
    return m_Window && !m_IsLost && m_Window->Handle().Post(CWndImpl::ProcessMessage);
}

void CWindowSlot::Lose(const CWndImpl& window) {
    const std::scoped_lock lock(m_Lock);
    if (m_Window.get() == &window) {
        m_IsLost = true;
        // Nobody joins a wake that nobody will serve.
        m_PendingWakes = 0;
    }
}

bool CWindowSlot::IsOwnThread() const noexcept {
    return m_OwnerThread.load() == platform::CurrentThreadId() && !m_IsLost;
}

// ---- CWndMsgPumpBase ----

class CWndMsgPumpBase::CInTask {
public:
    explicit CInTask(CWndMsgPumpBase& pump) noexcept : m_Pump(pump) {
        m_Pump.m_InTask.fetch_add(1, std::memory_order_relaxed);
    }
    ~CInTask() { m_Pump.m_InTask.fetch_sub(1, std::memory_order_relaxed); }
    CInTask(const CInTask&) = delete;
    CInTask& operator=(const CInTask&) = delete;

private:
    CWndMsgPumpBase& m_Pump;
};

bool CWndMsgPumpBase::Start() {
    if (IsRunning())
        Stop(true, true);
    if (IsRunning())
        return false;
    std::shared_ptr<CWndImpl> window = CWndImpl::Make(*this);
    const std::scoped_lock lock(m_Lock);
    window = m_WindowSlot.Exchange(std::move(window));
    Unblock();
    m_Running.exchange(1);
    return true;
}

bool CWndMsgPumpBase::Post(const CTaskPtr& task) {
    // Without m_Lock: a post that comes while the object stops may fall on either side.
    if (IsBlocked() || !IsRunning() || m_WindowSlot.IsLost())
        return false;
    const bool sync = task && task->IsSync();
    if (sync && m_WindowSlot.IsOwnThread()) {
        RunInPlace(task);
        return true;
    }
    if (task)
        m_Storage->Push(task);
    return m_WindowSlot.Wake(sync);
}

// Queued, it would wait for the thread that is waiting for it.
void CWndMsgPumpBase::RunInPlace(const CTaskPtr& task) {
    // The task may drop the last other references to both.
    const boost::intrusive_ptr<CWndMsgPumpBase> self(this);
    const CTaskPtr held(task);
    {
        const CInTask inTask(*this);
        execute_task(held);
    }
    // Whoever posted meanwhile counts on the wake that found this task running. If the task stopped the object,
    // that was the last.
    if (m_InTask != 0 || !std::exchange(m_WakeMissed, false) || m_WindowSlot.WakeAgain())
        return;
    if (!IsRunning())
        ClearQueue();
}

void CWndMsgPumpBase::Process(DWORD limit) {
    const DWORD start = limit != platform::Infinite ? platform::TickCount() : 0;
    for (;;) {
        if (limit != platform::Infinite && platform::TickCount() - start >= limit) {
            m_WindowSlot.WakeAgain();
            return;
        }
        if (!m_AllowNested && m_InTask > 0) {
            m_WakeMissed = true;
            return;
        }
        CTaskPtr task;
        m_Storage->Pop(task);
        // Whoever joined this wake has pushed before; whoever comes from now on posts a new one.
        if (!task && !m_WindowSlot.ForgetPending())
            return;
        if (!task)
            continue;
        const CInTask inTask(*this);
        execute_task(task);
        task.reset();
        m_Storage->OnTaskDone();
    }
}

bool CWndMsgPumpBase::StopEx(const bool clear, const ULONG, const bool block) {
    utils::CTaskQueue cleared; // destroyed when the lock is left
    std::shared_ptr<CWndImpl> window;
    {
        const std::scoped_lock lock(m_Lock);
        if (!IsRunning())
            return false;
        if (block)
            Block(false);
        if (clear || !block)
            cleared = m_Storage->Take();
        window = m_WindowSlot.Exchange(nullptr);
        m_Running.exchange(0);
    }
    window.reset();
    return true;
}

DWORD CWndMsgPumpBase::GetThreadId() const {
    const std::scoped_lock lock(m_Lock);
    return m_WindowSlot.OwnerThread();
}

void CWndMsgPumpBase::OnWindowLost(const CWndImpl& window) {
    m_WindowSlot.Lose(window);
    // Nobody will run them; who waits for one must not wait for ever.
    ClearQueue();
}

// ---- CWndMsgPump ----

CWndMsgPump::CWndMsgPump(bool autoStart) : CWndMsgPumpBase(&m_TaskStorage) {
    const CUnderConstruction hold(*this);
    if (autoStart)
        Start();
}

CWndMsgPump::~CWndMsgPump() { Stop(true, true); }

} // namespace details

CActiveObject_WndMsg::CActiveObject_WndMsg(bool autoStart)
    : CActiveObject_base(new details::CWndMsgPump(autoStart)) {}

} // namespace LocalRPC
