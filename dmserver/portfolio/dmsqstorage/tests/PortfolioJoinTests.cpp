// The join of the whole portfolio from inside: its statements, their one transaction, the lookups and the sessions
// string.
#include "PortfolioRows.h"
#include "SelectPortfolioImpl.h"

#include "ForeignTable.h"
#include "PortfolioFixture.h"
#include "WatchedDatabase.h"
#include "diagnostics/interface/CrashCatchers.h"
#include "dmserver/dmFirebird/interface/LastErrorText.h"
#include "platform/com/com_error.h"
#include "platform/crash.h"
#include "platform/text.h"
#include "sqStorage.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

using namespace select_portfolio_impl;
using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

TEST(PortfolioLookup, AKeyGivesItsEntry) {
    const Settings settings{{3, {.Setting = 3, .PriceScale = 100}}, {7, {.Setting = 7, .PriceScale = 32}}};
    EXPECT_EQ(100, _get_impl(settings, 3).PriceScale);
    EXPECT_EQ(&settings.at(7), &_get_impl(settings, 7));
}

template <class T>
void ExpectMissing(const std::map<LONG, T>& map, LONG id) {
    Recorder::Clear();
    try {
        _get_impl(map, id);
        ADD_FAILURE() << id;
    } catch (const std::exception& error) {
        EXPECT_EQ(typeid(std::exception), typeid(error));
    }
    EXPECT_THAT(Recorder::Messages(), ElementsAre(L"[WARNING]: Id " + std::to_wstring(id) + L" not found"));
}

TEST(PortfolioLookup, AMissingKeyIsWarnedOfAndRaised) {
    const DataFeeds feeds{{3, {}}, {7, {}}};
    for (const LONG id : {-1, 0, 4, 8})
        ExpectMissing(feeds, id);
    ExpectMissing(Exchanges(), 1);
    ExpectMissing(Settings(), 0);
    ExpectMissing(Sessions(), std::numeric_limits<LONG>::min());
}

TEST(PortfolioLookup, TheEntryAtHandIsThatOfTheKeyAskedFor) {
    const DataFeeds feeds{{0, {.DataFeed = 0}}, {3, {.DataFeed = 3}}, {7, {.DataFeed = 7}}};
    CLastEntry<tagDataFeed> last(feeds);
    for (const LONG id : {0, 3, 3, 7, 3, 0})
        EXPECT_EQ(id, last.Get(id).DataFeed);
    EXPECT_THROW(last.Get(4), std::exception);
    EXPECT_EQ(0, last.Get(0).DataFeed) << "a failed lookup leaves the entry at hand";
    EXPECT_THROW(last.Get(4), std::exception);
}

std::wstring Write(std::vector<tagSessionDetails> details) {
    return MakeSessionsString({.Session = 9, .Details = std::move(details)});
}

TEST(SessionsString, ASessionWithoutDetailsIsTheCountAndTheColon) { EXPECT_EQ(L"0:", Write({})); }

TEST(SessionsString, ADetailIsItsStartItsEndAndTheValuesSixSevenFive) {
    EXPECT_EQ(L"1:1950,2355,6,7,5;", Write({{9, 1, 30600, 1, 54900, 5, 6, 7}}));
    EXPECT_EQ(L"2:1950,2355,6,7,5;0,1,0,0,0;",
              Write({{9, 1, 30600, 1, 54900, 5, 6, 7}, {9, 0, 0, 0, 60, 0, 0, 0}}));
}

TEST(SessionsString, SecondsAreCutOffTheMinutes) {
    EXPECT_EQ(L"1:1440,2879,0,0,0;", Write({{9, 1, 59, 1, 86399, 0, 0, 0}}));
}

