#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr LONG Unknown = 2000000000;
constexpr const wchar_t* Eastern = L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";
constexpr const wchar_t* Tokyo = L"-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000";
// No two of its numbers are alike.
constexpr const wchar_t* Distinct = L"301,15,11,4,1,02:03:05.0999,-60,8,6,7,10:12:13.0998";

class Exchanges : public StorageTest {
protected:
    struct tagExchange {
        const wchar_t* Name = L"NYSE";
        const wchar_t* Description = L"New York";
        LONG Holiday = 0;
        LONG Setting = 20;
        LONG Session = 30;
        LONG TimeZone = 2;
        const wchar_t* MapId = L"N";
        const wchar_t* Zone = Eastern;
    };

    HRESULT TryInsert(const tagExchange& e, LONG* key) {
        return m_Storage->InsertExchange(CBstr(e.Name).Get(), CBstr(e.Description).Get(), e.Holiday, e.Setting,
                                         e.Session, e.TimeZone, CBstr(e.MapId).Get(), CBstr(e.Zone).Get(), key);
    }
    LONG Insert(const tagExchange& e) {
        LONG key = 0;
        EXPECT_EQ(S_OK, TryInsert(e, &key));
        EXPECT_GE(key, 1);
        return key;
    }
    HRESULT Update(LONG key, const tagExchange& e) {
        return m_Storage->UpdateExchange(key, CBstr(e.Name).Get(), CBstr(e.Description).Get(), e.Holiday, e.Setting,
                                         e.Session, e.TimeZone, CBstr(e.MapId).Get(), CBstr(e.Zone).Get());
    }
    LONG Delete(LONG key) {
        LONG deleted = -1;
        EXPECT_EQ(S_OK, m_Storage->DeleteExchange(key, &deleted));
        return deleted;
    }
    LONG Get(const std::wstring& name) {
        LONG key = -1;
        EXPECT_EQ(S_OK, m_Storage->GetExchange(CBstr(name).Get(), &key));
        return key;
    }
    CComPtr<IdmTable> Select(LONG key) {
        const auto request = NewRequest();
        request->put_ExchangeId(0, key);
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectExchange(request.Get(), table.Get()));
        return table;
    }
    // The zone text of the only exchange, as clients see it.
    std::wstring ZoneText() {
        const auto table = Select(0);
        table->First();
        CBstr text;
        FieldOf(table, IDM_dmudfcom::fieldExchangeTimeZoneInformation)->get_AsString(text.Put());
        return std::wstring(text.View());
    }
    static std::wstring Inserted(LONG key, const std::wstring& values) {
        return L"sql = 'INSERT INTO EXCHANGES VALUES(" + Text(key) + L"," + values + L")'";
    }
    // Rows for an exchange to own.
    static void WriteOwned() {
        Sql(L"INSERT INTO SETTINGS VALUES(20,1,1,1,1)");
        Sql(L"INSERT INTO SESSIONS VALUES(30,1,'Day',0)");
        Sql(L"INSERT INTO SESSION_DETAILS VALUES(30,1,2,3,4,5,6,7)");
    }
    static LONG Count(const wchar_t* table) {
        return std::stoi(Sql(std::wstring(L"SELECT COUNT(*) AS DATA_FEED FROM ") + table)[0][0]);
    }
    // The bad values that insert and update share.
    static std::vector<tagExchange> BadExchanges() {
        return {{.Name = L""},  {.Name = nullptr}, {.Holiday = -1},    {.Setting = 0},   {.Setting = -1},
                {.Session = 0}, {.Session = -1},   {.MapId = nullptr}, {.Zone = nullptr}};
    }
};

