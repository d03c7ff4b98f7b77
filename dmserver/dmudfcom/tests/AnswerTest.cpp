// Answers, transactions and their tables.
#include "TableFixture.h"

#include "dmserver/dmudfcom/interface/AnswerBytes.h"

#include "platform/com/object.h"
#include "platform/com/safearray.h"

#include <array>

namespace dmudfcom_tests {

namespace {

CComPtr<IdmTable> TableOf(LONG symbol) {
    const auto table = MakeTable();
    table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto field = FieldOf(*table, fieldSymbol);
    table->Append();
    field->put_AsLong(symbol);
    table->Post();
    return table;
}

CComPtr<IdmAnswer> MakeAnswerObject() { return Make<IdmAnswer>(CLSID_dmAnswer); }

LONG FirstSymbol(IdmTable& table) {
    table.First();
    return LongOf(*FieldOf(table, fieldSymbol));
}

std::string BytesOf(const CVariant& value) {
    const auto bytes = platform::BytesOf(value.Get().parray);
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

CVariant VariantOf(std::string_view bytes) {
    return CVariant::FromArray(platform::MakeByteArray(std::as_bytes(std::span(bytes))), VT_UI1);
}

CVariant AnswerOf(std::span<IdmTable* const> tables) {
    CVariant answer;
    EXPECT_EQ(MakeAnswer(tables, answer.Put()), S_OK);
    EXPECT_EQ(answer.Type(), 0x2011);
    return answer;
}

} // namespace

TEST(Answer, ItsFirstTransactionsFirstTableIsAttachedToTheCallersTable) {
    const auto source = TableOf(42);
    const CVariant bytes = AnswerOf(std::array{source.Get()});
    EXPECT_EQ(References(*source), 1U);
    auto answer = MakeAnswerObject();
    ASSERT_EQ(answer->Assign(bytes.Get()), S_OK);
    CComPtr<IdmTransaction> transaction;
    ASSERT_EQ(answer->get_Transaction(0, transaction.Put()), S_OK);
    CComPtr<IdmTable> table;
    ASSERT_EQ(transaction->get_Table(0, table.Put()), S_OK);
    answer.Reset();
    transaction.Reset();
    const auto mine = MakeTable();
    ASSERT_EQ(mine->Attach(table.Get()), S_OK);
    EXPECT_EQ(FirstSymbol(*mine), 42);
    EXPECT_EQ(References(*table), 1U);
}

TEST(Answer, ANewAnswerIsEmpty) {
    const auto answer = MakeAnswerObject();
    EXPECT_EQ(Get(*answer, &IdmAnswer::get_TransactionCount), 0);
    CComPtr<IdmTransaction> transaction;
    EXPECT_EQ(answer->get_Transaction(0, transaction.Put()), E_INVALIDARG);
    EXPECT_FALSE(transaction);
    EXPECT_EQ(answer->get_Transaction(0, nullptr), E_POINTER);
    EXPECT_EQ(answer->get_TransactionCount(nullptr), E_POINTER);
}

TEST(Answer, TransactionsAndTablesKeepTheirOrder) {
    const auto one = TableOf(1);
    const auto two = TableOf(2);
    const auto three = TableOf(3);
    const std::array<IdmTable*, 1> first{one.Get()};
    const std::array<IdmTable*, 2> second{two.Get(), three.Get()};
    const std::array<std::span<IdmTable* const>, 3> transactions{first, {}, second};
    CVariant bytes;
    ASSERT_EQ(MakeAnswer(transactions, bytes.Put()), S_OK);
    const auto answer = MakeAnswerObject();
    ASSERT_EQ(answer->Assign(bytes.Get()), S_OK);
    EXPECT_EQ(Get(*answer, &IdmAnswer::get_TransactionCount), 3);
    CComPtr<IdmTransaction> transaction;
    ASSERT_EQ(answer->get_Transaction(1, transaction.Put()), S_OK);
    EXPECT_EQ(Get(*transaction, &IdmTransaction::get_TableCount), 0);
    ASSERT_EQ(answer->get_Transaction(2, transaction.Put()), S_OK);
    EXPECT_EQ(Get(*transaction, &IdmTransaction::get_TableCount), 2);
    CComPtr<IdmTable> table;
    ASSERT_EQ(transaction->get_Table(1, table.Put()), S_OK);
    EXPECT_EQ(FirstSymbol(*table), 3);
    for (const LONG index : {-1, 2}) {
        EXPECT_EQ(transaction->get_Table(index, table.Put()), E_INVALIDARG);
        EXPECT_FALSE(table);
    }
    EXPECT_EQ(transaction->get_Table(0, nullptr), E_POINTER);
    EXPECT_EQ(answer->get_Transaction(3, transaction.Put()), E_INVALIDARG);
}

TEST(Answer, OnlyAnArrayOfBytesIsTaken) {
    const auto answer = MakeAnswerObject();
    EXPECT_EQ(answer->Assign(CVariant().Get()), E_FAIL);
    EXPECT_EQ(answer->Assign(CVariant(L"text").Get()), E_FAIL);
    EXPECT_EQ(answer->Assign(CVariant(LONG{8209}).Get()), E_FAIL);
    EXPECT_EQ(answer->Assign(CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 3), VT_I4).Get()), E_FAIL);
    EXPECT_EQ(answer->Assign(VariantOf("").Get()), E_FAIL);
}

