#include "Symbols.h"

#include "Connection.h"
#include "DatabaseReader.h"
#include "Exchanges.h"
#include "SymbolFilter.h"
#include "apps/sqstorage/ExitStatus.h"
#include "platform/com/bstr.h"
#include "platform/registry.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace sqCli {

namespace {

using platform::CBstr;

// 1 January 1900: what the store makes of an earlier day.
constexpr LONG NoDate = 2;

// An insert cuts a description that is longer, quotes counted twice; the column holds one character more.
constexpr std::size_t LongestInsertedDescription = 62;

bool IsCutByInsert(const std::string& description) {
    const std::wstring text = platform::FromUtf8(description);
    return text.size() + static_cast<std::size_t>(std::ranges::count(text, L'\'')) > LongestInsertedDescription;
}

// `call` takes what a symbol's insert and its update have in common.
template <class Call>
HRESULT WithValues(const tagSymbol& symbol, Call&& call) {
    const CBstr name(platform::FromUtf8(symbol.Name));
    const CBstr root(platform::FromUtf8(symbol.Root));
    const CBstr description(platform::FromUtf8(symbol.Description));
    const CBstr cusip(platform::FromUtf8(symbol.Cusip));
    return call(name.Get(), root.Get(), description.Get(), cusip.Get(), symbol.Category, symbol.Feed,
                symbol.Exchange, symbol.SettingType, symbol.Setting, symbol.SessionType, symbol.CustomSession,
                symbol.TemplateSession, symbol.ContractMonth, symbol.ContractYear, double{symbol.StrikePrice},
                symbol.CallPut, symbol.Margin, symbol.ExpirationDate, symbol.Expired, symbol.ExpirationRule,
                symbol.FirstNoticeDate, symbol.Delivery);
}

LONG InsertRow(CStore& store, const tagSymbol& symbol) {
    LONG key = 0;
    const HRESULT status = store.Run([&](CStore::IqxStorage& storage) {
        return WithValues(symbol, [&](auto... values) { return storage.InsertPortfolio(values..., &key); });
    });
    if (status != S_OK)
        throw CStoreRefusal("It has a symbol of that name, category, feed and exchange already: import again.");
    if (key < 1)
        throw CStoreRefusal("The store gave out no key for the symbol: look into its log.");
    return key;
}

// The row and nothing else, since what it owns is its maker's to remove.
void ForgetRow(CStore& store, LONG key, tagSymbol symbol) {
    try {
        symbol.Description.clear();
        symbol.SettingType = SettingIsExchanges;
        symbol.SessionType = SessionIsExchanges;
        UpdateSymbol(store, key, symbol);
        store.Run([&](CStore::IqxStorage& storage) { return storage.DeletePortfolio(key); });
    } catch (const CStoreRefusal&) {
        // The refusal that led here is what counts.
    }
}

// A null counts as 0, as in the store.
constexpr std::string_view SelectOwningSymbols =
    "SELECT IIF(COALESCE(P.SETTING_TYPE,0)=0,COALESCE(P.SETTING,0),NULL) AS SETTING,"
    "IIF(COALESCE(P.SESSION_TYPE,0)=0,COALESCE(P.CUSTOM_SESSION,0),NULL) AS CUSTOM_SESSION FROM PORTFOLIO P "
    "WHERE COALESCE(P.SETTING_TYPE,0)=0 OR COALESCE(P.SESSION_TYPE,0)=0";
constexpr std::string_view SelectUsedTemplates =
    "SELECT DISTINCT TEMPLATE_SESSION FROM PORTFOLIO WHERE SESSION_TYPE=2";

// The store is open, so that a second connection that is refused is one refusal more.
CDatabaseReader OpenReader() {
    try {
        return CDatabaseReader(ReadConnection());
    } catch (const CCommandError& error) {
        throw CStoreRefusal(error.what());
    } catch (const platform::CRegistryError& error) {
        throw CStoreRefusal(fmt::format("The registry cannot be used: {}", error.what()));
    }
}

// Some of it may be an exchange's.
tagOwnedRows ReadOwnedRows() {
    using IDM_dmudfcom::ITableRows;
    const auto key = [](const ITableRows& rows, ULONG row, ULONG column) {
        return static_cast<LONG>(rows.Integer(row, column));
    };
    CDatabaseReader reader = OpenReader();
    tagOwnedRows owned;
    reader.ForEach(SelectOwningSymbols, [&](const ITableRows& rows, ULONG row) {
        if (!rows.IsNull(row, 0))
            ++owned.Settings[key(rows, row, 0)];
        if (!rows.IsNull(row, 1))
            ++owned.Sessions[key(rows, row, 1)];
    });
    if (!owned.Sessions.empty())
        reader.ForEach(SelectUsedTemplates,
                       [&](const ITableRows& rows, ULONG row) { owned.Sessions.erase(key(rows, row, 0)); });
    return owned;
}

} // namespace

