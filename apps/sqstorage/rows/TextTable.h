// Rows as aligned columns for people.
#pragma once

#include "RowSet.h"

#include <cstddef>
#include <string>
#include <vector>

namespace sqCli {

// Header, a line, rows; numbers to the right, line breaks within a value as blanks. `bold` emphasises the header
// with terminal codes.
[[nodiscard]] std::string WriteTextTable(const tagRowSet& rows, bool bold);

// The same for rows that come by and by: the first of them tell how wide the columns are. A value that is wider
// than its column is written whole.
class CTextTable {
public:
    explicit CTextTable(const tagRowSet& rows);

    // The header and the line below it.
    [[nodiscard]] std::string Head(bool bold) const;
    [[nodiscard]] std::string Lines(const tagRowSet& rows) const;

private:
    std::vector<std::string> m_Columns;
    std::vector<std::size_t> m_Widths;
    std::vector<bool> m_AreNumbers;
};

// The text with a blank for every character that would move the cursor or drive the terminal: texts come from
// files.
[[nodiscard]] std::string Printable(std::string text);

} // namespace sqCli
