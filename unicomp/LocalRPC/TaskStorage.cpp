#include "TaskStorage.h"

#include <algorithm>
#include <iterator>
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
    const std::scoped_lock popLock(m_PopLock);
    if (m_Oldest.empty()) {
        const std::scoped_lock lock(m_Lock);
        m_Oldest.swap(m_Tasks);
    }
    if (m_Oldest.empty())
        return;
    out.swap(m_Oldest.front());
    m_Oldest.pop_front();
}

void CTaskStorage::Clear() { static_cast<void>(Take()); }

CTaskQueue CTaskStorage::Take() {
    CTaskQueue tasks;
    CTaskQueue newest;
    {
        const std::scoped_lock popLock(m_PopLock);
        const std::scoped_lock lock(m_Lock);
        tasks.swap(m_Oldest);
        newest.swap(m_Tasks);
    }
    std::ranges::move(newest, std::back_inserter(tasks));
    for (const CTaskPtr& task : tasks)
        task->Drop();
    return tasks;
}

} // namespace LocalRPC::details::utils
