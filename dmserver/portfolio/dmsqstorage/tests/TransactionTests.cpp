// What commits together and what does not, and what a database without keys comes to.
#include "StorageFixture.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "qxStorageBase.h"

#include <optional>

namespace {

using namespace tests;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// Another definition of something in the database, for the length of a scope in which the storage comes and goes:
// prepared statements would keep the old one.
class CRedefinition {
public:
    CRedefinition(const CStorageHost& host, const wchar_t* change, std::wstring restore)
        : m_Host(host), m_Restore(std::move(restore)) {
        m_Host.Sql(change);
    }
    ~CRedefinition() { m_Host.Sql(m_Restore); }
    CRedefinition(const CRedefinition&) = delete;
    CRedefinition& operator=(const CRedefinition&) = delete;

private:
    const CStorageHost& m_Host;
    std::wstring m_Restore;
};

class Transactions : public HostTest {
protected:
    Transactions() {
        for (const wchar_t* table : {L"HOLIDAYS", L"HOLIDAY_DETAILS", L"SETTINGS", L"DATA_FEEDS", L"EXCHANGES",
                                     L"SESSIONS", L"SESSION_DETAILS"})
            Sql(std::wstring(L"DELETE FROM ") + table);
        Recorder::Clear();
    }
    static CComPtr<IqxStorage> Create() {
        CComPtr<IqxStorage> storage;
        EXPECT_EQ(S_OK, CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid()));
        return storage;
    }
    // Exchange 5 with its setting and session.
    static void WriteExchange() {
        Sql(L"INSERT INTO EXCHANGES (EXCHANGE,SETTING,SESSION) VALUES(5,20,30)");
        Sql(L"INSERT INTO SETTINGS VALUES(20,1,1,1,1)");
        Sql(L"INSERT INTO SESSIONS VALUES(30,1,'Day',0)");
    }
    // The procedure with other statements.
    static std::wstring Procedure(const std::wstring& head, const std::wstring& statements) {
        return L"ALTER PROCEDURE " + head + L" AS BEGIN " + statements + L" END";
    }
    static std::vector<Row> Dates() {
        return Sql(L"SELECT HOLIDAY_START_DATE FROM HOLIDAY_DETAILS ORDER BY HOLIDAY_START_DATE");
    }
};

TEST_F(Transactions, EachExecutionIsACommittedOneOfItsOwn) {
    const sqStorage::CStorageHolder holder;
    const std::wstring insert = L"INSERT INTO HOLIDAYS VALUES(CURRENT_TRANSACTION,'x')";
    holder.GetObject()->Execute(insert.c_str(), nullptr, nullptr);
    EXPECT_EQ(1U, Sql(L"SELECT HOLIDAY FROM HOLIDAYS").size());
    holder.GetObject()->Execute(insert.c_str(), nullptr, nullptr);
    EXPECT_EQ(2U, Sql(L"SELECT DISTINCT HOLIDAY FROM HOLIDAYS").size());
}

TEST_F(Transactions, ARefusedExecutionLeavesTheOneBeforeCommitted) {
    const sqStorage::CStorageHolder holder;
    holder.GetObject()->Execute(L"INSERT INTO HOLIDAYS VALUES(1,'x')", nullptr, nullptr);
    holder.GetObject()->Execute(L"INSERT INTO HOLIDAYS VALUES(1,'the key again')", nullptr, nullptr);
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    EXPECT_THAT(Sql(L"SELECT HOLIDAY_NAME FROM HOLIDAYS"), ElementsAre(Row{L"x"}));
}

TEST_F(Transactions, TheDatesOfADeletedCalendarStayDeletedWhenTheCalendarIsRefused) {
    Sql(L"INSERT INTO HOLIDAYS VALUES(1,'NYSE')");
    Sql(L"INSERT INTO HOLIDAY_DETAILS (HOLIDAY,HOLIDAY_START_DATE) VALUES(1,'01.01.2027')");
    const CRedefinition refusal(Host(),
                                L"CREATE TRIGGER REFUSE_DELETE FOR HOLIDAYS BEFORE DELETE AS BEGIN "
                                L"EXCEPTION SESSION_NOT_PRESENTABLE 'refused'; END",
                                L"DROP TRIGGER REFUSE_DELETE");
    EXPECT_EQ(S_OK, Create()->DeleteHoliday(1));
    EXPECT_THAT(Recorder::Asserts(), Contains(testing::HasSubstr(L"refused")));
    EXPECT_THAT(Dates(), IsEmpty());
    EXPECT_EQ(1U, Sql(L"SELECT HOLIDAY FROM HOLIDAYS").size());
}

