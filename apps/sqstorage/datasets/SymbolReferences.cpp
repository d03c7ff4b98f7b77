#include "SymbolReferences.h"

#include "apps/sqstorage/store/DataFeeds.h"
#include "apps/sqstorage/store/PriceSettings.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

const std::string NoName;

template <class Value>
const Value* Find(const std::map<LONG, Value>& values, LONG key) {
    const auto found = values.find(key);
    return found == values.end() ? nullptr : &found->second;
}

void Note(std::vector<std::string>& reasons, std::optional<std::string> problem) {
    if (problem)
        reasons.push_back(std::move(*problem));
}

} // namespace

CSymbolReferences::CSymbolReferences(CStore& store) : m_Exchanges(SelectExchanges(store)) {
    for (const tagKeyedExchange& exchange : m_Exchanges)
        m_ExchangeKeys.Add(exchange.Exchange.Name, exchange.Key);
    std::map<std::string, tagDataFeed> feeds;
    for (const tagKeyedDataFeed& feed : SelectDataFeeds(store)) {
        m_FeedKeys.Add(feed.Feed.Name, feed.Key);
        m_FeedNames.emplace(feed.Key, feed.Feed.Name);
        if (const auto first = feeds.emplace(feed.Feed.Name, feed.Feed).first; first->second != feed.Feed)
            m_OtherFeedsOfAName.insert(feed.Key);
    }
    for (const auto& row : SelectSettings(store).Rows)
        m_Prices.emplace(LongOf(row[0]),
                         PriceTexts{TextOf(row[1]), TextOf(row[2]), TextOf(row[3]), TextOf(row[4])});
    ReadSessions(store);
}

void CSymbolReferences::ReadSessions(CStore& store) {
    for (tagNamedSession& session : NameSessions(store)) {
        m_SessionKeys.Add(session.Session.Name, session.Key);
        m_SessionNames.emplace(session.Key, std::move(session.Session.Name));
    }
    for (tagKeyedSession& session : SelectSessions(store)) {
        if (session.Session.Type == TemplateSession)
            m_TemplateNames.insert(SessionNameId(session.Session.Name));
        m_Sessions.emplace(session.Key, std::move(session.Session));
    }
    m_Details = SelectSessionDetails(store);
}

const std::string& CSymbolReferences::FeedName(LONG key) const {
    const std::string* const name = Find(m_FeedNames, key);
    return name ? *name : NoName;
}

bool CSymbolReferences::IsFeedWritten(const tagExportRun& run, LONG key) const {
    return run.IsWritten("feeds", FeedName(key)) && !m_OtherFeedsOfAName.contains(key);
}

// A session whose name a template has taken since keeps its times.
tagOwnSession CSymbolReferences::OwnSession(LONG key) const {
    const tagSession* const session = Find(m_Sessions, key);
    const auto* const details = Find(m_Details, key);
    if (!session)
        return {};
    return {IsTemplateName(session->Name) ? std::string() : session->Name, session->TimeZone,
            details ? *details : std::vector<tagSessionDetail>()};
}

tagSymbolRow CSymbolReferences::RowOf(const tagSymbol& symbol, const std::string& exchangeName) const {
    tagSymbolRow row{symbol, FeedName(symbol.Feed), exchangeName, {}, {}, {}};
    if (symbol.SettingType == SettingIsOwn)
        if (const PriceTexts* const prices = Find(m_Prices, symbol.Setting))
            row.Prices = *prices;
    if (symbol.SessionType == SessionIsOwn)
        row.Own = OwnSession(symbol.CustomSession);
    if (symbol.SessionType == SessionIsTemplate)
        if (const std::string* const name = Find(m_SessionNames, symbol.TemplateSession))
            row.TemplateName = *name;
    return row;
}

std::optional<std::string> CSymbolReferences::Gap(const tagExportRun& run, const tagSymbol& symbol) const {
    const auto gone = [](std::string_view what, LONG key) {
        return fmt::format("its {}, with the key {}, is gone: import the symbol with another one and --update",
                           what, key);
    };
    if (symbol.SettingType == SettingIsOwn && !Find(m_Prices, symbol.Setting))
        return gone("own price setting", symbol.Setting);
    if (symbol.SessionType == SessionIsOwn && !Find(m_Sessions, symbol.CustomSession))
        return gone("own session", symbol.CustomSession);
    if (symbol.SessionType != SessionIsTemplate)
        return std::nullopt;
    const std::string* const name = Find(m_SessionNames, symbol.TemplateSession);
    if (!name)
        return gone("template session", symbol.TemplateSession);
    if (!run.IsWritten("sessions", *name))
        return fmt::format(
            "its template session, with the key {}, is left out, too: correct that as its own warning says",
            symbol.TemplateSession);
    return std::nullopt;
}

void CSymbolReferences::Test(const tagImportRun& run, tagSymbolRow& row, std::vector<std::string>& reasons) const {
    Note(reasons, m_FeedKeys.Problem(run, row.Feed));
    Note(reasons, m_ExchangeKeys.Problem(run, row.Exchange));
    if (row.Symbol.SessionType == SessionIsTemplate) {
        Note(reasons, m_SessionKeys.Problem(run, row.TemplateName));
        if (const std::string* const kept = Find(m_SessionNames, m_SessionKeys.KeyOf(row.TemplateName)))
            row.TemplateName = *kept;
    }
    if (row.Symbol.SessionType == SessionIsOwn && IsTemplateName(row.Own.Name))
        reasons.push_back(
            fmt::format("the own session is called \"{}\", which is a template's name: choose another, "
                        "or make SESSION_TYPE 2 to use the template",
                        row.Own.Name));
}

tagSymbol CSymbolReferences::SymbolOf(const tagSymbolRow& row) const {
    tagSymbol symbol = row.Symbol;
    symbol.Feed = m_FeedKeys.KeyOf(row.Feed);
    symbol.Exchange = m_ExchangeKeys.KeyOf(row.Exchange);
    symbol.Setting = 0;
    symbol.CustomSession = 0;
    symbol.TemplateSession =
        symbol.SessionType == SessionIsTemplate ? m_SessionKeys.KeyOf(row.TemplateName) : LONG{0};
    return symbol;
}

bool CSymbolReferences::IsTemplateName(const std::string& name) const {
    return m_TemplateNames.contains(SessionNameId(name));
}

} // namespace sqCli
