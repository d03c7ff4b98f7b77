#include "sqStorage.h"

#include "StatementText.h"
#include "TableShapes.h"
#include "diagnostics/interface/BugSlayer.h"

namespace sqStorage {

void CStorage::SelectSetting(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    SelectInto(scope, Request, Table, [](IdmRequest& request) {
        LONG Setting = 0;
        request.get_SettingId(&Setting);
        CSqlText sql(L"SELECT * FROM SETTINGS");
        if (Setting != 0)
            sql.Append(L" WHERE SETTING=%d", Setting);
        return sql;
    });
}

LONG CStorage::InsertSetting(LONG PriceScale, double PointValue, LONG DailyLimit, double MinMovement) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const LONG Setting = GenerateId();
            if (!scope.Assert(Setting != 0, L"0!=Setting"))
                return 0;
            const CSqlText sql(L"INSERT INTO SETTINGS VALUES(%d,%d,%f,%d,%f)", Setting, PriceScale, PointValue,
                               DailyLimit, MinMovement);
            ExecuteAndNotify(scope, sql.Text(), notifySetting);
            return Setting;
        },
        LONG{0});
}

void CStorage::DeleteSetting(LONG Setting) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(Setting != 0, L"Setting"))
            return;
        ExecuteAndNotify(scope, CSqlText(L"DELETE FROM SETTINGS WHERE SETTING=%d", Setting).Text(), notifySetting);
    });
}

void CStorage::UpdateSetting(LONG Setting, LONG PriceScale, double PointValue, LONG DailyLimit,
                             double MinMovement) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(Setting != 0, L"Setting"))
            return;
        const CSqlText sql(
            L"UPDATE SETTINGS SET PRICE_SCALE=%d, POINT_VALUE=%f, DAILY_LIMIT=%d, MIN_MOVEMENT=%f WHERE SETTING=%d",
            PriceScale, PointValue, DailyLimit, MinMovement, Setting);
        ExecuteAndNotify(scope, sql.Text(), notifySetting);
    });
}

} // namespace sqStorage
