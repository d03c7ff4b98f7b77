#include "CallPath.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;

HRESULT CqxStorageBase::SelectPortfolio(LONG Mode, IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Table, [&](CStorage& storage) {
        storage.SelectPortfolio(Mode, Request, Table);
    });
}

// The cursors have no argument tests but for the one place that a call writes to: without it the cursor could
// never be ended, nor the rows be counted.

HRESULT CqxStorageBase::Advise(LONG Mode, IdmRequest* Request, IdmTable* Table, LONG* Id) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Lookup(scope.Assert(Id != nullptr, L"Id"), Id, [&](CStorage& storage) {
        return storage.Open(Mode, Request, Table);
    });
}

HRESULT CqxStorageBase::Unadvise(LONG Id) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(true, [&](CStorage& storage) { storage.Close(Id); });
}

HRESULT CqxStorageBase::Fetch(LONG Id, LONG* Count) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Lookup(scope.Assert(Count != nullptr, L"Count"), Count, [&](CStorage& storage) {
        return storage.Fetch(Id, *Count);
    });
}
