// The twin of the portfolio: the same rows by the same code, with checks and answers of its own.
#include "SymbolFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class Dictionary : public SymbolTest {
protected:
    // A row needs a setting of at least 1.
    static tagSymbolArguments Symbol(const std::wstring& name = L"ESZ09") {
        tagSymbolArguments symbol;
        symbol.SymbolName = name;
        symbol.Setting = 51;
        return symbol;
    }
    LONG InsertRow(const tagSymbolArguments& symbol) {
        LONG key = 0;
        EXPECT_EQ(S_OK, InsertDictionary(*m_Storage.Get(), symbol, &key));
        EXPECT_GE(key, 1);
        return key;
    }
    CComPtr<IdmTable> Select(LONG mode, const CComPtr<IdmRequest>& request) {
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectDictionary(mode, request.Get(), table.Get()));
        return table;
    }
    static std::vector<std::wstring> Names(const CComPtr<IdmTable>& table) {
        std::vector<std::wstring> names;
        LONG eof = 0;
        for (table->First(); table->get_Eof(&eof) == S_OK && !eof; table->Next()) {
            CBstr name;
            FieldOf(table, IDM_dmudfcom::fieldSymbolName)->get_AsString(name.Put());
            names.emplace_back(name.View());
        }
        return names;
    }
    // As the storage's own statement.
    static std::wstring RowStatement(LONG key) {
        return L"SELECT "
               L"P.SYMBOL,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.DESCRIPTION,P.CUSIP,P.CATEGORY,P.DATA_FEED,P.EXCHANGE,"
               L"P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,P.TEMPLATE_SESSION,P.CONTRACT_MONTH,"
               L"P.CONTRACT_YEAR,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,CAST(P.STRIKE_PRICE AS VARCHAR(32)) "
               L"AS STRIKE_PRICE_NAME,P.CALL_PUT,P.MARGIN,P.EXPIRATION_DATE,P.EXPIRED,P.EXPIRATION_RULE,"
               L"P.FIRST_NOTICE_DATE,P.DELIVERY FROM DICTIONARY P WHERE P.SYMBOL=" +
               Text(key) + L" ORDER BY P.SYMBOL_NAME";
    }
};

// --- Insert

TEST_F(Dictionary, InsertWritesIntoTheDictionaryAndAnnouncesTheKey) {
    const LONG key = InsertRow(Symbol());
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'INSERT INTO DICTIONARY VALUES(" + Text(key) +
                            L",'ESZ09','ES','E-mini','78378X107',1,7,5,1,0,1,0,0,12,2009,0.000000,0,0,"
                            L"'18.12.2009',0,0,'01.01.1900','01.01.1900')'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x1, key)));
    EXPECT_THAT(Column(L"SYMBOL,SYMBOL_NAME", L"DICTIONARY"), ElementsAre(Row{Text(key), L"ESZ09"}));
    EXPECT_THAT(Column(L"SYMBOL"), IsEmpty());
}

TEST_F(Dictionary, ASymbolOfThePortfolioBlocksItsTwinAndGivesItsKey) {
    const LONG existing = Insert({});
    TakeAll();
    LONG key = 0;
    EXPECT_EQ(S_OK, InsertDictionary(*m_Storage.Get(), Symbol(), &key));
    EXPECT_EQ(existing, key);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Column(L"SYMBOL", L"DICTIONARY"), IsEmpty());
}

TEST_F(Dictionary, ASymbolOfTheDictionaryItselfBlocksNothing) {
    const LONG first = InsertRow(Symbol());
    const LONG second = InsertRow(Symbol());
    EXPECT_NE(first, second);
    EXPECT_THAT(Column(L"SYMBOL", L"DICTIONARY"), SizeIs(2));
    Insert({});
}

TEST_F(Dictionary, AMissingTextWritesNothingAndGivesNoKey) {
    tagSymbolArguments symbol = Symbol();
    symbol.Description = std::nullopt;
    LONG key = -1;
    EXPECT_EQ(S_FALSE, InsertDictionary(*m_Storage.Get(), symbol, &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"desc"));
}

