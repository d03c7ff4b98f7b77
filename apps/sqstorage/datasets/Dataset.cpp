#include "Dataset.h"

#include <algorithm>
#include <array>

namespace sqCli {

void ISmallDataset::ExportTo(tagExportRun& run, const TakeRows& take) const {
    const tagRowSet rows = Export(run.Store, run.Console);
    std::set<std::string>& names = run.Written[Name()];
    for (const auto& row : rows.Rows)
        names.insert(TextOf(row.front()));
    take(rows);
}

std::span<const IDataset* const> Datasets() {
    static const std::array datasets{&HolidaysDataset(),  &HolidayDatesDataset(), &SettingsDataset(),
                                     &FeedsDataset(),     &SessionsDataset(),     &SessionDetailsDataset(),
                                     &ExchangesDataset(), &SymbolsDataset(),      &CurrenciesDataset()};
    return datasets;
}

const IDataset* FindDataset(std::string_view name) {
    const auto datasets = Datasets();
    const auto found = std::find_if(datasets.begin(), datasets.end(),
                                    [&](const IDataset* dataset) { return dataset->Name() == name; });
    return found == datasets.end() ? nullptr : *found;
}

std::string DatasetNames() {
    std::string names;
    for (const IDataset* dataset : Datasets()) {
        names += names.empty() ? "" : ", ";
        names += dataset->Name();
    }
    return names;
}

} // namespace sqCli
