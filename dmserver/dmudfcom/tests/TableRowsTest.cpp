// Moving rows in bulk, and what they cost.
#include "TableFixture.h"
#include "platform/tests/heap/HeapProbe.h"

#include <array>
#include <numeric>

namespace dmudfcom_tests {

namespace {

constexpr ULONG ManyRows = 100000;

std::string DistinctText(ULONG row) {
    return "Description of symbol number " + std::to_string(row * 7919 % 1000003);
}

} // namespace

TEST_F(TableTest, ColumnsOfKnownNamesHaveTheMapsTypeAndOthersTheFallback) {
    EXPECT_EQ(m_Rows->AddColumn("expiration_date", EColumnType::Text), 0U);
    EXPECT_EQ(m_Rows->AddColumn("COMPUTED", EColumnType::Double), 1U);
    EXPECT_EQ(m_Rows->AddColumn("EXPIRATION_DATE", EColumnType::Text), 0U);
    EXPECT_EQ(m_Rows->ColumnCount(), 2U);
    EXPECT_EQ(m_Rows->ColumnType(0), EColumnType::Date);
    EXPECT_EQ(m_Rows->ColumnName(0), "EXPIRATION_DATE");
    EXPECT_EQ(m_Rows->ColumnType(1), EColumnType::Double);
    EXPECT_EQ(m_Rows->FindColumn("Computed"), 1);
    EXPECT_EQ(m_Rows->FindColumn("NOTHING"), -1);
    EXPECT_TRUE(FieldOf(*m_Table, fieldExpirationDate));
}

TEST_F(TableTest, TheCountOfAGuardIsReadBackThroughTheFieldOfItsAlias) {
    m_Rows->AppendRow();
    m_Rows->PutInteger(m_Rows->AddColumn("DATA_FEED", EColumnType::Int64), 3);
    m_Table->First();
    EXPECT_EQ(LongOf(*FieldOf(*m_Table, 207)), 3);
}

TEST_F(TableTest, CellsOfANewRowAreNullUntilPut) {
    AddField(L"A", EColumnType::Long);
    AddField(L"B", EColumnType::Text);
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 1);
    m_Rows->AppendRow();
    m_Rows->PutText(1, "x");
    m_Rows->AppendRow();
    std::string scratch;
    EXPECT_EQ(m_Rows->RowCount(), 3U);
    EXPECT_FALSE(m_Rows->IsNull(0, 0));
    EXPECT_TRUE(m_Rows->IsNull(1, 0));
    EXPECT_TRUE(m_Rows->IsNull(2, 0));
    EXPECT_TRUE(m_Rows->IsNull(0, 1));
    EXPECT_EQ(m_Rows->Text(1, 1, scratch), "x");
    EXPECT_TRUE(m_Rows->IsNull(2, 1));
    EXPECT_EQ(m_Rows->Integer(1, 0), 0);
    EXPECT_EQ(m_Rows->Real(1, 0), 0);
    EXPECT_EQ(m_Rows->Text(0, 1, scratch), "");
}

TEST_F(TableTest, ValuesAreConvertedToTheColumnsType) {
    AddField(L"N", EColumnType::Long);
    AddField(L"R", EColumnType::Double);
    AddField(L"T", EColumnType::Text);
    AddField(L"D", EColumnType::Date);
    AddField(L"S", EColumnType::Time);
    m_Rows->AppendRow();
    m_Rows->PutReal(0, 3.9);
    m_Rows->PutInteger(1, 7);
    m_Rows->PutInteger(2, -5);
    m_Rows->PutText(3, "29.02.2000");
    m_Rows->PutText(4, "02:00:00.0000");
    std::string scratch;
    EXPECT_EQ(m_Rows->Integer(0, 0), 3);
    EXPECT_EQ(m_Rows->Real(0, 1), 7.0);
    EXPECT_EQ(m_Rows->Text(0, 2, scratch), "-5");
    EXPECT_EQ(m_Rows->Integer(0, 3), 36585);
    EXPECT_EQ(m_Rows->Text(0, 3, scratch), "29.02.2000");
    EXPECT_EQ(m_Rows->Integer(0, 4), 7200);
}

TEST_F(TableTest, DaysAndSecondsAreWrittenOutInATextColumn) {
    AddField(L"T", EColumnType::Text);
    AddField(L"U", EColumnType::Text);
    AddField(L"D", EColumnType::Date);
    AddField(L"S", EColumnType::Time);
    m_Rows->AppendRow();
    m_Rows->PutDay(0, 36585);
    m_Rows->PutSeconds(1, 7200);
    m_Rows->PutDay(2, 36585);
    m_Rows->PutSeconds(3, 7200);
    std::string scratch;
    EXPECT_EQ(m_Rows->Text(0, 0, scratch), "29.02.2000");
    EXPECT_EQ(m_Rows->Text(0, 1, scratch), "02:00:00");
    EXPECT_EQ(m_Rows->Integer(0, 2), 36585);
    EXPECT_EQ(m_Rows->Integer(0, 3), 7200);
}

