// Creating a storage and bringing it up to date, with the product's own definition.
#include "SetupPlace.h"

#include "schema/interface/Schema.h"

#include <gmock/gmock.h>

namespace {

using namespace tests;
using testing::HasSubstr;

class Setup : public testing::Test {
protected:
    CSetupPlace m_Place;
};

TEST_F(Setup, CreatesADatabaseOfThisVersionAndLetsGoOfIt) {
    sqSetup::CreateStorage(m_Place.Connection());
    EXPECT_EQ(sqSchema::CurrentVersion, m_Place.Run(L"SELECT SCHEMA_VERSION FROM SCHEMA_INFO"));
    EXPECT_EQ(0, m_Place.Run(L"SELECT COUNT(*) AS DATA_FEED FROM HOLIDAYS"));
    EXPECT_EQ(1, m_Place.Run(L"SELECT COUNT(*) AS DATA_FEED FROM MON$ATTACHMENTS WHERE MON$SYSTEM_FLAG=0"));
}

TEST_F(Setup, CreateRefusesAFileThatExistsAndLeavesIt) {
    const auto path = platform::ToPath(m_Place.Connection().Path);
    platform::WriteFileAtomically(path, "somebody's own");
    EXPECT_THAT(ErrorOf(&sqSetup::CreateStorage, m_Place.Connection()), HasSubstr(L"storage.fdb"));
    EXPECT_EQ("somebody's own", platform::ReadFile(path));
}

TEST_F(Setup, CreateRefusesAStorageThatExistsAndLeavesItsData) {
    sqSetup::CreateStorage(m_Place.Connection());
    m_Place.Run(L"INSERT INTO HOLIDAYS VALUES(7,'NYSE')");
    EXPECT_THAT(ErrorOf(&sqSetup::CreateStorage, m_Place.Connection()), HasSubstr(L"storage.fdb"));
    EXPECT_EQ(7, m_Place.Run(L"SELECT HOLIDAY FROM HOLIDAYS"));
}

TEST_F(Setup, CreateInADirectoryThatDoesNotExistSaysSo) {
    auto connection = m_Place.Connection();
    connection.Path = m_Place.Path(L"no such directory/storage.fdb");
    EXPECT_THAT(ErrorOf(&sqSetup::CreateStorage, connection), HasSubstr(L"no such directory"));
}

TEST_F(Setup, AnUpgradeOfAnUpToDateStorageDoesNothing) {
    sqSetup::CreateStorage(m_Place.Connection());
    EXPECT_EQ(0, sqSetup::UpgradeStorage(m_Place.Connection()));
    EXPECT_EQ(sqSchema::CurrentVersion, m_Place.Run(L"SELECT SCHEMA_VERSION FROM SCHEMA_INFO"));
}

TEST_F(Setup, AnUpgradeBringsAStorageOfTheFirstVersionToThisOne) {
    sqSetup::CreateStorage(m_Place.Connection());
    m_Place.Run(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=1");
    EXPECT_EQ(sqSchema::CurrentVersion - 1, sqSetup::UpgradeStorage(m_Place.Connection()));
    EXPECT_EQ(sqSchema::CurrentVersion, m_Place.Run(L"SELECT SCHEMA_VERSION FROM SCHEMA_INFO"));
}

TEST_F(Setup, AnUpgradeRefusesANewerStorageAndLeavesIt) {
    sqSetup::CreateStorage(m_Place.Connection());
    m_Place.Run(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=99");
    EXPECT_EQ(L"the database was made by a newer version of this program: install that one",
              ErrorOf(&sqSetup::UpgradeStorage, m_Place.Connection()));
    EXPECT_EQ(99, m_Place.Run(L"SELECT SCHEMA_VERSION FROM SCHEMA_INFO"));
}

TEST_F(Setup, FreshStatisticsCountWhatHasComeInWhileAHostIsAtWork) {
    sqSetup::CreateStorage(m_Place.Connection());
    const auto host = m_Place.Open();
    m_Place.Run(L"INSERT INTO HOLIDAYS VALUES(7,'NYSE')");
    constexpr const wchar_t* counted = L"SELECT COUNT(*) AS DATA_FEED FROM RDB$INDICES WHERE "
                                       L"RDB$INDEX_NAME='HOLIDAYS_KEY' AND RDB$STATISTICS>0";
    EXPECT_EQ(0, m_Place.Run(counted));
    sqSetup::RefreshStatistics(m_Place.Connection());
    EXPECT_EQ(1, m_Place.Run(counted));
    host->Close();
}

TEST_F(Setup, FreshStatisticsOfADatabaseThatIsNotThereAreRefused) {
    EXPECT_NE(L"", ErrorOf(&sqSetup::RefreshStatistics, m_Place.Connection()));
}

TEST_F(Setup, AnUpgradeRefusesAStorageThatWasNeverCompleted) {
    sqSetup::CreateStorage(m_Place.Connection());
    m_Place.Run(L"DELETE FROM SCHEMA_INFO");
    EXPECT_EQ(L"the database holds no complete storage: remove it and create it again",
              ErrorOf(&sqSetup::UpgradeStorage, m_Place.Connection()));
}

TEST_F(Setup, AnUpgradeRefusesADatabaseOfAnotherKind) {
    m_Place.CreateEmptyDatabase();
    EXPECT_THAT(ErrorOf(&sqSetup::UpgradeStorage, m_Place.Connection()), HasSubstr(L"SCHEMA_INFO"));
}

TEST_F(Setup, AnUpgradeOfADatabaseThatDoesNotExistSaysSoAndMakesNone) {
    EXPECT_THAT(ErrorOf(&sqSetup::UpgradeStorage, m_Place.Connection()), HasSubstr(L"storage.fdb"));
    EXPECT_FALSE(m_Place.HasDatabase());
}

} // namespace
