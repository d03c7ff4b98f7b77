// The selection of symbols, by a request and of all of them.
#include "ForeignTable.h"
#include "PortfolioFixture.h"
#include "RefusingRequest.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "platform/text.h"

namespace {

using namespace tests;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

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

// What the join adds to a row, but for LOCAL_GMT.
constexpr std::array ComputedFields{L"DATA_FEED_NAME",
                                    L"EXCHANGE_NAME",
                                    L"EXCHANGE_TIME_ZONE_INFORMATION",
                                    L"CUSTOM_SETTING",
                                    L"PRICE_SCALE",
                                    L"POINT_VALUE",
                                    L"DAILY_LIMIT",
                                    L"MIN_MOVEMENT",
                                    L"SESSIONS_STRING",
                                    L"EXCHANGE_GMT",
                                    L"SESSIONS_TIME_ZONE_INFORMATION"};

constexpr const wchar_t* InfoColumns =
    L"SELECT SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,EXCHANGE_NAME,"
    L"EXCHANGE_TIME_ZONE_INFORMATION,SETTING_TYPE,SETTING,CUSTOM_SETTING,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,"
    L"MIN_MOVEMENT,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,SESSIONS_STRING,SESSIONS_TIME_ZONE_INFORMATION,"
    L"STRIKE_PRICE,CAST(STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,CONTRACT_MONTH,CONTRACT_YEAR,CALL_PUT,"
    L"MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY,EXCHANGE_GMT,LOCAL_GMT FROM ";

// Without a key and a feed.
constexpr const wchar_t* FilteredColumns =
    L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.DESCRIPTION,P.CUSIP,P.CATEGORY,P.DATA_FEED,D.DATA_FEED_NAME,"
    L"P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,P.TEMPLATE_SESSION,P.CONTRACT_MONTH,"
    L"P.CONTRACT_YEAR,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS "
    L"STRIKE_PRICE_NAME,P.CALL_PUT,P.MARGIN,P.EXPIRATION_DATE,P.EXPIRED,P.EXPIRATION_RULE,P.FIRST_NOTICE_DATE,"
    L"P.DELIVERY,E.EXCHANGE_NAME FROM PORTFOLIO P, EXCHANGES E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND "
    L"P.DATA_FEED=D.DATA_FEED";

class Portfolio : public PortfolioTest {
protected:
    // The tail of the statement that a request comes to.
    void ExpectTail(const CComPtr<IdmRequest>& request, const std::wstring& tail, LONG mode = 0) {
        Select(request, mode);
        EXPECT_TRUE(Host().HasPrepared(InfoColumns + tail)) << platform::ToUtf8(tail);
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    }
    static std::wstring Named(const std::wstring& condition) {
        return L"GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE " + condition + L"))";
    }
};

// --- all symbols

TEST_F(Portfolio, AllSymbolsComeWithThirtyFiveFieldsInOrder) {
    Add({});
    const auto table = All();
    EXPECT_THAT(FieldNames(table), ElementsAreArray(PortfolioFields));
    for (LONG i = 0; i < LONG{PortfolioFields.size()}; ++i) {
        CComPtr<IdmField> field;
        LONG baseCode = -1;
        LONG hasStatus = -1;
        LONG status = -1;
        ASSERT_EQ(S_OK, table->get_Field(i, field.Put()));
        field->get_BaseCode(&baseCode);
        field->get_HasStatus(&hasStatus);
        field->get_Status(&status);
        EXPECT_EQ(0, baseCode) << i;
        EXPECT_EQ(0, hasStatus) << i;
        EXPECT_EQ(0, status) << i;
    }
}

TEST_F(Portfolio, AnEmptyPortfolioHasTheFieldsAndNoRows) {
    const auto table = All();
    EXPECT_THAT(FieldNames(table), ElementsAreArray(PortfolioFields));
    EXPECT_EQ(0, RecordCount(table));
    LONG eof = 0;
    table->First();
    table->get_Eof(&eof);
    EXPECT_NE(0, eof);
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Portfolio, ASymbolComesWithAllThatItHasFromItsFeedExchangeSettingAndSession) {
    Add({});
    EXPECT_THAT(RowsOf(All()), ElementsAre(Row{L"1",          L"ESH15",
                                               L"ES",         L"S&P",
                                               L"cusip",      L"1",
                                               L"5",          L"Feed",
                                               L"10",         L"CME",
                                               ChicagoZone,   L"1",
                                               L"100",        L"0",
                                               L"100",        L"50.5",
                                               L"7",          L"0.25",
                                               L"1",          L"0",
                                               L"0",          ExchangeSessions,
                                               ChicagoZone,   L"1250.25",
                                               L"3",          L"2015",
                                               L"2",          L"9",
                                               L"20.03.2015", L"0",
                                               L"4",          L"01.01.1900",
                                               L"21.03.2015", L"-360",
                                               L"60"}));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Portfolio, FieldsAreFoundByTheirIds) {
    Add({});
    const auto table = All();
    table->First();
    for (const LONG id :
         {1013, 207, 208, 17, 1015, 1005, 1004, 1054, 1007, 1009, 1010, 5, 217, 230, 218, 219, 1012, 440, 441})
        EXPECT_TRUE(FieldOf(table, id)) << id;
}

TEST_F(Portfolio, AllSymbolsComeInTheOrderOfTheirNamesAsTheDatabaseComparesThem) {
    Add({.Symbol = 1, .Name = L"b"});
    Add({.Symbol = 2, .Name = L"B"});
    Add({.Symbol = 3, .Name = L"\u00C4"}); // behind all letters of ASCII
    Add({.Symbol = 4, .Name = L"A1"});
    Add({.Symbol = 5, .Name = L"A"});
    Add({.Symbol = 6, .Name = L"a"});
    EXPECT_THAT(Column(All(), L"SYMBOL_NAME"), ElementsAre(L"A", L"A1", L"B", L"a", L"b", L"\u00C4"));
}

TEST_F(Portfolio, ASettingOfItsOwnIsTakenForTypeZero) {
    Add({.SettingType = 0, .Setting = 101});
    const Record record = Records(All()).at(0);
    EXPECT_EQ(L"101", record.at(L"SETTING"));
    EXPECT_EQ(L"101", record.at(L"CUSTOM_SETTING"));
    EXPECT_EQ(L"1000", record.at(L"PRICE_SCALE"));
    EXPECT_EQ(L"10", record.at(L"POINT_VALUE"));
    EXPECT_EQ(L"8", record.at(L"DAILY_LIMIT"));
    EXPECT_EQ(L"0.125", record.at(L"MIN_MOVEMENT"));
}

TEST_F(Portfolio, TheExchangesSettingIsTakenForEveryOtherTypeAndTheStoredOneIsKeptBeside) {
    for (const LONG type : {1, 2, 3, -1})
        Add({.Symbol = 10 + type, .Name = L"S" + Text(type), .SettingType = type, .Setting = 77});
    const auto table = All();
    EXPECT_THAT(Column(table, L"SETTING"), AllOf(SizeIs(4), Each(L"100")));
    EXPECT_THAT(Column(table, L"CUSTOM_SETTING"), AllOf(SizeIs(4), Each(L"77")));
    EXPECT_THAT(Column(table, L"PRICE_SCALE"), Each(L"100"));
}

TEST_F(Portfolio, ASettingThatTheRowDoesNotHaveIsNotMadeUp) {
    Add({});
    Sql(L"UPDATE PORTFOLIO SET SETTING=NULL, SETTING_TYPE=1");
    const auto table = All();
    EXPECT_THAT(Column(table, L"SETTING"), ElementsAre(L"100"));
    EXPECT_THAT(Column(table, L"CUSTOM_SETTING"), ElementsAre(L""));
    Sql(L"UPDATE PORTFOLIO SET SETTING_TYPE=0");
    TakeAll();
    All();
    EXPECT_THAT(Recorder::Messages(), Contains(L"[WARNING]: Id 0 not found"));
}

TEST_F(Portfolio, TheSessionIsTheOneThatTheTypeNames) {
    LONG symbol = 1;
    for (const LONG type : {0, 1, 2, 3, 4, -1})
        Add({.Symbol = symbol++,
             .Name = L"S" + Text(symbol),
             .SessionType = type,
             .CustomSession = 201,
             .TemplateSession = 202});
    EXPECT_THAT(Column(All(), L"SESSIONS_STRING"),
                ElementsAre(OwnSessions, ExchangeSessions, TemplateSessions, ExchangeSessions, ExchangeSessions,
                            ExchangeSessions));
}

TEST_F(Portfolio, ASymbolOfTheDictionarysSessionTakesThatOfItsExchange) {
    Add({.SettingType = 2, .SessionType = 3, .CustomSession = 201, .TemplateSession = 202});
    const Record record = Records(All()).at(0);
    EXPECT_EQ(ExchangeSessions, record.at(L"SESSIONS_STRING"));
    EXPECT_EQ(L"3", record.at(L"SESSION_TYPE"));
    EXPECT_EQ(L"201", record.at(L"CUSTOM_SESSION"));
    EXPECT_EQ(L"202", record.at(L"TEMPLATE_SESSION"));
    EXPECT_EQ(L"100", record.at(L"SETTING"));
}

TEST_F(Portfolio, TheSessionsZoneIsThatOfTheMachineOfGreenwichOrOfTheExchange) {
    const auto zoneFor = [this](LONG timeZone) {
        Sql(L"UPDATE SESSIONS SET TIME_ZONE=" + Text(timeZone));
        return Column(All(), L"SESSIONS_TIME_ZONE_INFORMATION").at(0);
    };
    Add({});
    EXPECT_EQ(LocalZone, zoneFor(0));
    EXPECT_EQ(GmtZone, zoneFor(1)); // also where the exchange is far from it
    EXPECT_EQ(ChicagoZone, zoneFor(2));
    EXPECT_EQ(L"", zoneFor(3));
    EXPECT_EQ(L"", zoneFor(-1));
    EXPECT_THAT(Column(All(), L"EXCHANGE_TIME_ZONE_INFORMATION"), ElementsAre(ChicagoZone));
}

TEST_F(Portfolio, DistancesFromGreenwichAreInMinutesWithTheSignTurned) {
    Add({});
    const auto table = All();
    EXPECT_THAT(Column(table, L"EXCHANGE_GMT"), ElementsAre(L"-360"));
    EXPECT_THAT(Column(table, L"LOCAL_GMT"), ElementsAre(L"60"));
}

TEST_F(Portfolio, TheMachinesZoneIsAskedForAtEachSelection) {
    Add({.SessionType = 2, .TemplateSession = 202});
    {
        const CEnvironment zone(L"TZ", L"EST5");
        const auto table = All();
        EXPECT_THAT(Column(table, L"LOCAL_GMT"), ElementsAre(L"-300"));
        EXPECT_THAT(Column(table, L"SESSIONS_TIME_ZONE_INFORMATION"),
                    ElementsAre(L"300,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000"));
    }
    EXPECT_THAT(Column(All(), L"LOCAL_GMT"), ElementsAre(L"60"));
}

TEST_F(Portfolio, AZoneWithoutDaylightSavingHasNoMonthOfStandardTime) {
    Add({});
    Sql(L"UPDATE EXCHANGES SET USE_DAYLIGHT=0");
    EXPECT_THAT(Column(All(), L"EXCHANGE_TIME_ZONE_INFORMATION"),
                ElementsAre(L"360,0,0,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000"));
}

TEST_F(Portfolio, AZoneIsReadFromItsColumns) {
    Add({});
    Sql(L"UPDATE EXCHANGES SET BIAS=-330, STANDARD_BIAS=1, STANDARD_MONTH=10, STANDARD_DAY_OF_WEEK=6, "
        L"STANDARD_DAY=5, "
        L"STANDARD_TIME='23:59:58.9000', DAYLIGHT_BIAS=-61, DAYLIGHT_MONTH=4, DAYLIGHT_DAY_OF_WEEK=2, "
        L"DAYLIGHT_DAY=3, "
        L"DAYLIGHT_TIME='01:02:03'");
    const auto table = All();
    EXPECT_THAT(Column(table, L"EXCHANGE_TIME_ZONE_INFORMATION"),
                ElementsAre(L"-330,1,10,6,5,23:59:58.0000,-61,4,2,3,01:02:03.0000"));
    EXPECT_THAT(Column(table, L"EXCHANGE_GMT"), ElementsAre(L"330"));
}

TEST_F(Portfolio, AnExchangeWithoutAZoneIsInGreenwich) {
    Add({});
    Sql(L"UPDATE EXCHANGES SET USE_DAYLIGHT=NULL, BIAS=NULL, STANDARD_BIAS=NULL, STANDARD_MONTH=NULL, "
        L"STANDARD_DAY_OF_WEEK=NULL, STANDARD_DAY=NULL, STANDARD_TIME=NULL, DAYLIGHT_BIAS=NULL, "
        L"DAYLIGHT_MONTH=NULL, "
        L"DAYLIGHT_DAY_OF_WEEK=NULL, DAYLIGHT_DAY=NULL, DAYLIGHT_TIME=NULL");
    const auto table = All();
    EXPECT_THAT(Column(table, L"EXCHANGE_TIME_ZONE_INFORMATION"), ElementsAre(GmtZone));
    EXPECT_THAT(Column(table, L"EXCHANGE_GMT"), ElementsAre(L"0"));
}

TEST_F(Portfolio, SymbolsOfOneSessionShowOneText) {
    std::vector<tagSymbolRow> symbols;
    for (LONG symbol = 1; symbol <= 600; ++symbol)
        symbols.push_back({.Symbol = symbol, .Name = L"S" + Text(1000 + symbol)});
    AddAll(symbols);
    const auto table = All();
    EXPECT_THAT(Column(table, L"SESSIONS_STRING"), AllOf(SizeIs(600), Each(ExchangeSessions)));
    EXPECT_THAT(Column(table, L"LOCAL_GMT"), Each(L"60"));
    EXPECT_THAT(Column(table, L"EXCHANGE_NAME"), Each(L"CME"));
}

TEST_F(Portfolio, DetailsOfASessionThatIsGoneAreDropped) {
    Add({});
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(999,1,0,1,60,0,0,0)");
    EXPECT_THAT(Column(All(), L"SESSIONS_STRING"), ElementsAre(ExchangeSessions));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Portfolio, TextsOfEveryAlphabetArriveWhole) {
    Add({.Name = L"\u043D\u0435\u0444\u0442\u044C", .Description = L"Gr\u00F6\u00DFe"});
    Sql(L"UPDATE EXCHANGES SET EXCHANGE_NAME='\u0411\u0438\u0440\u0436\u0430'");
    Sql(L"UPDATE DATA_FEEDS SET DATA_FEED_NAME='\u6E90'");
    const Record record = Records(All()).at(0);
    EXPECT_EQ(L"\u043D\u0435\u0444\u0442\u044C", record.at(L"SYMBOL_NAME"));
    EXPECT_EQ(L"Gr\u00F6\u00DFe", record.at(L"DESCRIPTION"));
    EXPECT_EQ(L"\u0411\u0438\u0440\u0436\u0430", record.at(L"EXCHANGE_NAME"));
    EXPECT_EQ(L"\u6E90", record.at(L"DATA_FEED_NAME"));
}

// Three symbols, of which the one in the middle refers to something that is gone.
class BrokenPortfolio : public Portfolio {
protected:
    void ExpectEndsAt(const tagSymbolRow& broken, LONG missing) {
        Add({.Symbol = 1, .Name = L"A"});
        tagSymbolRow row = broken;
        row.Symbol = 2;
        row.Name = L"B";
        Add(row);
        Add({.Symbol = 3, .Name = L"C"});
        TakeAll();
        const auto table = All();
        EXPECT_THAT(Recorder::Messages(), ElementsAre(L"[WARNING]: Id " + Text(missing) + L" not found"));
        EXPECT_THAT(Recorder::Errors(), SizeIs(1));
        const std::vector<Record> records = Records(table);
        ASSERT_EQ(3U, records.size());
        EXPECT_EQ(L"CME", records[0].at(L"EXCHANGE_NAME"));
        EXPECT_EQ(L"60", records[0].at(L"LOCAL_GMT"));
        EXPECT_EQ(L"100", records[0].at(L"SETTING"));
        for (const std::size_t i : {1U, 2U}) {
            EXPECT_EQ(i == 1 ? L"B" : L"C", records[i].at(L"SYMBOL_NAME"));
            EXPECT_EQ(Text(i == 1 ? row.Setting : 0), records[i].at(L"SETTING")) << "still the stored one";
            for (const wchar_t* field : ComputedFields)
                EXPECT_EQ(L"", records[i].at(field)) << i << platform::ToUtf8(field);
        }
        // The first thing a row is given.
        EXPECT_EQ(L"60", records[1].at(L"LOCAL_GMT"));
        EXPECT_EQ(L"", records[2].at(L"LOCAL_GMT"));
    }
};

TEST_F(BrokenPortfolio, ASymbolOfAGoneExchangeEndsTheWalk) { ExpectEndsAt({.Exchange = 77}, 77); }

TEST_F(BrokenPortfolio, ASymbolOfAGoneDataFeedEndsTheWalk) { ExpectEndsAt({.DataFeed = 78}, 78); }

TEST_F(BrokenPortfolio, ASymbolOfAGoneSettingEndsTheWalk) { ExpectEndsAt({.SettingType = 0, .Setting = 79}, 79); }

TEST_F(BrokenPortfolio, ASymbolOfAGoneSessionEndsTheWalk) {
    ExpectEndsAt({.SessionType = 2, .TemplateSession = 80}, 80);
}

TEST_F(BrokenPortfolio, TheExchangeIsLookedUpFirstThenTheFeedTheSettingAndTheSession) {
    tagSymbolRow row{
        .DataFeed = 78, .Exchange = 77, .SettingType = 0, .Setting = 79, .SessionType = 0, .CustomSession = 80};
    const auto missing = [&] {
        Sql(L"DELETE FROM PORTFOLIO");
        Add(row);
        TakeAll();
        All();
        return Recorder::Messages();
    };
    EXPECT_THAT(missing(), ElementsAre(L"[WARNING]: Id 77 not found"));
    row.Exchange = 10;
    EXPECT_THAT(missing(), ElementsAre(L"[WARNING]: Id 78 not found"));
    row.DataFeed = 5;
    EXPECT_THAT(missing(), ElementsAre(L"[WARNING]: Id 79 not found"));
    row.Setting = 100;
    EXPECT_THAT(missing(), ElementsAre(L"[WARNING]: Id 80 not found"));
    row.CustomSession = 201;
    EXPECT_THAT(missing(), IsEmpty());
}

TEST_F(BrokenPortfolio, TheWalkEndsAnywhereInALongPortfolio) {
    constexpr LONG Broken = 700;
    std::vector<tagSymbolRow> symbols;
    for (LONG symbol = 1; symbol <= 1000; ++symbol)
        symbols.push_back(
            {.Symbol = symbol, .Name = L"S" + Text(10000 + symbol), .Exchange = symbol == Broken ? 77 : 10});
    AddAll(symbols);
    const std::vector<std::wstring> names = Column(All(), L"EXCHANGE_NAME");
    ASSERT_EQ(1000U, names.size());
    for (LONG row = 0; row < 1000; ++row)
        ASSERT_EQ(row < Broken - 1 ? L"CME" : L"", names[static_cast<std::size_t>(row)]) << row;
}

TEST_F(BrokenPortfolio, ASessionThatCannotBeWrittenEndsTheWalkWhereItIsFirstNeeded) {
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(201,-1,0,0,0,0,0,0)");
    Add({.Symbol = 1, .Name = L"A"});
    EXPECT_THAT(Column(All(), L"SESSIONS_STRING"), ElementsAre(ExchangeSessions));
    EXPECT_THAT(Recorder::Errors(), IsEmpty()) << "nobody needs it";
    Add({.Symbol = 2, .Name = L"B", .SessionType = 0, .CustomSession = 201});
    EXPECT_THAT(Column(All(), L"SESSIONS_STRING"), ElementsAre(ExchangeSessions, L""));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"a detail of session 201 has a negative value")));
}

