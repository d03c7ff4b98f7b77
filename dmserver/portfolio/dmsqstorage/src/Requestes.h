// The cursors that clients have open over symbols, data feeds and custom futures.
//
// A cursor holds its client's table and a transaction from Add to Delete; one that is forgotten lasts as long as
// the registry. Threads: any. One lock covers the whole of each operation, the database's work included, so that a
// slow one holds up the others. Errors: what fails is reported and never raised. A number tells what came of it:
// rows that did not come are 0.
#pragma once

#include "DatabaseRequest.h"
#include "dmserver/dmSingleton/interface/CriticalSection.h"

#include <map>
#include <memory>

namespace sqStorage {

class CRequestes : private dm::CCriticalSection {
public:
    explicit CRequestes(IDispatch* database);
    // Cursors that are still open are reported, and end.
    ~CRequestes() override;

    // A new cursor as the request's Type and the rest at Mode ask for; nothing is fetched yet. The id is one above
    // that of the Add before, also where no cursor came of it.
    LONG Add(LONG Mode, IdmRequest* Request, IdmTable* Table);
    // An unknown id is reported.
    void Delete(LONG Id);
    // Appends at most Count rows, 0 for all that remain, to the table given to Add; returns how many.
    LONG Fetch(LONG Id, LONG Count);

private:
    std::map<LONG, std::unique_ptr<CDatabaseRequest>> m_Requests;
    LONG m_LastId = 0;
    CComPtr<IDispatch> m_Database;
};

} // namespace sqStorage
