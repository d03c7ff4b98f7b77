#include "SpinRWLock.h"

#include <limits>
#include <thread>

namespace LocalRPC::details {

namespace {

constexpr LONG WriterInside = std::numeric_limits<LONG>::min(); // 0x80000000

} // namespace

void CSpinRWLock::lock() {
    m_Writer.lock();
    for (LONG nobody = 0; !m_Word.compare_exchange_strong(nobody, WriterInside); nobody = 0)
        std::this_thread::yield();
}

void CSpinRWLock::unlock() {
    m_Word.exchange(0);
    m_Writer.unlock();
}

void CSpinRWLock::lock_shared() {
    while (m_Word.fetch_add(1) + 1 <= 0) {
        // Blocks until the writer has gone.
        const std::scoped_lock wait(m_Writer);
    }
}

} // namespace LocalRPC::details