TEST_F(Portfolio, NoTransactionOutlivesASelection) {
    // The isolation of a snapshot, which nothing else of the storage uses.
    const auto snapshots = [this] {
        return Sql(L"SELECT COUNT(*) AS DATA_FEED FROM MON$TRANSACTIONS WHERE MON$ISOLATION_MODE=1 AND "
                   L"MON$ATTACHMENT_ID<>CURRENT_CONNECTION")
            .at(0)
            .at(0);
    };
    const std::wstring before = snapshots();
    Add({});
    auto table = All();
    EXPECT_EQ(before, snapshots());
    Add({.Symbol = 2, .Name = L"X", .Exchange = 77});
    table = All();
    EXPECT_EQ(before, snapshots());
}

TEST_F(Portfolio, ATableThatHasRowsKeepsThem) {
    Add({});
    const auto table = All();
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, nullptr, table.Get()));
    EXPECT_THAT(Column(table, L"SYMBOL"), ElementsAre(L"1", L"1"));
    EXPECT_THAT(Column(table, L"SETTING"), ElementsAre(L"100", L"100"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Portfolio, ATableWithAnIndexIsFilledInItsRecordOrder) {
    Add({.Symbol = 1, .Name = L"B"});
    Add({.Symbol = 2, .Name = L"A"});
    const auto table = NewTable();
    table->AddFieldById(IDM_dmudfcom::fieldExchangeName, 0, 0, 0);
    table->AddFieldById(IDM_dmudfcom::fieldSymbol, 0, 0, 0);
    ASSERT_EQ(S_OK, table->CreateIndex(CBstr(L"EXCHANGE_NAME;SYMBOL").Get(), 1));
    ASSERT_EQ(S_OK, table->SetIndex(1));
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, nullptr, table.Get()));
    EXPECT_THAT(Column(table, L"SYMBOL"), ElementsAre(L"1", L"2"));
    EXPECT_THAT(Column(table, L"EXCHANGE_NAME"), ElementsAre(L"CME", L"CME"));
    table->ResetIndex();
    EXPECT_THAT(Column(table, L"SYMBOL"), ElementsAre(L"2", L"1"));
}

