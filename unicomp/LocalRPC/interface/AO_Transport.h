#pragma once
// An active object has a place of execution of its own: callers hand it tasks, and it runs them there one by one,
// in order. The owner keeps the facade, CActiveObject_thread or CActiveObject_WndMsg; the counted transport behind
// it does the work. LocalRPC.h shows how.
//
// Any thread may call. Time-outs are milliseconds, 0xFFFFFFFF for ever.

#include "unicomp/LocalRPC/interface/Task.h"

namespace LocalRPC {

namespace details {

class IAOTransport {
public:
    // False when the task is refused. A null task only wakes.
    virtual bool Post(const CTaskPtr& task) = 0;
    // Refuses tasks from now on, and drops those that wait if `clear` is set.
    virtual void Block(bool clear) = 0;
    virtual void Unblock() = 0;
    virtual bool Start() = 0;
    // StopEx without an end to the wait.
    virtual bool Stop(bool clear, bool block) = 0;
    virtual bool StopEx(const bool clear, const ULONG timeout, const bool block) = 0;
    [[nodiscard]] virtual bool IsRunning() const = 0;
    [[nodiscard]] virtual bool IsBlocked() const = 0;
    virtual void ClearQueue() = 0;
    [[nodiscard]] virtual DWORD GetThreadId() const = 0;
    virtual ~IAOTransport() = default;

    friend void intrusive_ptr_add_ref(IAOTransport* transport) noexcept;
    friend void intrusive_ptr_release(IAOTransport* transport);

protected:
    IAOTransport() = default;

    // Keeps references that come and go within a constructor from deleting what is not yet built.
    class CUnderConstruction {
    public:
        explicit CUnderConstruction(IAOTransport& transport) noexcept : m_Transport(transport) {
            ++m_Transport.m_References;
        }
        ~CUnderConstruction() { --m_Transport.m_References; }
        CUnderConstruction(const CUnderConstruction&) = delete;
        CUnderConstruction& operator=(const CUnderConstruction&) = delete;

    private:
        IAOTransport& m_Transport;
    };

private:
    std::atomic<LONG> m_References{0};
};

} // namespace details

// Stops its transport at the end and drops what is queued. Not copied; the operations are the transport's own.
class CActiveObject_base : private boost::noncopyable {
public:
    virtual ~CActiveObject_base();

    bool Post(const CTaskPtr& task);
    void Block(bool clear);
    bool Start();
    bool Stop(bool clear, bool block);
    bool StopEx(bool clear, ULONG timeout, bool block);
    void ClearQueue();

protected:
    explicit CActiveObject_base(boost::intrusive_ptr<details::IAOTransport> transport) noexcept;

private:
    boost::intrusive_ptr<details::IAOTransport> m_Transport;
};

} // namespace LocalRPC
