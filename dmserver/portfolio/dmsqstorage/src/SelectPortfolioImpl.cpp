#include "SelectPortfolioImpl.h"

#include "PortfolioRows.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"
#include "platform/com/com_error.h"
#include "platform/crash.h"
#include "platform/text.h"
#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"
#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace select_portfolio_impl {

using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::ITableRows;
using platform::CBstr;
using sqStorage::CComPtr;
using sqStorage::IdmField;
using sqStorage::IdmTable;

namespace {

constexpr std::array PortfolioFields{L"SYMBOL",
                                     L"SYMBOL_NAME",
                                     L"SYMBOL_ROOT",
                                     L"DESCRIPTION",
                                     L"CUSIP",
                                     L"CATEGORY",
                                     L"DATA_FEED",
                                     L"DATA_FEED_NAME",
                                     L"EXCHANGE",
                                     L"EXCHANGE_NAME",
                                     L"EXCHANGE_TIME_ZONE_INFORMATION",
                                     L"SETTING_TYPE",
                                     L"SETTING",
                                     L"CUSTOM_SETTING",
                                     L"PRICE_SCALE",
                                     L"POINT_VALUE",
                                     L"DAILY_LIMIT",
                                     L"MIN_MOVEMENT",
                                     L"SESSION_TYPE",
                                     L"CUSTOM_SESSION",
                                     L"TEMPLATE_SESSION",
                                     L"SESSIONS_STRING",
                                     L"SESSIONS_TIME_ZONE_INFORMATION",
                                     L"STRIKE_PRICE",
                                     L"CONTRACT_MONTH",
                                     L"CONTRACT_YEAR",
                                     L"CALL_PUT",
                                     L"MARGIN",
                                     L"EXPIRATION_DATE",
                                     L"EXPIRED",
                                     L"EXPIRATION_RULE",
                                     L"FIRST_NOTICE_DATE",
                                     L"DELIVERY",
                                     L"EXCHANGE_GMT",
                                     L"LOCAL_GMT"};
static_assert(PortfolioFields.size() == 35);

void AddField(IdmTable& table, const wchar_t* name) {
    platform::ThrowIfFailed(table.AddFieldByName(CBstr(name).Get(), 0, 0, 0));
}

void AddNewField(IdmTable& table, const wchar_t* name, EColumnType type) {
    platform::ThrowIfFailed(table.AddNewField(CBstr(name).Get(), static_cast<ULONG>(type), 0));
}

CComPtr<IdmField> FieldOf(const CComPtr<IdmTable>& table, const wchar_t* name) {
    CComPtr<IdmField> field;
    platform::ThrowIfFailed(table->get_FieldByName(CBstr(name).Get(), field.Put()));
    return field;
}

// One change of a zone's clock, but for the month, as the columns with that prefix hold it.
SYSTEMTIME ReadChange(const CComPtr<IdmTable>& table, const std::wstring& prefix) {
    SYSTEMTIME change{};
    change.wDay = static_cast<WORD>(GetField<LONG>(table, (prefix + L"_DAY").c_str()));
    change.wDayOfWeek = static_cast<WORD>(GetField<LONG>(table, (prefix + L"_DAY_OF_WEEK").c_str()));
    LONG seconds = 0;
    FieldOf(table, (prefix + L"_TIME").c_str())->get_AsTime(&seconds);
    dmDateTime::ReplaceTimeInSYSTEMTIME(seconds, change);
    return change;
}

// Of the current record.
TIME_ZONE_INFORMATION ReadZone(const CComPtr<IdmTable>& table) {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = GetField<LONG>(table, L"BIAS");
    zone.StandardBias = GetField<LONG>(table, L"STANDARD_BIAS");
    zone.StandardDate = ReadChange(table, L"STANDARD");
    // Month 0 marks a zone without daylight saving, whatever the other columns hold.
    if (GetField<LONG>(table, L"USE_DAYLIGHT") != 0)
        zone.StandardDate.wMonth = static_cast<WORD>(GetField<LONG>(table, L"STANDARD_MONTH"));
    zone.DaylightBias = GetField<LONG>(table, L"DAYLIGHT_BIAS");
    zone.DaylightDate = ReadChange(table, L"DAYLIGHT");
    zone.DaylightDate.wMonth = static_cast<WORD>(GetField<LONG>(table, L"DAYLIGHT_MONTH"));
    return zone;
}

std::string ZoneText(const TIME_ZONE_INFORMATION& zone) {
    std::array<wchar_t, 128> text{};
    tz_help::TZIToString(zone, text.data(), text.size());
    return platform::ToUtf8(text.data());
}

CComPtr<IdmTable> ExchangeTable() {
    auto table = sqStorage::NewTable();
    for (const wchar_t* name : {L"EXCHANGE", L"EXCHANGE_NAME", L"SETTING", L"SESSION"})
        AddField(*table, name);
    for (const wchar_t* name :
         {L"USE_DAYLIGHT", L"BIAS", L"STANDARD_BIAS", L"STANDARD_MONTH", L"STANDARD_DAY_OF_WEEK", L"STANDARD_DAY"})
        AddNewField(*table, name, EColumnType::Long);
    AddNewField(*table, L"STANDARD_TIME", EColumnType::Text);
    for (const wchar_t* name : {L"DAYLIGHT_BIAS", L"DAYLIGHT_MONTH", L"DAYLIGHT_DAY_OF_WEEK", L"DAYLIGHT_DAY"})
        AddNewField(*table, name, EColumnType::Long);
    AddNewField(*table, L"DAYLIGHT_TIME", EColumnType::Text);
    return table;
}

// Reads a table that a select of all columns has filled. Settings and sessions may be as many as symbols.
class CRowReader {
public:
    // `source` is the table of the database, for whoever has to mend it.
    CRowReader(const CComPtr<IdmTable>& table, const wchar_t* source)
        : m_Rows(table.As<ITableRows>()), m_Source(source) {}

