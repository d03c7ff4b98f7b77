#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"
#include "elsewhere.h"
#include "platform/crash.h"
#include "platform/thread.h"

#include <cerrno>

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;
using testing::ElementsAre;

using Trace = CRecorded;

TracerClass MakeTracer(bool enter, bool leave, std::atomic<LONG>* counter = nullptr,
                       std::atomic<double>* total = nullptr, const void* object = nullptr, LONG group = 0) {
    return TracerClass(GetClient(), "dir/file.cpp", 7, group, "ns::Function", "void ns::Function(int)", object,
                       counter, total, enter, leave);
}

TEST_F(Trace, AnEnterHasItsFieldsInOrder) {
    { const auto tracer = MakeTracer(true, false); }
    const auto record = Only(L"TRACE");
    EXPECT_THAT(record.FieldNames(),
                ElementsAre(L"$Type", L"$Ident", L"File", L"Line", L"Thread ID", L"Function", L"$FuncSig"));
    EXPECT_EQ(record.Ident, 1);
    EXPECT_EQ(record.Value(L"File").AsText(), L"dir/file.cpp");
    EXPECT_EQ(record.Line, 7);
    EXPECT_EQ(record.Value(L"Thread ID").AsLong(), static_cast<LONG>(platform::CurrentThreadId()));
    EXPECT_EQ(record.Function, L"ns::Function");
    EXPECT_EQ(record.Value(L"$FuncSig").AsText(), L"void ns::Function(int)");
}

TEST_F(Trace, ALineHasItsMessageFirst) {
    MakeTracer(false, false).Trace(L"sql = '%s'", L"SELECT 1");
    const auto record = Only(L"TRACE");
    EXPECT_THAT(record.FieldNames(), ElementsAre(L"$Type", L"$Message", L"$Ident", L"File", L"Line", L"Thread ID",
                                                 L"Function", L"$FuncSig"));
    EXPECT_EQ(record.Message, L"sql = 'SELECT 1'");
    EXPECT_EQ(record.Ident, 0);
    EXPECT_EQ(record.Value(L"$Ident").Type(), VT_I4);
}

TEST_F(Trace, ALeaveTellsDelayCountAndTotalTime) {
    std::atomic<LONG> counter{4};
    std::atomic<double> total{1000};
    const int object = 0;
    { const auto tracer = MakeTracer(false, true, &counter, &total, &object, 3); }
    const auto record = Only(L"TRACE");
    EXPECT_THAT(record.FieldNames(),
                ElementsAre(L"$Type", L"$Ident", L"File", L"Line", L"$Group", L"Thread ID", L"Function",
                            L"$FuncSig", L"Object", L"$Delay", L"Count", L"$TotalTime"));
    EXPECT_EQ(record.Ident, -1);
    EXPECT_EQ(record.Group, 3);
    EXPECT_EQ(record.Value(L"Object").Get().llVal, reinterpret_cast<LONGLONG>(&object));
    const double delay = record.Value(L"$Delay").AsDouble();
    EXPECT_GT(delay, 0);
    EXPECT_EQ(record.Value(L"Count").AsLong(), 5) << "raised once by the construction";
    EXPECT_DOUBLE_EQ(record.Value(L"$TotalTime").AsDouble(), 1000 + delay);
    EXPECT_DOUBLE_EQ(total.load(), 1000 + delay);
}

TEST_F(Trace, AnOutputFileComesLast) {
    MakeTracer(false, false).TraceTo(L"orders.txt", L"x");
    const auto record = Only(L"TRACE");
    EXPECT_EQ(record.FieldNames().back(), L"OutFile");
    EXPECT_EQ(record.Value(L"OutFile").AsText(), L"orders.txt");
}

TEST_F(Trace, ANullFormatWritesNothingButTheFields) {
    MakeTracer(false, false).Trace(nullptr);
    EXPECT_THAT(Only(L"TRACE").FieldNames(),
                ElementsAre(L"$Type", L"$Ident", L"File", L"Line", L"Thread ID", L"Function", L"$FuncSig"));
}

TEST_F(Trace, WithoutFlagsNothingIsWritten) {
    { const auto tracer = MakeTracer(false, false); }
    EXPECT_TRUE(Recorder::Records().empty());
}

namespace sample {
struct CThing {
    void Run() const {
        const CScope scope(this, 2);
        scope.Trace(L"within");
    }
};
} // namespace sample

TEST_F(Trace, AScopeTracesEnterLinesAndLeaveUnderTheFunctionsName) {
    const sample::CThing thing;
    thing.Run();
    const auto records = Recorder::RecordsOf(L"TRACE");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].Ident, 1);
    EXPECT_EQ(records[1].Ident, 0);
    EXPECT_EQ(records[2].Ident, -1);
    for (const auto& record : records) {
        EXPECT_EQ(record.Function, L"{anonymous}::sample::CThing::Run");
        EXPECT_EQ(record.Group, 2);
        EXPECT_EQ(record.Value(L"Object").Get().llVal, reinterpret_cast<LONGLONG>(&thing));
        EXPECT_EQ(record.Value(L"$FuncSig").AsText(), L"void {anonymous}::sample::CThing::Run() const");
    }
    EXPECT_EQ(records[1].Line, records[0].Line + 1) << "a line stands where it was written";
    EXPECT_EQ(Recorder::Messages(), Texts{L"within"});
}

