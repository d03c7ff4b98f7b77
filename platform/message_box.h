#pragma once
// Telling the user something where no window of the host is known. Without a window system the words go to the
// standard error stream. Any thread may call.

#include "platform/com/types.h"

#include <string_view>

namespace platform {

// The values are the system's numbers.
enum class EMessageIcon : UINT { None = 0, Error = 16, Warning = 48, Information = 64 };

void ShowMessageBox(std::wstring_view text, EMessageIcon icon) noexcept;

// Takes the message instead, for a host with a place of its own to show it. Null is the usual way; the result is
// what was set before.
using MessageBoxHandler = void (*)(std::wstring_view text, EMessageIcon icon);
MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) noexcept;

} // namespace platform
