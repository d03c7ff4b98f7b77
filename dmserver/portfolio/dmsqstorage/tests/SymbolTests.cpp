// Symbols of the portfolio, as they are written.
#include "CommaLocale.h"
#include "SymbolFixture.h"

#include <limits>
#include <map>
#include <set>
#include <thread>

namespace {

using namespace tests;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class Symbols : public SymbolTest {
protected:
    // What an insert gives when it wrote no row: status and key.
    std::pair<HRESULT, LONG> TryInsert(const tagSymbolArguments& arguments) {
        LONG key = -1;
        const HRESULT status = InsertPortfolio(*m_Storage.Get(), arguments, &key);
        return {status, key};
    }
};

using Outcome = std::pair<HRESULT, LONG>;

// --- Insert

TEST_F(Symbols, InsertWritesTheRowUnderANewKeyAndAnnouncesIt) {
    tagSymbolArguments symbol;
    symbol.StrikePrice = 1250.25;
    symbol.CallPut = 1;
    symbol.Margin = 5000;
    symbol.Expired = 1;
    symbol.ExpirationRule = 3;
    symbol.TemplateSession = 9;
    symbol.FirstNoticeDate = 40148;
    symbol.Delivery = 40168;
    const LONG key = Insert(symbol);
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'INSERT INTO PORTFOLIO VALUES(" + Text(key) +
                            L",'ESZ09','ES','E-mini','78378X107',1,7,5,1,0,1,0,9,12,2009,1250.250000,1,5000,"
                            L"'18.12.2009',1,3,'01.12.2009','21.12.2009')'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x1, key)));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT * FROM PORTFOLIO"),
                ElementsAre(Row{Text(key),     L"ESZ09", L"ES",   L"E-mini",     L"78378X107", L"1",
                                L"7",          L"5",     L"1",    L"0",          L"1",         L"0",
                                L"9",          L"12",    L"2009", L"1250.25",    L"1",         L"5000",
                                L"18.12.2009", L"1",     L"3",    L"01.12.2009", L"21.12.2009"}));
}

// An announcement that fails must not take the key along.
TEST_F(Symbols, TheCallerHasTheKeyWhenTheInsertIsAnnounced) {
    class CObserver final : public sqStorage::IBroadcastObserver {
    public:
        void OnBroadcast(ULONG, LONG ValueID) noexcept override { Seen = {ValueID, Key}; }
        LONG Key = -1;
        std::pair<LONG, LONG> Seen;
    } observer;
    auto* const before = sqStorage::SetBroadcastObserver(&observer);
    EXPECT_EQ(S_OK, InsertPortfolio(*m_Storage.Get(), {}, &observer.Key));
    sqStorage::SetBroadcastObserver(before);
    EXPECT_GE(observer.Key, 1);
    EXPECT_EQ(std::pair(observer.Key, observer.Key), observer.Seen);
}

TEST_F(Symbols, AStrikeThatIsNoNumberOfTheColumnWritesNothingAndIsReported) {
    const LONG kept = Insert({});
    for (const double strike : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(), 1e308, -1e308}) {
        tagSymbolArguments symbol;
        symbol.SymbolName = L"HOSTILE";
        symbol.StrikePrice = strike;
        TakeAll();
        TryInsert(symbol);
        EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: "))) << strike;
        TakeAll();
        Update(kept, symbol);
        EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: "))) << strike;
        EXPECT_THAT(Column(L"SYMBOL,SYMBOL_NAME,STRIKE_PRICE"), ElementsAre(Row{Text(kept), L"ESZ09", L"0"}));
    }
}

TEST_F(Symbols, InsertStoresTheRootInCapitals) {
    tagSymbolArguments symbol;
    symbol.SymbolRoot = L"es";
    Insert(symbol);
    symbol.SymbolName = L"OTHER";
    symbol.SymbolRoot = L"\u0436'\u00FC";
    Insert(symbol);
    EXPECT_THAT(Column(L"SYMBOL_ROOT"), ElementsAre(Row{L"ES"}, Row{L"\u0416'\u00DC"}));
}

TEST_F(Symbols, ADateBeforeTheFirstIsStoredAsTheFirstOfJanuary1900) {
    LONG number = 0;
    for (const LONG date : {0, 1, -1, -40000, 2}) {
        tagSymbolArguments symbol;
        symbol.SymbolName = L"S" + Text(++number);
        symbol.ExpirationDate = date;
        symbol.FirstNoticeDate = date;
        symbol.Delivery = date;
        Insert(symbol);
    }
    EXPECT_THAT(Sql(L"SELECT EXPIRATION_DATE,FIRST_NOTICE_DATE,DELIVERY FROM PORTFOLIO"),
                AllOf(SizeIs(5), Each(Row{L"01.01.1900", L"01.01.1900", L"01.01.1900"})));
}

