#include "TextTable.h"

#include <algorithm>

namespace sqCli {

namespace {

constexpr const char* Gap = "  ";

// Characters, not bytes; good for alphabets, not for characters two cells wide.
std::size_t WidthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::vector<std::size_t> ColumnWidths(const tagRowSet& rows) {
    std::vector<std::size_t> widths;
    for (const std::string& name : rows.Columns)
        widths.push_back(WidthOf(name));
    for (const auto& row : rows.Rows)
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], WidthOf(TextOf(row[column])));
    return widths;
}

// The last column gets no blanks behind it.
void AppendCell(std::string& line, const std::string& text, std::size_t width, bool right, bool last) {
    const std::string blanks(width - std::min(width, WidthOf(text)), ' ');
    line += right ? blanks + text : last ? text : text + blanks;
    line += last ? "\n" : Gap;
}

// A column is one of numbers when its first value that is there is one.
std::vector<bool> NumberColumns(const tagRowSet& rows) {
    std::vector<bool> numbers(rows.Columns.size());
    for (std::size_t column = 0; column < numbers.size(); ++column) {
        const auto first = std::find_if(rows.Rows.begin(), rows.Rows.end(), [&](const auto& row) {
            return !std::holds_alternative<tagNull>(row[column]);
        });
        numbers[column] = first != rows.Rows.end() && IsNumber((*first)[column]);
    }
    return numbers;
}

} // namespace

std::string Printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
    return text;
}

CTextTable::CTextTable(const tagRowSet& rows)
    : m_Columns(rows.Columns), m_Widths(ColumnWidths(rows)), m_AreNumbers(NumberColumns(rows)) {}

std::string CTextTable::Head(bool bold) const {
    const std::size_t count = m_Columns.size();
    std::string text = bold ? "\x1b[1m" : "";
    for (std::size_t column = 0; column < count; ++column)
        AppendCell(text, m_Columns[column], m_Widths[column], m_AreNumbers[column], column + 1 == count);
    if (bold)
        text.insert(text.size() - 1, "\x1b[0m");
    for (std::size_t column = 0; column < count; ++column)
        AppendCell(text, std::string(m_Widths[column], '-'), m_Widths[column], false, column + 1 == count);
    return text;
}

std::string CTextTable::Lines(const tagRowSet& rows) const {
    const std::size_t count = m_Columns.size();
    std::string text;
    for (const auto& row : rows.Rows)
        for (std::size_t column = 0; column < count; ++column)
            AppendCell(text, Printable(TextOf(row[column])), m_Widths[column], m_AreNumbers[column],
                       column + 1 == count);
    return text;
}

std::string WriteTextTable(const tagRowSet& rows, bool bold) {
    const CTextTable table(rows);
    return table.Head(bold) + table.Lines(rows);
}

} // namespace sqCli
