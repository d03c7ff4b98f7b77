#include "../AO_ThreadTransport.h"

#include "Help.h"
#include "diagnostics/interface/CrashCatchers.h"
#include "platform/com/apartment.h"
#include "platform/event.h"
#include "platform/message_queue.h"
#include "unicomp/LocalRPC/interface/LocalRPC.h"

#include <ctime>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace LocalRPC {
namespace {

using details::CThread;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ThreadTransport : public CRecordedTest {
protected:
    // Runs on the object's thread until the gate is opened.
    struct CBusy {
        explicit CBusy(details::IAOTransport& transport) {
            EXPECT_TRUE(transport.Post(MakeAsyncTask([state = State] {
                state->Begun.Open();
                state->MayEnd.Pass();
                state->Ended.Open();
            })));
            State->Begun.Pass();
        }
        struct tagState {
            CGate Begun;
            CGate MayEnd;
            CGate Ended;
        };
        std::shared_ptr<tagState> State = std::make_shared<tagState>();
    };

    bool PostNote(int number) {
        return m_Transport->Post(MakeAsyncTask([this, number] {
            m_Notes.push_back(number);
            m_NotesThread = platform::CurrentThreadId();
        }));
    }
    static void Call(details::IAOTransport& transport, std::function<void()> call) {
        const CTaskPtr task = MakeSyncTask(std::move(call));
        EXPECT_TRUE(transport.Post(task));
        EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitSignalled);
    }

    std::vector<int> m_Notes; // by the object's thread
    DWORD m_NotesThread = 0;
    boost::intrusive_ptr<CThread> m_Transport{new CThread(0)}; // ends first
};

TEST_F(ThreadTransport, IsIdleUntilTheFirstPost) {
    EXPECT_FALSE(m_Transport->IsRunning());
    EXPECT_FALSE(m_Transport->IsBlocked());
    EXPECT_EQ(m_Transport->GetThreadId(), 0U);
    EXPECT_TRUE(PostNote(1));
    EXPECT_TRUE(m_Transport->IsRunning());
    EXPECT_TRUE(m_Transport->Stop(false, false));
    EXPECT_THAT(m_Notes, ElementsAre(1));
}

TEST_F(ThreadTransport, StopOfWhatNeverStartedAnswersTrueAndTouchesNoThread) {
    EXPECT_TRUE(m_Transport->StopEx(true, platform::Infinite, true));
    EXPECT_EQ(m_Transport->GetThreadId(), 0U);
    EXPECT_FALSE(m_Transport->IsBlocked());
}

