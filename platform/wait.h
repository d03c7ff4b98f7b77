#pragma once
// What a wait answers, and how long it may last. Time-outs are milliseconds.

#include "platform/com/types.h"

namespace platform {

inline constexpr DWORD Infinite = 0xFFFFFFFF;

inline constexpr DWORD WaitSignalled = 0;       // what was waited for has come
inline constexpr DWORD WaitInput = 1;           // the thread's message queue has something to dispatch
inline constexpr DWORD WaitAbandoned = 0x80;    // it will never come: who should have brought it has given it up
inline constexpr DWORD WaitTimeout = 258;       // the time is over
inline constexpr DWORD WaitFailed = 0xFFFFFFFF; // nothing to wait for; GetLastError() says why

} // namespace platform
