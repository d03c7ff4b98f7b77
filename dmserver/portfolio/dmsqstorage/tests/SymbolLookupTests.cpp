// Small questions about symbols: keys by exact texts, sessions, and adding by the name of the exchange.
#include "SymbolFixture.h"
#include "platform/text.h"

#include <functional>

namespace {

using namespace tests;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class SymbolLookups : public SymbolTest {
protected:
    LONG ByAll(const std::wstring& name, LONG category = 1, LONG exchange = 5, LONG feed = 7) {
        LONG key = -1;
        EXPECT_EQ(S_OK,
                  m_Storage->GetSymbol(feed, CBstr(name).Get(), category, exchange, 0, CBstr(L"").Get(), 0, &key));
        return key;
    }
    LONG ByName(const std::wstring& name, LONG feed = 7) {
        LONG key = -1;
        EXPECT_EQ(S_OK, m_Storage->GetSymbolByName(feed, CBstr(name).Get(), &key));
        return key;
    }
    std::pair<LONG, std::wstring> ByDescription(const std::wstring& description, LONG feed = 7) {
        LONG key = -1;
        CBstr name;
        EXPECT_EQ(S_OK, m_Storage->GetSymbolByDescription(feed, CBstr(description).Get(), name.Put(), &key));
        return {key, std::wstring(name.View())};
    }
    static std::vector<std::wstring> Warnings() {
        std::vector<std::wstring> warnings;
        for (const std::wstring& message : Recorder::Messages())
            if (message.starts_with(L"[WARNING]"))
                warnings.push_back(message);
        return warnings;
    }
};

using Found = std::pair<LONG, std::wstring>;

// --- Keys

TEST_F(SymbolLookups, GetSymbolComparesNameCategoryExchangeAndFeed) {
    Write(101, L"ESZ09");
    Write(102, L"ESZ09", L"", 2);
    Write(103, L"ESZ09", L"", 1, 8);
    Write(104, L"ESZ09", L"", 1, 7, 6);
    EXPECT_EQ(101, ByAll(L"ESZ09"));
    EXPECT_EQ(102, ByAll(L"ESZ09", 2));
    EXPECT_EQ(103, ByAll(L"ESZ09", 1, 5, 8));
    EXPECT_EQ(104, ByAll(L"ESZ09", 1, 6));
    EXPECT_EQ(0, ByAll(L"ESZ0"));
    EXPECT_EQ(0, ByAll(L"esz09"));
    EXPECT_EQ(0, ByAll(L"ESZ09", 3));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='ESZ09' AND CATEGORY=2 AND "
                                   L"EXCHANGE=5 AND DATA_FEED=7"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(SymbolLookups, GetSymbolTakesNoPartOfDateStrikeAndSide) {
    Write(101, L"ESZ09");
    for (const LONG date : {-1, 0, 40165, 99999}) {
        LONG key = 0;
        EXPECT_EQ(S_OK, m_Storage->GetSymbol(7, CBstr(L"ESZ09").Get(), 1, 5, date, nullptr, date, &key));
        EXPECT_EQ(101, key);
    }
}

TEST_F(SymbolLookups, GetSymbolDoesNotEscapeTheName) {
    Write(101, L"O''X");
    EXPECT_EQ(0, ByAll(L"O'X"));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    Recorder::Clear();
    EXPECT_EQ(101, ByAll(L"O''X")) << "escaped by the caller";
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(SymbolLookups, GetSymbolByNameComparesToTheLetter) {
    Write(101, L"ESZ09");
    Write(102, L"ESZ09", L"", 1, 8);
    EXPECT_EQ(101, ByName(L"ESZ09"));
    EXPECT_EQ(102, ByName(L"ESZ09", 8));
    EXPECT_EQ(0, ByName(L"esz09"));
    EXPECT_EQ(0, ByName(L"ESZ09", 9));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=7 AND SYMBOL_NAME='ESZ09'"));
}

TEST_F(SymbolLookups, GetSymbolByNameEscapesTheName) {
    Write(101, L"O''X");
    EXPECT_EQ(101, ByName(L"O'X"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(SymbolLookups, GetSymbolByDescriptionGivesKeyAndName) {
    Write(101, L"ESZ09", L"E-mini S&P");
    Write(102, L"NQZ09", L"it''s");
    EXPECT_EQ(Found(101, L"ESZ09"), ByDescription(L"E-mini S&P"));
    EXPECT_EQ(Found(102, L"NQZ09"), ByDescription(L"it's"));
    EXPECT_EQ(Found(0, L""), ByDescription(L"e-mini s&p"));
    EXPECT_EQ(Found(0, L""), ByDescription(L"E-mini S&P", 8));
    EXPECT_TRUE(
        Host().HasPrepared(L"SELECT SYMBOL,SYMBOL_NAME FROM PORTFOLIO WHERE DATA_FEED=7 AND DESCRIPTION='it''s'"));
}

TEST_F(SymbolLookups, NoRowGivesNoNameAtAll) {
    LONG key = -1;
    BSTR name = CBstr(L"left over").Get();
    EXPECT_EQ(S_OK, m_Storage->GetSymbolByDescription(7, CBstr(L"none").Get(), &name, &key));
    EXPECT_EQ(nullptr, name);
    EXPECT_EQ(0, key);
    EXPECT_EQ(S_OK, m_Storage->GetSymbolByDescription(7, CBstr(L"none").Get(), nullptr, &key));
    Write(101, L"ESZ09", L"d");
    EXPECT_EQ(S_OK, m_Storage->GetSymbolByDescription(7, CBstr(L"d").Get(), nullptr, &key));
    EXPECT_EQ(101, key);
}

TEST_F(SymbolLookups, SeveralRowsGiveAWarningWithEveryKeyAndTheFirstKey) {
    Write(101, L"ESZ09", L"d'' d", 1);
    Write(102, L"ESZ09", L"d'' d", 1);
    const auto keys = Sql(L"SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=7 AND SYMBOL_NAME='ESZ09'");
    ASSERT_EQ(2U, keys.size());
    const LONG first = std::stoi(keys[0][0]);
    const auto warningOf = [&keys](const std::wstring& lookup) {
        return ElementsAre(L"[WARNING]  " + lookup, L"[WARNING]  ID = " + keys[0][0],
                           L"[WARNING]  ID = " + keys[1][0]);
    };
    Recorder::Clear();
    EXPECT_EQ(first, ByAll(L"ESZ09"));
    EXPECT_THAT(Warnings(), warningOf(L"SelectSymbol, GetByName = ESZ09"));
    Recorder::Clear();
    EXPECT_EQ(first, ByName(L"ESZ09"));
    EXPECT_THAT(Warnings(), warningOf(L"GetSymbolByName, GetByName = ESZ09"));
    Recorder::Clear();
    EXPECT_EQ(Found(first, L"ESZ09"), ByDescription(L"d' d"));
    EXPECT_THAT(Warnings(), warningOf(L"GetSymbolByDescription, GetByName = d' d"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(SymbolLookups, OneRowGivesNoWarning) {
    Write(101, L"ESZ09");
    ByAll(L"ESZ09");
    ByName(L"ESZ09");
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(SymbolLookups, AnEmptyTextIsRefusedAndTheKeyIsZero) {
    for (const CBstr& empty : {CBstr(), CBstr(L"")}) {
        LONG key = -1;
        EXPECT_EQ(E_INVALIDARG, m_Storage->GetSymbol(7, empty.Get(), 1, 5, 0, nullptr, 0, &key));
        EXPECT_EQ(0, key);
        key = -1;
        EXPECT_EQ(E_INVALIDARG, m_Storage->GetSymbolByName(7, empty.Get(), &key));
        EXPECT_EQ(0, key);
        key = -1;
        CBstr name;
        EXPECT_EQ(E_INVALIDARG, m_Storage->GetSymbolByDescription(7, empty.Get(), name.Put(), &key));
        EXPECT_EQ(0, key);
        EXPECT_EQ(nullptr, name.Get());
    }
    const CBstr text(L"x");
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetSymbol(7, text.Get(), 1, 5, 0, nullptr, 0, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetSymbolByName(7, text.Get(), nullptr));
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetSymbolByDescription(7, text.Get(), nullptr, nullptr));
}

TEST_F(SymbolLookups, EveryLookupHasRoomFor2047CharactersAndBeyondThemGivesZero) {
    const std::pair<std::wstring, std::function<LONG(const std::wstring&)>> lookups[]{
        {L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='' AND CATEGORY=1 AND EXCHANGE=5 AND DATA_FEED=7",
         [&](const std::wstring& text) { return ByAll(text); }},
        {L"SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=7 AND SYMBOL_NAME=''",
         [&](const std::wstring& text) { return ByName(text); }},
        {L"SELECT SYMBOL,SYMBOL_NAME FROM PORTFOLIO WHERE DATA_FEED=7 AND DESCRIPTION=''",
         [&](const std::wstring& text) { return ByDescription(text).first; }}};
    for (const auto& [around, lookup] : lookups) {
        Recorder::Clear();
        EXPECT_EQ(0, lookup(std::wstring(2047 - around.size(), L'n')));
        EXPECT_THAT(Recorder::Errors(), IsEmpty()) << platform::ToUtf8(around);
        EXPECT_THAT(Recorder::Asserts(), IsEmpty()) << platform::ToUtf8(around);
        EXPECT_EQ(0, lookup(std::wstring(2048 - around.size(), L'n')));
        EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"its buffer takes 2047")));
    }
}

// How the engine runs a statement that the storage has prepared.
class SymbolPlans : public SymbolLookups, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        SymbolLookups::SetUp();
        if (!GetParam())
            return;
        Sql(L"EXECUTE BLOCK AS DECLARE I INTEGER = 1000; BEGIN WHILE (I < 21000) DO BEGIN I = I + 1; "
            L"INSERT INTO PORTFOLIO VALUES(:I,'S'||:I,'R','about "
            L"'||:I,'',MOD(:I,3),7+MOD(:I,2),5+MOD(:I,2),1,0,1,0,0,"
            L"0,0,0,0,0,NULL,0,0,NULL,NULL); END END");
        Sql(L"EXECUTE BLOCK AS DECLARE N VARCHAR(63); BEGIN FOR SELECT TRIM(RDB$INDEX_NAME) FROM RDB$INDICES WHERE "
            L"RDB$RELATION_NAME='PORTFOLIO' INTO :N DO EXECUTE STATEMENT 'SET STATISTICS INDEX ' || :N; END");
    }
    static std::vector<std::wstring> Plans(const std::wstring& statement) {
        std::vector<std::wstring> plans;
        for (const Row& row :
             Sql(L"SELECT CAST(MON$SQL_TEXT AS VARCHAR(4000)) AS STATEMENT_TEXT,"
                 L"CAST(MON$EXPLAINED_PLAN AS VARCHAR(4000)) AS STATEMENT_PLAN FROM MON$STATEMENTS "
                 L"WHERE MON$ATTACHMENT_ID<>CURRENT_CONNECTION"))
            if (row[0] == statement)
                plans.push_back(row[1]);
        return plans;
    }
    static void ExpectIndex(const std::wstring& statement, const std::wstring& index) {
        EXPECT_THAT(Plans(statement), ElementsAre(AllOf(HasSubstr(L"\"" + index + L"\""),
                                                        Not(HasSubstr(L"Full Scan")), Not(HasSubstr(L"NATURAL")))))
            << platform::ToUtf8(statement);
    }
};

INSTANTIATE_TEST_SUITE_P(InAnEmptyAndAFilledPortfolio, SymbolPlans, testing::Bool(),
                         [](const auto& info) { return std::string(info.param ? "Filled" : "Empty"); });

TEST_P(SymbolPlans, EveryLookupGoesThroughAnIndex) {
    ByAll(L"S5000");
    ByName(L"S5000");
    ByDescription(L"about 5000");
    ExpectIndex(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='S5000' AND CATEGORY=1 AND EXCHANGE=5 AND "
                L"DATA_FEED=7",
                L"PORTFOLIO_IDENTITY");
    ExpectIndex(L"SELECT SYMBOL FROM PORTFOLIO WHERE DATA_FEED=7 AND SYMBOL_NAME='S5000'", L"PORTFOLIO_IDENTITY");
    ExpectIndex(L"SELECT SYMBOL,SYMBOL_NAME FROM PORTFOLIO WHERE DATA_FEED=7 AND DESCRIPTION='about 5000'",
                L"PORTFOLIO_FEED_DESCRIPTION");
}

TEST_P(SymbolPlans, TheDuplicateTestGoesThroughAnIndex) {
    tagSymbolArguments symbol;
    symbol.SymbolName = L"S'5000";
    Insert(symbol);
    ExpectIndex(
        L"SELECT SYMBOL,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,EXCHANGE_NAME,"
        L"EXCHANGE_TIME_ZONE_INFORMATION,SETTING_TYPE,SETTING,CUSTOM_SETTING,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,"
        L"MIN_MOVEMENT,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,SESSIONS_STRING,SESSIONS_TIME_ZONE_INFORMATION,"
        L"STRIKE_PRICE,CAST(STRIKE_PRICE AS VARCHAR(32)) AS "
        L"STRIKE_PRICE_NAME,CONTRACT_MONTH,CONTRACT_YEAR,CALL_PUT,"
        L"MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY,EXCHANGE_GMT,LOCAL_GMT FROM "
        L"GET_SYMBOL_INFO((SELECT FIRST(1) SYMBOL FROM PORTFOLIO WHERE DATA_FEED=7 AND UPPER(SYMBOL_NAME)="
        L"UPPER('S''''5000') AND CATEGORY=1 AND EXCHANGE=5))",
        L"PORTFOLIO_UPPER_NAME");
}

// --- Sessions

TEST_F(SymbolLookups, TheSessionsOfASymbolAreItsOwnItsExchangesAndAllTemplatesOnceEach) {
    Sql(L"EXECUTE BLOCK AS BEGIN INSERT INTO SESSIONS VALUES(91,0,'own',0); "
        L"INSERT INTO SESSIONS VALUES(92,0,'of another symbol',0); "
        L"INSERT INTO SESSIONS VALUES(93,2,'template',1); INSERT INTO SESSIONS VALUES(94,2,'its template',2); END");
    tagSymbolArguments symbol;
    symbol.SessionType = 0;
    symbol.CustomSession = 91;
    symbol.TemplateSession = 94;
    const LONG key = Insert(symbol);
    const auto table = NewTable();
    EXPECT_EQ(S_OK, m_Storage->GetAvailableSessions(key, table.Get()));
    EXPECT_THAT(RowsOf(table),
                UnorderedElementsAre(Row{L"91", L"0", L"own", L"0"}, Row{L"52", L"1", L"CME day", L"0"},
                                     Row{L"93", L"2", L"template", L"1"}, Row{L"94", L"2", L"its template", L"2"}));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM GET_AVAILABLE_SESSIONS(" + Text(key) + L")"));
}

TEST_F(SymbolLookups, AnUnknownSymbolHasNoSessionsAndANullTableNothingToDo) {
    const auto table = NewTable();
    EXPECT_EQ(S_OK, m_Storage->GetAvailableSessions(2000000000, table.Get()));
    EXPECT_EQ(0, RecordCount(table));
    EXPECT_EQ(S_FALSE, m_Storage->GetAvailableSessions(1, nullptr));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

// --- Adding by the name of the exchange

class AddedSymbols : public SymbolTest {
protected:
    HRESULT Add(const tagSymbolArguments& a, const std::optional<std::wstring>& exchange, LONG* key) {
        const auto adding = m_Storage.As<IDM_dmSupplier::IqxAddingSymbol>();
        return adding->AddSymbol(OrNull(a.SymbolName).Get(), OrNull(a.SymbolRoot).Get(),
                                 OrNull(a.Description).Get(), OrNull(a.CUSIP).Get(), a.Category, a.Datafeed,
                                 OrNull(exchange).Get(), a.ContractMonth, a.ContractYear, a.StrikePrice, a.CallPut,
                                 a.Margin, a.ExpirationDate, a.Expired, a.ExpirationRule, a.FirstNoticeDate,
                                 a.Delivery, key);
    }
};

TEST_F(AddedSymbols, AreInsertedWithSettingAndSessionOfTheExchange) {
    tagSymbolArguments symbol;
    symbol.StrikePrice = 2.5;
    symbol.CallPut = 1;
    symbol.Margin = 3;
    symbol.Expired = 1;
    symbol.ExpirationRule = 4;
    symbol.FirstNoticeDate = 40148;
    symbol.Delivery = 40168;
    LONG key = 0;
    EXPECT_EQ(S_OK, Add(symbol, L"CBOT", &key));
    EXPECT_THAT(
        Statements(),
        ElementsAre(L"sql = 'INSERT INTO PORTFOLIO VALUES(" + Text(key) +
                    L",'ESZ09','ES','E-mini','78378X107',1,7,6,1,0,1,0,0,12,2009,2.500000,1,3,'18.12.2009',1,4,"
                    L"'01.12.2009','21.12.2009')'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x1, key)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='CBOT'"));
}

TEST_F(AddedSymbols, OfAnUnknownExchangeAreNotInsertedAndThatIsSuccess) {
    LONG key = -1;
    EXPECT_EQ(S_OK, Add({}, L"NYSE", &key));
    EXPECT_EQ(S_OK, Add({}, L"cme", &key)) << "the name is compared to the letter";
    EXPECT_EQ(-1, key) << "as the caller left it";
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(AddedSymbols, ThatExistGiveTheirKey) {
    const LONG existing = Insert({});
    TakeAll();
    LONG key = 0;
    EXPECT_EQ(S_OK, Add({}, L"CME", &key));
    EXPECT_EQ(existing, key);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(AddedSymbols, TakeTheNameOfTheExchangeIntoTheStatementAsItIs) {
    LONG key = -1;
    EXPECT_EQ(S_OK, Add({}, L"C'ME", &key));
    EXPECT_EQ(-1, key);
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    Recorder::Clear();
    EXPECT_EQ(S_OK, Add({}, std::wstring(256, L'X'), &key));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"its buffer takes 255")));
}

TEST_F(AddedSymbols, GoToTheFirstOfTwoExchangesOfOneName) {
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(4,'CME',61,62)");
    const auto first = Sql(L"SELECT FIRST(1) EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='CME'");
    LONG key = 0;
    EXPECT_EQ(S_OK, Add({}, L"CME", &key));
    EXPECT_EQ(first, Sql(L"SELECT EXCHANGE FROM PORTFOLIO WHERE SYMBOL=" + Text(key)));
}

TEST_F(AddedSymbols, WithoutTheNameOfAnExchangeAreNotInsertedAndThatIsReported) {
    LONG key = -1;
    EXPECT_EQ(S_OK, Add({}, std::nullopt, &key));
    EXPECT_EQ(-1, key) << "as the caller left it";
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"ExchangeName"));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(AddedSymbols, WithoutAPlaceForTheKeyAreRefused) {
    EXPECT_EQ(E_POINTER, Add({}, L"CME", nullptr));
    EXPECT_THAT(Sql(L"SELECT SYMBOL FROM PORTFOLIO"), IsEmpty());
}

TEST_F(AddedSymbols, WithoutATextGiveNoKey) {
    tagSymbolArguments symbol;
    symbol.CUSIP = std::nullopt;
    LONG key = -1;
    EXPECT_EQ(S_OK, Add(symbol, L"CME", &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"CUSIP"));
}

} // namespace
