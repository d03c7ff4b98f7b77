// The two roads to a symbol, the procedure that the database runs for one and the join in memory for all, deliver
// the same: compared row by row, in every column that both have.
#include "CursorFixture.h"

#include "platform/text.h"

#include <set>
#include <tuple>

namespace {

using namespace tests;
using testing::IsEmpty;
using testing::SizeIs;

class PortfolioRoads : public StorageTest {
protected:
    // Settings 100.., sessions 200.. and exchanges 10.., of every kind there is; then a symbol for each way to
    // refer to them.
    void SetUp() override {
        StorageTest::SetUp();
        m_Statements = {L"INSERT INTO DATA_FEEDS VALUES(5,'Feed','d','{5}',1,1,0,0,'F')"};
        AddSettings();
        AddSessions();
        AddExchanges();
        AddSymbols();
        Write(Host(), m_Statements);
        TakeAll();
    }

    void Add(const std::wstring& table, const std::wstring& values) {
        m_Statements.push_back(L"INSERT INTO " + table + L" VALUES(" + values + L")");
    }

    void AddSettings() {
        Add(L"SETTINGS", L"100,100,50.500000,7,0.250000");
        Add(L"SETTINGS", L"101,2147483647,0.1,-1,999999.9");
        Add(L"SETTINGS", L"102,NULL,NULL,NULL,NULL");
        Add(L"SETTINGS", L"103,0,1e30,0,1e-30");
        m_Settings = {100, 101, 102, 103};
    }
    // Each zone, known or not, with details that are none, few, the longest and the most.
    void AddSessions() {
        LONG session = 200;
        for (const wchar_t* zone : {L"0", L"1", L"2", L"3", L"-1", L"NULL"}) {
            for (const int details : {0, 1, 3, 22}) {
                Add(L"SESSIONS", Text(session) + L"," + Text(session % 4) + L",'s'," + zone);
                for (int i = 0; i < details; ++i)
                    Add(L"SESSION_DETAILS",
                        Text(session) + (i % 2 == 0 ? L",6944,0,6944,0,0,0,10" : L",1,59,1,86399,5,6,7"));
                m_Sessions.push_back(session++);
            }
        }
        Add(L"SESSIONS", Text(session) + L",1,'nulls',2");
        Add(L"SESSION_DETAILS", Text(session) + L",NULL,NULL,NULL,NULL,NULL,NULL,NULL");
        Add(L"SESSION_DETAILS", Text(session) + L",6944,38340,6944,38399,9999999,9999999,9999999");
        m_Sessions.push_back(session);
        Add(L"SESSION_DETAILS", L"999,1,0,1,0,1,1,1"); // of a session that is gone
    }
    void AddExchanges() {
        const std::vector<std::wstring> zones{// with daylight saving, on both halves of the earth
                                              L"1,360,0,0,1,11,'02:00:00.0000',-60,0,2,3,'02:00:00.0000'",
                                              L"1,-600,0,0,1,4,'03:00:00.0000',-60,0,1,10,'02:00:00.0000'",
                                              // with a fraction of a second, and days that are no weeks
                                              L"1,-330,30,6,31,12,'23:59:59.9999',-1440,6,31,12,'23:59:59.9999'",
                                              // without
                                              L"0,-540,0,0,0,0,'00:00:00.0000',0,0,0,0,'00:00:00.0000'",
                                              // without, though the columns say when
                                              L"0,300,0,0,1,11,'02:00:00.0000',-60,0,2,3,'02:00:00.0000'",
                                              L"NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL"};
        for (std::size_t i = 0; i < zones.size(); ++i) {
            const LONG exchange = 10 + static_cast<LONG>(i);
            Add(L"EXCHANGES", Text(exchange) + L",'EXCH" + Text(exchange) + L"',0," +
                                  Text(m_Settings[i % m_Settings.size()]) + L"," +
                                  Text(m_Sessions[i * 5 % m_Sessions.size()]) + L",0,'m'," + zones[i] + L",'e'");
            m_Exchanges.push_back(exchange);
        }
    }
    void AddSymbols() {
        LONG symbol = 1;
        for (const LONG exchange : m_Exchanges)
            for (const wchar_t* settingType : {L"-1", L"0", L"1", L"2", L"3"})
                for (const wchar_t* sessionType : {L"-1", L"0", L"1", L"2", L"3", L"4"}) {
                    AddSymbol(symbol, exchange, settingType, sessionType);
                    ++symbol;
                }
        // What an insert of the storage never leaves out.
        Add(L"PORTFOLIO", Text(symbol++) +
                              L",NULL,NULL,NULL,NULL,NULL,5,10,1,NULL,NULL,200,NULL,NULL,NULL,NULL,NULL,"
                              L"NULL,NULL,NULL,NULL,NULL,NULL");
        Add(L"PORTFOLIO", Text(symbol++) + L",'','','','',NULL,5,10,NULL,101,NULL,200,NULL,NULL,NULL,NULL,NULL,"
                                           L"NULL,NULL,NULL,NULL,NULL,NULL");
        m_Symbols = symbol - 1;
    }
    void AddSymbol(LONG symbol, LONG exchange, const wchar_t* settingType, const wchar_t* sessionType) {
        const auto number = static_cast<std::size_t>(symbol);
        Add(L"PORTFOLIO", Text(symbol) + L",'S" + Text(symbol * 7919 % 1000) + L"','ES','d','c',1,5," +
                              Text(exchange) + L"," + settingType + L"," +
                              Text(m_Settings[number % m_Settings.size()]) + L"," + sessionType + L"," +
                              Text(m_Sessions[number * 7 % m_Sessions.size()]) + L"," +
                              Text(m_Sessions[number * 11 % m_Sessions.size()]) + L",3,2015," + Text(symbol) +
                              L".1,2,9,'20.03.2015',0,4,'01.01.1900','21.03.2015'");
    }

