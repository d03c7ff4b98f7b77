// The unit of work on the database: one transaction and one query in it, for the length of a scope.
//
// The destructor closes the statement and commits; it also does so when an exception unwinds the request, because
// nothing here rolls back. A statement that the database refuses is reported to the diagnostics trail with the
// database's own words, and the code goes on.
//
// Threads: a request belongs to the thread that made it; requests of several threads share one database.
#pragma once

#include "dmserver/dmFirebird/interface/Database.h"
#include "dmserver/dmudfcom/interface/Carriers.h"
#include "platform/com/com_ptr.h"

namespace sqStorage {

using IDM_dmFirebird::IdmDatabase;
using IDM_dmFirebird::IdmDatabaseQuery;
using IDM_dmFirebird::IdmDatabaseTransaction;
using IDM_dmudfcom::IdmField;
using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using platform::CComPtr;

// A new, empty table without fields. Raises platform::CComError when the class cannot be created.
CComPtr<IdmTable> NewTable();
// A new request in which nothing is written.
CComPtr<IdmRequest> NewRequest();

// Raises a status other than S_OK, with the failing call and what the database says of it.
void RaiseUnlessOk(HRESULT status, IdmDatabase& database, const wchar_t* call);

// Walks the table from its first record to its last.
template <class Visit>
void ForEachRecord(IdmTable& table, Visit&& visit) {
    LONG eof = 0;
    for (table.First(); SUCCEEDED(table.get_Eof(&eof)) && eof == 0; table.Next())
        visit();
}

// Of the current record; 0 without one.
LONG FirstFieldAsLong(IdmTable& table);

class CDatabaseRequest {
public:
    // A null database is reported as "Database" and leaves an empty request, whose operations do nothing. Any other
    // failure raises.
    explicit CDatabaseRequest(IDispatch* database);
    ~CDatabaseRequest();
    CDatabaseRequest(const CDatabaseRequest&) = delete;
    CDatabaseRequest& operator=(const CDatabaseRequest&) = delete;

    // Closes what is open first.
    void Open(const wchar_t* sql, IDispatch* parameters, IDispatch* result);
    // At most `count` rows, 0 for all that remain; returns the delivered.
    LONG Fetch(LONG count);
    // Does nothing unless a statement is open.
    void Close();

protected:
    IdmDatabase* Database() const { return m_Database.Get(); }

private:
    CComPtr<IdmDatabase> m_Database;
    CComPtr<IdmDatabaseTransaction> m_Transaction;
    CComPtr<IdmDatabaseQuery> m_Query;
    bool m_Opened = false;
};

// A request with a table of its own for the rows, which each statement fills anew with its own columns.
class COutputRequest : public CDatabaseRequest {
public:
    // A table that cannot be made is reported, and no rows come then.
    explicit COutputRequest(IDispatch* database);

    // Opens and fetches all rows; returns their number.
    LONG Select(const wchar_t* sql);
    IdmTable* Table() const { return m_Table.Get(); }
    LONG RecordCount() const;

private:
    CComPtr<IdmTable> m_Table;
};

} // namespace sqStorage
