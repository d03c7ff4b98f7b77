#include "../StatementText.h"

#include <gtest/gtest.h>

using namespace IDM_dmFirebird;

namespace {

std::string Translated(std::wstring_view text) { return TranslateStatement(text).Utf8; }
EStatementKind Kind(std::wstring_view text) { return TranslateStatement(text).Kind; }

TEST(StatementText, ReservedColumnNameIsQuotedWhereItStandsAsAnIdentifier) {
    EXPECT_EQ("UPDATE EXPIRATION_RULES SET NAME='a',\"OFFSET\"=1 WHERE ID=2",
              Translated(L"UPDATE EXPIRATION_RULES SET NAME='a',OFFSET=1 WHERE ID=2"));
    EXPECT_EQ("SELECT R.\"OFFSET\",\"OFFSET\" FROM R", Translated(L"SELECT R.OFFSET,OFFSET FROM R"));
    EXPECT_EQ("\"OFFSET\"", Translated(L"OFFSET"));
}

TEST(StatementText, ReservedColumnNameIsFoundInAnyCase) {
    EXPECT_EQ("SELECT \"OFFSET\", \"OFFSET\" FROM R", Translated(L"SELECT offset, OffSet FROM R"));
}

TEST(StatementText, WordsThatOnlyContainTheNameAreLeftAlone) {
    const std::wstring_view text = L"SELECT OFFSETTYPE,MY_OFFSET,OFFSET$,OFFSET1,1OFFSET FROM R";
    EXPECT_EQ(std::string(text.begin(), text.end()), Translated(text));
}

TEST(StatementText, LiteralsAreLeftAlone) {
    EXPECT_EQ("SELECT 'OFFSET' FROM R", Translated(L"SELECT 'OFFSET' FROM R"));
    EXPECT_EQ("SET A='it''s OFFSET',\"OFFSET\"=1", Translated(L"SET A='it''s OFFSET',OFFSET=1"));
    EXPECT_EQ("A='''',\"OFFSET\"=1,B=' OFFSET '", Translated(L"A='''',OFFSET=1,B=' OFFSET '"));
    EXPECT_EQ("A='-- ',\"OFFSET\"=1", Translated(L"A='-- ',OFFSET=1"));
    EXPECT_EQ("A=q'{it's OFFSET}',\"OFFSET\"=1", Translated(L"A=q'{it's OFFSET}',OFFSET=1"));
}

TEST(StatementText, QuotedIdentifiersAreLeftAlone) {
    EXPECT_EQ("SELECT \"OFFSET\" FROM R", Translated(L"SELECT \"OFFSET\" FROM R"));
    EXPECT_EQ("SELECT \"a \"\" OFFSET\",\"OFFSET\" FROM R", Translated(L"SELECT \"a \"\" OFFSET\",OFFSET FROM R"));
    EXPECT_EQ("SELECT \"it's\",\"OFFSET\" FROM R", Translated(L"SELECT \"it's\",OFFSET FROM R"));
}

TEST(StatementText, CommentsAreLeftAlone) {
    EXPECT_EQ("SELECT /* OFFSET ' */ \"OFFSET\" FROM R", Translated(L"SELECT /* OFFSET ' */ OFFSET FROM R"));
    EXPECT_EQ("SELECT -- OFFSET '\n\"OFFSET\" FROM R", Translated(L"SELECT -- OFFSET '\nOFFSET FROM R"));
    EXPECT_EQ("SELECT 1-\"OFFSET\" FROM R", Translated(L"SELECT 1-OFFSET FROM R"));
    EXPECT_EQ("SELECT 1/\"OFFSET\" FROM R", Translated(L"SELECT 1/OFFSET FROM R"));
}

TEST(StatementText, TheGrammarsOwnWordIsLeftAlone) {
    EXPECT_EQ("SELECT A FROM R OFFSET 10 ROWS", Translated(L"SELECT A FROM R OFFSET 10 ROWS"));
    EXPECT_EQ("SELECT A FROM R OFFSET /* x */ ? ROWS", Translated(L"SELECT A FROM R OFFSET /* x */ ? ROWS"));
}

TEST(StatementText, WhatIsNotClosedGoesToTheEngineAsItStands) {
    for (const std::wstring_view text : {L"SELECT 'OFFSET", L"SELECT \"OFFSET", L"SELECT /* OFFSET",
                                         L"SELECT --OFFSET", L"SELECT q'{OFFSET", L"SELECT q'", L"'", L""})
        EXPECT_EQ(std::string(text.begin(), text.end()), Translated(text));
}

TEST(StatementText, TextBeyondAsciiBecomesUtf8) {
    EXPECT_EQ("SET NAME='\xC3\xA4\xF0\x9F\x98\x80',\"OFFSET\"=1",
              Translated(L"SET NAME='\u00E4\U0001F600',OFFSET=1"));
}

TEST(StatementText, FirstWordTellsTheKind) {
    EXPECT_EQ(EStatementKind::Select, Kind(L"SELECT 1 FROM R"));
    EXPECT_EQ(EStatementKind::Select, Kind(L"  /* c */ -- d\n select 1 from R"));
    EXPECT_EQ(EStatementKind::Select, Kind(L"WITH X AS (SELECT 1 FROM R) SELECT * FROM X"));
    EXPECT_EQ(EStatementKind::Definition, Kind(L"CREATE TABLE T(A INTEGER)"));
    EXPECT_EQ(EStatementKind::Definition, Kind(L"drop table T"));
    EXPECT_EQ(EStatementKind::Other, Kind(L"INSERT INTO T SELECT * FROM R"));
    EXPECT_EQ(EStatementKind::Other, Kind(L"EXECUTE BLOCK AS BEGIN END"));
    EXPECT_EQ(EStatementKind::Other, Kind(L"'SELECT'"));
    EXPECT_EQ(EStatementKind::Other, Kind(L""));
}

} // namespace
