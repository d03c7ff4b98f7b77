// The filtered select of symbols, and symbols where the storage or its announcements are switched off.
#include "PrivateMember.h"
#include "RefusedClass.h"
#include "SelectStatements.h"
#include "SymbolFixture.h"
#include "SymbolRecord.h"
#include "platform/text.h"
#include "qxStorageBase.h"

#include <functional>
#include <stdexcept>
#include <thread>

namespace tests {

struct NotifyFlag {
    using Member = std::atomic<int> sqStorage::CStorage::*;
    friend Member MemberOf(NotifyFlag);
};
template struct CPrivateMember<NotifyFlag, &sqStorage::CStorage::m_NotifyEnabled>;

struct SymbolDatabase {
    using Member = platform::CComPtr<sqStorage::IdmDatabase> sqStorage::CStorage::*;
    friend Member MemberOf(SymbolDatabase);
};
template struct CPrivateMember<SymbolDatabase, &sqStorage::CStorage::m_Database>;

struct SymbolGenerator {
    using Member = std::unique_ptr<sqStorage::CIdGenerator> sqStorage::CStorage::*;
    friend Member MemberOf(SymbolGenerator);
};
template struct CPrivateMember<SymbolGenerator, &sqStorage::CStorage::m_IdGenerator>;

struct SingletonObject {
    using Member = std::unique_ptr<sqStorage::CStorage> dm::CSingleton<sqStorage::CStorage>::*;
    friend Member MemberOf(SingletonObject);
};
template struct CPrivateMember<SingletonObject, &dm::CSingleton<sqStorage::CStorage>::m_Object>;

} // namespace tests

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// --- The statement

constexpr LONG Mode = 3;

class SymbolSql : public testing::Test {
protected:
    SymbolSql() {
        Recorder::Clear();
        // A request in which nothing is written asks for category 0.
        m_Request->put_Category(Mode, -1);
    }

    std::wstring Statement(int full = 0, const wchar_t* table = L"PORTFOLIO") const {
        wchar_t sql[1024];
        sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 1024, table, full);
        return sql;
    }
    // What stands behind the join.
    std::wstring Filters() const {
        const std::wstring sql = Statement();
        const std::wstring join = L" WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED";
        const std::size_t at = sql.find(join);
        EXPECT_NE(sql.npos, at);
        return sql.substr(at + join.size());
    }
    void PutName(const std::wstring& name) { m_Request->put_SymbolName(Mode, CBstr(name).Get()); }
    void PutDescription(const std::wstring& text) { m_Request->put_Description(Mode, CBstr(text).Get()); }

    CComPtr<IdmRequest> m_Request = NewRequest();
};

TEST_F(SymbolSql, ShortAndFullColumns) {
    EXPECT_EQ(
        L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.CATEGORY,P.DESCRIPTION,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
        L"CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.EXPIRATION_DATE,E.EXCHANGE_NAME "
        L"FROM PORTFOLIO P, EXCHANGES E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED",
        Statement(0));
    EXPECT_EQ(
        L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.DESCRIPTION,P.CUSIP,P.CATEGORY,P.DATA_FEED,"
        L"D.DATA_FEED_NAME,P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,"
        L"P.TEMPLATE_SESSION,P.CONTRACT_MONTH,P.CONTRACT_YEAR,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
        L"CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.MARGIN,P.EXPIRATION_DATE,"
        L"P.EXPIRED,P.EXPIRATION_RULE,P.FIRST_NOTICE_DATE,P.DELIVERY,E.EXCHANGE_NAME FROM DICTIONARY P, EXCHANGES "
        L"E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED",
        Statement(7, L"DICTIONARY"));
}

TEST_F(SymbolSql, AKeyIsTheOnlyFilter) {
    PutName(L"ES");
    m_Request->put_Category(Mode, 1);
    m_Request->put_Symbol(Mode, 4711);
    EXPECT_EQ(L" AND P.SYMBOL=4711", Filters());
    m_Request->put_Symbol(Mode, -2);
    EXPECT_EQ(L" AND P.SYMBOL=-2", Filters());
}

TEST_F(SymbolSql, ZeroAndMinusOneAreNoKey) {
    for (const LONG none : {0, -1}) {
        m_Request->put_Symbol(Mode, none);
        EXPECT_EQ(L"", Filters());
    }
}

