#include "apps/sqstorage/rows/Csv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sqCli::Cell;
using sqCli::ParseCsv;
using sqCli::tagCsvRecord;
using sqCli::WriteCsv;
using testing::ElementsAre;

std::string ErrorOf(std::string_view text) {
    try {
        static_cast<void>(ParseCsv(text));
    } catch (const sqCli::CCsvError& error) {
        return std::to_string(error.Line()) + ": " + error.what();
    }
    return "none";
}

TEST(Csv, ReadsRecordsWithTheLineTheyStartOn) {
    const auto records = ParseCsv("A,B\n1,2\n\n3,\n");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_THAT(records[0].Fields, ElementsAre("A", "B"));
    EXPECT_THAT(records[1].Fields, ElementsAre("1", "2"));
    EXPECT_THAT(records[2].Fields, ElementsAre("3", ""));
    EXPECT_EQ(records[1].Line, 2u);
    EXPECT_EQ(records[2].Line, 4u);
}

TEST(Csv, TakesWindowsLineEndsAByteOrderMarkAndAMissingLastLineEnd) {
    const auto records = ParseCsv("\xEF\xBB\xBF"
                                  "A,B\r\n1,2");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_THAT(records[0].Fields, ElementsAre("A", "B"));
    EXPECT_THAT(records[1].Fields, ElementsAre("1", "2"));
}

TEST(Csv, QuotedValuesHoldCommasQuotesAndLineEnds) {
    const auto records = ParseCsv("\"a,b\",\"say \"\"x\"\"\",\"two\nlines\"\nnext\n");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_THAT(records[0].Fields, ElementsAre("a,b", "say \"x\"", "two\nlines"));
    EXPECT_EQ(records[1].Line, 3u);
}

TEST(Csv, NothingIsNoRecord) {
    EXPECT_TRUE(ParseCsv("").empty());
    EXPECT_TRUE(ParseCsv("\n\r\n").empty());
}

TEST(Csv, MisplacedQuotesAreNamedWithTheirLine) {
    EXPECT_EQ(ErrorOf("A\n\"b\nc\n"), "2: the quote that opens here is never closed: add the closing one");
    EXPECT_EQ(ErrorOf("A\nb\"c\n"),
              "2: a quote stands within a value that is not in quotes: put the value in quotes "
              "and double the ones within");
    EXPECT_EQ(ErrorOf("\"a\"b\n"), "1: a quoted value is followed by more text: double the quotes within it");
}

TEST(Csv, MalformedUtf8IsNamedWithItsLine) {
    EXPECT_EQ(ErrorOf("A\nb\n\xFF\n"), "3: the text is not UTF-8: save the file in that encoding");
    EXPECT_EQ(ErrorOf("A\n\xC3"), "2: the text is not UTF-8: save the file in that encoding");
}

TEST(Csv, WritesQuotesOnlyWhereTheyAreNeeded) {
    EXPECT_EQ(WriteCsv({{"A", "B"},
                        {{std::string("x y"), std::string("a,b")}, {std::string("\"q\""), sqCli::tagNull{}}}}),
              "A,B\nx y,\"a,b\"\n\"\"\"q\"\"\",\n");
    EXPECT_EQ(WriteCsv({{"A"}, {{std::string("a\nb")}, {std::string("a\rb")}}}), "A\n\"a\nb\"\n\"a\rb\"\n");
}

TEST(Csv, ASoleEmptyValueIsNotTakenForAnEmptyLine) {
    const std::string text = WriteCsv({{"A"}, {{std::string()}}});
    EXPECT_EQ(text, "A\n\"\"\n");
    EXPECT_EQ(ParseCsv(text).size(), 2u);
}

TEST(Csv, WhatIsWrittenReadsBackTheSame) {
    const std::vector<std::string> values{"",
                                          "a",
                                          ",",
                                          "\"",
                                          "\"\"",
                                          "\n",
                                          "\r\n",
                                          "\xEF\xBB\xBF"
                                          "x",
                                          "é漢"};
    sqCli::tagRowSet rows{{"A", "B"}, {}};
    for (const std::string& left : values)
        for (const std::string& right : values)
            rows.Rows.push_back({left, right});
    const auto records = ParseCsv(WriteCsv(rows));
    ASSERT_EQ(records.size(), rows.Rows.size() + 1);
    for (std::size_t row = 0; row < rows.Rows.size(); ++row) {
        EXPECT_EQ(Cell(records[row + 1].Fields[0]), rows.Rows[row][0]);
        EXPECT_EQ(Cell(records[row + 1].Fields[1]), rows.Rows[row][1]);
    }
}

} // namespace
