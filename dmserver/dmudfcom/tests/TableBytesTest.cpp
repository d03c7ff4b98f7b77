// A table as bytes, and bytes that are none.
#include "TableFixture.h"

#include "platform/com/safearray.h"

#include "Carriers.pb.h"

#include <boost/crc.hpp>

#include <random>

namespace dmudfcom_tests {

namespace {

namespace wire = sqstorage::carriers;

constexpr VARTYPE ByteArray = 0x2011;

std::string BytesOf(IdmTable& table) {
    CVariant value;
    EXPECT_EQ(table.get_AsVariant(value.Put()), S_OK);
    EXPECT_EQ(value.Type(), ByteArray);
    const auto bytes = platform::BytesOf(value.Get().parray);
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

CVariant VariantOf(std::string_view bytes) {
    return CVariant::FromArray(platform::MakeByteArray(std::as_bytes(std::span(bytes))), VT_UI1);
}

HRESULT Put(IdmTable& table, std::string_view bytes) { return table.put_AsVariant(VariantOf(bytes).Get()); }

std::string Sealed(const std::string& content, std::uint32_t version = 1, std::uint32_t kind = 1) {
    boost::crc_optimal<32, 0x1EDC6F41, 0xFFFFFFFF, 0xFFFFFFFF, true, true> checksum;
    checksum.process_bytes(content.data(), content.size());
    wire::Sealed sealed;
    sealed.set_version(version);
    sealed.set_kind(kind);
    sealed.set_checksum(checksum.checksum());
    sealed.set_content(content);
    return sealed.SerializeAsString();
}

wire::Table ContentOf(IdmTable& table) {
    wire::Sealed sealed;
    wire::Table content;
    EXPECT_TRUE(sealed.ParseFromString(BytesOf(table)));
    EXPECT_TRUE(content.ParseFromString(sealed.content()));
    return content;
}

} // namespace

class BytesTest : public TableTest {
protected:
    void SetUp() override {
        AddField(L"T", EColumnType::Text, 12);
        AddField(L"S", EColumnType::Short);
        AddField(L"I", EColumnType::Int64);
        AddField(L"F", EColumnType::Float);
        AddField(L"R", EColumnType::Double);
        AddField(L"C", EColumnType::Time);
        ASSERT_EQ(m_Table->AddFieldById(fieldExpirationDate, 5, 1, 4), S_OK);
        m_Table->put_Id(-3);
        m_Table->put_Contents(8);
        for (LONG row = 0; row < 11; ++row) {
            m_Rows->AppendRow();
            m_Rows->PutText(0, row % 2 ? "one" : "дважды");
            m_Rows->PutInteger(1, -row);
            if (row % 3 == 0)
                m_Rows->PutInteger(2, std::int64_t{1} << (row * 5));
            m_Rows->PutReal(3, row * 0.1);
            m_Rows->PutReal(4, row * 0.1);
            m_Rows->PutInteger(6, 36585 + row);
        }
    }
    // The test's table must be what SetUp left.
    void ExpectUntouched() { EXPECT_EQ(BytesOf(*m_Table), m_Before); }
    void Remember() { m_Before = BytesOf(*m_Table); }

    std::string m_Before;
};

TEST_F(BytesTest, ATableComesBackAsItWas) {
    const auto copy = MakeTable();
    ASSERT_EQ(Put(*copy, BytesOf(*m_Table)), S_OK);
    EXPECT_EQ(BytesOf(*copy), BytesOf(*m_Table));
    EXPECT_EQ(Get(*copy, &IdmTable::get_Id), -3);
    EXPECT_EQ(Get(*copy, &IdmTable::get_Contents), 8);
    const auto rows = copy.As<ITableRows>();
    std::string mine;
    std::string theirs;
    ASSERT_EQ(rows->RowCount(), 11U);
    ASSERT_EQ(rows->ColumnCount(), 7U);
    for (ULONG column = 0; column < 7; ++column) {
        EXPECT_EQ(rows->ColumnName(column), m_Rows->ColumnName(column));
        EXPECT_EQ(rows->ColumnType(column), m_Rows->ColumnType(column));
        for (ULONG row = 0; row < 11; ++row) {
            EXPECT_EQ(rows->IsNull(row, column), m_Rows->IsNull(row, column));
            EXPECT_EQ(rows->Text(row, column, theirs), m_Rows->Text(row, column, mine));
        }
    }
    const auto date = FieldOf(*copy, fieldExpirationDate);
    EXPECT_EQ(Get(*date, &IdmField::get_BaseCode), 5);
    EXPECT_EQ(Get(*date, &IdmField::get_HasStatus), 1);
    EXPECT_EQ(Get(*date, &IdmField::get_Status), 4);
    EXPECT_EQ(Get(*FieldOf(*copy, L"T"), &IdmField::get_Size), 12);
}

TEST_F(BytesTest, EmptyTablesAndTablesWithoutFieldsComeBack) {
    const auto empty = MakeTable();
    EXPECT_EQ(Put(*m_Table, BytesOf(*empty)), S_OK);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 0);
    empty->AddFieldById(fieldSymbol, 0, 0, 0);
    EXPECT_EQ(Put(*m_Table, BytesOf(*empty)), S_OK);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 1);
    EXPECT_NE(Get(*m_Table, &IdmTable::get_Eof), 0);
}