const std::array<std::string_view, CSymbolTable::ColumnCount> CSymbolTable::ColumnNames{
    "SYMBOL",         "SYMBOL_NAME",     "SYMBOL_ROOT",       "DESCRIPTION",  "CUSIP",          "CATEGORY",
    "DATA_FEED",      "SETTING_TYPE",    "SETTING",           "SESSION_TYPE", "CUSTOM_SESSION", "TEMPLATE_SESSION",
    "CONTRACT_MONTH", "CONTRACT_YEAR",   "STRIKE_PRICE",      "CALL_PUT",     "MARGIN",         "EXPIRATION_DATE",
    "EXPIRED",        "EXPIRATION_RULE", "FIRST_NOTICE_DATE", "DELIVERY"};

Cell DateCell(std::int64_t day) {
    return day <= NoDate ? Cell(tagNull{}) : Cell(tagDay{static_cast<std::int32_t>(day)});
}

CSymbolTable::CSymbolTable(CStore& store, LONG exchange) : m_Exchange(exchange) {
    const auto request = MakeRequest({.Exchange = exchange});
    const auto table = NewTable();
    // Without a feed the store selects what the request's other values ask for, and that may be many rows.
    store.Run([&](CStore::IqxStorage& storage) { return storage.SelectPortfolio(0, request.Get(), table.Get()); });
    m_Rows = table.As<IDM_dmudfcom::ITableRows>();
    for (std::size_t column = 0; column < m_Columns.size(); ++column)
        m_Columns[column] = static_cast<ULONG>(m_Rows->FindColumn(ColumnNames[column]));
}

std::string_view CSymbolTable::Name(ULONG row) const {
    std::string unused; // a text column's own texts need no room
    return m_Rows->Text(row, m_Columns[ColumnName], unused);
}

LONG CSymbolTable::Number(ULONG row, EColumn column) const {
    return static_cast<LONG>(m_Rows->Integer(row, m_Columns[column]));
}

std::string CSymbolTable::Text(ULONG row, EColumn column) const {
    std::string scratch;
    return std::string(m_Rows->Text(row, m_Columns[column], scratch));
}

LONG CSymbolTable::Date(ULONG row, EColumn column) const {
    const LONG day = Number(row, column);
    return day <= NoDate ? 0 : day;
}

tagSymbol CSymbolTable::At(ULONG row) const {
    return {.Name = Text(row, ColumnName),
            .Root = Text(row, ColumnRoot),
            .Description = Text(row, ColumnDescription),
            .Cusip = Text(row, ColumnCusip),
            .Category = Category(row),
            .Feed = Feed(row),
            .Exchange = m_Exchange,
            .SettingType = SettingType(row),
            .Setting = Setting(row),
            .SessionType = SessionType(row),
            .CustomSession = CustomSession(row),
            .TemplateSession = TemplateSession(row),
            .ContractMonth = Number(row, ColumnContractMonth),
            .ContractYear = Number(row, ColumnContractYear),
            .StrikePrice = static_cast<float>(m_Rows->Real(row, m_Columns[ColumnStrikePrice])),
            .CallPut = Number(row, ColumnCallPut),
            .Margin = Number(row, ColumnMargin),
            .ExpirationDate = Date(row, ColumnExpirationDate),
            .Expired = Number(row, ColumnExpired),
            .ExpirationRule = Number(row, ColumnExpirationRule),
            .FirstNoticeDate = Date(row, ColumnFirstNoticeDate),
            .Delivery = Date(row, ColumnDelivery)};
}

LONG InsertSymbol(CStore& store, const tagSymbol& symbol) {
    store.OwnedRows().Forget();
    if (!IsCutByInsert(symbol.Description))
        return InsertRow(store, symbol);
    tagSymbol bare = symbol;
    bare.Description.clear();
    const LONG key = InsertRow(store, bare);
    try {
        UpdateSymbol(store, key, symbol);
    } catch (const CStoreRefusal&) {
        ForgetRow(store, key, symbol);
        throw;
    }
    return key;
}

void UpdateSymbol(CStore& store, LONG key, const tagSymbol& symbol) {
    store.OwnedRows().Forget();
    store.Run([&](CStore::IqxStorage& storage) {
        return WithValues(symbol, [&](auto... values) { return storage.UpdatePortfolio(key, values...); });
    });
}

const tagOwnedRows& OwnedBySymbols(CStore& store) { return store.OwnedRows().Of(store); }

const tagOwnedRows& COwnedRows::Of(CStore& store) {
    if (!m_IsKept)
        m_Owned = ReadOwnedRows();
    m_IsKept = true;
    m_Owned.Settings.merge(m_Exchanges.Settings);
    m_Owned.Sessions.merge(m_Exchanges.Sessions);
    if (m_Owned.Settings.empty() && m_Owned.Sessions.empty())
        return m_Owned;
    for (const tagKeyedExchange& exchange : SelectExchanges(store)) {
        m_Exchanges.Settings.insert(m_Owned.Settings.extract(exchange.Exchange.Setting));
        m_Exchanges.Sessions.insert(m_Owned.Sessions.extract(exchange.Exchange.Session));
    }
    return m_Owned;
}

void COwnedRows::Forget() noexcept {
    m_IsKept = false;
    m_Owned = {};
    m_Exchanges = {};
}

} // namespace sqCli
