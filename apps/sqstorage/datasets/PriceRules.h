// Prices that the store takes and keeps as they are.
#pragma once

#include "TableFile.h"
#include "apps/sqstorage/store/PriceSettings.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

inline constexpr std::array PriceColumns{tagColumnRule{"PRICE_SCALE", true}, tagColumnRule{"POINT_VALUE", true},
                                         tagColumnRule{"DAILY_LIMIT", true}, tagColumnRule{"MIN_MOVEMENT", true}};

// The four values in the order of the columns. Nothing when one is not taken; each fault is added to the reasons.
[[nodiscard]] std::optional<tagPriceSetting> ParseSetting(const std::array<std::string_view, 4>& values,
                                                          std::vector<std::string>& reasons);

// A setting as texts, which may say what no setting should.
using PriceTexts = std::array<std::string, PriceColumns.size()>;

[[nodiscard]] PriceTexts TextsOf(const tagPriceSetting& setting);
// Nothing when the texts say no setting that the store takes.
[[nodiscard]] std::optional<tagPriceSetting> SettingOf(const PriceTexts& texts);
// Numbers, or the texts when they say no setting: nothing that was there is hidden.
[[nodiscard]] std::vector<Cell> CellsOf(const PriceTexts& texts);

} // namespace sqCli
