#include "Store.h"

#include "Connection.h"
#include "StoreFailure.h"
#include "Symbols.h"
#include "apps/sqstorage/ExitStatus.h"
#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/Trail.h"
#include "platform/com/activation.h"

#include <algorithm>
#include <fmt/format.h>

namespace sqCli {

namespace {

using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::ITableRows;

template <class Carrier>
platform::CComPtr<Carrier> NewCarrier(REFCLSID clsid) {
    platform::CComPtr<Carrier> carrier;
    platform::ThrowIfFailed(platform::CreateInstance(clsid, carrier));
    return carrier;
}

Cell CellAt(const ITableRows& rows, ULONG row, ULONG column) {
    if (rows.IsNull(row, column))
        return tagNull{};
    switch (rows.ColumnType(column)) {
    case EColumnType::Text: {
        std::string scratch;
        return std::string(rows.Text(row, column, scratch));
    }
    case EColumnType::Float:
    case EColumnType::Double:
        return static_cast<float>(rows.Real(row, column));
    case EColumnType::Date: {
        const auto day = static_cast<std::int32_t>(rows.Integer(row, column));
        return day == 0 ? Cell(tagNull{}) : Cell(tagDay{day});
    }
    default:
        return rows.Integer(row, column);
    }
}

tagRowSet ReadRows(const ITableRows& table) {
    tagRowSet rows;
    for (ULONG column = 0; column < table.ColumnCount(); ++column)
        rows.Columns.emplace_back(table.ColumnName(column));
    for (ULONG row = 0; row < table.RowCount(); ++row) {
        std::vector<Cell>& cells = rows.Rows.emplace_back();
        for (ULONG column = 0; column < table.ColumnCount(); ++column)
            cells.push_back(CellAt(table, row, column));
    }
    return rows;
}

} // namespace

CStore::CStore() : m_OwnedRows(std::make_shared<COwnedRows>()) {
    ForgetFailures();
    if (platform::CreateInstance(IDM_qxStorage::CLSID_qxStorage, m_Storage) == S_OK)
        return;
    throw CCommandError(EExitStatus::NotOpened,
                        OpenFailureSentence(BugSlayerUtil::RecentFailures(), MachineRegistryFile()));
}

tagRowSet CStore::Select(SelectMethod method) {
    return Select(method, [](IdmRequest&) {});
}

tagRowSet CStore::Select(SelectMethod method, const std::function<void(IdmRequest&)>& prepare) {
    return SelectBy([&](IdmRequest* request, IdmTable* table) {
        prepare(*request);
        return (*m_Storage.*method)(request, table);
    });
}

tagRowSet CStore::SelectBy(const std::function<HRESULT(IdmRequest*, IdmTable*)>& select) {
    const auto request = NewCarrier<IdmRequest>(IDM_dmudfcom::CLSID_dmRequest);
    const auto table = NewTable();
    Run([&](IqxStorage&) { return select(request.Get(), table.Get()); });
    return ReadRows(*table.As<ITableRows>());
}

void CStore::ForgetFailures() { BugSlayerUtil::ClearRecentFailures(); }

HRESULT CStore::Guarded(const std::function<HRESULT()>& call) { return BugSlayerUtil::Guard(call, E_FAIL); }

void CStore::RaiseFailures(HRESULT status) {
    const auto failures = BugSlayerUtil::RecentFailures();
    if (!failures.empty())
        throw CStoreRefusal(FailureSentence(failures.front()));
    if (FAILED(status))
        throw CStoreRefusal(fmt::format("The store refused the call with status 0x{:08X}: look into its log.",
                                        static_cast<ULONG>(status)));
}

platform::CComPtr<IDM_dmudfcom::IdmTable> NewTable() {
    return NewCarrier<IDM_dmudfcom::IdmTable>(IDM_dmudfcom::CLSID_dmTable);
}

std::size_t ColumnOf(const tagRowSet& rows, std::string_view name) {
    const auto found = std::find(rows.Columns.begin(), rows.Columns.end(), name);
    if (found == rows.Columns.end())
        throw CStoreRefusal(fmt::format("The database has no column {}: bring it up to date with \"sqstorage "
                                        "upgrade\".",
                                        name));
    return static_cast<std::size_t>(found - rows.Columns.begin());
}

LONG LongOf(const Cell& cell) { return static_cast<LONG>(IntegerOf(cell)); }

} // namespace sqCli
