#include "Json.h"

#include <fmt/format.h>
#include <iterator>
#include <string_view>

namespace sqCli {

namespace {

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        switch (c) {
        case '"':
            quoted += "\\\"";
            break;
        case '\\':
            quoted += "\\\\";
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\r':
            quoted += "\\r";
            break;
        case '\t':
            quoted += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20)
                fmt::format_to(std::back_inserter(quoted), "\\u{:04x}", static_cast<unsigned>(c));
            else
                quoted += c;
        }
    }
    return quoted += '"';
}

std::string ValueText(const Cell& cell) {
    if (std::holds_alternative<tagNull>(cell))
        return "null";
    if (std::holds_alternative<tagWeekday>(cell) || std::holds_alternative<tagClockTime>(cell))
        return std::to_string(IntegerOf(cell));
    return IsNumber(cell) ? TextOf(cell) : Quoted(TextOf(cell));
}

std::string ObjectText(const tagRowSet& rows, const std::vector<Cell>& row) {
    std::string text = "{";
    for (std::size_t column = 0; column < row.size(); ++column) {
        text += column == 0 ? "" : ", ";
        text += Quoted(rows.Columns[column]) + ": " + ValueText(row[column]);
    }
    return text += '}';
}

} // namespace

std::string WriteJson(const tagRowSet& rows) {
    return "[" + WriteJsonItems(rows, true) + (rows.Rows.empty() ? "]\n" : "\n]\n");
}

std::string WriteJsonItems(const tagRowSet& rows, bool first) {
    std::string text;
    for (const auto& row : rows.Rows) {
        text += first ? "\n  " : ",\n  ";
        text += ObjectText(rows, row);
        first = false;
    }
    return text;
}

std::string WriteJsonLines(const tagRowSet& rows) {
    std::string text;
    for (const auto& row : rows.Rows)
        text += ObjectText(rows, row) + '\n';
    return text;
}

} // namespace sqCli
