// Where exceptions end: in the guard of the operation, or in that of the interface method.
#include "DatabaseRequest.h"
#include "InsideFixture.h"
#include "PrivateMember.h"
#include "RefusedClass.h"
#include "StatementText.h"
#include "diagnostics/interface/CrashCatchers.h"
#include "platform/com/com_error.h"

#include <functional>
#include <utility>

namespace tests {

struct Object {
    using Member = std::unique_ptr<sqStorage::CStorage> dm::CSingleton<sqStorage::CStorage>::*;
    friend Member MemberOf(Object);
};
template struct CPrivateMember<Object, &dm::CSingleton<sqStorage::CStorage>::m_Object>;

} // namespace tests

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class Guards : public InsideTest {};

// Takes the storage away from its singleton, so that whoever asks for it meets an exception.
class CNoObject {
public:
    explicit CNoObject(const sqStorage::CStorageHolder& holder)
        : m_Place(holder.SingletonAccess(dm::tagSIGNLETONACCESS::Get)->*MemberOf(Object{})),
          m_Object(std::move(m_Place)) {}
    ~CNoObject() { m_Place = std::move(m_Object); }
    CNoObject(const CNoObject&) = delete;
    CNoObject& operator=(const CNoObject&) = delete;

private:
    std::unique_ptr<sqStorage::CStorage>& m_Place;
    std::unique_ptr<sqStorage::CStorage> m_Object;
};

TEST_F(Guards, AnExceptionThatReachesAMethodGivesFailureUnderTheMethodsOwnName) {
    LONG number = 0;
    const CBstr text(L"x");
    const auto request = NewRequest();
    const auto table = NewTable();
    CqxStorageBase& object = *m_Object;
    using Calls = std::vector<std::pair<std::wstring, std::function<HRESULT()>>>;
    const Calls calls{
        {L"SelectHoliday", [&] { return object.SelectHoliday(request.Get(), table.Get()); }},
        {L"InsertHoliday", [&] { return object.InsertHoliday(text.Get(), &number); }},
        {L"DeleteHoliday", [&] { return object.DeleteHoliday(1); }},
        {L"UpdateHoliday", [&] { return object.UpdateHoliday(1, text.Get()); }},
        {L"SelectHolidayDetails", [&] { return object.SelectHolidayDetails(request.Get(), table.Get()); }},
        {L"InsertHolidayDetails", [&] { return object.InsertHolidayDetails(table.Get()); }},
        {L"DeleteHolidayDetails", [&] { return object.DeleteHolidayDetails(1); }},
        {L"DeleteHolidayDetails2", [&] { return object.DeleteHolidayDetails2(1, text.Get()); }},
        {L"SelectSetting", [&] { return object.SelectSetting(request.Get(), table.Get()); }},
        {L"InsertSetting", [&] { return object.InsertSetting(1, 1, 1, 1, &number); }},
        {L"DeleteSetting", [&] { return object.DeleteSetting(1); }},
        {L"UpdateSetting", [&] { return object.UpdateSetting(1, 1, 1, 1, 1); }},
        {L"SelectDataFeed", [&] { return object.SelectDataFeed(request.Get(), table.Get()); }},
        {L"InsertDataFeed",
         [&] { return object.InsertDataFeed(text.Get(), text.Get(), text.Get(), text.Get(), 0, &number); }},
        {L"DeleteDataFeed", [&] { return object.DeleteDataFeed(1, &number); }},
        {L"UpdateDataFeed",
         [&] { return object.UpdateDataFeed(1, text.Get(), text.Get(), text.Get(), text.Get(), 0, 1); }},
        {L"GetDataFeed", [&] { return object.GetDataFeed(text.Get(), &number); }},
        {L"SelectExchange", [&] { return object.SelectExchange(request.Get(), table.Get()); }},
        {L"InsertExchange",
         [&] {
             return object.InsertExchange(text.Get(), text.Get(), 0, 1, 1, 0, text.Get(), text.Get(), &number);
         }},
        {L"DeleteExchange", [&] { return object.DeleteExchange(1, &number); }},
        {L"UpdateExchange",
         [&] { return object.UpdateExchange(1, text.Get(), text.Get(), 0, 1, 1, 0, text.Get(), text.Get()); }},
        {L"GetExchange", [&] { return object.GetExchange(text.Get(), &number); }},
        {L"SelectSession", [&] { return object.SelectSession(request.Get(), table.Get()); }},
        {L"InsertSession", [&] { return object.InsertSession(0, text.Get(), 0, &number); }},
        {L"DeleteSession", [&] { return object.DeleteSession(1, &number); }},
        {L"UpdateSession", [&] { return object.UpdateSession(1, 0, text.Get(), 0); }},
        {L"SelectSessionDetails", [&] { return object.SelectSessionDetails(request.Get(), table.Get()); }},
        {L"InsertSessionDetails", [&] { return object.InsertSessionDetails(table.Get()); }},
        {L"DeleteSessionDetails", [&] { return object.DeleteSessionDetails(1); }},
        {L"AdviseNotify", [&] { return object.AdviseNotify(1, table.Get()); }},
        {L"UnadviseNotify", [&] { return object.UnadviseNotify(1, table.Get()); }},
    };
    const CNoObject none(m_Holder);
    for (const auto& [name, call] : calls) {
        Recorder::Clear();
        EXPECT_EQ(E_FAIL, call());
        EXPECT_THAT(Reporters(), ElementsAre(L"CqxStorageBase::" + name));
        EXPECT_THAT(Recorder::Errors(), ElementsAre(L"m_Object.get()"));
    }
}

