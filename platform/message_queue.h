#pragma once
// Message-only windows: objects that live on one thread and get messages there, from any thread.
//
//     class CCounter : public platform::CMessageWindow {
//         bool ProcessWindowMessage(DWORD message, std::uintptr_t, std::uintptr_t, std::intptr_t& result, DWORD)
//         override {
//             return message == platform::UserMessage + 1 && (result = ++m_Count) > 0;
//         }
//         int m_Count = 0;
//     };
//
//     CCounter counter;                                  // on the thread that will run it
//     if (!counter.Create())
//         ...                                            // GetLastError() says why
//     counter.Handle().Post(platform::UserMessage + 1);  // from any thread
//     return platform::RunMessageLoop();                 // until PostQuitMessage()
//
// A thread has one queue, made by its first window, and serves it in one of two ways. A thread with nothing else to
// do calls RunMessageLoop(). A thread with a loop of its own (GLib, Qt, libuv, Asio) watches
// MessageQueueDescriptor() there, and calls DispatchPendingMessages() whenever it is readable; it stays readable as
// long as anything waits.
//
// Order: waiting sends first, then what was posted, in the order of posting, then timers that are due.
// Nothing here uses the processor while nothing comes, and any number of posts costs one wake.
//
// A thread that ends takes its queue with it: what was posted is dropped, and sends fail at once instead of
// waiting.

#include "platform/wait.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace platform {

class CMessageQueue;

inline constexpr DWORD QuitMessage = 18;
inline constexpr DWORD TimerMessage = 275;
// The numbers below belong to the system.
inline constexpr DWORD UserMessage = 1024;

// A window refuses posts beyond this many that nobody has taken from its thread's queue.
inline constexpr std::size_t MaxPostedMessages = 10000;

// Names a window and may outlive it. Any thread may use it; a copy is cheap.
class CWindowHandle {
public:
    CWindowHandle() noexcept = default;

    // Does not wait. False, with GetLastError(), when the window is gone or the queue is full.
    bool Post(DWORD message, std::uintptr_t first = 0, std::uintptr_t second = 0) const;
    // Waits until the window's thread has handled the message, and answers with the result; on that very thread it
    // is a direct call. While it waits it handles what is sent to its own thread's windows, so that two threads may
    // send to each other. Nothing when the window is gone, or goes before its turn comes. A window whose thread
    // does not serve its queue keeps the sender waiting.
    std::optional<std::intptr_t> Send(DWORD message, std::uintptr_t first = 0, std::uintptr_t second = 0) const;
    // The same with an end: a message that is not begun when the time is over is withdrawn. With `block`, nothing
    // sent to the caller's windows is handled meanwhile.
    std::optional<std::intptr_t> SendTimeout(DWORD message, std::uintptr_t first, std::uintptr_t second, bool block,
                                             DWORD timeout) const;

    [[nodiscard]] bool Exists() const;
    // 0 for a handle that never named a window.
    [[nodiscard]] DWORD ThreadId() const noexcept;

private:
    friend class CMessageWindow;
    CWindowHandle(std::shared_ptr<CMessageQueue> queue, std::uint64_t window) noexcept;

    std::shared_ptr<CMessageQueue> m_Queue;
    std::uint64_t m_Window = 0;
};

// Everything but Handle() belongs to the thread that called Create(). The window must be destroyed, or its thread
// have ended, before the object dies on another thread.
class CMessageWindow {
public:
    using WindowProcedure = std::intptr_t (*)(CMessageWindow& window, DWORD message, std::uintptr_t first,
                                              std::uintptr_t second);

    CMessageWindow() noexcept = default;
    CMessageWindow(const CMessageWindow&) = delete;
    CMessageWindow& operator=(const CMessageWindow&) = delete;

    // True when the message was one of the window's own. An exception ends at the sender's place: the send fails,
    // and the exception goes on through whoever dispatched.
    virtual bool ProcessWindowMessage(DWORD message, std::uintptr_t first, std::uintptr_t second,
                                      std::intptr_t& result, DWORD mapId) = 0;
    virtual ~CMessageWindow();
    // Every message goes through it; answers with the result.
    [[nodiscard]] virtual WindowProcedure GetWindowProc() const noexcept;
    // The last call of a window that was destroyed, made when none of its messages is being handled any more. The
    // object may delete itself here.
    virtual void OnFinalMessage() noexcept {}
    // The window's thread is ending with the window still there: no post arrives any more.
    virtual void OnThreadEnd() noexcept {}

