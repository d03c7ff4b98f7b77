// Exchanges, by name. A row names its calendar and its session, and says its price setting itself: a setting has no
// name, and this one belongs to the exchange alone.
#include "KeyedTable.h"
#include "NameKeys.h"
#include "NumberRules.h"
#include "PriceRules.h"
#include "SessionNames.h"
#include "TextRules.h"
#include "ZoneRules.h"
#include "apps/sqstorage/store/Exchanges.h"
#include "apps/sqstorage/store/HolidayCalendars.h"
#include "apps/sqstorage/store/WayBack.h"

#include <algorithm>
#include <array>
#include <set>

namespace sqCli {

namespace {

enum Rule : std::size_t {
    RuleName,
    RuleDescription,
    RuleCalendar,
    RuleSession,
    RulePrices, // four columns
    RuleTimeZone = RulePrices + PriceColumns.size(),
    RuleMapId,
    RuleZone,
    RuleCount
};
constexpr std::array<tagColumnRule, RuleCount> Rules{tagColumnRule{"EXCHANGE_NAME", true},
                                                     tagColumnRule{"DESCRIPTION", false},
                                                     tagColumnRule{"HOLIDAY_NAME", false},
                                                     tagColumnRule{"SESSION_NAME", true},
                                                     PriceColumns[0],
                                                     PriceColumns[1],
                                                     PriceColumns[2],
                                                     PriceColumns[3],
                                                     tagColumnRule{"TIME_ZONE", false},
                                                     tagColumnRule{"MAP_ID", false},
                                                     tagColumnRule{"EXCHANGE_TIME_ZONE_INFORMATION", true}};

// What the columns hold, in characters.
constexpr std::size_t LongestName = 12;
constexpr std::size_t LongestDescription = 255;

void Note(Reasons& reasons, std::optional<std::string> problem) {
    if (problem)
        reasons.push_back(std::move(*problem));
}

struct tagExchangeRow {
    std::string Name;
    std::string Description;
    std::string Calendar; // empty for none
    std::string Session;
    PriceTexts Prices;
    LONG TimeZone;
    std::string MapId;
    std::string Zone;

    const std::string& Id() const { return Name; }
    friend bool operator==(const tagExchangeRow&, const tagExchangeRow&) = default;
};

class CExchangeTable {
public:
    using Row = tagExchangeRow;
    static constexpr std::string_view Noun = "exchange";

    // Without a run for an export, where what a row refers to is known to be there.
    CExchangeTable(CStore& store, const tagImportRun* run) : m_Store(store), m_Run(run) {
        for (tagCalendar& calendar : SelectCalendars(store)) {
            m_CalendarKeys.Add(calendar.Name, calendar.Key);
            m_CalendarNames.emplace(calendar.Key, std::move(calendar.Name));
        }
        for (tagNamedSession& session : NameSessions(store)) {
            m_SessionKeys.Add(session.Session.Name, session.Key);
            if (!IsExported(session.Session))
                m_LeftOutSessions.insert(session.Key);
            m_SessionNames.emplace(session.Key, std::move(session.Session.Name));
        }
        for (const auto& row : SelectSettings(store).Rows)
            m_Prices.emplace(LongOf(row[0]),
                             PriceTexts{TextOf(row[1]), TextOf(row[2]), TextOf(row[3]), TextOf(row[4])});
        for (tagKeyedExchange& exchange : SelectExchanges(store)) {
            ++m_SettingUses[exchange.Exchange.Setting];
            m_Exchanges.push_back(std::move(exchange));
        }
    }

    std::vector<tagStoredRow<Row>> Rows() const {
        std::vector<tagStoredRow<Row>> rows;
        for (const auto& [key, exchange] : m_Exchanges)
            rows.push_back({key, RowOf(exchange)});
        return rows;
    }

    std::optional<Row> Parse(const RowValues& values, Reasons& reasons) {
        const std::size_t before = reasons.size();
        Row row{std::string(values[RuleName]),
                std::string(values[RuleDescription]),
                std::string(values[RuleCalendar]),
                std::string(values[RuleSession]),
                {},
                0,
                std::string(values[RuleMapId]),
                std::string(values[RuleZone])};
        Note(reasons, NameProblem(Rules[RuleName].Name, row.Name, LongestName));
        Note(reasons, TextProblem(Rules[RuleDescription].Name, row.Description, LongestDescription));
        TestReferences(row, reasons);
        const auto setting = ParseSetting(
            {values[RulePrices], values[RulePrices + 1], values[RulePrices + 2], values[RulePrices + 3]}, reasons);
        const auto number = ParseWholeOr(0, Rules[RuleTimeZone].Name, values[RuleTimeZone],
                                         std::numeric_limits<LONG>::min(), LargestLong, reasons);
        Note(reasons, TextProblem(Rules[RuleMapId].Name, row.MapId));
        Note(reasons, QuoteProblem(Rules[RuleMapId].Name, row.MapId));
        Note(reasons, ZoneProblem(Rules[RuleZone].Name, row.Zone));
        if (reasons.size() != before)
            return std::nullopt;
        row.Prices = TextsOf(*setting);
        row.TimeZone = *number;
        return row;
    }

