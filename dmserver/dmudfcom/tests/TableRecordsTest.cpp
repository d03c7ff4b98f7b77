// Records, the cursor, and the life of table and fields.
#include "TableFixture.h"

namespace dmudfcom_tests {

namespace {

LONG Eof(IdmTable& table) { return Get(table, &IdmTable::get_Eof); }
LONG Bof(IdmTable& table) { return Get(table, &IdmTable::get_Bof); }
LONG Count(IdmTable& table) { return Get(table, &IdmTable::get_RecordCount); }

} // namespace

class RecordsTest : public TableTest {
protected:
    void SetUp() override {
        ASSERT_EQ(m_Table->AddFieldById(fieldSymbol, 0, 0, 0), S_OK);
        m_Symbol = FieldOf(*m_Table, fieldSymbol);
    }
    void Fill(std::initializer_list<LONG> values) {
        for (const LONG value : values)
            AppendLong(*m_Symbol, value);
    }

    CComPtr<IdmField> m_Symbol;
};

TEST_F(RecordsTest, AppendPutPostMakesARecordThatTheWalkFinds) {
    Fill({5, 7});
    EXPECT_EQ(Walk(*m_Symbol), (std::vector<LONG>{5, 7}));
    EXPECT_EQ(Count(*m_Table), 2);
}

TEST_F(RecordsTest, AnEmptyTableIsAtBothEndsWhateverTheMove) {
    for (const auto move : {&IdmTable::First, &IdmTable::Last, &IdmTable::Next, &IdmTable::Prev}) {
        EXPECT_EQ((*m_Table.*move)(), S_OK);
        EXPECT_NE(Eof(*m_Table), 0);
        EXPECT_NE(Bof(*m_Table), 0);
    }
    EXPECT_EQ(Count(*m_Table), 0);
}

TEST_F(RecordsTest, ATableWithoutFieldsIsEmptyAndRefusesAppend) {
    const auto table = MakeTable();
    EXPECT_NE(Eof(*table), 0);
    EXPECT_EQ(table->Append(), E_FAIL);
    EXPECT_EQ(Get(*table, &IdmTable::get_FieldCount), 0);
}

TEST_F(RecordsTest, TheCursorMovesBothWaysAndPastBothEnds) {
    Fill({1, 2, 3});
    m_Table->First();
    EXPECT_EQ(Bof(*m_Table), 0);
    EXPECT_EQ(LongOf(*m_Symbol), 1);
    m_Table->Prev();
    EXPECT_NE(Bof(*m_Table), 0);
    EXPECT_EQ(Eof(*m_Table), 0);
    m_Table->Prev();
    m_Table->Next();
    EXPECT_EQ(Bof(*m_Table), 0);
    EXPECT_EQ(LongOf(*m_Symbol), 1);
    m_Table->Last();
    EXPECT_EQ(LongOf(*m_Symbol), 3);
    m_Table->Next();
    EXPECT_NE(Eof(*m_Table), 0);
    m_Table->Next();
    m_Table->Prev();
    EXPECT_EQ(LongOf(*m_Symbol), 3);
    m_Table->Prev();
    EXPECT_EQ(LongOf(*m_Symbol), 2);
}

TEST_F(RecordsTest, OutsideTheRecordsReadsGiveNothingAndPutsAreRefused) {
    Fill({1});
    m_Table->First();
    m_Table->Next();
    LONG value = 9;
    EXPECT_EQ(m_Symbol->get_AsLong(&value), S_FALSE);
    EXPECT_EQ(value, 0);
    CBstr text;
    EXPECT_EQ(m_Symbol->get_AsString(text.Put()), S_FALSE);
    EXPECT_FALSE(text.IsNull());
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(m_Symbol->put_AsLong(4), E_FAIL);
    EXPECT_EQ(m_Symbol->put_AsString(CBstr(L"4").Get()), E_FAIL);
    EXPECT_EQ(m_Table->Delete(), E_FAIL);
    EXPECT_EQ(Walk(*m_Symbol), std::vector<LONG>{1});
}

TEST_F(RecordsTest, APutIntoTheCurrentRecordNeedsNoPost) {
    Fill({1, 2});
    m_Table->First();
    EXPECT_EQ(m_Symbol->put_AsLong(10), S_OK);
    m_Table->Next();
    EXPECT_EQ(m_Symbol->put_AsLong(20), S_OK);
    EXPECT_EQ(Walk(*m_Symbol), (std::vector<LONG>{10, 20}));
}

TEST_F(RecordsTest, ARecordBeingAppendedIsReadBackButNotCounted) {
    Fill({1});
    m_Table->First();
    ASSERT_EQ(m_Table->Append(), S_OK);
    EXPECT_EQ(LongOf(*m_Symbol), 0);
    EXPECT_EQ(m_Symbol->put_AsLong(2), S_OK);
    EXPECT_EQ(LongOf(*m_Symbol), 2);
    EXPECT_EQ(Count(*m_Table), 1);
    EXPECT_EQ(m_Table->Post(), S_OK);
    EXPECT_EQ(Count(*m_Table), 2);
    EXPECT_EQ(LongOf(*m_Symbol), 2);
    EXPECT_EQ(m_Table->Post(), S_FALSE);
}

TEST_F(RecordsTest, CancelDropsTheAppendedRecordAndLeavesTheCursor) {
    Fill({1, 2});
    m_Table->First();
    m_Table->Append();
    m_Symbol->put_AsLong(99);
    EXPECT_EQ(m_Table->Cancel(), S_OK);
    EXPECT_EQ(LongOf(*m_Symbol), 1);
    EXPECT_EQ(m_Table->Cancel(), S_FALSE);
    EXPECT_EQ(Walk(*m_Symbol), (std::vector<LONG>{1, 2}));
    // What the dropped record held must not show in the next one.
    m_Table->Append();
    EXPECT_EQ(LongOf(*m_Symbol), 0);
    EXPECT_EQ(m_Table->Delete(), S_OK);
    EXPECT_EQ(Count(*m_Table), 2);
}

TEST_F(RecordsTest, AMoveAndASecondAppendPostTheRecord) {
    m_Table->Append();
    m_Symbol->put_AsLong(1);
    m_Table->Append();
    m_Symbol->put_AsLong(2);
    EXPECT_EQ(Walk(*m_Symbol), (std::vector<LONG>{1, 2}));
}

TEST_F(RecordsTest, DeleteMovesToTheNextRecordOrPastTheEnd) {
    Fill({1, 2, 3});
    m_Table->First();
    m_Table->Next();
    EXPECT_EQ(m_Table->Delete(), S_OK);
    EXPECT_EQ(LongOf(*m_Symbol), 3);
    EXPECT_EQ(m_Table->Delete(), S_OK);
    EXPECT_NE(Eof(*m_Table), 0);
    EXPECT_EQ(Walk(*m_Symbol), std::vector<LONG>{1});
    m_Table->First();
    EXPECT_EQ(m_Table->Delete(), S_OK);
    EXPECT_EQ(Count(*m_Table), 0);
    EXPECT_NE(Eof(*m_Table), 0);
    Fill({7});
    EXPECT_EQ(Walk(*m_Symbol), std::vector<LONG>{7});
}

TEST_F(RecordsTest, ADeletedRecordsPlaceIsUsedAgainAsAnEmptyRecordAtTheEnd) {
    AddField(L"NOTE", EColumnType::Text);
    const auto note = FieldOf(*m_Table, L"NOTE");
    Fill({1, 2, 3});
    m_Table->First();
    note->put_AsString(CBstr(L"old").Get());
    m_Table->Delete();
    Fill({4});
    EXPECT_EQ(Walk(*m_Symbol), (std::vector<LONG>{2, 3, 4}));
    m_Table->Last();
    EXPECT_EQ(TextOf(*note), L"");
    EXPECT_TRUE(m_Rows->IsNull(2, 1));
}

TEST_F(RecordsTest, ManyDeletionsAndAppendsKeepOrderAndValues) {
    std::vector<LONG> expected;
    for (LONG i = 0; i < 3000; ++i) {
        AppendLong(*m_Symbol, i);
        expected.push_back(i);
    }
    for (LONG round = 0; round < 500; ++round) {
        m_Table->First();
        for (LONG step = 0; step < round % 7; ++step)
            m_Table->Next();
        ASSERT_EQ(m_Table->Delete(), S_OK);
        expected.erase(expected.begin() + round % 7);
        if (round % 2 == 0) {
            AppendLong(*m_Symbol, 10000 + round);
            expected.push_back(10000 + round);
        }
    }
    EXPECT_EQ(Walk(*m_Symbol), expected);
}

TEST_F(RecordsTest, PostToPutsTheRecordAtAPosition) {
    Fill({1, 2, 3});
    EXPECT_EQ(m_Table->PostTo(0), E_FAIL);
    m_Table->Append();
    m_Symbol->put_AsLong(10);
    EXPECT_EQ(m_Table->PostTo(-1), E_INVALIDARG);
    EXPECT_EQ(m_Table->PostTo(4), E_INVALIDARG);
    EXPECT_EQ(m_Table->PostTo(1), S_OK);
    EXPECT_EQ(LongOf(*m_Symbol), 10);
    m_Table->Next();
    EXPECT_EQ(LongOf(*m_Symbol), 2);
    m_Table->Append();
    m_Symbol->put_AsLong(20);
    EXPECT_EQ(m_Table->PostTo(4), S_OK);
    EXPECT_EQ(Walk(*m_Symbol), (std::vector<LONG>{1, 10, 2, 3, 20}));
}

TEST_F(RecordsTest, ClearKeepsFieldsAndTheFieldObjectsHeld) {
    Fill({1, 2});
    m_Table->Append();
    EXPECT_EQ(m_Table->Clear(), S_OK);
    EXPECT_EQ(Count(*m_Table), 0);
    EXPECT_NE(Eof(*m_Table), 0);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 1);
    EXPECT_EQ(m_Table->Post(), S_FALSE);
    Fill({3});
    EXPECT_EQ(Walk(*m_Symbol), std::vector<LONG>{3});
    EXPECT_EQ(FieldOf(*m_Table, fieldSymbol), m_Symbol);
}

