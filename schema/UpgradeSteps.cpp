#include "schema/interface/Schema.h"

#include "StatementSplitter.h"
#include "upgrade_1_to_2.sql.h"

#include <array>
#include <vector>

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

std::span<const tagUpgradeStep> UpgradeSteps() {
    static const std::vector<std::string_view> upgrade1To2 = SplitStatements(Upgrade1To2Sql);
    static const std::array steps{tagUpgradeStep{1, 2, upgrade1To2}};
    return steps;
}

} // namespace sqSchema
