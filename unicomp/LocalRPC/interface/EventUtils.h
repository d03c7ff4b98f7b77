#pragma once
// Events as objects: made by the constructor, closed by the destructor, with or without a word beside the signal
// that says what it means. Any thread may set, reset and wait.

#include "platform/event.h"

#include <atomic>

namespace MTUtils {

class CMTUEvent {
public:
    // Throws std::runtime_error "can't create event" when the system has no more of them, and for a name or
    // security attributes, since an event is shared within the process only.
    explicit CMTUEvent(bool manualReset, bool initialState = false, const wchar_t* name = nullptr,
                       const void* attributes = nullptr);
    ~CMTUEvent();
    CMTUEvent(const CMTUEvent&) = delete;
    CMTUEvent& operator=(const CMTUEvent&) = delete;

    // Closes the event; nothing happens when it is closed already. Not while others use it.
    void _free();
    // False when the event is closed.
    bool Set() noexcept;
    bool Reset() noexcept;
    // platform::Wait...
    [[nodiscard]] DWORD Wait(DWORD timeout) const noexcept;
    [[nodiscard]] const platform::CEvent& Event() const noexcept { return m_Event; }

private:
    platform::CEvent m_Event;
};

class CStateEvent : public CMTUEvent {
public:
    CStateEvent(bool manualReset, LONG state) : CMTUEvent(manualReset), m_State(state) {}

    // The state first, the signal after it. False when the event is closed.
    bool Set(LONG state) noexcept;
    // From one state to another, and nothing if it is not the one expected. Gives no signal.
    bool Change(LONG expected, LONG state) noexcept;
    // The state at the end of the wait, whether the signal came or the time was over.
    LONG Wait(DWORD timeout) const noexcept;
    [[nodiscard]] LONG State() const noexcept { return m_State.load(); }

private:
    std::atomic<LONG> m_State;
};

} // namespace MTUtils
