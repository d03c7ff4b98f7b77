#include "NumberRules.h"

#include "apps/sqstorage/rows/Numbers.h"

#include <fmt/format.h>

namespace sqCli {

std::optional<LONG> ParseWhole(std::string_view column, std::string_view text, LONG least, LONG most,
                               std::vector<std::string>& reasons) {
    const auto value = ParseInteger(text);
    if (value && *value >= least && *value <= most)
        return static_cast<LONG>(*value);
    reasons.push_back(fmt::format("{} is \"{}\": give a whole number from {} to {}", column, text, least, most));
    return std::nullopt;
}

std::optional<LONG> ParseWholeOr(LONG empty, std::string_view column, std::string_view text, LONG least, LONG most,
                                 std::vector<std::string>& reasons) {
    return text.empty() ? std::optional(empty) : ParseWhole(column, text, least, most, reasons);
}

} // namespace sqCli