TEST_F(RecordsTest, ACursorNeverPlacedStandsOnTheFirstRecord) {
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 8);
    m_Rows->AppendRow();
    EXPECT_EQ(LongOf(*m_Symbol), 8);
    m_Table->Clear();
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 9);
    EXPECT_EQ(LongOf(*m_Symbol), 9);
}

TEST_F(RecordsTest, RowsInBulkDoNotMoveTheCursor) {
    Fill({1, 2});
    m_Table->First();
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 3);
    EXPECT_EQ(LongOf(*m_Symbol), 1);
    m_Table->Last();
    EXPECT_EQ(LongOf(*m_Symbol), 3);
    m_Table->Next();
    m_Rows->AppendRow();
    EXPECT_NE(Eof(*m_Table), 0);
}

TEST_F(RecordsTest, RowsInBulkAndARecordBeingAppendedStandInTheOrderOfPosting) {
    m_Table->Append();
    m_Symbol->put_AsLong(1);
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 2);
    EXPECT_EQ(LongOf(*m_Symbol), 1);
    m_Table->Post();
    EXPECT_EQ(Walk(*m_Symbol), (std::vector<LONG>{2, 1}));
}

TEST_F(RecordsTest, IdAndContentsArePlainValues) {
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_Id), 0);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_Contents), 0);
    EXPECT_EQ(m_Table->put_Id(-4), S_OK);
    EXPECT_EQ(m_Table->put_Contents(17), S_OK);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_Id), -4);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_Contents), 17);
}

