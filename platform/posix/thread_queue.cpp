#include "platform/posix/thread_queue.h"

#include "platform/thread.h"

#include <atomic>
#include <exception>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <utility>

namespace platform {

namespace {

thread_local CMessageQueue* t_Queue = nullptr;
thread_local bool t_Ending = false;

// Takes the queue away when the thread ends.
class CThreadSlot {
public:
    CThreadSlot() = default;
    ~CThreadSlot() {
        t_Ending = true;
        if (m_Queue)
            m_Queue->Close();
        t_Queue = nullptr;
    }
    CThreadSlot(const CThreadSlot&) = delete;
    CThreadSlot& operator=(const CThreadSlot&) = delete;

    void Make() {
        m_Queue = std::make_shared<CMessageQueue>(CurrentThreadId());
        t_Queue = m_Queue.get();
    }

private:
    std::shared_ptr<CMessageQueue> m_Queue;
};

thread_local CThreadSlot t_Slot;

std::atomic<std::uint64_t> LastWindow{0};

bool Watch(const CDescriptor& watcher, const CDescriptor& watched) {
    epoll_event event{.events = EPOLLIN, .data = {.fd = watched.Get()}};
    return epoll_ctl(watcher.Get(), EPOLL_CTL_ADD, watched.Get(), &event) == 0;
}

} // namespace

std::shared_ptr<CMessageQueue> CMessageQueue::Current() {
    if (t_Queue == nullptr && !t_Ending)
        t_Slot.Make();
    return t_Queue != nullptr ? t_Queue->shared_from_this() : nullptr;
}

std::shared_ptr<CMessageQueue> CMessageQueue::CurrentOpened() {
    std::shared_ptr<CMessageQueue> queue = Current();
    if (!queue)
        errno = ESRCH;
    return queue && queue->Open() ? queue : nullptr;
}

bool CMessageQueue::IsOwner() const noexcept { return t_Queue == this; }

bool CMessageQueue::Open() {
    if (IsOpen())
        return true;
    CDescriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake.IsOpen())
        return false;
    const std::scoped_lock lock(m_Lock);
    m_Wake = std::move(wake);
    return true;
}

std::uint64_t CMessageQueue::Add(CMessageWindow& window) {
    const std::scoped_lock lock(m_Lock);
    if (m_State != EState::Open) {
        errno = ESRCH;
        return 0;
    }
    const std::uint64_t id = ++LastWindow;
    m_Windows.emplace(id, &window);
    return id;
}

bool CMessageQueue::Remove(std::uint64_t window) {
    std::deque<std::shared_ptr<tagSend>> lost;
    {
        const std::scoped_lock lock(m_Lock);
        if (m_Windows.erase(window) == 0)
            return false;
        std::erase_if(m_Posted, [&](const tagPosted& posted) { return posted.Message.Window == window; });
        std::erase_if(m_Timers, [&](const tagTimer& timer) { return timer.Window == window; });
        std::erase_if(m_Sends, [&](const std::shared_ptr<tagSend>& send) {
            const bool mine = send->Message.Window == window;
            if (mine)
                lost.push_back(send);
            return mine;
        });
        Settle();
        ArmHostTimer();
    }
    for (const std::shared_ptr<tagSend>& send : lost)
        Reply(send, std::nullopt);
    return true;
}

bool CMessageQueue::Has(std::uint64_t window) const { return Find(window) != nullptr; }

CMessageWindow* CMessageQueue::Find(std::uint64_t window) const {
    const std::scoped_lock lock(m_Lock);
    const auto found = m_Windows.find(window);
    return found != m_Windows.end() ? found->second : nullptr;
}

std::uint64_t CMessageQueue::WakeCount() const {
    const std::scoped_lock lock(m_Lock);
    return m_WakeCount;
}

// ---- Waking ----

// One wake lasts until the queue is empty again.
void CMessageQueue::Signal() {
    if (m_Signalled || !m_Wake.IsOpen())
        return;
    m_Signalled = RetryInterrupted([this] { return eventfd_write(m_Wake.Get(), 1); }) == 0;
    ++m_WakeCount;
}

void CMessageQueue::Settle() {
    if (!m_Signalled || !m_Posted.empty() || !m_Sends.empty() || m_Quit)
        return;
    eventfd_t count = 0;
    RetryInterrupted([&] { return eventfd_read(m_Wake.Get(), &count); });
    m_Signalled = false;
}

