#pragma once
// A time zone's rule for the future as POSIX writes it, "CET-1CEST,M3.5.0,M10.5.0/3", with the widened range of
// times that RFC 8536 gives it. Pure functions.

#include "platform/com/system_time.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

struct tagZoneChange {
    enum class EForm {
        WeekdayOfMonth,
        DayWithoutLeap, // 1 to 365, 29 February not counted
        DayWithLeap     // 0 to 365
    };
    EForm Form = EForm::WeekdayOfMonth;
    int Month = 0;   // 1 to 12
    int Week = 0;    // 1 to 5, 5 the last
    int Weekday = 0; // 0 Sunday
    int Day = 0;     // of the two other forms
    int Seconds = 0; // from that day's midnight, on the clock before the change; within a week either way
};

struct tagZoneRule {
    std::string StandardName;
    std::string DaylightName;
    int StandardOffset = 0; // seconds to the west
    int DaylightOffset = 0;
    bool HasDaylight = false;
    tagZoneChange Begin; // of daylight saving
    tagZoneChange End;
};

// Empty for anything but a complete, correct rule. A daylight name without dates changes as in the United States,
// which is what the system's own C library makes of it.
[[nodiscard]] std::optional<tagZoneRule> ParseZoneRule(std::string_view text);

// The rule as it works in that year, with the greater offset to the east in summer and without a daylight saving
// that fills the year or none of it.
[[nodiscard]] tagZoneRule NormalizedFor(const tagZoneRule& rule, std::chrono::year year);

// Of a normalized rule; the nearest form where there is no exact one, as platform/local_time_zone.h tells.
[[nodiscard]] TIME_ZONE_INFORMATION ToTimeZoneInformation(const tagZoneRule& rule, std::chrono::year year);

[[nodiscard]] bool IsDaylight(const tagZoneRule& rule, std::chrono::sys_seconds moment);

} // namespace platform
