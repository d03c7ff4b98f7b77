// The store cannot be opened: each reason is one sentence, on the standard error stream, with status 3.
#include "Sandbox.h"

namespace sqCliTest {

namespace {

class OpenFailure : public Sandbox {
protected:
    void ExpectRefused(const std::string& sentence) {
        const tagEnd end = Run({"list", "holidays"});
        EXPECT_EQ(end.Status, 3);
        EXPECT_EQ(end.Errors, "error: " + sentence + "\n");
        EXPECT_EQ(end.Output, "");
    }

    std::string Quoted(const std::filesystem::path& path) { return "\"" + path.string() + "\""; }
};

TEST_F(OpenFailure, NothingIsRegistered) {
    ExpectRefused(RegistryFile() +
                  " names no database for this program: make one with \"sqstorage create\", or say "
                  "with --registry where the entries are.");
}

TEST_F(OpenFailure, TheUserNameIsMissing) {
    WriteRegistry({{"Path", Database().string()}, {"Password", "masterkey"}});
    ExpectRefused("The entry \"Username\" of the database connection is missing or empty: add it to " +
                  RegistryFile() + ".");
}

TEST_F(OpenFailure, ThePasswordIsEmpty) {
    WriteRegistry({{"Path", Database().string()}, {"Username", "SYSDBA"}, {"Password", ""}});
    ExpectRefused("The entry \"Password\" of the database connection is missing or empty: add it to " +
                  RegistryFile() + ".");
}

TEST_F(OpenFailure, TheDatabaseDoesNotExist) {
    Register(Database());
    ExpectRefused("The database file " + Quoted(Database()) +
                  " does not exist: create the database first, or correct the path.");
}

TEST_F(OpenFailure, TheDatabaseStandsBelowAFile) {
    const auto file = Write("file", "x");
    Register(file / "portfolio.fdb");
    ExpectRefused("The database file " + Quoted(file / "portfolio.fdb") +
                  " does not exist: create the database first, or correct the path.");
}

TEST_F(OpenFailure, TheDatabaseIsADirectory) {
    Register(Folder());
    ExpectRefused("The database file " + Quoted(Folder()) + " is a directory: name a file in it.");
}

TEST_F(OpenFailure, TheFileIsNoDatabase) {
    const auto file = Write("text.fdb", std::string(40000, 'x'));
    Register(file);
    ExpectRefused(
        "The database file " + Quoted(file) +
        " is no database that this engine can read: correct the path, or restore the file from a backup.");
}

TEST_F(OpenFailure, TheDatabaseHoldsNoStore) {
    Create();
    CHeldDatabase(Database()).Run(L"DROP TABLE SCHEMA_INFO");
    ExpectRefused("The database holds no store of this program: make one with \"sqstorage create\", or correct "
                  "\"Path\" in " +
                  RegistryFile() + ".");
}

TEST_F(OpenFailure, TheCreationDidNotFinish) {
    Create();
    CHeldDatabase(Database()).Run(L"DELETE FROM SCHEMA_INFO");
    ExpectRefused(
        "The database holds no complete storage: create one with \"sqstorage create\", or correct the path "
        "in the registry.");
}

TEST_F(OpenFailure, TheSchemaIsTooOld) {
    Create();
    CHeldDatabase(Database()).Run(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=0");
    ExpectRefused(
        "The database has schema version 0, older than version 2 of this program: bring it up to date with "
        "\"sqstorage upgrade\".");
}

TEST_F(OpenFailure, TheSchemaIsTooNew) {
    Create();
    CHeldDatabase(Database()).Run(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=99");
    ExpectRefused(
        "The database has schema version 99, newer than version 2 of this program: install a newer version "
        "of the program.");
}

TEST_F(OpenFailure, AnotherProcessHasTheDatabaseOpen) {
    Create();
    const CHeldDatabase held(Database());
    ExpectRefused("The database file " + Quoted(Database()) +
                  " is in use by another process: close that one, or share the database through a server.");
}

TEST_F(OpenFailure, TheServerCannotBeReached) {
    Register("localhost/1:store.fdb");
    ExpectRefused("The database server \"localhost\" at port \"1\" cannot be reached: check its name and port, and "
                  "that it runs.");
}

TEST_F(OpenFailure, TheRegistryFileIsMalformed) {
    Write("registry/machine.toml", "[[[\n");
    const tagEnd end = Run({"list", "holidays"});
    EXPECT_EQ(end.Status, 3);
    EXPECT_THAT(end.Errors, testing::StartsWith("error: Registry file \"" + RegistryFile() + "\", line 1: "));
    EXPECT_THAT(end.Errors,
                testing::EndsWith("Correct the line, or move the file away to start with an empty one.\n"));
}

} // namespace

} // namespace sqCliTest
