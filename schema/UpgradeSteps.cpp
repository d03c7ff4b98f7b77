#include "schema/interface/Schema.h"

// How the definition changes:
//
// - The .sql files always describe the newest version; a fresh database never goes through the steps.
// - A change raises CurrentVersion, and adds a file upgrade_<from>_to_<to>.sql that does the same to a database
//   of the version before. It is embedded like the other files and gets its entry in UpgradeSteps() below.
// - A step's last statement is  UPDATE SCHEMA_INFO SET SCHEMA_VERSION=<to>.  All of the step runs in one
//   transaction, so that it happens whole or not at all. What fills a table that it has just created is therefore
//   two steps.
// - A step that has been delivered is never changed. A mistake in it is mended by the next one.
// - Columns are appended only, and never to a table that takes positional inserts, unless the column is computed.
namespace sqSchema {

std::span<const tagUpgradeStep> UpgradeSteps() { return {}; }

} // namespace sqSchema
