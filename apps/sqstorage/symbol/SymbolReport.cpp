#include "SymbolReport.h"

#include "apps/sqstorage/datasets/WeekText.h"
#include "apps/sqstorage/store/Exchanges.h"
#include "apps/sqstorage/store/Symbols.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace sqCli {

namespace {

constexpr std::string_view Own = "own";
constexpr std::string_view FromExchange = "exchange";
constexpr std::string_view FromTemplate = "template";
constexpr std::string_view FromDictionary = "dictionary";
constexpr std::string_view FromMachine = "machine";

constexpr std::string_view AnotherOne = "import the symbol with another one and --update";

constexpr std::array<std::string_view, 4> PriceNames{"PRICE_SCALE", "POINT_VALUE", "DAILY_LIMIT", "MIN_MOVEMENT"};

using Details = std::vector<tagSessionDetail>;

// The store's answer for one symbol.
class CSymbolInfo {
public:
    CSymbolInfo(CStore& store, LONG symbol) {
        const auto storage = store.As<CStore::IqxStorage>();
        m_Rows = store.SelectBy([&](CStore::IdmRequest* request, CStore::IdmTable* table) {
            request->put_Symbol(0, symbol);
            return storage->SelectPortfolio(0, request, table);
        });
        if (m_Rows.Rows.empty())
            throw CStoreRefusal("The symbol is not there any more: look for it again.");
    }

    const Cell& operator[](std::string_view column) const { return m_Rows.Rows.front()[ColumnOf(m_Rows, column)]; }
    LONG Number(std::string_view column) const { return LongOf((*this)[column]); }
    std::string Text(std::string_view column) const { return TextOf((*this)[column]); }

private:
    tagRowSet m_Rows;
};

std::optional<tagExchange> FindExchange(CStore& store, LONG key) {
    for (auto& exchange : SelectExchanges(store))
        if (exchange.Key == key)
            return std::move(exchange.Exchange);
    return std::nullopt;
}

// 0 asks the store for something else, so that it names no row.
std::optional<tagSession> FindSession(CStore& store, LONG key) {
    if (key == 0)
        return std::nullopt;
    const tagRowSet rows = store.Select(&CStore::IqxStorage::SelectSession,
                                        [&](CStore::IdmRequest& request) { request.put_SessionId(key); });
    if (rows.Rows.empty())
        return std::nullopt;
    const auto at = ColumnsOf<3>(rows, {"SESSION_NAME", "SESSION_TYPE", "TIME_ZONE"});
    const auto& row = rows.Rows.front();
    return tagSession{TextOf(row[at[0]]), LongOf(row[at[1]]), LongOf(row[at[2]])};
}

std::optional<std::array<Cell, PriceNames.size()>> FindPrices(CStore& store, LONG key) {
    if (key == 0)
        return std::nullopt;
    const tagRowSet rows = store.Select(&CStore::IqxStorage::SelectSetting,
                                        [&](CStore::IdmRequest& request) { request.put_SettingId(key); });
    if (rows.Rows.empty())
        return std::nullopt;
    const auto at = ColumnsOf(rows, PriceNames);
    std::array<Cell, PriceNames.size()> prices;
    std::ranges::transform(at, prices.begin(), [&](std::size_t place) { return rows.Rows.front()[place]; });
    return prices;
}

// What hosts are told of the times: minutes of the week.
std::vector<std::pair<LONG, LONG>> MinutesOf(const Details& details) {
    const auto minute = [](tagWeekday day, tagClockTime time) { return day.Number * 1440 + time.Seconds / 60; };
    std::vector<std::pair<LONG, LONG>> minutes;
    for (const tagSessionDetail& detail : details)
        minutes.emplace_back(minute(detail.StartDay, detail.StartTime), minute(detail.EndDay, detail.EndTime));
    std::ranges::sort(minutes);
    return minutes;
}

std::string ClockWords(LONG timeZone) {
    switch (timeZone) {
    case LocalClock:
        return fmt::format("{}, the clock of this machine", timeZone);
    case UtcClock:
        return fmt::format("{}, UTC", timeZone);
    case ExchangeClock:
        return fmt::format("{}, the clock of the exchange", timeZone);
    default:
        return fmt::format("{}, no clock that is known here", timeZone);
    }
}

std::string SettingWords(LONG type) {
    constexpr std::array words{"its own", "that of the exchange", "that of the dictionary"};
    return type >= 0 && type < LONG{words.size()}
               ? fmt::format("{}, {}", type, words[static_cast<std::size_t>(type)])
               : fmt::format("{}, that of the exchange", type);
}

std::string SessionWords(LONG type) {
    constexpr std::array words{"its own", "that of the exchange", "a template", "that of the dictionary"};
    return type >= 0 && type < LONG{words.size()}
               ? fmt::format("{}, {}", type, words[static_cast<std::size_t>(type)])
               : fmt::format("{}, that of the exchange", type);
}

class CReport {
public:
    CReport(CStore& store, const std::string& feedName, LONG symbol)
        : m_Store(store), m_Info(store, symbol), m_Exchange(FindExchange(store, m_Info.Number("EXCHANGE"))) {
        if (!m_Exchange)
            Miss("exchange of the symbol", m_Info.Number("EXCHANGE"),
                 fmt::format("no list shows the symbol, so import it with an exchange that is there, and have a "
                             "host delete the one with the key {}",
                             symbol));
        AddIdentity(symbol, feedName);
        AddSetting();
        AddSession();
        AddContract();
        AddClocks();
    }

