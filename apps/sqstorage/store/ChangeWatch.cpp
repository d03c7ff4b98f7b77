#include "ChangeWatch.h"

#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxStorageNotify.h"
#include "platform/com/object.h"
#include "platform/message_queue.h"

namespace sqCli {

using IDM_qxStorage::IqxStorageNotify;
using IDM_qxStorage::IqxStorageNotifySink;

class CChangeWatch::CSink final : public platform::CObject<CSink, platform::ECounter::Interlocked,
                                                           platform::CDispatchImpl<IqxStorageNotifySink>> {
public:
    explicit CSink(CChangeWatch& watch) : m_Watch(watch) {}

    HRESULT DataChanged(ULONG Mask, LONG ValueID) override {
        try {
            m_Watch.m_Tell(Mask, ValueID);
            return S_OK;
        } catch (...) {
            m_Watch.m_Raised = std::current_exception();
            platform::PostQuitMessage(0);
            return E_FAIL; // takes the sink off
        }
    }

private:
    CChangeWatch& m_Watch;
};

CChangeWatch::CChangeWatch(CStore& store, ULONG mask, Tell tell)
    : m_Store(store), m_Mask(mask), m_Tell(std::move(tell)), m_Sink(platform::MakeObject<CSink>(*this)) {
    const auto notify = m_Store.As<IqxStorageNotify>();
    if (m_Store.Run([&](auto&) { return notify->AdviseNotify(m_Mask, m_Sink.Get()); }) != S_OK)
        throw CStoreRefusal("The store cannot be watched: look into its log.");
    m_Store.AfterCalls([this] { Deliver(); });
}

CChangeWatch::~CChangeWatch() {
    m_Store.AfterCalls(nullptr);
    m_Store.As<IqxStorageNotify>()->UnadviseNotify(m_Mask, m_Sink.Get());
}

void CChangeWatch::Deliver() {
    platform::DispatchPendingMessages();
    RaiseAgain();
}

void CChangeWatch::Run() {
    platform::RunMessageLoop();
    RaiseAgain();
}

void CChangeWatch::RaiseAgain() {
    if (m_Raised)
        std::rethrow_exception(std::exchange(m_Raised, nullptr));
}

} // namespace sqCli
