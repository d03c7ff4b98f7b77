#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/Trail.h"
#include "elsewhere.h"
#include "platform/crash.h"

#include <cerrno>

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;
using testing::ElementsAre;

using Assertion = CRecorded;
using AssertionDeathTest = CRecorded;

AsserterClass MakeAsserter(LONG group = 0) {
    return AsserterClass(GetClient(), "file.cpp", 7, group, "ns::Function", "void ns::Function(int)");
}

TEST_F(Assertion, HasItsFieldsInOrder) {
    errno = 0;
    EXPECT_EQ(MakeAsserter()(L"field != 0"), S_OK);
    const auto record = Only(L"ASSERT");
    EXPECT_THAT(record.FieldNames(), ElementsAre(L"$Type", L"<<ASSERT>>", L"Description", L"Thread ID", L"File",
                                                 L"Line", L"Function", L"$FuncSig", L"$EXCEPTION_POINTERS"));
    EXPECT_EQ(record.Description, L"field != 0");
    EXPECT_FALSE(record.Status.has_value());
}

TEST_F(Assertion, OfAStatusHasLastErrorStatusAndGroupInTheirPlaces) {
    errno = ENOENT;
    EXPECT_EQ(MakeAsserter(5)(L"Execute", E_FAIL), S_OK);
    EXPECT_EQ(errno, ENOENT);
    const auto record = Only(L"ASSERT");
    EXPECT_THAT(record.FieldNames(),
                ElementsAre(L"$Type", L"<<ASSERT>>", L"Last Error Code", L"HRESULT", L"Description", L"Thread ID",
                            L"File", L"Line", L"$Group", L"Function", L"$FuncSig", L"$EXCEPTION_POINTERS"));
    EXPECT_EQ(record.Value(L"Last Error Code").AsLong(), ENOENT);
    EXPECT_EQ(record.Status, E_FAIL);
    EXPECT_EQ(record.Group, 5);
}

TEST_F(Assertion, IsFilteredBeforeItIsProcessed) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::Clear();
    MakeAsserter()(L"x");
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"CREATE", L"FILTER", L"PROCESS"));
}

TEST_F(Assertion, ThatTheFilterTakesIsNotProcessed) {
    Recorder::SetAnswer(L"FILTER", S_FALSE);
    Recorder::SetAnswer(L"PROCESS", E_ABORT);
    EXPECT_EQ(MakeAsserter()(L"x"), S_FALSE);
    EXPECT_TRUE(Recorder::Records().empty());
}

TEST_F(Assertion, TheFirstAnswerThatIsNotZeroIsTheCode) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::Clear();
    Recorder::SetFieldAnswer(L"Description", 7);
    Recorder::SetAnswer(L"FILTER", 8);
    EXPECT_EQ(MakeAsserter()(L"x"), 7);
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"CREATE"));
}

TEST_F(Assertion, ItsPointerIntoTheStackIsTakenOutAfterwards) {
    Recorder::SetProcessHandler([](const Recorder::tagRecord& record) {
        const auto* info =
            reinterpret_cast<const platform::tagExceptionInfo*>(record.Value(L"$EXCEPTION_POINTERS").Get().llVal);
        return info && info->Context->InstructionPointer != 0 ? S_OK : E_FAIL;
    });
    EXPECT_EQ(MakeAsserter()(L"x"), S_OK) << "valid while it is processed";
    const auto record = Only(L"ASSERT");
    ASSERT_EQ(record.FieldsAfterProcess.size(), 1u);
    EXPECT_EQ(record.FieldsAfterProcess[0].first, L"$EXCEPTION_POINTERS");
    EXPECT_EQ(record.FieldsAfterProcess[0].second.Get().llVal, 0);
}

TEST_F(Assertion, OnlyAFailedConditionIsReported) {
    const CScope scope;
    EXPECT_TRUE(scope.Assert(true, L"a"));
    EXPECT_FALSE(scope.Assert(false, L"b"));
    EXPECT_TRUE(scope.Check(S_OK, L"c"));
    EXPECT_FALSE(scope.Check(S_FALSE, L"d"));
    EXPECT_EQ(Recorder::Asserts(), (Texts{L"b", L"d"}));
}

TEST_F(Assertion, StandsInTheFunctionAndLineThatMadeIt) {
    const CScope scope;
    [&] { scope.Assert(false, L"x"); }();
    const LONG line = __LINE__ - 1;
    const auto record = Only(L"ASSERT");
    EXPECT_EQ(record.Line, line);
    EXPECT_TRUE(record.Function.ends_with(L"::TestBody")) << "code in a lambda counts to the function around it";
}

