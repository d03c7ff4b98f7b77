// Rows as aligned columns for people.
#pragma once

#include "RowSet.h"

#include <string>

namespace sqCli {

// Header, a line, rows; numbers to the right, line breaks within a value as blanks. `bold` emphasises the header
// with terminal codes.
[[nodiscard]] std::string WriteTextTable(const tagRowSet& rows, bool bold);

// The text with a blank for every character that would move the cursor or drive the terminal: texts come from
// files.
[[nodiscard]] std::string Printable(std::string text);

} // namespace sqCli
