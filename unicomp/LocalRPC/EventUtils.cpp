#include "unicomp/LocalRPC/interface/EventUtils.h"

#include "diagnostics/interface/BugSlayer.h"

#include <stdexcept>

namespace MTUtils {

CMTUEvent::CMTUEvent(bool manualReset, bool initialState, const wchar_t* name, const void* attributes) {
    const auto reset = manualReset ? platform::EEventReset::Manual : platform::EEventReset::Automatic;
    if (name == nullptr && attributes == nullptr) {
        if (auto event = platform::CEvent::Create(reset, initialState))
            m_Event = std::move(*event);
    }
    if (!m_Event.IsOpen())
        throw std::runtime_error("can't create event");
}

CMTUEvent::~CMTUEvent() { _free(); }

void CMTUEvent::_free() {
    if (!m_Event.IsOpen())
        return;
    const int _res = m_Event.Close() ? 1 : 0;
    BugSlayerUtil::Assert(1 == _res, L"1==_res");
}

bool CMTUEvent::Set() noexcept { return m_Event.IsOpen() && m_Event.Set(); }

bool CMTUEvent::Reset() noexcept { return m_Event.IsOpen() && m_Event.Reset(); }

DWORD CMTUEvent::Wait(DWORD timeout) const noexcept { return m_Event.Wait(timeout); }

bool CStateEvent::Set(LONG state) noexcept {
    m_State.exchange(state);
    return CMTUEvent::Set();
}

bool CStateEvent::Change(LONG expected, LONG state) noexcept {
    return m_State.compare_exchange_strong(expected, state);
}

LONG CStateEvent::Wait(DWORD timeout) const noexcept {
    static_cast<void>(CMTUEvent::Wait(timeout));
    return m_State.load();
}

} // namespace MTUtils