    // On the calling thread, once. False, with GetLastError(), when the system refuses.
    bool Create();
    // Drops what is posted, fails what is sent, ends the timers. False when there is no window, or on another
    // thread.
    bool DestroyWindow();
    [[nodiscard]] bool IsWindow() const;
    [[nodiscard]] const CWindowHandle& Handle() const noexcept { return m_Handle; }

    // A TimerMessage with the timer's number as its first parameter, every `milliseconds` (at least 1). Ticks that
    // the thread was too busy for are not made up. Setting a timer that runs starts it anew.
    bool SetTimer(std::uintptr_t timer, DWORD milliseconds);
    // False when there is no such timer.
    bool KillTimer(std::uintptr_t timer);

protected:
    static std::intptr_t StandardProcedure(CMessageWindow& window, DWORD message, std::uintptr_t first,
                                           std::uintptr_t second);

private:
    friend class CMessageQueue;
    class CHandling;

    CWindowHandle m_Handle; // written by Create alone
    int m_Handling = 0;     // messages being handled, one within the other
    bool m_Destroyed = false;
};

struct tagMessage {
    std::uint64_t Window = 0; // 0 for a message of the thread itself: QuitMessage, with the exit code as First
    DWORD Message = 0;
    std::uintptr_t First = 0;
    std::uintptr_t Second = 0;
};

struct tagSend;

// The answer to a message that another thread has sent and waits for, given when this object ends instead of when
// the window has handled the message; the result is then 0. For the window's thread alone.
class CDeferredReply {
public:
    // Of the message that the calling thread is handling. Empty when nobody on another thread waits for it, or when
    // its answer was deferred already.
    static CDeferredReply Take();

    CDeferredReply(CDeferredReply&& other) noexcept = default;
    CDeferredReply& operator=(CDeferredReply&& other) = delete;
    ~CDeferredReply();

    explicit operator bool() const noexcept { return m_Send != nullptr; }

private:
    explicit CDeferredReply(std::shared_ptr<tagSend> send) noexcept : m_Send(std::move(send)) {}

    std::shared_ptr<tagSend> m_Send;
};

// ---- The calling thread's queue ----

// Makes the queue, if it is not there yet. False, with GetLastError(), when the system refuses.
bool OpenMessageQueue();
// Dispatches what waits by now, each timer once. False when quit was met: time for the caller to end its loop. The
// answer is then given once.
bool DispatchPendingMessages();
// Waits and dispatches until PostQuitMessage(), and answers with its exit code. std::system_error when the thread
// can have no queue.
int RunMessageLoop();
// Ends the loop once everything posted before is dispatched. A second call before that takes the place of the
// first.
void PostQuitMessage(int exitCode);
// Readable while the queue has something to dispatch, timers included; to be watched by a foreign loop, not to be
// read, written or closed. -1, with GetLastError(), when the system refuses.
int MessageQueueDescriptor();

// Handles what is sent, then takes the next message, if there is one. Together with DispatchMessage() for loops
// that look at each message.
bool TakeMessage(tagMessage& message);
// The window's result; 0 when it is gone, or for a message of the thread itself.
std::intptr_t DispatchMessage(const tagMessage& message);

// Another thread's hold on a queue.
class CMessageQueueHandle {
public:
    // Of the calling thread, whose queue is made if it is not there yet. Empty when the system refuses.
    static CMessageQueueHandle Current();

    explicit operator bool() const noexcept { return m_Queue != nullptr; }
    // As PostQuitMessage() on the queue's thread. False when that thread has ended.
    bool PostQuit(int exitCode) const;
    // How often the thread was woken, in all: at most once between two times that its queue was empty.
    [[nodiscard]] std::uint64_t WakeCount() const;

private:
    std::shared_ptr<CMessageQueue> m_Queue;
};

} // namespace platform
