#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Holidays : public StorageTest {
protected:
    LONG Insert(const wchar_t* name) {
        LONG key = 0;
        EXPECT_EQ(S_OK, m_Storage->InsertHoliday(CBstr(name).Get(), &key));
        EXPECT_GE(key, 1);
        return key;
    }
    static CComPtr<IdmRequest> Request(LONG key) {
        const auto request = NewRequest();
        EXPECT_EQ(S_OK, request->put_HolidayId(key));
        return request;
    }
    CComPtr<IdmTable> Select(LONG key) {
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectHoliday(Request(key).Get(), table.Get()));
        return table;
    }
    CComPtr<IdmTable> SelectDetails(LONG key) {
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectHolidayDetails(Request(key).Get(), table.Get()));
        return table;
    }
    // A table in the column order of the dates, its cursor on the first record.
    static CComPtr<IdmTable> Details(LONG key, const std::vector<LONG>& days) {
        const auto table = EmptyDetails();
        for (const LONG day : days) {
            table->Append();
            FieldOf(table, IDM_dmudfcom::fieldHoliday)->put_AsLong(key);
            FieldOf(table, IDM_dmudfcom::fieldHolidayStartDate)->put_AsLong(day);
            table->Post();
        }
        table->First();
        return table;
    }
    static CComPtr<IdmTable> EmptyDetails() {
        const auto table = NewTable();
        for (const wchar_t* name : {L"HOLIDAY", L"HOLIDAY_DESCRIPTION", L"HOLIDAY_START_DATE", L"HOLIDAY_END_DATE"})
            EXPECT_EQ(S_OK, table->AddFieldByName(CBstr(name).Get(), 0, 0, 0));
        return table;
    }
    std::vector<Row> Dates(LONG key) {
        return Sql(L"SELECT HOLIDAY_START_DATE FROM HOLIDAY_DETAILS WHERE HOLIDAY=" + Text(key) +
                   L" ORDER BY HOLIDAY_START_DATE");
    }
};

constexpr LONG Christmas2026 = 46381; // 25 December 2026
constexpr LONG NewYear2027 = 46388;   // 1 January 2027

TEST_F(Holidays, InsertGivesANewKeyAndStoresTheName) {
    const LONG key = Insert(L"NYSE");
    EXPECT_THAT(Sql(L"SELECT HOLIDAY, HOLIDAY_NAME FROM HOLIDAYS"), ElementsAre(Row{Text(key), L"NYSE"}));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO HOLIDAYS VALUES(" + Text(key) + L",'NYSE')'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x8, 0)));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Holidays, InsertedKeysDiffer) { EXPECT_NE(Insert(L"One"), Insert(L"Two")); }

TEST_F(Holidays, InsertKeepsASingleQuoteWhole) {
    const LONG key = Insert(L"St. Patrick's");
    EXPECT_THAT(Sql(L"SELECT HOLIDAY_NAME FROM HOLIDAYS"), ElementsAre(Row{L"St. Patrick's"}));
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'INSERT INTO HOLIDAYS VALUES(" + Text(key) + L",'St. Patrick''s')'"));
}

TEST_F(Holidays, InsertOfANameOfQuotesOnlyDoublesThemOnTheWay) {
    const LONG key = Insert(L"'''");
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO HOLIDAYS VALUES(" + Text(key) + L",'''''''')'"));
    EXPECT_THAT(Sql(L"SELECT HOLIDAY_NAME FROM HOLIDAYS"), ElementsAre(Row{L"'''"}));
}

TEST_F(Holidays, InsertKeepsEveryAlphabet) {
    Insert(L"Мосбиржа 東証 \U0001F4C8");
    EXPECT_THAT(Sql(L"SELECT HOLIDAY_NAME FROM HOLIDAYS"), ElementsAre(Row{L"Мосбиржа 東証 \U0001F4C8"}));
}

TEST_F(Holidays, InsertRefusesAnEmptyNameAndANullOutPointer) {
    LONG key = -1;
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertHoliday(CBstr(L"").Get(), &key));
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertHoliday(nullptr, &key));
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertHoliday(CBstr(L"NYSE").Get(), nullptr));
    EXPECT_EQ(-1, key);
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Statements(), IsEmpty());
}

TEST_F(Holidays, ARefusedInsertIsReportedAndStillAnnounced) {
    const std::wstring name(200, L'x');
    LONG key = 0;
    EXPECT_EQ(S_OK, m_Storage->InsertHoliday(CBstr(name).Get(), &key));
    EXPECT_GE(key, 1);
    EXPECT_THAT(Recorder::Asserts(), testing::Contains(testing::StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x8, 0)));
    EXPECT_THAT(Sql(L"SELECT * FROM HOLIDAYS"), IsEmpty());
}

