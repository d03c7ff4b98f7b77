// From what the component reported to one plain sentence for the user.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace sqCli {

// An entry of BugSlayerUtil::RecentFailures() without the function's name, the engine's own words and the status:
// those stand in the log. Begins with a capital letter and ends with a full stop.
[[nodiscard]] std::string PlainSentence(std::wstring_view failure);

// Why the store could not be opened, and what to do; the first failure is the cause, the others follow from it.
// `registryFile` is where the connection is kept.
[[nodiscard]] std::string OpenFailureSentence(std::span<const std::wstring> failures,
                                              std::wstring_view registryFile);

// The same sentences for who reads the registry himself.
[[nodiscard]] std::string NoDatabaseNamed(std::wstring_view registryFile);
[[nodiscard]] std::string ValueMissing(std::wstring_view name, std::wstring_view registryFile);

} // namespace sqCli