TEST_F(Portfolio, AFieldThatTheClientDeclaredOtherwiseIsConverted) {
    Add({});
    const auto table = NewTable();
    ASSERT_EQ(S_OK, table->AddNewField(CBstr(L"EXCHANGE").Get(), 0, 0)); // as a text
    ASSERT_EQ(S_OK, table->AddNewField(CBstr(L"POINT_VALUE").Get(), 6, 0));
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, nullptr, table.Get()));
    EXPECT_THAT(Column(table, L"EXCHANGE_NAME"), ElementsAre(L"CME"));
    EXPECT_THAT(Column(table, L"POINT_VALUE"), ElementsAre(L"50"));
}

TEST_F(Portfolio, ATableOfAnotherMakingIsReportedAndStaysAsItIs) {
    Add({});
    const auto table = platform::MakeObject<CForeignTable>();
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, nullptr, table.Get()));
    EXPECT_EQ(0, table->Calls);
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"pass a table of the class dmTable")));
}

TEST_F(Portfolio, ANullTableIsRefusedAndANullRequestIsNot) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectPortfolio(0, nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectPortfolio(0, NewRequest().Get(), nullptr));
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, nullptr, NewTable().Get()));
}

TEST_F(Portfolio, SelectionsAreNotTracedAndNotAnnounced) {
    Add({});
    All();
    SelectSymbol(1);
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

// --- by a request

TEST_F(Portfolio, ASymbolAskedForByItsKeyComesWithAllThatItHas) {
    Add({});
    Add({.Symbol = 2, .Name = L"NQH15"});
    const auto request = NewRequest();
    request->put_Symbol(0, 1);
    const auto table = Select(request);
    EXPECT_THAT(FieldNames(table),
                AllOf(SizeIs(35), Contains(L"STRIKE_PRICE_NAME"), testing::Not(Contains(L"DATA_FEED_NAME"))));
    EXPECT_THAT(
        RowsOf(table),
        ElementsAre(
            Row{L"1",          L"ESH15",   L"ES",        L"S&P",        L"cusip",      L"1",    L"5",
                L"10",         L"CME",     ChicagoZone,  L"1",          L"100",        L"0",    L"100",
                L"50.5",       L"7",       L"0.25",      L"1",          L"0",          L"0",    ExchangeSessions,
                ChicagoZone,   L"1250.25", L"1250.2500", L"3",          L"2015",       L"2",    L"9",
                L"20.03.2015", L"0",       L"4",         L"01.01.1900", L"21.03.2015", L"-360", L"60"}));
    EXPECT_TRUE(Host().HasPrepared(std::wstring(InfoColumns) + L"GET_SYMBOL_INFO(1)"));
}

TEST_F(Portfolio, AnUnknownKeyGivesNoRow) {
    const auto request = NewRequest();
    request->put_Symbol(0, 4711);
    const auto table = Select(request);
    EXPECT_EQ(0, RecordCount(table));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Portfolio, AKeyOfMinusOneOrZeroIsNone) {
    Add({});
    for (const LONG none : {0, -1}) {
        const auto request = NewRequest();
        request->put_Symbol(0, none);
        request->put_Datafeed(0, 5);
        request->put_SymbolName(0, CBstr(L"ESH15").Get());
        request->put_Category(0, 254);
        EXPECT_THAT(Column(Select(request), L"SYMBOL"), ElementsAre(L"1")) << none;
    }
    EXPECT_FALSE(Host().HasPrepared(std::wstring(InfoColumns) + L"GET_SYMBOL_INFO(-1)"));
}

TEST_F(Portfolio, ANameWithinAFeedMayBeNarrowedByCategoryAndExchange) {
    const auto request = NewRequest();
    request->put_Datafeed(0, 5);
    request->put_SymbolName(0, CBstr(L"ESH15").Get());
    const std::wstring name = L"DATA_FEED=5 AND UPPER(SYMBOL_NAME)=UPPER('ESH15')";
    request->put_Category(0, 254);
    ExpectTail(request, Named(name));
    request->put_Category(0, -1);
    ExpectTail(request, Named(name));
    request->put_ExchangeId(0, 10);
    ExpectTail(request, Named(name + L" AND EXCHANGE=10"));
    request->put_Category(0, 254);
    ExpectTail(request, Named(name + L" AND EXCHANGE=10"));
    request->put_Category(0, 3);
    ExpectTail(request, Named(name + L" AND CATEGORY=3 AND EXCHANGE=10"));
    request->put_ExchangeId(0, 0);
    ExpectTail(request, Named(name + L" AND CATEGORY=3"));
    request->put_Category(0, 0);
    ExpectTail(request, Named(name + L" AND CATEGORY=0"));
}

TEST_F(Portfolio, ARequestNeverWrittenAsksForCategoryZero) {
    Add({.Category = 0});
    const auto request = NewRequest();
    request->put_Datafeed(0, 5);
    request->put_SymbolName(0, CBstr(L"ESH15").Get());
    ExpectTail(request, Named(L"DATA_FEED=5 AND UPPER(SYMBOL_NAME)=UPPER('ESH15') AND CATEGORY=0"));
}

TEST_F(Portfolio, ANameWithinAFeedGivesAtMostOneSymbolWhateverItsCase) {
    Add({.Symbol = 1, .Exchange = 10});
    Add({.Symbol = 2, .Name = L"esh15", .Category = 2});
    Add({.Symbol = 3, .DataFeed = 6});
    const auto request = NewRequest();
    request->put_Datafeed(0, 5);
    request->put_Category(0, -1);
    request->put_SymbolName(0, CBstr(L"eSh15").Get());
    EXPECT_EQ(1, RecordCount(Select(request)));
    request->put_Category(0, 2);
    EXPECT_THAT(Column(Select(request), L"SYMBOL"), ElementsAre(L"2"));
    request->put_Category(0, 9);
    EXPECT_EQ(0, RecordCount(Select(request)));
}

TEST_F(Portfolio, AQuoteInTheNameIsDoubled) {
    Add({.Name = L"O''N"});
    const auto request = NewRequest();
    request->put_Datafeed(0, 5);
    request->put_Category(0, -1);
    request->put_SymbolName(0, CBstr(L"O'N").Get());
    EXPECT_THAT(Column(Select(request), L"SYMBOL_NAME"), ElementsAre(L"O'N"));
    ExpectTail(request, Named(L"DATA_FEED=5 AND UPPER(SYMBOL_NAME)=UPPER('O''N')"));
}

TEST_F(Portfolio, TheModeIsThatOfTheCaller) {
    const auto request = NewRequest();
    request->put_Symbol(0, 1);
    request->put_Symbol(7, 2);
    Add({.Symbol = 1});
    Add({.Symbol = 2, .Name = L"NQ"});
    EXPECT_THAT(Column(Select(request, 7), L"SYMBOL"), ElementsAre(L"2"));
    request->put_Datafeed(3, 5);
    request->put_SymbolName(3, CBstr(L"nq").Get());
    request->put_Category(3, 4);
    request->put_ExchangeId(3, 9);
    ExpectTail(request, Named(L"DATA_FEED=5 AND UPPER(SYMBOL_NAME)=UPPER('nq') AND CATEGORY=4 AND EXCHANGE=9"), 3);
}

TEST_F(Portfolio, WithoutKeyAndFeedTheFiltersMaySelectMany) {
    Add({.Symbol = 1, .Name = L"ESH15"});
    Add({.Symbol = 2, .Name = L"esM15", .DataFeed = 6});
    Add({.Symbol = 3, .Name = L"NQH15"});
    const auto request = NewRequest();
    request->put_Category(0, -1);
    request->put_SymbolName(0, CBstr(L"es").Get());
    const auto table = Select(request);
    EXPECT_THAT(Column(table, L"SYMBOL"), testing::UnorderedElementsAre(L"1", L"2"));
    EXPECT_THAT(FieldNames(table), AllOf(SizeIs(26), Contains(L"DATA_FEED_NAME"), Contains(L"STRIKE_PRICE_NAME")));
    EXPECT_TRUE(Host().HasPrepared(std::wstring(FilteredColumns) + L" AND UPPER(P.SYMBOL_NAME) LIKE 'ES%'"));
}

TEST_F(Portfolio, ALongFilterReachesTheDatabaseWhole) {
    const auto request = NewRequest();
    request->put_Category(0, -1);
    request->put_SymbolName(0, CBstr(std::wstring(600, L'x')).Get());
    EXPECT_EQ(0, RecordCount(Select(request)));
    const std::wstring sql =
        FilteredColumns + (L" AND UPPER(P.SYMBOL_NAME) LIKE '" + std::wstring(600, L'X')) + L"%'";
    EXPECT_GT(sql.size(), 1024U);
    EXPECT_TRUE(Host().HasPrepared(sql));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Portfolio, ARequestThatLeavesItsCategoryAsItIsAsksForNone) {
    const auto request = platform::MakeObject<CRefusingRequest>();
    request->OnGet = [](const std::wstring&) { return S_OK; };
    request->Datafeed = 5;
    request->SymbolName = L"ESH15";
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, request.Get(), NewTable().Get()));
    EXPECT_TRUE(Host().HasPrepared(InfoColumns + Named(L"DATA_FEED=5 AND UPPER(SYMBOL_NAME)=UPPER('ESH15')")));
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
}

