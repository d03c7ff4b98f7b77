// A moment as the machine's clock shows it.
#pragma once

#include <chrono>
#include <string>

namespace sqCli {

// "2027-03-01T09:30:00.250+01:00": ISO 8601, local time and its distance from UTC.
[[nodiscard]] std::string MomentText(std::chrono::system_clock::time_point moment, std::chrono::seconds utcOffset);

} // namespace sqCli
