// The steps from one version of the definition to the next.
#include "../StatementSplitter.h"
#include "TestDatabase.h"
#include "effective_terms_1.sql.h"
#include "schema/interface/Schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sqSchemaTest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// All that the definition consists of, as the database itself describes it. Bodies and defaults are compared by
// their hash, types by their parts; names that the database makes up for itself are left out.
constexpr std::string_view Type =
    "F.RDB$FIELD_TYPE AS FIELD_TYPE, F.RDB$FIELD_SUB_TYPE AS SUB_TYPE, F.RDB$FIELD_LENGTH AS BYTES, "
    "F.RDB$FIELD_SCALE AS SCALE, F.RDB$FIELD_PRECISION AS DIGITS, F.RDB$CHARACTER_LENGTH AS CHARACTERS, "
    "F.RDB$CHARACTER_SET_ID AS CHARACTER_SET, F.RDB$COLLATION_ID AS ORDERING, F.RDB$NULL_FLAG AS TYPE_NULL_FLAG, "
    "HASH(CAST(F.RDB$COMPUTED_SOURCE AS VARCHAR(8000))) AS COMPUTED, "
    "HASH(CAST(F.RDB$DEFAULT_SOURCE AS VARCHAR(8000))) AS TYPE_DEFAULT_VALUE";

struct tagAspect {
    const char* Name;
    std::string Query;
};

