#include "sqStorage.h"

#include "DataBaseParams.h"
#include "Requestes.h"
#include "StatementText.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmFirebird/interface/LastErrorText.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"
#include "platform/com/activation.h"
#include "platform/com/com_error.h"
#include "platform/text.h"
#include "schema/interface/Schema.h"
#include "unicomp/LocalRPC/interface/TaskFactory.h"

namespace sqStorage {

namespace {

// Read once in a process and good for every storage after the first. An attempt that raises is made again.
const CDataBaseParams& ProcessDatabaseParams() {
    static const CDataBaseParams parameters = [] {
        CDataBaseParams made;
        made.MakeDatabaseParams();
        return made;
    }();
    return parameters;
}

} // namespace

CStorage::CStorage()
    : m_MonthCodes{{L'F', 1},  {L'G', 2},   {L'H', 4},   {L'J', 8},   {L'K', 16},   {L'M', 32},
                   {L'N', 64}, {L'Q', 128}, {L'U', 256}, {L'V', 512}, {L'X', 1024}, {L'Z', 2048}} {
    const BugSlayerUtil::CScope scope(this);
}

CStorage::~CStorage() {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        m_NotifyObject.Stop(true, true);
        m_Requestes.reset();
        m_IdGenerator.reset();
        if (m_Database)
            m_Database->Close();
        m_Database.Reset();
    });
}

// Started a second time: the window that is left belongs to the thread that creates the storage, whoever built it.
void CStorage::FinalConstruct() { m_NotifyObject.Start(); }

void CStorage::FinalRelease() { const BugSlayerUtil::CScope scope(this); }

void CStorage::init() {
    const BugSlayerUtil::CScope scope(this);
    if (m_Initialized.load() == 0)
        LocalRPC::CallSync(
            m_InitObject, [this] { init_impl(); }, platform::Infinite);
}

void CStorage::init_impl() {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (m_Initialized.load() != 0)
            return;
        const CDataBaseParams& parameters = ProcessDatabaseParams();
        // What was opened stays, when only a later step failed: clients may be at work on it.
        if (parameters.IsValid() && m_DatabaseOpened == 0 && !OpenDatabase(parameters))
            return;
        if (m_DatabaseOpened > 0)
            CreateHelpers();
        scope.Check(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, m_SymbolTable), L"m_SymbolTable");
        m_DictionaryPath = parameters.DictionaryPath();
        LoadExchangeTimeZones();
        scope.Trace(L"init ok");
        m_Initialized.exchange(1);
    });
}

bool CStorage::OpenDatabase(const CDataBaseParams& parameters) {
    const BugSlayerUtil::CScope scope(this);
    // A start that failed before leaves its database behind.
    scope.Assert(!m_Database, L"p == 0");
    scope.Check(platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, m_Database), L"p == 0");
    if (!scope.Assert(static_cast<bool>(m_Database), L"m_Database"))
        return true;
    const HRESULT status = m_Database->Open(platform::CBstr(parameters.DatabasePath()).Get(),
                                            platform::CBstr(parameters.UserName()).Get(),
                                            platform::CBstr(parameters.Password()).Get());
    if (status != S_OK) {
        scope.Check(status, L"Open: " + IDM_dmFirebird::LastErrorText(*m_Database));
        return false;
    }
    CheckSchema();
    m_DatabaseOpened = 1;
    return true;
}

// Those that are not there yet. The database is open also without them.
void CStorage::CreateHelpers() {
    if (!m_IdGenerator)
        m_IdGenerator = std::make_unique<CIdGenerator>(m_Database.Get());
    if (!m_Requestes)
        m_Requestes = std::make_unique<CRequestes>(m_Database.Get());
}

void CStorage::CheckSchema() {
    COutputRequest request(m_Database.Get());
    const LONG rows = request.Select(platform::FromUtf8(sqSchema::SelectVersionStatement).c_str());
    if (rows < 1)
        platform::ThrowStatus(E_FAIL,
                              L"the database holds no complete storage: create one with \"sqstorage create\", "
                              L"or correct the path in the registry");
    request.Table()->First();
    const LONG version = GetField<LONG>(CComPtr<IdmTable>(request.Table()), IDM_dmudfcom::fieldSchemaVersion);
    if (version < sqSchema::CurrentVersion)
        platform::ThrowStatus(E_FAIL,
                              FormatText(L"the database has schema version %d, older than version %d of this "
                                         L"program: bring it up to date with \"sqstorage upgrade\"",
                                         version, sqSchema::CurrentVersion));
    if (version > sqSchema::CurrentVersion)
        platform::ThrowStatus(E_FAIL,
                              FormatText(L"the database has schema version %d, newer than version %d of this "
                                         L"program: install a newer version of the program",
                                         version, sqSchema::CurrentVersion));
}

void CStorage::LoadExchangeTimeZones() {
    const CComPtr<IdmTable> table = NewTable();
    Execute(L"SELECT EXCHANGE_NAME, EXCHANGE_TIME_ZONE_INFORMATION FROM SELECT_EXCHANGE(0)", nullptr, table.Get());
    ForEachRecord(*table.Get(), [&] {
        m_ExchangeTimeZones[udf_helper::GetFieldAsString(table, IDM_dmudfcom::fieldExchangeName).Text()] =
            udf_helper::GetFieldAsString(table, IDM_dmudfcom::fieldExchangeTimeZoneInformation).Text();
    });
}

LONG CStorage::Execute(const wchar_t* sql, IDispatch* parameters, IDispatch* results) {
    const BugSlayerUtil::CScope scope(this);
    CDatabaseRequest request(m_Database.Get());
    request.Open(sql, parameters, results);
    const LONG count = request.Fetch(0);
    request.Close();
    return count;
}

LONG CStorage::GenerateId() { return m_IdGenerator ? m_IdGenerator->Generate() : 0; }

void CStorage::ExecuteTraced(const BugSlayerUtil::CScope& scope, const wchar_t* sql) {
    scope.Trace(L"sql = '%s'", sql);
    Execute(sql, nullptr, nullptr);
}

void CStorage::ExecuteAndNotify(const BugSlayerUtil::CScope& scope, const wchar_t* sql, ULONG Mask, LONG ValueID) {
    ExecuteTraced(scope, sql);
    BroadcastNotifyToSinks(Mask, ValueID);
}

} // namespace sqStorage
