#include "Sandbox.h"

namespace sqCliTest {

namespace {

class UpgradeCommand : public Sandbox {};

TEST_F(UpgradeCommand, AStoreThatIsUpToDateStaysSo) {
    Create();
    const tagEnd end = Run({"upgrade"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors, "note: The database was up to date already.\n");
    EXPECT_EQ(Run({"check"}).Status, 0);
}

TEST_F(UpgradeCommand, AnOlderStoreIsBroughtUpToDate) {
    Create();
    CHeldDatabase(Database()).Run(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=1");
    EXPECT_EQ(Run({"list", "holidays"}).Status, 3);
    const tagEnd end = Run({"upgrade"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors, "note: The database is up to date now, after 1 step(s).\n");
    EXPECT_EQ(Run({"check"}).Status, 0);
}

TEST_F(UpgradeCommand, ANewerStoreIsRefused) {
    Create();
    CHeldDatabase(Database()).Run(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=99");
    const tagEnd end = Run({"upgrade"});
    EXPECT_EQ(end.Status, 3);
    EXPECT_EQ(end.Errors, "error: The database was made by a newer version of this program: install that one.\n");
}

TEST_F(UpgradeCommand, WithoutAStoreThereIsNothingToUpgrade) {
    EXPECT_EQ(Run({"upgrade"}).Status, 3);
    Register(Database());
    const tagEnd end = Run({"upgrade"});
    EXPECT_EQ(end.Status, 3);
    EXPECT_EQ(end.Errors, "error: The database file \"" + Database().string() +
                              "\" does not exist: create the database first, or correct the path.\n");
}

TEST_F(UpgradeCommand, ADatabaseThatHoldsNoStoreIsRefused) {
    Create();
    CHeldDatabase(Database()).Run(L"DROP TABLE SCHEMA_INFO");
    const tagEnd end = Run({"upgrade"});
    EXPECT_EQ(end.Status, 3);
    EXPECT_EQ(end.Errors,
              "error: The database holds no store of this program: make one with \"sqstorage create\", or "
              "correct \"Path\" in " +
                  RegistryFile() + ".\n");
}

} // namespace

} // namespace sqCliTest