const std::vector<tagAspect>& Aspects() {
    static const std::string type(Type);
    static const std::vector<tagAspect> aspects{
        {"tables and views",
         "SELECT RDB$RELATION_NAME, RDB$RELATION_TYPE, HASH(CAST(RDB$VIEW_SOURCE AS VARCHAR(8000))) AS SOURCE "
         "FROM RDB$RELATIONS WHERE RDB$SYSTEM_FLAG=0 ORDER BY RDB$RELATION_NAME"},
        {"columns", "SELECT C.RDB$RELATION_NAME, C.RDB$FIELD_NAME, C.RDB$FIELD_POSITION, C.RDB$NULL_FLAG, "
                    "C.RDB$COLLATION_ID, HASH(CAST(C.RDB$DEFAULT_SOURCE AS VARCHAR(8000))) AS DEFAULT_VALUE, " +
                        type +
                        " FROM RDB$RELATION_FIELDS C JOIN RDB$FIELDS F ON F.RDB$FIELD_NAME=C.RDB$FIELD_SOURCE "
                        "WHERE C.RDB$SYSTEM_FLAG=0 ORDER BY C.RDB$RELATION_NAME, C.RDB$FIELD_POSITION"},
        {"indexes", "SELECT I.RDB$INDEX_NAME, I.RDB$RELATION_NAME, I.RDB$UNIQUE_FLAG, I.RDB$INDEX_INACTIVE, "
                    "I.RDB$INDEX_TYPE, HASH(CAST(I.RDB$EXPRESSION_SOURCE AS VARCHAR(8000))) AS EXPRESSION, "
                    "S.RDB$FIELD_NAME, S.RDB$FIELD_POSITION FROM RDB$INDICES I "
                    "LEFT JOIN RDB$INDEX_SEGMENTS S ON S.RDB$INDEX_NAME=I.RDB$INDEX_NAME "
                    "WHERE I.RDB$SYSTEM_FLAG=0 ORDER BY I.RDB$INDEX_NAME, S.RDB$FIELD_POSITION"},
        {"constraints", "SELECT RDB$RELATION_NAME, RDB$CONSTRAINT_TYPE, RDB$INDEX_NAME FROM "
                        "RDB$RELATION_CONSTRAINTS ORDER BY RDB$RELATION_NAME, RDB$CONSTRAINT_TYPE, RDB$INDEX_NAME"},
        {"procedures", "SELECT RDB$PROCEDURE_NAME, RDB$PROCEDURE_TYPE, RDB$PROCEDURE_INPUTS, "
                       "RDB$PROCEDURE_OUTPUTS, HASH(CAST(RDB$PROCEDURE_SOURCE AS VARCHAR(8000))) AS SOURCE "
                       "FROM RDB$PROCEDURES WHERE RDB$SYSTEM_FLAG=0 ORDER BY RDB$PROCEDURE_NAME"},
        {"parameters of procedures",
         "SELECT P.RDB$PROCEDURE_NAME, P.RDB$PARAMETER_TYPE, P.RDB$PARAMETER_NUMBER, P.RDB$PARAMETER_NAME, "
         "P.RDB$NULL_FLAG, P.RDB$PARAMETER_MECHANISM, "
         "HASH(CAST(P.RDB$DEFAULT_SOURCE AS VARCHAR(8000))) AS DEFAULT_VALUE, " +
             type +
             " FROM RDB$PROCEDURE_PARAMETERS P JOIN RDB$FIELDS F ON F.RDB$FIELD_NAME=P.RDB$FIELD_SOURCE WHERE "
             "P.RDB$SYSTEM_FLAG=0 ORDER BY P.RDB$PROCEDURE_NAME, P.RDB$PARAMETER_TYPE, P.RDB$PARAMETER_NUMBER"},
        {"functions", "SELECT RDB$FUNCTION_NAME, RDB$RETURN_ARGUMENT, RDB$DETERMINISTIC_FLAG, "
                      "HASH(CAST(RDB$FUNCTION_SOURCE AS VARCHAR(8000))) AS SOURCE FROM RDB$FUNCTIONS "
                      "WHERE RDB$SYSTEM_FLAG=0 ORDER BY RDB$FUNCTION_NAME"},
        {"arguments of functions",
         "SELECT A.RDB$FUNCTION_NAME, A.RDB$ARGUMENT_POSITION, A.RDB$ARGUMENT_NAME, A.RDB$NULL_FLAG, " + type +
             " FROM RDB$FUNCTION_ARGUMENTS A JOIN RDB$FIELDS F ON F.RDB$FIELD_NAME=A.RDB$FIELD_SOURCE WHERE "
             "A.RDB$SYSTEM_FLAG=0 ORDER BY A.RDB$FUNCTION_NAME, A.RDB$ARGUMENT_POSITION"},
        {"exceptions", "SELECT RDB$EXCEPTION_NAME, RDB$MESSAGE FROM RDB$EXCEPTIONS WHERE RDB$SYSTEM_FLAG=0 "
                       "ORDER BY RDB$EXCEPTION_NAME"},
        {"triggers", "SELECT RDB$TRIGGER_NAME, RDB$RELATION_NAME, RDB$TRIGGER_TYPE, "
                     "HASH(CAST(RDB$TRIGGER_SOURCE AS VARCHAR(8000))) AS SOURCE FROM RDB$TRIGGERS "
                     "WHERE RDB$SYSTEM_FLAG<>1 ORDER BY RDB$TRIGGER_NAME"},
        {"sequences", "SELECT RDB$GENERATOR_NAME, RDB$INITIAL_VALUE, RDB$GENERATOR_INCREMENT FROM RDB$GENERATORS "
                      "WHERE RDB$SYSTEM_FLAG=0 ORDER BY RDB$GENERATOR_NAME"},
        {"privileges", "SELECT RDB$RELATION_NAME, RDB$USER, RDB$PRIVILEGE, RDB$FIELD_NAME, RDB$GRANT_OPTION, "
                       "RDB$GRANTOR, RDB$USER_TYPE, RDB$OBJECT_TYPE FROM RDB$USER_PRIVILEGES WHERE "
                       "RDB$RELATION_NAME NOT STARTING WITH 'RDB$' AND RDB$RELATION_NAME NOT STARTING WITH 'MON$' "
                       "AND RDB$RELATION_NAME NOT STARTING WITH 'SEC$' ORDER BY RDB$RELATION_NAME, RDB$USER, "
                       "RDB$PRIVILEGE, RDB$FIELD_NAME, RDB$USER_TYPE, RDB$OBJECT_TYPE"},
    };
    return aspects;
}

TEST(Upgrade, LeadsFromTheFirstVersionToTheCurrentOneWithoutGaps) {
    std::int32_t version = 1;
    for (const auto& step : sqSchema::UpgradeSteps()) {
        EXPECT_EQ(version, step.From);
        EXPECT_LT(step.From, step.To);
        ASSERT_FALSE(step.Statements.empty()) << step.From;
        EXPECT_THAT(step.Statements.back(), HasSubstr("SCHEMA_VERSION=" + std::to_string(step.To)));
        version = step.To;
    }
    EXPECT_EQ(sqSchema::CurrentVersion, version);
}

