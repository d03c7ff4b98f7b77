#include "WeekStrip.h"

#include "apps/sqstorage/rows/Numbers.h"

#include <algorithm>
#include <fmt/format.h>

namespace sqCli {

namespace {

using namespace std::chrono;

constexpr std::size_t LabelWidth = sizeof "Sun 28 Feb  " - 1;
constexpr std::size_t Gap = 2;

// How the week is laid out.
struct tagLayout {
    std::size_t MinutesPerCell;
    bool HasTimes;

    std::size_t Cells() const { return 24 * 60 / MinutesPerCell; }
    std::size_t Width(std::size_t times) const { return LabelWidth + Cells() + (HasTimes ? Gap + times : 0); }
};

// The finest that fits; the times go before finer cells.
tagLayout LayoutFor(std::size_t width, std::size_t times) {
    for (const bool hasTimes : {true, false})
        for (const std::size_t minutes : {15, 30, 60, 120})
            if (const tagLayout layout{minutes, hasTimes}; layout.Width(times) <= width)
                return layout;
    return {120, false};
}

std::string Label(local_days day) {
    static constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const year_month_day date(day);
    return fmt::format("{} {:2} {}  ", WeekdayText({static_cast<std::int32_t>(weekday(day).c_encoding())}),
                       static_cast<unsigned>(date.day()), months[static_cast<unsigned>(date.month()) - 1]);
}

// Every third hour, or every sixth where three have no room for a number.
std::string HourLine(const tagLayout& layout) {
    const std::size_t step = layout.MinutesPerCell > 60 ? 6 : 3;
    std::string line(LabelWidth, ' ');
    for (std::size_t hour = 0; hour < 24; hour += step)
        line += fmt::format("{:<{}}", hour, step * 60 / layout.MinutesPerCell);
    line.erase(line.find_last_not_of(' ') + 1);
    return line + '\n';
}

const char* Block(const DayMinutes& minutes, std::size_t begin, std::size_t length) {
    const auto count = [&](std::size_t from, std::size_t size) {
        const auto first = minutes.begin() + static_cast<std::ptrdiff_t>(from);
        return static_cast<std::size_t>(std::count(first, first + static_cast<std::ptrdiff_t>(size), true));
    };
    const std::size_t half = length / 2;
    const std::size_t left = count(begin, half);
    const std::size_t right = count(begin + half, length - half);
    if (left + right == length)
        return "█";
    if (left + right == 0)
        return "·";
    if (left == half && right == 0)
        return "▌";
    return left == 0 && right == length - half ? "▐" : "▒";
}

std::string Strip(const DayMinutes& minutes, const tagLayout& layout, bool colours) {
    std::string strip = colours ? "\x1b[32m" : "";
    for (std::size_t cell = 0; cell < layout.Cells(); ++cell)
        strip += Block(minutes, cell * layout.MinutesPerCell, layout.MinutesPerCell);
    return colours ? strip + "\x1b[0m" : strip;
}

} // namespace

std::string DrawWeek(local_days sunday, const std::array<DayMinutes, 7>& days, int width, bool colours) {
    std::array<std::string, 7> times;
    std::ranges::transform(days, times.begin(), TimesText);
    const tagLayout layout = LayoutFor(static_cast<std::size_t>(std::max(width, 0)),
                                       std::ranges::max(times, {}, &std::string::size).size());
    std::string text = HourLine(layout);
    for (std::size_t day = 0; day < days.size(); ++day) {
        text += Label(sunday + std::chrono::days(day)) + Strip(days[day], layout, colours);
        if (layout.HasTimes && !times[day].empty())
            text += std::string(Gap, ' ') + times[day];
        text += '\n';
    }
    return text;
}

} // namespace sqCli
