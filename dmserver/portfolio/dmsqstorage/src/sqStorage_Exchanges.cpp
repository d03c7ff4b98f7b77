#include "sqStorage.h"

#include "StatementText.h"
#include "TableShapes.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"
#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"
#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

namespace sqStorage {

namespace {

// A zone as the columns hold it.
struct tagZoneColumns {
    TIME_ZONE_INFORMATION Zone{};
    wchar_t StandardTime[16]{};
    wchar_t DaylightTime[16]{};

    // A text that does not parse leaves a zone without daylight saving, and midnight in both times.
    explicit tagZoneColumns(const wchar_t* text) {
        static_cast<void>(tz_help::StringToTZI(text, Zone));
        Format(Zone.StandardDate, StandardTime);
        Format(Zone.DaylightDate, DaylightTime);
    }
    int UseDaylight() const { return Zone.StandardDate.wMonth != 0 ? 1 : 0; }

private:
    static void Format(const SYSTEMTIME& date, wchar_t (&text)[16]) {
        dmDateTime::FormatDaySeconds(date.wHour * 3600 + date.wMinute * 60 + date.wSecond, text);
    }
};

} // namespace

void CStorage::SelectExchange(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    SelectInto(scope, Request, Table, [](IdmRequest& request) {
        LONG Exchange = 0;
        request.get_ExchangeId(0, &Exchange);
        return CSqlText(L"SELECT * FROM SELECT_EXCHANGE(%d)", Exchange);
    });
}

LONG CStorage::InsertExchange(const wchar_t* ExchangeName, const wchar_t* Description, LONG Holiday, LONG Setting,
                              LONG Session, LONG TimeZone, const wchar_t* MapId,
                              const wchar_t* TimeZoneInformation) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const bool hasName = scope.Assert(ExchangeName != nullptr, L"n");
            const bool hasDescription = scope.Assert(Description != nullptr, L"desc");
            const bool hasMapId = scope.Assert(MapId != nullptr, L"MapId");
            const bool hasZone = scope.Assert(TimeZoneInformation != nullptr, L"TimeZoneInformation");
            if (!hasName || !hasDescription || !hasMapId || !hasZone)
                return 0;
            const LONG Exchange = GenerateId();
            if (!scope.Assert(Exchange != 0, L"Exchange"))
                return 0;
            const tagZoneColumns zone(TimeZoneInformation);
            const TIME_ZONE_INFORMATION& tz = zone.Zone;
            const CSqlText sql(L"INSERT INTO EXCHANGES "
                               L"VALUES(%d,'%s',%d,%d,%d,%d,'%s',%d,%d,%d,%d,%d,%d,'%s',%d,%d,%d,%d,'%s','%s')",
                               Exchange, CQuoted(ExchangeName).Text(), Holiday, Setting, Session, TimeZone, MapId,
                               zone.UseDaylight(), tz.Bias, tz.StandardBias, tz.StandardDate.wDayOfWeek,
                               tz.StandardDate.wDay, tz.StandardDate.wMonth, zone.StandardTime, tz.DaylightBias,
                               tz.DaylightDate.wDayOfWeek, tz.DaylightDate.wDay, tz.DaylightDate.wMonth,
                               zone.DaylightTime, CQuoted(Description).Text());
            ExecuteAndNotify(scope, sql.Text(), notifyExchange);
            return Exchange;
        },
        LONG{0});
}

