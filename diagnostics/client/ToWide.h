#pragma once
// UTF-8 of any quality as wide text, for reports: what is malformed is shown byte by byte rather than refused.

#include <string>
#include <string_view>

namespace BugSlayerUtil {

[[nodiscard]] std::wstring ToWide(std::string_view utf8);

} // namespace BugSlayerUtil
