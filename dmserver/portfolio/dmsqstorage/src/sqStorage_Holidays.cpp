#include "sqStorage.h"

#include "StatementText.h"
#include "TableShapes.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace sqStorage {

void CStorage::SelectHoliday(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    SelectInto(scope, Request, Table, [](IdmRequest& request) {
        LONG Holiday = 0;
        request.get_HolidayId(&Holiday);
        return Holiday == 0 ? CSqlText(L"SELECT * FROM HOLIDAYS")
                            : CSqlText(L"SELECT * FROM HOLIDAYS WHERE HOLIDAY=%d", Holiday);
    });
}

LONG CStorage::InsertHoliday(const wchar_t* HolidayName) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            if (!scope.Assert(HolidayName != nullptr, L"hn"))
                return 0;
            const LONG Holiday = GenerateId();
            if (!scope.Assert(Holiday != 0, L"Holiday"))
                return 0;
            const CSqlText sql(L"INSERT INTO HOLIDAYS VALUES(%d,'%s')", Holiday, CQuoted(HolidayName).Text());
            ExecuteAndNotify(scope, sql.Text(), notifyHoliday);
            return Holiday;
        },
        LONG{0});
}

void CStorage::DeleteHoliday(LONG Holiday) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(Holiday != 0, L"Holiday"))
            return;
        // The dates go untraced and are announced as a change of the calendar.
        Execute(CSqlText(L"DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=%d", Holiday).Text(), nullptr, nullptr);
        BroadcastNotifyToSinks(notifyHoliday, 0);
        ExecuteAndNotify(scope, CSqlText(L"DELETE FROM HOLIDAYS WHERE HOLIDAY=%d", Holiday).Text(), notifyHoliday);
    });
}

void CStorage::UpdateHoliday(LONG Holiday, const wchar_t* HolidayName) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        scope.Assert(HolidayName != nullptr, L"hn");
        const CSqlText sql(L"UPDATE HOLIDAYS SET HOLIDAY_NAME='%s' WHERE HOLIDAY=%d ", CQuoted(HolidayName).Text(),
                           Holiday);
        ExecuteAndNotify(scope, sql.Text(), notifyHoliday);
    });
}

void CStorage::SelectHolidayDetails(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(Request && Table, L"Request&&Table"))
            return;
        LONG Holiday = 0;
        Request->get_HolidayId(&Holiday);
        const CSqlText sql = Holiday == 0 ? CSqlText(L"SELECT * FROM HOLIDAY_DETAILS")
                                          : CSqlText(L"SELECT * FROM HOLIDAY_DETAILS WHERE HOLIDAY=%d", Holiday);
        Execute(sql.Text(), nullptr, Table);
    });
}

void CStorage::InsertHolidayDetails(IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        ReplaceDetails(scope, Table, IDM_dmudfcom::fieldHoliday, L"HolidayField",
                       L"INSERT INTO HOLIDAY_DETAILS VALUES(?,?,?,?)", notifyHolidayDetails,
                       [&](LONG Holiday) { DeleteHolidayDetails(Holiday); });
    });
}

void CStorage::DeleteHolidayDetails(LONG Holiday) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(Holiday != 0, L"Holiday"))
            return;
        ExecuteAndNotify(scope, CSqlText(L"DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=%d", Holiday).Text(),
                         notifyHolidayDetails);
    });
}

void CStorage::DeleteHolidayDetails2(LONG Holiday, const wchar_t* Date) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        scope.Assert(Date != nullptr, L"Date");
        const CSqlText sql(L"DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=%d AND HOLIDAY_START_DATE='%s'", Holiday,
                           CQuoted(Date).Text());
        ExecuteAndNotify(scope, sql.Text(), notifyHolidayDetails);
    });
}

} // namespace sqStorage
