// Symbols of the portfolio, as the store keeps them. A symbol names its feed, its exchange and its template by key.
// It may have a price setting and a session of its own: they go when it goes.
//
// The store joins symbols with their feed and their exchange, so that one whose feed or exchange is gone is in no
// table here. What it owns is owned all the same.
//
// Errors: CStoreRefusal.
#pragma once

#include "Store.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace sqCli {

// What the columns of its name and its root hold, in characters.
inline constexpr std::size_t LongestSymbolName = 31;

// Where a symbol's prices come from.
inline constexpr LONG SettingIsOwn = 0;
inline constexpr LONG SettingIsExchanges = 1;
inline constexpr LONG SettingIsDictionarys = 2;

// Where its trading times come from.
inline constexpr LONG SessionIsOwn = 0;
inline constexpr LONG SessionIsExchanges = 1;
inline constexpr LONG SessionIsTemplate = 2;
inline constexpr LONG SessionIsDictionarys = 3;

// The day of 1 January 1900, which stands for no date, is 0 here.
struct tagSymbol {
    std::string Name;
    std::string Root;
    std::string Description;
    std::string Cusip;
    LONG Category = 0;
    LONG Feed = 0;
    LONG Exchange = 0;
    LONG SettingType = SettingIsExchanges;
    LONG Setting = 0;
    LONG SessionType = SessionIsExchanges;
    LONG CustomSession = 0;
    LONG TemplateSession = 0;
    LONG ContractMonth = 0;
    LONG ContractYear = 0;
    float StrikePrice = 0; // as in the database
    LONG CallPut = 0;
    LONG Margin = 0;
    LONG ExpirationDate = 0;
    LONG Expired = 0;
    LONG ExpirationRule = 0;
    LONG FirstNoticeDate = 0;
    LONG Delivery = 0;
};

// What stands for a date in the store, as a cell: null when there is none.
[[nodiscard]] Cell DateCell(std::int64_t day);

// All symbols of one exchange, in the compact form in which they came: about 200 bytes for each.
class CSymbolTable {
public:
    CSymbolTable(CStore& store, LONG exchange);

    [[nodiscard]] ULONG Count() const { return m_Rows->RowCount(); }
    [[nodiscard]] LONG Key(ULONG row) const { return Number(row, ColumnKey); }
    // Good while the table lives.
    [[nodiscard]] std::string_view Name(ULONG row) const;
    [[nodiscard]] LONG Category(ULONG row) const { return Number(row, ColumnCategory); }
    [[nodiscard]] LONG Feed(ULONG row) const { return Number(row, ColumnFeed); }
    [[nodiscard]] LONG SettingType(ULONG row) const { return Number(row, ColumnSettingType); }
    [[nodiscard]] LONG Setting(ULONG row) const { return Number(row, ColumnSetting); }
    [[nodiscard]] LONG SessionType(ULONG row) const { return Number(row, ColumnSessionType); }
    [[nodiscard]] LONG CustomSession(ULONG row) const { return Number(row, ColumnCustomSession); }
    [[nodiscard]] LONG TemplateSession(ULONG row) const { return Number(row, ColumnTemplateSession); }
    [[nodiscard]] tagSymbol At(ULONG row) const;

private:
    enum EColumn : std::size_t {
        ColumnKey,
        ColumnName,
        ColumnRoot,
        ColumnDescription,
        ColumnCusip,
        ColumnCategory,
        ColumnFeed,
        ColumnSettingType,
        ColumnSetting,
        ColumnSessionType,
        ColumnCustomSession,
        ColumnTemplateSession,
        ColumnContractMonth,
        ColumnContractYear,
        ColumnStrikePrice,
        ColumnCallPut,
        ColumnMargin,
        ColumnExpirationDate,
        ColumnExpired,
        ColumnExpirationRule,
        ColumnFirstNoticeDate,
        ColumnDelivery,
        ColumnCount
    };
    static const std::array<std::string_view, ColumnCount> ColumnNames;

    [[nodiscard]] LONG Number(ULONG row, EColumn column) const;
    [[nodiscard]] std::string Text(ULONG row, EColumn column) const;
    [[nodiscard]] LONG Date(ULONG row, EColumn column) const;

    LONG m_Exchange;
    platform::CComPtr<IDM_dmudfcom::ITableRows> m_Rows;
    std::array<ULONG, ColumnCount> m_Columns{};
};

// Returns the key. Refused when the portfolio has a symbol of that name, category, feed and exchange; the store
// then overlooks those whose name has a quote, or differs in case from another one's.
LONG InsertSymbol(CStore& store, const tagSymbol& symbol);
// A setting that is not the symbol's own leaves the number of the old one in the row.
void UpdateSymbol(CStore& store, LONG key, const tagSymbol& symbol);

// The settings and sessions that symbols own, with how many symbols have each. What an exchange has, or symbols
// share as a template, is nobody's own.
struct tagOwnedRows {
    std::map<LONG, std::size_t> Settings;
    std::map<LONG, std::size_t> Sessions;
};
// Good until the next call.
[[nodiscard]] const tagOwnedRows& OwnedBySymbols(CStore& store);

// What symbols own, kept with their store from when it is first asked for until a symbol is written. The database
// is asked for the owning symbols' two keys, on a connection of its own: symbols that own nothing cost no memory.
// An exchange may take something, or give it up, at any time, so that the exchanges are asked for again at each
// call.
class COwnedRows {
public:
    [[nodiscard]] bool IsKept() const noexcept { return m_IsKept; }

private:
    friend const tagOwnedRows& OwnedBySymbols(CStore& store);
    friend LONG InsertSymbol(CStore& store, const tagSymbol& symbol);
    friend void UpdateSymbol(CStore& store, LONG key, const tagSymbol& symbol);

    [[nodiscard]] const tagOwnedRows& Of(CStore& store);
    void Forget() noexcept;

    bool m_IsKept = false;
    tagOwnedRows m_Owned;
    tagOwnedRows m_Exchanges; // the rest of what was read
};

} // namespace sqCli
