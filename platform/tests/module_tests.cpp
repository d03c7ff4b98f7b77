#include "platform/module.h"

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/process.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

namespace platform {
namespace {

namespace fs = std::filesystem;

// Every run of a test takes a copy of the module under a name of its own, since what is loaded once stays.
class Module : public testing::Test {
protected:
    [[nodiscard]] fs::path CopyAs(const std::string& name, std::wstring_view kind = L"plain") const {
        const fs::path copy = m_Directory.Path() / name;
        fs::copy_file(
            ToPath(std::wstring(SQ_TEST_MODULE_FOLDER L"/libsqTest") + std::wstring(kind) + L"3.0_x64.so"), copy);
        return copy;
    }
    static int Answer(const CModule& module) {
        const auto function = reinterpret_cast<int (*)()>(module.Symbol("SqTestAnswer"));
        return function != nullptr ? function() : -1;
    }

    CTemporaryDirectory m_Directory;
    // The letters that make the directory unique.
    std::wstring m_Own = m_Directory.Name().substr(m_Directory.Name().rfind(L'-') + 1);
    CScopedEnvironment m_Path{L"SQSTORAGE_MODULE_PATH", L"/nowhere:" + m_Directory.Name() + L":"};
};

TEST_F(Module, IsFoundUnderItsWindowsNameOnceItIsLoaded) {
    const std::wstring name = m_Own + L"3.0_x64";
    const fs::path file = CopyAs("lib" + ToUtf8(name) + ".so");
    EXPECT_FALSE(CModule::FindLoaded(name + L".dll").has_value());
    const auto loaded = CModule::Load(name + L".dll");
    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(Answer(*loaded), 42);
    const auto found = CModule::FindLoaded(name + L".DLL");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->FileName(), FromPath(file));
    EXPECT_TRUE(CModule::FindLoaded(name).has_value());
    EXPECT_TRUE(CModule::FindLoaded(L"lib" + name + L".so").has_value());
    EXPECT_FALSE(CModule::FindLoaded(m_Own + L"3.0.dll").has_value()) << "a part of the name is not the name";
}

TEST_F(Module, IsFoundWithAVersionBehindItsName) {
    const fs::path file = CopyAs("libVersioned.so.1.2");
    ASSERT_TRUE(CModule::Load(FromPath(file)).has_value());
    EXPECT_TRUE(CModule::FindLoaded(L"Versioned.dll").has_value());
    EXPECT_TRUE(CModule::FindLoaded(L"libVersioned.so.1.2").has_value());
}

TEST_F(Module, IsTakenFromAPathAsItStands) {
    const fs::path file = CopyAs("odd name.bin");
    const auto loaded = CModule::Load(FromPath(file));
    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(Answer(*loaded), 42);
    EXPECT_TRUE(CModule::FindLoaded(FromPath(file)).has_value());
}

TEST_F(Module, IsFoundBesideThePlatformLibrary) {
    const CScopedEnvironment none(L"SQSTORAGE_MODULE_PATH", std::nullopt);
    const auto loaded = CModule::Load(L"sqTestplain3.0_x64.dll");
    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(Answer(*loaded), 42);
}

TEST_F(Module, IsLookedForWhereTheSystemLooksAtLast) { EXPECT_TRUE(CModule::Load(L"libm.so.6").has_value()); }

TEST_F(Module, ThatIsAbsentIsLookedForAgain) {
    std::wstring reason;
    EXPECT_FALSE(CModule::Load(m_Own + L".dll", &reason).has_value());
    EXPECT_NE(reason.find(L"lib" + m_Own + L".so"), std::wstring::npos) << ToUtf8(reason);
    static_cast<void>(CopyAs("lib" + ToUtf8(m_Own) + ".so"));
    EXPECT_TRUE(CModule::Load(m_Own + L".dll").has_value());
}

TEST_F(Module, ThatCannotBeLoadedSaysWhy) {
    static_cast<void>(CopyAs("libBroken.so", L"broken"));
    std::wstring reason;
    EXPECT_FALSE(CModule::Load(L"Broken.dll", &reason).has_value());
    EXPECT_NE(reason.find(L"SqNobodyDefinesThis"), std::wstring::npos) << ToUtf8(reason);
    WriteFileAtomically(m_Directory.Path() / "libText.so", "no library at all");
    EXPECT_FALSE(CModule::Load(L"Text.dll", &reason).has_value());
    EXPECT_NE(reason.find(L"libText.so"), std::wstring::npos) << ToUtf8(reason);
}

TEST_F(Module, WithoutANameIsNone) {
    std::wstring reason;
    EXPECT_FALSE(CModule::FindLoaded(L"").has_value());
    EXPECT_FALSE(CModule::Load(L"", &reason).has_value());
    EXPECT_EQ(reason, L"no name was given");
}

TEST_F(Module, OffersNullForAnUnknownSymbol) {
    EXPECT_EQ(CModule::Executable().Symbol("SqNobodyDefinesThis"), nullptr);
}

TEST_F(Module, StaysLoadedAfterItsOwner) {
    static_cast<void>(CopyAs("libStays.so"));
    ASSERT_TRUE(CModule::Load(L"Stays.dll").has_value());
    EXPECT_TRUE(CModule::FindLoaded(L"Stays.dll").has_value());
}

TEST_F(Module, IsKnownByAnAddressInIt) {
    const CModule own = CModule::ContainingAddress(reinterpret_cast<const void*>(&Module::Answer));
    EXPECT_EQ(own.FileName(), ExecutablePath());
    const CModule platform = CModule::ContainingAddress(reinterpret_cast<const void*>(&ExecutablePath));
    EXPECT_TRUE(platform.FileName().ends_with(L"/libsqplatform.so")) << ToUtf8(platform.FileName());
    const int onTheStack = 0;
    EXPECT_THROW(static_cast<void>(CModule::ContainingAddress(&onTheStack)), std::invalid_argument);
}

TEST_F(Module, MovesToAnotherOwner) {
    CModule first = CModule::Executable();
    const CModule second = std::move(first);
    EXPECT_EQ(second.FileName(), ExecutablePath());
}

} // namespace
} // namespace platform
