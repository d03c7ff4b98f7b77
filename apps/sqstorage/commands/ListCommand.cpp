// list: rows of the store.
#include "Command.h"
#include "apps/sqstorage/datasets/Dataset.h"
#include "apps/sqstorage/rows/Numbers.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>
#include <string>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
  sqstorage list holidays
  sqstorage list holiday_dates --calendar NYSE --from 2027-01-01 --to 2027-12-31
  sqstorage --format json list settings

--calendar, --from and --to are for holiday_dates. A date that lasts several days
is listed when one of its days is within. When there is no row, the status is 1.
)";

struct tagListArguments {
    std::string What;
    std::optional<std::string> Calendar;
    std::string From;
    std::string To;
};

std::optional<tagDay> DayOf(const std::string& text, const char* option) {
    if (text.empty())
        return std::nullopt;
    std::string reason;
    const auto day = ParseDay(text, reason);
    if (!day)
        throw CCommandError(EExitStatus::WrongUsage, fmt::format("{}: {}.", option, reason));
    return day;
}

tagListFilter FilterOf(const tagListArguments& arguments) {
    tagListFilter filter{arguments.Calendar, DayOf(arguments.From, "--from"), DayOf(arguments.To, "--to")};
    if (filter.From && filter.To && *filter.To < *filter.From)
        throw CCommandError(EExitStatus::WrongUsage, fmt::format("--to {} is before --from {}: exchange them.",
                                                                 arguments.To, arguments.From));
    return filter;
}

EExitStatus List(const tagListArguments& arguments, const CConsole& console) {
    const IDataset* dataset = FindDataset(arguments.What);
    if (!dataset)
        throw CCommandError(EExitStatus::WrongUsage,
                            fmt::format("\"{}\" cannot be listed: say one of {}.", arguments.What, DatasetNames()));
    const tagListFilter filter = FilterOf(arguments);
    if (!filter.IsEmpty() && !dataset->HasDates())
        throw CCommandError(
            EExitStatus::WrongUsage,
            fmt::format("--calendar, --from and --to do not go with {}: leave them out.", dataset->Name()));
    CStore store;
    const tagRowSet rows = dataset->List(store, filter);
    if (rows.Rows.empty())
        console.Note(filter.IsEmpty() ? "The store holds none yet: \"sqstorage import\" brings them in."
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
    command->add_option("--from", arguments->From, "Only dates on or after this day")->type_name("DATE");
    command->add_option("--to", arguments->To, "Only dates on or before this day")->type_name("DATE");
    command->callback([arguments, &chosen] {
        chosen = [arguments](const CConsole& console) { return List(*arguments, console); };
    });
}

} // namespace sqCli
