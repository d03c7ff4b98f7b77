#include "diagnostics/interface/CrashCatchers.h"

#include "RecordWriter.h"
#include "WithoutException.h"
#include "platform/last_error.h"
#include "platform/thread.h"

#include <map>
#include <memory>
#include <mutex>

namespace BugSlayerUtil {

namespace {

constexpr DWORD FirstFloatCode = 0xC000008D;
constexpr DWORD LastFloatCode = 0xC0000093;

enum class EExceptionType : LONG { Other = 0, Unhandled = 1 };

HRESULT SubmitCrash(const platform::tagExceptionInfo& info, EExceptionType type) {
    const DWORD lastError = platform::GetLastError();
    BugSlayerClient& client = GetClient();
    if (!client.Ready())
        return E_FAIL;
    return WithoutException([&] {
        const auto root = client.Object.Get();
        CRecordWriter record(root.Get(), RecordType::Exception);
        record.Text(Name::ExceptionMark.Get(), L"");
        record.Number(Name::ExceptionType.Get(), static_cast<LONG>(type));
        record.Number(Name::ErrorCode.Get(), static_cast<LONG>(lastError));
        record.Number(Name::ThreadId.Get(), static_cast<LONG>(platform::CurrentThreadId()));
        record.Number(Name::Code.Get(), static_cast<LONG>(info.Code));
        record.Flag(Name::Continuable.Get(), info.Continuable);
        record.Pointer(Name::Address.Get(), info.Address);
        record.Pointer(Name::ExceptionPointers.Get(), &info);
        return record.Process();
    });
}

// Keeps the last error for who is called next.
void ReportCrash(const platform::tagExceptionInfo& info, int exitCode) {
    const platform::CLastErrorKeeper keeper;
    GetClient().ApplyAction(SubmitCrash(info, EExceptionType::Other), exitCode);
}

// A catcher of the process, with what it replaced. `Set` is the platform's setter, `Caught` goes in its place.
template <class Handler, Handler (*Set)(Handler), Handler Caught>
class CProcessCatcher {
public:
    void Install() {
        const std::lock_guard lock(m_Lock);
        if (m_Count++ == 0)
            m_Previous = Set(Caught);
    }
    void Remove() {
        const std::lock_guard lock(m_Lock);
        if (m_Count == 0 || --m_Count > 0)
            return;
        // Who came after this catcher and has gone again would otherwise be put back in place by it.
        if (const Handler present = Set(m_Previous); present != Caught)
            Set(present);
    }
    [[nodiscard]] LONG Count() const {
        const std::lock_guard lock(m_Lock);
        return m_Count;
    }
    [[nodiscard]] Handler Previous() const {
        const std::lock_guard lock(m_Lock);
        return m_Previous;
    }

private:
    mutable std::mutex m_Lock;
    LONG m_Count = 0;             // guarded by m_Lock
    Handler m_Previous = nullptr; // guarded by m_Lock
};

void OnInvalidParameter(const platform::tagInvalidParameter& parameter);
void OnUnhandledException(const platform::tagExceptionInfo& info);
void OnStructuredException(const platform::tagExceptionInfo& info);

platform::InvalidParameterHandler SetInvalidParameter(platform::InvalidParameterHandler handler) {
    return platform::SetInvalidParameterHandler(handler);
}

using CInvalidParameter =
    CProcessCatcher<platform::InvalidParameterHandler, SetInvalidParameter, OnInvalidParameter>;
using CUnhandledException =
    CProcessCatcher<platform::ExceptionFilter, platform::SetUnhandledExceptionFilter, OnUnhandledException>;

// What the structured-exception catcher replaced, by thread.
class CTranslators {
public:
    void Install() {
        const std::lock_guard lock(m_Lock);
        const platform::ExceptionTranslator previous = platform::SetExceptionTranslator(OnStructuredException);
        // A thread that ended without removing it may have had the number of this one.
        tagThread& thread = m_Threads[platform::CurrentThreadId()];
        if (previous == OnStructuredException)
            ++thread.Count;
        else
            thread = {.Previous = previous, .Count = 1};
    }
    void Remove() {
        const std::lock_guard lock(m_Lock);
        const auto found = m_Threads.find(platform::CurrentThreadId());
        if (found == m_Threads.end() || --found->second.Count > 0)
            return;
        const platform::ExceptionTranslator present = platform::SetExceptionTranslator(found->second.Previous);
        if (present != OnStructuredException)
            platform::SetExceptionTranslator(present);
        m_Threads.erase(found);
    }
    [[nodiscard]] LONG Count() const {
        const std::lock_guard lock(m_Lock);
        LONG count = 0;
        for (const auto& [id, thread] : m_Threads)
            count += thread.Count;
        return count;
    }
    [[nodiscard]] platform::ExceptionTranslator Previous() const {
        const std::lock_guard lock(m_Lock);
        const auto found = m_Threads.find(platform::CurrentThreadId());
        return found == m_Threads.end() ? nullptr : found->second.Previous;
    }

private:
    struct tagThread {
        platform::ExceptionTranslator Previous = nullptr;
        LONG Count = 0;
    };

