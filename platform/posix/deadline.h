#pragma once
// The end of a wait that may be interrupted and go on.

#include "platform/wait.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace platform {

class CDeadline {
public:
    using Clock = std::chrono::steady_clock;

    explicit CDeadline(DWORD timeout) noexcept : m_IsInfinite(timeout == Infinite) {
        if (!m_IsInfinite)
            m_End = Clock::now() + std::chrono::milliseconds(timeout);
    }

    [[nodiscard]] bool IsInfinite() const noexcept { return m_IsInfinite; }
    // Of a finite wait.
    [[nodiscard]] Clock::time_point End() const noexcept { return m_End; }
    [[nodiscard]] bool IsOver() const noexcept { return !m_IsInfinite && Clock::now() >= m_End; }
    void BringForward(Clock::time_point end) noexcept {
        m_End = m_IsInfinite ? end : std::min(end, m_End);
        m_IsInfinite = false;
    }
    // For a system call: null for ever. Points into this object.
    [[nodiscard]] const timespec* Remaining() noexcept {
        if (m_IsInfinite)
            return nullptr;
        const auto left = std::max(Clock::duration::zero(), m_End - Clock::now());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        m_Remaining.tv_sec = seconds.count();
        m_Remaining.tv_nsec = std::chrono::nanoseconds(left - seconds).count();
        return &m_Remaining;
    }

private:
    bool m_IsInfinite;
    Clock::time_point m_End{};
    timespec m_Remaining{};
};

} // namespace platform
