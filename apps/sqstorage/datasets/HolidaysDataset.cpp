// Holiday calendars, by name.
#include "Dataset.h"
#include "TextRules.h"
#include "apps/sqstorage/store/HolidayCalendars.h"

#include <array>
#include <fmt/format.h>
#include <map>

namespace sqCli {

namespace {

constexpr std::array Rules{tagColumnRule{"HOLIDAY_NAME", true}};

// The names of a good file with the lines they stand on.
using Names = std::map<std::string, std::size_t, std::less<>>;

Names TestRows(const tagImportFile& file) {
    Names names;
    for (const tagCsvRecord& row : file.Table.Rows()) {
        const std::string name(file.Table.Value(row, 0));
        if (const auto problem = NameProblem("HOLIDAY_NAME", name))
            file.Problems.push_back({row.Line, *problem});
        else if (const auto [first, fresh] = names.emplace(name, row.Line); !fresh)
            file.Problems.push_back(
                {row.Line, fmt::format("\"{}\" repeats line {}: remove one of them", name, first->second)});
    }
    return names;
}

class CHolidaysDataset final : public IDataset {
public:
    std::string_view Name() const override { return "holidays"; }
    std::span<const tagColumnRule> Columns() const override { return Rules; }

    tagRowSet List(CStore& store, const tagListFilter&) const override {
        tagRowSet rows{{"HOLIDAY", "HOLIDAY_NAME"}, {}};
        for (const tagCalendar& calendar : SelectCalendars(store))
            rows.Rows.push_back({std::int64_t{calendar.Key}, calendar.Name});
        return rows;
    }

    tagRowSet Export(CStore& store, const CConsole& console) const override {
        tagRowSet rows{{"HOLIDAY_NAME"}, {}};
        for (const tagCalendar& calendar : SelectCalendars(store)) {
            if (const auto problem = NameProblem("HOLIDAY_NAME", calendar.Name))
                console.Warn(fmt::format("The calendar with the key {} is left out, because its {}.", calendar.Key,
                                         *problem));
            else if (rows.Rows.empty() || TextOf(rows.Rows.back().front()) != calendar.Name)
                rows.Rows.push_back({calendar.Name});
        }
        return rows;
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        const Names names = TestRows(file);
        tagImportCounts counts;
        if (!file.Problems.empty())
            return counts;
        std::set<std::string> known;
        for (const tagCalendar& calendar : SelectCalendars(run.Store))
            known.insert(calendar.Name);
        CProgress progress(run.Console, file.Label, names.size());
        for (const auto& [name, line] : names) {
            progress.Advance(1);
            if (known.contains(name))
                ++counts.Unchanged;
            else
                Add(run, file, name, line, counts);
        }
        return counts;
    }

private:
    static void Add(tagImportRun& run, const tagImportFile& file, const std::string& name, std::size_t line,
                    tagImportCounts& counts) {
        try {
            if (run.Options.DryRun)
                run.PlannedCalendars.insert(name);
            else
                InsertCalendar(run.Store, name);
            ++counts.Added;
        } catch (const CStoreRefusal& refusal) {
            file.Problems.push_back({line, fmt::format("the store refused the row. {}", refusal.what())});
        }
    }
};

} // namespace

const IDataset& HolidaysDataset() {
    static const CHolidaysDataset dataset;
    return dataset;
}

} // namespace sqCli
