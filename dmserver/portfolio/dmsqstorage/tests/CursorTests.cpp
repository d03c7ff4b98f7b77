// Cursors as a client has them: Advise, Fetch, Unadvise.
#include "CursorFixture.h"
#include "RefusingRequest.h"

#include "platform/text.h"

#include <thread>

namespace {

using namespace tests;
using IDM_qxStorage::IqxPortfolio;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class Cursors : public PortfolioTest {
protected:
    void SetUp() override {
        PortfolioTest::SetUp();
        m_Portfolio = m_Storage.As<IqxPortfolio>();
    }
    void TearDown() override { m_Portfolio.Reset(); }

    LONG Advise(const tagCursorRequest& request, const CComPtr<IdmTable>& table) {
        LONG id = -1;
        EXPECT_EQ(S_OK, m_Portfolio->Advise(request.Mode, request.Make().Get(), table.Get(), &id));
        return id;
    }
    LONG Fetch(LONG id, LONG count) {
        EXPECT_EQ(S_OK, m_Portfolio->Fetch(id, &count));
        return count;
    }
    void Unadvise(LONG id) { EXPECT_EQ(S_OK, m_Portfolio->Unadvise(id)); }
    // All rows of a cursor.
    CComPtr<IdmTable> Read(const tagCursorRequest& request) {
        auto table = NewTable();
        const LONG id = Advise(request, table);
        const LONG count = Fetch(id, 0);
        EXPECT_EQ(count, RecordCount(table));
        Unadvise(id);
        return table;
    }
    void ExpectSql(const tagCursorRequest& request, const std::wstring& sql) {
        Read(request);
        EXPECT_TRUE(Host().HasPrepared(sql)) << platform::ToUtf8(sql);
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    }
    // Transactions of the storage.
    static LONG Transactions() {
        return std::stoi(Sql(L"SELECT COUNT(*) AS DATA_FEED FROM MON$TRANSACTIONS WHERE "
                             L"MON$ATTACHMENT_ID<>CURRENT_CONNECTION")
                             .at(0)
                             .at(0));
    }
    void AddThree() {
        Write(Host(), {tagSymbolRow{.Symbol = 1, .Name = L"ESH15"}.Insert(),
                       tagSymbolRow{.Symbol = 2, .Name = L"ESM15", .Description = L"abc"}.Insert(),
                       tagSymbolRow{.Symbol = 3, .Name = L"NQH15", .Category = 0, .DataFeed = 6}.Insert()});
    }
    void AddCustomFuture(LONG key, const wchar_t* name, LONG feed = 5) {
        Sql(L"INSERT INTO CUSTOM_FUTURES VALUES(" + Text(key) + L",'" + name + L"','ES','C','first',18," +
            Text(feed) + L",10,1,0,1,0,0,9)");
    }

    CComPtr<IqxPortfolio> m_Portfolio;
};

TEST_F(Cursors, RowsComeInBatchesIntoTheClientsTable) {
    AddThree();
    const auto table = NewTable();
    const LONG id = Advise({}, table);
    EXPECT_GE(id, 1);
    EXPECT_EQ(0, RecordCount(table)) << "nothing is fetched by Advise";
    EXPECT_EQ(2, Fetch(id, 2));
    EXPECT_EQ(2, RecordCount(table));
    EXPECT_EQ(1, Fetch(id, 2)) << "appended behind those before";
    EXPECT_THAT(Column(table, L"SYMBOL"), UnorderedElementsAre(L"1", L"2", L"3"));
    EXPECT_EQ(0, Fetch(id, 2));
    Unadvise(id);
    EXPECT_EQ(3, RecordCount(table));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Cursors, ACountOfZeroDeliversEverythingLeftAndASecondOneNothing) {
    AddThree();
    const auto table = NewTable();
    const LONG id = Advise({}, table);
    EXPECT_EQ(1, Fetch(id, 1));
    EXPECT_EQ(2, Fetch(id, 0));
    EXPECT_EQ(0, Fetch(id, 0));
    EXPECT_EQ(3, RecordCount(table));
    Unadvise(id);
}

TEST_F(Cursors, IdsRiseByOneAndCursorsAreIndependent) {
    AddThree();
    const auto first = NewTable();
    const auto second = NewTable();
    const LONG id = Advise({}, first);
    EXPECT_EQ(id + 1, Advise({.Category = 0}, second));
    EXPECT_EQ(1, Fetch(id, 1));
    EXPECT_EQ(1, Fetch(id + 1, 0));
    EXPECT_THAT(Column(second, L"SYMBOL"), ElementsAre(L"3"));
    Unadvise(id + 1);
    EXPECT_EQ(2, Fetch(id, 0));
    EXPECT_EQ(3, RecordCount(first));
    EXPECT_EQ(id + 2, Advise({}, NewTable())) << "none is used again";
    Unadvise(id);
    Unadvise(id + 2);
}

TEST_F(Cursors, ATypeWithoutAStatementHasAnIdAndNoCursor) {
    const LONG before = Advise({}, NewTable());
    LONG last = before;
    for (const LONG type : {3, 4, 8, 11, -1}) {
        const LONG id = Advise({.Type = type}, NewTable());
        EXPECT_EQ(++last, id) << type;
        EXPECT_EQ(0, Fetch(id, 0)) << type;
        EXPECT_THAT(Recorder::Asserts(), IsEmpty()) << type;
        Unadvise(id);
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"end()!=it")) << type;
        TakeAll();
    }
    const LONG after = Advise({}, NewTable());
    EXPECT_EQ(last + 1, after);
    Unadvise(after);
    Unadvise(before);
}

