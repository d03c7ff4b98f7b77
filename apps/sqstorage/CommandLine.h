// The program from its arguments to its status.
#pragma once

namespace sqCli {

// Raises nothing. The arguments are UTF-8.
int RunCommandLine(int count, const char* const* arguments);

} // namespace sqCli
