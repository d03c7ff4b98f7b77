#pragma once
// The last failures of this process, for a host that wants to tell its user why something came to nothing. Kept by
// the client itself, with or without a debug library. Any thread may call.

#include <string>
#include <vector>

namespace BugSlayerUtil {

// Failed assertions and checks, raised errors and exceptions that a guard caught; the oldest first, 64 at the most.
// One entry reads "sqStorage::CStorage::InsertHoliday: text", with "(0x80004005)" behind it when there is a status.
[[nodiscard]] std::vector<std::wstring> RecentFailures();
void ClearRecentFailures();

// Full path of the log that the debug library writes; empty when it writes none.
[[nodiscard]] std::wstring LogFilePath();

} // namespace BugSlayerUtil
