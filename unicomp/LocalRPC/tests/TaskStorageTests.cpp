#include "../TaskStorage.h"

#include "../SpinRWLock.h"
#include "Help.h"

#include <mutex>
#include <shared_mutex>
#include <thread>
#include <vector>

namespace LocalRPC::details {
namespace {

using utils::CTaskStorage;

class TaskStorage : public CRecordedTest {
protected:
    CTaskPtr Pop() {
        CTaskPtr task;
        m_Storage.Pop(task);
        return task;
    }

    CTaskStorage m_Storage;
};

TEST_F(TaskStorage, PopOnAnEmptyQueueLeavesNull) {
    CTaskPtr task = MakeAsyncTask([] {});
    m_Storage.Pop(task);
    EXPECT_FALSE(task);
}

TEST_F(TaskStorage, TasksComeOutInTheOrderTheyWentIn) {
    const CTaskPtr first = MakeAsyncTask([] {});
    const CTaskPtr second = MakeAsyncTask([] {});
    m_Storage.Push(first);
    m_Storage.Push(second);
    m_Storage.OnTaskDone();
    EXPECT_EQ(Pop(), first);
    EXPECT_EQ(Pop(), second);
    EXPECT_FALSE(Pop());
}

TEST_F(TaskStorage, TheOrderHoldsAcrossPushesBetweenPops) {
    std::vector<CTaskPtr> tasks;
    for (int i = 0; i < 5; ++i)
        tasks.push_back(MakeAsyncTask([] {}));
    m_Storage.Push(tasks[0]);
    m_Storage.Push(tasks[1]);
    EXPECT_EQ(Pop(), tasks[0]);
    m_Storage.Push(tasks[2]);
    m_Storage.Push(tasks[3]);
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ(Pop(), tasks[i]);
    EXPECT_FALSE(Pop());
    m_Storage.Push(tasks[4]);
    EXPECT_EQ(Pop(), tasks[4]);
}

TEST_F(TaskStorage, TakeGivesAllThatIsLeftInItsOrder) {
    std::vector<CTaskPtr> tasks;
    for (int i = 0; i < 4; ++i)
        tasks.push_back(MakeAsyncTask([] {}));
    m_Storage.Push(tasks[0]);
    m_Storage.Push(tasks[1]);
    EXPECT_EQ(Pop(), tasks[0]);
    m_Storage.Push(tasks[2]);
    m_Storage.Push(tasks[3]);
    EXPECT_THAT(m_Storage.Take(), testing::ElementsAre(tasks[1], tasks[2], tasks[3]));
    EXPECT_FALSE(Pop());
}

TEST_F(TaskStorage, HoldsOneReferenceToEachTask) {
    const CTaskPtr task = MakeAsyncTask([] {});
    m_Storage.Push(task);
    EXPECT_EQ(task->AddRef(), 3);
    EXPECT_EQ(task->Release(), 2);
    m_Storage.Clear();
    EXPECT_EQ(task->AddRef(), 2);
    EXPECT_EQ(task->Release(), 1);
}

// A task's end may come back to the queue.
TEST_F(TaskStorage, TasksAreNotDestroyedUnderTheLock) {
    struct CComesBack {
        explicit CComesBack(CTaskStorage& storage) : Storage(&storage) {}
        CComesBack(CComesBack&& other) noexcept : Storage(std::exchange(other.Storage, nullptr)) {}
        ~CComesBack() {
            if (Storage == nullptr)
                return;
            CTaskPtr none;
            Storage->Pop(none);
            EXPECT_FALSE(none);
            Storage->Push(MakeAsyncTask([] {}));
        }
        void operator()() const {}
        CTaskStorage* Storage;
    };
    m_Storage.Push(MakeAsyncTask(CComesBack(m_Storage)));
    m_Storage.Clear();
    EXPECT_TRUE(Pop());
    EXPECT_FALSE(Pop());
    // Behind others, one of which was popped before.
    m_Storage.Push(MakeAsyncTask([] {}));
    m_Storage.Push(MakeAsyncTask(CComesBack(m_Storage)));
    EXPECT_TRUE(Pop());
    m_Storage.Clear();
    EXPECT_TRUE(Pop());
    EXPECT_FALSE(Pop());
    // As the receiver of the next one, too.
    CTaskPtr task = MakeAsyncTask(CComesBack(m_Storage));
    m_Storage.Pop(task);
    EXPECT_FALSE(task);
    EXPECT_TRUE(Pop());
}

TEST_F(TaskStorage, ClearReachesWhatIsNextToo) {
    const CTaskPtr task = MakeAsyncTask([] {});
    m_Storage.Push(MakeAsyncTask([] {}));
    m_Storage.Push(task);
    EXPECT_TRUE(Pop());
    m_Storage.Push(MakeAsyncTask([] {}));
    m_Storage.Clear();
    EXPECT_FALSE(Pop());
    EXPECT_EQ(task->AddRef(), 2);
    task->Release();
}

TEST_F(TaskStorage, ClearReleasesWhoWaitsForADroppedTask) {
    const CTaskPtr task = MakeSyncTask([] { FAIL() << "dropped tasks do not run"; });
    m_Storage.Push(task);
    m_Storage.Clear();
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitAbandoned);
    task->Execute();
}

TEST_F(TaskStorage, TheEndOfTheQueueReleasesWhoWaits) {
    const CTaskPtr task = MakeSyncTask([] {});
    {
        CTaskStorage storage;
        storage.Push(task);
    }
    EXPECT_EQ(task->Wait(platform::Infinite, 0), platform::WaitAbandoned);
}

TEST_F(TaskStorage, ClearLeavesARunningTaskAlone) {
    const CTaskPtr task = MakeSyncTask([this] { m_Storage.Clear(); });
    m_Storage.Push(task);
    m_Storage.Push(MakeAsyncTask([] {}));
    Pop()->Execute();
    EXPECT_EQ(task->Wait(0, 0), platform::WaitSignalled);
    EXPECT_FALSE(Pop());
}

TEST_F(TaskStorage, LosesNothingAmongThreads) {
    constexpr int Threads = 4;
    constexpr int Tasks = 2000;
    int run = 0; // by this thread alone
    std::vector<std::thread> pushers;
    for (int t = 0; t < Threads; ++t) {
        pushers.emplace_back([&] {
            for (int i = 0; i < Tasks; ++i)
                m_Storage.Push(MakeAsyncTask([&run] { ++run; }));
        });
    }
    while (run < Threads * Tasks) {
        if (const CTaskPtr task = Pop())
            task->Execute();
        else
            std::this_thread::yield();
    }
    for (std::thread& pusher : pushers)
        pusher.join();
    EXPECT_FALSE(Pop());
}

TEST(SpinRWLock, LetsReadersInSideBySide) {
    CSpinRWLock lock;
    const std::shared_lock first(lock);
    std::thread([&] { const std::shared_lock second(lock); }).join();
}

TEST(SpinRWLock, KeepsWritersAlone) {
    CSpinRWLock lock;
    int value = 0;
    std::atomic<int> seen{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 2000; ++i) {
                if (t == 0) {
                    const std::scoped_lock write(lock);
                    ++value;
                } else {
                    const std::shared_lock read(lock);
                    seen = value;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(value, 2000);
}

} // namespace
} // namespace LocalRPC::details
