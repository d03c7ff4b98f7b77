#include "TestStore.h"

namespace dmFirebirdTest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Query : public CStoreTest {
protected:
    void MakeRows(int count) {
        Run(L"CREATE TABLE T(A INTEGER, B VARCHAR(20))");
        Run(L"EXECUTE BLOCK AS DECLARE I INTEGER=0; BEGIN WHILE (I<" + std::to_wstring(count) +
            L") DO BEGIN INSERT INTO T VALUES(:I,'row '||:I); I=I+1; END END");
    }
};

TEST_F(Query, TableWithoutFieldsIsGivenOneForEachColumn) {
    const CTable table =
        Select(L"SELECT 1 AS SYMBOL, 'x' AS OWN_NAME, CAST(NULL AS DATE) AS DELIVERY FROM RDB$DATABASE");
    EXPECT_THAT(table.ColumnNames(), ElementsAre("SYMBOL", "OWN_NAME", "DELIVERY"));
    EXPECT_EQ(EColumnType::Text, table.Rows().ColumnType(table.ColumnIndex("OWN_NAME")));
    EXPECT_EQ(1, table.Integer(0, "SYMBOL"));
    EXPECT_EQ("x", table.Text(0, "OWN_NAME"));
    EXPECT_TRUE(table.IsNull(0, "DELIVERY"));
}

TEST_F(Query, FieldsOfAKnownNameBearItsIdentifier) {
    const CTable table = Select(L"SELECT COUNT(*) AS DATA_FEED FROM RDB$DATABASE");
    CComPtr<IDM_dmudfcom::IdmField> field;
    ASSERT_EQ(S_OK, table.Carrier().get_FieldById(207, field.Put()));
    ASSERT_TRUE(field);
    LONG value = 0;
    ASSERT_EQ(S_OK, table.Carrier().First());
    EXPECT_EQ(S_OK, field->get_AsLong(&value));
    EXPECT_EQ(1, value);
}

TEST_F(Query, EmptyResultGivesTheFieldsToo) {
    Run(L"CREATE TABLE T(A INTEGER, B VARCHAR(20))");
    const CTable table = Select(L"SELECT * FROM T");
    EXPECT_THAT(table.ColumnNames(), ElementsAre("A", "B"));
    EXPECT_EQ(0U, table.Count());
}

TEST_F(Query, ColumnsAreBoundByNameAndNotByPosition) {
    CTable table({{"SECOND_ONE", EColumnType::Text}, {"FIRST_ONE", EColumnType::Long}});
    EXPECT_EQ(
        1, Run(L"SELECT 7 AS FIRST_ONE, 8 AS OTHER_ONE, 'b' AS \"Second_One\" FROM RDB$DATABASE", nullptr, &table));
    EXPECT_THAT(table.ColumnNames(), ElementsAre("SECOND_ONE", "FIRST_ONE"));
    EXPECT_EQ("b", table.Text(0, "SECOND_ONE"));
    EXPECT_EQ(7, table.Integer(0, "FIRST_ONE"));
}

TEST_F(Query, DeclaredFieldWithoutAColumnStaysNull) {
    CTable table({{"A", EColumnType::Long}, {"MISSING", EColumnType::Text}});
    Run(L"SELECT 1 AS A FROM RDB$DATABASE", nullptr, &table);
    EXPECT_FALSE(table.IsNull(0, "A"));
    EXPECT_TRUE(table.IsNull(0, "MISSING"));
}

TEST_F(Query, FirstOfTwoColumnsWithOneNameCounts) {
    const CTable fresh = Select(L"SELECT 1 AS A, 2 AS A FROM RDB$DATABASE");
    EXPECT_THAT(fresh.ColumnNames(), ElementsAre("A"));
    EXPECT_EQ(1, fresh.Integer(0, "A"));
    const CTable declared({{"A", EColumnType::Long}});
    Run(L"SELECT 1 AS A, 2 AS A FROM RDB$DATABASE", nullptr, &declared);
    EXPECT_EQ(1, declared.Integer(0, "A"));
}

