#include "CallPath.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;

HRESULT CqxStorageBase::SelectDataFeed(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectDataFeed(Request, Table);
    });
}

HRESULT CqxStorageBase::InsertDataFeed(BSTR DataFeedName, BSTR DataFeedShortName, BSTR DataFeedDllName, BSTR CLSID,
                                       LONG IsAsc, LONG* Datafeed) {
    const BugSlayerUtil::CScope scope(this);
    const bool good = IsNotEmpty(DataFeedName) && IsNotEmpty(DataFeedShortName) && IsNotEmpty(DataFeedDllName) &&
                      IsNotEmpty(CLSID);
    return CCallPath(scope, *this).Insert(good, Datafeed, [&](CStorage& storage) {
        return storage.InsertDataFeed(DataFeedName, DataFeedShortName, DataFeedDllName, CLSID, IsAsc);
    });
}

HRESULT CqxStorageBase::DeleteDataFeed(LONG Datafeed, LONG* Deleted) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Delete(
            Deleted, [&] { return ExistsDataFeed(Datafeed); },
            [&](CStorage& storage) { return storage.DeleteDataFeed(Datafeed); });
}

HRESULT CqxStorageBase::UpdateDataFeed(LONG Datafeed, BSTR DataFeedName, BSTR DataFeedShortName,
                                       BSTR DataFeedDllName, BSTR CLSID, LONG IsAsc, LONG Active) {
    const BugSlayerUtil::CScope scope(this);
    const bool good = IsNotEmpty(DataFeedName) && IsNotEmpty(DataFeedShortName) && IsNotEmpty(DataFeedDllName) &&
                      IsNotEmpty(CLSID) && Datafeed > 0;
    return CCallPath(scope, *this)
        .Change(
            good, [&] { return ExistsDataFeed(Datafeed); },
            [&](CStorage& storage) {
                storage.UpdateDataFeed(Datafeed, DataFeedName, DataFeedShortName, DataFeedDllName, CLSID, IsAsc,
                                       Active);
            });
}

HRESULT CqxStorageBase::get_Datafeed(LONG* Value) {
    const BugSlayerUtil::CScope scope(this);
    // The one method that takes a missing storage for a bad argument, and still gives a value.
    if (Value && !m_Holder) {
        *Value = 0;
        return E_INVALIDARG;
    }
    return CCallPath(scope, *this).Lookup(true, Value, [](CStorage& storage) { return storage.GetASCDataFeed(); });
}

HRESULT CqxStorageBase::GetDataFeed(BSTR DataFeedName, LONG* DataFeedId) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Lookup(IsNotEmpty(DataFeedName), DataFeedId, [&](CStorage& storage) {
        return storage.SelectDataFeed(DataFeedName);
    });
}
