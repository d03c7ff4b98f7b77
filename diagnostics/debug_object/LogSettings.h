#pragma once
// What the user wants of the log: values under "Software\DM Support\BugSlayer" of the user's registry root.
//
//   Level         trace, debug, info (the default), warning, error or off
//   LogDirectory  full path; by default "log" in the state directory
//   MaxFileSize   bytes before a new file is begun, 4096 to 1073741824; by default 5242880
//   MaxFiles      older files to keep, 1 to 100; by default 3
//
// A value that cannot be used is left out of account, and said to be so in the log.

#include <cstddef>
#include <spdlog/common.h>
#include <string>
#include <string_view>
#include <vector>

namespace DebugLog {

struct tagLogSettings {
    spdlog::level::level_enum Level = spdlog::level::info;
    // In the order in which they are tried.
    std::vector<std::wstring> Directories;
    std::size_t MaxFileSize = 5 * 1024 * 1024;
    std::size_t MaxFiles = 3;
    std::vector<std::wstring> Complaints;
};

// `directory` is the one that the client asks for; empty when it leaves that to the library.
[[nodiscard]] tagLogSettings ReadLogSettings(std::wstring_view directory);

} // namespace DebugLog
