// What only a connection of its own tells of the database, for a health report.
#pragma once

#include "DatabaseReader.h"

#include <cstdint>
#include <string>

namespace sqCli {

struct tagDatabaseReport {
    std::string Versions; // of engine and client
    std::int32_t SchemaVersion;
};

// Errors: as CDatabaseReader.
[[nodiscard]] tagDatabaseReport ReportDatabase(CDatabaseReader& reader);

} // namespace sqCli
