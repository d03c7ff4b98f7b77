#pragma once
// The wish of the user or of the system that the program end: Ctrl+C on its terminal, or a request to terminate.
//
//     const platform::CInterruptWatch watch;       // on the thread that runs the loop
//     return platform::RunMessageLoop();           // 0 when the program is to end
//
// While a watch lives, a request ends the message loop of the thread that made the watch, once everything posted
// before is dispatched. A second request of the same kind ends the process at once, for a loop that does not come
// back. What was done upon requests before is set aside meanwhile, and put back at the end; so the watch is made
// behind whatever takes requests for itself, as the database engine does when it opens its first database.

#include <atomic>
#include <memory>
#include <thread>

namespace platform {

class CInterruptWatch {
public:
    // The exit code is what the loop will answer with. One watch at a time: std::logic_error for another,
    // std::system_error when the system refuses.
    explicit CInterruptWatch(int exitCode = 0);
    ~CInterruptWatch();
    CInterruptWatch(const CInterruptWatch&) = delete;
    CInterruptWatch& operator=(const CInterruptWatch&) = delete;

    // Any thread may ask. True from before the loop ends.
    [[nodiscard]] bool WasInterrupted() const noexcept { return m_Interrupted; }

private:
    class CTakeOver;

    std::atomic<bool> m_Interrupted{false};
    std::atomic<bool> m_Ending{false};
    std::unique_ptr<CTakeOver> m_TakeOver;
    std::thread m_Thread;
};

} // namespace platform