TEST_F(Symbols, ADateAfterTheLastOneWritesNothing) {
    tagSymbolArguments symbol;
    symbol.Delivery = 65380;
    Insert(symbol);
    EXPECT_THAT(Column(L"DELIVERY"), ElementsAre(Row{L"31.12.2078"}));
    TakeAll();
    symbol.SymbolName = L"TOO LATE";
    symbol.Delivery = 65381;
    EXPECT_EQ(Outcome(S_FALSE, 0), TryInsert(symbol));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"days = 65381")));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Column(L"SYMBOL_NAME"), SizeIs(1));
}

TEST_F(Symbols, InsertStoresASettingOnlyWhenItIsTheSymbolsOwn) {
    LONG number = 0;
    for (const LONG type : {0, 1, 2, 3}) {
        tagSymbolArguments symbol;
        symbol.SymbolName = L"S" + Text(++number);
        symbol.SettingType = type;
        symbol.Setting = 51;
        Insert(symbol);
    }
    EXPECT_THAT(Sql(L"SELECT SETTING_TYPE,SETTING FROM PORTFOLIO ORDER BY SETTING_TYPE"),
                ElementsAre(Row{L"0", L"51"}, Row{L"1", L"0"}, Row{L"2", L"0"}, Row{L"3", L"0"}));
}

TEST_F(Symbols, StrikesCarryAPointUnderACommaLocale) {
    tagSymbolArguments symbol;
    symbol.StrikePrice = 0.5;
    LONG key = 0;
    {
        const CCommaLocale locale;
        key = Insert(symbol);
        EXPECT_EQ(S_OK, Update(key, symbol));
    }
    EXPECT_THAT(Statements(), ElementsAre(HasSubstr(L",2009,0.500000,0,"), HasSubstr(L",STRIKE_PRICE=0.500000,")));
    EXPECT_THAT(Column(L"STRIKE_PRICE"), ElementsAre(Row{L"0.5"}));
}

TEST_F(Symbols, ATextWithQuotesIsStoredAsItIs) {
    tagSymbolArguments symbol;
    symbol.SymbolName = L"A'B''";
    symbol.SymbolRoot = L"'R'";
    symbol.Description = L"it's 'it'";
    const LONG key = Insert(symbol);
    EXPECT_THAT(Statements(), ElementsAre(StartsWith(L"sql = 'INSERT INTO PORTFOLIO VALUES(" + Text(key) +
                                                     L",'A''B''''','''R''','it''s ''it''',")));
    EXPECT_THAT(Column(L"SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION"), ElementsAre(Row{L"A'B''", L"'R'", L"it's 'it'"}));
}

TEST_F(Symbols, ADescriptionOf62CharactersStaysWholeAndOneOf63IsCut) {
    tagSymbolArguments symbol;
    const std::wstring whole(62, L'w');
    symbol.Description = whole;
    Insert(symbol);
    EXPECT_THAT(Recorder::Messages(), Not(Contains(HasSubstr(L"truncated"))));
    symbol.SymbolName = L"CUT";
    symbol.Description = std::wstring(61, L'x') + L"yz";
    Insert(symbol);
    const std::wstring cut = std::wstring(61, L'x') + L"\"\"";
    EXPECT_THAT(Recorder::Messages(),
                Contains(L"Description '" + *symbol.Description + L"' was truncated to '" + cut + L"'."));
    EXPECT_THAT(Column(L"DESCRIPTION"), ElementsAre(Row{whole}, Row{cut}));
}

TEST_F(Symbols, ADescriptionIsMeasuredAfterItsQuotesWereDoubled) {
    tagSymbolArguments symbol;
    symbol.Description = std::wstring(60, L'x') + L"'"; // 62 doubled
    Insert(symbol);
    EXPECT_THAT(Column(L"DESCRIPTION"), ElementsAre(Row{*symbol.Description}));
    symbol.SymbolName = L"CUT";
    symbol.Description = L"'" + std::wstring(61, L'x'); // 63 doubled
    Insert(symbol);
    const std::wstring stored = L"''" + std::wstring(59, L'x') + L"\"\"";
    EXPECT_THAT(Recorder::Messages(),
                Contains(L"Description '" + *symbol.Description + L"' was truncated to '" + stored + L"'."));
    EXPECT_THAT(Column(L"DESCRIPTION"), ElementsAre(Row{std::wstring(60, L'x') + L"'"}, Row{stored.substr(1)}));
}

