#pragma once
// A format with its arguments, expanded into a place of the caller's: a line costs no allocation.

#include "diagnostics/interface/ReportText.h"

#include <fmt/format.h>

namespace BugSlayerUtil {

using CReportBuffer = fmt::basic_memory_buffer<wchar_t, 256>;

// As FormatReport(). Borrows from the buffer, or from the format.
[[nodiscard]] std::wstring_view ExpandReport(CReportBuffer& buffer, const wchar_t* format,
                                             std::span<const CArgument> arguments);

} // namespace BugSlayerUtil
