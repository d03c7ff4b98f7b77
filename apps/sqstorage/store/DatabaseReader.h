// Selects on a connection of its own, beside the store's: for what no interface tells without bringing every row,
// and for rows that the store's joins leave out. Sees what is committed. `check` and `symbol` have one, and
// `import` and `export` when they ask what symbols own: a process of theirs is connected twice.
//
// One thread uses it. Errors: CCommandError (NotOpened) when the database cannot be opened, CStoreRefusal when a
// select fails.
#pragma once

#include "dmserver/dmFirebird/interface/Database.h"
#include "dmserver/dmudfcom/interface/TableRows.h"
#include "dmserver/portfolio/dmsqStorageSetup/interface/StorageSetup.h"
#include "platform/com/com_ptr.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace sqCli {

class CDatabaseReader {
public:
    using Row = const std::function<void(const IDM_dmudfcom::ITableRows& rows, ULONG row)>&;

    explicit CDatabaseReader(const sqSetup::tagConnection& connection);
    ~CDatabaseReader();
    CDatabaseReader(const CDatabaseReader&) = delete;
    CDatabaseReader& operator=(const CDatabaseReader&) = delete;

    // Of engine and client.
    [[nodiscard]] std::string Versions();

    // Calls `take` for each row; only a batch of them is held at a time.
    void ForEach(std::string_view select, Row take);
    // The same for a select with one "?", which is this text.
    void ForEachWith(std::string_view text, std::string_view select, Row take);
    // The first number that it gives, 0 without a row.
    [[nodiscard]] std::int64_t Number(std::string_view select);

private:
    void Select(std::string_view select, IDM_dmudfcom::IdmTable* parameters, Row take);
    void RefuseUnless(HRESULT status);

    platform::CComPtr<IDM_dmFirebird::IdmDatabase> m_Database;
};

} // namespace sqCli
