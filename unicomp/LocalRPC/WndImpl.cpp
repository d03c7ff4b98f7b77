#include "AO_WndMsgPumpTransport.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/last_error.h"
#include "platform/text.h"
#include "platform/thread.h"

namespace LocalRPC::details {

CWndImpl::CWndImpl(CWndMsgPumpBase& pump) : m_Pump(&pump), m_OwnerThread(platform::CurrentThreadId()) {
    if (!Create()) {
        const std::wstring text = platform::SystemErrorText(platform::GetLastError());
        throw local_rpc_exception("can't create transport Window. Last error: " + platform::ToUtf8(text));
    }
}

std::shared_ptr<CWndImpl> CWndImpl::Make(CWndMsgPumpBase& pump) {
    return {new CWndImpl(pump), [](CWndImpl* window) { window->ShutDown(); }};
}

bool CWndImpl::ProcessWindowMessage(DWORD message, std::uintptr_t first, std::uintptr_t second, std::intptr_t&,
                                    DWORD mapId) {
    constexpr std::uintptr_t Timer = 0;
    if (!BugSlayerUtil::Assert(mapId == 0, L"0==dwMsgMapID"))
        return false;
    switch (message) {
    case ProcessMessage:
    case platform::TimerMessage:
        Process();
        return true;
    case SuicideMessage:
        Suicide();
        return true;
    case SetTimerMessage:
        if (first != 0)
            SetTimer(Timer, static_cast<DWORD>(second));
        else
            KillTimer(Timer);
        return true;
    default:
        return false;
    }
}

boost::intrusive_ptr<CWndMsgPumpBase> CWndImpl::Pump() const {
    const std::scoped_lock lock(m_Lock);
    return m_Pump;
}

void CWndImpl::Process() {
    const boost::intrusive_ptr<CWndMsgPumpBase> pump = Pump();
    if (pump && !pump->m_Suspended)
        pump->Process(platform::Infinite);
}

void CWndImpl::Suicide() {
    Handle().Post(SetTimerMessage, 0, 0);
    Process();
    // The end of the stop is the end of the last task, also of one within which this message came.
    if (const boost::intrusive_ptr<CWndMsgPumpBase> pump = Pump())
        pump->DeferReplyToTheEndOfTasks();
    const bool _res = DestroyWindow();
    BugSlayerUtil::Assert(_res, L"_res");
}

// The last holder's release, on any thread.
void CWndImpl::ShutDown() {
    const platform::CWindowHandle handle = Handle();
    // Nothing is left of the thread that should do it.
    if (!handle.Send(SuicideMessage))
        OnFinalMessage();
}

void CWndImpl::OnFinalMessage() noexcept { delete this; }

void CWndImpl::OnThreadEnd() noexcept {
    boost::intrusive_ptr<CWndMsgPumpBase> pump;
    {
        const std::scoped_lock lock(m_Lock);
        pump.swap(m_Pump);
    }
    // A transport that only its window has held ends here, and takes the window with it.
    if (pump)
        pump->OnWindowLost(*this);
}

} // namespace LocalRPC::details
