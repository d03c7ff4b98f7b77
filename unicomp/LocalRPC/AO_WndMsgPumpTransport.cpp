#include "AO_WndMsgPumpTransport.h"

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "unicomp/LocalRPC/interface/AO_WndMsgPumpTransport.h"

#include <utility>
#include <vector>

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

bool CWindowSlot::Lose(const CWndImpl& window) {
    const std::scoped_lock lock(m_Lock);
    if (m_Window.get() != &window)
        return false;
    m_IsLost = true;
    // Nobody joins a wake that nobody will serve.
    m_PendingWakes = 0;
    return true;
}

bool CWindowSlot::HasWindow() const {
    const std::scoped_lock lock(m_Lock);
    return m_Window && !m_IsLost;
}

bool CWindowSlot::IsElsewhere() const noexcept {
    const DWORD owner = m_OwnerThread.load();
    return owner != NoThread && owner != platform::CurrentThreadId();
}

bool CWindowSlot::IsOwnThread() const noexcept {
    return m_OwnerThread.load() == platform::CurrentThreadId() && !m_IsLost;
}

// ---- CWndMsgPumpBase ----

// The calling thread runs tasks of the transport, for the length of a scope. Kept by the thread, since a transport
// may have gone to another one while a task still runs here.
class CWndMsgPumpBase::CServing {
public:
    explicit CServing(CWndMsgPumpBase& pump) noexcept
        : m_Pump(pump), m_Enclosing(std::exchange(t_Innermost, this)) {}
    ~CServing() { t_Innermost = m_Enclosing; }
    CServing(const CServing&) = delete;
    CServing& operator=(const CServing&) = delete;

    // Null when the calling thread runs no task of the transport.
    static CServing* Outermost(const CWndMsgPumpBase& pump) noexcept {
        CServing* found = nullptr;
        for (CServing* serving = t_Innermost; serving != nullptr; serving = serving->m_Enclosing)
            if (&serving->m_Pump == &pump && serving->IsInTask)
                found = serving;
        return found;
    }

    bool IsInTask = false;
    bool WakeMissed = false; // a wake came while a task ran
    // They go last, when neither the task nor this is there any more.
    std::vector<platform::CDeferredReply> Replies;

private:
    static thread_local CServing* t_Innermost;

    CWndMsgPumpBase& m_Pump;
    CServing* const m_Enclosing;
};

thread_local CWndMsgPumpBase::CServing* CWndMsgPumpBase::CServing::t_Innermost = nullptr;

class CWndMsgPumpBase::CInTask {
public:
    CInTask(CWndMsgPumpBase& pump, CServing& serving) noexcept : m_Pump(pump), m_Serving(serving) {
        m_Pump.m_InTask.fetch_add(1, std::memory_order_relaxed);
        m_Serving.IsInTask = true;
    }
    ~CInTask() {
        m_Serving.IsInTask = false;
        m_Pump.m_InTask.fetch_sub(1, std::memory_order_relaxed);
    }
    CInTask(const CInTask&) = delete;
    CInTask& operator=(const CInTask&) = delete;

private:
    CWndMsgPumpBase& m_Pump;
    CServing& m_Serving;
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
    if (m_WindowSlot.Wake(sync))
        return true;
    // A stop has come between. What was refused does not run after the next start.
    if (task && !m_WindowSlot.HasWindow())
        task->Drop();
    return false;
}

// Queued, it would wait for the thread that is waiting for it.
void CWndMsgPumpBase::RunInPlace(const CTaskPtr& task) {
    // The task may drop the last other references to both.
    const boost::intrusive_ptr<CWndMsgPumpBase> self(this);
    const CTaskPtr held(task);
    const bool isWithin = CServing::Outermost(*this) != nullptr;
    CServing serving(*this);
    {
        const CInTask inTask(*this, serving);
        execute_task(held);
    }
    // Whoever posted meanwhile counts on the wake that found this task running.
    if (isWithin || !serving.WakeMissed)
        return;
    DropWhenStopped();
    if (m_WindowSlot.IsOwnThread() && !m_WindowSlot.WakeAgain())
        Drain(serving, platform::Infinite);
}

void CWndMsgPumpBase::Process(DWORD limit) {
    if (!m_AllowNested && m_InTask > 0) {
        if (CServing* outermost = CServing::Outermost(*this)) {
            outermost->WakeMissed = true;
            return;
        }
    }
    CServing serving(*this);
    Drain(serving, limit);
}

void CWndMsgPumpBase::Drain(CServing& serving, DWORD limit) {
    const DWORD start = limit != platform::Infinite ? platform::TickCount() : 0;
    // What waits for another thread's window is that thread's to run.
    while (!m_WindowSlot.IsElsewhere()) {
        if (limit != platform::Infinite && platform::TickCount() - start >= limit) {
            // Nobody joins a wake that could not be posted.
            if (!m_WindowSlot.WakeAgain())
                m_WindowSlot.ForgetPending();
            return;
        }
        CTaskPtr task;
        m_Storage->Pop(task);
        // Whoever joined this wake has pushed before; whoever comes from now on posts a new one.
        if (!task && !m_WindowSlot.ForgetPending())
            return;
        if (!task)
            continue;
        const CInTask inTask(*this, serving);
        execute_task(task);
        task.reset();
        m_Storage->OnTaskDone();
    }
}

// If a task stopped the object, the wake that it missed was the last.
void CWndMsgPumpBase::DropWhenStopped() {
    utils::CTaskQueue dropped; // destroyed when the lock is left
    const std::scoped_lock lock(m_Lock);
    if (!IsRunning())
        dropped = m_Storage->Take();
}

void CWndMsgPumpBase::DeferReplyToTheEndOfTasks() {
    CServing* outermost = CServing::Outermost(*this);
    if (outermost == nullptr)
        return;
    if (platform::CDeferredReply reply = platform::CDeferredReply::Take())
        outermost->Replies.push_back(std::move(reply));
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
    // Nobody will run them; who waits for one must not wait for ever. Those of another window are not concerned.
    if (m_WindowSlot.Lose(window))
        ClearQueue();
    else
        DropWhenStopped();
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
