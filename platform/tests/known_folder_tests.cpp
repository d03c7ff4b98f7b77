#include "platform/known_folder.h"

#include "platform/environment.h"
#include "platform/file.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace platform {
namespace {

class KnownFolder : public testing::Test {
protected:
    [[nodiscard]] std::wstring Home(std::wstring_view below) const {
        return m_Directory.Name() + std::wstring(below);
    }
    void WriteUserDirectories(std::string_view text) const {
        CreateDirectories(m_Directory.Path() / ".config");
        WriteFileAtomically(m_Directory.Path() / ".config" / "user-dirs.dirs", text);
    }

    CTemporaryDirectory m_Directory;
    CScopedEnvironment m_Home{L"HOME", m_Directory.Name()};
    CScopedEnvironment m_Documents{L"XDG_DOCUMENTS_DIR", std::nullopt};
    CScopedEnvironment m_Config{L"XDG_CONFIG_HOME", std::nullopt};
    CScopedEnvironment m_Data{L"XDG_DATA_HOME", std::nullopt};
    CScopedEnvironment m_State{L"XDG_STATE_HOME", std::nullopt};
    CScopedEnvironment m_OwnState{L"SQSTORAGE_STATE_DIR", std::nullopt};
};

TEST_F(KnownFolder, HasTheSystemsNumbers) {
    EXPECT_EQ(static_cast<int>(EKnownFolder::Documents), 5);
    EXPECT_EQ(static_cast<int>(EKnownFolder::LocalAppData), 28);
    EXPECT_EQ(static_cast<int>(EKnownFolder::AppData), 26);
    EXPECT_EQ(static_cast<int>(EKnownFolder::CommonProgramFiles), 43);
    EXPECT_EQ(static_cast<int>(EKnownFolder::CommonAppData), 35);
}

TEST_F(KnownFolder, LiesBelowTheHomeDirectoryByDefault) {
    EXPECT_EQ(GetKnownFolder(EKnownFolder::Documents), Home(L"/Documents"));
    EXPECT_EQ(GetKnownFolder(EKnownFolder::AppData), Home(L"/.config"));
    EXPECT_EQ(GetKnownFolder(EKnownFolder::LocalAppData), Home(L"/.local/share"));
    EXPECT_EQ(GetKnownFolder(EKnownFolder::CommonAppData), Home(L"/.local/share"));
    EXPECT_EQ(GetKnownFolder(EKnownFolder::CommonProgramFiles), Home(L"/.local/lib"));
    EXPECT_EQ(StateDirectory(), Home(L"/.local/state/sqstorage"));
}

TEST_F(KnownFolder, FollowsTheVariables) {
    const CScopedEnvironment documents(L"XDG_DOCUMENTS_DIR", L"/d/");
    const CScopedEnvironment config(L"XDG_CONFIG_HOME", L"/c//");
    const CScopedEnvironment data(L"XDG_DATA_HOME", L"/s");
    const CScopedEnvironment state(L"XDG_STATE_HOME", L"/st");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::Documents), L"/d");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::AppData), L"/c");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::LocalAppData), L"/s");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::CommonAppData), L"/s");
    EXPECT_EQ(StateDirectory(), L"/st/sqstorage");
    const CScopedEnvironment own(L"SQSTORAGE_STATE_DIR", L"/own");
    EXPECT_EQ(StateDirectory(), L"/own");
}

TEST_F(KnownFolder, IgnoresRelativePaths) {
    const CScopedEnvironment config(L"XDG_CONFIG_HOME", L"relative");
    const CScopedEnvironment data(L"XDG_DATA_HOME", L"");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::AppData), Home(L"/.config"));
    EXPECT_EQ(GetKnownFolder(EKnownFolder::LocalAppData), Home(L"/.local/share"));
}

TEST_F(KnownFolder, AsksTheAccountWhenThereIsNoHomeVariable) {
    const CScopedEnvironment home(L"HOME", std::nullopt);
    const auto folder = GetKnownFolder(EKnownFolder::AppData);
    // An account without a directory is legal.
    EXPECT_TRUE(!folder || folder->starts_with(L"/"));
}

TEST_F(KnownFolder, DocumentsFollowTheUsersOwnSetting) {
    WriteUserDirectories(
        "# comment\nXDG_DOWNLOAD_DIR=\"$HOME/x\"\n  XDG_DOCUMENTS_DIR=\"$HOME/Eigene \\\"D\\\"\"\n");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::Documents), Home(L"/Eigene \"D\""));
    WriteUserDirectories("XDG_DOCUMENTS_DIR=\"/abs/docs/\"");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::Documents), L"/abs/docs");
    WriteUserDirectories("XDG_DOCUMENTS_DIR=\"$HOME/\"\n");
    EXPECT_EQ(GetKnownFolder(EKnownFolder::Documents), Home(L"")) << "the form that switches the folder off";
}

TEST_F(KnownFolder, DocumentsSurviveAMalformedSetting) {
    for (const char* text : {"XDG_DOCUMENTS_DIR=\"$HOME/open", "XDG_DOCUMENTS_DIR=\"relative\"\n",
                             "XDG_DOCUMENTS_DIR=", "\xFF\xFE", "XDG_DOCUMENTS_DIR=\""}) {
        WriteUserDirectories(text);
        EXPECT_EQ(GetKnownFolder(EKnownFolder::Documents), Home(L"/Documents")) << text;
    }
}

TEST_F(KnownFolder, TreeIsCreatedOnceThenReportedAsThere) {
    EXPECT_EQ(CreateDirectoryTree(Home(L"/a/\u0416/c")), 0);
    EXPECT_TRUE(IsDirectory(ToPath(Home(L"/a/\u0416/c"))));
    EXPECT_EQ(CreateDirectoryTree(Home(L"/a/\u0416/c")), 183);
    EXPECT_EQ(CreateDirectoryTree(Home(L"/a/\u0416/c/")), 183);
    EXPECT_EQ(CreateDirectoryTree(Home(L"/a/\u0416/d/")), 0);
}

TEST_F(KnownFolder, TreeThatCannotBeAnswersAnotherError) {
    WriteFileAtomically(m_Directory.Path() / "file", "");
    EXPECT_EQ(CreateDirectoryTree(Home(L"/file")), ENOTDIR);
    EXPECT_EQ(CreateDirectoryTree(Home(L"/file/below")), ENOTDIR);
    EXPECT_EQ(CreateDirectoryTree(L""), ENOENT);
}

} // namespace
} // namespace platform
