// Numbers that the store takes.
#pragma once

#include "platform/com/types.h"

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

inline constexpr LONG LargestLong = std::numeric_limits<LONG>::max();

// A number of the column, within both ends. Nothing when it is none; why is added to the reasons.
[[nodiscard]] std::optional<LONG> ParseWhole(std::string_view column, std::string_view text, LONG least, LONG most,
                                             std::vector<std::string>& reasons);
// The same, where an empty text stands for a number.
[[nodiscard]] std::optional<LONG> ParseWholeOr(LONG empty, std::string_view column, std::string_view text,
                                               LONG least, LONG most, std::vector<std::string>& reasons);

// A real number between both ends that the store keeps as it is: it writes six decimals, and the column is a float.
[[nodiscard]] std::optional<float> ParseKeptReal(std::string_view column, std::string_view text, double above,
                                                 double below, std::vector<std::string>& reasons);

} // namespace sqCli
