// Orders by index, and keys.
#include "TableFixture.h"

#include <algorithm>
#include <random>

namespace dmudfcom_tests {

class IndexTest : public TableTest {
protected:
    void SetUp() override {
        AddField(L"KEY", EColumnType::Long);
        AddField(L"NAME", EColumnType::Text);
        AddField(L"SERIAL", EColumnType::Long);
        m_Key = FieldOf(*m_Table, L"KEY");
        m_Name = FieldOf(*m_Table, L"NAME");
        m_Serial = FieldOf(*m_Table, L"SERIAL");
    }
    void Add(LONG key, const wchar_t* name) {
        m_Table->Append();
        m_Key->put_AsLong(key);
        m_Name->put_AsString(CBstr(name).Get());
        m_Serial->put_AsLong(m_Next++);
        ASSERT_EQ(m_Table->Post(), S_OK);
    }
    HRESULT CreateIndex(const wchar_t* fields, LONG id) { return m_Table->CreateIndex(CBstr(fields).Get(), id); }
    void SetKey(LONG key) {
        ASSERT_EQ(m_Table->SetKey(), S_OK);
        ASSERT_EQ(m_Key->put_AsLong(key), S_OK);
    }
    LONG KeyCount() { return Get(*m_Table, &IdmTable::get_KeyRecordCount); }
    LONG KeyPosition() { return Get(*m_Table, &IdmTable::get_KeyPosition); }
    LONG GotoKey() { return Get(*m_Table, &IdmTable::GotoKey); }
    std::vector<LONG> Serials() { return Walk(*m_Serial); }

    CComPtr<IdmField> m_Key;
    CComPtr<IdmField> m_Name;
    CComPtr<IdmField> m_Serial;
    LONG m_Next = 0;
};

TEST_F(IndexTest, TheCursorRunsInIndexOrderAndBackInRecordOrder) {
    Add(3, L"c");
    Add(1, L"a");
    Add(2, L"b");
    ASSERT_EQ(CreateIndex(L"KEY", 1), S_OK);
    EXPECT_EQ(Serials(), (std::vector<LONG>{0, 1, 2}));
    ASSERT_EQ(m_Table->SetIndex(1), S_OK);
    EXPECT_EQ(Serials(), (std::vector<LONG>{1, 2, 0}));
    m_Table->Last();
    EXPECT_EQ(LongOf(*m_Key), 3);
    m_Table->Prev();
    EXPECT_EQ(LongOf(*m_Key), 2);
    ASSERT_EQ(m_Table->ResetIndex(), S_OK);
    EXPECT_EQ(Serials(), (std::vector<LONG>{0, 1, 2}));
}

TEST_F(IndexTest, ChangingTheOrderKeepsTheCurrentRecord) {
    Add(3, L"c");
    Add(1, L"a");
    Add(2, L"b");
    CreateIndex(L"KEY", 1);
    m_Table->First();
    m_Table->SetIndex(1);
    EXPECT_EQ(LongOf(*m_Key), 3);
    m_Table->Next();
    EXPECT_NE(Get(*m_Table, &IdmTable::get_Eof), 0);
    m_Table->First();
    m_Table->ResetIndex();
    EXPECT_EQ(LongOf(*m_Key), 1);
    m_Table->Next();
    EXPECT_EQ(LongOf(*m_Key), 2);
}

TEST_F(IndexTest, NullsStandFirstTextsByCodePointAndEqualsInOrderOfAdding) {
    Add(0, L"b");
    Add(0, L"я");
    Add(0, L"B");
    Add(0, nullptr);
    Add(0, L"b");
    Add(0, L"");
    CreateIndex(L"NAME", 7);
    m_Table->SetIndex(7);
    EXPECT_EQ(Serials(), (std::vector<LONG>{3, 5, 2, 0, 4, 1}));
}

TEST_F(IndexTest, SeveralFieldsOrderOneAfterAnother) {
    Add(2, L"a");
    Add(1, L"b");
    Add(1, L"a");
    Add(2, L"A");
    ASSERT_EQ(CreateIndex(L" key ; NAME", 1), S_OK);
    m_Table->SetIndex(1);
    EXPECT_EQ(Serials(), (std::vector<LONG>{2, 1, 3, 0}));
}

TEST_F(IndexTest, WrongFieldListsAndUnknownIdsAreRefused) {
    for (const wchar_t* list : {L"", L";", L"KEY;", L"KEY;NOTHING", L"KEY;key", L"KEY,NAME"})
        EXPECT_EQ(CreateIndex(list, 1), E_INVALIDARG) << CBstr(list).Text();
    EXPECT_EQ(m_Table->CreateIndex(nullptr, 1), E_INVALIDARG);
    EXPECT_EQ(m_Table->SetIndex(1), E_INVALIDARG);
    EXPECT_EQ(m_Table->ResetIndex(), S_OK);
}

TEST_F(IndexTest, AnIndexOfTheSameIdTakesThePlaceOfTheOld) {
    Add(1, L"b");
    Add(2, L"a");
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    EXPECT_EQ(Serials(), (std::vector<LONG>{0, 1}));
    EXPECT_EQ(CreateIndex(L"NAME", 1), S_OK);
    EXPECT_EQ(Serials(), (std::vector<LONG>{1, 0}));
}

TEST_F(IndexTest, TheIndexFollowsAppendedChangedAndDeletedRecords) {
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    Add(5, L"");
    Add(1, L"");
    Add(3, L"");
    EXPECT_EQ(Walk(*m_Key), (std::vector<LONG>{1, 3, 5}));
    m_Table->First();
    EXPECT_EQ(m_Key->put_AsLong(4), S_OK);
    EXPECT_EQ(LongOf(*m_Key), 4);
    m_Table->Next();
    EXPECT_EQ(LongOf(*m_Key), 5);
    EXPECT_EQ(m_Table->Delete(), S_OK);
    EXPECT_NE(Get(*m_Table, &IdmTable::get_Eof), 0);
    EXPECT_EQ(Walk(*m_Key), (std::vector<LONG>{3, 4}));
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 2);
    EXPECT_EQ(Walk(*m_Key), (std::vector<LONG>{2, 3, 4}));
    m_Rows->SetInteger(2, 0, 9);
    EXPECT_EQ(Walk(*m_Key), (std::vector<LONG>{3, 4, 9}));
    m_Table->Clear();
    Add(2, L"");
    Add(1, L"");
    EXPECT_EQ(Walk(*m_Key), (std::vector<LONG>{1, 2}));
}

