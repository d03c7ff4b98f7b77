// A sink that keeps what it is told, and answers as it is told to.
#pragma once

#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxStorageNotify.h"
#include "platform/com/object.h"

#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace tests {

// A change as it was announced: mask and value.
using Change = std::pair<ULONG, LONG>;

class CRecordingSink final
    : public platform::CObject<CRecordingSink, platform::ECounter::Interlocked,
                               platform::CDispatchImpl<IDM_qxStorage::IqxStorageNotifySink>> {
public:
    HRESULT DataChanged(ULONG Mask, LONG ValueID) override {
        Calls.emplace_back(Mask, ValueID);
        Thread = std::this_thread::get_id();
        return OnCall ? OnCall(Mask) : Answer;
    }
    // The references that there are.
    ULONG Count() {
        AddRef();
        return Release();
    }

    std::vector<Change> Calls;
    std::thread::id Thread; // of the last call
    HRESULT Answer = S_OK;
    std::function<HRESULT(ULONG)> OnCall;
};

} // namespace tests
