#include "sqStorage.h"

#include "StatementText.h"
#include "SymbolRecord.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"
#include "platform/com/bstr.h"
#include "platform/text.h"
#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

namespace sqStorage {

namespace {

// The longest description that an insert stores whole, after escaping.
constexpr std::size_t DescriptionLimit = 62;

void CheckDates(const CStorage& storage, tagSymbol& symbol) {
    storage.checkDate(symbol.ExpirationDate);
    storage.checkDate(symbol.FirstNoticeDate);
    storage.checkDate(symbol.Delivery);
}

// As it is written: escaped, and short enough for its column. The cut may go through a doubled quote.
std::wstring StoredDescription(const BugSlayerUtil::CScope& scope, const std::wstring& description) {
    std::wstring stored = description;
    DoubleSingleQuotes(stored);
    if (stored.size() > DescriptionLimit) {
        stored = stored.substr(0, DescriptionLimit - 1) + L"\"\"";
        scope.Trace(L"Description '%s' was truncated to '%s'.", description, stored);
    }
    return stored;
}

// The texts are ready to be written. A setting that is not the symbol's own is not stored.
CSqlText InsertStatement(const CStorage& storage, const wchar_t* TableName, LONG Symbol, const tagSymbol& row) {
    return CSqlText(L"INSERT INTO %s "
                    L"VALUES(%d,'%s','%s','%s','%s',%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%f,%d,%d,'%s',%d,%d,'%s','%s')",
                    TableName, Symbol, row.SymbolName, row.SymbolRoot, row.Description, row.CUSIP, row.Category,
                    row.Datafeed, row.Exchange, row.SettingType, row.SettingType == settingCustom ? row.Setting : 0,
                    row.SessionType, row.CustomSession, row.TemplateSession, row.ContractMonth, row.ContractYear,
                    row.StrikePrice, row.CallPut, row.Margin, storage.getDateString(row.ExpirationDate),
                    row.Expired, row.ExpirationRule, storage.getDateString(row.FirstNoticeDate),
                    storage.getDateString(row.Delivery));
}

// The root and the description go in as they are given, and a setting that is not the symbol's own leaves the
// column alone.
CStatement<2048> UpdateStatement(const CStorage& storage, const wchar_t* TableName, LONG Symbol,
                                 const tagSymbol& row) {
    const CStatement<2048> set(
        L"UPDATE %s SET SYMBOL_NAME='%s',SYMBOL_ROOT='%s',DESCRIPTION='%s',CUSIP='%s',CATEGORY=%d,DATA_FEED=%d,"
        L"EXCHANGE=%d,SETTING_TYPE=%d,SESSION_TYPE=%d,CUSTOM_SESSION=%d,TEMPLATE_SESSION=%d,CONTRACT_MONTH=%d,"
        L"CONTRACT_YEAR=%d,STRIKE_PRICE=%f,CALL_PUT=%d,MARGIN=%d,EXPIRATION_DATE='%s',EXPIRED=%d,"
        L"EXPIRATION_RULE=%d,FIRST_NOTICE_DATE='%s',DELIVERY='%s'",
        TableName, CQuoted(row.SymbolName).Text(), CQuoted(row.SymbolRoot).Text(), CQuoted(row.Description).Text(),
        row.CUSIP, row.Category, row.Datafeed, row.Exchange, row.SettingType, row.SessionType, row.CustomSession,
        row.TemplateSession, row.ContractMonth, row.ContractYear, row.StrikePrice, row.CallPut, row.Margin,
        storage.getDateString(row.ExpirationDate), row.Expired, row.ExpirationRule,
        storage.getDateString(row.FirstNoticeDate), storage.getDateString(row.Delivery));
    const CStatement<64> setting =
        row.SettingType == settingCustom ? CStatement<64>(L",SETTING=%d", row.Setting) : CStatement<64>();
    const CStatement<64> where(L" WHERE SYMBOL=%d", Symbol);
    return CStatement<2048>(L"%s%s%s", set.Text(), setting.Text(), where.Text());
}

} // namespace

void CStorage::checkDate(LONG& date) const {
    if (date < dmDateTime::FirstDate)
        date = dmDateTime::FirstDate;
}

std::wstring CStorage::getDateString(LONG date) const {
    wchar_t text[255];
    dmDateTime::SDateTime::FromJulian(date).Format(text, std::size(text), L"%d.%m.%Y");
    return text;
}

LONG CStorage::InsertSymbol(const wchar_t* TableName, tagSymbol Row, LONG* Symbol) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const bool hasTable = scope.Assert(TableName != nullptr, L"TableName");
            const bool hasName = scope.Assert(Row.SymbolName != nullptr, L"sn");
            const bool hasRoot = scope.Assert(Row.SymbolRoot != nullptr, L"sr");
            const bool hasDescription = scope.Assert(Row.Description != nullptr, L"desc");
            const bool hasCusip = scope.Assert(Row.CUSIP != nullptr, L"CUSIP");
            CheckDates(*this, Row);
            if (!hasTable || !hasName || !hasRoot || !hasDescription || !hasCusip)
                return 1;
            *Symbol = 0;
            const CQuoted name(Row.SymbolName);
            const std::wstring root = platform::ToUpper(CQuoted(Row.SymbolRoot).Text());
            *Symbol = FindSymbol(name.Text(), Row);
            std::wstring description = Row.Description;
            if (description.empty() && Row.Category == categoryRooted && Row.SettingType == settingFromRoot)
                description =
                    GetDescriptionByRoot(name.Text(), root.c_str(), GetDataFeedName(Row.Datafeed).c_str());
            description = StoredDescription(scope, description);
            if (*Symbol != 0)
                return 1;
            const LONG key = GenerateId();
            if (!scope.Assert(key != 0, L"Symbol"))
                return 1;
            Row.SymbolName = name.Text();
            Row.SymbolRoot = root.c_str();
            Row.Description = description.c_str();
            ExecuteTraced(scope, InsertStatement(*this, TableName, key, Row).Text());
            // Whatever becomes of the announcement, the caller has the key of the row.
            *Symbol = key;
            NotifySymbol(notifyInsertSymbol, key);
            return 0;
        },
        LONG{1});
}

