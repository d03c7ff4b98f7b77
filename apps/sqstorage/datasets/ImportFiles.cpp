#include "ImportFiles.h"

#include "apps/sqstorage/ExitStatus.h"
#include "platform/file.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace sqCli {

namespace {

bool IsCsv(const std::filesystem::path& path) { return path.extension() == ".csv"; }

void AddDirectory(const std::filesystem::path& directory, const CConsole& console,
                  std::vector<tagImportSource>& sources) {
    for (const std::filesystem::path& path : platform::ListDirectory(directory)) {
        const IDataset* dataset = IsCsv(path) ? FindDataset(path.stem().string()) : nullptr;
        if (dataset)
            sources.push_back({dataset, path});
        else if (!platform::IsDirectory(path))
            console.Note(
                fmt::format("{} is skipped: it is none of the files that can be imported.", path.string()));
    }
}

void AddPath(const std::string& text, const CConsole& console, std::vector<tagImportSource>& sources) {
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

void TellProblems(const std::string& file, std::vector<tagRowProblem>& problems, const CConsole& console) {
    std::stable_sort(problems.begin(), problems.end(),
                     [](const tagRowProblem& left, const tagRowProblem& right) { return left.Line < right.Line; });
    for (const tagRowProblem& problem : problems)
        console.Error(fmt::format("{}:{}: {}{}", file, problem.Line, problem.Reason,
                                  problem.Reason.ends_with('.') ? "" : "."));
}

} // namespace

std::vector<tagImportSource> FindSources(const std::vector<std::string>& paths, const CConsole& console) {
    std::vector<tagImportSource> sources;
    for (const std::string& path : paths)
        AddPath(path, console, sources);
    if (sources.empty())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("There is nothing to import: the files are called {}, each with "
                                        "\".csv\" behind it.",
                                        DatasetNames()));
    const auto datasets = Datasets();
    std::stable_sort(sources.begin(), sources.end(),
                     [&](const tagImportSource& left, const tagImportSource& right) {
                         return std::find(datasets.begin(), datasets.end(), left.Dataset) <
                                std::find(datasets.begin(), datasets.end(), right.Dataset);
                     });
    return sources;
}

tagImportCounts ImportFile(const tagImportSource& source, tagImportRun& run) {
    const std::string file = source.Path.string();
    std::vector<tagRowProblem> problems;
    const CTableFile table(source.Path, source.Dataset->Columns(), problems);
    tagImportCounts counts;
    bool isRead = true;
    try {
        counts = source.Dataset->Import(run, {file, table, problems});
    } catch (const CStoreRefusal& refusal) {
        // What a file is compared with is read before the first row is written; other files may be luckier.
        isRead = false;
        problems.push_back({1, fmt::format("the store could not be read. {}", refusal.what()), {}, true});
    }
    counts.Rows = table.RowCount();
    counts.Refused = CountRefusedRows(problems, counts.Rows);
    counts.Problems = problems.size();
    TellProblems(file, problems, run.Console);
    if (isRead && !problems.empty() && counts.Written() == 0)
        run.Console.Warn(
            fmt::format("Nothing is taken from {}: correct the rows named above and import it again.", file));
    if (counts.Different > 0)
        run.Console.Warn(
            fmt::format("{} rows of {} differ from the store, which keeps its own: give --update to take "
                        "those of the file.",
                        counts.Different, file));
    return counts;
}

tagRowSet ImportSummary() {
    return {{"FILE", "ROWS", "ADDED", "UPDATED", "UNCHANGED", "DIFFERENT", "REFUSED"}, {}};
}

void AddToSummary(tagRowSet& summary, const tagImportSource& source, const tagImportCounts& counts) {
    std::vector<Cell>& row = summary.Rows.emplace_back();
    row.emplace_back(source.Path.string());
    for (const std::size_t count :
         {counts.Rows, counts.Added, counts.Updated, counts.Unchanged, counts.Different, counts.Refused})
        row.emplace_back(static_cast<std::int64_t>(count));
}

} // namespace sqCli
