// Statements that a plain select and a cursor build in the same way, from what a request says.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace sqStorage {

// The feeds that a request asks for: one by key, which must be active, or all that are not deleted. Reads Datafeed
// at Mode 0 and ActiveOnly. `Sql` is cut at `SqlSize` characters. With a null request or buffer nothing happens.
void GetDataFeedSql(IDM_dmudfcom::IdmRequest* Request, wchar_t* Sql, int SqlSize);

} // namespace sqStorage
