#pragma once
// Makes tasks out of anything that can be called without arguments, and calls through them.

#include "platform/clock.h"
#include "platform/event.h"
#include "unicomp/LocalRPC/interface/AO_Transport.h"

#include <utility>

namespace LocalRPC {

namespace details {

// One wait for an event.
struct tagWait {
    static constexpr ULONG Alertable = 1; // nothing can alert a thread here, so the bit makes no difference
    // Dispatches the calling thread's messages meanwhile. A quit message that comes then is posted again, with the
    // exit code 0, at the end of the wait: posted again at once, it would keep the wait from sleeping and from
    // timing out.
    static constexpr ULONG PumpsMessages = 2;

    const platform::CEvent& Handle;
    ULONG Timeout;
    ULONG Flags;

    [[nodiscard]] DWORD Run() const;

private:
    [[nodiscard]] DWORD RunPumping() const;
};

class CSyncTaskEvent : private boost::noncopyable {
public:
    // Throws std::runtime_error "can't create event".
    CSyncTaskEvent();
    ~CSyncTaskEvent();

    void Signal() noexcept;
    // Signals, and makes every wait answer platform::WaitAbandoned.
    void Abandon() noexcept;
    [[nodiscard]] DWORD Wait(ULONG timeout, ULONG flags) const;

    // Signals however the scope is left.
    class CGuard {
    public:
        explicit CGuard(CSyncTaskEvent& event) noexcept : m_Event(event) {}
        ~CGuard() { m_Event.Signal(); }
        CGuard(const CGuard&) = delete;
        CGuard& operator=(const CGuard&) = delete;

    private:
        CSyncTaskEvent& m_Event;
    };

private:
    platform::CEvent m_Handle;
    std::atomic<LONG> m_State{1}; // 0 once signalled
    std::atomic<bool> m_Abandoned{false};
};

// What an asynchronous task has in place of an event.
class CFakeEvent {
public:
    struct CGuard {
        explicit CGuard(CFakeEvent&) noexcept {}
    };
};

} // namespace details

template <class Bind, class Event>
class CBaseTask : public CTaskResult<void> {
public:
    void Execute() override {
        if (!Claim())
            return;
        [[maybe_unused]] const typename Event::CGuard guard(*m_Event);
        m_Call();
    }
    [[nodiscard]] DWORD GetCreationTick() const override { return m_CreationTick; }

protected:
    // The event is a member of the derived class.
    CBaseTask(Bind call, Event& event) : m_Call(std::move(call)), m_Event(&event) {}

    // True for the first who asks: a task runs once, or is dropped.
    bool Claim() noexcept { return !m_Claimed.exchange(true); }

private:
    Bind m_Call;
    Event* m_Event;
    DWORD m_CreationTick = platform::TickCount();
    std::atomic<bool> m_Claimed{false};
};

template <class Bind>
class CSyncTask : public CBaseTask<Bind, details::CSyncTaskEvent> {
public:
    explicit CSyncTask(Bind call) : CBaseTask<Bind, details::CSyncTaskEvent>(std::move(call), m_SyncEvent) {}

    DWORD Wait(ULONG timeout, ULONG flags) override { return m_SyncEvent.Wait(timeout, flags); }
    [[nodiscard]] bool IsSync() const override { return true; }
    void Drop() noexcept override {
        if (this->Claim())
            m_SyncEvent.Abandon();
    }

private:
    details::CSyncTaskEvent m_SyncEvent;
};

template <class Bind>
class CAsyncTask : public CBaseTask<Bind, details::CFakeEvent> {
public:
    explicit CAsyncTask(Bind call) : CBaseTask<Bind, details::CFakeEvent>(std::move(call), m_FakeEvent) {}

    // Nobody waits for an asynchronous task.
    DWORD Wait(ULONG, ULONG) override { return platform::WaitSignalled; }
    [[nodiscard]] bool IsSync() const override { return false; }
    void Drop() noexcept override { this->Claim(); }

private:
    [[no_unique_address]] details::CFakeEvent m_FakeEvent;
};

template <class Bind>
[[nodiscard]] CTaskPtr MakeSyncTask(Bind call) {
    return CTaskPtr(new CSyncTask<Bind>(std::move(call)));
}

template <class Bind>
[[nodiscard]] CTaskPtr MakeAsyncTask(Bind call) {
    return CTaskPtr(new CAsyncTask<Bind>(std::move(call)));
}

namespace details {
void PostAndWait(CActiveObject_base& object, const CTaskPtr& task);
}

// Runs the call on the object and waits for its end, however long that takes: the time-out is not looked at.
// Whatever the call throws stays there; the caller learns only that it ran. Throws local_rpc_exception "Synchronous
// function execution failed!" when the object refuses the task, or drops it later; then the call will not run any
// more.
template <class Bind>
void CallSync(CActiveObject_base& object, const Bind& call, [[maybe_unused]] ULONG timeout) {
    details::PostAndWait(object, MakeSyncTask(call));
}

} // namespace LocalRPC
