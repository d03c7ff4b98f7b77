#include "ZoneRules.h"

#include "platform/text.h"
#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

constexpr const char* Example = "360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";

std::string TextOf(TIME_ZONE_INFORMATION zone) {
    // The store has no place for them.
    zone.StandardDate.wMilliseconds = 0;
    zone.DaylightDate.wMilliseconds = 0;
    wchar_t text[128];
    tz_help::TZIToString(zone, text, std::size(text));
    return platform::ToUtf8(text);
}

bool IsTime(const SYSTEMTIME& date) { return date.wHour <= 23 && date.wMinute <= 59 && date.wSecond <= 59; }

bool IsDay(const SYSTEMTIME& date) {
    return date.wMonth >= 1 && date.wMonth <= 12 && date.wDayOfWeek <= 6 && date.wDay >= 1 && date.wDay <= 5;
}

bool IsBias(LONG bias) { return bias >= -24 * 60 && bias <= 24 * 60; }

// The dates of a zone without daylight saving mean nothing.
bool IsZone(const TIME_ZONE_INFORMATION& zone) {
    const bool changes = zone.StandardDate.wMonth != 0;
    return (!changes || (IsDay(zone.StandardDate) && IsDay(zone.DaylightDate))) && IsTime(zone.StandardDate) &&
           IsTime(zone.DaylightDate) && IsBias(zone.Bias) && IsBias(zone.StandardBias) && IsBias(zone.DaylightBias);
}

} // namespace

std::optional<std::string> ZoneProblem(std::string_view column, std::string_view text) {
    TIME_ZONE_INFORMATION zone{};
    if (!tz_help::StringToTZI(platform::FromUtf8(text).c_str(), zone))
        return fmt::format("{} is \"{}\", which is no time zone: give seventeen numbers like \"{}\"", column, text,
                           Example);
    if (!IsZone(zone))
        return fmt::format(
            "{} is \"{}\", where a bias, a month, a weekday, a week or a time is out of range: write "
            "it like \"{}\"",
            column, text, Example);
    if (const std::string kept = TextOf(zone); kept != text)
        return fmt::format("{} is \"{}\", and the store would keep \"{}\": write it so, or correct it", column,
                           text, kept);
    return std::nullopt;
}

TIME_ZONE_INFORMATION ParseZone(std::string_view text) {
    TIME_ZONE_INFORMATION zone{};
    if (!tz_help::StringToTZI(platform::FromUtf8(text).c_str(), zone))
        return {};
    return zone;
}

} // namespace sqCli
