#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

#include <limits>

namespace {

using namespace tests;
using IDM_qxStorage::IqxCurrency;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Currencies : public StorageTest {
protected:
    void SetUp() override {
        StorageTest::SetUp();
        m_Currency = m_Storage.As<IqxCurrency>();
        ASSERT_TRUE(m_Currency);
    }
    LONG Get(LONG id) {
        LONG code = -1;
        EXPECT_EQ(S_OK, m_Currency->GetCurrency(id, &code));
        return code;
    }
    static std::vector<Row> Rows() { return Sql(L"SELECT ID, CURRENCY_CODE FROM CURRENCY ORDER BY ID"); }

    CComPtr<IqxCurrency> m_Currency;
};

TEST_F(Currencies, SetOfANewIdInsertsARow) {
    EXPECT_EQ(S_OK, m_Currency->SetCurrency(7, 840));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO CURRENCY VALUES(7,840)'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80000, 7)));
    EXPECT_THAT(Rows(), ElementsAre(Row{L"7", L"840"}));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM CURRENCY WHERE ID=7"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Currencies, SetOfAKnownIdUpdatesItsRowAndAnnouncesTheIdAgain) {
    EXPECT_EQ(S_OK, m_Currency->SetCurrency(7, 840));
    EXPECT_EQ(S_OK, m_Currency->SetCurrency(7, 978));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO CURRENCY VALUES(7,840)'",
                                          L"sql = 'UPDATE CURRENCY SET CURRENCY_CODE=978 WHERE ID=7'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80000, 7), Change(0x80000, 7)));
    EXPECT_THAT(Rows(), ElementsAre(Row{L"7", L"978"}));
}

TEST_F(Currencies, SetOfOneIdLeavesTheOthers) {
    m_Currency->SetCurrency(7, 840);
    m_Currency->SetCurrency(8, 978);
    m_Currency->SetCurrency(7, 392);
    EXPECT_THAT(Rows(), ElementsAre(Row{L"7", L"392"}, Row{L"8", L"978"}));
}

TEST_F(Currencies, AnyNumbersWillDo) {
    constexpr LONG least = std::numeric_limits<LONG>::min();
    constexpr LONG most = std::numeric_limits<LONG>::max();
    m_Currency->SetCurrency(0, least);
    m_Currency->SetCurrency(least, most);
    EXPECT_EQ(least, Get(0));
    EXPECT_EQ(most, Get(least));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80000, 0), Change(0x80000, least)));
}

TEST_F(Currencies, GetGivesTheCodeOfTheId) {
    m_Currency->SetCurrency(7, 840);
    m_Currency->SetCurrency(8, 978);
    TakeAll();
    EXPECT_EQ(840, Get(7));
    EXPECT_EQ(978, Get(8));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Currencies, GetOfAnUnknownIdGivesZero) {
    m_Currency->SetCurrency(7, 840);
    EXPECT_EQ(0, Get(8));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Currencies, GetRefusesANullOutPointer) {
    EXPECT_EQ(E_INVALIDARG, m_Currency->GetCurrency(7, nullptr));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Currencies, DeleteRemovesTheRowAndAnnouncesTheIdOnce) {
    m_Currency->SetCurrency(7, 840);
    m_Currency->SetCurrency(8, 978);
    TakeAll();
    EXPECT_EQ(S_OK, m_Currency->DeleteCurrency(7));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM CURRENCY WHERE ID=7'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80000, 7)));
    EXPECT_THAT(Rows(), ElementsAre(Row{L"8", L"978"}));
}

TEST_F(Currencies, DeleteOfAnUnknownIdIsStillAnnounced) {
    EXPECT_EQ(S_OK, m_Currency->DeleteCurrency(9));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80000, 9)));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Currencies, SelectListsAllWhateverTheRequestSays) {
    m_Currency->SetCurrency(7, 840);
    m_Currency->SetCurrency(8, 978);
    const auto request = NewRequest();
    request->put_SettingId(7);
    for (IdmRequest* asked : {request.Get(), static_cast<IdmRequest*>(nullptr)}) {
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Currency->SelectCurrency(asked, table.Get()));
        EXPECT_THAT(RowsOf(table), UnorderedElementsAre(Row{L"7", L"840"}, Row{L"8", L"978"}));
        EXPECT_TRUE(FieldOf(table, IDM_dmudfcom::fieldCurrencyCode));
    }
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM CURRENCY"));
}

TEST_F(Currencies, SelectHasNoTraceOfItsOwn) {
    EXPECT_EQ(S_OK, m_Currency->SelectCurrency(nullptr, NewTable().Get()));
    const auto traces = Recorder::RecordsOf(L"TRACE");
    EXPECT_THAT(traces, testing::Not(IsEmpty()));
    for (const Recorder::tagRecord& record : traces)
        EXPECT_THAT(record.Function, testing::Not(testing::HasSubstr(L"SelectCurrency")));
}

TEST_F(Currencies, ARefusedStatementIsReportedAndStillAnnounced) {
    m_Currency->SetCurrency(7, 840);
    Sql(L"CREATE TRIGGER NO_CURRENCY FOR CURRENCY BEFORE UPDATE AS BEGIN EXCEPTION ZONE_NOT_PRESENTABLE; END");
    TakeAll();
    EXPECT_EQ(S_OK, m_Currency->SetCurrency(7, 978));
    EXPECT_THAT(Recorder::Asserts(), testing::Contains(testing::StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x80000, 7)));
    Sql(L"DROP TRIGGER NO_CURRENCY");
    EXPECT_EQ(840, Get(7));
}

} // namespace
