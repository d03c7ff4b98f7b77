// What a change asks before it changes: whether the row is there.
#include "RefusedClass.h"
#include "RefusingRequest.h"
#include "StorageFixture.h"
#include "qxStorageBase.h"

#include <functional>

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr LONG Key = 5;
// No check asks for it.
constexpr LONG Other = 77;

class ExistsCheck : public StorageTest {
protected:
    static void SetUpTestSuite() { HostTest::SetUpTestSuite(); }
    void SetUp() override {
        ASSERT_EQ(S_OK, m_Object->FinalConstruct());
        for (const wchar_t* table : {L"HOLIDAYS", L"HOLIDAY_DETAILS", L"SETTINGS", L"DATA_FEEDS", L"EXCHANGES",
                                     L"SESSIONS", L"SESSION_DETAILS", L"DICTIONARY"})
            Sql(std::wstring(L"DELETE FROM ") + table);
        TakeAll();
    }
    static void WriteFeed(LONG key) {
        Sql(L"INSERT INTO DATA_FEEDS VALUES(" + Text(key) + L",'Feed','x.dll','{C}',1,1,0,0,'X')");
    }
    // A request in which something else stands wherever a check may write.
    static HRESULT Misleading(void** made) {
        const auto request = CComPtr<IUnknown>(static_cast<IUnknown*>(*made)).As<IdmRequest>();
        for (const LONG mode : {0, 1}) {
            request->put_ExchangeId(mode, Other);
            request->put_Symbol(mode, Other);
        }
        request->put_Datafeed(1, Other);
        request->put_ActiveOnly(1);
        request->put_HolidayId(Other);
        request->put_SettingId(Other);
        request->put_SessionId(Other);
        return S_OK;
    }
    // The request that the call made.
    template <class Call>
    static CComPtr<IdmRequest> RequestOf(Call&& call) {
        CComPtr<IdmRequest> request;
        const CWatchedClass watched(IDM_dmudfcom::CLSID_dmRequest, [&](void** made) {
            request = CComPtr<IUnknown>(static_cast<IUnknown*>(*made)).As<IdmRequest>();
            return Misleading(made);
        });
        call();
        EXPECT_TRUE(request);
        return request;
    }
    static LONG At(const CComPtr<IdmRequest>& request, HRESULT (IdmRequest::*property)(LONG, LONG*), LONG mode) {
        LONG value = -1;
        EXPECT_EQ(S_OK, (request.Get()->*property)(mode, &value));
        return value;
    }
    static LONG Of(const CComPtr<IdmRequest>& request, HRESULT (IdmRequest::*property)(LONG*)) {
        LONG value = -1;
        EXPECT_EQ(S_OK, (request.Get()->*property)(&value));
        return value;
    }

    // All calls that check, with their names.
    std::vector<std::pair<std::wstring, std::function<HRESULT()>>> Calls() {
        CqxStorageBase& o = *m_Object;
        const auto text = [] { return CBstr(L"01.01.2027"); };
        return {
            {L"DeleteHoliday", [&o] { return o.DeleteHoliday(Key); }},
            {L"UpdateHoliday", [&o, text] { return o.UpdateHoliday(Key, text().Get()); }},
            {L"DeleteHolidayDetails", [&o] { return o.DeleteHolidayDetails(Key); }},
            {L"DeleteHolidayDetails2", [&o, text] { return o.DeleteHolidayDetails2(Key, text().Get()); }},
            {L"DeleteSetting", [&o] { return o.DeleteSetting(Key); }},
            {L"UpdateSetting", [&o] { return o.UpdateSetting(Key, 1, 1, 1, 1); }},
            {L"DeleteDataFeed", [&o, this] { return o.DeleteDataFeed(Key, &m_Deleted); }},
            {L"UpdateDataFeed",
             [&o, text] {
                 return o.UpdateDataFeed(Key, text().Get(), text().Get(), text().Get(), text().Get(), 0, 1);
             }},
            {L"DeleteExchange", [&o, this] { return o.DeleteExchange(Key, &m_Deleted); }},
            {L"UpdateExchange",
             [&o, text] {
                 return o.UpdateExchange(Key, text().Get(), text().Get(), 0, 1, 1, 0, text().Get(), text().Get());
             }},
            {L"DeleteSession", [&o, this] { return o.DeleteSession(Key, &m_Deleted); }},
            {L"UpdateSession", [&o, text] { return o.UpdateSession(Key, 0, text().Get(), 0); }},
            {L"DeleteSessionDetails", [&o] { return o.DeleteSessionDetails(Key); }},
            {L"DeleteDictionary", [&o] { return o.DeleteDictionary(Key); }},
        };
    }
    // Every call fails, under its own name, and nothing is written or announced.
    void ExpectFailures(const std::wstring& reason) {
        for (const auto& [name, call] : Calls()) {
            TakeAll();
            m_Deleted = -1;
            EXPECT_EQ(E_FAIL, call()) << Narrow(name);
            const auto errors = Recorder::RecordsOf(L"ERROR");
            ASSERT_EQ(1U, errors.size()) << Narrow(name);
            ASSERT_FALSE(errors[0].Inner.empty());
            EXPECT_EQ(L"CqxStorageBase::" + name, errors[0].Inner.front().Function);
            EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(reason)));
            EXPECT_THAT(Statements(), IsEmpty());
            EXPECT_THAT(m_Changes.Take(), IsEmpty());
            EXPECT_EQ(GivesDeleted(name) ? 0 : -1, m_Deleted) << Narrow(name);
        }
    }

    const CComPtr<CqxStorageBase> m_Object = platform::MakeObject<CqxStorageBase>();
    LONG m_Deleted = -1;
    sqStorage::CStorageHolder m_Holder;

