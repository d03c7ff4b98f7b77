// What an import makes of exceptions out of the store, from within the process in which they can be had.
#include "HostFixture.h"
#include "RefusedClass.h"
#include "WatchedDatabase.h"
#include "apps/sqstorage/CommandLine.h"
#include "platform/registry.h"
#include "platform/text.h"

#include <functional>
#include <gmock/gmock.h>
#include <iterator>
#include <stdexcept>

namespace {

using namespace tests;
using IDM_dmFirebird::IdmDatabase;
using testing::ElementsAre;

class ImportFailure : public HostTest {
protected:
    ImportFailure() {
        for (const wchar_t* table : {L"CURRENCY", L"EXCHANGES", L"HOLIDAYS", L"SESSIONS", L"SETTINGS"})
            Sql(std::wstring(L"DELETE FROM ") + table);
    }

    struct tagEnd {
        int Status;
        std::string Output;
        std::string Errors;
    };
    std::string Write(const std::string& name, std::string_view text) {
        platform::WriteFileAtomically(m_Folder.Path() / name, text);
        return (m_Folder.Path() / name).string();
    }
    tagEnd Import(const std::string& name, std::string_view text, bool update = false) {
        m_File = Write(name, text);
        std::vector<const char*> arguments{m_File.c_str()};
        if (update)
            arguments.push_back("--update");
        return Run(arguments);
    }
    static tagEnd Run(const std::vector<const char*>& arguments) {
        std::vector<const char*> line{"sqstorage", "--quiet", "--format", "csv", "import"};
        line.insert(line.end(), arguments.begin(), arguments.end());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = sqCli::RunCommandLine(static_cast<int>(line.size()), line.data());
        const std::string output = testing::internal::GetCapturedStdout();
        return {status, output, testing::internal::GetCapturedStderr()};
    }
    std::string Summary(const std::string& counts) const {
        return "FILE,ROWS,ADDED,UPDATED,UNCHANGED,DIFFERENT,REFUSED\n" + m_File + "," + counts + "\n";
    }
    // The next creation of the class fails as soon as the select gives a row, once.
    static CWatchedClass::Watch FailsOnceThereIs(const std::wstring& select) {
        return [select, busy = false](void** made) mutable {
            if (busy)
                return S_OK;
            busy = true; // the look makes a table, too, and once is enough
            busy = !Sql(select).empty();
            if (!busy)
                return S_OK;
            static_cast<IUnknown*>(*made)->Release();
            *made = nullptr;
            return E_OUTOFMEMORY;
        };
    }

    // In a storage that is made from now on.
    static CWatchedClass RaisesAt(const std::wstring& statement, tagWatch& watch) {
        return WatchesStatements(watch, [statement](const std::wstring& asked) {
            if (asked == statement)
                throw std::runtime_error("the line is dead");
        });
    }
    static CWatchedClass WatchesStatements(tagWatch& watch, std::function<void(const std::wstring&)> before) {
        watch.BeforeStatement = std::move(before);
        return CWatchedClass(IDM_dmFirebird::CLSID_dmDatabase, [&watch](void** made) {
            CComPtr<IdmDatabase> own;
            own.Attach(static_cast<IdmDatabase*>(*made));
            *made = static_cast<IdmDatabase*>(platform::MakeObject<CWatchedDatabase>(own, watch).Detach());
            return S_OK;
        });
    }

