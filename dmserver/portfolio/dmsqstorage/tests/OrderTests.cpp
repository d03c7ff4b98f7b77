// A write is traced before its statement runs, and announced when it is committed.
#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace {

using namespace tests;
using testing::ElementsAre;

// What another connection sees of the data.
using View = std::vector<Row>;

class Order : public StorageTest {
protected:
    // The view at each traced statement and at each announced change.
    struct tagMoments {
        std::vector<View> Traced;
        std::vector<View> Announced;
    };

    template <class Write>
    tagMoments Watch(const wchar_t* query, Write&& write) {
        tagMoments moments;
        const CWatch watch(query, moments);
        EXPECT_EQ(S_OK, write());
        return moments;
    }
    static void Holiday(LONG key, int dates) {
        Sql(L"INSERT INTO HOLIDAYS VALUES(" + Text(key) + L",'Old')");
        for (int i = 0; i < dates; ++i)
            Sql(L"INSERT INTO HOLIDAY_DETAILS (HOLIDAY,HOLIDAY_START_DATE) VALUES(" + Text(key) + L",'0" +
                Text(i + 1) + L".01.2027')");
    }
    static void Setting(LONG key) { Sql(L"INSERT INTO SETTINGS VALUES(" + Text(key) + L",1,1,1,1)"); }

    static constexpr const wchar_t* Dates = L"SELECT COUNT(*) AS DATA_FEED FROM HOLIDAY_DETAILS";

private:
    class CWatch final : public sqStorage::IBroadcastObserver {
    public:
        CWatch(const wchar_t* query, tagMoments& moments)
            : m_Query(query), m_Moments(moments), m_Previous(sqStorage::SetBroadcastObserver(this)) {
            Recorder::SetProcessHandler([this](const Recorder::tagRecord& record) {
                if (record.Message.starts_with(L"sql = "))
                    m_Moments.Traced.push_back(Sql(m_Query));
                return S_OK;
            });
        }
        ~CWatch() {
            Recorder::SetProcessHandler(nullptr);
            sqStorage::SetBroadcastObserver(m_Previous);
        }
        CWatch(const CWatch&) = delete;
        CWatch& operator=(const CWatch&) = delete;

        void OnBroadcast(ULONG, LONG) noexcept override { m_Moments.Announced.push_back(Sql(m_Query)); }

    private:
        std::wstring m_Query;
        tagMoments& m_Moments;
        sqStorage::IBroadcastObserver* m_Previous;
    };
};

View One(const wchar_t* value) { return {Row{value}}; }

TEST_F(Order, OfInsertedHoliday) {
    LONG key = 0;
    const auto moments = Watch(L"SELECT HOLIDAY_NAME FROM HOLIDAYS",
                               [&] { return m_Storage->InsertHoliday(CBstr(L"New").Get(), &key); });
    EXPECT_THAT(moments.Traced, ElementsAre(View()));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

TEST_F(Order, OfUpdatedHoliday) {
    Holiday(1, 0);
    const auto moments = Watch(L"SELECT HOLIDAY_NAME FROM HOLIDAYS",
                               [&] { return m_Storage->UpdateHoliday(1, CBstr(L"New").Get()); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"Old")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

// The dates first, without a trace.
TEST_F(Order, OfDeletedHoliday) {
    Holiday(1, 2);
    const auto moments = Watch(L"SELECT (SELECT COUNT(*) FROM HOLIDAY_DETAILS) AS DATA_FEED, "
                               L"(SELECT COUNT(*) FROM HOLIDAYS) AS EXCHANGE FROM RDB$DATABASE",
                               [&] { return m_Storage->DeleteHoliday(1); });
    EXPECT_THAT(moments.Traced, ElementsAre(View{{L"0", L"1"}}));
    EXPECT_THAT(moments.Announced, ElementsAre(View{{L"0", L"1"}}, View{{L"0", L"0"}}));
}

TEST_F(Order, OfReplacedDates) {
    Holiday(1, 1);
    const auto table = NewTable();
    for (const wchar_t* name : {L"HOLIDAY", L"HOLIDAY_DESCRIPTION", L"HOLIDAY_START_DATE", L"HOLIDAY_END_DATE"})
        table->AddFieldByName(CBstr(name).Get(), 0, 0, 0);
    for (LONG day = 46388; day < 46391; ++day) {
        table->Append();
        FieldOf(table, IDM_dmudfcom::fieldHoliday)->put_AsLong(1);
        FieldOf(table, IDM_dmudfcom::fieldHolidayStartDate)->put_AsLong(day);
        table->Post();
    }
    table->First();
    const auto moments = Watch(Dates, [&] { return m_Storage->InsertHolidayDetails(table.Get()); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"1"), One(L"0")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"0"), One(L"3")));
}

TEST_F(Order, OfDeletedDates) {
    Holiday(1, 2);
    const auto moments = Watch(Dates, [&] { return m_Storage->DeleteHolidayDetails(1); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"2")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"0")));
}

TEST_F(Order, OfOneDeletedDate) {
    Holiday(1, 2);
    const auto moments =
        Watch(Dates, [&] { return m_Storage->DeleteHolidayDetails2(1, CBstr(L"01.01.2027").Get()); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"2")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"1")));
}

TEST_F(Order, OfInsertedSetting) {
    LONG key = 0;
    const auto moments =
        Watch(L"SELECT PRICE_SCALE FROM SETTINGS", [&] { return m_Storage->InsertSetting(9, 1, 1, 1, &key); });
    EXPECT_THAT(moments.Traced, ElementsAre(View()));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"9")));
}

TEST_F(Order, OfUpdatedSetting) {
    Setting(1);
    const auto moments =
        Watch(L"SELECT PRICE_SCALE FROM SETTINGS", [&] { return m_Storage->UpdateSetting(1, 9, 1, 1, 1); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"1")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"9")));
}

TEST_F(Order, OfDeletedSetting) {
    Setting(1);
    const auto moments = Watch(L"SELECT SETTING FROM SETTINGS", [&] { return m_Storage->DeleteSetting(1); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"1")));
    EXPECT_THAT(moments.Announced, ElementsAre(View()));
}

} // namespace
