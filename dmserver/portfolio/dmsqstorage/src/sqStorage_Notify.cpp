#include "sqStorage.h"

#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxStorageNotify.h"
#include "dmserver/portfolio/dmsqstorage/interface/BroadcastObserver.h"
#include "unicomp/LocalRPC/interface/TaskFactory.h"

namespace sqStorage {

namespace {

std::atomic<IBroadcastObserver*> g_Observer{nullptr};

constexpr ULONG AllMasks = (1U << NotifyBitCount) - 1;

// Visits the bits of the mask that exist, in rising order.
template <class Visit>
void ForEachBit(ULONG mask, Visit&& visit) {
    for (std::size_t bit = 0; bit < NotifyBitCount; ++bit)
        if (mask >> bit & 1)
            visit(bit);
}

// One delivery: S_OK, or why the sink is to be dropped.
HRESULT Deliver(const BugSlayerUtil::CScope& scope, IDispatch& sink, std::size_t bit, LONG value) {
    CComPtr<IDM_qxStorage::IqxStorageNotifySink> notify;
    HRESULT status = sink.QueryInterface(platform::UuidOf<IDM_qxStorage::IqxStorageNotifySink>, notify.PutVoid());
    scope.Trace(L"QueryInterface hr=%X", status);
    if (notify) {
        status = notify->DataChanged(1U << bit, value);
        scope.Trace(L"DataChanged hr=%X", status);
    }
    return status;
}

} // namespace

IBroadcastObserver* SetBroadcastObserver(IBroadcastObserver* observer) { return g_Observer.exchange(observer); }

LONG CStorage::AdviseNotify(ULONG Mask, IDispatch* pSink) {
    const BugSlayerUtil::CScope scope(this);
    LONG result = S_FALSE;
    scope.Guard([&] {
        scope.Trace(L"AdviseNotify: Mask = %X, Sink = %p", Mask, pSink);
        ForEachBit(Mask, [&](std::size_t bit) {
            if (m_NotifySinks.Add(bit, pSink))
                result = S_OK;
        });
    });
    return result;
}

LONG CStorage::UnadviseNotify(ULONG Mask, IDispatch* pSink) {
    const BugSlayerUtil::CScope scope(this);
    scope.Trace(L"UnadviseNotify: Mask = %X, Sink = %p", Mask, pSink);
    return RemoveSink(scope, Mask, pSink);
}

LONG CStorage::UnadviseNotifyAllMasks(IDispatch* pSink) {
    const BugSlayerUtil::CScope scope(this);
    scope.Trace(L"UnadviseNotifyAllMasks: Sink = %p", pSink);
    return RemoveSink(scope, AllMasks, pSink);
}

LONG CStorage::RemoveSink(const BugSlayerUtil::CScope& scope, ULONG Mask, IDispatch* pSink) {
    LONG result = S_FALSE;
    scope.Guard([&] {
        ForEachBit(Mask, [&](std::size_t bit) {
            if (m_NotifySinks.Remove(bit, pSink))
                result = S_OK;
        });
    });
    return result;
}

void CStorage::BroadcastNotifyToSinks(ULONG Mask, LONG ValueID) {
    if (IBroadcastObserver* observer = g_Observer.load())
        observer->OnBroadcast(Mask, ValueID);
    // A refused post is a lost notification: the storage is on its way out.
    m_NotifyObject.Post(
        LocalRPC::MakeAsyncTask([this, Mask, ValueID] { BroadcastNotifyToSinksImpl(Mask, ValueID); }));
}

void CStorage::BroadcastNotifyToSinksImpl(ULONG Mask, LONG ValueID) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        scope.Trace(L"Mask = %X", Mask);
        std::vector<IDispatch*> dead;
        ForEachBit(Mask, [&](std::size_t bit) {
            CNotifySinks::Sink sink;
            // By index, with the list read anew at each step: a sink may change the lists from inside its call.
            for (std::size_t index = 0; m_NotifySinks.At(bit, index, sink); ++index) {
                scope.Trace(L"pSink=%p", sink->Get());
                if (!*sink || Deliver(scope, **sink, bit, ValueID) == S_OK)
                    continue;
                if (m_NotifySinks.At(bit, index, sink))
                    dead.push_back(sink->Get());
            }
        });
        for (IDispatch* sink : dead)
            UnadviseNotifyAllMasks(sink);
    });
}

} // namespace sqStorage