    std::vector<Cell> Cells(const Row& row) const {
        std::vector<Cell> cells{row.Name, row.Description, row.Calendar, row.Session};
        const std::vector<Cell> prices = CellsOf(row.Prices);
        cells.insert(cells.end(), prices.begin(), prices.end());
        cells.insert(cells.end(), {std::int64_t{row.TimeZone}, row.MapId, row.Zone});
        return cells;
    }

    // The setting is there before the exchange, and goes again when the exchange is refused.
    void Insert(const Row& row) {
        const LONG setting = NewSetting(row);
        try {
            InsertExchange(m_Store, ExchangeOf(row, setting));
        } catch (const CStoreRefusal&) {
            Forget(setting);
            throw;
        }
    }

    void Update(const tagStoredRow<Row>& there, const Row& row) {
        const auto found = std::ranges::find(m_Exchanges, there.Key, &tagKeyedExchange::Key);
        const LONG before = found->Exchange.Setting;
        const bool changes = row.Prices != there.Value.Prices;
        const LONG setting = changes ? ChangeSetting(before, row) : before;
        ChangeOrUndo([&] { UpdateExchange(m_Store, there.Key, ExchangeOf(row, setting)); },
                     [&] {
                         if (setting != before)
                             Forget(setting);
                         else if (changes)
                             PutBack(setting, there.Value.Prices);
                     },
                     "its old prices");
        // The next of those that shared it may be the last.
        if (setting != before)
            --m_SettingUses[before];
    }

    void Taken(const Row& row) {
        const auto isIt = [&](const tagKeyedExchange& exchange) { return exchange.Exchange.Name == row.Name; };
        const auto there = std::ranges::find_if(m_Exchanges, isIt);
        if (there == m_Exchanges.end() || SessionIdOf(there->Exchange) != SessionNameId(row.Session))
            m_NewSessions.emplace_back(row.Name, row.Session);
    }

    // Of those that the rows taken brought about. An exchange that was there with its session comes first.
    void WarnOfSharedSessions(const CConsole& console) const {
        std::map<std::string, std::string> users; // the first exchange of each session, by its id
        std::set<std::string> moved;
        for (const auto& [exchange, session] : m_NewSessions)
            moved.insert(exchange);
        for (const tagKeyedExchange& exchange : m_Exchanges)
            if (m_SessionNames.contains(exchange.Exchange.Session) && !moved.contains(exchange.Exchange.Name))
                users.emplace(SessionIdOf(exchange.Exchange), exchange.Exchange.Name);
        for (const auto& [exchange, session] : m_NewSessions)
            if (const auto [user, alone] = users.emplace(SessionNameId(session), exchange); !alone)
                console.Warn(
                    fmt::format("The exchanges \"{}\" and \"{}\" share the session \"{}\", which goes when "
                                "one of them is deleted: give each a session of its own.",
                                user->second, exchange, session));
    }

    // What an exchange refers to and the store does not hold.
    std::vector<std::string> Gaps(const tagExchange& exchange) const {
        std::vector<std::string> gaps;
        if (exchange.Holiday != 0 && !m_CalendarNames.contains(exchange.Holiday))
            gaps.push_back(fmt::format("its calendar, with the key {}, is gone", exchange.Holiday));
        if (!m_Prices.contains(exchange.Setting))
            gaps.push_back(fmt::format("its price setting, with the key {}, is gone", exchange.Setting));
        if (!m_SessionNames.contains(exchange.Session))
            gaps.push_back(fmt::format("its session, with the key {}, is gone", exchange.Session));
        return gaps;
    }
    // An exchange goes with what it refers to.
    std::optional<std::string> ExportProblem(LONG key) const {
        const tagExchange& exchange = std::ranges::find(m_Exchanges, key, &tagKeyedExchange::Key)->Exchange;
        if (m_LeftOutSessions.contains(exchange.Session))
            return fmt::format("its session, \"{}\", is left out", NameOf(m_SessionNames, exchange.Session));
        const auto calendar = m_CalendarNames.find(exchange.Holiday);
        if (calendar != m_CalendarNames.end() && NameProblem(Rules[RuleCalendar].Name, calendar->second))
            return fmt::format("its calendar, with the key {}, is left out", exchange.Holiday);
        return std::nullopt;
    }
    const std::vector<tagKeyedExchange>& Exchanges() const { return m_Exchanges; }

private:
    using ExchangeSession = std::pair<std::string, std::string>;

