#pragma once
// What the system knows of this process. Any thread may call.

#include "platform/com/types.h"

#include <string>

namespace platform {

// Full path of the program that runs; for a script that of its interpreter.
[[nodiscard]] std::wstring ExecutablePath();

[[nodiscard]] DWORD CurrentProcessId() noexcept;

} // namespace platform