TEST_F(Dictionary, InsertWantsTextsAndASetting) {
    std::vector<tagSymbolArguments> bad;
    for (const auto text : {&tagSymbolArguments::SymbolName, &tagSymbolArguments::SymbolRoot})
        for (const auto& value : {std::optional<std::wstring>(), std::optional<std::wstring>(L"")}) {
            bad.push_back(Symbol());
            bad.back().*text = value;
        }
    for (const auto& [argument, value] :
         {std::pair(&tagSymbolArguments::Setting, LONG{0}), std::pair(&tagSymbolArguments::SettingType, LONG{-1}),
          std::pair(&tagSymbolArguments::SessionType, LONG{-1}),
          std::pair(&tagSymbolArguments::Exchange, LONG{0})}) {
        bad.push_back(Symbol());
        bad.back().*argument = value;
    }
    for (const tagSymbolArguments& symbol : bad) {
        LONG key = -1;
        EXPECT_EQ(E_INVALIDARG, InsertDictionary(*m_Storage.Get(), symbol, &key));
        EXPECT_EQ(-1, key);
        EXPECT_EQ(E_INVALIDARG, UpdateDictionary(*m_Storage.Get(), 1, symbol));
    }
    EXPECT_EQ(E_INVALIDARG, InsertDictionary(*m_Storage.Get(), Symbol(), nullptr));
    EXPECT_EQ(E_INVALIDARG, UpdateDictionary(*m_Storage.Get(), 0, Symbol()));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

// --- Update and delete

TEST_F(Dictionary, UpdateChangesTheDictionaryAndAnnouncesTheKey) {
    const LONG key = InsertRow(Symbol());
    TakeAll();
    tagSymbolArguments symbol = Symbol(L"NQZ09");
    symbol.SymbolRoot = L"nq";
    symbol.SettingType = 0;
    EXPECT_EQ(S_OK, UpdateDictionary(*m_Storage.Get(), key, symbol));
    EXPECT_THAT(
        Statements(),
        ElementsAre(L"sql = 'UPDATE DICTIONARY SET SYMBOL_NAME='NQZ09',SYMBOL_ROOT='nq',DESCRIPTION='E-mini',"
                    L"CUSIP='78378X107',CATEGORY=1,DATA_FEED=7,EXCHANGE=5,SETTING_TYPE=0,SESSION_TYPE=1,"
                    L"CUSTOM_SESSION=0,TEMPLATE_SESSION=0,CONTRACT_MONTH=12,CONTRACT_YEAR=2009,"
                    L"STRIKE_PRICE=0.000000,CALL_PUT=0,MARGIN=0,EXPIRATION_DATE='18.12.2009',EXPIRED=0,"
                    L"EXPIRATION_RULE=0,FIRST_NOTICE_DATE='01.01.1900',DELIVERY='01.01.1900',SETTING=51 "
                    L"WHERE SYMBOL=" +
                    Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x2, key)));
    EXPECT_THAT(Column(L"SYMBOL_NAME,SYMBOL_ROOT,SETTING", L"DICTIONARY"),
                ElementsAre(Row{L"NQZ09", L"nq", L"51"}));
}

TEST_F(Dictionary, WhatIsNotThereIsNeitherChangedNorDeleted) {
    const LONG onlyInPortfolio = Insert({});
    InsertRow(Symbol(L"NQZ09"));
    TakeAll();
    for (const LONG key : {onlyInPortfolio, LONG{2000000000}}) {
        EXPECT_EQ(S_FALSE, UpdateDictionary(*m_Storage.Get(), key, Symbol()));
        EXPECT_EQ(S_FALSE, m_Storage->DeleteDictionary(key));
    }
    // Neither is a key; as such they would ask for rows of all kinds.
    EXPECT_EQ(S_FALSE, m_Storage->DeleteDictionary(0));
    EXPECT_EQ(S_FALSE, m_Storage->DeleteDictionary(-1));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Column(L"SYMBOL", L"DICTIONARY"), SizeIs(1));
}

TEST_F(Dictionary, DeleteTakesWhatIsTheSymbolsOwnAlong) {
    Sql(L"INSERT INTO SETTINGS VALUES(90,1,1,1,1)");
    Sql(L"INSERT INTO SESSIONS VALUES(91,0,'own',0)");
    tagSymbolArguments symbol = Symbol();
    symbol.SettingType = 0;
    symbol.Setting = 90;
    symbol.SessionType = 0;
    symbol.CustomSession = 91;
    const LONG key = InsertRow(symbol);
    Sql(L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(101," + Text(key) + L")");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteDictionary(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SETTINGS WHERE SETTING=90'",
                                          L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=91'",
                                          L"sql = 'DELETE FROM SESSIONS WHERE SESSION=91'",
                                          L"sql = 'DELETE FROM DICTIONARY WHERE SYMBOL=" + Text(key) + L"'",
                                          L"sql = 'DELETE FROM ASC_MAP WHERE ID=101'",
                                          L"sql = 'DELETE FROM ASC_TEMPLATES WHERE ID=101'"));
    EXPECT_THAT(m_Changes.Take(),
                ElementsAre(Change(0x20, 0), Change(0x200, 0), Change(0x100, 0), Change(0x4, 0), Change(0x400, 0)));
    EXPECT_TRUE(Host().HasPrepared(
        L"SELECT SETTING_TYPE,SESSION_TYPE,SETTING,CUSTOM_SESSION FROM DICTIONARY WHERE SYMBOL=" + Text(key)));
    EXPECT_THAT(Column(L"SYMBOL", L"DICTIONARY"), IsEmpty());
}

