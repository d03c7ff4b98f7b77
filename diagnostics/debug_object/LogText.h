#pragma once
// Records as lines of the log.

#include "Record.h"

#include <string>
#include <string_view>

namespace DebugLog {

// Malformed characters come out as "?": a log line is never refused.
[[nodiscard]] std::string ToUtf8Always(std::wstring_view text);
[[nodiscard]] std::wstring ToWideAlways(std::string_view utf8);

// One line without control characters; a line break in the text is shown as "\n".
[[nodiscard]] std::string OneLine(std::wstring_view text);

[[nodiscard]] std::string TraceText(const CRecord& record);
[[nodiscard]] std::string AssertText(const CRecord& record);
// With the descriptions of all errors that it wraps, the outermost first.
[[nodiscard]] std::string ErrorText(const CRecord& record);
[[nodiscard]] std::string ExceptionText(const CRecord& record);

} // namespace DebugLog
