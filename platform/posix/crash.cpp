#include "platform/crash.h"

#include "platform/last_error.h"
#include "platform/posix/alternate_stack.h"
#include "platform/posix/crash_fault.h"

#include <array>
#include <atomic>
#include <cfenv>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr DWORD UncaughtExceptionCode = 0xE06D7363;

std::atomic<InvalidParameterHandler> g_InvalidParameterHandler{nullptr};
std::atomic<BreakHandler> g_BreakHandler{nullptr};
std::atomic<ExceptionFilter> g_Filter{nullptr};
// Read in signal handlers, where the lazy allocation of the usual model must not happen.
[[gnu::tls_model("initial-exec")]] thread_local ExceptionTranslator t_Translator = nullptr;
[[gnu::tls_model("initial-exec")]] thread_local bool t_InFilter = false;

void OnFault(int signal, siginfo_t* info, void* native);
[[noreturn]] void OnTerminate();

// The system's handlers, taken over while somebody uses them.
class CSystemHandlers {
public:
    static constexpr std::array Signals{SIGSEGV, SIGBUS, SIGFPE, SIGILL};

    void AddUser() {
        const std::lock_guard lock(m_Mutex);
        if (m_Users++ > 0)
            return;
        for (std::size_t i = 0; i < Signals.size(); ++i)
            Take(i);
        if (!m_TerminateTaken)
            m_PreviousTerminate = std::set_terminate(OnTerminate);
        m_TerminateTaken = true;
    }
    void RemoveUser() {
        const std::lock_guard lock(m_Mutex);
        if (--m_Users > 0)
            return;
        for (std::size_t i = 0; i < Signals.size(); ++i)
            GiveBack(i);
        if (std::get_terminate() != OnTerminate)
            return;
        std::set_terminate(m_PreviousTerminate);
        m_TerminateTaken = false;
    }
    [[nodiscard]] const struct sigaction& Previous(int signal) const noexcept {
        std::size_t i = 0;
        while (Signals[i] != signal)
            ++i;
        return m_Previous[i];
    }
    [[nodiscard]] std::terminate_handler PreviousTerminate() const noexcept { return m_PreviousTerminate; }

private:
    void Take(std::size_t i) {
        if (m_Taken[i])
            return;
        struct sigaction ours {};
        ours.sa_sigaction = OnFault;
        ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
        // A fault within the handling of a fault then ends the process instead of going round.
        for (const int signal : Signals)
            sigaddset(&ours.sa_mask, signal);
        // Asked for first: the handler may have to chain as soon as it is in place.
        sigaction(Signals[i], nullptr, &m_Previous[i]);
        m_Taken[i] = sigaction(Signals[i], &ours, nullptr) == 0;
    }
    // Who came after us may chain to us, so that our place among the handlers must stay.
    void GiveBack(std::size_t i) {
        struct sigaction present {};
        sigaction(Signals[i], nullptr, &present);
        if ((present.sa_flags & SA_SIGINFO) == 0 || present.sa_sigaction != OnFault)
            return;
        sigaction(Signals[i], &m_Previous[i], nullptr);
        m_Taken[i] = false;
    }

    std::mutex m_Mutex;
    // Guarded by m_Mutex; handlers read the previous ones without it, after they were set and before they change.
    int m_Users = 0;
    std::array<bool, Signals.size()> m_Taken{};
    std::array<struct sigaction, Signals.size()> m_Previous{};
    bool m_TerminateTaken = false;
    std::terminate_handler m_PreviousTerminate = nullptr;
};

constinit CSystemHandlers g_SystemHandlers;

void RunFilter(const tagExceptionInfo& info) {
    const ExceptionFilter filter = g_Filter.load();
    if (filter == nullptr || t_InFilter)
        return;
    t_InFilter = true;
    filter(info);
    t_InFilter = false;
}

void DieOf(int signal) {
    ::signal(signal, SIG_DFL);
    // Blocked here; it strikes when the handler returns, with the registers of the fault.
    raise(signal);
}

