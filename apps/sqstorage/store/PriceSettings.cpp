#include "PriceSettings.h"

#include <algorithm>
#include <array>

namespace sqCli {

namespace {

constexpr std::array Columns{"SETTING", "PRICE_SCALE", "POINT_VALUE", "DAILY_LIMIT", "MIN_MOVEMENT"};

std::vector<Cell> Rotated(const std::vector<Cell>& row) {
    std::vector<Cell> key(row.begin() + 1, row.end());
    key.push_back(row.front());
    return key;
}

} // namespace

tagRowSet SelectSettings(CStore& store) {
    const tagRowSet all = store.Select(&CStore::IqxStorage::SelectSetting);
    tagRowSet rows{{Columns.begin(), Columns.end()}, {}};
    std::array<std::size_t, Columns.size()> places{};
    std::transform(Columns.begin(), Columns.end(), places.begin(),
                   [&](const char* name) { return ColumnOf(all, name); });
    for (const auto& row : all.Rows) {
        std::vector<Cell>& cells = rows.Rows.emplace_back();
        for (const std::size_t place : places)
            cells.push_back(row[place]);
    }
    std::sort(rows.Rows.begin(), rows.Rows.end(),
              [](const auto& left, const auto& right) { return Rotated(left) < Rotated(right); });
    return rows;
}

LONG InsertSetting(CStore& store, const tagPriceSetting& setting) {
    LONG key = 0;
    store.Run([&](CStore::IqxStorage& storage) {
        return storage.InsertSetting(setting.PriceScale, setting.PointValue, setting.DailyLimit,
                                     setting.MinMovement, &key);
    });
    if (key < 1)
        throw CStoreRefusal("The store gave out no key for the setting: look into its log.");
    return key;
}

void UpdateSetting(CStore& store, LONG key, const tagPriceSetting& setting) {
    const HRESULT status = store.Run([&](CStore::IqxStorage& storage) {
        return storage.UpdateSetting(key, setting.PriceScale, setting.PointValue, setting.DailyLimit,
                                     setting.MinMovement);
    });
    if (status != S_OK)
        throw CStoreRefusal("The setting is not there any more: import again.");
}

void DeleteSetting(CStore& store, LONG key) {
    store.Run([&](CStore::IqxStorage& storage) { return storage.DeleteSetting(key); });
}

} // namespace sqCli
