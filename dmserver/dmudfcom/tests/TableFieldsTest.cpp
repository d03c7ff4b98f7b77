// Declaring fields and finding them.
#include "TableFixture.h"

namespace dmudfcom_tests {

TEST_F(TableTest, AFieldByIdHasTheNameAndTypeOfTheMap) {
    ASSERT_EQ(m_Table->AddFieldById(fieldExpirationDate, 3, 1, 4), S_OK);
    const auto field = FieldOf(*m_Table, 102);
    ASSERT_TRUE(field);
    CBstr name;
    EXPECT_EQ(field->get_Name(name.Put()), S_OK);
    EXPECT_EQ(name.View(), L"EXPIRATION_DATE");
    EXPECT_EQ(Get(*field, &IdmField::get_Id), 102);
    EXPECT_EQ(Get(*field, &IdmField::get_Type), static_cast<LONG>(EColumnType::Date));
    EXPECT_EQ(Get(*field, &IdmField::get_BaseCode), 3);
    EXPECT_EQ(Get(*field, &IdmField::get_HasStatus), 1);
    EXPECT_EQ(Get(*field, &IdmField::get_Status), 4);
}

TEST_F(TableTest, AFieldByNameGetsTheIdOfTheMapWithoutRegardToCase) {
    EXPECT_EQ(m_Table->AddFieldByName(CBstr(L"symbol_name").Get(), 0, 0, 0), S_OK);
    EXPECT_TRUE(FieldOf(*m_Table, fieldSymbolName));
    EXPECT_TRUE(FieldOf(*m_Table, L"Symbol_Name"));
}

TEST_F(TableTest, UnknownIdsAndNamesAreRefused) {
    EXPECT_EQ(m_Table->AddFieldById(3, 0, 0, 0), E_INVALIDARG);
    EXPECT_EQ(m_Table->AddFieldById(-1, 0, 0, 0), E_INVALIDARG);
    EXPECT_EQ(m_Table->AddFieldByName(CBstr(L"NO_SUCH_COLUMN").Get(), 0, 0, 0), E_INVALIDARG);
    EXPECT_EQ(m_Table->AddFieldByName(nullptr, 0, 0, 0), E_INVALIDARG);
    const wchar_t loneSurrogate[] = {wchar_t(0xD800), 0};
    EXPECT_EQ(m_Table->AddFieldByName(CBstr(loneSurrogate).Get(), 0, 0, 0), E_INVALIDARG);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 0);
}

TEST_F(TableTest, AFieldThatIsThereIsNotAddedAgain) {
    EXPECT_EQ(m_Table->AddFieldById(fieldSymbol, 1, 0, 0), S_OK);
    EXPECT_EQ(m_Table->AddFieldById(fieldSymbol, 2, 0, 0), S_FALSE);
    EXPECT_EQ(m_Table->AddFieldByName(CBstr(L"SYMBOL").Get(), 2, 0, 0), S_FALSE);
    EXPECT_EQ(m_Table->AddNewField(CBstr(L"symbol").Get(), 6, 0), S_FALSE);
    EXPECT_EQ(m_Table->AddNewField(CBstr(L"SYMBOL").Get(), 0, 0), E_INVALIDARG);
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 1);
    EXPECT_EQ(Get(*FieldOf(*m_Table, fieldSymbol), &IdmField::get_BaseCode), 1);
}

TEST_F(TableTest, AnAbsentFieldIsANullPointerAndSuccess) {
    CComPtr<IdmField> field;
    EXPECT_EQ(m_Table->get_FieldById(fieldSymbol, field.Put()), S_OK);
    EXPECT_FALSE(field);
    EXPECT_EQ(m_Table->get_FieldByName(CBstr(L"SYMBOL").Get(), field.Put()), S_OK);
    EXPECT_FALSE(field);
    EXPECT_EQ(m_Table->get_FieldByName(nullptr, field.Put()), S_OK);
    EXPECT_FALSE(field);
}

TEST_F(TableTest, FieldsAreCountedFromZeroAndABadIndexFails) {
    m_Table->AddFieldById(fieldSymbol, 0, 0, 0);
    m_Table->AddFieldById(fieldCategory, 0, 0, 0);
    CComPtr<IdmField> field;
    EXPECT_EQ(m_Table->get_Field(1, field.Put()), S_OK);
    EXPECT_EQ(Get(*field, &IdmField::get_Id), fieldCategory);
    for (const LONG index : {-1, 2, 1000}) {
        EXPECT_EQ(m_Table->get_Field(index, field.Put()), E_INVALIDARG);
        EXPECT_FALSE(field);
    }
}