TEST_F(Holidays, ANameThatOverflowsTheStatementIsReportedAndNothingRuns) {
    LONG key = -1;
    EXPECT_EQ(S_FALSE, m_Storage->InsertHoliday(CBstr(std::wstring(1100, L'x')).Get(), &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Errors(), testing::SizeIs(1));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Holidays, SelectWithKeyZeroListsAll) {
    const LONG nyse = Insert(L"NYSE");
    const LONG cme = Insert(L"CME");
    EXPECT_THAT(RowsOf(Select(0)), UnorderedElementsAre(Row{Text(nyse), L"NYSE"}, Row{Text(cme), L"CME"}));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM HOLIDAYS"));
}

TEST_F(Holidays, SelectOfOneKeyGivesItsRow) {
    Insert(L"NYSE");
    const LONG cme = Insert(L"CME");
    EXPECT_THAT(RowsOf(Select(cme)), ElementsAre(Row{Text(cme), L"CME"}));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM HOLIDAYS WHERE HOLIDAY=" + Text(cme)));
}

TEST_F(Holidays, SelectOfAnUnknownKeyGivesAnEmptyTable) {
    Insert(L"NYSE");
    const auto table = Select(2000000000);
    EXPECT_EQ(0, RecordCount(table));
    LONG eof = 0;
    EXPECT_EQ(S_OK, table->First());
    EXPECT_EQ(S_OK, table->get_Eof(&eof));
    EXPECT_NE(0, eof);
}

TEST_F(Holidays, SelectFillsATableWithoutFieldsWithOneForEachColumn) {
    Insert(L"NYSE");
    const auto table = Select(0);
    LONG fields = 0;
    table->get_FieldCount(&fields);
    EXPECT_EQ(2, fields);
    EXPECT_TRUE(FieldOf(table, IDM_dmudfcom::fieldHoliday));
    EXPECT_TRUE(FieldOf(table, IDM_dmudfcom::fieldHolidayName));
}

TEST_F(Holidays, SelectRefusesANullRequestOrTable) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectHoliday(nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectHoliday(NewRequest().Get(), nullptr));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectHolidayDetails(nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectHolidayDetails(NewRequest().Get(), nullptr));
}

TEST_F(Holidays, SelectsAreNotTraced) {
    Select(0);
    SelectDetails(0);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Holidays, UpdateChangesTheName) {
    const LONG key = Insert(L"NYSE");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->UpdateHoliday(key, CBstr(L"Trader's").Get()));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'UPDATE HOLIDAYS SET HOLIDAY_NAME='Trader''s' WHERE HOLIDAY=" +
                                          Text(key) + L" '"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x8, 0)));
    EXPECT_THAT(RowsOf(Select(key)), ElementsAre(Row{Text(key), L"Trader's"}));
}

TEST_F(Holidays, UpdateRefusesAnEmptyNameAndAnUnknownKey) {
    Insert(L"NYSE");
    TakeAll();
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateHoliday(1, CBstr(L"").Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->UpdateHoliday(1, nullptr));
    EXPECT_EQ(S_FALSE, m_Storage->UpdateHoliday(2000000000, CBstr(L"x").Get()));
    EXPECT_EQ(S_FALSE, m_Storage->UpdateHoliday(0, CBstr(L"x").Get()));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Holidays, DeleteTakesTheDatesAndAnnouncesTheCalendarTwice) {
    const LONG key = Insert(L"NYSE");
    ASSERT_EQ(S_OK, m_Storage->InsertHolidayDetails(Details(key, {Christmas2026, NewYear2027}).Get()));
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteHoliday(key));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x8, 0), Change(0x8, 0)));
    // The first of the two statements is not traced.
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM HOLIDAYS WHERE HOLIDAY=" + Text(key) + L"'"));
    EXPECT_THAT(Dates(key), IsEmpty());
    EXPECT_EQ(0, RecordCount(Select(key)));
}

TEST_F(Holidays, DeleteOfAnUnknownKeyDoesNothing) {
    Insert(L"NYSE");
    TakeAll();
    EXPECT_EQ(S_FALSE, m_Storage->DeleteHoliday(2000000000));
    EXPECT_EQ(S_FALSE, m_Storage->DeleteHoliday(0));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(1, RecordCount(Select(0)));
}

