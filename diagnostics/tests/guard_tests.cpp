#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/Trail.h"
#include "elsewhere.h"
#include "platform/crash.h"

#include <cerrno>
#include <stdexcept>

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;
using testing::ElementsAre;

using ErrorGuard = CRecorded;
using ErrorGuardDeathTest = CRecorded;
using RaisedError = CRecorded;

TEST_F(RaisedError, IsARecordWithItsFieldsInOrder) {
    errno = 0;
    try {
        ThrowError(GetClient(), "file.cpp", 7, 0, "ns::Function", "void ns::Function(int)")(L"m_Object.get()");
    } catch (IDebugObject* error) {
        const auto held = platform::CComPtr<IDebugObject>::Adopt(error);
        platform::CVariant type;
        EXPECT_EQ(held->GetValue(platform::CBstr(L"$Type").Get(), type.Put()), S_OK);
        EXPECT_EQ(type.AsText(), L"CREATE ERROR");
        Recorder::Clear();
        // A guard shows the record as the inner one of its own.
        const CScope scope;
        scope.Guard([&] { throw platform::CComPtr<IDebugObject>(held).Detach(); });
    }
    const auto shown = Only(L"ERROR");
    ASSERT_EQ(shown.Inner.size(), 1u);
    ASSERT_EQ(shown.Inner[0].Inner.size(), 1u);
    EXPECT_THAT(shown.Inner[0].Inner[0].FieldNames(),
                ElementsAre(L"$Type", L"<<ERROR>>", L"$ThreadID", L"Description", L"File", L"Line", L"Function",
                            L"$FuncSig"));
}

TEST_F(RaisedError, HasLastErrorStatusAndGroupInTheirPlaces) {
    const CScope scope;
    scope.Guard([] {
        errno = ENOENT;
        ThrowError(GetClient(), "file.cpp", 7, 4, "ns::Function", "void ns::Function(int)")(L"Open", E_FAIL);
    });
    const auto raised = Only(L"ERROR").Inner.at(0).Inner.at(0);
    EXPECT_THAT(raised.FieldNames(),
                ElementsAre(L"$Type", L"<<ERROR>>", L"$ThreadID", L"Last Error Code", L"Description", L"HRESULT",
                            L"File", L"Line", L"$Group", L"Function", L"$FuncSig"));
    EXPECT_EQ(raised.Status, E_FAIL);
    EXPECT_EQ(raised.Value(L"Last Error Code").AsLong(), ENOENT);
}

TEST_F(RaisedError, IsNotSubmittedByItself) {
    const CScope scope;
    EXPECT_THROW(
        {
            try {
                scope.Throw(L"x");
            } catch (IDebugObject* error) {
                error->Release();
                throw std::logic_error("seen");
            }
        },
        std::logic_error);
    EXPECT_TRUE(Recorder::RecordsOf(L"CREATE ERROR").empty());
}

TEST_F(RaisedError, IsThrownEvenWithAFieldRefused) {
    Recorder::SetFieldAnswer(L"Description", E_FAIL);
    const CScope scope;
    bool isRecord = false;
    try {
        scope.Throw(L"x");
    } catch (IDebugObject* error) {
        isRecord = true;
        error->Release();
    }
    EXPECT_TRUE(isRecord);
    EXPECT_EQ(Recorder::GivenUp().back().Type, L"CREATE ERROR");
}

TEST_F(RaisedError, KeepsTheLastErrorThatTheLibraryDisturbs) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetVerbHandler([](std::wstring_view) { errno = EBADF; });
    const CScope scope;
    errno = ENOENT;
    try {
        scope.Throw(L"x");
    } catch (IDebugObject* error) {
        EXPECT_EQ(errno, ENOENT);
        error->Release();
    }
}

TEST_F(RaisedError, InAnotherFileThanItsScopeNamesFileAndLineOfThatFile) {
    const CScope scope;
    LONG line = 0;
    scope.Guard([&] { elsewhere::ThrowText(scope, line); });
    const auto raised = Only(L"ERROR").Inner.at(0).Inner.at(0);
    EXPECT_TRUE(raised.Value(L"File").AsText().ends_with(L"/elsewhere.cpp"));
    EXPECT_EQ(raised.Line, line);
}

