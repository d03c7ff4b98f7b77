// Numbers and days as text, the same under every locale.
#pragma once

#include "RowSet.h"

#include <optional>
#include <string>
#include <string_view>

namespace sqCli {

// The shortest decimal text, without exponent, that reads back as the same float.
[[nodiscard]] std::string ShortestText(float value);

// The whole text or nothing: no blanks, no sign "+". Out of range is nothing, too.
[[nodiscard]] std::optional<std::int64_t> ParseInteger(std::string_view text);
[[nodiscard]] std::optional<double> ParseReal(std::string_view text);

// YYYY-MM-DD.
[[nodiscard]] std::string DayText(tagDay day);

// The days the store's calendar has: 1900-01-01 to 2078-12-31.
inline constexpr tagDay FirstDay{2};
inline constexpr tagDay LastDay{65380};

// A date of the calendar in the form YYYY-MM-DD. When it is none, `reason` says why and what would be one.
[[nodiscard]] std::optional<tagDay> ParseDay(std::string_view text, std::string& reason);

// Sun to Sat; a day of the week after as its number, 7 to 13.
[[nodiscard]] std::string WeekdayText(tagWeekday day);
[[nodiscard]] std::optional<tagWeekday> ParseWeekday(std::string_view text);

// HH:MM, or HH:MM:SS when there are seconds.
[[nodiscard]] std::string ClockText(tagClockTime time);
// Either form, up to 24:00.
[[nodiscard]] std::optional<tagClockTime> ParseClock(std::string_view text);

} // namespace sqCli
