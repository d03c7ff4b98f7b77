// The registry's files, as a person sees and edits them.
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class RegistryFile : public testing::Test {
protected:
    void Write(std::string_view text) const { WriteFileAtomically(m_File, text); }
    static std::optional<CRegistryKey> Open(std::wstring_view path) {
        return CRegistryKey::Open(ERegistryRoot::Machine, path);
    }
    // Reads, and tries each way to write: all must say the same, and leave the file as it is.
    void ExpectRefused(std::string_view text, std::size_t line, const std::string& what) const {
        Write(text);
        const std::string message = "registry file \"" + m_File.native() + "\"" +
                                    (line > 0 ? ", line " + std::to_string(line) : "") + ": " + what;
        const auto expect = [&](const auto& action) {
            try {
                action();
                ADD_FAILURE() << "taken: " << text;
            } catch (const CRegistryError& error) {
                EXPECT_THAT(error.what(), StartsWith(message));
                EXPECT_THAT(error.what(), HasSubstr("Correct the line, or move the file away"));
                EXPECT_EQ(error.Line(), line);
                EXPECT_EQ(error.File(), FromPath(m_File));
            }
        };
        expect([] { static_cast<void>(Open(L"k")); });
        expect([] { CRegistryKey::Create(ERegistryRoot::Machine, L"k").WriteText(L"v", L"x"); });
        expect([] { static_cast<void>(CRegistryKey::DeleteTree(ERegistryRoot::Machine, L"k")); });
        expect([] { const CRegistryBatch batch(ERegistryRoot::Machine); });
        EXPECT_EQ(ReadFile(m_File), text);
    }

    CTemporaryDirectory m_Directory;
    CScopedEnvironment m_Place{L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name()};
    std::filesystem::path m_File = m_Directory.Path() / "machine.toml";
};

TEST_F(RegistryFile, IsReadable) {
    const auto key =
        CRegistryKey::Create(ERegistryRoot::Machine, L"SOFTWARE\\Company\\Product\\Databases\\Portfolio");
    key.WriteText(L"Path", L"/var/lib/db.fdb");
    key.WriteText(L"Username", L"O'Neil");
    key.WriteNumber(L"Count", 3);
    key.WriteText(L"", L"default");
    static_cast<void>(CRegistryKey::Create(ERegistryRoot::Machine, L"SOFTWARE\\Empty"));
    EXPECT_THAT(ReadFile(m_File), StartsWith("# A root of the sqStorage registry."));
    EXPECT_THAT(ReadFile(m_File), HasSubstr("\n\n['SOFTWARE\\Company\\Product\\Databases\\Portfolio']\n"
                                            "'@' = 'default'\n"
                                            "Count = 3\n"
                                            "Path = '/var/lib/db.fdb'\n"
                                            "Username = \"O'Neil\"\n"
                                            "\n"
                                            "['SOFTWARE\\Empty']\n"));
}

TEST_F(RegistryFile, IsTakenAsAPersonWritesIt) {
    Write("# mine\nTop = 'of the root'\n"
          "['Software\\A']\nPath = \"C:\\\\x\"\nCount = 0x10\n\"@\" = 'd'\n"
          "[\"SOFTWARE\\\\B\\\\\"]\n'two words' = '''\nlong'''\n"
          "[C.D]\nn = 1\n"
          "[E]\nF = { n = 2 }\n");
    EXPECT_EQ(Open(L"")->ReadText(L"top"), L"of the root");
    EXPECT_EQ(Open(L"software\\a")->ReadText(L"Path"), L"C:\\x");
    EXPECT_EQ(Open(L"software\\a")->ReadNumber(L"Count"), 16);
    EXPECT_EQ(Open(L"software\\a")->ReadText(L""), L"d");
    EXPECT_EQ(Open(L"software\\b")->ReadText(L"two words"), L"long");
    EXPECT_EQ(Open(L"C\\D")->ReadNumber(L"n"), 1);
    EXPECT_EQ(Open(L"E\\F")->ReadNumber(L"n"), 2);
    EXPECT_THAT(Open(L"")->SubKeys(), ElementsAre(L"C", L"E", L"Software"));
}

TEST_F(RegistryFile, KeepsWhatAPersonWroteWhenAProgramAdds) {
    Write("['Software\\A']\nPath = 'x'\nCount = 7\n");
    Open(L"Software\\A")->WriteText(L"New", L"y");
    Write(ReadFile(m_File));
    EXPECT_EQ(Open(L"Software\\A")->ReadText(L"Path"), L"x");
    EXPECT_EQ(Open(L"Software\\A")->ReadNumber(L"Count"), 7);
    EXPECT_EQ(Open(L"Software\\A")->ReadText(L"New"), L"y");
}

TEST_F(RegistryFile, JoinsTablesWhoseNamesDifferInCaseAlone) {
    Write("['Software\\A']\nx = 1\n['SOFTWARE\\a']\ny = 2\n");
    EXPECT_THAT(Open(L"Software\\A")->Values(), ElementsAre(L"x", L"y"));
}