TEST(SessionsString, ANumberHasUpToSevenDigits) {
    EXPECT_EQ(L"1:9999999,9999999,9999999,9999999,9999999;",
              Write({{9, 6944, 38340, 6944, 38399, 9999999, 9999999, 9999999}}));
    const LONG most = std::numeric_limits<LONG>::max();
    for (const tagSessionDetails& detail : {tagSessionDetails{9, 6944, 38400, 0, 0, 0, 0, 0},
                                            {9, 0, 0, most, most, 0, 0, 0},
                                            {9, 0, 0, 0, 0, 10000000, 0, 0},
                                            {9, 0, 0, 0, 0, 0, 10000000, 0},
                                            {9, 0, 0, 0, 0, 0, 0, 10000000}})
        EXPECT_THROW(Write({detail}), std::length_error);
}

TEST(SessionsString, ANegativeNumberHasNoSignAndSoTooManyDigits) {
    const LONG least = std::numeric_limits<LONG>::min();
    for (const tagSessionDetails& detail : {tagSessionDetails{9, -1, 0, 0, 0, 0, 0, 0},
                                            {9, least, least, 0, 0, 0, 0, 0},
                                            {9, 0, -60, 0, 0, 0, 0, 0},
                                            {9, 0, 0, -1, 0, 0, 0, 0},
                                            {9, 0, 0, 0, 0, -1, 0, 0},
                                            {9, 0, 0, 0, 0, 0, -1, 0},
                                            {9, 0, 0, 0, 0, 0, 0, -1}})
        EXPECT_THROW(Write({detail}), std::length_error);
}

TEST(SessionsString, ATextHasUpTo511Characters) {
    std::vector<tagSessionDetails> details(22, {9, 6944, 0, 6944, 0, 10, 0, 0}); // with "22:" 509 characters
    EXPECT_EQ(509U, Write(details).size());
    details.front().Value6 = 100;
    EXPECT_EQ(511U, Write(details).size());
    details.front().Value6 = 1000;
    EXPECT_THROW(Write(details), std::length_error);
}

std::wstring g_Refused;

TEST(SessionsString, WhatDoesNotFitIsReportedAsAnInvalidParameter) {
    const auto before = platform::SetInvalidParameterHandler([](const platform::tagInvalidParameter& refused) {
        g_Refused += std::wstring(refused.Function) + L": " + refused.Expression + L"; ";
    });
    EXPECT_THROW(Write({{9, -1, 0, 0, 0, 0, 0, 0}}), std::length_error);
    EXPECT_THROW(Write(std::vector<tagSessionDetails>(60)), std::length_error);
    platform::SetInvalidParameterHandler(before);
    EXPECT_EQ(L"select_portfolio_impl::MakeSessionsString: the number fits its buffer; "
              L"select_portfolio_impl::MakeSessionsString: the sessions string fits its buffer; ",
              g_Refused);
}

TEST(SessionsString, WhatDoesNotFitNamesTheSession) {
    try {
        Write({{9, -1, 0, 0, 0, 0, 0, 0}});
        ADD_FAILURE();
    } catch (const std::length_error& error) {
        EXPECT_STREQ(
            "a detail of session 9 has a negative value or one of more than seven digits; correct the details "
            "of the session",
            error.what());
    }
    try {
        Write(std::vector<tagSessionDetails>(60));
        ADD_FAILURE();
    } catch (const std::length_error& error) {
        EXPECT_STREQ("session 9 has more details than fit into a text of 511 characters; remove some of them",
                     error.what());
    }
}

class PortfolioJoin : public HostTest {
protected:
    PortfolioJoin() {
        Write({L"DELETE FROM PORTFOLIO", L"DELETE FROM DATA_FEEDS", L"DELETE FROM EXCHANGES",
               L"DELETE FROM SETTINGS", L"DELETE FROM SESSIONS", L"DELETE FROM SESSION_DETAILS"});
        Recorder::Clear();
    }
    static void Write(const std::vector<std::wstring>& statements) { tests::Write(Host(), statements); }
    static void WritePortfolio(const std::vector<tagSymbolRow>& symbols) {
        std::vector<std::wstring> statements{std::begin(References), std::end(References)};
        for (const tagSymbolRow& symbol : symbols)
            statements.push_back(symbol.Insert());
        Write(statements);
    }

