#pragma once
// A meeting point of a test's threads.

#include <condition_variable>
#include <mutex>

namespace platform_tests {

// Opened once; any number may pass, and may destroy it then.
class CGate {
public:
    void Open() {
        const std::scoped_lock lock(m_Lock);
        m_IsOpen = true;
        m_Opened.notify_all();
    }
    void Pass() {
        std::unique_lock lock(m_Lock);
        m_Opened.wait(lock, [this] { return m_IsOpen; });
    }

private:
    std::mutex m_Lock;
    std::condition_variable m_Opened;
    bool m_IsOpen = false; // guarded by m_Lock
};

} // namespace platform_tests