TEST_F(IndexTest, ManyRandomChangesLeaveTheIndexSorted) {
    std::mt19937 random(7);
    CreateIndex(L"KEY;NAME", 1);
    m_Table->SetIndex(1);
    for (LONG i = 0; i < 400; ++i)
        Add(static_cast<LONG>(random() % 50), i % 3 == 0 ? L"x" : L"y");
    for (LONG i = 0; i < 2000; ++i) {
        const ULONG row = static_cast<ULONG>(random() % m_Rows->RowCount());
        m_Rows->SetInteger(row, 0, static_cast<LONG>(random() % 50));
        if (i % 97 == 0)
            m_Rows->SetNull(row, 0);
        if (i % 5 == 0) {
            m_Table->Last();
            ASSERT_EQ(m_Table->Delete(), S_OK);
            Add(static_cast<LONG>(random() % 50), L"z");
        }
    }
    const auto keys = Walk(*m_Key);
    EXPECT_EQ(keys.size(), 400U);
    EXPECT_TRUE(std::ranges::is_sorted(keys));
}

TEST_F(IndexTest, NumbersThatAreNoneStandBeforeAllOthers) {
    AddField(L"REAL", EColumnType::Double);
    const auto real = FieldOf(*m_Table, L"REAL");
    for (const double value : {1.0, std::numeric_limits<double>::quiet_NaN(), -5.0}) {
        Add(0, L"");
        real->put_AsDouble(value);
    }
    CreateIndex(L"REAL", 1);
    m_Table->SetIndex(1);
    EXPECT_EQ(Serials(), (std::vector<LONG>{1, 2, 0}));
}

// Keys

TEST_F(IndexTest, AKeyNeedsAnIndexAndValues) {
    Add(1, L"a");
    EXPECT_EQ(m_Table->SetKey(), E_FAIL);
    LONG found = 5;
    EXPECT_EQ(m_Table->GotoKey(&found), E_FAIL);
    EXPECT_EQ(found, 0);
    EXPECT_EQ(m_Table->DeleteKey(), E_FAIL);
    CreateIndex(L"KEY;NAME", 1);
    m_Table->SetIndex(1);
    EXPECT_EQ(m_Table->GotoKey(&found), E_FAIL);
    EXPECT_EQ(m_Table->SetKey(), S_OK);
    EXPECT_EQ(m_Table->GotoKey(&found), E_INVALIDARG);
    EXPECT_EQ(m_Table->DeleteKey(), E_INVALIDARG);
    m_Table->SetKey();
    EXPECT_EQ(m_Name->put_AsString(CBstr(L"a").Get()), S_OK);
    EXPECT_EQ(m_Table->GotoKey(&found), E_INVALIDARG) << "the first field has no value";
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 1);
}

TEST_F(IndexTest, GotoKeyMovesToTheFirstMatchOrNotAtAll) {
    for (const LONG key : {5, 3, 5, 1, 5})
        Add(key, L"");
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    m_Table->First();
    SetKey(5);
    EXPECT_EQ(GotoKey(), 1);
    EXPECT_EQ(LongOf(*m_Serial), 0);
    EXPECT_EQ(KeyCount(), 3);
    EXPECT_EQ(KeyPosition(), 0);
    m_Table->Next();
    m_Table->Next();
    EXPECT_EQ(KeyPosition(), 2);
    m_Table->First();
    EXPECT_EQ(KeyPosition(), -1);
    SetKey(4);
    EXPECT_EQ(GotoKey(), 0);
    EXPECT_EQ(LongOf(*m_Key), 1);
    EXPECT_EQ(KeyCount(), 0);
}