TEST_F(RaisedError, IsTheTextItselfWhenNoRecordCanBeMade) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetAnswer(L"CREATE", E_FAIL);
    const CScope scope;
    try {
        scope.Throw(std::wstring(L"a text that is gone by now"));
    } catch (const wchar_t* text) {
        EXPECT_STREQ(text, L"a text that is gone by now");
        return;
    }
}

TEST_F(ErrorGuard, AnswersTheBodysResultWhenNothingIsThrown) {
    const CScope scope;
    EXPECT_EQ(scope.Guard([] { return S_OK; }, E_FAIL), S_OK);
    EXPECT_EQ(Guard([] { return 5; }, 0), 5);
    EXPECT_TRUE(Recorder::Errors().empty());
}

TEST_F(ErrorGuard, ShowsARaisedErrorAsTheInnerOfItsOwnAndReleasesIt) {
    const CScope scope;
    EXPECT_EQ(scope.Guard([&]() -> HRESULT { scope.Throw(L"RecordCount>0"); }, E_FAIL), E_FAIL);
    const auto shown = Only(L"ERROR");
    EXPECT_THAT(shown.FieldNames(), ElementsAre(L"$Type", L"Thread ID", L"$EXCEPTION_POINTERS"));
    ASSERT_EQ(shown.FieldsAfterProcess.size(), 1u);
    EXPECT_EQ(shown.FieldsAfterProcess[0].first, L"$EXCEPTION_POINTERS");
    ASSERT_EQ(shown.Inner.size(), 1u);
    EXPECT_EQ(shown.Inner[0].Type, L"CREATE ERROR");
    EXPECT_EQ(shown.Inner[0].Description, L"");
    ASSERT_EQ(shown.Inner[0].Inner.size(), 1u);
    EXPECT_EQ(shown.Inner[0].Inner[0].Description, L"RecordCount>0");
    EXPECT_EQ(Recorder::Errors(), Texts{L"RecordCount>0"});
}

TEST_F(ErrorGuard, TellsTheWordsOfAStandardException) {
    const CScope scope;
    scope.Guard([] { throw std::runtime_error("bad \xD1\x84"); });
    EXPECT_EQ(Recorder::Errors(), Texts{L" (stdexcept: \"bad \u0444\")"});
    EXPECT_TRUE(Only(L"ERROR").Inner.at(0).Inner.empty());
}

TEST_F(ErrorGuard, PutsItsOwnTextBeforeThoseWords) {
    try {
        throw std::runtime_error("bad");
    } catch (...) {
        ReportCaught(L"FinalConstruct");
    }
    EXPECT_EQ(Recorder::Errors(), Texts{L"FinalConstruct (stdexcept: \"bad\")"});
}

TEST_F(ErrorGuard, ShowsAForeignExceptionWithItsOwnTextAlone) {
    const CScope scope;
    scope.Guard([] { throw 5; });
    try {
        throw L"thrown text";
    } catch (...) {
        scope.ReportCaught(L"guard's text");
    }
    EXPECT_EQ(Recorder::Errors(), (Texts{L"", L"guard's text"}));
}

TEST_F(ErrorGuard, StandsInTheFunctionOfItsScope) {
    const CScope scope;
    const LONG line = __LINE__ - 1;
    scope.Guard([] { throw 5; });
    const auto error = Only(L"ERROR").Inner.at(0);
    EXPECT_EQ(error.Line, line);
    EXPECT_TRUE(error.Function.ends_with(L"::TestBody"));
}

TEST_F(ErrorGuard, WithoutAScopeStandsInItsCaller) {
    Guard([] { throw 5; });
    EXPECT_EQ(Guard([]() -> int { throw 5; }, 9), 9);
    for (const auto& shown : Recorder::RecordsOf(L"ERROR"))
        EXPECT_TRUE(shown.Inner.at(0).Function.ends_with(L"::TestBody"));
}