TEST_F(RegistryFile, IsReadAgainAfterAnEdit) {
    Write("[k]\nv = 1\n");
    EXPECT_EQ(Open(L"k")->ReadNumber(L"v"), 1);
    for (LONG i = 2; i < 50; ++i) {
        Write("[k]\nv = " + std::to_string(i) + "\n");
        ASSERT_EQ(Open(L"k")->ReadNumber(L"v"), i);
    }
    RemoveFile(m_File);
    EXPECT_FALSE(Open(L"k").has_value());
}

TEST_F(RegistryFile, ThatIsMalformedIsRefusedWithItsLineAndLeftAsItIs) {
    ExpectRefused("[k]\nv = 1\nw = oops\n", 3, "");
    ExpectRefused("[k\n", 1, "");
    ExpectRefused("a = 1\n\n\nb = 'open\n", 4, "");
    ExpectRefused("a = \"\xFF\"\n", 1, "");
    ExpectRefused("[k]\nv = 1\nv = 2\n", 3, "");
}

TEST_F(RegistryFile, WithValuesOfAnotherKindIsRefused) {
    ExpectRefused("[k]\n\nv = 1.5\n", 3, "the value \"v\" is neither a text in quotes nor a whole number");
    ExpectRefused("v = true\n", 1, "the value \"v\" is neither");
    ExpectRefused("[k]\nv = [1, 2]\n", 2, "the value \"v\" is neither");
    ExpectRefused("v = 1979-05-27\n", 1, "the value \"v\" is neither");
    ExpectRefused("v = 2147483648\n", 1, "the number of \"v\" does not fit into 32 bits");
    ExpectRefused("v = -2147483649\n", 1, "the number of \"v\" does not fit into 32 bits");
}

TEST_F(RegistryFile, WithAValueTwiceIsRefused) {
    ExpectRefused("['A']\nPath = '1'\n['a']\npath = '2'\n", 4,
                  "the value \"path\" stands twice in its key, since names compare without case; remove one");
    ExpectRefused("[k]\n\"\" = '1'\n\"@\" = '2'\n", 3, "the value \"@\" stands twice in its key");
}

TEST_F(RegistryFile, IsNotWrittenWhenNothingChanges) {
    const auto key = CRegistryKey::Create(ERegistryRoot::Machine, L"k");
    key.WriteText(L"v", L"x");
    const auto before = GetFileStamp(m_File);
    key.WriteText(L"V", L"x");
    static_cast<void>(CRegistryKey::Create(ERegistryRoot::Machine, L"K"));
    EXPECT_FALSE(key.DeleteValue(L"absent"));
    EXPECT_EQ(GetFileStamp(m_File), before);
}

TEST_F(RegistryFile, IsForTheUserAlone) {
    const CScopedEnvironment place(L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name() + L"/new/place");
    CRegistryKey::Create(ERegistryRoot::Machine, L"k").WriteText(L"Password", L"secret");
    const auto modeOf = [](const std::filesystem::path& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 0777U;
    };
    EXPECT_EQ(modeOf(m_Directory.Path() / "new"), 0700U);
    EXPECT_EQ(modeOf(m_Directory.Path() / "new" / "place"), 0700U);
    EXPECT_EQ(modeOf(m_Directory.Path() / "new" / "place" / "machine.toml"), 0600U);
    EXPECT_EQ(modeOf(m_Directory.Path() / "new" / "place" / "machine.toml.lock"), 0600U);
}

TEST_F(RegistryFile, InADirectoryThatCannotBeMadeSaysWhatToDo) {
    WriteFileAtomically(m_Directory.Path() / "file", "");
    const CScopedEnvironment place(L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name() + L"/file");
    try {
        static_cast<void>(CRegistryKey::Create(ERegistryRoot::Machine, L"k"));
        FAIL();
    } catch (const CRegistryError& error) {
        const std::string file = (m_Directory.Path() / "file" / "machine.toml").native();
        EXPECT_EQ(error.what(), "registry file \"" + file + "\": cannot look at \"" + file +
                                    "\": Not a directory. Let this user read it, or name another directory in "
                                    "SQSTORAGE_REGISTRY_DIR");
        EXPECT_EQ(error.Line(), 0U);
    }
}

TEST_F(RegistryFile, InADirectoryWithoutTheRightToWriteSaysWhatToDo) {
    // Nobody may create files in /proc, not even the administrator.
    const CScopedEnvironment place(L"SQSTORAGE_REGISTRY_DIR", L"/proc/sqstorage");
    try {
        static_cast<void>(CRegistryKey::Create(ERegistryRoot::Machine, L"k"));
        FAIL();
    } catch (const CRegistryError& error) {
        EXPECT_STREQ(error.what(), "registry file \"/proc/sqstorage/machine.toml\": cannot create directory "
                                   "\"/proc/sqstorage\": No such file or directory. Let this user write to the "
                                   "directory, or name another in SQSTORAGE_REGISTRY_DIR");
    }
}

TEST_F(RegistryFile, ThatIsADirectoryCannotBeRead) {
    CreateDirectories(m_File);
    try {
        static_cast<void>(Open(L"k"));
        FAIL();
    } catch (const CRegistryError& error) {
        EXPECT_THAT(error.what(), HasSubstr("Is a directory. Let this user read it"));
    }
}

} // namespace
} // namespace platform
