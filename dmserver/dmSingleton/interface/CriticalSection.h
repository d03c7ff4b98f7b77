// A lock that its owner may enter again. Threads: any.
#pragma once

#include <mutex>

namespace dm {

class CCriticalSection {
public:
    CCriticalSection() = default;
    virtual ~CCriticalSection() = default;
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Enter() { m_Mutex.lock(); }
    // Whether it could be entered without waiting; then it is.
    bool TryEnter() { return m_Mutex.try_lock(); }
    void Leave() { m_Mutex.unlock(); }

    // The names that std::lock_guard wants.
    void lock() { Enter(); }
    void unlock() { Leave(); }

private:
    std::recursive_mutex m_Mutex;
};

} // namespace dm