TEST_F(Transactions, TheDetailsOfADeletedSessionStayDeletedWhenTheSessionIsRefused) {
    Sql(L"INSERT INTO SESSIONS VALUES(1,1,'Day',0)");
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(1,1,2,3,4,5,6,7)");
    const CRedefinition refusal(Host(),
                                L"CREATE TRIGGER REFUSE_DELETE FOR SESSIONS BEFORE DELETE AS BEGIN "
                                L"EXCEPTION SESSION_NOT_PRESENTABLE 'refused'; END",
                                L"DROP TRIGGER REFUSE_DELETE");
    LONG deleted = -1;
    EXPECT_EQ(S_OK, Create()->DeleteSession(1, &deleted));
    EXPECT_EQ(1, deleted);
    EXPECT_THAT(Recorder::Asserts(), Contains(testing::HasSubstr(L"refused")));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSION_DETAILS"), IsEmpty());
    EXPECT_EQ(1U, Sql(L"SELECT SESSION FROM SESSIONS").size());
}

TEST_F(Transactions, AnExchangeIsGoneAlthoughItsSettingIsRefused) {
    WriteExchange();
    const CRedefinition refusal(Host(),
                                L"CREATE TRIGGER REFUSE_DELETE FOR SETTINGS BEFORE DELETE AS BEGIN "
                                L"EXCEPTION SESSION_NOT_PRESENTABLE 'refused'; END",
                                L"DROP TRIGGER REFUSE_DELETE");
    LONG deleted = -1;
    EXPECT_EQ(S_OK, Create()->DeleteExchange(5, &deleted));
    EXPECT_EQ(1, deleted);
    EXPECT_THAT(Recorder::Asserts(), Contains(testing::HasSubstr(L"refused")));
    EXPECT_THAT(Sql(L"SELECT EXCHANGE FROM EXCHANGES"), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS"), ElementsAre(Row{L"20"}));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS"), IsEmpty());
}

// The database's refusal is no answer of the procedure, and without an answer the delete is taken for done.
TEST_F(Transactions, AnExchangeThatTheDatabaseKeepsLosesItsSettingAndItsSession) {
    WriteExchange();
    const CRedefinition refusal(Host(),
                                L"CREATE TRIGGER REFUSE_DELETE FOR EXCHANGES BEFORE DELETE AS BEGIN "
                                L"EXCEPTION SESSION_NOT_PRESENTABLE 'refused'; END",
                                L"DROP TRIGGER REFUSE_DELETE");
    CBroadcastRecorder changes;
    LONG deleted = -1;
    EXPECT_EQ(S_OK, Create()->DeleteExchange(5, &deleted));
    EXPECT_EQ(1, deleted);
    EXPECT_THAT(Recorder::Asserts(), Contains(testing::HasSubstr(L"refused")));
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_THAT(changes.Take(), ElementsAre(Change(0x20, 0), Change(0x200, 0), Change(0x100, 0), Change(0x80, 0)));
    EXPECT_THAT(Sql(L"SELECT EXCHANGE,SETTING,SESSION FROM EXCHANGES"), ElementsAre(Row{L"5", L"20", L"30"}));
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS"), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS"), IsEmpty());
}

