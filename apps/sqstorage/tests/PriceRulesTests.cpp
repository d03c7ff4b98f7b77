#include "apps/sqstorage/datasets/PriceRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sqCli::ParseSetting;
using sqCli::tagPriceSetting;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> ReasonsOf(const std::array<std::string_view, 4>& values) {
    std::vector<std::string> reasons;
    const bool taken = ParseSetting(values, reasons).has_value();
    EXPECT_EQ(taken, reasons.empty());
    return reasons;
}

TEST(PriceRules, GoodValuesAreTaken) {
    std::vector<std::string> reasons;
    EXPECT_EQ(ParseSetting({"100000", "125000", "1000000", "0.00005"}, reasons),
              (tagPriceSetting{100000, 125000.0F, 1000000, 0.00005F}));
    EXPECT_THAT(reasons, IsEmpty());
}

TEST(PriceRules, WholeNumbersHaveTheirRange) {
    EXPECT_THAT(ReasonsOf({"0", "1", "1", "1"}), ElementsAre("PRICE_SCALE is \"0\": give a whole number from 1 to "
                                                             "2147483647"));
    EXPECT_THAT(ReasonsOf({"2147483648", "1", "1", "1"}),
                ElementsAre("PRICE_SCALE is \"2147483648\": give a whole number from 1 to 2147483647"));
    EXPECT_THAT(ReasonsOf({"1.5", "1", "", "1"}),
                ElementsAre("PRICE_SCALE is \"1.5\": give a whole number from 1 to 2147483647",
                            "DAILY_LIMIT is \"\": give a whole number from 1 to 2147483647"));
    EXPECT_THAT(ReasonsOf({"2147483647", "1", "2147483647", "1"}), IsEmpty());
}

TEST(PriceRules, PricesHaveTheirRange) {
    for (const char* value : {"0", "-1", "1000000000", "x", "", "0,5"})
        EXPECT_THAT(ReasonsOf({"1", value, "1", "1"}),
                    ElementsAre(std::string("POINT_VALUE is \"") + value +
                                "\": give a number above 0 and below 1000000000, with a decimal point"));
}

TEST(PriceRules, AValueThatTheStoreWouldChangeIsRefused) {
    EXPECT_THAT(ReasonsOf({"1", "1", "1", "0.0078125"}),
                ElementsAre("MIN_MOVEMENT is \"0.0078125\", and the store would keep 0.007812: give at most six "
                            "decimals and seven digits in all"));
    EXPECT_THAT(
        ReasonsOf({"1", "1", "1", "0.0000001"}),
        ElementsAre("MIN_MOVEMENT is \"0.0000001\", and the store would keep 0: give at most six decimals and "
                    "seven digits in all"));
    EXPECT_THAT(
        ReasonsOf({"1", "16777217", "1", "1"}),
        ElementsAre("POINT_VALUE is \"16777217\", and the store would keep 16777216: give at most six decimals "
                    "and seven digits in all"));
    EXPECT_THAT(ReasonsOf({"1", "999999999", "1", "1"}),
                ElementsAre("POINT_VALUE is \"999999999\", and the store would keep 1000000000: give at most six "
                            "decimals and seven digits in all"));
}

} // namespace