    tagSymbolReport Take() { return std::move(m_Report); }

private:
    void Add(std::string_view column, Cell value, std::string_view from, std::vector<std::string> lines = {}) {
        m_Report.Values.push_back({column, std::move(value), from, std::move(lines)});
    }
    void AddOwn(std::initializer_list<std::string_view> columns) {
        for (const std::string_view column : columns)
            Add(column, m_Info[column], Own);
    }
    void AddDate(std::string_view column) {
        const auto* const day = std::get_if<tagDay>(&m_Info[column]);
        Add(column, DateCell(day ? day->Number : 0), Own);
    }
    void Miss(std::string_view what, LONG key, std::string_view advice) {
        m_Report.Gaps.push_back(fmt::format("The {}, with the key {}, is gone: {}.", what, key, advice));
    }

    void AddIdentity(LONG symbol, const std::string& feedName) {
        Add("SYMBOL", std::int64_t{symbol}, Own);
        AddOwn({"SYMBOL_NAME", "SYMBOL_ROOT", "DESCRIPTION", "CUSIP", "CATEGORY"});
        Add("DATA_FEED_NAME", feedName, Own);
        AddOwn({"EXCHANGE_NAME"});
    }

    // A symbol that asks the dictionary has its exchange's values where the dictionary has none.
    std::string_view SettingSource(LONG type) {
        if (type == SettingIsOwn)
            return Own;
        const auto prices = m_Exchange ? FindPrices(m_Store, m_Exchange->Setting) : std::nullopt;
        if (m_Exchange && !prices)
            Miss("price setting of the exchange", m_Exchange->Setting,
                 "import the exchange with prices and --update");
        const auto differs = [&](std::size_t price) { return m_Info[PriceNames[price]] != (*prices)[price]; };
        return type == SettingIsDictionarys && prices && (differs(0) || differs(1) || differs(2) || differs(3))
                   ? FromDictionary
                   : FromExchange;
    }

    void AddSetting() {
        const LONG type = m_Info.Number("SETTING_TYPE");
        m_Report.SettingFrom = SettingSource(type);
        if (type == SettingIsOwn && !FindPrices(m_Store, m_Info.Number("CUSTOM_SETTING")))
            Miss("own price setting of the symbol", m_Info.Number("CUSTOM_SETTING"), AnotherOne);
        Add("SETTING_TYPE", std::int64_t{type}, Own, {SettingWords(type)});
        for (const std::string_view price : PriceNames)
            Add(price, m_Info[price], m_Report.SettingFrom);
    }

