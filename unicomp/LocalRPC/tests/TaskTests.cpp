#include "unicomp/LocalRPC/interface/TaskFactory.h"

#include "../AO_TransportBase.h"
#include "Help.h"
#include "diagnostics/interface/BugSlayer.h"
#include "platform/message_queue.h"

#include <functional>
#include <memory>
#include <thread>

namespace LocalRPC {
namespace {

using ::testing::ElementsAre;

class Task : public CRecordedTest {};

TEST_F(Task, IsCountedFromZeroAndDeletedAtZero) {
    const auto alive = std::make_shared<int>(0);
    ITask* task = new CAsyncTask([alive] {});
    EXPECT_EQ(task->AddRef(), 1);
    EXPECT_EQ(task->AddRef(), 2);
    EXPECT_EQ(task->Release(), 1);
    EXPECT_EQ(alive.use_count(), 2);
    EXPECT_EQ(task->Release(), 0);
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(Task, TakesABoundFunction) {
    struct {
        void Add(int value) { Sum += value; }
        int Sum = 0;
    } object;
    MakeAsyncTask(std::bind_front(&decltype(object)::Add, &object, 3))->Execute();
    EXPECT_EQ(object.Sum, 3);
}

TEST_F(Task, KeepsTheTickOfItsCreation) {
    const DWORD before = platform::TickCount();
    const CTaskPtr task = MakeSyncTask([] {});
    EXPECT_LE(task->GetCreationTick() - before, platform::TickCount() - before);
}

TEST_F(Task, RunsOnceAtMost) {
    int runs = 0;
    const CTaskPtr task = MakeSyncTask([&runs] { ++runs; });
    task->Execute();
    task->Execute();
    EXPECT_EQ(runs, 1);
}

TEST_F(Task, AnAsynchronousTaskIsNotWaitedFor) {
    const CTaskPtr task = MakeAsyncTask([] {});
    EXPECT_FALSE(task->IsSync());
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitSignalled);
}

TEST_F(Task, ASynchronousTaskIsWaitedForUntilItHasRun) {
    const CTaskPtr task = MakeSyncTask([] {});
    EXPECT_TRUE(task->IsSync());
    EXPECT_EQ(task->Wait(0, 0), platform::WaitTimeout);
    EXPECT_EQ(task->Wait(1, 1), platform::WaitTimeout);
    EXPECT_EQ(task->Wait(1, 2), platform::WaitTimeout);
    EXPECT_EQ(task->Wait(1, 3), platform::WaitTimeout);
    std::thread runner([&] { task->Execute(); });
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitSignalled);
    // The state stays, though the signal was taken.
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitSignalled);
    runner.join();
}

TEST_F(Task, ABoundCallThatThrowsStillReleasesTheWaiter) {
    const CTaskPtr task = MakeSyncTask([] { throw std::runtime_error("call"); });
    EXPECT_THROW(task->Execute(), std::runtime_error);
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitSignalled);
}

TEST_F(Task, WhatACallThrowsEndsWhereItRuns) {
    const CTaskPtr task = MakeSyncTask([] { throw 5; });
    details::CAOTransportBaseBase::execute_task(task);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(Unhandled));
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitSignalled);
}

// The fixture counts the records.
TEST_F(Task, ARaisedRecordIsReleasedWhereItEnds) {
    details::CAOTransportBaseBase::execute_task(MakeAsyncTask([] { BugSlayerUtil::Throw(L"raised"); }));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(Unhandled));
}

TEST_F(Task, ASynchronousTaskNeedsAnEvent) {
    EXPECT_EQ(WhatOfWithoutDescriptors<std::runtime_error>([] { static_cast<void>(MakeSyncTask([] {})); }),
              "can't create event");
}

// The next descriptor is the event's, and is closed behind its back.
TEST_F(Task, AnEventThatCannotBeClosedIsReported) {
    int descriptor = -1;
    {
        const auto probe = platform::CEvent::Create(platform::EEventReset::Automatic, false);
        descriptor = probe->Descriptor();
    }
    CTaskPtr task = MakeSyncTask([] {});
    platform_tests::CloseDescriptor(descriptor);
    task.reset();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"1==_res"));
}

// ---- The wait that serves messages ----

class CRunner : public platform::CMessageWindow {
public:
    CRunner() { EXPECT_TRUE(Create()); }
    bool ProcessWindowMessage(DWORD, std::uintptr_t first, std::uintptr_t, std::intptr_t&, DWORD) override {
        ++Count;
        if (first != 0)
            (*reinterpret_cast<std::function<void()>*>(first))();
        return true;
    }
    int Count = 0;
};

constexpr ULONG Pumping = details::tagWait::PumpsMessages;

TEST_F(Task, APumpingWaitDispatchesMessagesUntilTheTaskHasRun) {
    CRunner window;
    const CTaskPtr task = MakeSyncTask([] {});
    std::function<void()> run = [&] { task->Execute(); };
    window.Handle().Post(platform::UserMessage);
    window.Handle().Post(platform::UserMessage, reinterpret_cast<std::uintptr_t>(&run));
    EXPECT_EQ(task->Wait(platform::Infinite, Pumping), platform::WaitSignalled);
    EXPECT_EQ(window.Count, 2);
}

TEST_F(Task, APumpingWaitServesWhatComesLater) {
    CRunner window;
    const CTaskPtr task = MakeSyncTask([] {});
    std::thread runner([&] {
        window.Handle().Send(platform::UserMessage);
        task->Execute();
    });
    EXPECT_EQ(task->Wait(platform::Infinite, Pumping | details::tagWait::Alertable), platform::WaitSignalled);
    EXPECT_EQ(window.Count, 1);
    runner.join();
}

TEST_F(Task, APumpingWaitEndsThoughMessagesNeverRunOut) {
    CRunner window;
    const CTaskPtr task = MakeSyncTask([] {});
    std::function<void()> run = [&] {
        task->Execute();
        window.Handle().Post(platform::UserMessage, reinterpret_cast<std::uintptr_t>(&run));
    };
    window.Handle().Post(platform::UserMessage, reinterpret_cast<std::uintptr_t>(&run));
    EXPECT_EQ(task->Wait(platform::Infinite, Pumping), platform::WaitSignalled);
    EXPECT_GE(window.Count, 1);
}

TEST_F(Task, APumpingWaitForARunTaskTouchesNoMessage) {
    CRunner window;
    const CTaskPtr task = MakeSyncTask([] {});
    task->Execute();
    window.Handle().Post(platform::UserMessage);
    EXPECT_EQ(task->Wait(platform::Infinite, Pumping), platform::WaitSignalled);
    EXPECT_EQ(window.Count, 0);
}

TEST_F(Task, APumpingWaitPostsTheQuitMessageAgain) {
    CRunner window;
    const CTaskPtr task = MakeSyncTask([] {});
    platform::PostQuitMessage(4);
    window.Handle().Post(platform::UserMessage);
    EXPECT_EQ(task->Wait(5, Pumping), platform::WaitTimeout);
    EXPECT_EQ(window.Count, 1);
    EXPECT_EQ(platform::RunMessageLoop(), 0);
}

} // namespace
} // namespace LocalRPC
