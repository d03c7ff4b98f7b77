#include "DatabaseReport.h"

#include "schema/interface/Schema.h"

namespace sqCli {

tagDatabaseReport ReportDatabase(CDatabaseReader& reader) {
    return {reader.Versions(), static_cast<std::int32_t>(reader.Number(sqSchema::SelectVersionStatement))};
}

} // namespace sqCli
