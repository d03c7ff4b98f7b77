#include "platform/interrupt.h"

#include "platform/message_queue.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace platform {

namespace {

volatile std::sig_atomic_t Handled = 0;

void CountHandled(int) { Handled = Handled + 1; }

class CHandler {
public:
    CHandler(int signal, void (*handler)(int)) : m_Signal(signal) {
        struct sigaction action {};
        action.sa_handler = handler;
        sigaction(signal, &action, &m_Previous);
    }
    ~CHandler() { sigaction(m_Signal, &m_Previous, nullptr); }

private:
    int m_Signal;
    struct sigaction m_Previous {};
};

TEST(InterruptWatch, ARequestEndsTheLoopWithTheExitCode) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const CInterruptWatch watch(7);
        EXPECT_FALSE(watch.WasInterrupted());
        std::thread([signal] { kill(getpid(), signal); }).join();
        EXPECT_EQ(7, RunMessageLoop());
        EXPECT_TRUE(watch.WasInterrupted());
    }
}

TEST(InterruptWatch, ARequestInTheMiddleOfTheLoopsWorkWaitsForIt) {
    class CWork final : public CMessageWindow {
    public:
        bool ProcessWindowMessage(DWORD message, std::uintptr_t, std::uintptr_t, std::intptr_t&, DWORD) override {
            if (message == UserMessage)
                raise(SIGTERM);
            else
                LastIsDone = true;
            return true;
        }
        bool LastIsDone = false;
    } work;
    ASSERT_TRUE(work.Create());
    const CInterruptWatch watch;
    work.Handle().Post(UserMessage + 1);
    work.Handle().Post(UserMessage);
    EXPECT_EQ(0, RunMessageLoop());
    EXPECT_TRUE(work.LastIsDone);
    EXPECT_TRUE(watch.WasInterrupted());
}

TEST(InterruptWatch, WhatWasDoneUponRequestsIsPutBack) {
    const CHandler handler(SIGINT, CountHandled);
    Handled = 0;
    {
        const CInterruptWatch watch;
        raise(SIGINT);
        EXPECT_EQ(0, RunMessageLoop());
    }
    EXPECT_EQ(0, Handled);
    raise(SIGINT);
    EXPECT_EQ(1, Handled);
}

TEST(InterruptWatch, ThereIsOneAtATime) {
    {
        const CInterruptWatch watch;
        EXPECT_THROW(CInterruptWatch(), std::logic_error);
        // And the refused one has left the first in place.
        raise(SIGTERM);
        EXPECT_EQ(0, RunMessageLoop());
    }
    const CInterruptWatch next;
    EXPECT_FALSE(next.WasInterrupted());
}

TEST(InterruptWatch, WithoutARequestItLeavesTheLoopAlone) {
    { const CInterruptWatch watch; }
    EXPECT_TRUE(DispatchPendingMessages());
}

TEST(InterruptWatchDeathTest, ASecondRequestEndsTheProcessAtOnce) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const CHandler usual(SIGINT, SIG_DFL);
            const CInterruptWatch watch;
            raise(SIGINT);
            raise(SIGINT);
        },
        testing::KilledBySignal(SIGINT), "");
}

} // namespace

} // namespace platform
