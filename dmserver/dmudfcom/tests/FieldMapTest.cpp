// The one map of names, ids and types, through the tables that use it.
#include "../FieldMap.h"
#include "TableFixture.h"

namespace dmudfcom_tests {

namespace {

struct tagKnown {
    LONG Id;
    const char* Name;
    EColumnType Type;
};

using enum EColumnType;

constexpr tagKnown Known[] = {
    {5, "PRICE_SCALE", Long},
    {17, "EXCHANGE_NAME", Text},
    {31, "SYMBOL_NAME", Text},
    {62, "DESCRIPTION", Text},
    {102, "EXPIRATION_DATE", Date},
    {190, "CATEGORY", Long},
    {207, "DATA_FEED", Long},
    {208, "DATA_FEED_NAME", Text},
    {209, "SYMBOL_ROOT", Text},
    {217, "POINT_VALUE", Double},
    {218, "MIN_MOVEMENT", Double},
    {219, "SESSIONS_STRING", Text},
    {230, "DAILY_LIMIT", Long},
    {440, "EXCHANGE_GMT", Long},
    {441, "LOCAL_GMT", Long},
    {1000, "HOLIDAY", Long},
    {1002, "HOLIDAY_START_DATE", Date},
    {1004, "SETTING", Long},
    {1005, "SETTING_TYPE", Long},
    {1006, "SESSION", Long},
    {1007, "SESSION_TYPE", Long},
    {1009, "CUSTOM_SESSION", Long},
    {1010, "TEMPLATE_SESSION", Long},
    {1011, "TIME_ZONE", Long},
    {1012, "SESSIONS_TIME_ZONE_INFORMATION", Text},
    {1013, "EXCHANGE", Long},
    {1015, "EXCHANGE_TIME_ZONE_INFORMATION", Text},
    {1016, "SYMBOL", Long},
    {1025, "GENERATED_ID", Long},
    {1026, "DELETED", Long},
    {1027, "START_DAY", Long},
    {1028, "START_TIME", Long},
    {1029, "END_DAY", Long},
    {1030, "END_TIME", Long},
    {1031, "VALUE5", Long},
    {1032, "VALUE6", Long},
    {1033, "VALUE7", Long},
    {1054, "CUSTOM_SETTING", Long},
    {1077, "NAME", Text},
    {1078, "OFFSET", Long},
    {1079, "OFFSETTYPE", Long},
    {1080, "EXPIRATIONDATEMETHOD", Long},
    {1081, "BYDAYSNUMBER", Long},
    {1082, "BYDAYSMONTHTYPE", Long},
    {1083, "BYDAYSOFWEEKNUMBER", Long},
    {1084, "DAYOFWEEK", Long},
    {1085, "BYDAYSOFWEEKMONTHTYPE", Long},
    {1086, "EXPIRATION_MONTHS_MASK", Long},
    {1102, "CF", Long},
    {1112, "CURRENCY_CODE", Long},
};

} // namespace

TEST(FieldMap, TheIdsThatClientsKnowStandForTheirColumns) {
    for (const tagKnown& known : Known) {
        const tagFieldInfo* field = FindField(known.Id);
        ASSERT_TRUE(field) << known.Name;
        EXPECT_EQ(field->Name, known.Name);
        EXPECT_EQ(field->Type, known.Type) << known.Name;
    }
}

TEST(FieldMap, EveryEntryIsFoundByIdAndByNameInEitherCase) {
    for (const tagFieldInfo& field : FieldMap()) {
        EXPECT_EQ(FindField(field.Id), &field);
        EXPECT_EQ(FindField(field.Name), &field);
        std::string lower(field.Name);
        for (char& c : lower)
            c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        EXPECT_EQ(FindField(lower), &field);
    }
}

TEST(FieldMap, WhatItDoesNotHaveIsNotFound) {
    for (const LONG id : {0, -1, 4, 6, 1001, 2147483647})
        EXPECT_FALSE(FindField(id)) << id;
    for (const char* name : {"", "SYMBO", "SYMBOLS", "ZZZ", "\xD0\x96"})
        EXPECT_FALSE(FindField(std::string_view(name))) << name;
}

TEST(FieldMap, TheColumnsOfSymbolInfoThatClientsNameByIdAloneAreThere) {
    for (const char* name : {"CUSIP", "STRIKE_PRICE", "STRIKE_PRICE_NAME", "CONTRACT_MONTH", "CONTRACT_YEAR",
                             "CALL_PUT", "MARGIN", "EXPIRED", "EXPIRATION_RULE", "FIRST_NOTICE_DATE", "DELIVERY"}) {
        const tagFieldInfo* field = FindField(std::string_view(name));
        ASSERT_TRUE(field) << name;
        EXPECT_LT(field->Id, FirstOwnField) << name;
    }
}

TEST(FieldMap, ColumnsOfAllTablesAreKnown) {
    for (const char* name : {"CF_CODE",
                             "DATA_FEED_DLL_NAME",
                             "CLSID",
                             "PRIMARY_INSTANCE",
                             "ACTIVATED",
                             "ACTIVE",
                             "ASCII",
                             "DATA_FEED_SHORT_NAME",
                             "MAP_ID",
                             "USE_DAYLIGHT",
                             "BIAS",
                             "STANDARD_BIAS",
                             "STANDARD_DAY_OF_WEEK",
                             "STANDARD_DAY",
                             "STANDARD_MONTH",
                             "STANDARD_TIME",
                             "DAYLIGHT_BIAS",
                             "DAYLIGHT_DAY_OF_WEEK",
                             "DAYLIGHT_DAY",
                             "DAYLIGHT_MONTH",
                             "DAYLIGHT_TIME",
                             "SESSION_NAME",
                             "HOLIDAY_NAME",
                             "HOLIDAY_DESCRIPTION",
                             "HOLIDAY_END_DATE",
                             "ID",
                             "FILE_NAME",
                             "FILE_TYPE",
                             "BAR_INTERVAL",
                             "HEADER_LINES",
                             "FIELD_SEPARATOR",
                             "DECIMAL_SEPARATOR",
                             "DATE_FORMAT",
                             "TIME_FORMAT",
                             "FILE_TIME_ZONE",
                             "START_DATE",
                             "END_DATE",
                             "FLAGS",
                             "FIELD_ORDER",
                             "FIELD_TYPE",
                             "FIELD_NAME",
                             "SCHEMA_VERSION"})
        EXPECT_TRUE(FindField(std::string_view(name))) << name;
}

TEST(FieldMap, NamesItLacksGetAnIdAboveAllOfItsOwn) {
    EXPECT_EQ(UnmappedFieldId("Free"), UnmappedFieldId("FREE"));
    EXPECT_NE(UnmappedFieldId("Free"), UnmappedFieldId("Freed"));
    for (const char* name : {"", "a", "some longer name of a column"})
        EXPECT_GE(UnmappedFieldId(name), FirstUnmappedField);
    EXPECT_LT(FieldMap().back().Id, FirstUnmappedField);
}

} // namespace dmudfcom_tests
