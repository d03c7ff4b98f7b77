#pragma once
// An event: one thread signals it, others wait for it.
//
//     auto event = platform::CEvent::Create(platform::EEventReset::Automatic, false);
//     if (!event)
//         throw std::runtime_error("can't create event");      // GetLastError() says why
//     if (event->Wait(1000) == platform::WaitTimeout) ...
//
// Every event holds one of the process's descriptors until it is closed. Any thread may set, reset and wait;
// opening, closing and moving belong to the owner, while nobody waits. What was done before Set() is seen behind
// the Wait() that it ends.

#include "platform/wait.h"

#include <atomic>
#include <optional>

namespace platform {

enum class EEventReset : bool {
    Automatic, // one wait takes the signal
    Manual,    // signalled until it is reset
};

class CEvent {
public:
    // Nothing when the system has no more of them: GetLastError() says why.
    [[nodiscard]] static std::optional<CEvent> Create(EEventReset reset, bool signalled) noexcept;

    // Closed.
    CEvent() noexcept = default;
    CEvent(CEvent&& other) noexcept;
    CEvent& operator=(CEvent&& other) noexcept;
    ~CEvent();

    [[nodiscard]] bool IsOpen() const noexcept { return m_Descriptor >= 0; }
    // False when the event was closed already, as the next three are on a closed event.
    bool Close() noexcept;
    bool Set() noexcept;
    bool Reset() noexcept;
    // WaitSignalled, WaitTimeout, or WaitFailed on a closed event.
    [[nodiscard]] DWORD Wait(DWORD timeout) const noexcept;

    // Readable while the event is signalled; for waiting on several things at once. Not to be read or written.
    [[nodiscard]] int Descriptor() const noexcept { return m_Descriptor; }
    // After the descriptor became readable: true if the signal is the caller's, who takes it if it can be taken.
    [[nodiscard]] bool TakeSignal() const noexcept;

private:
    int m_Descriptor = -1;
    EEventReset m_Reset = EEventReset::Automatic;
    // The descriptor wakes; the order of memory is kept here.
    mutable std::atomic<DWORD> m_Sets{0};
};

// Waits for the event, or for something in the calling thread's message queue, also if it is there already. The
// event comes first when both are there. The queue is left as it is: after WaitInput the caller dispatches
// (message_queue.h) and waits again. A null event never comes.
[[nodiscard]] DWORD WaitForEventOrMessages(const CEvent* event, DWORD timeout) noexcept;

} // namespace platform
