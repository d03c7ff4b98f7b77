#include "CommaLocale.h"
#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

#include <limits>
#include <sstream>

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Settings : public StorageTest {
protected:
    LONG Insert(LONG priceScale, double pointValue, LONG dailyLimit, double minMovement) {
        LONG key = 0;
        EXPECT_EQ(S_OK, m_Storage->InsertSetting(priceScale, pointValue, dailyLimit, minMovement, &key));
        EXPECT_GE(key, 1);
        return key;
    }
    CComPtr<IdmTable> Select(LONG key) {
        const auto request = NewRequest();
        EXPECT_EQ(S_OK, request->put_SettingId(key));
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectSetting(request.Get(), table.Get()));
        return table;
    }
};

TEST_F(Settings, InsertGivesANewKeyAndStoresTheFourNumbers) {
    const LONG key = Insert(100, 50, 1000000, 0.25);
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO SETTINGS VALUES(" + Text(key) +
                                          L",100,50.000000,1000000,0.250000)'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x20, 0)));
    const auto table = Select(key);
    ASSERT_EQ(1, RecordCount(table));
    table->First();
    LONG number = 0;
    double real = 0;
    FieldOf(table, IDM_dmudfcom::fieldSetting)->get_AsLong(&number);
    EXPECT_EQ(key, number);
    FieldOf(table, IDM_dmudfcom::fieldPriceScale)->get_AsLong(&number);
    EXPECT_EQ(100, number);
    FieldOf(table, IDM_dmudfcom::fieldPointValue)->get_AsDouble(&real);
    EXPECT_EQ(50.0, real);
    FieldOf(table, IDM_dmudfcom::fieldDailyLimit)->get_AsLong(&number);
    EXPECT_EQ(1000000, number);
    FieldOf(table, IDM_dmudfcom::fieldMinMovement)->get_AsDouble(&real);
    EXPECT_EQ(0.25, real);
}

TEST_F(Settings, AValueIsWrittenWithSixDecimalsAndLosesMore) {
    const LONG key = Insert(1, 0.12345678, 1, 0.1);
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'INSERT INTO SETTINGS VALUES(" + Text(key) + L",1,0.123457,1,0.100000)'"));
}

TEST_F(Settings, ACommaLocaleStillWritesAPoint) {
    LONG key = 0;
    {
        const CCommaLocale locale;
        std::wostringstream text;
        text << 0.5;
        ASSERT_EQ(L"0,5", text.str());
        key = Insert(1, 0.1, 1, 0.5);
        EXPECT_EQ(S_OK, m_Storage->UpdateSetting(key, 1, 0.25, 1, 0.75));
    }
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'INSERT INTO SETTINGS VALUES(" + Text(key) + L",1,0.100000,1,0.500000)'",
                            L"sql = 'UPDATE SETTINGS SET PRICE_SCALE=1, POINT_VALUE=0.250000, DAILY_LIMIT=1, "
                            L"MIN_MOVEMENT=0.750000 WHERE SETTING=" +
                                Text(key) + L"'"));
    EXPECT_THAT(Sql(L"SELECT POINT_VALUE, MIN_MOVEMENT FROM SETTINGS"), ElementsAre(Row{L"0.25", L"0.75"}));
}

TEST_F(Settings, InsertRefusesValuesOutOfRangeAndWarnsOfThePrices) {
    struct tagCase {
        LONG PriceScale;
        double PointValue;
        LONG DailyLimit;
        double MinMovement;
        std::vector<std::wstring> Warnings;
    };
    const std::vector<tagCase> cases{
        {0, 1, 1, 1, {}},
        {-1, 1, 1, 1, {}},
        {1, 0, 1, 1, {L"[Warning] PointValue = 0.000000. [Setting wasn't inserted]"}},
        {1, -2.5, 1, 1, {L"[Warning] PointValue = -2.500000. [Setting wasn't inserted]"}},
        {1, 1000000000.0, 1, 1, {L"[Warning] PointValue = 1000000000.000000. [Setting wasn't inserted]"}},
        {1, 1, 0, 1, {}},
        {1, 1, 1, 0, {L"[Warning] MinMovement = 0.000000. [Setting wasn't inserted]"}},
        {1, 1, 1, 1000000000.0, {L"[Warning] MinMovement = 1000000000.000000. [Setting wasn't inserted]"}},
        // The first value that fails ends the test.
        {0, 0, 0, 0, {}},
        {1, 0, 0, 0, {L"[Warning] PointValue = 0.000000. [Setting wasn't inserted]"}},
        {1, 1, 0, 0, {}},
    };
    for (const tagCase& values : cases) {
        TakeAll();
        LONG key = -1;
        EXPECT_EQ(E_INVALIDARG, m_Storage->InsertSetting(values.PriceScale, values.PointValue, values.DailyLimit,
                                                         values.MinMovement, &key));
        EXPECT_EQ(-1, key);
        EXPECT_EQ(values.Warnings, Recorder::Messages());
        EXPECT_THAT(m_Changes.Take(), IsEmpty());
    }
    EXPECT_EQ(0, RecordCount(Select(0)));
}