TEST_F(Assertion, InAnotherFileThanItsScopeNamesFileAndLineOfThatFile) {
    const CScope scope;
    const LONG line = elsewhere::FailAssertion(scope);
    const auto record = Only(L"ASSERT");
    EXPECT_TRUE(record.Value(L"File").AsText().ends_with(L"/elsewhere.cpp"));
    EXPECT_EQ(record.Line, line);
    EXPECT_TRUE(record.Function.ends_with(L"::TestBody")) << "the scope's";
}

TEST_F(Assertion, KeepsTheLastErrorThatTheLibraryDisturbs) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetVerbHandler([](std::wstring_view) { errno = EBADF; });
    errno = ENOENT;
    {
        auto asserter = MakeAsserter();
        asserter(L"x");
    }
    EXPECT_EQ(errno, ENOENT);
    const CScope scope;
    errno = EACCES;
    scope.Assert(false, L"x");
    EXPECT_EQ(errno, EACCES);
    scope.Check(E_FAIL, L"x");
    EXPECT_EQ(errno, EACCES);
    Assert(false, L"x");
    EXPECT_EQ(errno, EACCES);
}

TEST_F(Assertion, StoppedBeforeItsPointerGetsNoNewFieldAfterwards) {
    Recorder::SetFieldAnswer(L"Description", E_FAIL);
    EXPECT_EQ(MakeAsserter()(L"x"), E_FAIL);
    const auto record = Recorder::GivenUp().back();
    EXPECT_EQ(record.FieldNames().back(),
              record.Value(L"Last Error Code").Type() == VT_EMPTY ? L"<<ASSERT>>" : L"Last Error Code");
}

TEST_F(Assertion, WhosePointerIsRefusedIsNotWrittenToAgain) {
    Recorder::SetFieldAnswer(L"$EXCEPTION_POINTERS", E_FAIL);
    EXPECT_EQ(MakeAsserter()(L"x"), E_FAIL);
    EXPECT_EQ(Recorder::GivenUp().back().FieldNames().back(), L"$FuncSig");
}

TEST_F(Assertion, StoppedAfterItsPointerLosesThePointerAllTheSame) {
    Recorder::SetAnswer(L"FILTER", S_FALSE);
    MakeAsserter()(L"x");
    const auto pointers = Recorder::GivenUp().back().Value(L"$EXCEPTION_POINTERS");
    EXPECT_EQ(pointers.Type(), VT_I8);
    EXPECT_EQ(pointers.Get().llVal, 0);
}

TEST_F(Assertion, WithoutAScopeStandsInItsCaller) {
    EXPECT_FALSE(Assert(false, L"x"));
    EXPECT_FALSE(Check(E_FAIL, L"y"));
    EXPECT_TRUE(Assert(true, L"") && Check(S_OK, L""));
    const auto records = Recorder::RecordsOf(L"ASSERT");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[1].Line, records[0].Line + 1);
    EXPECT_TRUE(records[0].Function.ends_with(L"::TestBody"));
    EXPECT_EQ(records[1].Status, E_FAIL);
}

TEST_F(Assertion, AnsweredWithOneBreaksAndGoesOn) {
    static int breaks = 0;
    platform::SetBreakHandler([] { ++breaks; });
    Recorder::SetAnswer(L"PROCESS", 1);
    EXPECT_FALSE(Assert(false, L"x"));
    platform::SetBreakHandler(nullptr);
    EXPECT_EQ(breaks, 1);
}

TEST_F(AssertionDeathTest, AnsweredWithAbortShutsDownAndEndsTheProcess) {
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            EchoVerbs();
            Recorder::SetAnswer(L"PROCESS", E_ABORT);
            Assert(false, L"x");
        },
        testing::ExitedWithCode(255), "\\[PROCESS\\]\\[DEINIT\\]$");
}

TEST_F(Assertion, IsKeptAmongTheRecentFailures) {
    ClearRecentFailures();
    const CScope scope;
    scope.Assert(false, L"field != 0");
    scope.Check(E_FAIL, L"Execute");
    const auto failures = RecentFailures();
    ASSERT_EQ(failures.size(), 2u);
    EXPECT_TRUE(failures[0].ends_with(L"::TestBody: field != 0"));
    EXPECT_TRUE(failures[1].ends_with(L"::TestBody: Execute (0x80004005)"));
}

TEST_F(Assertion, OnlyTheLast64FailuresAreKept) {
    ClearRecentFailures();
    for (int i = 0; i < 70; ++i)
        Assert(false, std::to_wstring(i));
    const auto failures = RecentFailures();
    ASSERT_EQ(failures.size(), 64u);
    EXPECT_TRUE(failures.front().ends_with(L": 6"));
    EXPECT_TRUE(failures.back().ends_with(L": 69"));
}

} // namespace
