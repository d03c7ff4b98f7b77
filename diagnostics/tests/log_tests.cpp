#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/CrashCatchers.h"
#include "diagnostics/interface/Trail.h"
#include "platform/com/activation.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/message_box.h"
#include "platform/registry.h"
#include "platform/text.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace BugSlayerUtil;
using testing::HasSubstr;
using testing::MatchesRegex;

// Reports through the real library, each test in a process of its own.
class Log : public testing::Test {
protected:
    static platform::CRegistryKey Settings() {
        return platform::CRegistryKey::Create(platform::ERegistryRoot::User, L"Software\\DM Support\\BugSlayer");
    }
    // What the log holds now that nothing more is written.
    static std::string Text() {
        const std::wstring path = LogFilePath();
        GetClient().Shutdown();
        return platform::ReadFile(platform::ToPath(path));
    }
    static int LinesOf(const std::string& text) {
        return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    }

    platform::CTemporaryDirectory m_Directory;
    platform::CScopedEnvironment m_Registry{L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name() + L"/registry"};
    platform::CScopedEnvironment m_State{L"SQSTORAGE_STATE_DIR", m_Directory.Name() + L"/state"};
};

TEST_F(Log, LiesInTheStateDirectoryUnderTheProgramsName) {
    Assert(false, L"x");
    EXPECT_EQ(LogFilePath(), m_Directory.Name() + L"/state/log/diagnostics_log_tests.log");
}

TEST_F(Log, ALineHasTimeThreadLevelFunctionAndMessage) {
    {
        const CScope scope;
        scope.Trace(L"sql = '%s'", L"\u0444");
    }
    const std::string text = Text();
    EXPECT_EQ(LinesOf(text), 1) << "enters and leaves are not wanted at the usual level";
    // ISO date and time with milliseconds.
    EXPECT_THAT(text, MatchesRegex("[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+\\.[0-9]+ \\[[0-9]+\\] \\[info\\] "
                                   ".*::TestBody: sql = '\xD1\x84'\n"));
}

TEST_F(Log, AWarningIsALineThatBeginsLikeOne) {
    const CScope scope;
    scope.Trace(L"[Warning] PointValue = %f", 0.5);
    scope.Trace(L"[WARNING] x");
    scope.Trace(L"no [Warning]");
    const std::string text = Text();
    EXPECT_THAT(text, HasSubstr("[warning] "));
    EXPECT_THAT(text, HasSubstr("[info] "));
    EXPECT_THAT(text, HasSubstr(": [Warning] PointValue = 0.500000"));
    EXPECT_THAT(text, HasSubstr(": [WARNING] x"));
}

TEST_F(Log, AFailedCheckIsOnTheDiskAtOnce) {
    const CScope scope;
    errno = 2;
    scope.Check(E_FAIL, L"Execute");
    const std::string text = platform::ReadFile(platform::ToPath(LogFilePath()));
    EXPECT_THAT(text, HasSubstr("[error] "));
    EXPECT_THAT(text, MatchesRegex(".*::TestBody: failed: Execute \\(0x80004005\\), last error 2 "
                                   "\\(log_tests.cpp:[0-9]+\\)\n"));
}

TEST_F(Log, AnErrorTellsAllThatItWraps) {
    const CScope scope;
    scope.Guard([&] { scope.Rethrowing([&] { scope.Throw(L"first"); }, L"second"); });
    const std::string text = platform::ReadFile(platform::ToPath(LogFilePath()));
    EXPECT_EQ(LinesOf(text), 1);
    EXPECT_THAT(text, HasSubstr("::TestBody: second (log_tests.cpp:"));
    EXPECT_THAT(text, HasSubstr("; caused by: "));
    EXPECT_THAT(text, HasSubstr("::TestBody: first (log_tests.cpp:"));
}

TEST_F(Log, AnExceptionOfUnknownTypeIsCalledThat) {
    Guard([] { throw 5; });
    EXPECT_THAT(Text(), HasSubstr("::TestBody: an exception of unknown type (log_tests.cpp:"));
}

TEST_F(Log, ALineBreakInAMessageDoesNotBreakTheLine) {
    const CScope scope;
    scope.Trace(L"a\r\nb\tc\x01");
    const std::string text = Text();
    EXPECT_THAT(text, HasSubstr(": a\\r\\nb\tc?\n"));
    EXPECT_EQ(LinesOf(text), 1);
}

