#pragma once
// What the system knows of the calling thread, and threads that a component starts itself.

#include "platform/wait.h"

#include <cstddef>
#include <memory>
#include <optional>

namespace platform {

// Unique among the threads that live at the moment, never 0; the number that a debugger shows. Cheap to ask for.
[[nodiscard]] DWORD CurrentThreadId() noexcept;

// A started thread. Its owner waits for its end, abandons it, or closes the handle and lets it run. One thread at a
// time may use a handle. What was done on the thread is seen behind the Wait() that met its end.
class CThreadHandle {
public:
    using Function = unsigned (*)(void* argument);

    // The stack size in bytes is rounded up to what the system takes; 0 stands for the system's default. The
    // argument must live as long as the function uses it. Nothing when the system refuses: GetLastError() says why.
    [[nodiscard]] static std::optional<CThreadHandle> Start(std::size_t stackSize, Function function,
                                                            void* argument);

    // Closed.
    CThreadHandle() noexcept;
    CThreadHandle(CThreadHandle&&) noexcept;
    CThreadHandle& operator=(CThreadHandle&&) noexcept;
    ~CThreadHandle();

    [[nodiscard]] bool IsOpen() const noexcept { return m_State != nullptr; }
    [[nodiscard]] DWORD ThreadId() const noexcept;

    // WaitSignalled when the thread has ended, with all that it keeps for itself; WaitTimeout; WaitFailed on a
    // closed handle and on the thread itself.
    [[nodiscard]] DWORD Wait(DWORD timeout) noexcept;

    // No thread can be killed safely: it may hold a lock, or be halfway through a change. So it is abandoned. Every
    // wait on this handle meets its end from now on, its exit code is the given one, and nobody waits for it any
    // more; it goes on until it returns by itself, or the process ends. What it still uses must not be freed under
    // it. False on a closed handle.
    bool Terminate(unsigned exitCode) noexcept;
    // What the function returned, or the code given to Terminate; nothing while neither is known.
    [[nodiscard]] std::optional<unsigned> ExitCode() const noexcept;
    // The thread, if it still runs, runs on. False when the handle was closed already.
    bool Close() noexcept;

private:
    struct tagState;
    struct tagStart;
    static void* Run(void* start);

    std::shared_ptr<tagState> m_State; // shared with the thread
};

} // namespace platform
