#include "PriceRules.h"

#include "NumberRules.h"
#include "apps/sqstorage/rows/Numbers.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

using Reasons = std::vector<std::string>;

// What reads back when this value was written: the store writes six decimals and keeps a float.
float AsKept(double value) {
    return static_cast<float>(
        ParseReal(fmt::format("{:.6f}", static_cast<double>(static_cast<float>(value)))).value_or(0));
}

std::optional<float> ParsePrice(std::string_view column, std::string_view text, Reasons& reasons) {
    constexpr double limit = 1e9;
    const auto value = ParseReal(text);
    if (!value || *value <= 0 || *value >= limit) {
        reasons.push_back(fmt::format(
            "{} is \"{}\": give a number above 0 and below 1000000000, with a decimal point", column, text));
        return std::nullopt;
    }
    const float kept = AsKept(*value);
    const std::string keptText = ShortestText(kept);
    if (ParseReal(keptText) != value || kept >= limit) {
        reasons.push_back(fmt::format("{} is \"{}\", and the store would keep {}: give at most six decimals and "
                                      "seven digits in all",
                                      column, text, keptText));
        return std::nullopt;
    }
    return kept;
}

} // namespace

std::optional<tagPriceSetting> ParseSetting(const std::array<std::string_view, 4>& values, Reasons& reasons) {
    const auto scale = ParseWhole(PriceColumns[0].Name, values[0], 1, LargestLong, reasons);
    const auto point = ParsePrice(PriceColumns[1].Name, values[1], reasons);
    const auto limit = ParseWhole(PriceColumns[2].Name, values[2], 1, LargestLong, reasons);
    const auto movement = ParsePrice(PriceColumns[3].Name, values[3], reasons);
    if (!scale || !point || !limit || !movement)
        return std::nullopt;
    return tagPriceSetting{*scale, *point, *limit, *movement};
}

} // namespace sqCli
