// How a storage comes to life, fails to, and dies. Each test runs in a process of its own: the connection
// parameters are read once in a process.
#include "StorageHost.h"
#include "diagnostics/interface/Trail.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/environment.h"
#include "platform/registry.h"

#include "platform/message_queue.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Creation : public testing::Test {
protected:
    HRESULT Create() { return CStorageHost::Create(m_Storage); }
    void WriteValue(const wchar_t* name, const wchar_t* value) {
        platform::CRegistryKey::Create(platform::ERegistryRoot::Machine, CStorageHost::Key())
            .WriteText(name, value);
    }
    // Creation fails, no instance exists, and the trail tells why.
    void ExpectFailure(const wchar_t* reason) {
        EXPECT_EQ(E_FAIL, Create());
        EXPECT_FALSE(m_Storage);
        EXPECT_THAT(BugSlayerUtil::RecentFailures(), Contains(HasSubstr(reason)));
    }

    CStorageHost m_Host;
    CComPtr<IqxStorage> m_Storage;
};

TEST_F(Creation, OpensTheDatabaseThatTheRegistryNames) {
    m_Host.Install();
    EXPECT_EQ(S_OK, Create());
    EXPECT_THAT(Recorder::Messages(), Contains(CStorageHost::Key()));
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
}

TEST_F(Creation, OneStartServesAllInstances) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    CComPtr<IqxStorage> second;
    EXPECT_EQ(S_OK, CStorageHost::Create(second));
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(1));
    LONG key = 0;
    ASSERT_EQ(S_OK, m_Storage->InsertHoliday(CBstr(L"Shared").Get(), &key));
    m_Storage.Reset();
    const auto table = NewTable();
    EXPECT_EQ(S_OK, second->SelectHoliday(NewRequest().Get(), table.Get()));
    EXPECT_EQ(1, RecordCount(table));
}

TEST_F(Creation, AfterTheLastReleaseTheNextInstanceStartsAnew) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    m_Storage.Reset();
    EXPECT_EQ(S_OK, Create());
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(2));
}

TEST_F(Creation, TheLastReleaseClosesTheDatabase) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    m_Storage.Reset();
    EXPECT_THAT(m_Host.Sql(L"SELECT COUNT(*) AS DATA_FEED FROM MON$ATTACHMENTS WHERE MON$SYSTEM_FLAG=0"),
                ElementsAre(Row{L"1"}));
}

TEST_F(Creation, FailsWithoutARegistryEntry) {
    ExpectFailure(L"!_DatabasePath.empty()");
    EXPECT_THAT(Recorder::Errors(), Contains(HasSubstr(L"!_DatabasePath.empty()")));
}

TEST_F(Creation, FailsWithAnEmptyPath) {
    WriteValue(L"Path", L"");
    ExpectFailure(L"!_DatabasePath.empty()");
}

TEST_F(Creation, FailsWithoutAUserName) {
    WriteValue(L"Path", L"somewhere");
    ExpectFailure(L"!_UserName.empty()");
}

TEST_F(Creation, FailsWithAnEmptyPassword) {
    WriteValue(L"Path", L"somewhere");
    WriteValue(L"Username", L"SYSDBA");
    WriteValue(L"Password", L"");
    ExpectFailure(L"!_Password.empty()");
}

TEST_F(Creation, FailsOnAPathThatDoesNotExist) {
    m_Host.Register(m_Host.Connection());
    ExpectFailure(L"storage.fdb");
    EXPECT_THAT(Recorder::Messages(), Not(Contains(L"init ok")));
}

TEST_F(Creation, FailsOnAFileThatIsNoDatabase) {
    platform::WriteFileAtomically(platform::ToPath(m_Host.Connection().Path), std::string(20000, 'x'));
    m_Host.Register(m_Host.Connection());
    ExpectFailure(L"storage.fdb");
}

TEST_F(Creation, FailsOnADatabaseWithoutASchema) {
    CComPtr<IDM_dmFirebird::IdmDatabase> database;
    ASSERT_EQ(S_OK, platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, database));
    const auto connection = m_Host.Connection();
    ASSERT_EQ(S_OK, database->Create(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                                     CBstr(connection.Password).Get()));
    database->Close();
    m_Host.Register(connection);
    ExpectFailure(L"the database holds no complete storage");
}

TEST_F(Creation, FailsOnASchemaThatIsTooOld) {
    m_Host.Install();
    m_Host.Sql(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=0");
    ExpectFailure(
        L"the database has schema version 0, older than version 2 of this program: bring it up to date with "
        L"\"sqstorage upgrade\"");
}

TEST_F(Creation, FailsOnASchemaThatIsTooNew) {
    m_Host.Install();
    m_Host.Sql(L"UPDATE SCHEMA_INFO SET SCHEMA_VERSION=99");
    ExpectFailure(
        L"the database has schema version 99, newer than version 2 of this program: install a newer version "
        L"of the program");
}

TEST_F(Creation, AFailedFirstAttemptIsMadeAgainWithTheParametersThatWereRead) {
    m_Host.Register(m_Host.Connection());
    ASSERT_EQ(E_FAIL, Create());
    // The registry now names another place, but what was read first stays good.
    auto other = m_Host.Connection();
    other.Path = m_Host.Path(L"other.fdb");
    m_Host.Register(other);
    sqSetup::CreateStorage(m_Host.Connection());
    EXPECT_EQ(S_OK, Create());
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(1));
}

