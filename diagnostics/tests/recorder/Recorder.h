#pragma once
// A debug library that keeps what it is given, for tests: a test program that links sqstorage::debug_recorder has
// it loaded before the first report, so that the diagnostics client takes it instead of the real one.
//
//     Recorder::Clear();
//     storage.InsertHoliday(L"New Year");
//     EXPECT_THAT(Recorder::Messages(), Contains(L"sql = 'INSERT INTO HOLIDAYS VALUES(1,'New Year')'"));
//
// There is one recorder in a process, and its settings outlive Clear(). Any thread may call.

#include "platform/com/variant.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Recorder {

using Field = std::pair<std::wstring, platform::CVariant>;

// A record as it was when it was submitted. A field that is missing is empty or 0 here.
struct tagRecord {
    std::wstring Type; // "TRACE", "ASSERT", "ERROR", "EXCEPTION"; "CREATE ERROR" within an "ERROR"; "" for a start
    LONG Ident = 0;    // of a trace: 1 enter, 0 line, -1 leave
    std::wstring Message;     // of a trace
    std::wstring Function;    // qualified name
    std::wstring Description; // of an assertion or raised error
    std::optional<HRESULT> Status;
    LONG Group = 0;
    LONG Line = 0;
    // All fields in the order in which they were written, without "$Inner".
    std::vector<Field> Fields;
    // The error wrapped by this one: none or one.
    std::vector<tagRecord> Inner;
    // What was written into the record after it was submitted.
    std::vector<Field> FieldsAfterProcess;

    // Names in order.
    [[nodiscard]] std::vector<std::wstring> FieldNames() const;
    // VT_EMPTY when there is no such field.
    [[nodiscard]] platform::CVariant Value(std::wstring_view name) const;
};

// Forgets what was recorded. Answers and handlers stay.
void Clear();
// Answers and handlers as at the start.
void Reset();

// Submitted by "PROCESS", in that order.
[[nodiscard]] std::vector<tagRecord> Records();
[[nodiscard]] std::vector<tagRecord> RecordsOf(std::wstring_view type);
// Made and given up without "PROCESS", as they were at their end: start records, raised errors that nobody showed,
// and what an answer stopped on its way.
[[nodiscard]] std::vector<tagRecord> GivenUp();
// Texts of the trace lines.
[[nodiscard]] std::vector<std::wstring> Messages();
// Descriptions of failed assertions and checks.
[[nodiscard]] std::vector<std::wstring> Asserts();
// One for each error that a guard showed: the descriptions, outermost first, joined by ": ", empty ones left out.
[[nodiscard]] std::vector<std::wstring> Errors();
// Start records, in the order of the "INIT"s.
[[nodiscard]] std::vector<tagRecord> Starts();
// Every verb that was sent, in order; with " with a record" or " without a record" behind it when it should not be
// so.
[[nodiscard]] std::vector<std::wstring> Verbs();

struct tagOption {
    std::wstring Name;
    std::wstring Text;
    LONG Flag;
};
[[nodiscard]] std::vector<tagOption> Options();

// What "CREATE", "FILTER", "PROCESS", "INIT", ... answer from now on; S_OK in the beginning. A "CREATE" that is to
// fail makes no record.
void SetAnswer(std::wstring_view verb, HRESULT code);
void SetOptionAnswer(HRESULT code);
// What the library's export answers, and whether it hands out a root object.
void SetInitObject(HRESULT code, bool givesObject);
// Runs within the export, before its answer.
void SetInitObjectHandler(std::function<void()> handler);
// The answer of SetValue for a field of this name.
void SetFieldAnswer(std::wstring_view name, HRESULT code);
// Runs within "PROCESS", on the thread that reports; its answer counts unless it is S_OK.
void SetProcessHandler(std::function<HRESULT(const tagRecord&)> handler);
// Runs within every command, before its answer, with the verb.
void SetVerbHandler(std::function<void(std::wstring_view)> handler);
// From the next "INIT" on, the root object says that it wants no trace records of these kinds. Without this call it
// does not offer to say.
void SetUnwanted(std::vector<LONG> idents);
// What the root object answers to GetValue(name).
void SetRootValue(std::wstring_view name, std::wstring_view text);

// Records that exist now: 0 when nobody holds one for longer than its report.
[[nodiscard]] int OpenRecords();
// References that anyone holds on root objects.
[[nodiscard]] int OpenRoots();

// Whether the call raises an error record; gives it up.
[[nodiscard]] bool Raises(const std::function<void()>& call);

} // namespace Recorder