TEST_F(Transactions, AFeedThatTheDatabaseKeepsCountsAsDeletedAndIsAnnounced) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Feed','x.dll','{C}',1,1,0,0,'X')");
    const CRedefinition refusal(Host(),
                                L"CREATE TRIGGER REFUSE_CHANGE FOR DATA_FEEDS BEFORE UPDATE AS BEGIN "
                                L"EXCEPTION SESSION_NOT_PRESENTABLE 'refused'; END",
                                L"DROP TRIGGER REFUSE_CHANGE");
    CBroadcastRecorder changes;
    LONG deleted = -1;
    EXPECT_EQ(S_OK, Create()->DeleteDataFeed(7, &deleted));
    EXPECT_EQ(1, deleted);
    EXPECT_THAT(Recorder::Asserts(), Contains(testing::HasSubstr(L"refused")));
    EXPECT_THAT(changes.Take(), ElementsAre(Change(0x40, 0)));
    EXPECT_THAT(Sql(L"SELECT DELETED FROM DATA_FEEDS"), ElementsAre(Row{L"0"}));
}

TEST_F(Transactions, ADeletedExchangeOfWhichNoRowWasFoundTakesNothingWithIt) {
    WriteExchange();
    Sql(L"INSERT INTO SETTINGS VALUES(0,1,1,1,1)");
    Sql(L"INSERT INTO SESSIONS VALUES(0,1,'Zero',0)");
    const wchar_t* const head = L"DELETE_EXCHANGE (EXCHANGE_KEY INTEGER) RETURNS (DELETED INTEGER)";
    // It says that it deleted, whatever there was.
    const CRedefinition willing(
        Host(), Procedure(head, L"DELETED = 1; SUSPEND;").c_str(),
        Procedure(head, L"DELETED = 0; "
                        L"IF (NOT EXISTS (SELECT 1 FROM PORTFOLIO WHERE EXCHANGE = :EXCHANGE_KEY) "
                        L"AND NOT EXISTS (SELECT 1 FROM DICTIONARY WHERE EXCHANGE = :EXCHANGE_KEY) "
                        L"AND NOT EXISTS (SELECT 1 FROM CUSTOM_FUTURES WHERE EXCHANGE = :EXCHANGE_KEY)) THEN BEGIN "
                        L"DELETE FROM EXCHANGES WHERE EXCHANGE = :EXCHANGE_KEY; "
                        L"IF (ROW_COUNT > 0) THEN DELETED = 1; END SUSPEND;"));
    const auto storage = Create();
    const sqStorage::CStorageHolder holder;
    CBroadcastRecorder changes;
    EXPECT_EQ(1, holder.GetObject()->DeleteExchange(6));
    EXPECT_THAT(changes.Take(), ElementsAre(Change(0x80, 0)));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS ORDER BY SETTING"), ElementsAre(Row{L"0"}, Row{L"20"}));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS ORDER BY SESSION"), ElementsAre(Row{L"0"}, Row{L"30"}));
    // Of one that was found, both go, although the row itself stays.
    EXPECT_EQ(1, holder.GetObject()->DeleteExchange(5));
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS"), ElementsAre(Row{L"0"}));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS"), ElementsAre(Row{L"0"}));
}

TEST_F(Transactions, OneBadRecordOfABatchLeavesNoneOfIt) {
    Sql(L"INSERT INTO HOLIDAYS VALUES(1,'NYSE')");
    const auto table = NewTable();
    for (const wchar_t* name : {L"HOLIDAY", L"HOLIDAY_DESCRIPTION", L"HOLIDAY_START_DATE", L"HOLIDAY_END_DATE"})
        table->AddFieldByName(CBstr(name).Get(), 0, 0, 0);
    CComPtr<IdmField> description;
    table->get_Field(1, description.Put());
    for (const std::size_t length : {1, 5000}) {
        table->Append();
        FieldOf(table, IDM_dmudfcom::fieldHoliday)->put_AsLong(1);
        FieldOf(table, IDM_dmudfcom::fieldHolidayStartDate)->put_AsLong(46388 + static_cast<LONG>(length));
        description->put_AsString(CBstr(std::wstring(length, L'x')).Get());
        table->Post();
    }
    table->First();
    const auto storage = Create();
    EXPECT_EQ(S_OK, storage->InsertHolidayDetails(table.Get()));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    EXPECT_THAT(Dates(), IsEmpty());
    // Without the bad one the batch is stored.
    table->Last();
    table->Delete();
    EXPECT_EQ(S_OK, storage->InsertHolidayDetails(table.Get()));
    EXPECT_THAT(Dates(), ElementsAre(Row{L"02.01.2027"}));
}

