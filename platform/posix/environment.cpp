#include "platform/environment.h"

#include "platform/text.h"

#include <cstdlib>
#include <mutex>
#include <stdexcept>
#include <system_error>

namespace platform {

namespace {

std::mutex& EnvironmentMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string CheckedName(std::wstring_view name) {
    if (name.empty() || name.find(L'=') != name.npos || name.find(L'\0') != name.npos)
        throw std::invalid_argument("\"" + ToUtf8(name) +
                                    "\" cannot name an environment variable: leave out \"=\" and zeros");
    return ToUtf8(name);
}

} // namespace

std::optional<std::wstring> GetEnvironment(std::wstring_view name) {
    const std::string key = CheckedName(name);
    const std::lock_guard lock(EnvironmentMutex());
    const char* value = std::getenv(key.c_str());
    if (value == nullptr)
        return std::nullopt;
    return FromUtf8(value);
}

void SetEnvironment(std::wstring_view name, const std::optional<std::wstring>& value) {
    const std::string key = CheckedName(name);
    if (value && value->find(L'\0') != value->npos)
        throw std::invalid_argument("the value of environment variable \"" + key + "\" has a zero in it");
    const std::string text = value ? ToUtf8(*value) : std::string();
    const std::lock_guard lock(EnvironmentMutex());
    if ((value ? setenv(key.c_str(), text.c_str(), 1) : unsetenv(key.c_str())) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot set environment variable \"" + key + "\"");
}

CScopedEnvironment::CScopedEnvironment(std::wstring_view name, const std::optional<std::wstring>& value)
    : m_Name(name), m_Before(GetEnvironment(name)) {
    SetEnvironment(m_Name, value);
}

CScopedEnvironment::~CScopedEnvironment() { SetEnvironment(m_Name, m_Before); }

} // namespace platform