TEST_F(Exchanges, InsertGivesANewKeyAndStoresTheZoneUnpacked) {
    const LONG key = Insert({.Holiday = 10, .Zone = Distinct});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'NYSE',10,20,30,2,'N',1,301,15,4,1,11,'02:03:05.0000',-60,6,7,8,"
                                          L"'10:12:13.0000','New York'")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80, 0)));
    EXPECT_THAT(
        Sql(L"SELECT EXCHANGE, EXCHANGE_NAME, HOLIDAY, SETTING, SESSION, TIME_ZONE, MAP_ID, USE_DAYLIGHT, BIAS, "
            L"STANDARD_BIAS, STANDARD_DAY_OF_WEEK, STANDARD_DAY, STANDARD_MONTH, DAYLIGHT_BIAS, "
            L"DAYLIGHT_DAY_OF_WEEK, DAYLIGHT_DAY, DAYLIGHT_MONTH, DESCRIPTION FROM EXCHANGES"),
        ElementsAre(Row{Text(key), L"NYSE", L"10", L"20", L"30", L"2", L"N", L"1", L"301", L"15", L"4", L"1", L"11",
                        L"-60", L"6", L"7", L"8", L"New York"}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Exchanges, TheZoneComesBackInOneTextWithoutItsMilliseconds) {
    Insert({.Zone = Distinct});
    EXPECT_EQ(L"301,15,11,4,1,02:03:05.0000,-60,8,6,7,10:12:13.0000", ZoneText());
}

TEST_F(Exchanges, AChangeAtTwoInTheMorningIsStoredWithFourZerosBehindTheSeconds) {
    const LONG key = Insert({.Zone = Eastern});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'NYSE',0,20,30,2,'N',1,300,0,0,1,11,'02:00:00.0000',-60,0,2,3,"
                                          L"'02:00:00.0000','New York'")));
    EXPECT_THAT(Sql(L"SELECT CAST(STANDARD_TIME AS VARCHAR(13)) AS DESCRIPTION, CAST(DAYLIGHT_TIME AS VARCHAR(13)) "
                    L"AS SYMBOL_NAME FROM EXCHANGES"),
                ElementsAre(Row{L"02:00:00.0000", L"02:00:00.0000"}));
    EXPECT_EQ(Eastern, ZoneText());
}

TEST_F(Exchanges, AZoneWithoutDaylightSavingStoresThatItUsesNone) {
    const LONG key = Insert({.Zone = Tokyo});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'NYSE',0,20,30,2,'N',0,-540,0,0,0,0,'00:00:00.0000',0,0,0,0,"
                                          L"'00:00:00.0000','New York'")));
    EXPECT_EQ(Tokyo, ZoneText());
}

TEST_F(Exchanges, OnlyTheStandardMonthTellsWhetherDaylightIsUsed) {
    Insert({.Zone = L"60,0,0,1,2,03:00:00.0000,-60,4,5,6,07:00:00.0000"});
    EXPECT_THAT(Sql(L"SELECT USE_DAYLIGHT, STANDARD_MONTH, STANDARD_DAY_OF_WEEK, STANDARD_DAY, DAYLIGHT_MONTH "
                    L"FROM EXCHANGES"),
                ElementsAre(Row{L"0", L"0", L"1", L"2", L"4"}));
}

TEST_F(Exchanges, AMalformedZoneIsReportedAndStoresZeros) {
    for (const wchar_t* zone : {L"", L"nonsense", L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00",
                                L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000,1"}) {
        TakeAll();
        const LONG key = Insert({.Zone = zone});
        EXPECT_THAT(Statements(),
                    ElementsAre(Inserted(key, L"'NYSE',0,20,30,2,'N',0,0,0,0,0,0,'00:00:00.0000',0,0,0,0,"
                                              L"'00:00:00.0000','New York'")));
        const auto asserts = Recorder::RecordsOf(L"ASSERT");
        ASSERT_THAT(asserts, SizeIs(1));
        EXPECT_EQ(L"0", asserts[0].Description);
        EXPECT_EQ(L"tz_help::StringToTZI", asserts[0].Function);
        EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80, 0)));
    }
}

