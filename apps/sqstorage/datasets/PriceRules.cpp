#include "PriceRules.h"

#include "NumberRules.h"

namespace sqCli {

namespace {

using Reasons = std::vector<std::string>;

std::optional<float> ParsePrice(std::string_view column, std::string_view text, Reasons& reasons) {
    return ParseKeptReal(column, text, 0, 1e9, reasons);
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

PriceTexts TextsOf(const tagPriceSetting& setting) {
    return {TextOf(std::int64_t{setting.PriceScale}), TextOf(setting.PointValue),
            TextOf(std::int64_t{setting.DailyLimit}), TextOf(setting.MinMovement)};
}

std::optional<tagPriceSetting> SettingOf(const PriceTexts& texts) {
    Reasons ignored;
    return ParseSetting({texts[0], texts[1], texts[2], texts[3]}, ignored);
}

std::vector<Cell> CellsOf(const PriceTexts& texts) {
    if (const auto setting = SettingOf(texts))
        return {std::int64_t{setting->PriceScale}, setting->PointValue, std::int64_t{setting->DailyLimit},
                setting->MinMovement};
    return {texts.begin(), texts.end()};
}

} // namespace sqCli
