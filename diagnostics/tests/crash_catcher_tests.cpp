#include "TestHelp.h"
#include "diagnostics/interface/BugSlayerClient.h"
#include "diagnostics/interface/CrashCatchers.h"
#include "platform/thread.h"

#include <cerrno>
#include <cfenv>
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
    EXPECT_EQ(record.FieldsAfterProcess[0].first, L"$EXCEPTION_POINTERS");
    EXPECT_EQ(record.FieldsAfterProcess[0].second.Get().llVal, 0);
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

// The structured-exception catcher on the calling thread, with a translator before it, as the platform would call
// it.
class CTranslator {
public:
    CTranslator() {
        s_Previous = 0;
        platform::SetExceptionTranslator([](const platform::tagExceptionInfo&) { ++s_Previous; });
        CStructuredExceptionCatcher::Install();
        m_Catcher = platform::SetExceptionTranslator(nullptr);
        platform::SetExceptionTranslator(m_Catcher);
    }
    ~CTranslator() {
        CStructuredExceptionCatcher::Remove();
        platform::SetExceptionTranslator(nullptr);
    }
    CTranslator(const CTranslator&) = delete;
    CTranslator& operator=(const CTranslator&) = delete;

    void Catch(DWORD code, bool continuable = false) const {
        const platform::CThreadContext context;
        m_Catcher(
            {.Code = code, .Address = &context, .Data = nullptr, .Continuable = continuable, .Context = &context});
    }
    [[nodiscard]] static int Previous() { return s_Previous; }

private:
    static inline int s_Previous = 0;
    platform::ExceptionTranslator m_Catcher = nullptr;
};

