#include "WndMsgPumpHelp.h"
#include "unicomp/LocalRPC/interface/LocalRPC.h"

namespace LocalRPC {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WndMsgPump : public CWndMsgPumpTest {};

TEST_F(WndMsgPump, RunsTasksInOrderOnTheThreadThatStartedIt) {
    Elsewhere([&] {
        for (int i = 0; i < 5; ++i)
            EXPECT_TRUE(PostNote(i));
    });
    EXPECT_THAT(m_Notes, IsEmpty());
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(m_NotesThread, platform::CurrentThreadId());
    EXPECT_EQ(m_Pump->GetThreadId(), platform::CurrentThreadId());
}

TEST_F(WndMsgPump, TwoPostsFromAnotherThreadMakeOneMessageAndBothTasksRun) {
    const auto queue = platform::CMessageQueueHandle::Current();
    const std::uint64_t wakes = queue.WakeCount();
    Elsewhere([&] {
        PostNote(1);
        PostNote(2);
    });
    EXPECT_EQ(queue.WakeCount(), wakes + 1);
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
    // And so does the next one.
    Elsewhere([&] { PostNote(3); });
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2, 3));
}

TEST_F(WndMsgPump, APostFromTheWindowsThreadAlwaysPostsAnotherMessage) {
    Elsewhere([&] { PostNote(1); });
    PostNote(2);
    PostNote(3);
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U, 1025U, 1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2, 3));
    // What was counted for them does not swallow the wakes that follow.
    Elsewhere([&] { PostNote(4); });
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2, 3, 4));
}

// A thread's messages are limited in number; its tasks are not.
TEST_F(WndMsgPump, MoreTasksThanTheMessageQueueTakesAllRunInTheirOrder) {
    constexpr int Tasks = 2 * static_cast<int>(platform::MaxPostedMessages) + 1;
    std::vector<int> expected;
    for (int i = 0; i < Tasks; ++i)
        expected.push_back(i);
    const auto queue = platform::CMessageQueueHandle::Current();
    const std::uint64_t wakes = queue.WakeCount();
    Elsewhere([&] {
        for (int i = 0; i < Tasks; ++i)
            EXPECT_TRUE(PostNote(i));
    });
    EXPECT_EQ(queue.WakeCount(), wakes + 1);
    platform::DispatchPendingMessages();
    EXPECT_EQ(m_Notes, expected);
    m_Notes.clear();
    int refused = 0;
    for (int i = 0; i < Tasks; ++i)
        refused += PostNote(i) ? 0 : 1;
    EXPECT_EQ(refused, Tasks - static_cast<int>(platform::MaxPostedMessages)) << "as messages, but not as tasks";
    platform::DispatchPendingMessages();
    EXPECT_EQ(m_Notes, expected);
}

TEST_F(WndMsgPump, ANullTaskOnlyWakes) {
    Elsewhere([&] {
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(m_Pump->Post(nullptr));
    });
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    Elsewhere([&] { PostNote(1); });
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1));
}

TEST_F(WndMsgPump, OneWakeDrainsTheQueueThoughATaskFails) {
    Elsewhere([&] {
        PostNote(1);
        m_Pump->Post(MakeAsyncTask([] { throw std::runtime_error("task"); }));
        PostNote(2);
    });
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(Unhandled));
}

TEST_F(WndMsgPump, ATaskThatServesMessagesGetsNoOtherTaskWithin) {
    m_Pump->Post(MakeAsyncTask([&] {
        PostNote(2);
        Elsewhere([&] { PostNote(3); });
        platform::DispatchPendingMessages();
        m_Notes.push_back(1);
    }));
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2, 3));
}

TEST_F(WndMsgPump, ATaskRunInPlaceThatServesMessagesLeavesTheOthersForTheNextWake) {
    const CTaskPtr task = MakeSyncTask([&] {
        Elsewhere([&] { PostNote(2); });
        platform::DispatchPendingMessages();
        EXPECT_THAT(m_Notes, IsEmpty());
        m_Notes.push_back(1);
    });
    EXPECT_TRUE(m_Pump->Post(task));
    EXPECT_THAT(m_Notes, ElementsAre(1));
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
    Elsewhere([&] { PostNote(3); });
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2, 3));
}

