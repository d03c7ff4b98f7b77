#include "TestStore.h"

#include "platform/environment.h"

namespace dmFirebirdTest {

namespace {

// The lock directory of the engine is made below the state directory, which is a temporary one here.
class CPrivateState : public testing::Environment {
public:
    void SetUp() override {
        platform::SetEnvironment(L"XDG_RUNTIME_DIR", std::nullopt);
        platform::SetEnvironment(L"SQSTORAGE_STATE_DIR", m_Directory.Name());
    }

private:
    platform::CTemporaryDirectory m_Directory{"sqstorage-state"};
};

[[maybe_unused]] testing::Environment* const PrivateState =
    testing::AddGlobalTestEnvironment(std::make_unique<CPrivateState>().release());

void Put(ITableRows& rows, ULONG column, const tagCell& cell) {
    if (cell.Text)
        rows.PutText(column, *cell.Text);
    else if (cell.Integer)
        rows.PutInteger(column, *cell.Integer);
    else if (cell.Real)
        rows.PutReal(column, *cell.Real);
}

} // namespace

CTable::CTable() {
    if (FAILED(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, m_Table)))
        throw std::runtime_error("the class dmTable cannot be created");
    m_Rows = m_Table.As<ITableRows>();
}

CTable::CTable(std::initializer_list<std::pair<const char*, EColumnType>> columns) : CTable() {
    for (const auto& [name, type] : columns)
        m_Rows->AddColumn(name, type);
}

CTable& CTable::Add(const Record& record) {
    m_Rows->AppendRow();
    for (ULONG column = 0; column < record.size(); ++column)
        Put(*m_Rows, column, record[column]);
    return *this;
}

ULONG CTable::ColumnIndex(std::string_view name) const {
    const LONG column = m_Rows->FindColumn(name);
    if (column < 0)
        throw std::runtime_error("the table has no column " + std::string(name));
    return static_cast<ULONG>(column);
}

std::string CTable::Text(ULONG row, std::string_view column) const {
    std::string scratch;
    return std::string(m_Rows->Text(row, ColumnIndex(column), scratch));
}

std::vector<std::string> CTable::ColumnNames() const {
    std::vector<std::string> names;
    for (ULONG column = 0; column < m_Rows->ColumnCount(); ++column)
        names.emplace_back(m_Rows->ColumnName(column));
    return names;
}

CComPtr<IdmDatabase> NewDatabase() {
    CComPtr<IdmDatabase> database;
    EXPECT_EQ(S_OK, platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, database, 0x17));
    return database;
}

HRESULT Open(IdmDatabase& database, std::wstring_view path, const wchar_t* user, const wchar_t* password) {
    return database.Open(CBstr(path).Get(), CBstr(user).Get(), CBstr(password).Get());
}

HRESULT Create(IdmDatabase& database, std::wstring_view path) {
    return database.Create(CBstr(path).Get(), CBstr(UserName).Get(), CBstr(Password).Get());
}

std::wstring LastError(IdmDatabase& database) {
    CBstr text;
    EXPECT_EQ(S_OK, database.get_LastError(text.Put()));
    return std::wstring(text.View());
}

CComPtr<IdmDatabaseTransaction> NewTransaction(IdmDatabase& database) {
    CComPtr<IdmDatabaseTransaction> transaction;
    EXPECT_EQ(S_OK, database.GetTransaction(transaction.Put()));
    return transaction;
}

CComPtr<IdmDatabaseQuery> NewQuery(IdmDatabaseTransaction& transaction) {
    CComPtr<IdmDatabaseQuery> query;
    EXPECT_EQ(S_OK, transaction.GetQuery(query.Put()));
    return query;
}

CComPtr<IdmDatabaseQuery> NewQuery(IdmDatabase& database) { return NewQuery(*NewTransaction(database)); }

HRESULT Open(IdmDatabaseQuery& query, std::wstring_view statement, IDispatch* parameters, IDispatch* result) {
    return query.Open(CBstr(statement).Get(), parameters, result);
}

LONG Fetch(IdmDatabaseQuery& query, LONG count) {
    EXPECT_EQ(S_OK, query.Fetch(&count));
    return count;
}

CStoreTest::CStoreTest() : m_Database(NewDatabase()) {
    EXPECT_EQ(S_OK, Create(*m_Database, Path())) << "cannot create";
}

HRESULT CStoreTest::TryRun(std::wstring_view statement, const CTable* parameters, const CTable* result) {
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    LONG count = 0;
    HRESULT status =
        Open(*query, statement, parameters ? parameters->Get() : nullptr, result ? result->Get() : nullptr);
    if (SUCCEEDED(status))
        status = query->Fetch(&count);
    query->Close();
    const HRESULT finished = transaction->Finish();
    return FAILED(status) ? status : finished;
}

LONG CStoreTest::Run(std::wstring_view statement, const CTable* parameters, const CTable* result) {
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    EXPECT_EQ(S_OK,
              Open(*query, statement, parameters ? parameters->Get() : nullptr, result ? result->Get() : nullptr))
        << testing::PrintToString(Error());
    const LONG count = Fetch(*query);
    EXPECT_EQ(S_OK, query->Close());
    EXPECT_EQ(S_OK, transaction->Finish()) << testing::PrintToString(Error());
    return count;
}

CTable CStoreTest::Select(std::wstring_view statement) {
    CTable table;
    Run(statement, nullptr, &table);
    return table;
}

std::int64_t CStoreTest::Number(std::wstring_view statement) {
    const CTable table = Select(statement);
    EXPECT_EQ(1U, table.Count());
    return table.Count() == 1 ? table.Rows().Integer(0, 0) : 0;
}

} // namespace dmFirebirdTest
