#pragma once
// One thread's message queue.
//
// The owner is the thread that the queue belongs to. Windows are entered and removed by it alone, so a window that
// it has looked up stays until it destroys it itself. m_Lock is never held over a call into a window.

#include "platform/message_queue.h"

#include "platform/posix/deadline.h"
#include "platform/posix/descriptor.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace platform {

// A message whose sender waits. The last two belong to the sender's queue and its lock.
struct tagSend {
    tagMessage Message;
    std::shared_ptr<CMessageQueue> Sender;
    bool Deferred = false; // of the window's thread: the answer is another's to give
    bool Done = false;
    std::optional<std::intptr_t> Result; // nothing when the window was gone
};

class CMessageQueue : public std::enable_shared_from_this<CMessageQueue> {
public:
    using Clock = CDeadline::Clock;

    // What DispatchPendingMessages() may take: what was there when it began.
    struct tagLimit {
        std::uint64_t LastSequence = ~std::uint64_t{0};
        Clock::time_point LastDue = Clock::time_point::max();
    };

    explicit CMessageQueue(DWORD threadId) noexcept : m_ThreadId(threadId) {}

    // The calling thread's; made, but not opened, when there is none. Null when the thread is ending.
    static std::shared_ptr<CMessageQueue> Current();
    // The same, opened; null when the system refuses.
    static std::shared_ptr<CMessageQueue> CurrentOpened();
    [[nodiscard]] bool IsOwner() const noexcept;
    [[nodiscard]] DWORD ThreadId() const noexcept { return m_ThreadId; }

    // Of the owner.
    bool Open();
    [[nodiscard]] bool IsOpen() const noexcept { return m_Wake.IsOpen(); }
    std::uint64_t Add(CMessageWindow& window);
    bool SetTimer(std::uint64_t window, std::uintptr_t timer, DWORD milliseconds);
    bool KillTimer(std::uint64_t window, std::uintptr_t timer);
    int HostDescriptor();
    [[nodiscard]] tagLimit Limit() const;
    void HandleSends();
    bool Take(tagMessage& message, const tagLimit& limit);
    // `send` when another thread waits for the result.
    std::optional<std::intptr_t> Call(const tagMessage& message, const std::shared_ptr<tagSend>& send = nullptr);
    // What the owner is handling, with the answer still to come; null when nobody waits for it.
    std::shared_ptr<tagSend> DeferReply();
    [[nodiscard]] int WakeDescriptor() const noexcept { return m_Wake.Get(); }
    [[nodiscard]] std::optional<Clock::time_point> NextDue() const;
    void Close() noexcept;

    // Of any thread.
    bool Post(const tagMessage& message);
    bool PostQuit(int exitCode);
    std::optional<std::intptr_t> Send(const tagMessage& message, bool block, DWORD timeout);
    // The owner's, unless the thread has ended.
    bool Remove(std::uint64_t window);
    [[nodiscard]] bool Has(std::uint64_t window) const;
    [[nodiscard]] std::uint64_t WakeCount() const;
    static void Reply(const std::shared_ptr<tagSend>& send, std::optional<std::intptr_t> result);

private:
    class CHandled;
    enum class EState : std::uint8_t { Open, Ending, Closed };

    struct tagPosted {
        tagMessage Message;
        std::uint64_t Sequence;
    };
    struct tagTimer {
        std::uint64_t Window;
        std::uintptr_t Timer;
        std::chrono::milliseconds Period;
        Clock::time_point Due;
    };

    bool Enqueue(const std::shared_ptr<tagSend>& send);
    std::optional<std::intptr_t> Await(const std::shared_ptr<tagSend>& send, bool block, DWORD timeout,
                                       CMessageQueue& target);
    void Withdraw(const std::shared_ptr<tagSend>& send);
    [[nodiscard]] CMessageWindow* Find(std::uint64_t window) const;

    // All under m_Lock.
    void Signal();
    void Settle();
    void ArmHostTimer();
    bool TakePosted(tagMessage& message, std::uint64_t lastSequence);
    bool TakeDueTimer(tagMessage& message, Clock::time_point lastDue);

    const DWORD m_ThreadId;
    std::shared_ptr<tagSend> m_Handled; // of the owner: what it is handling for another thread

    mutable std::mutex m_Lock;
    // Of the owner, while it waits as a sender: a reply has come, or something to handle meanwhile.
    std::condition_variable m_Replied;

    // The descriptors are opened and closed by the owner alone, under m_Lock, which also guards all that follows.
    CDescriptor m_Wake;
    CDescriptor m_HostTimer;
    CDescriptor m_Host;
    EState m_State = EState::Open;
    bool m_Signalled = false; // m_Wake is readable
    std::uint64_t m_WakeCount = 0;
    std::uint64_t m_LastSequence = 0;
    std::deque<tagPosted> m_Posted;
    std::deque<std::shared_ptr<tagSend>> m_Sends;
    std::vector<tagTimer> m_Timers;
    std::optional<tagPosted> m_Quit;
    std::unordered_map<std::uint64_t, CMessageWindow*> m_Windows;
};

} // namespace platform
