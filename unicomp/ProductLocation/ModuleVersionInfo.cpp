#include "unicomp/ProductLocation/interface/ModuleVersionInfo.h"

#include "platform/version_info.h"

ModuleVersionInfo::ModuleVersionInfo(const platform::CModule* module) {
    const auto block = platform::ReadVersionBlock(module);
    if (!block)
        return;
    const auto read = [&](const wchar_t* name) { return block->Value(name).value_or(std::wstring()); };
    CompanyName = read(L"CompanyName");
    ProductName = read(L"ProductName");
    ProductVersion = read(L"ProductVersion");
    FileDescription = read(L"FileDescription");
    FileVersion = read(L"FileVersion");
    LegalCopyright = read(L"LegalCopyright");
    Company = CompanyName;
    Product = ProductName;
}
