#include "platform/message_queue.h"

#include "platform/com/apartment.h"
#include "platform/event.h"
#include "platform/last_error.h"
#include "platform/tests/support/Gate.h"
#include "platform/tests/support/ProcessLimits.h"
#include "platform/thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <functional>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

namespace platform {
namespace {

using platform_tests::CGate;
using platform_tests::IsDescriptorReadable;
using ::testing::ElementsAre;

constexpr DWORD Note = UserMessage + 1;
constexpr DWORD Perform = UserMessage + 2;

// Notes the first parameter of each message, or runs what it is told to.
class CWindow : public CMessageWindow {
public:
    explicit CWindow(bool create = true) {
        if (create) {
            EXPECT_TRUE(Create());
        }
    }
    ~CWindow() override { ++Deaths(); }

    bool ProcessWindowMessage(DWORD message, std::uintptr_t first, std::uintptr_t, std::intptr_t& result,
                              DWORD) override {
        if (message == Perform) {
            (*reinterpret_cast<std::function<void()>*>(first))();
        } else {
            Notes.push_back(static_cast<int>(first));
            Messages.push_back(message);
        }
        result = static_cast<std::intptr_t>(first) * 2;
        return true;
    }
    void OnFinalMessage() noexcept override {
        if (DeletesItself)
            delete this;
    }
    void OnThreadEnd() noexcept override {
        if (ThreadEnd)
            ThreadEnd();
    }

    static std::atomic<int>& Deaths() {
        static std::atomic<int> deaths{0};
        return deaths;
    }

    std::vector<int> Notes;
    std::vector<DWORD> Messages;
    std::function<void()> ThreadEnd;
    bool DeletesItself = false;
};

// A thread with a window, which serves its queue until it is told to end.
class CServer {
public:
    CServer() {
        m_Thread = std::thread([this] {
            CWindow window;
            Window = &window;
            Queue = CMessageQueueHandle::Current();
            m_Ready.Open();
            RunMessageLoop();
        });
        m_Ready.Pass();
    }
    ~CServer() { Join(); }
    void Join() {
        Queue.PostQuit(0);
        if (m_Thread.joinable())
            m_Thread.join();
    }
    // On the server's thread, before the answer.
    void Do(std::function<void()> body) {
        EXPECT_TRUE(Window->Handle().Send(Perform, reinterpret_cast<std::uintptr_t>(&body)));
    }

