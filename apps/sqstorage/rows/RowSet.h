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

// A float is kept as such: its text is the shortest that gives the same 32 bits again.
using Cell = std::variant<tagNull, std::int64_t, float, tagDay, std::string>;

struct tagRowSet {
    std::vector<std::string> Columns;
    std::vector<std::vector<Cell>> Rows;
};

// Null is empty, a day is YYYY-MM-DD, numbers have a point and no grouping.
[[nodiscard]] std::string TextOf(const Cell& cell);
[[nodiscard]] bool IsNumber(const Cell& cell);

} // namespace sqCli