TEST_F(IndexTest, AKeyOfTheFirstFieldsMatchesWhateverTheOthersHold) {
    Add(1, L"a");
    Add(2, L"a");
    Add(2, L"b");
    CreateIndex(L"KEY;NAME", 1);
    m_Table->SetIndex(1);
    SetKey(2);
    EXPECT_EQ(KeyCount(), 2);
    SetKey(2);
    m_Name->put_AsString(CBstr(L"b").Get());
    EXPECT_EQ(KeyCount(), 1);
    EXPECT_EQ(GotoKey(), 1);
    EXPECT_EQ(LongOf(*m_Serial), 2);
}

TEST_F(IndexTest, AKeyMayBeNull) {
    Add(1, L"a");
    Add(1, nullptr);
    CreateIndex(L"NAME", 1);
    m_Table->SetIndex(1);
    m_Table->SetKey();
    EXPECT_EQ(m_Name->put_AsString(nullptr), S_OK);
    EXPECT_EQ(KeyCount(), 1);
}

TEST_F(IndexTest, WhileAKeyIsGivenPutsReachTheKeyAndNotTheRecord) {
    Add(1, L"a");
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    m_Table->First();
    SetKey(8);
    EXPECT_EQ(LongOf(*m_Key), 8);
    EXPECT_EQ(m_Name->put_AsString(CBstr(L"z").Get()), E_INVALIDARG);
    EXPECT_EQ(m_Table->Cancel(), S_OK);
    EXPECT_EQ(LongOf(*m_Key), 1);
    EXPECT_EQ(TextOf(*m_Name), L"a");
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 1);
}

TEST_F(IndexTest, AKeyIsKeptAndFollowsTheRecords) {
    Add(5, L"");
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    SetKey(5);
    EXPECT_EQ(KeyCount(), 1);
    Add(5, L"");
    EXPECT_EQ(KeyCount(), 2);
    m_Table->ResetIndex();
    LONG count = 0;
    EXPECT_EQ(m_Table->get_KeyRecordCount(&count), E_FAIL);
    m_Table->SetIndex(1);
    EXPECT_EQ(m_Table->get_KeyRecordCount(&count), E_FAIL) << "the key went with the order";
    SetKey(5);
    m_Table->Clear();
    EXPECT_EQ(m_Table->get_KeyRecordCount(&count), E_FAIL);
}

TEST_F(IndexTest, DeleteKeyRemovesAllThatMatch) {
    for (const LONG key : {5, 3, 5, 7, 5})
        Add(key, L"");
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    SetKey(5);
    EXPECT_EQ(GotoKey(), 1);
    EXPECT_EQ(m_Table->DeleteKey(), S_OK);
    EXPECT_EQ(LongOf(*m_Key), 7);
    EXPECT_EQ(Serials(), (std::vector<LONG>{1, 3}));
    EXPECT_EQ(m_Table->DeleteKey(), S_FALSE);
    m_Table->ResetIndex();
    EXPECT_EQ(Serials(), (std::vector<LONG>{1, 3}));
}

TEST_F(IndexTest, DeleteKeyLeavesTheCursorOnARecordThatStays) {
    for (const LONG key : {1, 2, 2, 3})
        Add(key, L"");
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    m_Table->Last();
    SetKey(2);
    EXPECT_EQ(m_Table->DeleteKey(), S_OK);
    EXPECT_EQ(LongOf(*m_Key), 3);
    SetKey(3);
    EXPECT_EQ(m_Table->DeleteKey(), S_OK);
    EXPECT_NE(Get(*m_Table, &IdmTable::get_Eof), 0);
    EXPECT_EQ(Walk(*m_Key), std::vector<LONG>{1});
}

TEST_F(IndexTest, SetKeyPostsARecordBeingAppended) {
    CreateIndex(L"KEY", 1);
    m_Table->SetIndex(1);
    m_Table->Append();
    m_Key->put_AsLong(4);
    SetKey(4);
    EXPECT_EQ(GotoKey(), 1);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 1);
}

TEST_F(IndexTest, PostToKeepsTheIndexInStep) {
    Add(2, L"");
    Add(1, L"");
    CreateIndex(L"KEY", 1);
    m_Table->Append();
    m_Key->put_AsLong(0);
    EXPECT_EQ(m_Table->PostTo(1), S_OK);
    EXPECT_EQ(Walk(*m_Key), (std::vector<LONG>{2, 0, 1}));
    m_Table->SetIndex(1);
    EXPECT_EQ(Walk(*m_Key), (std::vector<LONG>{0, 1, 2}));
}

} // namespace dmudfcom_tests
