#pragma once
// Readers side by side, a writer alone. A reader that finds no writer pays one interlocked operation. Not recursive
// for writers; a thread must not write while it reads.

#include "platform/com/types.h"

#include <atomic>
#include <mutex>

namespace LocalRPC::details {

class CSpinRWLock {
public:
    CSpinRWLock() = default;
    CSpinRWLock(const CSpinRWLock&) = delete;
    CSpinRWLock& operator=(const CSpinRWLock&) = delete;

    void lock();
    void unlock();
    void lock_shared();
    void unlock_shared() noexcept { m_Word.fetch_sub(1); }

private:
    // The readers inside. Far below 0 with a writer inside: what readers add then in vain, its end wipes away.
    std::atomic<LONG> m_Word{0};
    std::mutex m_Writer;
};

} // namespace LocalRPC::details
