#include "platform/terminal.h"

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

} // namespace platform
