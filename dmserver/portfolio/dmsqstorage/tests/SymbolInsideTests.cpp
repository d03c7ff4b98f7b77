// Symbols from inside: locks, order, and the storage or its announcements switched off.
#include "LockProbe.h"
#include "PrivateMember.h"
#include "RefusedClass.h"
#include "Requestes.h"
#include "SelectStatements.h"
#include "SymbolFixture.h"
#include "SymbolRecord.h"
#include "WatchedDatabase.h"
#include "platform/text.h"
#include "qxStorageBase.h"

#include <functional>
#include <stdexcept>

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

struct FeedName {
    using Member = std::wstring (sqStorage::CStorage::*)(LONG);
    friend Member MemberOf(FeedName);
};
template struct CPrivateMember<FeedName, &sqStorage::CStorage::GetDataFeedName>;

struct SingletonObject {
    using Member = std::unique_ptr<sqStorage::CStorage> dm::CSingleton<sqStorage::CStorage>::*;
    friend Member MemberOf(SingletonObject);
};
template struct CPrivateMember<SingletonObject, &dm::CSingleton<sqStorage::CStorage>::m_Object>;

struct DumpWarning {
    using Member = void (sqStorage::CStorage::*)(IdmTable*, const wchar_t*, const std::wstring&) const;
    friend Member MemberOf(DumpWarning);
};
template struct CPrivateMember<DumpWarning, &sqStorage::CStorage::dumpWarning>;

} // namespace tests

namespace {

using namespace tests;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

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
    std::wstring NameOfFeed(LONG feed) { return (Storage().*MemberOf(FeedName{}))(feed); }
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

// Puts a database in the place of the storage's own, for the length of a scope.
class COtherDatabase {
public:
    using Pointer = CComPtr<sqStorage::IdmDatabase>;

