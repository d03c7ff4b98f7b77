#pragma once
// The transport that owns a thread.
//
// Locks, in this order: m_PostLock, read by posts from other threads and written by a stop over its whole length,
// so that no post slips between the stop command and the end of the thread; m_Lock, which keeps the running state
// and the thread handle together; the run's own lock; the storage's spin lock. The transport's own thread takes
// neither of the first two: a stop that waits for it may hold them.

#include "AO_TransportBase.h"
#include "platform/thread.h"
#include "unicomp/LocalRPC/interface/EventUtils.h"

#include <memory>

namespace LocalRPC::details {

class CThreadBase;

// The system's text for why a thread could not be created: for an error number, or for a status that carries one in
// its low half. UTF-8, never empty.
[[nodiscard]] std::string ThreadErrorText(DWORD error);

// What a transport and its thread share, for as long as either uses it. A thread that was abandoned has nothing
// else.
class CThreadRun : private boost::noncopyable {
public:
    // Of StatusEvent.
    static constexpr LONG eCSRun = 0;
    static constexpr LONG eCSStop = 1;
    // Of CommandEvent.
    static constexpr LONG NoCommand = 0;
    static constexpr LONG TasksCommand = 1;
    static constexpr LONG StopCommand = 2;

    CThreadRun(const CThreadBase& transport, utils::ITaskStorage& storage);

    // The thread's loop, until the stop command or until it was abandoned.
    void Loop();
    // The transport is not touched any more after this, but for the task that runs at the moment.
    void Abandon();
    [[nodiscard]] bool IsAbandoned() const noexcept { return m_Abandoned.load(); }
    [[nodiscard]] bool IsOf(const CThreadBase& transport) const noexcept {
        return !IsAbandoned() && m_Transport == &transport;
    }

    MTUtils::CStateEvent StatusEvent;
    MTUtils::CStateEvent CommandEvent;

private:
    bool WaitForCommand();
    void Drain();
    bool Pop(CTaskPtr& task);
    static void DispatchMessages();

    const CThreadBase* const m_Transport;
    std::mutex m_Lock;
    utils::ITaskStorage* const m_Storage; // guarded by m_Lock together with m_Abandoned
    std::atomic<bool> m_Abandoned{false};
};

class CThreadBase : public CAOTransportBase {
public:
    ~CThreadBase() override;

    bool Post(const CTaskPtr& task) override;
    bool Start() override;
    bool StopEx(const bool clear, const ULONG timeout, const bool block) override;
    // The number of the thread that was started last.
    [[nodiscard]] DWORD GetThreadId() const override { return m_ThreadId.load(); }

    static unsigned int ThrFunc(void* This);

protected:
    CThreadBase(DWORD stackSize, utils::ITaskStorage* storage);

    // The end of a transport whose thread could not be stopped: to be called before the storage goes.
    void LetThreadGo();

private:
    [[nodiscard]] CThreadRun* OwnRun() const noexcept;
    bool PostFromOwnThread(CThreadRun& run, const CTaskPtr& task);
    void EnsureRunning();
    bool StartStopped();
    bool EndThread(ULONG timeout);

    const DWORD m_StackSize; // bytes
    // Replaced only under m_Lock while nothing runs; read by posts under m_PostLock while something does.
    std::shared_ptr<CThreadRun> m_Run;
    std::atomic<DWORD> m_ThreadId{0};
    platform::CThreadHandle m_Thread; // guarded by m_Lock
};

class CThread : public CThreadBase {
public:
    explicit CThread(DWORD stackSize) : CThreadBase(stackSize, &m_TaskStorage) {}
    ~CThread() override;

private:
    utils::CTaskStorage m_TaskStorage;
};

} // namespace LocalRPC::details
