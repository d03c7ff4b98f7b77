#include "AO_TransportBase.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/com_ptr.h"

namespace LocalRPC {

namespace details {

namespace {

// In place of the count of a transport that is being deleted.
constexpr LONG DeletedCount = static_cast<LONG>(0xC0000001U);

} // namespace

void intrusive_ptr_add_ref(IAOTransport* transport) noexcept { ++transport->m_References; }

void intrusive_ptr_release(IAOTransport* transport) {
    if (--transport->m_References != 0)
        return;
    transport->m_References = DeletedCount;
    delete transport;
}

void CAOTransportBaseBase::execute_task(const CTaskPtr& task) {
    constexpr const wchar_t* Unhandled = L"Unhandled exception occure during execute task.";
    try {
        task->Execute();
    } catch (BugSlayerUtil::IDebugObject* error) {
        // A raised record comes with a reference.
        const auto record = platform::CComPtr<BugSlayerUtil::IDebugObject>::Adopt(error);
        BugSlayerUtil::Assert(false, Unhandled);
    } catch (...) {
        BugSlayerUtil::Assert(false, Unhandled);
    }
}

void CAOTransportBase::Block(bool clear) {
    m_Blocked.exchange(1);
    if (clear)
        ClearQueue();
}

bool CAOTransportBase::Stop(bool clear, bool block) { return StopEx(clear, platform::Infinite, block); }

void CAOTransportBase::ClearQueue() { m_Storage->Clear(); }

} // namespace details

CActiveObject_base::CActiveObject_base(boost::intrusive_ptr<details::IAOTransport> transport) noexcept
    : m_Transport(std::move(transport)) {}

CActiveObject_base::~CActiveObject_base() { m_Transport->Stop(true, false); }

bool CActiveObject_base::Post(const CTaskPtr& task) { return m_Transport->Post(task); }

void CActiveObject_base::Block(bool clear) { m_Transport->Block(clear); }

bool CActiveObject_base::Start() { return m_Transport->Start(); }

bool CActiveObject_base::Stop(bool clear, bool block) { return m_Transport->Stop(clear, block); }

bool CActiveObject_base::StopEx(bool clear, ULONG timeout, bool block) {
    return m_Transport->StopEx(clear, timeout, block);
}

void CActiveObject_base::ClearQueue() { m_Transport->ClearQueue(); }

} // namespace LocalRPC
