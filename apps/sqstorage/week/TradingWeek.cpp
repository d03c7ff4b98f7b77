#include "TradingWeek.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>

namespace sqCli {

namespace {

using namespace std::chrono;

constexpr std::size_t DayLength = 24 * 60;

local_days SundayBefore(local_days day) { return day - (weekday(day) - Sunday); }

std::string MinuteText(std::size_t minute) { return fmt::format("{:02}:{:02}", minute / 60, minute % 60); }

} // namespace

tagWeek WeekOf(const CZoneClock& shown, local_days day) {
    const local_days sunday = SundayBefore(day);
    return {sunday, {shown.ToUtc(sunday), shown.ToUtc(sunday + weeks(1))}};
}

std::vector<tagInterval> TradingIn(const tagInterval& span, const CZoneClock& session,
                                   std::span<const tagSessionDetail> details) {
    const local_days first = SundayBefore(floor<days>(session.ToLocal(span.Start)));
    std::vector<tagInterval> trading;
    // A detail may reach two weeks ahead, and the clocks may be a day apart.
    for (local_days sunday = first - weeks(2); sunday <= first + weeks(2); sunday += weeks(1)) {
        for (const tagSessionDetail& detail : details) {
            const tagInterval interval{
                session.ToUtc(sunday + days(detail.StartDay.Number) + seconds(detail.StartTime.Seconds)),
                session.ToUtc(sunday + days(detail.EndDay.Number) + seconds(detail.EndTime.Seconds))};
            if (interval.Start < span.End && interval.End > span.Start)
                trading.push_back(interval);
        }
    }
    std::ranges::sort(trading);
    return trading;
}

std::array<DayMinutes, 7> MinutesOf(const tagWeek& week, const CZoneClock& shown,
                                    std::span<const tagInterval> trading) {
    std::array<std::array<std::optional<bool>, DayLength>, 7> seen{};
    for (sys_seconds moment = week.Span.Start; moment < week.Span.End; moment += minutes(1)) {
        const auto since = floor<minutes>(shown.ToLocal(moment) - week.Sunday).count();
        if (since < 0 || since >= static_cast<std::int64_t>(7 * DayLength))
            continue;
        const auto minute = static_cast<std::size_t>(since);
        const bool trades = std::ranges::any_of(trading, [&](const tagInterval& interval) {
            return interval.Start < moment + minutes(1) && interval.End > moment;
        });
        auto& mark = seen[minute / DayLength][minute % DayLength];
        mark = mark.value_or(false) || trades;
    }
    std::array<DayMinutes, 7> days{};
    bool before = false;
    for (std::size_t day = 0; day < days.size(); ++day)
        for (std::size_t minute = 0; minute < DayLength; ++minute)
            before = days[day][minute] = seen[day][minute].value_or(before);
    return days;
}

std::string TimesText(const DayMinutes& minutes) {
    std::string text;
    for (auto begin = std::ranges::find(minutes, true); begin != minutes.end();) {
        const auto end = std::find(begin, minutes.end(), false);
        text += fmt::format("{}{}-{}", text.empty() ? "" : " ",
                            MinuteText(static_cast<std::size_t>(begin - minutes.begin())),
                            MinuteText(static_cast<std::size_t>(end - minutes.begin())));
        begin = std::find(end, minutes.end(), true);
    }
    return text;
}

} // namespace sqCli