TEST_F(Exchanges, MinutesAndSecondsAboveSixtyAreCarried) {
    const wchar_t* const zone = L"300,0,11,0,1,01:75:90.0000,-60,3,0,2,00:59:61.0000";
    const auto times = [] {
        return Sql(L"SELECT CAST(STANDARD_TIME AS VARCHAR(13)) AS DESCRIPTION, CAST(DAYLIGHT_TIME AS VARCHAR(13)) "
                   L"AS SYMBOL_NAME FROM EXCHANGES");
    };
    const LONG key = Insert({.Zone = zone});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'NYSE',0,20,30,2,'N',1,300,0,0,1,11,'02:16:30.0000',-60,0,2,3,"
                                          L"'01:00:01.0000','New York'")));
    EXPECT_THAT(times(), ElementsAre(Row{L"02:16:30.0000", L"01:00:01.0000"}));
    EXPECT_EQ(S_OK, Update(key, {}));
    EXPECT_EQ(Eastern, ZoneText());
    EXPECT_EQ(S_OK, Update(key, {.Zone = zone}));
    EXPECT_THAT(times(), ElementsAre(Row{L"02:16:30.0000", L"01:00:01.0000"}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Exchanges, AChangeOutsideTheDayIsReportedAndNothingIsWritten) {
    LONG key = -1;
    EXPECT_EQ(S_FALSE, TryInsert({.Zone = L"0,0,11,0,1,24:00:00.0000,-60,3,0,2,02:00:00.0000"}, &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Errors(),
                ElementsAre(testing::HasSubstr(L"dmDateTime::TimeToTTime: value of 'aTime' is out of range")));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(0, Count(L"EXCHANGES"));
}

TEST_F(Exchanges, AnUpdateToAChangeOutsideTheDayIsReportedAndNothingIsChanged) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.Name = L"XNYS", .Zone = L"0,0,11,0,1,02:00:00.0000,-60,3,0,2,99:00:00.0000"}));
    EXPECT_THAT(Recorder::Errors(),
                ElementsAre(testing::HasSubstr(L"dmDateTime::TimeToTTime: value of 'aTime' is out of range")));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(key, Get(L"NYSE"));
}

TEST_F(Exchanges, InsertEscapesTheNameAndTheDescription) {
    const LONG key = Insert({.Name = L"O'X", .Description = L"It's", .Zone = Tokyo});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'O''X',0,20,30,2,'N',0,-540,0,0,0,0,'00:00:00.0000',0,0,0,0,"
                                          L"'00:00:00.0000','It''s'")));
    EXPECT_THAT(Sql(L"SELECT EXCHANGE_NAME, DESCRIPTION FROM EXCHANGES"), ElementsAre(Row{L"O'X", L"It's"}));
}

TEST_F(Exchanges, InsertLeavesTheMapIdAsItIs) {
    const LONG key = Insert({.MapId = L"it's", .Zone = Tokyo});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'NYSE',0,20,30,2,'it's',0,-540,0,0,0,0,'00:00:00.0000',0,0,0,0,"
                                          L"'00:00:00.0000','New York'")));
    // The statement that this breaks is reported, and the change is announced all the same.
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80, 0)));
    EXPECT_EQ(0, Count(L"EXCHANGES"));
}

TEST_F(Exchanges, InsertTakesAnEmptyMapIdAndDescriptionAndAnyTimeZone) {
    Insert({.Description = L"", .TimeZone = -5, .MapId = L""});
    EXPECT_THAT(Sql(L"SELECT DESCRIPTION, MAP_ID, TIME_ZONE FROM EXCHANGES"), ElementsAre(Row{L"", L"", L"-5"}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Exchanges, InsertRefusesBadValuesAndANullOutPointer) {
    for (const tagExchange& exchange : BadExchanges()) {
        LONG key = -1;
        EXPECT_EQ(E_INVALIDARG, TryInsert(exchange, &key));
        EXPECT_EQ(-1, key);
    }
    EXPECT_EQ(E_INVALIDARG, TryInsert({}, nullptr));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(0, Count(L"EXCHANGES"));
}

TEST_F(Exchanges, InsertReportsANullDescriptionAndWritesNothing) {
    LONG key = -1;
    EXPECT_EQ(S_FALSE, TryInsert({.Description = nullptr}, &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"desc"));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(0, Count(L"EXCHANGES"));
}

TEST_F(Exchanges, ANameWiderThanItsColumnIsReportedAndStillAnnounced) {
    Insert({.Name = L"ThirteenChars"});
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80, 0)));
    EXPECT_EQ(0, Count(L"EXCHANGES"));
}