TEST_F(ThreadTransport, RunsTasksInOrderOnItsOwnThread) {
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(PostNote(i));
    Call(*m_Transport, [] {});
    EXPECT_THAT(m_Notes, ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(m_NotesThread, m_Transport->GetThreadId());
    EXPECT_NE(m_NotesThread, platform::CurrentThreadId());
}

TEST_F(ThreadTransport, StopLetsTheQueueRunToItsEndUnlessToldToClear) {
    {
        const CBusy busy(*m_Transport);
        PostNote(1);
        PostNote(2);
        busy.State->MayEnd.Open();
    }
    EXPECT_TRUE(m_Transport->Stop(false, false));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
    EXPECT_FALSE(m_Transport->IsRunning());
}

// The synchronous task tells when the queue was cleared.
TEST_F(ThreadTransport, StopWithClearDropsTheQueue) {
    const CBusy busy(*m_Transport);
    const CTaskPtr dropped = MakeSyncTask([] { FAIL(); });
    EXPECT_TRUE(m_Transport->Post(dropped));
    PostNote(1);
    std::thread stopper([&] { EXPECT_TRUE(m_Transport->Stop(true, false)); });
    EXPECT_EQ(dropped->Wait(platform::Infinite, 0), platform::WaitAbandoned);
    busy.State->MayEnd.Open();
    stopper.join();
    EXPECT_THAT(m_Notes, IsEmpty());
}

TEST_F(ThreadTransport, StartOfARunningOneStopsItFirstAndLosesTheQueue) {
    const CBusy busy(*m_Transport);
    const CTaskPtr dropped = MakeSyncTask([] { FAIL(); });
    EXPECT_TRUE(m_Transport->Post(dropped));
    std::thread starter([&] { EXPECT_TRUE(m_Transport->Start()); });
    EXPECT_EQ(dropped->Wait(platform::Infinite, 0), platform::WaitAbandoned);
    busy.State->MayEnd.Open();
    starter.join();
    EXPECT_TRUE(m_Transport->IsRunning());
    Call(*m_Transport, [&] { PostNote(2); });
    m_Transport->Stop(false, false);
    EXPECT_THAT(m_Notes, ElementsAre(2));
}

TEST_F(ThreadTransport, APostBringsAStoppedOneBackToLife) {
    Call(*m_Transport, [] {});
    EXPECT_TRUE(m_Transport->Stop(true, false));
    EXPECT_FALSE(m_Transport->IsRunning());
    DWORD thread = 0;
    Call(*m_Transport, [&] { thread = platform::CurrentThreadId(); });
    EXPECT_TRUE(m_Transport->IsRunning());
    EXPECT_EQ(thread, m_Transport->GetThreadId());
}

TEST_F(ThreadTransport, APostToAStoppedAndBlockedOneIsRefusedAndStartsNothing) {
    Call(*m_Transport, [] {});
    EXPECT_TRUE(m_Transport->Stop(true, true));
    EXPECT_FALSE(PostNote(1));
    EXPECT_FALSE(m_Transport->Post(nullptr));
    EXPECT_FALSE(m_Transport->IsRunning());
    EXPECT_TRUE(m_Transport->IsBlocked());
    // Start unblocks.
    EXPECT_TRUE(m_Transport->Start());
    EXPECT_FALSE(m_Transport->IsBlocked());
    EXPECT_TRUE(PostNote(2));
}

TEST_F(ThreadTransport, ABlockedOneRefusesPostsAndKeepsRunning) {
    const CBusy busy(*m_Transport);
    PostNote(1);
    m_Transport->Block(false);
    EXPECT_FALSE(PostNote(2));
    EXPECT_TRUE(m_Transport->IsRunning());
    m_Transport->Unblock();
    EXPECT_TRUE(PostNote(3));
    busy.State->MayEnd.Open();
    m_Transport->Stop(false, false);
    EXPECT_THAT(m_Notes, ElementsAre(1, 3));
}

TEST_F(ThreadTransport, BlockWithClearEmptiesTheQueue) {
    const CBusy busy(*m_Transport);
    PostNote(1);
    m_Transport->Block(true);
    busy.State->MayEnd.Open();
    m_Transport->Stop(false, false);
    EXPECT_THAT(m_Notes, IsEmpty());
}

TEST_F(ThreadTransport, ClearQueueLeavesTheRunningTaskAlone) {
    const CBusy busy(*m_Transport);
    PostNote(1);
    m_Transport->ClearQueue();
    PostNote(2);
    busy.State->MayEnd.Open();
    busy.State->Ended.Pass();
    m_Transport->Stop(false, false);
    EXPECT_THAT(m_Notes, ElementsAre(2));
}

TEST_F(ThreadTransport, GoesBackToWaitingAfterAWakeWithAnEmptyQueue) {
    EXPECT_TRUE(m_Transport->Post(nullptr));
    EXPECT_TRUE(m_Transport->IsRunning());
    EXPECT_TRUE(m_Transport->Post(nullptr));
    Call(*m_Transport, [] {});
    EXPECT_TRUE(m_Transport->Stop(true, false));
}

TEST_F(ThreadTransport, UsesNoProcessorWhileIdle) {
    Call(*m_Transport, [] {});
    const auto never = platform::CEvent::Create(platform::EEventReset::Automatic, false);
    const std::clock_t before = std::clock();
    EXPECT_EQ(never->Wait(100), platform::WaitTimeout);
    const double used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
    EXPECT_LT(used, 0.05); // a loop that spins would have used all of the 0.1 seconds
}

TEST_F(ThreadTransport, RunsASynchronousTaskOfItsOwnThreadInPlace) {
    Call(*m_Transport, [&] {
        PostNote(2);
        Call(*m_Transport, [&] { m_Notes.push_back(1); });
    });
    m_Transport->Stop(false, false);
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

TEST_F(ThreadTransport, CannotStopFromItsOwnThread) {
    Call(*m_Transport, [&] {
        EXPECT_FALSE(m_Transport->StopEx(true, 5, true));
        EXPECT_FALSE(m_Transport->IsBlocked());
        EXPECT_TRUE(m_Transport->IsRunning());
        EXPECT_FALSE(m_Transport->Start());
    });
    EXPECT_THAT(Recorder::Asserts(),
                ElementsAre(L"!\"Can't stop thread from itself!\"", L"!\"Can't stop thread from itself!\""));
    EXPECT_TRUE(PostNote(1));
    m_Transport->Stop(false, false);
    EXPECT_THAT(m_Notes, ElementsAre(1));
}

TEST_F(ThreadTransport, GoesOnAfterATaskThatThrows) {
    Call(*m_Transport, [] { throw std::runtime_error("task"); });
    Call(*m_Transport, [] {});
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(Unhandled));
}

// A stop holds its locks until the end of the thread, which must not wait for them. The dropped task tells that the
// stop has begun.
TEST_F(ThreadTransport, ATaskMayPostToItsOwnObjectDuringAStop) {
    CGate begun;
    const CTaskPtr dropped = MakeSyncTask([] { FAIL(); });
    m_Transport->Post(MakeAsyncTask([&] {
        begun.Open();
        EXPECT_EQ(dropped->Wait(platform::Infinite, 0), platform::WaitAbandoned);
        EXPECT_TRUE(PostNote(1));
        EXPECT_TRUE(m_Transport->Post(nullptr));
        Call(*m_Transport, [&] { m_Notes.push_back(0); });
        EXPECT_FALSE(m_Transport->Stop(false, false));
        EXPECT_FALSE(m_Transport->Start());
    }));
    begun.Pass();
    EXPECT_TRUE(m_Transport->Post(dropped));
    EXPECT_TRUE(m_Transport->Stop(true, false));
    EXPECT_THAT(m_Notes, ElementsAre(0, 1));
}

TEST_F(ThreadTransport, AFiniteStopOfAThreadThatEndsAnswersTrue) {
    PostNote(1);
    EXPECT_TRUE(m_Transport->StopEx(false, 60000, false));
    EXPECT_THAT(m_Notes, ElementsAre(1));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(ThreadTransport, AHungThreadIsAbandonedAndTheStopAnswersTrue) {
    const CBusy busy(*m_Transport);
    const DWORD hung = m_Transport->GetThreadId();
    PostNote(1);
    EXPECT_TRUE(m_Transport->StopEx(false, 5, false));
    EXPECT_FALSE(m_Transport->IsRunning());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    // What it left behind runs on the next thread, and it takes no part in that.
    busy.State->MayEnd.Open();
    PostNote(2);
    Call(*m_Transport, [] {});
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
    EXPECT_NE(m_NotesThread, hung);
    EXPECT_TRUE(m_Transport->Stop(true, false));
}

TEST_F(ThreadTransport, AnAbandonedThreadOutlivesItsTransport) {
    const CBusy busy(*m_Transport);
    const CTaskPtr left = MakeSyncTask([] {});
    m_Transport->Post(left);
    EXPECT_TRUE(m_Transport->StopEx(false, 5, true));
    m_Transport.reset();
    EXPECT_EQ(left->Wait(platform::Infinite, 0), platform::WaitAbandoned);
    busy.State->MayEnd.Open();
    busy.State->Ended.Pass();
}

TEST_F(ThreadTransport, AThreadThatDropsTheLastReferenceOutlivesItsTransport) {
    CGate mayDrop;
    CGate dropped;
    m_Transport->Post(MakeAsyncTask([&] {
        mayDrop.Pass();
        m_Transport.reset();
        dropped.Open();
    }));
    mayDrop.Open();
    dropped.Pass();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"!\"Can't stop thread from itself!\""));
}