// --- Select

TEST_F(Dictionary, SelectOfOneKeyReadsItAtOneWhateverTheMode) {
    const LONG key = InsertRow(Symbol());
    InsertRow(Symbol(L"NQZ09"));
    const auto request = NewRequest();
    request->put_Symbol(1, key);
    request->put_SymbolName(0, CBstr(L"NQ").Get());
    const auto table = Select(0, request);
    EXPECT_THAT(RowsOf(table),
                ElementsAre(Row{Text(key), L"ESZ09",      L"ES",   L"E-mini", L"78378X107",  L"1",
                                L"7",      L"5",          L"1",    L"0",      L"1",          L"0",
                                L"0",      L"12",         L"2009", L"0",      L"0.0000000",  L"0",
                                L"0",      L"18.12.2009", L"0",    L"0",      L"01.01.1900", L"01.01.1900"}));
    EXPECT_TRUE(Host().HasPrepared(RowStatement(key)));
}

TEST_F(Dictionary, ANegativeKeyIsAKey) {
    const auto request = NewRequest();
    request->put_Symbol(1, -2);
    EXPECT_EQ(0, RecordCount(Select(1, request)));
    EXPECT_TRUE(Host().HasPrepared(RowStatement(-2)));
}

TEST_F(Dictionary, SelectOfOneKeyNeedsNoExchangeOrFeed) {
    tagSymbolArguments symbol = Symbol();
    symbol.Exchange = 999;
    symbol.Datafeed = 999;
    const auto request = NewRequest();
    request->put_Symbol(1, InsertRow(symbol));
    EXPECT_EQ(1, RecordCount(Select(1, request)));
}

TEST_F(Dictionary, SelectWithoutAKeyFiltersByWhatStandsAtTheMode) {
    InsertRow(Symbol());
    InsertRow(Symbol(L"ESH10"));
    InsertRow(Symbol(L"NQZ09"));
    for (const LONG none : {0, -1}) {
        const auto request = NewRequest();
        request->put_Symbol(1, none);
        request->put_Symbol(3, none);
        request->put_SymbolName(3, CBstr(L"es").Get());
        request->put_Category(3, -1);
        EXPECT_THAT(Names(Select(3, request)), UnorderedElementsAre(L"ESZ09", L"ESH10"));
        EXPECT_THAT(Names(Select(2, request)), IsEmpty()) << "at 2 nothing is written, which asks for category 0";
    }
    EXPECT_TRUE(Host().HasPrepared(
        L"SELECT "
        L"P.SYMBOL,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.DESCRIPTION,P.CUSIP,P.CATEGORY,P.DATA_FEED,D.DATA_FEED_NAME,"
        L"P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,P.TEMPLATE_SESSION,P.CONTRACT_MONTH,"
        L"P.CONTRACT_YEAR,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS "
        L"STRIKE_PRICE_NAME,P.CALL_PUT,P.MARGIN,P.EXPIRATION_DATE,P.EXPIRED,P.EXPIRATION_RULE,P.FIRST_NOTICE_DATE,"
        L"P.DELIVERY,E.EXCHANGE_NAME FROM DICTIONARY P, EXCHANGES E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND "
        L"P.DATA_FEED=D.DATA_FEED AND UPPER(P.SYMBOL_NAME) LIKE 'ES%'"));
}

TEST_F(Dictionary, SelectLeavesTheSettingOfTheRow) {
    tagSymbolArguments symbol = Symbol();
    symbol.SettingType = 2;
    symbol.SessionType = 3;
    const LONG key = InsertRow(symbol);
    const auto request = NewRequest();
    request->put_Symbol(1, key);
    const auto table = Select(1, request);
    EXPECT_FALSE(FieldOf(table, IDM_dmudfcom::fieldPriceScale));
    EXPECT_FALSE(FieldOf(table, IDM_dmudfcom::fieldSessionsString));
    table->First();
    LONG setting = -1;
    FieldOf(table, IDM_dmudfcom::fieldSetting)->get_AsLong(&setting);
    EXPECT_EQ(0, setting);
}

TEST_F(Dictionary, SelectRefusesANullRequestOrTable) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectDictionary(0, nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectDictionary(0, NewRequest().Get(), nullptr));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

} // namespace