TEST_F(Holidays, DeleteGoesAheadAlthoughAnExchangeUsesTheCalendar) {
    const LONG key = Insert(L"NYSE");
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE, EXCHANGE_NAME, HOLIDAY) VALUES (77,'X'," + Text(key) + L")");
    EXPECT_EQ(S_OK, m_Storage->DeleteHoliday(key));
    EXPECT_EQ(0, RecordCount(Select(key)));
    Sql(L"DELETE FROM EXCHANGES");
}

TEST_F(Holidays, InsertDetailsStoresOneRowForEachRecord) {
    const LONG key = Insert(L"NYSE");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->InsertHolidayDetails(Details(key, {Christmas2026, NewYear2027}).Get()));
    EXPECT_THAT(Dates(key), ElementsAre(Row{L"25.12.2026"}, Row{L"01.01.2027"}));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=" + Text(key) + L"'",
                                          L"sql = 'INSERT INTO HOLIDAY_DETAILS VALUES(?,?,?,?)'"));
    // Once for the delete of what was there, once for the insert.
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x10, 0), Change(0x10, 0)));
}

TEST_F(Holidays, InsertDetailsReplacesTheDatesOfItsCalendarOnly) {
    const LONG nyse = Insert(L"NYSE");
    const LONG cme = Insert(L"CME");
    m_Storage->InsertHolidayDetails(Details(nyse, {Christmas2026}).Get());
    m_Storage->InsertHolidayDetails(Details(cme, {Christmas2026}).Get());
    EXPECT_EQ(S_OK, m_Storage->InsertHolidayDetails(Details(nyse, {NewYear2027}).Get()));
    EXPECT_THAT(Dates(nyse), ElementsAre(Row{L"01.01.2027"}));
    EXPECT_THAT(Dates(cme), ElementsAre(Row{L"25.12.2026"}));
}

TEST_F(Holidays, InsertDetailsReadsTheCalendarFromTheCurrentRecord) {
    const LONG nyse = Insert(L"NYSE");
    const LONG cme = Insert(L"CME");
    m_Storage->InsertHolidayDetails(Details(nyse, {Christmas2026}).Get());
    m_Storage->InsertHolidayDetails(Details(cme, {Christmas2026}).Get());
    const auto mixed = Details(nyse, {NewYear2027});
    mixed->Append();
    FieldOf(mixed, IDM_dmudfcom::fieldHoliday)->put_AsLong(cme);
    FieldOf(mixed, IDM_dmudfcom::fieldHolidayStartDate)->put_AsLong(NewYear2027);
    mixed->Post();
    mixed->Last();
    EXPECT_EQ(S_OK, m_Storage->InsertHolidayDetails(mixed.Get()));
    EXPECT_THAT(Dates(cme), ElementsAre(Row{L"01.01.2027"}));
    EXPECT_THAT(Dates(nyse), ElementsAre(Row{L"25.12.2026"}, Row{L"01.01.2027"}));
}

TEST_F(Holidays, InsertDetailsOfAnEmptyTableInsertsNothingAndStillAnnounces) {
    const LONG key = Insert(L"NYSE");
    m_Storage->InsertHolidayDetails(Details(key, {Christmas2026}).Get());
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->InsertHolidayDetails(EmptyDetails().Get()));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Holiday"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x10, 0)));
    EXPECT_THAT(Dates(key), ElementsAre(Row{L"25.12.2026"}));
}

TEST_F(Holidays, InsertDetailsWithoutTheCalendarFieldDeletesNothingAndStillInserts) {
    const LONG key = Insert(L"NYSE");
    m_Storage->InsertHolidayDetails(Details(key, {Christmas2026}).Get());
    // The columns of the statement in order, the first under a name that the field map does not know.
    const auto table = NewTable();
    table->AddNewField(CBstr(L"CALENDAR").Get(), 6, 0);
    for (const wchar_t* name : {L"HOLIDAY_DESCRIPTION", L"HOLIDAY_START_DATE", L"HOLIDAY_END_DATE"})
        table->AddFieldByName(CBstr(name).Get(), 0, 0, 0);
    table->Append();
    CComPtr<IdmField> calendar;
    table->get_Field(0, calendar.Put());
    calendar->put_AsLong(key);
    FieldOf(table, IDM_dmudfcom::fieldHolidayStartDate)->put_AsLong(NewYear2027);
    table->Post();
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->InsertHolidayDetails(table.Get()));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"HolidayField"));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO HOLIDAY_DETAILS VALUES(?,?,?,?)'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x10, 0)));
    EXPECT_THAT(Dates(key), ElementsAre(Row{L"25.12.2026"}, Row{L"01.01.2027"}));
}

