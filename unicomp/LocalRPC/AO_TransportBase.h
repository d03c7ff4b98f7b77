#pragma once
// What the transports share.

#include "SpinRWLock.h"
#include "TaskStorage.h"
#include "platform/wait.h"
#include "unicomp/LocalRPC/interface/AO_Transport.h"

#include <mutex>

namespace LocalRPC::details {

class CAOTransportBaseBase : public IAOTransport, private boost::noncopyable {
public:
    [[nodiscard]] bool IsRunning() const override { return m_Running.load() != 0; }
    [[nodiscard]] bool IsBlocked() const override { return m_Blocked.load() != 0; }
    void Unblock() override { m_Blocked.exchange(0); }

    // Whatever the task throws ends here, with an assertion.
    static void execute_task(const CTaskPtr& task);

protected:
    std::atomic<LONG> m_Running{0};
    std::atomic<LONG> m_Blocked{0};
    CSpinRWLock m_PostLock;
};

class CAOTransportBase : public CAOTransportBaseBase {
public:
    void Block(bool clear) override;
    bool Stop(bool clear, bool block) override;
    void ClearQueue() override;

protected:
    explicit CAOTransportBase(utils::ITaskStorage* storage) noexcept : m_Storage(storage) {}

    mutable std::recursive_mutex m_Lock;
    utils::ITaskStorage* m_Storage; // a member of the derived class
};

} // namespace LocalRPC::details
