// Reports of a thread that has no memory left.

#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"

#include <cstdlib>
#include <exception>
#include <limits>
#include <new>

namespace {

constexpr int Plenty = std::numeric_limits<int>::max();

// How many allocations of this thread succeed from now on.
thread_local int t_Left = Plenty;
thread_local bool t_Failed = false;

void* Allocate(std::size_t size) noexcept {
    if (t_Left == 0) {
        t_Failed = true;
        return nullptr;
    }
    if (t_Left != Plenty)
        --t_Left;
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

// The compiler inlines one half of the pair and then takes the other for a mismatch.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

void* operator new(std::size_t size) {
    if (void* const memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;

using NoMemory = CRecorded;

// Its words cost no memory, so that what fails is the report.
struct CPlainException : std::exception {
    [[nodiscard]] const char* what() const noexcept override { return "bad"; }
};

// Runs the action with memory for no allocation, then for one, and so on, until it needs no more; answers how often
// it ran short.
template <class Action>
int RunShortOfMemory(Action&& action) {
    for (int available = 0;; ++available) {
        t_Failed = false;
        t_Left = available;
        action();
        t_Left = Plenty;
        if (!t_Failed)
            return available;
    }
}

TEST_F(NoMemory, NothingLeavesTheGuardWhileItReports) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    int answered = 0;
    const CScope scope;
    const int runs =
        RunShortOfMemory([&] { answered += scope.Guard([]() -> int { throw CPlainException(); }, 1); });
    EXPECT_GT(runs, 10);
    EXPECT_EQ(answered, runs + 1);
    ASSERT_FALSE(Recorder::Errors().empty());
    EXPECT_EQ(Recorder::Errors().back(), L" (stdexcept: \"bad\")");
}

TEST_F(NoMemory, AnAssertionGoesOn) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    const CScope scope;
    EXPECT_GT(RunShortOfMemory([&] { EXPECT_FALSE(scope.Assert(false, L"a text that needs an allocation")); }), 10);
    EXPECT_EQ(Recorder::Asserts().back(), L"a text that needs an allocation");
}

TEST_F(NoMemory, ALineGoesOn) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    const CScope scope;
    EXPECT_GT(RunShortOfMemory([&] { scope.Trace(L"a long line with a number: %d", 5); }), 5);
    EXPECT_EQ(Recorder::Messages().back(), L"a long line with a number: 5");
}

TEST_F(NoMemory, ARaisedErrorIsARecordOrAText) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    const CScope scope;
    int records = 0;
    int texts = 0;
    const int runs = RunShortOfMemory([&] {
        try {
            scope.Throw(L"a text that needs an allocation");
        } catch (IDebugObject* error) {
            ++records;
            error->Release();
        } catch (const wchar_t*) {
            ++texts;
        }
    });
    EXPECT_GE(records, 1);
    EXPECT_GE(texts, 1);
    EXPECT_EQ(records + texts, runs + 1);
}

TEST_F(NoMemory, TheClientStartsLater) {
    bool isReset = true;
    const int runs = RunShortOfMemory([&] {
        const bool isStarted = GetClient().Init() == S_OK;
        isReset = isReset && (isStarted || GetClient().Inited == 0);
    });
    EXPECT_GT(runs, 3);
    EXPECT_TRUE(isReset);
    EXPECT_EQ(GetClient().Active, 1);
    EXPECT_EQ(Recorder::OpenRoots(), 1);
}

} // namespace