TEST_F(Trace, ALineInAnotherFileThanItsScopeNamesFileAndLineOfThatFile) {
    LONG line = 0;
    {
        const CScope scope;
        line = elsewhere::TraceLine(scope);
    }
    const auto records = Recorder::RecordsOf(L"TRACE");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_TRUE(records[0].Value(L"File").AsText().ends_with(L"/trace_tests.cpp"));
    EXPECT_TRUE(records[1].Value(L"File").AsText().ends_with(L"/elsewhere.cpp"));
    EXPECT_EQ(records[1].Line, line);
    EXPECT_EQ(records[1].Function, records[0].Function);
    EXPECT_EQ(records[2].Value(L"File").AsText(), records[0].Value(L"File").AsText());
    EXPECT_EQ(records[2].Line, records[0].Line);
}

TEST_F(Trace, TheLeaveOfATracedScopeStartsTheClientToo) {
    Recorder::SetInitObject(E_FAIL, false);
    {
        const CScope scope;
        EXPECT_EQ(GetClient().Inited, 0);
        Recorder::SetInitObject(S_OK, true);
    }
    EXPECT_EQ(GetClient().Active, 1);
    EXPECT_EQ(Only(L"TRACE").Ident, -1);
}

TEST_F(Trace, KeepsTheLastErrorOfTheThread) {
    Recorder::SetVerbHandler([](std::wstring_view) { errno = EBADF; });
    errno = ENOENT;
    {
        const CScope scope;
        EXPECT_EQ(errno, ENOENT);
        scope.Trace(L"x");
        EXPECT_EQ(errno, ENOENT);
        errno = EACCES;
    }
    EXPECT_EQ(errno, ENOENT) << "put back to what it was at the construction";
}

TEST_F(Trace, AnAnswerOfOneBreaksAndGoesOn) {
    static int breaks = 0;
    platform::SetBreakHandler([] { ++breaks; });
    Recorder::SetAnswer(L"PROCESS", 1);
    MakeTracer(false, false).Trace(L"x");
    platform::SetBreakHandler(nullptr);
    EXPECT_EQ(breaks, 1);
}

TEST_F(Trace, WhatTheLibraryDoesNotWantIsNotBuilt) {
    Recorder::SetUnwanted({1, -1});
    {
        const CScope scope;
        scope.Trace(L"line");
    }
    EXPECT_EQ(Recorder::Records().size(), 1u);
    EXPECT_EQ(Recorder::Messages(), Texts{L"line"});
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"CREATE", L"INIT", L"CREATE", L"PROCESS"));
}

TEST_F(Trace, WarningsAreBuiltWhereOtherLinesAreNotWanted) {
    Recorder::SetUnwanted({1, 0, -1});
    const CScope scope;
    scope.Trace(L"line %d", 1);
    scope.Trace(nullptr);
    scope.Trace(L"");
    scope.Trace(L"[Warn");
    scope.Trace(L"[Warning] PointValue = %d.", 2);
    scope.Trace(L"[WARNING]");
    scope.Trace(L"%s three", L"[Warning]");
    scope.Trace(L"[Warn%s four", L"ing]");
    scope.Trace(L"%s five", L"[Info]");
    EXPECT_EQ(Recorder::Messages(),
              (Texts{L"[Warning] PointValue = 2.", L"[WARNING]", L"[Warning] three", L"[Warning] four"}));
}

TEST_F(Trace, NotEvenWarningsAreBuiltWhereTheyAreNotWanted) {
    Recorder::SetUnwanted({1, 0, 2, -1});
    const CScope scope;
    scope.Trace(L"[Warning] %d", 1);
    scope.Trace(L"%s", L"[Warning]");
    EXPECT_THAT(Recorder::Verbs(), ElementsAre(L"CREATE", L"INIT"));
}

TEST_F(Trace, ATotalIsKeptEvenWhenTheLeaveIsNotWanted) {
    Recorder::SetUnwanted({1, -1});
    std::atomic<double> total{0};
    { const auto tracer = MakeTracer(true, true, nullptr, &total); }
    EXPECT_TRUE(Recorder::Records().empty());
    EXPECT_GT(total.load(), 0);
}

TEST_F(Trace, ARecordThatCannotBeMadeIsDropped) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    Recorder::SetAnswer(L"CREATE", E_OUTOFMEMORY);
    MakeTracer(true, true).Trace(L"x");
    EXPECT_TRUE(Recorder::Records().empty());
}

TEST_F(Trace, ARefusedFieldStopsTheRecord) {
    Recorder::SetFieldAnswer(L"Function", E_FAIL);
    MakeTracer(false, false).Trace(L"x");
    EXPECT_TRUE(Recorder::Records().empty());
}

} // namespace