TEST_F(Log, AtLevelTraceEntersAndLeavesAreThereToo) {
    Settings().WriteText(L"Level", L"trace");
    { const CScope scope; }
    const std::string text = Text();
    EXPECT_THAT(text, HasSubstr("[trace] "));
    EXPECT_THAT(text, HasSubstr("::TestBody: enter\n"));
    EXPECT_THAT(text, HasSubstr("::TestBody: leave after "));
    EXPECT_EQ(LinesOf(text), 2);
}

TEST_F(Log, ALeaveTellsCountAndTotalTime) {
    Settings().WriteText(L"Level", L"trace");
    std::atomic<LONG> counter{4};
    std::atomic<double> total{0};
    {
        const TracerClass tracer(GetClient(), "f.cpp", 7, 0, "ns::F", "void ns::F()", nullptr, &counter, &total,
                                 false, true);
    }
    EXPECT_THAT(Text(),
                MatchesRegex(".* ns::F: leave after [0-9]+\\.[0-9]+ ms, call 5, [0-9]+\\.[0-9]+ ms in all\n"));
}

TEST_F(Log, ALineForAnOutputFileNamesIt) {
    const CScope scope;
    scope.TraceTo(L"orders\n.txt", L"x");
    EXPECT_THAT(Text(), HasSubstr("::TestBody: x [for orders\\n.txt]\n"));
}

// The catchers' handlers, called as the platform would.
TEST_F(Log, ACrashIsCalledWhatItIs) {
    CStructuredExceptionCatcher::Install();
    const auto translator = platform::SetExceptionTranslator(nullptr);
    platform::SetExceptionTranslator(translator);
    const platform::CThreadContext context;
    errno = 2;
    translator({.Code = 0xC0000005,
                .Address = reinterpret_cast<const void*>(0x1234),
                .Data = nullptr,
                .Continuable = true,
                .Context = &context});
    CStructuredExceptionCatcher::Remove();
    CInvalidParameterCatcher::Install();
    platform::ReportInvalidParameter(L"", L"");
    CInvalidParameterCatcher::Remove();
    const std::string text = Text();
    EXPECT_THAT(text, HasSubstr("[critical] structured exception 0xC0000005 at 0x1234, last error 2\n"));
    EXPECT_THAT(text, HasSubstr("[critical] invalid parameter 0xC000000D at 0x"));
    EXPECT_EQ(LinesOf(text), 2);
}

using LogDeathTest = Log;

void ThrowWhereNobodyCatches() noexcept { Throw(L"nobody"); }

TEST_F(LogDeathTest, TheEndAfterAnUnhandledExceptionIsTheLastLine) {
    const auto file = m_Directory.Path() / "state" / "log" / "diagnostics_log_tests.log";
    EXPECT_EXIT(
        {
            CUnhandledExceptionCatcher::Install();
            ThrowWhereNobodyCatches();
        },
        testing::ExitedWithCode(255), "");
    const std::string text = platform::ReadFile(file);
    EXPECT_THAT(text, HasSubstr("[critical] unhandled exception 0xE06D7363 at 0x"));
    EXPECT_TRUE(text.ends_with("[critical] the process is ended after an unhandled exception\n"));
    EXPECT_EQ(LinesOf(text), 2);
}

TEST_F(Log, AtLevelWarningPlainLinesAreLeftOut) {
    Settings().WriteText(L"Level", L"warning");
    const CScope scope;
    scope.Trace(L"plain");
    scope.Trace(L"[Warning] x");
    EXPECT_EQ(LinesOf(Text()), 1);
}

TEST_F(Log, AtLevelErrorWarningsAreLeftOut) {
    Settings().WriteText(L"Level", L"error");
    const CScope scope;
    scope.Trace(L"[Warning] x");
    scope.Assert(false, L"y");
    EXPECT_EQ(LinesOf(Text()), 1);
}

TEST_F(Log, AtLevelOffNothingIsWrittenAndFailuresAreKeptAllTheSame) {
    Settings().WriteText(L"Level", L"off");
    const CScope scope;
    scope.Trace(L"x");
    scope.Assert(false, L"y");
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(RecentFailures().size(), 1u);
}

