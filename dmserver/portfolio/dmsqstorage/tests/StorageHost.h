// A host with a storage of its own, for tests: everything lies in a temporary directory that goes with it.
//
// The registry, the state directory and the database are the test's; the version block is that of the test program,
// which CMake embeds. The storage itself is reached as every host reaches it: by the class factory.
#pragma once

#include "dmserver/dmFirebird/interface/Database.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorage.h"
#include "dmserver/portfolio/dmsqStorageSetup/interface/StorageSetup.h"
#include "platform/com/activation.h"
#include "platform/file.h"

#include <string>
#include <utility>
#include <vector>

namespace tests {

using IDM_dmudfcom::IdmField;
using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using IDM_qxStorage::IqxStorage;
using platform::CBstr;
using platform::CComPtr;

// A row as text, column by column, in the order of the table's fields.
using Row = std::vector<std::wstring>;

class CStorageHost {
public:
    // The directory and the environment; no database and no registry entry.
    CStorageHost();

    // Creates the database with its schema, unless it exists, and registers it.
    void Install();
    void Register(const sqSetup::tagConnection& connection);
    sqSetup::tagConnection Connection() const;
    std::wstring Path(std::wstring_view name) const;
    // Of the registry, below the machine root.
    static std::wstring Key();

    // Creates an instance through the class factory.
    static HRESULT Create(CComPtr<IqxStorage>& storage);

    // A connection of the test's own.
    CComPtr<IDM_dmFirebird::IdmDatabase> OpenDatabase() const;
    // Runs a statement on a connection of the test's own and returns its rows.
    std::vector<Row> Sql(const std::wstring& statement) const;
    // Whether the storage's connection has a prepared statement of exactly this text.
    bool HasPrepared(const std::wstring& statement) const;

private:
    platform::CTemporaryDirectory m_Directory;
};

CComPtr<IdmTable> NewTable();
CComPtr<IdmRequest> NewRequest();
LONG RecordCount(const CComPtr<IdmTable>& table);
// All records of a table.
std::vector<Row> RowsOf(const CComPtr<IdmTable>& table);
CComPtr<IdmField> FieldOf(const CComPtr<IdmTable>& table, LONG id);

} // namespace tests