TEST_F(TableTest, ANewFieldTakesAnyNameAndEveryType) {
    for (const ULONG type : {0, 5, 6, 7, 8, 9, 10, 11}) {
        const std::wstring name = L"FREE_" + std::to_wstring(type);
        ASSERT_EQ(m_Table->AddNewField(CBstr(name).Get(), type, 0), S_OK);
        const auto field = FieldOf(*m_Table, name.c_str());
        EXPECT_EQ(Get(*field, &IdmField::get_Type), static_cast<LONG>(type));
        EXPECT_GE(Get(*field, &IdmField::get_Id), FirstUnmappedField);
    }
    for (const ULONG type : {1U, 2U, 3U, 4U, 12U, ~0U})
        EXPECT_EQ(m_Table->AddNewField(CBstr(L"ODD").Get(), type, 0), E_INVALIDARG);
    EXPECT_EQ(m_Table->AddNewField(CBstr(L"").Get(), 6, 0), E_INVALIDARG);
    EXPECT_EQ(m_Table->AddNewField(nullptr, 6, 0), E_INVALIDARG);
}

TEST_F(TableTest, ANewFieldOfAKnownNameHasItsIdAndTheTypeAskedFor) {
    AddField(L"STANDARD_TIME", EColumnType::Text);
    const auto field = FieldOf(*m_Table, fieldStandardTime);
    ASSERT_TRUE(field);
    EXPECT_EQ(Get(*field, &IdmField::get_Type), 0);
}

TEST_F(TableTest, AFreeNameHasTheSameIdInEveryTable) {
    AddField(L"My Column", EColumnType::Long);
    const auto other = MakeTable();
    other->AddNewField(CBstr(L"MY COLUMN").Get(), 6, 0);
    EXPECT_EQ(Get(*FieldOf(*m_Table, L"my column"), &IdmField::get_Id),
              Get(*FieldOf(*other, L"my column"), &IdmField::get_Id));
}

TEST_F(TableTest, AFieldAddedToRecordsIsNullInThem) {
    m_Table->AddFieldById(fieldSymbol, 0, 0, 0);
    AppendLong(*FieldOf(*m_Table, fieldSymbol), 1);
    AddField(L"LATE", EColumnType::Long);
    const auto late = FieldOf(*m_Table, L"LATE");
    EXPECT_TRUE(m_Rows->IsNull(0, 1));
    EXPECT_EQ(LongOf(*late), 0);
    EXPECT_EQ(late->put_AsLong(5), S_OK);
    EXPECT_EQ(m_Rows->Integer(0, 1), 5);
}

TEST_F(TableTest, AFieldTellsSizesAndOffsets) {
    AddField(L"A", EColumnType::Short);
    AddField(L"B", EColumnType::Double);
    ASSERT_EQ(m_Table->AddFieldById(fieldSymbol, 0, 1, 4), S_OK);
    AddField(L"D", EColumnType::Text, 20);
    AddField(L"E", EColumnType::Text);
    struct tagExpected {
        const wchar_t* Name;
        LONG Offset, Size, SizeEx, DisplayLength;
        const wchar_t* TypeName;
    };
    for (const tagExpected& expected :
         {tagExpected{L"A", 0, 2, 2, 6, L"Short"}, tagExpected{L"B", 2, 8, 8, 24, L"Double"},
          tagExpected{L"SYMBOL", 10, 4, 8, 11, L"Long"}, tagExpected{L"D", 18, 20, 20, 20, L"Text"},
          tagExpected{L"E", 38, 0, 0, 0, L"Text"}}) {
        const auto field = FieldOf(*m_Table, expected.Name);
        EXPECT_EQ(Get(*field, &IdmField::get_Offset), expected.Offset) << expected.Name;
        EXPECT_EQ(Get(*field, &IdmField::get_Size), expected.Size) << expected.Name;
        EXPECT_EQ(Get(*field, &IdmField::get_SizeEx), expected.SizeEx) << expected.Name;
        EXPECT_EQ(Get(*field, &IdmField::get_DisplayLength), expected.DisplayLength) << expected.Name;
        CBstr type;
        EXPECT_EQ(field->get_TypeName(type.Put()), S_OK);
        EXPECT_EQ(type.View(), expected.TypeName);
    }
    const auto free = FieldOf(*m_Table, L"E");
    m_Table->Append();
    free->put_AsString(CBstr(L"привет").Get());
    m_Table->Post();
    EXPECT_EQ(Get(*free, &IdmField::get_DisplayLength), 6);
}

