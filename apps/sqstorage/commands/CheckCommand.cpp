// check: health and consistency of the store.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/store/Connection.h"
#include "apps/sqstorage/store/DataFeeds.h"
#include "apps/sqstorage/store/DatabaseReport.h"
#include "apps/sqstorage/store/Exchanges.h"
#include "apps/sqstorage/store/HolidayCalendars.h"
#include "apps/sqstorage/store/PriceSettings.h"
#include "apps/sqstorage/store/SessionHealth.h"
#include "apps/sqstorage/store/Sessions.h"
#include "apps/sqstorage/store/SymbolHealth.h"
#include "diagnostics/interface/Trail.h"
#include "platform/file.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "schema/interface/Schema.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>

namespace sqCli {

namespace {

using platform::ToUtf8;

constexpr const char* Manual = R"(
Each finding is a row: what was looked at (CHECK), how it is (RESULT: ok,
problem or error) and a sentence (FINDING). Nothing is changed.

Symbols are counted by the database, and a finding names the first three of them.
With a million it takes some seconds.

The status is 0 when all is well, 1 when something is to be looked at, and 3
when the store could not be opened.
)";

class CFindings {
public:
    void Good(const char* check, std::string sentence) { Add(check, "ok", std::move(sentence)); }
    void Problem(const char* check, std::string sentence) {
        Add(check, "problem", std::move(sentence));
        m_Status = EExitStatus::Refused;
    }
    void Error(const char* check, std::string sentence) {
        Add(check, "error", std::move(sentence));
        m_Status = EExitStatus::NotOpened;
    }

    [[nodiscard]] const tagRowSet& Rows() const { return m_Rows; }
    [[nodiscard]] EExitStatus Status() const { return m_Status; }

private:
    void Add(const char* check, const char* result, std::string sentence) {
        m_Rows.Rows.push_back({std::string(check), std::string(result), std::move(sentence)});
    }

    tagRowSet m_Rows{{"CHECK", "RESULT", "FINDING"}, {}};
    EExitStatus m_Status = EExitStatus::Done;
};

void TellLog(CFindings& findings) {
    const std::wstring log = BugSlayerUtil::LogFilePath();
    if (log.empty())
        findings.Good("log", "No log is written.");
    else
        findings.Good("log", fmt::format("The log is {}.", ToUtf8(log)));
}

void CheckDatabase(CDatabaseReader& reader, CFindings& findings) {
    const tagDatabaseReport report = ReportDatabase(reader);
    findings.Good("schema", fmt::format("The schema has version {}; this program works with version {}.",
                                        report.SchemaVersion, sqSchema::CurrentVersion));
    findings.Good("engine", fmt::format("Engine and client are {}.", report.Versions));
}

void CheckCalendars(CStore& store, CFindings& findings) {
    const std::vector<tagCalendar> calendars = SelectCalendars(store);
    std::map<std::string, std::size_t> names;
    std::set<LONG> keys;
    for (const tagCalendar& calendar : calendars) {
        ++names[calendar.Name];
        keys.insert(calendar.Key);
    }
    findings.Good("holidays", fmt::format("The store holds {} holiday calendar(s).", calendars.size()));
    for (const auto& [name, count] : names) {
        if (name.empty())
            findings.Problem("holidays", "A holiday calendar has no name: give it one.");
        else if (count > 1)
            findings.Problem("holidays",
                             fmt::format("{} calendars are called \"{}\", so that an import cannot tell "
                                         "which is meant: rename all but one.",
                                         count, name));
    }
    const std::vector<tagOwnedHolidayDate> dates = SelectHolidayDates(store);
    const auto astray = std::count_if(
        dates.begin(), dates.end(), [&](const tagOwnedHolidayDate& date) { return !keys.contains(date.Calendar); });
    findings.Good("holiday_dates", fmt::format("The store holds {} holiday date(s).", dates.size()));
    if (astray > 0)
        findings.Problem("holiday_dates", fmt::format("{} date(s) belong to no calendar and have no effect: have "
                                                      "a host remove them.",
                                                      astray));
}

void CheckSettings(CStore& store, CFindings& findings) {
    const tagRowSet settings = SelectSettings(store);
    findings.Good("settings", fmt::format("The store holds {} price setting(s).", settings.Rows.size()));
    for (const auto& row : settings.Rows)
        if (std::any_of(row.begin(), row.end(),
                        [](const Cell& cell) { return std::holds_alternative<tagNull>(cell); }))
            findings.Problem(
                "settings",
                fmt::format("The setting with the key {} lacks a value: have a host update or delete it.",
                            TextOf(row.front())));
}

std::set<LONG> KeysOfSettings(CStore& store) {
    std::set<LONG> keys;
    for (const auto& row : SelectSettings(store).Rows)
        keys.insert(LongOf(row.front()));
    return keys;
}

std::set<LONG> KeysOfCalendars(CStore& store) {
    std::set<LONG> keys{0}; // none
    for (const tagCalendar& calendar : SelectCalendars(store))
        keys.insert(calendar.Key);
    return keys;
}

void CheckFeeds(CStore& store, CFindings& findings) {
    std::map<std::string, std::size_t> names;
    std::size_t count = 0;
    for (const tagKeyedDataFeed& row : SelectDataFeeds(store)) {
        ++count;
        ++names[row.Feed.Name];
    }
    findings.Good("feeds", fmt::format("The store holds {} data feed(s).", count));
    for (const auto& [name, feeds] : names)
        if (feeds > 1)
            findings.Problem("feeds", fmt::format("{} feeds are called \"{}\": rename all but one.", feeds, name));
}

// What the exchanges have, by what is theirs and by what they point at.
class CExchangeCheck {
public:
    CExchangeCheck(CStore& store, CFindings& findings)
        : m_Findings(findings), m_Calendars(KeysOfCalendars(store)), m_Settings(KeysOfSettings(store)),
          m_Details(SelectSessionDetails(store)) {
        for (tagKeyedSession& row : SelectSessions(store))
            m_Sessions.emplace(row.Key, std::move(row.Session.Name));
    }

