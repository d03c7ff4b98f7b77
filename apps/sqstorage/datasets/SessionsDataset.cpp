// Trading sessions, by name; their times are in session_details.
#include "KeyedTable.h"
#include "NumberRules.h"
#include "SessionNames.h"
#include "TextRules.h"

#include <array>

namespace sqCli {

namespace {

enum Rule : std::size_t { RuleName, RuleType, RuleTimeZone };
constexpr std::array Rules{tagColumnRule{"SESSION_NAME", true}, tagColumnRule{"SESSION_TYPE", true},
                           tagColumnRule{"TIME_ZONE", true}};

class CSessionTable {
public:
    static constexpr std::string_view Noun = "session";

    struct Row : tagSession {
        std::string Id() const { return SessionNameId(Name); }
        friend bool operator==(const Row&, const Row&) = default;
    };

    explicit CSessionTable(CStore& store) : m_Store(store) {}

    std::vector<tagStoredRow<Row>> Rows() {
        std::vector<tagStoredRow<Row>> rows;
        for (tagNamedSession& session : NameSessions(m_Store))
            rows.push_back({session.Key, {std::move(session.Session)}});
        return rows;
    }

    std::optional<Row> Parse(const RowValues& values, Reasons& reasons) {
        const std::size_t before = reasons.size();
        if (auto problem = NameProblem(Rules[RuleName].Name, values[RuleName]))
            reasons.push_back(std::move(*problem));
        const auto type = ParseWhole(Rules[RuleType].Name, values[RuleType], 0, LastSessionType, reasons);
        const auto zone = ParseWhole(Rules[RuleTimeZone].Name, values[RuleTimeZone], 0, LargestLong, reasons);
        if (reasons.size() != before)
            return std::nullopt;
        return Row{{std::string(values[RuleName]), *type, *zone}};
    }

    std::vector<Cell> Cells(const Row& row) {
        return {row.Name, std::int64_t{row.Type}, std::int64_t{row.TimeZone}};
    }
    void Insert(const Row& row) { InsertSession(m_Store, row); }
    void Update(const tagStoredRow<Row>& there, const Row& row) { UpdateSession(m_Store, there.Key, row); }

private:
    CStore& m_Store;
};

class CSessionsDataset final : public ISmallDataset {
public:
    std::string_view Name() const override { return "sessions"; }
    std::span<const tagColumnRule> Columns() const override { return Rules; }

    tagRowSet List(CStore& store, const tagListFilter&) const override {
        tagRowSet rows{{"SESSION", "SESSION_NAME", "SESSION_TYPE", "TIME_ZONE"}, {}};
        for (const auto& [key, session] : SelectSessions(store))
            rows.Rows.push_back(
                {std::int64_t{key}, session.Name, std::int64_t{session.Type}, std::int64_t{session.TimeZone}});
        return rows;
    }

    tagRowSet Export(CStore& store, const CConsole& console) const override {
        for (const tagNamedSession& session : NameSessions(store))
            if (session.NameInStore != session.Session.Name)
                console.Warn(fmt::format("The session with the key {} has {}: it is written as \"{}\".",
                                         session.Key,
                                         session.NameInStore.empty()
                                             ? std::string("no name")
                                             : fmt::format("the name \"{}\" of another one", session.NameInStore),
                                         session.Session.Name));
        return ExportTable(*this, console, CSessionTable(store));
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        return ImportTable(*this, run, file, CSessionTable(run.Store));
    }
};

} // namespace

const IDataset& SessionsDataset() {
    static const CSessionsDataset dataset;
    return dataset;
}

} // namespace sqCli
