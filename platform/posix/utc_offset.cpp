#include "platform/clock.h"

#include <ctime>

namespace platform {

std::chrono::seconds UtcOffset(std::chrono::system_clock::time_point moment) noexcept {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm local{};
    // Otherwise a change of TZ would not be seen.
    tzset();
    return std::chrono::seconds(localtime_r(&seconds, &local) != nullptr ? local.tm_gmtoff : 0);
}

} // namespace platform
