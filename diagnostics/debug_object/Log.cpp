#include "Log.h"

#include "LogText.h"
#include "platform/known_folder.h"
#include "platform/last_error.h"
#include "platform/process.h"

#include <exception>
#include <spdlog/sinks/rotating_file_sink.h>
#include <stdexcept>

namespace DebugLog {

namespace {

constexpr int MaxProcesses = 16;

struct tagPlace {
    std::optional<platform::CFileLock> Lock;
    std::wstring Path;
};

// The first file of the name that no other process writes to.
tagPlace TakeFile(const std::wstring& directory, std::wstring_view name) {
    const std::wstring stem = directory + platform::PathSeparator + std::wstring(name);
    for (int i = 1; i <= MaxProcesses; ++i) {
        const std::wstring path = (i == 1 ? stem : stem + L"-" + std::to_wstring(i)) + L".log";
        if (auto lock = platform::CFileLock::Try(platform::ToPath(path + L".lock")))
            return {std::move(lock), path};
    }
    return {std::nullopt, stem + L"-" + std::to_wstring(platform::CurrentProcessId()) + L".log"};
}

} // namespace

CLog::CLog(const tagLogSettings& settings, std::wstring_view name) {
    std::vector<std::wstring> complaints = settings.Complaints;
    for (const std::wstring& directory : settings.Directories) {
        try {
            Open(settings, directory, name);
            break;
        } catch (const std::exception& error) {
            complaints.push_back(L"no log can be written to \"" + directory + L"\": " + ToWideAlways(error.what()));
        }
    }
    if (!m_Logger) {
        std::string reasons;
        for (const std::wstring& complaint : complaints)
            reasons += (reasons.empty() ? "" : "; ") + ToUtf8Always(complaint);
        throw std::runtime_error(reasons.empty() ? "there is no place for a log" : reasons);
    }
    for (const std::wstring& complaint : complaints)
        Write(spdlog::level::warn, OneLine(complaint));
}

CLog::~CLog() { Flush(); }

void CLog::Open(const tagLogSettings& settings, const std::wstring& directory, std::wstring_view name) {
    const int error = platform::CreateDirectoryTree(directory);
    if (error != 0 && error != platform::DirectoryExists)
        throw std::runtime_error(ToUtf8Always(platform::SystemErrorText(static_cast<DWORD>(error))));
    tagPlace place = TakeFile(directory, name);
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(ToUtf8Always(place.Path),
                                                                       settings.MaxFileSize, settings.MaxFiles);
    auto logger = std::make_shared<spdlog::logger>("BugSlayer", std::move(sink));
    logger->set_level(settings.Level);
    logger->set_pattern("%Y-%m-%d %H:%M:%S.%e [%t] [%l] %v");
    logger->flush_on(spdlog::level::err);
    // A full disk must not write to the host's own streams.
    logger->set_error_handler([](const std::string&) {});
    m_Lock = std::move(place.Lock);
    m_Path = std::move(place.Path);
    m_Logger = std::move(logger);
}

void CLog::Write(spdlog::level::level_enum level, std::string_view text) noexcept {
    try {
        m_Logger->log(level, spdlog::string_view_t(text.data(), text.size()));
    } catch (const std::exception&) {
    }
}

void CLog::Flush() noexcept {
    try {
        m_Logger->flush();
    } catch (const std::exception&) {
    }
}

} // namespace DebugLog
