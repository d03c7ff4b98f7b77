#pragma once

#include <string_view>
#include <vector>

// Cuts a text of SQL into its statements. A statement ends at a line that holds "^" and nothing else but blanks;
// a semicolon ends nothing, since procedure bodies are full of them. Empty lines and "--" lines before a
// statement are left out, so that it begins with its first word; what stands inside it stays as it is.
namespace sqSchema {

// The statements are views into the text. Throws std::invalid_argument, naming the line, for a terminator with no
// statement before it and for a statement without a terminator.
std::vector<std::string_view> SplitStatements(std::string_view text);

} // namespace sqSchema
