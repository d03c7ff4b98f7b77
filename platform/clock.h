#pragma once
// Two clocks: one to measure with, one to tell the time of day. Any thread may call.

#include <chrono>

namespace platform {

// Milliseconds with their fraction since an arbitrary moment. Never goes back; not moved by setting the time.
[[nodiscard]] double MillisecondClock() noexcept;

// The time of day, UTC.
[[nodiscard]] std::chrono::system_clock::time_point WallClock() noexcept;

} // namespace platform
