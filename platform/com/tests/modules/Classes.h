#pragma once

#include "platform/com/guid.h"

namespace platform::tests {

// Known to the registry of a test only.
inline constexpr CLSID ModulePartClass = MakeGuid("5b4e2c10-2222-4c6a-9d0e-7a3a51f0aa01");
inline constexpr LONG NumberOfModulePart = 4711;

} // namespace platform::tests