TEST_F(ThreadTransport, ServesTheMessagesOfWindowsOnItsThread) {
    struct CWindow : platform::CMessageWindow {
        bool ProcessWindowMessage(DWORD, std::uintptr_t, std::uintptr_t, std::intptr_t& result, DWORD) override {
            result = ++Count;
            return true;
        }
        int Count = 0;
    };
    auto window = std::make_unique<CWindow>();
    constexpr int Posts = 250; // more than one round serves
    Call(*m_Transport, [&] {
        EXPECT_TRUE(window->Create());
        for (int i = 0; i < Posts; ++i)
            EXPECT_TRUE(window->Handle().Post(platform::UserMessage));
    });
    while (window->Handle().Send(platform::UserMessage) < Posts)
        std::this_thread::yield();
    Call(*m_Transport, [&] { window.reset(); });
}

TEST_F(ThreadTransport, ServesAHundredMessagesAtMostBetweenTasks) {
    struct CWindow : platform::CMessageWindow {
        bool ProcessWindowMessage(DWORD, std::uintptr_t, std::uintptr_t, std::intptr_t&, DWORD) override {
            // The task waits for the next round, that is for the end of this one.
            if (++Count == 1)
                Post();
            return true;
        }
        std::function<void()> Post;
        int Count = 0;
    };
    auto window = std::make_unique<CWindow>();
    CGate seen;
    int countSeen = 0;
    window->Post = [&] {
        m_Transport->Post(MakeAsyncTask([&] {
            countSeen = window->Count;
            seen.Open();
        }));
    };
    Call(*m_Transport, [&] {
        EXPECT_TRUE(window->Create());
        for (int i = 0; i < 150; ++i)
            EXPECT_TRUE(window->Handle().Post(platform::UserMessage));
    });
    seen.Pass();
    EXPECT_EQ(countSeen, 100);
    Call(*m_Transport, [&] { window.reset(); });
}

