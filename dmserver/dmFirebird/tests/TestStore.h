// A real database in a temporary directory, used through the public interfaces alone.
#pragma once

#include "dmserver/dmFirebird/interface/Database.h"
#include "dmserver/dmudfcom/interface/TableRows.h"
#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/com/com_ptr.h"
#include "platform/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dmFirebirdTest {

using IDM_dmFirebird::IdmDatabase;
using IDM_dmFirebird::IdmDatabaseQuery;
using IDM_dmFirebird::IdmDatabaseTransaction;
using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::IdmTable;
using IDM_dmudfcom::ITableRows;
using platform::CBstr;
using platform::CComPtr;

inline constexpr const wchar_t* UserName = L"SYSDBA";
inline constexpr const wchar_t* Password = L"masterkey";

// A value of a test table: nothing, a text or a number.
struct tagCell {
    tagCell() = default;
    tagCell(const char* text) : Text(text) {}
    tagCell(std::string text) : Text(std::move(text)) {}
    tagCell(int value) : Integer(value) {}
    tagCell(std::int64_t value) : Integer(value) {}
    tagCell(double value) : Real(value) {}

    std::optional<std::string> Text;
    std::optional<std::int64_t> Integer;
    std::optional<double> Real;
};
using Record = std::vector<tagCell>;

// A carrier table with both of its faces.
class CTable {
public:
    CTable();
    explicit CTable(std::initializer_list<std::pair<const char*, EColumnType>> columns);

    CTable& Add(const Record& record);
    IDispatch* Get() const { return m_Table.Get(); }
    ITableRows& Rows() const { return *m_Rows; }
    IdmTable& Carrier() const { return *m_Table; }

    ULONG Count() const { return m_Rows->RowCount(); }
    ULONG ColumnIndex(std::string_view name) const;
    bool IsNull(ULONG row, std::string_view column) const { return m_Rows->IsNull(row, ColumnIndex(column)); }
    std::string Text(ULONG row, std::string_view column) const;
    std::int64_t Integer(ULONG row, std::string_view column) const {
        return m_Rows->Integer(row, ColumnIndex(column));
    }
    double Real(ULONG row, std::string_view column) const { return m_Rows->Real(row, ColumnIndex(column)); }
    std::vector<std::string> ColumnNames() const;

private:
    CComPtr<IdmTable> m_Table;
    CComPtr<ITableRows> m_Rows;
};

CComPtr<IdmDatabase> NewDatabase();
HRESULT Open(IdmDatabase& database, std::wstring_view path, const wchar_t* user = UserName,
             const wchar_t* password = Password);
HRESULT Create(IdmDatabase& database, std::wstring_view path);
std::wstring LastError(IdmDatabase& database);

CComPtr<IdmDatabaseTransaction> NewTransaction(IdmDatabase& database);
CComPtr<IdmDatabaseQuery> NewQuery(IdmDatabaseTransaction& transaction);
CComPtr<IdmDatabaseQuery> NewQuery(IdmDatabase& database);
HRESULT Open(IdmDatabaseQuery& query, std::wstring_view statement, IDispatch* parameters = nullptr,
             IDispatch* result = nullptr);
// The rows delivered; a failure fails the test.
LONG Fetch(IdmDatabaseQuery& query, LONG count = 0);

// A database made for one test.
class CStoreTest : public testing::Test {
protected:
    CStoreTest();

    IdmDatabase& Database() const { return *m_Database; }
    std::wstring Path() const { return m_Directory.Name() + L"/store.fdb"; }
    std::wstring InDirectory(std::wstring_view name) const {
        return m_Directory.Name() + L"/" + std::wstring(name);
    }

    // One statement in a transaction of its own; a failure fails the test.
    LONG Run(std::wstring_view statement, const CTable* parameters = nullptr, const CTable* result = nullptr);
    // The status of the first failing step.
    HRESULT TryRun(std::wstring_view statement, const CTable* parameters = nullptr, const CTable* result = nullptr);
    CTable Select(std::wstring_view statement);
    // The one number of the one row.
    std::int64_t Number(std::wstring_view statement);
    std::wstring Error() const { return LastError(Database()); }

private:
    platform::CTemporaryDirectory m_Directory;
    CComPtr<IdmDatabase> m_Database;
};

} // namespace dmFirebirdTest
