// A write is traced before its statement runs, and announced when it is committed.
#include "StorageFixture.h"
#include "SymbolArguments.h"

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

    static void Feed(LONG key) {
        Sql(L"INSERT INTO DATA_FEEDS VALUES(" + Text(key) + L",'Old','x.dll','{C}',1,1,0,0,'X')");
    }
    static void Exchange(LONG key) {
        Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(" + Text(key) +
            L",'Old',20,30)");
    }
    static void Session(LONG key) {
        Sql(L"INSERT INTO SESSIONS VALUES(" + Text(key) + L",1,'Old',0)");
        Sql(L"INSERT INTO SESSION_DETAILS VALUES(" + Text(key) + L",1,2,3,4,5,6,7)");
    }

    static void Symbol(LONG key) {
        Sql(L"INSERT INTO PORTFOLIO VALUES(" + Text(key) +
            L",'Old','R','','',1,7,5,1,0,1,0,0,0,0,0,0,0,NULL,0,0,NULL,NULL)");
    }
    static tagSymbolArguments NewSymbol() {
        tagSymbolArguments symbol;
        symbol.SymbolName = L"New";
        return symbol;
    }

    static constexpr const wchar_t* SymbolName = L"SELECT SYMBOL_NAME FROM PORTFOLIO";
    static constexpr const wchar_t* FeedName = L"SELECT DATA_FEED_NAME FROM DATA_FEEDS";
    static constexpr const wchar_t* ExchangeName = L"SELECT EXCHANGE_NAME FROM EXCHANGES";
    static constexpr const wchar_t* SessionName = L"SELECT SESSION_NAME FROM SESSIONS";
    static constexpr const wchar_t* Details = L"SELECT COUNT(*) AS DATA_FEED FROM SESSION_DETAILS";
    static constexpr const wchar_t* Codes = L"SELECT CURRENCY_CODE FROM CURRENCY";
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

TEST_F(Order, OfInsertedFeed) {
    LONG key = 0;
    const CBstr text(L"New");
    const auto moments = Watch(FeedName, [&] {
        return m_Storage->InsertDataFeed(text.Get(), text.Get(), text.Get(), text.Get(), 0, &key);
    });
    EXPECT_THAT(moments.Traced, ElementsAre(View()));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

TEST_F(Order, OfUpdatedFeed) {
    Feed(1);
    const CBstr text(L"New");
    const auto moments = Watch(FeedName, [&] {
        return m_Storage->UpdateDataFeed(1, text.Get(), text.Get(), text.Get(), text.Get(), 0, 1);
    });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"Old")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

TEST_F(Order, OfDeletedFeed) {
    Feed(1);
    LONG deleted = 0;
    const auto moments =
        Watch(L"SELECT DELETED FROM DATA_FEEDS", [&] { return m_Storage->DeleteDataFeed(1, &deleted); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"0")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"1")));
}