// The definition of version 1: today's, with what has changed since as it was delivered then.
class UpgradeFromOne : public testing::Test {
protected:
    UpgradeFromOne() {
        for (const auto statement : sqSchema::CreateStatements())
            m_Database.Run(AsInVersionOne(statement));
    }
    static std::string AsInVersionOne(std::string_view statement) {
        if (statement.starts_with("INSERT INTO SCHEMA_INFO"))
            return "INSERT INTO SCHEMA_INFO (SCHEMA_VERSION) VALUES (1)";
        if (statement.starts_with("CREATE PROCEDURE EFFECTIVE_TERMS "))
            return std::string(sqSchema::SplitStatements(EffectiveTermsOfVersion1).at(0));
        return std::string(statement);
    }
    // As UpgradeStorage runs them: each in a transaction of its own, which a failure takes back.
    void RunSteps() {
        for (const auto& step : sqSchema::UpgradeSteps()) {
            CTestTransaction transaction(m_Database, EMode::ReadWrite);
            for (const auto statement : step.Statements)
                transaction.Run(statement);
            transaction.End(EEnd::Commit);
        }
    }
    static std::vector<tagRows> DefinitionOf(CTestDatabase& database) {
        std::vector<tagRows> definition;
        for (const tagAspect& aspect : Aspects())
            definition.push_back(database.Read(aspect.Query));
        return definition;
    }

    CTestDatabase m_Database{CTestDatabase::EContent::Empty};
};

TEST_F(UpgradeFromOne, GivesTheCurrentVersionAndDefinition) {
    CTestDatabase fresh;
    const auto expected = DefinitionOf(fresh);
    EXPECT_NE(expected, DefinitionOf(m_Database));
    RunSteps();
    EXPECT_EQ(std::to_string(sqSchema::CurrentVersion), m_Database.Value(sqSchema::SelectVersionStatement));
    const auto upgraded = DefinitionOf(m_Database);
    for (std::size_t i = 0; i < Aspects().size(); ++i)
        EXPECT_EQ(expected[i].Rows, upgraded[i].Rows) << Aspects()[i].Name;
    EXPECT_EQ(fresh.ResultTypes("SELECT * FROM GET_SYMBOL_INFO(1)"),
              m_Database.ResultTypes("SELECT * FROM GET_SYMBOL_INFO(1)"));
}

// What the comparison above would overlook if a query found nothing.
TEST_F(UpgradeFromOne, IsComparedInEveryAspectThatADefinitionHas) {
    for (const tagAspect& aspect : Aspects())
        EXPECT_FALSE(m_Database.Read(aspect.Query).Rows.empty()) << aspect.Name;
}

TEST_F(UpgradeFromOne, DeliversASymbolWhoseSessionCannotBeWritten) {
    m_Database.Run("INSERT INTO SESSIONS VALUES(200,0,'own',0)");
    m_Database.Run("INSERT INTO SESSION_DETAILS VALUES(200,-1,0,0,0,0,0,0)");
    m_Database.Run("INSERT INTO PORTFOLIO VALUES(1,'ESH15','ES','','',1,5,10,1,0,0,200,0,3,2015,0,2,9,"
                   "'20.03.2015',0,4,'01.01.1900','21.03.2015')");
    const auto* const symbol = "SELECT SYMBOL_NAME,SESSIONS_STRING FROM GET_SYMBOL_INFO(1)";
    EXPECT_THROW(m_Database.Read(symbol), CDatabaseError);
    RunSteps();
    EXPECT_THAT(m_Database.Read(symbol).Rows, ElementsAre(ElementsAre("ESH15", std::nullopt)));
}

TEST_F(UpgradeFromOne, ThatFailsAtItsEndLeavesTheOldVersionAndDefinition) {
    m_Database.Run("CREATE TRIGGER NO_VERSION FOR SCHEMA_INFO BEFORE UPDATE AS BEGIN "
                   "EXCEPTION SESSION_NOT_PRESENTABLE 'no new version'; END");
    const auto before = DefinitionOf(m_Database);
    try {
        RunSteps();
        ADD_FAILURE() << "nothing was raised";
    } catch (const CDatabaseError& error) {
        EXPECT_THAT(error.what(), HasSubstr("no new version"));
    }
    EXPECT_EQ("1", m_Database.Value(sqSchema::SelectVersionStatement));
    EXPECT_EQ(before, DefinitionOf(m_Database));
    // Another attempt succeeds once the reason is gone.
    m_Database.Run("DROP TRIGGER NO_VERSION");
    RunSteps();
    EXPECT_EQ(std::to_string(sqSchema::CurrentVersion), m_Database.Value(sqSchema::SelectVersionStatement));
}

} // namespace
} // namespace sqSchemaTest
