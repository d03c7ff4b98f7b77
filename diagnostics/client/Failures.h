#pragma once
// Where the client puts the failures that RecentFailures() tells.

#include "platform/com/types.h"

#include <optional>
#include <string_view>

namespace BugSlayerUtil {

// `function` is UTF-8. Never throws: without memory the failure is lost.
void NoteFailure(std::string_view function, std::wstring_view text, std::optional<HRESULT> status) noexcept;

} // namespace BugSlayerUtil
