#include "TestStore.h"

#include "../DatabasePlace.h"

#include "platform/environment.h"

#include <firebird/Interface.h>

#include <cerrno>

namespace dmFirebirdTest {
namespace {

using IDM_dmFirebird::ParseDatabasePlace;
using platform::CScopedEnvironment;
using testing::HasSubstr;
using testing::StartsWith;

TEST(DatabasePlace, PlainPathIsOfThisMachine) {
    for (const std::wstring_view path : {L"/data/store.fdb", L"store.fdb", L"./a:b.fdb", L"/data/a:b.fdb",
                                         L"../x/y.fdb", L"C:\\data\\store.fdb", L"d:/data/store.fdb", L":x"}) {
        const auto place = ParseDatabasePlace(path);
        EXPECT_TRUE(place.IsEmbedded()) << testing::PrintToString(path);
        EXPECT_EQ(path, place.File);
    }
}

TEST(DatabasePlace, HostAndPortNameAServer) {
    const auto host = ParseDatabasePlace(L"db.example:/data/store.fdb");
    EXPECT_EQ(L"db.example", host.Host);
    EXPECT_EQ(L"", host.Port);
    EXPECT_EQ(L"/data/store.fdb", host.File);
    const auto port = ParseDatabasePlace(L"127.0.0.1/3051:C:\\store.fdb");
    EXPECT_EQ(L"127.0.0.1", port.Host);
    EXPECT_EQ(L"3051", port.Port);
    EXPECT_EQ(L"C:\\store.fdb", port.File);
    const auto address = ParseDatabasePlace(L"[::1]/3051:/data/store.fdb");
    EXPECT_EQ(L"[::1]", address.Host);
    EXPECT_EQ(L"3051", address.Port);
    EXPECT_EQ(L"/data/store.fdb", address.File);
}

// The superuser, who may run these tests, is never refused a file.
TEST(DatabasePlace, ForbiddenFileIsToldWithWhatToDo) {
    const auto place = ParseDatabasePlace(L"/data/store.fdb");
    IDM_dmFirebird::tagEngineReport report;
    report.Codes = {isc_io_error, isc_io_open_err};
    report.SystemError = EACCES;
    EXPECT_EQ(L"The database file \"/data/store.fdb\" may not be read and written by this user: change the file's "
              L"permissions.",
              DescribeOpenFailure(report, place, L"SYSDBA"));
    EXPECT_EQ(L"The database file \"/data/store.fdb\" may not be created by this user: change the directory's "
              L"permissions.",
              DescribeCreateFailure(report, place, L"SYSDBA"));
    report.SystemError = 0;
    report.Codes = {isc_no_priv};
    EXPECT_THAT(DescribeOpenFailure(report, place, L"SYSDBA"),
                HasSubstr(L"may not be read and written by this user"));
}

class Connection : public CStoreTest {};

TEST_F(Connection, ClassIsCreatedByItsIdentifierAndAnswersLateBoundCalls) {
    const auto database = NewDatabase();
    const platform::CVariant noArguments;
    platform::CVariant version;
    EXPECT_EQ(E_UNEXPECTED,
              platform::CallByName(database.Get(), L"Version", DISPATCH_PROPERTYGET, {}, &version.Get()));
    EXPECT_EQ(S_OK, platform::CallByName(&Database(), L"version", DISPATCH_PROPERTYGET, {}, &version.Get()));
    EXPECT_EQ(VT_BSTR, version.Get().vt);
}

TEST_F(Connection, CreatedDatabaseHasThePageSizeCharacterSetAndWriteModeOfTheStore) {
    EXPECT_EQ(16384, Number(L"SELECT MON$PAGE_SIZE FROM MON$DATABASE"));
    EXPECT_EQ(1, Number(L"SELECT MON$FORCED_WRITES FROM MON$DATABASE"));
    EXPECT_EQ(3, Number(L"SELECT MON$SQL_DIALECT FROM MON$DATABASE"));
    EXPECT_EQ("UTF8", Select(L"SELECT RDB$CHARACTER_SET_NAME FROM RDB$DATABASE").Text(0, "RDB$CHARACTER_SET_NAME"));
    EXPECT_EQ("UTF8", Select(L"SELECT C.RDB$CHARACTER_SET_NAME FROM MON$ATTACHMENTS A JOIN RDB$CHARACTER_SETS C ON "
                             L"C.RDB$CHARACTER_SET_ID=A.MON$CHARACTER_SET_ID WHERE "
                             L"A.MON$ATTACHMENT_ID=CURRENT_CONNECTION")
                          .Text(0, "RDB$CHARACTER_SET_NAME"));
}

TEST_F(Connection, EmbeddedEngineMayKeepAPortfolioOfAMillionSymbols) {
    EXPECT_EQ(10240, Number(L"SELECT MON$PAGE_BUFFERS FROM MON$DATABASE"));
    Database().Close();
    EXPECT_EQ(S_OK, Open(Database(), Path()));
    EXPECT_EQ(10240, Number(L"SELECT MON$PAGE_BUFFERS FROM MON$DATABASE"));
}

TEST_F(Connection, ExistingFileIsOpenedAgain) {
    Run(L"CREATE TABLE T(A INTEGER)");
    EXPECT_EQ(S_OK, Database().Close());
    EXPECT_EQ(S_OK, Open(Database(), Path()));
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Connection, CreateRefusesAFileThatExistsAndLeavesItAsItIs) {
    Run(L"CREATE TABLE T(A INTEGER)");
    Database().Close();
    EXPECT_EQ(E_FAIL, Create(Database(), Path()));
    EXPECT_THAT(
        Error(),
        StartsWith(L"The database file \"" + Path() +
                   L"\" exists already and is left as it is: open it, or choose another path. [Firebird: "));
    EXPECT_EQ(S_OK, Open(Database(), Path()));
    EXPECT_EQ(0, Number(L"SELECT COUNT(*) FROM T"));
}

TEST_F(Connection, CreateMakesNoDirectories) {
    const auto database = NewDatabase();
    EXPECT_EQ(E_FAIL, Create(*database, InDirectory(L"none/store.fdb")));
    EXPECT_THAT(LastError(*database),
                StartsWith(L"The database file \"" + InDirectory(L"none/store.fdb") +
                           L"\" cannot be created because the directory \"" + InDirectory(L"none") +
                           L"\" does not exist: create the directory first."));
    EXPECT_FALSE(platform::Exists(platform::ToPath(InDirectory(L"none"))));
}

TEST_F(Connection, OpenTellsThatAFileIsMissing) {
    const auto database = NewDatabase();
    EXPECT_EQ(E_FAIL, Open(*database, InDirectory(L"none.fdb")));
    EXPECT_EQ(
        L"The database file \"" + InDirectory(L"none.fdb") +
            L"\" does not exist: create the database first, or correct the path. [Firebird: I/O error during "
            L"\"open\" operation for file \"" +
            InDirectory(L"none.fdb") +
            L"\"; Error while trying to open file; No such file or directory; code 335544344, SQLSTATE 08001]",
        LastError(*database));
}

TEST_F(Connection, FailedOpenCanBeRepeated) {
    const auto database = NewDatabase();
    EXPECT_EQ(E_FAIL, Open(*database, InDirectory(L"later.fdb")));
    const auto creator = NewDatabase();
    ASSERT_EQ(S_OK, Create(*creator, InDirectory(L"later.fdb")));
    creator->Close();
    EXPECT_EQ(S_OK, Open(*database, InDirectory(L"later.fdb")));
}

TEST_F(Connection, OpenTellsThatAFileIsNoDatabase) {
    const auto database = NewDatabase();
    for (const std::string& content : {std::string(), std::string("hello"), std::string(100000, 'x')}) {
        platform::WriteFileAtomically(platform::ToPath(InDirectory(L"text.fdb")), content);
        EXPECT_EQ(E_FAIL, Open(*database, InDirectory(L"text.fdb")));
        EXPECT_THAT(LastError(*database), StartsWith(L"The database file \"" + InDirectory(L"text.fdb") +
                                                     L"\" is no database that this engine can read: "));
    }
    EXPECT_EQ(E_FAIL, Open(*database, InDirectory(L"")));
    EXPECT_THAT(LastError(*database), HasSubstr(L" is a directory: name a file in it."));
}

TEST_F(Connection, ColonInAFileNameIsRefusedWithTheReason) {
    const auto database = NewDatabase();
    EXPECT_EQ(E_FAIL, Create(*database, InDirectory(L"a:b.fdb")));
    EXPECT_THAT(LastError(*database), HasSubstr(L"because of the \":\" in its path: choose a path without one."));
    EXPECT_EQ(E_FAIL, Open(*database, L"C:\\data\\store.fdb"));
    EXPECT_THAT(LastError(*database), HasSubstr(L"because of the \":\" in its path"));
}

TEST_F(Connection, UnreachableServerIsNamed) {
    const auto database = NewDatabase();
    EXPECT_EQ(E_FAIL, Open(*database, L"127.0.0.1/1:/data/store.fdb"));
    EXPECT_THAT(LastError(*database),
                StartsWith(L"The database server \"127.0.0.1\" at port \"1\" cannot be reached: "
                           L"check its name and port, and that it runs. [Firebird: "));
    EXPECT_THAT(LastError(*database), HasSubstr(L"; code 335544721, SQLSTATE 08006]"));
}

TEST_F(Connection, EmptyPathIsABadArgument) {
    const auto database = NewDatabase();
    EXPECT_EQ(E_INVALIDARG, Open(*database, L""));
    EXPECT_EQ(E_INVALIDARG, database->Open(nullptr, nullptr, nullptr));
    EXPECT_THAT(LastError(*database), StartsWith(L"No database path is given"));
}

TEST_F(Connection, SecondOpenIsRefusedAndTheFirstGoesOn) {
    EXPECT_EQ(E_UNEXPECTED, Open(Database(), Path()));
    EXPECT_THAT(Error(), StartsWith(L"The database is open already"));
    EXPECT_EQ(E_UNEXPECTED, Create(Database(), InDirectory(L"other.fdb")));
    EXPECT_EQ(1, Number(L"SELECT 1 FROM RDB$DATABASE"));
}

TEST_F(Connection, CloseTwiceIsNoError) {
    EXPECT_EQ(S_OK, Database().Close());
    EXPECT_EQ(S_OK, Database().Close());
    EXPECT_EQ(S_OK, NewDatabase()->Close());
}

// The engine waited for ever in both calls.
TEST_F(Connection, IsOpenedAndClosedOnAThreadThatWasInterruptedBefore) {
    Database().Close();
    const auto database = NewDatabase();
    errno = EINTR;
    EXPECT_EQ(S_OK, Open(*database, Path()));
    errno = EINTR;
    EXPECT_EQ(S_OK, database->Close());
}

TEST_F(Connection, DropRemovesTheFileAndEndsWhatIsOpen) {
    const auto query = NewQuery(Database());
    ASSERT_EQ(S_OK, Open(*query, L"SELECT 1 AS A FROM RDB$DATABASE"));
    EXPECT_EQ(S_OK, Database().Drop());
    EXPECT_FALSE(platform::Exists(platform::ToPath(Path())));
    LONG count = 0;
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
    EXPECT_EQ(E_UNEXPECTED, Database().Drop());
    EXPECT_EQ(S_OK, Create(Database(), Path()));
}

TEST_F(Connection, DropIsRefusedWhileAnotherConnectionIsOpen) {
    const auto other = NewDatabase();
    ASSERT_EQ(S_OK, Open(*other, Path()));
    EXPECT_EQ(E_FAIL, Database().Drop());
    EXPECT_TRUE(platform::Exists(platform::ToPath(Path())));
    EXPECT_EQ(S_OK, Open(Database(), Path()));
    EXPECT_EQ(1, Number(L"SELECT 1 FROM RDB$DATABASE"));
}

TEST_F(Connection, UseOfAClosedDatabaseIsRefused) {
    EXPECT_EQ(S_OK, Database().Close());
    CComPtr<IdmDatabaseTransaction> transaction;
    EXPECT_EQ(E_UNEXPECTED, Database().GetTransaction(transaction.Put()));
    EXPECT_FALSE(transaction);
    EXPECT_EQ(L"The database is not open: open it first.", Error());
    CBstr version;
    EXPECT_EQ(E_UNEXPECTED, Database().get_Version(version.Put()));
    EXPECT_TRUE(version.IsNull());
}

TEST_F(Connection, NullOutPointersAreRefused) {
    EXPECT_EQ(E_POINTER, Database().GetTransaction(nullptr));
    EXPECT_EQ(E_POINTER, Database().get_LastError(nullptr));
    EXPECT_EQ(E_POINTER, Database().get_Version(nullptr));
    const auto transaction = NewTransaction(Database());
    EXPECT_EQ(E_POINTER, transaction->GetQuery(nullptr));
    EXPECT_EQ(E_POINTER, NewQuery(*transaction)->Fetch(nullptr));
}

TEST_F(Connection, VersionNamesTheEngine) {
    CBstr version;
    ASSERT_EQ(S_OK, Database().get_Version(version.Put()));
    EXPECT_THAT(std::wstring(version.View()), HasSubstr(L"Firebird"));
}

TEST_F(Connection, LockFilesLieInAPrivateDirectory) {
    const auto lock = platform::GetEnvironment(L"FIREBIRD_LOCK");
    ASSERT_TRUE(lock);
    EXPECT_EQ(*platform::GetEnvironment(L"SQSTORAGE_STATE_DIR") + L"/firebird", *lock);
    const auto permissions = std::filesystem::status(platform::ToPath(*lock)).permissions();
    EXPECT_EQ(std::filesystem::perms::owner_all, permissions);
    EXPECT_FALSE(platform::ListDirectory(platform::ToPath(*lock)).empty());
}

class LocalZone : public Connection {
protected:
    void OpenUnder(const wchar_t* zone) {
        const CScopedEnvironment environment(L"TZ", zone);
        Database().Close();
        ASSERT_EQ(S_OK, Open(Database(), Path()));
    }
    std::string Variable(std::wstring_view name) {
        return Select(L"SELECT RDB$GET_CONTEXT('USER_SESSION','" + std::wstring(name) +
                      L"') AS VAL FROM RDB$DATABASE")
            .Text(0, "VAL");
    }
};

TEST_F(LocalZone, OfTheMachineIsKnownToTheConnection) {
    OpenUnder(L"CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ("-60", Variable(L"LOCAL_BIAS"));
    EXPECT_EQ("-60,0,10,0,5,03:00:00.0000,-60,3,0,5,02:00:00.0000", Variable(L"LOCAL_TIME_ZONE"));
}

TEST_F(LocalZone, WestOfGreenwichHasAPositiveBias) {
    OpenUnder(L"EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ("300", Variable(L"LOCAL_BIAS"));
    EXPECT_EQ("300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000", Variable(L"LOCAL_TIME_ZONE"));
}

TEST_F(LocalZone, WithoutDaylightSavingHasNoDates) {
    OpenUnder(L"IST-5:30");
    EXPECT_EQ("-330", Variable(L"LOCAL_BIAS"));
    EXPECT_EQ("-330,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000", Variable(L"LOCAL_TIME_ZONE"));
}

TEST_F(LocalZone, ThatCannotBeToldIsGmt) {
    OpenUnder(L":No/Such/Zone");
    EXPECT_EQ("0", Variable(L"LOCAL_BIAS"));
    EXPECT_EQ("0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000", Variable(L"LOCAL_TIME_ZONE"));
}

TEST_F(LocalZone, IsKnownToAFreshDatabaseToo) {
    const CScopedEnvironment environment(L"TZ", L"CET-1CEST,M3.5.0,M10.5.0/3");
    const auto database = NewDatabase();
    ASSERT_EQ(S_OK, Create(*database, InDirectory(L"zone.fdb")));
    CTable table;
    const auto query = NewQuery(*database);
    ASSERT_EQ(S_OK, Open(*query, L"SELECT RDB$GET_CONTEXT('USER_SESSION','LOCAL_BIAS') AS VAL FROM RDB$DATABASE",
                         nullptr, table.Get()));
    EXPECT_EQ(1, Fetch(*query));
    EXPECT_EQ("-60", table.Text(0, "VAL"));
}

} // namespace
} // namespace dmFirebirdTest
