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
    m_PendingWakes = 0;
    m_IsLost = false;
    return window;
}

bool CWindowSlot::Wake(bool sync) {
    std::unique_lock lock(m_Lock);
    if (!m_Window || m_IsLost)
        return false;
    const bool own = IsOwn();
    ++m_PendingWakes;
    if (m_PendingWakes > 1 && !own)
        return true;
    bool success = false;
    if (sync && own) {
        // Runs tasks, which is not for this lock. The window cannot go from its own thread to another's hands here.
        const std::shared_ptr<CWndImpl> window = m_Window;
        lock.unlock();
        const platform::CWindowHandle handle = window->Handle();
        success = handle.SendTimeout(CWndImpl::ProcessMessage, 0, 0, true, platform::Infinite).has_value();
    } else {
        success = m_Window->Handle().Post(CWndImpl::ProcessMessage);
    }
    if (!success)
        LowerPending();
    return success;
}

void CWindowSlot::WakeAgain() {
    const std::scoped_lock lock(m_Lock);
    if (m_Window && !m_IsLost)
        m_Window->Handle().Post(CWndImpl::ProcessMessage);
}

void CWindowSlot::LowerPending() {
    const std::scoped_lock lock(m_Lock);
    if (m_PendingWakes > 0)
        --m_PendingWakes;
}

bool CWindowSlot::ForgetPending() {
    const std::scoped_lock lock(m_Lock);
    return std::exchange(m_PendingWakes, 0) > 0;
}

void CWindowSlot::Lose(const CWndImpl& window) {
    const std::scoped_lock lock(m_Lock);
    if (m_Window.get() == &window)
        m_IsLost = true;
}

bool CWindowSlot::IsOwn() const {
    return m_Window && !m_IsLost && m_Window->OwnerThread() == platform::CurrentThreadId();
}

bool CWindowSlot::IsOwnThread() const {
    const std::scoped_lock lock(m_Lock);
    return IsOwn();
}

DWORD CWindowSlot::OwnerThread() const {
    constexpr DWORD NoThread = 0xFFFFFFFF;
    const std::scoped_lock lock(m_Lock);
    return m_Window ? m_Window->OwnerThread() : NoThread;
}

// ---- CWndMsgPumpBase ----

class CWndMsgPumpBase::CInTask {
public:
    explicit CInTask(CWndMsgPumpBase& pump) noexcept : m_Pump(pump) { ++m_Pump.m_InTask; }
    ~CInTask() { --m_Pump.m_InTask; }
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
    {
        const std::scoped_lock lock(m_Lock);
        if (IsBlocked() || !IsRunning() || m_WindowSlot.IsLost())
            return false;
    }
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
    // Whoever posted meanwhile counts on the wake that found this task running.
    if (m_InTask == 0 && std::exchange(m_WakeMissed, false))
        m_WindowSlot.WakeAgain();
}

void CWndMsgPumpBase::Process(DWORD limit) {
    const DWORD start = limit != platform::Infinite ? platform::TickCount() : 0;
    for (;;) {
        if (limit != platform::Infinite && platform::TickCount() - start >= limit)
            return;
        if (!m_AllowNested && m_InTask > 0) {
            m_WakeMissed = true;
            return;
        }
        m_WindowSlot.LowerPending();
        CTaskPtr task;
        m_Storage->Pop(task);
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
    constexpr DWORD NoThread = 0xFFFFFFFF;
    const std::scoped_lock lock(m_Lock);
    return IsRunning() ? m_WindowSlot.OwnerThread() : NoThread;
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
