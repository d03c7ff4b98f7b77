// What the import of the shipped data adds to the bare database, measured in the same run: each iteration imports
// the whole set into an empty store, and runs the statements that this comes to, each in a transaction of its own
// as the store has it, through the engine's own object interface. Reading and testing the files is on our side
// alone.
#include "BareDatabase.h"
#include "BenchmarkStore.h"
#include "Comparison.h"
#include "apps/sqstorage/datasets/ImportFiles.h"

#include <fmt/format.h>
#include <functional>
#include <map>

namespace {

using namespace bench;

// The rows of one file, by the names of its columns.
class CRows {
public:
    explicit CRows(std::string_view dataset)
        : m_Dataset(*sqCli::FindDataset(dataset)),
          m_Table(std::filesystem::path(SQ_SHIPPED_DATA) / fmt::format("{}.csv", dataset), m_Dataset.Columns(),
                  m_Problems) {}

    using Row = std::function<std::string_view(std::string_view column)>;
    void ForEach(const std::function<void(const Row&)>& action) const {
        for (const sqCli::tagCsvRecord& record : m_Table.Rows())
            action([&](std::string_view column) { return m_Table.Value(record, PlaceOf(column)); });
    }

private:
    std::size_t PlaceOf(std::string_view column) const {
        std::size_t place = 0;
        while (m_Dataset.Columns()[place].Name != column)
            ++place;
        return place;
    }

    const sqCli::IDataset& m_Dataset;
    std::vector<sqCli::tagRowProblem> m_Problems;
    sqCli::CTableFile m_Table;
};

// The statements of the store's operations, and those that the import looks things up with.
class CBareImport {
public:
    explicit CBareImport(CBareDatabase& database) : m_Database(database) {}

    void Run() {
        Holidays();
        HolidayDates();
        Settings();
        Feeds();
        Sessions();
        SessionDetails();
        Exchanges();
    }

private:
    using Keys = std::map<std::string, int, std::less<>>;
    using Batches = std::map<std::string, std::vector<std::vector<Value>>, std::less<>>;

    int Insert(std::string_view table, std::string_view values) {
        const int key = m_Database.GenerateId();
        m_Database.Write(fmt::format("INSERT INTO {} VALUES({},{})", table, key, values));
        return key;
    }
    int InsertSetting(const CRows::Row& row) {
        return Insert("SETTINGS", fmt::format("{},{},{},{}", row("PRICE_SCALE"), row("POINT_VALUE"),
                                              row("DAILY_LIMIT"), row("MIN_MOVEMENT")));
    }
    // Details of one owner at a time; their values but the owner's are the same for each, to leave parsing out.
    void Replace(std::string_view table, std::string_view keyColumn, const Keys& keys, const Batches& batches) {
        const std::size_t columns = batches.begin()->second.front().size();
        std::string marks = "?";
        for (std::size_t column = 1; column < columns; ++column)
            marks += ",?";
        for (const auto& [owner, rows] : batches) {
            std::vector<std::vector<Value>> owned = rows;
            for (auto& row : owned)
                row.front() = keys.find(owner)->second;
            m_Database.Write(fmt::format("DELETE FROM {} WHERE {}={}", table, keyColumn, keys.find(owner)->second));
            m_Database.WriteRows(fmt::format("INSERT INTO {} VALUES({})", table, marks), owned);
        }
    }

    void SelectSessions() {
        m_Database.Select("SELECT * FROM SELECT_EXCHANGE(0)");
        for (int type = 0; type <= 3; ++type)
            m_Database.Select(fmt::format("SELECT * FROM SESSIONS WHERE SESSION_TYPE={}", type));
        m_Database.Select("SELECT * FROM SELECT_EXCHANGE(0)");
        m_Database.Select("SELECT * FROM SESSION_DETAILS");
    }