LONG CStorage::FindSymbol(const wchar_t* name, const tagSymbol& Row) {
    const auto request = NewRequest();
    const auto table = NewTable();
    request->put_SymbolName(0, platform::CBstr(name).Get());
    request->put_Datafeed(0, Row.Datafeed);
    request->put_Category(0, Row.Category);
    request->put_ExchangeId(0, Row.Exchange);
    SelectPortfolio(0, request.Get(), table.Get());
    LONG key = 0;
    // The select does not look at case and takes some categories for none; what it brings is compared to the
    // letter.
    ForEachRecord(*table, [&] {
        using namespace IDM_dmudfcom;
        if (key == 0 && udf_helper::GetFieldAsString(table, fieldSymbolName).View() == name &&
            udf_helper::GetFieldAsLong(table, fieldCategory) == Row.Category &&
            udf_helper::GetFieldAsLong(table, fieldDataFeed) == Row.Datafeed &&
            udf_helper::GetFieldAsLong(table, fieldExchange) == Row.Exchange)
            key = udf_helper::GetFieldAsLong(table, fieldSymbol);
    });
    return key;
}

void CStorage::UpdateSymbol(const wchar_t* TableName, LONG Symbol, tagSymbol Row) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        const bool hasTable = scope.Assert(TableName != nullptr, L"TableName");
        scope.Assert(Symbol != 0, L"Symbol");
        const bool hasName = scope.Assert(Row.SymbolName != nullptr, L"SymbolName");
        const bool hasRoot = scope.Assert(Row.SymbolRoot != nullptr, L"SymbolRoot");
        const bool hasDescription = scope.Assert(Row.Description != nullptr, L"Description");
        const bool hasCusip = scope.Assert(Row.CUSIP != nullptr, L"CUSIP");
        CheckDates(*this, Row);
        if (!hasTable || !hasName || !hasRoot || !hasDescription || !hasCusip)
            return;
        ExecuteTraced(scope, UpdateStatement(*this, TableName, Symbol, Row).Text());
        NotifySymbol(notifyUpdateSymbol, Symbol);
    });
}

void CStorage::UpdatePortfolio(LONG Symbol, const tagSymbol& Row) {
    const BugSlayerUtil::CScope scope(this);
    UpdateSymbol(L"PORTFOLIO", Symbol, Row);
}

void CStorage::DeleteSymbol(const wchar_t* TableName, LONG Symbol) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(TableName != nullptr, L"TableName"))
            return;
        ExecuteTraced(scope, CStatement<256>(L"DELETE FROM %s WHERE SYMBOL=%d", TableName, Symbol).Text());
        // Listeners learn that something went, not what.
        NotifySymbol(notifyDeleteSymbol, 0);
    });
}

bool CStorage::DeletePortfolio(LONG Symbol) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&] {
            DeleteOwnedBySymbol(L"PORTFOLIO", Symbol);
            DeleteSymbol(L"PORTFOLIO", Symbol);
            ascDeleteSymbol(Symbol, 1);
            return true;
        },
        false);
}

void CStorage::DeleteDictionary(LONG Symbol) {
    const BugSlayerUtil::CScope scope(this);
    DeleteOwnedBySymbol(L"DICTIONARY", Symbol);
    DeleteSymbol(L"DICTIONARY", Symbol);
    ascDeleteSymbol(Symbol, 1);
}

void CStorage::DeleteOwnedBySymbol(const wchar_t* TableName, LONG Symbol) {
    COutputRequest owner(m_Database.Get());
    const CSqlText sql(L"SELECT SETTING_TYPE,SESSION_TYPE,SETTING,CUSTOM_SESSION FROM %s WHERE SYMBOL=%d",
                       TableName, Symbol);
    if (owner.Select(sql.Text()) > 0) {
        using namespace IDM_dmudfcom;
        const CComPtr<IdmTable> row(owner.Table());
        row->First();
        if (GetField<LONG>(row, fieldSettingType) == settingCustom)
            DeleteSetting(GetField<LONG>(row, fieldSetting));
        if (GetField<LONG>(row, fieldSessionType) == sessionCustom)
            DeleteSession(GetField<LONG>(row, fieldCustomSession));
    }
    owner.Close();
}

void CStorage::NotifySymbol(ULONG Mask, LONG ValueID) {
    if (m_NotifyEnabled != 0)
        BroadcastNotifyToSinks(Mask, ValueID);
}

} // namespace sqStorage