TEST_F(Guards, AStartThatRaisesGivesFailureAndNoInstance) {
    CComPtr<IqxStorage> storage;
    {
        const CNoObject none(m_Holder);
        EXPECT_EQ(E_FAIL, CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid()));
        EXPECT_FALSE(storage);
        EXPECT_THAT(Reporters(), ElementsAre(L"CqxStorageBase::FinalConstruct"));
    }
    EXPECT_EQ(S_OK, CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid()));
}

TEST_F(Guards, AFailedSelectAnswersOkWithWhatTheTableHolds) {
    const auto table = NewTable();
    table->AddFieldByName(CBstr(L"HOLIDAY").Get(), 0, 0, 0);
    table->Append();
    table->Post();
    CloseDatabase();
    EXPECT_EQ(S_OK, m_Object->SelectHoliday(NewRequest().Get(), table.Get()));
    EXPECT_EQ(1, RecordCount(table));
    EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::SelectHoliday"));
}

TEST_F(Guards, AnExceptionInAnOperationIsReportedUnderItsName) {
    CloseDatabase();
    Storage().DeleteHoliday(1);
    Storage().UpdateHoliday(1, L"x");
    Storage().InsertHolidayDetails(NewTable().Get());
    Storage().DeleteSetting(1);
    Storage().UpdateSetting(1, 1, 1, 1, 1);
    EXPECT_THAT(Reporters(),
                ElementsAre(L"sqStorage::CStorage::DeleteHoliday", L"sqStorage::CStorage::UpdateHoliday",
                            L"sqStorage::CStorage::InsertHolidayDetails", L"sqStorage::CStorage::DeleteSetting",
                            L"sqStorage::CStorage::UpdateSetting"));
}

TEST_F(Guards, AnExceptionInAnOperationOnFeedsExchangesAndSessionsIsReportedUnderItsName) {
    CloseDatabase();
    const auto request = NewRequest();
    const auto table = NewTable();
    using Calls = std::vector<std::pair<std::wstring, std::function<void()>>>;
    const Calls calls{
        {L"SelectDataFeed", [&] { Storage().SelectDataFeed(request.Get(), table.Get()); }},
        {L"DeleteDataFeed", [&] { EXPECT_EQ(0, Storage().DeleteDataFeed(1)); }},
        {L"UpdateDataFeed", [&] { Storage().UpdateDataFeed(1, L"x", L"x", L"x", L"x", 0, 1); }},
        {L"SelectDataFeed", [&] { EXPECT_EQ(0, Storage().SelectDataFeed(L"x")); }},
        {L"SelectExchange", [&] { Storage().SelectExchange(request.Get(), table.Get()); }},
        {L"DeleteExchange", [&] { EXPECT_EQ(0, Storage().DeleteExchange(1)); }},
        {L"SelectExchange", [&] { EXPECT_EQ(0, Storage().SelectExchange(L"x")); }},
        {L"SelectSession", [&] { Storage().SelectSession(request.Get(), table.Get()); }},
        {L"UpdateSession", [&] { Storage().UpdateSession(1, 0, L"x", 0); }},
        {L"SelectSessionDetails", [&] { Storage().SelectSessionDetails(request.Get(), table.Get()); }},
        {L"InsertSessionDetails", [&] { Storage().InsertSessionDetails(NewTable().Get()); }},
        {L"DeleteSessionDetails", [&] { Storage().DeleteSessionDetails(1); }},
    };
    for (const auto& [name, call] : calls) {
        Recorder::Clear();
        call();
        EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::" + name));
    }
}

