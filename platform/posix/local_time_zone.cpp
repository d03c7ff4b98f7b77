#include "platform/local_time_zone.h"

#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/posix/zone_file.h"
#include "platform/text.h"

#include <mutex>

namespace platform {

namespace {

constexpr const char* SystemZoneFile = "/etc/localtime";
constexpr const char* ZoneDirectory = "/usr/share/zoneinfo";

tagZoneRule Utc() { return *ParseZoneRule("UTC0"); }

// Keeps the file read last. Empty when there is no such file or it holds no zone.
class CZoneFiles {
public:
    std::optional<tagZoneRule> Read(const std::filesystem::path& path) {
        const std::lock_guard lock(m_Lock);
        const auto stamp = GetFileStamp(path);
        if (!stamp)
            return std::nullopt;
        if (path != m_Path || *stamp != m_Stamp) {
            m_Rule = ReadZoneFile(ReadFile(path));
            m_Path = path;
            m_Stamp = *stamp;
        }
        return m_Rule;
    }

private:
    std::mutex m_Lock;
    std::filesystem::path m_Path;
    tagFileStamp m_Stamp{};
    std::optional<tagZoneRule> m_Rule;
};

std::optional<tagZoneRule> ReadFileOnce(const std::filesystem::path& path) {
    static CZoneFiles files;
    return files.Read(path);
}

std::optional<tagZoneRule> SystemRule() {
    if (!Exists(SystemZoneFile))
        return Utc();
    return ReadFileOnce(SystemZoneFile);
}

std::filesystem::path PathOfZone(const std::wstring& name) {
    const auto directory = GetEnvironment(L"TZDIR");
    // A full path in the name stands for itself.
    return (directory ? ToPath(*directory) : std::filesystem::path(ZoneDirectory)) / ToPath(name);
}

// What TZ says, a colon in front of it only telling that it is no POSIX rule.
std::optional<tagZoneRule> NamedRule(const std::wstring& text) {
    const bool isName = text.starts_with(L':');
    const std::wstring name = text.substr(isName ? 1 : 0);
    if (name.empty())
        return Utc();
    const std::filesystem::path path = PathOfZone(name);
    if (Exists(path))
        return ReadFileOnce(path);
    return isName ? std::nullopt : ParseZoneRule(ToUtf8(name));
}

std::optional<tagZoneRule> LocalRule() {
    const auto text = GetEnvironment(L"TZ");
    return text ? NamedRule(*text) : SystemRule();
}

} // namespace

DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone) noexcept {
    try {
        const auto rule = LocalRule();
        if (!rule)
            return TimeZoneIdInvalid;
        const auto now = std::chrono::floor<std::chrono::seconds>(WallClock());
        const auto year = std::chrono::year_month_day(std::chrono::floor<std::chrono::days>(now)).year();
        const tagZoneRule normalized = NormalizedFor(*rule, year);
        *zone = ToTimeZoneInformation(normalized, year);
        if (!normalized.HasDaylight)
            return TimeZoneIdUnknown;
        return IsDaylight(normalized, now) ? TimeZoneIdDaylight : TimeZoneIdStandard;
    } catch (const std::exception&) {
        // A file that cannot be read, or a TZ that is no text.
        return TimeZoneIdInvalid;
    }
}

} // namespace platform