int CMessageQueue::HostDescriptor() {
    if (m_Host.IsOpen())
        return m_Host.Get();
    CDescriptor timer(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    CDescriptor host(epoll_create1(EPOLL_CLOEXEC));
    if (!timer.IsOpen() || !host.IsOpen() || !Watch(host, m_Wake) || !Watch(host, timer))
        return -1;
    const std::scoped_lock lock(m_Lock);
    m_HostTimer = std::move(timer);
    m_Host = std::move(host);
    ArmHostTimer();
    return m_Host.Get();
}

// ---- Posting and taking ----

bool CMessageQueue::Post(const tagMessage& message) {
    const std::scoped_lock lock(m_Lock);
    const bool gone = m_State != EState::Open || !m_Windows.contains(message.Window);
    if (gone || m_Posted.size() >= MaxPostedMessages) {
        errno = gone ? ESRCH : ENOBUFS;
        return false;
    }
    m_Posted.push_back({message, ++m_LastSequence});
    Signal();
    return true;
}

bool CMessageQueue::PostQuit(int exitCode) {
    const std::scoped_lock lock(m_Lock);
    if (m_State != EState::Open)
        return false;
    const tagMessage message{.Window = 0, .Message = QuitMessage, .First = static_cast<std::uintptr_t>(exitCode)};
    m_Quit = tagPosted{message, ++m_LastSequence};
    Signal();
    return true;
}

CMessageQueue::tagLimit CMessageQueue::Limit() const {
    const std::scoped_lock lock(m_Lock);
    return {.LastSequence = m_LastSequence, .LastDue = Clock::now()};
}

bool CMessageQueue::Take(tagMessage& message, const tagLimit& limit) {
    const std::scoped_lock lock(m_Lock);
    const bool taken = TakePosted(message, limit.LastSequence) || TakeDueTimer(message, limit.LastDue);
    Settle();
    return taken;
}

bool CMessageQueue::TakePosted(tagMessage& message, std::uint64_t lastSequence) {
    const bool quitIsNext = m_Quit && (m_Posted.empty() || m_Quit->Sequence < m_Posted.front().Sequence);
    if (quitIsNext && m_Quit->Sequence <= lastSequence) {
        message = m_Quit->Message;
        m_Quit.reset();
        return true;
    }
    if (quitIsNext || m_Posted.empty() || m_Posted.front().Sequence > lastSequence)
        return false;
    message = m_Posted.front().Message;
    m_Posted.pop_front();
    return true;
}

// What is handled now, until what is handled within it is done.
class CMessageQueue::CHandled {
public:
    CHandled(CMessageQueue& queue, std::shared_ptr<tagSend> send) noexcept
        : m_Queue(queue), m_Outer(std::exchange(queue.m_Handled, std::move(send))) {}
    ~CHandled() { m_Queue.m_Handled = std::move(m_Outer); }
    CHandled(const CHandled&) = delete;
    CHandled& operator=(const CHandled&) = delete;

private:
    CMessageQueue& m_Queue;
    std::shared_ptr<tagSend> m_Outer;
};

std::optional<std::intptr_t> CMessageQueue::Call(const tagMessage& message, const std::shared_ptr<tagSend>& send) {
    CMessageWindow* window = Find(message.Window);
    if (window == nullptr)
        return std::nullopt;
    const CHandled handled(*this, send);
    return window->GetWindowProc()(*window, message.Message, message.First, message.Second);
}

// ---- Timers ----

bool CMessageQueue::SetTimer(std::uint64_t window, std::uintptr_t timer, DWORD milliseconds) {
    const std::scoped_lock lock(m_Lock);
    if (!m_Windows.contains(window))
        return false;
    std::erase_if(m_Timers, [&](const tagTimer& t) { return t.Window == window && t.Timer == timer; });
    const std::chrono::milliseconds period(std::max<DWORD>(milliseconds, 1));
    m_Timers.push_back({.Window = window, .Timer = timer, .Period = period, .Due = Clock::now() + period});
    ArmHostTimer();
    return true;
}

bool CMessageQueue::KillTimer(std::uint64_t window, std::uintptr_t timer) {
    const std::scoped_lock lock(m_Lock);
    const std::size_t killed =
        std::erase_if(m_Timers, [&](const tagTimer& t) { return t.Window == window && t.Timer == timer; });
    ArmHostTimer();
    return killed > 0;
}

std::optional<CMessageQueue::Clock::time_point> CMessageQueue::NextDue() const {
    const std::scoped_lock lock(m_Lock);
    const auto next = std::ranges::min_element(m_Timers, {}, &tagTimer::Due);
    return next != m_Timers.end() ? std::optional(next->Due) : std::nullopt;
}

bool CMessageQueue::TakeDueTimer(tagMessage& message, Clock::time_point lastDue) {
    if (m_Timers.empty())
        return false;
    const auto next = std::ranges::min_element(m_Timers, {}, &tagTimer::Due);
    const Clock::time_point now = Clock::now();
    if (next->Due > std::min(now, lastDue))
        return false;
    message = {.Window = next->Window, .Message = TimerMessage, .First = next->Timer};
    next->Due = std::max(next->Due + next->Period, now + std::chrono::milliseconds(1));
    ArmHostTimer();
    return true;
}

void CMessageQueue::ArmHostTimer() {
    if (!m_HostTimer.IsOpen())
        return;
    itimerspec setting{};
    if (!m_Timers.empty()) {
        const auto due = std::ranges::min_element(m_Timers, {}, &tagTimer::Due)->Due.time_since_epoch();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(due);
        setting.it_value.tv_sec = seconds.count();
        setting.it_value.tv_nsec = std::chrono::nanoseconds(due - seconds).count();
    }
    timerfd_settime(m_HostTimer.Get(), TFD_TIMER_ABSTIME, &setting, nullptr);
}

// ---- Sending ----

std::optional<std::intptr_t> CMessageQueue::Send(const tagMessage& message, bool block, DWORD timeout) {
    if (IsOwner()) {
        const std::optional<std::intptr_t> result = Call(message);
        if (!result)
            errno = ESRCH;
        return result;
    }
    const auto send = std::make_shared<tagSend>();
    send->Message = message;
    send->Sender = Current();
    // A thread on its way out cannot be sent to, but still waits for an answer.
    if (!send->Sender)
        send->Sender = std::make_shared<CMessageQueue>(CurrentThreadId());
    if (!Enqueue(send)) {
        errno = ESRCH;
        return std::nullopt;
    }
    return send->Sender->Await(send, block, timeout, *this);
}

bool CMessageQueue::Enqueue(const std::shared_ptr<tagSend>& send) {
    {
        const std::scoped_lock lock(m_Lock);
        if (!m_Windows.contains(send->Message.Window))
            return false;
        m_Sends.push_back(send);
        Signal();
    }
    m_Replied.notify_all();
    return true;
}

std::optional<std::intptr_t> CMessageQueue::Await(const std::shared_ptr<tagSend>& send, bool block, DWORD timeout,
                                                  CMessageQueue& target) {
    CDeadline deadline(timeout);
    // What a window throws meanwhile must not take away what the message still points to.
    std::exception_ptr thrown;
    std::unique_lock lock(m_Lock);
    const auto called = [&] { return !block && !m_Sends.empty(); };
    const auto ready = [&] { return send->Done || called(); };
    while (!send->Done) {
        bool inTime = true;
        if (deadline.IsInfinite())
            m_Replied.wait(lock, ready);
        else
            inTime = m_Replied.wait_until(lock, deadline.End(), ready) && !deadline.IsOver();
        if (send->Done)
            break;
        lock.unlock();
        if (!inTime) {
            target.Withdraw(send);
            lock.lock();
            break;
        }
        try {
            HandleSends();
        } catch (...) {
            thrown = std::current_exception();
        }
        lock.lock();
    }
    const bool done = send->Done;
    const std::optional<std::intptr_t> result = send->Result;
    lock.unlock();
    if (thrown)
        std::rethrow_exception(thrown);
    if (!result)
        errno = done ? ESRCH : ETIMEDOUT;
    return result;
}

void CMessageQueue::Withdraw(const std::shared_ptr<tagSend>& send) {
    const std::scoped_lock lock(m_Lock);
    std::erase(m_Sends, send);
    Settle();
}

std::shared_ptr<tagSend> CMessageQueue::DeferReply() {
    const std::shared_ptr<tagSend> send = std::exchange(m_Handled, nullptr);
    if (send)
        send->Deferred = true;
    return send;
}

void CMessageQueue::HandleSends() {
    for (;;) {
        std::shared_ptr<tagSend> send;
        {
            const std::scoped_lock lock(m_Lock);
            if (m_Sends.empty())
                return;
            send = std::move(m_Sends.front());
            m_Sends.pop_front();
            Settle();
        }
        std::optional<std::intptr_t> result;
        try {
            result = Call(send->Message, send);
        } catch (...) {
            if (!send->Deferred)
                Reply(send, std::nullopt);
            throw;
        }
        if (!send->Deferred)
            Reply(send, result);
    }
}

void CMessageQueue::Reply(const std::shared_ptr<tagSend>& send, std::optional<std::intptr_t> result) {
    {
        const std::scoped_lock lock(send->Sender->m_Lock);
        send->Result = result;
        send->Done = true;
    }
    send->Sender->m_Replied.notify_all();
}

// ---- The end of the thread ----

void CMessageQueue::Close() noexcept {
    std::vector<std::uint64_t> windows;
    {
        // Senders wait through this state, so that no window is taken away while it is told of the end.
        const std::scoped_lock lock(m_Lock);
        m_State = EState::Ending;
        for (const auto& [id, window] : m_Windows)
            windows.push_back(id);
    }
    for (const std::uint64_t id : windows) {
        if (CMessageWindow* window = Find(id))
            window->OnThreadEnd();
    }
    std::deque<std::shared_ptr<tagSend>> lost;
    {
        const std::scoped_lock lock(m_Lock);
        m_State = EState::Closed;
        m_Windows.clear();
        m_Posted.clear();
        m_Timers.clear();
        m_Quit.reset();
        lost.swap(m_Sends);
        m_Host = CDescriptor();
        m_HostTimer = CDescriptor();
        m_Wake = CDescriptor();
        m_Signalled = false;
    }
    for (const std::shared_ptr<tagSend>& send : lost)
        Reply(send, std::nullopt);
}

} // namespace platform
