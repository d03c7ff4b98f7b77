// Tables that show the same records.
#include "TableFixture.h"

#include "platform/com/object.h"

namespace dmudfcom_tests {

namespace {

CComPtr<IdmTable> TableOf(std::initializer_list<LONG> symbols) {
    const auto table = MakeTable();
    table->AddFieldById(fieldCategory, 0, 0, 0);
    table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto field = FieldOf(*table, fieldSymbol);
    for (const LONG symbol : symbols) {
        table->Append();
        field->put_AsLong(symbol);
        table->Post();
    }
    return table;
}

// A table of another making: all that is asked of it is its bytes.
class CForeignTable final
    : public platform::CObject<CForeignTable, platform::ECounter::Interlocked, platform::CDispatchImpl<IdmTable>> {
public:
    CForeignTable(HRESULT status, CVariant bytes) : m_Status(status), m_Bytes(std::move(bytes)) {}

    HRESULT get_AsVariant(VARIANT* Value) override {
        return FAILED(m_Status) ? m_Status : VariantCopy(Value, &m_Bytes.Get());
    }

    HRESULT get_Id(LONG*) override { return E_NOTIMPL; }
    HRESULT put_Id(LONG) override { return E_NOTIMPL; }
    HRESULT get_FieldCount(LONG*) override { return E_NOTIMPL; }
    HRESULT get_RecordCount(LONG*) override { return E_NOTIMPL; }
    HRESULT get_Contents(LONG*) override { return E_NOTIMPL; }
    HRESULT put_Contents(LONG) override { return E_NOTIMPL; }
    HRESULT get_Field(LONG, IdmField**) override { return E_NOTIMPL; }
    HRESULT get_FieldById(LONG, IdmField**) override { return E_NOTIMPL; }
    HRESULT get_FieldByName(BSTR, IdmField**) override { return E_NOTIMPL; }
    HRESULT AddFieldById(LONG, LONG, LONG, LONG) override { return E_NOTIMPL; }
    HRESULT AddFieldByName(BSTR, LONG, LONG, LONG) override { return E_NOTIMPL; }
    HRESULT Clear() override { return E_NOTIMPL; }
    HRESULT Append() override { return E_NOTIMPL; }
    HRESULT Post() override { return E_NOTIMPL; }
    HRESULT Cancel() override { return E_NOTIMPL; }
    HRESULT Delete() override { return E_NOTIMPL; }
    HRESULT First() override { return E_NOTIMPL; }
    HRESULT Last() override { return E_NOTIMPL; }
    HRESULT Prev() override { return E_NOTIMPL; }
    HRESULT Next() override { return E_NOTIMPL; }
    HRESULT get_Eof(LONG*) override { return E_NOTIMPL; }
    HRESULT get_Bof(LONG*) override { return E_NOTIMPL; }
    HRESULT CreateIndex(BSTR, LONG) override { return E_NOTIMPL; }
    HRESULT SetIndex(LONG) override { return E_NOTIMPL; }
    HRESULT ResetIndex() override { return E_NOTIMPL; }
    HRESULT SetKey() override { return E_NOTIMPL; }
    HRESULT GotoKey(LONG*) override { return E_NOTIMPL; }
    HRESULT PostTo(LONG) override { return E_NOTIMPL; }
    HRESULT DeleteKey() override { return E_NOTIMPL; }
    HRESULT get_KeyRecordCount(LONG*) override { return E_NOTIMPL; }
    HRESULT get_KeyPosition(LONG*) override { return E_NOTIMPL; }
    HRESULT Attach(IdmTable*) override { return E_NOTIMPL; }
    HRESULT put_AsVariant(VARIANT) override { return E_NOTIMPL; }
    HRESULT AddNewField(BSTR, ULONG, ULONG) override { return E_NOTIMPL; }

private:
    HRESULT m_Status;
    CVariant m_Bytes;
};

} // namespace

TEST_F(TableTest, AnAttachedTableShowsTheOthersFieldsAndRecords) {
    const auto source = TableOf({4, 5});
    m_Table->put_Id(3);
    ASSERT_EQ(m_Table->Attach(source.Get()), S_OK);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 2);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_Id), 3);
    EXPECT_EQ(Walk(*FieldOf(*m_Table, fieldSymbol)), (std::vector<LONG>{4, 5}));
}

TEST_F(TableTest, AttachedTablesShareRecordsAndNotTheCursor) {
    auto source = TableOf({4, 5});
    m_Table->Attach(source.Get());
    const auto mine = FieldOf(*m_Table, fieldSymbol);
    auto theirs = FieldOf(*source, fieldSymbol);
    EXPECT_NE(mine, theirs);
    m_Table->First();
    source->Last();
    EXPECT_EQ(LongOf(*mine), 4);
    EXPECT_EQ(LongOf(*theirs), 5);
    mine->put_AsLong(40);
    source->First();
    EXPECT_EQ(LongOf(*theirs), 40);
    source->Append();
    theirs->put_AsLong(6);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 2);
    source->Post();
    EXPECT_EQ(Walk(*mine), (std::vector<LONG>{40, 5, 6}));
    theirs.Reset();
    source.Reset();
    EXPECT_EQ(Walk(*mine), (std::vector<LONG>{40, 5, 6}));
}

