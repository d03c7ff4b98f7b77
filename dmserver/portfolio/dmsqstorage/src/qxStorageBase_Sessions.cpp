#include "CallPath.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;

HRESULT CqxStorageBase::SelectSession(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectSession(Request, Table);
    });
}

HRESULT CqxStorageBase::InsertSession(LONG SessionType, BSTR SessionName, LONG TimeZone, LONG* Session) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Insert(SessionType >= 0 && TimeZone >= 0, Session, [&](CStorage& storage) {
        return storage.InsertSession(SessionType, SessionName, TimeZone);
    });
}

HRESULT CqxStorageBase::DeleteSession(LONG Session, LONG* Deleted) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Delete(
            Deleted, [&] { return ExistsSession(Session); },
            [&](CStorage& storage) { return storage.DeleteSession(Session); });
}

HRESULT CqxStorageBase::UpdateSession(LONG Session, LONG SessionType, BSTR SessionName, LONG TimeZone) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Change(
            SessionType >= 0 && TimeZone >= 0 && Session > 0, [&] { return ExistsSession(Session); },
            [&](CStorage& storage) { storage.UpdateSession(Session, SessionType, SessionName, TimeZone); });
}

HRESULT CqxStorageBase::SelectSessionDetails(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectSessionDetails(Request, Table);
    });
}

HRESULT CqxStorageBase::InsertSessionDetails(IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(scope.Assert(Table != nullptr, L"Table"), [&](CStorage& storage) {
        storage.InsertSessionDetails(Table);
    });
}

HRESULT CqxStorageBase::DeleteSessionDetails(LONG Session) {
    const BugSlayerUtil::CScope scope(this);
    // Reported, and the call goes on to find no such row.
    scope.Assert(Session != 0, L"Session");
    return CCallPath(scope, *this)
        .Change(
            true, [&] { return ExistsSessionDetails(Session); },
            [&](CStorage& storage) { storage.DeleteSessionDetails(Session); });
}