TEST_F(Symbols, ACutThroughADoubledQuoteBreaksTheStatement) {
    tagSymbolArguments symbol;
    symbol.Description = std::wstring(60, L'x') + L"'y"; // the cut leaves one of the two quotes
    LONG key = 0;
    EXPECT_EQ(S_OK, InsertPortfolio(*m_Storage.Get(), symbol, &key));
    EXPECT_THAT(Statements(), ElementsAre(HasSubstr(L",'" + std::wstring(60, L'x') + L"'\"\"',")));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x1, key)));
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
}

TEST_F(Symbols, AnEmptyDescriptionStaysEmptyWhereTheDictionaryHasNone) {
    tagSymbolArguments symbol;
    symbol.Description = L"";
    symbol.Category = 0;
    symbol.SettingType = 2;
    Insert(symbol);
    symbol.Category = 1;
    Insert(symbol);
    symbol.Category = 0;
    symbol.SettingType = 1;
    symbol.SymbolName = L"OTHER";
    Insert(symbol);
    EXPECT_THAT(Column(L"DESCRIPTION"), ElementsAre(Row{L""}, Row{L""}, Row{L""}));
}

TEST_F(Symbols, ANullTextWritesNothingAndSaysWhich) {
    const std::pair<std::optional<std::wstring> tagSymbolArguments::*, std::wstring> texts[]{
        {&tagSymbolArguments::SymbolName, L"sn"},
        {&tagSymbolArguments::SymbolRoot, L"sr"},
        {&tagSymbolArguments::Description, L"desc"},
        {&tagSymbolArguments::CUSIP, L"CUSIP"}};
    for (const auto& [text, name] : texts) {
        TakeAll();
        tagSymbolArguments symbol;
        symbol.*text = std::nullopt;
        EXPECT_EQ(Outcome(S_FALSE, -1), TryInsert(symbol)) << "the key is as the caller left it";
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(name));
        EXPECT_THAT(Statements(), IsEmpty());
        EXPECT_THAT(m_Changes.Take(), IsEmpty());
    }
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
}

TEST_F(Symbols, EmptyTextsAreTaken) {
    tagSymbolArguments symbol;
    symbol.SymbolName = symbol.SymbolRoot = symbol.Description = symbol.CUSIP = L"";
    Insert(symbol);
    EXPECT_THAT(Column(L"SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP"), ElementsAre(Row{L"", L"", L"", L""}));
}

TEST_F(Symbols, AQuoteInTheCusipBreaksTheStatement) {
    tagSymbolArguments symbol;
    symbol.CUSIP = L"1'2";
    LONG key = 0;
    EXPECT_EQ(S_OK, InsertPortfolio(*m_Storage.Get(), symbol, &key));
    EXPECT_THAT(Statements(), ElementsAre(HasSubstr(L",'1'2',")));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
}

TEST_F(Symbols, ATextTooLongForItsColumnIsTheDatabasesErrorAndIsStillAnnounced) {
    for (const auto text :
         {&tagSymbolArguments::SymbolName, &tagSymbolArguments::SymbolRoot, &tagSymbolArguments::CUSIP}) {
        TakeAll();
        tagSymbolArguments symbol;
        symbol.*text = std::wstring(32, L'L');
        LONG key = 0;
        EXPECT_EQ(S_OK, InsertPortfolio(*m_Storage.Get(), symbol, &key));
        EXPECT_THAT(Statements(), SizeIs(1));
        EXPECT_THAT(Recorder::Asserts(), Contains(HasSubstr(L"string right truncation")));
        EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x1, key)));
    }
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
}

TEST_F(Symbols, AnInsertThatOverflowsItsBufferRunsNothing) {
    tagSymbolArguments symbol;
    symbol.CUSIP = L"";
    Insert(symbol);
    // The trace adds "sql = '" and "'". The next key may have one digit more.
    const std::size_t empty = Statements().front().size() - 8;
    TakeAll();
    symbol.SymbolName = L"OTHER";
    symbol.CUSIP = std::wstring(1024 - empty, L'c');
    EXPECT_EQ(Outcome(S_FALSE, 0), TryInsert(symbol));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"its buffer takes 1023")));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Column(L"SYMBOL"), SizeIs(1));
}