void CStorage::UpdateExchange(LONG Exchange, const wchar_t* ExchangeName, const wchar_t* Description, LONG Holiday,
                              LONG Setting, LONG Session, LONG TimeZone, const wchar_t* MapId,
                              const wchar_t* TimeZoneInformation) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        const bool hasKey = scope.Assert(Exchange != 0, L"Exchange");
        const bool hasName = scope.Assert(ExchangeName != nullptr, L"ExchangeName");
        const bool hasMapId = scope.Assert(MapId != nullptr, L"MapId");
        const bool hasZone = scope.Assert(TimeZoneInformation != nullptr, L"TimeZoneInformation");
        if (!hasKey || !hasName || !hasMapId || !hasZone)
            return;
        // The dictionary knows the exchange by the name that it still has.
        const std::wstring oldName = get_exchange_name(Exchange);
        const tagZoneColumns zone(TimeZoneInformation);
        const TIME_ZONE_INFORMATION& tz = zone.Zone;
        const CSqlText sql(
            L"UPDATE EXCHANGES SET EXCHANGE_NAME='%s',HOLIDAY=%d,SETTING=%d,SESSION=%d,TIME_ZONE=%d,MAP_ID='%s',"
            L"USE_DAYLIGHT=%d,BIAS=%d,STANDARD_BIAS=%d,STANDARD_DAY_OF_WEEK=%d,STANDARD_DAY=%d,STANDARD_MONTH=%d,"
            L"STANDARD_TIME='%s',DAYLIGHT_BIAS=%d,DAYLIGHT_DAY_OF_WEEK=%d,DAYLIGHT_DAY=%d,DAYLIGHT_MONTH=%d,"
            L"DAYLIGHT_TIME='%s',DESCRIPTION='%s' WHERE EXCHANGE=%d",
            CQuoted(ExchangeName).Text(), Holiday, Setting, Session, TimeZone, MapId, zone.UseDaylight(), tz.Bias,
            tz.StandardBias, tz.StandardDate.wDayOfWeek, tz.StandardDate.wDay, tz.StandardDate.wMonth,
            zone.StandardTime, tz.DaylightBias, tz.DaylightDate.wDayOfWeek, tz.DaylightDate.wDay,
            tz.DaylightDate.wMonth, zone.DaylightTime, CQuoted(Description).Text(), Exchange);
        scope.Trace(L"sql = '%s'", sql.Text());
        Execute(sql.Text(), nullptr, nullptr);
        update_exchange_in_root_settings(oldName, ExchangeName);
        BroadcastNotifyToSinks(notifyExchange, 0);
    });
}

int CStorage::DeleteExchange(LONG Exchange) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&] {
            COutputRequest owned(m_Database.Get());
            const LONG rows =
                owned.Select(CSqlText(L"SELECT SETTING,SESSION FROM EXCHANGES WHERE EXCHANGE=%d", Exchange).Text());
            const CSqlText sql(L"SELECT * FROM DELETE_EXCHANGE(%d)", Exchange);
            scope.Trace(L"sql = '%s'", sql.Text());
            const int deleted = DeleteAnything(sql.Text());
            if (deleted && rows > 0) {
                const CComPtr<IdmTable> table(owned.Table());
                table->First();
                const LONG Setting = GetField<LONG>(table, IDM_dmudfcom::fieldSetting);
                const LONG Session = GetField<LONG>(table, IDM_dmudfcom::fieldSession);
                DeleteSetting(Setting);
                DeleteSession(Session);
            }
            owned.Close();
            BroadcastNotifyToSinks(notifyExchange, 0);
            return deleted;
        },
        0);
}

LONG CStorage::SelectExchange(const wchar_t* ExchangeName) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const auto table = NewLookup(scope);
            if (!table)
                return 0;
            const CQuoted name(ExchangeName);
            const CStatement<128> sql(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='%s'", name.Text());
            return FindKey(*table, sql.Text(), name.Text(), L"SelectExchange");
        },
        LONG{0});
}

std::wstring CStorage::get_exchange_name(LONG Exchange) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> std::wstring {
            const auto request = NewRequest();
            const auto table = NewTable();
            request->put_ExchangeId(0, Exchange);
            SelectExchange(request.Get(), table.Get());
            LONG count = 0;
            table->get_RecordCount(&count);
            if (count != 1)
                return {};
            table->First();
            return udf_helper::GetFieldAsString(table, IDM_dmudfcom::fieldExchangeName).Text();
        },
        std::wstring());
}

void CStorage::update_exchange_in_root_settings(const std::wstring& OldName, const wchar_t* NewName) {
    const BugSlayerUtil::CScope scope(this);
    scope.Trace(L"Exchange '%s' -> '%s'", OldName, NewName);
    BroadcastNotifyToSinks(notifyRootSettings, 0);
}

} // namespace sqStorage
