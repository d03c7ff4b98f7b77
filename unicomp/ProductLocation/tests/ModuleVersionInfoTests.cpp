#include "unicomp/ProductLocation/interface/ModuleVersionInfo.h"

#include "platform/module.h"

#include <gtest/gtest.h>

namespace {

TEST(ModuleVersionInfo, ANullModuleIsTheHostExecutable) {
    const ModuleVersionInfo info(nullptr);
    EXPECT_EQ(L"Test Company", info.CompanyName);
    EXPECT_EQ(L"Test Product", info.ProductName);
    EXPECT_EQ(L"1.2.3.4", info.ProductVersion);
    EXPECT_EQ(L"1.2.3.5", info.FileVersion);
}

TEST(ModuleVersionInfo, WorkingCopiesAreThoseOfTheBlock) {
    const ModuleVersionInfo info(nullptr);
    EXPECT_EQ(info.CompanyName, info.Company);
    EXPECT_EQ(info.ProductName, info.Product);
}

TEST(ModuleVersionInfo, AnAbsentValueIsEmptyAndTheOthersAreRead) {
    const ModuleVersionInfo info(nullptr);
    EXPECT_EQ(L"", info.LegalCopyright);
    EXPECT_EQ(L"Product location tests", info.FileDescription);
}

TEST(ModuleVersionInfo, AModuleWithoutABlockLeavesAllStringsEmpty) {
    const auto library =
        platform::CModule::ContainingAddress(reinterpret_cast<const void*>(&platform::CModule::Executable));
    const ModuleVersionInfo info(&library);
    for (const std::wstring* text :
         {&info.Company, &info.Product, &info.CompanyName, &info.ProductName, &info.ProductVersion,
          &info.FileDescription, &info.FileVersion, &info.LegalCopyright})
        EXPECT_EQ(L"", *text);
}

} // namespace
