#include "StorageHost.h"

#include "dmserver/dmFirebird/interface/LastErrorText.h"
#include "platform/com/com_error.h"
#include "platform/environment.h"

#include <algorithm>

namespace tests {

namespace {

using IDM_dmFirebird::IdmDatabase;
using IDM_dmFirebird::IdmDatabaseQuery;
using IDM_dmFirebird::IdmDatabaseTransaction;

template <class I>
CComPtr<I> New(REFCLSID clsid) {
    CComPtr<I> object;
    platform::ThrowIfFailed(platform::CreateInstance(clsid, object));
    return object;
}

void Require(HRESULT status, const CComPtr<IdmDatabase>& database) {
    if (status == S_OK)
        return;
    platform::ThrowStatus(status, IDM_dmFirebird::LastErrorText(*database));
}

} // namespace

CStorageHost::CStorageHost() {
    platform::SetEnvironment(L"SQSTORAGE_REGISTRY_DIR", Path(L"registry"));
    platform::SetEnvironment(L"SQSTORAGE_STATE_DIR", Path(L"state"));
    platform::SetEnvironment(L"XDG_DATA_HOME", Path(L"data"));
    platform::CreateDirectories(platform::ToPath(Path(L"state")), platform::EAccess::Private);
}

void CStorageHost::Install() {
    if (!platform::Exists(platform::ToPath(Connection().Path)))
        sqSetup::CreateStorage(Connection());
    Register(Connection());
}

void CStorageHost::Register(const sqSetup::tagConnection& connection) {
    sqSetup::RegisterConnection(Key(), connection);
}

sqSetup::tagConnection CStorageHost::Connection() const {
    return {Path(L"storage.fdb"), L"SYSDBA", L"masterkey", Path(L"Dictionary.csv")};
}

std::wstring CStorageHost::Path(std::wstring_view name) const {
    return platform::FromPath(m_Directory.Path() / platform::ToPath(name));
}

std::wstring CStorageHost::Key() { return sqSetup::ConnectionKey(L"Test Company", L"Storage Tests"); }

HRESULT CStorageHost::Create(CComPtr<IqxStorage>& storage) {
    return platform::CreateInstance(IDM_qxStorage::CLSID_qxStorage, storage);
}

CComPtr<IdmDatabase> CStorageHost::OpenDatabase() const {
    const auto database = New<IdmDatabase>(IDM_dmFirebird::CLSID_dmDatabase);
    const auto connection = Connection();
    Require(database->Open(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                           CBstr(connection.Password).Get()),
            database);
    return database;
}

std::vector<Row> CStorageHost::Sql(const std::wstring& statement) const {
    const auto database = OpenDatabase();
    CComPtr<IdmDatabaseTransaction> transaction;
    Require(database->GetTransaction(transaction.Put()), database);
    CComPtr<IdmDatabaseQuery> query;
    Require(transaction->GetQuery(query.Put()), database);
    const auto table = NewTable();
    Require(query->Open(CBstr(statement).Get(), nullptr, table.Get()), database);
    LONG count = 0;
    Require(query->Fetch(&count), database);
    query->Close();
    Require(transaction->Finish(), database);
    database->Close();
    return RowsOf(table);
}

bool CStorageHost::HasPrepared(const std::wstring& statement) const {
    const auto prepared = Sql(L"SELECT CAST(MON$SQL_TEXT AS VARCHAR(8000)) AS STATEMENT_TEXT FROM MON$STATEMENTS "
                              L"WHERE MON$ATTACHMENT_ID<>CURRENT_CONNECTION");
    return std::ranges::find(prepared, Row{statement}) != prepared.end();
}

CComPtr<IdmTable> NewTable() { return New<IdmTable>(IDM_dmudfcom::CLSID_dmTable); }

CComPtr<IdmRequest> NewRequest() { return New<IdmRequest>(IDM_dmudfcom::CLSID_dmRequest); }

LONG RecordCount(const CComPtr<IdmTable>& table) {
    LONG count = -1;
    table->get_RecordCount(&count);
    return count;
}

std::vector<Row> RowsOf(const CComPtr<IdmTable>& table) {
    LONG fields = 0;
    table->get_FieldCount(&fields);
    std::vector<Row> rows;
    LONG eof = 0;
    for (table->First(); table->get_Eof(&eof) == S_OK && !eof; table->Next()) {
        Row row;
        for (LONG i = 0; i < fields; ++i) {
            CComPtr<IdmField> field;
            CBstr text;
            table->get_Field(i, field.Put());
            field->get_AsString(text.Put());
            row.emplace_back(text.View());
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

CComPtr<IdmField> FieldOf(const CComPtr<IdmTable>& table, LONG id) {
    CComPtr<IdmField> field;
    table->get_FieldById(id, field.Put());
    return field;
}

} // namespace tests
