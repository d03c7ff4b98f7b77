// The symbols of the store as the rows of a file: sorted by exchange, name, category and feed, each as an import
// would read it. The symbols of one exchange are held in memory at a time, since sorting needs them all.
#pragma once

#include "Dataset.h"

namespace sqCli {

// A symbol that an import would refuse is left out with a warning, and so is one whose exchange, feed or template
// is left out; symbols of one exchange or feed have a warning together. Raises CStoreRefusal.
void ExportSymbols(const tagExportRun& run, const TakeRows& take);

} // namespace sqCli
