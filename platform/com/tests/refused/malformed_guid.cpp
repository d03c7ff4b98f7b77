#include "Base.h"

constexpr GUID Identifier = platform::MakeGuid("5b4e2c10-1111-4c6a-9d0e-7a3a51f0aa0");
