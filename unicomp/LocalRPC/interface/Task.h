#pragma once
// A task: a bound function that is handed to another thread and run there once. TaskFactory.h makes them.

#include "platform/com/types.h"

#include <boost/core/noncopyable.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <atomic>
#include <stdexcept>
#include <string>

namespace LocalRPC {

// What the active objects throw; what() is UTF-8.
class local_rpc_exception : public std::runtime_error {
public:
    explicit local_rpc_exception(const std::string& text) : std::runtime_error(text) {}
};

// Counted from 0; whoever drops the last reference deletes it. Any thread may call.
class ITask {
public:
    // Both answer the new count.
    virtual LONG AddRef() = 0;
    virtual LONG Release() = 0;
    // Runs the bound call, the first time; throws what it throws.
    virtual void Execute() = 0;
    // Blocks until the task has run. Milliseconds; flags are CSyncTaskEvent's. Answers platform::WaitSignalled,
    // platform::WaitTimeout, platform::WaitAbandoned when the task was dropped, platform::WaitFailed.
    virtual DWORD Wait(ULONG timeout, ULONG flags) = 0;
    [[nodiscard]] virtual bool IsSync() const = 0;
    // Milliseconds, round and round in 32 bits.
    [[nodiscard]] virtual DWORD GetCreationTick() const = 0;
    virtual ~ITask() = default;
    // The queue gives the task up: a task that has not begun never runs, and who waits for it is released.
    virtual void Drop() noexcept = 0;
};

using CTaskPtr = boost::intrusive_ptr<ITask>;

inline void intrusive_ptr_add_ref(ITask* task) { task->AddRef(); }
inline void intrusive_ptr_release(ITask* task) { task->Release(); }

class CTaskCounter : public ITask, private boost::noncopyable {
public:
    LONG AddRef() override { return m_Count.fetch_add(1, std::memory_order_relaxed) + 1; }
    LONG Release() override {
        const LONG count = m_Count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (count == 0)
            delete this;
        return count;
    }

private:
    std::atomic<LONG> m_Count{0};
};

// The place where a result would live; there is only the form without one.
template <class Result>
class CTaskResult;

template <>
class CTaskResult<void> : public CTaskCounter {};

} // namespace LocalRPC
