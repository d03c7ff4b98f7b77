// A trading week for people: a strip of blocks for each day, as wide as the terminal allows.
#pragma once

#include "TradingWeek.h"

#include <string>

namespace sqCli {

// A line of hours, and a line for each day with the strip and the times in words. A block is full where the whole
// stretch trades, left or right half where that half does, shaded for any other part, and a dot for none. With
// colours the blocks are green. No line is wider than `width` when a day can be shown in it at all.
[[nodiscard]] std::string DrawWeek(std::chrono::local_days sunday, const std::array<DayMinutes, 7>& days, int width,
                                   bool colours);

} // namespace sqCli