TEST_F(SymbolSql, AllFiltersStandInOneOrder) {
    m_Request->put_Datafeed(Mode, 7);
    m_Request->put_ExchangeId(Mode, 5);
    m_Request->put_Category(Mode, 1);
    PutName(L"es");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'ES%' AND P.CATEGORY=1 AND P.EXCHANGE=5 AND P.DATA_FEED=7",
              Filters());
}

TEST_F(SymbolSql, ANameIsEscapedAndPutInCapitals) {
    PutName(L"o'x\u0436\u00FC");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'O''X\u0416\u00DC%'", Filters());
}

TEST_F(SymbolSql, WildcardsInANameTakeEffect) {
    PutName(L"e_%z");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'E_%Z%'", Filters());
}

TEST_F(SymbolSql, ADescriptionFiltersOnlyWithoutAUsableName) {
    PutDescription(L"it's");
    EXPECT_EQ(L" AND UPPER(P.DESCRIPTION) STARTING WITH 'IT''S'", Filters());
    PutName(L"es");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'ES%'", Filters());
}

TEST_F(SymbolSql, AStarIsNoFilter) {
    PutName(L"*");
    EXPECT_EQ(L"", Filters());
    PutDescription(L"ab");
    EXPECT_EQ(L" AND UPPER(P.DESCRIPTION) STARTING WITH 'AB'", Filters());
    PutDescription(L"*");
    EXPECT_EQ(L"", Filters());
    PutName(L"**");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE '**%'", Filters());
}

TEST_F(SymbolSql, EveryCategoryFromZeroOnFilters) {
    for (const LONG category : {0, 18, 254}) {
        m_Request->put_Category(Mode, category);
        EXPECT_EQ(L" AND P.CATEGORY=" + std::to_wstring(category), Filters());
    }
    m_Request->put_Category(Mode, -1);
    EXPECT_EQ(L"", Filters());
}

TEST_F(SymbolSql, ExchangeAndFeedFilterFromOneOn) {
    for (const LONG none : {0, -1}) {
        m_Request->put_ExchangeId(Mode, none);
        m_Request->put_Datafeed(Mode, none);
        EXPECT_EQ(L"", Filters());
    }
}

TEST_F(SymbolSql, EverythingIsReadAtTheMode) {
    m_Request->put_Symbol(Mode + 1, 4711);
    m_Request->put_SymbolName(Mode + 1, CBstr(L"es").Get());
    m_Request->put_Category(Mode + 1, 1);
    m_Request->put_ExchangeId(Mode + 1, 5);
    m_Request->put_Datafeed(Mode + 1, 7);
    EXPECT_EQ(L"", Filters());
}

TEST_F(SymbolSql, ANullRequestOrTableNameIsReportedAndTheBufferStays) {
    wchar_t sql[] = L"as it was";
    sqStorage::SelectSymbol(Mode, nullptr, sql, 10, L"PORTFOLIO", 0);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request"));
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 10, nullptr, 0);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request", L"TableName"));
    sqStorage::SelectSymbol(Mode, nullptr, sql, 10, nullptr, 0);
    EXPECT_STREQ(L"as it was", sql);
    sqStorage::SelectSymbol(Mode, m_Request.Get(), nullptr, 10, L"PORTFOLIO", 0);
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 0, L"PORTFOLIO", 0);
    EXPECT_STREQ(L"as it was", sql);
}

TEST_F(SymbolSql, TheStatementIsCutAtTheSizeOfTheBuffer) {
    wchar_t sql[21];
    sql[20] = L'!';
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 20, L"PORTFOLIO", 0);
    EXPECT_STREQ(L"SELECT P.SYMBOL,P.SY", (std::wstring(sql) + L"Y").c_str());
    EXPECT_EQ(L'!', sql[20]);
    PutName(std::wstring(900, L'n'));
    EXPECT_EQ(1023U, Statement().size());
}

TEST_F(SymbolSql, AFilterThatOverflowsItsBufferIsRefused) {
    PutName(std::wstring(1100, L'n'));
    wchar_t sql[1024];
    EXPECT_THROW(sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 1024, L"PORTFOLIO", 0), std::length_error);
}

// --- The storage

