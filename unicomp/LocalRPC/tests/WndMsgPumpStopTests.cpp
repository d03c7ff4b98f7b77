// Stops, starts and ends of threads that come while a task runs.

#include "CountingStorage.h"
#include "WndMsgPumpHelp.h"

#include <memory>
#include <optional>

namespace LocalRPC {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WndMsgPumpStop : public CWndMsgPumpTest {
protected:
    // A stop on another thread, begun and served by the task that this is called from.
    void ServeAStopFromAnotherThread(bool clear) {
        m_Stopper = std::thread([this, clear] {
            EXPECT_TRUE(m_Pump->Stop(clear, true));
            m_NotesAtStop = m_Notes;
            m_Stopped.Set();
        });
        // Nothing else comes to this thread now.
        EXPECT_EQ(platform::WaitForEventOrMessages(nullptr, platform::Infinite), platform::WaitInput);
        platform::DispatchPendingMessages();
        EXPECT_EQ(m_Stopped.Wait(20), platform::WaitTimeout) << "what the task uses may go with the stop";
    }
    void TearDown() override {
        if (m_Stopper.joinable())
            m_Stopper.join();
        CWndMsgPumpTest::TearDown();
    }

    platform::CEvent m_Stopped = *platform::CEvent::Create(platform::EEventReset::Manual, false);
    std::thread m_Stopper;
    std::vector<int> m_NotesAtStop;
};

TEST_F(WndMsgPumpStop, FromAnotherThreadLastsUntilTheTaskThatHasServedItIsOver) {
    PostNote(0);
    m_Pump->Post(MakeAsyncTask([&] {
        PostNote(3);
        while (platform::WaitForEventOrMessages(nullptr, 0) == platform::WaitInput)
            platform::DispatchPendingMessages();
        ServeAStopFromAnotherThread(true);
        m_Notes.push_back(1);
    }));
    platform::DispatchPendingMessages();
    m_Stopper.join();
    EXPECT_THAT(m_NotesAtStop, ElementsAre(0, 1));
    EXPECT_THAT(m_Notes, ElementsAre(0, 1));
}

TEST_F(WndMsgPumpStop, WithoutClearItLastsUntilTheTasksBehindThatOneAreOverToo) {
    m_Pump->Post(MakeAsyncTask([&] {
        ServeAStopFromAnotherThread(false);
        m_Notes.push_back(1);
    }));
    // The wake for it is taken by the first.
    Elsewhere([&] { PostNote(2); });
    platform::DispatchPendingMessages();
    m_Stopper.join();
    EXPECT_THAT(m_NotesAtStop, ElementsAre(1, 2));
}

TEST_F(WndMsgPumpStop, FromAnotherThreadLastsUntilATaskRunInPlaceIsOver) {
    EXPECT_TRUE(m_Pump->Post(MakeSyncTask([&] {
        ServeAStopFromAnotherThread(true);
        m_Notes.push_back(1);
    })));
    m_Stopper.join();
    EXPECT_THAT(m_NotesAtStop, ElementsAre(1));
}

// What a storage does at its end: the object goes behind the stop.
TEST_F(WndMsgPumpStop, WhatATaskUsesMayGoBehindAStopOnAnotherThread) {
    auto used = std::make_unique<std::vector<int>>();
    std::vector<int>* const inTask = used.get();
    std::thread releaser;
    m_Pump->Post(MakeAsyncTask([&] {
        releaser = std::thread([&] {
            EXPECT_TRUE(m_Pump->Stop(true, true));
            used.reset();
        });
        while (m_Pump->IsRunning() || m_Pump->GetThreadId() != NoThread)
            platform::DispatchPendingMessages();
        platform::DispatchPendingMessages();
        for (int i = 0; i < 1000; ++i)
            inTask->push_back(i);
    }));
    platform::DispatchPendingMessages();
    while (m_Pump->IsRunning() || platform::WaitForEventOrMessages(nullptr, 1) == platform::WaitInput)
        platform::DispatchPendingMessages();
    releaser.join();
    EXPECT_FALSE(used);
}

TEST_F(WndMsgPumpStop, ATaskMaySendToTheThreadThatWaitsForItsEnd) {
    struct CWindow : platform::CMessageWindow {
        bool ProcessWindowMessage(DWORD, std::uintptr_t first, std::uintptr_t, std::intptr_t& result,
                                  DWORD) override {
            result = static_cast<std::intptr_t>(first) + 1;
            return true;
        }
    };
    platform::CWindowHandle handle;
    CGate made;
    std::thread stopper;
    m_Pump->Post(MakeAsyncTask([&] {
        stopper = std::thread([&] {
            CWindow window;
            EXPECT_TRUE(window.Create());
            handle = window.Handle();
            made.Open();
            EXPECT_TRUE(m_Pump->Stop(true, true));
        });
        made.Pass();
        EXPECT_EQ(platform::WaitForEventOrMessages(nullptr, platform::Infinite), platform::WaitInput);
        platform::DispatchPendingMessages();
        EXPECT_EQ(handle.Send(platform::UserMessage, 6), 7);
    }));
    platform::DispatchPendingMessages();
    stopper.join();
}

TEST_F(WndMsgPumpStop, AStartOnAnotherThreadWaitsForTheTaskToo) {
    std::thread starter;
    m_Pump->Post(MakeAsyncTask([&] {
        starter = std::thread([&] {
            EXPECT_TRUE(m_Pump->Start());
            EXPECT_THAT(m_Notes, ElementsAre(1));
            PostNote(2);
            platform::DispatchPendingMessages();
            EXPECT_THAT(m_Notes, ElementsAre(1, 2));
            EXPECT_TRUE(m_Pump->Stop(true, true));
        });
        EXPECT_EQ(platform::WaitForEventOrMessages(nullptr, platform::Infinite), platform::WaitInput);
        platform::DispatchPendingMessages();
        m_Notes.push_back(1);
    }));
    platform::DispatchPendingMessages();
    starter.join();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

// A task may stop its object, and hand it to another thread before it ends.
TEST_F(WndMsgPumpStop, ATaskOfTheFormerThreadDoesNotHoldUpTheNewOne) {
    m_Pump->Post(MakeAsyncTask([&] {
        EXPECT_TRUE(m_Pump->Stop(true, true));
        Elsewhere([&] {
            EXPECT_TRUE(m_Pump->Start());
            PostNote(1);
            platform::DispatchPendingMessages();
            EXPECT_THAT(m_Notes, ElementsAre(1));
            EXPECT_TRUE(m_Pump->Stop(true, true));
        });
        m_Notes.push_back(2);
    }));
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

TEST_F(WndMsgPumpStop, TheFormerThreadLeavesTheQueueToTheNewOne) {
    CGate started;
    CGate mayServe;
    std::thread owner;
    m_Pump->Post(MakeAsyncTask([&] {
        EXPECT_TRUE(m_Pump->Stop(true, true));
        owner = std::thread([&] {
            EXPECT_TRUE(m_Pump->Start());
            PostNote(1);
            started.Open();
            mayServe.Pass();
            platform::DispatchPendingMessages();
            EXPECT_EQ(m_NotesThread, platform::CurrentThreadId());
            EXPECT_TRUE(m_Pump->Stop(true, true));
        });
        started.Pass();
    }));
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, IsEmpty());
    mayServe.Open();
    owner.join();
    EXPECT_THAT(m_Notes, ElementsAre(1));
}

// ---- Wakes ----

TEST_F(WndMsgPumpStop, AWakeMissedByATaskInPlaceIsNotLostWhenTheMessageQueueIsFull) {
    std::optional<CFullQueue> full;
    EXPECT_TRUE(m_Pump->Post(MakeSyncTask([&] {
        Elsewhere([&] { PostNote(1); });
        platform::DispatchPendingMessages();
        full.emplace();
    })));
    EXPECT_THAT(m_Notes, ElementsAre(1));
    full.reset();
    Elsewhere([&] { EXPECT_TRUE(PostNote(2)); });
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

struct COpenPump : CWndMsgPump {
    COpenPump() : CWndMsgPump(true) {}
    using CWndMsgPumpBase::Process;
};

TEST_F(WndMsgPumpStop, ALimitedRunThatCannotWakeAgainLetsTheNextPostWake) {
    const boost::intrusive_ptr<COpenPump> pump(new COpenPump);
    Replace(pump.get());
    m_Pump->Block(true);
    m_Pump->Unblock();
    Elsewhere([&] { PostNote(1); });
    platform::tagMessage wake;
    EXPECT_TRUE(platform::TakeMessage(wake));
    {
        const CFullQueue full;
        pump->Process(0);
    }
    Elsewhere([&] { PostNote(2); });
    EXPECT_THAT(ServeAndList(), ElementsAre(1025U));
    EXPECT_THAT(m_Notes, ElementsAre(1, 2));
}

// ---- Windows that are not the transport's own any more ----

TEST_F(WndMsgPumpStop, TheEndOfAThreadWithAWindowOfItsOwnLeavesTheQueueAlone) {
    PostNote(1);
    std::shared_ptr<CWndImpl> stray;
    Elsewhere([&] { stray = CWndImpl::Make(*m_Pump); });
    stray.reset();
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, ElementsAre(1));
}

TEST_F(WndMsgPumpStop, TheEndOfAStrayWindowsThreadDropsWhatAStopHasLeft) {
    const auto alive = std::make_shared<int>(0);
    const boost::intrusive_ptr<CCountingPump> pump(new CCountingPump);
    EXPECT_TRUE(pump->Start());
    pump->Storage.BeforePush = [&] { EXPECT_TRUE(pump->Stop(true, true)); };
    EXPECT_FALSE(pump->Post(MakeAsyncTask([alive] {})));
    EXPECT_EQ(alive.use_count(), 2);
    std::shared_ptr<CWndImpl> stray;
    Elsewhere([&] { stray = CWndImpl::Make(*pump); });
    EXPECT_EQ(alive.use_count(), 1);
}

// ---- A stop between the steps of a post ----

TEST_F(WndMsgPumpStop, WhatAPostPushesBehindTheStopIsRefusedAndNeverRuns) {
    const boost::intrusive_ptr<CCountingPump> pump(new CCountingPump);
    for (const bool sync : {false, true}) {
        EXPECT_TRUE(pump->Start());
        pump->Storage.BeforePush = [&] { EXPECT_TRUE(pump->Stop(true, true)); };
        const auto run = [&] { m_Notes.push_back(1); };
        const CTaskPtr task = sync ? MakeSyncTask(run) : MakeAsyncTask(run);
        // A synchronous one of the own thread would not be pushed.
        const auto post = [&] { EXPECT_FALSE(pump->Post(task)); };
        sync ? ElsewhereWhileServing(post) : post();
        EXPECT_EQ(task->Wait(0, 0), sync ? platform::WaitAbandoned : platform::WaitSignalled);
        pump->Storage.BeforePush = nullptr;
        EXPECT_TRUE(pump->Start());
        EXPECT_TRUE(pump->Post(nullptr));
        platform::DispatchPendingMessages();
        EXPECT_THAT(m_Notes, IsEmpty());
        EXPECT_TRUE(pump->Stop(true, true));
    }
}

// ---- The steps of a stop and of a task ----

TEST_F(WndMsgPumpStop, TheStorageIsToldAfterEachTask) {
    const boost::intrusive_ptr<CCountingPump> pump(new CCountingPump);
    EXPECT_TRUE(pump->Start());
    std::vector<int> doneBefore;
    const auto note = [&] { doneBefore.push_back(pump->Storage.Done); };
    pump->Post(MakeAsyncTask(note));
    pump->Post(MakeAsyncTask([&] {
        note();
        throw 1;
    }));
    pump->Post(MakeAsyncTask(note));
    platform::DispatchPendingMessages();
    EXPECT_THAT(doneBefore, ElementsAre(0, 1, 2));
    EXPECT_EQ(pump->Storage.Done, 3);
    EXPECT_TRUE(pump->Stop(true, true));
}

TEST_F(WndMsgPumpStop, TheWindowKillsItsTimerFirst) {
    platform::tagMessage killed;
    m_Pump->Post(MakeAsyncTask([&] {
        while (platform::TakeMessage(killed) && killed.Message != CWndImpl::SetTimerMessage)
            continue;
    }));
    EXPECT_TRUE(m_Pump->Stop(false, true));
    EXPECT_EQ(killed.Message, 1027U);
    EXPECT_EQ(killed.First, 0U);
    EXPECT_EQ(killed.Second, 0U);
}

TEST_F(WndMsgPumpStop, AWindowThatIsGoneBeforeItsTimeIsReported) {
    std::shared_ptr<CWndImpl> window = CWndImpl::Make(*m_Pump);
    CWndImpl* const inTask = window.get();
    Elsewhere([&] { m_Pump->Post(MakeAsyncTask([&] { EXPECT_TRUE(inTask->DestroyWindow()); })); });
    window.reset();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"_res"));
}

TEST_F(WndMsgPumpStop, ABlockedOneRefusesBothKindsFromItsOwnTasks) {
    m_Pump->Post(MakeAsyncTask([&] {
        m_Pump->Block(false);
        EXPECT_FALSE(PostNote(1));
        EXPECT_FALSE(m_Pump->Post(MakeSyncTask([&] { m_Notes.push_back(2); })));
    }));
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Notes, IsEmpty());
}

} // namespace
} // namespace LocalRPC
