#include "platform/crash.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace platform {
namespace {

// What a hook saw, on standard error where a death test looks. Without stdio, whose locks a fault may hold.
void Print(const char* who, const tagExceptionInfo& info) {
    char line[200];
    const int length = std::snprintf(
        line, sizeof line, "%s %08X %s context=%d data=%p\n", who, static_cast<unsigned>(info.Code),
        info.Continuable ? "continuable" : "final",
        info.Context != nullptr && reinterpret_cast<const void*>(info.Context->InstructionPointer) == info.Address,
        info.Data);
    static_cast<void>(!write(STDERR_FILENO, line, static_cast<std::size_t>(length)));
}

void PrintFilter(const tagExceptionInfo& info) { Print("filter", info); }
void PrintTranslator(const tagExceptionInfo& info) { Print("translator", info); }
void PrintFilterAndEnd(const tagExceptionInfo& info) {
    Print("filter", info);
    TerminateProcess(7);
}

// Not on the first page: that would be a null pointer, which sanitizers report before the processor does.
char* MakeUntouchablePage() {
    return static_cast<char*>(mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
}

void TouchUntouchablePage() { *const_cast<volatile char*>(MakeUntouchablePage()) = 1; }

void DivideByZero() {
#if defined(__x86_64__)
    asm volatile("xorl %%ecx, %%ecx\n\txorl %%edx, %%edx\n\tmovl $1, %%eax\n\tidivl %%ecx" ::: "eax", "ecx", "edx");
#else
    raise(SIGFPE);
#endif
}

void ExecuteIllegalInstruction() {
#if defined(__x86_64__)
    asm volatile("ud2");
#else
    raise(SIGILL);
#endif
}

// Each frame is larger than the guard needs and is used after the call, so that no compiler makes a loop of it.
[[gnu::noinline]] int UseUpStack(int depth) {
    volatile char block[4096] = {};
    block[depth % 4096] = 1;
    return depth < 0 ? 0 : UseUpStack(depth + 1) + block[0];
}

TEST(CrashHooksDeathTest, FilterSeesAnAccessFault) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            TouchUntouchablePage();
        },
        testing::ExitedWithCode(7), "filter C0000005 continuable context=1 data=0x");
}

TEST(CrashHooksDeathTest, FilterSeesADivisionByZero) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            DivideByZero();
        },
        testing::ExitedWithCode(7), "filter C0000094 continuable context=1 data=\\(nil\\)");
}

TEST(CrashHooksDeathTest, FilterSeesAnIllegalInstruction) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            ExecuteIllegalInstruction();
        },
        testing::ExitedWithCode(7), "filter C000001D continuable context=1");
}

TEST(CrashHooksDeathTest, FilterSeesABusError) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            raise(SIGBUS);
        },
        testing::ExitedWithCode(7), "filter C0000006 continuable context=1 data=\\(nil\\)");
}

TEST(CrashHooksDeathTest, FilterSeesAnUncaughtException) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            std::thread([] { throw std::runtime_error("nobody catches"); }).join();
        },
        testing::ExitedWithCode(7), "filter E06D7363 final context=1");
}

TEST(CrashHooksDeathTest, FilterRunsEvenWhenTheStackIsUsedUp) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            UseUpStack(1);
        },
        testing::ExitedWithCode(7), "filter C0000005");
}

TEST(CrashHooksDeathTest, FilterRunsOnAThreadThatSetNothing) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            std::thread(TouchUntouchablePage).join();
        },
        testing::ExitedWithCode(7), "filter C0000005");
}

TEST(CrashHooksDeathTest, TranslatorComesBeforeTheFilter) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            SetExceptionTranslator(PrintTranslator);
            TouchUntouchablePage();
        },
        testing::ExitedWithCode(7), "translator C0000005 continuable context=1.*\n?filter C0000005");
}