TEST_F(ErrorGuard, PutsTheLastErrorBack) {
    Recorder::SetVerbHandler([](std::wstring_view) { errno = EBADF; });
    const CScope scope;
    errno = ENOENT;
    scope.Guard([] { throw 5; });
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(ErrorGuard, AnsweredWithOneBreaksAndGoesOn) {
    static int breaks = 0;
    const CScope scope;
    platform::SetBreakHandler([] { ++breaks; });
    Recorder::SetAnswer(L"PROCESS", 1);
    EXPECT_EQ(scope.Guard([]() -> HRESULT { throw 5; }, E_FAIL), E_FAIL);
    EXPECT_EQ(breaks, 1);
    Recorder::SetAnswer(L"PROCESS", S_OK);
    platform::SetBreakHandler(nullptr);
}

TEST_F(ErrorGuardDeathTest, AnsweredWithAbortShutsDownAndEndsTheProcess) {
    EXPECT_EXIT(
        {
            ASSERT_EQ(GetClient().Init(), S_OK);
            EchoVerbs();
            Recorder::SetAnswer(L"PROCESS", E_ABORT);
            Guard([] { throw 5; });
        },
        testing::ExitedWithCode(255), "\\[PROCESS\\]\\[DEINIT\\]$");
}

TEST_F(ErrorGuard, ThatRaisesTurnsAnyExceptionIntoAnErrorWithTheFirstAsInner) {
    const CScope scope;
    scope.Guard([&] { scope.Rethrowing([&] { scope.Throw(L"first"); }, L"T::FinalConstruct"); });
    scope.Guard([&] { scope.Rethrowing([] { throw std::runtime_error("bad"); }, L"T::FinalConstruct"); });
    scope.Guard([&] { Rethrowing([] { throw 5; }, L"foreign"); });
    EXPECT_EQ(Recorder::Errors(),
              (Texts{L"T::FinalConstruct: first", L"T::FinalConstruct (stdexcept: \"bad\")", L"foreign"}));
}

TEST_F(ErrorGuard, ThatRaisesPassesTheResultOn) {
    const CScope scope;
    EXPECT_EQ(scope.Rethrowing([] { return 4; }, L"x"), 4);
    int value = 0;
    int& same = Rethrowing([&]() -> int& { return value; }, L"x");
    EXPECT_EQ(&same, &value);
}

TEST_F(ErrorGuard, WhatItCaughtIsKeptAmongTheRecentFailures) {
    ClearRecentFailures();
    const CScope scope;
    scope.Guard([&] { scope.Throw(L"raised"); });
    scope.Guard([] { throw std::runtime_error("bad"); });
    scope.Guard([] { throw 5; });
    const auto failures = RecentFailures();
    ASSERT_EQ(failures.size(), 3u) << "a raised error is told once";
    EXPECT_TRUE(failures[0].ends_with(L"::TestBody: raised"));
    EXPECT_TRUE(failures[1].ends_with(L"::TestBody: (stdexcept: \"bad\")"));
    EXPECT_TRUE(failures[2].ends_with(L"::TestBody: an exception of unknown type"));
}

TEST_F(ErrorGuard, AForeignTextIsKeptAmongTheRecentFailuresAndAnOwnOneOnce) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetAnswer(L"CREATE", E_FAIL); // raised errors are texts then
    ClearRecentFailures();
    const CScope scope;
    const wchar_t* const nothing = nullptr;
    scope.Guard([] { throw L"foreign"; });
    scope.Guard([&] { scope.Throw(L"own"); });
    scope.Guard([&] { throw nothing; });
    const auto failures = RecentFailures();
    ASSERT_EQ(failures.size(), 3u);
    EXPECT_TRUE(failures[0].ends_with(L"::TestBody: foreign"));
    EXPECT_TRUE(failures[1].ends_with(L"::TestBody: own"));
    EXPECT_TRUE(failures[2].ends_with(L"::TestBody: an exception of unknown type"));
}

TEST_F(ErrorGuard, ThatRaisesKeepsEachFailureOnce) {
    ClearRecentFailures();
    const CScope scope;
    scope.Guard([&] { scope.Rethrowing([] { throw std::runtime_error("bad"); }, L"T::FinalConstruct"); });
    scope.Guard([&] { scope.Rethrowing([] { throw 5; }, nullptr); });
    const auto failures = RecentFailures();
    ASSERT_EQ(failures.size(), 2u);
    EXPECT_TRUE(failures[0].ends_with(L"::TestBody: T::FinalConstruct (stdexcept: \"bad\")"));
    EXPECT_TRUE(failures[1].ends_with(L"::TestBody: an exception of unknown type"));
}

} // namespace
