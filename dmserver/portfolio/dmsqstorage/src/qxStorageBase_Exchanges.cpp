#include "CallPath.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;

HRESULT CqxStorageBase::SelectExchange(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectExchange(Request, Table);
    });
}

HRESULT CqxStorageBase::InsertExchange(BSTR ExchangeName, BSTR Description, LONG Holiday, LONG Setting,
                                       LONG Session, LONG TimeZone, BSTR MapId, BSTR TimeZoneInformation,
                                       LONG* Exchange) {
    const BugSlayerUtil::CScope scope(this);
    const bool good =
        IsNotEmpty(ExchangeName) && MapId && TimeZoneInformation && Holiday >= 0 && Session >= 1 && Setting > 0;
    return CCallPath(scope, *this).Insert(good, Exchange, [&](CStorage& storage) {
        return storage.InsertExchange(ExchangeName, Description, Holiday, Setting, Session, TimeZone, MapId,
                                      TimeZoneInformation);
    });
}

HRESULT CqxStorageBase::DeleteExchange(LONG Exchange, LONG* Deleted) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Delete(
            Deleted, [&] { return ExistsExchange(Exchange); },
            [&](CStorage& storage) { return storage.DeleteExchange(Exchange); });
}

HRESULT CqxStorageBase::UpdateExchange(LONG Exchange, BSTR ExchangeName, BSTR Description, LONG Holiday,
                                       LONG Setting, LONG Session, LONG TimeZone, BSTR MapId,
                                       BSTR TimeZoneInformation) {
    const BugSlayerUtil::CScope scope(this);
    const bool good = IsNotEmpty(ExchangeName) && MapId && TimeZoneInformation && Holiday >= 0 && Setting > 0 &&
                      Session > 0 && Exchange > 0;
    return CCallPath(scope, *this)
        .Change(
            good, [&] { return ExistsExchange(Exchange); },
            [&](CStorage& storage) {
                storage.UpdateExchange(Exchange, ExchangeName, Description, Holiday, Setting, Session, TimeZone,
                                       MapId, TimeZoneInformation);
            });
}

HRESULT CqxStorageBase::GetExchange(BSTR ExchangeName, LONG* ExchangeId) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Lookup(IsNotEmpty(ExchangeName), ExchangeId, [&](CStorage& storage) {
        return storage.SelectExchange(ExchangeName);
    });
}