TEST_F(Cursors, AnUnknownIdIsReportedByUnadviseAndLeavesTheOthersAlone) {
    AddThree();
    const auto table = NewTable();
    const LONG id = Advise({}, table);
    EXPECT_EQ(1, Fetch(id, 1));
    for (const LONG unknown : {id + 1, id - 1, LONG{0}, LONG{-1}})
        Unadvise(unknown);
    EXPECT_THAT(Recorder::Asserts(), AllOf(SizeIs(4), Each(L"end()!=it")));
    EXPECT_EQ(2, Fetch(id, 0));
    Unadvise(id);
}

TEST_F(Cursors, FetchOfAnUnknownIdDeliversNothingInSilence) {
    EXPECT_EQ(0, Fetch(4711, 5));
    EXPECT_EQ(0, Fetch(4711, 0));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Cursors, FetchAfterUnadviseDeliversNothing) {
    AddThree();
    const LONG id = Advise({}, NewTable());
    Unadvise(id);
    EXPECT_EQ(0, Fetch(id, 0));
}

TEST_F(Cursors, ANegativeCountIsReportedAndDeliversNothing) {
    AddThree();
    const auto table = NewTable();
    const LONG id = Advise({}, table);
    EXPECT_EQ(0, Fetch(id, -1));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(StartsWith(L"Fetch: ")));
    EXPECT_EQ(3, Fetch(id, 0)) << "the cursor goes on";
    Unadvise(id);
}

TEST_F(Cursors, ATableThatIsGivenOtherFieldsIsReportedAndTakesNoMore) {
    AddThree();
    const auto table = NewTable();
    const LONG id = Advise({}, table);
    EXPECT_EQ(1, Fetch(id, 1));
    const auto other = NewTable();
    ASSERT_EQ(S_OK, other->AddFieldByName(CBstr(L"SYMBOL").Get(), 0, 0, 0));
    ASSERT_EQ(S_OK, table->Attach(other.Get()));
    EXPECT_EQ(0, Fetch(id, 1));
    EXPECT_THAT(Recorder::Asserts(), SizeIs(1));
    EXPECT_EQ(0, RecordCount(table));
    Unadvise(id);
}

