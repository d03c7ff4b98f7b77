#include "platform/terminal.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {

bool IsTerminal(EStandardStream stream) noexcept { return isatty(static_cast<int>(stream)) == 1; }

int TerminalWidth(EStandardStream stream) noexcept {
    constexpr int usual = 80;
    winsize size{};
    const bool known = ioctl(static_cast<int>(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : usual;
}

void SecureStandardStreams() noexcept {
    // What is opened takes the lowest number that is free. Neither direction of use is one that it is opened for.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0 && errno == EBADF)
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    std::signal(SIGPIPE, SIG_IGN);
}

bool IsReaderGone(DWORD error) noexcept { return error == EPIPE; }

} // namespace platform
