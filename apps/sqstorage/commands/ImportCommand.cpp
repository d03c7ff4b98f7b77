// import: CSV files into the store.
#include "ChangeLines.h"
#include "Command.h"
#include "apps/sqstorage/datasets/Dataset.h"
#include "apps/sqstorage/store/ChangeKinds.h"
#include "apps/sqstorage/store/ChangeWatch.h"
#include "platform/file.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
PATH is a CSV file, or a directory of which the files that have a known name are
taken; others in it are left alone. The order of the paths does not matter.

  holidays.csv       HOLIDAY_NAME
  holiday_dates.csv  HOLIDAY_NAME, HOLIDAY_START_DATE,
                     HOLIDAY_END_DATE (optional), HOLIDAY_DESCRIPTION (optional)
  settings.csv       PRICE_SCALE, POINT_VALUE, DAILY_LIMIT, MIN_MOVEMENT

UTF-8, commas, quotes as in RFC 4180, a header, columns in any order, dates as
YYYY-MM-DD. A date names its calendar, which is in the store or in the same
import.

A file is taken whole or not at all: all its rows are tested before the first is
written, and each that is not good is named with file, line and reason. The
other files are still taken; the command then ends with status 4.

An import adds what the store lacks and removes nothing, so that it can be
repeated. A row that is there is unchanged. A date on which the calendar has
another description or end stays as it is and is counted as different; with
--update the day becomes as the file has it, other days staying. Calendars and
settings have nothing but what they are known by, so --update does nothing to
them.

Dates reach the store a whole calendar at a time. --batch asks for the same with
every table that the store takes in batches; among the tables above that is
holiday_dates alone, with the switch or without.

With --watch the changes that the store tells its hosts of are shown as they are
made, in the form of "sqstorage watch", and the summary behind them.

  sqstorage import data --dry-run      what would happen
  sqstorage import data                do it
  sqstorage import corrections/holiday_dates.csv --update
)";

struct tagImportArguments {
    std::vector<std::string> Paths;
    tagImportOptions Options;
    bool Batch = false;
    bool Watch = false;
};

struct tagSource {
    const IDataset* Dataset;
    std::filesystem::path Path;
};

bool IsCsv(const std::filesystem::path& path) { return path.extension() == ".csv"; }

void AddDirectory(const std::filesystem::path& directory, const CConsole& console,
                  std::vector<tagSource>& sources) {
    for (const std::filesystem::path& path : platform::ListDirectory(directory)) {
        const IDataset* dataset = IsCsv(path) ? FindDataset(path.stem().string()) : nullptr;
        if (dataset)
            sources.push_back({dataset, path});
        else if (!platform::IsDirectory(path))
            console.Note(
                fmt::format("{} is skipped: it is none of the files that can be imported.", path.string()));
    }
}

void AddPath(const std::string& text, const CConsole& console, std::vector<tagSource>& sources) {
    const std::filesystem::path path = platform::ToPath(platform::FromUtf8(text));
    if (!platform::Exists(path))
        throw CCommandError(EExitStatus::WrongUsage,
                            fmt::format("There is no file or directory {}: correct the path.", text));
    if (platform::IsDirectory(path)) {
        AddDirectory(path, console, sources);
        return;
    }
    const IDataset* dataset = IsCsv(path) ? FindDataset(path.stem().string()) : nullptr;
    if (!dataset)
        throw CCommandError(
            EExitStatus::WrongUsage,
            fmt::format("{} has none of the names that tell what a file holds: call it one of {} with "
                        "\".csv\" behind it.",
                        text, DatasetNames()));
    sources.push_back({dataset, path});
}

// Each behind those it refers to.
std::vector<tagSource> FindSources(const std::vector<std::string>& paths, const CConsole& console) {
    std::vector<tagSource> sources;
    for (const std::string& path : paths)
        AddPath(path, console, sources);
    if (sources.empty())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("There is nothing to import: the files are called {}, each with "
                                        "\".csv\" behind it.",
                                        DatasetNames()));
    const auto datasets = Datasets();
    std::stable_sort(sources.begin(), sources.end(), [&](const tagSource& left, const tagSource& right) {
        return std::find(datasets.begin(), datasets.end(), left.Dataset) <
               std::find(datasets.begin(), datasets.end(), right.Dataset);
    });
    return sources;
}