// The checks within them report for themselves, and the operation goes on to what raises out of it.
TEST_F(Guards, AnExceptionInWhatAnOperationCallsIsReportedThereAndThenUnderTheOperationsName) {
    const std::wstring storage = L"sqStorage::CStorage::";
    CloseDatabase();
    EXPECT_EQ(0, Storage().DeleteSession(1));
    EXPECT_THAT(Reporters(), ElementsAre(storage + L"IsSessionTemplateUsed", storage + L"IsSessionTemplateUsed",
                                         storage + L"DeleteSessionDetails", storage + L"DeleteSession"));
    Recorder::Clear();
    Storage().UpdateExchange(1, L"x", L"x", 0, 1, 1, 0, L"x", L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000");
    EXPECT_THAT(Reporters(), ElementsAre(storage + L"SelectExchange", storage + L"UpdateExchange"));
}

TEST_F(Guards, AnExceptionInAnInsertIsReportedUnderItsNameAndGivesNoKey) {
    BreakStatement(L"INSERT INTO ");
    using Calls = std::vector<std::pair<std::wstring, std::function<LONG()>>>;
    const Calls calls{
        {L"InsertHoliday", [&] { return Storage().InsertHoliday(L"x"); }},
        {L"InsertSetting", [&] { return Storage().InsertSetting(1, 1, 1, 1); }},
        {L"InsertDataFeed", [&] { return Storage().InsertDataFeed(L"x", L"x", L"x", L"x", 0); }},
        {L"InsertExchange",
         [&] {
             return Storage().InsertExchange(L"x", L"x", 0, 1, 1, 0, L"x",
                                             L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000");
         }},
        {L"InsertSession", [&] { return Storage().InsertSession(1, L"x", 0); }},
    };
    for (const auto& [name, call] : calls) {
        Recorder::Clear();
        EXPECT_EQ(0, call());
        EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::" + name));
        EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"broken")));
    }
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Guards, ADeleteOfAnExchangeThatRaisesAnswersZeroAndAnnouncesNothing) {
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE,SETTING,SESSION) VALUES(5,20,30)");
    Sql(L"INSERT INTO SETTINGS VALUES(20,1,1,1,1)");
    Sql(L"INSERT INTO SESSIONS VALUES(30,1,'Day',0)");
    BreakStatement(L"SELECT * FROM DELETE_EXCHANGE(");
    LONG deleted = -1;
    EXPECT_EQ(S_OK, m_Object->DeleteExchange(5, &deleted));
    EXPECT_EQ(0, deleted);
    EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::DeleteExchange"));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(StartsWith(L"DeleteAnything: Open (stdexcept: \"broken\")")));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT E.EXCHANGE, T.SETTING, S.SESSION FROM EXCHANGES E, SETTINGS T, SESSIONS S"),
                ElementsAre(Row{L"5", L"20", L"30"}));
}

TEST_F(Guards, ADeleteOfAFeedThatRaisesAnswersZeroAndAnnouncesNothing) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Feed','x.dll','{C}',1,1,0,0,'X')");
    BreakStatement(L"SELECT * FROM DELETE_DATA_FEED(");
    LONG deleted = -1;
    EXPECT_EQ(S_OK, m_Object->DeleteDataFeed(7, &deleted));
    EXPECT_EQ(0, deleted);
    EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::DeleteDataFeed"));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(StartsWith(L"DeleteAnything: Open (stdexcept: \"broken\")")));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT DELETED FROM DATA_FEEDS"), ElementsAre(Row{L"0"}));
}

