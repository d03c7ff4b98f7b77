#include "SymbolRules.h"

#include "NumberRules.h"
#include "TextRules.h"
#include "WeekText.h"
#include "apps/sqstorage/rows/Numbers.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>

namespace sqCli {

namespace {

using Reasons = std::vector<std::string>;

// What the columns hold, in characters.
constexpr std::size_t LongestCusip = 12;

// What the columns for small numbers hold.
constexpr LONG LeastSmall = std::numeric_limits<SHORT>::min();
constexpr LONG MostSmall = std::numeric_limits<SHORT>::max();

// In a request it stands for no category, and such a symbol could not be found.
constexpr LONG NoCategory = 254;

void Note(Reasons& reasons, std::optional<std::string> problem) {
    if (problem)
        reasons.push_back(std::move(*problem));
}

// Reads the values one column after another. A value that is not taken leaves a reason and gives 0.
class CValueReader {
public:
    CValueReader(const SymbolValues& values, Reasons& reasons) : m_Values(values), m_Reasons(reasons) {}

    std::string_view Name(std::size_t column) const { return SymbolColumns[column].Name; }
    std::string_view Value(std::size_t column) const { return m_Values[column]; }
    bool Has(std::size_t column) const { return !m_Values[column].empty(); }

    std::string Text(std::size_t column, std::size_t longest) {
        Note(m_Reasons, TextProblem(Name(column), Value(column), longest));
        return std::string(Value(column));
    }
    LONG Whole(std::size_t column, LONG least, LONG most, LONG empty = 0) {
        return ParseWholeOr(empty, Name(column), Value(column), least, most, m_Reasons).value_or(0);
    }
    // From 0 on. What else is to be said of a symbol depends on it, so that there is nothing for one that is not
    // taken.
    std::optional<LONG> Type(std::size_t column, LONG most, LONG empty) {
        return ParseWholeOr(empty, Name(column), Value(column), 0, most, m_Reasons);
    }
    LONG Small(std::size_t column) { return Whole(column, LeastSmall, MostSmall); }
    LONG Date(std::size_t column) {
        if (!Has(column))
            return 0;
        std::string reason;
        const auto day = ParseDay(Value(column), reason);
        if (!day)
            m_Reasons.push_back(fmt::format("{}: {}", Name(column), reason));
        return !day || *day == FirstDay ? 0 : day->Number;
    }
    // That the column is empty, since `why`.
    void Refuse(std::size_t column, std::string_view why) {
        if (Has(column))
            m_Reasons.push_back(
                fmt::format("{} is \"{}\", and {}: leave it empty", Name(column), Value(column), why));
    }
    void Tell(std::string reason) { m_Reasons.push_back(std::move(reason)); }
    Reasons& All() { return m_Reasons; }

private:
    const SymbolValues& m_Values;
    Reasons& m_Reasons;
};

std::string ReadName(CValueReader& reader) {
    const std::string_view name = reader.Value(SymbolName);
    Note(reader.All(), NameProblem(reader.Name(SymbolName), name, LongestSymbolName));
    if (name.ends_with(' '))
        reader.Tell(
            fmt::format("{} is \"{}\", and the store does not tell blanks at the end from none: remove them",
                        reader.Name(SymbolName), name));
    return std::string(name);
}

std::string ReadReference(CValueReader& reader, std::size_t column) {
    if (!reader.Has(column))
        reader.Tell(fmt::format("{} is empty: give a name", reader.Name(column)));
    return std::string(reader.Value(column));
}

LONG ReadCategory(CValueReader& reader) {
    const auto category =
        ParseWhole(reader.Name(SymbolCategory), reader.Value(SymbolCategory), 0, MostSmall, reader.All());
    if (category == NoCategory)
        reader.Tell(fmt::format("{} is {}, by which hosts say that there is none: give another number",
                                reader.Name(SymbolCategory), NoCategory));
    return category.value_or(0);
}

float ReadStrike(CValueReader& reader) {
    if (!reader.Has(SymbolStrikePrice))
        return 0;
    const auto strike =
        ParseKeptReal(reader.Name(SymbolStrikePrice), reader.Value(SymbolStrikePrice), -1e9, 1e9, reader.All());
    return strike.value_or(0) + 0.0F; // no zero with a sign
}

void ReadSetting(CValueReader& reader, tagSymbolRow& row) {
    const auto type = reader.Type(SymbolSettingType, SettingIsDictionarys, SettingIsExchanges);
    if (!type)
        return;
    row.Symbol.SettingType = *type;
    if (*type != SettingIsOwn) {
        for (std::size_t column = SymbolPrices; column < SymbolSessionType; ++column)
            reader.Refuse(column, "SETTING_TYPE is not 0");
        return;
    }
    const auto setting = ParseSetting({reader.Value(SymbolPrices), reader.Value(SymbolPrices + 1),
                                       reader.Value(SymbolPrices + 2), reader.Value(SymbolPrices + 3)},
                                      reader.All());
    if (setting)
        row.Prices = TextsOf(*setting);
}

tagOwnSession ReadOwnSession(CValueReader& reader) {
    tagOwnSession session;
    session.Name = reader.Text(SymbolSession, LongestText);
    session.TimeZone = reader.Whole(SymbolTimeZone, 0, LargestLong, ExchangeClock);
    const auto times = ParseWeek(reader.Name(SymbolTimes), reader.Value(SymbolTimes), reader.All());
    if (!reader.Has(SymbolTimes))
        reader.Tell(
            fmt::format("{} is empty, and SESSION_TYPE 0 wants the symbol's own times: give them like \"Mon "
                        "09:30-16:00; Tue 17:00-Wed 16:00\"",
                        reader.Name(SymbolTimes)));
    session.Times = times.value_or(std::vector<tagSessionDetail>());
    return session;
}

void ReadSession(CValueReader& reader, tagSymbolRow& row) {
    const auto type = reader.Type(SymbolSessionType, SessionIsDictionarys, SessionIsExchanges);
    if (!type)
        return;
    row.Symbol.SessionType = *type;
    if (*type == SessionIsOwn) {
        row.Own = ReadOwnSession(reader);
        return;
    }
    reader.Refuse(SymbolTimeZone, "SESSION_TYPE is not 0");
    reader.Refuse(SymbolTimes, "SESSION_TYPE is not 0");
    if (*type == SessionIsTemplate)
        row.TemplateName = ReadReference(reader, SymbolSession);
    else
        reader.Refuse(SymbolSession, "SESSION_TYPE is neither 0 nor 2");
}

Cell Whole(LONG value) { return std::int64_t{value}; }

// Of two symbols in a file, all that is not a key.
auto Told(const tagSymbol& symbol) {
    return std::tie(symbol.Name, symbol.Root, symbol.Description, symbol.Cusip, symbol.Category, symbol.SettingType,
                    symbol.SessionType, symbol.ContractMonth, symbol.ContractYear, symbol.StrikePrice,
                    symbol.CallPut, symbol.Margin, symbol.ExpirationDate, symbol.Expired, symbol.ExpirationRule,
                    symbol.FirstNoticeDate, symbol.Delivery);
}

} // namespace

bool tagSymbolRow::operator==(const tagSymbolRow& other) const {
    return Told(Symbol) == Told(other.Symbol) && Feed == other.Feed && Exchange == other.Exchange &&
           Prices == other.Prices && Own == other.Own && TemplateName == other.TemplateName;
}

SymbolId IdOf(const tagSymbolRow& row) { return {row.Symbol.Name, row.Symbol.Category, row.Feed, row.Exchange}; }

std::optional<tagSymbolRow> ParseSymbol(const SymbolValues& values, Reasons& reasons) {
    const std::size_t before = reasons.size();
    CValueReader reader(values, reasons);
    tagSymbolRow row;
    tagSymbol& symbol = row.Symbol;
    symbol.Name = ReadName(reader);
    // The store makes capitals of it when a symbol is added.
    symbol.Root =
        platform::ToUtf8(platform::ToUpper(platform::FromUtf8(reader.Text(SymbolRoot, LongestSymbolName))));
    symbol.Description = reader.Text(SymbolDescription, LongestText);
    symbol.Cusip = reader.Text(SymbolCusip, LongestCusip);
    Note(reasons, QuoteProblem(reader.Name(SymbolCusip), symbol.Cusip));
    symbol.Category = ReadCategory(reader);
    row.Feed = ReadReference(reader, SymbolFeed);
    row.Exchange = ReadReference(reader, SymbolExchange);
    ReadSetting(reader, row);
    ReadSession(reader, row);
    symbol.ContractMonth = reader.Whole(SymbolContractMonth, 0, 12);
    symbol.ContractYear = reader.Whole(SymbolContractYear, 0, 9999);
    symbol.StrikePrice = ReadStrike(reader);
    symbol.CallPut = reader.Small(SymbolCallPut);
    symbol.Margin = reader.Whole(SymbolMargin, std::numeric_limits<LONG>::min(), LargestLong);
    symbol.ExpirationDate = reader.Date(SymbolExpirationDate);
    symbol.Expired = reader.Small(SymbolExpired);
    symbol.ExpirationRule = reader.Small(SymbolExpirationRule);
    symbol.FirstNoticeDate = reader.Date(SymbolFirstNoticeDate);
    symbol.Delivery = reader.Date(SymbolDelivery);
    return reasons.size() == before ? std::optional(std::move(row)) : std::nullopt;
}

std::vector<Cell> CellsOf(const tagSymbolRow& row) {
    const tagSymbol& symbol = row.Symbol;
    const bool own = symbol.SessionType == SessionIsOwn;
    std::vector<Cell> cells{
        symbol.Name, symbol.Root,  symbol.Description,       symbol.Cusip, Whole(symbol.Category),
        row.Feed,    row.Exchange, Whole(symbol.SettingType)};
    const std::vector<Cell> prices = CellsOf(row.Prices);
    cells.insert(cells.end(), prices.begin(), prices.end());
    cells.insert(cells.end(), {Whole(symbol.SessionType), own ? row.Own.Name : row.TemplateName,
                               own ? Whole(row.Own.TimeZone) : Cell(tagNull{}), WeekText(row.Own.Times),
                               Whole(symbol.ContractMonth), Whole(symbol.ContractYear), symbol.StrikePrice,
                               Whole(symbol.CallPut), Whole(symbol.Margin), DateCell(symbol.ExpirationDate),
                               Whole(symbol.Expired), Whole(symbol.ExpirationRule),
                               DateCell(symbol.FirstNoticeDate), DateCell(symbol.Delivery)});
    return cells;
}

} // namespace sqCli
