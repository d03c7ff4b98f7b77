// Any bytes, as a zone's file and as a rule: refused, or turned into a record whose fields are in range.

#include "platform/posix/zone_file.h"

#include <cstdint>
#include <cstdlib>

namespace {

void Require(bool condition) {
    if (!condition)
        std::abort();
}

void RequireDate(const SYSTEMTIME& date) {
    Require(date.wMonth >= 1 && date.wMonth <= 12 && date.wDay >= 1 && date.wDay <= 5 && date.wDayOfWeek <= 6);
    Require(date.wHour <= 23 && date.wMinute <= 59 && date.wSecond <= 59 && date.wMilliseconds <= 999);
}

void RequireZone(const platform::tagZoneRule& rule, std::chrono::year year) {
    const platform::tagZoneRule normalized = platform::NormalizedFor(rule, year);
    const TIME_ZONE_INFORMATION zone = platform::ToTimeZoneInformation(normalized, year);
    Require(zone.Bias >= -26 * 60 && zone.Bias <= 26 * 60 && zone.DaylightBias <= 0);
    Require((zone.StandardDate.wMonth != 0) == normalized.HasDaylight);
    if (normalized.HasDaylight) {
        RequireDate(zone.StandardDate);
        RequireDate(zone.DaylightDate);
    }
    (void)platform::IsDaylight(normalized, std::chrono::sys_days(year / 6 / 1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    for (const auto& rule : {platform::ReadZoneFile(bytes), platform::ParseZoneRule(bytes)}) {
        if (!rule)
            continue;
        RequireZone(*rule, std::chrono::year(2024));
        RequireZone(*rule, std::chrono::year(2025));
    }
    return 0;
}