class SymbolInside : public SymbolTest {
protected:
    static void SetUpTestSuite() { HostTest::SetUpTestSuite(); }
    void SetUp() override {
        ASSERT_EQ(S_OK, m_Object->FinalConstruct());
        for (const wchar_t* table :
             {L"DATA_FEEDS", L"EXCHANGES", L"SETTINGS", L"SESSIONS", L"PORTFOLIO", L"DICTIONARY"})
            Sql(std::wstring(L"DELETE FROM ") + table);
        Sql(SymbolGround);
        TakeAll();
    }
    sqStorage::CStorage& Storage() { return *m_Holder.GetObject(); }
    static sqStorage::tagSymbol Row() {
        return {.SymbolName = L"ESZ09",
                .SymbolRoot = L"ES",
                .Description = L"d",
                .CUSIP = L"",
                .Category = 1,
                .Datafeed = 7,
                .Exchange = 5,
                .SettingType = 1,
                .SessionType = 1};
    }

    sqStorage::CStorageHolder m_Holder;
    const CComPtr<CqxStorageBase> m_Object = platform::MakeObject<CqxStorageBase>();
};

TEST_F(SymbolInside, TheCapitalsOfAFilterAreThoseOfTheDatabase) {
    std::wstring letters;
    for (wchar_t letter = 0x100; letter < 0x250; ++letter)
        letters += letter;
    for (wchar_t letter = 0x370; letter < 0x560; ++letter)
        if (letter != 0x378 && letter != 0x379)
            letters += letter;
    for (std::size_t at = 0; at < letters.size(); at += 60) {
        const std::wstring part = letters.substr(at, 60);
        EXPECT_THAT(Sql(L"SELECT UPPER('" + part + L"') AS DESCRIPTION FROM RDB$DATABASE"),
                    ElementsAre(tests::Row{platform::ToUpper(part)}));
    }
}

TEST_F(SymbolInside, ALikeFilterFindsWhatBeginsSo) {
    Write(101, L"ESZ09");
    Write(102, L"esh10");
    Write(103, L"NQZ09");
    const auto request = NewRequest();
    request->put_SymbolName(0, CBstr(L"ES").Get());
    request->put_Category(0, -1);
    wchar_t sql[1024];
    sqStorage::SelectSymbol(0, request.Get(), sql, 1024, L"PORTFOLIO", 0);
    const auto table = NewTable();
    Storage().Execute(sql, nullptr, table.Get());
    std::vector<std::wstring> names;
    for (const tests::Row& row : RowsOf(table))
        names.push_back(row[1]);
    EXPECT_THAT(names, UnorderedElementsAre(L"ESZ09", L"esh10"));
}

TEST_F(SymbolInside, ASwitchedOffFlagSilencesSymbolsAlone) {
    const auto flag = MemberOf(NotifyFlag{});
    EXPECT_EQ(1, (Storage().*flag).load());
    Storage().*flag = 0;
    LONG key = 0;
    EXPECT_EQ(0, Storage().InsertSymbol(L"PORTFOLIO", Row(), &key));
    Storage().UpdateSymbol(L"PORTFOLIO", key, Row());
    Storage().DeleteSymbol(L"PORTFOLIO", key);
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(3U, Statements().size());
    Storage().DeleteSetting(1);
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x20, 0)));
    Storage().*flag = 1;
    EXPECT_EQ(0, Storage().InsertSymbol(L"PORTFOLIO", Row(), &key));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x1, key)));
}

TEST_F(SymbolInside, AMissingTableNameIsReportedAndNothingRuns) {
    LONG key = -1;
    EXPECT_EQ(1, Storage().InsertSymbol(nullptr, Row(), &key));
    EXPECT_EQ(0, key);
    Storage().UpdateSymbol(nullptr, 1, Row());
    Storage().DeleteSymbol(nullptr, 1);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"TableName", L"TableName", L"TableName"));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(SymbolInside, AnUpdateWithoutAKeyIsReportedAndGoesOn) {
    Storage().UpdateSymbol(L"PORTFOLIO", 0, Row());
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Symbol"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x2, 0)));
}

