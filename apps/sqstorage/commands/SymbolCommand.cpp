// symbol: one symbol, resolved, with where each value comes from.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/datasets/TextRules.h"
#include "apps/sqstorage/rows/TextTable.h"
#include "apps/sqstorage/store/Connection.h"
#include "apps/sqstorage/store/DataFeeds.h"
#include "apps/sqstorage/store/Symbols.h"
#include "apps/sqstorage/symbol/StraySymbols.h"
#include "apps/sqstorage/symbol/SymbolReport.h"
#include "apps/sqstorage/symbol/SymbolSearch.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
Shows what a host is told of the symbol: its own row, and the price setting and
the session that are in effect for it. FROM says where each value comes from:

  own         the symbol's row, or the setting or session that belongs to it
  exchange    the exchange's setting, session or clock
  template    a session that symbols share
  dictionary  the dictionary of roots; a symbol that asks it has the exchange's
              values where it has none
  machine     the clock of this machine

The zone of a session's times is from where its clock is: the exchange, this
machine, or the session when that says UTC.

NAME is to the letter, with its case, and has at most 31 characters. Symbols of
one name that differ in category or exchange are all shown, and those of all feeds
of that name; one whose exchange is gone is shown with a warning. A date that is
not known is empty. Times are on the clock that TIME_ZONE names; EXCHANGE_GMT and
LOCAL_GMT are minutes.

csv and json have a row for the symbol with a column for each value, and
SETTING_FROM and SESSION_FROM. SESSION_TIMES has the times as in symbols.csv,
SESSIONS_STRING as hosts read them.

  sqstorage symbol ESZ26 --feed Simulation
  sqstorage --format json symbol ESZ26 --feed Simulation
)";

constexpr std::size_t MostSimilarNames = 5;

struct tagSymbolArguments {
    std::string Name;
    std::string Feed;
};

std::string Listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += fmt::format("{}\"{}\"", text.empty() ? "" : ", ", name);
    return text;
}

void TestName(std::string_view argument, const std::string& name, std::size_t longest) {
    if (const auto problem = NameProblem(argument, name, longest))
        throw CCommandError(EExitStatus::WrongUsage, *problem + '.');
}

std::vector<LONG> KeysOfFeeds(const std::vector<tagKeyedDataFeed>& feeds, const std::string& name) {
    std::vector<LONG> keys;
    for (const tagKeyedDataFeed& feed : feeds)
        if (feed.Feed.Name == name)
            keys.push_back(feed.Key);
    if (keys.empty())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("There is no feed \"{}\": see \"sqstorage list feeds\".", name));
    return keys;
}

// What to do about a name that the feeds of that name do not have.
std::string Advice(CStore& store, const std::vector<tagKeyedDataFeed>& feeds, const std::vector<LONG>& wanted,
                   const tagSymbolArguments& arguments) {
    for (const tagKeyedDataFeed& other : feeds)
        if (other.Feed.Name != arguments.Feed && HasSymbol(store, other.Key, arguments.Name))
            return fmt::format("the feed \"{}\" has one", other.Feed.Name);
    if (const auto names = NamesInOtherCase(store, wanted, arguments.Name); !names.empty())
        return fmt::format("there is {}, and letter case counts", Listed(names));
    if (const auto names = SimilarNames(store, wanted, arguments.Name, MostSimilarNames); !names.empty())
        return fmt::format("it has {}", Listed(names));
    return fmt::format("see \"sqstorage list symbols --feed '{}'\"", arguments.Feed);
}

// A symbol of a feed that is gone is in no feed that could be named.
[[noreturn]] void RaiseNotFound(CStore& store, const std::vector<tagKeyedDataFeed>& feeds,
                                const std::vector<LONG>& wanted, const tagSymbolArguments& arguments,
                                const std::vector<tagStraySymbol>& strays) {
    const auto lost = std::ranges::find(strays, false, &tagStraySymbol::HasFeed);
    const std::string advice =
        lost == strays.end()
            ? Advice(store, feeds, wanted, arguments)
            : fmt::format("one with the key {} has a feed that is gone, with the key {}, so import it with a feed "
                          "that is there, and have a host delete the old one",
                          lost->Key, lost->Feed);
    throw CCommandError(EExitStatus::Refused, fmt::format("There is no symbol \"{}\" in the feed \"{}\": {}.",
                                                          arguments.Name, arguments.Feed, advice));
}

