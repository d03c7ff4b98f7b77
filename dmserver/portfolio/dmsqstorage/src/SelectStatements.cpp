#include "SelectStatements.h"

#include "StatementText.h"
#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

namespace sqStorage {

namespace {

using IDM_dmudfcom::IdmRequest;

template <auto Get>
LONG Number(IdmRequest& request, LONG mode) {
    LONG value = 0;
    (request.*Get)(mode, &value);
    return value;
}

// A text as it is compared without regard to case, ready to stand between single quotes. Empty when it is no
// filter.
template <auto Get>
std::wstring Prefix(IdmRequest& request, LONG mode) {
    platform::CBstr text;
    (request.*Get)(mode, text.Put());
    const std::wstring prefix = platform::ToUpper(CQuoted(text.Get()).Text());
    return prefix == L"*" ? std::wstring() : prefix;
}

// The join with what every symbol has, and the filters behind it.
class CSymbolClause {
public:
    template <class Value>
    void Add(const wchar_t* format, const Value& value) {
        m_Text.Append(L" AND %s", CSqlText(format, value).Text());
    }
    const wchar_t* Text() const { return m_Text.Text(); }

private:
    CSqlText m_Text{L" WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED"};
};

void AddTexts(CSymbolClause& clause, IdmRequest& request, LONG mode) {
    if (const auto name = Prefix<&IdmRequest::get_SymbolName>(request, mode); !name.empty())
        clause.Add(L"UPPER(P.SYMBOL_NAME) LIKE '%s%%'", name);
    else if (const auto description = Prefix<&IdmRequest::get_Description>(request, mode); !description.empty())
        clause.Add(L"UPPER(P.DESCRIPTION) STARTING WITH '%s'", description);
}

CSymbolClause MakeClause(IdmRequest& request, LONG mode) {
    CSymbolClause clause;
    const LONG Symbol = Number<&IdmRequest::get_Symbol>(request, mode);
    if (!IsNoSymbol(Symbol)) {
        clause.Add(L"P.SYMBOL=%d", Symbol);
        return clause;
    }
    AddTexts(clause, request, mode);
    if (const LONG Category = Number<&IdmRequest::get_Category>(request, mode); Category >= 0)
        clause.Add(L"P.CATEGORY=%d", Category);
    if (const LONG Exchange = Number<&IdmRequest::get_ExchangeId>(request, mode); Exchange > 0)
        clause.Add(L"P.EXCHANGE=%d", Exchange);
    if (const LONG Datafeed = Number<&IdmRequest::get_Datafeed>(request, mode); Datafeed > 0)
        clause.Add(L"P.DATA_FEED=%d", Datafeed);
    return clause;
}

CSymbolClause MakeCustomFutureClause(IdmRequest& request, LONG mode) {
    CSymbolClause clause;
    const LONG Symbol = Number<&IdmRequest::get_Symbol>(request, mode);
    if (!IsNoSymbol(Symbol)) {
        clause.Add(L"P.CF=%d", Symbol);
        return clause;
    }
    AddTexts(clause, request, mode);
    if (const LONG Exchange = Number<&IdmRequest::get_ExchangeId>(request, mode); Exchange > 0)
        clause.Add(L"P.EXCHANGE=%d", Exchange);
    if (const LONG Datafeed = Number<&IdmRequest::get_Datafeed>(request, mode); Datafeed > 0)
        clause.Add(L"P.DATA_FEED=%d", Datafeed);
    platform::CBstr root;
    request.get_SymbolRoot(mode, root.Put());
    if (!root.View().empty())
        clause.Add(L"UPPER(P.SYMBOL_ROOT)=UPPER('%s')", CQuoted(root.Get()).Text());
    return clause;
}

} // namespace

void GetDataFeedSql(IdmRequest* Request, wchar_t* Sql, int SqlSize) {
    if (!Request || !Sql || SqlSize < 1)
        return;
    LONG Datafeed = 0;
    LONG ActiveOnly = 0;
    Request->get_Datafeed(0, &Datafeed);
    Request->get_ActiveOnly(&ActiveOnly);
    std::wstring text = L"SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, "
                        L"ACTIVATED AS \"ACTIVE\", DELETED FROM DATA_FEEDS WHERE ";
    if (Datafeed == 0)
        text += FormatText(L"%sDELETED=0", ActiveOnly ? L"ACTIVATED=1 AND " : L"");
    else
        text += FormatText(L"DATA_FEED=%d AND ACTIVATED=1 AND DELETED=0", Datafeed);
    detail::CopyTruncated(text, Sql, static_cast<std::size_t>(SqlSize));
}

void SelectSymbol(LONG Mode, IdmRequest* Request, wchar_t* Sql, int SqlSize, const wchar_t* TableName,
                  int FullColumns) {
    const BugSlayerUtil::CScope scope;
    // Both are checked, so that both are reported.
    const bool hasRequest = scope.Assert(Request != nullptr, L"Request");
    if (!scope.Assert(TableName != nullptr, L"TableName") || !hasRequest || !Sql || SqlSize < 1)
        return;
    const wchar_t* const columns =
        FullColumns != 0
            ? L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.DESCRIPTION,P.CUSIP,P.CATEGORY,P.DATA_FEED,"
              L"D.DATA_FEED_NAME,P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,"
              L"P.TEMPLATE_SESSION,P.CONTRACT_MONTH,P.CONTRACT_YEAR,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
              L"CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.MARGIN,P.EXPIRATION_DATE,"
              L"P.EXPIRED,P.EXPIRATION_RULE,P.FIRST_NOTICE_DATE,P.DELIVERY,E.EXCHANGE_NAME "
              L"FROM %s P, EXCHANGES E, DATA_FEEDS D%s"
            : L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.CATEGORY,P.DESCRIPTION,CAST(P.STRIKE_PRICE AS FLOAT) AS "
              L"STRIKE_PRICE,CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.EXPIRATION_DATE,"
              L"E.EXCHANGE_NAME FROM %s P, EXCHANGES E, DATA_FEEDS D%s";
    const std::wstring text = FormatText(columns, TableName, MakeClause(*Request, Mode).Text());
    detail::CopyTruncated(text, Sql, static_cast<std::size_t>(SqlSize));
}

void SelectCF(LONG Mode, IdmRequest* Request, wchar_t* Sql, int SqlSize) {
    const BugSlayerUtil::CScope scope;
    if (!scope.Assert(Request != nullptr, L"Request") || !Sql || SqlSize < 1)
        return;
    const std::wstring text = FormatText(
        L"SELECT P.CF,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.CF_CODE,P.DESCRIPTION,P.CATEGORY,P.DATA_FEED,"
        L"D.DATA_FEED_NAME,P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,"
        L"P.TEMPLATE_SESSION,P.MARGIN,E.EXCHANGE_NAME FROM CUSTOM_FUTURES P, EXCHANGES E, DATA_FEEDS D%s",
        MakeCustomFutureClause(*Request, Mode).Text());
    detail::CopyTruncated(text, Sql, static_cast<std::size_t>(SqlSize));
}

} // namespace sqStorage