TEST_F(Portfolio, ARequestThatLeavesEverythingAsItIsAsksForNoKeyAndNoFeed) {
    const auto request = platform::MakeObject<CRefusingRequest>();
    request->OnGet = [](const std::wstring&) { return S_OK; };
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, request.Get(), NewTable().Get()));
    EXPECT_TRUE(Host().HasPrepared(std::wstring(FilteredColumns) + L" AND P.CATEGORY=0"));
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
}

TEST_F(Portfolio, OnlyZeroAndMinusOneAreNoKeyAndOnlyZeroIsNoFeed) {
    const auto request = NewRequest();
    request->put_Symbol(0, -2);
    ExpectTail(request, L"GET_SYMBOL_INFO(-2)");
    request->put_Symbol(0, 0);
    request->put_Category(0, -1);
    request->put_SymbolName(0, CBstr(L"ESH15").Get());
    for (const LONG feed : {-1, -5}) {
        request->put_Datafeed(0, feed);
        ExpectTail(request, Named(L"DATA_FEED=" + Text(feed) + L" AND UPPER(SYMBOL_NAME)=UPPER('ESH15')"));
    }
    for (const LONG none : {-1, -10}) {
        request->put_ExchangeId(0, none);
        request->put_Datafeed(0, 5);
        ExpectTail(request, Named(L"DATA_FEED=5 AND UPPER(SYMBOL_NAME)=UPPER('ESH15')"));
    }
}

