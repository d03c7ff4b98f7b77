#include "Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <fmt/format.h>

namespace sqCli {

namespace {

using namespace std::chrono;

constexpr sys_days DayZero = sys_days(1899y / December / 30);

template <class Number, class... Format>
std::optional<Number> ParseWhole(std::string_view text, Format... format) {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, format...);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

constexpr std::array<std::string_view, 7> WeekdayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

bool AreDigits(std::string_view text) { return text.find_first_not_of("0123456789") == std::string_view::npos; }

bool HasDayForm(std::string_view text) {
    return text.size() == 10 && text[4] == '-' && text[7] == '-' && AreDigits(text.substr(0, 4)) &&
           AreDigits(text.substr(5, 2)) && AreDigits(text.substr(8));
}

} // namespace

std::string ShortestText(float value) {
    // The longest fixed form of a float: sign, 39 digits before the point or 45 behind it.
    std::array<char, 64> text;
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    return {text.data(), result.ptr};
}

std::optional<std::int64_t> ParseInteger(std::string_view text) { return ParseWhole<std::int64_t>(text); }

std::optional<double> ParseReal(std::string_view text) {
    const auto value = ParseWhole<double>(text, std::chars_format::general);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::string DayText(tagDay day) {
    const year_month_day date(DayZero + days(day.Number));
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                       static_cast<unsigned>(date.day()));
}

std::optional<tagDay> ParseDay(std::string_view text, std::string& reason) {
    if (!HasDayForm(text)) {
        reason = fmt::format("\"{}\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24", text);
        return std::nullopt;
    }
    const auto number = [&](std::size_t at, std::size_t length) {
        return static_cast<int>(*ParseInteger(text.substr(at, length)));
    };
    const year_month_day date(year(number(0, 4)), month(static_cast<unsigned>(number(5, 2))),
                              day(static_cast<unsigned>(number(8, 2))));
    if (!date.ok()) {
        reason = fmt::format("there is no day {}: correct the month or the day", text);
        return std::nullopt;
    }
    const tagDay result{static_cast<std::int32_t>((sys_days(date) - DayZero).count())};
    if (result < FirstDay || result > LastDay) {
        reason = fmt::format("{} is outside the calendar of the store: give a date from {} to {}", text,
                             DayText(FirstDay), DayText(LastDay));
        return std::nullopt;
    }
    return result;
}

std::string WeekdayText(tagWeekday day) {
    const auto number = static_cast<std::size_t>(day.Number);
    return number < WeekdayNames.size() ? std::string(WeekdayNames[number]) : std::to_string(day.Number);
}

std::optional<tagWeekday> ParseWeekday(std::string_view text) {
    const auto name = std::find(WeekdayNames.begin(), WeekdayNames.end(), text);
    if (name != WeekdayNames.end())
        return tagWeekday{static_cast<std::int32_t>(name - WeekdayNames.begin())};
    const auto number = ParseInteger(text);
    if (!number || *number < 7 || *number > 13)
        return std::nullopt;
    return tagWeekday{static_cast<std::int32_t>(*number)};
}

std::string ClockText(tagClockTime time) {
    const std::int32_t minutes = time.Seconds / 60;
    const std::string text = fmt::format("{:02}:{:02}", minutes / 60, minutes % 60);
    return time.Seconds % 60 == 0 ? text : fmt::format("{}:{:02}", text, time.Seconds % 60);
}

std::optional<tagClockTime> ParseClock(std::string_view text) {
    constexpr std::int32_t midnight = 24 * 3600;
    const bool hasSeconds = text.size() == 8 && text[5] == ':';
    if ((text.size() != 5 && !hasSeconds) || text[2] != ':')
        return std::nullopt;
    const auto part = [&](std::size_t at) {
        const std::string_view digits = text.substr(at, 2);
        return AreDigits(digits) ? static_cast<std::int32_t>(*ParseInteger(digits)) : midnight;
    };
    const std::int32_t minute = part(3);
    const std::int32_t second = hasSeconds ? part(6) : 0;
    const std::int32_t seconds = part(0) * 3600 + minute * 60 + second;
    if (minute > 59 || second > 59 || seconds > midnight)
        return std::nullopt;
    return tagClockTime{seconds};
}

} // namespace sqCli
