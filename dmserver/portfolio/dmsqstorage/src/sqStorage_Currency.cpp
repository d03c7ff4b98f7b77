#include "sqStorage.h"

#include "StatementText.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"
#include "platform/com/activation.h"
#include "platform/com/com_error.h"

namespace sqStorage {

// None of these has an error guard: what fails below reaches the caller as an exception.

bool CStorage::HasCurrency(LONG Id, IdmTable& Table) {
    Execute(CSqlText(L"SELECT * FROM CURRENCY WHERE ID=%d", Id).Text(), nullptr, &Table);
    LONG count = 0;
    Table.get_RecordCount(&count);
    return count != 0;
}

void CStorage::SetCurrency(LONG Id, LONG CurrencyCode) {
    const BugSlayerUtil::CScope scope(this);
    const CSqlText sql = HasCurrency(Id, *NewTable())
                             ? CSqlText(L"UPDATE CURRENCY SET CURRENCY_CODE=%d WHERE ID=%d", CurrencyCode, Id)
                             : CSqlText(L"INSERT INTO CURRENCY VALUES(%d,%d)", Id, CurrencyCode);
    ExecuteAndNotify(scope, sql.Text(), notifyCurrency, Id);
}

LONG CStorage::GetCurrency(LONG Id) {
    const BugSlayerUtil::CScope scope(this);
    CComPtr<IdmTable> table;
    const HRESULT status = platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table);
    if (FAILED(status) && status != E_NOINTERFACE)
        platform::ThrowStatus(status, L"IdmTable");
    if (!table || !HasCurrency(Id, *table))
        return 0;
    table->First();
    return udf_helper::GetFieldAsLong(table, IDM_dmudfcom::fieldCurrencyCode);
}

void CStorage::DeleteCurrency(LONG Id) {
    const BugSlayerUtil::CScope scope(this);
    ExecuteAndNotify(scope, CSqlText(L"DELETE FROM CURRENCY WHERE ID=%d", Id).Text(), notifyCurrency, Id);
}

} // namespace sqStorage
