#include "LogSettings.h"

#include "LogText.h"
#include "diagnostics/interface/DebugObject.h"
#include "platform/file.h"
#include "platform/known_folder.h"
#include "platform/registry.h"

#include <array>
#include <charconv>
#include <exception>
#include <optional>
#include <utility>

namespace DebugLog {

namespace {

constexpr std::array Levels{
    std::pair{L"trace", spdlog::level::trace}, std::pair{L"debug", spdlog::level::debug},
    std::pair{L"info", spdlog::level::info},   std::pair{L"warning", spdlog::level::warn},
    std::pair{L"error", spdlog::level::err},   std::pair{L"off", spdlog::level::off},
};

std::wstring Complaint(std::wstring_view name, std::wstring_view value, std::wstring_view remedy) {
    std::wstring text = L"the registry value \"";
    return text.append(name).append(L"\" is \"").append(value).append(L"\"; ").append(remedy);
}

void ReadLevel(const platform::CRegistryKey& key, tagLogSettings& settings) {
    const auto text = key.ReadText(L"Level");
    if (!text)
        return;
    for (const auto& [name, level] : Levels)
        if (*text == name) {
            settings.Level = level;
            return;
        }
    settings.Complaints.push_back(
        Complaint(L"Level", *text, L"use trace, debug, info, warning, error or off. The level is info"));
}

void ReadDirectory(const platform::CRegistryKey& key, tagLogSettings& settings) {
    const auto text = key.ReadText(L"LogDirectory");
    if (!text)
        return;
    if (platform::ToPath(*text).is_absolute())
        settings.Directories.push_back(*text);
    else
        settings.Complaints.push_back(
            Complaint(L"LogDirectory", *text, L"use a full path. The usual place is taken"));
}

void ReadSize(const platform::CRegistryKey& key, const wchar_t* name, std::size_t smallest, std::size_t largest,
              std::size_t& value, tagLogSettings& settings) {
    const auto text = key.ReadText(name);
    if (!text)
        return;
    const std::string digits = ToUtf8Always(*text);
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc() && end == digits.data() + digits.size() && number >= smallest && number <= largest)
        value = number;
    else
        settings.Complaints.push_back(Complaint(name, *text,
                                                L"use a whole number from " + std::to_wstring(smallest) + L" to " +
                                                    std::to_wstring(largest) + L". It is " +
                                                    std::to_wstring(value)));
}

void ReadRegistry(tagLogSettings& settings) {
    const auto key = platform::CRegistryKey::Open(platform::ERegistryRoot::User, IDM_BugSlayerUtil::SettingsKey);
    if (!key)
        return;
    ReadLevel(*key, settings);
    ReadDirectory(*key, settings);
    ReadSize(*key, L"MaxFileSize", 4096, std::size_t{1} << 30, settings.MaxFileSize, settings);
    ReadSize(*key, L"MaxFiles", 1, 100, settings.MaxFiles, settings);
}

} // namespace

tagLogSettings ReadLogSettings(std::wstring_view directory) {
    tagLogSettings settings;
    try {
        ReadRegistry(settings);
    } catch (const std::exception& error) {
        settings.Complaints.push_back(L"the registry cannot be read: " + ToWideAlways(error.what()));
    }
    if (!directory.empty())
        settings.Directories.emplace_back(directory);
    try {
        settings.Directories.push_back(platform::StateDirectory() + platform::PathSeparator + L"log");
    } catch (const std::exception& error) {
        settings.Complaints.push_back(ToWideAlways(error.what()));
    }
    return settings;
}

} // namespace DebugLog
