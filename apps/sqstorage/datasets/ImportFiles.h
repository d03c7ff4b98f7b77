// The files of an import: which dataset each holds, in which order they are taken, and what became of their rows.
#pragma once

#include "Dataset.h"

#include <filesystem>
#include <string>
#include <vector>

namespace sqCli {

struct tagImportSource {
    const IDataset* Dataset;
    std::filesystem::path Path;
};

// The files that the paths name, files and directories of them; each behind those it refers to. A note tells of
// each file in a directory that is none. Raises CCommandError.
[[nodiscard]] std::vector<tagImportSource> FindSources(const std::vector<std::string>& paths,
                                                       const CConsole& console);

// Takes the file whole or not at all, and tells of each row that is not good. Raises platform::CFileError.
[[nodiscard]] tagImportCounts ImportFile(const tagImportSource& source, tagImportRun& run);

// One row for each file.
[[nodiscard]] tagRowSet ImportSummary();
void AddToSummary(tagRowSet& summary, const tagImportSource& source, const tagImportCounts& counts);

} // namespace sqCli
