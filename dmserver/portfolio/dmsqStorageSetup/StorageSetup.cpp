#include "dmserver/portfolio/dmsqStorageSetup/interface/StorageSetup.h"

#include "dmserver/dmFirebird/interface/LastErrorText.h"
#include "dmserver/dmudfcom/interface/TableRows.h"
#include "platform/com/activation.h"
#include "platform/com/com_error.h"
#include "platform/file.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "schema/interface/Schema.h"
#include "unicomp/ProductLocation/interface/ProductPath.h"

#include <string_view>

namespace sqSetup {

namespace {

using IDM_dmFirebird::IdmDatabase;
using IDM_dmFirebird::IdmDatabaseQuery;
using IDM_dmFirebird::IdmDatabaseTransaction;
using IDM_dmudfcom::IdmTable;
using platform::CBstr;
using platform::CComPtr;

// Raises a failing status with the database's own reason.
void RaiseUnless(HRESULT status, const CComPtr<IdmDatabase>& database) {
    if (status == S_OK)
        return;
    platform::ThrowStatus(status, IDM_dmFirebird::LastErrorText(*database));
}

CComPtr<IdmDatabase> NewDatabase() {
    CComPtr<IdmDatabase> database;
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, database));
    return database;
}

void OpenDatabase(const CComPtr<IdmDatabase>& database, const tagConnection& connection) {
    RaiseUnless(database->Open(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                               CBstr(connection.Password).Get()),
                database);
}

// Several statements that commit together, or not at all.
class CWork {
public:
    explicit CWork(CComPtr<IdmDatabase> database) : m_Database(std::move(database)) {
        RaiseUnless(m_Database->GetTransaction(m_Transaction.Put()), m_Database);
        RaiseUnless(m_Transaction->GetQuery(m_Query.Put()), m_Database);
    }

    void Run(std::string_view statement, IdmTable* result = nullptr) {
        RaiseUnless(m_Query->Open(CBstr(platform::FromUtf8(statement)).Get(), nullptr, result), m_Database);
        LONG all = 0;
        RaiseUnless(m_Query->Fetch(&all), m_Database);
        RaiseUnless(m_Query->Close(), m_Database);
    }
    void Commit() { RaiseUnless(m_Transaction->Finish(), m_Database); }

private:
    CComPtr<IdmDatabase> m_Database;
    CComPtr<IdmDatabaseTransaction> m_Transaction;
    CComPtr<IdmDatabaseQuery> m_Query;
};

void CreateSchema(const CComPtr<IdmDatabase>& database) {
    for (const std::string_view statement : sqSchema::CreateStatements()) {
        CWork work(database);
        work.Run(statement);
        work.Commit();
    }
}

LONG SchemaVersion(const CComPtr<IdmDatabase>& database) {
    CComPtr<IdmTable> table;
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table));
    CWork work(database);
    work.Run(sqSchema::SelectVersionStatement, table.Get());
    work.Commit();
    const auto rows = table.As<IDM_dmudfcom::ITableRows>();
    if (rows->RowCount() == 0)
        platform::ThrowStatus(E_FAIL, L"the database holds no complete storage: remove it and create it again");
    return static_cast<LONG>(rows->Integer(0, 0));
}

} // namespace

void CreateStorage(const tagConnection& connection) {
    const auto database = NewDatabase();
    RaiseUnless(database->Create(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                                 CBstr(connection.Password).Get()),
                database);
    try {
        CreateSchema(database);
    } catch (const platform::CComError& error) {
        if (database->Drop() == S_OK)
            throw;
        platform::ThrowStatus(error.Code(), error.Text() +
                                                L" The unfinished database could not be removed: delete it "
                                                L"before the next attempt.");
    }
    database->Close();
}

LONG UpgradeStorage(const tagConnection& connection) {
    const auto database = NewDatabase();
    OpenDatabase(database, connection);
    const LONG version = SchemaVersion(database);
    if (version > sqSchema::CurrentVersion)
        platform::ThrowStatus(E_FAIL,
                              L"the database was made by a newer version of this program: install that one");
    LONG done = 0;
    for (const sqSchema::tagUpgradeStep& step : sqSchema::UpgradeSteps()) {
        if (step.From < version)
            continue;
        CWork work(database);
        for (const std::string_view statement : step.Statements)
            work.Run(statement);
        work.Commit();
        ++done;
    }
    database->Close();
    return done;
}

void RefreshStatistics(const tagConnection& connection) {
    const auto database = NewDatabase();
    OpenDatabase(database, connection);
    CWork work(database);
    work.Run(sqSchema::RefreshStatisticsStatement);
    work.Commit();
    database->Close();
}

std::wstring ConnectionKey(const std::wstring& company, const std::wstring& product) {
    CBstr path;
    platform::ThrowIfFailed(GetProductPath(path.Put(), company, product, ProductLocationRegistry, 0));
    if (path.IsNull())
        platform::ThrowStatus(E_INVALIDARG, L"company and product must not be empty");
    return path.Text() + std::wstring(L"\\Databases\\Portfolio");
}

bool IsRegistered(const std::wstring& key) {
    const auto entry = platform::CRegistryKey::Open(platform::ERegistryRoot::Machine, key);
    return entry && !entry->ReadText(L"Path").value_or(std::wstring()).empty();
}

void RegisterConnection(const std::wstring& key, const tagConnection& connection) {
    platform::CRegistryBatch batch(platform::ERegistryRoot::Machine);
    const auto entry = platform::CRegistryKey::Create(platform::ERegistryRoot::Machine, key);
    entry.WriteText(L"Path", connection.Path);
    entry.WriteText(L"Username", connection.UserName);
    entry.WriteText(L"Password", connection.Password);
    if (connection.DictionaryPath.empty())
        entry.DeleteValue(L"DictionaryPath");
    else
        entry.WriteText(L"DictionaryPath", connection.DictionaryPath);
    batch.Commit();
}

} // namespace sqSetup
