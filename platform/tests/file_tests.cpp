#include "platform/file.h"

#include "platform/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <thread>

namespace platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class File : public testing::Test {
protected:
    [[nodiscard]] fs::path At(const std::string& name) const { return m_Directory.Path() / name; }
    static unsigned ModeOf(const fs::path& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 0777U;
    }

    CTemporaryDirectory m_Directory;
};

TEST_F(File, ReadsBackWhatWasWritten) {
    const std::string bytes("a\0b\xFF\n", 5);
    WriteFileAtomically(At("f"), bytes);
    EXPECT_EQ(ReadFile(At("f")), bytes);
    WriteFileAtomically(At("f"), "");
    EXPECT_EQ(ReadFile(At("f")), "");
    const std::string large(1'000'003, 'x');
    WriteFileAtomically(At("f"), large);
    EXPECT_EQ(ReadFile(At("f")), large);
}

TEST_F(File, ReadsWhatHasNoSizeBeforehand) { EXPECT_FALSE(ReadFile("/proc/self/status").empty()); }

TEST_F(File, LeavesNothingBesideTheFileItWrote) {
    WriteFileAtomically(At("f"), "1");
    WriteFileAtomically(At("f"), "2");
    EXPECT_THAT(ListDirectory(m_Directory.Path()), ElementsAre(At("f")));
}

TEST_F(File, LeavesNothingBehindWhenItCannotReplace) {
    CreateDirectories(At("d"));
    WriteFileAtomically(At("d") / "inner", "");
    EXPECT_THROW(WriteFileAtomically(At("d"), "x"), CFileError);
    EXPECT_THAT(ListDirectory(m_Directory.Path()), ElementsAre(At("d")));
}

TEST_F(File, TakesBytesInParts) {
    WriteFileAtomically(At("f"), "old");
    WriteFileAtomically(At("f"), [&](const TakeBytes& take) {
        take("a");
        take("");
        EXPECT_EQ(ReadFile(At("f")), "old");
        take("b\n");
    });
    EXPECT_EQ(ReadFile(At("f")), "ab\n");
}

TEST_F(File, StaysAsItWasWhenItsNewPartsEndInAnException) {
    WriteFileAtomically(At("f"), "old");
    EXPECT_THROW(WriteFileAtomically(At("f"),
                                     [](const TakeBytes& take) {
                                         take("new");
                                         throw std::runtime_error("no more");
                                     }),
                 std::runtime_error);
    EXPECT_EQ(ReadFile(At("f")), "old");
    EXPECT_THAT(ListDirectory(m_Directory.Path()), ElementsAre(At("f")));
}

TEST_F(File, SaysWhatCouldNotBeReadAndWhy) {
    try {
        static_cast<void>(ReadFile(At("absent")));
        FAIL();
    } catch (const CFileError& error) {
        EXPECT_EQ(error.Code(), ENOENT);
        EXPECT_EQ(error.what(), "cannot open \"" + At("absent").native() + "\": No such file or directory");
    }
    EXPECT_EQ(ReadFileIfExists(At("absent")), std::nullopt);
    EXPECT_THROW(static_cast<void>(ReadFileIfExists(m_Directory.Path())), CFileError) << "a directory";
}

TEST_F(File, SaysWhereItCouldNotWrite) {
    WriteFileAtomically(At("f"), "in the way");
    try {
        WriteFileAtomically(At("f") / "g", "x");
        FAIL();
    } catch (const CFileError& error) {
        EXPECT_EQ(error.Code(), ENOTDIR);
        EXPECT_EQ(error.what(),
                  "cannot create a temporary file beside \"" + (At("f") / "g").native() + "\": Not a directory");
    }
}

TEST_F(File, GivesPrivateFilesToTheUserAlone) {
    WriteFileAtomically(At("f"), "x", EAccess::Private);
    EXPECT_EQ(ModeOf(At("f")), 0600U);
    CreateDirectories(At("a") / "b", EAccess::Private);
    EXPECT_EQ(ModeOf(At("a")), 0700U);
    EXPECT_EQ(ModeOf(At("a") / "b"), 0700U);
}

TEST_F(File, KeepsThePermissionsOfAFileItReplaces) {
    WriteFileAtomically(At("f"), "x");
    ASSERT_EQ(chmod(At("f").c_str(), 0640), 0);
    WriteFileAtomically(At("f"), "y");
    EXPECT_EQ(ModeOf(At("f")), 0640U);
    WriteFileAtomically(At("f"), "z", EAccess::Private);
    EXPECT_EQ(ModeOf(At("f")), 0600U);
}

TEST_F(File, WritesThroughASymbolicLink) {
    CreateDirectories(At("real"));
    fs::create_symlink(At("real") / "f", At("link"));
    WriteFileAtomically(At("link"), "new, through a dangling link");
    WriteFileAtomically(At("link"), "again");
    EXPECT_TRUE(fs::is_symlink(At("link")));
    EXPECT_EQ(ReadFile(At("real") / "f"), "again");
    fs::create_symlink("circle", At("circle"));
    EXPECT_THROW(WriteFileAtomically(At("circle"), "x"), CFileError);
}