TEST_F(Cursors, ANullRequestOrTableOpensNothing) {
    LONG id = -1;
    EXPECT_EQ(S_OK, m_Portfolio->Advise(0, nullptr, NewTable().Get(), &id));
    EXPECT_EQ(0, id);
    id = -1;
    EXPECT_EQ(S_OK, m_Portfolio->Advise(0, NewRequest().Get(), nullptr, &id));
    EXPECT_EQ(0, id);
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Cursors, ANullPlaceForTheIdOrTheCountIsReportedAndRefused) {
    EXPECT_EQ(E_INVALIDARG, m_Portfolio->Advise(0, NewRequest().Get(), NewTable().Get(), nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Id"));
    EXPECT_EQ(E_INVALIDARG, m_Portfolio->Fetch(1, nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Id", L"Count"));
}

TEST_F(Cursors, ACursorHoldsItsTransactionUntilUnadvise) {
    AddThree();
    const LONG before = Transactions();
    const LONG id = Advise({}, NewTable());
    EXPECT_EQ(before + 1, Transactions());
    Fetch(id, 0);
    EXPECT_EQ(before + 1, Transactions()) << "also when it has delivered everything";
    Unadvise(id);
    EXPECT_EQ(before, Transactions());
}

TEST_F(Cursors, ACursorHoldsItsTable) {
    AddThree();
    auto table = NewTable();
    IdmTable* const raw = table.Get();
    const LONG id = Advise({}, table);
    table.Reset();
    EXPECT_EQ(3, Fetch(id, 0));
    const CComPtr<IdmTable> again(raw);
    EXPECT_EQ(3, RecordCount(again));
    Unadvise(id);
}

TEST_F(Cursors, UnadviseLetsGoOfTheTable) {
    AddThree();
    const auto table = NewTable();
    const auto references = [&] {
        table->AddRef();
        return table->Release();
    };
    const LONG id = Advise({}, table);
    EXPECT_GT(references(), 1U);
    Fetch(id, 1);
    Unadvise(id);
    EXPECT_EQ(1U, references());
}

TEST_F(Cursors, AForgottenCursorIsReportedWhenTheStorageGoesAndEndsWithIt) {
    AddThree();
    Advise({}, NewTable());
    m_Portfolio.Reset();
    m_Storage.Reset();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"empty()"));
    EXPECT_EQ(0, Transactions());
}

TEST_F(Cursors, EndedCursorsLeaveNothingToReport) {
    Unadvise(Advise({}, NewTable()));
    m_Portfolio.Reset();
    m_Storage.Reset();
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

// --- symbols

TEST_F(Cursors, SymbolsComeWithTheShortColumns) {
    AddThree();
    const auto table = Read({.SymbolName = L"es"});
    EXPECT_THAT(FieldNames(table),
                ElementsAre(L"SYMBOL", L"SYMBOL_NAME", L"CATEGORY", L"DESCRIPTION", L"STRIKE_PRICE",
                            L"STRIKE_PRICE_NAME", L"CALL_PUT", L"EXPIRATION_DATE", L"EXCHANGE_NAME"));
    EXPECT_THAT(RowsOf(table),
                UnorderedElementsAre(
                    Row{L"1", L"ESH15", L"1", L"S&P", L"1250.25", L"1250.2500", L"2", L"20.03.2015", L"CME"},
                    Row{L"2", L"ESM15", L"1", L"abc", L"1250.25", L"1250.2500", L"2", L"20.03.2015", L"CME"}));
}

TEST_F(Cursors, SymbolsAreFilteredInOneOrder) {
    const std::wstring head = ShortSymbolHead;
    ExpectSql({}, head);
    ExpectSql({.Symbol = 3, .Datafeed = 5, .SymbolName = L"x", .Category = 1}, head + L" AND P.SYMBOL=3");
    ExpectSql({.Datafeed = 5, .SymbolName = L"e's", .Description = L"ab", .Category = 2, .ExchangeId = 10},
              head +
                  L" AND UPPER(P.SYMBOL_NAME) LIKE 'E''S%' AND P.CATEGORY=2 AND P.EXCHANGE=10 AND P.DATA_FEED=5");
}

TEST_F(Cursors, AKeyOfMinusOneBehavesAsNone) {
    AddThree();
    ExpectSql({.Symbol = -1, .Category = 1}, std::wstring(ShortSymbolHead) + L" AND P.CATEGORY=1");
}

TEST_F(Cursors, AStarForTheNameLeavesTheDescriptionToFilter) {
    AddThree();
    ExpectSql({.SymbolName = L"*", .Description = L"ab"},
              std::wstring(ShortSymbolHead) + L" AND UPPER(P.DESCRIPTION) STARTING WITH 'AB'");
    EXPECT_THAT(Column(Read({.SymbolName = L"*", .Description = L"ab"}), L"SYMBOL"), ElementsAre(L"2"));
}

TEST_F(Cursors, CategoryZeroFiltersAndANegativeOneDoesNot) {
    AddThree();
    EXPECT_THAT(Column(Read({.Category = 0}), L"SYMBOL"), ElementsAre(L"3"));
    EXPECT_EQ(3, RecordCount(Read({.Category = -1})));
    EXPECT_EQ(3, RecordCount(Read({.Category = -7})));
    EXPECT_EQ(0, RecordCount(Read({.Category = 254})));
}

TEST_F(Cursors, SymbolsOfAGoneExchangeOrFeedDoNotCome) {
    Write(Host(), {tagSymbolRow{.Symbol = 1, .Name = L"A", .Exchange = 77}.Insert(),
                   tagSymbolRow{.Symbol = 2, .Name = L"B", .DataFeed = 77}.Insert(),
                   tagSymbolRow{.Symbol = 3, .Name = L"C"}.Insert()});
    EXPECT_THAT(Column(Read({}), L"SYMBOL"), ElementsAre(L"3"));
}

TEST_F(Cursors, TheModeIsThatOfTheCaller) {
    ExpectSql({.Mode = 4, .Category = 7}, std::wstring(ShortSymbolHead) + L" AND P.CATEGORY=7");
}

// --- data feeds

TEST_F(Cursors, DataFeedsComeActiveOrAll) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Idle','x','{7}',1,0,0,0,'I')");
    Sql(L"INSERT INTO DATA_FEEDS VALUES(8,'Gone','x','{8}',1,1,1,0,'G')");
    EXPECT_THAT(Column(Read({.Type = DataFeeds}), L"DATA_FEED"), UnorderedElementsAre(L"5", L"6", L"7"));
    EXPECT_THAT(Column(Read({.Type = DataFeeds, .ActiveOnly = 1}), L"DATA_FEED"), UnorderedElementsAre(L"5", L"6"));
    ExpectSql({.Type = DataFeeds}, std::wstring(DataFeedHead) + L"DELETED=0");
    ExpectSql({.Type = DataFeeds, .ActiveOnly = 1}, std::wstring(DataFeedHead) + L"ACTIVATED=1 AND DELETED=0");
}

TEST_F(Cursors, ANegativeFeedIsAKey) {
    ExpectSql({.Type = DataFeeds, .Datafeed = -1},
              std::wstring(DataFeedHead) + L"DATA_FEED=-1 AND ACTIVATED=1 AND DELETED=0");
}

TEST_F(Cursors, ADataFeedOfAKeyMustBeActiveWhateverActiveOnlySays) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Idle','x','{7}',1,0,0,0,'I')");
    EXPECT_EQ(0, RecordCount(Read({.Type = DataFeeds, .Datafeed = 7})));
    EXPECT_EQ(1, RecordCount(Read({.Type = DataFeeds, .Datafeed = 5})));
    ExpectSql({.Type = DataFeeds, .Datafeed = 7},
              std::wstring(DataFeedHead) + L"DATA_FEED=7 AND ACTIVATED=1 AND DELETED=0");
}

// --- one symbol

TEST_F(Cursors, ASymbolComesWithItsListOfFieldsEachWithAStatus) {
    AddThree();
    const auto table = Read({.Type = Symbol, .Symbol = 2});
    EXPECT_EQ(SymbolInfoFields, FieldIds(table));
    ASSERT_EQ(39U, SymbolInfoFields.size());
    for (const LONG id : SymbolInfoFields) {
        LONG baseCode = -1;
        LONG hasStatus = -1;
        LONG status = -1;
        FieldOf(table, id)->get_BaseCode(&baseCode);
        FieldOf(table, id)->get_HasStatus(&hasStatus);
        FieldOf(table, id)->get_Status(&status);
        EXPECT_EQ(0, baseCode) << id;
        EXPECT_EQ(1, hasStatus) << id;
        EXPECT_EQ(4, status) << id;
    }
    const Record record = Records(table).at(0);
    EXPECT_EQ(L"ESM15", record.at(L"SYMBOL_NAME"));
    EXPECT_EQ(ExchangeSessions, record.at(L"SESSIONS_STRING"));
    EXPECT_EQ(L"-360", record.at(L"EXCHANGE_GMT"));
    EXPECT_EQ(L"", record.at(L"CLSID")) << "a field that the procedure does not deliver stays empty";
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM GET_SYMBOL_INFO(2)"));
}

TEST_F(Cursors, ASymbolIsFoundByItsNameWithinAFeed) {
    AddThree();
    for (const LONG none : {0, -1})
        EXPECT_THAT(
            Column(Read({.Type = Symbol, .Symbol = none, .Datafeed = 5, .SymbolName = L"esm15"}), L"SYMBOL"),
            ElementsAre(L"2"));
    ExpectSql({.Type = Symbol, .Datafeed = 5, .SymbolName = L"esm15"},
              L"SELECT * FROM GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=5 AND "
              L"UPPER(SYMBOL_NAME)=UPPER('esm15')))");
}

TEST_F(Cursors, ANegativeFeedWithANameIsAsked) {
    ExpectSql({.Type = Symbol, .Datafeed = -5, .SymbolName = L"x"},
              L"SELECT * FROM GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=-5 AND "
              L"UPPER(SYMBOL_NAME)=UPPER('x')))");
    ExpectSql({.Type = CustomFuture, .Datafeed = -5, .SymbolName = L"x"},
              L"SELECT * FROM GET_CF_INFO((SELECT FIRST(1) SYMBOL FROM CUSTOM_FUTURES WHERE DATA_FEED=-5 AND "
              L"UPPER(SYMBOL_NAME)=UPPER('x')))");
}

TEST_F(Cursors, ANegativeKeyIsAKey) {
    ExpectSql({.Symbol = -2}, std::wstring(ShortSymbolHead) + L" AND P.SYMBOL=-2");
    ExpectSql({.Type = Symbol, .Symbol = -2}, L"SELECT * FROM GET_SYMBOL_INFO(-2)");
    ExpectSql({.Type = CustomFutures, .Symbol = -2}, std::wstring(CustomFutureHead) + L" AND P.CF=-2");
    ExpectSql({.Type = CustomFuture, .Symbol = -2}, L"SELECT * FROM GET_CF_INFO(-2)");
}

// Every field that the procedure delivers, as a selection of the same key shows it.
TEST_F(Cursors, ASymbolComesWhole) {
    AddThree();
    Write(Host(), {tagSymbolRow{.Symbol = 4,
                                .Name = L"OWN",
                                .SettingType = 0,
                                .Setting = 101,
                                .SessionType = 0,
                                .CustomSession = 201,
                                .TemplateSession = 202}
                       .Insert()});
    for (const LONG key : {1, 4}) {
        const Record record = Records(Read({.Type = Symbol, .Symbol = key})).at(0);
        Record selected = SelectSymbol(key);
        EXPECT_EQ(1U, selected.erase(L"STRIKE_PRICE_NAME"));
        EXPECT_THAT(selected, SizeIs(34));
        for (const auto& [name, value] : selected)
            EXPECT_EQ(value, record.at(name)) << key << platform::ToUtf8(name);
        for (const wchar_t* undelivered :
             {L"STRIKE_PRICE_NAME", L"DATA_FEED_SHORT_NAME", L"DATA_FEED_DLL_NAME", L"CLSID", L"ACTIVE"})
            EXPECT_EQ(L"", record.at(undelivered));
    }
}

TEST_F(Cursors, AQuoteInTheNameOfASymbolIsAPartOfTheStatement) {
    AddThree();
    const auto table = NewTable();
    LONG id = Advise({.Type = Symbol, .Datafeed = 5, .SymbolName = L"O'N"}, table);
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    EXPECT_EQ(0, Fetch(id, 0));
    Unadvise(id);
    TakeAll();
    EXPECT_THAT(Column(Read({.Type = Symbol, .Datafeed = 5, .SymbolName = L"x') OR UPPER(SYMBOL_NAME)=('ESM15"}),
                       L"SYMBOL"),
                ElementsAre(L"2"));
}

TEST_F(Cursors, ASymbolOfNoKeyAndNoNameWithinAFeedHasAnIdAndNoCursor) {
    AddThree();
    const LONG before = Advise({}, NewTable());
    LONG id = before;
    for (const tagCursorRequest& request : {tagCursorRequest{.Type = Symbol},
                                            {.Type = Symbol, .Datafeed = 5},
                                            {.Type = Symbol, .SymbolName = L"ESM15"},
                                            {.Type = CustomFuture, .Symbol = -1, .Datafeed = 5}}) {
        TakeAll();
        const auto table = NewTable();
        EXPECT_EQ(++id, Advise(request, table));
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Datafeed && SymbolName.length()"));
        EXPECT_EQ(0, Fetch(id, 0));
        EXPECT_EQ(request.Type == Symbol ? SymbolInfoFields : CustomFutureInfoFields, FieldIds(table));
    }
    Unadvise(before);
}

TEST_F(Cursors, ATableThatHasFieldsIsReportedAndStillServes) {
    AddThree();
    const auto table = NewTable();
    table->AddFieldById(31, 0, 0, 0);
    const LONG id = Advise({.Type = Symbol, .Symbol = 2}, table);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"!FieldCount"));
    EXPECT_EQ(1, Fetch(id, 0));
    EXPECT_THAT(RowsOf(table), ElementsAre(Row{L"ESM15"}));
    Unadvise(id);
}

