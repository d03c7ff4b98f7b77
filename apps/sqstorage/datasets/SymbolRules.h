// Symbols as the rows of a file, and what the store takes of them.
#pragma once

#include "PriceRules.h"
#include "TableFile.h"
#include "apps/sqstorage/rows/RowSet.h"
#include "apps/sqstorage/store/Sessions.h"
#include "apps/sqstorage/store/Symbols.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace sqCli {

enum ESymbolColumn : std::size_t {
    SymbolName,
    SymbolRoot,
    SymbolDescription,
    SymbolCusip,
    SymbolCategory,
    SymbolFeed,
    SymbolExchange,
    SymbolSettingType,
    SymbolPrices, // four columns
    SymbolSessionType = SymbolPrices + PriceColumns.size(),
    SymbolSession,
    SymbolTimeZone,
    SymbolTimes,
    SymbolContractMonth,
    SymbolContractYear,
    SymbolStrikePrice,
    SymbolCallPut,
    SymbolMargin,
    SymbolExpirationDate,
    SymbolExpired,
    SymbolExpirationRule,
    SymbolFirstNoticeDate,
    SymbolDelivery,
    SymbolColumnCount
};

inline constexpr std::array<tagColumnRule, SymbolColumnCount> SymbolColumns{
    tagColumnRule{"SYMBOL_NAME", true},
    tagColumnRule{"SYMBOL_ROOT", false},
    tagColumnRule{"DESCRIPTION", false},
    tagColumnRule{"CUSIP", false},
    tagColumnRule{"CATEGORY", true},
    tagColumnRule{"DATA_FEED_NAME", true},
    tagColumnRule{"EXCHANGE_NAME", true},
    tagColumnRule{"SETTING_TYPE", false},
    tagColumnRule{PriceColumns[0].Name, false},
    tagColumnRule{PriceColumns[1].Name, false},
    tagColumnRule{PriceColumns[2].Name, false},
    tagColumnRule{PriceColumns[3].Name, false},
    tagColumnRule{"SESSION_TYPE", false},
    tagColumnRule{"SESSION_NAME", false},
    tagColumnRule{"TIME_ZONE", false},
    tagColumnRule{"SESSION_TIMES", false},
    tagColumnRule{"CONTRACT_MONTH", false},
    tagColumnRule{"CONTRACT_YEAR", false},
    tagColumnRule{"STRIKE_PRICE", false},
    tagColumnRule{"CALL_PUT", false},
    tagColumnRule{"MARGIN", false},
    tagColumnRule{"EXPIRATION_DATE", false},
    tagColumnRule{"EXPIRED", false},
    tagColumnRule{"EXPIRATION_RULE", false},
    tagColumnRule{"FIRST_NOTICE_DATE", false},
    tagColumnRule{"DELIVERY", false}};

using SymbolValues = std::array<std::string_view, SymbolColumnCount>;

// A symbol's own session, without its key.
struct tagOwnSession {
    std::string Name; // may be empty
    LONG TimeZone = ExchangeClock;
    std::vector<tagSessionDetail> Times;
    friend bool operator==(const tagOwnSession&, const tagOwnSession&) = default;
};

struct tagSymbolRow {
    tagSymbol Symbol; // without keys
    std::string Feed;
    std::string Exchange;
    PriceTexts Prices;        // of its own setting
    tagOwnSession Own;        // its own session
    std::string TemplateName; // its template
    bool operator==(const tagSymbolRow& other) const;
};

// By what symbols are told apart: name, category, feed and exchange.
using SymbolId = std::tuple<std::string, LONG, std::string, std::string>;
[[nodiscard]] SymbolId IdOf(const tagSymbolRow& row);

// The row that the values make; nothing when they make none. Each fault is added to the reasons. Whether what it
// names is there, it does not look.
[[nodiscard]] std::optional<tagSymbolRow> ParseSymbol(const SymbolValues& values,
                                                      std::vector<std::string>& reasons);
// In the order of the columns.
[[nodiscard]] std::vector<Cell> CellsOf(const tagSymbolRow& row);

} // namespace sqCli
