#include "ChildProcess.h"
#include "TestStore.h"

#include "platform/text.h"

#include <boost/asio/ip/tcp.hpp>

#include <chrono>
#include <thread>

namespace dmFirebirdTest {
namespace {

using namespace std::chrono_literals;
using testing::StartsWith;

constexpr const char* ServerProgram = "/usr/sbin/firebird";
constexpr const char* SqlTool = "/usr/bin/isql-fb";
constexpr const char* EngineDirectory = "/usr/lib/x86_64-linux-gnu/firebird/3.0";

// A port that is free at the moment.
std::string FreePort() {
    boost::asio::io_context context;
    const boost::asio::ip::tcp::acceptor acceptor(context, {boost::asio::ip::address_v4::loopback(), 0});
    return std::to_string(acceptor.local_endpoint().port());
}

bool Answers(const std::string& port) {
    boost::asio::io_context context;
    boost::asio::ip::tcp::socket socket(context);
    boost::system::error_code error;
    socket.connect({boost::asio::ip::address_v4::loopback(), static_cast<unsigned short>(std::stoi(port))}, error);
    return !error;
}

// A server with a root directory, a configuration, users and a port of its own, which only this machine reaches.
class CServer {
public:
    static bool IsInstalled() {
        return platform::Exists(ServerProgram) && platform::Exists(SqlTool) &&
               platform::IsDirectory(EngineDirectory);
    }

    CServer() {
        WriteConfiguration();
        AddUser();
        m_Process.emplace(ServerProgram, std::vector<std::string>{}, Variables());
        while (!Answers(m_Port)) {
            if (!m_Process->IsRunning())
                throw std::runtime_error("the server ended: " + m_Process->ReadLine());
            std::this_thread::sleep_for(10ms);
        }
    }

    std::wstring PathOf(std::string_view file) const {
        return platform::FromUtf8("127.0.0.1/" + m_Port + ":" + (m_Root.Path() / file).string());
    }
    void Stop() { m_Process->Kill(); }

private:
    dmFirebirdTest::Variables Variables() const {
        return {{"FIREBIRD", m_Root.Path().string()}, {"FIREBIRD_LOCK", (m_Root.Path() / "lock").string()}};
    }
    std::string Users() const { return (m_Root.Path() / "security3.fdb").string(); }

    void WriteConfiguration() {
        platform::WriteFileAtomically(m_Root.Path() / "firebird.conf",
                                      "RemoteBindAddress = 127.0.0.1\nRemoteServicePort = " + m_Port +
                                          "\nSecurityDatabase = " + Users() + "\nWireCrypt = Enabled\n");
        platform::WriteFileAtomically(m_Root.Path() / "databases.conf", "");
        for (const char* name : {"plugins", "intl", "firebird.msg", "plugins.conf"})
            std::filesystem::create_symlink(std::filesystem::path(EngineDirectory) / name, m_Root.Path() / name);
        platform::CreateDirectories(m_Root.Path() / "lock", platform::EAccess::Private);
    }

    // Through the embedded engine, which asks for no password.
    void AddUser() {
        const std::filesystem::path script = m_Root.Path() / "user.sql";
        platform::WriteFileAtomically(script,
                                      "CREATE DATABASE '" + Users() +
                                          "' USER 'SYSDBA';\nCREATE USER SYSDBA PASSWORD 'right-one' USING PLUGIN "
                                          "Srp;\nCOMMIT;\n");
        CChildProcess tool(SqlTool, {"-q", "-b", "-user", "SYSDBA", "-i", script.string()}, Variables());
        tool.CloseInput();
        std::string said;
        for (std::string line = tool.ReadLine(); !line.empty(); line = tool.ReadLine())
            said += line + "; ";
        if (tool.Wait() != 0)
            throw std::runtime_error("the user cannot be made: " + said);
    }

    const platform::CTemporaryDirectory m_Root{"sqstorage-server"};
    const std::string m_Port = FreePort();
    std::optional<CChildProcess> m_Process;
};

class Server : public testing::Test {
protected:
    static constexpr const wchar_t* RightPassword = L"right-one";

    void SetUp() override {
        if (!CServer::IsInstalled())
            GTEST_SKIP() << "the packages firebird3.0-server and firebird3.0-utils are not installed";
        m_Server.emplace();
        m_Database = NewDatabase();
        ASSERT_EQ(S_OK, m_Database->Create(CBstr(m_Server->PathOf("store.fdb")).Get(), CBstr(UserName).Get(),
                                           CBstr(RightPassword).Get()))
            << testing::PrintToString(LastError(*m_Database));
    }
    HRESULT Run(std::wstring_view statement, const CTable* parameters = nullptr, const CTable* result = nullptr) {
        const auto transaction = NewTransaction(*m_Database);
        const auto query = NewQuery(*transaction);
        LONG count = 0;
        HRESULT status = dmFirebirdTest::Open(*query, statement, parameters ? parameters->Get() : nullptr,
                                              result ? result->Get() : nullptr);
        if (SUCCEEDED(status))
            status = query->Fetch(&count);
        if (SUCCEEDED(status))
            status = query->Close();
        return SUCCEEDED(status) ? transaction->Finish() : status;
    }

