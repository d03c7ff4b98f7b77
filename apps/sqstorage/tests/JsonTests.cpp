#include "apps/sqstorage/rows/Json.h"

#include <gtest/gtest.h>

namespace {

using sqCli::WriteJson;

TEST(Json, NoRowIsAnEmptyArray) { EXPECT_EQ(WriteJson({{"A"}, {}}), "[]\n"); }

TEST(Json, EachKindOfValueHasItsForm) {
    const sqCli::tagRowSet rows{{"N", "F", "D", "T", "X"},
                                {{std::int64_t{-7}, 0.1F, sqCli::tagDay{2}, std::string("a"), sqCli::tagNull{}}}};
    EXPECT_EQ(WriteJson(rows),
              "[\n  {\"N\": -7, \"F\": 0.1, \"D\": \"1900-01-01\", \"T\": \"a\", \"X\": null}\n]\n");
}

TEST(Json, WeekdaysAndTimesAreNumbers) {
    EXPECT_EQ(WriteJson({{"D", "T"}, {{sqCli::tagWeekday{6}, sqCli::tagClockTime{61200}}}}),
              "[\n  {\"D\": 6, \"T\": 61200}\n]\n");
}

TEST(Json, RowsAreSeparatedByCommas) {
    EXPECT_EQ(WriteJson({{"N"}, {{std::int64_t{1}}, {std::int64_t{2}}}}), "[\n  {\"N\": 1},\n  {\"N\": 2}\n]\n");
}

TEST(Json, TextsAreEscaped) {
    EXPECT_EQ(WriteJson({{"T"}, {{std::string("\"\\\n\r\t\x01 é")}}}),
              "[\n  {\"T\": \"\\\"\\\\\\n\\r\\t\\u0001 é\"}\n]\n");
}

} // namespace
