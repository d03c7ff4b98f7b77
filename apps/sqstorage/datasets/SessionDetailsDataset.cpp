// The trading times of the sessions; a row names its session. The rows of a session are one timetable, which is
// taken or left whole.
#include "Dataset.h"
#include "NameKeys.h"
#include "SessionNames.h"
#include "WeekRules.h"
#include "apps/sqstorage/ExitStatus.h"
#include "apps/sqstorage/store/Symbols.h"

#include <algorithm>
#include <fmt/format.h>
#include <ranges>

namespace sqCli {

namespace {

constexpr std::array<std::string_view, 1> ListFilters{"--session"};

constexpr std::array Rules = [] {
    std::array<tagColumnRule, 1 + WeekColumns.size()> rules{tagColumnRule{"SESSION_NAME", true}};
    std::ranges::copy(WeekColumns, rules.begin() + 1);
    return rules;
}();

using Details = std::vector<tagSessionDetail>;

CNameKeys KeysOf(const std::vector<tagNamedSession>& sessions) {
    CNameKeys keys("session", "sessions", SessionNameId);
    for (const tagNamedSession& session : sessions)
        keys.Add(session.Session.Name, session.Key);
    return keys;
}

std::vector<Cell> CellsOf(const tagSessionDetail& detail) {
    return {detail.StartDay,
            detail.StartTime,
            detail.EndDay,
            detail.EndTime,
            std::int64_t{detail.Value5},
            std::int64_t{detail.Value6},
            std::int64_t{detail.Value7}};
}

class CRowTest {
public:
    CRowTest(const tagImportRun& run, const tagImportFile& file, const CNameKeys& keys)
        : m_Run(run), m_File(file), m_Keys(keys) {}

    // The timetables of a good file, by the session's name in the file's first row of it, each in the order of the
    // week.
    std::map<std::string, Details> Timetables() {
        std::map<std::string, Details> timetables;
        for (const tagCsvRecord& row : m_File.Table.Rows())
            if (const auto detail = Test(row))
                timetables[FirstName(row)].push_back(*detail);
        for (auto& [session, details] : timetables) {
            std::ranges::sort(details);
            if (const auto problem = WeekProblem(details))
                Tell(session, *problem);
        }
        return timetables;
    }
    // Of all rows of the session.
    void Tell(const std::string& session, std::string problem) const {
        const std::vector<std::size_t>& lines = m_SessionLines.at(session);
        m_File.Problems.push_back({lines.front(), std::move(problem), lines});
    }

private:
    const std::string& FirstName(const tagCsvRecord& row) {
        std::string name(m_File.Table.Value(row, 0));
        std::string id = SessionNameId(name);
        return m_FirstNames.try_emplace(std::move(id), std::move(name)).first->second;
    }

    std::optional<tagSessionDetail> Test(const tagCsvRecord& row) {
        const std::string& session = FirstName(row);
        m_SessionLines[session].push_back(row.Line);
        std::vector<std::string> reasons;
        if (auto problem = m_Keys.Problem(m_Run, session))
            reasons.push_back(std::move(*problem));
        WeekValues values;
        for (std::size_t column = 0; column < values.size(); ++column)
            values[column] = m_File.Table.Value(row, column + 1);
        const auto detail = ParseDetail(values, reasons);
        if (detail)
            if (const auto [first, fresh] = m_Lines.emplace(std::pair(session, *detail), row.Line); !fresh)
                reasons.push_back(
                    fmt::format("the row says the same as line {}: remove one of them", first->second));
        for (std::string& reason : reasons)
            m_File.Problems.push_back({row.Line, std::move(reason)});
        return detail;
    }

    const tagImportRun& m_Run;
    const tagImportFile& m_File;
    const CNameKeys& m_Keys;
    std::map<std::string, std::string> m_FirstNames; // by the session's id
    std::map<std::string, std::vector<std::size_t>> m_SessionLines;
    std::map<std::pair<std::string, tagSessionDetail>, std::size_t> m_Lines;
};

// The details that could be imported again; a warning tells of each other one.
Details Importable(const tagNamedSession& session, const Details& details, const CConsole& console) {
    Details good;
    for (const tagSessionDetail& detail : details) {
        std::vector<std::string> texts;
        for (const Cell& cell : CellsOf(detail))
            texts.push_back(TextOf(cell));
        WeekValues values;
        std::ranges::copy(texts, values.begin());
        std::vector<std::string> reasons;
        if (!ParseDetail(values, reasons))
            console.Warn(fmt::format("A detail of the session \"{}\" is left out, because {}.",
                                     session.Session.Name, reasons.front()));
        else if (good.empty() || good.back() != detail)
            good.push_back(detail);
    }
    if (const auto problem = WeekProblem(good)) {
        console.Warn(fmt::format("The details of the session \"{}\" are left out, because {}.",
                                 session.Session.Name, *problem));
        good.clear();
    }
    return good;
}

class CSessionDetailsDataset final : public ISmallDataset {
public:
    std::string_view Name() const override { return "session_details"; }
    std::span<const tagColumnRule> Columns() const override { return Rules; }
    std::span<const std::string_view> Filters() const override { return ListFilters; }