TEST_F(Creation, ParametersThatCouldNotBeReadAreReadAgain) {
    ASSERT_EQ(E_FAIL, Create());
    m_Host.Install();
    EXPECT_EQ(S_OK, Create());
}

TEST_F(Creation, ADictionaryPathIsUsedAsItStandsAlthoughNothingIsThere) {
    m_Host.Install();
    WriteValue(L"DictionaryPath", L"/nowhere/at all/Dictionary.csv");
    EXPECT_EQ(S_OK, Create());
}

TEST_F(Creation, WithoutADictionaryPathTheProductsDataFolderIsMade) {
    auto connection = m_Host.Connection();
    connection.DictionaryPath.clear();
    sqSetup::CreateStorage(connection);
    m_Host.Register(connection);
    EXPECT_EQ(S_OK, Create());
    EXPECT_TRUE(platform::IsDirectory(platform::ToPath(m_Host.Path(L"data/Test Company/Storage Tests"))));
}

TEST_F(Creation, ReportsOfTheLifeOfTheStorageComeInTheirOrder) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    m_Storage.Reset();
    std::vector<std::wstring> entered;
    for (const auto& record : Recorder::Records())
        if (record.Type == L"TRACE" && record.Ident == 1)
            for (const wchar_t* name :
                 {L"sqStorage::CStorage::CStorage", L"sqStorage::CStorage::init", L"sqStorage::CStorage::init_impl",
                  L"sqStorage::CStorage::FinalRelease", L"sqStorage::CStorage::~CStorage"})
                if (record.Function == name)
                    entered.emplace_back(name);
    EXPECT_THAT(entered, ElementsAre(L"sqStorage::CStorage::CStorage", L"sqStorage::CStorage::init",
                                     L"sqStorage::CStorage::init_impl", L"sqStorage::CStorage::FinalRelease",
                                     L"sqStorage::CStorage::~CStorage"));
}

TEST_F(Creation, StartUpRunsOnAThreadOfItsOwn) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    std::vector<LONG> threads;
    for (const auto& record : Recorder::RecordsOf(L"TRACE"))
        if (record.Message == L"init ok" || (record.Ident == 1 && record.Function == L"sqStorage::CStorage::init"))
            threads.push_back(record.Value(L"Thread ID").AsLong());
    ASSERT_EQ(2U, threads.size());
    EXPECT_NE(threads[0], threads[1]);
}

TEST_F(Creation, FirstClientsOnManyThreadsStartItOnce) {
    m_Host.Install();
    std::atomic<int> failures{0};
    std::atomic<int> running{4};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            CComPtr<IqxStorage> storage;
            if (CStorageHost::Create(storage) != S_OK)
                ++failures;
            --running;
            // The storage belongs to the thread that came first, which serves its window until all have gone.
            while (running > 0)
                platform::DispatchPendingMessages();
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, failures);
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(1));
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
}

TEST_F(Creation, TheLastReleaseFromAnotherThreadEndsWhileTheOwnerPumps) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    std::atomic<bool> isReleased{false};
    std::thread other([&, storage = std::move(m_Storage)]() mutable {
        storage.Reset();
        isReleased = true;
    });
    while (!isReleased)
        platform::DispatchPendingMessages();
    other.join();
    EXPECT_EQ(S_OK, Create());
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(2));
}

TEST_F(Creation, TheLastReleaseAfterTheOwnerThreadHasEndedDoesNotHang) {
    m_Host.Install();
    std::thread([&] { ASSERT_EQ(S_OK, Create()); }).join();
    LONG key = 0;
    EXPECT_EQ(S_OK, m_Storage->InsertHoliday(CBstr(L"Nobody hears").Get(), &key));
    m_Storage.Reset();
    EXPECT_EQ(S_OK, Create());
}

TEST_F(Creation, AnIdleStorageUsesNoProcessorTime) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    const std::clock_t before = std::clock();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const double used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
    EXPECT_LT(used, 0.05) << "seconds of processor time in 0.3 seconds of waiting";
}

TEST_F(Creation, NoReferenceAndNoRecordIsLeft) {
    m_Host.Install();
    ASSERT_EQ(S_OK, Create());
    m_Storage.Reset();
    // What stays is the debug library's own object.
    const LONG idle = platform::CModuleCount::Value();
    ASSERT_EQ(S_OK, Create());
    EXPECT_GT(platform::CModuleCount::Value(), idle);
    m_Storage.Reset();
    EXPECT_EQ(idle, platform::CModuleCount::Value());
    EXPECT_LE(idle, 1);
    EXPECT_EQ(0, Recorder::OpenRecords());
}

} // namespace
