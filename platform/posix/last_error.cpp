#include "platform/last_error.h"

#include "platform/text.h"

#include <cerrno>
#include <cstring>

namespace platform {

DWORD GetLastError() noexcept { return static_cast<DWORD>(errno); }

void SetLastError(DWORD error) noexcept { errno = static_cast<int>(error); }

std::wstring SystemErrorText(DWORD error) {
    // Unlike strerror it needs no buffer and does not follow the locale.
    const char* text = strerrordesc_np(static_cast<int>(error));
    return text != nullptr ? FromUtf8(text) : L"Unknown error " + std::to_wstring(error);
}

} // namespace platform
