// From what the component reported to one plain sentence for the user.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace sqCli {

// A reason that a library gave, without the engine's own words: those stand in the log. Begins with a capital
// letter and ends with a full stop.
[[nodiscard]] std::string PlainSentence(std::wstring_view reason);
// The same of an entry of BugSlayerUtil::RecentFailures(), which has the function's name before it and the status
// behind.
[[nodiscard]] std::string FailureSentence(std::wstring_view failure);

// Why the store could not be opened, and what to do; the first failure is the cause, the others follow from it.
// `registryFile` is where the connection is kept.
[[nodiscard]] std::string OpenFailureSentence(std::span<const std::wstring> failures,
                                              std::wstring_view registryFile);

// The same for who opens the database, or reads the registry, himself.
[[nodiscard]] std::string OpenReasonSentence(std::wstring_view reason, std::wstring_view registryFile);
[[nodiscard]] std::string NoDatabaseNamed(std::wstring_view registryFile);
[[nodiscard]] std::string ValueMissing(std::wstring_view name, std::wstring_view registryFile);

} // namespace sqCli