TEST_F(TableTest, RowsThatAreThereCanBeWritten) {
    AddField(L"N", EColumnType::Long);
    AddField(L"T", EColumnType::Text);
    for (LONG i = 0; i < 3; ++i)
        m_Rows->AppendRow();
    m_Rows->SetInteger(2, 0, 5);
    m_Rows->SetReal(0, 0, 6.5);
    m_Rows->SetText(1, 1, "b");
    std::string scratch;
    EXPECT_EQ(m_Rows->Integer(2, 0), 5);
    EXPECT_EQ(m_Rows->Integer(0, 0), 6);
    EXPECT_TRUE(m_Rows->IsNull(1, 0));
    EXPECT_EQ(m_Rows->Text(1, 1, scratch), "b");
    m_Rows->SetNull(1, 1);
    EXPECT_TRUE(m_Rows->IsNull(1, 1));
}

TEST_F(TableTest, RowsCountInRecordOrderAfterAnInsertion) {
    AddField(L"N", EColumnType::Long);
    const auto field = FieldOf(*m_Table, L"N");
    AppendLong(*field, 1);
    AppendLong(*field, 2);
    m_Table->Append();
    field->put_AsLong(3);
    m_Table->PostTo(0);
    EXPECT_EQ(m_Rows->Integer(0, 0), 3);
    EXPECT_EQ(m_Rows->Integer(2, 0), 2);
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 4);
    EXPECT_EQ(m_Rows->Integer(3, 0), 4);
}

std::vector<LONG> Ascending(ULONG count) {
    std::vector<LONG> values(count);
    std::iota(values.begin(), values.end(), LONG{100});
    return values;
}

TEST_F(TableTest, RunsOfNumbersAreWrittenAndReadAcrossChunks) {
    AddField(L"N", EColumnType::Long);
    AddField(L"R", EColumnType::Double);
    for (ULONG row = 0; row < 5000; ++row)
        m_Rows->AppendRow();
    const std::vector<LONG> values = Ascending(4000);
    const std::vector<double> reals(values.begin(), values.end());
    m_Rows->SetIntegers(0, 700, values);
    m_Rows->SetReals(1, 700, reals);
    std::vector<LONG> read(4500, -1);
    for (const ULONG column : {0U, 1U}) {
        m_Rows->GetIntegers(column, 500, read);
        for (ULONG i = 0; i < read.size(); ++i)
            ASSERT_EQ(read[i], i < 200 || i >= 4200 ? 0 : values[i - 200]) << column << " " << i;
        EXPECT_TRUE(m_Rows->IsNull(699, column));
        EXPECT_FALSE(m_Rows->IsNull(700, column));
        EXPECT_FALSE(m_Rows->IsNull(4699, column));
        EXPECT_TRUE(m_Rows->IsNull(4700, column));
    }
    EXPECT_EQ(m_Rows->Real(4699, 1), values.back());
}

TEST_F(TableTest, ARunReplacesNullsAndValues) {
    AddField(L"N", EColumnType::Long);
    for (ULONG row = 0; row < 3000; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutInteger(0, 1);
        if (row % 3 == 0)
            m_Rows->SetNull(row, 0);
    }
    m_Rows->SetIntegers(0, 1000, Ascending(1500));
    EXPECT_TRUE(m_Rows->IsNull(999, 0));
    for (ULONG row = 1000; row < 2500; ++row) {
        ASSERT_FALSE(m_Rows->IsNull(row, 0)) << row;
        ASSERT_EQ(m_Rows->Integer(row, 0), row - 900) << row;
    }
    EXPECT_EQ(m_Rows->Integer(2500, 0), 1);
    EXPECT_TRUE(m_Rows->IsNull(2502, 0));
}

TEST_F(TableTest, AnEmptyRunChangesNothing) {
    AddField(L"N", EColumnType::Long);
    m_Rows->AppendRow();
    m_Rows->SetIntegers(0, 0, {});
    m_Rows->SetTexts(0, 1, {});
    m_Rows->GetIntegers(0, 1, {});
    EXPECT_TRUE(m_Rows->IsNull(0, 0));
}

