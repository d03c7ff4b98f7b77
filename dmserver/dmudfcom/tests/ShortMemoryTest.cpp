// A table when there is no memory for what is asked of it.
#include "TableFixture.h"
#include "platform/tests/heap/HeapProbe.h"

#include <algorithm>
#include <new>

namespace dmudfcom_tests {

namespace {

thread_local int t_Left = 0; // allocations that are still granted

bool Allows(std::size_t) { return t_Left-- > 0; }

// With memory for no allocation, then for one, and so on, until the action answers with S_OK. What it answers
// before is for `refused` to judge.
template <class Action, class Refused>
int RunShortOfMemory(Action&& action, Refused&& refused) {
    for (int available = 0;; ++available) {
        HRESULT status;
        {
            t_Left = available;
            const HeapProbe::CJudged judged(Allows);
            status = action();
        }
        if (status == S_OK)
            return available;
        refused(status);
    }
}

// Long enough for texts of a few hundred rows to be worth packing.
std::string LongText(LONG number) {
    std::string text = std::to_string(number);
    return text + std::string(400 - text.size(), 'x');
}

class ShortMemory : public TableTest {
protected:
    void Append(LONG number) {
        m_Rows->AppendRow();
        m_Rows->PutText(0, LongText(number));
        m_Rows->PutInteger(1, number);
        m_Rows->PutText(2, std::to_string(number));
        m_Numbers.push_back(number);
    }
    void ExpectRecords() const {
        ASSERT_EQ(m_Rows->RowCount(), m_Numbers.size());
        std::string scratch;
        for (ULONG row = 0; row < m_Numbers.size(); ++row) {
            ASSERT_EQ(m_Rows->Text(row, 0, scratch), LongText(m_Numbers[row])) << row;
            ASSERT_EQ(m_Rows->Integer(row, 1), m_Numbers[row]) << row;
            ASSERT_EQ(m_Rows->Text(row, 2, scratch), std::to_string(m_Numbers[row])) << row;
        }
    }
    // Through a table of its own, so that the cursor of this one stays where it is.
    void ExpectRecordsInIndexes() {
        std::vector<LONG> sorted = m_Numbers;
        std::ranges::sort(sorted);
        for (const LONG index : {1, 2}) {
            const auto other = MakeTable();
            ASSERT_EQ(other->Attach(m_Table.Get()), S_OK);
            ASSERT_EQ(other->SetIndex(index), S_OK);
            const auto number = FieldOf(*other, L"N");
            std::vector<LONG> walked;
            for (other->First(); Get(*other, &IdmTable::get_Eof) == 0; other->Next())
                walked.push_back(LongOf(*number));
            EXPECT_EQ(walked, sorted) << index;
        }
    }
    void MoveTo(ULONG position) {
        m_Table->First();
        for (ULONG i = 0; i < position; ++i)
            m_Table->Next();
    }