    void Check(const std::vector<tagKeyedExchange>& exchanges) {
        m_Findings.Good("sessions", fmt::format("The store holds {} trading session(s).", m_Sessions.size()));
        m_Findings.Good("exchanges", fmt::format("The store holds {} exchange(s).", exchanges.size()));
        for (const auto& [key, exchange] : exchanges) {
            CheckName(exchange);
            if (!m_Calendars.contains(exchange.Holiday))
                Problem(exchange, "has a calendar that is gone: give it another");
            if (!m_Settings.contains(exchange.Setting))
                Problem(exchange, "has a price setting that is gone: give it another");
            CheckSession(exchange);
        }
    }

private:
    void Problem(const tagExchange& exchange, std::string_view what) {
        m_Findings.Problem("exchanges", fmt::format("The exchange \"{}\" {}.", exchange.Name, what));
    }

    void CheckName(const tagExchange& exchange) {
        if (!m_Names.insert(exchange.Name).second)
            Problem(exchange, "has its name in common with another: rename one of them");
    }

    void CheckSession(const tagExchange& exchange) {
        const auto session = m_Sessions.find(exchange.Session);
        if (session == m_Sessions.end()) {
            Problem(exchange, "has a session that is gone: give it another");
            return;
        }
        if (!m_Details.contains(exchange.Session))
            Problem(exchange, fmt::format("has the session \"{}\" without trading times: import "
                                          "session_details.csv",
                                          session->second));
        if (const auto [user, alone] = m_Users.emplace(exchange.Session, exchange.Name); !alone)
            Problem(exchange, fmt::format("shares its session with \"{}\", and deleting one takes it from the "
                                          "other: give each a session of its own",
                                          user->second));
    }

    CFindings& m_Findings;
    std::set<LONG> m_Calendars;
    std::set<LONG> m_Settings;
    SessionDetails m_Details;
    std::map<LONG, std::string> m_Sessions;
    std::map<LONG, std::string> m_Users; // the first exchange of each session
    std::set<std::string> m_Names;
};

// Gives the keys of those that cannot be written.
std::vector<LONG> CheckSessionTexts(CDatabaseReader& reader, CFindings& findings) {
    std::vector<LONG> keys;
    for (tagUnwritableSession& session : ExamineSessions(reader)) {
        keys.push_back(session.Key);
        findings.Problem("sessions", std::move(session.Problem));
    }
    return keys;
}

void CheckSymbols(CDatabaseReader& reader, const std::vector<LONG>& unwritableSessions, CFindings& findings) {
    tagSymbolHealth health = ExamineSymbols(reader, unwritableSessions);
    findings.Good("symbols", fmt::format("The store holds {} symbol(s).", health.Count));
    for (std::string& problem : health.Problems)
        findings.Problem("symbols", std::move(problem));
}

void CheckDictionary(const sqSetup::tagConnection& connection, CFindings& findings) {
    if (connection.DictionaryPath.empty())
        findings.Good("dictionary", "The dictionary file is looked for in the data folder of the host program.");
    else if (platform::Exists(platform::ToPath(connection.DictionaryPath)))
        findings.Good("dictionary", fmt::format("The dictionary file is {}.", ToUtf8(connection.DictionaryPath)));
    else
        findings.Good("dictionary",
                      fmt::format("The dictionary file {} is not there yet.", ToUtf8(connection.DictionaryPath)));
}

void CheckStore(CFindings& findings) {
    findings.Good("registry",
                  fmt::format("The registry entries are in {}.", ToUtf8(platform::RegistryDirectory())));
    const sqSetup::tagConnection connection = ReadConnection();
    findings.Good("database", fmt::format("The database is {}, opened as {}.", ToUtf8(connection.Path),
                                          ToUtf8(connection.UserName)));
    CStore store;
    findings.Good("store", "The store opens.");
    CDatabaseReader reader(connection);
    CheckDatabase(reader, findings);
    CheckDictionary(connection, findings);
    CheckCalendars(store, findings);
    CheckSettings(store, findings);
    CheckFeeds(store, findings);
    CExchangeCheck(store, findings).Check(SelectExchanges(store));
    CheckSymbols(reader, CheckSessionTexts(reader, findings), findings);
}

// A store that cannot be opened is a finding like the others, and the error that every command gives.
EExitStatus Check(const CConsole& console) {
    CFindings findings;
    try {
        CheckStore(findings);
    } catch (const CCommandError& error) {
        console.Error(error.what());
        findings.Error("store", error.what());
    } catch (const CStoreRefusal& refusal) {
        findings.Problem("store", refusal.what());
    }
    TellLog(findings);
    console.Print(findings.Rows());
    return findings.Status();
}

} // namespace

void AddCheckCommand(CLI::App& program, Action& chosen) {
    CCommandOptions command(program, "check", "Look at the health and consistency of the store", Manual);
    command.Does(chosen, Check);
}

} // namespace sqCli