TEST_F(Cursors, ANameLongerThanAStatementTakesAnIdAndIsReported) {
    const LONG id = Advise({.Type = Symbol, .Datafeed = 5, .SymbolName = std::wstring(1100, L'x')}, NewTable());
    EXPECT_GE(id, 1);
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
    EXPECT_EQ(0, Fetch(id, 0));
    EXPECT_EQ(id + 1, Advise({}, NewTable()));
    Unadvise(id + 1);
}

// --- custom futures

TEST_F(Cursors, CustomFuturesAreFilteredInOneOrder) {
    const std::wstring head = CustomFutureHead;
    ExpectSql({.Type = CustomFutures}, head);
    ExpectSql({.Type = CustomFutures, .Symbol = 3, .SymbolName = L"x"}, head + L" AND P.CF=3");
    ExpectSql({.Type = CustomFutures, .Symbol = -1}, head);
    ExpectSql({.Type = CustomFutures,
               .Datafeed = 5,
               .SymbolName = L"e's",
               .Description = L"ab",
               .Category = 18,
               .ExchangeId = 10,
               .SymbolRoot = L"e's"},
              head + L" AND UPPER(P.SYMBOL_NAME) LIKE 'E''S%' AND P.EXCHANGE=10 AND P.DATA_FEED=5 AND "
                     L"UPPER(P.SYMBOL_ROOT)=UPPER('e''s')");
    ExpectSql({.Type = CustomFutures, .SymbolName = L"*", .Description = L"f"},
              head + L" AND UPPER(P.DESCRIPTION) STARTING WITH 'F'");
    ExpectSql({.Type = CustomFutures, .Datafeed = -1, .SymbolName = L"x", .ExchangeId = -1},
              head + L" AND UPPER(P.SYMBOL_NAME) LIKE 'X%'");
}

