#include "platform/tests/support/ChildProcess.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

constexpr int Killed = 128 + 9;

TEST(ChildProcess, IsReadLineByLineAndAnswersWithItsStatus) {
    CChildProcess child("/bin/sh", {"-c", "echo one; echo; echo three; printf half; exit 3"});
    std::string line;
    for (const char* expected : {"one", "", "three"}) {
        ASSERT_TRUE(child.ReadLine(line));
        EXPECT_EQ(line, expected);
    }
    EXPECT_FALSE(child.ReadLine(line));
    EXPECT_EQ(child.Wait(), 3);
}

TEST(ChildProcess, WhatItWroteBeforeItWasKilledCanStillBeRead) {
    CChildProcess child("/bin/sh", {"-c", "printf 'one\\ntwo\\n'; exec tail -f /dev/null"});
    std::string line;
    ASSERT_TRUE(child.ReadLine(line));
    child.Kill();
    EXPECT_EQ(child.Wait(), Killed);
    ASSERT_TRUE(child.ReadLine(line));
    EXPECT_EQ(line, "two");
    EXPECT_FALSE(child.ReadLine(line));
}

TEST(ChildProcess, OfAProgramThatIsNotThereEndsAtOnce) {
    CChildProcess child("/no/such/program", {});
    std::string line;
    EXPECT_FALSE(child.ReadLine(line));
    EXPECT_EQ(child.Wait(), 127);
}

} // namespace
} // namespace platform