TEST_F(Exchanges, ADescriptionThatOverflowsTheStatementIsReportedAndNothingRuns) {
    const std::wstring description(1100, L'x');
    LONG key = -1;
    EXPECT_EQ(S_FALSE, TryInsert({.Description = description.c_str()}, &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
    key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.Description = description.c_str()}));
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Exchanges, UpdateChangesEveryColumn) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.Name = L"O'X",
                                 .Description = L"It's",
                                 .Holiday = 11,
                                 .Setting = 21,
                                 .Session = 31,
                                 .TimeZone = 1,
                                 .MapId = L"M",
                                 .Zone = Distinct}));
    EXPECT_THAT(
        Statements(),
        ElementsAre(
            L"sql = 'UPDATE EXCHANGES SET EXCHANGE_NAME='O''X',HOLIDAY=11,SETTING=21,SESSION=31,TIME_ZONE=1,"
            L"MAP_ID='M',USE_DAYLIGHT=1,BIAS=301,STANDARD_BIAS=15,STANDARD_DAY_OF_WEEK=4,STANDARD_DAY=1,"
            L"STANDARD_MONTH=11,STANDARD_TIME='02:03:05.0000',DAYLIGHT_BIAS=-60,DAYLIGHT_DAY_OF_WEEK=6,"
            L"DAYLIGHT_DAY=7,DAYLIGHT_MONTH=8,DAYLIGHT_TIME='10:12:13.0000',DESCRIPTION='It''s' WHERE "
            L"EXCHANGE=" +
            Text(key) + L"'"));
    EXPECT_THAT(
        Sql(L"SELECT EXCHANGE_NAME, HOLIDAY, SETTING, SESSION, TIME_ZONE, MAP_ID, DESCRIPTION FROM EXCHANGES"),
        ElementsAre(Row{L"O'X", L"11", L"21", L"31", L"1", L"M", L"It's"}));
    EXPECT_EQ(L"301,15,11,4,1,02:03:05.0000,-60,8,6,7,10:12:13.0000", ZoneText());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Exchanges, RenamingAnnouncesTheDictionaryBeforeTheExchange) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.Name = L"XNYS"}));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4000, 0), Change(0x80, 0)));
    // The dictionary is corrected from the name that the exchange had before.
    EXPECT_THAT(Recorder::Messages(), Contains(L"Exchange 'NYSE' -> 'XNYS'"));
}

TEST_F(Exchanges, TheOldNameIsThatOfTheRenamedExchangeAmongOthers) {
    for (const bool isFirst : {true, false}) {
        Sql(L"DELETE FROM EXCHANGES");
        if (!isFirst)
            Insert({.Name = L"TSE", .Zone = Tokyo});
        const LONG key = Insert({});
        if (isFirst)
            Insert({.Name = L"TSE", .Zone = Tokyo});
        TakeAll();
        EXPECT_EQ(S_OK, Update(key, {.Name = L"XNYS"}));
        EXPECT_THAT(Recorder::Messages(), Contains(L"Exchange 'NYSE' -> 'XNYS'"));
        EXPECT_THAT(Sql(L"SELECT EXCHANGE_NAME FROM EXCHANGES ORDER BY EXCHANGE_NAME"),
                    ElementsAre(Row{L"TSE"}, Row{L"XNYS"}));
    }
}

TEST_F(Exchanges, AnUpdateThatKeepsTheNameAnnouncesTheDictionaryToo) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {}));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4000, 0), Change(0x80, 0)));
}

TEST_F(Exchanges, UpdateTakesANullDescriptionAsAnEmptyOne) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.Description = nullptr}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT DESCRIPTION FROM EXCHANGES"), ElementsAre(Row{L""}));
}

