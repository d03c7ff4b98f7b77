// The dates of the holiday calendars; a row names its calendar.
#include "Dataset.h"
#include "HolidayMerge.h"
#include "NameKeys.h"
#include "TextRules.h"
#include "apps/sqstorage/ExitStatus.h"
#include "apps/sqstorage/rows/Numbers.h"
#include "apps/sqstorage/store/HolidayCalendars.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>
#include <tuple>

namespace sqCli {

namespace {

enum Rule : std::size_t { RuleName, RuleStart, RuleEnd, RuleDescription };
constexpr std::array Rules{tagColumnRule{"HOLIDAY_NAME", true}, tagColumnRule{"HOLIDAY_START_DATE", true},
                           tagColumnRule{"HOLIDAY_END_DATE", false}, tagColumnRule{"HOLIDAY_DESCRIPTION", false}};

constexpr std::array<std::string_view, 3> ListFilters{"--calendar", "--from", "--to"};

struct tagNamedDate {
    std::string Calendar;
    tagHolidayDate Date;
    friend auto operator<=>(const tagNamedDate&, const tagNamedDate&) = default;
};

CNameKeys KeysByName(CStore& store) {
    CNameKeys keys("calendar", "holidays");
    for (const tagCalendar& calendar : SelectCalendars(store))
        keys.Add(calendar.Name, calendar.Key);
    return keys;
}

class CRowTest {
public:
    CRowTest(const tagImportRun& run, const tagImportFile& file, const CNameKeys& keys)
        : m_Run(run), m_File(file), m_Keys(keys) {}

    // The dates of a good file, by calendar.
    std::map<std::string, std::vector<tagHolidayDate>> Dates() {
        std::map<std::string, std::vector<tagHolidayDate>> dates;
        for (const tagCsvRecord& row : m_File.Table.Rows())
            if (const auto date = Test(row))
                dates[date->Calendar].push_back(date->Date);
        return dates;
    }
    // Of all rows of the calendar, at that of its first date.
    void Tell(const std::string& calendar, std::string problem) const {
        std::vector<std::size_t> lines;
        for (auto date = m_Lines.lower_bound({calendar, {}});
             date != m_Lines.end() && date->first.Calendar == calendar; ++date)
            lines.push_back(date->second);
        m_File.Problems.push_back({lines.front(), std::move(problem), lines});
    }

private:
    std::optional<tagNamedDate> Test(const tagCsvRecord& row) {
        const std::size_t before = m_File.Problems.size();
        tagNamedDate date{
            std::string(m_File.Table.Value(row, RuleName)),
            {Day(row, RuleStart), std::nullopt, std::string(m_File.Table.Value(row, RuleDescription))}};
        if (!m_File.Table.Value(row, RuleEnd).empty())
            date.Date.End = Day(row, RuleEnd);
        Note(row, m_Keys.Problem(m_Run, date.Calendar));
        Note(row, TextProblem(Rules[RuleDescription].Name, date.Date.Description));
        if (date.Date.Start && date.Date.End && *date.Date.End < *date.Date.Start)
            Note(row, fmt::format("HOLIDAY_END_DATE {} is before HOLIDAY_START_DATE {}: exchange them",
                                  DayText(*date.Date.End), DayText(*date.Date.Start)));
        if (m_File.Problems.size() != before)
            return std::nullopt;
        if (const auto [first, fresh] = m_Lines.emplace(date, row.Line); !fresh) {
            Note(row, fmt::format("the row says the same as line {}: remove one of them", first->second));
            return std::nullopt;
        }
        return date;
    }

    std::optional<tagDay> Day(const tagCsvRecord& row, Rule rule) {
        std::string reason;
        const auto day = ParseDay(m_File.Table.Value(row, rule), reason);
        if (!day)
            Note(row, fmt::format("{}: {}", Rules[rule].Name, reason));
        return day;
    }

    void Note(const tagCsvRecord& row, std::optional<std::string> problem) {
        if (problem)
            m_File.Problems.push_back({row.Line, std::move(*problem)});
    }