TEST_F(TableTest, RunsAreConvertedToTheColumnsType) {
    const std::array types{EColumnType::Short, EColumnType::Int64, EColumnType::Float,
                           EColumnType::Text,  EColumnType::Date,  EColumnType::Time};
    for (const EColumnType type : types)
        AddField((L"F" + std::to_wstring(static_cast<ULONG>(type))).c_str(), type);
    for (ULONG row = 0; row < 3; ++row)
        m_Rows->AppendRow();
    const std::array<LONG, 3> values{-7, 0, 70000};
    const std::array reals{1.9, -2.0, 70000.0};
    for (ULONG column = 0; column < types.size(); ++column) {
        m_Rows->SetIntegers(column, 0, values);
        std::array<LONG, 3> read{};
        m_Rows->GetIntegers(column, 0, read);
        const LONG last = types[column] == EColumnType::Short ? 0 : 70000; // which does not fit
        EXPECT_EQ(read, (std::array<LONG, 3>{-7, 0, last})) << column;
        m_Rows->SetReals(column, 0, reals);
        EXPECT_EQ(m_Rows->Integer(0, column), 1) << column;
        EXPECT_EQ(m_Rows->Integer(1, column), -2) << column;
        EXPECT_EQ(m_Rows->Integer(2, column), last) << column;
    }
}

TEST_F(TableTest, AValueThatIsNoLongIsReadInARunAsZero) {
    AddField(L"I", EColumnType::Int64);
    AddField(L"T", EColumnType::Text);
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, std::int64_t{1} << 40);
    m_Rows->PutText(1, "no number");
    for (const ULONG column : {0U, 1U}) {
        std::array<LONG, 1> read{-1};
        m_Rows->GetIntegers(column, 0, read);
        EXPECT_EQ(read[0], 0) << column;
    }
}

// A record as a database hands it over.
struct tagPackedRecord {
    struct {
        WORD Length = 5;
        char Characters[14] = "hello";
    } Text;
    std::int64_t Int64 = std::int64_t{1} << 40;
    double Double = 2.5;
    LONG Long = -70000;
    LONG Day = 51603; // of another calendar
    float Float = 0.5F;
    SHORT Short = -7;
    std::int16_t Null = -1;
    std::int16_t NotNull = 0;
};

template <class Member>
ULONG OffsetIn(const tagPackedRecord& record, const Member& member) {
    return static_cast<ULONG>(reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&record));
}

class PackedTest : public TableTest {
protected:
    std::vector<tagPackedCell> Cells() const {
        const ULONG notNull = OffsetIn(m_Record, m_Record.NotNull);
        return {{EPackedForm::Text, 0, OffsetIn(m_Record, m_Record.Text), notNull},
                {EPackedForm::Short, 1, OffsetIn(m_Record, m_Record.Short), notNull},
                {EPackedForm::Long, 2, OffsetIn(m_Record, m_Record.Long), notNull},
                {EPackedForm::Int64, 3, OffsetIn(m_Record, m_Record.Int64), notNull},
                {EPackedForm::Float, 4, OffsetIn(m_Record, m_Record.Float), notNull},
                {EPackedForm::Double, 5, OffsetIn(m_Record, m_Record.Double), notNull},
                {EPackedForm::Day, 6, OffsetIn(m_Record, m_Record.Day), notNull, -15018}};
    }
    void Append(std::span<const tagPackedCell> cells) {
        m_Rows->AppendPacked(reinterpret_cast<const unsigned char*>(&m_Record), cells);
    }
    std::vector<std::string> Row(ULONG row) const {
        std::vector<std::string> texts;
        std::string scratch;
        for (ULONG column = 0; column < m_Rows->ColumnCount(); ++column)
            texts.emplace_back(m_Rows->Text(row, column, scratch));
        return texts;
    }

    tagPackedRecord m_Record;
};

TEST_F(PackedTest, ValuesOfEveryFormGoToTheirColumns) {
    const std::array types{EColumnType::Text,  EColumnType::Short,  EColumnType::Long, EColumnType::Int64,
                           EColumnType::Float, EColumnType::Double, EColumnType::Date};
    for (const EColumnType type : types)
        AddField((L"F" + std::to_wstring(m_Rows->ColumnCount())).c_str(), type);
    for (ULONG row = 0; row < 3000; ++row)
        Append(Cells());
    ASSERT_EQ(m_Rows->RowCount(), 3000U);
    for (const ULONG row : {0U, 1023U, 1024U, 2999U})
        EXPECT_EQ(Row(row),
                  (std::vector<std::string>{"hello", "-7", "-70000", "1099511627776", "0.5", "2.5", "29.02.2000"}))
            << row;
}

TEST_F(PackedTest, ValuesAreConvertedToTheColumnsType) {
    for (const EColumnType type : {EColumnType::Long, EColumnType::Text, EColumnType::Double, EColumnType::Long,
                                   EColumnType::Text, EColumnType::Short, EColumnType::Text})
        AddField((L"F" + std::to_wstring(m_Rows->ColumnCount())).c_str(), type);
    Append(Cells());
    EXPECT_EQ(Row(0), (std::vector<std::string>{"0", "-7", "-70000", "0", "0.5", "2", "29.02.2000"}));
}