// Past the interface, which asks first whether it is there.
TEST_F(Guards, AnUpdateOfAnExchangeThatIsGoneTellsTheDictionaryOfNoOldName) {
    Storage().UpdateExchange(2000000000, L"XNYS", L"", 0, 1, 1, 0, L"",
                             L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000");
    EXPECT_THAT(Recorder::Messages(), Contains(L"Exchange '' -> 'XNYS'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4000, 0), Change(0x80, 0)));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

// They have no guard of their own, in neither layer.
TEST_F(Guards, AnExceptionInACurrencyOperationReachesTheCaller) {
    CloseDatabase();
    LONG code = 7;
    EXPECT_THROW(m_Object->SetCurrency(1, 840), platform::CComError);
    EXPECT_THROW(m_Object->GetCurrency(1, &code), platform::CComError);
    EXPECT_THROW(m_Object->DeleteCurrency(1), platform::CComError);
    EXPECT_THROW(m_Object->SelectCurrency(nullptr, NewTable().Get()), platform::CComError);
    EXPECT_EQ(7, code);
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
}

TEST_F(Guards, AnExceptionInASendReachesTheCaller) {
    {
        const CNoObject none(m_Holder);
        EXPECT_TRUE(Recorder::Raises([&] { m_Object->SendNotify(8); }));
        EXPECT_THAT(Recorder::Errors(), IsEmpty()) << "there is no guard that could report it";
    }
    m_Object->FinalRelease();
    EXPECT_THROW(m_Object->SendNotify(8), platform::CComError) << "an instance without a storage";
    EXPECT_EQ(S_FALSE, m_Object->AdviseNotify(8, nullptr));
    EXPECT_EQ(S_FALSE, m_Object->UnadviseNotify(8, nullptr));
}

TEST_F(Guards, ALookupByNameWithoutATableIsReportedWithTheStatusAndFindsNothing) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(5,'Twin','x.dll','{C}',1,1,0,0,'X')");
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME) VALUES(6,'Twin')");
    for (const auto& lookup : {std::function([&] { return Storage().SelectDataFeed(L"Twin"); }),
                               std::function([&] { return Storage().SelectExchange(L"Twin"); })}) {
        Recorder::Clear();
        {
            const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
            EXPECT_EQ(0, lookup());
        }
        const auto records = Recorder::RecordsOf(L"ASSERT");
        ASSERT_EQ(1U, records.size());
        EXPECT_EQ(E_OUTOFMEMORY, records[0].Status);
        EXPECT_NE(0, lookup());
    }
}

TEST_F(Guards, ACurrencyLookupWithoutATableRaisesTheStatus) {
    LONG code = 7;
    const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
    try {
        m_Object->GetCurrency(1, &code);
        ADD_FAILURE() << "nothing was raised";
    } catch (const platform::CComError& error) {
        EXPECT_EQ(E_OUTOFMEMORY, error.Code());
    }
    EXPECT_EQ(7, code);
}

TEST_F(Guards, ACurrencyLookupWhoseTableIsOfAnotherKindGivesZero) {
    LONG code = 7;
    const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_NOINTERFACE);
    EXPECT_EQ(S_OK, m_Object->GetCurrency(1, &code));
    EXPECT_EQ(0, code);
}

TEST_F(Guards, AStatementThatOverflowsIsReportedUnderTheOperationsName) {
    EXPECT_EQ(0, Storage().InsertHoliday(std::wstring(1100, L'x').c_str()));
    EXPECT_THAT(Reporters(), ElementsAre(L"sqStorage::CStorage::InsertHoliday"));
}

TEST_F(Guards, AStatementThatOverflowsIsAnInvalidParameter) {
    BugSlayerUtil::CInvalidParameterCatcher::Install();
    EXPECT_THROW(sqStorage::CStatement<8>(L"%s", L"too long for it"), std::length_error);
    const sqStorage::CStatement<8> fits(L"%s", L"1234567");
    BugSlayerUtil::CInvalidParameterCatcher::Remove();
    const auto crashes = Recorder::RecordsOf(L"EXCEPTION");
    ASSERT_EQ(1U, crashes.size());
    EXPECT_EQ(static_cast<LONG>(0xC000000D), crashes[0].Value(L"Code").AsLong());
}

TEST_F(Guards, AnExceptionInADeleteIsRaisedAgain) {
    CloseDatabase();
    const BugSlayerUtil::CScope scope;
    scope.Guard([&] { Storage().DeleteAnything(L"SELECT 1 AS DELETED FROM RDB$DATABASE"); });
    EXPECT_THAT(Recorder::Errors(), ElementsAre(StartsWith(L"DeleteAnything (stdexcept: \"")));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"GetTransaction: ")));
}

TEST_F(Guards, AnUpdateWithoutANameIsReportedAndWritesTheEmptyText) {
    Sql(L"INSERT INTO HOLIDAYS VALUES(5,'NYSE')");
    Storage().UpdateHoliday(5, nullptr);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"hn"));
    EXPECT_THAT(Recorder::Messages(), Contains(L"sql = 'UPDATE HOLIDAYS SET HOLIDAY_NAME='' WHERE HOLIDAY=5 '"));
    EXPECT_THAT(Sql(L"SELECT HOLIDAY_NAME FROM HOLIDAYS"), ElementsAre(Row{L""}));
}

TEST_F(Guards, ADeletedDateWithoutATextIsReportedAndTheStatementStillRuns) {
    Storage().DeleteHolidayDetails2(5, nullptr);
    EXPECT_THAT(Recorder::Messages(),
                Contains(L"sql = 'DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=5 AND HOLIDAY_START_DATE='''"));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Date", StartsWith(L"Open: "), StartsWith(L"Fetch: ")))
        << "the empty text is no date";
}

} // namespace