TEST(Answer, ATableIsNoAnswerAndAnAnswerNoTable) {
    const auto table = TableOf(1);
    CVariant tableBytes;
    table->get_AsVariant(tableBytes.Put());
    EXPECT_EQ(MakeAnswerObject()->Assign(tableBytes.Get()), E_FAIL);
    EXPECT_EQ(table->put_AsVariant(AnswerOf(std::array{table.Get()}).Get()), E_FAIL);
    EXPECT_EQ(FirstSymbol(*table), 1);
}

TEST(Answer, BytesCutOrAlteredAnywhereAreRefusedAndTheOldAnswerStays) {
    const auto source = TableOf(7);
    const std::string good = BytesOf(AnswerOf(std::array{source.Get()}));
    const auto answer = MakeAnswerObject();
    ASSERT_EQ(answer->Assign(VariantOf(good).Get()), S_OK);
    for (std::size_t place = 0; place < good.size(); ++place) {
        ASSERT_EQ(answer->Assign(VariantOf(good.substr(0, place)).Get()), E_FAIL) << place;
        for (unsigned bit = 0; bit < 8; ++bit) {
            std::string altered = good;
            altered[place] = static_cast<char>(altered[place] ^ 1 << bit);
            ASSERT_EQ(answer->Assign(VariantOf(altered).Get()), E_FAIL) << place;
        }
    }
    EXPECT_EQ(answer->Assign(VariantOf(good + good).Get()), E_FAIL);
    EXPECT_EQ(Get(*answer, &IdmAnswer::get_TransactionCount), 1);
}

TEST(Answer, ANewAnswerTakesThePlaceOfTheOldAndLeavesItsObjectsAlive) {
    const LONG before = platform::CModuleCount::Value();
    {
        const auto answer = MakeAnswerObject();
        answer->Assign(AnswerOf(std::array{TableOf(1).Get()}).Get());
        CComPtr<IdmTransaction> transaction;
        answer->get_Transaction(0, transaction.Put());
        EXPECT_EQ(References(*transaction), 2U);
        answer->Assign(AnswerOf(std::span<IdmTable* const>()).Get());
        EXPECT_EQ(References(*transaction), 1U);
        EXPECT_EQ(Get(*transaction, &IdmTransaction::get_TableCount), 1);
    }
    EXPECT_EQ(platform::CModuleCount::Value(), before);
}

TEST(Answer, BuildingOneRefusesNullPointers) {
    CVariant answer;
    IdmTable* const nothing = nullptr;
    EXPECT_EQ(MakeAnswer(std::span(&nothing, 1), answer.Put()), E_POINTER);
    EXPECT_EQ(answer.Type(), VT_EMPTY);
    EXPECT_EQ(MakeAnswer(std::span<IdmTable* const>(), nullptr), E_POINTER);
}

} // namespace dmudfcom_tests
