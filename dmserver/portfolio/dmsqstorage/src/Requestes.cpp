#include "Requestes.h"

#include "SelectStatements.h"
#include "StatementText.h"
#include "SymbolInfoTable.h"
#include "diagnostics/interface/BugSlayer.h"

#include <mutex>

namespace sqStorage {

namespace {

// What a request's Type selects.
enum ECursor : LONG {
    cursorSymbols = 0,
    cursorDataFeeds = 1,
    cursorSymbol = 2,
    cursorCustomFutures = 9,
    cursorCustomFuture = 10,
};

// The one row of a procedure: of the key, or of a name within a feed, which goes into the statement as it is. Empty
// when the request gives neither.
CSqlText InfoSql(const wchar_t* procedure, const wchar_t* table, IdmRequest& request, LONG mode) {
    const BugSlayerUtil::CScope scope;
    LONG Symbol = 0;
    request.get_Symbol(mode, &Symbol);
    if (!IsNoSymbol(Symbol))
        return CSqlText(L"SELECT * FROM %s(%d)", procedure, Symbol);
    LONG Datafeed = 0;
    platform::CBstr SymbolName;
    request.get_Datafeed(mode, &Datafeed);
    request.get_SymbolName(mode, SymbolName.Put());
    if (!scope.Assert(Datafeed != 0 && !SymbolName.View().empty(), L"Datafeed && SymbolName.length()"))
        return CSqlText();
    return CSqlText(
        L"SELECT * FROM %s((SELECT FIRST(1) SYMBOL FROM %s WHERE DATA_FEED=%d AND UPPER(SYMBOL_NAME)=UPPER('%s')))",
        procedure, table, Datafeed, SymbolName.Get());
}

// Empty where no cursor is to be opened.
CSqlText CursorSql(LONG mode, IdmRequest& request, IdmTable& table) {
    CSqlText sql;
    LONG Type = 0;
    request.get_Type(&Type);
    switch (Type) {
    case cursorSymbols:
        SelectSymbol(mode, &request, sql.Buffer(), CSqlText::Size, L"PORTFOLIO", 0);
        break;
    case cursorDataFeeds:
        GetDataFeedSql(&request, sql.Buffer(), CSqlText::Size);
        break;
    case cursorSymbol:
        FillSymbolInfoTable(&table);
        sql = InfoSql(L"GET_SYMBOL_INFO", L"PORTFOLIO", request, mode);
        break;
    case cursorCustomFutures:
        SelectCF(mode, &request, sql.Buffer(), CSqlText::Size);
        break;
    case cursorCustomFuture:
        FillCustomFutureInfoTable(&table);
        sql = InfoSql(L"GET_CF_INFO", L"CUSTOM_FUTURES", request, mode);
        break;
    default:
        break;
    }
    return sql;
}

} // namespace

CRequestes::CRequestes(IDispatch* database) : m_Database(database) {}

CRequestes::~CRequestes() {
    const BugSlayerUtil::CScope scope(this);
    scope.Assert(m_Requests.empty(), L"empty()");
    m_Requests.clear();
}

LONG CRequestes::Add(LONG Mode, IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    const std::lock_guard<dm::CCriticalSection> lock(*this);
    const LONG id = ++m_LastId;
    scope.Guard([&] {
        if (!Request || !Table)
            return;
        const CSqlText sql = CursorSql(Mode, *Request, *Table);
        if (sql.View().empty())
            return;
        auto request = std::make_unique<CDatabaseRequest>(m_Database.Get());
        request->Open(sql.Text(), nullptr, Table);
        m_Requests.emplace(id, std::move(request));
    });
    return id;
}

void CRequestes::Delete(LONG Id) {
    const BugSlayerUtil::CScope scope(this);
    const std::lock_guard<dm::CCriticalSection> lock(*this);
    const auto it = m_Requests.find(Id);
    if (scope.Assert(m_Requests.end() != it, L"end()!=it"))
        m_Requests.erase(it);
}

LONG CRequestes::Fetch(LONG Id, LONG Count) {
    const BugSlayerUtil::CScope scope(this);
    const std::lock_guard<dm::CCriticalSection> lock(*this);
    const auto it = m_Requests.find(Id);
    return it == m_Requests.end() ? 0 : scope.Guard([&] { return it->second->Fetch(Count); }, LONG{0});
}

} // namespace sqStorage