TEST_F(Log, ASettingThatCannotBeUsedIsNamedInTheLog) {
    Settings().WriteText(L"Level", L"loud");
    Settings().WriteText(L"LogDirectory", L"relative/place");
    Settings().WriteText(L"MaxFileSize", L"12");
    Settings().WriteText(L"MaxFiles", L"many");
    const CScope scope;
    scope.Trace(L"x");
    const std::string text = Text();
    EXPECT_THAT(text, HasSubstr("\"Level\" is \"loud\"; use trace, debug, info, warning, error or off"));
    EXPECT_THAT(text, HasSubstr("\"LogDirectory\" is \"relative/place\"; use a full path"));
    EXPECT_THAT(text, HasSubstr("\"MaxFileSize\" is \"12\"; use a whole number from 4096 to 1073741824"));
    EXPECT_THAT(text, HasSubstr("\"MaxFiles\" is \"many\"; use a whole number from 1 to 100"));
    EXPECT_EQ(LinesOf(text), 5);
}

TEST_F(Log, GoesToTheDirectoryThatTheRegistryNames) {
    Settings().WriteText(L"LogDirectory", m_Directory.Name() + L"/else/where");
    EXPECT_EQ(LogFilePath(), m_Directory.Name() + L"/else/where/diagnostics_log_tests.log");
}

TEST_F(Log, ADirectoryThatCannotBeUsedGivesWayToTheUsualOne) {
    platform::WriteFileAtomically(m_Directory.Path() / "file", "");
    Settings().WriteText(L"LogDirectory", m_Directory.Name() + L"/file/log");
    EXPECT_EQ(LogFilePath(), m_Directory.Name() + L"/state/log/diagnostics_log_tests.log");
    EXPECT_THAT(Text(), HasSubstr("/file/log\": "));
}

TEST_F(Log, WithoutAnyPlaceToWriteTheStartFails) {
    platform::WriteFileAtomically(m_Directory.Path() / "file", "");
    const platform::CScopedEnvironment state(L"SQSTORAGE_STATE_DIR", m_Directory.Name() + L"/file/state");
    EXPECT_EQ(GetClient().Init(), E_ACCESSDENIED);
    EXPECT_EQ(GetClient().Active, 0);
    EXPECT_FALSE(Assert(false, L"x")) << "the host goes on";
}

TEST_F(Log, BeginsANewFileWhenOneIsFullAndKeepsSoManyOldOnes) {
    Settings().WriteNumber(L"MaxFileSize", 4096);
    Settings().WriteNumber(L"MaxFiles", 2);
    {
        const CScope scope;
        for (int i = 0; i < 300; ++i)
            scope.Trace(L"line %d", i);
    }
    EXPECT_THAT(Text(), HasSubstr("line 299"));
    const auto folder = m_Directory.Path() / "state" / "log";
    EXPECT_TRUE(platform::Exists(folder / "diagnostics_log_tests.1.log"));
    EXPECT_TRUE(platform::Exists(folder / "diagnostics_log_tests.2.log"));
    EXPECT_FALSE(platform::Exists(folder / "diagnostics_log_tests.3.log"));
    EXPECT_LE(platform::ReadFile(folder / "diagnostics_log_tests.1.log").size(), 4096u);
}

TEST_F(Log, AnotherProcessOfTheNameHasAFileOfItsOwn) {
    const auto folder = m_Directory.Path() / "state" / "log";
    platform::CreateDirectories(folder);
    const platform::CFileLock other(folder / "diagnostics_log_tests.log.lock");
    EXPECT_EQ(LogFilePath(), m_Directory.Name() + L"/state/log/diagnostics_log_tests-2.log");
}

TEST_F(Log, IsCleanUntilAFailureAndAfterCleaning) {
    EXPECT_EQ(GetClient().IsClean(), S_OK);
    Assert(false, L"x");
    EXPECT_EQ(GetClient().IsClean(), S_FALSE);
    EXPECT_EQ(GetClient().DoClean(), S_OK);
    EXPECT_EQ(GetClient().IsClean(), S_OK);
}

TEST_F(Log, TheReportDialogTellsWhereItLies) {
    static std::wstring shown;
    platform::SetMessageBoxHandler([](std::wstring_view text, platform::EMessageIcon) { shown = text; });
    EXPECT_EQ(GetClient().ReportDialog(), S_OK);
    platform::SetMessageBoxHandler(nullptr);
    EXPECT_EQ(shown, L"The log of this process is " + LogFilePath());
}

