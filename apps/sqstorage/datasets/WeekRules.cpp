#include "WeekRules.h"

#include "NumberRules.h"
#include "apps/sqstorage/rows/Numbers.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

using Reasons = std::vector<std::string>;

constexpr std::int32_t DaySeconds = 24 * 3600;
// The text has room for numbers of so many digits.
constexpr LONG LargestValue = 9999999;
constexpr std::size_t LongestSessionText = 511;

std::int64_t SecondOfWeek(tagWeekday day, tagClockTime time) {
    return std::int64_t{day.Number} * DaySeconds + time.Seconds;
}

std::optional<tagWeekday> ParseDay(std::size_t column, std::string_view text, std::int32_t last, Reasons& reasons) {
    const auto day = ParseWeekday(text);
    if (day && day->Number <= last)
        return day;
    reasons.push_back(fmt::format("{} is \"{}\": give Sun, Mon, Tue, Wed, Thu, Fri or Sat{}",
                                  WeekColumns[column].Name, text,
                                  last > 6 ? ", or 7 to 13 for Sunday to Saturday of the week after" : ""));
    return std::nullopt;
}

std::optional<tagClockTime> ParseTime(std::size_t column, std::string_view text, std::int32_t last,
                                      Reasons& reasons) {
    const auto time = ParseClock(text);
    if (time && time->Seconds <= last)
        return time;
    reasons.push_back(fmt::format("{} is \"{}\": give a time like 09:30, from 00:00 to {}",
                                  WeekColumns[column].Name, text, last == DaySeconds ? "24:00" : "23:59:59"));
    return std::nullopt;
}

std::optional<std::string> OrderProblem(const tagSessionDetail& detail) {
    const std::int64_t length =
        SecondOfWeek(detail.EndDay, detail.EndTime) - SecondOfWeek(detail.StartDay, detail.StartTime);
    if (length <= 0)
        return fmt::format(
            "the end, {} {}, is not after the start, {} {}: exchange them, or give as END_DAY the day "
            "on which the trading ends, with 7 for the Sunday after",
            WeekdayText(detail.EndDay), ClockText(detail.EndTime), WeekdayText(detail.StartDay),
            ClockText(detail.StartTime));
    if (length > 7 * DaySeconds)
        return fmt::format("the trading from {} {} to {} {} is longer than a week: correct a day",
                           WeekdayText(detail.StartDay), ClockText(detail.StartTime), WeekdayText(detail.EndDay),
                           ClockText(detail.EndTime));
    return std::nullopt;
}

} // namespace

std::optional<tagSessionDetail> ParseDetail(const WeekValues& values, Reasons& reasons) {
    const auto startDay = ParseDay(0, values[0], 6, reasons);
    const auto startTime = ParseTime(1, values[1], DaySeconds - 1, reasons);
    const auto endDay = ParseDay(2, values[2], 13, reasons);
    const auto endTime = ParseTime(3, values[3], DaySeconds, reasons);
    std::array<std::optional<LONG>, 3> others;
    for (std::size_t other = 0; other < others.size(); ++other)
        others[other] = ParseWholeOr(0, WeekColumns[4 + other].Name, values[4 + other], 0, LargestValue, reasons);
    if (!startDay || !startTime || !endDay || !endTime || !others[0] || !others[1] || !others[2])
        return std::nullopt;
    const tagSessionDetail detail{*startDay, *startTime, *endDay, *endTime, *others[0], *others[1], *others[2]};
    if (auto problem = OrderProblem(detail)) {
        reasons.push_back(std::move(*problem));
        return std::nullopt;
    }
    return detail;
}

std::optional<std::string> WeekProblem(std::span<const tagSessionDetail> details) {
    std::size_t length = fmt::formatted_size("{}:", details.size());
    for (const tagSessionDetail& detail : details)
        length += fmt::formatted_size("{},{},{},{},{};", SecondOfWeek(detail.StartDay, detail.StartTime) / 60,
                                      SecondOfWeek(detail.EndDay, detail.EndTime) / 60, detail.Value6,
                                      detail.Value7, detail.Value5);
    if (length <= LongestSessionText)
        return std::nullopt;
    return fmt::format("the {} rows of the session make a text of {} characters, and hosts read {}: join or remove "
                       "some of them",
                       details.size(), length, LongestSessionText);
}

} // namespace sqCli
