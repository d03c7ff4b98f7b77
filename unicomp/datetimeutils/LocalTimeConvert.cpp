#include "unicomp/datetimeutils/interface/LocalTimeConvert.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/local_time_zone.h"
#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"

namespace dmDateTime {

namespace {

ZoneDate Narrow(const SYSTEMTIME& date) {
    ZoneDate result;
    result.Year = date.wYear;
    result.Minute = date.wMinute;
    result.Milliseconds = date.wMilliseconds;
    // Each of these fits: a week, a weekday, an hour, a month and a second.
    result.Day = static_cast<BYTE>(date.wDay);
    result.DayOfWeek = static_cast<BYTE>(date.wDayOfWeek);
    result.Hour = static_cast<BYTE>(date.wHour);
    result.Month = static_cast<BYTE>(date.wMonth);
    result.Second = static_cast<BYTE>(date.wSecond);
    return result;
}

SYSTEMTIME Widen(const ZoneDate& date) {
    SYSTEMTIME result{};
    result.wYear = date.Year;
    result.wMonth = date.Month;
    result.wDayOfWeek = date.DayOfWeek;
    result.wDay = date.Day;
    result.wHour = date.Hour;
    result.wMinute = date.Minute;
    result.wSecond = date.Second;
    result.wMilliseconds = date.Milliseconds;
    return result;
}

} // namespace

TimeZoneInformation TimeZoneInformation::CreateLocal() {
    TIME_ZONE_INFORMATION zone{};
    const DWORD tziResult = platform::GetTimeZoneInformation(&zone);
    BugSlayerUtil::Assert(tziResult != platform::TimeZoneIdInvalid, L"((DWORD)0xFFFFFFFF) != tziResult");
    TimeZoneInformation result;
    // A bias is within 26 hours, far below what 16 bits hold.
    result.DaylightBias = static_cast<SHORT>(zone.DaylightBias);
    result.Bias = static_cast<SHORT>(zone.Bias);
    result.DaylightDate = Narrow(zone.DaylightDate);
    result.StandardBias = static_cast<SHORT>(zone.StandardBias);
    result.StandardDate = Narrow(zone.StandardDate);
    result.IsSet = true;
    return result;
}

std::wstring TimeZoneInformation::ToString() const {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = Bias;
    zone.StandardBias = StandardBias;
    zone.StandardDate = Widen(StandardDate);
    zone.DaylightBias = DaylightBias;
    zone.DaylightDate = Widen(DaylightDate);
    wchar_t text[256];
    tz_help::TZIToString(zone, text, std::size(text));
    return text;
}

} // namespace dmDateTime