void PrintTable(const tagSymbolReport& report, const CConsole& console) {
    tagRowSet rows{{"FIELD", "VALUE", "FROM"}, {}};
    for (const tagReportValue& value : report.Values) {
        auto lines = value.Lines;
        if (lines.empty())
            lines.push_back(TextOf(value.Value));
        for (const std::string& line : lines)
            rows.Rows.push_back(
                {std::string(&line == &lines.front() ? value.Column : ""), line, std::string(value.From)});
    }
    console.Print(rows);
}

void AddRow(const tagSymbolReport& report, tagRowSet& rows) {
    std::vector<std::string> columns;
    std::vector<Cell> row;
    for (const tagReportValue& value : report.Values) {
        columns.emplace_back(value.Column);
        row.push_back(value.Value);
    }
    columns.insert(columns.end(), {"SETTING_FROM", "SESSION_FROM"});
    row.insert(row.end(), {std::string(report.SettingFrom), std::string(report.SessionFrom)});
    rows.Columns = std::move(columns);
    rows.Rows.push_back(std::move(row));
}

void Print(const std::vector<tagSymbolReport>& reports, const CConsole& console) {
    tagRowSet rows;
    for (const tagSymbolReport& report : reports) {
        for (const std::string& gap : report.Gaps)
            console.Warn(gap);
        if (console.Format() != EFormat::Table) {
            AddRow(report, rows);
            continue;
        }
        if (&report != &reports.front())
            console.PrintText("\n");
        PrintTable(report, console);
    }
    if (console.Format() != EFormat::Table)
        console.Print(rows);
}

// The store finds no symbol whose exchange is gone by its name, and yet tells what is left of it.
void AddStrays(const std::vector<tagStraySymbol>& strays, const std::vector<LONG>& feeds, std::vector<LONG>& keys) {
    for (const tagStraySymbol& stray : strays)
        if (stray.HasFeed && std::ranges::find(feeds, stray.Feed) != feeds.end())
            keys.push_back(stray.Key);
    std::ranges::sort(keys);
}

EExitStatus Symbol(const tagSymbolArguments& arguments, const CConsole& console) {
    TestName("NAME", arguments.Name, LongestSymbolName);
    TestName("--feed", arguments.Feed, LongestFeedName);
    CStore store;
    const auto feeds = SelectDataFeeds(store);
    const auto wanted = KeysOfFeeds(feeds, arguments.Feed);
    auto keys = FindSymbols(store, wanted, arguments.Name);
    CDatabaseReader reader(ReadConnection());
    const auto strays = FindStraySymbols(reader, arguments.Name);
    AddStrays(strays, wanted, keys);
    if (keys.empty())
        RaiseNotFound(store, feeds, wanted, arguments, strays);
    if (keys.size() > 1)
        console.Note(fmt::format("There are {} symbols of that name; all are shown.", keys.size()));
    std::vector<tagSymbolReport> reports;
    for (const LONG key : keys)
        reports.push_back(ReportSymbol(store, arguments.Feed, key));
    Print(reports, console);
    return EExitStatus::Done;
}

} // namespace

void AddSymbolCommand(CLI::App& program, Action& chosen) {
    const auto arguments = std::make_shared<tagSymbolArguments>();
    CCommandOptions command(program, "symbol", "Show everything about one symbol", Manual);
    command.Argument("NAME", arguments->Name, "The symbol's name");
    command.RequiredOption("--feed", arguments->Feed, "NAME", "The feed that has it");
    command.Does(chosen, [arguments](const CConsole& console) { return Symbol(*arguments, console); });
}

} // namespace sqCli