    mutable std::mutex m_Lock;
    std::map<DWORD, tagThread> m_Threads; // guarded by m_Lock
};

struct tagCatchers {
    CInvalidParameter InvalidParameter;
    CUnhandledException UnhandledException;
    CTranslators Translators;
};

// A crash may come after all static objects are gone.
tagCatchers& Catchers() {
    static tagCatchers& catchers = *std::make_unique<tagCatchers>().release();
    return catchers;
}

void OnInvalidParameter(const platform::tagInvalidParameter& parameter) {
    const platform::CThreadContext context = platform::CaptureThreadContext();
    ReportCrash({.Code = InvalidParameterCode,
                 .Address = parameter.Address,
                 .Data = nullptr,
                 .Continuable = true,
                 .Context = &context},
                static_cast<int>(InvalidParameterCode));
    if (const auto previous = Catchers().InvalidParameter.Previous())
        previous(parameter);
}

void OnUnhandledException(const platform::tagExceptionInfo& info) {
    SubmitCrash(info, EExceptionType::Unhandled);
    GetClient().Terminate();
    if (const auto previous = Catchers().UnhandledException.Previous())
        previous(info);
}

// A C++ exception on its way to its handler, and a debugger's own.
bool MustPassOn(DWORD code) { return code == 0xE06D7363 || code == 0x80000003 || code == 0x80000004; }

void OnStructuredException(const platform::tagExceptionInfo& info) {
    if (!MustPassOn(info.Code)) {
        if (info.Code >= FirstFloatCode && info.Code <= LastFloatCode)
            platform::ResetFloatingPoint();
        ReportCrash(info, -1);
    }
    if (const auto previous = Catchers().Translators.Previous())
        previous(info);
}

template <ECrashCatcher Kind>
auto& CatcherOf() {
    if constexpr (Kind == ECrashCatcher::InvalidParameter)
        return Catchers().InvalidParameter;
    else if constexpr (Kind == ECrashCatcher::UnhandledException)
        return Catchers().UnhandledException;
    else
        return Catchers().Translators;
}

} // namespace

template <ECrashCatcher Kind>
void CCrashCatcher<Kind>::Install() {
    CatcherOf<Kind>().Install();
}

template <ECrashCatcher Kind>
void CCrashCatcher<Kind>::Remove() {
    CatcherOf<Kind>().Remove();
}

template <ECrashCatcher Kind>
LONG CCrashCatcher<Kind>::InstallCount() {
    return CatcherOf<Kind>().Count();
}

template class CCrashCatcher<ECrashCatcher::InvalidParameter>;
template class CCrashCatcher<ECrashCatcher::UnhandledException>;
template class CCrashCatcher<ECrashCatcher::StructuredException>;

CThreadCrashCatchers::CThreadCrashCatchers() {
    CInvalidParameterCatcher::Install();
    CUnhandledExceptionCatcher::Install();
    CStructuredExceptionCatcher::Install();
}

CThreadCrashCatchers::~CThreadCrashCatchers() {
    CStructuredExceptionCatcher::Remove();
    CUnhandledExceptionCatcher::Remove();
    CInvalidParameterCatcher::Remove();
}

} // namespace BugSlayerUtil