TEST_F(File, HasALaterTimeAfterEachWrite) {
    WriteFileAtomically(At("f"), "0");
    std::int64_t before = GetFileStamp(At("f")).value().Modified;
    for (int i = 0; i < 100; ++i) {
        WriteFileAtomically(At("f"), "0");
        const std::int64_t now = GetFileStamp(At("f")).value().Modified;
        ASSERT_GT(now, before);
        before = now;
    }
    EXPECT_EQ(GetFileStamp(At("absent")), std::nullopt);
}

TEST_F(File, IsNeverSeenHalfWritten) {
    const std::string first(100'000, 'a');
    const std::string second(150'000, 'b');
    WriteFileAtomically(At("f"), first);
    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) {
            const std::string bytes = ReadFile(At("f"));
            ASSERT_TRUE(bytes == first || bytes == second) << bytes.size();
        }
    });
    for (int i = 0; i < 50; ++i)
        WriteFileAtomically(At("f"), i % 2 == 0 ? second : first);
    done = true;
    reader.join();
}

TEST_F(File, IsWrittenByManyThreadsWithoutMixing) {
    std::vector<std::thread> threads;
    for (char letter : {'a', 'b', 'c', 'd'})
        threads.emplace_back([&, letter] {
            for (int i = 0; i < 20; ++i)
                WriteFileAtomically(At("f"), std::string(10'000, letter));
        });
    for (std::thread& thread : threads)
        thread.join();
    const std::string bytes = ReadFile(At("f"));
    EXPECT_EQ(bytes, std::string(10'000, bytes.front()));
    EXPECT_EQ(ListDirectory(m_Directory.Path()).size(), 1U);
}

TEST_F(File, TellsFilesFromDirectories) {
    WriteFileAtomically(At("f"), "");
    EXPECT_TRUE(Exists(At("f")));
    EXPECT_FALSE(IsDirectory(At("f")));
    EXPECT_TRUE(IsDirectory(m_Directory.Path()));
    EXPECT_FALSE(Exists(At("f") / "below a file"));
}

TEST_F(File, IsInTheWayOfADirectory) {
    WriteFileAtomically(At("f"), "");
    try {
        CreateDirectories(At("f") / "d");
        FAIL();
    } catch (const CFileError& error) {
        EXPECT_EQ(error.Code(), ENOTDIR);
        EXPECT_EQ(error.what(), "cannot create directory \"" + At("f").native() + "\": Not a directory");
    }
}

TEST_F(File, IsRemovedWithoutAskingWhetherItIsThere) {
    WriteFileAtomically(At("f"), "");
    RemoveFile(At("f"));
    RemoveFile(At("f"));
    CreateDirectories(At("a") / "b" / "c");
    RemoveTree(At("a"));
    RemoveTree(At("a"));
    EXPECT_TRUE(ListDirectory(m_Directory.Path()).empty());
    EXPECT_THROW(static_cast<void>(ListDirectory(At("a"))), CFileError);
}

TEST_F(File, HasANameInUtf8WhateverTheLocale) {
    const std::wstring name = m_Directory.Name() + L"/\u0416\U0001F600";
    WriteFileAtomically(ToPath(name), "x");
    EXPECT_EQ(FromPath(ListDirectory(m_Directory.Path()).at(0)), name);
    EXPECT_EQ(ToPath(name).filename().native(), "\xD0\x96\xF0\x9F\x98\x80");
    EXPECT_THROW(static_cast<void>(FromPath(fs::path("\xFF"))), CTextError);
}

TEST_F(File, LockExcludesOthersUntilItsEnd) {
    {
        const CFileLock lock(At("l"));
        EXPECT_FALSE(CFileLock::Try(At("l")).has_value());
    }
    const auto second = CFileLock::Try(At("l"));
    ASSERT_TRUE(second.has_value());
    EXPECT_FALSE(CFileLock::Try(At("l")).has_value());
    EXPECT_EQ(ModeOf(At("l")), 0600U);
}

TEST_F(File, LockMovesWithItsOwner) {
    CFileLock first(At("l"));
    {
        const CFileLock second = std::move(first);
        EXPECT_FALSE(CFileLock::Try(At("l")).has_value());
    }
    EXPECT_TRUE(CFileLock::Try(At("l")).has_value());
}

TEST_F(File, LockIsWaitedFor) {
    std::atomic<int> holders = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                const CFileLock lock(At("l"));
                EXPECT_EQ(++holders, 1);
                --holders;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(File, LockSaysWhyItCannotBeTaken) {
    EXPECT_THROW(CFileLock(At("absent") / "l"), CFileError);
    EXPECT_THROW(static_cast<void>(CFileLock::Try(At("absent") / "l")), CFileError);
}

TEST(TemporaryDirectory, IsGoneAtTheEndWithItsContent) {
    fs::path path;
    {
        const CTemporaryDirectory directory("prefix");
        path = directory.Path();
        EXPECT_TRUE(path.filename().native().starts_with("prefix-"));
        CreateDirectories(path / "a" / "b");
        WriteFileAtomically(path / "a" / "f", "x");
    }
    EXPECT_FALSE(Exists(path));
}

} // namespace
} // namespace platform