    platform::CTemporaryDirectory m_Folder;
    std::string m_File;
};

constexpr const char* Currencies = "ID,CURRENCY_CODE\n1,840\n2,978\n3,826\n";

TEST_F(ImportFailure, ACurrencyThatRaisesIsARefusedRowAndTheOthersGoOn) {
    {
        const CWatchedClass watched(IDM_dmudfcom::CLSID_dmTable,
                                    FailsOnceThereIs(L"SELECT ID FROM CURRENCY WHERE ID=1"));
        const tagEnd end = Import("currencies.csv", Currencies);
        EXPECT_EQ(end.Status, 4);
        EXPECT_EQ(end.Output, Summary("3,2,0,0,0,1"));
        EXPECT_EQ(end.Errors,
                  "error: " + m_File +
                      ":3: the store refused the row. The store failed with status 0x8007000E: look into "
                      "its log.\n");
    }
    EXPECT_THAT(Sql(L"SELECT ID FROM CURRENCY ORDER BY ID"), ElementsAre(Row{L"1"}, Row{L"3"}));
    EXPECT_EQ(Import("currencies.csv", Currencies).Output, Summary("3,1,0,2,0,0"));
}

TEST_F(ImportFailure, AnErrorRecordThatACurrencyRaisesIsARefusedRowToo) {
    tagWatch watch;
    {
        const auto watched = RaisesAt(L"INSERT INTO CURRENCY VALUES(2,978)", watch);
        const tagEnd end = Import("currencies.csv", Currencies);
        EXPECT_EQ(end.Status, 4);
        EXPECT_EQ(end.Output, Summary("3,2,0,0,0,1"));
        EXPECT_EQ(end.Errors, "error: " + m_File + ":3: the store refused the row. The line is dead.\n");
    }
    EXPECT_THAT(Sql(L"SELECT ID FROM CURRENCY ORDER BY ID"), ElementsAre(Row{L"1"}, Row{L"3"}));
}

TEST_F(ImportFailure, AFileThatTheStoreCannotBeReadForLeavesTheOthersAndTheSummary) {
    const std::string settings =
        Write("settings.csv", "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n1,1,1,1\n");
    tagWatch watch;
    const auto watched = RaisesAt(L"SELECT * FROM CURRENCY", watch);
    const std::string currencies = Write("currencies.csv", Currencies);
    const tagEnd end = Run({settings.c_str(), currencies.c_str()});
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, "FILE,ROWS,ADDED,UPDATED,UNCHANGED,DIFFERENT,REFUSED\n" + settings + ",1,1,0,0,0,0\n" +
                              currencies + ",3,0,0,0,0,3\n");
    EXPECT_EQ(end.Errors, "error: " + currencies + ":1: the store could not be read. The line is dead.\n");
}

TEST_F(ImportFailure, ASecondConnectionThatIsRefusedLeavesTheOtherFilesAndTheSummary) {
    const std::string holidays = Write("holidays.csv", "HOLIDAY_NAME\nX\n");
    const std::string settings =
        Write("settings.csv", "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n1,1,1,1\n");
    const auto key = platform::CRegistryKey::Create(platform::ERegistryRoot::Machine, CStorageHost::Key());
    const std::wstring path = key.ReadText(L"Path").value();
    tagWatch watch;
    const auto watched = WatchesStatements(watch, [&](const std::wstring& statement) {
        if (statement.starts_with(L"INSERT INTO HOLIDAYS"))
            key.WriteText(L"Path", path + L".gone");
    });
    const tagEnd end = Run({holidays.c_str(), settings.c_str()});
    key.WriteText(L"Path", path);
    EXPECT_EQ(end.Status, 4);
    EXPECT_EQ(end.Output, "FILE,ROWS,ADDED,UPDATED,UNCHANGED,DIFFERENT,REFUSED\n" + holidays + ",1,1,0,0,0,0\n" +
                              settings + ",1,0,0,0,0,1\n");
    EXPECT_EQ(end.Errors, "error: " + settings + ":1: the store could not be read. The database file \"" +
                              platform::ToUtf8(path) +
                              ".gone\" does not exist: create the database first, or correct the path.\n");
}

TEST_F(ImportFailure, PricesComeBackWhenTheirExchangeRaises) {
    Sql(L"INSERT INTO SESSIONS VALUES(30,1,'S',2)");
    const std::string header = "EXCHANGE_NAME,SESSION_NAME,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT,"
                               "EXCHANGE_TIME_ZONE_INFORMATION\n";
    const std::string zone = "\"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000\"\n";
    ASSERT_EQ(Import("exchanges.csv", header + "E,S,100,1,1,1," + zone).Status, 0);
    {
        const CWatchedClass watched(IDM_dmudfcom::CLSID_dmRequest,
                                    FailsOnceThereIs(L"SELECT SETTING FROM SETTINGS WHERE PRICE_SCALE=8"));
        const tagEnd end = Import("exchanges.csv", header + "E,S,8,1,1,1," + zone, true);
        EXPECT_EQ(end.Status, 4);
        EXPECT_EQ(end.Output, Summary("1,0,0,0,0,1"));
        EXPECT_EQ(end.Errors,
                  "error: " + m_File +
                      ":2: the store refused the row. The store failed with status 0x8007000E: look into "
                      "its log.\nwarning: Nothing is taken from " +
                      m_File + ": correct the rows named above and import it again.\n");
    }
    EXPECT_THAT(Sql(L"SELECT PRICE_SCALE FROM SETTINGS"), ElementsAre(Row{L"100"}));
}

} // namespace