TEST_F(CrashCatcher, ARecordTellsErrorThreadCodeAndPlace) {
    const CTranslator translator;
    errno = ENOENT;
    translator.Catch(0xC0000005, true);
    errno = 0;
    translator.Catch(0xC000001D, false);
    const auto records = Recorder::RecordsOf(L"EXCEPTION");
    ASSERT_EQ(records.size(), 2u);
    const auto& record = records[0];
    EXPECT_EQ(record.Value(L"<<EXCEPTION>>").Type(), VT_BSTR);
    EXPECT_EQ(record.Value(L"<<EXCEPTION>>").AsText(), L"");
    EXPECT_EQ(record.Value(L"ExceptionType").Type(), VT_I4);
    EXPECT_EQ(record.Value(L"ExceptionType").AsLong(-1), 0);
    EXPECT_EQ(record.Value(L"ErrorCode").Type(), VT_I4);
    EXPECT_EQ(record.Value(L"ErrorCode").AsLong(), ENOENT);
    EXPECT_EQ(record.Value(L"Thread ID").Type(), VT_I4);
    EXPECT_EQ(record.Value(L"Thread ID").AsLong(), static_cast<LONG>(platform::CurrentThreadId()));
    EXPECT_EQ(record.Value(L"Code").Type(), VT_I4);
    EXPECT_EQ(static_cast<DWORD>(record.Value(L"Code").Get().lVal), 0xC0000005);
    EXPECT_EQ(record.Value(L"Continuable").Type(), VT_BOOL);
    EXPECT_EQ(record.Value(L"Continuable").Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(record.Value(L"Address").Type(), VT_I8);
    EXPECT_NE(record.Value(L"Address").Get().llVal, 0);
    EXPECT_EQ(record.Value(L"$EXCEPTION_POINTERS").Type(), VT_I8);
    EXPECT_NE(record.Value(L"$EXCEPTION_POINTERS").Get().llVal, 0);
    ASSERT_EQ(record.FieldsAfterProcess.size(), 1u);
    EXPECT_EQ(record.FieldsAfterProcess[0].second.Get().llVal, 0);
    EXPECT_EQ(records[1].Value(L"ErrorCode").AsLong(-1), 0);
    EXPECT_EQ(records[1].Value(L"Continuable").Get().boolVal, VARIANT_FALSE);
}

TEST_F(CrashCatcher, PassesOnWhatIsNotForItWithoutAReport) {
    const CTranslator translator;
    for (const DWORD code : {0xE06D7363u, 0x80000003u, 0x80000004u})
        translator.Catch(code);
    EXPECT_TRUE(Recorder::Records().empty());
    EXPECT_EQ(CTranslator::Previous(), 3);
    translator.Catch(0x80000002);
    EXPECT_EQ(Recorder::Records().size(), 1u);
    EXPECT_EQ(CTranslator::Previous(), 4);
}

TEST_F(CrashCatcher, ResetsTheFloatingPointAfterAFaultOfItAndNoOther) {
    const CTranslator translator;
    for (const DWORD code : {0xC000008Du, 0xC0000090u, 0xC0000093u}) {
        std::fesetround(FE_UPWARD);
        translator.Catch(code);
        EXPECT_EQ(std::fegetround(), FE_TONEAREST) << std::hex << code;
    }
    for (const DWORD code : {0xC000008Cu, 0xC0000094u}) {
        std::fesetround(FE_UPWARD);
        translator.Catch(code);
        const int rounding = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(rounding, FE_UPWARD) << std::hex << code;
    }
}

TEST_F(CrashCatcher, AnsweredWithOneBreaksAndGoesOn) {
    static int breaks = 0;
    platform::SetBreakHandler([] { ++breaks; });
    Recorder::SetAnswer(L"PROCESS", 1);
    CInvalidParameterCatcher::Install();
    platform::ReportInvalidParameter(L"", L"");
    CInvalidParameterCatcher::Remove();
    EXPECT_EQ(breaks, 1);
    const CTranslator translator;
    translator.Catch(0xC0000005);
    EXPECT_EQ(breaks, 2);
    EXPECT_EQ(CTranslator::Previous(), 1);
    platform::SetBreakHandler(nullptr);
}

TEST_F(CrashCatcher, KeepsTheLastErrorForThePreviousHandlerAndTheCaller) {
    static int seen = 0;
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetVerbHandler([](std::wstring_view) { errno = EBADF; });
    platform::SetInvalidParameterHandler([](const platform::tagInvalidParameter&) { seen = errno; });
    CInvalidParameterCatcher::Install();
    errno = ENOENT;
    platform::ReportInvalidParameter(L"", L"");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(seen, ENOENT);
    CInvalidParameterCatcher::Remove();
    platform::SetInvalidParameterHandler(nullptr);
    const CTranslator translator;
    errno = EACCES;
    translator.Catch(0xC0000005);
    EXPECT_EQ(errno, EACCES);
}

TEST_F(CrashCatcher, OfUnhandledExceptionsPutsThePreviousFilterBack) {
    const platform::ExceptionFilter previous = [](const platform::tagExceptionInfo&) {};
    platform::SetUnhandledExceptionFilter(previous);
    CUnhandledExceptionCatcher::Install();
    CUnhandledExceptionCatcher::Install();
    CUnhandledExceptionCatcher::Remove();
    const auto present = platform::SetUnhandledExceptionFilter(nullptr);
    platform::SetUnhandledExceptionFilter(present);
    EXPECT_NE(present, previous) << "in place until the last removal";
    CUnhandledExceptionCatcher::Remove();
    EXPECT_EQ(platform::SetUnhandledExceptionFilter(nullptr), previous);
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

TEST_F(CrashCatcherDeathTest, AnUnhandledExceptionAnsweredWithOneDoesNotBreak) {
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            platform::SetBreakHandler([] { std::fprintf(stderr, "(break)"); });
            EchoVerbs();
            Recorder::SetAnswer(L"PROCESS", 1);
            CUnhandledExceptionCatcher::Install();
            FailWhereNobodyCatches();
        },
        testing::ExitedWithCode(255), "\\[PROCESS\\]\\[TERMINATE\\]$");
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
