// Sees every announced change at the moment it is announced, before it is queued for the sinks.
//
// For tests, and for a host that wants to count or log changes where they are made. OnBroadcast runs on the thread
// that made the change; it must not throw and must not call the storage. One observer at a time; it must outlive
// its registration and every call into the storage that was under way when it was replaced.
#pragma once

#include "platform/com/types.h"

namespace sqStorage {

struct IBroadcastObserver {
    virtual void OnBroadcast(ULONG Mask, LONG ValueID) noexcept = 0;

protected:
    ~IBroadcastObserver() = default;
};

// Null takes the observer off. Returns the one that was set before.
IBroadcastObserver* SetBroadcastObserver(IBroadcastObserver* observer);

} // namespace sqStorage