    CComPtr<IdmTable> Select() {
        auto table = NewTable();
        CSelectPortfolioHelper(m_Database.Get()).SelectAllPortfolio(table.Get());
        return table;
    }

    tagWatch m_Watch;
    const CComPtr<IDM_dmFirebird::IdmDatabase> m_Database =
        platform::MakeObject<CWatchedDatabase>(Host().OpenDatabase(), m_Watch);
};

constexpr const wchar_t* ExchangesSql =
    L"SELECT EXCHANGE, EXCHANGE_NAME, SETTING, SESSION, USE_DAYLIGHT, BIAS, STANDARD_BIAS, STANDARD_MONTH, "
    L"STANDARD_DAY_OF_WEEK, STANDARD_DAY, STANDARD_TIME, DAYLIGHT_BIAS, DAYLIGHT_MONTH, DAYLIGHT_DAY_OF_WEEK, "
    L"DAYLIGHT_DAY, DAYLIGHT_TIME FROM EXCHANGES";
constexpr const wchar_t* SymbolsSql =
    L"SELECT SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,SETTING_TYPE,SETTING,"
    L"SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,CONTRACT_MONTH,CONTRACT_YEAR,CAST(STRIKE_PRICE AS FLOAT) AS "
    L"STRIKE_PRICE,CALL_PUT,MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY FROM "
    L"PORTFOLIO "
    L"ORDER BY SYMBOL_NAME";

TEST_F(PortfolioJoin, SixStatementsRunInOneSnapshotAlsoForAnEmptyPortfolio) {
    Select();
    EXPECT_THAT(m_Watch.Calls, ElementsAre(L"transaction", L"begin 1", ExchangesSql,
                                           L"SELECT DATA_FEED, DATA_FEED_NAME FROM DATA_FEEDS",
                                           L"SELECT * FROM SETTINGS", L"SELECT * FROM SESSIONS",
                                           L"SELECT * FROM SESSION_DETAILS", SymbolsSql, L"finish", L"gone"));
}

TEST_F(PortfolioJoin, TheFieldsComeBetweenThePreloadsAndTheSymbols) {
    WritePortfolio({{.Symbol = 1}});
    const auto table = NewTable();
    std::vector<std::size_t> fields;
    m_Watch.BeforeStatement = [&](const std::wstring&) { fields.push_back(FieldNames(table).size()); };
    CSelectPortfolioHelper(m_Database.Get()).SelectAllPortfolio(table.Get());
    EXPECT_THAT(fields, ElementsAre(0U, 0U, 0U, 0U, 0U, 35U));
}

TEST_F(PortfolioJoin, TheTableStaysAsItWasAtTheMomentOfTheFailure) {
    WritePortfolio({{.Symbol = 1}});
    for (std::size_t failing = 0; failing < 6; ++failing) {
        const auto table = NewTable();
        std::size_t statement = 0;
        m_Watch.BeforeStatement = [&](const std::wstring&) {
            if (statement++ == failing)
                throw std::runtime_error("broken");
        };
        EXPECT_THROW(CSelectPortfolioHelper(m_Database.Get()).SelectAllPortfolio(table.Get()), std::runtime_error);
        EXPECT_EQ(failing + 1, statement) << "nothing runs behind it";
        EXPECT_THAT(FieldNames(table), SizeIs(failing < 5 ? 0 : 35)) << failing;
        EXPECT_EQ(0, RecordCount(table));
    }
}

TEST_F(PortfolioJoin, TheTransactionGoesWithAFailedWalkToo) {
    WritePortfolio({{.Exchange = 77}});
    EXPECT_THROW(Select(), std::exception);
    EXPECT_THAT(m_Watch.Calls, Contains(SymbolsSql));
    EXPECT_EQ(L"gone", m_Watch.Calls.back());
    EXPECT_EQ(1, std::ranges::count(m_Watch.Calls, L"transaction"));
}

