// list: rows of the store.
#include "Command.h"
#include "apps/sqstorage/datasets/Dataset.h"
#include "apps/sqstorage/rows/Numbers.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
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

--calendar, --from and --to are for holiday_dates. A date that lasts several days
is listed when one of its days is within. --session is for session_details. When
there is no row, the status is 1.

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

tagListFilter FilterOf(const tagListArguments& arguments) {
    tagListFilter filter{arguments.Calendar, arguments.Session, DayOf(arguments.From, "--from"),
                         DayOf(arguments.To, "--to")};
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
    const tagRowSet rows = dataset->List(store, filter);
    if (rows.Rows.empty())
        console.Note(given.empty() ? "The store holds none yet: \"sqstorage import\" brings them in."
                                   : "There is no such row.");
    if (!rows.Rows.empty() || console.Format() != EFormat::Table)
        console.Print(rows);
    return rows.Rows.empty() ? EExitStatus::Refused : EExitStatus::Done;
}

} // namespace

void AddListCommand(CLI::App& program, Action& chosen) {
    const auto arguments = std::make_shared<tagListArguments>();
    CLI::App* command = program.add_subcommand("list", "Show rows of the store");
    command->footer(Manual);
    command->add_option("WHAT", arguments->What, DatasetNames())->required();
    command->add_option("--calendar", arguments->Calendar, "Only dates of this calendar")->type_name("NAME");
    command->add_option("--session", arguments->Session, "Only details of this session")->type_name("NAME");
    command->add_option("--from", arguments->From, "Only dates on or after this day")->type_name("DATE");
    command->add_option("--to", arguments->To, "Only dates on or before this day")->type_name("DATE");
    command->callback([arguments, &chosen] {
        chosen = [arguments](const CConsole& console) { return List(*arguments, console); };
    });
}

} // namespace sqCli
