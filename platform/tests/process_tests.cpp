#include "platform/process.h"

#include "platform/file.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace platform {
namespace {

TEST(Process, KnowsTheFullPathOfItsExecutable) {
    const std::wstring path = ExecutablePath();
    EXPECT_TRUE(path.starts_with(L"/"));
    EXPECT_TRUE(path.ends_with(L"/test_platform"));
    EXPECT_TRUE(Exists(ToPath(path)));
}

TEST(Process, KnowsItsNumber) { EXPECT_EQ(CurrentProcessId(), static_cast<DWORD>(getpid())); }

} // namespace
} // namespace platform