TEST_F(PortfolioJoin, AllStatementsSeeOneStateOfTheData) {
    WritePortfolio({{.Symbol = 1}});
    // Another one writes between the first statement and the last.
    m_Watch.BeforeStatement = [](const std::wstring& sql) {
        if (sql == SymbolsSql)
            Write({L"INSERT INTO SETTINGS VALUES(500,1,1,1,1)",
                   tagSymbolRow{.Symbol = 2, .Name = L"A", .SettingType = 0, .Setting = 500}.Insert(),
                   L"UPDATE PORTFOLIO SET SETTING_TYPE=0, SETTING=500"});
    };
    const auto table = Select();
    EXPECT_THAT(Column(table, L"SYMBOL"), ElementsAre(L"1"));
    EXPECT_THAT(Column(table, L"SETTING"), ElementsAre(L"100"));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
}

TEST_F(PortfolioJoin, TheSelectionIsAScopeOfItsOwn) {
    Select();
    const auto records = Recorder::RecordsOf(L"TRACE");
    EXPECT_TRUE(std::ranges::any_of(records, [](const Recorder::tagRecord& record) {
        return record.Ident == 1 &&
               record.Function == L"select_portfolio_impl::CSelectPortfolioHelper::SelectAllPortfolio";
    }));
}

TEST_F(PortfolioJoin, AHelperMayServeAgain) {
    WritePortfolio({{.Symbol = 1}});
    CSelectPortfolioHelper helper(m_Database.Get());
    for (int i = 0; i < 2; ++i) {
        const auto table = NewTable();
        helper.SelectAllPortfolio(table.Get());
        EXPECT_THAT(Column(table, L"SESSIONS_STRING"), ElementsAre(ExchangeSessions));
    }
}

TEST_F(PortfolioJoin, AHelperKeepsNothingBetweenItsCalls) {
    WritePortfolio({{.Symbol = 1, .Name = L"A"},
                    {.Symbol = 2, .Name = L"B", .SettingType = 0, .Setting = 101},
                    {.Symbol = 3, .Name = L"C", .SessionType = 0, .CustomSession = 201},
                    {.Symbol = 4, .Name = L"D", .DataFeed = 6}});
    CSelectPortfolioHelper helper(m_Database.Get());
    helper.SelectAllPortfolio(NewTable().Get());
    // Another text for a session that is still there, and details that are not counted twice.
    Write({L"DELETE FROM SESSION_DETAILS WHERE SESSION=200 AND START_DAY=2"});
    const auto table = NewTable();
    helper.SelectAllPortfolio(table.Get());
    EXPECT_THAT(Column(table, L"SESSIONS_STRING"),
                ElementsAre(L"1:1950,2355,6,7,5;", L"1:1950,2355,6,7,5;", OwnSessions, L"1:1950,2355,6,7,5;"));
    // What is gone is not found any more, also after a call that failed.
    const std::pair<const wchar_t*, const wchar_t*> gone[]{
        {L"DELETE FROM DATA_FEEDS WHERE DATA_FEED=6", L"[WARNING]: Id 6 not found"},
        {L"DELETE FROM SESSIONS WHERE SESSION=201", L"[WARNING]: Id 201 not found"},
        {L"DELETE FROM SETTINGS WHERE SETTING=101", L"[WARNING]: Id 101 not found"},
        {L"DELETE FROM EXCHANGES", L"[WARNING]: Id 10 not found"}};
    for (const auto& [statement, warning] : gone) {
        Write({statement});
        Recorder::Clear();
        EXPECT_THROW(helper.SelectAllPortfolio(NewTable().Get()), std::exception);
        EXPECT_THAT(Recorder::Messages(), ElementsAre(warning));
    }
}

