#include "StatementSplitter.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace sqSchema {
namespace {

constexpr std::string_view Blanks = " \t\r\n";

std::string_view TrimLeft(std::string_view text) {
    const auto first = text.find_first_not_of(Blanks);
    return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

std::string_view Trim(std::string_view text) {
    text = TrimLeft(text);
    const auto last = text.find_last_not_of(Blanks);
    return last == std::string_view::npos ? text : text.substr(0, last + 1);
}

bool IsLeadIn(std::string_view line) {
    line = TrimLeft(line);
    return line.empty() || line.starts_with("--");
}

[[noreturn]] void Refuse(std::size_t line, const char* what) {
    throw std::invalid_argument("line " + std::to_string(line) + ": " + what);
}

} // namespace

std::vector<std::string_view> SplitStatements(std::string_view text) {
    std::vector<std::string_view> statements;
    std::size_t start = std::string_view::npos; // of the statement that is being read, if one is
    std::size_t startLine = 0;
    std::size_t lineNumber = 0;
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find('\n', at), text.size());
        const auto line = text.substr(at, end - at);
        ++lineNumber;
        if (Trim(line) == "^") {
            if (start == std::string_view::npos)
                Refuse(lineNumber, "'^' ends a statement, but none stands before it");
            statements.push_back(Trim(text.substr(start, at - start)));
            start = std::string_view::npos;
        } else if (start == std::string_view::npos && !IsLeadIn(line)) {
            start = at;
            startLine = lineNumber;
        }
        at = end + 1;
    }
    if (start != std::string_view::npos)
        Refuse(startLine, "the statement that begins here is not ended by a line with '^'");
    return statements;
}

} // namespace sqSchema