TEST_F(Symbols, InsertChecksItsArgumentsBeforeAnythingElse) {
    const std::pair<LONG tagSymbolArguments::*, LONG> bad[]{{&tagSymbolArguments::Setting, -1},
                                                            {&tagSymbolArguments::SettingType, -1},
                                                            {&tagSymbolArguments::SessionType, -1},
                                                            {&tagSymbolArguments::Exchange, 0},
                                                            {&tagSymbolArguments::Exchange, -1}};
    for (const auto& [argument, value] : bad) {
        tagSymbolArguments symbol;
        symbol.*argument = value;
        symbol.SymbolName = std::nullopt;
        EXPECT_EQ(Outcome(E_INVALIDARG, -1), TryInsert(symbol));
    }
    EXPECT_EQ(E_INVALIDARG, InsertPortfolio(*m_Storage.Get(), {}, nullptr));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
}

TEST_F(Symbols, ManyThreadsInsertUnderKeysOfTheirOwn) {
    constexpr int Threads = 4;
    constexpr int Rounds = 25;
    std::vector<std::vector<LONG>> keys(Threads);
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t)
        threads.emplace_back([&, t] {
            CComPtr<IqxStorage> storage;
            CStorageHost::Create(storage);
            for (int i = 0; storage && i < Rounds; ++i) {
                tagSymbolArguments symbol;
                symbol.SymbolName = L"T" + Text(t) + L"R" + Text(i);
                LONG key = 0;
                if (InsertPortfolio(*storage.Get(), symbol, &key) == S_OK)
                    keys[t].push_back(key);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    std::set<LONG> all;
    for (const auto& own : keys)
        all.insert(own.begin(), own.end());
    EXPECT_EQ(std::size_t{Threads * Rounds}, all.size());
    EXPECT_THAT(Column(L"SYMBOL"), SizeIs(Threads * Rounds));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

// --- Duplicates

TEST_F(Symbols, TheSameSymbolTwiceIsOneRowOneAnnouncementAndOneKey) {
    tagSymbolArguments symbol;
    const LONG key = Insert(symbol);
    symbol.SymbolRoot = L"XX";
    symbol.Description = L"another";
    symbol.ContractYear = 2010;
    EXPECT_EQ(Outcome(S_FALSE, key), TryInsert(symbol));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x1, key)));
    EXPECT_THAT(Statements(), SizeIs(1));
    EXPECT_THAT(Column(L"SYMBOL_ROOT,DESCRIPTION,CONTRACT_YEAR"), ElementsAre(Row{L"ES", L"E-mini", L"2009"}));
}

TEST_F(Symbols, ASymbolWhoseSessionCannotBeWrittenIsStillADuplicate) {
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(52,-1,0,0,0,0,0,0)");
    const LONG key = Insert({});
    EXPECT_EQ(Outcome(S_FALSE, key), TryInsert({}));
    EXPECT_THAT(Column(L"SYMBOL"), SizeIs(1));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Symbols, ASymbolOfAGoneExchangeIsStillADuplicate) {
    tagSymbolArguments symbol;
    symbol.Exchange = 999;
    const LONG key = Insert(symbol);
    EXPECT_EQ(Outcome(S_FALSE, key), TryInsert(symbol));
    EXPECT_THAT(Column(L"SYMBOL"), SizeIs(1));
}

TEST_F(Symbols, WithoutAFeedTheDuplicateIsLookedForAmongAllThatBeginSo) {
    tagSymbolArguments symbol;
    symbol.SymbolName = L"ES";
    symbol.Datafeed = 0;
    Write(101, L"ES");
    EXPECT_NE(101, Insert(symbol)) << "that one has a feed";
    EXPECT_THAT(Column(L"DATA_FEED"), UnorderedElementsAre(Row{L"7"}, Row{L"0"}));
    // A symbol is found only with its feed, so that without a feed of key 0 it is written again.
    Insert(symbol);
    Sql(L"DELETE FROM PORTFOLIO");
    Sql(L"INSERT INTO DATA_FEEDS VALUES(0,'None','n.dll','{0}',1,1,0,0,'N')");
    Write(201, L"ESZ", L"", 1, 0);
    Write(202, L"ES", L"", 1, 0);
    EXPECT_EQ(Outcome(S_FALSE, 202), TryInsert(symbol));
    EXPECT_THAT(Column(L"SYMBOL"), SizeIs(2));
}

TEST_F(Symbols, AnotherCategoryFeedOrExchangeIsAnotherSymbol) {
    const std::pair<LONG tagSymbolArguments::*, LONG> others[]{
        {&tagSymbolArguments::Category, 2}, {&tagSymbolArguments::Datafeed, 8}, {&tagSymbolArguments::Exchange, 6}};
    std::set<LONG> keys{Insert({})};
    for (const auto& [argument, value] : others) {
        tagSymbolArguments symbol;
        symbol.*argument = value;
        const LONG key = Insert(symbol);
        EXPECT_EQ(Outcome(S_FALSE, key), TryInsert(symbol));
        keys.insert(key);
    }
    EXPECT_EQ(4U, keys.size());
    EXPECT_THAT(Column(L"SYMBOL"), SizeIs(4));
}