TEST_F(BytesTest, RecordsGoOutInRecordOrderWithoutTheOneBeingAppended) {
    m_Table->Append();
    FieldOf(*m_Table, L"S")->put_AsLong(77);
    m_Table->PostTo(0);
    m_Table->Append();
    const auto copy = MakeTable();
    ASSERT_EQ(Put(*copy, BytesOf(*m_Table)), S_OK);
    const auto rows = copy.As<ITableRows>();
    EXPECT_EQ(rows->RowCount(), 12U);
    EXPECT_EQ(rows->Integer(0, 1), 77);
}

TEST_F(BytesTest, APutReplacesTheTableAloneAndBindsTheFieldsHeld) {
    const auto shared = MakeTable();
    shared->Attach(m_Table.Get());
    const auto small = FieldOf(*m_Table, L"S");
    const auto date = FieldOf(*m_Table, fieldExpirationDate);
    const auto other = MakeTable();
    other->AddFieldById(fieldExpirationDate, 0, 0, 0);
    const auto source = FieldOf(*other, fieldExpirationDate);
    other->Append();
    source->put_AsLong(5);
    other->Post();
    ASSERT_EQ(Put(*m_Table, BytesOf(*other)), S_OK);
    m_Table->First();
    EXPECT_EQ(LongOf(*date), 5);
    LONG value = 0;
    EXPECT_EQ(small->get_AsLong(&value), S_FALSE);
    EXPECT_EQ(Get(*shared, &IdmTable::get_RecordCount), 11);
}

TEST_F(BytesTest, AnythingButAnArrayOfBytesIsRefused) {
    Remember();
    EXPECT_EQ(m_Table->put_AsVariant(CVariant().Get()), E_FAIL);
    EXPECT_EQ(m_Table->put_AsVariant(CVariant(LONG{1}).Get()), E_FAIL);
    EXPECT_EQ(m_Table->put_AsVariant(CVariant(L"bytes").Get()), E_FAIL);
    VARIANT nothing{};
    nothing.vt = ByteArray;
    EXPECT_EQ(m_Table->put_AsVariant(nothing), E_FAIL);
    const auto longs = CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 4), VT_I4);
    EXPECT_EQ(m_Table->put_AsVariant(longs.Get()), E_FAIL);
    EXPECT_EQ(Put(*m_Table, ""), E_FAIL);
    EXPECT_EQ(Put(*m_Table, "no table"), E_FAIL);
    ExpectUntouched();
}

TEST_F(BytesTest, BytesCutAtAnyPlaceAreRefused) {
    Remember();
    for (std::size_t size = 0; size < m_Before.size(); ++size)
        ASSERT_EQ(Put(*m_Table, m_Before.substr(0, size)), E_FAIL) << size;
    for (std::size_t begin = 1; begin < m_Before.size(); ++begin)
        ASSERT_EQ(Put(*m_Table, m_Before.substr(begin)), E_FAIL) << begin;
    const std::string empty = BytesOf(*MakeTable());
    for (std::size_t size = 0; size < empty.size(); ++size)
        ASSERT_EQ(Put(*m_Table, empty.substr(0, size)), E_FAIL) << size;
    ExpectUntouched();
}

TEST_F(BytesTest, BytesAlteredAtAnyPlaceAreRefused) {
    Remember();
    for (std::size_t place = 0; place < m_Before.size(); ++place) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            std::string altered = m_Before;
            altered[place] = static_cast<char>(altered[place] ^ 1 << bit);
            ASSERT_EQ(Put(*m_Table, altered), E_FAIL) << place;
        }
        std::string longer = m_Before;
        longer.insert(place, 1, longer[place]);
        ASSERT_EQ(Put(*m_Table, longer), E_FAIL) << place;
    }
    EXPECT_EQ(Put(*m_Table, m_Before + '\0'), E_FAIL);
    EXPECT_EQ(Put(*m_Table, m_Before + m_Before), E_FAIL);
    ExpectUntouched();
}

TEST_F(BytesTest, AnotherVersionOrKindOfContentIsRefused) {
    Remember();
    const std::string content = ContentOf(*m_Table).SerializeAsString();
    EXPECT_EQ(Sealed(content), m_Before);
    EXPECT_EQ(Put(*m_Table, Sealed(content, 2)), E_FAIL);
    EXPECT_EQ(Put(*m_Table, Sealed(content, 1, 2)), E_FAIL);
    ExpectUntouched();
}

