#include "apps/sqstorage/datasets/TableFile.h"

#include "platform/file.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sqCli::CTableFile;
using sqCli::tagColumnRule;
using sqCli::tagRowProblem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::array Rules{tagColumnRule{"A", true}, tagColumnRule{"B", false}};

class TableFile : public testing::Test {
protected:
    CTableFile Read(std::string_view text) {
        const auto path = m_Folder.Path() / "x.csv";
        platform::WriteFileAtomically(path, text);
        std::vector<tagRowProblem> problems;
        CTableFile file(path, Rules, problems);
        for (const tagRowProblem& problem : problems)
            m_Problems.push_back(std::to_string(problem.Line) + ": " + problem.Reason);
        return file;
    }

    platform::CTemporaryDirectory m_Folder;
    std::vector<std::string> m_Problems;
};

TEST_F(TableFile, ColumnsAreFoundByNameInAnyOrder) {
    const CTableFile file = Read("B,A\n1,2\n");
    EXPECT_THAT(m_Problems, IsEmpty());
    ASSERT_EQ(file.Rows().size(), 1u);
    EXPECT_EQ(file.Value(file.Rows()[0], 0), "2");
    EXPECT_EQ(file.Value(file.Rows()[0], 1), "1");
}

TEST_F(TableFile, AnOptionalColumnMayBeMissingAndReadsEmpty) {
    const CTableFile file = Read("A\n2\n");
    EXPECT_THAT(m_Problems, IsEmpty());
    EXPECT_EQ(file.Value(file.Rows().at(0), 1), "");
}

TEST_F(TableFile, ALineCountsTheRowsThatAreRefusedForItOnce) {
    std::vector<tagRowProblem> problems{{2, "a"}, {4, "b"}, {2, "c"}, {7, "these and two others", {7, 9, 12}},
                                        {7, "d"}, {9, "e"}};
    EXPECT_EQ(sqCli::CountRefusedRows(problems, 20), 5u);
    EXPECT_EQ(sqCli::CountRefusedRows({}, 20), 0u);
    problems.push_back({1, "the file", {}, true});
    EXPECT_EQ(sqCli::CountRefusedRows(problems, 20), 20u);
}

TEST_F(TableFile, TheHeaderIsTested) {
    Read("B\n1\n");
    Read("A,C\n1,2\n");
    Read("A,A\n1,2\n");
    Read("");
    EXPECT_THAT(m_Problems,
                ElementsAre("1: the header lacks the column A: the columns are A, B (optional)",
                            "1: the header has an unknown column \"C\": the columns are A, B (optional)",
                            "1: the header names A twice: remove one",
                            "1: the file is empty: begin it with the header A, B (optional)"));
}

TEST_F(TableFile, ARowOfAnotherLengthIsLeftOut) {
    const CTableFile file = Read("A,B\n1\n1,2\n1,2,3\n");
    EXPECT_EQ(file.Rows().size(), 1u);
    EXPECT_EQ(file.RowCount(), 3u);
    EXPECT_THAT(m_Problems,
                ElementsAre("2: the row has 1 value(s) where the header has 2: add or remove a comma, or put "
                            "a value with a comma in quotes",
                            "4: the row has 3 value(s) where the header has 2: add or remove a comma, or put "
                            "a value with a comma in quotes"));
}

TEST_F(TableFile, AMalformedFileIsAProblemAtItsLine) {
    Read("A\n\"x\n");
    EXPECT_THAT(m_Problems, ElementsAre("2: the quote that opens here is never closed: add the closing one"));
}

} // namespace