    CWindow* Window = nullptr;
    CMessageQueueHandle Queue;

private:
    CGate m_Ready;
    std::thread m_Thread;
};

CEvent MakeEvent() { return std::move(*CEvent::Create(EEventReset::Automatic, false)); }

TEST(MessageQueue, DeliversPostsInTheirOrder) {
    CWindow one;
    CWindow two;
    EXPECT_TRUE(one.Handle().Post(Note, 1));
    EXPECT_TRUE(two.Handle().Post(Note, 2));
    EXPECT_TRUE(one.Handle().Post(Note, 3));
    EXPECT_TRUE(one.Notes.empty());
    EXPECT_TRUE(DispatchPendingMessages());
    EXPECT_THAT(one.Notes, ElementsAre(1, 3));
    EXPECT_THAT(two.Notes, ElementsAre(2));
}

TEST(MessageQueue, TakesMessagesOneByOneForLoopsOfTheirOwn) {
    CWindow window;
    window.Handle().Post(Note, 4, 5);
    tagMessage message;
    ASSERT_TRUE(TakeMessage(message));
    EXPECT_EQ(message.Message, Note);
    EXPECT_EQ(message.First, 4U);
    EXPECT_EQ(message.Second, 5U);
    EXPECT_EQ(DispatchMessage(message), 8);
    EXPECT_FALSE(TakeMessage(message));
}

TEST(MessageQueue, LeavesWhatIsPostedWhileDispatchingForTheNextTime) {
    CWindow window;
    std::function<void()> again = [&] { window.Handle().Post(Note, 1); };
    window.Handle().Post(Perform, reinterpret_cast<std::uintptr_t>(&again));
    DispatchPendingMessages();
    EXPECT_TRUE(window.Notes.empty());
    DispatchPendingMessages();
    EXPECT_THAT(window.Notes, ElementsAre(1));
}

TEST(MessageQueue, WakesOnceForAnyNumberOfPosts) {
    CWindow window;
    const auto queue = CMessageQueueHandle::Current();
    const std::uint64_t before = queue.WakeCount();
    std::thread poster([&] {
        for (int i = 0; i < 1000; ++i)
            EXPECT_TRUE(window.Handle().Post(Note, 1));
    });
    poster.join();
    EXPECT_EQ(queue.WakeCount(), before + 1);
    DispatchPendingMessages();
    EXPECT_EQ(window.Notes.size(), 1000U);
    window.Handle().Post(Note, 1);
    EXPECT_EQ(queue.WakeCount(), before + 2);
    DispatchPendingMessages();
}

TEST(MessageQueue, KeepsItsDescriptorReadableWhileAnythingWaits) {
    CWindow window;
    const int descriptor = MessageQueueDescriptor();
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(MessageQueueDescriptor(), descriptor);
    EXPECT_FALSE(IsDescriptorReadable(descriptor));
    window.Handle().Post(Note, 1);
    window.Handle().Post(Note, 2);
    EXPECT_TRUE(IsDescriptorReadable(descriptor));
    tagMessage message;
    EXPECT_TRUE(TakeMessage(message));
    EXPECT_TRUE(IsDescriptorReadable(descriptor));
    EXPECT_TRUE(TakeMessage(message));
    EXPECT_FALSE(IsDescriptorReadable(descriptor));
}

TEST(MessageQueue, RefusesPostsWhenItIsFull) {
    CWindow window;
    for (std::size_t i = 0; i < MaxPostedMessages; ++i)
        ASSERT_TRUE(window.Handle().Post(Note));
    EXPECT_FALSE(window.Handle().Post(Note));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOBUFS));
    DispatchPendingMessages();
    EXPECT_EQ(window.Notes.size(), MaxPostedMessages);
    EXPECT_TRUE(window.Handle().Post(Note));
    DispatchPendingMessages();
}

TEST(MessageQueue, DropsWhatIsPostedToADestroyedWindow) {
    CWindow window;
    const CWindowHandle handle = window.Handle();
    const int descriptor = MessageQueueDescriptor();
    handle.Post(Note, 1);
    EXPECT_TRUE(window.IsWindow());
    EXPECT_TRUE(window.DestroyWindow());
    EXPECT_FALSE(window.IsWindow());
    EXPECT_FALSE(IsDescriptorReadable(descriptor));
    DispatchPendingMessages();
    EXPECT_TRUE(window.Notes.empty());
    EXPECT_FALSE(handle.Post(Note, 2));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ESRCH));
    EXPECT_EQ(handle.Send(Note, 3), std::nullopt);
    EXPECT_FALSE(window.DestroyWindow());
}

TEST(MessageQueue, IgnoresAMessageTakenBeforeItsWindowWent) {
    auto window = std::make_unique<CWindow>();
    window->Handle().Post(Note, 1);
    tagMessage message;
    ASSERT_TRUE(TakeMessage(message));
    window.reset();
    EXPECT_EQ(DispatchMessage(message), 0);
}

TEST(MessageQueue, HasNothingToSayToAHandleOfNoWindow) {
    const CWindowHandle handle;
    EXPECT_FALSE(handle.Post(Note));
    EXPECT_EQ(handle.Send(Note), std::nullopt);
    EXPECT_FALSE(handle.Exists());
    EXPECT_EQ(handle.ThreadId(), 0U);
}

