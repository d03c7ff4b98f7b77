// The database: one connection, transactions on it, statements in them.
//
//   IdmDatabase             Open, Close, and a new transaction
//   IdmDatabaseTransaction  finished by Finish, which commits
//   IdmDatabaseQuery        one statement at a time: Open, Fetch, Close
//
// Open takes "path" for a file of this machine, opened by the embedded engine, or "host:path" and "host/port:path"
// for a Firebird server. Text is wide here and UTF-8 in the database.
//
// A transaction starts its physical part at its first statement, in the mode that the statement needs: what reads
// runs read-only at read-committed and holds nothing back however long it lives; what writes runs read-write and
// waits up to ten seconds for a row that another one is changing. After a write the transaction's reads see it.
// Begin(isolationSnapshot), called before the first statement, asks for one view of the data for the whole
// transaction; if that has begun with a read, it only reads.
//
// IdmDatabaseQuery::Open runs the statement once for each record of the parameter table, whose fields fill the
// "?" in field order; a table without records runs nothing. What changes data is run to its end by Open and is
// stored whole or not at all; a SELECT runs as its rows are fetched. Rows go into the result table, bound by name
// (Carriers.h). A table without fields is given one for each result column. Fetch(0) delivers all that is left.
//
// Ownership: a query keeps its transaction alive, a transaction its database. A transaction let go without Finish
// is rolled back.
// Threads: any; one connection serves them all. A transaction and its queries are used by one thread at a time.
// Errors: S_OK or a failing status; the reason, with Firebird's code and SQLSTATE, is the text of LastError of the
// database, kept per thread.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_dmFirebird {

inline constexpr CLSID CLSID_dmDatabase = platform::MakeGuid("bb980499-cf20-4f40-9d41-3491a495c5f2");

// What a transaction sees of other transactions' commits.
enum tagISOLATION : LONG {
    isolationStatement = 0, // each statement sees all that is committed when it runs
    isolationSnapshot = 1,  // all statements see the data as it was at the first one
};

struct IdmDatabaseQuery : IDispatch {
    virtual HRESULT Open(BSTR Statement, IDispatch* Parameters, IDispatch* Result) = 0;
    virtual HRESULT Close() = 0;
    // In: the rows wanted, 0 for all that remain. Out: the rows delivered.
    virtual HRESULT Fetch(LONG* Count) = 0;

protected:
    ~IdmDatabaseQuery() = default;
};

struct IdmDatabaseTransaction : IDispatch {
    virtual HRESULT Begin(LONG Isolation) = 0;
    virtual HRESULT Finish() = 0;
    virtual HRESULT Rollback() = 0;
    virtual HRESULT GetQuery(IdmDatabaseQuery** Query) = 0;

protected:
    ~IdmDatabaseTransaction() = default;
};

struct IdmDatabase : IDispatch {
    virtual HRESULT Open(BSTR Path, BSTR UserName, BSTR Password) = 0;
    virtual HRESULT Close() = 0;
    virtual HRESULT GetTransaction(IdmDatabaseTransaction** Transaction) = 0;
    // What the last failing call on this thread, on this database or anything made from it, failed of.
    virtual HRESULT get_LastError(BSTR* Value) = 0;
    // A new, empty database file with the page size, character set and write mode that this system wants.
    // Refuses a file that exists. The database is open afterwards.
    virtual HRESULT Create(BSTR Path, BSTR UserName, BSTR Password) = 0;
    // Name and version of engine and client, for a health report.
    virtual HRESULT get_Version(BSTR* Value) = 0;
    // Ends as Close does and removes the database. Refused while another connection has it open.
    virtual HRESULT Drop() = 0;

protected:
    ~IdmDatabase() = default;
};

} // namespace IDM_dmFirebird

namespace platform {

template <>
struct InterfaceTraits<IDM_dmFirebird::IdmDatabase> {
    static constexpr GUID Uuid = MakeGuid("25a665b6-5771-490b-871d-ca79612c3ce2");
    using Base = IDispatch;
};
template <>
struct InterfaceTraits<IDM_dmFirebird::IdmDatabaseTransaction> {
    static constexpr GUID Uuid = MakeGuid("5e0f7a36-9d8b-4c42-8f21-6a3b7e90c101");
    using Base = IDispatch;
};
template <>
struct InterfaceTraits<IDM_dmFirebird::IdmDatabaseQuery> {
    static constexpr GUID Uuid = MakeGuid("5e0f7a36-9d8b-4c42-8f21-6a3b7e90c102");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmFirebird::IdmDatabase> {
    using IdmDatabase = IDM_dmFirebird::IdmDatabase;
    static constexpr std::array Methods{
        Method<&IdmDatabase::Open>(1, L"Open", L"Path", L"UserName", L"Password"),
        Method<&IdmDatabase::Close>(2, L"Close"),
        Method<&IdmDatabase::GetTransaction>(3, L"GetTransaction", L"Transaction"),
        PropertyGet<&IdmDatabase::get_LastError>(4, L"LastError", L"Value"),
        Method<&IdmDatabase::Create>(5, L"Create", L"Path", L"UserName", L"Password"),
        PropertyGet<&IdmDatabase::get_Version>(6, L"Version", L"Value"),
        Method<&IdmDatabase::Drop>(7, L"Drop"),
    };
};

template <>
struct DispatchTable<IDM_dmFirebird::IdmDatabaseTransaction> {
    using IdmDatabaseTransaction = IDM_dmFirebird::IdmDatabaseTransaction;
    static constexpr std::array Methods{
        Method<&IdmDatabaseTransaction::Begin>(1, L"Begin", L"Isolation"),
        Method<&IdmDatabaseTransaction::Finish>(2, L"Finish"),
        Method<&IdmDatabaseTransaction::Rollback>(3, L"Rollback"),
        Method<&IdmDatabaseTransaction::GetQuery>(4, L"GetQuery", L"Query"),
    };
};

template <>
struct DispatchTable<IDM_dmFirebird::IdmDatabaseQuery> {
    using IdmDatabaseQuery = IDM_dmFirebird::IdmDatabaseQuery;
    static constexpr std::array Methods{
        Method<&IdmDatabaseQuery::Open>(1, L"Open", L"Statement", L"Parameters", L"Result"),
        Method<&IdmDatabaseQuery::Close>(2, L"Close"),
        Method<&IdmDatabaseQuery::Fetch>(3, L"Fetch", L"Count"),
    };
};

} // namespace platform
