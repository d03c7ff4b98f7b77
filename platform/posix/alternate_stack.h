#pragma once
// A stack for the handlers of a fault, which a thread that ran out of its own stack still can use.

#include <cstddef>

namespace platform {

// Gives the calling thread one, unless it has one already; taken back when the thread ends. Without memory for it
// the thread goes on without one.
void EnsureAlternateStack() noexcept;

} // namespace platform