TEST_F(Portfolio, AStatementLongerThanItsBufferIsReportedAndDoesNotRun) {
    Add({});
    const auto request = NewRequest();
    request->put_Datafeed(0, 5);
    request->put_Category(0, -1);
    const std::size_t around =
        std::wstring(InfoColumns).size() + Named(L"DATA_FEED=5 AND UPPER(SYMBOL_NAME)=UPPER('')").size();
    request->put_SymbolName(0, CBstr(std::wstring(4095 - around, L'x')).Get());
    EXPECT_EQ(0, RecordCount(Select(request)));
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    request->put_SymbolName(0, CBstr(std::wstring(4096 - around, L'x')).Get());
    EXPECT_EQ(0, RecordCount(Select(request)));
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
}

TEST_F(Portfolio, ARequestThatRefusesToTellIsReportedAndTheTableStaysAsItWas) {
    Add({});
    const auto request = platform::MakeObject<CRefusingRequest>();
    const auto table = NewTable();
    EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, request.Get(), table.Get()));
    LONG fields = -1;
    table->get_FieldCount(&fields);
    EXPECT_EQ(0, fields);
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"0x80004004"))) << "the status of the refusal";
}

TEST_F(Portfolio, ARequestIsReadInOneOrderAndTheFirstRefusalEndsIt) {
    const std::vector<std::wstring> order{L"Symbol", L"SymbolName", L"Datafeed", L"Category", L"ExchangeId"};
    for (std::size_t refused = 0; refused < order.size(); ++refused) {
        TakeAll();
        const auto request = platform::MakeObject<CRefusingRequest>();
        std::vector<std::wstring> asked;
        request->OnGet = [&](const std::wstring& property) {
            asked.push_back(property);
            return property == order[refused] ? E_ABORT : S_OK;
        };
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(0, request.Get(), table.Get()));
        EXPECT_EQ(std::vector(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(refused) + 1), asked);
        EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"0x80004004"))) << refused;
        EXPECT_THAT(FieldNames(table), IsEmpty());
    }
}

TEST_F(Portfolio, ARequestReadsTheZoneThatItsConnectionWasTold) {
    Add({.SessionType = 2, .TemplateSession = 202});
    const Record record = SelectSymbol(1);
    EXPECT_EQ(L"60", record.at(L"LOCAL_GMT"));
    EXPECT_EQ(LocalZone, record.at(L"SESSIONS_TIME_ZONE_INFORMATION"));
}

} // namespace