TEST_F(PortfolioJoin, ATableOfAnotherMakingIsRefusedBeforeAnythingIsDone) {
    const auto table = platform::MakeObject<CForeignTable>();
    try {
        CSelectPortfolioHelper(m_Database.Get()).SelectAllPortfolio(table.Get());
        ADD_FAILURE();
    } catch (const platform::CComError& error) {
        EXPECT_EQ(E_NOINTERFACE, error.Code());
        EXPECT_EQ(L"the portfolio cannot be written into a table of this making; pass a table of the class dmTable",
                  error.Text());
    }
    EXPECT_EQ(0, table->Calls);
    EXPECT_THAT(m_Watch.Calls, IsEmpty());
}

// The text is kept in the session's entry and not made again for the next symbol: that the details are other ones
// by then shows in nothing.
TEST_F(PortfolioJoin, TheTextOfASessionIsBuiltOnceForAllItsSymbols) {
    WritePortfolio({{.Symbol = 1, .Name = L"A"},
                    {.Symbol = 2, .Name = L"B", .SessionType = 2, .TemplateSession = 202},
                    {.Symbol = 3, .Name = L"C"}});
    const auto table = Select();
    const Exchanges exchanges{{10, {.Exchange = 10, .Setting = 100, .Session = 200}}};
    const DataFeeds feeds{{5, {.DataFeed = 5}}};
    const Settings settings{{100, {.Setting = 100}}};
    Sessions sessions{{200, {.Session = 200, .Details = {{200, 0, 60, 0, 120, 0, 0, 0}}}},
                      {201, {.Session = 201}},
                      {202, {.Session = 202}}};
    CPortfolioRows rows(*table.As<IDM_dmudfcom::ITableRows>(), exchanges, feeds, settings, sessions);
    rows.CompleteAll();
    EXPECT_THAT(Column(table, L"SESSIONS_STRING"), ElementsAre(L"1:1,2,0,0,0;", L"0:", L"1:1,2,0,0,0;"));
    EXPECT_EQ("1:1,2,0,0,0;", sessions.at(200).SessionsString.Text);
    EXPECT_EQ("", sessions.at(201).SessionsString.Text) << "nobody needs it";
    sessions.at(200).Details.clear();
    rows.CompleteAll();
    EXPECT_THAT(Column(table, L"SESSIONS_STRING"), ElementsAre(L"1:1,2,0,0,0;", L"0:", L"1:1,2,0,0,0;"));
}

// A database of the tables that the selection reads, and nothing that holds on to their columns.
class BareStore : public HostTest {
protected:
    BareStore() {
        const auto database = Open(&IDM_dmFirebird::IdmDatabase::Create);
        for (const wchar_t* table :
             {L"EXCHANGES (EXCHANGE INTEGER, EXCHANGE_NAME VARCHAR(31), SETTING INTEGER, SESSION INTEGER, "
              L"USE_DAYLIGHT INTEGER, BIAS INTEGER, STANDARD_BIAS INTEGER, STANDARD_MONTH INTEGER, "
              L"STANDARD_DAY_OF_WEEK INTEGER, STANDARD_DAY INTEGER, STANDARD_TIME VARCHAR(31), DAYLIGHT_BIAS "
              L"INTEGER, "
              L"DAYLIGHT_MONTH INTEGER, DAYLIGHT_DAY_OF_WEEK INTEGER, DAYLIGHT_DAY INTEGER, "
              L"DAYLIGHT_TIME VARCHAR(31))",
              L"DATA_FEEDS (DATA_FEED INTEGER, DATA_FEED_NAME VARCHAR(31))",
              L"SETTINGS (SETTING INTEGER, PRICE_SCALE INTEGER, POINT_VALUE INTEGER, DAILY_LIMIT INTEGER, "
              L"MIN_MOVEMENT INTEGER)",
              L"SESSIONS (SESSION INTEGER, SESSION_TYPE INTEGER, TIME_ZONE INTEGER)",
              L"SESSION_DETAILS (SESSION INTEGER, START_DAY INTEGER, START_TIME INTEGER, END_DAY INTEGER, "
              L"END_TIME INTEGER, VALUE5 INTEGER, VALUE6 INTEGER, VALUE7 INTEGER)"})
            Run(database, std::wstring(L"CREATE TABLE ") + table);
        database->Close();
    }
    ~BareStore() { Open(&IDM_dmFirebird::IdmDatabase::Open)->Drop(); }

