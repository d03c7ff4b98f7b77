#include "sqStorage.h"

#include "SelectStatements.h"
#include "StatementText.h"
#include "TableShapes.h"
#include "diagnostics/interface/BugSlayer.h"

namespace sqStorage {

void CStorage::SelectDataFeed(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    SelectInto(scope, Request, Table, [](IdmRequest& request) {
        CSqlText sql;
        GetDataFeedSql(&request, sql.Buffer(), CSqlText::Size);
        return sql;
    });
}

LONG CStorage::InsertDataFeed(const wchar_t* DataFeedName, const wchar_t* DataFeedShortName,
                              const wchar_t* DataFeedDllName, const wchar_t* Clsid, int IsAsc) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const bool hasName = scope.Assert(DataFeedName != nullptr, L"n");
            const bool hasShortName = scope.Assert(DataFeedShortName != nullptr, L"sn");
            const bool hasClsid = scope.Assert(Clsid != nullptr, L"CLSID");
            LONG DataFeed = 0;
            if (hasName && hasShortName && hasClsid)
                DataFeed = RegisterDataFeed(scope, DataFeedName, DataFeedShortName, DataFeedDllName, Clsid, IsAsc);
            scope.Assert(DataFeed != 0, L"DataFeed");
            return DataFeed;
        },
        LONG{0});
}

LONG CStorage::RegisterDataFeed(const BugSlayerUtil::CScope& scope, const wchar_t* DataFeedName,
                                const wchar_t* DataFeedShortName, const wchar_t* DataFeedDllName,
                                const wchar_t* Clsid, int IsAsc) {
    const LONG deleted = GetDataFeedId1(Clsid);
    const CQuoted name(DataFeedName);
    const CQuoted shortName(DataFeedShortName);
    if (deleted != 0) {
        // The texts are escaped a second time on this road; a quote in a name comes out doubled.
        UpdateDataFeed(deleted, name.Text(), shortName.Text(), DataFeedDllName, Clsid, IsAsc, 1);
        return deleted;
    }
    const int isPrimary = IsPrimaryInstance(Clsid);
    const LONG DataFeed = GenerateId();
    if (DataFeed == 0)
        return 0;
    const CSqlText sql(L"INSERT INTO DATA_FEEDS VALUES(%d,'%s','%s','%s',%d,1,0,%d,'%s')", DataFeed, name.Text(),
                       DataFeedDllName, Clsid, isPrimary, IsAsc != 0 ? 1 : 0, shortName.Text());
    ExecuteAndNotify(scope, sql.Text(), notifyDataFeed);
    return DataFeed;
}

int CStorage::DeleteDataFeed(LONG Datafeed) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&] {
            const CSqlText sql(L"SELECT * FROM DELETE_DATA_FEED(%d)", Datafeed);
            scope.Trace(L"sql = '%s'", sql.Text());
            const int deleted = DeleteAnything(sql.Text());
            BroadcastNotifyToSinks(notifyDataFeed, 0);
            return deleted;
        },
        0);
}

void CStorage::UpdateDataFeed(LONG Datafeed, const wchar_t* DataFeedName, const wchar_t* DataFeedShortName,
                              const wchar_t* DataFeedDllName, const wchar_t* Clsid, int IsAsc, int Active) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        const bool hasKey = scope.Assert(Datafeed != 0, L"DataFeed");
        const bool hasName = scope.Assert(DataFeedName != nullptr, L"DataFeedName");
        const bool hasShortName = scope.Assert(DataFeedShortName != nullptr, L"DataFeedShortName");
        if (!scope.Assert(Clsid != nullptr, L"CLSID") || !hasKey || !hasName || !hasShortName)
            return;
        const CSqlText sql(
            L"UPDATE DATA_FEEDS SET DATA_FEED_NAME='%s', DATA_FEED_SHORT_NAME='%s', "
            L"DATA_FEED_DLL_NAME='%s', CLSID='%s', ASCII=%d, ACTIVATED=%d, DELETED=0 WHERE DATA_FEED=%d",
            CQuoted(DataFeedName).Text(), CQuoted(DataFeedShortName).Text(), DataFeedDllName, Clsid, IsAsc, Active,
            Datafeed);
        ExecuteAndNotify(scope, sql.Text(), notifyDataFeed);
    });
}

LONG CStorage::SelectDataFeed(const wchar_t* DataFeedName) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const auto table = NewLookup(scope);
            if (!table)
                return 0;
            const CStatement<128> sql(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='%s' AND DELETED=0",
                                      DataFeedName);
            return FindKey(*table, sql.Text(), DataFeedName, L"SelectDataFeed");
        },
        LONG{0});
}

} // namespace sqStorage
