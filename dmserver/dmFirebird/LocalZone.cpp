#include "LocalZone.h"

#include "platform/local_time_zone.h"
#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"

#include <array>
#include <fmt/format.h>

namespace IDM_dmFirebird {

namespace {

// A zone that the machine cannot tell counts as GMT.
TIME_ZONE_INFORMATION LocalZone() {
    TIME_ZONE_INFORMATION zone{};
    if (platform::GetTimeZoneInformation(&zone) == platform::TimeZoneIdInvalid)
        return {};
    return zone;
}

// Digits and punctuation alone: nothing to escape, nothing to convert.
std::string ToText(const TIME_ZONE_INFORMATION& zone) {
    std::array<wchar_t, 128> text{};
    tz_help::TZIToString(zone, text.data(), text.size());
    const std::wstring_view characters(text.data());
    return std::string(characters.begin(), characters.end());
}

} // namespace

std::string SetLocalZoneStatement() {
    const TIME_ZONE_INFORMATION zone = LocalZone();
    return fmt::format("SELECT RDB$SET_CONTEXT('USER_SESSION','LOCAL_BIAS','{}'),"
                       "RDB$SET_CONTEXT('USER_SESSION','LOCAL_TIME_ZONE','{}') FROM RDB$DATABASE",
                       zone.Bias, ToText(zone));
}

} // namespace IDM_dmFirebird