    using Opening = HRESULT (IDM_dmFirebird::IdmDatabase::*)(BSTR, BSTR, BSTR);
    static CComPtr<IDM_dmFirebird::IdmDatabase> Open(Opening opening) {
        CComPtr<IDM_dmFirebird::IdmDatabase> database;
        EXPECT_EQ(S_OK, platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, database));
        const auto connection = Host().Connection();
        EXPECT_EQ(S_OK,
                  (database.Get()->*opening)(CBstr(Host().Path(L"bare.fdb")).Get(),
                                             CBstr(connection.UserName).Get(), CBstr(connection.Password).Get()))
            << platform::ToUtf8(IDM_dmFirebird::LastErrorText(*database));
        return database;
    }
    static void Run(const CComPtr<IDM_dmFirebird::IdmDatabase>& database, const std::wstring& statement) {
        sqStorage::CDatabaseRequest request(database.Get());
        request.Open(statement.c_str(), nullptr, nullptr);
        request.Fetch(0);
    }
    // What a selection fails of.
    static std::wstring Failure() {
        const auto database = Open(&IDM_dmFirebird::IdmDatabase::Open);
        std::wstring failure;
        try {
            CSelectPortfolioHelper(database.Get()).SelectAllPortfolio(NewTable().Get());
        } catch (const platform::CComError& error) {
            failure = error.Text();
        }
        database->Close();
        return failure;
    }
    static void Alter(const std::wstring& statement) {
        const auto database = Open(&IDM_dmFirebird::IdmDatabase::Open);
        Run(database, statement);
        database->Close();
    }
};

