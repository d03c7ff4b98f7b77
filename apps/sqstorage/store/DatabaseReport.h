// What only a connection of its own tells of the database, for a health report.
#pragma once

#include "dmserver/portfolio/dmsqStorageSetup/interface/StorageSetup.h"

#include <cstdint>
#include <string>

namespace sqCli {

struct tagDatabaseReport {
    std::string Versions; // of engine and client
    std::int32_t SchemaVersion;
};

// Raises CCommandError (NotOpened) with the reason.
[[nodiscard]] tagDatabaseReport ReportDatabase(const sqSetup::tagConnection& connection);

} // namespace sqCli
