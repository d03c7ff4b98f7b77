// Price settings that belong to nobody. A setting has no name: what it says is what it is known by. One that an
// exchange or a symbol owns stands in its owner's row.
#include "Dataset.h"
#include "PriceRules.h"
#include "apps/sqstorage/store/Exchanges.h"
#include "apps/sqstorage/store/PriceSettings.h"
#include "apps/sqstorage/store/Symbols.h"

#include <fmt/format.h>
#include <map>

namespace sqCli {

namespace {

// The settings of a good file with the lines they stand on.
using Settings = std::map<tagPriceSetting, std::size_t>;

Settings TestRows(const tagImportFile& file) {
    Settings settings;
    for (const tagCsvRecord& row : file.Table.Rows()) {
        const auto value = [&](std::size_t rule) { return file.Table.Value(row, rule); };
        std::vector<std::string> reasons;
        const auto setting = ParseSetting({value(0), value(1), value(2), value(3)}, reasons);
        for (std::string& reason : reasons)
            file.Problems.push_back({row.Line, std::move(reason)});
        if (!setting)
            continue;
        if (const auto [first, fresh] = settings.emplace(*setting, row.Line); !fresh)
            file.Problems.push_back(
                {row.Line, fmt::format("the row says the same as line {}: remove one of them", first->second)});
    }
    return settings;
}

std::optional<tagPriceSetting> SettingOf(const std::vector<Cell>& row, std::vector<std::string>& reasons) {
    const std::array texts{TextOf(row[1]), TextOf(row[2]), TextOf(row[3]), TextOf(row[4])};
    return ParseSetting({texts[0], texts[1], texts[2], texts[3]}, reasons);
}

// As SelectSettings gives them.
std::vector<std::vector<Cell>> FreeSettings(CStore& store) {
    std::set<LONG> exchanges;
    for (const tagKeyedExchange& row : SelectExchanges(store))
        exchanges.insert(row.Exchange.Setting);
    auto rows = SelectSettings(store).Rows;
    const auto& owned = OwnedBySymbols(store).Settings;
    std::erase_if(rows, [&](const std::vector<Cell>& row) {
        const LONG key = LongOf(row.front());
        return exchanges.contains(key) || owned.contains(key);
    });
    return rows;
}

class CSettingsDataset final : public ISmallDataset {
public:
    std::string_view Name() const override { return "settings"; }
    std::span<const tagColumnRule> Columns() const override { return PriceColumns; }

    tagRowSet List(CStore& store, const tagListFilter&) const override { return SelectSettings(store); }

    tagRowSet Export(CStore& store, const CConsole& console) const override {
        tagRowSet rows;
        for (const tagColumnRule& rule : PriceColumns)
            rows.Columns.emplace_back(rule.Name);
        for (const auto& row : FreeSettings(store)) {
            std::vector<std::string> reasons;
            const std::vector<Cell> cells(row.begin() + 1, row.end());
            if (!SettingOf(row, reasons))
                console.Warn(fmt::format("The setting with the key {} is left out, because its {}.", TextOf(row[0]),
                                         reasons.front()));
            else if (rows.Rows.empty() || rows.Rows.back() != cells)
                rows.Rows.push_back(cells);
        }
        return rows;
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        const Settings settings = TestRows(file);
        tagImportCounts counts;
        if (!file.Problems.empty())
            return counts;
        std::set<tagPriceSetting> known;
        std::vector<std::string> ignored;
        for (const auto& row : FreeSettings(run.Store))
            if (const auto setting = SettingOf(row, ignored))
                known.insert(*setting);
        CProgress progress(run.Console, file.Label, settings.size());
        for (const auto& [setting, line] : settings) {
            progress.Advance(1);
            if (known.contains(setting))
                ++counts.Unchanged;
            else
                Add(run, file, setting, line, counts);
        }
        return counts;
    }

private:
    static void Add(tagImportRun& run, const tagImportFile& file, const tagPriceSetting& setting, std::size_t line,
                    tagImportCounts& counts) {
        try {
            if (!run.Options.DryRun)
                InsertSetting(run.Store, setting);
            ++counts.Added;
        } catch (const CStoreRefusal& refusal) {
            file.Problems.push_back({line, fmt::format("the store refused the row. {}", refusal.what())});
        }
    }
};

} // namespace

const IDataset& SettingsDataset() {
    static const CSettingsDataset dataset;
    return dataset;
}

} // namespace sqCli
