// CSV as in RFC 4180: a header, commas, quotes doubled within quotes; UTF-8.
//
// Read: LF or CRLF ends, with or without a byte order mark; empty lines are skipped. Written: LF ends, quotes only
// where they are needed.
#pragma once

#include "RowSet.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

// The text is no CSV. The message is the rest of a sentence, without the place.
class CCsvError : public std::runtime_error {
public:
    CCsvError(const std::string& text, std::size_t line) : std::runtime_error(text), m_Line(line) {}
    // Counted from 1.
    [[nodiscard]] std::size_t Line() const noexcept { return m_Line; }

private:
    std::size_t m_Line;
};

struct tagCsvRecord {
    std::size_t Line; // where it starts, counted from 1
    std::vector<std::string> Fields;
};

// All records, the header first. Raises CCsvError for malformed UTF-8 and misplaced quotes. What the records mean,
// and whether they are as long as the header, is the caller's.
[[nodiscard]] std::vector<tagCsvRecord> ParseCsv(std::string_view bytes);

// Header and rows.
[[nodiscard]] std::string WriteCsv(const tagRowSet& rows);
// The rows alone.
[[nodiscard]] std::string WriteCsvRows(const tagRowSet& rows);

} // namespace sqCli