std::size_t CountLines(const std::vector<tagRowProblem>& problems) {
    std::set<std::size_t> lines;
    for (const tagRowProblem& problem : problems)
        lines.insert(problem.Line);
    return lines.size();
}

void TellProblems(const std::string& file, std::vector<tagRowProblem>& problems, const CConsole& console) {
    std::stable_sort(problems.begin(), problems.end(),
                     [](const tagRowProblem& left, const tagRowProblem& right) { return left.Line < right.Line; });
    for (const tagRowProblem& problem : problems)
        console.Error(fmt::format("{}:{}: {}{}", file, problem.Line, problem.Reason,
                                  problem.Reason.ends_with('.') ? "" : "."));
}

// Adds a row to the summary; true when all rows of the file were taken.
bool ImportFile(const tagSource& source, tagImportRun& run, tagRowSet& summary) {
    const std::string file = source.Path.string();
    std::vector<tagRowProblem> problems;
    const CTableFile table(source.Path, source.Dataset->Columns(), problems);
    tagImportCounts counts = source.Dataset->Import(run, {file, table, problems});
    counts.Refused = CountLines(problems);
    TellProblems(file, problems, run.Console);
    if (counts.Refused > 0 && counts.Added + counts.Updated == 0)
        run.Console.Warn(
            fmt::format("Nothing is taken from {}: correct the rows named above and import it again.", file));
    if (counts.Different > 0)
        run.Console.Warn(
            fmt::format("{} rows of {} differ from the store, which keeps its own: give --update to take "
                        "those of the file.",
                        counts.Different, file));
    summary.Rows.push_back(
        {file, static_cast<std::int64_t>(table.RowCount()), static_cast<std::int64_t>(counts.Added),
         static_cast<std::int64_t>(counts.Updated), static_cast<std::int64_t>(counts.Unchanged),
         static_cast<std::int64_t>(counts.Different), static_cast<std::int64_t>(counts.Refused)});
    return counts.Refused == 0;
}

EExitStatus Import(const tagImportArguments& arguments, const CConsole& console) {
    const std::vector<tagSource> sources = FindSources(arguments.Paths, console);
    CStore store;
    tagImportRun run{store, console, arguments.Options, {}};
    tagRowSet summary{{"FILE", "ROWS", "ADDED", "UPDATED", "UNCHANGED", "DIFFERENT", "REFUSED"}, {}};
    CChangeLines lines(console);
    std::optional<CChangeWatch> watch;
    if (arguments.Watch)
        watch.emplace(store, AllChanges, [&](ULONG change, LONG value) { lines.Tell(change, value); });
    bool good = true;
    for (const tagSource& source : sources) {
        good = ImportFile(source, run, summary) && good;
        // A call that failed halfway has changed something, too.
        if (watch)
            watch->Deliver();
    }
    lines.Close();
    if (arguments.Options.DryRun)
        console.Note("This was a dry run: the store is as it was.");
    console.Print(summary);
    return good ? EExitStatus::Done : EExitStatus::RowsRefused;
}

} // namespace

void AddImportCommand(CLI::App& program, Action& chosen) {
    const auto arguments = std::make_shared<tagImportArguments>();
    CLI::App* command = program.add_subcommand("import", "Bring CSV files into the store");
    command->footer(Manual);
    command->add_option("PATH", arguments->Paths, "CSV files, or directories of them")->required();
    command->add_flag("--dry-run", arguments->Options.DryRun, "Test everything, write nothing");
    command->add_flag("--batch", arguments->Batch, "Hand rows to the store in batches where it takes them so");
    command->add_flag("--update", arguments->Options.Update, "Change rows that differ to what the file says");
    command->add_flag("--watch", arguments->Watch, "Show the changes as they are made");
    command->callback([arguments, &chosen] {
        chosen = [arguments](const CConsole& console) { return Import(*arguments, console); };
    });
}

} // namespace sqCli
