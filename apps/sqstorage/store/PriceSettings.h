// Price settings, as the store keeps them.
//
// Errors: CStoreRefusal.
#pragma once

#include "Store.h"

namespace sqCli {

// What a setting says; two settings that say the same are told apart by their keys alone. The real numbers are
// floats in the database.
struct tagPriceSetting {
    LONG PriceScale;
    float PointValue;
    LONG DailyLimit;
    float MinMovement;
    friend auto operator<=>(const tagPriceSetting&, const tagPriceSetting&) = default;
};

// SETTING, PRICE_SCALE, POINT_VALUE, DAILY_LIMIT, MIN_MOVEMENT; by the last four as numbers, then by key.
[[nodiscard]] tagRowSet SelectSettings(CStore& store);
// Returns the key.
LONG InsertSetting(CStore& store, const tagPriceSetting& setting);
void UpdateSetting(CStore& store, LONG key, const tagPriceSetting& setting);
void DeleteSetting(CStore& store, LONG key);

} // namespace sqCli
