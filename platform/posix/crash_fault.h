#pragma once
// What a signal says about a fault, in the terms of crash.h.

#include "platform/crash.h"

#include <csignal>
#include <ucontext.h>

namespace platform {

[[nodiscard]] DWORD CodeOfFault(int signal, int signalCode) noexcept;
[[nodiscard]] CThreadContext MakeThreadContext(const ucontext_t& native) noexcept;

} // namespace platform