TEST_F(PackedTest, NullsAndColumnsWithoutAValueStayEmptyUntilPut) {
    AddField(L"A", EColumnType::Long);
    AddField(L"B", EColumnType::Text);
    AddField(L"C", EColumnType::Long);
    const ULONG isNull = OffsetIn(m_Record, m_Record.Null);
    const std::array cells{tagPackedCell{EPackedForm::Long, 2, OffsetIn(m_Record, m_Record.Long), isNull},
                           tagPackedCell{EPackedForm::Text, 1, OffsetIn(m_Record, m_Record.Text), isNull}};
    Append(cells);
    for (const ULONG column : {0U, 1U, 2U})
        EXPECT_TRUE(m_Rows->IsNull(0, column)) << column;
    m_Rows->PutInteger(0, 4);
    m_Rows->PutText(1, "put");
    EXPECT_EQ(Row(0), (std::vector<std::string>{"4", "put", ""}));
}

TEST_F(PackedTest, AnIndexSeesThePackedRows) {
    AddField(L"N", EColumnType::Long);
    ASSERT_EQ(m_Table->CreateIndex(CBstr(L"N").Get(), 1), S_OK);
    ASSERT_EQ(m_Table->SetIndex(1), S_OK);
    const tagPackedCell cell{EPackedForm::Long, 0, OffsetIn(m_Record, m_Record.Long),
                             OffsetIn(m_Record, m_Record.NotNull)};
    for (const LONG value : {3, 1, 2}) {
        m_Record.Long = value;
        Append({&cell, 1});
    }
    EXPECT_EQ(Walk(*FieldOf(*m_Table, L"N")), (std::vector<LONG>{1, 2, 3}));
}

TEST_F(TableTest, TextsThatDifferInOneByteAreKeptApart) {
    AddField(L"T", EColumnType::Text);
    std::vector<std::string> texts;
    for (std::size_t size = 1; size <= 40; ++size)
        for (std::size_t at = 0; at < size; ++at)
            for (const char c : {'x', 'y'}) {
                texts.emplace_back(size, 'a');
                texts.back()[at] = c;
            }
    for (int round = 0; round < 2; ++round)
        for (const std::string& text : texts) {
            m_Rows->AppendRow();
            m_Rows->PutText(0, text);
        }
    std::string scratch;
    for (ULONG row = 0; row < m_Rows->RowCount(); ++row)
        ASSERT_EQ(m_Rows->Text(row, 0, scratch), texts[row % texts.size()]) << row;
}

// However few rows have been seen, a column of a hundred texts that come in turns keeps each once.
TEST_F(TableTest, AHundredTextsInTurnsAreStoredOnce) {
    AddField(L"T", EColumnType::Text);
    for (ULONG row = 0; row < ManyRows; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutText(0, "a text of some length, number " + std::to_string(row % 100));
    }
    EXPECT_LT(m_Rows->MemoryUse(), ManyRows * 4 * 1.1 + 32768);
}

TEST_F(TableTest, RunsGoByRecordOrder) {
    AddField(L"N", EColumnType::Long);
    AddField(L"T", EColumnType::Text);
    const auto field = FieldOf(*m_Table, L"N");
    for (LONG i = 0; i < 5; ++i)
        AppendLong(*field, i);
    m_Table->First();
    m_Table->Delete();
    m_Table->Append();
    field->put_AsLong(9);
    m_Table->PostTo(1); // 1 9 2 3 4
    std::array<LONG, 5> read{};
    m_Rows->GetIntegers(0, 0, read);
    EXPECT_EQ(read, (std::array<LONG, 5>{1, 9, 2, 3, 4}));
    m_Rows->SetIntegers(0, 1, std::array<LONG, 3>{10, 20, 30});
    EXPECT_EQ(Walk(*field), (std::vector<LONG>{1, 10, 20, 30, 4}));
    const tagSharedText text{"x"};
    m_Rows->SetTexts(1, 1, std::array<const tagSharedText*, 2>{&text, &text});
    std::string scratch;
    EXPECT_TRUE(m_Rows->IsNull(0, 1));
    EXPECT_EQ(m_Rows->Text(1, 1, scratch), "x");
    EXPECT_EQ(m_Rows->Text(2, 1, scratch), "x");
    EXPECT_TRUE(m_Rows->IsNull(3, 1));
}

TEST_F(TableTest, AnIndexFollowsARun) {
    AddField(L"N", EColumnType::Long);
    const auto field = FieldOf(*m_Table, L"N");
    for (LONG i = 0; i < 4; ++i)
        AppendLong(*field, i);
    ASSERT_EQ(m_Table->CreateIndex(CBstr(L"N").Get(), 1), S_OK);
    ASSERT_EQ(m_Table->SetIndex(1), S_OK);
    m_Rows->SetIntegers(0, 0, std::array<LONG, 3>{30, 20, 10});
    EXPECT_EQ(Walk(*field), (std::vector<LONG>{3, 10, 20, 30}));
}

