#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IascStorage.h"

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr LONG Unknown = 2000000000;
constexpr const wchar_t* Clsid = L"{11111111-2222-3333-4444-555555555555}";
constexpr const wchar_t* OtherClsid = L"{66666666-7777-8888-9999-AAAAAAAAAAAA}";
constexpr const wchar_t* Columns = L"SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, "
                                   L"CLSID, ACTIVATED AS \"ACTIVE\", DELETED FROM DATA_FEEDS WHERE ";

class DataFeeds : public StorageTest {
protected:
    struct tagFeed {
        const wchar_t* Name = L"Live";
        const wchar_t* ShortName = L"LV";
        const wchar_t* DllName = L"live.dll";
        const wchar_t* Class = Clsid;
        LONG IsAsc = 0;
    };

    HRESULT TryInsert(const tagFeed& feed, LONG* key) {
        return m_Storage->InsertDataFeed(CBstr(feed.Name).Get(), CBstr(feed.ShortName).Get(),
                                         CBstr(feed.DllName).Get(), CBstr(feed.Class).Get(), feed.IsAsc, key);
    }
    LONG Insert(const tagFeed& feed) {
        LONG key = 0;
        EXPECT_EQ(S_OK, TryInsert(feed, &key));
        EXPECT_GE(key, 1);
        return key;
    }
    HRESULT Update(LONG key, const tagFeed& feed, LONG active) {
        return m_Storage->UpdateDataFeed(key, CBstr(feed.Name).Get(), CBstr(feed.ShortName).Get(),
                                         CBstr(feed.DllName).Get(), CBstr(feed.Class).Get(), feed.IsAsc, active);
    }
    LONG Delete(LONG key) {
        LONG deleted = -1;
        EXPECT_EQ(S_OK, m_Storage->DeleteDataFeed(key, &deleted));
        return deleted;
    }
    LONG Get(const std::wstring& name) {
        LONG key = -1;
        EXPECT_EQ(S_OK, m_Storage->GetDataFeed(CBstr(name).Get(), &key));
        return key;
    }
    CComPtr<IdmTable> Select(LONG key, LONG activeOnly) {
        const auto request = NewRequest();
        request->put_Datafeed(0, key);
        request->put_ActiveOnly(activeOnly);
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectDataFeed(request.Get(), table.Get()));
        return table;
    }
    // Key, name, short name, file, class, primary, active, deleted, ascii.
    static std::vector<Row> Rows() {
        return Sql(L"SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, "
                   L"PRIMARY_INSTANCE, ACTIVATED, DELETED, ASCII FROM DATA_FEEDS ORDER BY DATA_FEED");
    }
    static void Write(LONG key, const wchar_t* name, const wchar_t* clsid, int activated, int deleted) {
        Sql(L"INSERT INTO DATA_FEEDS VALUES(" + Text(key) + L",'" + name + L"','x.dll','" + clsid + L"',1," +
            Text(activated) + L"," + Text(deleted) + L",0,'X')");
    }
    static std::wstring Inserted(LONG key, const std::wstring& values) {
        return L"sql = 'INSERT INTO DATA_FEEDS VALUES(" + Text(key) + L"," + values + L")'";
    }
};

TEST_F(DataFeeds, InsertGivesANewKeyAndStoresAnActiveFeed) {
    const LONG key = Insert({});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'Live','live.dll','" + std::wstring(Clsid) + L"',1,1,0,0,'LV'")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"Live", L"LV", L"live.dll", Clsid, L"1", L"1", L"0", L"0"}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(DataFeeds, InsertLooksForADeletedFeedThenForAnyOfTheClass) {
    Insert({});
    EXPECT_TRUE(Host().HasPrepared(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='" + std::wstring(Clsid) +
                                   L"' AND DELETED=1"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT COUNT(*) AS DATA_FEED FROM DATA_FEEDS WHERE CLSID='" +
                                   std::wstring(Clsid) + L"'"));
}

TEST_F(DataFeeds, OnlyTheFirstFeedOfAClassIsPrimary) {
    const LONG first = Insert({});
    const LONG second = Insert({.Name = L"Again"});
    const LONG other = Insert({.Name = L"Other", .Class = OtherClsid});
    EXPECT_NE(first, second);
    const auto rows = Sql(L"SELECT DATA_FEED, PRIMARY_INSTANCE FROM DATA_FEEDS ORDER BY DATA_FEED");
    EXPECT_THAT(rows, ElementsAre(Row{Text(first), L"1"}, Row{Text(second), L"0"}, Row{Text(other), L"1"}));
}

