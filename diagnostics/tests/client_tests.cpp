#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/Trail.h"
#include "platform/message_box.h"
#include "platform/process.h"
#include "platform/registry.h"

#include <fmt/printf.h>
#include <fmt/xchar.h>
#include <thread>
#include <vector>

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::wstring> g_Shown; // message boxes

class Client : public CRecorded {
protected:
    void SetUp() override {
        CRecorded::SetUp();
        g_Shown.clear();
        platform::SetMessageBoxHandler([](std::wstring_view text, platform::EMessageIcon icon) {
            EXPECT_EQ(icon, platform::EMessageIcon::Error);
            g_Shown.emplace_back(text);
        });
    }
    void TearDown() override {
        platform::SetMessageBoxHandler(nullptr);
        CRecorded::TearDown();
    }
    static void AskForFailures() {
        platform::CRegistryKey::Create(platform::ERegistryRoot::User, L"Software\\DM Support\\BugSlayer")
            .WriteText(L"", L"");
    }
};

TEST_F(Client, IsNotStartedBeforeTheFirstReport) {
    EXPECT_EQ(GetClient().Inited, 0);
    EXPECT_EQ(GetClient().Active, 0);
    EXPECT_THAT(Recorder::Verbs(), IsEmpty());
}

TEST_F(Client, StartsWithAStartRecordAtTheFirstReport) {
    Assert(false, L"x");
    EXPECT_EQ(GetClient().Inited, 1);
    EXPECT_EQ(GetClient().Active, 1);
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"CREATE", L"INIT", L"CREATE", L"FILTER", L"PROCESS"));
    ASSERT_EQ(Recorder::Starts().size(), 1u);
    const auto start = Recorder::Starts().front();
    EXPECT_THAT(start.FieldNames(),
                ElementsAre(L"LogDirectory", L"ModuleAddr", L"ModuleName", L"ReleaseMode", L"ClientVersion"));
    EXPECT_EQ(start.Value(L"LogDirectory").Type(), VT_BSTR);
    EXPECT_EQ(start.Value(L"LogDirectory").AsText(), L"");
    EXPECT_EQ(start.Value(L"ModuleAddr").Type(), VT_I8);
    EXPECT_EQ(start.Value(L"ModuleAddr").Get().llVal, reinterpret_cast<LONGLONG>(&GetClient()));
    EXPECT_EQ(start.Value(L"ModuleName").AsText(),
              platform::FromPath(platform::ToPath(platform::ExecutablePath()).stem()));
    EXPECT_EQ(start.Value(L"ReleaseMode").Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(start.Value(L"ClientVersion").AsText(), L"2.2 05.05.2006");
    EXPECT_EQ(Recorder::OpenRoots(), 1);
}

TEST_F(Client, IsStartedOnce) {
    EXPECT_EQ(GetClient().Init(), S_OK);
    EXPECT_EQ(GetClient().Init(), S_OK);
    Assert(false, L"x");
    EXPECT_EQ(Recorder::Starts().size(), 1u);
}

TEST_F(Client, AFailedStartAsksTheLibraryOnceMoreWithItsAddress) {
    Recorder::SetAnswer(L"INIT", E_FAIL);
    Recorder::SetOptionAnswer(E_ACCESSDENIED);
    EXPECT_EQ(GetClient().Init(), E_ACCESSDENIED);
    EXPECT_EQ(GetClient().Inited, 0);
    EXPECT_EQ(GetClient().Active, 0);
    EXPECT_EQ(Recorder::OpenRoots(), 0);
    ASSERT_EQ(Recorder::Options().size(), 1u);
    const auto option = Recorder::Options().front();
    EXPECT_EQ(option.Name, L"");
    EXPECT_EQ(option.Flag, 1);
    EXPECT_EQ(option.Text, fmt::sprintf(L"%i", static_cast<int>(reinterpret_cast<std::intptr_t>(&GetClient()))));
}

