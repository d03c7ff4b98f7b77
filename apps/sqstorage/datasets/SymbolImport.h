// Bringing a file of symbols into the store.
#pragma once

#include "Dataset.h"

namespace sqCli {

// What the symbols refer to is read once, and the store's symbols once for each exchange of the file; those that
// the file has are held in memory, beside the file.
tagImportCounts ImportSymbols(tagImportRun& run, const tagImportFile& file);

} // namespace sqCli
