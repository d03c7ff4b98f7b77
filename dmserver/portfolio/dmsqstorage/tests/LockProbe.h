// Whether a lock is held, asked from a thread that does not hold it.
#pragma once

#include "dmserver/dmSingleton/interface/CriticalSection.h"

#include <thread>

namespace tests {

inline bool IsHeld(dm::CCriticalSection& lock) {
    bool entered = false;
    std::thread([&] {
        entered = lock.TryEnter();
        if (entered)
            lock.Leave();
    }).join();
    return !entered;
}

} // namespace tests
