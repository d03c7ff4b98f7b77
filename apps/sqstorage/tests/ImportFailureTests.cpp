// What an import makes of exceptions out of the store, from within the process in which they can be had.
#include "HostFixture.h"
#include "RefusedClass.h"
#include "WatchedDatabase.h"
#include "apps/sqstorage/CommandLine.h"
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
        for (const wchar_t* table : {L"CURRENCY", L"EXCHANGES", L"SESSIONS", L"SETTINGS"})
            Sql(std::wstring(L"DELETE FROM ") + table);
    }

    struct tagEnd {
        int Status;
        std::string Output;
        std::string Errors;
    };
    tagEnd Import(const std::string& name, std::string_view text, bool update = false) {
        m_File = (m_Folder.Path() / name).string();
        platform::WriteFileAtomically(m_Folder.Path() / name, text);
        std::vector<const char*> arguments{"sqstorage", "--quiet", "--format", "csv", "import", m_File.c_str()};
        if (update)
            arguments.push_back("--update");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = sqCli::RunCommandLine(static_cast<int>(arguments.size()), arguments.data());
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
    watch.BeforeStatement = [](const std::wstring& statement) {
        if (statement == L"INSERT INTO CURRENCY VALUES(2,978)")
            throw std::runtime_error("the line is dead");
    };
    {
        const CWatchedClass watched(IDM_dmFirebird::CLSID_dmDatabase, [&](void** made) {
            CComPtr<IdmDatabase> own;
            own.Attach(static_cast<IdmDatabase*>(*made));
            *made = static_cast<IdmDatabase*>(platform::MakeObject<CWatchedDatabase>(own, watch).Detach());
            return S_OK;
        });
        const tagEnd end = Import("currencies.csv", Currencies);
        EXPECT_EQ(end.Status, 4);
        EXPECT_EQ(end.Output, Summary("3,2,0,0,0,1"));
        EXPECT_EQ(end.Errors, "error: " + m_File + ":3: the store refused the row. The line is dead.\n");
    }
    EXPECT_THAT(Sql(L"SELECT ID FROM CURRENCY ORDER BY ID"), ElementsAre(Row{L"1"}, Row{L"3"}));
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