TEST_F(TableTest, ASharedTextIsStoredOnceInEachColumn) {
    AddField(L"A", EColumnType::Text);
    AddField(L"B", EColumnType::Text);
    AddField(L"N", EColumnType::Long);
    for (ULONG row = 0; row < ManyRows; ++row)
        m_Rows->AppendRow();
    std::vector<tagSharedText> texts(300);
    std::vector<const tagSharedText*> cells(ManyRows);
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i].Text = std::string(100, 'x') + std::to_string(i);
    texts[7].Text.clear();
    texts[8].Text = "42";
    for (ULONG row = 0; row < ManyRows; ++row)
        cells[row] = &texts[row * 31 % texts.size()];
    for (const ULONG column : {0U, 1U, 2U, 0U})
        m_Rows->SetTexts(column, 0, cells);
    std::string scratch;
    for (ULONG row = 0; row < ManyRows; ++row) {
        ASSERT_EQ(m_Rows->Text(row, 0, scratch), cells[row]->Text) << row;
        ASSERT_EQ(m_Rows->Text(row, 1, scratch), cells[row]->Text) << row;
        ASSERT_EQ(m_Rows->Integer(row, 2), cells[row] == &texts[8] ? 42 : 0) << row;
        ASSERT_FALSE(m_Rows->IsNull(row, 0)) << row;
    }
    EXPECT_LT(m_Rows->MemoryUse(), 3U * 4 * ManyRows * 11 / 10 + 200000);
}

TEST_F(TableTest, ASharedTextOutlivesWhatTheColumnForgets) {
    AddField(L"T", EColumnType::Text);
    for (ULONG row = 0; row < 10; ++row)
        m_Rows->AppendRow();
    const tagSharedText text{"the shared text"};
    const tagSharedText* const cells[] = {&text};
    std::string scratch;
    for (ULONG i = 0; i < ManyRows; ++i) { // the texts are packed many times on the way
        m_Rows->SetText(i % 10, 0, DistinctText(i));
        m_Rows->SetTexts(0, i * 7 % 10, cells);
        ASSERT_EQ(m_Rows->Text(i * 7 % 10, 0, scratch), "the shared text");
    }
    EXPECT_LT(m_Rows->MemoryUse(), 400000U);
    m_Table->Clear();
    m_Rows->AppendRow();
    m_Rows->SetTexts(0, 0, cells);
    EXPECT_EQ(m_Rows->Text(0, 0, scratch), "the shared text");
}

thread_local std::size_t t_LargeOnes = 0;

// How often a column of ManyRows is looked at for what may be packed, which begins with a list of its cells.
template <class Action>
std::size_t Packings(Action&& action) {
    t_LargeOnes = 0;
    const HeapProbe::CJudged judged([](std::size_t size) {
        t_LargeOnes += size >= ManyRows * sizeof(LONG);
        return true;
    });
    action();
    return t_LargeOnes;
}

std::vector<tagSharedText> SharedTexts(std::size_t count, std::size_t size) {
    std::vector<tagSharedText> texts(count);
    for (std::size_t i = 0; i < count; ++i)
        texts[i].Text = std::string(size, 'x') + std::to_string(i);
    return texts;
}

std::vector<const tagSharedText*> InTurns(const std::vector<tagSharedText>& texts) {
    std::vector<const tagSharedText*> cells(ManyRows);
    for (ULONG row = 0; row < ManyRows; ++row)
        cells[row] = &texts[row % texts.size()];
    return cells;
}

// The first of them look like a column of distinct texts, which keeps no dictionary.
TEST_F(TableTest, ASharedTextIsStoredOnceAfterPackingToo) {
    AddField(L"T", EColumnType::Text);
    for (ULONG row = 0; row < ManyRows; ++row)
        m_Rows->AppendRow();
    const std::vector<tagSharedText> texts = SharedTexts(300, 100);
    const auto cells = InTurns(texts);
    m_Rows->SetTexts(0, 0, cells);
    const std::uint64_t pool = texts[0].Pool;
    for (ULONG i = 0; texts[0].Pool == pool; ++i) { // until the column has packed its texts
        ASSERT_LT(i, ManyRows);
        m_Rows->SetText(0, 0, DistinctText(i));
        m_Rows->SetTexts(0, 1, std::span(cells).first(1));
    }
    EXPECT_LT(m_Rows->MemoryUse(), 4U * ManyRows * 11 / 10 + 100000);
    std::string scratch;
    for (ULONG row = 2; row < ManyRows; ++row)
        ASSERT_EQ(m_Rows->Text(row, 0, scratch), cells[row]->Text) << row;
    // The packed ones are found again, whoever brings them.
    for (int round = 0; round < 5; ++round)
        for (ULONG row = 0; row < texts.size(); ++row)
            m_Rows->SetText(row, 0, texts[row].Text);
    EXPECT_LT(m_Rows->MemoryUse(), 4U * ManyRows * 11 / 10 + 100000);
}

