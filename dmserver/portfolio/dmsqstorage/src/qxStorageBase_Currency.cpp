#include "CallPath.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

// None of these has an error guard: what fails below reaches the caller as an exception.

HRESULT CqxStorageBase::SetCurrency(LONG Id, LONG CurrencyCode) {
    const BugSlayerUtil::CScope scope(this);
    StorageOrRaise().SetCurrency(Id, CurrencyCode);
    return S_OK;
}

HRESULT CqxStorageBase::GetCurrency(LONG Id, LONG* pCurrencyCode) {
    const BugSlayerUtil::CScope scope(this);
    if (!pCurrencyCode)
        return E_INVALIDARG;
    *pCurrencyCode = StorageOrRaise().GetCurrency(Id);
    return S_OK;
}

HRESULT CqxStorageBase::DeleteCurrency(LONG Id) {
    const BugSlayerUtil::CScope scope(this);
    StorageOrRaise().DeleteCurrency(Id);
    return S_OK;
}

HRESULT CqxStorageBase::SelectCurrency(IdmRequest*, IdmTable* Table) {
    StorageOrRaise().Execute(L"SELECT * FROM CURRENCY", nullptr, Table);
    return S_OK;
}