    // Null for none.
    COtherDatabase(sqStorage::CStorage& storage, Pointer other)
        : m_Place(storage.*MemberOf(SymbolDatabase{})), m_Own(m_Place) {
        m_Place = std::move(other);
    }
    // The storage's own, watched.
    COtherDatabase(sqStorage::CStorage& storage, tagWatch& watch)
        : COtherDatabase(
              storage,
              Pointer(platform::MakeObject<CWatchedDatabase>(storage.*MemberOf(SymbolDatabase{}), watch).Get())) {}
    ~COtherDatabase() { m_Place = m_Own; }
    COtherDatabase(const COtherDatabase&) = delete;
    COtherDatabase& operator=(const COtherDatabase&) = delete;

private:
    Pointer& m_Place;
    const Pointer m_Own;
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
    EXPECT_EQ(-1, key);
    Storage().UpdateSymbol(nullptr, 1, Row());
    Storage().DeleteSymbol(nullptr, 1);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"TableName", L"TableName", L"TableName"));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(SymbolInside, EverythingThatIsMissingIsReportedInOrder) {
    LONG key = -1;
    EXPECT_EQ(1, Storage().InsertSymbol(nullptr, {}, &key));
    EXPECT_EQ(-1, key);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"TableName", L"sn", L"sr", L"desc", L"CUSIP"));
    Recorder::Clear();
    Storage().UpdateSymbol(nullptr, 0, {});
    EXPECT_THAT(Recorder::Asserts(),
                ElementsAre(L"TableName", L"Symbol", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP"));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(SymbolInside, ADeleteThatOverflowsItsBufferRunsNothing) {
    const std::size_t around = std::wstring(L"DELETE FROM  WHERE SYMBOL=1").size();
    Storage().DeleteSymbol(std::wstring(256 - around, L'T').c_str(), 1);
    EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::DeleteSymbol"));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"its buffer takes 255")));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    Recorder::Clear();
    Storage().DeleteSymbol(std::wstring(255 - around, L'T').c_str(), 1);
    EXPECT_THAT(Recorder::Errors(), IsEmpty()) << "fits";
    EXPECT_THAT(Statements(), SizeIs(1));
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
    key = -1;
    Storage().AddSymbol(Row(), L"CME", &key);
    EXPECT_EQ(-1, key);
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

TEST_F(SymbolInside, TextFilesAreRemovedUnderTheLockOfTheStorage) {
    Sql(L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(101,4711)");
    tagWatch watch;
    std::vector<bool> held;
    watch.BeforeStatement = [&](const std::wstring&) { held.push_back(IsHeld(Storage())); };
    {
        const COtherDatabase watched(Storage(), watch);
        Storage().ascDeleteSymbol(4711, 1);
    }
    EXPECT_THAT(held, ElementsAre(true, true, true));
    EXPECT_FALSE(IsHeld(Storage()));
    EXPECT_THAT(Sql(L"SELECT ID FROM ASC_MAP"), IsEmpty());
}

TEST_F(SymbolInside, TheFeedOfTextFilesIsReadUnderTheLockOfTheStorage) {
    tagWatch watch;
    std::vector<bool> held;
    watch.BeforeStatement = [&](const std::wstring&) { held.push_back(IsHeld(Storage())); };
    const COtherDatabase watched(Storage(), watch);
    EXPECT_EQ(0, Storage().GetASCDataFeed());
    EXPECT_THAT(held, ElementsAre(true));
    EXPECT_FALSE(IsHeld(Storage()));
}

TEST_F(SymbolInside, AWarningLeavesTheTableAtItsEnd) {
    Write(101, L"ESZ09");
    Write(102, L"ESZ09");
    const auto table = NewTable();
    Storage().Execute(L"SELECT SYMBOL FROM PORTFOLIO ORDER BY SYMBOL", nullptr, table.Get());
    table->First();
    table->Next();
    Recorder::Clear();
    (Storage().*MemberOf(DumpWarning{}))(table.Get(), L"text", L"Tag");
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(L"[WARNING]  Tag, GetByName = text", L"[WARNING]  ID = 101", L"[WARNING]  ID = 102"));
    LONG eof = 0;
    table->get_Eof(&eof);
    EXPECT_NE(0, eof);
}

// --- Names of feeds

constexpr const wchar_t* FeedsSql =
    L"SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, ACTIVATED AS \"ACTIVE\", "
    L"DELETED FROM DATA_FEEDS WHERE DELETED=0";

TEST_F(SymbolInside, TheNameOfAFeedIsFoundByItsKey) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(9,'Gone','g.dll','{9}',1,1,1,0,'G')");
    Sql(L"UPDATE DATA_FEEDS SET ACTIVATED=0 WHERE DATA_FEED=8");
    EXPECT_EQ(L"Feed", NameOfFeed(7));
    EXPECT_EQ(L"Other", NameOfFeed(8)) << "also when it is not active";
    EXPECT_EQ(L"", NameOfFeed(9)) << "deleted";
    EXPECT_EQ(L"", NameOfFeed(4711));
}

TEST_F(SymbolInside, TheNamesOfFeedsAreReadOnce) {
    tagWatch watch;
    const COtherDatabase watched(Storage(), watch);
    NameOfFeed(7);
    NameOfFeed(8);
    NameOfFeed(4711);
    EXPECT_EQ(1, std::ranges::count(watch.Calls, FeedsSql));
}

TEST_F(SymbolInside, WhereThereWereNoFeedsTheirNamesAreReadAgain) {
    Sql(L"DELETE FROM DATA_FEEDS");
    tagWatch watch;
    const COtherDatabase watched(Storage(), watch);
    EXPECT_EQ(L"", NameOfFeed(7));
    EXPECT_EQ(L"", NameOfFeed(7));
    EXPECT_EQ(2, std::ranges::count(watch.Calls, FeedsSql));
    Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Later','l.dll','{7}',1,1,0,0,'L')");
    EXPECT_EQ(L"Later", NameOfFeed(7));
}

TEST_F(SymbolInside, AnInsertReadsFeedsOnlyForAnEmptyDescriptionOfItsRoot) {
    Sql(L"DELETE FROM DATA_FEEDS"); // so that nothing is kept from one to the next
    tagWatch watch;
    const COtherDatabase watched(Storage(), watch);
    for (const wchar_t* description : {L"", L"d"})
        for (const LONG category : {0, 1, 254, -1})
            for (const LONG settingType : {0, 1, 2, 3}) {
                watch.Calls.clear();
                auto row = Row();
                row.Description = description;
                row.Category = category;
                row.SettingType = settingType;
                LONG key = 0;
                Storage().InsertSymbol(L"PORTFOLIO", row, &key);
                const bool rooted = *description == 0 && category == 0 && settingType == 2;
                EXPECT_EQ(rooted ? 1 : 0, std::ranges::count(watch.Calls, FeedsSql))
                    << platform::ToUtf8(description) << category << settingType;
            }
}

// --- Scopes

TEST_F(SymbolInside, EveryOperationIsAScopeInTheTrace) {
    sqStorage::CStorage& storage = Storage();
    LONG key = 0;
    const std::pair<std::wstring, std::function<void()>> operations[]{
        {L"InsertSymbol", [&] { storage.InsertSymbol(L"PORTFOLIO", Row(), &key); }},
        {L"UpdateSymbol", [&] { storage.UpdateSymbol(L"PORTFOLIO", key, Row()); }},
        {L"UpdatePortfolio", [&] { storage.UpdatePortfolio(key, Row()); }},
        {L"DeleteSymbol", [&] { storage.DeleteSymbol(L"PORTFOLIO", key); }},
        {L"DeletePortfolio", [&] { storage.DeletePortfolio(key); }},
        {L"DeleteDictionary", [&] { storage.DeleteDictionary(key); }},
        {L"ascDeleteSymbol", [&] { storage.ascDeleteSymbol(key, 1); }},
        {L"GetASCDataFeed", [&] { storage.GetASCDataFeed(); }},
        {L"SelectSymbol", [&] { storage.SelectSymbol(7, L"x", 1, 5, 0, L"", 0); }},
        {L"GetSymbolByName", [&] { storage.GetSymbolByName(7, L"x"); }},
        {L"GetSymbolByDescription", [&] { storage.GetSymbolByDescription(7, L"x", nullptr); }},
        {L"GetAvailableSessions", [&] { storage.GetAvailableSessions(1, NewTable().Get()); }},
        {L"AddSymbol", [&] { storage.AddSymbol(Row(), L"CME", &key); }},
        {L"SelectDictionary", [&] { storage.SelectDictionary(0, NewRequest().Get(), NewTable().Get()); }},
        {L"SelectPortfolio", [&] { storage.SelectPortfolio(0, nullptr, NewTable().Get()); }},
        {L"Open", [&] { key = storage.Open(0, NewRequest().Get(), NewTable().Get()); }},
        {L"Fetch", [&] { storage.Fetch(key, 0); }},
        {L"Close", [&] { storage.Close(key); }},
    };
    for (const auto& [name, operation] : operations) {
        Recorder::Clear();
        operation();
        std::vector<LONG> moments;
        for (const auto& record : Recorder::RecordsOf(L"TRACE"))
            if (record.Ident != 0 && record.Function == L"sqStorage::CStorage::" + name)
                moments.push_back(record.Ident);
        EXPECT_THAT(moments, ElementsAre(1, -1)) << platform::ToUtf8(name);
    }
}

TEST_F(SymbolInside, ACursorOnNoDatabaseIsReportedAndHasNoId) {
    const COtherDatabase none(Storage(), COtherDatabase::Pointer());
    EXPECT_EQ(0, Storage().Open(0, NewRequest().Get(), NewTable().Get()));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"m_Database"));
}