    // The records of a table by the names of their fields; for each value its text, but for that of a number, since
    // a number that is not there reads as 0.
    using Values = std::map<std::wstring, std::tuple<std::wstring, LONG, double>>;
    static std::vector<Values> ValuesOf(const CComPtr<IdmTable>& table) {
        const std::vector<Record> records = Records(table);
        std::vector<Values> values(records.size());
        table->First();
        for (std::size_t i = 0; i < records.size(); ++i, table->Next())
            for (const auto& [name, text] : records[i])
                values[i][name] = ValueOf(table, name, text);
        return values;
    }
    static Values::mapped_type ValueOf(const CComPtr<IdmTable>& table, const std::wstring& name,
                                       const std::wstring& text) {
        CComPtr<IdmField> field;
        table->get_FieldByName(CBstr(name).Get(), field.Put());
        LONG type = 0;
        LONG whole = 0;
        double real = 0;
        field->get_Type(&type);
        field->get_AsLong(&whole);
        field->get_AsDouble(&real);
        return {type == 0 ? text : std::wstring(), whole, real};
    }
    static LONG SymbolOf(const Values& values) { return std::get<LONG>(values.at(L"SYMBOL")); }

    std::map<LONG, Values> AllBySymbol() {
        std::map<LONG, Values> records;
        for (const Values& values : ValuesOf(SelectAll(*m_Storage)))
            records[SymbolOf(values)] = values;
        return records;
    }
    Values BySymbol(LONG symbol) {
        const auto request = NewRequest();
        const auto table = NewTable();
        request->put_Symbol(0, symbol);
        EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, request.Get(), table.Get()));
        const std::vector<Values> records = ValuesOf(table);
        EXPECT_EQ(1U, records.size()) << symbol;
        return records.empty() ? Values() : records.front();
    }
    // Makes a custom future of every symbol, under the symbol's key.
    static void AddTwins() {
        Sql(L"DELETE FROM CUSTOM_FUTURES");
        Sql(L"INSERT INTO CUSTOM_FUTURES (CF,SYMBOL_NAME,SYMBOL_ROOT,CF_CODE,DESCRIPTION,CATEGORY,DATA_FEED,"
            L"EXCHANGE,SETTING_TYPE,SETTING,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,MARGIN) SELECT SYMBOL,"
            L"SYMBOL_NAME,SYMBOL_ROOT,'C',DESCRIPTION,CATEGORY,DATA_FEED,EXCHANGE,SETTING_TYPE,SETTING,"
            L"SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,MARGIN FROM PORTFOLIO");
    }
    Values ByCustomFuture(LONG key) {
        const auto cursors = m_Storage.As<IDM_qxStorage::IqxPortfolio>();
        const auto table = NewTable();
        LONG id = 0;
        LONG count = 0;
        const tagCursorRequest request{.Type = CustomFuture, .Symbol = key};
        EXPECT_EQ(S_OK, cursors->Advise(0, request.Make().Get(), table.Get(), &id));
        EXPECT_EQ(S_OK, cursors->Fetch(id, &count));
        EXPECT_EQ(1, count) << key;
        EXPECT_EQ(S_OK, cursors->Unadvise(id));
        const std::vector<Values> records = ValuesOf(table);
        return records.empty() ? Values() : records.front();
    }
    // The columns of which both roads have one.
    static std::set<std::wstring> ExpectSame(const Values& joined, const Values& asked) {
        std::set<std::wstring> compared;
        for (const auto& [column, value] : asked) {
            const auto found = joined.find(column);
            if (found == joined.end())
                continue;
            EXPECT_EQ(value, found->second) << "symbol " << SymbolOf(joined) << ", " << platform::ToUtf8(column);
            compared.insert(column);
        }
        return compared;
    }
    void ExpectSameRoads() {
        const auto joined = AllBySymbol();
        ASSERT_EQ(static_cast<std::size_t>(m_Symbols), joined.size());
        EXPECT_THAT(Recorder::Messages(), IsEmpty());
        EXPECT_THAT(Recorder::Errors(), IsEmpty());
        for (const auto& [symbol, values] : joined)
            ASSERT_THAT(ExpectSame(values, BySymbol(symbol)), SizeIs(34));
    }

    std::vector<std::wstring> m_Statements;
    std::vector<LONG> m_Settings;
    std::vector<LONG> m_Sessions;
    std::vector<LONG> m_Exchanges;
    LONG m_Symbols = 0;
    CEnvironment m_Zone{L"TZ", L"EST5EDT,M3.2.0,M11.1.0"};
};

