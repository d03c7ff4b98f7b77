// Bytes as text: RFC 4648, section 4, with padding, nothing else accepted.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace IDM_dmudfcom {

std::wstring ToBase64(std::string_view bytes);
std::optional<std::string> FromBase64(std::wstring_view text);

} // namespace IDM_dmudfcom
