#include "DatabaseRequest.h"

#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmFirebird/interface/LastErrorText.h"
#include "platform/com/activation.h"
#include "platform/com/com_error.h"

#include <string>

namespace sqStorage {

namespace {

using platform::CBstr;

// The failing call, with what the database says of it.
std::wstring Reason(IdmDatabase& database, const wchar_t* call) {
    const std::wstring reason = IDM_dmFirebird::LastErrorText(database);
    return reason.empty() ? call : call + (L": " + reason);
}

void CheckQuery(const BugSlayerUtil::CScope& scope, HRESULT status, IdmDatabase* database, const wchar_t* call) {
    if (status != S_OK)
        scope.Check(status, Reason(*database, call));
}

template <class I>
CComPtr<I> NewCarrier(REFCLSID clsid) {
    CComPtr<I> carrier;
    platform::ThrowIfFailed(platform::CreateInstance(clsid, carrier));
    return carrier;
}

} // namespace

void RaiseUnlessOk(HRESULT status, IdmDatabase& database, const wchar_t* call) {
    if (status != S_OK) [[unlikely]]
        platform::ThrowStatus(status, Reason(database, call));
}

CComPtr<IdmTable> NewTable() { return NewCarrier<IdmTable>(IDM_dmudfcom::CLSID_dmTable); }

CComPtr<IdmRequest> NewRequest() { return NewCarrier<IdmRequest>(IDM_dmudfcom::CLSID_dmRequest); }

LONG FirstFieldAsLong(IdmTable& table) {
    CComPtr<IdmField> field;
    LONG value = 0;
    if (SUCCEEDED(table.get_Field(0, field.Put())) && field)
        field->get_AsLong(&value);
    return value;
}

CDatabaseRequest::CDatabaseRequest(IDispatch* database) {
    const BugSlayerUtil::CScope scope(this);
    if (!scope.Assert(database != nullptr, L"Database"))
        return;
    platform::ThrowIfFailed(database->QueryInterface(platform::UuidOf<IdmDatabase>, m_Database.PutVoid()));
    RaiseUnlessOk(m_Database->GetTransaction(m_Transaction.Put()), *m_Database, L"GetTransaction");
    if (!m_Transaction)
        scope.Throw(L"m_Transaction");
    RaiseUnlessOk(m_Transaction->GetQuery(m_Query.Put()), *m_Database, L"GetQuery");
    if (!m_Query)
        scope.Throw(L"m_Query");
}

CDatabaseRequest::~CDatabaseRequest() {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] { Close(); });
    scope.Guard([&] {
        if (m_Transaction)
            CheckQuery(scope, m_Transaction->Finish(), m_Database.Get(), L"Finish");
    });
}

void CDatabaseRequest::Open(const wchar_t* sql, IDispatch* parameters, IDispatch* result) {
    const BugSlayerUtil::CScope scope(this);
    scope.Rethrowing(
        [&] {
            Close();
            if (!m_Query)
                return;
            CheckQuery(scope, m_Query->Open(CBstr(sql).Get(), parameters, result), m_Database.Get(), L"Open");
            m_Opened = true;
        },
        L"Open");
}

LONG CDatabaseRequest::Fetch(LONG count) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Rethrowing(
        [&]() -> LONG {
            if (!m_Query || !scope.Assert(m_Opened, L"m_Opened"))
                return 0;
            CheckQuery(scope, m_Query->Fetch(&count), m_Database.Get(), L"Fetch");
            return count;
        },
        L"Fetch");
}

void CDatabaseRequest::Close() {
    if (!m_Opened)
        return;
    const BugSlayerUtil::CScope scope(this);
    scope.Rethrowing(
        [&] {
            m_Opened = false;
            CheckQuery(scope, m_Query->Close(), m_Database.Get(), L"Close");
        },
        L"Close");
}

COutputRequest::COutputRequest(IDispatch* database) : CDatabaseRequest(database) {
    const BugSlayerUtil::CScope scope(this);
    scope.Check(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, m_Table), L"IdmTable");
}

LONG COutputRequest::Select(const wchar_t* sql) {
    Open(sql, nullptr, m_Table.Get());
    Fetch(0);
    return RecordCount();
}

LONG COutputRequest::RecordCount() const {
    LONG count = 0;
    if (m_Table)
        m_Table->get_RecordCount(&count);
    return count;
}

} // namespace sqStorage