    ULONG Count() const { return m_Rows->RowCount(); }
    ULONG Column(const char* name) const {
        const LONG column = m_Rows->FindColumn(name);
        if (column < 0)
            platform::ThrowStatus(E_FAIL, std::wstring(L"the table ") + m_Source +
                                              L" of the database has no column " + platform::FromUtf8(name) +
                                              L"; restore the database from a backup");
        return static_cast<ULONG>(column);
    }
    LONG Long(ULONG row, ULONG column) const { return static_cast<LONG>(m_Rows->Integer(row, column)); }
    double Double(ULONG row, ULONG column) const { return m_Rows->Real(row, column); }

private:
    CComPtr<ITableRows> m_Rows;
    const wchar_t* m_Source;
};

// The row's own key is mostly above all that are there, because keys only rise.
template <class T>
T& AddEntry(std::map<LONG, T>& map, LONG key) {
    return map.try_emplace(map.end(), key)->second;
}

// Collects the text of a session.
class CSessionsText {
public:
    explicit CSessionsText(const tagSession& session) : m_Session(session) {}

    void Add(std::wstring_view text) {
        if (m_Text.size() + text.size() >= Capacity)
            Refuse(L"the sessions string fits its buffer",
                   "session " + std::to_string(m_Session.Session) +
                       " has more details than fit into a text of 511 characters; remove some of them");
        m_Text += text;
    }
    void AddNumber(std::uint64_t number) {
        const std::wstring text = std::to_wstring(number);
        if (text.size() >= NumberCapacity)
            Refuse(
                L"the number fits its buffer",
                "a detail of session " + std::to_string(m_Session.Session) +
                    " has a negative value or one of more than seven digits; correct the details of the session");
        Add(text);
    }
    const std::wstring& Text() const { return m_Text; }

private:
    static constexpr std::size_t Capacity = 512;
    static constexpr std::size_t NumberCapacity = 8;

    [[noreturn]] static void Refuse(const wchar_t* expression, const std::string& message) {
        platform::ReportInvalidParameter(expression, L"select_portfolio_impl::MakeSessionsString");
        throw std::length_error(message);
    }

    const tagSession& m_Session;
    std::wstring m_Text;
};

// Without a sign, so a moment before the first one becomes a number that no buffer takes.
std::uint64_t Minutes(LONG day, LONG seconds) {
    constexpr std::int64_t SecondsPerDay = 86400;
    return static_cast<std::uint64_t>((day * SecondsPerDay + seconds) / 60);
}

} // namespace

