// Rows appended as packed records: values of every form into columns of every type, and the texts beneath them.
#include "TableFixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>

namespace dmudfcom_tests {

namespace {

constexpr std::array AllTypes{EColumnType::Text,  EColumnType::Short,  EColumnType::Long, EColumnType::Int64,
                              EColumnType::Float, EColumnType::Double, EColumnType::Date, EColumnType::Time};
constexpr std::array AllForms{EPackedForm::Text,  EPackedForm::Short,  EPackedForm::Long, EPackedForm::Int64,
                              EPackedForm::Float, EPackedForm::Double, EPackedForm::Day};

constexpr std::size_t BlockSize = 16384; // of the memory that texts lie in
constexpr LONG DayShift = -15018;        // from the days of a database

// A packed record, value by value. Values stand at odd places, as nothing promises others.
class CPacked {
public:
    CPacked& Text(ULONG column, std::string_view text) {
        const auto length = static_cast<WORD>(text.size());
        Begin(EPackedForm::Text, column, 0);
        Put(&length, sizeof length);
        Put(text.data(), text.size());
        return *this;
    }
    CPacked& Short(ULONG column, SHORT value) { return Number(EPackedForm::Short, column, value); }
    CPacked& Long(ULONG column, LONG value) { return Number(EPackedForm::Long, column, value); }
    CPacked& Int64(ULONG column, std::int64_t value) { return Number(EPackedForm::Int64, column, value); }
    CPacked& Float(ULONG column, float value) { return Number(EPackedForm::Float, column, value); }
    CPacked& Double(ULONG column, double value) { return Number(EPackedForm::Double, column, value); }
    CPacked& Day(ULONG column, LONG day) { return Number(EPackedForm::Day, column, day - DayShift); }
    // Bytes that are no value of the form stand behind the flag.
    CPacked& Null(EPackedForm form, ULONG column, std::int16_t flag = -1) {
        Begin(form, column, flag);
        const std::array<char, 8> bytes{'\x7f', '\x7f', '\x7f', '\x7f', '\x7f', '\x7f', '\x7f', '\x7f'};
        Put(bytes.data(), bytes.size());
        return *this;
    }
    void AppendTo(ITableRows& rows) const { rows.AppendPacked(m_Bytes.data(), m_Cells); }

private:
    template <class T>
    CPacked& Number(EPackedForm form, ULONG column, T value) {
        Begin(form, column, 0);
        Put(&value, sizeof value);
        return *this;
    }
    void Begin(EPackedForm form, ULONG column, std::int16_t flag) {
        const auto flagAt = static_cast<ULONG>(m_Bytes.size());
        Put(&flag, sizeof flag);
        if (m_Bytes.size() % 2 == 0)
            m_Bytes.push_back(0xEE);
        m_Cells.push_back({form, column, static_cast<ULONG>(m_Bytes.size()), flagAt,
                           form == EPackedForm::Day ? DayShift : LONG{0}});
    }
    void Put(const void* data, std::size_t size) {
        const auto* const bytes = static_cast<const unsigned char*>(data);
        m_Bytes.insert(m_Bytes.end(), bytes, bytes + size);
    }

