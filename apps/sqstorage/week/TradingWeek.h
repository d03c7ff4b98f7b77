// One week of a session: when it trades, and how that falls on the days of a clock.
#pragma once

#include "ZoneClock.h"
#include "apps/sqstorage/store/Sessions.h"

#include <array>
#include <chrono>
#include <span>
#include <string>
#include <vector>

namespace sqCli {

// From its start up to its end.
struct tagInterval {
    std::chrono::sys_seconds Start;
    std::chrono::sys_seconds End;
    friend auto operator<=>(const tagInterval&, const tagInterval&) = default;
};

// From Sunday's midnight to the next one, on the clock by which it is shown.
struct tagWeek {
    std::chrono::local_days Sunday;
    tagInterval Span;
};
[[nodiscard]] tagWeek WeekOf(const CZoneClock& shown, std::chrono::local_days day);

// The stretches of trading that fall into the span at least in part, each whole, in their order. The details'
// times are on the clock of the session.
[[nodiscard]] std::vector<tagInterval> TradingIn(const tagInterval& span, const CZoneClock& session,
                                                 std::span<const tagSessionDetail> details);

// For each minute of a day's clock whether there is trading; a minute that the clock skips is as the one before it,
// and one that it shows twice has trading when either has.
using DayMinutes = std::array<bool, 24 * 60>;
[[nodiscard]] std::array<DayMinutes, 7> MinutesOf(const tagWeek& week, const CZoneClock& shown,
                                                  std::span<const tagInterval> trading);

// "09:30-16:00 17:00-24:00"; empty for a day without trading.
[[nodiscard]] std::string TimesText(const DayMinutes& minutes);

} // namespace sqCli
