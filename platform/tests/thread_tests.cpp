#include "platform/thread.h"

#include "platform/crash.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace platform {
namespace {

TEST(Thread, HasItsOwnNumberAndKeepsIt) {
    const DWORD mine = CurrentThreadId();
    EXPECT_NE(mine, 0U);
    EXPECT_EQ(CurrentThreadId(), mine);
    DWORD others = 0;
    std::thread([&others] { others = CurrentThreadId(); }).join();
    EXPECT_NE(others, 0U);
    EXPECT_NE(others, mine);
}

TEST(Thread, HasAnotherNumberInAForkedChild) {
    const DWORD mine = CurrentThreadId();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        TerminateProcess(CurrentThreadId() != mine && CurrentThreadId() == static_cast<DWORD>(getpid()) ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace platform
