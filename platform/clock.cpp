#include "platform/clock.h"

namespace platform {

double MillisecondClock() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

std::chrono::system_clock::time_point WallClock() noexcept { return std::chrono::system_clock::now(); }

} // namespace platform
