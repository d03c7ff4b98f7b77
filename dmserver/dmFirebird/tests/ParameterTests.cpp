#include "TestStore.h"

namespace dmFirebirdTest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Parameters : public CStoreTest {
protected:
    Parameters() {
        Run(L"CREATE TABLE T(ID INTEGER NOT NULL PRIMARY KEY, NAME VARCHAR(5))");
        Run(L"CREATE SEQUENCE G");
    }
    static CTable Pairs() { return CTable({{"P1", EColumnType::Long}, {"P2", EColumnType::Text}}); }
};

TEST_F(Parameters, StatementRunsOnceForEachRecordInOneTransaction) {
    CTable table = Pairs();
    table.Add({1, "a"}).Add({2, "b"}).Add({3, {}});
    EXPECT_EQ(0, Run(L"INSERT INTO T VALUES(?,?)", &table));
    const CTable rows = Select(L"SELECT ID, NAME, COUNT(*) OVER() AS N FROM T ORDER BY ID");
    ASSERT_EQ(3U, rows.Count());
    EXPECT_EQ("b", rows.Text(1, "NAME"));
    EXPECT_TRUE(rows.IsNull(2, "NAME"));
}

TEST_F(Parameters, PlaceholdersTakeTheFieldsInFieldOrder) {
    CTable table({{"NAME", EColumnType::Text}, {"ID", EColumnType::Long}});
    table.Add({"x", 9});
    Run(L"INSERT INTO T(NAME,ID) VALUES(?,?)", &table);
    EXPECT_EQ("x", Select(L"SELECT NAME FROM T WHERE ID=9").Text(0, "NAME"));
}

TEST_F(Parameters, EmptyTableRunsNothing) {
    const CTable table = Pairs();
    EXPECT_EQ(0, Run(L"INSERT INTO T VALUES(?,?)", &table));
    const CTable withoutFields;
    EXPECT_EQ(0, Run(L"INSERT INTO T VALUES(?,?)", &withoutFields));
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Parameters, WrongNumberOfFieldsIsRefusedAndNothingRuns) {
    CTable table({{"P1", EColumnType::Long}});
    table.Add({1});
    EXPECT_EQ(E_INVALIDARG, TryRun(L"INSERT INTO T VALUES(?,?)", &table));
    EXPECT_EQ(
        L"The statement has 2 parameters but the parameter table has 1 fields: give one field for each \"?\". "
        L"Nothing was run.",
        Error());
    EXPECT_EQ(E_INVALIDARG, TryRun(L"INSERT INTO T VALUES(1,'a')", &table));
    EXPECT_EQ(E_INVALIDARG, TryRun(L"INSERT INTO T VALUES(?,?)"));
    EXPECT_THAT(Error(), StartsWith(L"The statement has 2 parameters: give a parameter table"));
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Parameters, FailingRecordUndoesTheWholeStatement) {
    CTable table = Pairs();
    table.Add({1, "a"}).Add({2, "b"}).Add({1, "c"}).Add({4, "d"});
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T VALUES(?,?)", &table));
    EXPECT_THAT(Error(),
                StartsWith(L"Record 3 of 4 was refused, and nothing of the statement is stored. A row with "
                           L"this key exists already: update it, or use another key. [Firebird: "));
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Parameters, FailingRecordLeavesEarlierStatementsOfTheTransaction) {
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    ASSERT_EQ(S_OK, Open(*query, L"INSERT INTO T VALUES(7,'kept')"));
    CTable table = Pairs();
    table.Add({1, "a"}).Add({7, "b"});
    EXPECT_EQ(E_FAIL, Open(*query, L"INSERT INTO T VALUES(?,?)", table.Get()));
    ASSERT_EQ(S_OK, transaction->Finish());
    const CTable rows = Select(L"SELECT ID FROM T");
    ASSERT_EQ(1U, rows.Count());
    EXPECT_EQ(7, rows.Integer(0, "ID"));
}