TEST_F(ThreadTransport, GivesItsThreadCatchersAndAnApartment) {
    Call(*m_Transport, [&] {
        EXPECT_GT(BugSlayerUtil::CStructuredExceptionCatcher::InstallCount(), 0);
        EXPECT_GT(BugSlayerUtil::CUnhandledExceptionCatcher::InstallCount(), 0);
        EXPECT_GT(BugSlayerUtil::CInvalidParameterCatcher::InstallCount(), 0);
        EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
        CoUninitialize();
    });
}

TEST_F(ThreadTransport, AThreadWithABadArgumentEndsAtOnce) {
    EXPECT_EQ(CThread::ThrFunc(nullptr), 0xFFFFFFFFU);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"!IsBadReadPtr(This,sizeof(CThreadBase))"));
}

TEST_F(ThreadTransport, AThreadThatCannotBeCreatedThrowsTheSystemsText) {
    const boost::intrusive_ptr<CThread> transport(new CThread(1U << 30));
    const CTaskPtr task = MakeAsyncTask([] {});
    EXPECT_EQ(WhatOf<local_rpc_exception>([&] {
                  const platform_tests::CAddressSpaceLimit limit(256UL << 20);
                  transport->Post(task);
              }),
              "Resource temporarily unavailable");
    EXPECT_FALSE(transport->IsRunning());
    // And works once there is room again.
    EXPECT_TRUE(transport->Post(task));
}

TEST_F(ThreadTransport, APostWhoseStartFailsThrows) {
    struct CNeverStarts : CThread {
        CNeverStarts() : CThread(0) {}
        bool Start() override { return false; }
    };
    const boost::intrusive_ptr<CNeverStarts> transport(new CNeverStarts);
    EXPECT_EQ(WhatOf<local_rpc_exception>([&] { transport->Post(MakeAsyncTask([] {})); }),
              "object wasn't initialized!");
}

