#include "platform/clock.h"

#include <ctime>

namespace platform {

DWORD TickCount() noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<DWORD>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
}

} // namespace platform