TEST(MessageQueue, MakesTheLastCallWhenNoMessageIsBeingHandled) {
    const int deaths = CWindow::Deaths();
    auto* window = new CWindow;
    window->DeletesItself = true;
    const CWindowHandle handle = window->Handle();
    int deathsWithin = -1;
    std::function<void()> destroy = [&] {
        EXPECT_TRUE(window->DestroyWindow());
        deathsWithin = CWindow::Deaths();
    };
    EXPECT_TRUE(handle.Send(Perform, reinterpret_cast<std::uintptr_t>(&destroy)));
    EXPECT_EQ(deathsWithin, deaths);
    EXPECT_EQ(CWindow::Deaths(), deaths + 1);
    auto* other = new CWindow;
    other->DeletesItself = true;
    EXPECT_TRUE(other->DestroyWindow());
    EXPECT_EQ(CWindow::Deaths(), deaths + 2);
}

TEST(MessageQueue, DestroysWindowsOnTheirOwnThreadOnly) {
    CServer server;
    EXPECT_FALSE(server.Window->DestroyWindow());
    EXPECT_TRUE(server.Window->IsWindow());
}

TEST(MessageQueue, CallsDirectlyWhenAThreadSendsToItself) {
    CWindow window;
    EXPECT_EQ(window.Handle().Send(Note, 21), 42);
    EXPECT_THAT(window.Notes, ElementsAre(21));
    EXPECT_EQ(window.Handle().ThreadId(), CurrentThreadId());
}

TEST(MessageQueue, AnswersASenderFromTheWindowsThread) {
    CServer server;
    DWORD handledOn = 0;
    server.Do([&] { handledOn = CurrentThreadId(); });
    EXPECT_EQ(handledOn, server.Window->Handle().ThreadId());
    EXPECT_NE(handledOn, CurrentThreadId());
    EXPECT_EQ(server.Window->Handle().Send(Note, 4), 8);
}

TEST(MessageQueue, ServesSendsBeforePosts) {
    CWindow window;
    window.Handle().Post(Note, 1);
    std::thread sender([&] { EXPECT_EQ(window.Handle().Send(Note, 2), 4); });
    // The post has waked already, so the wake of the send cannot be told from it: serve until the sender is
    // through.
    while (window.Notes.size() < 2) {
        if (window.Notes.empty() && WaitForEventOrMessages(nullptr, Infinite) == WaitInput)
            std::this_thread::yield();
        tagMessage message;
        if (TakeMessage(message))
            DispatchMessage(message);
    }
    sender.join();
    EXPECT_EQ(window.Notes.size(), 2U);
}

TEST(MessageQueue, LetsTwoThreadsSendToEachOther) {
    CWindow window;
    CServer server;
    server.Do([&] {
        // This thread waits in its own send meanwhile.
        EXPECT_EQ(window.Handle().Send(Note, 5), 10);
    });
    EXPECT_THAT(window.Notes, ElementsAre(5));
}

TEST(MessageQueue, KeepsTheSenderWaitingForAnAnswerThatIsDeferred) {
    CServer server;
    std::optional<CDeferredReply> reply;
    std::atomic<bool> isAnswered{false};
    std::thread sender([&] {
        server.Do([&] {
            reply.emplace(CDeferredReply::Take());
            EXPECT_TRUE(*reply);
            EXPECT_FALSE(CDeferredReply::Take()) << "one message has one answer";
        });
        isAnswered = true;
    });
    server.Do([&] {
        // Its turn has come before, or comes now.
        while (!reply)
            DispatchPendingMessages();
        EXPECT_FALSE(isAnswered);
        reply.reset();
    });
    sender.join();
    EXPECT_TRUE(isAnswered);
    EXPECT_EQ(server.Window->Handle().Send(Note, 4), 8) << "the next one is answered as ever";
}

TEST(MessageQueue, DefersNoAnswerThatNobodyWaitsFor) {
    CWindow window;
    int asked = 0;
    std::function<void()> ask = [&] {
        EXPECT_FALSE(CDeferredReply::Take());
        ++asked;
    };
    const auto argument = reinterpret_cast<std::uintptr_t>(&ask);
    window.Handle().Post(Perform, argument);
    DispatchPendingMessages();
    window.Handle().Send(Perform, argument);
    // Nor the answer to the message within which the thread sends to itself.
    CServer server;
    server.Do([&] { server.Window->Handle().Send(Perform, argument); });
    EXPECT_EQ(asked, 3);
}