TEST_F(Query, EveryTypeOfColumnIsRead) {
    Run(L"CREATE TABLE T(S SMALLINT, I INTEGER, L BIGINT, F FLOAT, D DOUBLE PRECISION, N2 NUMERIC(4,2), N9 "
        L"NUMERIC(9,3), N18 NUMERIC(18,4), DT DATE, TM TIME, TS TIMESTAMP, C CHAR(8), V VARCHAR(20), BL BLOB "
        L"SUB_TYPE TEXT, "
        L"BB BLOB SUB_TYPE BINARY, BO BOOLEAN, OC CHAR(3) CHARACTER SET OCTETS, OV VARCHAR(3) CHARACTER SET "
        L"OCTETS)");
    Run(L"INSERT INTO T VALUES(-32768,-2147483648,-9223372036854775808,0.5,1e300,-12.34,-123456.789,"
        L"99999999999999.9999,'20.03.2015','23:59:59.9999','20.03.2015 12:00:00','ab','\u00e4\u20ac\U0001F600',"
        L"'text of a blob',x'00FF',TRUE,x'01FF02',x'ABCD')");
    const CTable table = Select(L"SELECT * FROM T");
    ASSERT_EQ(1U, table.Count());
    EXPECT_EQ(-32768, table.Integer(0, "S"));
    EXPECT_EQ(-2147483648LL, table.Integer(0, "I"));
    EXPECT_EQ(std::numeric_limits<std::int64_t>::min(), table.Integer(0, "L"));
    EXPECT_EQ(0.5, table.Real(0, "F"));
    EXPECT_EQ(1e300, table.Real(0, "D"));
    EXPECT_EQ(-12.34, table.Real(0, "N2"));
    EXPECT_EQ(-123456.789, table.Real(0, "N9"));
    EXPECT_EQ(99999999999999.9999, table.Real(0, "N18"));
    EXPECT_EQ(42083, table.Integer(0, "DT"));
    EXPECT_EQ(86399, table.Integer(0, "TM"));
    EXPECT_EQ(42083.5, table.Real(0, "TS"));
    EXPECT_EQ("ab", table.Text(0, "C"));
    EXPECT_EQ("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", table.Text(0, "V"));
    EXPECT_EQ("text of a blob", table.Text(0, "BL"));
    EXPECT_EQ("00FF", table.Text(0, "BB"));
    EXPECT_EQ(1, table.Integer(0, "BO"));
    EXPECT_EQ("01FF02", table.Text(0, "OC"));
    EXPECT_EQ("ABCD", table.Text(0, "OV"));
}

TEST_F(Query, EveryTypeOfColumnCanBeNull) {
    Run(L"CREATE TABLE T(S SMALLINT, I INTEGER, L BIGINT, F FLOAT, D DOUBLE PRECISION, N NUMERIC(9,3), DT DATE, TM "
        L"TIME, "
        L"TS TIMESTAMP, C CHAR(8), V VARCHAR(20), BL BLOB SUB_TYPE TEXT, BO BOOLEAN)");
    Run(L"INSERT INTO T DEFAULT VALUES");
    const CTable table = Select(L"SELECT * FROM T");
    for (const std::string& name : table.ColumnNames())
        EXPECT_TRUE(table.IsNull(0, name)) << name;
}

TEST_F(Query, DaysAreCountedFrom30December1899) {
    const CTable table =
        Select(L"SELECT DATE '30.12.1899' AS A, DATE '31.12.1899' AS B, DATE '01.01.0001' AS C, DATE "
               L"'31.12.9999' AS D FROM RDB$DATABASE");
    EXPECT_EQ(EColumnType::Date, table.Rows().ColumnType(0));
    EXPECT_EQ(0, table.Integer(0, "A"));
    EXPECT_EQ(1, table.Integer(0, "B"));
    EXPECT_EQ(-693593, table.Integer(0, "C"));
    EXPECT_EQ(2958465, table.Integer(0, "D"));
}

TEST_F(Query, TimesAreSecondsSinceMidnight) {
    const CTable table = Select(L"SELECT TIME '00:00:00' AS A, TIME '02:00:00.0000' AS B FROM RDB$DATABASE");
    EXPECT_EQ(0, table.Integer(0, "A"));
    EXPECT_EQ(7200, table.Integer(0, "B"));
}

TEST_F(Query, TimestampGoesIntoADayATimeOrAReal) {
    const CTable table(
        {{"OWN_DAY", EColumnType::Date}, {"OWN_TIME", EColumnType::Time}, {"OWN_REAL", EColumnType::Double}});
    Run(L"SELECT TIMESTAMP '31.12.1899 06:00:00' AS OWN_DAY, TIMESTAMP '31.12.1899 06:00:00' AS OWN_TIME, "
        L"TIMESTAMP "
        L"'31.12.1899 06:00:00' AS OWN_REAL FROM RDB$DATABASE",
        nullptr, &table);
    EXPECT_EQ(1, table.Integer(0, "OWN_DAY"));
    EXPECT_EQ(21600, table.Integer(0, "OWN_TIME"));
    EXPECT_EQ(1.25, table.Real(0, "OWN_REAL"));
}

