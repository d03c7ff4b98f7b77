// Feeds, exchanges, sessions and currencies from inside: the order of the steps, the keys that they take, and what
// is left when one of them fails.
#include "InsideFixture.h"
#include "RefusedClass.h"
#include "platform/com/com_error.h"

#include <functional>

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const wchar_t* Zone = L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";

class ReferenceSteps : public InsideTest {
protected:
    // As it stands in a report.
    static std::wstring Named(const wchar_t* operation) {
        return std::wstring(L"sqStorage::CStorage::") + operation;
    }
    void TakeAll() {
        Recorder::Clear();
        m_Changes.Take();
        TakeStatements();
    }
    LONG InsertFeed(const wchar_t* clsid) { return Storage().InsertDataFeed(L"Feed", L"F", L"x.dll", clsid, 0); }
    LONG InsertExchange(const wchar_t* description, const wchar_t* zone) {
        return Storage().InsertExchange(L"NYSE", description, 0, 20, 30, 0, L"N", zone);
    }
    LONG InsertSession(const wchar_t* name) { return Storage().InsertSession(2, name, 0); }
    void Rename(LONG exchange) { Storage().UpdateExchange(exchange, L"XNYS", L"", 0, 20, 30, 0, L"", Zone); }
    // Feed 7, exchange 5 with its setting and session.
    static void WriteRows() {
        Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Feed','x.dll','{C}',1,1,0,0,'X')");
        Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(5,'NYSE',20,30)");
        Sql(L"INSERT INTO SETTINGS VALUES(20,1,1,1,1)");
        Sql(L"INSERT INTO SESSIONS VALUES(30,1,'Day',0)");
        Sql(L"INSERT INTO SESSION_DETAILS VALUES(30,1,2,3,4,5,6,7)");
    }
    static std::vector<Row> NamesOfExchanges() { return Sql(L"SELECT EXCHANGE_NAME FROM EXCHANGES"); }
};

// --- A carrier that cannot be made

TEST_F(ReferenceSteps, AnExchangeWhoseOldNameCannotBeReadIsReportedAndRenamedAllTheSame) {
    for (const CLSID& carrier : {IDM_dmudfcom::CLSID_dmRequest, IDM_dmudfcom::CLSID_dmTable}) {
        Sql(L"UPDATE OR INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME) VALUES(5,'NYSE')");
        TakeAll();
        {
            const CRefusedClass refused(carrier, E_OUTOFMEMORY);
            Rename(5);
        }
        EXPECT_THAT(Reporters(), ElementsAre(Named(L"get_exchange_name")));
        EXPECT_THAT(Recorder::Messages(), testing::Contains(L"Exchange '' -> 'XNYS'"));
        EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x4000, 0), Change(0x80, 0)));
        EXPECT_THAT(NamesOfExchanges(), ElementsAre(Row{L"XNYS"}));
    }
}

TEST_F(ReferenceSteps, ACurrencyThatCannotBeLookedUpIsNotSet) {
    WatchDatabase();
    {
        const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
        try {
            m_Object->SetCurrency(7, 840);
            ADD_FAILURE() << "nothing was raised";
        } catch (const platform::CComError& error) {
            EXPECT_EQ(E_OUTOFMEMORY, error.Code());
        }
    }
    EXPECT_THAT(TakeStatements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT ID FROM CURRENCY"), IsEmpty());
}

TEST_F(ReferenceSteps, ALookupWithoutATableStopsBeforeItsStatementIsMade) {
    sqStorage::CStorage& storage = Storage();
    const std::wstring endless(3000, L'x'); // no statement holds it
    const wchar_t* const text = endless.c_str();
    for (const auto& lookup : {std::function([&] { return storage.SelectDataFeed(text); }),
                               std::function([&] { return storage.SelectExchange(text); }),
                               std::function([&] { return storage.SelectSymbol(7, text, 1, 5, 0, L"", 0); }),
                               std::function([&] { return storage.GetSymbolByName(7, text); }),
                               std::function([&] { return storage.GetSymbolByDescription(7, text, nullptr); })}) {
        Recorder::Clear();
        const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
        EXPECT_EQ(0, lookup());
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"IdmTable"));
        EXPECT_THAT(Recorder::Errors(), IsEmpty());
    }
}

// --- Arguments that are missing