TEST_F(ThreadTransport, NeedsEvents) {
    EXPECT_EQ(WhatOfWithoutDescriptors<std::exception>(
                  [] { const boost::intrusive_ptr<CThread> transport(new CThread(0)); }),
              "can't create event");
}

// ---- The facade ----

class ActiveObjectThread : public CRecordedTest {};

TEST_F(ActiveObjectThread, CallSyncComesBackWhenTheCallHasRun) {
    CActiveObject_thread object(0);
    int value = 0;
    CallSync(
        object, [&] { value = 1; }, 0); // the time-out is not looked at
    EXPECT_EQ(value, 1);
    CallSync(
        object, [] { throw 1; }, platform::Infinite);
    EXPECT_TRUE(object.Stop(false, false)); // the report comes after the caller is let go
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(Unhandled));
}

TEST_F(ActiveObjectThread, CallSyncToABlockedOneThrows) {
    CActiveObject_thread object(0);
    object.Block(false);
    int runs = 0;
    EXPECT_EQ(WhatOf<local_rpc_exception>([&] {
                  CallSync(
                      object, [&] { ++runs; }, platform::Infinite);
              }),
              Refused);
    EXPECT_TRUE(object.Start());
    CallSync(
        object, [] {}, platform::Infinite);
    EXPECT_EQ(runs, 0);
}

TEST_F(ActiveObjectThread, CallSyncThrowsWhenItsTaskIsDropped) {
    CActiveObject_thread object(0);
    CGate begun;
    CGate mayEnd;
    object.Post(MakeAsyncTask([&] {
        begun.Open();
        mayEnd.Pass();
    }));
    begun.Pass();
    std::atomic<bool> isOver{false};
    std::thread caller([&] {
        EXPECT_EQ(WhatOf<local_rpc_exception>([&] {
                      CallSync(
                          object, [] { FAIL(); }, platform::Infinite);
                  }),
                  Refused);
        isOver = true;
    });
    // Whenever the call comes into the queue.
    while (!isOver) {
        object.ClearQueue();
        std::this_thread::yield();
    }
    mayEnd.Open();
    caller.join();
}

TEST_F(ActiveObjectThread, CallSyncFromItsOwnThreadRunsInPlace) {
    CActiveObject_thread object(0);
    std::vector<int> notes;
    CallSync(
        object,
        [&] {
            CallSync(
                object, [&] { notes.push_back(1); }, platform::Infinite);
            notes.push_back(2);
        },
        platform::Infinite);
    EXPECT_THAT(notes, ElementsAre(1, 2));
}

TEST_F(ActiveObjectThread, StopsAtItsEndAndDropsTheQueue) {
    const auto alive = std::make_shared<int>(0);
    {
        CActiveObject_thread object;
        EXPECT_TRUE(object.Start());
        object.Post(MakeAsyncTask([alive] {}));
        EXPECT_TRUE(object.StopEx(false, platform::Infinite, false));
        EXPECT_TRUE(object.Stop(false, true));
        object.Post(MakeAsyncTask([alive] {}));
    }
    EXPECT_EQ(alive.use_count(), 1);
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(ActiveObjectThread, ATerminatingProxyStopsItsThread) {
    CGate begun;
    CGate mayEnd;
    auto object = std::make_unique<CTerminate_Local_RPC_Proxy>(0);
    object->Post(MakeAsyncTask([&] {
        begun.Open();
        mayEnd.Pass();
    }));
    begun.Pass();
    const CTaskPtr dropped = MakeSyncTask([] { FAIL(); });
    object->Post(dropped);
    std::thread destroyer([&] { object.reset(); });
    EXPECT_EQ(dropped->Wait(platform::Infinite, 0), platform::WaitAbandoned);
    mayEnd.Open();
    destroyer.join();
}

} // namespace
} // namespace LocalRPC
