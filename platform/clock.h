#pragma once
// Clocks: to measure with, exactly or cheaply, and to tell the time of day. Any thread may call.

#include "platform/com/types.h"

#include <chrono>

namespace platform {

// Milliseconds with their fraction since an arbitrary moment. Never goes back; not moved by setting the time.
[[nodiscard]] double MillisecondClock() noexcept;

// Whole milliseconds of the same kind, round and round in 32 bits, in steps of some milliseconds; costs next to nothing.
[[nodiscard]] DWORD TickCount() noexcept;

// The time of day, UTC.
[[nodiscard]] std::chrono::system_clock::time_point WallClock() noexcept;

// How far this machine's local time is ahead of UTC at that moment; the zone is looked up at each call.
[[nodiscard]] std::chrono::seconds UtcOffset(std::chrono::system_clock::time_point moment) noexcept;

} // namespace platform
