#pragma once
// The standard streams, and what stands at their other end. Any thread may ask.

#include "platform/com/types.h"

namespace platform {

enum class EStandardStream { Output = 1, Error = 2 };

// A person's terminal, and not a file or a pipe.
[[nodiscard]] bool IsTerminal(EStandardStream stream) noexcept;

// In characters; 80 where there is no terminal or it does not say.
[[nodiscard]] int TerminalWidth(EStandardStream stream) noexcept;

// For a program to call first of all, on its only thread, before it opens anything. A stream that it was started
// without fails, where it would be the next file opened; and writing where nobody reads any more fails, where it
// would end the program.
void SecureStandardStreams() noexcept;
// Whether it is with this error that such a write failed.
[[nodiscard]] bool IsReaderGone(DWORD error) noexcept;

} // namespace platform