    std::optional<CServer> m_Server;
    CComPtr<IdmDatabase> m_Database;
};

TEST_F(Server, RunsTheSameStatements) {
    ASSERT_EQ(S_OK,
              Run(L"CREATE TABLE T(A INTEGER NOT NULL PRIMARY KEY, B VARCHAR(31), C DATE, D BLOB SUB_TYPE TEXT)"));
    CTable table(
        {{"A", EColumnType::Long}, {"B", EColumnType::Text}, {"C", EColumnType::Date}, {"D", EColumnType::Text}});
    for (int key = 1; key <= 500; ++key)
        table.Add({key, "\xC3\xA4 " + std::to_string(key), 42000 + key, "blob"});
    ASSERT_EQ(S_OK, Run(L"INSERT INTO T VALUES(?,?,?,?)", &table));
    const CTable result;
    ASSERT_EQ(S_OK, Run(L"SELECT * FROM T ORDER BY A", nullptr, &result));
    ASSERT_EQ(500U, result.Count());
    EXPECT_EQ("\xC3\xA4 500", result.Text(499, "B"));
    EXPECT_EQ(42500, result.Integer(499, "C"));
    EXPECT_EQ("blob", result.Text(499, "D"));
    EXPECT_EQ(E_FAIL, Run(L"INSERT INTO T VALUES(?,?,?,?)", &table));
    EXPECT_THAT(LastError(*m_Database), StartsWith(L"Record 1 of 500 was refused"));
    const CTable zone;
    ASSERT_EQ(S_OK,
              Run(L"SELECT RDB$GET_CONTEXT('USER_SESSION','LOCAL_BIAS') AS VAL FROM RDB$DATABASE", nullptr, &zone));
    EXPECT_FALSE(zone.IsNull(0, "VAL"));
}

TEST_F(Server, SelectThatWritesWorks) {
    ASSERT_EQ(S_OK, Run(L"CREATE TABLE T(A INTEGER)"));
    ASSERT_EQ(
        S_OK,
        Run(L"CREATE PROCEDURE ADD_ONE RETURNS (N INTEGER) AS BEGIN INSERT INTO T VALUES(1); N=1; SUSPEND; END"));
    const CTable result;
    ASSERT_EQ(S_OK, Run(L"SELECT * FROM ADD_ONE", nullptr, &result));
    EXPECT_EQ(1U, result.Count());
    const CTable count;
    ASSERT_EQ(S_OK, Run(L"SELECT COUNT(*) AS N FROM T", nullptr, &count));
    EXPECT_EQ(1, count.Integer(0, "N"));
}

TEST_F(Server, SeveralProcessesShareADatabase) {
    EXPECT_EQ(S_OK, OpenElsewhere(m_Server->PathOf("store.fdb"), {}, "SYSDBA", "right-one").Status);
}

TEST_F(Server, WrongPasswordIsTold) {
    const auto other = NewDatabase();
    EXPECT_EQ(E_FAIL, dmFirebirdTest::Open(*other, m_Server->PathOf("store.fdb"), UserName, L"wrong"));
    EXPECT_THAT(LastError(*other),
                StartsWith(L"The database server refused the user \"SYSDBA\": check the user name and "
                           L"the password. [Firebird: "));
}

TEST_F(Server, MissingFileIsTold) {
    const auto other = NewDatabase();
    EXPECT_EQ(E_FAIL, dmFirebirdTest::Open(*other, m_Server->PathOf("none.fdb"), UserName, RightPassword));
    EXPECT_THAT(LastError(*other),
                testing::HasSubstr(L"none.fdb\" does not exist: create the database first, or correct "
                                   L"the path."));
}

TEST_F(Server, ExistingFileIsNotCreatedAgain) {
    const auto other = NewDatabase();
    EXPECT_EQ(E_FAIL, other->Create(CBstr(m_Server->PathOf("store.fdb")).Get(), CBstr(UserName).Get(),
                                    CBstr(RightPassword).Get()));
    EXPECT_THAT(LastError(*other), testing::HasSubstr(L"store.fdb\" exists already and is left as it is"));
}

TEST_F(Server, LostConnectionIsToldAndClosed) {
    const auto transaction = NewTransaction(*m_Database);
    const auto query = NewQuery(*transaction);
    ASSERT_EQ(S_OK, dmFirebirdTest::Open(*query, L"SELECT RDB$RELATION_NAME FROM RDB$RELATIONS"));
    m_Server->Stop();
    EXPECT_EQ(E_FAIL, Run(L"SELECT 1 AS A FROM RDB$DATABASE"));
    EXPECT_THAT(LastError(*m_Database),
                StartsWith(L"The connection to the database server is lost: open the database again."));
    m_Database->Close();
    LONG count = 0;
    EXPECT_EQ(E_UNEXPECTED, query->Fetch(&count));
    EXPECT_EQ(E_UNEXPECTED, transaction->Finish());
}

} // namespace
} // namespace dmFirebirdTest