TEST_F(TableTest, TextsWrittenOverThatOtherCellsHaveAreNotPackedAgainAndAgain) {
    AddField(L"T", EColumnType::Text);
    for (ULONG row = 0; row < ManyRows; ++row)
        m_Rows->AppendRow();
    const std::vector<tagSharedText> texts = SharedTexts(1000, 1000);
    const auto cells = InTurns(texts);
    EXPECT_LE(Packings([&] {
                  for (int round = 0; round < 10; ++round)
                      m_Rows->SetTexts(0, 0, cells);
                  for (ULONG row = 0; row < 300; ++row)
                      m_Rows->SetNull(row, 0);
              }),
              1U);
    EXPECT_LT(m_Rows->MemoryUse(), 4U * ManyRows * 11 / 10 + 1200000);
}

TEST_F(TableTest, OneOfManyCellsWrittenOverForeverDoesNotPackTheColumnForEachFewTexts) {
    AddField(L"T", EColumnType::Text);
    for (ULONG row = 0; row < ManyRows; ++row)
        m_Rows->AppendRow();
    const std::vector<tagSharedText> texts = SharedTexts(100, 10);
    const auto cells = InTurns(texts);
    m_Rows->SetTexts(0, 0, cells);
    const std::size_t packings = Packings([&] {
        for (ULONG i = 0; i < ManyRows; ++i) // of more than 3 MB together
            m_Rows->SetText(5, 0, DistinctText(i));
    });
    EXPECT_GE(packings, 1U);
    EXPECT_LE(packings, 10U);
    EXPECT_LT(m_Rows->MemoryUse(), 4U * ManyRows * 2 + 200000);
    std::string scratch;
    EXPECT_EQ(m_Rows->Text(4, 0, scratch), texts[4].Text);
    EXPECT_EQ(m_Rows->Text(5, 0, scratch), DistinctText(ManyRows - 1));
}

TEST_F(TableTest, TextsOfEveryLengthAcrossBlocksComeBack) {
    AddField(L"T", EColumnType::Text);
    std::vector<std::string> texts;
    for (std::size_t size : {0, 1, 127, 128, 16382, 16383, 16384, 16385, 40000, 3, 70000, 5})
        texts.push_back(std::string(size, static_cast<char>('a' + texts.size())));
    for (ULONG i = 0; i < 3000; ++i)
        texts.push_back(DistinctText(i));
    for (const std::string& text : texts) {
        m_Rows->AppendRow();
        m_Rows->PutText(0, text);
    }
    std::string scratch;
    for (ULONG row = 0; row < texts.size(); ++row)
        ASSERT_EQ(m_Rows->Text(row, 0, scratch), texts[row]) << row;
}

TEST_F(TableTest, ATextOfTheTableItselfCanBePutAgain) {
    AddField(L"T", EColumnType::Text);
    m_Rows->AppendRow();
    m_Rows->PutText(0, "a text of the table");
    std::string scratch;
    for (ULONG row = 0; row < 2000; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutText(0, m_Rows->Text(row, 0, scratch).substr(row % 2));
        m_Rows->SetText(row + 1, 0, "a text of the table" + std::to_string(row));
    }
    EXPECT_EQ(m_Rows->Text(2000, 0, scratch), "a text of the table1999");
}

TEST_F(TableTest, RepeatedTextsAreStoredOnce) {
    AddField(L"T", EColumnType::Text);
    const std::string zone(100, 'z');
    for (ULONG row = 0; row < ManyRows; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutText(0, zone + std::to_string(row % 50));
    }
    EXPECT_LT(m_Rows->MemoryUse(), ManyRows * 4 * 1.1 + 32768);
    std::string scratch;
    EXPECT_EQ(m_Rows->Text(ManyRows - 1, 0, scratch), zone + std::to_string((ManyRows - 1) % 50));
}

TEST_F(TableTest, WritingOverTextsForeverDoesNotFillTheMemory) {
    AddField(L"T", EColumnType::Text);
    for (ULONG row = 0; row < 10; ++row)
        m_Rows->AppendRow();
    for (ULONG i = 0; i < ManyRows; ++i)
        m_Rows->SetText(i % 10, 0, DistinctText(i));
    EXPECT_LT(m_Rows->MemoryUse(), 400000U);
    std::string scratch;
    EXPECT_EQ(m_Rows->Text(9, 0, scratch), DistinctText(ManyRows - 1));
}

TEST_F(TableTest, AppendingAndDeletingForeverDoesNotFillTheMemory) {
    AddField(L"N", EColumnType::Long);
    const auto field = FieldOf(*m_Table, L"N");
    AppendLong(*field, -1);
    AppendLong(*field, -2);
    for (LONG i = 0; i < 20000; ++i) {
        AppendLong(*field, i);
        m_Table->First();
        ASSERT_EQ(m_Table->Delete(), S_OK);
    }
    EXPECT_LT(m_Rows->MemoryUse(), 4096U);
}

