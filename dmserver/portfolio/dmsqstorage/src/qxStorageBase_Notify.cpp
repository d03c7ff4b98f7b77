#include "CallPath.h"

using sqStorage::CStorage;

HRESULT CqxStorageBase::AdviseNotify(ULONG Mask, IDispatch* pSink) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Notify([&](CStorage& storage) { return storage.AdviseNotify(Mask, pSink); });
}

HRESULT CqxStorageBase::UnadviseNotify(ULONG Mask, IDispatch* pSink) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Notify([&](CStorage& storage) { return storage.UnadviseNotify(Mask, pSink); });
}

HRESULT CqxStorageBase::SendNotify(LONG Mask) {
    const BugSlayerUtil::CScope scope(this);
    StorageOrRaise().BroadcastNotifyToSinks(static_cast<ULONG>(Mask), 0);
    return S_OK;
}