    const tagImportRun& m_Run;
    const tagImportFile& m_File;
    const CNameKeys& m_Keys;
    std::map<tagNamedDate, std::size_t> m_Lines;
};

struct tagListedDate {
    std::string Calendar;
    bool HasCalendar;
    LONG Key;
    tagHolidayDate Date;
};

// All dates with their calendars, sorted.
std::vector<tagListedDate> NamedDates(CStore& store) {
    std::map<LONG, std::string> names;
    for (tagCalendar& calendar : SelectCalendars(store))
        names.emplace(calendar.Key, std::move(calendar.Name));
    std::vector<tagListedDate> dates;
    for (tagOwnedHolidayDate& owned : SelectHolidayDates(store)) {
        const auto name = names.find(owned.Calendar);
        const bool has = name != names.end();
        dates.push_back({has ? name->second : std::string(), has, owned.Calendar, std::move(owned.Date)});
    }
    std::sort(dates.begin(), dates.end(), [](const tagListedDate& left, const tagListedDate& right) {
        return std::tie(left.Calendar, left.Date, left.Key) < std::tie(right.Calendar, right.Date, right.Key);
    });
    return dates;
}

std::map<std::string, std::vector<tagHolidayDate>> DatesByName(CStore& store) {
    std::map<std::string, std::vector<tagHolidayDate>> dates;
    for (tagListedDate& date : NamedDates(store))
        if (date.HasCalendar)
            dates[date.Calendar].push_back(std::move(date.Date));
    return dates;
}

Cell CellOf(const std::optional<tagDay>& day) { return day ? Cell(*day) : Cell(tagNull{}); }

bool IsWithin(const tagHolidayDate& date, const tagListFilter& filter) {
    if (!date.Start)
        return !filter.From && !filter.To;
    return (!filter.To || *date.Start <= *filter.To) &&
           (!filter.From || date.End.value_or(*date.Start) >= *filter.From);
}

// Why an exported date could not be imported again.
std::optional<std::string> ExportProblem(const tagListedDate& date) {
    if (!date.HasCalendar)
        return fmt::format("A date of the calendar with the key {} is left out, because there is no such calendar.",
                           date.Key);
    if (NameProblem(Rules[RuleName].Name, date.Calendar))
        return fmt::format(
            "A date of the calendar with the key {} is left out, because the calendar is left out, too.", date.Key);
    if (!date.Date.Start || *date.Date.Start < FirstDay || *date.Date.Start > LastDay)
        return fmt::format("A date of the calendar \"{}\" is left out, because it has no day within the store's "
                           "calendar.",
                           date.Calendar);
    if (date.Date.End && (*date.Date.End < *date.Date.Start || *date.Date.End > LastDay))
        return fmt::format("The date {} of the calendar \"{}\" is left out, because it ends before it begins.",
                           DayText(*date.Date.Start), date.Calendar);
    return std::nullopt;
}

class CHolidayDatesDataset final : public ISmallDataset {
public:
    std::string_view Name() const override { return "holiday_dates"; }
    std::span<const tagColumnRule> Columns() const override { return Rules; }
    std::span<const std::string_view> Filters() const override { return ListFilters; }

    tagRowSet List(CStore& store, const tagListFilter& filter) const override {
        if (filter.Calendar && !KeysByName(store).Contains(*filter.Calendar))
            throw CCommandError(
                EExitStatus::Refused,
                fmt::format("There is no calendar \"{}\": see \"sqstorage list holidays\".", *filter.Calendar));
        tagRowSet rows{{"HOLIDAY_NAME", "HOLIDAY_START_DATE", "HOLIDAY_END_DATE", "HOLIDAY_DESCRIPTION"}, {}};
        for (const tagListedDate& date : NamedDates(store))
            if ((!filter.Calendar || (date.HasCalendar && date.Calendar == *filter.Calendar)) &&
                IsWithin(date.Date, filter))
                rows.Rows.push_back(
                    {date.Calendar, CellOf(date.Date.Start), CellOf(date.Date.End), date.Date.Description});
        return rows;
    }

    // The column of end dates is there only when a date has one.
    tagRowSet Export(CStore& store, const CConsole& console) const override {
        std::set<tagNamedDate> dates;
        for (tagListedDate& date : NamedDates(store)) {
            if (const auto problem = ExportProblem(date))
                console.Warn(*problem);
            else
                dates.insert({std::move(date.Calendar), std::move(date.Date)});
        }
        const bool ends = std::any_of(dates.begin(), dates.end(),
                                      [](const tagNamedDate& date) { return date.Date.End.has_value(); });
        tagRowSet rows{{"HOLIDAY_NAME", "HOLIDAY_START_DATE", "HOLIDAY_DESCRIPTION"}, {}};
        if (ends)
            rows.Columns.insert(rows.Columns.begin() + 2, "HOLIDAY_END_DATE");
        for (const tagNamedDate& date : dates) {
            auto& row = rows.Rows.emplace_back(
                std::vector<Cell>{date.Calendar, CellOf(date.Date.Start), date.Date.Description});
            if (ends)
                row.insert(row.begin() + 2, CellOf(date.Date.End));
        }
        return rows;
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        const CNameKeys keys = KeysByName(run.Store);
        CRowTest test(run, file, keys);
        const auto wanted = test.Dates();
        tagImportCounts counts;
        if (!file.Problems.empty())
            return counts;
        const auto there = DatesByName(run.Store);
        CProgress progress(run.Console, file.Label, file.Table.Rows().size());
        for (const auto& [calendar, dates] : wanted) {
            const auto found = there.find(calendar);
            const auto before = found == there.end() ? std::vector<tagHolidayDate>() : found->second;
            const tagHolidayMerge merge = MergeHolidays(before, dates, run.Options.Update);
            try {
                if (merge.Changes() && !run.Options.DryRun)
                    ReplaceHolidayDates(run.Store, keys.KeyOf(calendar), merge.Dates, before);
                counts += merge.Counts;
            } catch (const CStoreRefusal& refusal) {
                test.Tell(calendar,
                          fmt::format("the store refused the dates of \"{}\". {}", calendar, refusal.what()));
            }
            progress.Advance(dates.size());
        }
        return counts;
    }
};

} // namespace

const IDataset& HolidayDatesDataset() {
    static const CHolidayDatesDataset dataset;
    return dataset;
}

} // namespace sqCli
