#pragma once
// The error number that the system's last failing call left for this thread.

#include "platform/com/types.h"

#include <string>

namespace platform {

[[nodiscard]] DWORD GetLastError() noexcept;
void SetLastError(DWORD error) noexcept;
// The system's English words for it; never empty.
[[nodiscard]] std::wstring SystemErrorText(DWORD error);

// Reports on the way must not disturb the number: it is put back at the end of the scope.
class CLastErrorKeeper {
public:
    CLastErrorKeeper() noexcept : m_Error(GetLastError()) {}
    ~CLastErrorKeeper() { SetLastError(m_Error); }
    CLastErrorKeeper(const CLastErrorKeeper&) = delete;
    CLastErrorKeeper& operator=(const CLastErrorKeeper&) = delete;

    [[nodiscard]] DWORD Error() const noexcept { return m_Error; }

private:
    DWORD m_Error;
};

} // namespace platform
