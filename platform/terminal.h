#pragma once
// What stands at the other end of the standard streams. Any thread may call.

namespace platform {

enum class EStandardStream { Output = 1, Error = 2 };

// A person's terminal, and not a file or a pipe.
[[nodiscard]] bool IsTerminal(EStandardStream stream) noexcept;

// In characters; 80 where there is no terminal or it does not say.
[[nodiscard]] int TerminalWidth(EStandardStream stream) noexcept;

} // namespace platform