    std::vector<LONG> m_Numbers; // of the records in their order
};

TEST_F(ShortMemory, ARecordIsDeletedWholeOrNotAtAll) {
    AddField(L"A", EColumnType::Text);
    AddField(L"N", EColumnType::Long);
    AddField(L"B", EColumnType::Text);
    ASSERT_EQ(m_Table->CreateIndex(CBstr(L"N").Get(), 1), S_OK);
    ASSERT_EQ(m_Table->CreateIndex(CBstr(L"N;B").Get(), 2), S_OK);
    for (LONG number = 0; number < 300; ++number)
        Append(number);
    int refusals = 0;
    while (m_Numbers.size() > 10) {
        const auto position = static_cast<ULONG>(m_Numbers.size() * 7 / 13);
        MoveTo(position);
        refusals += RunShortOfMemory([&] { return m_Table->Delete(); },
                                     [&](HRESULT status) {
                                         EXPECT_EQ(status, E_OUTOFMEMORY);
                                         ExpectRecords();
                                         ExpectRecordsInIndexes();
                                     });
        m_Numbers.erase(m_Numbers.begin() + position);
        ExpectRecords();
        if (HasFailure())
            FAIL() << "at record " << position;
    }
    EXPECT_GT(refusals, 5);
    ExpectRecordsInIndexes();
    for (LONG i = 0; i < 50; ++i) { // in the places of the deleted ones
        m_Rows->AppendRow();
        for (const ULONG column : {0U, 1U, 2U})
            ASSERT_TRUE(m_Rows->IsNull(10 + i, column)) << i << " " << column;
    }
}

TEST_F(ShortMemory, TextsThatCouldNotBePackedArePackedWhenTheTableGrows) {
    AddField(L"A", EColumnType::Text);
    constexpr ULONG count = 1000;
    for (ULONG row = 0; row < count; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutText(0, LongText(row));
    }
    m_Rows->SetNull(0, 0); // the marks of nulls are there
    const std::size_t before = m_Rows->MemoryUse();
    {
        t_Left = 0;
        const HeapProbe::CJudged judged(Allows);
        for (ULONG row = 1; row < 900; ++row)
            m_Rows->SetNull(row, 0);
    }
    EXPECT_EQ(m_Rows->MemoryUse(), before);
    for (ULONG row = 0; row < 200; ++row)
        m_Rows->SetText(row, 0, LongText(row + 7000));
    EXPECT_LT(m_Rows->MemoryUse(), 200000U);
    std::string scratch;
    for (ULONG row = 0; row < count; ++row) {
        ASSERT_EQ(m_Rows->IsNull(row, 0), row >= 200 && row < 900) << row;
        if (!m_Rows->IsNull(row, 0)) {
            ASSERT_EQ(m_Rows->Text(row, 0, scratch), LongText(row < 200 ? row + 7000 : row)) << row;
        }
    }
}

// Short texts written over one another in one cell, where only their dictionary needs memory.
class ShortDictionary : public ShortMemory {
protected:
    void SetUp() override {
        AddField(L"A", EColumnType::Text);
        m_Rows->AppendRow();
        m_Rows->PutText(0, std::string(10000, 'x')); // makes room for the short ones
    }
    void Put(LONG number) { m_Rows->SetText(0, 0, std::to_string(number)); }
    void ExpectRefused(LONG number) {
        const std::string text = std::to_string(number);
        bool isRefused = false;
        try {
            t_Left = 0;
            const HeapProbe::CJudged judged(Allows);
            m_Rows->SetText(0, 0, text);
        } catch (const std::bad_alloc&) {
            isRefused = true;
        }
        EXPECT_TRUE(isRefused) << number;
    }
    std::string Text() const {
        std::string scratch;
        return std::string(m_Rows->Text(0, 0, scratch));
    }
};

TEST_F(ShortDictionary, IsBegunLaterWhenThereWasNoMemoryForIt) {
    for (LONG number = 0; number < 14; ++number)
        Put(number);
    for (LONG number = 100; number < 200; ++number)
        ExpectRefused(number);
    EXPECT_EQ(Text(), "13");
    const std::size_t before = HeapProbe::Allocations();
    for (LONG number = 14; number < 100; ++number)
        Put(number);
    EXPECT_EQ(HeapProbe::Allocations(), before + 1);
    EXPECT_EQ(Text(), "99");
}

TEST_F(ShortDictionary, NeverFillsUpWhenThereIsNoMemoryForALargerOne) {
    for (LONG number = 0; number < 127; ++number) {
        Put(number % 20); // or they would look like distinct ones
        Put(number);
    }
    const std::size_t before = m_Rows->MemoryUse();
    for (LONG number = 1000; number < 2000; ++number)
        ExpectRefused(number);
    EXPECT_EQ(m_Rows->MemoryUse(), before);
    EXPECT_EQ(Text(), "126");
    for (int round = 0; round < 100; ++round)
        for (LONG number = 1000; number < 1100; ++number)
            Put(number);
    EXPECT_EQ(Text(), "1099");
    EXPECT_EQ(m_Rows->MemoryUse(), before + 1024);
}

} // namespace

} // namespace dmudfcom_tests
