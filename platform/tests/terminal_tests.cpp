#include "platform/terminal.h"

#include "platform/last_error.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace platform {

namespace {

// In a process of its own, which ends with 0 when all went well.
[[noreturn]] void OpenWithoutStreams() {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    SecureStandardStreams();
    char byte = 0;
    const bool isApart = open("/dev/null", O_RDWR) > STDERR_FILENO;
    const bool fails = write(STDOUT_FILENO, &byte, 1) < 0 && !IsReaderGone(GetLastError());
    std::_Exit(isApart && fails && read(STDIN_FILENO, &byte, 1) < 0 ? 0 : 1);
}

[[noreturn]] void WriteToNobody() {
    SecureStandardStreams();
    std::array<int, 2> ends{};
    const bool isOpen = pipe(ends.data()) == 0 && close(ends[0]) == 0;
    const bool fails = write(ends[1], "x", 1) < 0 && IsReaderGone(GetLastError());
    std::_Exit(isOpen && fails ? 0 : 1);
}

} // namespace

TEST(StandardStreams, OneThatIsMissingIsNotTheNextFileOpened) {
    EXPECT_EXIT(OpenWithoutStreams(), testing::ExitedWithCode(0), "");
}

TEST(StandardStreams, WritingWhereNobodyReadsFailsAndEndsNothing) {
    EXPECT_EXIT(WriteToNobody(), testing::ExitedWithCode(0), "");
}

TEST(StandardStreams, OtherErrorsAreNotThatTheReaderIsGone) {
    for (const int error : {0, EBADF, ENOSPC, EINTR})
        EXPECT_FALSE(IsReaderGone(static_cast<DWORD>(error))) << error;
}

} // namespace platform
