#pragma once
// The log file of one process. Several processes of one name write to files of their own: the second takes
// "name-2.log" and so on, because a file that one process puts away is still open in the other.
//
// Any thread may write. Failures to write lose the line and nothing else.

#include "LogSettings.h"
#include "platform/file.h"

#include <memory>
#include <optional>
#include <spdlog/logger.h>
#include <string>
#include <string_view>

namespace DebugLog {

class CLog {
public:
    // `name` is the file's, without an extension. std::exception when no directory of the settings can be used.
    CLog(const tagLogSettings& settings, std::wstring_view name);
    ~CLog();
    CLog(const CLog&) = delete;
    CLog& operator=(const CLog&) = delete;

    [[nodiscard]] bool IsWanted(spdlog::level::level_enum level) const { return m_Logger->should_log(level); }
    // What is an error or worse is on the disk when this returns.
    void Write(spdlog::level::level_enum level, std::string_view text) noexcept;
    void Flush() noexcept;
    [[nodiscard]] const std::wstring& Path() const { return m_Path; }

private:
    void Open(const tagLogSettings& settings, const std::wstring& directory, std::wstring_view name);

    std::optional<platform::CFileLock> m_Lock;
    std::wstring m_Path;
    std::shared_ptr<spdlog::logger> m_Logger;
};

} // namespace DebugLog