TEST_F(Symbols, ANameThatDiffersInCaseIsNoDuplicate) {
    Insert({});
    tagSymbolArguments symbol;
    symbol.SymbolName = L"esz09";
    Insert(symbol);
    EXPECT_THAT(Column(L"SYMBOL_NAME"), ElementsAre(Row{L"ESZ09"}, Row{L"esz09"}));
}

// The search delivers one of those that differ only in case; the other one is not found and is written once more.
TEST_F(Symbols, OfTwoThatDifferInCaseTheOneThatTheSearchPassesOverIsWrittenAgain) {
    const std::wstring names[]{L"ESZ09", L"esz09"};
    std::map<std::wstring, LONG> keys;
    tagSymbolArguments symbol;
    for (const std::wstring& name : names) {
        symbol.SymbolName = name;
        keys[name] = Insert(symbol);
    }
    const std::wstring delivered = Sql(L"SELECT FIRST(1) SYMBOL_NAME FROM PORTFOLIO WHERE DATA_FEED=7 AND "
                                       L"UPPER(SYMBOL_NAME)=UPPER('ESZ09') AND CATEGORY=1 AND EXCHANGE=5")
                                       .at(0)
                                       .at(0);
    symbol.SymbolName = delivered;
    EXPECT_EQ(Outcome(S_FALSE, keys[delivered]), TryInsert(symbol));
    const std::wstring other = delivered == names[0] ? names[1] : names[0];
    symbol.SymbolName = other;
    EXPECT_NE(keys[other], Insert(symbol));
    EXPECT_THAT(Column(L"SYMBOL_NAME"), UnorderedElementsAre(Row{delivered}, Row{other}, Row{other}));
}

TEST_F(Symbols, ANameWithAQuoteIsNotFoundAndWrittenAgain) {
    tagSymbolArguments symbol;
    symbol.SymbolName = L"O'X";
    const LONG first = Insert(symbol);
    EXPECT_NE(first, Insert(symbol));
    EXPECT_THAT(Column(L"SYMBOL_NAME"), ElementsAre(Row{L"O'X"}, Row{L"O'X"}));
}

TEST_F(Symbols, ACategoryThatARequestTakesForNoneIsComparedAllTheSame) {
    Insert({});
    tagSymbolArguments symbol;
    symbol.Category = 254;
    const LONG key = Insert(symbol);
    EXPECT_THAT(Sql(L"SELECT CATEGORY FROM PORTFOLIO WHERE SYMBOL=" + Text(key)), ElementsAre(Row{L"254"}));
}

TEST_F(Symbols, ADescriptionIsCutBeforeTheDuplicateEndsTheInsert) {
    tagSymbolArguments symbol;
    const LONG key = Insert(symbol);
    TakeAll();
    symbol.Description = std::wstring(70, L'd');
    EXPECT_EQ(Outcome(S_FALSE, key), TryInsert(symbol));
    EXPECT_THAT(Recorder::Messages(), Contains(HasSubstr(L"was truncated to")));
    EXPECT_THAT(Statements(), IsEmpty());
}

// --- Update

