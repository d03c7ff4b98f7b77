// Reports of a thread that has no memory left.

#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"
#include "platform/tests/heap/HeapProbe.h"

#include <exception>

namespace {

// How many allocations of this thread succeed from now on.
thread_local int t_Left = 0;
thread_local bool t_Failed = false;

bool Allows(std::size_t) {
    if (t_Left > 0) {
        --t_Left;
        return true;
    }
    t_Failed = true;
    return false;
}

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
        {
            const HeapProbe::CJudged judged(Allows);
            action();
        }
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
