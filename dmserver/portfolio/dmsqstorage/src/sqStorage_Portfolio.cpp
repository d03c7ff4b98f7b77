#include "sqStorage.h"

#include "SelectPortfolioImpl.h"
#include "SelectStatements.h"
#include "StatementText.h"
#include "SymbolRecord.h"
#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/bstr.h"
#include "platform/com/com_error.h"

namespace sqStorage {

namespace {

using CPortfolioSql = CStatement<4096>;

constexpr const wchar_t* SymbolInfoColumns =
    L"SELECT SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,EXCHANGE_NAME,"
    L"EXCHANGE_TIME_ZONE_INFORMATION,SETTING_TYPE,SETTING,CUSTOM_SETTING,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,"
    L"MIN_MOVEMENT,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,SESSIONS_STRING,SESSIONS_TIME_ZONE_INFORMATION,"
    L"STRIKE_PRICE,CAST(STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,CONTRACT_MONTH,CONTRACT_YEAR,CALL_PUT,"
    L"MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY,EXCHANGE_GMT,LOCAL_GMT FROM ";

// What a request says of the symbols it wants.
struct tagWanted {
    LONG Symbol = 0;
    platform::CBstr SymbolName;
    LONG Datafeed = 0;
    LONG Category = categoryNone;
    LONG ExchangeId = 0;

    tagWanted(IdmRequest& request, LONG mode) {
        platform::ThrowIfFailed(request.get_Symbol(mode, &Symbol));
        platform::ThrowIfFailed(request.get_SymbolName(mode, SymbolName.Put()));
        platform::ThrowIfFailed(request.get_Datafeed(mode, &Datafeed));
        platform::ThrowIfFailed(request.get_Category(mode, &Category));
        platform::ThrowIfFailed(request.get_ExchangeId(mode, &ExchangeId));
    }
    bool HasCategory() const { return Category != categoryNone && Category != categoryAny; }
    bool HasExchange() const { return ExchangeId > 0; }
};

// One symbol, by its name within a feed.
std::wstring NamedSymbolCondition(const tagWanted& wanted) {
    std::wstring condition = FormatText(L"DATA_FEED=%d AND UPPER(SYMBOL_NAME)=UPPER('%s')", wanted.Datafeed,
                                        CQuoted(wanted.SymbolName.Get()).Text());
    if (wanted.HasCategory())
        condition += FormatText(L" AND CATEGORY=%d", wanted.Category);
    if (wanted.HasExchange())
        condition += FormatText(L" AND EXCHANGE=%d", wanted.ExchangeId);
    return condition;
}

CPortfolioSql RequestSql(IdmRequest& request, LONG mode) {
    const tagWanted wanted(request, mode);
    if (!IsNoSymbol(wanted.Symbol))
        return CPortfolioSql(L"%sGET_SYMBOL_INFO(%d)", SymbolInfoColumns, wanted.Symbol);
    if (wanted.Datafeed != 0)
        return CPortfolioSql(L"%sGET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE %s))",
                             SymbolInfoColumns, NamedSymbolCondition(wanted));
    CPortfolioSql sql;
    SelectSymbol(mode, &request, sql.Buffer(), CPortfolioSql::Size, L"PORTFOLIO", 1);
    return sql;
}

} // namespace

void CStorage::SelectPortfolio(LONG Mode, IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!Table)
            return;
        if (Request)
            Execute(RequestSql(*Request, Mode).Text(), nullptr, Table);
        else
            select_portfolio_impl::CSelectPortfolioHelper(m_Database.Get()).SelectAllPortfolio(Table);
        AdjustRootSettings(Table, false);
    });
}

} // namespace sqStorage