TEST(MessageQueue, DefersTheAnswerAlsoOfAHandlerThatThrows) {
    CServer server;
    std::optional<CDeferredReply> reply;
    std::thread sender;
    server.Do([&] {
        sender = std::thread([&] {
            std::function<void()> body = [&] {
                reply.emplace(CDeferredReply::Take());
                throw std::runtime_error("handler");
            };
            EXPECT_EQ(server.Window->Handle().Send(Perform, reinterpret_cast<std::uintptr_t>(&body)), 0);
        });
        while (!reply) {
            try {
                DispatchPendingMessages();
            } catch (const std::runtime_error&) {
            }
        }
        reply.reset();
    });
    sender.join();
}

TEST(MessageQueue, HandlesNothingElseDuringABlockingSend) {
    CWindow window;
    CServer server;
    std::function<void()> sendBack = [&] {
        EXPECT_EQ(window.Handle().SendTimeout(Note, 5, 0, false, 1), std::nullopt);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ETIMEDOUT));
    };
    EXPECT_TRUE(server.Window->Handle().SendTimeout(Perform, reinterpret_cast<std::uintptr_t>(&sendBack), 0, true,
                                                    Infinite));
    DispatchPendingMessages();
    EXPECT_TRUE(window.Notes.empty());
}

TEST(MessageQueue, WithdrawsWhatIsNotBegunInTime) {
    CServer server;
    CGate busy;
    CGate goOn;
    std::function<void()> hold = [&] {
        busy.Open();
        goOn.Pass();
    };
    server.Window->Handle().Post(Perform, reinterpret_cast<std::uintptr_t>(&hold));
    busy.Pass();
    EXPECT_EQ(server.Window->Handle().SendTimeout(Note, 1, 0, false, 5), std::nullopt);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ETIMEDOUT));
    goOn.Open();
    EXPECT_EQ(server.Window->Handle().Send(Note, 2), 4);
    server.Do([&] { EXPECT_THAT(server.Window->Notes, ElementsAre(2)); });
}

TEST(MessageQueue, FailsASendWhoseWindowIsDestroyedFirst) {
    CServer server;
    CGate busy;
    auto window = std::unique_ptr<CWindow>();
    server.Do([&] { window = std::make_unique<CWindow>(); });
    CMessageQueueHandle queue = server.Queue;
    std::function<void()> destroy = [&] {
        // The sender's message makes the queue of this thread wake again.
        const std::uint64_t wakes = queue.WakeCount();
        busy.Open();
        while (queue.WakeCount() == wakes)
            std::this_thread::yield();
        EXPECT_TRUE(window->DestroyWindow());
    };
    server.Window->Handle().Post(Perform, reinterpret_cast<std::uintptr_t>(&destroy));
    busy.Pass();
    EXPECT_EQ(window->Handle().Send(Note, 1), std::nullopt);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ESRCH));
    server.Do([] {}); // the sender is let go before the window is quite gone
}

TEST(MessageQueue, FailsTheSendWhoseHandlerThrows) {
    CWindow window;
    std::function<void()> fail = [] { throw std::runtime_error("handler"); };
    CGate sent;
    std::thread sender([&] {
        EXPECT_EQ(window.Handle().Send(Perform, reinterpret_cast<std::uintptr_t>(&fail)), std::nullopt);
        sent.Open();
    });
    EXPECT_EQ(WaitForEventOrMessages(nullptr, Infinite), WaitInput);
    EXPECT_THROW(DispatchPendingMessages(), std::runtime_error);
    sent.Pass();
    sender.join();
    EXPECT_EQ(window.Handle().Send(Note, 1), 2);
}

TEST(MessageQueue, FailsSendsAtOnceWhenTheThreadHasEnded) {
    CWindow* window = nullptr;
    CWindowHandle handle;
    std::thread([&] {
        window = new CWindow;
        handle = window->Handle();
        handle.Post(Note, 1);
    }).join();
    EXPECT_FALSE(handle.Exists());
    EXPECT_EQ(handle.Send(Note, 2), std::nullopt);
    EXPECT_FALSE(handle.Post(Note, 3));
    EXPECT_TRUE(window->Notes.empty());
    delete window;
}