std::wstring MakeSessionsString(const tagSession& session) {
    CSessionsText text(session);
    text.AddNumber(session.Details.size());
    text.Add(L":");
    for (const tagSessionDetails& detail : session.Details) {
        text.AddNumber(Minutes(detail.StartDay, detail.StartTime));
        text.Add(L",");
        text.AddNumber(Minutes(detail.EndDay, detail.EndTime));
        for (const LONG value : {detail.Value6, detail.Value7, detail.Value5}) {
            text.Add(L",");
            text.AddNumber(static_cast<ULONG>(value));
        }
        text.Add(L";");
    }
    return text.Text();
}

CSelectPortfolioHelper::CSelectPortfolioHelper(sqStorage::IdmDatabase* database) : m_Database(database) {}

void CSelectPortfolioHelper::SelectAllPortfolio(IdmTable* Table) {
    if (!m_Database)
        platform::ThrowStatus(E_POINTER, L"Database");
    const CComPtr<ITableRows> rows = CComPtr<IdmTable>(Table).As<ITableRows>();
    if (!rows)
        platform::ThrowStatus(E_NOINTERFACE, L"the portfolio cannot be written into a table of this making; pass a "
                                             L"table of the class dmTable");
    Forget();
    sqStorage::RaiseUnlessOk(m_Database->GetTransaction(m_Transaction.Put()), *m_Database, L"GetTransaction");
    // All statements see the same state, so that what a symbol refers to is there if it ever was.
    sqStorage::RaiseUnlessOk(m_Transaction->Begin(IDM_dmFirebird::isolationSnapshot), *m_Database, L"Begin");
    const BugSlayerUtil::CScope scope(this);
    LoadExchanges();
    LoadDataFeeds();
    LoadSettings();
    LoadSessions();
    LoadSessionDetails();
    for (const wchar_t* name : PortfolioFields)
        AddField(*Table, name);
    CPortfolioRows portfolio(*rows, m_Exchanges, m_DataFeeds, m_Settings, m_Sessions);
    Select(L"SELECT SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,SETTING_TYPE,"
           L"SETTING,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,CONTRACT_MONTH,CONTRACT_YEAR,"
           L"CAST(STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,CALL_PUT,MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,"
           L"FIRST_NOTICE_DATE,DELIVERY FROM PORTFOLIO ORDER BY SYMBOL_NAME",
           *Table);
    Table->First();
    portfolio.CompleteAll();
    sqStorage::RaiseUnlessOk(m_Transaction->Finish(), *m_Database, L"Finish");
    Forget();
}

void CSelectPortfolioHelper::Forget() {
    m_Exchanges.clear();
    m_DataFeeds.clear();
    m_Settings.clear();
    m_Sessions.clear();
}

void CSelectPortfolioHelper::LoadExchanges() {
    const CComPtr<IdmTable> table = ExchangeTable();
    Select(L"SELECT EXCHANGE, EXCHANGE_NAME, SETTING, SESSION, USE_DAYLIGHT, BIAS, STANDARD_BIAS, STANDARD_MONTH, "
           L"STANDARD_DAY_OF_WEEK, STANDARD_DAY, STANDARD_TIME, DAYLIGHT_BIAS, DAYLIGHT_MONTH, "
           L"DAYLIGHT_DAY_OF_WEEK, DAYLIGHT_DAY, DAYLIGHT_TIME FROM EXCHANGES",
           *table);
    sqStorage::ForEachRecord(*table, [&] {
        const LONG key = GetField<LONG>(table, IDM_dmudfcom::fieldExchange);
        tagExchange& exchange = AddEntry(m_Exchanges, key);
        exchange.Exchange = key;
        exchange.Name.Text = platform::ToUtf8(GetField<CBstr>(table, IDM_dmudfcom::fieldExchangeName).View());
        exchange.Setting = GetField<LONG>(table, IDM_dmudfcom::fieldSetting);
        exchange.Session = GetField<LONG>(table, IDM_dmudfcom::fieldSession);
        const TIME_ZONE_INFORMATION zone = ReadZone(table);
        exchange.TimeZoneInformation.Text = ZoneText(zone);
        exchange.SessionsTimeZoneInformation.Text = exchange.TimeZoneInformation.Text;
        exchange.Bias = zone.Bias;
    });
}