TEST_F(Holidays, InsertDetailsRefusesANullTableAfterTheReport) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertHolidayDetails(nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Table"));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Holidays, SelectDetailsByKeyAndAll) {
    const LONG nyse = Insert(L"NYSE");
    const LONG cme = Insert(L"CME");
    m_Storage->InsertHolidayDetails(Details(nyse, {Christmas2026, NewYear2027}).Get());
    m_Storage->InsertHolidayDetails(Details(cme, {Christmas2026}).Get());
    EXPECT_EQ(2, RecordCount(SelectDetails(nyse)));
    EXPECT_EQ(3, RecordCount(SelectDetails(0)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM HOLIDAY_DETAILS"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM HOLIDAY_DETAILS WHERE HOLIDAY=" + Text(nyse)));
    const auto table = SelectDetails(cme);
    table->First();
    LONG day = 0;
    FieldOf(table, IDM_dmudfcom::fieldHolidayStartDate)->get_AsLong(&day);
    EXPECT_EQ(Christmas2026, day);
}

TEST_F(Holidays, DeleteDetailsRemovesAllDatesOfTheCalendar) {
    const LONG key = Insert(L"NYSE");
    m_Storage->InsertHolidayDetails(Details(key, {Christmas2026, NewYear2027}).Get());
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteHolidayDetails(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=" + Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x10, 0)));
    EXPECT_THAT(Dates(key), IsEmpty());
    EXPECT_EQ(1, RecordCount(Select(key)));
}

TEST_F(Holidays, DeleteDetailsOfACalendarWithoutDatesDoesNothing) {
    const LONG key = Insert(L"NYSE");
    TakeAll();
    EXPECT_EQ(S_FALSE, m_Storage->DeleteHolidayDetails(key));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Holidays, DeleteDetailsOfKeyZeroIsReportedAndFindsNoRow) {
    const LONG key = Insert(L"NYSE");
    m_Storage->InsertHolidayDetails(Details(key, {Christmas2026}).Get());
    TakeAll();
    EXPECT_EQ(S_FALSE, m_Storage->DeleteHolidayDetails(0));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Holiday"));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_EQ(1U, Dates(key).size());
}

TEST_F(Holidays, DeleteDetails2RemovesOneDateByItsText) {
    const LONG key = Insert(L"NYSE");
    m_Storage->InsertHolidayDetails(Details(key, {Christmas2026, NewYear2027}).Get());
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteHolidayDetails2(key, CBstr(L"25.12.2026").Get()));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=" + Text(key) +
                                          L" AND HOLIDAY_START_DATE='25.12.2026''"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x10, 0)));
    EXPECT_THAT(Dates(key), ElementsAre(Row{L"01.01.2027"}));
}

TEST_F(Holidays, DeleteDetails2OfADateThatComparesUnequalDeletesNothingAndStillAnnounces) {
    const LONG key = Insert(L"NYSE");
    m_Storage->InsertHolidayDetails(Details(key, {Christmas2026}).Get());
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteHolidayDetails2(key, CBstr(L"26.12.2026").Get()));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x10, 0)));
    EXPECT_EQ(1U, Dates(key).size());
}

TEST_F(Holidays, DeleteDetails2EscapesTheDateAndSurvivesOneThatIsNone) {
    const LONG key = Insert(L"NYSE");
    m_Storage->InsertHolidayDetails(Details(key, {Christmas2026}).Get());
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteHolidayDetails2(key, CBstr(L"x' OR 1=1 --").Get()));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=" + Text(key) +
                                          L" AND HOLIDAY_START_DATE='x'' OR 1=1 --''"));
    EXPECT_THAT(Recorder::Asserts(), testing::Not(IsEmpty()));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x10, 0)));
    EXPECT_EQ(1U, Dates(key).size());
}

TEST_F(Holidays, DeleteDetails2RefusesAnEmptyDateAndAnUnknownCalendar) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->DeleteHolidayDetails2(1, CBstr(L"").Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->DeleteHolidayDetails2(1, nullptr));
    EXPECT_EQ(S_FALSE, m_Storage->DeleteHolidayDetails2(2000000000, CBstr(L"25.12.2026").Get()));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Holidays, ADatesTableOfTheWrongShapeIsReportedAndInsertsNothing) {
    const LONG key = Insert(L"NYSE");
    const auto table = NewTable();
    table->AddFieldByName(CBstr(L"HOLIDAY").Get(), 0, 0, 0);
    table->Append();
    FieldOf(table, IDM_dmudfcom::fieldHoliday)->put_AsLong(key);
    table->Post();
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->InsertHolidayDetails(table.Get()));
    EXPECT_THAT(Recorder::Asserts(), testing::Not(IsEmpty()));
    EXPECT_THAT(Dates(key), IsEmpty());
}

} // namespace
