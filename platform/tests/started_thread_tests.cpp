#include "platform/last_error.h"
#include "platform/memory.h"
#include "platform/tests/support/Gate.h"
#include "platform/tests/support/ProcessLimits.h"
#include "platform/thread.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>

namespace platform {
namespace {

using platform_tests::CGate;

struct tagJob {
    CGate Begun;
    CGate MayEnd;
    CGate Ended;
    DWORD ThreadId = 0;
};

unsigned RunJob(void* argument) {
    auto& job = *static_cast<tagJob*>(argument);
    job.ThreadId = CurrentThreadId();
    job.Begun.Open();
    job.MayEnd.Pass();
    job.Ended.Open();
    return 7;
}

TEST(StartedThread, RunsTheFunctionAndKeepsItsExitCode) {
    tagJob job;
    auto thread = CThreadHandle::Start(0, RunJob, &job);
    ASSERT_TRUE(thread);
    job.Begun.Pass();
    EXPECT_EQ(thread->ThreadId(), job.ThreadId);
    EXPECT_NE(thread->ThreadId(), CurrentThreadId());
    EXPECT_EQ(thread->Wait(1), WaitTimeout);
    EXPECT_EQ(thread->ExitCode(), std::nullopt);
    job.MayEnd.Open();
    EXPECT_EQ(thread->Wait(Infinite), WaitSignalled);
    EXPECT_EQ(thread->ExitCode(), 7U);
    EXPECT_EQ(thread->Wait(0), WaitSignalled);
    EXPECT_TRUE(thread->Close());
    EXPECT_FALSE(thread->Close());
    EXPECT_EQ(thread->Wait(0), WaitFailed);
}

TEST(StartedThread, EndsAWaitWithATimeoutOnceItHasEnded) {
    tagJob job;
    job.MayEnd.Open();
    auto thread = CThreadHandle::Start(0, RunJob, &job);
    ASSERT_TRUE(thread);
    EXPECT_EQ(thread->Wait(60000), WaitSignalled);
}

TEST(StartedThread, IsAbandonedByTermination) {
    tagJob job;
    auto thread = CThreadHandle::Start(0, RunJob, &job);
    ASSERT_TRUE(thread);
    EXPECT_TRUE(thread->Terminate(1));
    EXPECT_EQ(thread->Wait(Infinite), WaitSignalled);
    EXPECT_EQ(thread->ExitCode(), 1U);
    EXPECT_TRUE(thread->Close());
    EXPECT_FALSE(thread->Terminate(1));
    // It goes on by itself.
    job.MayEnd.Open();
    job.Ended.Pass();
}

TEST(StartedThread, RunsOnWhenItsHandleIsClosed) {
    tagJob job;
    {
        const auto thread = CThreadHandle::Start(0, RunJob, &job);
        ASSERT_TRUE(thread);
    }
    job.MayEnd.Open();
    job.Ended.Pass();
}

unsigned UseStack(void* argument) {
    constexpr std::size_t Used = 6UL << 20;
    std::array<volatile char, Used> block; // most of the stack asked for
    for (std::size_t i = 0; i < Used; i += 4096)
        block[i] = 1;
    *static_cast<int*>(argument) = block[0];
    return 0;
}

TEST(StartedThread, GetsTheStackAskedFor) {
    int result = 0;
    auto thread = CThreadHandle::Start(16UL << 20, UseStack, &result);
    ASSERT_TRUE(thread);
    EXPECT_EQ(thread->Wait(Infinite), WaitSignalled);
    EXPECT_EQ(result, 1);
}

TEST(StartedThread, TakesAStackTooSmallForTheSystem) {
    tagJob job;
    job.MayEnd.Open();
    auto thread = CThreadHandle::Start(1, RunJob, &job);
    ASSERT_TRUE(thread);
    EXPECT_EQ(thread->Wait(Infinite), WaitSignalled);
}

TEST(StartedThread, ReportsThatTheSystemRefuses) {
    std::optional<CThreadHandle> thread;
    DWORD error = 0;
    {
        const platform_tests::CAddressSpaceLimit limit(256UL << 20);
        thread = CThreadHandle::Start(1UL << 30, RunJob, nullptr);
        error = GetLastError();
    }
    EXPECT_FALSE(thread);
    EXPECT_EQ(error, static_cast<DWORD>(EAGAIN));
}

TEST(Memory, TellsReadableAddressesFromOthers) {
    int value = 0;
    EXPECT_TRUE(IsReadable(&value, sizeof value));
    EXPECT_FALSE(IsReadable(nullptr, 1));
    EXPECT_FALSE(IsReadable(reinterpret_cast<void*>(16), 8));
}

} // namespace
} // namespace platform
