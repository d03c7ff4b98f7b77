#include "apps/sqstorage/datasets/SymbolRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace sqCliTest {

namespace {

using namespace sqCli;
using testing::ElementsAre;
using testing::IsEmpty;

using Values = std::map<ESymbolColumn, std::string_view>;

struct tagParsed {
    std::optional<tagSymbolRow> Row;
    std::vector<std::string> Reasons;
};

// A symbol that is good but for the values given.
tagParsed Parse(const Values& values) {
    SymbolValues all{};
    all[SymbolName] = "ESZ26";
    all[SymbolCategory] = "0";
    all[SymbolFeed] = "F";
    all[SymbolExchange] = "E";
    for (const auto& [column, value] : values)
        all[column] = value;
    tagParsed parsed;
    parsed.Row = ParseSymbol(all, parsed.Reasons);
    EXPECT_EQ(parsed.Row.has_value(), parsed.Reasons.empty());
    return parsed;
}

std::vector<std::string> ReasonsOf(const Values& values) { return Parse(values).Reasons; }

tagSymbolRow RowOf(const Values& values) { return Parse(values).Row.value(); }

std::vector<std::string> TextsOf(const tagSymbolRow& row) {
    std::vector<std::string> texts;
    for (const Cell& cell : CellsOf(row))
        texts.push_back(TextOf(cell));
    return texts;
}

TEST(SymbolRules, WhatIsNotGivenIsTheExchangesOrNothing) {
    EXPECT_THAT(TextsOf(RowOf({})), ElementsAre("ESZ26", "", "", "", "0", "F", "E", "1", "", "", "", "", "1", "",
                                                "", "", "0", "0", "0", "0", "0", "", "0", "0", "", ""));
}

TEST(SymbolRules, AFullRowReadsBackAsItIs) {
    const Values values{{SymbolRoot, "ES"},
                        {SymbolDescription, "it's, \"so\""},
                        {SymbolCusip, "123456789012"},
                        {SymbolCategory, "32767"},
                        {SymbolSettingType, "0"},
                        {ESymbolColumn(SymbolPrices), "100"},
                        {ESymbolColumn(SymbolPrices + 1), "12.5"},
                        {ESymbolColumn(SymbolPrices + 2), "1000000"},
                        {ESymbolColumn(SymbolPrices + 3), "0.25"},
                        {SymbolSessionType, "0"},
                        {SymbolSession, "my own"},
                        {SymbolTimeZone, "1"},
                        {SymbolTimes, "Mon 09:30-16:00; Tue 17:00-Wed 16:00"},
                        {SymbolContractMonth, "12"},
                        {SymbolContractYear, "2026"},
                        {SymbolStrikePrice, "-4500.25"},
                        {SymbolCallPut, "-1"},
                        {SymbolMargin, "-2147483648"},
                        {SymbolExpirationDate, "2026-12-18"},
                        {SymbolExpired, "1"},
                        {SymbolExpirationRule, "7"},
                        {SymbolFirstNoticeDate, "1900-01-02"},
                        {SymbolDelivery, "2078-12-31"}};
    const auto texts = TextsOf(RowOf(values));
    ASSERT_EQ(texts.size(), SymbolColumns.size());
    for (const auto& [column, value] : values)
        EXPECT_EQ(texts[column], value) << SymbolColumns[column].Name;
}

TEST(SymbolRules, TheRootIsInCapitals) { EXPECT_EQ(RowOf({{SymbolRoot, "esß"}}).Symbol.Root, "ESß"); }

TEST(SymbolRules, TheFirstDayOfTheCalendarStandsForNoDate) {
    EXPECT_EQ(RowOf({{SymbolExpirationDate, "1900-01-01"}}), RowOf({}));
    EXPECT_THAT(
        ReasonsOf({{SymbolDelivery, "18.12.2026"}}),
        ElementsAre("DELIVERY: \"18.12.2026\" is not a date in the form YYYY-MM-DD: write it like 2027-12-24"));
}

TEST(SymbolRules, AZeroHasNoSign) {
    EXPECT_EQ(TextsOf(RowOf({{SymbolStrikePrice, "-0.0"}}))[SymbolStrikePrice], "0");
}

TEST(SymbolRules, NamesFitTheirColumns) {
    EXPECT_THAT(ReasonsOf({{SymbolName, ""}}), ElementsAre("SYMBOL_NAME is empty: give a name"));
    EXPECT_THAT(ReasonsOf({{SymbolName, "12345678901234567890123456789012"}}),
                ElementsAre("SYMBOL_NAME has 32 characters, and the store keeps 31: shorten it"));
    EXPECT_THAT(ReasonsOf({{SymbolName, "ES "}}), ElementsAre("SYMBOL_NAME is \"ES \", and the store does not tell "
                                                              "blanks at the end from none: remove them"));
    EXPECT_THAT(ReasonsOf({{SymbolRoot, "12345678901234567890123456789012"}}),
                ElementsAre("SYMBOL_ROOT has 32 characters, and the store keeps 31: shorten it"));
    EXPECT_THAT(ReasonsOf({{SymbolDescription, std::string(64, 'x')}}),
                ElementsAre("DESCRIPTION has 64 characters, and the store keeps 63: shorten it"));
    EXPECT_THAT(ReasonsOf({{SymbolCusip, "1234567890123"}}),
                ElementsAre("CUSIP has 13 characters, and the store keeps 12: shorten it"));
    EXPECT_THAT(ReasonsOf({{SymbolCusip, "1'"}}),
                ElementsAre("CUSIP has a single quote in it, which the store cannot keep there: remove it"));
    EXPECT_THAT(ReasonsOf({{SymbolFeed, ""}, {SymbolExchange, ""}}),
                ElementsAre("DATA_FEED_NAME is empty: give a name", "EXCHANGE_NAME is empty: give a name"));
}

TEST(SymbolRules, NumbersFitTheirColumns) {
    EXPECT_THAT(ReasonsOf({{SymbolCategory, ""}}),
                ElementsAre("CATEGORY is \"\": give a whole number from 0 to 32767"));
    EXPECT_THAT(ReasonsOf({{SymbolCategory, "-1"}}),
                ElementsAre("CATEGORY is \"-1\": give a whole number from 0 to 32767"));
    EXPECT_THAT(ReasonsOf({{SymbolCategory, "254"}}),
                ElementsAre("CATEGORY is 254, by which hosts say that there is none: give another number"));
    EXPECT_THAT(ReasonsOf({{SymbolSettingType, "3"}}),
                ElementsAre("SETTING_TYPE is \"3\": give a whole number from 0 to 2"));
    EXPECT_THAT(ReasonsOf({{SymbolSessionType, "4"}}),
                ElementsAre("SESSION_TYPE is \"4\": give a whole number from 0 to 3"));
    EXPECT_THAT(ReasonsOf({{SymbolContractMonth, "13"}, {SymbolContractYear, "26000"}}),
                ElementsAre("CONTRACT_MONTH is \"13\": give a whole number from 0 to 12",
                            "CONTRACT_YEAR is \"26000\": give a whole number from 0 to 9999"));
    EXPECT_THAT(ReasonsOf({{SymbolCallPut, "32768"}}),
                ElementsAre("CALL_PUT is \"32768\": give a whole number from -32768 to 32767"));
    EXPECT_THAT(
        ReasonsOf({{SymbolStrikePrice, "call"}}),
        ElementsAre("STRIKE_PRICE is \"call\": give a number above -1000000000 and below 1000000000, with a "
                    "decimal point"));
    EXPECT_THAT(
        ReasonsOf({{SymbolStrikePrice, "0.0000001"}}),
        ElementsAre("STRIKE_PRICE is \"0.0000001\", and the store would keep 0: give at most six decimals and "
                    "seven digits in all"));
}

TEST(SymbolRules, ASettingOfItsOwnIsGivenWholeAndOnlyThen) {
    EXPECT_THAT(
        ReasonsOf({{SymbolSettingType, "0"}}),
        ElementsAre("PRICE_SCALE is \"\": give a whole number from 1 to 2147483647",
                    "POINT_VALUE is \"\": give a number above 0 and below 1000000000, with a decimal point",
                    "DAILY_LIMIT is \"\": give a whole number from 1 to 2147483647",
                    "MIN_MOVEMENT is \"\": give a number above 0 and below 1000000000, with a decimal point"));
    EXPECT_THAT(ReasonsOf({{ESymbolColumn(SymbolPrices + 1), "50"}}),
                ElementsAre("POINT_VALUE is \"50\", and SETTING_TYPE is not 0: leave it empty"));
}

TEST(SymbolRules, ASessionIsGivenAsItsTypeWants) {
    EXPECT_THAT(
        ReasonsOf({{SymbolSessionType, "0"}}),
        ElementsAre("SESSION_TIMES is empty, and SESSION_TYPE 0 wants the symbol's own times: give them like "
                    "\"Mon 09:30-16:00; Tue 17:00-Wed 16:00\""));
    EXPECT_THAT(ReasonsOf({{SymbolSessionType, "2"}}), ElementsAre("SESSION_NAME is empty: give a name"));
    EXPECT_THAT(ReasonsOf({{SymbolSessionType, "2"}, {SymbolSession, "T"}, {SymbolTimes, "Mon 09:30-16:00"}}),
                ElementsAre("SESSION_TIMES is \"Mon 09:30-16:00\", and SESSION_TYPE is not 0: leave it empty"));
    EXPECT_THAT(ReasonsOf({{SymbolSession, "T"}, {SymbolTimeZone, "2"}}),
                ElementsAre("TIME_ZONE is \"2\", and SESSION_TYPE is not 0: leave it empty",
                            "SESSION_NAME is \"T\", and SESSION_TYPE is neither 0 nor 2: leave it empty"));
    EXPECT_EQ(RowOf({{SymbolSessionType, "0"}, {SymbolTimes, "Mon 09:30-16:00"}}).Own.TimeZone, ExchangeClock);
}

TEST(SymbolRules, SymbolsDifferByNameCategoryFeedAndExchange) {
    EXPECT_EQ(IdOf(RowOf({{SymbolDescription, "x"}})), IdOf(RowOf({})));
    EXPECT_NE(IdOf(RowOf({{SymbolName, "esZ26"}})), IdOf(RowOf({})));
    EXPECT_NE(IdOf(RowOf({{SymbolCategory, "1"}})), IdOf(RowOf({})));
    EXPECT_NE(IdOf(RowOf({{SymbolFeed, "G"}})), IdOf(RowOf({})));
    EXPECT_NE(IdOf(RowOf({{SymbolExchange, "X"}})), IdOf(RowOf({})));
}

TEST(SymbolRules, KeysDoNotTellRowsApart) {
    tagSymbolRow row = RowOf({});
    row.Symbol.Setting = 7;
    row.Symbol.Feed = 8;
    row.Symbol.CustomSession = 9;
    EXPECT_EQ(row, RowOf({}));
    row.Symbol.Margin = 1;
    EXPECT_FALSE(row == RowOf({}));
}

} // namespace

} // namespace sqCliTest
