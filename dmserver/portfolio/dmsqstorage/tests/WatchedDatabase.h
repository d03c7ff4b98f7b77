// A database that passes everything on to a real one and remembers what it was asked: which transactions were begun
// and how they ended, and which statements ran in them.
#pragma once

#include "dmserver/dmFirebird/interface/Database.h"
#include "platform/com/bstr.h"
#include "platform/com/com_ptr.h"
#include "platform/com/object.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

// What was asked, in order: "transaction", "begin 1", a statement, "finish"; "gone" for a transaction that nobody
// holds any more.
struct tagWatch {
    std::vector<std::wstring> Calls;
    // Runs before a statement is opened.
    std::function<void(const std::wstring&)> BeforeStatement = [](const std::wstring&) {};
    // Run before rows are fetched, and before a statement is closed.
    std::function<void()> BeforeFetch = [] {};
    std::function<void()> BeforeClose = [] {};
};

class CWatchedQuery final : public platform::CObject<CWatchedQuery, platform::ECounter::Interlocked,
                                                     platform::CDispatchImpl<IDM_dmFirebird::IdmDatabaseQuery>> {
public:
    CWatchedQuery(platform::CComPtr<IDM_dmFirebird::IdmDatabaseQuery> query, tagWatch& watch)
        : m_Query(std::move(query)), m_Watch(watch) {}

    HRESULT Open(BSTR Statement, IDispatch* Parameters, IDispatch* Result) override {
        const std::wstring text(platform::ViewOf(Statement));
        m_Watch.BeforeStatement(text);
        m_Watch.Calls.push_back(text);
        return m_Query->Open(Statement, Parameters, Result);
    }
    HRESULT Close() override {
        m_Watch.BeforeClose();
        return m_Query->Close();
    }
    HRESULT Fetch(LONG* Count) override {
        m_Watch.BeforeFetch();
        return m_Query->Fetch(Count);
    }

private:
    platform::CComPtr<IDM_dmFirebird::IdmDatabaseQuery> m_Query;
    tagWatch& m_Watch;
};

class CWatchedTransaction final
    : public platform::CObject<CWatchedTransaction, platform::ECounter::Interlocked,
                               platform::CDispatchImpl<IDM_dmFirebird::IdmDatabaseTransaction>> {
public:
    CWatchedTransaction(platform::CComPtr<IDM_dmFirebird::IdmDatabaseTransaction> transaction, tagWatch& watch)
        : m_Transaction(std::move(transaction)), m_Watch(watch) {}
    ~CWatchedTransaction() { m_Watch.Calls.emplace_back(L"gone"); }

    HRESULT Begin(LONG Isolation) override {
        m_Watch.Calls.push_back(L"begin " + std::to_wstring(Isolation));
        return m_Transaction->Begin(Isolation);
    }
    HRESULT Finish() override {
        m_Watch.Calls.emplace_back(L"finish");
        return m_Transaction->Finish();
    }
    HRESULT Rollback() override { return m_Transaction->Rollback(); }
    HRESULT GetQuery(IDM_dmFirebird::IdmDatabaseQuery** Query) override {
        platform::CComPtr<IDM_dmFirebird::IdmDatabaseQuery> query;
        const HRESULT status = m_Transaction->GetQuery(query.Put());
        if (status == S_OK)
            *Query = platform::MakeObject<CWatchedQuery>(query, m_Watch).Detach();
        return status;
    }

private:
    platform::CComPtr<IDM_dmFirebird::IdmDatabaseTransaction> m_Transaction;
    tagWatch& m_Watch;
};

class CWatchedDatabase final : public platform::CObject<CWatchedDatabase, platform::ECounter::Interlocked,
                                                        platform::CDispatchImpl<IDM_dmFirebird::IdmDatabase>> {
public:
    // The watch outlives the database and all that comes of it.
    CWatchedDatabase(platform::CComPtr<IDM_dmFirebird::IdmDatabase> database, tagWatch& watch)
        : m_Database(std::move(database)), m_Watch(watch) {}

    HRESULT Open(BSTR Path, BSTR UserName, BSTR Password) override {
        return m_Database->Open(Path, UserName, Password);
    }
    HRESULT Close() override { return m_Database->Close(); }
    HRESULT GetTransaction(IDM_dmFirebird::IdmDatabaseTransaction** Transaction) override {
        platform::CComPtr<IDM_dmFirebird::IdmDatabaseTransaction> transaction;
        const HRESULT status = m_Database->GetTransaction(transaction.Put());
        if (status != S_OK)
            return status;
        m_Watch.Calls.emplace_back(L"transaction");
        *Transaction = platform::MakeObject<CWatchedTransaction>(transaction, m_Watch).Detach();
        return S_OK;
    }
    HRESULT get_LastError(BSTR* Value) override { return m_Database->get_LastError(Value); }
    HRESULT Create(BSTR Path, BSTR UserName, BSTR Password) override {
        return m_Database->Create(Path, UserName, Password);
    }
    HRESULT get_Version(BSTR* Value) override { return m_Database->get_Version(Value); }
    HRESULT Drop() override { return m_Database->Drop(); }

private:
    platform::CComPtr<IDM_dmFirebird::IdmDatabase> m_Database;
    tagWatch& m_Watch;
};

} // namespace tests
