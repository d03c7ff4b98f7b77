// Rows on their way to the user: named columns, and cells that know what they are.
//
// Texts are UTF-8, as in files and on the terminal. Plain values; threads: as any value.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace sqCli {

// A day number counted from 30 December 1899.
struct tagDay {
    std::int32_t Number;
    friend auto operator<=>(const tagDay&, const tagDay&) = default;
};

struct tagNull {
    friend auto operator<=>(const tagNull&, const tagNull&) = default;
};

// A day of the week from 0, Sunday, to 6; one above counts on into the week after.
struct tagWeekday {
    std::int32_t Number;
    friend auto operator<=>(const tagWeekday&, const tagWeekday&) = default;
};

// Seconds since midnight, with the midnight at the end of the day.
struct tagClockTime {
    std::int32_t Seconds;
    friend auto operator<=>(const tagClockTime&, const tagClockTime&) = default;
};

// A float is kept as such: its text is the shortest that gives the same 32 bits again.
using Cell = std::variant<tagNull, std::int64_t, float, tagDay, tagWeekday, tagClockTime, std::string>;

struct tagRowSet {
    std::vector<std::string> Columns;
    std::vector<std::vector<Cell>> Rows;
};

// Null is empty, a day is YYYY-MM-DD, a weekday is Sun, a time is 17:00; numbers have a point and no grouping.
[[nodiscard]] std::string TextOf(const Cell& cell);
[[nodiscard]] bool IsNumber(const Cell& cell);
// The cells of both, one behind the other.
[[nodiscard]] std::vector<Cell> Joined(std::vector<Cell> first, std::vector<Cell> second);
// A whole number, and the one behind a weekday or a time; 0 for anything else.
[[nodiscard]] std::int64_t IntegerOf(const Cell& cell);

} // namespace sqCli
