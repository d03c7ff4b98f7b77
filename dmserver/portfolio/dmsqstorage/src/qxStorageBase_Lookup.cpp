#include "CallPath.h"

using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;

HRESULT CqxStorageBase::GetSymbol(LONG Datafeed, BSTR SymbolName, LONG Category, LONG Exchange, LONG ExpirationDate,
                                  BSTR StrikePrice, LONG CallPut, LONG* Symbol) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Find(IsNotEmpty(SymbolName), Symbol, [&](CStorage& storage) {
        return storage.SelectSymbol(Datafeed, SymbolName, Category, Exchange, ExpirationDate, StrikePrice, CallPut);
    });
}

HRESULT CqxStorageBase::GetSymbolByName(LONG Datafeed, BSTR SymbolName, LONG* Symbol) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Find(IsNotEmpty(SymbolName), Symbol, [&](CStorage& storage) {
        return storage.GetSymbolByName(Datafeed, SymbolName);
    });
}

HRESULT CqxStorageBase::GetSymbolByDescription(LONG Datafeed, BSTR Description, BSTR* SymbolName, LONG* Symbol) {
    const BugSlayerUtil::CScope scope(this);
    if (SymbolName)
        *SymbolName = nullptr;
    return CCallPath(scope, *this).Find(IsNotEmpty(Description), Symbol, [&](CStorage& storage) {
        return storage.GetSymbolByDescription(Datafeed, Description, SymbolName);
    });
}

HRESULT CqxStorageBase::GetAvailableSessions(LONG Symbol, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    if (!Table)
        return S_FALSE;
    return scope.Guard(
        [&]() -> HRESULT {
            StorageOrRaise().GetAvailableSessions(Symbol, Table);
            return S_OK;
        },
        E_FAIL);
}