TEST_F(Client, ALibraryThatThenAgreesIsUsed) {
    Recorder::SetAnswer(L"INIT", E_FAIL);
    EXPECT_EQ(GetClient().Init(), S_OK);
    EXPECT_EQ(GetClient().Active, 1);
    Assert(false, L"x");
    EXPECT_EQ(Recorder::Asserts(), Texts{L"x"});
}

TEST_F(Client, AFailedStartIsTriedAgainAndShownAtEachReport) {
    AskForFailures();
    Recorder::SetAnswer(L"INIT", E_FAIL);
    Recorder::SetOptionAnswer(E_FAIL);
    for (int i = 0; i < 3; ++i)
        Assert(false, L"x");
    EXPECT_EQ(g_Shown, Texts(3, L"BugSlayer Init Failed."));
    EXPECT_EQ(Recorder::Starts().size(), 3u);
    EXPECT_EQ(GetClient().ShowFailure, 1);
    Recorder::SetAnswer(L"INIT", S_OK);
    Assert(false, L"now");
    EXPECT_EQ(g_Shown.size(), 3u);
    EXPECT_EQ(Recorder::Asserts(), Texts{L"now"});
}

TEST_F(Client, AnExportThatFailsOrGivesNoObjectIsTriedAgainAtEachReport) {
    AskForFailures();
    Recorder::SetInitObject(E_ACCESSDENIED, true);
    EXPECT_EQ(GetClient().Init(), E_ACCESSDENIED);
    EXPECT_EQ(Recorder::OpenRoots(), 0) << "what came with the failure is released";
    Recorder::SetInitObject(S_OK, false);
    EXPECT_EQ(GetClient().Init(), E_FAIL);
    EXPECT_EQ(GetClient().Inited, 0);
    EXPECT_EQ(GetClient().Active, 0);
    for (int i = 0; i < 3; ++i)
        Assert(false, L"x");
    EXPECT_EQ(g_Shown.size(), 5u);
    EXPECT_THAT(Recorder::Verbs(), IsEmpty());
    Recorder::SetInitObject(S_OK, true);
    Assert(false, L"now");
    EXPECT_EQ(Recorder::Asserts(), Texts{L"now"});
}

TEST_F(Client, AFailureIsNoLongerShownWhenTheRegistryNoLongerAsksForIt) {
    AskForFailures();
    Recorder::SetInitObject(E_FAIL, false);
    Assert(false, L"x");
    EXPECT_EQ(GetClient().ShowFailure, 1);
    platform::CRegistryKey::DeleteTree(platform::ERegistryRoot::User, L"Software\\DM Support\\BugSlayer");
    Assert(false, L"x");
    EXPECT_EQ(GetClient().ShowFailure, 0);
    EXPECT_EQ(g_Shown.size(), 1u);
}

TEST_F(Client, AFailureIsShownOnTheErrorStreamWhenNobodyTakesIt) {
    AskForFailures();
    platform::SetMessageBoxHandler(nullptr);
    Recorder::SetAnswer(L"INIT", E_FAIL);
    Recorder::SetOptionAnswer(E_FAIL);
    testing::internal::CaptureStderr();
    Assert(false, L"x");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: BugSlayer Init Failed.\n");
}

TEST_F(Client, AFailedStartIsNotShownUnlessTheRegistryAsksForIt) {
    platform::CRegistryKey::Create(platform::ERegistryRoot::User, L"Software\\DM Support\\BugSlayer")
        .WriteText(L"Level", L"info");
    Recorder::SetAnswer(L"INIT", E_FAIL);
    Recorder::SetOptionAnswer(E_FAIL);
    Assert(false, L"x");
    EXPECT_THAT(g_Shown, IsEmpty());
    EXPECT_EQ(GetClient().ShowFailure, 0);
}

TEST_F(Client, SendsTheVerbsWithoutARecord) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::Clear();
    Recorder::SetAnswer(L"IS CLEAN", S_FALSE);
    EXPECT_EQ(GetClient().IsClean(), S_FALSE);
    EXPECT_EQ(GetClient().DoClean(), S_OK);
    EXPECT_EQ(GetClient().ReportDialog(), S_OK);
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"IS CLEAN", L"DO CLEAN", L"REPORTDIALOG"));
}