TEST(MessageQueue, FailsTheSendThatWaitsWhenTheThreadEnds) {
    CServer server;
    CGate busy;
    CMessageQueueHandle queue = server.Queue;
    auto* window = static_cast<CWindow*>(nullptr);
    server.Do([&] {
        window = new CWindow;
        window->ThreadEnd = [&] {
            const std::uint64_t wakes = queue.WakeCount();
            busy.Open();
            while (queue.WakeCount() == wakes)
                std::this_thread::yield();
        };
    });
    std::thread sender([&] {
        busy.Pass();
        EXPECT_EQ(window->Handle().Send(Note, 1), std::nullopt);
    });
    server.Join();
    sender.join();
    delete window;
}

TEST(MessageQueue, TellsTheWindowsOfTheThreadsEnd) {
    int told = 0;
    CWindow* window = nullptr;
    std::thread([&] {
        window = new CWindow;
        window->ThreadEnd = [&] {
            ++told;
            EXPECT_FALSE(window->Handle().Post(Note));
            CWindow late(false);
            EXPECT_FALSE(late.Create());
        };
    }).join();
    EXPECT_EQ(told, 1);
    delete window;
}

TEST(MessageQueue, GivesItsDescriptorsBackWhenTheThreadEnds) {
    const int before = platform_tests::OpenDescriptors();
    std::thread([] {
        const CWindow window;
        EXPECT_GE(MessageQueueDescriptor(), 0);
    }).join();
    EXPECT_EQ(platform_tests::OpenDescriptors(), before);
}

TEST(MessageQueue, RunsUntilQuitAndAnswersWithTheExitCode) {
    CWindow window;
    window.Handle().Post(Note, 1);
    PostQuitMessage(3);
    window.Handle().Post(Note, 2);
    EXPECT_EQ(RunMessageLoop(), 3);
    EXPECT_THAT(window.Notes, ElementsAre(1));
    DispatchPendingMessages();
    EXPECT_THAT(window.Notes, ElementsAre(1, 2));
}

TEST(MessageQueue, CanBeToldToQuitByAnotherThread) {
    const auto queue = CMessageQueueHandle::Current();
    std::thread other([&] { EXPECT_TRUE(queue.PostQuit(9)); });
    EXPECT_EQ(RunMessageLoop(), 9);
    other.join();
    CMessageQueueHandle ended;
    std::thread([&] { ended = CMessageQueueHandle::Current(); }).join();
    EXPECT_FALSE(ended.PostQuit(0));
    EXPECT_FALSE(CMessageQueueHandle().PostQuit(0));
}

TEST(MessageQueue, TellsAForeignLoopOfQuitOnce) {
    PostQuitMessage(0);
    EXPECT_FALSE(DispatchPendingMessages());
    EXPECT_TRUE(DispatchPendingMessages());
}

TEST(MessageQueue, TicksUntilTheTimerIsKilled) {
    CWindow window;
    const int descriptor = MessageQueueDescriptor();
    ASSERT_TRUE(window.SetTimer(6, 1));
    while (window.Notes.size() < 3) {
        EXPECT_TRUE(platform_tests::WaitReadable(descriptor, 60000));
        DispatchPendingMessages();
    }
    EXPECT_THAT(window.Notes, ::testing::Each(6));
    EXPECT_THAT(window.Messages, ::testing::Each(TimerMessage));
    EXPECT_TRUE(window.KillTimer(6));
    EXPECT_FALSE(window.KillTimer(6));
    EXPECT_FALSE(IsDescriptorReadable(descriptor));
    EXPECT_EQ(WaitForEventOrMessages(nullptr, 5), WaitTimeout);
}