TEST_F(BareStore, AColumnThatIsGoneIsNamed) {
    const std::pair<std::wstring, std::vector<std::wstring>> tables[]{
        {L"SETTINGS", {L"SETTING", L"PRICE_SCALE", L"POINT_VALUE", L"DAILY_LIMIT", L"MIN_MOVEMENT"}},
        {L"SESSIONS", {L"SESSION", L"SESSION_TYPE", L"TIME_ZONE"}},
        {L"SESSION_DETAILS",
         {L"SESSION", L"START_DAY", L"START_TIME", L"END_DAY", L"END_TIME", L"VALUE5", L"VALUE6", L"VALUE7"}}};
    EXPECT_THAT(Failure(), testing::HasSubstr(L"PORTFOLIO")) << "the only one that was never there";
    Recorder::Clear();
    for (const auto& [table, columns] : tables)
        for (const std::wstring& column : columns) {
            Alter(L"ALTER TABLE " + table + L" DROP " + column);
            EXPECT_EQ(L"the table " + table + L" of the database has no column " + column +
                          L"; restore the database from a backup",
                      Failure());
            Alter(L"ALTER TABLE " + table + L" ADD " + column + L" INTEGER");
        }
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(PortfolioJoin, ARefusedStatementIsRaisedWithTheDatabasesWords) {
    const auto closed = Host().OpenDatabase();
    closed->Close();
    try {
        CSelectPortfolioHelper(closed.Get()).SelectAllPortfolio(NewTable().Get());
        ADD_FAILURE();
    } catch (const platform::CComError& error) {
        EXPECT_TRUE(error.Text().starts_with(L"GetTransaction: "));
    }
    EXPECT_THROW(CSelectPortfolioHelper(nullptr).SelectAllPortfolio(NewTable().Get()), platform::CComError);
}

TEST_F(PortfolioJoin, ASessionsStringIsBuiltOnceForAllWhoShowIt) {
    const auto table = NewTable();
    const auto rows = table.As<IDM_dmudfcom::ITableRows>();
    // The fields of a portfolio.
    CSelectPortfolioHelper(m_Database.Get()).SelectAllPortfolio(table.Get());
    const auto exchange = static_cast<ULONG>(rows->FindColumn("EXCHANGE"));
    const auto feed = static_cast<ULONG>(rows->FindColumn("DATA_FEED"));
    for (int row = 0; row < 3; ++row) {
        rows->AppendRow();
        rows->PutInteger(exchange, 10);
        rows->PutInteger(feed, 5);
        rows->PutInteger(static_cast<ULONG>(rows->FindColumn("SETTING_TYPE")), 1);
        rows->PutInteger(static_cast<ULONG>(rows->FindColumn("SESSION_TYPE")), row == 2 ? 2 : 1);
        rows->PutInteger(static_cast<ULONG>(rows->FindColumn("TEMPLATE_SESSION")), 202);
    }
    const Exchanges exchanges{{10, {.Exchange = 10, .Setting = 100, .Session = 200}}};
    const DataFeeds feeds{{5, {.DataFeed = 5}}};
    const Settings settings{{100, {.Setting = 100}}};
    const Sessions sessions{{200, {.Session = 200, .SessionsString = {"built before"}}}, {202, {.Session = 202}}};
    CPortfolioRows(*rows, exchanges, feeds, settings, sessions).CompleteAll();
    EXPECT_THAT(Column(table, L"SESSIONS_STRING"), ElementsAre(L"built before", L"built before", L"0:"));
    EXPECT_EQ("0:", sessions.at(202).SessionsString.Text) << "and kept for the next one";
}

TEST_F(PortfolioJoin, ATableWithoutTheFieldsIsRefused) {
    const auto rows = NewTable().As<IDM_dmudfcom::ITableRows>();
    EXPECT_THROW(CPortfolioRows(*rows, {}, {}, {}, {}), platform::CComError);
}

// A storage that never opened its database.
TEST(PortfolioWithoutDatabase, NothingIsSelectedAndNoCursorOpens) {
    sqStorage::CStorage storage;
    Recorder::Clear();
    const auto table = NewTable();
    EXPECT_EQ(0, storage.Open(0, NewRequest().Get(), table.Get()));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"m_Database"));
    EXPECT_EQ(0, storage.Fetch(1, 0));
    storage.Close(1);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"m_Database"));
    storage.SelectPortfolio(0, nullptr, table.Get());
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
    EXPECT_THAT(FieldNames(table), IsEmpty());
}

TEST(PortfolioWithoutDatabase, ANullTableEndsASelectionInSilence) {
    sqStorage::CStorage storage;
    Recorder::Clear();
    storage.SelectPortfolio(0, nullptr, nullptr);
    storage.SelectPortfolio(0, NewRequest().Get(), nullptr);
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(PortfolioJoin, DetailsKeepTheOrderInWhichTheyArrive) {
    WritePortfolio({{.Symbol = 1}});
    Write({L"DELETE FROM SESSION_DETAILS", L"INSERT INTO SESSION_DETAILS VALUES(200,3,0,3,60,0,0,0)",
           L"INSERT INTO SESSION_DETAILS VALUES(201,9,0,9,60,0,0,0)",
           L"INSERT INTO SESSION_DETAILS VALUES(200,1,0,1,60,0,0,0)",
           L"INSERT INTO SESSION_DETAILS VALUES(200,2,0,2,60,0,0,0)"});
    std::wstring expected = L"3:";
    for (const Row& row : Sql(L"SELECT START_DAY FROM SESSION_DETAILS WHERE SESSION+0=200")) {
        const int minute = std::stoi(row[0]) * 1440;
        expected += std::to_wstring(minute) + L"," + std::to_wstring(minute + 1) + L",0,0,0;";
    }
    EXPECT_THAT(Column(Select(), L"SESSIONS_STRING"), ElementsAre(expected));
}

} // namespace
