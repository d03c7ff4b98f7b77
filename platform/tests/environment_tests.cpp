#include "platform/environment.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace platform {
namespace {

constexpr auto Name = L"SQSTORAGE_TEST_VARIABLE";

TEST(Environment, HoldsWideTextUntilItIsRemoved) {
    SetEnvironment(Name, L"\u0416\u00FC \U0001F600");
    EXPECT_EQ(GetEnvironment(Name), L"\u0416\u00FC \U0001F600");
    SetEnvironment(Name, std::nullopt);
    EXPECT_EQ(GetEnvironment(Name), std::nullopt);
}

TEST(Environment, TellsEmptyFromAbsent) {
    const CScopedEnvironment scope(Name, L"");
    EXPECT_EQ(GetEnvironment(Name), L"");
}

TEST(Environment, PutsBackWhatAScopeReplaced) {
    const CScopedEnvironment outer(Name, L"outer");
    {
        const CScopedEnvironment inner(Name, L"inner");
        EXPECT_EQ(GetEnvironment(Name), L"inner");
    }
    EXPECT_EQ(GetEnvironment(Name), L"outer");
}

TEST(Environment, RefusesWhatCannotBeStored) {
    EXPECT_THROW(SetEnvironment(L"", L"x"), std::invalid_argument);
    EXPECT_THROW(SetEnvironment(L"A=B", L"x"), std::invalid_argument);
    EXPECT_THROW(SetEnvironment(Name, std::wstring(L"a\0b", 3)), std::invalid_argument);
    EXPECT_THROW(static_cast<void>(GetEnvironment(std::wstring_view(L"a\0b", 3))), std::invalid_argument);
}

TEST(Environment, IsReadAndWrittenByManyThreads) {
    const CScopedEnvironment scope(Name, L"0");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([i] {
            for (int round = 0; round < 200; ++round) {
                SetEnvironment(Name, std::wstring(static_cast<std::size_t>(round), L'x') + std::to_wstring(i));
                EXPECT_TRUE(GetEnvironment(Name).has_value());
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
} // namespace platform