TEST(CrashHooksDeathTest, TranslatorOfAnotherThreadIsNotCalled) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            SetExceptionTranslator([](const tagExceptionInfo&) { TerminateProcess(8); });
            std::thread(TouchUntouchablePage).join();
        },
        testing::ExitedWithCode(7), "^filter C0000005");
}

TEST(CrashHooksDeathTest, TranslatorAloneIsEnough) {
    EXPECT_EXIT(
        {
            std::thread([] {
                SetExceptionTranslator([](const tagExceptionInfo& info) {
                    PrintTranslator(info);
                    TerminateProcess(9);
                });
                TouchUntouchablePage();
            }).join();
        },
        testing::ExitedWithCode(9), "translator C0000005");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(CrashHooksDeathTest, ProcessDiesOfTheSignalWhenTheFilterReturns) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilter);
            TouchUntouchablePage();
        },
        testing::KilledBySignal(SIGSEGV), "filter C0000005");
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilter);
            raise(SIGILL);
        },
        testing::KilledBySignal(SIGILL), "filter C000001D");
}

TEST(CrashHooksDeathTest, FaultInsideTheFilterEndsTheProcess) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter([](const tagExceptionInfo& info) {
                PrintFilter(info);
                TouchUntouchablePage();
            });
            TouchUntouchablePage();
        },
        testing::KilledBySignal(SIGSEGV), "^filter C0000005[^\n]*\n$");
}
#endif

TEST(CrashHooksDeathTest, UncaughtExceptionAbortsWhenTheFilterReturns) {
    EXPECT_EXIT(
        {
            SetUnhandledExceptionFilter(PrintFilter);
            std::thread([] { throw 5; }).join();
        },
        testing::KilledBySignal(SIGABRT), "filter E06D7363 final");
}

void EarlierHandler(int) { TerminateProcess(11); }

void EarlierActionHandler(int, siginfo_t* info, void*) { TerminateProcess(info->si_addr != nullptr ? 12 : 13); }

TEST(CrashHooksDeathTest, EarlierSignalHandlerRunsAfterTheFilter) {
    EXPECT_EXIT(
        {
            std::signal(SIGSEGV, EarlierHandler);
            SetUnhandledExceptionFilter(PrintFilter);
            TouchUntouchablePage();
        },
        testing::ExitedWithCode(11), "filter C0000005");
    EXPECT_EXIT(
        {
            struct sigaction action {};
            action.sa_sigaction = EarlierActionHandler;
            action.sa_flags = SA_SIGINFO;
            sigaction(SIGSEGV, &action, nullptr);
            SetUnhandledExceptionFilter(PrintFilter);
            TouchUntouchablePage();
        },
        testing::ExitedWithCode(12), "filter C0000005");
}

TEST(CrashHooksDeathTest, EarlierTerminateHandlerRunsAfterTheFilter) {
    EXPECT_EXIT(
        {
            std::set_terminate([] { TerminateProcess(14); });
            SetUnhandledExceptionFilter(PrintFilter);
            std::thread([] { throw 5; }).join();
        },
        testing::ExitedWithCode(14), "filter E06D7363");
}

bool HandlesFaults() {
    struct sigaction action {};
    sigaction(SIGFPE, nullptr, &action);
    return (action.sa_flags & SA_SIGINFO) != 0;
}

TEST(CrashHooks, TakeTheSystemsHandlersOnlyWhileUsed) {
    const bool before = HandlesFaults();
    const std::terminate_handler terminate = std::get_terminate();
    EXPECT_EQ(SetUnhandledExceptionFilter(PrintFilter), nullptr);
    EXPECT_TRUE(HandlesFaults());
    EXPECT_NE(std::get_terminate(), terminate);
    EXPECT_EQ(SetUnhandledExceptionFilter(PrintFilterAndEnd), PrintFilter);
    EXPECT_EQ(SetExceptionTranslator(PrintTranslator), nullptr);
    EXPECT_EQ(SetUnhandledExceptionFilter(nullptr), PrintFilterAndEnd);
    EXPECT_TRUE(HandlesFaults());
    EXPECT_EQ(SetExceptionTranslator(nullptr), PrintTranslator);
    EXPECT_EQ(HandlesFaults(), before);
    EXPECT_EQ(std::get_terminate(), terminate);
}

