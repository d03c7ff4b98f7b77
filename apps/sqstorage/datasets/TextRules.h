// Texts that the store takes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sqCli {

// What the columns for names and descriptions hold, in characters.
inline constexpr std::size_t LongestText = 63;

// Why the store would not take the text for this column; nothing when it would. An empty text passes.
[[nodiscard]] std::optional<std::string> TextProblem(std::string_view column, std::string_view text,
                                                     std::size_t longest = LongestText);
// The same, and an empty text does not pass.
[[nodiscard]] std::optional<std::string> NameProblem(std::string_view column, std::string_view text,
                                                     std::size_t longest = LongestText);
// For a text that the store puts into its statements as it stands, where a quote would end it.
[[nodiscard]] std::optional<std::string> QuoteProblem(std::string_view column, std::string_view text);

} // namespace sqCli
