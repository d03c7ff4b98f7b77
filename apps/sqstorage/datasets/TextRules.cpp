#include "TextRules.h"

#include "platform/text.h"

#include <fmt/format.h>

namespace sqCli {

std::optional<std::string> TextProblem(std::string_view column, std::string_view text, std::size_t longest) {
    if (text.find('\0') != std::string_view::npos)
        return fmt::format("{} has a zero character in it: remove it", column);
    const std::size_t length = platform::FromUtf8(text).size();
    if (length > longest)
        return fmt::format("{} has {} characters, and the store keeps {}: shorten it", column, length, longest);
    return std::nullopt;
}

std::optional<std::string> NameProblem(std::string_view column, std::string_view text, std::size_t longest) {
    if (text.empty())
        return fmt::format("{} is empty: give a name", column);
    return TextProblem(column, text, longest);
}

std::optional<std::string> QuoteProblem(std::string_view column, std::string_view text) {
    if (text.find('\'') == std::string_view::npos)
        return std::nullopt;
    return fmt::format("{} has a single quote in it, which the store cannot keep there: remove it", column);
}

} // namespace sqCli
