#pragma once
// The transport that borrows a thread's message loop.
//
// Locks, in this order where they nest: the transport's m_Lock, the window slot's, the storage's spin lock. The
// window's own guards its pointer to the transport.

#include "AO_TransportBase.h"
#include "platform/message_queue.h"

#include <memory>

namespace LocalRPC::details {

class CWndMsgPumpBase;

// Lives on its owner thread, where it also dies: the last holder's release sends it there to die.
class CWndImpl : public platform::CMessageWindow {
public:
    static constexpr DWORD ProcessMessage = 1025; // process queued tasks
    static constexpr DWORD SuicideMessage = 1026; // shut the window down
    // First parameter 0: kill the timer; otherwise set it, to the second parameter in milliseconds.
    static constexpr DWORD SetTimerMessage = 1027;

    // Owned by the calling thread. Throws local_rpc_exception when the system refuses.
    [[nodiscard]] static std::shared_ptr<CWndImpl> Make(CWndMsgPumpBase& pump);

    bool ProcessWindowMessage(DWORD message, std::uintptr_t first, std::uintptr_t second, std::intptr_t& result,
                              DWORD mapId) override;
    ~CWndImpl() override = default;
    void OnFinalMessage() noexcept override;
    void OnThreadEnd() noexcept override;

    [[nodiscard]] DWORD OwnerThread() const noexcept { return m_OwnerThread; }

private:
    explicit CWndImpl(CWndMsgPumpBase& pump);

    [[nodiscard]] boost::intrusive_ptr<CWndMsgPumpBase> Pump() const;
    void Process();
    void Suicide();
    void ShutDown();

    mutable std::recursive_mutex m_Lock;
    boost::intrusive_ptr<CWndMsgPumpBase> m_Pump; // guarded by m_Lock
    DWORD m_OwnerThread;
};

// Holds the window, and counts the wakes on their way to it.
//
// A wake is pending from its post until the window's thread has found the queue empty. The count is raised under
// the lock and forgotten without it; a post that finds a wake pending joins it by a look at the count, so that a
// task costs no contended lock here. While a wake is being posted the count is negative: nobody may join it before
// it is known to be under way.
//
// No task is overlooked between the two: it is pushed before the look at the count, and the count is forgotten
// before the look at the queue, and push and pop take the storage's lock. If the pop comes first and misses the
// task, the poster behind it finds the count forgotten.
class CWindowSlot {
public:
    // What was held is the caller's to release, outside of any lock.
    [[nodiscard]] std::shared_ptr<CWndImpl> Exchange(std::shared_ptr<CWndImpl> window);
    // False when there is no window to wake. Posts from other threads while a wake is under way join it.
    bool Wake(bool sync);
    // Another message, whatever is under way. False when it could not be posted.
    bool WakeAgain();
    [[nodiscard]] bool HasWindow() const;
    // On the window's thread. True when a wake was pending, which others may have joined since the last look at the
    // queue: it is to be looked at once more.
    bool ForgetPending() noexcept { return m_PendingWakes.exchange(0) != 0; }
    // The owner thread of the window ends. False when the slot holds another window by now, or none.
    bool Lose(const CWndImpl& window);

    [[nodiscard]] bool IsLost() const noexcept { return m_IsLost.load(); }
    [[nodiscard]] bool IsOwnThread() const noexcept;
    // The window went to another thread.
    [[nodiscard]] bool IsElsewhere() const noexcept;
    // 0xFFFFFFFF without a window.
    [[nodiscard]] DWORD OwnerThread() const noexcept { return m_OwnerThread.load(); }

private:
    static constexpr DWORD NoThread = 0xFFFFFFFF;
    static constexpr LONG BeingPosted = -1;

    [[nodiscard]] bool IsUnderWay() const noexcept { return m_PendingWakes.load() > 0; }
    bool PostWake();
    bool PostOwnWake(const platform::CWindowHandle& window);
    bool SendOwnWake(const platform::CWindowHandle& window);

    mutable std::recursive_mutex m_Lock;
    std::shared_ptr<CWndImpl> m_Window; // guarded by m_Lock
    std::atomic<DWORD> m_OwnerThread{NoThread};
    std::atomic<bool> m_IsLost{false};
    std::atomic<LONG> m_PendingWakes{0};
};

class CWndMsgPumpBase : public CAOTransportBase {
public:
    bool Post(const CTaskPtr& task) override;
    bool Start() override;
    bool StopEx(const bool clear, const ULONG timeout, const bool block) override;
    // 0xFFFFFFFF while stopped.
    [[nodiscard]] DWORD GetThreadId() const override;

protected:
    explicit CWndMsgPumpBase(utils::ITaskStorage* storage) noexcept : CAOTransportBase(storage) {}

    // Runs queued tasks for that many milliseconds.
    void Process(DWORD limit);

    // Nothing sets these two.
    bool m_AllowNested = false; // a task that serves the message queue gets other tasks run within it
    bool m_Suspended = false;   // wakes are taken without effect

private:
    friend class CWndImpl;
    class CServing;
    class CInTask;

    void RunInPlace(const CTaskPtr& task);
    void Drain(CServing& serving, DWORD limit);
    void DropWhenStopped();
    // Whoever has sent the message that is being handled goes on waiting until the task is over within which it
    // came, and what follows it.
    void DeferReplyToTheEndOfTasks();
    void OnWindowLost(const CWndImpl& window);

    CWindowSlot m_WindowSlot;
    std::atomic<LONG> m_InTask{0}; // tasks being run on the window's thread, or on those of windows before it
};

class CWndMsgPump : public CWndMsgPumpBase {
public:
    // Throws as Start() does, which it calls for `autoStart`.
    explicit CWndMsgPump(bool autoStart);
    ~CWndMsgPump() override;

private:
    utils::CTaskStorage m_TaskStorage;
};

} // namespace LocalRPC::details
