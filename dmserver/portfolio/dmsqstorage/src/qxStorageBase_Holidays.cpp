#include "CallPath.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;

HRESULT CqxStorageBase::SelectHoliday(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectHoliday(Request, Table);
    });
}

HRESULT CqxStorageBase::InsertHoliday(BSTR HolidayName, LONG* Holiday) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Insert(IsNotEmpty(HolidayName), Holiday, [&](CStorage& storage) {
        return storage.InsertHoliday(HolidayName);
    });
}

HRESULT CqxStorageBase::DeleteHoliday(LONG Holiday) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Change(
            true, [&] { return ExistsHoliday(Holiday); },
            [&](CStorage& storage) { storage.DeleteHoliday(Holiday); });
}

HRESULT CqxStorageBase::UpdateHoliday(LONG Holiday, BSTR HolidayName) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Change(
            IsNotEmpty(HolidayName), [&] { return ExistsHoliday(Holiday); },
            [&](CStorage& storage) { storage.UpdateHoliday(Holiday, HolidayName); });
}

HRESULT CqxStorageBase::SelectHolidayDetails(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectHolidayDetails(Request, Table);
    });
}

HRESULT CqxStorageBase::InsertHolidayDetails(IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(scope.Assert(Table != nullptr, L"Table"), [&](CStorage& storage) {
        storage.InsertHolidayDetails(Table);
    });
}

HRESULT CqxStorageBase::DeleteHolidayDetails(LONG Holiday) {
    const BugSlayerUtil::CScope scope(this);
    // Reported, and the call goes on to find no such row.
    scope.Assert(Holiday != 0, L"Holiday");
    return CCallPath(scope, *this)
        .Change(
            true, [&] { return ExistsHolidayDetails(Holiday); },
            [&](CStorage& storage) { storage.DeleteHolidayDetails(Holiday); });
}

HRESULT CqxStorageBase::DeleteHolidayDetails2(LONG Holiday, BSTR Date) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Change(
            IsNotEmpty(Date), [&] { return ExistsHolidayDetails(Holiday); },
            [&](CStorage& storage) { storage.DeleteHolidayDetails2(Holiday, Date); });
}
