#include "apps/sqstorage/rows/TextTable.h"

#include <gtest/gtest.h>

namespace {

using sqCli::WriteTextTable;

TEST(TextTable, ColumnsAreAlignedAndNumbersStandToTheRight) {
    const sqCli::tagRowSet rows{{"NAME", "N", "LAST"},
                                {{std::string("a"), std::int64_t{5}, std::string("x")},
                                 {std::string("longer"), std::int64_t{1234}, sqCli::tagNull{}}}};
    EXPECT_EQ(WriteTextTable(rows, false), "NAME       N  LAST\n"
                                           "------  ----  ----\n"
                                           "a          5  x\n"
                                           "longer  1234  \n");
}

TEST(TextTable, AColumnOfNumbersIsKnownByItsFirstValueThatIsThere) {
    const sqCli::tagRowSet rows{{"VALUE"}, {{sqCli::tagNull{}}, {0.5F}}};
    EXPECT_EQ(WriteTextTable(rows, false), "VALUE\n-----\n     \n  0.5\n");
}

TEST(TextTable, WidthIsCountedInCharacters) {
    const sqCli::tagRowSet rows{{"A", "B"}, {{std::string("Zürich"), std::string("x")}}};
    EXPECT_EQ(WriteTextTable(rows, false), "A       B\n------  -\nZürich  x\n");
}

TEST(TextTable, WhatWouldDriveTheTerminalIsABlank) {
    const sqCli::tagRowSet rows{{"A"}, {{std::string("a\x1b[2Jb\nc\x7f")}}};
    EXPECT_EQ(WriteTextTable(rows, false), "A\n---------\na [2Jb c \n");
}

TEST(TextTable, OnlyTheHeaderIsBold) {
    EXPECT_EQ(WriteTextTable({{"A"}, {{std::string("x")}}}, true), "\x1b[1mA\x1b[0m\n-\nx\n");
}

TEST(TextTable, TheFirstRowsTellTheWidthsAndALongerValueIsWrittenWhole) {
    const sqCli::tagRowSet first{{"NAME", "VALUE", "TEXT"},
                                 {{std::string("ab"), std::int64_t{1}, std::string("x")}}};
    const sqCli::tagRowSet later{{"NAME", "VALUE", "TEXT"},
                                 {{std::string("abcdef"), std::int64_t{1234567}, std::string("yy")},
                                  {std::string("a"), std::int64_t{2}, std::string("z")}}};
    const sqCli::CTextTable table(first);
    EXPECT_EQ(table.Head(false) + table.Lines(first) + table.Lines(later), "NAME  VALUE  TEXT\n"
                                                                           "----  -----  ----\n"
                                                                           "ab        1  x\n"
                                                                           "abcdef  1234567  yy\n"
                                                                           "a         2  z\n");
}

} // namespace