TEST_F(Client, AfterItsEndReportsAreDropped) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::Clear();
    GetClient().Shutdown();
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"DEINIT"));
    EXPECT_EQ(GetClient().Active, 0);
    EXPECT_EQ(Recorder::OpenRoots(), 0);
    Assert(false, L"late");
    const CScope scope;
    EXPECT_EQ(scope.Guard([]() -> HRESULT { throw 5; }, E_FAIL), E_FAIL);
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"DEINIT"));
    EXPECT_EQ(GetClient().IsClean(), E_FAIL);
}

TEST_F(Client, ActsOnNothingButOneAndAbort) {
    for (const HRESULT code : {S_OK, 2, -1, E_FAIL, E_POINTER})
        GetClient().ApplyAction(code);
}

TEST_F(Client, TellsWhereTheLibraryWritesItsLog) {
    EXPECT_EQ(LogFilePath(), L"");
    Recorder::SetRootValue(L"LogFile", L"/tmp/x.log");
    EXPECT_EQ(LogFilePath(), L"/tmp/x.log");
}

using ClientDeathTest = Client;

TEST_F(ClientDeathTest, TerminateTellsTheLibraryAndEndsTheProcess) {
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            EchoVerbs();
            GetClient().Terminate();
        },
        testing::ExitedWithCode(255), "^\\[TERMINATE\\]$");
}

TEST_F(ClientDeathTest, AnAbortStartsTheClientToSayGoodbye) {
    EXPECT_EXIT(
        {
            EchoVerbs();
            GetClient().ApplyAction(E_ABORT);
        },
        testing::ExitedWithCode(255), "^\\[CREATE\\]\\[INIT\\]\\[DEINIT\\]$");
}

TEST_F(ClientDeathTest, AnAbortOfAClientThatCannotStartSaysNoGoodbye) {
    EXPECT_EXIT(
        {
            EchoVerbs();
            Recorder::SetAnswer(L"INIT", E_FAIL);
            Recorder::SetOptionAnswer(E_FAIL);
            GetClient().ApplyAction(E_ABORT, 9);
        },
        testing::ExitedWithCode(9), "^\\[CREATE\\]\\[INIT\\]$");
}

TEST_F(ClientDeathTest, SaysGoodbyeWhenTheProcessExits) {
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            EchoVerbs();
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^\\[DEINIT\\]$");
}

// Reports from many threads while the client starts, fails to start, and shuts down.

void ReportFromThreads(int threads, int reports) {
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i)
        running.emplace_back([reports] {
            for (int n = 0; n < reports; ++n) {
                const CScope scope;
                scope.Trace(L"line %d", n);
                scope.Guard([&] { scope.Throw(L"raised"); });
            }
        });
}

TEST_F(Client, TakesReportsFromManyThreadsAtOnce) {
    ReportFromThreads(8, 50);
    EXPECT_EQ(Recorder::Starts().size(), 1u);
    // Those that came while the first was starting were dropped.
    EXPECT_LE(Recorder::Messages().size(), 400u);
    Recorder::Clear();
    ReportFromThreads(8, 50);
    EXPECT_EQ(Recorder::Messages().size(), 400u);
    EXPECT_EQ(Recorder::Errors().size(), 400u);
}

TEST_F(Client, FailingStartsMayRaceWithReports) {
    Recorder::SetAnswer(L"INIT", E_FAIL);
    Recorder::SetOptionAnswer(E_FAIL);
    ReportFromThreads(4, 20);
    EXPECT_EQ(Recorder::OpenRoots(), 0);
}

TEST_F(Client, ItsEndMayRaceWithReports) {
    std::jthread reports([] { ReportFromThreads(4, 50); });
    GetClient().Shutdown();
    reports.join();
    EXPECT_EQ(GetClient().Active, 0);
    EXPECT_EQ(Recorder::OpenRoots(), 0);
}

} // namespace
