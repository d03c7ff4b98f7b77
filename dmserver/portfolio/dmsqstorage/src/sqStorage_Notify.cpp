#include "sqStorage.h"

#include "dmserver/portfolio/dmsqstorage/interface/BroadcastObserver.h"

namespace sqStorage {

namespace {

std::atomic<IBroadcastObserver*> g_Observer{nullptr};

} // namespace

IBroadcastObserver* SetBroadcastObserver(IBroadcastObserver* observer) { return g_Observer.exchange(observer); }

void CStorage::BroadcastNotifyToSinks(ULONG Mask, LONG ValueID) {
    if (IBroadcastObserver* observer = g_Observer.load())
        observer->OnBroadcast(Mask, ValueID);
}

} // namespace sqStorage
