#include "WeekText.h"

#include "WeekRules.h"
#include "apps/sqstorage/rows/Numbers.h"

#include <algorithm>
#include <fmt/format.h>

namespace sqCli {

namespace {

using Details = std::vector<tagSessionDetail>;

constexpr std::int32_t MinutesPerDay = 24 * 60;

std::string_view Trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// Cuts off what stands before the separator, which goes too; the whole text when it is not there.
std::string_view TakeUntil(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view part = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return part;
}

// The hosts' values behind the times: "(1 2 3)". They go from the text.
std::optional<std::array<std::string_view, 3>> TakeValues(std::string_view& text) {
    std::array<std::string_view, 3> values;
    if (!text.ends_with(')'))
        return values;
    const std::size_t open = text.find('(');
    if (open == std::string_view::npos)
        return std::nullopt;
    std::string_view inside = text.substr(open + 1, text.size() - open - 2);
    for (std::string_view& value : values)
        if (value = TakeUntil(inside, ' '); value.empty())
            return std::nullopt;
    if (!inside.empty())
        return std::nullopt;
    text = Trimmed(text.substr(0, open));
    return values;
}

// "Sun 17:00-Mon 16:00" or "Mon 09:30-16:00", cut into its values.
std::optional<WeekValues> SplitStretch(std::string_view text) {
    const auto others = TakeValues(text);
    if (!others || text.find('-') == std::string_view::npos)
        return std::nullopt;
    std::string_view start = Trimmed(TakeUntil(text, '-'));
    std::string_view end = Trimmed(text);
    const std::string_view startDay = TakeUntil(start, ' ');
    const bool hasDay = end.find(' ') != std::string_view::npos;
    const std::string_view endDay = hasDay ? TakeUntil(end, ' ') : startDay;
    return WeekValues{startDay, start, endDay, end, (*others)[0], (*others)[1], (*others)[2]};
}

std::optional<tagSessionDetail> ParseStretch(std::string_view column, std::string_view text,
                                             std::vector<std::string>& reasons) {
    const auto values = SplitStretch(text);
    if (!values) {
        reasons.push_back(fmt::format("{} has \"{}\" in it: write times like \"Mon 09:30-16:00; Tue 17:00-Wed "
                                      "16:00\"",
                                      column, text));
        return std::nullopt;
    }
    std::vector<std::string> found;
    const auto detail = ParseDetail(*values, found);
    for (const std::string& reason : found)
        reasons.push_back(fmt::format("{} has \"{}\" in it, where {}", column, text, reason));
    return detail;
}

std::optional<std::int32_t> TakeNumber(std::string_view& text, char separator) {
    if (text.find(separator) == std::string_view::npos)
        return std::nullopt;
    const auto number = ParseInteger(TakeUntil(text, separator));
    if (!number || *number < 0 || *number > 9999999)
        return std::nullopt;
    return static_cast<std::int32_t>(*number);
}

} // namespace

std::string StretchText(const tagSessionDetail& detail) {
    std::string text = fmt::format("{} {}-", WeekdayText(detail.StartDay), ClockText(detail.StartTime));
    if (detail.EndDay != detail.StartDay)
        text += WeekdayText(detail.EndDay) + ' ';
    text += ClockText(detail.EndTime);
    if (detail.Value5 != 0 || detail.Value6 != 0 || detail.Value7 != 0)
        text += fmt::format(" ({} {} {})", detail.Value5, detail.Value6, detail.Value7);
    return text;
}

std::string WeekText(std::span<const tagSessionDetail> details) {
    std::string text;
    for (const tagSessionDetail& detail : details)
        text += (text.empty() ? "" : "; ") + StretchText(detail);
    return text;
}

std::optional<std::vector<tagSessionDetail>> ParseWeek(std::string_view column, std::string_view text,
                                                       std::vector<std::string>& reasons) {
    const std::size_t before = reasons.size();
    Details details;
    while (!text.empty())
        if (const auto detail = ParseStretch(column, Trimmed(TakeUntil(text, ';')), reasons))
            details.push_back(*detail);
    std::ranges::sort(details);
    if (const auto twice = std::ranges::adjacent_find(details); twice != details.end())
        reasons.push_back(fmt::format("{} has \"{}\" twice: remove one", column, StretchText(*twice)));
    if (auto problem = WeekProblem(details))
        reasons.push_back(std::move(*problem));
    return reasons.size() == before ? std::optional(details) : std::nullopt;
}

std::optional<std::vector<tagSessionDetail>> ParseSessionsString(std::string_view text) {
    const auto count = TakeNumber(text, ':');
    if (!count)
        return std::nullopt;
    Details details;
    while (!text.empty()) {
        const auto start = TakeNumber(text, ',');
        const auto end = TakeNumber(text, ',');
        const auto value6 = TakeNumber(text, ',');
        const auto value7 = TakeNumber(text, ',');
        const auto value5 = TakeNumber(text, ';');
        if (!start || !end || !value6 || !value7 || !value5)
            return std::nullopt;
        details.push_back({tagWeekday{*start / MinutesPerDay}, tagClockTime{*start % MinutesPerDay * 60},
                           tagWeekday{*end / MinutesPerDay}, tagClockTime{*end % MinutesPerDay * 60}, *value5,
                           *value6, *value7});
    }
    if (static_cast<std::size_t>(*count) != details.size())
        return std::nullopt;
    std::ranges::sort(details);
    return details;
}

} // namespace sqCli
