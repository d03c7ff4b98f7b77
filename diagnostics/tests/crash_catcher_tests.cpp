#include "TestHelp.h"
#include "diagnostics/interface/BugSlayerClient.h"
#include "diagnostics/interface/CrashCatchers.h"

#include <csignal>
#include <stdexcept>
#include <thread>

#if defined(__SANITIZE_THREAD__)
// A fault is reported where it happened, within the signal's handler, which the sanitizer would refuse. There is
// nothing to lose by then.
extern "C" const char* __tsan_default_options() { return "report_signal_unsafe=0"; }
#endif

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;
using testing::ElementsAre;

using CrashCatcher = CRecorded;
using CrashCatcherDeathTest = CRecorded;

int g_Previous = 0;

TEST_F(CrashCatcher, AnInvalidParameterIsACrashRecordAndThePreviousHandlerFollows) {
    g_Previous = 0;
    platform::SetInvalidParameterHandler([](const platform::tagInvalidParameter&) { ++g_Previous; });
    CInvalidParameterCatcher::Install();
    platform::ReportInvalidParameter(L"size > 0", L"Format");
    CInvalidParameterCatcher::Remove();
    EXPECT_EQ(g_Previous, 1);
    const auto record = Only(L"EXCEPTION");
    EXPECT_THAT(record.FieldNames(),
                ElementsAre(L"$Type", L"<<EXCEPTION>>", L"ExceptionType", L"ErrorCode", L"Thread ID", L"Code",
                            L"Continuable", L"Address", L"$EXCEPTION_POINTERS"));
    EXPECT_EQ(record.Value(L"ExceptionType").AsLong(), 0);
    EXPECT_EQ(static_cast<DWORD>(record.Value(L"Code").Get().lVal), 0xC000000D);
    EXPECT_NE(record.Value(L"Address").Get().llVal, 0);
    ASSERT_EQ(record.FieldsAfterProcess.size(), 1u);
    platform::ReportInvalidParameter(L"", L"");
    EXPECT_EQ(g_Previous, 2) << "put back by the removal";
    platform::SetInvalidParameterHandler(nullptr);
}

TEST_F(CrashCatcher, IsInPlaceUntilItsLastRemoval) {
    CInvalidParameterCatcher::Install();
    CInvalidParameterCatcher::Install();
    EXPECT_EQ(CInvalidParameterCatcher::InstallCount(), 2);
    CInvalidParameterCatcher::Remove();
    platform::ReportInvalidParameter(L"", L"");
    EXPECT_EQ(Recorder::Records().size(), 1u);
    CInvalidParameterCatcher::Remove();
    CInvalidParameterCatcher::Remove();
    EXPECT_EQ(CInvalidParameterCatcher::InstallCount(), 0);
    platform::ReportInvalidParameter(L"", L"");
    EXPECT_EQ(Recorder::Records().size(), 1u);
}

TEST_F(CrashCatcher, LeavesAHandlerThatCameAfterIt) {
    static int later = 0;
    CInvalidParameterCatcher::Install();
    platform::SetInvalidParameterHandler([](const platform::tagInvalidParameter&) { ++later; });
    CInvalidParameterCatcher::Remove();
    platform::ReportInvalidParameter(L"", L"");
    platform::SetInvalidParameterHandler(nullptr);
    EXPECT_EQ(later, 1);
}

TEST_F(CrashCatcher, AThreadInstallsAllThreeForItsLength) {
    std::jthread([] {
        const CThreadCrashCatchers catchers;
        EXPECT_EQ(CInvalidParameterCatcher::InstallCount(), 1);
        EXPECT_EQ(CUnhandledExceptionCatcher::InstallCount(), 1);
        EXPECT_EQ(CStructuredExceptionCatcher::InstallCount(), 1);
    }).join();
    EXPECT_EQ(CInvalidParameterCatcher::InstallCount(), 0);
    EXPECT_EQ(CUnhandledExceptionCatcher::InstallCount(), 0);
    EXPECT_EQ(CStructuredExceptionCatcher::InstallCount(), 0);
}

