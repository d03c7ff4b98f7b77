#include "ZoneClock.h"

namespace sqCli {

namespace {

using namespace std::chrono;

bool IsChange(const SYSTEMTIME& date) {
    return date.wMonth >= 1 && date.wMonth <= 12 && date.wDayOfWeek <= 6 && date.wDay >= 1 && date.wDay <= 5;
}

// When the change comes in that year, on the clock that is about to be changed.
local_seconds ChangeIn(year in, const SYSTEMTIME& date) {
    const weekday day(date.wDayOfWeek);
    const month of(date.wMonth);
    const local_days on = date.wDay == 5 ? local_days(in / of / day[last])
                                         : local_days(in / of / day[static_cast<unsigned>(date.wDay)]);
    return on + hours(date.wHour) + minutes(date.wMinute) + seconds(date.wSecond);
}

sys_seconds Minus(local_seconds time, minutes offset) { return sys_seconds((time - offset).time_since_epoch()); }
local_seconds Plus(sys_seconds moment, minutes offset) {
    return local_seconds((moment + offset).time_since_epoch());
}

} // namespace

// Without changes the biases of the seasons do not count.
CZoneClock::CZoneClock(const TIME_ZONE_INFORMATION& zone)
    : m_Zone(zone), m_HasDaylight(IsChange(zone.StandardDate) && IsChange(zone.DaylightDate)),
      m_Standard(-(zone.Bias + (m_HasDaylight ? zone.StandardBias : 0))),
      m_Daylight(-(zone.Bias + zone.DaylightBias)) {}

CZoneClock::tagSeason CZoneClock::DaylightOf(year year) const {
    return {Minus(ChangeIn(year, m_Zone.DaylightDate), m_Standard),
            Minus(ChangeIn(year, m_Zone.StandardDate), m_Daylight)};
}

minutes CZoneClock::OffsetAt(sys_seconds moment) const {
    if (!m_HasDaylight)
        return m_Standard;
    const year_month_day date(floor<days>(Plus(moment, m_Standard)));
    const tagSeason daylight = DaylightOf(date.year());
    // South of the equator the season spans the turn of the year.
    const bool isDaylight = daylight.Begin < daylight.End ? moment >= daylight.Begin && moment < daylight.End
                                                          : moment >= daylight.Begin || moment < daylight.End;
    return isDaylight ? m_Daylight : m_Standard;
}

local_seconds CZoneClock::ToLocal(sys_seconds moment) const { return Plus(moment, OffsetAt(moment)); }

sys_seconds CZoneClock::ToUtc(local_seconds time) const {
    const sys_seconds daylight = Minus(time, m_Daylight);
    const sys_seconds standard = Minus(time, m_Standard);
    const bool isDaylight = m_HasDaylight && OffsetAt(daylight) == m_Daylight;
    const bool isStandard = OffsetAt(standard) == m_Standard;
    if (isDaylight && isStandard)
        return std::min(daylight, standard);
    return isDaylight ? daylight : standard;
}

} // namespace sqCli