TEST_F(ReferenceSteps, ASelectWithoutARequestOrATableReportsThatAloneAndAsksNothing) {
    WatchDatabase();
    const auto request = NewRequest();
    const auto table = NewTable();
    using Select = std::function<void(IdmRequest*, IdmTable*)>;
    sqStorage::CStorage& storage = Storage();
    for (const Select& select : {Select([&](IdmRequest*r, IdmTable*t) { storage.SelectDataFeed(r, t); }),
                                 Select([&](IdmRequest*r, IdmTable*t) { storage.SelectExchange(r, t); }),
                                 Select([&](IdmRequest*r, IdmTable*t) { storage.SelectSession(r, t); }),
                                 Select([&](IdmRequest*r, IdmTable*t) { storage.SelectSessionDetails(r, t); })}) {
        TakeAll();
        select(nullptr, table.Get());
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request"));
        Recorder::Clear();
        select(request.Get(), nullptr);
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Table"));
        Recorder::Clear();
        select(nullptr, nullptr);
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request", L"Table"));
        EXPECT_THAT(Recorder::Errors(), IsEmpty());
        EXPECT_THAT(TakeStatements(), IsEmpty());
    }
}

// --- Keys

TEST_F(ReferenceSteps, ARefusedOrReusedRowTakesNoKey) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Feed','x.dll','{C}',1,1,1,0,'X')");
    const LONG first = InsertSession(L"Day");
    EXPECT_EQ(7, InsertFeed(L"{C}"));
    EXPECT_EQ(first + 1, InsertSession(L"Night"));
    EXPECT_EQ(0, InsertSession(L"DAY"));
    EXPECT_EQ(first + 2, InsertSession(L"Noon"));
    EXPECT_EQ(0, InsertExchange(nullptr, Zone));
    EXPECT_EQ(first + 3, InsertSession(L"Dawn"));
}

TEST_F(ReferenceSteps, AZoneThatCannotBeWrittenTakesAKey) {
    const LONG first = InsertSession(L"Day");
    EXPECT_EQ(0, InsertExchange(L"", L"0,0,11,0,1,24:00:00.0000,-60,3,0,2,02:00:00.0000"));
    EXPECT_EQ(first + 2, InsertSession(L"Night"));
}

// --- A step that raises

TEST_F(ReferenceSteps, AnUpdateThatRaisesAnnouncesNothing) {
    WriteRows();
    const struct {
        const wchar_t* Statement;
        const wchar_t* Operation;
        std::function<void()> Call;
    } updates[]{
        {L"UPDATE EXCHANGES ", L"UpdateExchange", [&] { Rename(5); }},
        {L"UPDATE DATA_FEEDS ", L"UpdateDataFeed",
         [&] { Storage().UpdateDataFeed(7, L"x", L"x", L"x", L"x", 0, 0); }},
        {L"UPDATE SESSIONS ", L"UpdateSession", [&] { Storage().UpdateSession(30, 2, L"x", 1); }},
    };
    for (const auto& update : updates) {
        TakeAll();
        BreakStatement(update.Statement);
        update.Call();
        EXPECT_THAT(Reporters(), ElementsAre(Named(update.Operation)));
        EXPECT_THAT(m_Changes.Take(), IsEmpty());
    }
    EXPECT_THAT(NamesOfExchanges(), ElementsAre(Row{L"NYSE"}));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED_NAME FROM DATA_FEEDS"), ElementsAre(Row{L"Feed"}));
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"), ElementsAre(Row{L"Day"}));
}

TEST_F(ReferenceSteps, ADeleteOfASessionThatRaisesHasTakenAndAnnouncedTheDetailsOnly) {
    WriteRows();
    BreakStatement(L"DELETE FROM SESSIONS ");
    EXPECT_EQ(0, Storage().DeleteSession(30));
    EXPECT_THAT(Reporters(), ElementsAre(Named(L"DeleteSession")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0)));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS"), ElementsAre(Row{L"30"}));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSION_DETAILS"), IsEmpty());
}

TEST_F(ReferenceSteps, AFeedWhoseDeletedTwinCannotBeLookedForIsWrittenAnew) {
    BreakStatement(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID=");
    const LONG key = InsertFeed(L"{C}");
    EXPECT_THAT(Reporters(), ElementsAre(Named(L"GetDataFeedId1")));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED,PRIMARY_INSTANCE FROM DATA_FEEDS"), ElementsAre(Row{Text(key), L"1"}));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
}

TEST_F(ReferenceSteps, AFeedWhoseClassCannotBeCountedIsWrittenAsASecondOne) {
    BreakStatement(L"SELECT COUNT(*) ");
    const LONG key = InsertFeed(L"{C}");
    EXPECT_THAT(Reporters(), ElementsAre(Named(L"IsPrimaryInstance")));
    EXPECT_THAT(Sql(L"SELECT DATA_FEED,PRIMARY_INSTANCE FROM DATA_FEEDS"), ElementsAre(Row{Text(key), L"0"}));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x40, 0)));
}

TEST_F(ReferenceSteps, ASessionWhoseNameCannotBeLookedForIsWritten) {
    BreakStatement(L"SELECT SESSION FROM SESSIONS ");
    const LONG key = InsertSession(L"Day");
    EXPECT_THAT(Reporters(), ElementsAre(Named(L"IsSessionTemplateExists")));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS"), ElementsAre(Row{Text(key)}));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x100, 0)));
}

