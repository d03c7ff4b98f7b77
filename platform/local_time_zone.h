#pragma once
// The zone in which this machine keeps its clock, as biases and recurring changes.
//
// The zone is what TZ names (a zone of the system's database, a file's full path, or a rule as POSIX writes it),
// or without TZ the system's own; a system that names none keeps UTC. Of the database it is the rule for the future
// that counts, not the changes listed for single years. A rule that months, weeks and weekdays cannot tell takes
// its nearest form:
//   - 24:00 of a day becomes 23:59:59.999 of that day;
//   - a day counted from the year's start, or a time outside the day named, becomes the month, week and weekday
//     on which it falls in the current year, and so may be a week off in another;
//   - daylight saving that takes the clock back in winter becomes one that puts it forward in summer;
//   - daylight saving all the year round becomes a standard time;
//   - an offset with seconds is rounded to the nearest minute.
//
// The zone is looked up at each call, so that a change of it is seen; a file is read again only when it was
// replaced. Any thread may call.

#include "platform/com/system_time.h"

namespace platform {

inline constexpr DWORD TimeZoneIdUnknown = 0;  // the zone has no daylight saving
inline constexpr DWORD TimeZoneIdStandard = 1; // standard time is in force
inline constexpr DWORD TimeZoneIdDaylight = 2; // daylight saving is
inline constexpr DWORD TimeZoneIdInvalid = 0xFFFFFFFFU;

// Fills the whole record and answers with one of the above. TimeZoneIdInvalid leaves it alone: TZ names neither a
// zone nor a rule, or the zone's file cannot be read.
[[nodiscard]] DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone) noexcept;

} // namespace platform
