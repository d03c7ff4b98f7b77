#include "WndMsgPumpHelp.h"
#include "unicomp/LocalRPC/interface/LocalRPC.h"

#include <memory>

namespace LocalRPC {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WndMsgPumpLife : public CWndMsgPumpTest {};

TEST_F(WndMsgPumpLife, WithoutAutoStartItHasNoWindow) {
    Replace(new CWndMsgPump(false));
    EXPECT_FALSE(m_Pump->IsRunning());
    EXPECT_EQ(m_Pump->GetThreadId(), NoThread);
    EXPECT_FALSE(PostNote(1)); // and does not start itself
    EXPECT_FALSE(m_Pump->IsRunning());
    EXPECT_TRUE(m_Pump->Start());
    EXPECT_TRUE(m_Pump->IsRunning());
    EXPECT_EQ(m_Pump->GetThreadId(), platform::CurrentThreadId());
}

TEST_F(WndMsgPumpLife, StopOfAStoppedOneAnswersFalse) {
    EXPECT_TRUE(m_Pump->StopEx(true, 0, false));
    EXPECT_FALSE(m_Pump->StopEx(true, 0, false));
    EXPECT_EQ(m_Pump->GetThreadId(), NoThread);
}

TEST_F(WndMsgPumpLife, APostAfterTheStopIsRefusedAndLost) {
    EXPECT_TRUE(m_Pump->Stop(false, false));
    EXPECT_FALSE(m_Pump->IsBlocked());
    EXPECT_FALSE(PostNote(1));
    EXPECT_TRUE(m_Pump->Start());
    PostNote(2);
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(2));
}

TEST_F(WndMsgPumpLife, StopWithBlockAndWithoutClearRunsTheQueueDuringTheSuicide) {
    PostNote(1);
    PostNote(2);
    EXPECT_TRUE(m_Pump->StopEx(false, 0, true));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
    EXPECT_TRUE(m_Pump->IsBlocked());
    EXPECT_THAT(ServeAndList(), IsEmpty());
}

TEST_F(WndMsgPumpLife, StopWithBlockAndClearDropsTheQueue) {
    PostNote(1);
    EXPECT_TRUE(m_Pump->StopEx(true, 0, true));
    EXPECT_THAT(m_Notes, IsEmpty());
}

TEST_F(WndMsgPumpLife, StopWithoutBlockDropsTheQueueWhateverClearSays) {
    for (const bool clear : {false, true}) {
        PostNote(1);
        EXPECT_TRUE(m_Pump->StopEx(clear, 0, false));
        EXPECT_THAT(m_Notes, IsEmpty());
        EXPECT_TRUE(m_Pump->Start());
    }
}

TEST_F(WndMsgPumpLife, ABlockedOneRefusesPostsUntilItIsUnblocked) {
    PostNote(1);
    m_Pump->Block(false);
    EXPECT_FALSE(PostNote(2));
    m_Pump->Unblock();
    PostNote(3);
    platform::DispatchPendingMessages();
    m_Pump->Block(true);
    EXPECT_TRUE(m_Pump->Start());
    EXPECT_FALSE(m_Pump->IsBlocked());
    EXPECT_THAT(m_Notes, ElementsAre(1, 3));
}

TEST_F(WndMsgPumpLife, ASecondStartReplacesTheWindowAndLosesTheQueue) {
    PostNote(1);
    EXPECT_TRUE(m_Pump->Start());
    EXPECT_THAT(ServeAndList(), IsEmpty());
    PostNote(2);
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(2));
}

TEST_F(WndMsgPumpLife, AStartOnAnotherThreadMovesItThere) {
    ElsewhereWhileServing([&] {
        EXPECT_TRUE(m_Pump->Start());
        PostNote(1);
        platform::DispatchPendingMessages();
        EXPECT_EQ(m_NotesThread, platform::CurrentThreadId());
        EXPECT_EQ(m_Pump->GetThreadId(), platform::CurrentThreadId());
    });
    EXPECT_THAT(m_Notes, ElementsAre(1));
}

TEST_F(WndMsgPumpLife, AStopFromAnotherThreadLastsUntilTheWindowsThreadHasSeenToIt) {
    PostNote(1);
    std::atomic<bool> isStopped{false};
    std::thread stopper([&] {
        EXPECT_TRUE(m_Pump->Stop(false, true));
        isStopped = true;
    });
    while (m_Pump->IsRunning())
        std::this_thread::yield();
    EXPECT_FALSE(isStopped);
    EXPECT_THAT(m_Notes, IsEmpty());
    while (!isStopped) {
        static_cast<void>(platform::WaitForEventOrMessages(nullptr, 1));
        platform::DispatchPendingMessages();
    }
    stopper.join();
    EXPECT_THAT(m_Notes, ElementsAre(1));
    EXPECT_EQ(m_NotesThread, platform::CurrentThreadId());
}

