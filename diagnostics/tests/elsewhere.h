#pragma once
// Code that reports through the scope of a function in another file.

#include "diagnostics/interface/BugSlayer.h"

namespace elsewhere {

// Each answers with the line in which it reports.
LONG TraceLine(const BugSlayerUtil::CScope& scope);
LONG FailAssertion(const BugSlayerUtil::CScope& scope);
[[noreturn]] void ThrowText(const BugSlayerUtil::CScope& scope, LONG& line);

} // namespace elsewhere