TEST_F(Settings, InsertRefusesWhatIsNoNumber) {
    LONG key = -1;
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertSetting(1, none, 1, 1, &key));
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertSetting(1, 1, 1, none, &key));
}

TEST_F(Settings, InsertTakesTheLargestValueBelowTheLimit) {
    const LONG key = Insert(1, 999999999, 1, 999999999);
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO SETTINGS VALUES(" + Text(key) +
                                          L",1,999999999.000000,1,999999999.000000)'"));
}

TEST_F(Settings, InsertRefusesANullOutPointerAfterTheValues) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertSetting(1, 1, 1, 1, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertSetting(1, 0, 1, 1, nullptr));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(L"[Warning] PointValue = 0.000000. [Setting wasn't inserted]"));
}

TEST_F(Settings, SelectWithKeyZeroListsAll) {
    const LONG one = Insert(1, 1, 1, 1);
    const LONG two = Insert(2, 2, 2, 2);
    std::vector<std::wstring> keys;
    for (const Row& row : RowsOf(Select(0)))
        keys.push_back(row[0]);
    EXPECT_THAT(keys, UnorderedElementsAre(Text(one), Text(two)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SETTINGS"));
}

TEST_F(Settings, SelectOfOneKeyAndOfAnUnknownOne) {
    const LONG one = Insert(1, 1, 1, 1);
    Insert(2, 2, 2, 2);
    EXPECT_EQ(1, RecordCount(Select(one)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SETTINGS WHERE SETTING=" + Text(one)));
    EXPECT_EQ(0, RecordCount(Select(2000000000)));
}

TEST_F(Settings, SelectRefusesANullRequestOrTable) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectSetting(nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectSetting(NewRequest().Get(), nullptr));
}

TEST_F(Settings, UpdateChangesAllFourNumbers) {
    const LONG key = Insert(1, 1, 1, 1);
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->UpdateSetting(key, 1000, 12.5, 7, 0.0625));
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'UPDATE SETTINGS SET PRICE_SCALE=1000, POINT_VALUE=12.500000, DAILY_LIMIT=7, "
                            L"MIN_MOVEMENT=0.062500 WHERE SETTING=" +
                            Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x20, 0)));
    EXPECT_THAT(Sql(L"SELECT PRICE_SCALE, POINT_VALUE, DAILY_LIMIT, MIN_MOVEMENT FROM SETTINGS"),
                ElementsAre(Row{L"1000", L"12.5", L"7", L"0.0625"}));
}

TEST_F(Settings, UpdateWarnsInItsOwnWords) {
    const LONG key = Insert(1, 1, 1, 1);
    TakeAll();
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateSetting(key, 0, 1, 1, 1));
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateSetting(key, 1, 1000000000.0, 1, 1));
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateSetting(key, 1, 1, 0, 1));
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateSetting(key, 1, 1, 1, 0));
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(L"[Warning] PointValue = 1000000000.000000. [Setting wasn't updated]",
                            L"[Warning] MinMovement = 0.000000. [Setting wasn't updated]"));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Settings, UpdateRefusesAKeyBelowOneAfterTheValues) {
    Insert(1, 1, 1, 1);
    TakeAll();
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateSetting(0, 1, 1, 1, 1));
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateSetting(-5, 1, 1, 1, 1));
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateSetting(0, 1, 0, 1, 1));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(L"[Warning] PointValue = 0.000000. [Setting wasn't updated]"));
}

TEST_F(Settings, UpdateOfAnUnknownKeyDoesNothingAndAnnouncesNothing) {
    Insert(1, 1, 1, 1);
    TakeAll();
    EXPECT_EQ(S_FALSE, m_Storage->UpdateSetting(2000000000, 1, 1, 1, 1));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Settings, DeleteRemovesTheRowAlthoughAnExchangeUsesIt) {
    const LONG key = Insert(1, 1, 1, 1);
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE, EXCHANGE_NAME, SETTING) VALUES (77,'X'," + Text(key) + L")");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteSetting(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SETTINGS WHERE SETTING=" + Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x20, 0)));
    EXPECT_EQ(0, RecordCount(Select(key)));
    Sql(L"DELETE FROM EXCHANGES");
}

TEST_F(Settings, DeleteOfAnUnknownKeyDoesNothing) {
    Insert(1, 1, 1, 1);
    TakeAll();
    EXPECT_EQ(S_FALSE, m_Storage->DeleteSetting(2000000000));
    EXPECT_EQ(S_FALSE, m_Storage->DeleteSetting(0));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(1, RecordCount(Select(0)));
}

} // namespace
