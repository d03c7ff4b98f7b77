#include "schema/interface/Schema.h"

#include "StatementSplitter.h"
#include "indexes.sql.h"
#include "procedures.sql.h"
#include "tables.sql.h"
#include "version.sql.h"

#include <vector>

namespace sqSchema {

std::span<const std::string_view> CreateStatements() {
    static const auto statements = [] {
        std::vector<std::string_view> all;
        for (const auto text : {TablesSql, IndexesSql, ProceduresSql, VersionSql}) {
            const auto part = SplitStatements(text);
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }();
    return statements;
}

} // namespace sqSchema
