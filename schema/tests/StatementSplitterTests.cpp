#include "../StatementSplitter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using sqSchema::SplitStatements;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(StatementSplitter, EndsAStatementAtALineWithOnlyTheTerminator) {
    EXPECT_THAT(SplitStatements("A\n^\nB\nC\n^\n"), ElementsAre("A", "B\nC"));
}

TEST(StatementSplitter, KeepsSemicolonsAndTerminatorsInsideALine) {
    EXPECT_THAT(SplitStatements("BEGIN\n  A = '^';\n  B; ^ C\nEND\n^\n"),
                ElementsAre("BEGIN\n  A = '^';\n  B; ^ C\nEND"));
}

TEST(StatementSplitter, LeavesOutCommentsAndEmptyLinesBeforeAStatement) {
    EXPECT_THAT(SplitStatements("-- one\n\n  -- two\nA\n^\n\n-- three\n"), ElementsAre("A"));
}

TEST(StatementSplitter, KeepsCommentsAndEmptyLinesInsideAStatement) {
    EXPECT_THAT(SplitStatements("A\n-- why\n\nB\n^\n"), ElementsAre("A\n-- why\n\nB"));
}

TEST(StatementSplitter, IgnoresBlanksAndCarriageReturnsAroundStatementAndTerminator) {
    EXPECT_THAT(SplitStatements("  A\r\nB \r\n ^ \r\nC\r\n^"), ElementsAre("A\r\nB", "C"));
}

TEST(StatementSplitter, GivesNothingForATextWithoutStatements) {
    EXPECT_THAT(SplitStatements(""), IsEmpty());
    EXPECT_THAT(SplitStatements("\n  \n-- only words"), IsEmpty());
}

TEST(StatementSplitter, RefusesAStatementWithoutTerminatorNamingItsFirstLine) {
    try {
        SplitStatements("A\n^\n-- x\nB\nC\n");
        FAIL() << "taken";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ("line 4: the statement that begins here is not ended by a line with '^'", error.what());
    }
}

TEST(StatementSplitter, RefusesATerminatorWithoutStatement) {
    try {
        SplitStatements("A\n^\n^\n");
        FAIL() << "taken";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ("line 3: '^' ends a statement, but none stands before it", error.what());
    }
}
