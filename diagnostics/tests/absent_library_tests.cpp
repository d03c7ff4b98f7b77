#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/Trail.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/message_box.h"
#include "platform/module.h"
#include "platform/registry.h"
#include "platform/text.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace BugSlayerUtil;

std::atomic<int> g_Shown{0};

// The first file of the library's name that is found decides, and this one is no library.
class LibraryAbsent : public testing::Test {
protected:
    void SetUp() override {
        platform::WriteFileAtomically(m_Directory.Path() / "libBugSlayerUtil3.0_x64.so", "");
        g_Shown = 0;
        platform::SetMessageBoxHandler([](std::wstring_view, platform::EMessageIcon) { ++g_Shown; });
    }
    void TearDown() override { platform::SetMessageBoxHandler(nullptr); }

    static void AskForFailures() {
        platform::CRegistryKey::Create(platform::ERegistryRoot::User, IDM_BugSlayerUtil::SettingsKey)
            .WriteText(L"", L"show");
    }
    static void Register(std::wstring_view path) {
        platform::CRegistryKey::Create(platform::ERegistryRoot::Classes,
                                       L"CLSID\\{CF3478AA-DD21-456C-98F2-5222D9B9CD75}\\InprocServer32")
            .WriteText(L"", path);
    }

    platform::CTemporaryDirectory m_Directory;
    platform::CScopedEnvironment m_Modules{L"SQSTORAGE_MODULE_PATH", m_Directory.Name()};
    platform::CScopedEnvironment m_Registry{L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name() + L"/registry"};
    platform::CScopedEnvironment m_State{L"SQSTORAGE_STATE_DIR", m_Directory.Name() + L"/state"};
};

TEST_F(LibraryAbsent, AllReportingIsSilentAndTheClientStaysInactive) {
    const CScope scope;
    scope.Trace(L"line %s", nullptr);
    EXPECT_FALSE(scope.Assert(false, L"x"));
    EXPECT_FALSE(scope.Check(E_FAIL, L"y"));
    EXPECT_EQ(GetClient().Inited, 0);
    EXPECT_EQ(GetClient().Active, 0);
    EXPECT_EQ(GetClient().IsClean(), E_FAIL);
    EXPECT_EQ(LogFilePath(), L"");
    EXPECT_EQ(g_Shown, 0);
}

TEST_F(LibraryAbsent, TheGuardStillCatches) {
    const CScope scope;
    EXPECT_EQ(scope.Guard([]() -> HRESULT { throw std::runtime_error("x"); }, E_FAIL), E_FAIL);
    EXPECT_EQ(scope.Guard([&]() -> HRESULT { scope.Throw(L"x"); }, E_FAIL), E_FAIL);
    EXPECT_EQ(scope.Guard([]() -> HRESULT { throw 5; }, E_FAIL), E_FAIL);
}

TEST_F(LibraryAbsent, AnAssertionAnswersFailure) {
    EXPECT_EQ(AsserterClass(GetClient(), "f", 1, 0, "f", "f()")(L"x"), E_FAIL);
    EXPECT_EQ(ShowError(GetClient(), "f", 1, 0, "f", "f()")(L"x", nullptr), E_FAIL);
}

TEST_F(LibraryAbsent, AThrownErrorIsTheTextItself) {
    const CScope scope;
    try {
        scope.Throw(L"m_Object.get()");
    } catch (const wchar_t* text) {
        EXPECT_STREQ(text, L"m_Object.get()");
    }
    try {
        scope.Rethrowing([] { throw std::runtime_error("bad"); }, L"T::FinalConstruct");
    } catch (const wchar_t* text) {
        EXPECT_STREQ(text, L"T::FinalConstruct (stdexcept: \"bad\")");
    }
}

TEST_F(LibraryAbsent, FailuresAreKeptAllTheSame) {
    const CScope scope;
    scope.Check(E_POINTER, L"Open");
    const auto failures = RecentFailures();
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_TRUE(failures[0].ends_with(L"::TestBody: Open (0x80004003)"));
}

