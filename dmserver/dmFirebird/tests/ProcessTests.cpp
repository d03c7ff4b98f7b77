#include "ChildProcess.h"
#include "TestStore.h"

#include "platform/text.h"

namespace dmFirebirdTest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Processes : public CStoreTest {};

TEST_F(Processes, SecondProcessIsRefusedInPlainWords) {
    const tagOpened opened = OpenElsewhere(Path());
    EXPECT_EQ(E_FAIL, opened.Status);
    EXPECT_THAT(opened.Error, StartsWith(L"The database file \"" + Path() +
                                         L"\" is in use by another process: close that one, or share the database "
                                         L"through a server. [Firebird: I/O error during \"lock\" operation"));
    EXPECT_THAT(opened.Error,
                HasSubstr(L"Database already opened with engine instance, incompatible with current"));
    EXPECT_EQ(1, Number(L"SELECT 1 FROM RDB$DATABASE"));
}

TEST_F(Processes, SecondProcessIsRefusedWithALockDirectoryOfItsOwnToo) {
    const platform::CTemporaryDirectory locks;
    const tagOpened opened = OpenElsewhere(Path(), {{"FIREBIRD_LOCK", locks.Path().string()}});
    EXPECT_EQ(E_FAIL, opened.Status);
    EXPECT_THAT(opened.Error, HasSubstr(L" is in use by another process"));
}

TEST_F(Processes, ClosedDatabaseIsOpenToOthers) {
    Database().Close();
    EXPECT_EQ(S_OK, OpenElsewhere(Path()).Status);
    EXPECT_EQ(S_OK, Open(Database(), Path()));
}

TEST_F(Processes, DatabaseOfAKilledProcessOpensAgain) {
    Run(L"CREATE TABLE T(A INTEGER)");
    Run(L"INSERT INTO T VALUES(1)");
    Database().Close();
    CChildProcess holder(OpenerPath(), {platform::ToUtf8(Path()), "SYSDBA", "masterkey", "hold"});
    ASSERT_EQ(S_OK, ReadOpened(holder).Status);
    holder.Kill();
    ASSERT_EQ(S_OK, Open(Database(), Path())) << testing::PrintToString(Error());
    EXPECT_EQ(1, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Processes, MissingEngineIsToldWithThePackageToInstall) {
    Database().Close();
    const platform::CTemporaryDirectory root;
    platform::WriteFileAtomically(root.Path() / "firebird.conf", "");
    platform::WriteFileAtomically(root.Path() / "plugins.conf",
                                  "Plugin = Engine12 {\n Module = " + (root.Path() / "missing").string() + "\n}\n");
    const tagOpened opened = OpenElsewhere(Path(), {{"FIREBIRD", root.Path().string()}});
    EXPECT_EQ(E_FAIL, opened.Status);
    EXPECT_THAT(opened.Error,
                StartsWith(L"The database file \"" + Path() +
                           L"\" cannot be opened, the embedded database engine is missing: install the package "
                           L"firebird3.0-server-core, or name a server in the path as host:path. [Firebird: "));
}

TEST_F(Processes, LockDirectoryOfTheEnvironmentIsUsed) {
    Database().Close();
    const platform::CTemporaryDirectory locks;
    EXPECT_EQ(S_OK, OpenElsewhere(Path(), {{"FIREBIRD_LOCK", locks.Path().string()}}).Status);
    EXPECT_FALSE(platform::ListDirectory(locks.Path()).empty());
}

TEST_F(Processes, LockDirectoryIsMadeInTheUsersRuntimeDirectory) {
    Database().Close();
    const platform::CTemporaryDirectory runtime;
    // FIREBIRD_LOCK was settled for this process; the other one is to settle it by itself.
    const std::string cleared = "/usr/bin/env";
    CChildProcess opener(cleared,
                         {"-u", "FIREBIRD_LOCK", OpenerPath(), platform::ToUtf8(Path()), "SYSDBA", "masterkey"},
                         {{"XDG_RUNTIME_DIR", runtime.Path().string()}});
    EXPECT_EQ(S_OK, ReadOpened(opener).Status);
    opener.Wait();
    const std::filesystem::path locks = runtime.Path() / "sqstorage" / "firebird";
    EXPECT_EQ(std::filesystem::perms::owner_all, std::filesystem::status(locks).permissions());
    EXPECT_FALSE(platform::ListDirectory(locks).empty());
}

TEST_F(Processes, UnusableLockDirectoryIsTold) {
    Database().Close();
    const tagOpened opened = OpenElsewhere(Path(), {{"FIREBIRD_LOCK", "/dev/null/none"}});
    EXPECT_EQ(E_FAIL, opened.Status);
    EXPECT_THAT(opened.Error, StartsWith(L"The database engine cannot use its directory for lock files"));
}

} // namespace
} // namespace dmFirebirdTest