void CSelectPortfolioHelper::LoadDataFeeds() {
    const CComPtr<IdmTable> table = sqStorage::NewTable();
    Select(L"SELECT DATA_FEED, DATA_FEED_NAME FROM DATA_FEEDS", *table);
    sqStorage::ForEachRecord(*table, [&] {
        const LONG key = GetField<LONG>(table, IDM_dmudfcom::fieldDataFeed);
        tagDataFeed& feed = AddEntry(m_DataFeeds, key);
        feed.DataFeed = key;
        feed.Name.Text = platform::ToUtf8(GetField<CBstr>(table, IDM_dmudfcom::fieldDataFeedName).View());
    });
}

void CSelectPortfolioHelper::LoadSettings() {
    const CComPtr<IdmTable> table = sqStorage::NewTable();
    Select(L"SELECT * FROM SETTINGS", *table);
    const CRowReader rows(table, L"SETTINGS");
    const ULONG settingColumn = rows.Column("SETTING");
    const ULONG priceScale = rows.Column("PRICE_SCALE");
    const ULONG pointValue = rows.Column("POINT_VALUE");
    const ULONG dailyLimit = rows.Column("DAILY_LIMIT");
    const ULONG minMovement = rows.Column("MIN_MOVEMENT");
    for (ULONG row = 0; row < rows.Count(); ++row) {
        const LONG key = rows.Long(row, settingColumn);
        AddEntry(m_Settings, key) = {key, rows.Long(row, priceScale), rows.Double(row, pointValue),
                                     rows.Long(row, dailyLimit), rows.Double(row, minMovement)};
    }
}

void CSelectPortfolioHelper::LoadSessions() {
    const CComPtr<IdmTable> table = sqStorage::NewTable();
    Select(L"SELECT * FROM SESSIONS", *table);
    const CRowReader rows(table, L"SESSIONS");
    const ULONG sessionColumn = rows.Column("SESSION");
    const ULONG sessionType = rows.Column("SESSION_TYPE");
    const ULONG timeZone = rows.Column("TIME_ZONE");
    for (ULONG row = 0; row < rows.Count(); ++row) {
        const LONG key = rows.Long(row, sessionColumn);
        tagSession& session = AddEntry(m_Sessions, key);
        session.Session = key;
        session.SessionType = rows.Long(row, sessionType);
        session.TimeZone = rows.Long(row, timeZone);
    }
}

void CSelectPortfolioHelper::LoadSessionDetails() {
    const CComPtr<IdmTable> table = sqStorage::NewTable();
    Select(L"SELECT * FROM SESSION_DETAILS", *table);
    const CRowReader rows(table, L"SESSION_DETAILS");
    const std::array columns{rows.Column("SESSION"), rows.Column("START_DAY"), rows.Column("START_TIME"),
                             rows.Column("END_DAY"), rows.Column("END_TIME"),  rows.Column("VALUE5"),
                             rows.Column("VALUE6"),  rows.Column("VALUE7")};
    for (ULONG row = 0; row < rows.Count(); ++row) {
        const auto value = [&](std::size_t column) { return rows.Long(row, columns[column]); };
        // Details of a session that is gone belong to nobody.
        if (const auto session = m_Sessions.find(value(0)); session != m_Sessions.end())
            session->second.Details.push_back(
                {value(0), value(1), value(2), value(3), value(4), value(5), value(6), value(7)});
    }
}

void CSelectPortfolioHelper::Select(const wchar_t* sql, IdmTable& table) {
    CComPtr<sqStorage::IdmDatabaseQuery> query;
    sqStorage::RaiseUnlessOk(m_Transaction->GetQuery(query.Put()), *m_Database, L"GetQuery");
    sqStorage::RaiseUnlessOk(query->Open(CBstr(sql).Get(), nullptr, &table), *m_Database, L"Open");
    LONG count = 0;
    sqStorage::RaiseUnlessOk(query->Fetch(&count), *m_Database, L"Fetch");
    sqStorage::RaiseUnlessOk(query->Close(), *m_Database, L"Close");
}

} // namespace select_portfolio_impl
