#include "NumberRules.h"

#include "apps/sqstorage/rows/Numbers.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

// What reads back when this value was written.
float AsKept(double value) {
    return static_cast<float>(
        ParseReal(fmt::format("{:.6f}", static_cast<double>(static_cast<float>(value)))).value_or(0));
}

} // namespace

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

std::optional<float> ParseKeptReal(std::string_view column, std::string_view text, double above, double below,
                                   std::vector<std::string>& reasons) {
    const auto value = ParseReal(text);
    if (!value || *value <= above || *value >= below) {
        reasons.push_back(
            fmt::format("{} is \"{}\": give a number above {:.0f} and below {:.0f}, with a decimal point", column,
                        text, above, below));
        return std::nullopt;
    }
    const float kept = AsKept(*value);
    const std::string keptText = ShortestText(kept);
    if (ParseReal(keptText) != value || double{kept} >= below) {
        reasons.push_back(fmt::format("{} is \"{}\", and the store would keep {}: give at most six decimals and "
                                      "seven digits in all",
                                      column, text, keptText));
        return std::nullopt;
    }
    return kept;
}

} // namespace sqCli