TEST_F(WndMsgPumpLife, HoldsTheTransportAsLongAsTheWindowLives) {
    const auto alive = std::make_shared<int>(0);
    m_Pump->Post(MakeAsyncTask([alive] {}));
    CWndMsgPump* pump = m_Pump.get();
    m_Pump.reset(); // the window's reference is left
    EXPECT_EQ(alive.use_count(), 2);
    EXPECT_TRUE(pump->IsRunning());
    EXPECT_TRUE(pump->Stop(true, true));
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(WndMsgPumpLife, AWindowThatCannotBeCreatedThrowsTheSystemsText) {
    const char* text = "can't create transport Window. Last error: Too many open files";
    // A thread without a queue yet.
    Elsewhere([&] {
        EXPECT_EQ(WhatOfWithoutDescriptors<local_rpc_exception>([] {
                      const boost::intrusive_ptr<CWndMsgPump> pump(new CWndMsgPump(false));
                      pump->Start();
                      pump->Stop(true, true);
                  }),
                  text);
        EXPECT_EQ(WhatOfWithoutDescriptors<local_rpc_exception>([] { const CActiveObject_WndMsg object(true); }),
                  text);
        // And works once there is room again.
        const CActiveObject_WndMsg object(true);
    });
}

// ---- Threads that end ----

TEST_F(WndMsgPumpLife, AnEndedThreadRefusesPostsAndReleasesWhoWaits) {
    CGate started;
    CGate mayEnd;
    std::thread owner([&] {
        m_Pump->Start();
        started.Open();
        mayEnd.Pass();
    });
    // The window of the fixture goes on this thread.
    ServeAndList();
    while (m_Pump->GetThreadId() == platform::CurrentThreadId() || !m_Pump->IsRunning()) {
        ServeAndList();
        std::this_thread::yield();
    }
    started.Pass();
    const CTaskPtr task = MakeSyncTask([] { FAIL(); });
    EXPECT_TRUE(m_Pump->Post(task));
    mayEnd.Open();
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitAbandoned);
    owner.join();
    EXPECT_FALSE(PostNote(1));
    EXPECT_TRUE(m_Pump->IsRunning());
    // Nobody is there to be waited for.
    EXPECT_TRUE(m_Pump->Stop(false, true));
    EXPECT_TRUE(m_Pump->Start());
    PostNote(2);
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(2));
}

TEST_F(WndMsgPumpLife, AnObjectMayOutliveItsThreadAndEndAnywhere) {
    auto object = std::unique_ptr<CActiveObject_WndMsg>();
    const auto alive = std::make_shared<int>(0);
    Elsewhere([&] {
        object = std::make_unique<CActiveObject_WndMsg>(true);
        object->Post(MakeAsyncTask([alive] {}));
    });
    EXPECT_EQ(alive.use_count(), 1);
    EXPECT_EQ(WhatOf<local_rpc_exception>([&] {
                  CallSync(
                      *object, [] {}, platform::Infinite);
              }),
              Refused);
    object.reset();
}

TEST_F(WndMsgPumpLife, AnObjectMayEndWithItsThreadsOwnBelongings) {
    Elsewhere([] {
        // Made before the thread's queue, so that it ends behind it.
        thread_local std::unique_ptr<CActiveObject_WndMsg> object;
        object = nullptr;
        object = std::make_unique<CActiveObject_WndMsg>(true);
        EXPECT_TRUE(object->Post(MakeAsyncTask([] {})));
    });
}

TEST_F(WndMsgPumpLife, ATransportLeftToItsWindowEndsWithTheThread) {
    struct CPump : CWndMsgPump {
        explicit CPump(std::shared_ptr<int> held) : CWndMsgPump(true), Held(std::move(held)) {}
        std::shared_ptr<int> Held;
    };
    const auto held = std::make_shared<int>(0);
    Elsewhere([&] {
        boost::intrusive_ptr<CPump> pump(new CPump(held));
        pump->Post(MakeAsyncTask([held] {}));
        pump.reset();
        EXPECT_EQ(held.use_count(), 3);
    });
    EXPECT_EQ(held.use_count(), 1);
}

// ---- The facade ----

TEST_F(WndMsgPumpLife, TheFacadeStopsAtItsEndAndDropsTheQueue) {
    const auto alive = std::make_shared<int>(0);
    {
        CActiveObject_WndMsg object(false);
        EXPECT_FALSE(object.Post(MakeAsyncTask([alive] {})));
        EXPECT_TRUE(object.Start());
        EXPECT_TRUE(object.Start());
        EXPECT_TRUE(object.Post(MakeAsyncTask([alive] {})));
        EXPECT_EQ(alive.use_count(), 2);
    }
    EXPECT_EQ(alive.use_count(), 1);
    EXPECT_THAT(ServeAndList(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(WndMsgPumpLife, ATaskMayEndItsOwnObject) {
    auto object = std::make_unique<CActiveObject_WndMsg>(true);
    object->Post(MakeAsyncTask([&] { object.reset(); }));
    platform::DispatchPendingMessages();
    EXPECT_FALSE(object);
    object = std::make_unique<CActiveObject_WndMsg>(true);
    const CTaskPtr inPlace = MakeSyncTask([&] { object.reset(); });
    EXPECT_TRUE(object->Post(inPlace));
    EXPECT_FALSE(object);
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(WndMsgPumpLife, AStopWithinATaskLeavesNobodyWaiting) {
    std::vector<std::thread> callers;
    CGate posted;
    const CTaskPtr waiting = MakeSyncTask([&] { m_Notes.push_back(2); });
    const CTaskPtr inPlace = MakeSyncTask([&] {
        Elsewhere([&] { EXPECT_TRUE(m_Pump->Post(waiting)); });
        platform::DispatchPendingMessages();
        EXPECT_TRUE(m_Pump->Stop(false, true));
        m_Notes.push_back(1);
    });
    EXPECT_TRUE(m_Pump->Post(inPlace));
    EXPECT_THAT(m_Notes, ElementsAre(1));
    EXPECT_EQ(waiting->Wait(platform::Infinite, 0), platform::WaitAbandoned);
}

} // namespace
} // namespace LocalRPC
