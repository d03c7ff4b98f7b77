#include "elsewhere.h"

namespace elsewhere {

LONG TraceLine(const BugSlayerUtil::CScope& scope) {
    scope.Trace(L"line");
    return __LINE__ - 1;
}

LONG FailAssertion(const BugSlayerUtil::CScope& scope) {
    scope.Assert(false, L"x");
    return __LINE__ - 1;
}

void ThrowText(const BugSlayerUtil::CScope& scope, LONG& line) {
    line = __LINE__ + 1;
    scope.Throw(L"x");
}

} // namespace elsewhere
