// Between the wide text that crosses the interfaces and the UTF-8 of the storage.
//
// Almost all text here is ASCII and takes a road without a conversion.
#pragma once

#include "platform/com/bstr.h"

#include <optional>
#include <string>
#include <string_view>

namespace IDM_dmudfcom {

// Nothing for text that is no Unicode.
std::optional<std::string> ToStored(std::wstring_view text);
// An empty text gives an empty string, never null. Null for bytes that are no UTF-8, and when there is no memory.
BSTR MakeBstr(std::string_view stored);
bool IsUtf8(std::string_view bytes);

} // namespace IDM_dmudfcom