TEST_F(Query, OnlyTheFillOfACharIsCutOff) {
    const CTable table = Select(L"SELECT CAST('  a b  ' AS CHAR(12)) AS A, CAST('' AS CHAR(3)) AS B, CAST('v  ' AS "
                                L"VARCHAR(9)) AS C FROM RDB$DATABASE");
    EXPECT_EQ("  a b", table.Text(0, "A"));
    EXPECT_EQ("", table.Text(0, "B"));
    EXPECT_FALSE(table.IsNull(0, "B"));
    EXPECT_EQ("v  ", table.Text(0, "C"));
}

TEST_F(Query, LongBlobIsReadWhole) {
    Run(L"CREATE TABLE T(B BLOB SUB_TYPE TEXT)");
    Run(L"EXECUTE BLOCK AS DECLARE I INTEGER=0; DECLARE B BLOB SUB_TYPE TEXT=''; BEGIN WHILE (I<50) DO BEGIN "
        L"B=B||LPAD('',4000,'abcdefg'); I=I+1; END INSERT INTO T VALUES(:B); END");
    const std::string text = Select(L"SELECT B FROM T").Text(0, "B");
    EXPECT_EQ(200000U, text.size());
    EXPECT_EQ("abcdefg", text.substr(0, 7));
}

TEST_F(Query, FetchDeliversUpToTheCountAndThenNothing) {
    MakeRows(10);
    CTable table;
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT A FROM T ORDER BY A", nullptr, table.Get()));
    EXPECT_EQ(0U, table.Count());
    EXPECT_EQ(3, Fetch(*query, 3));
    EXPECT_EQ(3U, table.Count());
    EXPECT_EQ(4, Fetch(*query, 4));
    EXPECT_EQ(3, Fetch(*query, 100));
    EXPECT_EQ(10U, table.Count());
    EXPECT_EQ(0, Fetch(*query, 100));
    EXPECT_EQ(0, Fetch(*query));
    for (ULONG row = 0; row < 10; ++row)
        EXPECT_EQ(row, table.Integer(row, "A"));
}

TEST_F(Query, FetchOfZeroDeliversAllThatIsLeft) {
    MakeRows(10);
    CTable table;
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT A FROM T", nullptr, table.Get()));
    EXPECT_EQ(2, Fetch(*query, 2));
    EXPECT_EQ(8, Fetch(*query, 0));
    EXPECT_EQ(10U, table.Count());
}

TEST_F(Query, TableThatIsGivenOtherFieldsTakesNoMoreRows) {
    MakeRows(10);
    CTable table;
    const CTable other({{"C", EColumnType::Short}});
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT A,B FROM T", nullptr, table.Get()));
    EXPECT_EQ(2, Fetch(*query, 2));
    ASSERT_EQ(S_OK, table.Carrier().Attach(&other.Carrier()));
    LONG count = 2;
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
    EXPECT_EQ(0, count);
    EXPECT_THAT(Error(), HasSubstr(L"The result table has been given other fields since the statement was opened: "
                                   L"open it again."));
    EXPECT_EQ(0U, other.Count());
}

TEST_F(Query, TableThatSharesItsRecordsWithAnotherGoesOnTakingRows) {
    MakeRows(10);
    CTable table;
    const CTable view;
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT A,B FROM T", nullptr, table.Get()));
    ASSERT_EQ(S_OK, view.Carrier().Attach(&table.Carrier()));
    EXPECT_EQ(10, Fetch(*query));
    EXPECT_EQ(10U, view.Count());
}

TEST_F(Query, NegativeCountIsABadArgument) {
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE"));
    LONG count = -1;
    EXPECT_EQ(E_INVALIDARG, query->Fetch(&count));
    EXPECT_EQ(0, count);
}

TEST_F(Query, RowsAreCountedWithoutAResultTable) {
    MakeRows(10);
    EXPECT_EQ(10, Run(L"SELECT A FROM T"));
}