// A row of the whole portfolio, with what its cells take: a number its 4 or 8 bytes, a text a reference of 4 bytes
// and, where it is not one of a few that repeat, its characters.
TEST_F(TableTest, ARowOfThePortfolioCostsNoMoreThanItsCellsAndATenth) {
    const char* const repeated[] = {"SYMBOL_ROOT",
                                    "CUSIP",
                                    "DATA_FEED_NAME",
                                    "EXCHANGE_NAME",
                                    "EXCHANGE_TIME_ZONE_INFORMATION",
                                    "SESSIONS_STRING",
                                    "SESSIONS_TIME_ZONE_INFORMATION"};
    const char* const distinct[] = {"SYMBOL_NAME", "DESCRIPTION"};
    const char* const reals[] = {"POINT_VALUE", "MIN_MOVEMENT", "STRIKE_PRICE"};
    const char* const whole[] = {"SYMBOL",          "CATEGORY",      "DATA_FEED",       "EXCHANGE",
                                 "SETTING_TYPE",    "SETTING",       "CUSTOM_SETTING",  "PRICE_SCALE",
                                 "DAILY_LIMIT",     "SESSION_TYPE",  "CUSTOM_SESSION",  "TEMPLATE_SESSION",
                                 "CONTRACT_MONTH",  "CONTRACT_YEAR", "CALL_PUT",        "MARGIN",
                                 "EXPIRATION_DATE", "EXPIRED",       "EXPIRATION_RULE", "FIRST_NOTICE_DATE",
                                 "DELIVERY",        "EXCHANGE_GMT",  "LOCAL_GMT"};
    static_assert(std::size(repeated) + std::size(distinct) + std::size(reals) + std::size(whole) == 35);
    const std::size_t before = HeapProbe::BytesInUse();
    m_Table = MakeTable();
    m_Rows = m_Table.As<ITableRows>();
    for (const auto names : {std::span<const char* const>(repeated), std::span<const char* const>(distinct),
                             std::span<const char* const>(reals), std::span<const char* const>(whole)})
        for (const char* name : names)
            m_Rows->AddColumn(name, EColumnType::Text);
    double cells = 0;
    for (ULONG row = 0; row < ManyRows; ++row) {
        m_Rows->AppendRow();
        ULONG column = 0;
        for (; column < 7; ++column)
            m_Rows->PutText(column, "one of a few texts " + std::to_string(row * 31 % (10 * (column + 1))));
        for (; column < 9; ++column) {
            const std::string text = DistinctText(row + column);
            m_Rows->PutText(column, text);
            cells += static_cast<double>(text.size());
        }
        for (; column < 12; ++column)
            m_Rows->PutReal(column, row * 0.25);
        for (; column < 35; ++column)
            m_Rows->PutInteger(column, row + column);
    }
    cells += ManyRows * (9.0 * 4 + 3 * 8 + 23 * 4);
    const auto used = static_cast<double>(HeapProbe::BytesInUse() - before);
    EXPECT_LE(used, cells * 1.10);
    EXPECT_NEAR(static_cast<double>(m_Rows->MemoryUse()), used, used * 0.02);
    RecordProperty("bytes_per_row", static_cast<int>(used / ManyRows));
}

TEST_F(TableTest, DistinctTextsPayOnceForTheDictionaryThatTheyGiveUp) {
    AddField(L"T", EColumnType::Text);
    m_Rows->AppendRow();
    m_Rows->PutText(0, std::string(1100, 'x')); // makes room for the short ones
    LONG number = 0;
    const auto allocations = [&](LONG end) {
        const std::size_t before = HeapProbe::Allocations();
        for (; number < end; ++number)
            m_Rows->SetText(0, 0, std::to_string(number));
        return HeapProbe::Allocations() - before;
    };
    EXPECT_EQ(allocations(15), 1U); // the dictionary
    const std::size_t withDictionary = m_Rows->MemoryUse();
    EXPECT_EQ(allocations(126), 0U);
    EXPECT_EQ(m_Rows->MemoryUse(), withDictionary);
    EXPECT_EQ(allocations(127), 0U);
    EXPECT_EQ(m_Rows->MemoryUse(), withDictionary - 1024);
}

TEST_F(TableTest, AppendingTakesMemoryByTheChunkAndNotByTheRow) {
    AddField(L"A", EColumnType::Long);
    AddField(L"B", EColumnType::Double);
    const std::size_t before = HeapProbe::Allocations();
    for (ULONG row = 0; row < ManyRows; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutInteger(0, row);
        m_Rows->PutReal(1, row);
    }
    EXPECT_LT(HeapProbe::Allocations() - before, 2U * (ManyRows / 1024 + 30));
}