void RunPreviousHandler(int signal, siginfo_t* info, void* native) {
    const struct sigaction& previous = g_SystemHandlers.Previous(signal);
    const bool wasSent = info->si_code <= 0;
    if ((previous.sa_flags & SA_SIGINFO) != 0)
        previous.sa_sigaction(signal, info, native);
    else if (previous.sa_handler == SIG_IGN && wasSent)
        return;
    else if (previous.sa_handler == SIG_DFL || previous.sa_handler == SIG_IGN)
        DieOf(signal);
    else
        previous.sa_handler(signal);
}

void OnFault(int signal, siginfo_t* info, void* native) {
    const CLastErrorKeeper keeper;
    const CThreadContext context = MakeThreadContext(*static_cast<const ucontext_t*>(native));
    const bool touchesMemory = signal == SIGSEGV || signal == SIGBUS;
    const tagExceptionInfo fault{.Code = CodeOfFault(signal, info->si_code),
                                 .Address = reinterpret_cast<const void*>(context.InstructionPointer),
                                 .Data = touchesMemory && info->si_code > 0 ? info->si_addr : nullptr,
                                 .Continuable = true,
                                 .Context = &context};
    if (t_Translator != nullptr)
        t_Translator(fault);
    RunFilter(fault);
    RunPreviousHandler(signal, info, native);
}

void OnTerminate() {
    const CThreadContext context = CaptureThreadContext();
    RunFilter({.Code = UncaughtExceptionCode,
               .Address = reinterpret_cast<const void*>(context.InstructionPointer),
               .Data = nullptr,
               .Continuable = false,
               .Context = &context});
    if (const std::terminate_handler previous = g_SystemHandlers.PreviousTerminate())
        previous();
    std::abort();
}

// The share of one thread's translator in the handlers, given up at the latest when the thread ends.
class CTranslatorUse {
public:
    CTranslatorUse() = default;
    ~CTranslatorUse() {
        t_Translator = nullptr;
        Set(false);
    }
    CTranslatorUse(const CTranslatorUse&) = delete;
    CTranslatorUse& operator=(const CTranslatorUse&) = delete;

    void Set(bool used) {
        if (used == m_Used)
            return;
        m_Used = used;
        if (used)
            g_SystemHandlers.AddUser();
        else
            g_SystemHandlers.RemoveUser();
    }

private:
    bool m_Used = false;
};

} // namespace

[[gnu::noinline]] CThreadContext CaptureThreadContext() noexcept {
    ucontext_t native;
    getcontext(&native);
    CThreadContext context = MakeThreadContext(native);
    // The caller's place, not this function's, which is gone by the time anybody looks.
    context.InstructionPointer = reinterpret_cast<std::uintptr_t>(__builtin_return_address(0));
    return context;
}

InvalidParameterHandler SetInvalidParameterHandler(InvalidParameterHandler handler) noexcept {
    return g_InvalidParameterHandler.exchange(handler);
}

ExceptionFilter SetUnhandledExceptionFilter(ExceptionFilter filter) {
    // One setter at a time, so that the count of users and the filter agree.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    if (filter != nullptr)
        EnsureAlternateStack();
    const ExceptionFilter previous = g_Filter.exchange(filter);
    if (filter != nullptr && previous == nullptr)
        g_SystemHandlers.AddUser();
    if (filter == nullptr && previous != nullptr)
        g_SystemHandlers.RemoveUser();
    return previous;
}

ExceptionTranslator SetExceptionTranslator(ExceptionTranslator translator) {
    thread_local CTranslatorUse use;
    if (translator != nullptr)
        EnsureAlternateStack();
    const ExceptionTranslator previous = std::exchange(t_Translator, translator);
    use.Set(translator != nullptr);
    return previous;
}

[[gnu::noinline]] void ReportInvalidParameter(const wchar_t* expression, const wchar_t* function) {
    const InvalidParameterHandler handler = g_InvalidParameterHandler.load();
    if (handler != nullptr)
        handler({.Expression = expression, .Function = function, .Address = __builtin_return_address(0)});
}

void DebugBreak() {
    if (const BreakHandler handler = g_BreakHandler.load())
        handler();
    else
        raise(SIGTRAP);
}

BreakHandler SetBreakHandler(BreakHandler handler) noexcept { return g_BreakHandler.exchange(handler); }

void TerminateProcess(int code) noexcept { _exit(code); }

void ResetFloatingPoint() noexcept { std::fesetenv(FE_DFL_ENV); }

} // namespace platform
