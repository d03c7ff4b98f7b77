#include "Base.h"

constexpr auto Row = platform::Method<&ISample::Select>(1, L"Select", L"Mode", L"Name", L"Count", L"More");