TEST_F(ReferenceSteps, ADeletedFeedThatCannotBeBroughtBackIsReportedOnceAndItsKeyReturned) {
    Sql(L"INSERT INTO DATA_FEEDS VALUES(7,'Feed','x.dll','{C}',1,1,1,0,'X')");
    BreakStatement(L"UPDATE DATA_FEEDS ");
    EXPECT_EQ(7, InsertFeed(L"{C}"));
    EXPECT_THAT(Reporters(), ElementsAre(Named(L"UpdateDataFeed")));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Sql(L"SELECT DATA_FEED,DELETED FROM DATA_FEEDS"), ElementsAre(Row{L"7", L"1"}));
}

TEST_F(ReferenceSteps, AnExchangeWhoseSettingCannotBeDeletedTakesItsSessionAllTheSame) {
    WriteRows();
    BreakStatement(L"DELETE FROM SETTINGS ");
    EXPECT_EQ(1, Storage().DeleteExchange(5));
    EXPECT_THAT(Reporters(), ElementsAre(Named(L"DeleteSetting")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0), Change(0x100, 0), Change(0x80, 0)));
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS"), ElementsAre(Row{L"20"}));
    EXPECT_THAT(Sql(L"SELECT SESSION FROM SESSIONS"), IsEmpty());
    EXPECT_THAT(NamesOfExchanges(), IsEmpty());
}

// --- Order

TEST_F(ReferenceSteps, ASessionIsLookedForAmongSymbolsThenCustomFuturesThenItsDetailsGoThenItself) {
    WriteRows();
    WatchDatabase();
    EXPECT_EQ(1, Storage().DeleteSession(30));
    EXPECT_THAT(TakeStatements(),
                ElementsAre(L"SELECT SYMBOL FROM PORTFOLIO WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=30",
                            L"SELECT CF FROM CUSTOM_FUTURES WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=30",
                            L"DELETE FROM SESSION_DETAILS WHERE SESSION=30",
                            L"DELETE FROM SESSIONS WHERE SESSION=30"));
}

TEST_F(ReferenceSteps, ATemplateThatASymbolUsesIsNotLookedForAmongCustomFutures) {
    WriteRows();
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SESSION_TYPE,TEMPLATE_SESSION) VALUES(1,2,30)");
    WatchDatabase();
    EXPECT_EQ(0, Storage().DeleteSession(30));
    EXPECT_THAT(TakeStatements(),
                ElementsAre(L"SELECT SYMBOL FROM PORTFOLIO WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=30"));
}

TEST_F(ReferenceSteps, ACurrencyIsLookedForAndThenWritten) {
    WatchDatabase();
    Storage().SetCurrency(7, 840);
    EXPECT_THAT(TakeStatements(),
                ElementsAre(L"SELECT * FROM CURRENCY WHERE ID=7", L"INSERT INTO CURRENCY VALUES(7,840)"));
    Storage().SetCurrency(7, 978);
    EXPECT_THAT(TakeStatements(), ElementsAre(L"SELECT * FROM CURRENCY WHERE ID=7",
                                              L"UPDATE CURRENCY SET CURRENCY_CODE=978 WHERE ID=7"));
}

TEST_F(ReferenceSteps, AFeedIsLookedForAmongTheDeletedThenCountedThenWritten) {
    WatchDatabase();
    const LONG key = InsertFeed(L"{C}");
    EXPECT_THAT(TakeStatements(),
                ElementsAre(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{C}' AND DELETED=1",
                            L"SELECT COUNT(*) AS DATA_FEED FROM DATA_FEEDS WHERE CLSID='{C}'",
                            L"INSERT INTO DATA_FEEDS VALUES(" + Text(key) + L",'Feed','x.dll','{C}',1,1,0,0,'F')"));
}

TEST_F(ReferenceSteps, AnExchangeIsReadThenDeletedThenItsSettingThenItsSession) {
    WriteRows();
    WatchDatabase();
    EXPECT_EQ(1, Storage().DeleteExchange(5));
    EXPECT_THAT(
        TakeStatements(),
        ElementsAre(L"SELECT SETTING,SESSION FROM EXCHANGES WHERE EXCHANGE=5", L"SELECT * FROM DELETE_EXCHANGE(5)",
                    L"DELETE FROM SETTINGS WHERE SETTING=20", StartsWith(L"SELECT SYMBOL FROM PORTFOLIO "),
                    StartsWith(L"SELECT CF FROM CUSTOM_FUTURES "), L"DELETE FROM SESSION_DETAILS WHERE SESSION=30",
                    L"DELETE FROM SESSIONS WHERE SESSION=30"));
}

} // namespace