TEST_F(TableTest, BaseCodeAndStatusArePlainValues) {
    m_Table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto field = FieldOf(*m_Table, fieldSymbol);
    EXPECT_EQ(field->put_BaseCode(32), S_OK);
    EXPECT_EQ(field->put_HasStatus(1), S_OK);
    EXPECT_EQ(field->put_Status(8), S_OK);
    EXPECT_EQ(Get(*field, &IdmField::get_BaseCode), 32);
    EXPECT_EQ(Get(*field, &IdmField::get_HasStatus), 1);
    EXPECT_EQ(Get(*field, &IdmField::get_Status), 8);
    EXPECT_EQ(Get(*field, &IdmField::get_SizeEx), 12);
}

TEST_F(TableTest, IsNameComparesWithoutCase) {
    m_Table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto field = FieldOf(*m_Table, fieldSymbol);
    LONG same = -1;
    EXPECT_EQ(field->IsName(CBstr(L"Symbol").Get(), &same), S_OK);
    EXPECT_EQ(same, 1);
    EXPECT_EQ(field->IsName(CBstr(L"SYMBOLS").Get(), &same), S_OK);
    EXPECT_EQ(same, 0);
    EXPECT_EQ(field->IsName(nullptr, &same), S_OK);
    EXPECT_EQ(same, 0);
    EXPECT_EQ(field->IsName(CBstr(L"SYMBOL").Get(), nullptr), E_POINTER);
}

TEST_F(TableTest, ThirtyFivePortfolioFieldsAreAddedByName) {
    const wchar_t* names[] = {L"SYMBOL",
                              L"SYMBOL_NAME",
                              L"SYMBOL_ROOT",
                              L"DESCRIPTION",
                              L"CUSIP",
                              L"CATEGORY",
                              L"DATA_FEED",
                              L"DATA_FEED_NAME",
                              L"EXCHANGE",
                              L"EXCHANGE_NAME",
                              L"EXCHANGE_TIME_ZONE_INFORMATION",
                              L"SETTING_TYPE",
                              L"SETTING",
                              L"CUSTOM_SETTING",
                              L"PRICE_SCALE",
                              L"POINT_VALUE",
                              L"DAILY_LIMIT",
                              L"MIN_MOVEMENT",
                              L"SESSION_TYPE",
                              L"CUSTOM_SESSION",
                              L"TEMPLATE_SESSION",
                              L"SESSIONS_STRING",
                              L"SESSIONS_TIME_ZONE_INFORMATION",
                              L"STRIKE_PRICE",
                              L"CONTRACT_MONTH",
                              L"CONTRACT_YEAR",
                              L"CALL_PUT",
                              L"MARGIN",
                              L"EXPIRATION_DATE",
                              L"EXPIRED",
                              L"EXPIRATION_RULE",
                              L"FIRST_NOTICE_DATE",
                              L"DELIVERY",
                              L"EXCHANGE_GMT",
                              L"LOCAL_GMT"};
    for (const wchar_t* name : names)
        EXPECT_EQ(m_Table->AddFieldByName(CBstr(name).Get(), 0, 0, 0), S_OK) << CBstr(name).Text();
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_FieldCount), 35);
}

TEST_F(TableTest, TheSymbolInfoListsAreAllKnownIds) {
    const LONG symbol[] = {219,  62,   190,  196,  17,   32,   224,  102,  5,    217, 218, 230, 213,
                           66,   512,  511,  519,  222,  207,  440,  441,  1016, 31,  209, 199, 1013,
                           1015, 1005, 1004, 1054, 1007, 1009, 1010, 1012, 1060, 240, 241, 225, 294};
    static_assert(std::size(symbol) == 39);
    for (const LONG id : symbol)
        EXPECT_EQ(m_Table->AddFieldById(id, 0, 1, 4), S_OK) << id;
    const auto future = MakeTable();
    const LONG customFuture[] = {219, 62,  190,  17,   5,    217,  218,  230,  207,  440,  441,  1102,
                                 31,  209, 1013, 1015, 1005, 1004, 1054, 1007, 1009, 1010, 1012, 225};
    static_assert(std::size(customFuture) == 24);
    for (const LONG id : customFuture)
        EXPECT_EQ(future->AddFieldById(id, 0, 1, 4), S_OK) << id;
}

} // namespace dmudfcom_tests