TEST_F(DataFeeds, InsertMakesOneOfAnyAscFlag) {
    const LONG key = Insert({.IsAsc = 5});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'Live','live.dll','" + std::wstring(Clsid) + L"',1,1,0,1,'LV'")));
}

TEST_F(DataFeeds, InsertEscapesBothNames) {
    const LONG key = Insert({.Name = L"Trader's", .ShortName = L"T's"});
    EXPECT_THAT(Statements(), ElementsAre(Inserted(key, L"'Trader''s','live.dll','" + std::wstring(Clsid) +
                                                            L"',1,1,0,0,'T''s'")));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED_NAME, DATA_FEED_SHORT_NAME FROM DATA_FEEDS"),
                ElementsAre(Row{L"Trader's", L"T's"}));
}

TEST_F(DataFeeds, InsertLeavesTheFileNameAsItIs) {
    const LONG key = Insert({.DllName = L"it's.dll"});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'Live','it's.dll','" + std::wstring(Clsid) + L"',1,1,0,0,'LV'")));
    // The statement that this breaks is reported, and the change is announced all the same.
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(DataFeeds, InsertLeavesTheClassAsItIs) {
    const LONG key = Insert({.Class = L"{'}"});
    EXPECT_THAT(Statements(), ElementsAre(Inserted(key, L"'Live','live.dll','{'}',0,1,0,0,'LV'")));
    // The two looks at the class break as well.
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")).Times(3));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(DataFeeds, InsertRefusesEachEmptyOrNullTextAndANullOutPointer) {
    const std::vector<tagFeed> feeds{{.Name = L""},          {.Name = nullptr}, {.ShortName = L""},
                                     {.ShortName = nullptr}, {.DllName = L""},  {.DllName = nullptr},
                                     {.Class = L""},         {.Class = nullptr}};
    for (const tagFeed& feed : feeds) {
        LONG key = -1;
        EXPECT_EQ(E_INVALIDARG, TryInsert(feed, &key));
        EXPECT_EQ(-1, key);
    }
    EXPECT_EQ(E_INVALIDARG, TryInsert({}, nullptr));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(DataFeeds, ANameThatOverflowsTheStatementIsReportedAndNothingRuns) {
    const std::wstring name(1100, L'x');
    LONG key = -1;
    EXPECT_EQ(S_FALSE, TryInsert({.Name = name.c_str()}, &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(DataFeeds, ANameWiderThanItsColumnIsReportedAndStillAnnounced) {
    const std::wstring name(32, L'x');
    Insert({.Name = name.c_str()});
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(DataFeeds, RegisteringTheClassOfADeletedFeedBringsItBack) {
    const LONG key = Insert({});
    EXPECT_EQ(1, Delete(key));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED, DELETED FROM DATA_FEEDS"), ElementsAre(Row{Text(key), L"1"}));
    Sql(L"UPDATE DATA_FEEDS SET ACTIVATED=0");
    TakeAll();
    EXPECT_EQ(key, Insert({.Name = L"New", .ShortName = L"NW", .DllName = L"new.dll", .IsAsc = 1}));
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'UPDATE DATA_FEEDS SET DATA_FEED_NAME='New', DATA_FEED_SHORT_NAME='NW', "
                            L"DATA_FEED_DLL_NAME='new.dll', CLSID='" +
                            std::wstring(Clsid) + L"', ASCII=1, ACTIVATED=1, DELETED=0 WHERE DATA_FEED=" +
                            Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"New", L"NW", L"new.dll", Clsid, L"1", L"1", L"0", L"1"}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(DataFeeds, SymbolsStayWithAFeedThatComesBack) {
    Write(10, L"Old", Clsid, 1, 1);
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL, SYMBOL_NAME, DATA_FEED) VALUES (1,'ES',10)");
    EXPECT_EQ(10, Insert({}));
    EXPECT_THAT(Sql(L"SELECT P.SYMBOL_NAME, D.DATA_FEED_NAME FROM PORTFOLIO P JOIN DATA_FEEDS D "
                    L"ON P.DATA_FEED=D.DATA_FEED"),
                ElementsAre(Row{L"ES", L"Live"}));
}

// The first in the order in which the database gives them, which is not always that of their writing.
TEST_F(DataFeeds, TheFirstOfSeveralDeletedFeedsOfAClassComesBack) {
    Write(10, L"One", Clsid, 1, 1);
    Write(11, L"Two", Clsid, 1, 1);
    const auto deleted =
        Sql(std::wstring(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='") + Clsid + L"' AND DELETED=1");
    ASSERT_EQ(2U, deleted.size());
    EXPECT_EQ(deleted[0][0], Text(Insert({})));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DELETED=0"), ElementsAre(deleted[0]));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DELETED=1"), ElementsAre(deleted[1]));
}

TEST_F(DataFeeds, ADeletedFeedOfAnotherClassStaysDeleted) {
    Write(10, L"One", OtherClsid, 1, 1);
    EXPECT_NE(10, Insert({}));
    EXPECT_THAT(Sql(L"SELECT DELETED FROM DATA_FEEDS WHERE DATA_FEED=10"), ElementsAre(Row{L"1"}));
}

TEST_F(DataFeeds, AQuoteInTheNamesOfAFeedThatComesBackArrivesDoubled) {
    Write(10, L"Old", Clsid, 1, 1);
    EXPECT_EQ(10, Insert({.Name = L"Trader's", .ShortName = L"T's"}));
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'UPDATE DATA_FEEDS SET DATA_FEED_NAME='Trader''''s', "
                            L"DATA_FEED_SHORT_NAME='T''''s', DATA_FEED_DLL_NAME='live.dll', CLSID='" +
                            std::wstring(Clsid) + L"', ASCII=0, ACTIVATED=1, DELETED=0 WHERE DATA_FEED=10'"));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED_NAME, DATA_FEED_SHORT_NAME FROM DATA_FEEDS"),
                ElementsAre(Row{L"Trader''s", L"T''s"}));
}

TEST_F(DataFeeds, AFeedThatComesBackTakesTheAscFlagAsItCame) {
    Write(10, L"Old", Clsid, 1, 1);
    EXPECT_EQ(10, Insert({.IsAsc = 5}));
    EXPECT_THAT(Statements(), ElementsAre(testing::HasSubstr(L"ASCII=5, ACTIVATED=1")));
    EXPECT_THAT(Sql(L"SELECT ASCII FROM DATA_FEEDS"), ElementsAre(Row{L"5"}));
}

TEST_F(DataFeeds, UpdateChangesEveryColumnButThePrimaryFlag) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK,
              Update(key,
                     {.Name = L"O'Neil", .ShortName = L"'", .DllName = L"b.dll", .Class = OtherClsid, .IsAsc = 7},
                     3));
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'UPDATE DATA_FEEDS SET DATA_FEED_NAME='O''Neil', DATA_FEED_SHORT_NAME='''', "
                            L"DATA_FEED_DLL_NAME='b.dll', CLSID='" +
                            std::wstring(OtherClsid) + L"', ASCII=7, ACTIVATED=3, DELETED=0 WHERE DATA_FEED=" +
                            Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"O'Neil", L"'", L"b.dll", OtherClsid, L"1", L"3", L"0", L"7"}));
}

TEST_F(DataFeeds, UpdateLeavesTheFileNameAndTheClassAsTheyAre) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.DllName = L"', DATA_FEED_SHORT_NAME='IN"}, 1));
    EXPECT_EQ(S_OK, Update(key, {.Class = L"it's"}, 1));
    EXPECT_THAT(Statements(),
                ElementsAre(testing::HasSubstr(L"DATA_FEED_DLL_NAME='', DATA_FEED_SHORT_NAME='IN', CLSID="),
                            testing::HasSubstr(L"CLSID='it's', ASCII=0")));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0), Change(0x40, 0)));
}

TEST_F(DataFeeds, UpdateDeactivatesAndActivatesAgain) {
    const LONG key = Insert({});
    EXPECT_EQ(S_OK, Update(key, {}, 0));
    EXPECT_THAT(Sql(L"SELECT ACTIVATED FROM DATA_FEEDS"), ElementsAre(Row{L"0"}));
    // A feed that is not active exists.
    EXPECT_EQ(S_OK, Update(key, {}, 1));
    EXPECT_THAT(Sql(L"SELECT ACTIVATED FROM DATA_FEEDS"), ElementsAre(Row{L"1"}));
}

TEST_F(DataFeeds, UpdateRefusesEachEmptyOrNullTextAndAKeyBelowOne) {
    const LONG key = Insert({});
    TakeAll();
    const std::vector<tagFeed> feeds{{.Name = L""},          {.Name = nullptr}, {.ShortName = L""},
                                     {.ShortName = nullptr}, {.DllName = L""},  {.DllName = nullptr},
                                     {.Class = L""},         {.Class = nullptr}};
    for (const tagFeed& feed : feeds)
        EXPECT_EQ(E_INVALIDARG, Update(key, feed, 1));
    EXPECT_EQ(E_INVALIDARG, Update(0, {}, 1));
    EXPECT_EQ(E_INVALIDARG, Update(-1, {}, 1));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(DataFeeds, UpdateOfAnUnknownOrDeletedFeedDoesNothing) {
    Insert({});
    Write(10, L"Old", OtherClsid, 1, 1);
    TakeAll();
    EXPECT_EQ(S_FALSE, Update(Unknown, {}, 1));
    EXPECT_EQ(S_FALSE, Update(10, {}, 1));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT DELETED FROM DATA_FEEDS WHERE DATA_FEED=10"), ElementsAre(Row{L"1"}));
}

TEST_F(DataFeeds, ExistenceIsLookedUpAmongAllFeedsThatAreNotDeleted) {
    const LONG key = Insert({});
    Update(key, {}, 1);
    EXPECT_TRUE(Host().HasPrepared(std::wstring(Columns) + L"DELETED=0"));
}

TEST_F(DataFeeds, DeleteMarksTheFeed) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(1, Delete(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'SELECT * FROM DELETE_DATA_FEED(" + Text(key) + L")'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED, DELETED FROM DATA_FEEDS"), ElementsAre(Row{Text(key), L"1"}));
    EXPECT_EQ(0, RecordCount(Select(0, 0)));
}

TEST_F(DataFeeds, DeleteChangesTheMarkAndNothingElse) {
    Sql(std::wstring(L"INSERT INTO DATA_FEEDS VALUES(7,'Feed','f.dll','") + Clsid + L"',3,4,0,5,'F')");
    Sql(std::wstring(L"INSERT INTO DATA_FEEDS VALUES(8,'Twin','t.dll','") + Clsid + L"',0,1,0,0,'T')");
    EXPECT_EQ(1, Delete(7));
    EXPECT_THAT(Sql(L"SELECT * FROM DATA_FEEDS ORDER BY DATA_FEED"),
                ElementsAre(Row{L"7", L"Feed", L"f.dll", Clsid, L"3", L"4", L"1", L"5", L"F"},
                            Row{L"8", L"Twin", L"t.dll", Clsid, L"0", L"1", L"0", L"0", L"T"}));
}

TEST_F(DataFeeds, DeleteIsRefusedWhileASymbolUsesTheFeedAndIsStillAnnounced) {
    const LONG key = Insert({});
    for (const wchar_t* user :
         {L"PORTFOLIO (SYMBOL,DATA_FEED)", L"DICTIONARY (SYMBOL,DATA_FEED)", L"CUSTOM_FUTURES (CF,DATA_FEED)"}) {
        Sql(std::wstring(L"INSERT INTO ") + user + L" VALUES (1," + Text(key) + L")");
        TakeAll();
        EXPECT_EQ(0, Delete(key));
        EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
        EXPECT_THAT(Sql(L"SELECT DELETED FROM DATA_FEEDS"), ElementsAre(Row{L"0"}));
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
        Sql(std::wstring(L"DELETE FROM ") + std::wstring(user, std::wcschr(user, L' ')));
    }
    EXPECT_EQ(1, Delete(key));
}

TEST_F(DataFeeds, DeleteOfAnUnknownOrDeletedFeedAnswersZero) {
    Insert({});
    Write(10, L"Old", OtherClsid, 1, 1);
    TakeAll();
    for (const LONG key : {Unknown, LONG{10}, LONG{0}}) {
        LONG deleted = -1;
        EXPECT_EQ(S_FALSE, m_Storage->DeleteDataFeed(key, &deleted));
        EXPECT_EQ(0, deleted);
    }
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(DataFeeds, DeleteReportsANullOutPointerAndGoesOn) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteDataFeed(key, nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Deleted"));
    EXPECT_THAT(Sql(L"SELECT DELETED FROM DATA_FEEDS"), ElementsAre(Row{L"1"}));
    EXPECT_EQ(S_FALSE, m_Storage->DeleteDataFeed(Unknown, nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Deleted", L"Deleted"));
}

TEST_F(DataFeeds, SelectListsAllThatAreNotDeleted) {
    Write(10, L"Active", L"A", 1, 0);
    Write(11, L"Idle", L"B", 0, 0);
    Write(12, L"Gone", L"C", 1, 1);
    EXPECT_THAT(RowsOf(Select(0, 0)),
                testing::UnorderedElementsAre(Row{L"10", L"Active", L"X", L"x.dll", L"A", L"1", L"0"},
                                              Row{L"11", L"Idle", L"X", L"x.dll", L"B", L"0", L"0"}));
    EXPECT_TRUE(Host().HasPrepared(std::wstring(Columns) + L"DELETED=0"));
}

TEST_F(DataFeeds, SelectOfActiveOnesLeavesTheOthersOut) {
    Write(10, L"Active", L"A", 1, 0);
    Write(11, L"Idle", L"B", 0, 0);
    Write(12, L"Gone", L"C", 1, 1);
    EXPECT_THAT(RowsOf(Select(0, 1)), ElementsAre(Row{L"10", L"Active", L"X", L"x.dll", L"A", L"1", L"0"}));
    EXPECT_TRUE(Host().HasPrepared(std::wstring(Columns) + L"ACTIVATED=1 AND DELETED=0"));
}

TEST_F(DataFeeds, AFeedAskedForByKeyMustBeActiveWhateverActiveOnlySays) {
    Write(10, L"Active", L"A", 1, 0);
    Write(11, L"Idle", L"B", 0, 0);
    Write(12, L"Gone", L"C", 1, 1);
    for (const LONG activeOnly : {0, 1}) {
        EXPECT_EQ(1, RecordCount(Select(10, activeOnly)));
        EXPECT_EQ(0, RecordCount(Select(11, activeOnly)));
        EXPECT_EQ(0, RecordCount(Select(12, activeOnly)));
    }
    EXPECT_TRUE(Host().HasPrepared(std::wstring(Columns) + L"DATA_FEED=10 AND ACTIVATED=1 AND DELETED=0"));
}

TEST_F(DataFeeds, SelectGivesTheKeyTheNameAndTheActiveFlagUnderTheirIds) {
    const LONG key = Insert({});
    const auto table = Select(0, 0);
    table->First();
    LONG value = 0;
    ASSERT_TRUE(FieldOf(table, IDM_dmudfcom::fieldDataFeed));
    FieldOf(table, IDM_dmudfcom::fieldDataFeed)->get_AsLong(&value);
    EXPECT_EQ(key, value);
    EXPECT_TRUE(FieldOf(table, IDM_dmudfcom::fieldDataFeedName));
    ASSERT_TRUE(FieldOf(table, IDM_dmudfcom::fieldActive));
    FieldOf(table, IDM_dmudfcom::fieldActive)->get_AsLong(&value);
    EXPECT_EQ(1, value);
}

TEST_F(DataFeeds, SelectReadsTheKeyAtModeZero) {
    Write(10, L"One", L"A", 1, 0);
    Write(11, L"Two", L"B", 1, 0);
    const auto request = NewRequest();
    request->put_Datafeed(1, 10);
    const auto table = NewTable();
    EXPECT_EQ(S_OK, m_Storage->SelectDataFeed(request.Get(), table.Get()));
    EXPECT_EQ(2, RecordCount(table));
}

TEST_F(DataFeeds, SelectRefusesANullRequestOrTable) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectDataFeed(nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectDataFeed(NewRequest().Get(), nullptr));
}

TEST_F(DataFeeds, SelectsAreNotTraced) {
    Select(0, 0);
    Get(L"Live");
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(DataFeeds, ANameGivesTheKeyOfItsFeed) {
    Insert({});
    const LONG key = Insert({.Name = L"Other"});
    TakeAll();
    EXPECT_EQ(key, Get(L"Other"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='Other' AND DELETED=0"));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(DataFeeds, AnUnknownNameOrThatOfADeletedFeedGivesZero) {
    Write(10, L"Gone", L"C", 1, 1);
    EXPECT_EQ(0, Get(L"Gone"));
    EXPECT_EQ(0, Get(L"Nobody"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(DataFeeds, ANameIsComparedExactly) {
    Write(10, L"Live", L"A", 0, 0);
    EXPECT_EQ(0, Get(L"LIVE"));
    EXPECT_EQ(10, Get(L"Live"));
}

TEST_F(DataFeeds, ANameThatTwoFeedsShareGivesTheFirstWithAWarning) {
    Write(10, L"Twin", L"A", 1, 0);
    Write(11, L"Twin", L"B", 1, 0);
    const auto keys = Sql(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='Twin' AND DELETED=0");
    ASSERT_EQ(2U, keys.size());
    TakeAll();
    EXPECT_EQ(keys[0][0], Text(Get(L"Twin")));
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(L"[WARNING]  SelectDataFeed, GetByName = Twin", L"[WARNING]  ID = " + keys[0][0],
                            L"[WARNING]  ID = " + keys[1][0]));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(DataFeeds, APercentSignInATextIsALetterLikeOthers) {
    const LONG key = Insert({.Name = L"50%s%n", .ShortName = L"%d", .DllName = L"%s.dll", .Class = L"{%n}"});
    EXPECT_THAT(Statements(), ElementsAre(Inserted(key, L"'50%s%n','%s.dll','{%n}',1,1,0,0,'%d'")));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"50%s%n", L"%d", L"%s.dll", L"{%n}", L"1", L"1", L"0", L"0"}));
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.Name = L"%s%s", .ShortName = L"%", .DllName = L"%n", .Class = L"%d"}, 1));
    EXPECT_THAT(
        Statements(),
        ElementsAre(L"sql = 'UPDATE DATA_FEEDS SET DATA_FEED_NAME='%s%s', DATA_FEED_SHORT_NAME='%', "
                    L"DATA_FEED_DLL_NAME='%n', CLSID='%d', ASCII=0, ACTIVATED=1, DELETED=0 WHERE DATA_FEED=" +
                    Text(key) + L"'"));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"%s%s", L"%", L"%n", L"%d", L"1", L"1", L"0", L"0"}));
    Write(11, L"%s%s", L"B", 1, 0);
    const auto keys = Sql(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='%s%s' AND DELETED=0");
    ASSERT_EQ(2U, keys.size());
    TakeAll();
    EXPECT_EQ(keys[0][0], Text(Get(L"%s%s")));
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(L"[WARNING]  SelectDataFeed, GetByName = %s%s", L"[WARNING]  ID = " + keys[0][0],
                            L"[WARNING]  ID = " + keys[1][0]));
}

TEST_F(DataFeeds, AQuoteBreaksTheLookupByName) {
    Insert({.Name = L"Trader's"});
    TakeAll();
    EXPECT_EQ(0, Get(L"Trader's"));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
}

TEST_F(DataFeeds, AQuoteInTheNameIsAPartOfTheStatement) {
    Write(10, L"Live", L"A", 1, 0);
    EXPECT_EQ(10, Get(L"x' OR DATA_FEED_NAME='Live"));
}

TEST_F(DataFeeds, TheLookupByNameTakesAStatementOf127CharactersAndReportsALongerOne) {
    constexpr std::size_t around =
        std::wstring_view(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='' AND DELETED=0").size();
    EXPECT_EQ(0, Get(std::wstring(127 - around, L'x')));
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_EQ(0, Get(std::wstring(128 - around, L'x')));
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
}

TEST_F(DataFeeds, TheLookupByNameRefusesAnEmptyNameAndANullOutPointer) {
    LONG key = -1;
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetDataFeed(CBstr(L"").Get(), &key));
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetDataFeed(nullptr, &key));
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetDataFeed(CBstr(L"Live").Get(), nullptr));
    EXPECT_EQ(-1, key);
}

TEST_F(DataFeeds, TheFeedOfTextFilesIsTheFirstOneMarkedSo) {
    const auto asc = m_Storage.As<IDM_qxStorage::IascStorage>();
    LONG key = -1;
    EXPECT_EQ(S_OK, asc->get_Datafeed(&key));
    EXPECT_EQ(0, key);
    EXPECT_EQ(E_INVALIDARG, asc->get_Datafeed(nullptr));
    Insert({.Name = L"Live"});
    Insert({.Name = L"Text", .IsAsc = 1});
    Insert({.Name = L"More text", .IsAsc = 1});
    const auto keys = Sql(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE ASCII=1");
    ASSERT_EQ(2U, keys.size());
    EXPECT_EQ(S_OK, asc->get_Datafeed(&key));
    EXPECT_EQ(keys[0][0], Text(key));
}

} // namespace
