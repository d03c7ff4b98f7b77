// Rows as JSON: an array of objects, keys the column names, one object a line.
#pragma once

#include "RowSet.h"

#include <string>

namespace sqCli {

// Numbers as numbers, weekdays and times too, days as "YYYY-MM-DD", null and the null day as null.
[[nodiscard]] std::string WriteJson(const tagRowSet& rows);
// The same between the array's brackets; `first` for the rows that come first in it.
[[nodiscard]] std::string WriteJsonItems(const tagRowSet& rows, bool first);
// The objects without the array, one a line: for rows that come one by one.
[[nodiscard]] std::string WriteJsonLines(const tagRowSet& rows);

} // namespace sqCli
