#include "Sandbox.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CreateCommand : public Sandbox {};

TEST_F(CreateCommand, MakesTheDatabaseWithTheFoldersAboveItAndTheEntries) {
    const auto database = Folder() / "a" / "b" / "store.fdb";
    const tagEnd end = Run({"create", "--database", database.string(), "--user", "SYSDBA", "--password", "secret",
                            "--dictionary", (Folder() / "roots.csv").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output, "");
    EXPECT_EQ(end.Errors, "note: The database \"" + database.string() + "\" is made, and " + RegistryFile() +
                              " leads to it.\n");
    EXPECT_TRUE(platform::Exists(database));
    const std::string registry = Read(RegistryFile());
    EXPECT_THAT(registry, HasSubstr("['SOFTWARE\\sqStorage\\sqStorage\\Databases\\Portfolio']"));
    EXPECT_THAT(registry, HasSubstr("Path = '" + database.string() + "'"));
    EXPECT_THAT(registry, HasSubstr("Username = 'SYSDBA'"));
    EXPECT_THAT(registry, HasSubstr("Password = 'secret'"));
    EXPECT_THAT(registry, HasSubstr("DictionaryPath = '" + (Folder() / "roots.csv").string() + "'"));
    EXPECT_EQ(Run({"check"}).Status, 0);
}

TEST_F(CreateCommand, WithoutAPathTheDatabaseIsInTheProductsDataFolder) {
    const tagEnd end = Run({"create"});
    EXPECT_EQ(end.Status, 0) << end.Errors;
    EXPECT_TRUE(platform::Exists(Folder() / "home/.local/share/sqStorage/sqStorage/Databases/Portfolio.fdb"));
}

TEST_F(CreateCommand, QuietSaysNothing) {
    EXPECT_EQ(Run({"--quiet", "create", "--database", Database().string()}).Errors, "");
}

TEST_F(CreateCommand, ADatabaseFileIsNotOverwritten) {
    const auto file = Write("store.fdb", "precious");
    const tagEnd end = Run({"create", "--database", file.string()});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Errors, "error: The database file \"" + file.string() +
                              "\" exists already and is left as it is: choose another path with --database.\n");
    EXPECT_EQ(Read(file), "precious");
    EXPECT_FALSE(platform::Exists(RegistryFile()));
}

TEST_F(CreateCommand, AnEntryIsNotOverwritten) {
    Create();
    const std::string before = Read(RegistryFile());
    const auto other = Folder() / "other.fdb";
    const tagEnd end = Run({"create", "--database", other.string()});
    EXPECT_EQ(end.Status, 1);
    EXPECT_EQ(end.Errors,
              "error: " + RegistryFile() +
                  " names a database under \"SOFTWARE\\sqStorage\\sqStorage\\Databases\\Portfolio\" "
                  "already, which stays as it is: use that one, remove the entry, or choose another place "
                  "with --registry.\n");
    EXPECT_EQ(Read(RegistryFile()), before);
    EXPECT_FALSE(platform::Exists(other));
}

TEST_F(CreateCommand, AFolderThatCannotBeMadeIsNamed) {
    const auto file = Write("file", "x");
    const tagEnd end = Run({"create", "--database", (file / "below" / "store.fdb").string()});
    EXPECT_EQ(end.Status, 3);
    EXPECT_THAT(end.Errors,
                StartsWith("error: The database cannot be created: cannot create directory \"" + file.string()));
    EXPECT_FALSE(platform::Exists(RegistryFile()));
}

TEST_F(CreateCommand, ARegistryThatCannotBeWrittenLeavesNoDatabaseBehind) {
    const auto file = Write("file", "x");
    const auto database = Folder() / "store.fdb";
    const tagEnd end =
        RunBare({"--registry", (file / "registry").string(), "create", "--database", database.string()});
    EXPECT_EQ(end.Status, 3);
    EXPECT_FALSE(platform::Exists(database));
}

TEST_F(CreateCommand, EmptyValuesAreRefused) {
    EXPECT_EQ(Run({"create", "--database", Database().string(), "--user", ""}).Status, 2);
    const tagEnd end = Run({"create", "--database", Database().string(), "--password", ""});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors, "error: --password is empty: give a value.\n");
    EXPECT_FALSE(platform::Exists(Database()));
}

TEST_F(CreateCommand, AHostGetsTheSameEntries) {
    const tagEnd end = Run({"create", "--database", Database().string(), "--host", "My Company/My Platform"});
    EXPECT_EQ(end.Status, 0) << end.Errors;
    EXPECT_THAT(Read(RegistryFile()), HasSubstr("['SOFTWARE\\My Company\\My Platform\\Databases\\Portfolio']"));
}

TEST_F(CreateCommand, AHostWithoutAProductIsRefused) {
    const tagEnd end = Run({"create", "--database", Database().string(), "--host", "My Company"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors, "error: \"My Company\" names no host program: write it as \"Company/Product\".\n");
}

} // namespace

} // namespace sqCliTest
