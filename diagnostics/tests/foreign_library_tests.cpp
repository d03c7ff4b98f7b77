// A library that throws what it likes out of its calls.

#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/CrashCatchers.h"
#include "diagnostics/interface/Trail.h"

#include <stdexcept>

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;

using ThrowingLibrary = CRecorded;
using ThrowingLibraryDeathTest = CRecorded;

void ThrowOn(std::wstring_view fatal) {
    Recorder::SetVerbHandler([fatal](std::wstring_view verb) {
        if (verb == fatal)
            throw 5;
    });
}

TEST_F(ThrowingLibrary, FailsItsStartAndIsTriedAgain) {
    for (const wchar_t* verb : {L"CREATE", L"INIT"}) {
        ThrowOn(verb);
        Recorder::SetOptionAnswer(E_ACCESSDENIED);
        EXPECT_EQ(GetClient().Init(), E_ACCESSDENIED);
        EXPECT_EQ(GetClient().Inited, 0);
        EXPECT_EQ(GetClient().Active, 0);
        EXPECT_FALSE(Assert(false, L"x"));
        EXPECT_EQ(GetClient().Inited, 0);
        EXPECT_EQ(Recorder::OpenRoots(), 0);
        EXPECT_EQ(Recorder::OpenRecords(), 0);
    }
    Recorder::SetVerbHandler(nullptr);
    Assert(false, L"now");
    EXPECT_EQ(Recorder::Asserts(), Texts{L"now"});
}

TEST_F(ThrowingLibrary, FailsItsStartOutOfItsExportToo) {
    Recorder::SetInitObjectHandler([] { throw 5; });
    EXPECT_EQ(GetClient().Init(), E_FAIL);
    EXPECT_EQ(GetClient().Inited, 0);
    EXPECT_FALSE(Assert(false, L"x"));
    EXPECT_EQ(GetClient().Inited, 0);
    Recorder::SetInitObjectHandler(nullptr);
    EXPECT_EQ(GetClient().Init(), S_OK);
}

TEST_F(ThrowingLibrary, AnswersAReportWithFailureAndNothingLeavesTheGuard) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    for (const wchar_t* verb : {L"CREATE", L"FILTER", L"PROCESS"}) {
        ThrowOn(verb);
        EXPECT_EQ(AsserterClass(GetClient(), "f", 1, 0, "f", "f()")(L"x"), E_FAIL);
        const CScope scope;
        scope.Trace(L"x");
        EXPECT_EQ(scope.Guard([]() -> HRESULT { throw std::runtime_error("bad"); }, E_POINTER), E_POINTER);
        EXPECT_EQ(scope.Guard([&]() -> HRESULT { scope.Throw(L"x"); }, E_POINTER), E_POINTER);
        EXPECT_EQ(Recorder::OpenRecords(), 0);
    }
}

TEST_F(ThrowingLibrary, LosesThePointerIntoTheStackAllTheSame) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetProcessHandler([](const Recorder::tagRecord&) -> HRESULT { throw 5; });
    EXPECT_EQ(AsserterClass(GetClient(), "f", 1, 0, "f", "f()")(L"x"), E_FAIL);
    const auto after = Only(L"ASSERT").FieldsAfterProcess;
    ASSERT_EQ(after.size(), 1u);
    EXPECT_EQ(after[0].first, L"$EXCEPTION_POINTERS");
    EXPECT_EQ(after[0].second.Get().llVal, 0);
}

TEST_F(ThrowingLibrary, AnswersAQuestionWithFailure) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    ThrowOn(L"IS CLEAN");
    EXPECT_EQ(GetClient().IsClean(), E_FAIL);
    ThrowOn(L"REPORTDIALOG");
    EXPECT_EQ(GetClient().ReportDialog(), E_FAIL);
}

TEST_F(ThrowingLibrary, IsLetGoAtTheEnd) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    ThrowOn(L"DEINIT");
    GetClient().Shutdown();
    EXPECT_EQ(GetClient().Active, 0);
    EXPECT_EQ(Recorder::OpenRoots(), 0);
}

TEST_F(ThrowingLibrary, DoesNotKeepACrashFromThePreviousHandler) {
    static int previous = 0;
    ASSERT_EQ(GetClient().Init(), S_OK);
    ThrowOn(L"PROCESS");
    platform::SetInvalidParameterHandler([](const platform::tagInvalidParameter&) { ++previous; });
    CInvalidParameterCatcher::Install();
    platform::ReportInvalidParameter(L"", L"");
    CInvalidParameterCatcher::Remove();
    platform::SetInvalidParameterHandler(nullptr);
    EXPECT_EQ(previous, 1);
}

TEST_F(ThrowingLibraryDeathTest, DoesNotKeepTheProcessFromItsEnd) {
    ThrowOn(L"TERMINATE");
    EXPECT_EXIT(GetClient().Terminate(), testing::ExitedWithCode(255), "^$");
}

} // namespace