    template <class Names>
    static std::string NameOf(const Names& names, LONG key) {
        const auto found = names.find(key);
        return found == names.end() ? std::string() : found->second;
    }

    Row RowOf(const tagExchange& exchange) const {
        const auto prices = m_Prices.find(exchange.Setting);
        return {exchange.Name,
                exchange.Description,
                NameOf(m_CalendarNames, exchange.Holiday),
                NameOf(m_SessionNames, exchange.Session),
                prices == m_Prices.end() ? PriceTexts() : prices->second,
                exchange.TimeZone,
                exchange.MapId,
                exchange.ZoneInformation};
    }

    // The session's name becomes that under which it is kept.
    void TestReferences(Row& row, Reasons& reasons) {
        if (row.Session.empty())
            reasons.push_back("SESSION_NAME is empty: name the session of the exchange");
        if (!m_Run)
            return;
        if (!row.Calendar.empty())
            Note(reasons, m_CalendarKeys.Problem(*m_Run, row.Calendar));
        if (row.Session.empty())
            return;
        Note(reasons, m_SessionKeys.Problem(*m_Run, row.Session));
        if (const auto kept = m_SessionNames.find(m_SessionKeys.KeyOf(row.Session)); kept != m_SessionNames.end())
            row.Session = kept->second;
    }

    std::string SessionIdOf(const tagExchange& exchange) const {
        return SessionNameId(NameOf(m_SessionNames, exchange.Session));
    }

    tagExchange ExchangeOf(const Row& row, LONG setting) const {
        return {row.Name,
                row.Description,
                m_CalendarKeys.KeyOf(row.Calendar),
                setting,
                m_SessionKeys.KeyOf(row.Session),
                row.TimeZone,
                row.MapId,
                row.Zone};
    }

    LONG NewSetting(const Row& row) const { return InsertSetting(m_Store, SettingOf(row.Prices).value()); }

    // A setting that stays behind has no effect; the refusal that led here is what counts.
    void Forget(LONG setting) const {
        try {
            DeleteSetting(m_Store, setting);
        } catch (const CStoreRefusal&) {
        }
    }

    void PutBack(LONG setting, const PriceTexts& prices) const {
        const auto old = SettingOf(prices);
        if (!old)
            throw CStoreRefusal("The old prices say no setting that the store takes.");
        UpdateSetting(m_Store, setting, *old);
    }

    // One that another exchange has, too, stays as it is.
    LONG ChangeSetting(LONG key, const Row& row) const {
        const auto uses = m_SettingUses.find(key);
        if (!m_Prices.contains(key) || uses == m_SettingUses.end() || uses->second > 1)
            return NewSetting(row);
        UpdateSetting(m_Store, key, SettingOf(row.Prices).value());
        return key;
    }

    CStore& m_Store;
    const tagImportRun* m_Run;
    CNameKeys m_CalendarKeys{"calendar", "holidays"};
    CNameKeys m_SessionKeys{"session", "sessions", SessionNameId};
    std::map<LONG, std::string> m_CalendarNames;
    std::map<LONG, std::string> m_SessionNames;
    std::set<LONG> m_LeftOutSessions; // of an export
    std::map<LONG, PriceTexts> m_Prices;
    std::map<LONG, std::size_t> m_SettingUses;
    std::vector<tagKeyedExchange> m_Exchanges;
    std::vector<ExchangeSession> m_NewSessions; // the names of both, in the order of the file
};

class CExchangesDataset final : public ISmallDataset {
public:
    std::string_view Name() const override { return "exchanges"; }
    std::span<const tagColumnRule> Columns() const override { return Rules; }

    tagRowSet List(CStore& store, const tagListFilter&) const override {
        const CExchangeTable table(store, nullptr);
        tagRowSet rows{{"EXCHANGE"}, {}};
        for (const tagColumnRule& rule : Rules)
            rows.Columns.emplace_back(rule.Name);
        for (const auto& exchange : table.Rows())
            rows.Rows.push_back(Joined({std::int64_t{exchange.Key}}, table.Cells(exchange.Value)));
        return rows;
    }

    tagRowSet Export(CStore& store, const CConsole& console) const override {
        CExchangeTable table(store, nullptr);
        for (const auto& [key, exchange] : table.Exchanges())
            for (const std::string& gap : table.Gaps(exchange))
                console.Warn(fmt::format("The exchange \"{}\" lacks something: {}.", exchange.Name, gap));
        return ExportTable(*this, console, table);
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        CExchangeTable table(run.Store, &run);
        const tagImportCounts counts = ImportTable(*this, run, file, table);
        table.WarnOfSharedSessions(run.Console);
        return counts;
    }
};

} // namespace

const IDataset& ExchangesDataset() {
    static const CExchangesDataset dataset;
    return dataset;
}

} // namespace sqCli