private:
    // Whether the call says what it deleted.
    static bool GivesDeleted(const std::wstring& name) {
        return name == L"DeleteDataFeed" || name == L"DeleteExchange" || name == L"DeleteSession";
    }
    static std::string Narrow(const std::wstring& name) { return {name.begin(), name.end()}; }
};

TEST_F(ExistsCheck, AnExchangeIsAskedForAtModeOneAndAtModeZeroWhichTheSelectReads) {
    const auto request = RequestOf([&] { EXPECT_EQ(S_FALSE, m_Object->DeleteExchange(Key, &m_Deleted)); });
    EXPECT_EQ(Key, At(request, &IdmRequest::get_ExchangeId, 1));
    EXPECT_EQ(Key, At(request, &IdmRequest::get_ExchangeId, 0));
    EXPECT_EQ(0, m_Deleted);
}

TEST_F(ExistsCheck, FeedsAreAskedForWithNoKeyAndWhetherActiveOrNot) {
    const auto request = RequestOf([&] { EXPECT_EQ(S_FALSE, m_Object->DeleteDataFeed(Key, &m_Deleted)); });
    EXPECT_EQ(0, At(request, &IdmRequest::get_Datafeed, 1));
    EXPECT_EQ(0, At(request, &IdmRequest::get_Datafeed, 0));
    EXPECT_EQ(0, Of(request, &IdmRequest::get_ActiveOnly));
    EXPECT_EQ(0, m_Deleted);
}

TEST_F(ExistsCheck, TheOthersAreAskedForByTheirKey) {
    EXPECT_EQ(Key, Of(RequestOf([&] { m_Object->DeleteHoliday(Key); }), &IdmRequest::get_HolidayId));
    EXPECT_EQ(Key, Of(RequestOf([&] { m_Object->DeleteHolidayDetails(Key); }), &IdmRequest::get_HolidayId));
    EXPECT_EQ(Key, Of(RequestOf([&] { m_Object->DeleteSetting(Key); }), &IdmRequest::get_SettingId));
    EXPECT_EQ(Key, Of(RequestOf([&] { m_Object->DeleteSession(Key, &m_Deleted); }), &IdmRequest::get_SessionId));
    EXPECT_EQ(Key, Of(RequestOf([&] { m_Object->DeleteSessionDetails(Key); }), &IdmRequest::get_SessionId));
    EXPECT_EQ(Key, At(RequestOf([&] { m_Object->DeleteDictionary(Key); }), &IdmRequest::get_Symbol, 1));
}

TEST_F(ExistsCheck, AFeedIsFoundInWhateverRowItStands) {
    for (const LONG key : {10, 11, 12})
        WriteFeed(key);
    const CBstr text(L"x");
    for (const LONG key : {12, 11, 10}) {
        EXPECT_EQ(S_OK,
                  m_Object->UpdateDataFeed(key, text.Get(), text.Get(), text.Get(), CBstr(L"{C}").Get(), 0, 0));
        EXPECT_EQ(S_OK, m_Object->DeleteDataFeed(key, &m_Deleted));
        EXPECT_EQ(1, m_Deleted);
    }
    EXPECT_THAT(Sql(L"SELECT DELETED FROM DATA_FEEDS"), ElementsAre(Row{L"1"}, Row{L"1"}, Row{L"1"}));
    EXPECT_EQ(S_FALSE, m_Object->DeleteDataFeed(13, &m_Deleted));
}

TEST_F(ExistsCheck, TheSearchAmongFeedsStopsAtTheOneThatIsMeant) {
    for (const LONG key : {10, 11, 12})
        WriteFeed(key);
    const auto isAtTheEndAfter = [&](LONG key) {
        CComPtr<IdmTable> first;
        {
            const CWatchedClass watched(IDM_dmudfcom::CLSID_dmTable, [&](void** made) {
                if (!first)
                    first = CComPtr<IUnknown>(static_cast<IUnknown*>(*made)).As<IdmTable>();
                return S_OK;
            });
            m_Object->DeleteDataFeed(key, &m_Deleted);
        }
        LONG eof = -1;
        EXPECT_EQ(S_OK, first->get_Eof(&eof));
        EXPECT_EQ(3, RecordCount(first));
        return eof != 0;
    };
    EXPECT_TRUE(isAtTheEndAfter(Other)) << "it is none of them";
    EXPECT_FALSE(isAtTheEndAfter(10));
}

TEST_F(ExistsCheck, WithoutARequestTheCallFailsUnderItsName) {
    const CRefusedClass refused(IDM_dmudfcom::CLSID_dmRequest, E_OUTOFMEMORY);
    ExpectFailures(L"0x8007000E");
}

TEST_F(ExistsCheck, WithoutATableTheCallFailsUnderItsName) {
    const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
    ExpectFailures(L"0x8007000E");
}

TEST_F(ExistsCheck, ARequestThatRefusesTheKeyFailsTheCallUnderItsName) {
    const CWatchedClass watched(IDM_dmudfcom::CLSID_dmRequest, [](void** made) {
        static_cast<IUnknown*>(*made)->Release();
        *made = static_cast<IdmRequest*>(platform::MakeObject<CRefusingRequest>().Detach());
        return S_OK;
    });
    ExpectFailures(L"0x80004004");
}

} // namespace
