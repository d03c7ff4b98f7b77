#include "platform/last_error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

namespace platform {
namespace {

TEST(LastError, IsTheSystemsOwn) {
    SetLastError(ENOENT);
    EXPECT_EQ(errno, ENOENT);
    errno = EACCES;
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EACCES));
}

TEST(LastError, IsPutBackByItsKeeper) {
    SetLastError(ENOSPC);
    {
        const CLastErrorKeeper keeper;
        EXPECT_EQ(keeper.Error(), static_cast<DWORD>(ENOSPC));
        SetLastError(0);
    }
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOSPC));
}

TEST(LastError, BelongsToItsThread) {
    SetLastError(ENOENT);
    std::thread([] { SetLastError(EACCES); }).join();
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOENT));
}

TEST(LastError, HasWordsForEveryNumber) {
    EXPECT_EQ(SystemErrorText(ENOENT), L"No such file or directory");
    EXPECT_EQ(SystemErrorText(99'999), L"Unknown error 99999");
    EXPECT_EQ(SystemErrorText(0xFFFFFFFF), L"Unknown error 4294967295");
}

} // namespace
} // namespace platform
