#include "platform/version_info.h"

#include "platform/environment.h"
#include "platform/file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>

namespace platform {
namespace {

namespace fs = std::filesystem;

TEST(VersionInfo, OfThisProgramIsTheOneItWasBuiltWith) {
    const auto block = ReadVersionBlock(nullptr);
    ASSERT_TRUE(block.has_value());
    EXPECT_EQ(block->Language(), 0x0409);
    EXPECT_EQ(block->CodePage(), 0x04b0);
    EXPECT_EQ(block->Value(L"CompanyName"), L"Test; Company \"\u00DCn\u00EF\"");
    EXPECT_EQ(block->Value(L"ProductName"), L"Test Product");
    EXPECT_EQ(block->Value(L"ProductVersion"), L"1.2.3");
    EXPECT_EQ(block->Value(L"FileVersion"), L"1.2.3");
    EXPECT_EQ(block->Value(L"FileDescription"), L"Tests with a $dollar, a \\backslash and an @at@");
    EXPECT_EQ(block->Value(L"LegalCopyright"), std::nullopt);
    EXPECT_EQ(block->Value(L"companyname"), std::nullopt);
}

TEST(VersionInfo, EmbeddedInTheProgramIsNotOverriddenByTheEnvironment) {
    const CScopedEnvironment scope(L"SQSTORAGE_VERSION_INFO", L"/nowhere/at/all");
    EXPECT_EQ(ReadVersionBlock(nullptr).value().Value(L"ProductName"), L"Test Product");
}

TEST(VersionInfo, OfAModuleIsItsOwn) {
    const auto module = CModule::Load(L"sqTestnoted3.0_x64.dll");
    ASSERT_TRUE(module.has_value());
    const auto block = ReadVersionBlock(&*module);
    ASSERT_TRUE(block.has_value());
    EXPECT_EQ(block->Value(L"CompanyName"), L"Module Company");
    EXPECT_EQ(block->Value(L"ProductName"), L"Module Product");
    EXPECT_EQ(block->Value(L"ProductVersion"), std::nullopt);
}

TEST(VersionInfo, OfAModuleMayComeFromTheFileBesideIt) {
    const CTemporaryDirectory directory;
    const fs::path copy = directory.Path() / "libBeside.so";
    fs::copy_file(ToPath(SQ_TEST_MODULE_FOLDER L"/libsqTestplain3.0_x64.so"), copy);
    const auto module = CModule::Load(FromPath(copy));
    ASSERT_TRUE(module.has_value());
    EXPECT_FALSE(ReadVersionBlock(&*module).has_value());
    const CScopedEnvironment ignored(L"SQSTORAGE_VERSION_INFO", L"/nowhere/at/all");
    EXPECT_FALSE(ReadVersionBlock(&*module).has_value()) << "the environment is for the host alone";
    WriteFileAtomically(directory.Path() / "libBeside.so.version", "CompanyName = 'Beside'\n");
    EXPECT_EQ(ReadVersionBlock(&*module).value().Value(L"CompanyName"), L"Beside");
}

// A host without a version block, run as a process of its own.
class VersionInfoOfHost : public testing::Test {
protected:
    void SetUp() override { fs::copy_file(SQ_VERSION_PROBE, m_Program); }
    void WriteBeside(std::string_view text) const {
        WriteFileAtomically(m_Directory.Path() / "probe.version", text);
    }
    [[nodiscard]] std::string Probe() const {
        const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(m_Program.c_str(), "r"), pclose);
        std::string output;
        for (int character = 0; pipe && (character = std::fgetc(pipe.get())) != EOF;)
            output += static_cast<char>(character);
        return output;
    }

    CTemporaryDirectory m_Directory;
    fs::path m_Program = m_Directory.Path() / "probe";
    CScopedEnvironment m_None{L"SQSTORAGE_VERSION_INFO", std::nullopt};
};

TEST_F(VersionInfoOfHost, IsAbsentWithoutAnyFile) { EXPECT_EQ(Probe(), "none\n"); }

TEST_F(VersionInfoOfHost, ComesFromTheFileBesideIt) {
    WriteBeside("# whose host this is\nCompanyName = \"Side \xC3\x9C\"\nProductName = 'Prod\\uct'\n");
    EXPECT_EQ(Probe(), "Side \xC3\x9C|Prod\\uct|040904b0\n");
}

TEST_F(VersionInfoOfHost, ComesFromTheEnvironmentBeforeTheFileBesideIt) {
    WriteBeside("CompanyName = \"Side\"\n");
    WriteFileAtomically(m_Directory.Path() / "named", "CompanyName = \"Named\"\nTranslation = \"041904E3\"\n");
    const CScopedEnvironment scope(L"SQSTORAGE_VERSION_INFO", m_Directory.Name() + L"/named");
    EXPECT_EQ(Probe(), "Named|-|041904e3\n");
}

TEST_F(VersionInfoOfHost, InAMissingFileOfTheEnvironmentIsAnError) {
    WriteBeside("CompanyName = \"Side\"\n");
    const CScopedEnvironment scope(L"SQSTORAGE_VERSION_INFO", L"/nowhere/at/all");
    EXPECT_EQ(Probe(), "error: SQSTORAGE_VERSION_INFO names \"/nowhere/at/all\", which does not exist. Create that "
                       "file or unset the variable\n");
}

TEST_F(VersionInfoOfHost, InAMalformedFileIsAnErrorWithItsLine) {
    const std::string start = "error: version file \"" + m_Program.native() + ".version\", line ";
    WriteBeside("CompanyName = \"Side\"\nProductName = 5\n");
    EXPECT_EQ(Probe(), start + "2: the value of ProductName lacks its quotes. Give each value a line of the form "
                               "CompanyName = \"...\"\n");
    WriteBeside("\n\nTranslation = \"0409\"\n");
    EXPECT_EQ(Probe(), start + "3: Translation is not eight hexadecimal digits, such as \"040904b0\". Give each "
                               "value a line of the form CompanyName = \"...\"\n");
    WriteBeside("CompanyName = Side\n");
    EXPECT_TRUE(Probe().starts_with(start + "1: "));
    WriteBeside("CompanyName = \"\xFF\"\n");
    EXPECT_TRUE(Probe().starts_with(start + "1: "));
}

} // namespace
} // namespace platform