// A root object of the library's own, apart from the client's.
platform::CComPtr<IDebugObject> MakeRoot() {
    EXPECT_TRUE(GetClient().Ready()) << "the library is loaded by the client";
    platform::CComPtr<IDebugObject> root;
    EXPECT_EQ(platform::CreateInstance(IDM_BugSlayerUtil::DebugObjectClass, root), S_OK);
    return root;
}

HRESULT Send(IDebugObject& root, const wchar_t* verb) {
    IDebugObject* none = nullptr;
    return root.Command(&none, platform::CBstr(verb).Get());
}

TEST_F(Log, WithoutOneTheReportDialogTellsWhy) {
    static std::wstring shown;
    static platform::CComPtr<IDebugObject> root;
    root = MakeRoot();
    platform::SetMessageBoxHandler([](std::wstring_view text, platform::EMessageIcon icon) {
        EXPECT_EQ(icon, platform::EMessageIcon::Warning);
        shown = text;
        // The box is no reason for other calls to wait.
        EXPECT_EQ(Send(*root, L"DEINIT"), S_OK);
    });
    EXPECT_EQ(Send(*root, L"REPORTDIALOG"), S_FALSE);
    EXPECT_EQ(shown, L"There is no log of this process. ");

    platform::WriteFileAtomically(m_Directory.Path() / "file", "");
    const platform::CScopedEnvironment state(L"SQSTORAGE_STATE_DIR", m_Directory.Name() + L"/file/state");
    IDebugObject* start = nullptr;
    ASSERT_EQ(root->Command(&start, platform::CBstr(L"CREATE").Get()), S_OK);
    const auto held = platform::CComPtr<IDebugObject>::Adopt(start);
    EXPECT_EQ(root->Command(&start, platform::CBstr(L"INIT").Get()), E_ACCESSDENIED);
    EXPECT_EQ(Send(*root, L"REPORTDIALOG"), S_FALSE);
    EXPECT_TRUE(shown.starts_with(L"There is no log of this process. no log can be written to \"" +
                                  m_Directory.Name() + L"/file/state/log\": "));
    platform::SetMessageBoxHandler(nullptr);
    root = nullptr;
}

TEST_F(Log, AnOptionIsRefusedUnlessItFollowsAFailedStart) {
    const auto root = MakeRoot();
    const platform::CBstr text(L"1");
    EXPECT_EQ(root->SetOption(platform::CBstr(L"Level").Get(), text.Get(), 1), E_INVALIDARG);
    EXPECT_EQ(root->SetOption(platform::CBstr(L"").Get(), text.Get(), 1), S_OK) << "no start has failed";
    IDebugObject* none = nullptr;
    EXPECT_EQ(root->Command(&none, platform::CBstr(L"INIT").Get()), E_INVALIDARG) << "without a start record";
}

TEST_F(Log, TakesLinesFromManyThreads) {
    std::vector<std::jthread> threads;
    ASSERT_EQ(GetClient().Init(), S_OK);
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([] {
            const CScope scope;
            for (int n = 0; n < 100; ++n)
                scope.Trace(L"line");
        });
    threads.clear();
    EXPECT_EQ(LinesOf(Text()), 800);
}

TEST_F(Log, TheLibrarysClassMakesRootObjects) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    platform::CComPtr<IDebugObject> root;
    ASSERT_EQ(platform::CreateInstance(IDM_BugSlayerUtil::DebugObjectClass, root), S_OK);
    IDebugObject* record = nullptr;
    EXPECT_EQ(root->Command(&record, platform::CBstr(L"CREATE").Get()), S_OK);
    const auto held = platform::CComPtr<IDebugObject>::Adopt(record);
    const platform::CVariant number(LONG{5});
    EXPECT_EQ(held->SetValue(platform::CBstr(L"A name longer than any that is in use").Get(), number.Get()), S_OK);
    platform::CVariant read;
    EXPECT_EQ(held->GetValue(platform::CBstr(L"A name longer than any that is in use").Get(), read.Put()), S_OK);
    EXPECT_EQ(read.AsLong(), 5);
    EXPECT_EQ(held->GetValue(platform::CBstr(L"other").Get(), read.Put()), S_FALSE);
    EXPECT_EQ(root->Command(&record, platform::CBstr(L"PROCESS").Get()), S_OK) << "dropped before its start";
    EXPECT_EQ(root->Command(nullptr, platform::CBstr(L"NONSENSE").Get()), E_INVALIDARG);
    EXPECT_EQ(root->Command(nullptr, platform::CBstr(L"CREATE").Get()), E_POINTER);
}

} // namespace
