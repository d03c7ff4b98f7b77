// Holiday calendars, by name.
#include "KeyedTable.h"
#include "TextRules.h"
#include "apps/sqstorage/store/HolidayCalendars.h"

#include <array>

namespace sqCli {

namespace {

constexpr std::array Rules{tagColumnRule{"HOLIDAY_NAME", true}};

class CHolidayTable {
public:
    static constexpr std::string_view Noun = "calendar";

    struct Row {
        std::string Name;
        const std::string& Id() const { return Name; }
        friend bool operator==(const Row&, const Row&) = default;
    };

    explicit CHolidayTable(CStore& store) : m_Store(store) {}

    std::vector<tagStoredRow<Row>> Rows() {
        std::vector<tagStoredRow<Row>> rows;
        for (tagCalendar& calendar : SelectCalendars(m_Store))
            rows.push_back({calendar.Key, {std::move(calendar.Name)}});
        return rows;
    }

    std::optional<Row> Parse(const RowValues& values, Reasons& reasons) {
        if (auto problem = NameProblem(Rules[0].Name, values[0])) {
            reasons.push_back(std::move(*problem));
            return std::nullopt;
        }
        return Row{std::string(values[0])};
    }

    std::vector<Cell> Cells(const Row& row) { return {row.Name}; }
    void Insert(const Row& row) { InsertCalendar(m_Store, row.Name); }
    // A calendar is nothing but its name.
    void Update(const tagStoredRow<Row>&, const Row&) {}

private:
    CStore& m_Store;
};

class CHolidaysDataset final : public ISmallDataset {
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
        return ExportTable(*this, console, CHolidayTable(store));
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        return ImportTable(*this, run, file, CHolidayTable(run.Store));
    }
};

} // namespace

const IDataset& HolidaysDataset() {
    static const CHolidaysDataset dataset;
    return dataset;
}

} // namespace sqCli