    LONG SessionKey(LONG type) const {
        if (type == SessionIsOwn)
            return m_Info.Number("CUSTOM_SESSION");
        if (type == SessionIsTemplate)
            return m_Info.Number("TEMPLATE_SESSION");
        return m_Exchange ? m_Exchange->Session : 0;
    }

    void MissSession(LONG type, LONG key) {
        if (type == SessionIsOwn || type == SessionIsTemplate)
            Miss("session of the symbol", key, AnotherOne);
        else if (m_Exchange)
            Miss("session of the exchange", key, "import the exchange with another one and --update");
    }

    void AddSession() {
        const LONG type = m_Info.Number("SESSION_TYPE");
        const LONG key = SessionKey(type);
        std::optional<tagSession> session = FindSession(m_Store, key);
        if (!session)
            MissSession(type, key);
        Details details = session ? SelectSessionDetails(m_Store, key) : Details();
        m_Report.SessionFrom = type == SessionIsOwn ? Own : type == SessionIsTemplate ? FromTemplate : FromExchange;
        const auto told = ParseSessionsString(m_Info.Text("SESSIONS_STRING"));
        if (type == SessionIsDictionarys && told && MinutesOf(*told) != MinutesOf(details)) {
            m_Report.SessionFrom = FromDictionary;
            session.reset();
            details = *told;
        }
        Add("SESSION_TYPE", std::int64_t{type}, Own, {SessionWords(type)});
        AddSession(session, details);
    }

    void AddSession(const std::optional<tagSession>& session, const Details& details) {
        const std::string_view from = m_Report.SessionFrom;
        std::vector<std::string> lines;
        std::ranges::transform(details, std::back_inserter(lines), StretchText);
        Add("SESSION_NAME", session ? session->Name : std::string(), from);
        if (session)
            Add("TIME_ZONE", std::int64_t{session->TimeZone}, from, {ClockWords(session->TimeZone)});
        else
            Add("TIME_ZONE", tagNull{}, from);
        Add("SESSION_TIMES", WeekText(details), from, std::move(lines));
        Add("SESSIONS_STRING", m_Info["SESSIONS_STRING"], from);
        Add("SESSIONS_TIME_ZONE_INFORMATION", m_Info["SESSIONS_TIME_ZONE_INFORMATION"],
            session ? ClockSource(session->TimeZone) : from);
    }

    // The session says whose clock it is, and the clock says its zone. UTC needs nobody to say it.
    std::string_view ClockSource(LONG timeZone) const {
        return timeZone == LocalClock      ? FromMachine
               : timeZone == ExchangeClock ? FromExchange
                                           : m_Report.SessionFrom;
    }

    void AddContract() {
        AddOwn({"CONTRACT_MONTH", "CONTRACT_YEAR", "STRIKE_PRICE", "CALL_PUT", "MARGIN"});
        AddDate("EXPIRATION_DATE");
        AddOwn({"EXPIRED", "EXPIRATION_RULE"});
        AddDate("FIRST_NOTICE_DATE");
        AddDate("DELIVERY");
    }

    void AddClocks() {
        Add("EXCHANGE_TIME_ZONE_INFORMATION", m_Info["EXCHANGE_TIME_ZONE_INFORMATION"], FromExchange);
        Add("EXCHANGE_GMT", m_Info["EXCHANGE_GMT"], FromExchange);
        Add("LOCAL_GMT", m_Info["LOCAL_GMT"], FromMachine);
    }

    CStore& m_Store;
    CSymbolInfo m_Info;
    std::optional<tagExchange> m_Exchange;
    tagSymbolReport m_Report;
};

} // namespace

tagSymbolReport ReportSymbol(CStore& store, const std::string& feedName, LONG symbol) {
    return CReport(store, feedName, symbol).Take();
}

} // namespace sqCli
