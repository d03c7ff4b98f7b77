// Eight threads that post, call, start and stop at once. What counts is that it ends, and what the sanitizers say.

#include "Help.h"
#include "platform/event.h"
#include "platform/message_queue.h"
#include "unicomp/LocalRPC/interface/LocalRPC.h"

#include <memory>
#include <thread>
#include <vector>

namespace LocalRPC {
namespace {

constexpr int Threads = 8;
constexpr int Rounds = 150;

class Concurrency : public CRecordedTest {
protected:
    // Called or refused, but never left waiting.
    void CallOrBeRefused(CActiveObject_base& object) {
        ++m_Calls;
        try {
            int onTheStack = 0;
            CallSync(
                object, [&onTheStack] { ++onTheStack; }, platform::Infinite);
            EXPECT_EQ(onTheStack, 1);
        } catch (const local_rpc_exception& exception) {
            EXPECT_STREQ(exception.what(), Refused);
        }
    }
    void Use(CActiveObject_base& object, int thread, bool starts) {
        for (int i = 0; i < Rounds; ++i) {
            object.Post(MakeAsyncTask([this] { ++m_Runs; }));
            CallOrBeRefused(object);
            switch ((thread + i) % 16) {
            case 0:
                object.Stop(true, false);
                break;
            case 3:
                object.StopEx(false, platform::Infinite, i % 2 == 0);
                break;
            case 6:
                object.ClearQueue();
                break;
            case 9:
                object.Block(i % 2 == 0);
                break;
            case 12:
                if (starts) {
                    object.Start();
                }
                break;
            default:
                break;
            }
        }
    }

    std::atomic<int> m_Runs{0};
    std::atomic<int> m_Calls{0};
};

TEST_F(Concurrency, AThreadObjectSurvivesAllAtOnce) {
    CActiveObject_thread object;
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t)
        threads.emplace_back([this, &object, t] { Use(object, t, true); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(m_Calls, Threads * Rounds);
    EXPECT_THAT(Recorder::Asserts(), ::testing::IsEmpty());
}

TEST_F(Concurrency, AThreadObjectSurvivesFiniteStops) {
    CActiveObject_thread object;
    std::vector<std::thread> threads;
    // Held by the tasks, which may end on a thread that was abandoned.
    const auto running = std::make_shared<std::atomic<int>>(0);
    for (int t = 0; t < Threads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 20; ++i) {
                object.Post(MakeAsyncTask([running] { ++*running; }));
                CallOrBeRefused(object);
                if ((t + i) % 4 == 0) {
                    EXPECT_TRUE(object.StopEx(i % 2 == 0, static_cast<ULONG>(i % 3), false));
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(object.Stop(false, true));
    EXPECT_THAT(Recorder::Asserts(), ::testing::IsEmpty());
}

TEST_F(Concurrency, AWindowObjectSurvivesAllAtOnce) {
    CActiveObject_WndMsg object(true);
    auto ended = platform::CEvent::Create(platform::EEventReset::Automatic, false);
    std::atomic<int> open{Threads};
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t) {
        threads.emplace_back([&, t] {
            Use(object, t, false);
            --open;
            ended->Set();
        });
    }
    while (open > 0) {
        static_cast<void>(platform::WaitForEventOrMessages(&*ended, 1));
        platform::DispatchPendingMessages();
        object.Start(); // others stop and block it
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(m_Calls, Threads * Rounds);
    EXPECT_THAT(Recorder::Asserts(), ::testing::IsEmpty());
}

// Posts join wakes, and none of them may be the one that nobody serves.
TEST_F(Concurrency, NoTaskOfManyPostersIsLeftLying) {
    CActiveObject_WndMsg object(true);
    static constexpr int Posts = 3000;
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < Posts; ++i)
                EXPECT_TRUE(object.Post(MakeAsyncTask([this] {
                    if (++m_Runs == Threads * Posts)
                        platform::PostQuitMessage(0);
                })));
        });
    }
    EXPECT_EQ(platform::RunMessageLoop(), 0);
    EXPECT_EQ(m_Runs, Threads * Posts);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
} // namespace LocalRPC
