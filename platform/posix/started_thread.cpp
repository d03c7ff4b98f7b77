#include "platform/thread.h"

#include "platform/posix/deadline.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

namespace platform {

struct CThreadHandle::tagState {
    std::mutex Lock;
    std::condition_variable Changed;
    DWORD ThreadId = 0;               // guarded by Lock; 0 until the thread runs
    bool Returned = false;            // guarded by Lock; what is thread_local may still be on its way out
    std::optional<unsigned> ExitCode; // guarded by Lock
    // Of the owner alone.
    pthread_t Thread{};
    bool Reaped = false; // joined or detached: the system has forgotten the thread
};

struct CThreadHandle::tagStart {
    std::shared_ptr<tagState> State;
    Function Body;
    void* Argument;
};

namespace {

class CAttributes {
public:
    explicit CAttributes(std::size_t stackSize) {
        pthread_attr_init(&m_Attributes);
        if (stackSize == 0)
            return;
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t least = std::max(stackSize, static_cast<std::size_t>(PTHREAD_STACK_MIN));
        pthread_attr_setstacksize(&m_Attributes, (least + page - 1) / page * page);
    }
    ~CAttributes() { pthread_attr_destroy(&m_Attributes); }
    CAttributes(const CAttributes&) = delete;
    CAttributes& operator=(const CAttributes&) = delete;

    [[nodiscard]] const pthread_attr_t* Get() const { return &m_Attributes; }

private:
    pthread_attr_t m_Attributes;
};

// A join knows only the clock that can be set; the steady one is used for all but the last bit of a thread's end.
int JoinWithin(pthread_t thread, CDeadline& deadline) {
    const timespec* remaining = deadline.Remaining();
    if (remaining == nullptr)
        return pthread_join(thread, nullptr);
    constexpr long NanosecondsPerSecond = 1'000'000'000;
    timespec end{};
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += remaining->tv_sec;
    end.tv_nsec += remaining->tv_nsec;
    if (end.tv_nsec >= NanosecondsPerSecond) {
        end.tv_nsec -= NanosecondsPerSecond;
        ++end.tv_sec;
    }
    return pthread_timedjoin_np(thread, nullptr, &end);
}

} // namespace

void* CThreadHandle::Run(void* start) {
    const std::unique_ptr<tagStart> own(static_cast<tagStart*>(start));
    const std::shared_ptr<tagState> state = std::move(own->State);
    {
        const std::scoped_lock lock(state->Lock);
        state->ThreadId = CurrentThreadId();
    }
    state->Changed.notify_all();
    const unsigned code = own->Body(own->Argument);
    {
        const std::scoped_lock lock(state->Lock);
        state->Returned = true;
        if (!state->ExitCode)
            state->ExitCode = code;
    }
    state->Changed.notify_all();
    return nullptr;
}

std::optional<CThreadHandle> CThreadHandle::Start(std::size_t stackSize, Function function, void* argument) {
    CThreadHandle handle;
    handle.m_State = std::make_shared<tagState>();
    auto start = std::make_unique<tagStart>(tagStart{handle.m_State, function, argument});
    const CAttributes attributes(stackSize);
    const int error = pthread_create(&handle.m_State->Thread, attributes.Get(), Run, start.get());
    if (error != 0) {
        handle.m_State.reset();
        errno = error;
        return std::nullopt;
    }
    static_cast<void>(start.release()); // the thread's from here on
    std::unique_lock lock(handle.m_State->Lock);
    handle.m_State->Changed.wait(lock, [&] { return handle.m_State->ThreadId != 0; });
    lock.unlock();
    return handle;
}

CThreadHandle::CThreadHandle() noexcept = default;
CThreadHandle::CThreadHandle(CThreadHandle&&) noexcept = default;
CThreadHandle& CThreadHandle::operator=(CThreadHandle&& other) noexcept {
    m_State.swap(other.m_State);
    return *this;
}
CThreadHandle::~CThreadHandle() {
    if (IsOpen())
        Close();
}

DWORD CThreadHandle::ThreadId() const noexcept {
    if (!m_State)
        return 0;
    const std::scoped_lock lock(m_State->Lock);
    return m_State->ThreadId;
}

DWORD CThreadHandle::Wait(DWORD timeout) noexcept {
    if (m_State && m_State->Reaped)
        return WaitSignalled;
    if (!m_State || pthread_equal(m_State->Thread, pthread_self()) != 0) {
        errno = m_State ? EDEADLK : EBADF;
        return WaitFailed;
    }
    CDeadline deadline(timeout);
    std::unique_lock lock(m_State->Lock);
    const auto returned = [this] { return m_State->Returned; };
    if (deadline.IsInfinite())
        m_State->Changed.wait(lock, returned);
    else if (!m_State->Changed.wait_until(lock, deadline.End(), returned))
        return WaitTimeout;
    lock.unlock();
    m_State->Reaped = JoinWithin(m_State->Thread, deadline) == 0;
    return m_State->Reaped ? WaitSignalled : WaitTimeout;
}

bool CThreadHandle::Terminate(unsigned exitCode) noexcept {
    if (!m_State) {
        errno = EBADF;
        return false;
    }
    {
        const std::scoped_lock lock(m_State->Lock);
        if (!m_State->ExitCode)
            m_State->ExitCode = exitCode;
    }
    if (!m_State->Reaped)
        m_State->Reaped = pthread_detach(m_State->Thread) == 0;
    return m_State->Reaped;
}

std::optional<unsigned> CThreadHandle::ExitCode() const noexcept {
    if (!m_State)
        return std::nullopt;
    const std::scoped_lock lock(m_State->Lock);
    return m_State->ExitCode;
}

bool CThreadHandle::Close() noexcept {
    if (!m_State) {
        errno = EBADF;
        return false;
    }
    if (!m_State->Reaped)
        pthread_detach(m_State->Thread);
    m_State.reset();
    return true;
}

} // namespace platform
