#include "Base.h"

constexpr auto Row = platform::Method<&ISample::Select>(1, L"Select", L"Mode", L"Name", L"Count");
constexpr GUID Identifier = platform::MakeGuid("5b4e2c10-1111-4c6a-9d0e-7a3a51f0aa03");
const GUID& Unknown = platform::UuidOf<IUnknown>;
platform::CBstr CopyOf(BSTR text) { return platform::CBstr::Copy(text); }
