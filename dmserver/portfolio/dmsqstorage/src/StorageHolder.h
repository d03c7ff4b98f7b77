// A reference on the process's storage, held by each instance of the interface class.
//
// The first one builds the storage and opens its database; the last one to go destroys it. Threads: any.
#pragma once

#include "dmserver/dmSingleton/interface/dmSingleton.h"
#include "sqStorage.h"

namespace sqStorage {

class CStorageHolder : public dm::CProcessSingleton<CStorage> {
public:
    // Takes the reference, then starts the storage unless it runs.
    CStorageHolder() : dm::CProcessSingleton<CStorage>(false) { GetObject()->init(); }
};

static_assert(sizeof(CStorageHolder) == 2);

} // namespace sqStorage
