#include "LocalZone.h"

#include "platform/local_time_zone.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

namespace IDM_dmFirebird {

namespace {

// A zone that the machine cannot tell counts as GMT.
TIME_ZONE_INFORMATION LocalZone() {
    TIME_ZONE_INFORMATION zone{};
    if (platform::GetTimeZoneInformation(&zone) == platform::TimeZoneIdInvalid)
        return {};
    return zone;
}

std::wstring ToText(const SYSTEMTIME& date) {
    return fmt::format(L"{},{},{},{:02}:{:02}:{:02}.{:04}", date.wMonth, date.wDayOfWeek, date.wDay, date.wHour,
                       date.wMinute, date.wSecond, date.wMilliseconds);
}

std::wstring ToText(const TIME_ZONE_INFORMATION& zone) {
    return fmt::format(L"{},{},{},{},{}", zone.Bias, zone.StandardBias, ToText(zone.StandardDate),
                       zone.DaylightBias, ToText(zone.DaylightDate));
}

} // namespace

std::wstring LocalZoneText() { return ToText(LocalZone()); }

std::string SetLocalZoneStatement() {
    const TIME_ZONE_INFORMATION zone = LocalZone();
    const std::wstring text = ToText(zone);
    // Digits and punctuation alone: nothing to escape, nothing to convert.
    return fmt::format("SELECT RDB$SET_CONTEXT('USER_SESSION','LOCAL_BIAS','{}'),"
                       "RDB$SET_CONTEXT('USER_SESSION','LOCAL_TIME_ZONE','{}') FROM RDB$DATABASE",
                       zone.Bias, std::string(text.begin(), text.end()));
}

} // namespace IDM_dmFirebird
