#include "sqStorage.h"

#include "SelectStatements.h"
#include "StatementText.h"
#include "SymbolRecord.h"
#include "TableShapes.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"

namespace sqStorage {

using CLookupSql = CStatement<2048>;

LONG CStorage::SelectSymbol(LONG Datafeed, const wchar_t* SymbolName, LONG Category, LONG Exchange,
                            LONG ExpirationDate, const wchar_t* /*StrikePrice*/, LONG /*CallPut*/) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const auto table = NewLookup(scope);
            if (!table)
                return 0;
            checkDate(ExpirationDate);
            // The name goes in as it is.
            const CLookupSql sql(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='%s' AND CATEGORY=%d AND "
                                 L"EXCHANGE=%d AND DATA_FEED=%d",
                                 SymbolName, Category, Exchange, Datafeed);
            return FindKey(*table, sql.Text(), SymbolName, L"SelectSymbol");
        },
        LONG{0});
}

LONG CStorage::GetSymbolByName(LONG Datafeed, const wchar_t* SymbolName) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const auto table = NewLookup(scope);
            if (!table)
                return 0;
            const CLookupSql sql(L"SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=%d AND SYMBOL_NAME='%s'", Datafeed,
                                 CQuoted(SymbolName).Text());
            return FindKey(*table, sql.Text(), SymbolName, L"GetSymbolByName");
        },
        LONG{0});
}

LONG CStorage::GetSymbolByDescription(LONG Datafeed, const wchar_t* Description, BSTR* SymbolName) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const auto table = NewLookup(scope);
            if (!table)
                return 0;
            const CLookupSql sql(
                L"SELECT SYMBOL,SYMBOL_NAME FROM PORTFOLIO WHERE DATA_FEED=%d AND DESCRIPTION='%s'", Datafeed,
                CQuoted(Description).Text());
            if (!FindRow(*table, sql.Text(), Description, L"GetSymbolByDescription"))
                return 0;
            CComPtr<IdmField> name;
            if (SymbolName && SUCCEEDED(table->get_Field(1, name.Put())) && name)
                name->get_AsString(SymbolName);
            return FirstFieldAsLong(*table);
        },
        LONG{0});
}

void CStorage::GetAvailableSessions(LONG Symbol, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        Execute(CStatement<256>(L"SELECT * FROM GET_AVAILABLE_SESSIONS(%d)", Symbol).Text(), nullptr, Table);
    });
}

void CStorage::AddSymbol(tagSymbol Row, const wchar_t* ExchangeName, LONG* Symbol) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(ExchangeName != nullptr, L"ExchangeName"))
            return;
        COutputRequest exchange(m_Database.Get());
        const CStatement<256> sql(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='%s'", ExchangeName);
        if (exchange.Select(sql.Text()) < 1)
            return;
        const CComPtr<IdmTable> table(exchange.Table());
        table->First();
        Row.Exchange = GetField<LONG>(table, IDM_dmudfcom::fieldExchange);
        exchange.Close();
        Row.SettingType = settingFromExchange;
        Row.Setting = 0;
        Row.SessionType = sessionFromExchange;
        Row.CustomSession = 0;
        Row.TemplateSession = 0;
        LONG key = 0;
        InsertSymbol(L"PORTFOLIO", Row, &key);
        *Symbol = key;
    });
}

void CStorage::SelectDictionary(LONG Mode, IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    if (!Request || !Table)
        return;
    SelectInto(scope, Request, Table, [&](IdmRequest& request) {
        LONG Symbol = 0;
        // Always at 1, whatever the caller's mode.
        request.get_Symbol(1, &Symbol);
        if (!IsNoSymbol(Symbol))
            return CSqlText(
                L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.DESCRIPTION,P.CUSIP,P.CATEGORY,"
                L"P.DATA_FEED,P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,"
                L"P.TEMPLATE_SESSION,P.CONTRACT_MONTH,P.CONTRACT_YEAR,CAST(P.STRIKE_PRICE AS FLOAT) AS "
                L"STRIKE_PRICE,CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,"
                L"P.MARGIN,P.EXPIRATION_DATE,P.EXPIRED,P.EXPIRATION_RULE,P.FIRST_NOTICE_DATE,P.DELIVERY "
                L"FROM DICTIONARY P WHERE P.SYMBOL=%d ORDER BY P.SYMBOL_NAME",
                Symbol);
        CSqlText sql;
        sqStorage::SelectSymbol(Mode, &request, sql.Buffer(), CSqlText::Size, L"DICTIONARY", 1);
        return sql;
    });
}

} // namespace sqStorage
