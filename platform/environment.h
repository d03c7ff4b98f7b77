#pragma once
// Environment variables. Any thread may call these together; code outside this system that reads the environment
// at the same moment is not protected from SetEnvironment.

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Empty when it is not set. std::invalid_argument for a name that is empty or has a "=" or a zero in it.
[[nodiscard]] std::optional<std::wstring> GetEnvironment(std::wstring_view name);
// The empty optional removes it. std::invalid_argument also for a value with a zero in it.
void SetEnvironment(std::wstring_view name, const std::optional<std::wstring>& value);

// Sets a variable for the length of a scope.
class CScopedEnvironment {
public:
    CScopedEnvironment(std::wstring_view name, const std::optional<std::wstring>& value);
    ~CScopedEnvironment();
    CScopedEnvironment(const CScopedEnvironment&) = delete;
    CScopedEnvironment& operator=(const CScopedEnvironment&) = delete;

private:
    std::wstring m_Name;
    std::optional<std::wstring> m_Before;
};

} // namespace platform