TEST_F(Transactions, OneBadRecordOfASessionsDetailsLeavesNoneOfThemAndTheOldOnesAreGone) {
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(1,1,2,3,4,5,6,7)");
    const auto table = NewTable();
    EXPECT_EQ(S_OK, table->AddFieldById(IDM_dmudfcom::fieldSession, 0, 0, 0));
    for (LONG column = 1; column < 8; ++column)
        EXPECT_EQ(S_OK, table->AddNewField(CBstr(L"COLUMN" + Text(column)).Get(), 0, 0)); // as a text
    for (const wchar_t* number : {L"10", L"ten"}) {
        table->Append();
        FieldOf(table, IDM_dmudfcom::fieldSession)->put_AsLong(1);
        for (LONG column = 1; column < 8; ++column) {
            CComPtr<IdmField> field;
            table->get_Field(column, field.Put());
            field->put_AsString(CBstr(number).Get());
        }
        table->Post();
    }
    table->First();
    const auto details = [] { return Sql(L"SELECT SESSION,START_DAY FROM SESSION_DETAILS"); };
    const auto storage = Create();
    CBroadcastRecorder changes;
    EXPECT_EQ(S_OK, storage->InsertSessionDetails(table.Get()));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open: ")));
    EXPECT_THAT(changes.Take(), ElementsAre(Change(0x200, 0), Change(0x200, 0)));
    EXPECT_THAT(details(), IsEmpty());
    // Without the bad one they are stored.
    table->Last();
    table->Delete();
    EXPECT_EQ(S_OK, storage->InsertSessionDetails(table.Get()));
    EXPECT_THAT(details(), ElementsAre(Row{L"1", L"10"}));
}

TEST_F(Transactions, WithoutAKeyAnInsertAnswersFalseAndWritesNothing) {
    const wchar_t* const head = L"GENERATE_ID (STEP INTEGER) RETURNS (GENERATED_ID INTEGER)";
    const CRedefinition noKeys(Host(), Procedure(head, L"IF (1 = 0) THEN SUSPEND;").c_str(),
                               Procedure(head, L"GENERATED_ID = GEN_ID(GLOBAL_KEY, :STEP); SUSPEND;"));
    const auto storage = Create();
    Recorder::Clear();
    LONG holiday = -1;
    LONG setting = -1;
    EXPECT_EQ(S_FALSE, storage->InsertHoliday(CBstr(L"NYSE").Get(), &holiday));
    EXPECT_EQ(S_FALSE, storage->InsertSetting(1, 1, 1, 1, &setting));
    EXPECT_EQ(0, holiday);
    EXPECT_EQ(0, setting);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"RecordCount>0", L"Holiday", L"RecordCount>0", L"0!=Setting"));
    Recorder::Clear();
    const CBstr text(L"x");
    const CBstr zone(L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000");
    LONG feed = -1;
    LONG exchange = -1;
    LONG session = -1;
    EXPECT_EQ(S_FALSE, storage->InsertDataFeed(text.Get(), text.Get(), text.Get(), text.Get(), 0, &feed));
    EXPECT_EQ(S_FALSE,
              storage->InsertExchange(text.Get(), text.Get(), 0, 1, 1, 0, text.Get(), zone.Get(), &exchange));
    EXPECT_EQ(S_FALSE, storage->InsertSession(2, text.Get(), 0, &session));
    EXPECT_EQ(0, feed);
    EXPECT_EQ(0, exchange);
    EXPECT_EQ(0, session);
    // A session without a key is not reported.
    EXPECT_THAT(Recorder::Asserts(),
                ElementsAre(L"RecordCount>0", L"DataFeed", L"RecordCount>0", L"Exchange", L"RecordCount>0"));
    EXPECT_THAT(Recorder::Messages(), Each(Not(StartsWith(L"sql = "))));
    EXPECT_THAT(Sql(L"SELECT HOLIDAY FROM HOLIDAYS"), IsEmpty());
}

} // namespace