TEST_F(Order, OfInsertedExchange) {
    LONG key = 0;
    const CBstr text(L"New");
    const CBstr zone(L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000");
    const auto moments = Watch(ExchangeName, [&] {
        return m_Storage->InsertExchange(text.Get(), text.Get(), 0, 1, 1, 0, text.Get(), zone.Get(), &key);
    });
    EXPECT_THAT(moments.Traced, ElementsAre(View()));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

// The row has its new name when the dictionary's change is announced, and when its own is.
TEST_F(Order, OfRenamedExchange) {
    Exchange(1);
    const CBstr text(L"New");
    const CBstr zone(L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000");
    const auto moments = Watch(ExchangeName, [&] {
        return m_Storage->UpdateExchange(1, text.Get(), text.Get(), 0, 1, 1, 0, text.Get(), zone.Get());
    });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"Old")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New"), One(L"New")));
}

// The exchange first, then its setting, the details of its session, the session.
TEST_F(Order, OfDeletedExchange) {
    Exchange(1);
    Setting(20);
    Session(30);
    LONG deleted = 0;
    const auto moments = Watch(L"SELECT (SELECT COUNT(*) FROM EXCHANGES) AS EXCHANGE, "
                               L"(SELECT COUNT(*) FROM SETTINGS) AS SETTING, "
                               L"(SELECT COUNT(*) FROM SESSION_DETAILS) AS DATA_FEED, "
                               L"(SELECT COUNT(*) FROM SESSIONS) AS SESSION FROM RDB$DATABASE",
                               [&] { return m_Storage->DeleteExchange(1, &deleted); });
    const auto left = [](const wchar_t* exchange, const wchar_t* setting, const wchar_t* details,
                         const wchar_t* session) {
        return View{{exchange, setting, details, session}};
    };
    EXPECT_THAT(moments.Traced, ElementsAre(left(L"1", L"1", L"1", L"1"), left(L"0", L"1", L"1", L"1"),
                                            left(L"0", L"0", L"1", L"1"), left(L"0", L"0", L"0", L"1")));
    EXPECT_THAT(moments.Announced, ElementsAre(left(L"0", L"0", L"1", L"1"), left(L"0", L"0", L"0", L"1"),
                                               left(L"0", L"0", L"0", L"0"), left(L"0", L"0", L"0", L"0")));
}

TEST_F(Order, OfInsertedSession) {
    LONG key = 0;
    const auto moments =
        Watch(SessionName, [&] { return m_Storage->InsertSession(2, CBstr(L"New").Get(), 0, &key); });
    EXPECT_THAT(moments.Traced, ElementsAre(View()));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

TEST_F(Order, OfUpdatedSession) {
    Session(1);
    const auto moments = Watch(SessionName, [&] { return m_Storage->UpdateSession(1, 2, CBstr(L"New").Get(), 0); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"Old")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

// The details first.
TEST_F(Order, OfDeletedSession) {
    Session(1);
    LONG deleted = 0;
    const auto moments = Watch(L"SELECT (SELECT COUNT(*) FROM SESSION_DETAILS) AS DATA_FEED, "
                               L"(SELECT COUNT(*) FROM SESSIONS) AS SESSION FROM RDB$DATABASE",
                               [&] { return m_Storage->DeleteSession(1, &deleted); });
    EXPECT_THAT(moments.Traced, ElementsAre(View{{L"1", L"1"}}, View{{L"0", L"1"}}));
    EXPECT_THAT(moments.Announced, ElementsAre(View{{L"0", L"1"}}, View{{L"0", L"0"}}));
}

TEST_F(Order, OfReplacedSessionDetails) {
    Session(1);
    const auto table = NewTable();
    for (LONG id : {1006, 1027, 1028, 1029, 1030, 1031, 1032, 1033})
        table->AddFieldById(id, 0, 0, 0);
    for (int i = 0; i < 3; ++i) {
        table->Append();
        FieldOf(table, IDM_dmudfcom::fieldSession)->put_AsLong(1);
        table->Post();
    }
    table->First();
    const auto moments = Watch(Details, [&] { return m_Storage->InsertSessionDetails(table.Get()); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"1"), One(L"0")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"0"), One(L"3")));
}

TEST_F(Order, OfDeletedSessionDetails) {
    Session(1);
    const auto moments = Watch(Details, [&] { return m_Storage->DeleteSessionDetails(1); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"1")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"0")));
}

TEST_F(Order, OfCurrencySetTwiceAndDeleted) {
    const auto currency = m_Storage.As<IDM_qxStorage::IqxCurrency>();
    const auto inserted = Watch(Codes, [&] { return currency->SetCurrency(7, 840); });
    EXPECT_THAT(inserted.Traced, ElementsAre(View()));
    EXPECT_THAT(inserted.Announced, ElementsAre(One(L"840")));
    const auto updated = Watch(Codes, [&] { return currency->SetCurrency(7, 978); });
    EXPECT_THAT(updated.Traced, ElementsAre(One(L"840")));
    EXPECT_THAT(updated.Announced, ElementsAre(One(L"978")));
    const auto deleted = Watch(Codes, [&] { return currency->DeleteCurrency(7); });
    EXPECT_THAT(deleted.Traced, ElementsAre(One(L"978")));
    EXPECT_THAT(deleted.Announced, ElementsAre(View()));
}

TEST_F(Order, OfInsertedSymbol) {
    LONG key = 0;
    const auto moments = Watch(SymbolName, [&] { return InsertPortfolio(*m_Storage.Get(), NewSymbol(), &key); });
    EXPECT_THAT(moments.Traced, ElementsAre(View()));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

TEST_F(Order, OfUpdatedSymbol) {
    Symbol(1);
    const auto moments = Watch(SymbolName, [&] { return UpdatePortfolio(*m_Storage.Get(), 1, NewSymbol()); });
    EXPECT_THAT(moments.Traced, ElementsAre(One(L"Old")));
    EXPECT_THAT(moments.Announced, ElementsAre(One(L"New")));
}

// The symbol first, then its text files, which are announced when all of them are gone.
TEST_F(Order, OfDeletedSymbolAndItsTextFiles) {
    Symbol(1);
    Sql(L"EXECUTE BLOCK AS BEGIN DELETE FROM ASC_MAP; DELETE FROM ASC_TEMPLATES; "
        L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(101,1); INSERT INTO ASC_TEMPLATES VALUES(101,1,1,'x'); "
        L"INSERT INTO ASC_MAP (ID,SYMBOL) VALUES(102,1); INSERT INTO ASC_TEMPLATES VALUES(102,1,1,'x'); END");
    const auto moments = Watch(L"SELECT (SELECT COUNT(*) FROM PORTFOLIO) AS EXCHANGE, "
                               L"(SELECT COUNT(*) FROM ASC_MAP) AS SETTING, "
                               L"(SELECT COUNT(*) FROM ASC_TEMPLATES) AS SESSION FROM RDB$DATABASE",
                               [&] { return m_Storage->DeletePortfolio(1); });
    const auto left = [](const wchar_t* symbols, const wchar_t* files, const wchar_t* templates) {
        return View{{symbols, files, templates}};
    };
    EXPECT_THAT(moments.Traced, ElementsAre(left(L"1", L"2", L"2"), left(L"0", L"2", L"2"), left(L"0", L"1", L"2"),
                                            left(L"0", L"1", L"1"), left(L"0", L"0", L"1")));
    EXPECT_THAT(moments.Announced, ElementsAre(left(L"0", L"2", L"2"), left(L"0", L"0", L"0")));
}

} // namespace