TEST_F(SymbolInside, WithoutAKeyNoRowIsWritten) {
    (Storage().*MemberOf(SymbolGenerator{})).reset();
    LONG key = -1;
    EXPECT_EQ(1, Storage().InsertSymbol(L"PORTFOLIO", Row(), &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Symbol"));
    EXPECT_THAT(Statements(), IsEmpty());
}

TEST_F(SymbolInside, DatesAreRaisedAndWrittenDayFirst) {
    for (const auto& [given, held] : {std::pair(-5, 2), {0, 2}, {1, 2}, {2, 2}, {3, 3}, {65380, 65380}}) {
        LONG date = given;
        Storage().checkDate(date);
        EXPECT_EQ(held, date);
    }
    EXPECT_EQ(L"30.12.1899", Storage().getDateString(0));
    EXPECT_EQ(L"01.01.1900", Storage().getDateString(2));
    EXPECT_EQ(L"31.12.2037", Storage().getDateString(50405));
    EXPECT_EQ(L"31.12.2078", Storage().getDateString(65380));
    EXPECT_THROW(Storage().getDateString(65381), std::range_error);
}

TEST_F(SymbolInside, AnExceptionEndsInTheOperationAndGivesNothing) {
    (Storage().*MemberOf(SymbolDatabase{}))->Close();
    LONG key = -1;
    EXPECT_EQ(1, Storage().InsertSymbol(L"PORTFOLIO", Row(), &key));
    EXPECT_EQ(0, key);
    EXPECT_FALSE(Storage().DeletePortfolio(1));
    EXPECT_EQ(S_FALSE, m_Object->DeletePortfolio(1));
    EXPECT_EQ(0, Storage().GetSymbolByName(7, L"x"));
    EXPECT_EQ(0, Storage().AddSymbol(Row(), L"CME"));
    EXPECT_FALSE(Recorder::Errors().empty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(SymbolInside, ALookupWithoutATableSaysSoAndGivesZero) {
    Write(101, L"ESZ09", L"d");
    const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
    BSTR name = nullptr;
    EXPECT_EQ(0, Storage().SelectSymbol(7, L"ESZ09", 1, 5, 0, L"", 0));
    EXPECT_EQ(0, Storage().GetSymbolByName(7, L"ESZ09"));
    EXPECT_EQ(0, Storage().GetSymbolByDescription(7, L"d", &name));
    EXPECT_EQ(nullptr, name);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"IdmTable", L"IdmTable", L"IdmTable"));
}

TEST_F(SymbolInside, TextFilesGoSilentlyWhenNobodyIsToBeTold) {
    Sql(L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(101,4711)");
    Storage().ascDeleteSymbol(4711, 0);
    EXPECT_EQ(2U, Statements().size());
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_MAP"), IsEmpty());
    Storage().ascDeleteSymbol(4711, 1);
    EXPECT_EQ(2U, Statements().size());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
    Storage().ascDeleteSymbol(4711, 1);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"IdmTable"));
}

TEST_F(SymbolInside, TextFilesWaitForTheLockOfTheStorage) {
    Sql(L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(101,4711)");
    Storage().Enter();
    std::thread other([&] { Storage().ascDeleteSymbol(4711, 1); });
    // Whatever the other thread does meanwhile, it does not delete.
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_MAP"), ElementsAre(tests::Row{L"101"}));
    Storage().Leave();
    other.join();
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_MAP"), IsEmpty());
}

TEST_F(SymbolInside, TheDictionarysDeleteHasNoGuardOfItsOwn) {
    (Storage().*MemberOf(SymbolDatabase{}))->Close();
    EXPECT_ANY_THROW(Storage().DeleteDictionary(1));
}

TEST_F(SymbolInside, SelectOfTheDictionaryWithoutARequestOrTableDoesNothing) {
    Storage().SelectDictionary(0, nullptr, NewTable().Get());
    Storage().SelectDictionary(0, NewRequest().Get(), nullptr);
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

// An object that never got its storage.
TEST_F(SymbolInside, WithoutAStorageEveryCallSaysSo) {
    const auto object = platform::MakeObject<CqxStorageBase>();
    CqxStorageBase& storage = *object;
    const CBstr text(L"x");
    LONG key = -1;
    tagSymbolArguments symbol;
    symbol.Setting = 51;
    EXPECT_EQ(E_POINTER, InsertPortfolio(storage, symbol, &key));
    EXPECT_EQ(E_POINTER, UpdatePortfolio(storage, 1, symbol));
    EXPECT_EQ(E_POINTER, storage.DeletePortfolio(1));
    EXPECT_EQ(E_POINTER, InsertDictionary(storage, symbol, &key));
    EXPECT_EQ(E_POINTER, UpdateDictionary(storage, 1, symbol));
    EXPECT_EQ(E_POINTER, storage.DeleteDictionary(1));
    EXPECT_EQ(E_POINTER, storage.SelectDictionary(0, NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(-1, key);
    EXPECT_EQ(E_POINTER, storage.GetSymbol(7, text.Get(), 1, 5, 0, nullptr, 0, &key));
    EXPECT_EQ(0, key);
    key = -1;
    EXPECT_EQ(E_POINTER, storage.GetSymbolByName(7, text.Get(), &key));
    EXPECT_EQ(0, key);
    key = -1;
    CBstr name;
    EXPECT_EQ(E_POINTER, storage.GetSymbolByDescription(7, text.Get(), name.Put(), &key));
    EXPECT_EQ(0, key);
    // This one is not asked for its storage, and this one answers as a supplier expects it.
    EXPECT_EQ(E_FAIL, storage.GetAvailableSessions(1, NewTable().Get()));
    key = -1;
    EXPECT_EQ(S_FALSE, storage.AddSymbol(text.Get(), text.Get(), text.Get(), text.Get(), 1, 7, text.Get(), 1, 2009,
                                         0, 0, 0, 0, 0, 0, 0, 0, &key));
    EXPECT_EQ(0, key);
}

// Takes the storage away from its singleton, so that whoever asks for it meets an exception.
class CNoStorage {
public:
    explicit CNoStorage(const sqStorage::CStorageHolder& holder)
        : m_Place(holder.SingletonAccess(dm::tagSIGNLETONACCESS::Get)->*MemberOf(SingletonObject{})),
          m_Object(std::move(m_Place)) {}
    ~CNoStorage() { m_Place = std::move(m_Object); }
    CNoStorage(const CNoStorage&) = delete;
    CNoStorage& operator=(const CNoStorage&) = delete;

private:
    std::unique_ptr<sqStorage::CStorage>& m_Place;
    std::unique_ptr<sqStorage::CStorage> m_Object;
};

TEST_F(SymbolInside, AnExceptionInALookupIsNotReported) {
    const CNoStorage none(m_Holder);
    CqxStorageBase& storage = *m_Object;
    const CBstr text(L"x");
    for (const auto& call : std::initializer_list<std::function<HRESULT(LONG*)>>{
             [&](LONG* key) { return storage.GetSymbol(7, text.Get(), 1, 5, 0, nullptr, 0, key); },
             [&](LONG* key) { return storage.GetSymbolByName(7, text.Get(), key); },
             [&](LONG* key) { return storage.GetSymbolByDescription(7, text.Get(), nullptr, key); }}) {
        LONG key = -1;
        EXPECT_EQ(E_FAIL, call(&key));
        EXPECT_EQ(0, key);
    }
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_EQ(0, Recorder::OpenRecords());
}

TEST_F(SymbolInside, AnExceptionInAnyOtherMethodIsReportedUnderItsName) {
    const CNoStorage none(m_Holder);
    CqxStorageBase& storage = *m_Object;
    LONG key = 0;
    tagSymbolArguments symbol;
    symbol.Setting = 51;
    const std::pair<std::wstring, std::function<HRESULT()>> calls[]{
        {L"InsertPortfolio", [&] { return InsertPortfolio(storage, symbol, &key); }},
        {L"UpdatePortfolio", [&] { return UpdatePortfolio(storage, 1, symbol); }},
        {L"DeletePortfolio", [&] { return storage.DeletePortfolio(1); }},
        {L"InsertDictionary", [&] { return InsertDictionary(storage, symbol, &key); }},
        {L"UpdateDictionary", [&] { return UpdateDictionary(storage, 1, symbol); }},
        {L"DeleteDictionary", [&] { return storage.DeleteDictionary(1); }},
        {L"SelectDictionary", [&] { return storage.SelectDictionary(0, NewRequest().Get(), NewTable().Get()); }},
        {L"GetAvailableSessions", [&] { return storage.GetAvailableSessions(1, NewTable().Get()); }},
    };
    for (const auto& [name, call] : calls) {
        Recorder::Clear();
        EXPECT_EQ(E_FAIL, call());
        std::vector<std::wstring> reporters;
        for (const auto& record : Recorder::RecordsOf(L"ERROR"))
            reporters.push_back(record.Inner.empty() ? L"" : record.Inner.front().Function);
        EXPECT_THAT(reporters, ElementsAre(L"CqxStorageBase::" + name));
    }
}

} // namespace