    tagRowSet List(CStore& store, const tagListFilter& filter) const override {
        std::map<LONG, std::string> names;
        for (const tagKeyedSession& row : SelectSessions(store))
            names.emplace(row.Key, row.Session.Name);
        const auto isWanted = [&](const std::string& name) {
            return SessionNameId(name) == SessionNameId(*filter.Session);
        };
        if (filter.Session && std::ranges::none_of(names | std::views::values, isWanted))
            throw CCommandError(
                EExitStatus::Refused,
                fmt::format("There is no session \"{}\": see \"sqstorage list sessions\".", *filter.Session));
        tagRowSet rows{{"SESSION"}, {}};
        for (const tagColumnRule& rule : Rules)
            rows.Columns.emplace_back(rule.Name);
        for (const auto& [key, details] : SelectSessionDetails(store)) {
            const auto name = names.find(key);
            const std::string shown = name == names.end() ? std::string() : name->second;
            if (filter.Session && (name == names.end() || !isWanted(shown)))
                continue;
            for (const tagSessionDetail& detail : details)
                rows.Rows.push_back(Joined({std::int64_t{key}, shown}, CellsOf(detail)));
        }
        std::ranges::stable_sort(rows.Rows, {}, [](const std::vector<Cell>& row) { return TextOf(row[1]); });
        return rows;
    }

    // The columns of the hosts' own values are there only when one of them is not 0.
    tagRowSet Export(CStore& store, const CConsole& console) const override {
        SessionDetails all = SelectSessionDetails(store);
        tagRowSet rows;
        for (const tagColumnRule& rule : Rules)
            rows.Columns.emplace_back(rule.Name);
        bool hasValues = false;
        for (const tagNamedSession& session : NameSessions(store)) {
            if (!IsExported(session.Session)) {
                if (all.erase(session.Key) != 0)
                    console.Warn(fmt::format(
                        "The details of the session \"{}\" are left out, because the session is left out, too.",
                        session.Session.Name));
                continue;
            }
            for (const tagSessionDetail& detail : Importable(session, all[session.Key], console)) {
                rows.Rows.push_back(Joined({session.Session.Name}, CellsOf(detail)));
                hasValues = hasValues || detail.Value5 != 0 || detail.Value6 != 0 || detail.Value7 != 0;
            }
            all.erase(session.Key);
        }
        for (const auto& [key, uses] : OwnedBySymbols(store).Sessions)
            all.erase(key);
        for (const auto& [key, details] : all)
            console.Warn(
                fmt::format("{} detail(s) of the session with the key {} are left out, because there is no "
                            "such session.",
                            details.size(), key));
        if (!hasValues) {
            constexpr std::size_t width = Rules.size() - 3;
            rows.Columns.resize(width);
            for (auto& row : rows.Rows)
                row.resize(width);
        }
        return rows;
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        const CNameKeys keys = KeysOf(NameSessions(run.Store));
        CRowTest test(run, file, keys);
        const auto timetables = test.Timetables();
        tagImportCounts counts;
        if (!file.Problems.empty())
            return counts;
        SessionDetails there = SelectSessionDetails(run.Store);
        CProgress progress(run.Console, file.Label, file.Table.Rows().size());
        for (const auto& [session, details] : timetables) {
            const LONG key = keys.KeyOf(session);
            try {
                BringIn(run, key, there[key], details, counts);
            } catch (const CStoreRefusal& refusal) {
                test.Tell(session,
                          fmt::format("the store refused the details of \"{}\". {}", session, refusal.what()));
            }
            progress.Advance(details.size());
        }
        return counts;
    }

private:
    static void BringIn(const tagImportRun& run, LONG key, const Details& there, const Details& wanted,
                        tagImportCounts& counts) {
        if (there == wanted) {
            counts.Unchanged += wanted.size();
        } else if (!there.empty() && !run.Options.Update) {
            counts.Different += wanted.size();
        } else {
            if (!run.Options.DryRun)
                ReplaceSessionDetails(run.Store, key, wanted, there);
            (there.empty() ? counts.Added : counts.Updated) += wanted.size();
        }
    }
};

} // namespace

const IDataset& SessionDetailsDataset() {
    static const CSessionDetailsDataset dataset;
    return dataset;
}

} // namespace sqCli
