#include "platform/message_queue.h"

#include "platform/event.h"
#include "platform/posix/thread_queue.h"

#include <array>
#include <poll.h>
#include <system_error>

namespace platform {

// ---- CWindowHandle ----

CWindowHandle::CWindowHandle(std::shared_ptr<CMessageQueue> queue, std::uint64_t window) noexcept
    : m_Queue(std::move(queue)), m_Window(window) {}

bool CWindowHandle::Post(DWORD message, std::uintptr_t first, std::uintptr_t second) const {
    if (!m_Queue) {
        errno = ESRCH;
        return false;
    }
    return m_Queue->Post({m_Window, message, first, second});
}

std::optional<std::intptr_t> CWindowHandle::Send(DWORD message, std::uintptr_t first, std::uintptr_t second) const {
    return SendTimeout(message, first, second, false, Infinite);
}

std::optional<std::intptr_t> CWindowHandle::SendTimeout(DWORD message, std::uintptr_t first, std::uintptr_t second,
                                                        bool block, DWORD timeout) const {
    // The handle may go with its window meanwhile.
    const std::shared_ptr<CMessageQueue> queue = m_Queue;
    if (!queue) {
        errno = ESRCH;
        return std::nullopt;
    }
    return queue->Send({m_Window, message, first, second}, block, timeout);
}

bool CWindowHandle::Exists() const { return m_Queue && m_Queue->Has(m_Window); }

DWORD CWindowHandle::ThreadId() const noexcept { return m_Queue ? m_Queue->ThreadId() : 0; }

// ---- CMessageWindow ----

CMessageWindow::~CMessageWindow() {
    if (m_Handle.m_Queue)
        m_Handle.m_Queue->Remove(m_Handle.m_Window);
}

CMessageWindow::WindowProcedure CMessageWindow::GetWindowProc() const noexcept { return StandardProcedure; }

bool CMessageWindow::Create() {
    if (m_Handle.m_Queue) {
        errno = EALREADY;
        return false;
    }
    std::shared_ptr<CMessageQueue> queue = CMessageQueue::CurrentOpened();
    const std::uint64_t window = queue ? queue->Add(*this) : 0;
    if (window != 0)
        m_Handle = CWindowHandle(std::move(queue), window);
    return window != 0;
}

bool CMessageWindow::DestroyWindow() {
    if (!m_Handle.m_Queue || !m_Handle.m_Queue->IsOwner() || !m_Handle.m_Queue->Remove(m_Handle.m_Window)) {
        errno = ESRCH;
        return false;
    }
    m_Destroyed = true;
    if (m_Handling == 0)
        OnFinalMessage();
    return true;
}

bool CMessageWindow::IsWindow() const { return m_Handle.Exists(); }

bool CMessageWindow::SetTimer(std::uintptr_t timer, DWORD milliseconds) {
    return m_Handle.m_Queue && m_Handle.m_Queue->SetTimer(m_Handle.m_Window, timer, milliseconds);
}

bool CMessageWindow::KillTimer(std::uintptr_t timer) {
    return m_Handle.m_Queue && m_Handle.m_Queue->KillTimer(m_Handle.m_Window, timer);
}

// The last of a window's messages to be left, if the window was destroyed within, makes the last call.
class CMessageWindow::CHandling {
public:
    explicit CHandling(CMessageWindow& window) noexcept : m_Window(window) { ++m_Window.m_Handling; }
    ~CHandling() {
        if (--m_Window.m_Handling == 0 && m_Window.m_Destroyed)
            m_Window.OnFinalMessage();
    }
    CHandling(const CHandling&) = delete;
    CHandling& operator=(const CHandling&) = delete;

private:
    CMessageWindow& m_Window;
};

std::intptr_t CMessageWindow::StandardProcedure(CMessageWindow& window, DWORD message, std::uintptr_t first,
                                                std::uintptr_t second) {
    const CHandling handling(window);
    std::intptr_t result = 0;
    window.ProcessWindowMessage(message, first, second, result, 0);
    return result;
}

// ---- CDeferredReply ----

CDeferredReply CDeferredReply::Take() {
    const std::shared_ptr<CMessageQueue> queue = CMessageQueue::Current();
    return CDeferredReply(queue ? queue->DeferReply() : nullptr);
}

CDeferredReply::~CDeferredReply() {
    if (m_Send)
        CMessageQueue::Reply(m_Send, 0);
}

// ---- The calling thread's queue ----

bool OpenMessageQueue() { return CMessageQueue::CurrentOpened() != nullptr; }

bool TakeMessage(tagMessage& message) {
    const std::shared_ptr<CMessageQueue> queue = CMessageQueue::Current();
    if (!queue)
        return false;
    queue->HandleSends();
    return queue->Take(message, {});
}

std::intptr_t DispatchMessage(const tagMessage& message) {
    const std::shared_ptr<CMessageQueue> queue = CMessageQueue::Current();
    return queue ? queue->Call(message).value_or(0) : 0;
}

bool DispatchPendingMessages() {
    const std::shared_ptr<CMessageQueue> queue = CMessageQueue::Current();
    if (!queue)
        return true;
    const CMessageQueue::tagLimit limit = queue->Limit();
    tagMessage message;
    queue->HandleSends();
    while (queue->Take(message, limit)) {
        if (message.Window == 0 && message.Message == QuitMessage)
            return false;
        queue->Call(message);
        queue->HandleSends();
    }
    return true;
}

int RunMessageLoop() {
    if (!OpenMessageQueue())
        throw std::system_error(errno, std::generic_category(), "cannot run a message loop on this thread");
    for (;;) {
        tagMessage message;
        while (TakeMessage(message)) {
            if (message.Window == 0 && message.Message == QuitMessage)
                return static_cast<int>(message.First);
            DispatchMessage(message);
        }
        if (WaitForEventOrMessages(nullptr, Infinite) == WaitFailed)
            throw std::system_error(errno, std::generic_category(), "cannot wait for messages");
    }
}

void PostQuitMessage(int exitCode) {
    if (const std::shared_ptr<CMessageQueue> queue = CMessageQueue::CurrentOpened())
        queue->PostQuit(exitCode);
}

int MessageQueueDescriptor() {
    const std::shared_ptr<CMessageQueue> queue = CMessageQueue::CurrentOpened();
    return queue ? queue->HostDescriptor() : -1;
}

DWORD WaitForEventOrMessages(const CEvent* event, DWORD timeout) noexcept {
    if (event != nullptr && !event->IsOpen()) {
        errno = EBADF;
        return WaitFailed;
    }
    // Nobody can reach a queue that was never opened.
    const std::shared_ptr<CMessageQueue> queue = CMessageQueue::Current();
    const bool open = queue && queue->IsOpen();
    CDeadline deadline(timeout);
    for (;;) {
        CDeadline next = deadline;
        const auto due = open ? queue->NextDue() : std::nullopt;
        if (due)
            next.BringForward(*due);
        // A descriptor of -1 is passed over.
        std::array<pollfd, 2> entries{
            pollfd{.fd = event != nullptr ? event->Descriptor() : -1, .events = POLLIN, .revents = 0},
            pollfd{.fd = open ? queue->WakeDescriptor() : -1, .events = POLLIN, .revents = 0}};
        if (ppoll(entries.data(), entries.size(), next.Remaining(), nullptr) < 0) {
            if (errno != EINTR)
                return WaitFailed;
            continue;
        }
        if (entries[0].revents != 0 && event->TakeSignal())
            return WaitSignalled;
        if (entries[1].revents != 0 || (due && CDeadline::Clock::now() >= *due))
            return WaitInput;
        if (deadline.IsOver())
            return WaitTimeout;
    }
}

// ---- CMessageQueueHandle ----

CMessageQueueHandle CMessageQueueHandle::Current() {
    CMessageQueueHandle handle;
    handle.m_Queue = CMessageQueue::CurrentOpened();
    return handle;
}

bool CMessageQueueHandle::PostQuit(int exitCode) const { return m_Queue && m_Queue->PostQuit(exitCode); }

std::uint64_t CMessageQueueHandle::WakeCount() const { return m_Queue ? m_Queue->WakeCount() : 0; }

} // namespace platform
