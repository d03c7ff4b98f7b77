// export: the store's reference data as the CSV files that import takes.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/datasets/Dataset.h"
#include "apps/sqstorage/rows/Csv.h"
#include "platform/file.h"
#include "platform/text.h"

#include <memory>
#include <string>
#include <utility>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
Writes holidays.csv, holiday_dates.csv, settings.csv, feeds.csv, sessions.csv,
session_details.csv, exchanges.csv, symbols.csv and currencies.csv into DIR, which
is made when it is missing. Files of these names that are there are replaced, each
whole or not at all; other files are left alone.

The rows are sorted, texts by code point and numbers as numbers, and each is
written once, so that an export, imported into an empty store and exported
again, gives the same bytes. HOLIDAY_END_DATE is a column only when a date has
an end, VALUE5 to VALUE7 only when one of them is not 0. A row that could not be
imported again, such as a date of a calendar that is gone, is left out with a
warning, and so is what refers to a row that is left out. A session that has no
name, or one that another has, gets a name of its own, with a warning, too.

Symbols are sorted by exchange, name, category and feed. Those of one exchange are
in memory at a time, since all of them are needed for that; about 200 bytes each.
A symbol whose feed or exchange is gone is not found, and not written.

Of a feed the files do not tell whether it was the first of its CLSID, nor that
there are deleted ones.
)";

// The number of rows.
std::int64_t ExportFile(tagExportRun& run, const IDataset& dataset, const std::filesystem::path& file) {
    std::size_t count = 0;
    bool hasHeader = false;
    platform::WriteFileAtomically(file, [&](const platform::TakeBytes& take) {
        dataset.ExportTo(run, [&](const tagRowSet& batch) {
            take(std::exchange(hasHeader, true) ? WriteCsvRows(batch) : WriteCsv(batch));
            count += batch.Rows.size();
        });
    });
    return static_cast<std::int64_t>(count);
}

EExitStatus Export(const std::string& directory, const CConsole& console) {
    CStore store;
    tagExportRun run{store, console, {}};
    const std::filesystem::path folder = platform::ToPath(platform::FromUtf8(directory));
    tagRowSet summary{{"FILE", "ROWS"}, {}};
    platform::CreateDirectories(folder);
    for (const IDataset* dataset : Datasets()) {
        const std::filesystem::path file = folder / (std::string(dataset->Name()) + ".csv");
        summary.Rows.push_back({file.string(), ExportFile(run, *dataset, file)});
    }
    console.Print(summary);
    return EExitStatus::Done;
}

} // namespace

void AddExportCommand(CLI::App& program, Action& chosen) {
    const auto directory = std::make_shared<std::string>();
    CCommandOptions command(program, "export", "Write the store's reference data as CSV files", Manual);
    command.Argument("DIR", *directory, "Where the files go");
    command.Does(chosen, [directory](const CConsole& console) { return Export(*directory, console); });
}

} // namespace sqCli