TEST_F(Cursors, ACustomFutureComesWhole) {
    AddCustomFuture(50, L"ES-1");
    Sql(L"INSERT INTO CUSTOM_FUTURES VALUES(51,'OWN','OW','D','second',19,6,10,0,101,0,201,202,8)");
    const std::vector<std::wstring> names{L"CF",
                                          L"SYMBOL_NAME",
                                          L"SYMBOL_ROOT",
                                          L"CF_CODE",
                                          L"DESCRIPTION",
                                          L"CATEGORY",
                                          L"DATA_FEED",
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
                                          L"MARGIN",
                                          L"EXCHANGE_GMT",
                                          L"LOCAL_GMT"};
    for (const LONG key : {50, 51}) {
        const Row row = Sql(L"SELECT * FROM GET_CF_INFO(" + Text(key) + L")").at(0);
        ASSERT_EQ(names.size(), row.size());
        Record expected;
        for (std::size_t i = 0; i < names.size(); ++i)
            expected[names[i]] = row[i];
        EXPECT_EQ(1U, expected.erase(L"CF_CODE")) << "the list has no field for it";
        EXPECT_EQ(expected, Records(Read({.Type = CustomFuture, .Symbol = key})).at(0));
    }
}

TEST_F(Cursors, CustomFuturesComeWithExchangeAndFeed) {
    AddCustomFuture(50, L"ES-1");
    AddCustomFuture(51, L"NQ-1");
    const auto table = Read({.Type = CustomFutures, .SymbolName = L"es", .SymbolRoot = L"es"});
    EXPECT_THAT(RowsOf(table), ElementsAre(Row{L"50", L"ES-1", L"ES", L"C", L"first", L"18", L"5", L"Feed", L"10",
                                               L"1", L"0", L"1", L"0", L"0", L"9", L"CME"}));
}