    std::vector<unsigned char> m_Bytes{0xEE};
    std::vector<tagPackedCell> m_Cells;
};

std::string Repeated(std::size_t size, std::size_t which) {
    std::string text(size, static_cast<char>('a' + which % 26));
    const std::string number = std::to_string(which);
    std::ranges::copy(std::string_view(number).substr(0, size), text.begin());
    return text;
}

class PackedRows : public TableTest {
protected:
    static void Add(IdmTable& table, ULONG count, EColumnType type) {
        ASSERT_EQ(table.AddNewField(CBstr(L"F" + std::to_wstring(count)).Get(), static_cast<ULONG>(type), 0), S_OK);
    }
    // A table with the columns F0, F1 and on.
    static CComPtr<ITableRows> Make(std::span<const EColumnType> types) {
        const auto table = MakeTable();
        for (ULONG column = 0; column < types.size(); ++column)
            Add(*table, column, types[column]);
        return table.As<ITableRows>();
    }
    void AddFields(std::initializer_list<EColumnType> types) {
        for (const EColumnType type : types)
            Add(*m_Table, m_Rows->ColumnCount(), type);
    }
    void AppendText(const std::string& text) { CPacked().Text(0, text).AppendTo(*m_Rows); }
    void DeleteRecord(ULONG position) {
        m_Table->First();
        for (ULONG i = 0; i < position; ++i)
            m_Table->Next();
        ASSERT_EQ(m_Table->Delete(), S_OK);
    }
    static std::string CellText(const ITableRows& rows, ULONG row, ULONG column) {
        std::string scratch;
        return rows.IsNull(row, column) ? "null" : std::string(rows.Text(row, column, scratch));
    }
    std::vector<std::string> Record(ULONG row) const {
        std::vector<std::string> texts;
        for (ULONG column = 0; column < m_Rows->ColumnCount(); ++column)
            texts.push_back(CellText(*m_Rows, row, column));
        return texts;
    }
    void ExpectTexts(const std::vector<std::string>& texts) const {
        ASSERT_EQ(m_Rows->RowCount(), texts.size());
        std::string scratch;
        for (ULONG row = 0; row < texts.size(); ++row)
            ASSERT_EQ(m_Rows->Text(row, 0, scratch), texts[row]) << row;
    }
};

using Texts = std::vector<std::string>;

TEST_F(PackedRows, EveryFormHasItsValueInColumnsOfEveryType) {
    const auto written = [](const CPacked& (*put)(CPacked&, ULONG)) {
        const auto rows = Make(AllTypes);
        CPacked record;
        for (ULONG column = 0; column < AllTypes.size(); ++column)
            put(record, column);
        record.AppendTo(*rows);
        Texts texts;
        for (ULONG column = 0; column < AllTypes.size(); ++column)
            texts.push_back(CellText(*rows, 0, column));
        return texts;
    };
    // Text, Short, Long, Int64, Float, Double, Date, Time
    const Texts number{"42", "42", "42", "42", "42", "42", "10.02.1900", "00:00:42"};
    EXPECT_EQ(written([](CPacked& r, ULONG c) -> const CPacked& { return r.Text(c, "42"); }), number);
    EXPECT_EQ(written([](CPacked& r, ULONG c) -> const CPacked& { return r.Short(c, 42); }), number);
    EXPECT_EQ(written([](CPacked& r, ULONG c) -> const CPacked& { return r.Long(c, 42); }), number);
    EXPECT_EQ(written([](CPacked& r, ULONG c) -> const CPacked& { return r.Int64(c, 42); }), number);
    EXPECT_EQ(written([](CPacked& r, ULONG c) -> const CPacked& { return r.Float(c, 42); }), number);
    EXPECT_EQ(written([](CPacked& r, ULONG c) -> const CPacked& { return r.Double(c, 42); }), number);
    EXPECT_EQ(written([](CPacked& r, ULONG c) -> const CPacked& { return r.Day(c, 42); }),
              (Texts{"10.02.1900", "42", "42", "42", "42", "42", "10.02.1900", "00:00:42"}));
}

// What is said of a packed record: that it is as if its values were put one by one.
class PackedAndPut : public PackedRows {
protected:
    void Expect(EColumnType type, const CPacked& record, const std::function<void(ITableRows&)>& put,
                const std::string& what) {
        const std::array types{type};
        const auto packed = Make(types);
        const auto single = Make(types);
        record.AppendTo(*packed);
        single->AppendRow();
        put(*single);
        const std::string where = what + " in a column of type " + std::to_string(static_cast<ULONG>(type));
        EXPECT_EQ(CellText(*packed, 0, 0), CellText(*single, 0, 0)) << where;
        EXPECT_EQ(packed->Integer(0, 0), single->Integer(0, 0)) << where;
        const double left = packed->Real(0, 0);
        const double right = single->Real(0, 0);
        EXPECT_TRUE(left == right || (std::isnan(left) && std::isnan(right))) << where;
    }
    template <class T>
    static std::string Words(const char* form, T value) {
        return std::string(form) + " " + std::to_string(value);
    }
};

TEST_F(PackedAndPut, AreTheSameForTexts) {
    for (const EColumnType type : AllTypes)
        for (const std::string_view text :
             {"", " ", "0", " -12 ", "3.75", "32768", "2147483648", "9223372036854775808", "1e39", "1e400", "nan",
              "29.02.2000", "30.02.2000", "23:59:59", "24:00:01", "x", "12x", "\xC3\xA9"})
            Expect(
                type, CPacked().Text(0, text), [&](ITableRows& rows) { rows.PutText(0, text); },
                "text \"" + std::string(text) + '"');
}

TEST_F(PackedAndPut, AreTheSameForWholeNumbers) {
    for (const EColumnType type : AllTypes) {
        for (const int value : {-32768, -1, 0, 1, 32767})
            Expect(
                type, CPacked().Short(0, static_cast<SHORT>(value)),
                [&](ITableRows& rows) { rows.PutInteger(0, value); }, Words("short", value));
        for (const LONG value : {std::numeric_limits<LONG>::min(), -32769, 0, 32768, 86399, 86400, 2958465, 2958466,
                                 std::numeric_limits<LONG>::max()})
            Expect(
                type, CPacked().Long(0, value), [&](ITableRows& rows) { rows.PutInteger(0, value); },
                Words("long", value));
        for (const std::int64_t value :
             {std::numeric_limits<std::int64_t>::min(), std::int64_t{-2147483649}, std::int64_t{0},
              std::int64_t{2147483648}, std::numeric_limits<std::int64_t>::max()})
            Expect(
                type, CPacked().Int64(0, value), [&](ITableRows& rows) { rows.PutInteger(0, value); },
                Words("int64", value));
    }
}

TEST_F(PackedAndPut, AreTheSameForRealNumbers) {
    for (const EColumnType type : AllTypes) {
        for (const float value :
             {0.0F, -0.0F, 0.1F, -2.5F, 32768.0F, std::numeric_limits<float>::max(),
              std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::infinity(), std::nanf("")})
            Expect(
                type, CPacked().Float(0, value), [&](ITableRows& rows) { rows.PutReal(0, double{value}); },
                Words("float", value));
        for (const double value : {0.0, 0.1, -2.5, 32767.9, 2147483647.5, 1e300, -1e300,
                                   std::numeric_limits<double>::infinity(), std::nan("")})
            Expect(
                type, CPacked().Double(0, value), [&](ITableRows& rows) { rows.PutReal(0, value); },
                Words("double", value));
    }
}

TEST_F(PackedAndPut, AreTheSameForDays) {
    for (const EColumnType type : AllTypes)
        for (const LONG day : {-693593, -1, 0, 1, 2, 32768, 36585, 86400, 2958465, 2958466})
            Expect(
                type, CPacked().Day(0, day), [&](ITableRows& rows) { rows.PutDay(0, day); }, Words("day", day));
}

TEST_F(PackedRows, ANullOfAnyFormLeavesACellOfAnyTypeEmpty) {
    for (const EPackedForm form : AllForms)
        for (const std::int16_t flag : {-1, 1, 256}) {
            const auto rows = Make(AllTypes);
            CPacked nulls;
            for (ULONG column = 0; column < AllTypes.size(); ++column)
                nulls.Null(form, column, flag);
            nulls.AppendTo(*rows);
            std::string scratch;
            for (ULONG column = 0; column < AllTypes.size(); ++column) {
                EXPECT_TRUE(rows->IsNull(0, column)) << static_cast<int>(form) << " " << column;
                EXPECT_EQ(rows->Integer(0, column), 0);
                EXPECT_EQ(rows->Real(0, column), 0);
                EXPECT_EQ(rows->Text(0, column, scratch), "");
            }
        }
}

TEST_F(PackedRows, NullsBetweenValuesStayWhereTheyAre) {
    AddFields({EColumnType::Text, EColumnType::Long, EColumnType::Double, EColumnType::Date});
    constexpr ULONG count = 2500; // more than two pieces of a column
    const auto isNull = [](ULONG row, ULONG column) { return row % (column + 2) == 0; };
    for (ULONG row = 0; row < count; ++row) {
        CPacked record;
        isNull(row, 0) ? record.Null(EPackedForm::Text, 0) : record.Text(0, std::to_string(row));
        isNull(row, 1) ? record.Null(EPackedForm::Long, 1) : record.Long(1, static_cast<LONG>(row));
        isNull(row, 2) ? record.Null(EPackedForm::Double, 2) : record.Double(2, row * 0.5);
        isNull(row, 3) ? record.Null(EPackedForm::Day, 3) : record.Day(3, static_cast<LONG>(row));
        record.AppendTo(*m_Rows);
    }
    std::string scratch;
    for (ULONG row = 0; row < count; ++row) {
        for (ULONG column = 0; column < 4; ++column)
            ASSERT_EQ(m_Rows->IsNull(row, column), isNull(row, column)) << row << " " << column;
        ASSERT_EQ(m_Rows->Text(row, 0, scratch), isNull(row, 0) ? "" : std::to_string(row));
        ASSERT_EQ(m_Rows->Integer(row, 1), isNull(row, 1) ? 0 : row);
        ASSERT_EQ(m_Rows->Real(row, 2), isNull(row, 2) ? 0 : row * 0.5);
        ASSERT_EQ(m_Rows->Integer(row, 3), isNull(row, 3) ? 0 : row);
    }
}

TEST_F(PackedRows, ARowThatTakesTheOneOfADeletedRecordHasNothingOfIt) {
    AddFields({EColumnType::Text, EColumnType::Long, EColumnType::Double, EColumnType::Date, EColumnType::Short});
    const auto full = [](const std::string& text, LONG number) {
        return CPacked().Text(0, text).Long(1, number).Double(2, number).Day(3, number).Short(
            4, static_cast<SHORT>(number));
    };
    for (LONG number = 0; number < 5; ++number)
        full("text " + std::to_string(number), number).AppendTo(*m_Rows);
    DeleteRecord(1);
    CPacked().Null(EPackedForm::Text, 0).Long(1, 7).AppendTo(*m_Rows);
    EXPECT_EQ(Record(4), (Texts{"null", "7", "null", "null", "null"}));
    DeleteRecord(2);
    CPacked().Text(0, "new").Null(EPackedForm::Long, 1).Double(2, 0.5).Day(3, 36585).Short(4, -1).AppendTo(*m_Rows);
    EXPECT_EQ(Record(4), (Texts{"new", "null", "0.5", "29.02.2000", "-1"}));
    // The last record of all gives its row back in another way.
    const auto rows = Make(AllTypes);
    full("gone", 3).AppendTo(*m_Rows);
    DeleteRecord(5);
    CPacked().AppendTo(*m_Rows);
    EXPECT_EQ(Record(5), (Texts{"null", "null", "null", "null", "null"}));
    EXPECT_EQ(Record(0), (Texts{"text 0", "0", "0", "30.12.1899", "0"}));
    EXPECT_EQ(Record(1), (Texts{"text 2", "2", "2", "01.01.1900", "2"}));
    EXPECT_EQ(Record(2), (Texts{"text 4", "4", "4", "03.01.1900", "4"}));
    EXPECT_EQ(Record(3), (Texts{"null", "7", "null", "null", "null"}));
}

TEST_F(PackedRows, ManyRowsAreUsedAgainInTheOrderOfTheRecords) {
    AddFields({EColumnType::Text, EColumnType::Long});
    const auto append = [&](LONG number) {
        CPacked().Text(0, "t" + std::to_string(number)).Long(1, number).AppendTo(*m_Rows);
    };
    Texts expected;
    for (LONG number = 0; number < 1500; ++number)
        append(number);
    m_Table->First();
    for (LONG number = 0; number < 1500; ++number) {
        if (number % 2 == 0) {
            ASSERT_EQ(m_Table->Delete(), S_OK);
        } else {
            expected.push_back("t" + std::to_string(number));
            m_Table->Next();
        }
    }
    for (LONG number = 2000; number < 3000; ++number) {
        append(number);
        expected.push_back("t" + std::to_string(number));
    }
    ExpectTexts(expected);
    for (ULONG row = 0; row < expected.size(); ++row)
        ASSERT_EQ("t" + std::to_string(m_Rows->Integer(row, 1)), expected[row]);
}

TEST_F(PackedRows, AppendingAndDeletingTextsForeverDoesNotFillTheMemory) {
    for (const bool isLast : {false, true}) { // the record that goes
        m_Table->Clear();
        if (m_Rows->ColumnCount() == 0)
            AddFields({EColumnType::Text});
        Texts texts{"kept", "kept, too"};
        std::ranges::for_each(texts, [this](const std::string& text) { AppendText(text); });
        for (ULONG i = 0; i < 20000; ++i) {
            texts.push_back(Repeated(40, i));
            AppendText(texts.back());
            const ULONG gone = isLast ? 2 : i % 3;
            texts.erase(texts.begin() + static_cast<std::ptrdiff_t>(gone));
            DeleteRecord(gone);
        }
        EXPECT_LT(m_Rows->MemoryUse(), 200000U);
        ExpectTexts(texts);
    }
}

TEST_F(PackedRows, AnIndexKeepsPackedRecordsSorted) {
    AddFields({EColumnType::Text, EColumnType::Long, EColumnType::Double});
    ASSERT_EQ(m_Table->CreateIndex(CBstr(L"F0;F1").Get(), 1), S_OK);
    ASSERT_EQ(m_Table->CreateIndex(CBstr(L"F1").Get(), 2), S_OK);
    const auto number = FieldOf(*m_Table, L"F2");
    LONG count = 0;
    const auto append = [&](const char* text, LONG key) {
        CPacked().Text(0, text).Long(1, key).Double(2, ++count).AppendTo(*m_Rows);
    };
    append("b", 2);
    append("a", 9);
    append("b", 1);
    CPacked().Null(EPackedForm::Text, 0).Long(1, 5).Double(2, ++count).AppendTo(*m_Rows);
    CPacked().Text(0, "a").Null(EPackedForm::Long, 1).Double(2, ++count).AppendTo(*m_Rows);
    append("b", 2);
    ASSERT_EQ(m_Table->SetIndex(1), S_OK);
    EXPECT_EQ(Walk(*number), (std::vector<LONG>{4, 5, 2, 3, 1, 6}));
    // What comes later finds its place among them, and what takes a deleted record's row does not take its place.
    append("a", 10);
    m_Table->First();
    ASSERT_EQ(m_Table->Delete(), S_OK);
    append("aa", 0);
    EXPECT_EQ(Walk(*number), (std::vector<LONG>{5, 2, 7, 8, 3, 1, 6}));
    ASSERT_EQ(m_Table->SetIndex(2), S_OK);
    EXPECT_EQ(Walk(*number), (std::vector<LONG>{5, 8, 3, 1, 6, 2, 7}));
}

TEST_F(PackedRows, AnIndexOverAColumnOfAnyTypeSortsByItsValues) {
    for (const EColumnType type : AllTypes) {
        const auto table = MakeTable();
        Add(*table, 0, type);
        ASSERT_EQ(table->CreateIndex(CBstr(L"F0").Get(), 1), S_OK);
        const auto rows = table.As<ITableRows>();
        for (const LONG value : {30, 4, 100, 4, 20})
            CPacked().Long(0, value).AppendTo(*rows);
        CPacked().Null(EPackedForm::Long, 0).AppendTo(*rows);
        ASSERT_EQ(table->SetIndex(1), S_OK);
        std::vector<LONG> walked;
        const auto field = FieldOf(*table, L"F0");
        for (table->First(); Get(*table, &IdmTable::get_Eof) == 0; table->Next())
            walked.push_back(LongOf(*field));
        EXPECT_EQ(walked, type == EColumnType::Text ? (std::vector<LONG>{0, 100, 20, 30, 4, 4})
                                                    : (std::vector<LONG>{0, 4, 4, 20, 30, 100}))
            << static_cast<ULONG>(type);
    }
}

TEST_F(PackedRows, TextsOfEveryLengthComeBackInWhateverOrder) {
    std::vector<std::size_t> sizes{0, 1, 127, 128, 16383, 16384, 65535};
    for (std::size_t turn = 0; turn < 2 * sizes.size(); ++turn) {
        m_Table = MakeTable();
        m_Rows = m_Table.As<ITableRows>();
        AddFields({EColumnType::Text});
        Texts texts;
        for (std::size_t round = 0; round < 3; ++round)
            for (const std::size_t size : sizes)
                texts.push_back(Repeated(size, texts.size()));
        for (const std::string& text : texts)
            AppendText(text);
        ExpectTexts(texts);
        for (ULONG row = 0; row < texts.size(); ++row)
            ASSERT_FALSE(m_Rows->IsNull(row, 0)) << row;
        std::ranges::rotate(sizes, sizes.begin() + 1);
        if (turn + 1 == sizes.size())
            std::ranges::reverse(sizes);
    }
}

// Texts lie one after another behind lengths of one byte, or two from 128 characters on; the first block keeps its
// first byte.
TEST_F(PackedRows, TextsThatEndAtABlocksEndOrByItComeBack) {
    for (const std::size_t left : {std::size_t{1}, std::size_t{2}, std::size_t{100}, std::size_t{128},
                                   std::size_t{129}, std::size_t{130}, std::size_t{200}, std::size_t{9000}})
        for (std::size_t last = left < 4 ? 1 : left - 4; last <= left + 2; ++last)
            for (const std::size_t blocks : {1, 2}) {
                m_Table = MakeTable();
                m_Rows = m_Table.As<ITableRows>();
                AddFields({EColumnType::Text});
                Texts texts;
                std::size_t end = 1;
                const auto add = [&](std::size_t size) {
                    texts.push_back(Repeated(size, texts.size()));
                    AppendText(texts.back());
                    const std::size_t taken = size + (size < 128 ? 1 : 2);
                    const std::size_t room = BlockSize - end % BlockSize;
                    end += taken + (taken > room ? room : 0);
                };
                const std::size_t full = blocks * BlockSize - left;
                while (end + 256 < full)
                    add(127);
                while (full - end > 128)
                    add(100);
                add(full - end - 1);
                ASSERT_EQ(end, full);
                for (const std::size_t size :
                     {last, std::size_t{1}, std::size_t{3}, std::size_t{40}, std::size_t{500}})
                    add(size);
                ExpectTexts(texts);
                if (HasFatalFailure())
                    FAIL() << left << " " << last << " " << blocks;
            }
}

TEST_F(PackedRows, ATextAsLongAsABlockBeginsOneOfItsOwn) {
    for (const std::size_t size : {BlockSize - 4, BlockSize - 3, BlockSize - 2, BlockSize - 1, BlockSize,
                                   2 * BlockSize - 3, 2 * BlockSize - 2}) {
        m_Table = MakeTable();
        m_Rows = m_Table.As<ITableRows>();
        AddFields({EColumnType::Text});
        Texts texts;
        for (int round = 0; round < 3; ++round)
            for (const std::size_t each : {size, std::size_t{1}, size + 1, std::size_t{127}})
                texts.push_back(Repeated(each, texts.size()));
        for (const std::string& text : texts)
            AppendText(text);
        ExpectTexts(texts);
    }
}

TEST_F(PackedRows, AClearedTableIsFilledAgainAsIfItWereNew) {
    AddFields({EColumnType::Text, EColumnType::Long, EColumnType::Double});
    for (const ULONG count : {3U, 60U, 5000U, 1U, 300U}) {
        Texts texts;
        for (ULONG row = 0; row < count; ++row) {
            texts.push_back(Repeated(1 + row * 7 % 300, count + row));
            CPacked record;
            record.Text(0, texts.back());
            row % 3 == 0 ? record.Null(EPackedForm::Long, 1) : record.Long(1, static_cast<LONG>(row));
            record.Double(2, row).AppendTo(*m_Rows);
        }
        ExpectTexts(texts);
        for (ULONG row = 0; row < count; ++row) {
            ASSERT_EQ(m_Rows->IsNull(row, 1), row % 3 == 0) << row;
            ASSERT_EQ(m_Rows->Real(row, 2), row);
        }
        ASSERT_EQ(m_Table->Clear(), S_OK);
        EXPECT_EQ(m_Rows->RowCount(), 0U);
    }
}

TEST_F(PackedRows, ATextThatRepeatsIsStoredOnce) {
    AddFields({EColumnType::Text, EColumnType::Text});
    constexpr ULONG count = 20000;
    for (ULONG row = 0; row < count; ++row) // the one a hundred texts in turns, the other a new one each 500 rows
        CPacked().Text(0, Repeated(100, row % 100)).Text(1, Repeated(1000, row / 500)).AppendTo(*m_Rows);
    EXPECT_LT(m_Rows->MemoryUse(), count * 8 * 1.1 + 100 * 200 + 40 * 1100 + 65536);
    std::string scratch;
    for (ULONG row = 0; row < count; ++row) {
        ASSERT_EQ(m_Rows->Text(row, 0, scratch), Repeated(100, row % 100));
        ASSERT_EQ(m_Rows->Text(row, 1, scratch), Repeated(1000, row / 500));
    }
}

// A column of texts that all differ stops looking for equal ones. One that is the same as the one before it is
// still stored once.
TEST_F(PackedRows, AColumnOfDistinctTextsKeepsThemAllAndRepetitionsInARowOnce) {
    AddFields({EColumnType::Text});
    Texts texts;
    for (std::size_t i = 0; i < 3000; ++i)
        texts.push_back(Repeated(1 + i % 40, 10000 + i));
    texts.insert(texts.end(), 10000, std::string(120, 'r'));
    for (std::size_t i = 0; i < 600; ++i)
        texts.push_back(i % 2 == 0 ? "one" : "other");
    std::size_t size = 0;
    for (const std::string& text : texts) {
        AppendText(text);
        size += 4;
    }
    for (std::size_t i = 0; i < 3000; ++i)
        size += 2 + texts[i].size();
    ExpectTexts(texts);
    EXPECT_LT(m_Rows->MemoryUse(), size * 1.1 + 65536);
}

} // namespace

} // namespace dmudfcom_tests