TEST_F(Exchanges, UpdateLeavesTheMapIdAsItIsAndARefusedStatementIsStillAnnounced) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.MapId = L"it's"}));
    EXPECT_THAT(Statements(), ElementsAre(testing::HasSubstr(L"MAP_ID='it's',USE_DAYLIGHT=1")));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4000, 0), Change(0x80, 0)));
    EXPECT_THAT(Sql(L"SELECT MAP_ID FROM EXCHANGES"), ElementsAre(Row{L"N"}));
}

TEST_F(Exchanges, UpdateWithAMalformedZoneIsReportedAndStoresZeros) {
    Update(Insert({}), {.Zone = L"300"});
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"0"));
    EXPECT_EQ(L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000", ZoneText());
    EXPECT_THAT(Sql(L"SELECT USE_DAYLIGHT FROM EXCHANGES"), ElementsAre(Row{L"0"}));
}

TEST_F(Exchanges, UpdateRefusesBadValuesAndAKeyBelowOne) {
    const LONG key = Insert({});
    TakeAll();
    for (const tagExchange& exchange : BadExchanges())
        EXPECT_EQ(E_INVALIDARG, Update(key, exchange));
    EXPECT_EQ(E_INVALIDARG, Update(0, {}));
    EXPECT_EQ(E_INVALIDARG, Update(-1, {}));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Exchanges, UpdateOfAnUnknownKeyDoesNothing) {
    Insert({});
    TakeAll();
    EXPECT_EQ(S_FALSE, Update(Unknown, {}));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Exchanges, DeleteTakesTheSettingAndTheSession) {
    WriteOwned();
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(1, Delete(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'SELECT * FROM DELETE_EXCHANGE(" + Text(key) + L")'",
                                          L"sql = 'DELETE FROM SETTINGS WHERE SETTING=20'",
                                          L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=30'",
                                          L"sql = 'DELETE FROM SESSIONS WHERE SESSION=30'"));
    EXPECT_THAT(m_Changes.Take(),
                ElementsAre(Change(0x20, 0), Change(0x200, 0), Change(0x100, 0), Change(0x80, 0)));
    for (const wchar_t* table : {L"EXCHANGES", L"SETTINGS", L"SESSIONS", L"SESSION_DETAILS"})
        EXPECT_EQ(0, Count(table));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT SETTING,SESSION FROM EXCHANGES WHERE EXCHANGE=" + Text(key)));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Exchanges, DeleteTakesOnlyItsOwnSettingAndSession) {
    WriteOwned();
    Sql(L"INSERT INTO SETTINGS VALUES(21,1,1,1,1)");
    Sql(L"INSERT INTO SESSIONS VALUES(31,1,'Night',0)");
    const LONG key = Insert({});
    Insert({.Name = L"CME", .Setting = 21, .Session = 31});
    EXPECT_EQ(1, Delete(key));
    EXPECT_THAT(Sql(L"SELECT EXCHANGE_NAME FROM EXCHANGES"), ElementsAre(Row{L"CME"}));
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS"), ElementsAre(Row{L"21"}));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS"), ElementsAre(Row{L"31"}));
}

TEST_F(Exchanges, DeleteKeepsASessionThatASymbolUsesAsATemplate) {
    WriteOwned();
    const LONG key = Insert({});
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SESSION_TYPE,TEMPLATE_SESSION) VALUES(1,2,30)");
    TakeAll();
    EXPECT_EQ(1, Delete(key));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x20, 0), Change(0x80, 0)));
    EXPECT_EQ(0, Count(L"EXCHANGES"));
    EXPECT_EQ(0, Count(L"SETTINGS"));
    EXPECT_EQ(1, Count(L"SESSIONS"));
    EXPECT_EQ(1, Count(L"SESSION_DETAILS"));
}

TEST_F(Exchanges, DeleteTakesASettingAlthoughASymbolUsesIt) {
    WriteOwned();
    const LONG key = Insert({});
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SETTING_TYPE,SETTING) VALUES(1,0,20)");
    EXPECT_EQ(1, Delete(key));
    EXPECT_EQ(0, Count(L"SETTINGS"));
}

