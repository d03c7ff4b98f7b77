// symbol: one symbol, resolved, with where each value comes from.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/rows/TextTable.h"
#include "apps/sqstorage/store/DataFeeds.h"
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

NAME is to the letter, with its case. Symbols of one name that differ in category
or exchange are all shown. A date that is not known is empty. Times are on the
clock that TIME_ZONE names; EXCHANGE_GMT and LOCAL_GMT are minutes.

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

// What to do about a name that the feed does not have.
std::string Advice(CStore& store, const std::vector<tagKeyedDataFeed>& feeds, const tagKeyedDataFeed& feed,
                   const std::string& name) {
    for (const tagKeyedDataFeed& other : feeds)
        if (other.Key != feed.Key && HasSymbol(store, other.Key, name))
            return fmt::format("the feed \"{}\" has one", other.Feed.Name);
    if (const auto names = NamesInOtherCase(store, feed.Key, name); !names.empty())
        return fmt::format("there is {}, and letter case counts", Listed(names));
    if (const auto names = SimilarNames(store, feed.Key, name, MostSimilarNames); !names.empty())
        return fmt::format("it has {}", Listed(names));
    return fmt::format("see \"sqstorage list symbols --feed '{}'\"", feed.Feed.Name);
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

EExitStatus Symbol(const tagSymbolArguments& arguments, const CConsole& console) {
    CStore store;
    const auto feeds = SelectDataFeeds(store);
    const auto feed = std::ranges::find(feeds, arguments.Feed,
                                        [](const tagKeyedDataFeed& candidate) { return candidate.Feed.Name; });
    if (feed == feeds.end())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("There is no feed \"{}\": see \"sqstorage list feeds\".", arguments.Feed));
    const auto keys = FindSymbols(store, feed->Key, arguments.Name);
    if (keys.empty())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("There is no symbol \"{}\" in the feed \"{}\": {}.", arguments.Name,
                                        arguments.Feed, Advice(store, feeds, *feed, arguments.Name)));
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
