// Writers of the registry that come at the same time.
#include "platform/crash.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/registry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <exception>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace platform {
namespace {

constexpr LONG Rounds = 25;

class RegistryWriters : public testing::Test {
protected:
    static void WriteMany(std::wstring_view prefix) {
        const auto key = CRegistryKey::Create(ERegistryRoot::User, L"SOFTWARE\\Shared");
        for (LONG i = 0; i < Rounds; ++i)
            key.WriteNumber(std::wstring(prefix) + std::to_wstring(i), i);
    }
    static void ExpectAll(std::wstring_view prefix) {
        const auto key = CRegistryKey::Open(ERegistryRoot::User, L"SOFTWARE\\Shared");
        ASSERT_TRUE(key.has_value());
        for (LONG i = 0; i < Rounds; ++i)
            EXPECT_EQ(key->ReadNumber(std::wstring(prefix) + std::to_wstring(i)), i);
    }
    static pid_t StartProcess(std::wstring_view prefix) {
        const pid_t child = fork();
        if (child != 0)
            return child;
        try {
            WriteMany(prefix);
        } catch (const std::exception&) {
            TerminateProcess(1);
        }
        TerminateProcess(0);
    }

    CTemporaryDirectory m_Directory;
    CScopedEnvironment m_Place{L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name()};
};

TEST_F(RegistryWriters, InTwoProcessesLoseNothing) {
    // Known before the children start, so that they begin with the same cached state.
    static_cast<void>(CRegistryKey::Create(ERegistryRoot::User, L"SOFTWARE"));
    const std::vector<pid_t> children{StartProcess(L"first"), StartProcess(L"second")};
    WriteMany(L"own");
    for (const pid_t child : children) {
        ASSERT_GT(child, 0);
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ExpectAll(L"own");
    ExpectAll(L"first");
    ExpectAll(L"second");
}

TEST_F(RegistryWriters, InManyThreadsLoseNothing) {
    const std::vector<std::wstring> prefixes{L"a", L"b", L"c", L"d"};
    std::vector<std::thread> threads;
    for (const std::wstring& prefix : prefixes)
        threads.emplace_back([&prefix] { WriteMany(prefix); });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::wstring& prefix : prefixes)
        ExpectAll(prefix);
}

TEST_F(RegistryWriters, AreNeverSeenHalfDone) {
    const auto key = CRegistryKey::Create(ERegistryRoot::User, L"k");
    std::atomic<bool> done = false;
    std::thread reader([&] {
        LONG before = 0;
        while (!done) {
            const LONG now = key.ReadNumber(L"n").value_or(0);
            EXPECT_GE(now, before);
            before = now;
        }
    });
    for (LONG i = 1; i <= 50; ++i)
        key.WriteNumber(L"n", i);
    done = true;
    reader.join();
}

TEST_F(RegistryWriters, WaitForABatch) {
    const auto key = CRegistryKey::Create(ERegistryRoot::User, L"k");
    std::thread other;
    {
        CRegistryBatch batch(ERegistryRoot::User);
        key.WriteNumber(L"mine", 1);
        other = std::thread([&key] {
            EXPECT_EQ(key.ReadNumber(L"mine"), std::nullopt) << "seen before the commit";
            key.WriteNumber(L"yours", 2);
        });
        // Without the lock the other thread's value would be lost with this write.
        for (LONG i = 0; i < 200; ++i)
            key.WriteNumber(L"more" + std::to_wstring(i), i);
        batch.Commit();
    }
    other.join();
    EXPECT_EQ(key.ReadNumber(L"mine"), 1);
    EXPECT_EQ(key.ReadNumber(L"yours"), 2);
}

} // namespace
} // namespace platform