TEST_F(TableTest, ACursorSurvivesWhatTheOtherTableDoes) {
    const auto source = TableOf({1, 2, 3, 4});
    m_Table->Attach(source.Get());
    const auto mine = FieldOf(*m_Table, fieldSymbol);
    m_Table->Last();
    source->First();
    source->Delete();
    EXPECT_EQ(LongOf(*mine), 4);
    source->Last();
    source->Delete();
    EXPECT_NE(Get(*m_Table, &IdmTable::get_Eof), 0);
    m_Table->First();
    source->Append();
    m_Table->Append();
    mine->put_AsLong(9);
    source->Clear();
    EXPECT_EQ(m_Table->Post(), S_FALSE) << "the record went with the others";
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 0);
    EXPECT_NE(Get(*m_Table, &IdmTable::get_Eof), 0);
}

TEST_F(TableTest, AFieldHeldFindsItsColumnInTheAttachedTable) {
    m_Table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto symbol = FieldOf(*m_Table, fieldSymbol);
    m_Table->Attach(TableOf({4}).Get());
    m_Table->First();
    EXPECT_EQ(LongOf(*symbol), 4);
    EXPECT_EQ(FieldOf(*m_Table, fieldSymbol), symbol);
    EXPECT_EQ(References(*m_Table), 3U) << "the two interfaces of the test and the field";
}

TEST_F(TableTest, AFieldHeldThatTheAttachedTableLacksIsDetached) {
    m_Table->AddFieldById(fieldSymbolName, 0, 0, 0);
    const auto name = FieldOf(*m_Table, fieldSymbolName);
    m_Table->Attach(TableOf({4}).Get());
    m_Table->First();
    EXPECT_EQ(Get(*name, &IdmField::get_Id), fieldSymbolName);
    EXPECT_EQ(Get(*name, &IdmField::get_Type), 0);
    LONG value = 1;
    EXPECT_EQ(name->get_AsLong(&value), S_FALSE);
    EXPECT_EQ(value, 0);
    CBstr text;
    EXPECT_EQ(name->get_AsString(text.Put()), S_FALSE);
    EXPECT_FALSE(text.IsNull());
    EXPECT_EQ(name->put_AsString(CBstr(L"x").Get()), E_FAIL);
    EXPECT_EQ(name->put_BaseCode(1), E_FAIL);
    // It comes back with the field.
    m_Table->AddFieldById(fieldSymbolName, 0, 0, 0);
    EXPECT_EQ(name->put_AsString(CBstr(L"x").Get()), S_OK);
    EXPECT_EQ(TextOf(*name), L"x");
    EXPECT_EQ(FieldOf(*m_Table, fieldSymbolName), name);
}

TEST_F(TableTest, AFieldOfTheSameIdAndAnotherNameIsNotTakenForIt) {
    AddField(L"MINE", EColumnType::Long);
    const auto field = FieldOf(*m_Table, L"MINE");
    const auto other = MakeTable();
    other->AddNewField(CBstr(L"OTHER").Get(), 6, 0);
    m_Table->Attach(other.Get());
    LONG value = 1;
    EXPECT_EQ(field->get_AsLong(&value), S_FALSE);
}

TEST_F(TableTest, AFieldThatTheOtherTableAddsIsSeen) {
    const auto source = TableOf({4});
    m_Table->Attach(source.Get());
    source->AddFieldById(fieldMargin, 0, 0, 0);
    const auto margin = FieldOf(*m_Table, fieldMargin);
    ASSERT_TRUE(margin);
    m_Table->First();
    EXPECT_EQ(margin->put_AsLong(3), S_OK);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 3);
}

TEST_F(TableTest, AttachingToItselfOrToOneAlreadySharedChangesNothing) {
    const auto source = TableOf({4, 5});
    EXPECT_EQ(source->Attach(source.Get()), S_OK);
    m_Table->Attach(source.Get());
    m_Table->Last();
    EXPECT_EQ(m_Table->Attach(source.Get()), S_OK);
    EXPECT_EQ(LongOf(*FieldOf(*m_Table, fieldSymbol)), 5);
    EXPECT_EQ(References(*source), 1U);
}

TEST_F(TableTest, AttachLetsGoOfTheRecordBeingAppended) {
    m_Table->AddFieldById(fieldSymbol, 0, 0, 0);
    m_Table->Append();
    m_Table->Attach(TableOf({4}).Get());
    EXPECT_EQ(m_Table->Post(), S_FALSE);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 1);
}

TEST_F(TableTest, ATableOfAnotherMakingIsCopiedThroughItsBytes) {
    CVariant bytes;
    ASSERT_EQ(TableOf({4, 5})->get_AsVariant(bytes.Put()), S_OK);
    const auto foreign = platform::MakeObject<CForeignTable>(S_OK, bytes);
    EXPECT_EQ(m_Table->Attach(foreign.Get()), S_OK);
    EXPECT_EQ(Walk(*FieldOf(*m_Table, fieldSymbol)), (std::vector<LONG>{4, 5}));
    EXPECT_EQ(m_Table->Attach(platform::MakeObject<CForeignTable>(E_ABORT, CVariant()).Get()), E_ABORT);
    EXPECT_EQ(m_Table->Attach(platform::MakeObject<CForeignTable>(S_OK, CVariant(LONG{3})).Get()), E_FAIL);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 2);
    EXPECT_EQ(References(*foreign), 1U);
}

} // namespace dmudfcom_tests