TEST_F(RecordsTest, NullOutPointersAreRefused) {
    for (const auto get : {&IdmTable::get_Id, &IdmTable::get_Contents, &IdmTable::get_FieldCount,
                           &IdmTable::get_RecordCount, &IdmTable::get_Eof, &IdmTable::get_Bof, &IdmTable::GotoKey,
                           &IdmTable::get_KeyRecordCount, &IdmTable::get_KeyPosition})
        EXPECT_EQ((*m_Table.*get)(nullptr), E_POINTER);
    EXPECT_EQ(m_Table->get_Field(0, nullptr), E_POINTER);
    EXPECT_EQ(m_Table->get_FieldById(fieldSymbol, nullptr), E_POINTER);
    EXPECT_EQ(m_Table->get_FieldByName(CBstr(L"SYMBOL").Get(), nullptr), E_POINTER);
    EXPECT_EQ(m_Table->get_AsVariant(nullptr), E_POINTER);
    EXPECT_EQ(m_Table->Attach(nullptr), E_POINTER);
}

// Life

TEST(TableLife, EveryReferenceOnAFieldIsOneOnItsTable) {
    auto table = MakeTable();
    ASSERT_EQ(table->AddFieldById(fieldSymbol, 0, 0, 0), S_OK);
    EXPECT_EQ(References(*table), 1U);
    IdmField* field = nullptr;
    ASSERT_EQ(table->get_FieldById(fieldSymbol, &field), S_OK);
    EXPECT_EQ(References(*table), 2U);
    EXPECT_EQ(field->AddRef(), 3U);
    EXPECT_EQ(References(*table), 3U);
    EXPECT_EQ(field->Release(), 2U);
    IUnknown* unknown = nullptr;
    ASSERT_EQ(field->QueryInterface(platform::UuidOf<IUnknown>, reinterpret_cast<void**>(&unknown)), S_OK);
    EXPECT_EQ(References(*table), 3U);
    EXPECT_EQ(unknown->Release(), 2U);
    EXPECT_EQ(field->Release(), 1U);
}

TEST(TableLife, AHeldFieldKeepsItsTableAlive) {
    const LONG before = platform::CModuleCount::Value();
    auto table = MakeTable();
    ASSERT_EQ(table->AddFieldById(fieldSymbol, 0, 0, 0), S_OK);
    auto field = FieldOf(*table, fieldSymbol);
    table->Append();
    field->put_AsLong(3);
    table->Post();
    table.Reset();
    EXPECT_EQ(LongOf(*field), 3);
    EXPECT_EQ(platform::CModuleCount::Value(), before + 1);
    field.Reset();
    EXPECT_EQ(platform::CModuleCount::Value(), before);
}

TEST(TableLife, AFieldIsAnObjectOfItsOwnAndTheSameForTheSameField) {
    const auto table = MakeTable();
    table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto field = FieldOf(*table, fieldSymbol);
    EXPECT_EQ(field, FieldOf(*table, L"symbol"));
    CComPtr<IdmField> byIndex;
    EXPECT_EQ(table->get_Field(0, byIndex.Put()), S_OK);
    EXPECT_EQ(field, byIndex);
    EXPECT_NE(field.As<IUnknown>(), table.As<IUnknown>());
    EXPECT_TRUE(field.As<IDispatch>());
    EXPECT_FALSE(field.As<IdmTable>());
    EXPECT_FALSE(table.As<IdmField>());
}

} // namespace dmudfcom_tests
