// One storage for a benchmark program, as a host has it.
#pragma once

#include "StorageHost.h"

namespace bench {

struct tagStore {
    tagStore() {
        Host.Install();
        tests::CStorageHost::Create(Storage);
    }
    tests::CStorageHost Host;
    tests::CComPtr<IDM_qxStorage::IqxStorage> Storage;
};

inline tagStore& Store() {
    static tagStore store;
    return store;
}

} // namespace bench
