// What becomes of a database whose definition fails on the way, and how upgrade steps run. This program links a
// definition of its own, which each test writes.
#include "SetupPlace.h"

#include "schema/interface/Schema.h"

#include <functional>
#include <gmock/gmock.h>
#include <utility>
#include <vector>

namespace {

std::vector<std::string_view> g_Create;
std::vector<sqSchema::tagUpgradeStep> g_Steps;
// Runs between the making of the database and that of its tables.
std::function<void()> g_BeforeCreate;

} // namespace

namespace sqSchema {

std::span<const std::string_view> CreateStatements() {
    if (g_BeforeCreate)
        g_BeforeCreate();
    return g_Create;
}

std::span<const tagUpgradeStep> UpgradeSteps() { return g_Steps; }

} // namespace sqSchema

namespace {

using namespace tests;
using testing::HasSubstr;
using testing::Not;

constexpr std::string_view VersionTable = "CREATE TABLE SCHEMA_INFO (SCHEMA_VERSION INTEGER)";
constexpr std::string_view Version = "INSERT INTO SCHEMA_INFO VALUES(1)";
constexpr std::string_view Wrong = "INSERT INTO NO_SUCH_TABLE VALUES(1)";
constexpr const wchar_t* SelectVersion = L"SELECT SCHEMA_VERSION FROM SCHEMA_INFO";

class SetupSchema : public testing::Test {
protected:
    SetupSchema() {
        g_Create = {VersionTable, Version};
        g_Steps.clear();
        g_BeforeCreate = nullptr;
    }
    ~SetupSchema() override { g_BeforeCreate = nullptr; }

    CSetupPlace m_Place;
};

TEST_F(SetupSchema, AStatementMayUseWhatTheOneBeforeItMade) {
    sqSetup::CreateStorage(m_Place.Connection());
    EXPECT_EQ(1, m_Place.Run(SelectVersion));
}

TEST_F(SetupSchema, ADatabaseThatWasHalfMadeIsRemoved) {
    g_Create = {VersionTable, Wrong, Version};
    const std::wstring error = ErrorOf(&sqSetup::CreateStorage, m_Place.Connection());
    EXPECT_THAT(error, HasSubstr(L"NO_SUCH_TABLE"));
    EXPECT_THAT(error, Not(HasSubstr(L"could not be removed")));
    EXPECT_FALSE(m_Place.HasDatabase());
    g_Create = {VersionTable, Version};
    sqSetup::CreateStorage(m_Place.Connection());
    EXPECT_EQ(1, m_Place.Run(SelectVersion));
}

TEST_F(SetupSchema, AHalfMadeDatabaseThatAnotherHoldsOpenIsTheUsersToRemove) {
    g_Create = {VersionTable, Wrong};
    platform::CComPtr<IDM_dmFirebird::IdmDatabase> other;
    g_BeforeCreate = [&] { other = m_Place.Open(); };
    const std::wstring error = ErrorOf(&sqSetup::CreateStorage, m_Place.Connection());
    EXPECT_THAT(error, HasSubstr(L"NO_SUCH_TABLE"));
    EXPECT_THAT(error,
                HasSubstr(L" The unfinished database could not be removed: delete it before the next attempt."));
    other->Close();
    EXPECT_TRUE(m_Place.HasDatabase());
}

class SetupUpgrade : public SetupSchema {
protected:
    SetupUpgrade() { sqSetup::CreateStorage(m_Place.Connection()); }

    static constexpr std::string_view First[] = {"INSERT INTO SCHEMA_INFO VALUES(100)",
                                                 "UPDATE SCHEMA_INFO SET SCHEMA_VERSION=SCHEMA_VERSION+1"};
    static constexpr std::string_view Second[] = {"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=SCHEMA_VERSION*10"};
    static constexpr std::string_view Failing[] = {"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=50", Wrong};
    static constexpr const wchar_t* Sum =
        L"SELECT CAST(SUM(SCHEMA_VERSION) AS INTEGER) AS DATA_FEED FROM SCHEMA_INFO";
};

TEST_F(SetupUpgrade, RunsItsStepsInOrderAndCountsThem) {
    g_Steps = {{1, 2, First}, {2, 3, Second}};
    EXPECT_EQ(2, sqSetup::UpgradeStorage(m_Place.Connection()));
    EXPECT_EQ((1 + 1) * 10 + (100 + 1) * 10, m_Place.Run(Sum));
}

TEST_F(SetupUpgrade, LeavesOutTheStepsThatWereDone) {
    g_Steps = {{0, 1, First}, {1, 2, Second}};
    EXPECT_EQ(1, sqSetup::UpgradeStorage(m_Place.Connection()));
    EXPECT_EQ(10, m_Place.Run(Sum));
}

TEST_F(SetupUpgrade, AStepThatFailsIsUndoneAndTheOneBeforeItStays) {
    g_Steps = {{1, 2, First}, {2, 3, Failing}, {3, 4, Second}};
    EXPECT_THAT(ErrorOf(&sqSetup::UpgradeStorage, m_Place.Connection()), HasSubstr(L"NO_SUCH_TABLE"));
    EXPECT_EQ(1 + 1 + 100 + 1, m_Place.Run(Sum));
}

} // namespace