TEST_F(Query, StatementWithoutRowsIsRunByOpenAndFetchGivesNone) {
    MakeRows(0);
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    EXPECT_EQ(S_OK, Open(*query, L"INSERT INTO T VALUES(1,'a')"));
    EXPECT_EQ(0, Fetch(*query));
    EXPECT_EQ(S_OK, query->Close());
    EXPECT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(1, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Query, ProcedureWithResultsGivesOneRow) {
    Run(L"CREATE PROCEDURE TWICE(A INTEGER) RETURNS (B INTEGER) AS BEGIN B=2*A; END");
    CTable table;
    EXPECT_EQ(1, Run(L"EXECUTE PROCEDURE TWICE(21)", nullptr, &table));
    EXPECT_EQ(42, table.Integer(0, "B"));
}

TEST_F(Query, ReturningGivesARow) {
    MakeRows(0);
    CTable table;
    EXPECT_EQ(1, Run(L"INSERT INTO T VALUES(5,'x') RETURNING A, B", nullptr, &table));
    EXPECT_EQ(5, table.Integer(0, "A"));
    EXPECT_EQ("x", table.Text(0, "B"));
}

TEST_F(Query, BlockIsRunToItsEndByOpenAndItsRowsWaitForFetch) {
    MakeRows(0);
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    CTable table;
    ASSERT_EQ(S_OK,
              Open(*query,
                   L"EXECUTE BLOCK RETURNS (N INTEGER) AS BEGIN N=0; WHILE (N<3) DO BEGIN N=N+1; INSERT INTO T "
                   L"VALUES(:N,''); SUSPEND; END END",
                   nullptr, table.Get()));
    EXPECT_EQ(1, Fetch(*query, 1));
    EXPECT_EQ(2, Fetch(*query));
    EXPECT_EQ(3, table.Integer(2, "N"));
    EXPECT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(3, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Query, OpenReplacesTheStatementThatIsOpen) {
    MakeRows(3);
    const auto query = NewQuery(Database());
    CTable first;
    CTable second;
    ASSERT_EQ(S_OK, Open(*query, L"SELECT A FROM T", nullptr, first.Get()));
    ASSERT_EQ(S_OK, Open(*query, L"SELECT B FROM T", nullptr, second.Get()));
    EXPECT_EQ(3, Fetch(*query));
    EXPECT_EQ(0U, first.Count());
    EXPECT_EQ(3U, second.Count());
}

TEST_F(Query, FetchWithoutAnOpenStatementIsRefused) {
    const auto query = NewQuery(Database());
    LONG count = 5;
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
    EXPECT_EQ(0, count);
    EXPECT_EQ(L"No statement is open: open one before fetching.", Error());
    EXPECT_EQ(S_OK, query->Close());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE"));
    EXPECT_EQ(S_OK, query->Close());
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
    EXPECT_EQ(E_FAIL, Open(*query, L"SELECT NONSENSE FROM RDB$DATABASE"));
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
}

TEST_F(Query, EmptyStatementIsABadArgument) {
    const auto query = NewQuery(Database());
    EXPECT_EQ(E_INVALIDARG, Open(*query, L""));
    EXPECT_EQ(E_INVALIDARG, query->Open(nullptr, nullptr, nullptr));
}

TEST_F(Query, ReservedColumnNameWorksUnquoted) {
    Run(L"CREATE TABLE RULES(ID INTEGER, OFFSET INTEGER, NAME VARCHAR(20))");
    Run(L"INSERT INTO RULES(ID,OFFSET,NAME) VALUES(1,2,'OFFSET')");
    Run(L"UPDATE RULES SET OFFSET=OFFSET+1, NAME=NAME||' 1' WHERE ID=1");
    const CTable table = Select(L"SELECT R.OFFSET, NAME FROM RULES R");
    EXPECT_EQ(3, table.Integer(0, "OFFSET"));
    EXPECT_EQ("OFFSET 1", table.Text(0, "NAME"));
}

TEST_F(Query, ForeignTablesAreRefused) {
    const auto query = NewQuery(Database());
    const auto foreign = NewTransaction(Database());
    EXPECT_EQ(E_NOINTERFACE, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE", foreign.Get(), nullptr));
    EXPECT_EQ(L"The parameter table is of a foreign kind: give one made by the class dmTable.", Error());
    EXPECT_EQ(E_NOINTERFACE, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE", nullptr, foreign.Get()));
    EXPECT_EQ(L"The result table is of a foreign kind: give one made by the class dmTable.", Error());
    CTable table;
    EXPECT_EQ(E_INVALIDARG, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE", table.Get(), table.Get()));
}

TEST_F(Query, RefusedStatementTellsWhyInPlainWordsAndTheEnginesOwn) {
    EXPECT_EQ(E_FAIL, TryRun(L"SELECT * FROM NOWHERE"));
    EXPECT_THAT(Error(),
                StartsWith(L"The database has no such table or view: its definition is not the one that is "
                           L"needed. [Firebird: Dynamic SQL Error; SQL error code = -204; Table unknown; "
                           L"NOWHERE; "));
    EXPECT_THAT(Error(), HasSubstr(L"; code 335544569, SQLSTATE 42S02]"));
    EXPECT_EQ(E_FAIL, TryRun(L"SELEKT 1"));
    EXPECT_THAT(Error(), StartsWith(L"The statement is not understood by the database: correct its text."));
    EXPECT_EQ(E_FAIL, TryRun(L"SELECT * FROM NO_PROCEDURE(1)"));
    EXPECT_THAT(Error(), StartsWith(L"The database has no such procedure"));
}

TEST_F(Query, RefusedValuesTellWhy) {
    Run(L"CREATE TABLE T(A INTEGER NOT NULL PRIMARY KEY, B VARCHAR(3), C SMALLINT, D DATE)");
    Run(L"INSERT INTO T(A) VALUES(1)");
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T(A) VALUES(1)"));
    EXPECT_THAT(Error(), StartsWith(L"A row with this key exists already"));
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T(A,B) VALUES(2,'long')"));
    EXPECT_THAT(Error(), StartsWith(L"A text is longer than its column takes: shorten it."));
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T(A,C) VALUES(2,40000)"));
    EXPECT_THAT(Error(), StartsWith(L"A number is too large for its column"));
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T(A,D) VALUES(2,'')"));
    EXPECT_THAT(Error(), StartsWith(L"A value has not the form that its column takes"));
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T(B) VALUES('x')"));
    EXPECT_THAT(Error(), StartsWith(L"A column takes no such value, or none was given for one that needs it"));
    EXPECT_EQ(1, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Query, MissingRightIsTold) {
    Run(L"CREATE TABLE T(A INTEGER)");
    Database().Close();
    ASSERT_EQ(S_OK, Open(Database(), Path(), L"GUEST_USER", L""));
    EXPECT_EQ(E_FAIL, TryRun(L"SELECT * FROM T"));
    EXPECT_THAT(Error(), StartsWith(L"The database user has not the right to do this"));
}

TEST_F(Query, ErrorInALaterRowKeepsTheRowsBeforeIt) {
    MakeRows(5);
    CTable table;
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT A, 1/(3-A) AS Q FROM T", nullptr, table.Get()));
    LONG count = 0;
    EXPECT_EQ(E_FAIL, query->Fetch(&count));
    EXPECT_EQ(3, count);
    EXPECT_EQ(3U, table.Count());
}

TEST_F(Query, LateBoundCallsRunAStatement) {
    const auto transaction = NewTransaction(Database());
    platform::CVariant query;
    ASSERT_EQ(S_OK, platform::CallByName(transaction.Get(), L"GetQuery", DISPATCH_METHOD, {}, &query.Get()));
    ASSERT_EQ(VT_DISPATCH, query.Get().vt);
    CTable table;
    const CBstr text(L"SELECT 6 AS A FROM RDB$DATABASE");
    VARIANT arguments[3]{};
    arguments[0].vt = VT_BSTR;
    arguments[0].bstrVal = text.Get();
    arguments[1].vt = VT_DISPATCH;
    arguments[2].vt = VT_DISPATCH;
    arguments[2].pdispVal = table.Get();
    EXPECT_EQ(S_OK, platform::CallByName(query.Get().pdispVal, L"Open", DISPATCH_METHOD, arguments, nullptr));
    LONG count = 0;
    VARIANT out{};
    out.vt = VT_BYREF | VT_I4;
    out.plVal = &count;
    EXPECT_EQ(S_OK, platform::CallByName(query.Get().pdispVal, L"Fetch", DISPATCH_METHOD, {&out, 1}, nullptr));
    EXPECT_EQ(1, count);
    EXPECT_EQ(6, table.Integer(0, "A"));
}

} // namespace
} // namespace dmFirebirdTest
