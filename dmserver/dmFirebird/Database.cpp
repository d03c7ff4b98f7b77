#include "Database.h"

#include "Connection.h"
#include "DatabaseTransaction.h"

#include "platform/com/bstr.h"

namespace IDM_dmFirebird {

using platform::ViewOf;

namespace {

constexpr const wchar_t* NotOpen = L"The database is not open: open it first.";

} // namespace

HRESULT CdmDatabase::Open(BSTR Path, BSTR UserName, BSTR Password) {
    return ConnectBy(&CConnection::Open, Path, UserName, Password);
}

HRESULT CdmDatabase::Create(BSTR Path, BSTR UserName, BSTR Password) {
    return ConnectBy(&CConnection::Create, Path, UserName, Password);
}

HRESULT CdmDatabase::ConnectBy(Connect connect, BSTR path, BSTR userName, BSTR password) {
    return Guard(m_Errors, [&] {
        if (ViewOf(path).empty())
            throw CDatabaseError(E_INVALIDARG,
                                 L"No database path is given: name a file, or a server and its file as "
                                 L"host:path.");
        const std::lock_guard lock(m_Mutex);
        if (m_Connection)
            throw CDatabaseError(E_UNEXPECTED, L"The database is open already: close it before opening another.");
        m_Connection = connect(ViewOf(path), ViewOf(userName), ViewOf(password));
    });
}

HRESULT CdmDatabase::Close() {
    return Guard(m_Errors, [this] {
        if (const auto connection = TakeConnection())
            connection->Close();
    });
}

HRESULT CdmDatabase::Drop() {
    return Guard(m_Errors, [this] {
        const auto connection = TakeConnection();
        if (!connection)
            throw CDatabaseError(E_UNEXPECTED, NotOpen);
        connection->Drop();
    });
}

std::shared_ptr<CConnection> CdmDatabase::TakeConnection() {
    const std::lock_guard lock(m_Mutex);
    return std::exchange(m_Connection, nullptr);
}

std::shared_ptr<CConnection> CdmDatabase::Connection() {
    const std::lock_guard lock(m_Mutex);
    if (!m_Connection)
        throw CDatabaseError(E_UNEXPECTED, NotOpen);
    return m_Connection;
}

HRESULT CdmDatabase::GetTransaction(IdmDatabaseTransaction** Transaction) {
    if (!Transaction)
        return E_POINTER;
    *Transaction = nullptr;
    return Guard(m_Errors, [&] {
        *Transaction =
            platform::MakeObject<CdmDatabaseTransaction>(this, Connection()->StartTransaction()).Detach();
    });
}

HRESULT CdmDatabase::get_LastError(BSTR* Value) {
    if (!Value)
        return E_POINTER;
    *Value = nullptr;
    return Guard(m_Errors, [&] { *Value = platform::CBstr(std::wstring_view(m_Errors.Recall())).Detach(); });
}

HRESULT CdmDatabase::get_Version(BSTR* Value) {
    if (!Value)
        return E_POINTER;
    *Value = nullptr;
    return Guard(m_Errors, [&] { *Value = platform::CBstr(std::wstring_view(Connection()->Version())).Detach(); });
}

} // namespace IDM_dmFirebird