// Contents that a right checksum covers and that are wrong all the same.
TEST_F(BytesTest, HostileContentsAreRefused) {
    Remember();
    const wire::Table good = ContentOf(*m_Table);
    const auto expectRefused = [&](const char* what, auto spoil) {
        wire::Table bad = good;
        spoil(bad);
        EXPECT_EQ(Put(*m_Table, Sealed(bad.SerializeAsString())), E_FAIL) << what;
    };
    expectRefused("many records", [](wire::Table& t) { t.set_record_count(0xFFFFFFFF); });
    expectRefused("one record more", [](wire::Table& t) { t.set_record_count(12); });
    expectRefused("one record less", [](wire::Table& t) { t.set_record_count(10); });
    expectRefused("records without columns", [](wire::Table& t) { t.clear_columns(); });
    expectRefused("a column without values", [](wire::Table& t) { t.mutable_columns(1)->clear_integers(); });
    expectRefused("a name twice", [](wire::Table& t) { t.mutable_columns(1)->set_name("t"); });
    expectRefused("an id twice", [](wire::Table& t) { t.mutable_columns(1)->set_id(t.columns(0).id()); });
    expectRefused("no name", [](wire::Table& t) { t.mutable_columns(1)->clear_name(); });
    expectRefused("a name that is no text", [](wire::Table& t) { t.mutable_columns(1)->set_name("\xC0\x80"); });
    expectRefused("an unknown type", [](wire::Table& t) { t.mutable_columns(1)->set_type(99); });
    expectRefused("another type", [](wire::Table& t) { t.mutable_columns(1)->set_type(9); });
    expectRefused("a number too large", [](wire::Table& t) { t.mutable_columns(1)->set_integers(2, 40000); });
    expectRefused("values of two kinds", [](wire::Table& t) { t.mutable_columns(1)->add_doubles(1); });
    expectRefused("texts of a number", [](wire::Table& t) { t.mutable_columns(1)->set_texts("x"); });
    expectRefused("short nulls", [](wire::Table& t) { t.mutable_columns(2)->mutable_nulls()->pop_back(); });
    expectRefused("long nulls", [](wire::Table& t) { t.mutable_columns(2)->mutable_nulls()->push_back('\0'); });
    expectRefused("a null too many", [](wire::Table& t) { (*t.mutable_columns(2)->mutable_nulls())[0] |= 1; });
    expectRefused("nulls past the end",
                  [](wire::Table& t) { t.mutable_columns(2)->mutable_nulls()->back() |= '\x40'; });
    expectRefused("a text index past the end",
                  [](wire::Table& t) { t.mutable_columns(0)->set_text_indexes(0, 2); });
    expectRefused("a text length too large",
                  [](wire::Table& t) { t.mutable_columns(0)->set_text_lengths(0, 0xFFFFFFFF); });
    expectRefused("texts left over", [](wire::Table& t) { t.mutable_columns(0)->mutable_texts()->push_back('x'); });
    expectRefused("a text cut inside a character", [](wire::Table& t) {
        wire::Column& column = *t.mutable_columns(0);
        column.set_text_lengths(0, column.text_lengths(0) - 1);
        column.set_text_lengths(1, column.text_lengths(1) + 1);
    });
    for (const char* text : {"\xFF", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82"})
        expectRefused("no UTF-8", [&](wire::Table& t) {
            wire::Column& column = *t.mutable_columns(0);
            column.set_texts(text);
            column.clear_text_lengths();
            column.add_text_lengths(static_cast<std::uint32_t>(std::strlen(text)));
            for (int i = 0; i < column.text_indexes_size(); ++i)
                column.set_text_indexes(i, 0);
        });
    expectRefused("columns by the thousand", [](wire::Table& t) {
        for (int i = 0; i < 5000; ++i)
            t.add_columns();
    });
    EXPECT_EQ(Put(*m_Table, Sealed("\xFF\xFF\xFF")), E_FAIL);
    // A submessage that says it is longer than all there is.
    EXPECT_EQ(Put(*m_Table, Sealed("\x22\xFF\xFF\xFF\x7F")), E_FAIL);
    ExpectUntouched();
}

TEST_F(BytesTest, RandomContentsNeverBreakTheTable) {
    Remember();
    std::mt19937 random(11);
    const std::string content = ContentOf(*m_Table).SerializeAsString();
    const auto table = MakeTable();
    for (int round = 0; round < 20000; ++round) {
        std::string altered = content;
        for (int i = 0; i <= round % 4; ++i)
            altered[random() % altered.size()] = static_cast<char>(random());
        if (round % 5 == 0)
            altered.resize(random() % altered.size());
        // What is taken must be a whole table, which writes and reads itself again.
        if (Put(*table, Sealed(altered)) == S_OK) {
            ASSERT_EQ(Put(*MakeTable(), BytesOf(*table)), S_OK);
        }
    }
    ExpectUntouched();
}

} // namespace dmudfcom_tests
