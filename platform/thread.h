#pragma once
// What the system knows of the calling thread.

#include "platform/com/types.h"

namespace platform {

// Unique among the threads that live at the moment, never 0; the number that a debugger shows. Cheap to ask for.
[[nodiscard]] DWORD CurrentThreadId() noexcept;

} // namespace platform
