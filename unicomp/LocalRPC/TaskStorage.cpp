#include "TaskStorage.h"

#include <mutex>
#include <thread>

namespace LocalRPC::details::utils {

void CSpinLock::lock() noexcept {
    for (LONG free = 1; !m_Word.compare_exchange_weak(free, 0, std::memory_order_acquire); free = 1)
        std::this_thread::yield();
}

CTaskStorage::~CTaskStorage() { CTaskStorage::Clear(); }

void CTaskStorage::Push(const CTaskPtr& task) {
    const std::scoped_lock lock(m_Lock);
    m_Tasks.push_back(task);
}

void CTaskStorage::Pop(CTaskPtr& out) {
    CTaskPtr old;
    out.swap(old); // its end, if it is the last pointer, is not for this lock
    const std::scoped_lock lock(m_Lock);
    if (m_Tasks.empty())
        return;
    out.swap(m_Tasks.front());
    m_Tasks.pop_front();
}

void CTaskStorage::Clear() { static_cast<void>(Take()); }

CTaskQueue CTaskStorage::Take() {
    CTaskQueue tasks;
    {
        const std::scoped_lock lock(m_Lock);
        tasks.swap(m_Tasks);
    }
    for (const CTaskPtr& task : tasks)
        task->Drop();
    return tasks;
}

} // namespace LocalRPC::details::utils