TEST(MessageQueue, EndsTheTimersOfADestroyedWindow) {
    CWindow window;
    ASSERT_TRUE(window.SetTimer(0, 1));
    EXPECT_TRUE(window.DestroyWindow());
    EXPECT_EQ(WaitForEventOrMessages(nullptr, 5), WaitTimeout);
    EXPECT_FALSE(window.SetTimer(0, 1));
}

TEST(MessageQueue, WakesAWaitForAnEventForATimer) {
    CWindow window;
    CEvent never = MakeEvent();
    ASSERT_TRUE(window.SetTimer(0, 2));
    EXPECT_EQ(WaitForEventOrMessages(&never, Infinite), WaitInput);
    EXPECT_TRUE(window.KillTimer(0));
}

TEST(MessageQueue, EndsAWaitForTheEventOrForInput) {
    CWindow window;
    CEvent event = MakeEvent();
    EXPECT_EQ(WaitForEventOrMessages(&event, 0), WaitTimeout);
    window.Handle().Post(Note);
    EXPECT_EQ(WaitForEventOrMessages(&event, Infinite), WaitInput);
    // Input that is there already counts, and the event comes first.
    EXPECT_EQ(WaitForEventOrMessages(&event, Infinite), WaitInput);
    event.Set();
    EXPECT_EQ(WaitForEventOrMessages(&event, Infinite), WaitSignalled);
    EXPECT_EQ(WaitForEventOrMessages(&event, Infinite), WaitInput);
    DispatchPendingMessages();
    EXPECT_EQ(WaitForEventOrMessages(&event, 0), WaitTimeout);
}

TEST(MessageQueue, UsesNoProcessorWhileItWaits) {
    CWindow window;
    CEvent never = MakeEvent();
    const std::clock_t before = std::clock();
    EXPECT_EQ(WaitForEventOrMessages(&never, 100), WaitTimeout);
    const double used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
    EXPECT_LT(used, 0.05); // a loop that spins would have used all of the 0.1 seconds
}

TEST(MessageQueue, ReportsThatTheSystemRefusesAQueue) {
    // Sanitizers look up through a pipe what they meet for the first time.
    EXPECT_THROW(throw std::system_error(0, std::generic_category(), ""), std::system_error);
    std::thread([] {
        CWindow window(false);
        bool created = true;
        DWORD error = 0;
        HRESULT apartment = S_OK;
        int descriptor = 0;
        {
            const platform_tests::CNoMoreDescriptors limit;
            created = window.Create();
            error = GetLastError();
            apartment = CoInitialize(nullptr);
            descriptor = MessageQueueDescriptor();
            EXPECT_THROW(RunMessageLoop(), std::system_error);
            EXPECT_FALSE(CMessageQueueHandle::Current());
        }
        EXPECT_FALSE(created);
        EXPECT_EQ(error, static_cast<DWORD>(EMFILE));
        EXPECT_EQ(apartment, E_OUTOFMEMORY);
        EXPECT_EQ(descriptor, -1);
        // And works once there is room again.
        EXPECT_TRUE(window.Create());
        EXPECT_FALSE(window.Create());
    }).join();
}

TEST(Apartment, CountsItsCallsPerThread) {
    std::thread([] {
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
        int reserved = 0;
        EXPECT_EQ(CoInitialize(&reserved), E_INVALIDARG);
        CoUninitialize();
        CoUninitialize();
        CoUninitialize();
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        CoUninitialize();
    }).join();
}

TEST(MessageQueue, SurvivesManyThreadsAtOnce) {
    CServer server;
    constexpr int Threads = 8;
    constexpr int Rounds = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t) {
        threads.emplace_back([&] {
            CWindow mine;
            for (int i = 0; i < Rounds; ++i) {
                EXPECT_TRUE(server.Window->Handle().Post(Note, 0));
                server.Do([&] { EXPECT_EQ(mine.Handle().Send(Note, 1), 2); });
                static_cast<void>(server.Window->Handle().SendTimeout(Note, 0, 0, i % 2 == 0, i % 3));
            }
            EXPECT_EQ(mine.Notes.size(), static_cast<std::size_t>(Rounds));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
} // namespace platform