TEST_F(Cursors, ACustomFutureComesWithItsListOfFields) {
    AddCustomFuture(50, L"ES-1");
    const auto table = Read({.Type = CustomFuture, .Symbol = 50});
    EXPECT_EQ(CustomFutureInfoFields, FieldIds(table));
    ASSERT_EQ(24U, CustomFutureInfoFields.size());
    const Record record = Records(table).at(0);
    EXPECT_EQ(L"50", record.at(L"CF"));
    EXPECT_EQ(ExchangeSessions, record.at(L"SESSIONS_STRING"));
    EXPECT_EQ(L"100", record.at(L"PRICE_SCALE"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM GET_CF_INFO(50)"));
}

TEST_F(Cursors, ACustomFutureIsFoundByItsNameWithinAFeed) {
    AddCustomFuture(50, L"ES-1");
    AddCustomFuture(51, L"ES-1", 6);
    EXPECT_THAT(Column(Read({.Type = CustomFuture, .Datafeed = 6, .SymbolName = L"es-1"}), L"CF"),
                ElementsAre(L"51"));
    ExpectSql({.Type = CustomFuture, .Datafeed = 6, .SymbolName = L"es-1"},
              L"SELECT * FROM GET_CF_INFO((SELECT FIRST(1) SYMBOL FROM CUSTOM_FUTURES WHERE DATA_FEED=6 AND "
              L"UPPER(SYMBOL_NAME)=UPPER('es-1')))");
}

// What the request says at another mode is nobody's business.
TEST_F(Cursors, EverythingIsReadAtTheModeOfAdvise) {
    constexpr LONG Mode = 3;
    const auto expectSql = [this](const tagCursorRequest& wanted, const std::wstring& sql) {
        const auto request = wanted.Make();
        for (const LONG other : {LONG{0}, Mode + 1}) {
            request->put_Symbol(other, 4711);
            request->put_SymbolName(other, CBstr(L"other").Get());
            request->put_SymbolRoot(other, CBstr(L"other").Get());
            request->put_Description(other, CBstr(L"other").Get());
            request->put_Category(other, 77);
            request->put_Datafeed(other, 78);
            request->put_ExchangeId(other, 79);
        }
        TakeAll();
        LONG id = 0;
        EXPECT_EQ(S_OK, m_Portfolio->Advise(Mode, request.Get(), NewTable().Get(), &id));
        EXPECT_TRUE(Host().HasPrepared(sql)) << platform::ToUtf8(sql);
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
        Unadvise(id);
    };
    expectSql({.Type = Symbol, .Mode = Mode, .Symbol = 12}, L"SELECT * FROM GET_SYMBOL_INFO(12)");
    expectSql({.Type = Symbol, .Mode = Mode, .Datafeed = 5, .SymbolName = L"mode"},
              L"SELECT * FROM GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=5 AND "
              L"UPPER(SYMBOL_NAME)=UPPER('mode')))");
    expectSql({.Type = CustomFuture, .Mode = Mode, .Symbol = 13}, L"SELECT * FROM GET_CF_INFO(13)");
    expectSql({.Type = CustomFutures, .Mode = Mode, .Symbol = 14},
              std::wstring(CustomFutureHead) + L" AND P.CF=14");
    expectSql({.Type = CustomFutures,
               .Mode = Mode,
               .Datafeed = 5,
               .SymbolName = L"mode",
               .ExchangeId = 10,
               .SymbolRoot = L"root"},
              std::wstring(CustomFutureHead) +
                  L" AND UPPER(P.SYMBOL_NAME) LIKE 'MODE%' AND P.EXCHANGE=10 AND P.DATA_FEED=5 AND "
                  L"UPPER(P.SYMBOL_ROOT)=UPPER('root')");
    expectSql({.Type = CustomFutures, .Mode = Mode, .Description = L"mode"},
              std::wstring(CustomFutureHead) + L" AND UPPER(P.DESCRIPTION) STARTING WITH 'MODE'");
}

TEST_F(Cursors, ACustomFutureIsFoundByItsNameAtTheModeOfAdvise) {
    AddCustomFuture(50, L"ES-1");
    const auto request =
        tagCursorRequest{.Type = CustomFuture, .Mode = 3, .Datafeed = 5, .SymbolName = L"es-1"}.Make();
    request->put_Datafeed(0, 6);
    request->put_SymbolName(0, CBstr(L"other").Get());
    const auto table = NewTable();
    LONG id = 0;
    EXPECT_EQ(S_OK, m_Portfolio->Advise(3, request.Get(), table.Get(), &id));
    Fetch(id, 0);
    EXPECT_THAT(Column(table, L"CF"), ElementsAre(L"50"));
    Unadvise(id);
}

// --- side by side

TEST_F(Cursors, ARequestThatRefusesToTellCountsAsOneThatSaysNothing) {
    AddThree();
    const auto table = NewTable();
    LONG id = 0;
    EXPECT_EQ(S_OK, m_Portfolio->Advise(0, platform::MakeObject<CRefusingRequest>().Get(), table.Get(), &id));
    EXPECT_EQ(1, Fetch(id, 0)) << "category 0";
    Unadvise(id);
}

TEST_F(Cursors, ThreadsHaveTheirCursorsSideBySide) {
    AddThree();
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                const auto table = NewTable();
                LONG id = 0;
                m_Portfolio->Advise(0, tagCursorRequest{}.Make().Get(), table.Get(), &id);
                LONG first = 1;
                LONG rest = 0;
                m_Portfolio->Fetch(id, &first);
                m_Portfolio->Fetch(id, &rest);
                m_Portfolio->Unadvise(id);
                failures += first != 1 || rest != 2 || RecordCount(table) != 3;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, failures);
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Cursors, SelectionsOfThreadsDoNotDisturbEachOther) {
    AddThree();
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 10; ++round) {
                const auto table = NewTable();
                m_Storage->SelectPortfolio(0, nullptr, table.Get());
                failures += Column(table, L"SESSIONS_STRING") !=
                            std::vector<std::wstring>{ExchangeSessions, ExchangeSessions, ExchangeSessions};
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, failures);
}

} // namespace