TEST_F(PortfolioRoads, DeliverTheSameForEverySettingSessionZoneAndExchange) { ExpectSameRoads(); }

TEST_F(PortfolioRoads, DeliverTheSameOnAMachineInGreenwich) {
    m_Storage.Reset(); // a connection is told of the zone when it opens
    const CEnvironment zone(L"TZ", L"UTC0");
    ASSERT_EQ(S_OK, CStorageHost::Create(m_Storage));
    TakeAll();
    ExpectSameRoads();
}

// What a custom future has from exchange, setting and session is what a symbol of the same numbers has.
TEST_F(PortfolioRoads, CustomFuturesDeliverTheSame) {
    AddTwins();
    for (const auto& [symbol, values] : AllBySymbol())
        ASSERT_THAT(ExpectSame(values, ByCustomFuture(symbol)), SizeIs(23));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

// Neither road writes a text that readers would misunderstand: the join reports it and ends there, the procedure
// delivers the symbol without it.
TEST_F(PortfolioRoads, LeaveOutTheSameSessions) {
    for (const wchar_t* detail : {L"6944,38400,1,0,0,0,0", L"-1,0,1,0,0,0,0", L"1,0,2147483647,2147483647,0,0,0",
                                  L"1,0,1,0,-1,0,0", L"1,0,1,0,0,-1,0", L"1,0,1,0,0,0,10000000"}) {
        Write(Host(), {L"DELETE FROM PORTFOLIO", L"DELETE FROM SESSION_DETAILS",
                       tagSymbolRow{.SessionType = 0, .CustomSession = 200}.Insert()});
        Values written = BySymbol(1);
        Write(Host(), {std::wstring(L"INSERT INTO SESSION_DETAILS VALUES(200,") + detail + L")"});
        TakeAll();
        const auto table = SelectAll(*m_Storage);
        EXPECT_THAT(Column(table, L"SESSIONS_STRING"), testing::ElementsAre(L""));
        EXPECT_THAT(Recorder::Errors(), SizeIs(1)) << platform::ToUtf8(detail);
        TakeAll();
        std::get<std::wstring>(written.at(L"SESSIONS_STRING")).clear();
        EXPECT_EQ(written, BySymbol(1)) << platform::ToUtf8(detail);
        AddTwins();
        EXPECT_THAT(ExpectSame(written, ByCustomFuture(1)), SizeIs(23));
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    }
}

// A fraction of a minute before the first one is cut towards it on both roads.
TEST_F(PortfolioRoads, CutTheSameFractions) {
    Write(Host(), {L"DELETE FROM PORTFOLIO", L"DELETE FROM SESSION_DETAILS",
                   L"INSERT INTO SESSION_DETAILS VALUES(200,0,-59,0,59,0,0,0)",
                   tagSymbolRow{.SessionType = 0, .CustomSession = 200}.Insert()});
    EXPECT_EQ(L"1:0,0,0,0,0;", std::get<std::wstring>(BySymbol(1).at(L"SESSIONS_STRING")));
    EXPECT_EQ(L"1:0,0,0,0,0;", std::get<std::wstring>(AllBySymbol().at(1).at(L"SESSIONS_STRING")));
}

} // namespace