TEST_F(Parameters, BlockDeliversARowForEachRecord) {
    const std::wstring_view block =
        L"EXECUTE BLOCK (ID INTEGER=?, NAME VARCHAR(5)=?) RETURNS (KEY_OF INTEGER) AS BEGIN "
        L"INSERT INTO T VALUES(:ID,:NAME); KEY_OF=10*ID; SUSPEND; END";
    CTable table = Pairs();
    for (int id = 1; id <= 5; ++id)
        table.Add({id, "n"});
    CTable result;
    const auto transaction = NewTransaction(Database());
    const auto query = NewQuery(*transaction);
    ASSERT_EQ(S_OK, Open(*query, block, table.Get(), result.Get()));
    EXPECT_EQ(2, Fetch(*query, 2));
    EXPECT_EQ(3, Fetch(*query));
    EXPECT_EQ(0, Fetch(*query));
    for (ULONG row = 0; row < 5; ++row)
        EXPECT_EQ(10 * (row + 1), result.Integer(row, "KEY_OF"));
    ASSERT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(5, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Parameters, FailingRecordOfABlockUndoesTheWholeBlock) {
    const std::wstring_view block =
        L"EXECUTE BLOCK (ID INTEGER=?, NAME VARCHAR(5)=?) RETURNS (KEY_OF INTEGER) AS BEGIN "
        L"INSERT INTO T VALUES(:ID,:NAME); KEY_OF=ID; SUSPEND; END";
    CTable table = Pairs();
    table.Add({1, "a"}).Add({1, "b"});
    CTable result;
    EXPECT_EQ(E_FAIL, TryRun(block, &table, &result));
    EXPECT_EQ(0U, result.Count());
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Parameters, BlockThatFailsAfterARowIsUndone) {
    EXPECT_EQ(E_FAIL,
              TryRun(L"EXECUTE BLOCK RETURNS (N INTEGER) AS BEGIN N=1; INSERT INTO T VALUES(1,'a'); SUSPEND; "
                     L"INSERT INTO T VALUES(1,'b'); SUSPEND; END"));
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Parameters, SelectRunsForEachRecordAsItsRowsAreFetched) {
    CTable table = Pairs();
    table.Add({1, "a"}).Add({2, "b"}).Add({3, "c"});
    Run(L"INSERT INTO T VALUES(?,?)", &table);
    CTable keys({{"P", EColumnType::Long}});
    keys.Add({3}).Add({99}).Add({1});
    CTable result;
    EXPECT_EQ(2, Run(L"SELECT NAME FROM T WHERE ID=?", &keys, &result));
    EXPECT_EQ("c", result.Text(0, "NAME"));
    EXPECT_EQ("a", result.Text(1, "NAME"));
}

TEST_F(Parameters, TableThatIsGivenOtherFieldsGivesNoMoreParameters) {
    CTable table = Pairs();
    table.Add({1, "a"}).Add({2, "b"});
    Run(L"INSERT INTO T VALUES(?,?)", &table);
    CTable keys({{"P", EColumnType::Long}});
    keys.Add({1}).Add({2});
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT NAME FROM T WHERE ID=?", keys.Get()));
    ASSERT_EQ(S_OK, keys.Carrier().Attach(&table.Carrier()));
    LONG count = 0;
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
    EXPECT_EQ(1, count) << "the row that Open has read";
    EXPECT_THAT(Error(),
                HasSubstr(L"The parameter table has been given other fields since the statement was opened: "
                          L"open it again."));
}

TEST_F(Parameters, EveryTypeOfParameterIsWritten) {
    Run(L"CREATE TABLE U(S SMALLINT, I INTEGER, L BIGINT, F FLOAT, D DOUBLE PRECISION, N NUMERIC(18,4), DT DATE, "
        L"TM TIME, TS "
        L"TIMESTAMP, C CHAR(8), V VARCHAR(20), BL BLOB SUB_TYPE TEXT, BO BOOLEAN)");
    CTable table({{"S", EColumnType::Short},
                  {"I", EColumnType::Long},
                  {"L", EColumnType::Int64},
                  {"F", EColumnType::Float},
                  {"D", EColumnType::Double},
                  {"N", EColumnType::Double},
                  {"DT", EColumnType::Date},
                  {"TM", EColumnType::Time},
                  {"TS", EColumnType::Double},
                  {"C", EColumnType::Text},
                  {"V", EColumnType::Text},
                  {"BL", EColumnType::Text},
                  {"BO", EColumnType::Short}});
    const std::int64_t large = 9007199254740993;
    table.Add({-5, 123456789, large, 0.25, 1e-300, 12.3456, 42083, 86399, 42083.75, "ab", "\xC3\xA4", "blob", 1});
    Run(L"INSERT INTO U VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?)", &table);
    const CTable row = Select(L"SELECT U.*, CAST(N AS VARCHAR(30)) AS NT, CAST(TS AS VARCHAR(30)) AS TST FROM U");
    EXPECT_EQ(-5, row.Integer(0, "S"));
    EXPECT_EQ(123456789, row.Integer(0, "I"));
    EXPECT_EQ(large, row.Integer(0, "L"));
    EXPECT_EQ(0.25, row.Real(0, "F"));
    EXPECT_EQ(1e-300, row.Real(0, "D"));
    EXPECT_EQ("12.3456", row.Text(0, "NT"));
    EXPECT_EQ(42083, row.Integer(0, "DT"));
    EXPECT_EQ(86399, row.Integer(0, "TM"));
    EXPECT_EQ("2015-03-20 18:00:00.0000", row.Text(0, "TST"));
    EXPECT_EQ("ab", row.Text(0, "C"));
    EXPECT_EQ("\xC3\xA4", row.Text(0, "V"));
    EXPECT_EQ("blob", row.Text(0, "BL"));
    EXPECT_EQ(1, row.Integer(0, "BO"));
}

TEST_F(Parameters, EveryTypeOfParameterCanBeNull) {
    Run(L"CREATE TABLE U(S SMALLINT, F FLOAT, DT DATE, TM TIME, TS TIMESTAMP, V VARCHAR(20), BL BLOB SUB_TYPE "
        L"TEXT)");
    CTable table({{"S", EColumnType::Short},
                  {"F", EColumnType::Float},
                  {"DT", EColumnType::Date},
                  {"TM", EColumnType::Time},
                  {"TS", EColumnType::Double},
                  {"V", EColumnType::Text},
                  {"BL", EColumnType::Text}});
    table.Add({});
    Run(L"INSERT INTO U VALUES(?,?,?,?,?,?,?)", &table);
    const CTable row = Select(L"SELECT * FROM U");
    for (const std::string& name : row.ColumnNames())
        EXPECT_TRUE(row.IsNull(0, name)) << name;
}

TEST_F(Parameters, TextIsConvertedByTheEngineToWhatIsNeeded) {
    Run(L"CREATE TABLE U(I INTEGER, N NUMERIC(18,4), DT DATE, TM TIME)");
    CTable table(
        {{"I", EColumnType::Text}, {"N", EColumnType::Text}, {"DT", EColumnType::Text}, {"TM", EColumnType::Text}});
    table.Add({"12", "99999999999999.9999", "20.03.2015", "02:00:00.0000"});
    Run(L"INSERT INTO U VALUES(?,?,?,?)", &table);
    const CTable row = Select(L"SELECT I, CAST(N AS VARCHAR(30)) AS NT, DT, TM FROM U");
    EXPECT_EQ(12, row.Integer(0, "I"));
    EXPECT_EQ("99999999999999.9999", row.Text(0, "NT"));
    EXPECT_EQ(42083, row.Integer(0, "DT"));
    EXPECT_EQ(7200, row.Integer(0, "TM"));
    CTable bad(
        {{"I", EColumnType::Text}, {"N", EColumnType::Text}, {"DT", EColumnType::Text}, {"TM", EColumnType::Text}});
    bad.Add({"twelve", {}, {}, {}});
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO U VALUES(?,?,?,?)", &bad));
    EXPECT_THAT(Error(), StartsWith(L"A value has not the form that its column takes"));
}

TEST_F(Parameters, NumbersBecomeText) {
    CTable table({{"P1", EColumnType::Long}, {"P2", EColumnType::Long}});
    table.Add({1, -42});
    Run(L"INSERT INTO T VALUES(?,?)", &table);
    EXPECT_EQ("-42", Select(L"SELECT NAME FROM T").Text(0, "NAME"));
}

TEST_F(Parameters, OverlongTextIsRefusedWithItsPlace) {
    CTable table = Pairs();
    table.Add({1, "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4"}).Add({2, "sixsix"});
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO T VALUES(?,?)", &table));
    EXPECT_EQ(
        L"Record 2 of 2 was refused, and nothing of the statement is stored. The field \"P2\" of record 2 of the "
        L"parameter table holds a text of 6 characters, but only 5 fit: shorten it.",
        Error());
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Parameters, NumberOutOfRangeIsRefused) {
    Run(L"CREATE TABLE U(S SMALLINT)");
    CTable table({{"S", EColumnType::Long}});
    table.Add({40000});
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO U VALUES(?)", &table));
    EXPECT_THAT(Error(), HasSubstr(L"SQLSTATE 22003"));
}

TEST_F(Parameters, DayAndTimeOutOfRangeAreRefusedWithTheirPlace) {
    Run(L"CREATE TABLE U(DT DATE, TM TIME)");
    CTable table({{"DT", EColumnType::Long}, {"TM", EColumnType::Long}});
    table.Add({3000000, 0});
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO U VALUES(?,?)", &table));
    EXPECT_EQ(
        L"The field \"DT\" of record 1 of the parameter table holds 3000000, which is no day: correct the value.",
        Error());
    CTable time({{"DT", EColumnType::Long}, {"TM", EColumnType::Long}});
    time.Add({0, 86400});
    EXPECT_EQ(E_FAIL, TryRun(L"INSERT INTO U VALUES(?,?)", &time));
    EXPECT_THAT(Error(), HasSubstr(L"holds 86400, which is no time"));
}

} // namespace
} // namespace dmFirebirdTest