// No interface stores such a row, but nothing in the database keeps it out.
TEST_F(Exchanges, DeleteOfARowWithoutSettingAndSessionReportsTheSetting) {
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE, EXCHANGE_NAME) VALUES (5,'NYSE')");
    EXPECT_EQ(1, Delete(5));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Setting"));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'SELECT * FROM DELETE_EXCHANGE(5)'",
                                          L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=0'",
                                          L"sql = 'DELETE FROM SESSIONS WHERE SESSION=0'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0), Change(0x100, 0), Change(0x80, 0)));
    EXPECT_EQ(0, Count(L"EXCHANGES"));
}

TEST_F(Exchanges, ARefusedDeleteKeepsSettingAndSessionAndIsStillAnnounced) {
    WriteOwned();
    const LONG key = Insert({});
    for (const wchar_t* user :
         {L"PORTFOLIO (SYMBOL,EXCHANGE)", L"DICTIONARY (SYMBOL,EXCHANGE)", L"CUSTOM_FUTURES (CF,EXCHANGE)"}) {
        Sql(std::wstring(L"INSERT INTO ") + user + L" VALUES (1," + Text(key) + L")");
        TakeAll();
        EXPECT_EQ(0, Delete(key));
        EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80, 0)));
        for (const wchar_t* table : {L"EXCHANGES", L"SETTINGS", L"SESSIONS", L"SESSION_DETAILS"})
            EXPECT_EQ(1, Count(table));
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
        Sql(std::wstring(L"DELETE FROM ") + std::wstring(user, std::wcschr(user, L' ')));
    }
    EXPECT_EQ(1, Delete(key));
}

TEST_F(Exchanges, DeleteOfAnUnknownKeyAnswersZero) {
    Insert({});
    TakeAll();
    for (const LONG key : {Unknown, LONG{0}}) {
        LONG deleted = -1;
        EXPECT_EQ(S_FALSE, m_Storage->DeleteExchange(key, &deleted));
        EXPECT_EQ(0, deleted);
    }
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(1, Count(L"EXCHANGES"));
}

