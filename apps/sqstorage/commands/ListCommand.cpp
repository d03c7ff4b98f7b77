// list: rows of the store.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/RowPrinter.h"
#include "apps/sqstorage/datasets/Dataset.h"
#include "apps/sqstorage/datasets/TextRules.h"
#include "apps/sqstorage/rows/Numbers.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
  sqstorage list holidays
  sqstorage list holiday_dates --calendar NYSE --from 2027-01-01 --to 2027-12-31
  sqstorage list exchanges
  sqstorage list session_details --session CME
  sqstorage --format json list settings
  sqstorage list symbols --feed Simulation --exchange CME --name ES

--calendar, --from and --to are for holiday_dates. A date that lasts several days
is listed when one of its days is within. --session is for session_details. When
there is no row, the status is 1.

--feed, --exchange, --category, --name and --description are for symbols, and all
that are given must hold. Letter case does not count in the last two, and "*" alone
is every name or description. In a name "%" stands for any characters and "_"
for a single one. Symbols come feed by feed, otherwise in the database's own
order, and are shown as they come; the columns of a table are as wide as the
first of them need.
"sqstorage symbol" tells all of one.

settings has every price setting; those that belong to an exchange are shown with
it, too. As table and csv, days of the week and times are written as in the files
of an import, Sun and 17:00; json has them as the store does, as the number of
the day from 0 for Sunday and seconds since midnight.
)";

struct tagListArguments {
    std::string What;
    std::optional<std::string> Calendar;
    std::optional<std::string> Session;
    std::optional<std::string> From;
    std::optional<std::string> To;
    std::optional<std::string> Feed;
    std::optional<std::string> Exchange;
    std::optional<std::string> Category;
    std::optional<std::string> Name;
    std::optional<std::string> Description;
};

std::optional<tagDay> DayOf(const std::optional<std::string>& text, const char* option) {
    if (!text)
        return std::nullopt;
    std::string reason;
    const auto day = ParseDay(*text, reason);
    if (!day)
        throw CCommandError(EExitStatus::WrongUsage, fmt::format("{}: {}.", option, reason));
    return day;
}

std::optional<LONG> CategoryOf(const std::optional<std::string>& text) {
    constexpr std::int64_t largest = std::numeric_limits<SHORT>::max();
    if (!text)
        return std::nullopt;
    const auto number = ParseInteger(*text);
    if (!number || *number < 0 || *number > largest)
        throw CCommandError(EExitStatus::WrongUsage,
                            fmt::format("--category is \"{}\": give a whole number from 0 to {}.", *text, largest));
    return static_cast<LONG>(*number);
}

// What the store's statement has room for.
std::optional<std::string> TextOf(const std::optional<std::string>& text, std::string_view option) {
    if (text)
        if (const auto problem = TextProblem(option, *text))
            throw CCommandError(EExitStatus::WrongUsage, *problem + '.');
    return text;
}

tagListFilter FilterOf(const tagListArguments& arguments) {
    tagListFilter filter{.Calendar = arguments.Calendar,
                         .Session = arguments.Session,
                         .From = DayOf(arguments.From, "--from"),
                         .To = DayOf(arguments.To, "--to"),
                         .Feed = arguments.Feed,
                         .Exchange = arguments.Exchange,
                         .Category = CategoryOf(arguments.Category),
                         .Name = TextOf(arguments.Name, "--name"),
                         .Description = TextOf(arguments.Description, "--description")};
    if (filter.From && filter.To && *filter.To < *filter.From)
        throw CCommandError(EExitStatus::WrongUsage, fmt::format("--to {} is before --from {}: exchange them.",
                                                                 *arguments.To, *arguments.From));
    return filter;
}

// The options given that narrow the rows down.
std::vector<std::string_view> GivenFilters(const tagListArguments& arguments) {
    std::vector<std::string_view> given;
    const auto add = [&](const std::optional<std::string>& value, std::string_view option) {
        if (value)
            given.push_back(option);
    };
    add(arguments.Calendar, "--calendar");
    add(arguments.Session, "--session");
    add(arguments.From, "--from");
    add(arguments.To, "--to");
    add(arguments.Feed, "--feed");
    add(arguments.Exchange, "--exchange");
    add(arguments.Category, "--category");
    add(arguments.Name, "--name");
    add(arguments.Description, "--description");
    return given;
}

void RefuseFilters(const IDataset& dataset, const std::vector<std::string_view>& given) {
    const auto taken = dataset.Filters();
    for (const std::string_view option : given)
        if (std::find(taken.begin(), taken.end(), option) == taken.end())
            throw CCommandError(EExitStatus::WrongUsage,
                                fmt::format("{} does not go with {}: leave it out.", option, dataset.Name()));
}

EExitStatus List(const tagListArguments& arguments, const CConsole& console) {
    const IDataset* dataset = FindDataset(arguments.What);
    if (!dataset)
        throw CCommandError(EExitStatus::WrongUsage,
                            fmt::format("\"{}\" cannot be listed: say one of {}.", arguments.What, DatasetNames()));
    const auto given = GivenFilters(arguments);
    RefuseFilters(*dataset, given);
    const tagListFilter filter = FilterOf(arguments);
    CStore store;
    CRowPrinter printer(console);
    dataset->ListTo(store, filter, [&](const tagRowSet& batch) { printer.Print(batch); });
    printer.Finish();
    if (printer.Count() > 0)
        return EExitStatus::Done;
    console.Note(given.empty() ? "The store holds none yet: \"sqstorage import\" brings them in."
                               : "There is no such row.");
    return EExitStatus::Refused;
}

} // namespace

void AddListCommand(CLI::App& program, Action& chosen) {
    const auto arguments = std::make_shared<tagListArguments>();
    CCommandOptions command(program, "list", "Show rows of the store", Manual);
    command.Argument("WHAT", arguments->What, DatasetNames());
    command.Option("--calendar", arguments->Calendar, "NAME", "Only dates of this calendar");
    command.Option("--session", arguments->Session, "NAME", "Only details of this session");
    command.Option("--from", arguments->From, "DATE", "Only dates on or after this day");
    command.Option("--to", arguments->To, "DATE", "Only dates on or before this day");
    command.Option("--feed", arguments->Feed, "NAME", "Only symbols of this feed");
    command.Option("--exchange", arguments->Exchange, "NAME", "Only symbols of this exchange");
    command.Option("--category", arguments->Category, "NUMBER", "Only symbols of this category");
    command.Option("--name", arguments->Name, "PREFIX", "Only symbols whose name begins so");
    command.Option("--description", arguments->Description, "PREFIX", "Only symbols whose description begins so");
    command.Does(chosen, [arguments](const CConsole& console) { return List(*arguments, console); });
}

} // namespace sqCli