TEST_F(LibraryAbsent, IsLookedForAtMostOnceInASecond) {
    AskForFailures();
    EXPECT_FALSE(GetClient().ReadyAt(5000));
    EXPECT_EQ(g_Shown, 1);
    EXPECT_FALSE(GetClient().ReadyAt(5999));
    EXPECT_FALSE(GetClient().ReadyAt(4900)) << "by a thread that has waited for the look";
    EXPECT_EQ(g_Shown, 1);
    EXPECT_FALSE(GetClient().ReadyAt(6000));
    EXPECT_EQ(g_Shown, 2);
}

TEST_F(LibraryAbsent, IsLookedForOnceByManyThreads) {
    AskForFailures();
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (DWORD n = 0; n < 500; ++n)
                EXPECT_FALSE(GetClient().ReadyAt(7000 + n));
        });
    threads.clear();
    EXPECT_EQ(g_Shown, 1);
}

TEST_F(LibraryAbsent, IsLookedForInTimeWhenTheTicksGoRound) {
    AskForFailures();
    EXPECT_FALSE(GetClient().ReadyAt(0xFFFFFF00));
    EXPECT_FALSE(GetClient().ReadyAt(0x10));
    EXPECT_EQ(g_Shown, 1);
    EXPECT_FALSE(GetClient().ReadyAt(1000));
    EXPECT_EQ(g_Shown, 2);
}

TEST_F(LibraryAbsent, IsUsedFromTheNextLookOnWhenItComes) {
    EXPECT_FALSE(GetClient().ReadyAt(5000));
    Register(platform::FromUtf8(DEBUG_OBJECT_FILE));
    EXPECT_FALSE(GetClient().ReadyAt(5999));
    EXPECT_TRUE(GetClient().ReadyAt(6000));
}

TEST_F(LibraryAbsent, IsLoadedFromThePathThatTheRegistryNames) {
    Register(platform::FromUtf8(DEBUG_OBJECT_FILE));
    EXPECT_FALSE(platform::CModule::Load(IDM_BugSlayerUtil::DebugModuleName));
    Assert(false, L"x");
    EXPECT_EQ(GetClient().Active, 1);
    EXPECT_TRUE(LogFilePath().starts_with(m_Directory.Name() + L"/state/log/"));
}

TEST_F(LibraryAbsent, ARegisteredPathWithNothingBehindItIsNoLibrary) {
    Register(m_Directory.Name() + L"/none.so");
    EXPECT_EQ(GetClient().Init(), E_FAIL);
}

TEST_F(LibraryAbsent, AModuleWithoutTheExportIsTriedAtEachReport) {
    AskForFailures();

    Register(platform::CModule::ContainingAddress(reinterpret_cast<void*>(&GetClient)).FileName());
    EXPECT_EQ(GetClient().Init(), E_FAIL);
    EXPECT_EQ(GetClient().Active, 0);
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(GetClient().ReadyAt(5000));
    EXPECT_EQ(g_Shown, 4);
}

using LibraryAbsentDeathTest = LibraryAbsent;

// Runs after the client's own exit handler, because it was there first.
void ReportAtTheEnd() {
    std::fprintf(stderr, "(late)");
    Assert(false, L"late");
    // A look would be due again.
    (void)GetClient().ReadyAt(platform::TickCount() + 5000);
}

TEST_F(LibraryAbsentDeathTest, AfterTheExitHandlersItIsNoLongerLookedFor) {
    AskForFailures();
    platform::SetMessageBoxHandler(
        [](std::wstring_view, platform::EMessageIcon) { std::fprintf(stderr, "(shown)"); });
    EXPECT_EXIT(
        {
            std::atexit(ReportAtTheEnd);
            Assert(false, L"x");
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^\\(shown\\)\\(late\\)$");
}

TEST_F(LibraryAbsent, ADamagedRegistryIsNoReasonToFail) {
    platform::CreateDirectories(m_Directory.Path() / "registry");
    platform::WriteFileAtomically(m_Directory.Path() / "registry" / "user.toml", "not = [toml");
    platform::WriteFileAtomically(m_Directory.Path() / "registry" / "classes.toml", "not = [toml");
    EXPECT_EQ(GetClient().Init(), E_FAIL);
    EXPECT_FALSE(Assert(false, L"x"));
}

} // namespace
