// What a field's gets and puts do with cells of every type.
#include "TableFixture.h"

#include <limits>

namespace dmudfcom_tests {

class ValuesTest : public TableTest {
protected:
    // One record whose single field is of the type given.
    CComPtr<IdmField> Cell(EColumnType type) {
        m_Table = MakeTable();
        m_Rows = m_Table.As<ITableRows>();
        m_Table->AddNewField(CBstr(L"CELL").Get(), static_cast<ULONG>(type), 0);
        m_Rows->AppendRow();
        m_Table->First();
        return FieldOf(*m_Table, L"CELL");
    }
    HRESULT PutText(IdmField& field, const wchar_t* text) { return field.put_AsString(CBstr(text).Get()); }
    bool IsNull() { return m_Rows->IsNull(0, 0); }
};

constexpr EColumnType AllTypes[] = {EColumnType::Text,  EColumnType::Short,  EColumnType::Long, EColumnType::Int64,
                                    EColumnType::Float, EColumnType::Double, EColumnType::Date, EColumnType::Time};

TEST_F(ValuesTest, ANullCellReadsAsZeroOrEmptyWithSuccess) {
    for (const EColumnType type : AllTypes) {
        const auto cell = Cell(type);
        EXPECT_EQ(TextOf(*cell), L"");
        for (const auto get :
             {&IdmField::get_AsLong, &IdmField::get_AsDate, &IdmField::get_AsTime, &IdmField::get_AsPieces})
            EXPECT_EQ(Get(*cell, get), 0);
        SHORT small = 7;
        EXPECT_EQ(cell->get_AsShort(&small), S_OK);
        EXPECT_EQ(small, 0);
        float single = 7;
        EXPECT_EQ(cell->get_AsFloat(&single), S_OK);
        EXPECT_EQ(single, 0);
        double real = 7;
        EXPECT_EQ(cell->get_AsDouble(&real), S_OK);
        EXPECT_EQ(real, 0);
    }
}

TEST_F(ValuesTest, NullOutPointersAreRefused) {
    const auto cell = Cell(EColumnType::Long);
    EXPECT_EQ(cell->get_AsString(nullptr), E_POINTER);
    EXPECT_EQ(cell->get_AsShort(nullptr), E_POINTER);
    EXPECT_EQ(cell->get_AsFloat(nullptr), E_POINTER);
    EXPECT_EQ(cell->get_AsDouble(nullptr), E_POINTER);
    EXPECT_EQ(cell->get_Name(nullptr), E_POINTER);
    EXPECT_EQ(cell->get_TypeName(nullptr), E_POINTER);
    for (const auto get :
         {&IdmField::get_Id, &IdmField::get_Type, &IdmField::get_Offset, &IdmField::get_Size, &IdmField::get_SizeEx,
          &IdmField::get_BaseCode, &IdmField::get_HasStatus, &IdmField::get_Status, &IdmField::get_AsLong,
          &IdmField::get_AsDate, &IdmField::get_AsTime, &IdmField::get_AsPieces, &IdmField::get_DisplayLength})
        EXPECT_EQ(((*cell).*get)(nullptr), E_POINTER);
}

TEST_F(ValuesTest, ANullTextMakesACellNullAndABlankOneWhereItIsNoText) {
    for (const EColumnType type : AllTypes) {
        const auto cell = Cell(type);
        ASSERT_EQ(cell->put_AsLong(5), S_OK);
        EXPECT_FALSE(IsNull());
        EXPECT_EQ(cell->put_AsString(nullptr), S_OK);
        EXPECT_TRUE(IsNull());
        cell->put_AsLong(5);
        EXPECT_EQ(PutText(*cell, L" "), S_OK);
        EXPECT_EQ(IsNull(), type != EColumnType::Text);
    }
}

TEST_F(ValuesTest, WholeNumbersReadAsEveryKind) {
    for (const EColumnType type : {EColumnType::Short, EColumnType::Long, EColumnType::Int64, EColumnType::Float,
                                   EColumnType::Double, EColumnType::Text}) {
        const auto cell = Cell(type);
        EXPECT_EQ(cell->put_AsLong(-12), S_OK);
        EXPECT_EQ(TextOf(*cell), L"-12");
        EXPECT_EQ(LongOf(*cell), -12);
        SHORT small = 0;
        EXPECT_EQ(cell->get_AsShort(&small), S_OK);
        EXPECT_EQ(small, -12);
        double real = 0;
        EXPECT_EQ(cell->get_AsDouble(&real), S_OK);
        EXPECT_EQ(real, -12.0);
        float single = 0;
        EXPECT_EQ(cell->get_AsFloat(&single), S_OK);
        EXPECT_EQ(single, -12.0F);
    }
}

TEST_F(ValuesTest, AFractionIsCutOffTowardZero) {
    for (const EColumnType type : {EColumnType::Float, EColumnType::Double, EColumnType::Text}) {
        const auto cell = Cell(type);
        EXPECT_EQ(cell->put_AsDouble(-2.75), S_OK);
        EXPECT_EQ(LongOf(*cell), -2);
        EXPECT_EQ(TextOf(*cell), L"-2.75");
    }
    const auto whole = Cell(EColumnType::Long);
    EXPECT_EQ(whole->put_AsDouble(2.75), S_OK);
    EXPECT_EQ(LongOf(*whole), 2);
}

TEST_F(ValuesTest, RealNumbersAreWrittenInTheFewestDigitsThatReadBack) {
    const auto real = Cell(EColumnType::Double);
    for (const double value : {0.1, 1.0 / 3, 4512.25, 1e300, -0.0}) {
        EXPECT_EQ(real->put_AsDouble(value), S_OK);
        EXPECT_EQ(PutText(*real, TextOf(*real).c_str()), S_OK);
        double back = 0;
        EXPECT_EQ(real->get_AsDouble(&back), S_OK);
        EXPECT_EQ(back, value);
    }
    real->put_AsDouble(0.1);
    EXPECT_EQ(TextOf(*real), L"0.1");
    const auto single = Cell(EColumnType::Float);
    single->put_AsFloat(0.1F);
    EXPECT_EQ(TextOf(*single), L"0.1");
    const auto text = Cell(EColumnType::Text);
    text->put_AsFloat(0.1F);
    EXPECT_EQ(TextOf(*text), L"0.1");
}

TEST_F(ValuesTest, ANumberOutsideTheRangeAskedForReadsAsZero) {
    LONG value = 1;
    const auto large = Cell(EColumnType::Int64);
    m_Rows->SetInteger(0, 0, std::int64_t{1} << 40);
    EXPECT_EQ(large->get_AsLong(&value), S_FALSE);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(TextOf(*large), L"1099511627776");
    const auto real = Cell(EColumnType::Double);
    real->put_AsDouble(1e300);
    value = 1;
    EXPECT_EQ(real->get_AsLong(&value), S_FALSE);
    EXPECT_EQ(value, 0);
    float single = 1;
    EXPECT_EQ(real->get_AsFloat(&single), S_FALSE);
    EXPECT_EQ(single, 0);
    real->put_AsDouble(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(real->get_AsLong(&value), S_FALSE);
    const auto whole = Cell(EColumnType::Long);
    whole->put_AsLong(40000);
    SHORT small = 1;
    EXPECT_EQ(whole->get_AsShort(&small), S_FALSE);
    EXPECT_EQ(small, 0);
}

TEST_F(ValuesTest, AValueThatTheColumnCannotHoldIsStoredAsZero) {
    const auto small = Cell(EColumnType::Short);
    small->put_AsLong(5);
    EXPECT_EQ(small->put_AsLong(40000), S_FALSE);
    EXPECT_EQ(LongOf(*small), 0);
    EXPECT_FALSE(IsNull());
    EXPECT_EQ(small->put_AsDouble(1e10), S_FALSE);
    EXPECT_EQ(small->put_AsDouble(1e30), S_FALSE);
    const auto whole = Cell(EColumnType::Long);
    whole->put_AsLong(5);
    EXPECT_EQ(PutText(*whole, L"twelve"), S_FALSE);
    EXPECT_EQ(LongOf(*whole), 0);
    const auto single = Cell(EColumnType::Float);
    EXPECT_EQ(single->put_AsDouble(1e300), S_FALSE);
    EXPECT_EQ(LongOf(*single), 0);
}

TEST_F(ValuesTest, OnlyATextThatIsANumberAsAWholeReadsAsOne) {
    const auto text = Cell(EColumnType::Text);
    struct tagCase {
        const wchar_t* Text;
        LONG Value;
        HRESULT Status;
    };
    for (const tagCase& each :
         {tagCase{L"42", 42, S_OK}, tagCase{L"  +42\t", 42, S_OK}, tagCase{L"-42.9", -42, S_OK},
          tagCase{L"1e3", 1000, S_OK}, tagCase{L"2147483647", 2147483647, S_OK}, tagCase{L"2147483648", 0, S_FALSE},
          tagCase{L"99999999999999999999", 0, S_FALSE}, tagCase{L"12a", 0, S_FALSE}, tagCase{L"1,5", 0, S_FALSE},
          tagCase{L"+-1", 0, S_FALSE}, tagCase{L"1 2", 0, S_FALSE}, tagCase{L"31.12.2020", 0, S_FALSE},
          tagCase{L"nan", 0, S_FALSE}, tagCase{L"ABC", 0, S_FALSE}}) {
        ASSERT_EQ(PutText(*text, each.Text), S_OK);
        LONG value = -1;
        EXPECT_EQ(text->get_AsLong(&value), each.Status) << CBstr(each.Text).Text();
        EXPECT_EQ(value, each.Value);
    }
    PutText(*text, L"1.5");
    double real = 0;
    EXPECT_EQ(text->get_AsDouble(&real), S_OK);
    EXPECT_EQ(real, 1.5);
    PutText(*text, L"x");
    EXPECT_EQ(text->get_AsDouble(&real), S_FALSE);
    EXPECT_EQ(real, 0);
}

TEST_F(ValuesTest, ADateCellIsADayNumberAndATextOfDayMonthYear) {
    const auto date = Cell(EColumnType::Date);
    for (const auto& [day, text] :
         {std::pair{0, L"30.12.1899"}, std::pair{2, L"01.01.1900"}, std::pair{36585, L"29.02.2000"},
          std::pair{65380, L"31.12.2078"}, std::pair{-1, L"29.12.1899"}, std::pair{2958465, L"31.12.9999"}}) {
        EXPECT_EQ(date->put_AsLong(day), S_OK);
        EXPECT_EQ(TextOf(*date), text);
        EXPECT_EQ(Get(*date, &IdmField::get_AsDate), day);
        date->put_AsLong(1);
        EXPECT_EQ(PutText(*date, text), S_OK);
        EXPECT_EQ(LongOf(*date), day);
    }
    EXPECT_EQ(PutText(*date, L"36585"), S_OK);
    EXPECT_EQ(LongOf(*date), 36585);
    date->put_AsLong(2958466);
    EXPECT_EQ(TextOf(*date), L"2958466");
    for (const wchar_t* wrong : {L"31.02.2000", L"01.13.2000", L"00.01.2000", L"1.1.0", L"01.01", L"01.01.2000.",
                                 L"01.01.20000", L"01-01-2000"}) {
        EXPECT_EQ(PutText(*date, wrong), S_FALSE) << CBstr(wrong).Text();
        EXPECT_EQ(LongOf(*date), 0);
    }
}

TEST_F(ValuesTest, ATimeCellIsSecondsSinceMidnight) {
    const auto time = Cell(EColumnType::Time);
    for (const auto& [seconds, text] : {std::pair{0, L"00:00:00"}, std::pair{7200, L"02:00:00"},
                                        std::pair{45296, L"12:34:56"}, std::pair{86399, L"23:59:59"}}) {
        EXPECT_EQ(time->put_AsLong(seconds), S_OK);
        EXPECT_EQ(TextOf(*time), text);
        EXPECT_EQ(Get(*time, &IdmField::get_AsTime), seconds);
        time->put_AsLong(1);
        EXPECT_EQ(PutText(*time, text), S_OK);
        EXPECT_EQ(LongOf(*time), seconds);
    }
    EXPECT_EQ(PutText(*time, L"02:00:00.0000"), S_OK);
    EXPECT_EQ(LongOf(*time), 7200);
    time->put_AsLong(86400);
    EXPECT_EQ(TextOf(*time), L"86400");
    for (const wchar_t* wrong : {L"24:00:00", L"02:60:00", L"02:00:60", L"02:00", L"02:00:00.x", L"2h"})
        EXPECT_EQ(PutText(*time, wrong), S_FALSE) << CBstr(wrong).Text();
}

TEST_F(ValuesTest, DatesAndTimesGoIntoTextAndOutOfIt) {
    const auto text = Cell(EColumnType::Text);
    EXPECT_EQ(text->put_AsDate(36585), S_OK);
    EXPECT_EQ(TextOf(*text), L"29.02.2000");
    EXPECT_EQ(Get(*text, &IdmField::get_AsDate), 36585);
    EXPECT_EQ(text->put_AsTime(7200), S_OK);
    EXPECT_EQ(TextOf(*text), L"02:00:00");
    EXPECT_EQ(Get(*text, &IdmField::get_AsTime), 7200);
    LONG value = 1;
    EXPECT_EQ(text->get_AsDate(&value), S_FALSE);
    EXPECT_EQ(value, 0);
    PutText(*text, L"17");
    EXPECT_EQ(Get(*text, &IdmField::get_AsDate), 17);
}

TEST_F(ValuesTest, ADateHasNoTimeAndATimeNoDate) {
    LONG value = 1;
    const auto date = Cell(EColumnType::Date);
    date->put_AsDate(36585);
    EXPECT_EQ(date->get_AsTime(&value), S_FALSE);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(date->put_AsTime(7200), S_FALSE);
    EXPECT_EQ(LongOf(*date), 0);
    const auto time = Cell(EColumnType::Time);
    time->put_AsTime(7200);
    EXPECT_EQ(time->get_AsDate(&value), S_FALSE);
    EXPECT_EQ(value, 0);
    const auto number = Cell(EColumnType::Long);
    EXPECT_EQ(number->put_AsDate(36585), S_OK);
    EXPECT_EQ(Get(*number, &IdmField::get_AsDate), 36585);
}

TEST_F(ValuesTest, PiecesCountInUnitsOfOneOverTheBaseCode) {
    const auto price = Cell(EColumnType::Double);
    price->put_AsDouble(110.5);
    EXPECT_EQ(Get(*price, &IdmField::get_AsPieces), 111);
    price->put_BaseCode(32);
    EXPECT_EQ(Get(*price, &IdmField::get_AsPieces), 3536);
    EXPECT_EQ(price->put_AsPieces(-3), S_OK);
    EXPECT_EQ(TextOf(*price), L"-0.09375");
    EXPECT_EQ(Get(*price, &IdmField::get_AsPieces), -3);
    price->put_AsDouble(1e15);
    LONG value = 1;
    EXPECT_EQ(price->get_AsPieces(&value), S_FALSE);
    EXPECT_EQ(value, 0);
}

TEST_F(ValuesTest, TextKeepsEveryCharacterOfEveryAlphabet) {
    const auto text = Cell(EColumnType::Text);
    const std::wstring value(L"Ab\0й€😀", 6);
    EXPECT_EQ(text->put_AsString(CBstr(std::wstring_view(value)).Get()), S_OK);
    EXPECT_EQ(TextOf(*text), value);
    const std::wstring longText(100000, L'ж');
    EXPECT_EQ(text->put_AsString(CBstr(std::wstring_view(longText)).Get()), S_OK);
    EXPECT_EQ(TextOf(*text), longText);
    const wchar_t loneSurrogate[] = {L'a', wchar_t(0xDC00), 0};
    EXPECT_EQ(PutText(*text, loneSurrogate), E_INVALIDARG);
    EXPECT_EQ(TextOf(*text), longText);
}

TEST_F(ValuesTest, BytesThatAreNoUtf8FailToRead) {
    const auto text = Cell(EColumnType::Text);
    m_Rows->SetText(0, 0, "\xFF\xFE");
    CBstr value;
    EXPECT_EQ(text->get_AsString(value.Put()), E_FAIL);
    EXPECT_TRUE(value.IsNull());
}

TEST_F(ValuesTest, SmallNumbersPutAsShortAndFloat) {
    const auto cell = Cell(EColumnType::Double);
    EXPECT_EQ(cell->put_AsShort(-5), S_OK);
    EXPECT_EQ(LongOf(*cell), -5);
    EXPECT_EQ(cell->put_AsFloat(0.5F), S_OK);
    EXPECT_EQ(TextOf(*cell), L"0.5");
}

} // namespace dmudfcom_tests