TEST_F(CrashCatcher, OfStructuredExceptionsBelongsToItsThread) {
    const auto previous = [](const platform::tagExceptionInfo&) {};
    platform::SetExceptionTranslator(previous);
    CStructuredExceptionCatcher::Install();
    std::jthread([] {
        EXPECT_EQ(platform::SetExceptionTranslator(nullptr), nullptr);
        CStructuredExceptionCatcher::Install();
        EXPECT_EQ(CStructuredExceptionCatcher::InstallCount(), 2);
        CStructuredExceptionCatcher::Remove();
    }).join();
    CStructuredExceptionCatcher::Remove();
    EXPECT_EQ(platform::SetExceptionTranslator(nullptr), static_cast<platform::ExceptionTranslator>(previous));
}

TEST_F(CrashCatcherDeathTest, AnInvalidParameterAnsweredWithAbortEndsWithItsCode) {
    // 0xC000000D, of which the system keeps 8 bits.
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            EchoVerbs();
            Recorder::SetAnswer(L"PROCESS", E_ABORT);
            CInvalidParameterCatcher::Install();
            platform::ReportInvalidParameter(L"", L"");
        },
        testing::ExitedWithCode(0x0D), "\\[PROCESS\\]\\[DEINIT\\]$");
}

void EchoCrashRecord() {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetProcessHandler([](const Recorder::tagRecord& record) {
        std::fprintf(stderr, "<%d %08X>", record.Value(L"ExceptionType").AsLong(),
                     static_cast<unsigned>(record.Value(L"Code").Get().lVal));
        return S_OK;
    });
    EchoVerbs();
}

void Fail() { throw std::runtime_error("nobody"); }

void FailWhereNobodyCatches() noexcept { Fail(); }

TEST_F(CrashCatcherDeathTest, AnUnhandledExceptionIsReportedAndEndsTheProcess) {
    EXPECT_EXIT(
        {
            EchoCrashRecord();
            CUnhandledExceptionCatcher::Install();
            FailWhereNobodyCatches();
        },
        testing::ExitedWithCode(255), "\\[PROCESS\\]<1 E06D7363>\\[TERMINATE\\]$");
}

TEST_F(CrashCatcherDeathTest, TheAnswerToAnUnhandledExceptionIsIgnored) {
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            EchoVerbs();
            Recorder::SetAnswer(L"PROCESS", E_ABORT);
            CUnhandledExceptionCatcher::Install();
            FailWhereNobodyCatches();
        },
        testing::ExitedWithCode(255), "\\[PROCESS\\]\\[TERMINATE\\]$");
}

void PreviousTranslator(const platform::tagExceptionInfo&) {
    std::fprintf(stderr, "(previous)");
    platform::TerminateProcess(7);
}

TEST_F(CrashCatcherDeathTest, AFaultIsReportedOnItsThreadAndThePreviousTranslatorFollows) {
    EXPECT_EXIT(
        {
            EchoCrashRecord();
            platform::SetExceptionTranslator(PreviousTranslator);
            CStructuredExceptionCatcher::Install();
            std::raise(SIGSEGV);
        },
        testing::ExitedWithCode(7), "\\[PROCESS\\]<0 C0000005>\\(previous\\)$");
}

TEST_F(CrashCatcherDeathTest, AFaultAnsweredWithAbortEndsTheProcess) {
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            Recorder::SetAnswer(L"PROCESS", E_ABORT);
            CStructuredExceptionCatcher::Install();
            std::raise(SIGFPE);
        },
        testing::ExitedWithCode(255), "");
}

TEST_F(CrashCatcherDeathTest, AFaultGoesThroughTranslatorAndFilter) {
    EXPECT_EXIT(
        {
            EchoCrashRecord();
            const CThreadCrashCatchers catchers;
            std::raise(SIGSEGV);
        },
        testing::ExitedWithCode(255), "<0 C0000005>.*<1 C0000005>\\[TERMINATE\\]$");
}

} // namespace
