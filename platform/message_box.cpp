#include "platform/message_box.h"

#include "platform/text.h"

#include <atomic>
#include <cstdio>
#include <exception>
#include <string>

namespace platform {

namespace {

std::atomic<MessageBoxHandler> g_Handler{nullptr};

const char* Prefix(EMessageIcon icon) {
    switch (icon) {
    case EMessageIcon::Error:
        return "Error: ";
    case EMessageIcon::Warning:
        return "Warning: ";
    default:
        return "";
    }
}

} // namespace

void ShowMessageBox(std::wstring_view text, EMessageIcon icon) noexcept {
    // A message that cannot be shown is no reason to end the process.
    try {
        if (const MessageBoxHandler handler = g_Handler.load()) {
            handler(text, icon);
            return;
        }
        const std::string line = Prefix(icon) + ToUtf8(text) + "\n";
        std::fwrite(line.data(), 1, line.size(), stderr);
    } catch (const std::exception&) {
    }
}

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) noexcept { return g_Handler.exchange(handler); }

} // namespace platform