// --- What fails

TEST_F(SymbolInside, TheDictionarysDeleteHasNoGuardOfItsOwn) {
    (Storage().*MemberOf(SymbolDatabase{}))->Close();
    EXPECT_THROW(Storage().DeleteDictionary(1), platform::CComError);
}

TEST_F(SymbolInside, AnExceptionInALookupEndsInItsGuardAndFindsNothing) {
    (Storage().*MemberOf(SymbolDatabase{}))->Close();
    CqxStorageBase& storage = *m_Object;
    const CBstr text(L"x");
    CBstr name;
    const auto request = NewRequest();
    const auto table = NewTable();
    const std::pair<std::wstring, std::function<HRESULT(LONG*)>> calls[]{
        {L"SelectSymbol", [&](LONG* key) { return storage.GetSymbol(7, text.Get(), 1, 5, 0, nullptr, 0, key); }},
        {L"GetSymbolByName", [&](LONG* key) { return storage.GetSymbolByName(7, text.Get(), key); }},
        {L"GetSymbolByDescription",
         [&](LONG* key) { return storage.GetSymbolByDescription(7, text.Get(), name.Put(), key); }},
        {L"GetAvailableSessions",
         [&](LONG* key) {
             *key = 0;
             return storage.GetAvailableSessions(1, table.Get());
         }},
        {L"SelectDictionary",
         [&](LONG* key) {
             *key = 0;
             return storage.SelectDictionary(0, request.Get(), table.Get());
         }},
    };
    for (const auto& [operation, call] : calls) {
        Recorder::Clear();
        LONG key = -1;
        EXPECT_EQ(S_OK, call(&key)) << platform::ToUtf8(operation);
        EXPECT_EQ(0, key);
        EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::" + operation));
    }
    EXPECT_EQ(nullptr, name.Get());
    LONG fields = -1;
    table->get_FieldCount(&fields);
    EXPECT_EQ(0, fields);
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

TEST_F(SymbolInside, ArgumentsAreTestedBeforeTheStorageIsAskedFor) {
    const auto object = platform::MakeObject<CqxStorageBase>(); // without one
    CqxStorageBase& storage = *object;
    const CBstr empty(L"");
    for (const auto& call : std::initializer_list<std::function<HRESULT(LONG*)>>{
             [&](LONG* key) { return storage.GetSymbol(7, empty.Get(), 1, 5, 0, nullptr, 0, key); },
             [&](LONG* key) { return storage.GetSymbolByName(7, empty.Get(), key); },
             [&](LONG* key) { return storage.GetSymbolByDescription(7, empty.Get(), nullptr, key); }}) {
        LONG key = -1;
        EXPECT_EQ(E_INVALIDARG, call(&key));
        EXPECT_EQ(0, key);
    }
    LONG key = -1;
    tagSymbolArguments symbol;
    symbol.Setting = -1;
    EXPECT_EQ(E_INVALIDARG, InsertPortfolio(storage, symbol, &key));
    EXPECT_EQ(E_INVALIDARG, UpdatePortfolio(storage, 1, symbol));
    EXPECT_EQ(E_INVALIDARG, InsertDictionary(storage, symbol, &key));
    EXPECT_EQ(E_INVALIDARG, UpdateDictionary(storage, 1, symbol));
    EXPECT_EQ(E_INVALIDARG, storage.SelectDictionary(0, nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, storage.SelectPortfolio(0, nullptr, nullptr));
    EXPECT_EQ(S_FALSE, storage.GetAvailableSessions(1, nullptr));
    EXPECT_EQ(-1, key);
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
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
        {L"SelectPortfolio", [&] { return storage.SelectPortfolio(0, nullptr, NewTable().Get()); }},
        {L"AddSymbol",
         [&] {
             return storage.AddSymbol(nullptr, nullptr, nullptr, nullptr, 1, 7, nullptr, 1, 2009, 0, 0, 0, 0, 0, 0,
                                      0, 0, &key);
         }},
        {L"Advise", [&] { return storage.Advise(0, NewRequest().Get(), NewTable().Get(), &key); }},
        {L"Fetch", [&] { return storage.Fetch(1, &key); }},
        {L"Unadvise", [&] { return storage.Unadvise(1); }},
    };
    for (const auto& [name, call] : calls) {
        Recorder::Clear();
        EXPECT_EQ(E_FAIL, call());
        EXPECT_THAT(Reporters(), ElementsAre(L"CqxStorageBase::" + name));
    }
}

} // namespace
