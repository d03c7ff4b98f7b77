#pragma once
// Transports over a storage that tells what they do with it.

#include "../AO_ThreadTransport.h"
#include "../AO_WndMsgPumpTransport.h"

#include <atomic>
#include <functional>

namespace LocalRPC {

class CCountingStorage : public details::utils::CTaskStorage {
public:
    void Push(const CTaskPtr& task) override {
        if (BeforePush)
            BeforePush();
        CTaskStorage::Push(task);
    }
    void OnTaskDone() override { ++Done; }
    void Clear() override {
        ++Cleared;
        CTaskStorage::Clear();
    }
    [[nodiscard]] details::utils::CTaskQueue Take() override {
        ++Cleared;
        return CTaskStorage::Take();
    }

    std::function<void()> BeforePush;
    std::atomic<int> Done{0};
    std::atomic<int> Cleared{0};
};

struct CCountingPump : details::CWndMsgPumpBase {
    CCountingPump() : CWndMsgPumpBase(&Storage) {}
    ~CCountingPump() override { Stop(true, true); }
    CCountingStorage Storage;
};

struct CCountingThread : details::CThreadBase {
    CCountingThread() : CThreadBase(0, &Storage) {}
    ~CCountingThread() override {
        Stop(true, true);
        LetThreadGo();
    }
    CCountingStorage Storage;
};

} // namespace LocalRPC
