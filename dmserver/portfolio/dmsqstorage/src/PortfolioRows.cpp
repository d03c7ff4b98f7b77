#include "PortfolioRows.h"

#include "SymbolRecord.h"
#include "platform/com/com_error.h"
#include "platform/text.h"
#include "unicomp/datetimeutils/interface/LocalTimeConvert.h"

#include <algorithm>
#include <span>

namespace select_portfolio_impl {

namespace {

using sqStorage::sessionCustom;
using sqStorage::sessionTemplate;
using sqStorage::settingCustom;
using sqStorage::zoneExchange;
using sqStorage::zoneGmt;
using sqStorage::zoneLocal;

tagSharedText Shared(const std::wstring& text) { return {platform::ToUtf8(text)}; }

} // namespace

CPortfolioRows::CPortfolioRows(IDM_dmudfcom::ITableRows& table, const Exchanges& exchanges,
                               const DataFeeds& dataFeeds, const Settings& settings, const Sessions& sessions)
    : m_Table(table), m_Columns(FindColumns(table)), m_Exchange(exchanges), m_DataFeed(dataFeeds),
      m_Setting(settings), m_Session(sessions) {
    const auto local = dmDateTime::TimeZoneInformation::CreateLocal();
    m_LocalGmt = -LONG{local.Bias};
    m_LocalZone = Shared(local.ToString());
    m_Gmt = Shared(dmDateTime::TimeZoneInformation().ToString());
}

CPortfolioRows::tagColumns CPortfolioRows::FindColumns(const IDM_dmudfcom::ITableRows& table) {
    const auto find = [&table](const char* name) {
        const LONG column = table.FindColumn(name);
        if (column < 0)
            platform::ThrowStatus(E_INVALIDARG, L"the table has no field " + platform::FromUtf8(name));
        return static_cast<ULONG>(column);
    };
    return {.Exchange = find("EXCHANGE"),
            .DataFeed = find("DATA_FEED"),
            .DataFeedName = find("DATA_FEED_NAME"),
            .ExchangeName = find("EXCHANGE_NAME"),
            .ExchangeZone = find("EXCHANGE_TIME_ZONE_INFORMATION"),
            .SettingType = find("SETTING_TYPE"),
            .Setting = find("SETTING"),
            .CustomSetting = find("CUSTOM_SETTING"),
            .SessionType = find("SESSION_TYPE"),
            .CustomSession = find("CUSTOM_SESSION"),
            .TemplateSession = find("TEMPLATE_SESSION"),
            .PriceScale = find("PRICE_SCALE"),
            .PointValue = find("POINT_VALUE"),
            .DailyLimit = find("DAILY_LIMIT"),
            .MinMovement = find("MIN_MOVEMENT"),
            .SessionsString = find("SESSIONS_STRING"),
            .SessionsZone = find("SESSIONS_TIME_ZONE_INFORMATION"),
            .ExchangeGmt = find("EXCHANGE_GMT"),
            .LocalGmt = find("LOCAL_GMT")};
}

void CPortfolioRows::CompleteAll() {
    const ULONG count = m_Table.RowCount();
    for (ULONG first = 0; first < count; first += BlockRows)
        CompleteBlock(first, std::min(BlockRows, count - first));
}

void CPortfolioRows::CompleteBlock(ULONG first, ULONG count) {
    Read(first, count);
    ULONG done = 0;
    try {
        for (; done < count; ++done)
            Complete(done);
    } catch (...) {
        Write(first, done);
        // The one thing that the failing row has by then.
        m_Table.SetInteger(first + done, m_Columns.LocalGmt, m_LocalGmt);
        throw;
    }
    Write(first, count);
}

void CPortfolioRows::Read(ULONG first, ULONG count) {
    tagStored& stored = m_Block->Stored;
    const auto read = [&](ULONG column, Cells<LONG>& cells) {
        m_Table.GetIntegers(column, first, std::span(cells).first(count));
    };
    read(m_Columns.Exchange, stored.Exchange);
    read(m_Columns.DataFeed, stored.DataFeed);
    read(m_Columns.SettingType, stored.SettingType);
    read(m_Columns.Setting, stored.Setting);
    read(m_Columns.SessionType, stored.SessionType);
    read(m_Columns.CustomSession, stored.CustomSession);
    read(m_Columns.TemplateSession, stored.TemplateSession);
}

void CPortfolioRows::Complete(ULONG row) {
    const tagStored& stored = m_Block->Stored;
    tagComputed& computed = m_Block->Computed;
    computed.LocalGmt[row] = m_LocalGmt;
    const tagExchange& exchange = m_Exchange.Get(stored.Exchange[row]);
    const tagDataFeed& feed = m_DataFeed.Get(stored.DataFeed[row]);
    const LONG settingId = stored.SettingType[row] == settingCustom ? stored.Setting[row] : exchange.Setting;
    const tagSetting& setting = m_Setting.Get(settingId);
    const LONG sessionType = stored.SessionType[row];
    const LONG sessionId = sessionType == sessionCustom     ? stored.CustomSession[row]
                           : sessionType == sessionTemplate ? stored.TemplateSession[row]
                                                            : exchange.Session;
    const tagSession& session = m_Session.Get(sessionId);
    computed.SessionsString[row] = &SessionsStringOf(session);
    computed.SessionsZone[row] = &SessionsZoneOf(session, exchange);
    computed.DataFeedName[row] = &feed.Name;
    computed.ExchangeName[row] = &exchange.Name;
    computed.ExchangeZone[row] = &exchange.TimeZoneInformation;
    computed.Setting[row] = settingId;
    computed.PriceScale[row] = setting.PriceScale;
    computed.PointValue[row] = setting.PointValue;
    computed.DailyLimit[row] = setting.DailyLimit;
    computed.MinMovement[row] = setting.MinMovement;
    computed.ExchangeGmt[row] = static_cast<LONG>(0U - static_cast<ULONG>(exchange.Bias));
}

const tagSharedText& CPortfolioRows::SessionsStringOf(const tagSession& session) const {
    if (session.SessionsString.Text.empty())
        session.SessionsString = Shared(MakeSessionsString(session));
    return session.SessionsString;
}

const tagSharedText& CPortfolioRows::SessionsZoneOf(const tagSession& session, const tagExchange& exchange) const {
    switch (session.TimeZone) {
    case zoneLocal:
        return m_LocalZone;
    case zoneGmt:
        return m_Gmt;
    case zoneExchange:
        return exchange.SessionsTimeZoneInformation;
    default:
        return m_NoZone;
    }
}

void CPortfolioRows::Write(ULONG first, ULONG count) {
    const tagComputed& computed = m_Block->Computed;
    const auto text = [&](ULONG column, const Cells<const tagSharedText*>& cells) {
        m_Table.SetTexts(column, first, std::span(cells).first(count));
    };
    const auto integer = [&](ULONG column, const Cells<LONG>& cells) {
        m_Table.SetIntegers(column, first, std::span(cells).first(count));
    };
    const auto real = [&](ULONG column, const Cells<double>& cells) {
        m_Table.SetReals(column, first, std::span(cells).first(count));
    };
    integer(m_Columns.LocalGmt, computed.LocalGmt);
    text(m_Columns.DataFeedName, computed.DataFeedName);
    text(m_Columns.ExchangeName, computed.ExchangeName);
    text(m_Columns.ExchangeZone, computed.ExchangeZone);
    WriteCustomSetting(first, count);
    integer(m_Columns.Setting, computed.Setting);
    integer(m_Columns.PriceScale, computed.PriceScale);
    real(m_Columns.PointValue, computed.PointValue);
    integer(m_Columns.DailyLimit, computed.DailyLimit);
    real(m_Columns.MinMovement, computed.MinMovement);
    text(m_Columns.SessionsString, computed.SessionsString);
    text(m_Columns.SessionsZone, computed.SessionsZone);
    integer(m_Columns.ExchangeGmt, computed.ExchangeGmt);
}

// What the row stores as its setting, nothing included.
void CPortfolioRows::WriteCustomSetting(ULONG first, ULONG count) {
    const Cells<LONG>& stored = m_Block->Stored.Setting;
    m_Table.SetIntegers(m_Columns.CustomSetting, first, std::span(stored).first(count));
    for (ULONG row = 0; row < count; ++row)
        if (stored[row] == 0 && m_Table.IsNull(first + row, m_Columns.Setting))
            m_Table.SetNull(first + row, m_Columns.CustomSetting);
}

} // namespace select_portfolio_impl
