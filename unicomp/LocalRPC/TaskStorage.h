#pragma once
// Where tasks wait for their turn: first in, first out. Any thread may call.

#include "unicomp/LocalRPC/interface/Task.h"

#include <deque>

namespace LocalRPC::details::utils {

using CTaskQueue = std::deque<CTaskPtr>;

class ITaskStorage {
public:
    virtual void Push(const CTaskPtr& task) = 0;
    // Null when the queue is empty.
    virtual void Pop(CTaskPtr& out) = 0;
    // After each task, by the transport.
    virtual void OnTaskDone() = 0;
    // Drops what waits.
    virtual void Clear() = 0;
    virtual ~ITaskStorage() = default;
    // Drops what waits, and leaves the destruction of the tasks to the caller, who may hold a lock.
    [[nodiscard]] virtual CTaskQueue Take() = 0;
};

// One word: 1 when free, 0 when held.
class CSpinLock {
public:
    void lock() noexcept;
    void unlock() noexcept { m_Word.exchange(1, std::memory_order_release); }

private:
    std::atomic<LONG> m_Word{1};
};

class CTaskStorage : public ITaskStorage, private boost::noncopyable {
public:
    ~CTaskStorage() override;

    void Push(const CTaskPtr& task) override;
    void Pop(CTaskPtr& out) override;
    void OnTaskDone() override {}
    void Clear() override;
    [[nodiscard]] CTaskQueue Take() override;

private:
    // One queue in two halves, which gives the tasks in the same order as a single one: who pops takes over the
    // newer half whole when the older one is used up, so that he seldom meets who pushes. m_PopLock is locked
    // first, m_Lock is the innermost lock of all, and no task is destroyed under either.
    CTaskQueue m_Oldest; // guarded by m_PopLock
    CSpinLock m_PopLock;
    CTaskQueue m_Tasks; // guarded by m_Lock
    CSpinLock m_Lock;
};

} // namespace LocalRPC::details::utils
