// The source of all keys: one sequence of the database, so that keys are unique across tables.
//
// The generator keeps one transaction for its whole life and opens its statement anew for each key.
// Threads: no order among callers may be relied on; two keys asked for at once are two different keys.
#pragma once

#include "DatabaseRequest.h"

#include <mutex>

namespace sqStorage {

class CIdGenerator : private COutputRequest {
public:
    explicit CIdGenerator(IDispatch* database);

    // A new key, or 0 when there is no table or the procedure gave no row.
    LONG Generate();

    using COutputRequest::RecordCount;

private:
    std::mutex m_Lock; // the shared table and statement, for the length of one key
    CComPtr<IdmField> m_Field;
};

} // namespace sqStorage
