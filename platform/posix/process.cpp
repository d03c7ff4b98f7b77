#include "platform/process.h"

#include "platform/file.h"

#include <unistd.h>

namespace platform {

std::wstring ExecutablePath() { return FromPath(std::filesystem::read_symlink("/proc/self/exe")); }

DWORD CurrentProcessId() noexcept { return static_cast<DWORD>(getpid()); }

} // namespace platform