TEST_F(Exchanges, DeleteReportsANullOutPointerAndGoesOn) {
    const LONG key = Insert({});
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteExchange(key, nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Deleted"));
    EXPECT_EQ(0, Count(L"EXCHANGES"));
    EXPECT_EQ(S_FALSE, m_Storage->DeleteExchange(Unknown, nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Deleted", L"Deleted"));
}

TEST_F(Exchanges, SelectGivesOneExchangeOrAllForKeyZero) {
    const LONG nyse = Insert({.Holiday = 10});
    Insert({.Name = L"TSE", .Zone = Tokyo});
    EXPECT_THAT(RowsOf(Select(nyse)),
                ElementsAre(Row{Text(nyse), L"NYSE", L"New York", L"10", L"20", L"30", L"2", L"N", Eastern}));
    EXPECT_EQ(2, RecordCount(Select(0)));
    EXPECT_EQ(0, RecordCount(Select(Unknown)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SELECT_EXCHANGE(" + Text(nyse) + L")"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SELECT_EXCHANGE(0)"));
    EXPECT_TRUE(FieldOf(Select(nyse), IDM_dmudfcom::fieldExchangeName));
}

TEST_F(Exchanges, SelectReadsTheKeyAtModeZero) {
    const LONG key = Insert({});
    Insert({.Name = L"TSE"});
    const auto request = NewRequest();
    request->put_ExchangeId(1, key);
    const auto table = NewTable();
    EXPECT_EQ(S_OK, m_Storage->SelectExchange(request.Get(), table.Get()));
    EXPECT_EQ(2, RecordCount(table));
}

TEST_F(Exchanges, SelectRefusesANullRequestOrTable) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectExchange(nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectExchange(NewRequest().Get(), nullptr));
}

TEST_F(Exchanges, SelectsAreNotTraced) {
    Select(0);
    Get(L"NYSE");
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Exchanges, ANameGivesTheKeyOfItsExchange) {
    Insert({});
    const LONG key = Insert({.Name = L"TSE"});
    TakeAll();
    EXPECT_EQ(key, Get(L"TSE"));
    EXPECT_EQ(0, Get(L"Tse"));
    EXPECT_EQ(0, Get(L"Nobody"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='TSE'"));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Exchanges, ANameWithAQuoteIsFound) {
    const LONG key = Insert({.Name = L"O'X"});
    EXPECT_EQ(key, Get(L"O'X"));
    EXPECT_EQ(0, Get(L"x' OR EXCHANGE_NAME='O''X"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Exchanges, ANameThatTwoExchangesShareGivesTheFirstWithAWarningOfTheEscapedName) {
    Insert({.Name = L"O'X"});
    Insert({.Name = L"O'X"});
    const auto keys = Sql(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='O''X'");
    ASSERT_EQ(2U, keys.size());
    TakeAll();
    EXPECT_EQ(keys[0][0], Text(Get(L"O'X")));
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(L"[WARNING]  SelectExchange, GetByName = O''X", L"[WARNING]  ID = " + keys[0][0],
                            L"[WARNING]  ID = " + keys[1][0]));
}

TEST_F(Exchanges, APercentSignInATextIsALetterLikeOthers) {
    const LONG key = Insert({.Name = L"50%s%n", .Description = L"%d%%", .MapId = L"%s", .Zone = Tokyo});
    EXPECT_THAT(Statements(),
                ElementsAre(Inserted(key, L"'50%s%n',0,20,30,2,'%s',0,-540,0,0,0,0,'00:00:00.0000',0,0,0,0,"
                                          L"'00:00:00.0000','%d%%'")));
    const auto texts = [] { return Sql(L"SELECT EXCHANGE_NAME, MAP_ID, DESCRIPTION FROM EXCHANGES"); };
    EXPECT_THAT(texts(), ElementsAre(Row{L"50%s%n", L"%s", L"%d%%"}));
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, {.Name = L"%s", .Description = L"%n", .MapId = L"%x", .Zone = Tokyo}));
    EXPECT_THAT(Recorder::Messages(), Contains(L"Exchange '50%s%n' -> '%s'"));
    EXPECT_THAT(Statements(), ElementsAre(testing::AllOf(testing::HasSubstr(L"EXCHANGE_NAME='%s',"),
                                                         testing::HasSubstr(L"MAP_ID='%x',"),
                                                         testing::HasSubstr(L"DESCRIPTION='%n' "))));
    EXPECT_THAT(texts(), ElementsAre(Row{L"%s", L"%x", L"%n"}));
    Insert({.Name = L"%s"});
    const auto keys = Sql(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME='%s'");
    ASSERT_EQ(2U, keys.size());
    TakeAll();
    EXPECT_EQ(keys[0][0], Text(Get(L"%s")));
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(L"[WARNING]  SelectExchange, GetByName = %s", L"[WARNING]  ID = " + keys[0][0],
                            L"[WARNING]  ID = " + keys[1][0]));
}

TEST_F(Exchanges, TheLookupByNameTakesAStatementOf127CharactersAndReportsALongerOne) {
    constexpr std::size_t around =
        std::wstring_view(L"SELECT EXCHANGE FROM EXCHANGES WHERE EXCHANGE_NAME=''").size();
    EXPECT_EQ(0, Get(std::wstring(127 - around, L'x')));
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_EQ(0, Get(std::wstring(128 - around, L'x')));
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
    // A quote counts twice.
    Recorder::Clear();
    EXPECT_EQ(0, Get(std::wstring(126 - around, L'x') + L"'"));
    EXPECT_THAT(Recorder::Errors(), SizeIs(1));
}

TEST_F(Exchanges, TheLookupByNameRefusesAnEmptyNameAndANullOutPointer) {
    LONG key = -1;
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetExchange(CBstr(L"").Get(), &key));
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetExchange(nullptr, &key));
    EXPECT_EQ(E_INVALIDARG, m_Storage->GetExchange(CBstr(L"NYSE").Get(), nullptr));
    EXPECT_EQ(-1, key);
}

} // namespace