    void Holidays() {
        m_Database.Select("SELECT * FROM HOLIDAYS");
        m_Calendars.clear();
        m_HolidayRows.ForEach([&](const CRows::Row& row) {
            m_Calendars.emplace(row("HOLIDAY_NAME"), Insert("HOLIDAYS", fmt::format("'{}'", row("HOLIDAY_NAME"))));
        });
    }
    void HolidayDates() {
        m_Database.Select("SELECT * FROM HOLIDAYS");
        m_Database.Select("SELECT * FROM HOLIDAYS");
        m_Database.Select("SELECT * FROM HOLIDAY_DETAILS");
        Batches batches;
        m_DateRows.ForEach([&](const CRows::Row& row) {
            batches[std::string(row("HOLIDAY_NAME"))].push_back({Value(), std::nullopt, 60000, std::nullopt});
        });
        Replace("HOLIDAY_DETAILS", "HOLIDAY", m_Calendars, batches);
    }
    void Settings() {
        m_Database.Select("SELECT * FROM SELECT_EXCHANGE(0)");
        m_Database.Select("SELECT * FROM SETTINGS");
        m_SettingRows.ForEach([&](const CRows::Row& row) { InsertSetting(row); });
    }
    void Feeds() {
        m_Database.Select("SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, "
                          "ACTIVATED AS \"ACTIVE\", DELETED FROM DATA_FEEDS WHERE DELETED=0");
        m_FeedRows.ForEach([&](const CRows::Row& row) {
            m_Database.SelectOnce(
                fmt::format("SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{}' AND DELETED=1", row("CLSID")));
            m_Database.SelectOnce(
                fmt::format("SELECT COUNT(*) AS DATA_FEED FROM DATA_FEEDS WHERE CLSID='{}'", row("CLSID")));
            Insert("DATA_FEEDS",
                   fmt::format("'{}','{}','{}',1,1,0,{},'{}'", row("DATA_FEED_NAME"), row("DATA_FEED_DLL_NAME"),
                               row("CLSID"), row("ASCII"), row("DATA_FEED_SHORT_NAME")));
        });
    }
    void Sessions() {
        SelectSessions();
        m_Sessions.clear();
        m_SessionRows.ForEach([&](const CRows::Row& row) {
            m_Database.SelectOnce(
                fmt::format("SELECT SESSION FROM SESSIONS WHERE SESSION_TYPE=2 AND UPPER(SESSION_NAME)=UPPER('{}')",
                            row("SESSION_NAME")));
            m_Sessions.emplace(row("SESSION_NAME"),
                               Insert("SESSIONS", fmt::format("{},'{}',{}", row("SESSION_TYPE"),
                                                              row("SESSION_NAME"), row("TIME_ZONE"))));
        });
    }
    void SessionDetails() {
        SelectSessions();
        m_Database.Select("SELECT * FROM SESSION_DETAILS");
        Batches batches;
        m_DetailRows.ForEach([&](const CRows::Row& row) {
            batches[std::string(row("SESSION_NAME"))].push_back({Value(), 1, 32400, 1, 61200, 0, 0, 0});
        });
        Replace("SESSION_DETAILS", "SESSION", m_Sessions, batches);
    }
    void Exchanges() {
        m_Database.Select("SELECT * FROM HOLIDAYS");
        SelectSessions();
        m_Database.Select("SELECT * FROM SETTINGS");
        m_Database.Select("SELECT * FROM SELECT_EXCHANGE(0)");
        m_ExchangeRows.ForEach([&](const CRows::Row& row) {
            const int setting = InsertSetting(row);
            Insert("EXCHANGES",
                   fmt::format("'{}',{},{},{},0,'',1,360,0,0,1,11,'02:00:00.0000',-60,0,2,3,"
                               "'02:00:00.0000','{}'",
                               row("EXCHANGE_NAME"), m_Calendars.find(row("HOLIDAY_NAME"))->second, setting,
                               m_Sessions.find(row("SESSION_NAME"))->second, row("DESCRIPTION")));
        });
    }

    CBareDatabase& m_Database;
    CRows m_HolidayRows{"holidays"};
    CRows m_DateRows{"holiday_dates"};
    CRows m_SettingRows{"settings"};
    CRows m_FeedRows{"feeds"};
    CRows m_SessionRows{"sessions"};
    CRows m_DetailRows{"session_details"};
    CRows m_ExchangeRows{"exchanges"};
    Keys m_Calendars;
    Keys m_Sessions;
};

void Import(benchmark::State& state, sqCli::CStore& store, const sqCli::CConsole& console,
            const std::vector<sqCli::tagImportSource>& sources) {
    sqCli::tagImportRun run{store, console, {}, {}};
    sqCli::tagImportCounts all;
    for (const sqCli::tagImportSource& source : sources)
        all += ImportFile(source, run);
    if (all.Rows == 0 || all.Added != all.Rows)
        state.SkipWithError("not all rows were taken");
}

void ImportShippedData(benchmark::State& state) {
    tests::CStorageHost host;
    host.Install();
    const sqCli::CConsole console(sqCli::EFormat::Csv, true);
    sqCli::CStore store;
    const auto sources = sqCli::FindSources({SQ_SHIPPED_DATA}, console);
    CBareDatabase database(host.Connection().Path);
    CBareImport bare(database);
    CComparison comparison;
    for (auto _ : state)
        comparison.Round(
            state, [&] { Import(state, store, console, sources); }, [&] { bare.Run(); },
            [&] {
                for (const char* table : {"HOLIDAYS", "HOLIDAY_DETAILS", "SETTINGS", "DATA_FEEDS", "SESSIONS",
                                          "SESSION_DETAILS", "EXCHANGES"})
                    database.Write(fmt::format("DELETE FROM {}", table));
            });
    comparison.Report(state);
}
BENCHMARK(ImportShippedData)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace

BENCHMARK_MAIN();