TEST_F(TableTest, ATableOfOneRowIsSmall) {
    const std::size_t before = HeapProbe::BytesInUse();
    m_Table = MakeTable();
    m_Rows = m_Table.As<ITableRows>();
    m_Rows->AddColumn("DATA_FEED", EColumnType::Long);
    m_Rows->AppendRow();
    m_Rows->PutInteger(0, 1);
    EXPECT_LT(HeapProbe::BytesInUse() - before, 2048U);
}

TEST_F(TableTest, ATableClearedOfAFewRowsTakesNoMemoryForAsManyAgain) {
    AddField(L"A", EColumnType::Long);
    AddField(L"B", EColumnType::Text);
    const auto fill = [this](ULONG first) {
        for (ULONG row = first; row < first + 10; ++row) {
            m_Rows->AppendRow();
            m_Rows->PutInteger(0, row);
            m_Rows->PutText(1, std::to_string(row)); // short enough to need no heap itself
        }
    };
    fill(0);
    m_Table->Clear();
    const std::size_t before = HeapProbe::Allocations();
    fill(100);
    EXPECT_EQ(HeapProbe::Allocations(), before);
    std::string scratch;
    EXPECT_EQ(m_Rows->RowCount(), 10U);
    EXPECT_EQ(m_Rows->Integer(9, 0), 109);
    EXPECT_EQ(m_Rows->Text(0, 1, scratch), "100");
    EXPECT_EQ(m_Rows->Text(9, 1, scratch), "109");
}

TEST_F(TableTest, NothingOfAClearedRowIsLeftInTheOneThatTakesItsPlace) {
    AddField(L"A", EColumnType::Long);
    AddField(L"B", EColumnType::Text);
    for (LONG row = 0; row < 3; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutInteger(0, 7);
        m_Rows->PutText(1, "seven");
    }
    m_Rows->SetNull(1, 0);
    m_Rows->SetNull(1, 1);
    m_Table->Clear();
    for (LONG row = 0; row < 3; ++row)
        m_Rows->AppendRow();
    m_Rows->SetInteger(1, 0, 8);
    m_Rows->SetText(1, 1, "eight");
    std::string scratch;
    EXPECT_EQ(m_Rows->Integer(1, 0), 8);
    EXPECT_EQ(m_Rows->Text(1, 1, scratch), "eight");
    for (const ULONG row : {0, 2})
        for (const ULONG column : {0, 1})
            EXPECT_TRUE(m_Rows->IsNull(row, column)) << row << column;
}

TEST_F(TableTest, ATableClearedOfManyRowsGivesTheirMemoryBack) {
    AddField(L"A", EColumnType::Long);
    AddField(L"B", EColumnType::Text);
    for (ULONG row = 0; row < ManyRows; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutInteger(0, row);
        m_Rows->PutText(1, DistinctText(row));
    }
    m_Table->Clear();
    EXPECT_LT(m_Rows->MemoryUse(), 4096U);
}

TEST_F(TableTest, ATableClearedGivesTheMemoryOfItsOrderAndIndexesBack) {
    AddField(L"A", EColumnType::Long);
    ASSERT_EQ(m_Table->CreateIndex(CBstr(L"A").Get(), 1), S_OK);
    for (ULONG row = 0; row < 3000; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutInteger(0, row);
    }
    m_Table->First();
    for (ULONG row = 0; row < 200; ++row)
        ASSERT_EQ(m_Table->Delete(), S_OK);
    m_Rows->AppendRow(); // in a deleted one's place, from where on rows have serials
    ASSERT_EQ(m_Table->SetIndex(1), S_OK);
    m_Table->First();
    ASSERT_GT(m_Rows->MemoryUse(), 3000U * (4 + 4 + 4 + 8));
    m_Table->Clear();
    EXPECT_LT(m_Rows->MemoryUse(), 4096U);
}

TEST_F(TableTest, AColumnNeverWrittenCostsNothingPerRow) {
    AddField(L"A", EColumnType::Long);
    AddField(L"EMPTY", EColumnType::Double);
    for (ULONG row = 0; row < ManyRows; ++row) {
        m_Rows->AppendRow();
        m_Rows->PutInteger(0, row);
    }
    EXPECT_LT(m_Rows->MemoryUse(), ManyRows * 4 * 1.1);
    EXPECT_TRUE(m_Rows->IsNull(ManyRows - 1, 1));
}

TEST_F(TableTest, ReadingThroughAHeldFieldTakesNoMemory) {
    m_Table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto field = FieldOf(*m_Table, fieldSymbol);
    AppendLong(*field, 3);
    const std::size_t before = HeapProbe::Allocations();
    LONG value = 0;
    for (LONG i = 0; i < 100; ++i)
        field->get_AsLong(&value);
    EXPECT_EQ(HeapProbe::Allocations(), before);
    EXPECT_EQ(value, 3);
}

} // namespace dmudfcom_tests