TEST_F(WndMsgPump, ASynchronousTaskFromTheWindowsThreadRunsInPlace) {
    PostNote(2);
    const CTaskPtr task = MakeSyncTask([&] { m_Notes.push_back(1); });
    EXPECT_TRUE(m_Pump->Post(task));
    EXPECT_EQ(task->Wait(0, 0), platform::WaitSignalled);
    EXPECT_THAT(m_Notes, ElementsAre(1));
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

TEST_F(WndMsgPump, ASynchronousTaskFromAnotherThreadRunsOnTheWindowsThread) {
    DWORD thread = 0;
    ElsewhereWhileServing([&] {
        const CTaskPtr task = MakeSyncTask([&] { thread = platform::CurrentThreadId(); });
        EXPECT_TRUE(m_Pump->Post(task));
        EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitSignalled);
    });
    EXPECT_EQ(thread, platform::CurrentThreadId());
}

TEST_F(WndMsgPump, APostThatFindsTheMessageQueueFullAnswersFalseAndRunsAtTheNextWake) {
    {
        const CFullQueue full;
        EXPECT_FALSE(PostNote(1));
        Elsewhere([&] {
            EXPECT_FALSE(PostNote(2));
            EXPECT_FALSE(PostNote(3));
        });
    }
    EXPECT_THAT(ServeAndList(), IsEmpty());
    Elsewhere([&] { EXPECT_TRUE(PostNote(4)); });
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2, 3, 4));
}

TEST_F(WndMsgPump, ACallRefusedThatWayDoesNotRunBehindItsCallersBack) {
    CActiveObject_WndMsg object(true);
    {
        const CFullQueue full;
        Elsewhere([&] {
            int onTheStack = 0;
            EXPECT_EQ(WhatOf<local_rpc_exception>([&] {
                          CallSync(
                              object, [&onTheStack] { ++onTheStack; }, platform::Infinite);
                      }),
                      Refused);
        });
    }
    object.Post(nullptr);
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
}

// The window by itself, to speak to it directly.
TEST_F(WndMsgPump, EachTickOfTheTimerActsAsAWake) {
    const std::shared_ptr<CWndImpl> window = CWndImpl::Make(*m_Pump);
    {
        const CFullQueue full;
        EXPECT_FALSE(PostNote(1));
    }
    EXPECT_TRUE(window->Handle().Send(CWndImpl::SetTimerMessage, 1, 1));
    while (m_Notes.empty()) {
        EXPECT_EQ(platform::WaitForEventOrMessages(nullptr, platform::Infinite), platform::WaitInput);
        platform::DispatchPendingMessages();
    }
    EXPECT_TRUE(window->Handle().Send(CWndImpl::SetTimerMessage, 0, 0));
    EXPECT_EQ(platform::WaitForEventOrMessages(nullptr, 5), platform::WaitTimeout);
}

TEST_F(WndMsgPump, TheWindowKnowsItsOwnMessagesOnly) {
    const std::shared_ptr<CWndImpl> window = CWndImpl::Make(*m_Pump);
    std::intptr_t result = 0;
    EXPECT_TRUE(window->ProcessWindowMessage(CWndImpl::ProcessMessage, 0, 0, result, 0));
    EXPECT_FALSE(window->ProcessWindowMessage(CWndImpl::ProcessMessage - 1, 0, 0, result, 0));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_FALSE(window->ProcessWindowMessage(CWndImpl::ProcessMessage, 0, 0, result, 1));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"0==dwMsgMapID"));
}

struct COpenPump : CWndMsgPump {
    COpenPump() : CWndMsgPump(true) {}
    using CWndMsgPumpBase::m_AllowNested;
    using CWndMsgPumpBase::m_Suspended;
    using CWndMsgPumpBase::Process;
};

TEST_F(WndMsgPump, ASuspendedOneTakesWakesWithoutEffect) {
    const boost::intrusive_ptr<COpenPump> pump(new COpenPump);
    Replace(pump.get());
    pump->m_Suspended = true;
    PostNote(1);
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, IsEmpty());
    pump->m_Suspended = false;
    PostNote(2);
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

TEST_F(WndMsgPump, NestedTasksRunWhereTheyAreAllowed) {
    const boost::intrusive_ptr<COpenPump> pump(new COpenPump);
    Replace(pump.get());
    pump->m_AllowNested = true;
    pump->Post(MakeAsyncTask([&] {
        PostNote(1);
        platform::DispatchPendingMessages();
        m_Notes.push_back(2);
    }));
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

TEST_F(WndMsgPump, ALimitedRunLeavesTheRestToAnotherWake) {
    const boost::intrusive_ptr<COpenPump> pump(new COpenPump);
    Replace(pump.get());
    Elsewhere([&] { PostNote(1); });
    EXPECT_THAT(m_Notes, IsEmpty());
    pump->Process(0);
    EXPECT_THAT(m_Notes, IsEmpty());
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U, 1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1));
    PostNote(2);
    pump->Process(60000);
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

} // namespace
} // namespace LocalRPC