TEST(CrashHooks, GiveBackWhatAnEndedThreadLeft) {
    const bool before = HandlesFaults();
    std::thread([] {
        SetExceptionTranslator(PrintTranslator);
        EXPECT_TRUE(HandlesFaults());
    }).join();
    EXPECT_EQ(HandlesFaults(), before);
}

TEST(CrashHooksDeathTest, SurviveAHandlerThatCameLaterAndChains) {
    EXPECT_EXIT(
        {
            static struct sigaction ours {};
            SetUnhandledExceptionFilter(PrintFilter);
            struct sigaction later {};
            later.sa_handler = [](int) { TerminateProcess(15); };
            sigaction(SIGFPE, &later, &ours);
            SetUnhandledExceptionFilter(nullptr);
            SetUnhandledExceptionFilter(PrintFilterAndEnd);
            // The later handler was not pushed aside; what it would chain to is still the filter.
            struct sigaction present {};
            sigaction(SIGFPE, nullptr, &present);
            if (present.sa_handler != later.sa_handler)
                TerminateProcess(16);
            sigaction(SIGFPE, &ours, nullptr);
            DivideByZero();
        },
        testing::ExitedWithCode(7), "filter C0000094");
}

tagInvalidParameter g_Reported{};

TEST(InvalidParameter, IsToldToTheHandlerThatThenReturns) {
    const InvalidParameterHandler handler = [](const tagInvalidParameter& report) { g_Reported = report; };
    EXPECT_EQ(SetInvalidParameterHandler(handler), nullptr);
    ReportInvalidParameter(L"too long", L"Format");
    EXPECT_STREQ(g_Reported.Expression, L"too long");
    EXPECT_STREQ(g_Reported.Function, L"Format");
    EXPECT_NE(g_Reported.Address, nullptr);
    EXPECT_EQ(SetInvalidParameterHandler(nullptr), handler);
    g_Reported = {};
    ReportInvalidParameter(L"too long", L"Format");
    EXPECT_EQ(g_Reported.Expression, nullptr);
}

int g_Breaks = 0;

TEST(DebugBreak, CallsItsHandlerAndGoesOn) {
    const BreakHandler handler = [] { ++g_Breaks; };
    EXPECT_EQ(SetBreakHandler(handler), nullptr);
    g_Breaks = 0;
    DebugBreak();
    EXPECT_EQ(g_Breaks, 1);
    EXPECT_EQ(SetBreakHandler(nullptr), handler);
}

TEST(DebugBreakDeathTest, TrapsWithoutAHandler) { EXPECT_EXIT(DebugBreak(), testing::KilledBySignal(SIGTRAP), ""); }

TEST(TerminateProcessDeathTest, EndsAtOnceWithTheLowByteOfItsCode) {
    EXPECT_EXIT(TerminateProcess(-1), testing::ExitedWithCode(255), "");
    EXPECT_EXIT(TerminateProcess(static_cast<int>(0xC000000D)), testing::ExitedWithCode(13), "");
}

TEST(ThreadContext, IsTheCallersPlace) {
    const CThreadContext context = CaptureThreadContext();
    const auto here = reinterpret_cast<std::uintptr_t>(&context);
    EXPECT_NE(context.InstructionPointer, 0U);
    EXPECT_LT(context.StackPointer > here ? context.StackPointer - here : here - context.StackPointer, 0x10000U);
    EXPECT_GT(context.RegisterCount, 16U);
    EXPECT_LE(context.RegisterCount, context.Registers.size());
}

TEST(FloatingPoint, IsResetToItsStartingState) {
    std::fesetround(FE_UPWARD);
    std::feraiseexcept(FE_DIVBYZERO);
    ResetFloatingPoint();
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
}

} // namespace
} // namespace platform
