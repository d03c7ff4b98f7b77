#pragma once
// A time zone as one line of text, the TimeZoneString, and back. The text has no place for the zone's names and for
// the years of its dates. Pure functions that any thread may call; neither throws or allocates.
//
// The seventeen numbers: Bias, StandardBias, month, weekday, week, hour, minute, second and milliseconds of
// StandardDate, DaylightBias, and the same seven of DaylightDate. Biases are minutes, positive to the west; a
// standard month of 0 says that there is no daylight saving.

#include "platform/com/system_time.h"

#include <cstddef>

namespace tz_help {

// False, with the target untouched: for a null text, silently, and for a text of more or fewer than seventeen
// numbers, with a failed assertion reported. Any run of commas, colons and full stops separates two numbers; a
// piece without digits counts as 0. A bias beyond 32 bits becomes the nearest that fits, a number of a date is cut
// to 16 bits.
//
// The names in the target keep what they held, and the years become 0.
[[nodiscard]] bool StringToTZI(const wchar_t* text, TIME_ZONE_INFORMATION& zone);

// Cuts the text to fit, and ends it with a zero. A null buffer or one of no characters is left alone. 128
// characters hold every zone.
void TZIToString(const TIME_ZONE_INFORMATION& zone, wchar_t* buffer, std::size_t capacity);

} // namespace tz_help