TEST_F(Symbols, UpdateWritesEveryColumnAndAnnouncesTheKey) {
    const LONG key = Insert({});
    TakeAll();
    tagSymbolArguments symbol;
    symbol.SymbolName = L"n'n";
    symbol.SymbolRoot = L"es'";
    symbol.Description = L"d'd";
    symbol.CUSIP = L"C";
    symbol.Category = 2;
    symbol.Datafeed = 8;
    symbol.Exchange = 6;
    symbol.SettingType = 0;
    symbol.Setting = 61;
    symbol.SessionType = 2;
    symbol.CustomSession = 3;
    symbol.TemplateSession = 4;
    symbol.ContractMonth = 3;
    symbol.ContractYear = 2011;
    symbol.StrikePrice = 7.5;
    symbol.CallPut = 1;
    symbol.Margin = 8;
    symbol.ExpirationDate = 0;
    symbol.Expired = 1;
    symbol.ExpirationRule = 9;
    symbol.FirstNoticeDate = -1;
    symbol.Delivery = 40168;
    EXPECT_EQ(S_OK, Update(key, symbol));
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'UPDATE PORTFOLIO SET SYMBOL_NAME='n''n',SYMBOL_ROOT='es''',DESCRIPTION='d''d',"
                            L"CUSIP='C',CATEGORY=2,DATA_FEED=8,EXCHANGE=6,SETTING_TYPE=0,SESSION_TYPE=2,"
                            L"CUSTOM_SESSION=3,TEMPLATE_SESSION=4,CONTRACT_MONTH=3,CONTRACT_YEAR=2011,"
                            L"STRIKE_PRICE=7.500000,CALL_PUT=1,MARGIN=8,EXPIRATION_DATE='01.01.1900',EXPIRED=1,"
                            L"EXPIRATION_RULE=9,FIRST_NOTICE_DATE='01.01.1900',DELIVERY='21.12.2009',SETTING=61 "
                            L"WHERE SYMBOL=" +
                            Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x2, key)));
    EXPECT_THAT(Sql(L"SELECT * FROM PORTFOLIO"),
                ElementsAre(Row{Text(key), L"n'n", L"es'",        L"d'd", L"C", L"2",          L"8",         L"6",
                                L"0",      L"61",  L"2",          L"3",   L"4", L"3",          L"2011",      L"7.5",
                                L"1",      L"8",   L"01.01.1900", L"1",   L"9", L"01.01.1900", L"21.12.2009"}));
}

TEST_F(Symbols, UpdateLeavesTheSettingOfTheRowUnlessItIsTheSymbolsOwn) {
    tagSymbolArguments symbol;
    symbol.SettingType = 0;
    symbol.Setting = 51;
    const LONG key = Insert(symbol);
    symbol.Setting = 61;
    for (const LONG type : {1, 2, 3}) {
        symbol.SettingType = type;
        TakeAll();
        EXPECT_EQ(S_OK, Update(key, symbol));
        EXPECT_THAT(Statements(), ElementsAre(AllOf(HasSubstr(L"DELIVERY='01.01.1900' WHERE SYMBOL="),
                                                    Not(HasSubstr(L",SETTING=")))));
        EXPECT_THAT(Column(L"SETTING_TYPE,SETTING"), ElementsAre(Row{Text(type), L"51"}));
    }
}

TEST_F(Symbols, AQuoteInTheCusipBreaksTheUpdateToo) {
    tagSymbolArguments symbol;
    const LONG key = Insert(symbol);
    TakeAll();
    const auto before = Sql(L"SELECT * FROM PORTFOLIO");
    symbol.SymbolName = L"OTHER";
    symbol.CUSIP = L"1'2";
    EXPECT_EQ(S_OK, Update(key, symbol));
    EXPECT_THAT(Statements(), ElementsAre(HasSubstr(L",CUSIP='1'2',")));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x2, key)));
    EXPECT_EQ(before, Sql(L"SELECT * FROM PORTFOLIO"));
}

TEST_F(Symbols, UpdateStoresTheRootAsItIsGiven) {
    tagSymbolArguments symbol;
    symbol.SymbolRoot = L"es";
    const LONG key = Insert(symbol);
    EXPECT_THAT(Column(L"SYMBOL_ROOT"), ElementsAre(Row{L"ES"}));
    EXPECT_EQ(S_OK, Update(key, symbol));
    EXPECT_THAT(Column(L"SYMBOL_ROOT"), ElementsAre(Row{L"es"}));
}

TEST_F(Symbols, UpdateCutsNoDescription) {
    tagSymbolArguments symbol;
    const LONG key = Insert(symbol);
    symbol.Description = std::wstring(63, L'd');
    EXPECT_EQ(S_OK, Update(key, symbol));
    EXPECT_THAT(Column(L"DESCRIPTION"), ElementsAre(Row{std::wstring(63, L'd')}));
    TakeAll();
    symbol.Description = std::wstring(64, L'e');
    EXPECT_EQ(S_OK, Update(key, symbol));
    EXPECT_THAT(Statements(), ElementsAre(HasSubstr(std::wstring(64, L'e'))));
    EXPECT_THAT(Recorder::Asserts(), Contains(HasSubstr(L"string right truncation")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x2, key)));
    EXPECT_THAT(Column(L"DESCRIPTION"), ElementsAre(Row{std::wstring(63, L'd')}));
}

TEST_F(Symbols, UpdateOfAnUnknownSymbolIsDoneAndAnnounced) {
    EXPECT_EQ(S_OK, Update(2000000000, {}));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x2, 2000000000)));
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
}

TEST_F(Symbols, UpdateWithANullTextStopsAndSaysWhich) {
    const LONG key = Insert({});
    const std::pair<std::optional<std::wstring> tagSymbolArguments::*, std::wstring> texts[]{
        {&tagSymbolArguments::SymbolName, L"SymbolName"},
        {&tagSymbolArguments::SymbolRoot, L"SymbolRoot"},
        {&tagSymbolArguments::Description, L"Description"},
        {&tagSymbolArguments::CUSIP, L"CUSIP"}};
    for (const auto& [text, name] : texts) {
        TakeAll();
        tagSymbolArguments symbol;
        symbol.*text = std::nullopt;
        EXPECT_EQ(S_OK, Update(key, symbol));
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(name));
        EXPECT_THAT(Statements(), IsEmpty());
        EXPECT_THAT(m_Changes.Take(), IsEmpty());
    }
}

TEST_F(Symbols, AnUpdateThatOverflowsItsBufferTouchesNoRow) {
    const LONG one = Insert({});
    tagSymbolArguments symbol;
    symbol.SymbolName = L"OTHER";
    Insert(symbol);
    symbol.CUSIP = L"";
    TakeAll();
    EXPECT_EQ(S_OK, Update(one, symbol));
    const std::size_t empty = Statements().front().size() - 8;
    const auto before = Column(L"SYMBOL,SYMBOL_NAME,CUSIP");
    // Whatever the length, the end of the statement, which says of what row it is, is there or nothing runs.
    for (const std::size_t length : {std::size_t{2047}, std::size_t{2048}, std::size_t{2060}, std::size_t{2100}}) {
        TakeAll();
        symbol.CUSIP = std::wstring(length - empty, L'c');
        EXPECT_EQ(S_OK, Update(one, symbol));
        if (length == 2047) {
            EXPECT_THAT(Statements(), ElementsAre(testing::EndsWith(L" WHERE SYMBOL=" + Text(one) + L"'")));
            EXPECT_THAT(Recorder::Asserts(), Contains(HasSubstr(L"string right truncation")));
        } else {
            EXPECT_THAT(Statements(), IsEmpty());
            EXPECT_THAT(m_Changes.Take(), IsEmpty());
            EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"its buffer takes 2047")));
        }
    }
    EXPECT_EQ(before, Column(L"SYMBOL,SYMBOL_NAME,CUSIP"));
}

TEST_F(Symbols, UpdateChecksItsArgumentsBeforeAnythingElse) {
    const std::pair<LONG tagSymbolArguments::*, LONG> bad[]{{&tagSymbolArguments::Setting, -1},
                                                            {&tagSymbolArguments::SettingType, -1},
                                                            {&tagSymbolArguments::SessionType, -1},
                                                            {&tagSymbolArguments::Exchange, 0}};
    for (const auto& [argument, value] : bad) {
        tagSymbolArguments symbol;
        symbol.*argument = value;
        EXPECT_EQ(E_INVALIDARG, Update(1, symbol));
    }
    EXPECT_EQ(E_INVALIDARG, Update(0, {}));
    EXPECT_EQ(E_INVALIDARG, Update(-1, {}));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

// --- Delete

TEST_F(Symbols, DeleteTakesTheSymbolsOwnSettingAndSessionAlongFirst) {
    Sql(L"EXECUTE BLOCK AS BEGIN INSERT INTO SETTINGS VALUES(90,1,1,1,1); "
        L"INSERT INTO SESSIONS VALUES(91,0,'own',0); INSERT INTO SESSION_DETAILS VALUES(91,1,0,1,0,0,0,0); END");
    tagSymbolArguments symbol;
    symbol.SettingType = 0;
    symbol.Setting = 90;
    symbol.SessionType = 0;
    symbol.CustomSession = 91;
    const LONG key = Insert(symbol);
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SETTINGS WHERE SETTING=90'",
                                          L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=91'",
                                          L"sql = 'DELETE FROM SESSIONS WHERE SESSION=91'",
                                          L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=" + Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x20, 0), Change(0x200, 0), Change(0x100, 0), Change(0x4, 0)));
    EXPECT_TRUE(Host().HasPrepared(
        L"SELECT SETTING_TYPE,SESSION_TYPE,SETTING,CUSTOM_SESSION FROM PORTFOLIO WHERE SYMBOL=" + Text(key)));
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT 1 FROM SETTINGS WHERE SETTING=90"), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT 1 FROM SESSIONS WHERE SESSION=91"), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT 1 FROM SESSION_DETAILS WHERE SESSION=91"), IsEmpty());
}

TEST_F(Symbols, DeleteLeavesWhatIsNotTheSymbolsOwn) {
    Sql(L"INSERT INTO SETTINGS VALUES(90,1,1,1,1)");
    Sql(L"INSERT INTO SESSIONS VALUES(91,2,'shared',0)");
    for (const LONG type : {1, 2, 3}) {
        tagSymbolArguments symbol;
        symbol.SymbolName = L"S" + Text(type);
        symbol.SettingType = type;
        symbol.SessionType = type;
        symbol.CustomSession = 91;
        symbol.TemplateSession = 91;
        const LONG key = Insert(symbol);
        Sql(L"UPDATE PORTFOLIO SET SETTING=90 WHERE SYMBOL=" + Text(key));
        TakeAll();
        EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(key));
        EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=" + Text(key) + L"'"));
        EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4, 0)));
    }
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS WHERE SETTING=90"), SizeIs(1));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS WHERE SESSION=91"), SizeIs(1));
}

TEST_F(Symbols, DeleteTakesOnlyTheOneThatIsTheSymbolsOwn) {
    Sql(L"INSERT INTO SETTINGS VALUES(90,1,1,1,1)");
    Sql(L"INSERT INTO SESSIONS VALUES(91,0,'own',0)");
    const std::wstring ofTheRow = L"UPDATE PORTFOLIO SET SETTING=90, CUSTOM_SESSION=91, TEMPLATE_SESSION=91";
    tagSymbolArguments symbol;
    symbol.SettingType = 0;
    symbol.SessionType = 1;
    LONG key = Insert(symbol);
    Sql(ofTheRow);
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SETTINGS WHERE SETTING=90'",
                                          L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=" + Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x20, 0), Change(0x4, 0)));
    EXPECT_THAT(Sql(L"SELECT 1 FROM SETTINGS WHERE SETTING=90"), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT 1 FROM SESSIONS WHERE SESSION=91"), SizeIs(1));
    Sql(L"INSERT INTO SETTINGS VALUES(90,1,1,1,1)");
    symbol.SettingType = 1;
    symbol.SessionType = 0;
    key = Insert(symbol);
    Sql(ofTheRow);
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=91'",
                                          L"sql = 'DELETE FROM SESSIONS WHERE SESSION=91'",
                                          L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=" + Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0), Change(0x100, 0), Change(0x4, 0)));
    EXPECT_THAT(Sql(L"SELECT 1 FROM SETTINGS WHERE SETTING=90"), SizeIs(1));
    EXPECT_THAT(Sql(L"SELECT 1 FROM SESSIONS WHERE SESSION=91"), IsEmpty());
}

TEST_F(Symbols, DeleteOfAnUnknownSymbolTakesTheTextFilesOfItsKeyAlong) {
    Sql(L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(101,2000000000)");
    Sql(L"INSERT INTO ASC_TEMPLATES VALUES(101,1,1,'x')");
    EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(2000000000));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=2000000000'",
                                          L"sql = 'DELETE FROM ASC_MAP WHERE ID=101'",
                                          L"sql = 'DELETE FROM ASC_TEMPLATES WHERE ID=101'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4, 0), Change(0x400, 0)));
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_MAP"), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_TEMPLATES"), IsEmpty());
}

TEST_F(Symbols, DeleteOfAnUnknownSymbolIsDoneAndAnnounced) {
    const LONG other = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(2000000000));
    EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(0));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=2000000000'",
                                          L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=0'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4, 0), Change(0x4, 0)));
    EXPECT_THAT(Column(L"SYMBOL"), ElementsAre(Row{Text(other)}));
}

TEST_F(Symbols, DeleteTakesTheTextFilesOfTheSymbolAlongAndAnnouncesThemOnce) {
    const LONG key = Insert({});
    for (const wchar_t* id : {L"101", L"102", L"103"}) {
        const std::wstring owner = std::wstring(id) == L"103" ? L"1" : Text(key);
        Sql(L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(" + std::wstring(id) + L"," + owner + L")");
        Sql(L"INSERT INTO ASC_TEMPLATES VALUES(" + std::wstring(id) + L",1,1,'x')");
    }
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeletePortfolio(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM PORTFOLIO WHERE SYMBOL=" + Text(key) + L"'",
                                          L"sql = 'DELETE FROM ASC_MAP WHERE ID=101'",
                                          L"sql = 'DELETE FROM ASC_TEMPLATES WHERE ID=101'",
                                          L"sql = 'DELETE FROM ASC_MAP WHERE ID=102'",
                                          L"sql = 'DELETE FROM ASC_TEMPLATES WHERE ID=102'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4, 0), Change(0x400, 0)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT ID FROM ASC_MAP WHERE SYMBOL=" + Text(key)));
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_MAP"), ElementsAre(Row{L"103"}));
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_TEMPLATES"), ElementsAre(Row{L"103"}));
}

} // namespace
