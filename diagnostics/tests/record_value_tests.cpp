// What stands in the records, and as which type of VARIANT.

#include "TestHelp.h"
#include "diagnostics/interface/BugSlayer.h"
#include "platform/crash.h"
#include "platform/thread.h"

#include <cerrno>
#include <map>

namespace {

using namespace BugSlayerUtil;
using namespace TestHelp;

using RecordValue = CRecorded;
using Types = std::map<std::wstring, VARTYPE>;

Types TypesOf(const Recorder::tagRecord& record) {
    Types types;
    for (const auto& [name, value] : record.Fields)
        types.emplace(name, value.Type());
    return types;
}

LONG ThisThread() { return static_cast<LONG>(platform::CurrentThreadId()); }

TEST_F(RecordValue, OfATraceHasItsTypes) {
    std::atomic<LONG> counter{0};
    std::atomic<double> total{0};
    {
        const TracerClass tracer(GetClient(), "f.cpp", 7, 2, "ns::F", "void ns::F()", &counter, &counter, &total,
                                 false, true);
        tracer.TraceTo(L"out", L"x");
    }
    const auto records = Recorder::RecordsOf(L"TRACE");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(TypesOf(records[0]), (Types{{L"$Type", VT_BSTR},
                                          {L"$Message", VT_BSTR},
                                          {L"$Ident", VT_I4},
                                          {L"File", VT_BSTR},
                                          {L"Line", VT_I4},
                                          {L"$Group", VT_I4},
                                          {L"Thread ID", VT_I4},
                                          {L"Function", VT_BSTR},
                                          {L"$FuncSig", VT_BSTR},
                                          {L"Object", VT_I8},
                                          {L"OutFile", VT_BSTR}}));
    EXPECT_EQ(TypesOf(records[1]), (Types{{L"$Type", VT_BSTR},
                                          {L"$Ident", VT_I4},
                                          {L"File", VT_BSTR},
                                          {L"Line", VT_I4},
                                          {L"$Group", VT_I4},
                                          {L"Thread ID", VT_I4},
                                          {L"Function", VT_BSTR},
                                          {L"$FuncSig", VT_BSTR},
                                          {L"Object", VT_I8},
                                          {L"$Delay", VT_R8},
                                          {L"Count", VT_I4},
                                          {L"$TotalTime", VT_R8}}));
}

TEST_F(RecordValue, OfAnAssertionIsWhatItWasGiven) {
    errno = ENOENT;
    AsserterClass(GetClient(), "f.cpp", 7, 2, "ns::F", "void ns::F()")(L"text", E_FAIL);
    const auto record = Only(L"ASSERT");
    EXPECT_EQ(TypesOf(record), (Types{{L"$Type", VT_BSTR},
                                      {L"<<ASSERT>>", VT_BSTR},
                                      {L"Last Error Code", VT_I4},
                                      {L"HRESULT", VT_I4},
                                      {L"Description", VT_BSTR},
                                      {L"Thread ID", VT_I4},
                                      {L"File", VT_BSTR},
                                      {L"Line", VT_I4},
                                      {L"$Group", VT_I4},
                                      {L"Function", VT_BSTR},
                                      {L"$FuncSig", VT_BSTR},
                                      {L"$EXCEPTION_POINTERS", VT_I8}}));
    EXPECT_EQ(record.Value(L"<<ASSERT>>").AsText(), L"");
    EXPECT_EQ(record.Value(L"Thread ID").AsLong(), ThisThread());
    EXPECT_EQ(record.Value(L"File").AsText(), L"f.cpp");
    EXPECT_EQ(record.Value(L"Line").AsLong(), 7);
    EXPECT_EQ(record.Value(L"Function").AsText(), L"ns::F");
    EXPECT_EQ(record.Value(L"$FuncSig").AsText(), L"void ns::F()");
    ASSERT_EQ(record.FieldsAfterProcess.size(), 1u);
    EXPECT_EQ(record.FieldsAfterProcess[0].second.Type(), VT_I8);
    EXPECT_EQ(record.FieldsAfterProcess[0].second.Get().llVal, 0);
}

TEST_F(RecordValue, OfAnErrorIsWhatItWasGiven) {
    const CScope scope;
    scope.Guard([] {
        errno = ENOENT;
        ThrowError(GetClient(), "f.cpp", 7, 2, "ns::F", "void ns::F()")(L"text", E_FAIL);
    });
    const auto shown = Only(L"ERROR");
    EXPECT_EQ(TypesOf(shown), (Types{{L"$Type", VT_BSTR}, {L"Thread ID", VT_I4}, {L"$EXCEPTION_POINTERS", VT_I8}}));
    EXPECT_EQ(shown.Value(L"Thread ID").AsLong(), ThisThread());
    EXPECT_NE(shown.Value(L"$EXCEPTION_POINTERS").Get().llVal, 0);
    ASSERT_EQ(shown.FieldsAfterProcess.size(), 1u);
    EXPECT_EQ(shown.FieldsAfterProcess[0].second.Type(), VT_I8);
    EXPECT_EQ(shown.FieldsAfterProcess[0].second.Get().llVal, 0);
    const auto raised = shown.Inner.at(0).Inner.at(0);
    EXPECT_EQ(TypesOf(raised), (Types{{L"$Type", VT_BSTR},
                                      {L"<<ERROR>>", VT_BSTR},
                                      {L"$ThreadID", VT_I4},
                                      {L"Last Error Code", VT_I4},
                                      {L"Description", VT_BSTR},
                                      {L"HRESULT", VT_I4},
                                      {L"File", VT_BSTR},
                                      {L"Line", VT_I4},
                                      {L"$Group", VT_I4},
                                      {L"Function", VT_BSTR},
                                      {L"$FuncSig", VT_BSTR}}));
    EXPECT_EQ(raised.Value(L"<<ERROR>>").AsText(), L"");
    EXPECT_EQ(raised.Value(L"$ThreadID").AsLong(), ThisThread());
    EXPECT_EQ(raised.Value(L"Description").AsText(), L"text");
    EXPECT_EQ(raised.Value(L"File").AsText(), L"f.cpp");
    EXPECT_EQ(raised.Value(L"Line").AsLong(), 7);
    EXPECT_EQ(raised.Value(L"Function").AsText(), L"ns::F");
    EXPECT_EQ(raised.Value(L"$FuncSig").AsText(), L"void ns::F()");
}

TEST_F(RecordValue, OfAStartHasItsTypes) {
    ASSERT_EQ(GetClient().Init(), S_OK);
    EXPECT_EQ(TypesOf(Recorder::Starts().at(0)), (Types{{L"LogDirectory", VT_BSTR},
                                                        {L"ModuleAddr", VT_I8},
                                                        {L"ModuleName", VT_BSTR},
                                                        {L"ReleaseMode", VT_BOOL},
                                                        {L"ClientVersion", VT_BSTR}}));
}

} // namespace
