#pragma once
// The verbs, the record types and the field names of the debug library. A field whose name begins with "$" is not
// for the reader of the log.

#include "diagnostics/interface/BstrLiteral.h"

#include <string_view>

namespace BugSlayerUtil {

namespace Verb {
inline constexpr CBstrLiteral Create{L"CREATE"};
inline constexpr CBstrLiteral Filter{L"FILTER"};
inline constexpr CBstrLiteral Process{L"PROCESS"};
inline constexpr CBstrLiteral Init{L"INIT"};
inline constexpr CBstrLiteral Deinit{L"DEINIT"};
inline constexpr CBstrLiteral Terminate{L"TERMINATE"};
inline constexpr CBstrLiteral IsClean{L"IS CLEAN"};
inline constexpr CBstrLiteral DoClean{L"DO CLEAN"};
inline constexpr CBstrLiteral ReportDialog{L"REPORTDIALOG"};
} // namespace Verb

// How the message of a line tells that it is one.
inline constexpr std::wstring_view WarningMarks[] = {L"[Warning]", L"[WARNING]"};

[[nodiscard]] constexpr bool IsWarning(std::wstring_view message) noexcept {
    return message.starts_with(WarningMarks[0]) || message.starts_with(WarningMarks[1]);
}

// Some formats do not tell before they are expanded: those whose mark is cut short by an argument.
[[nodiscard]] constexpr bool MayBeWarning(const wchar_t* format) noexcept {
    for (const std::wstring_view mark : WarningMarks) {
        std::size_t same = 0;
        while (format && same < mark.size() && format[same] == mark[same])
            ++same;
        if (format && (same == mark.size() || format[same] == L'%'))
            return true;
    }
    return false;
}

namespace RecordType {
inline constexpr const wchar_t* Trace = L"TRACE";
inline constexpr const wchar_t* Assert = L"ASSERT";
inline constexpr const wchar_t* CreateError = L"CREATE ERROR";
inline constexpr const wchar_t* Error = L"ERROR";
inline constexpr const wchar_t* Exception = L"EXCEPTION";
} // namespace RecordType

namespace Name {
inline constexpr CBstrLiteral Type{L"$Type"};
inline constexpr CBstrLiteral Message{L"$Message"};
inline constexpr CBstrLiteral Ident{L"$Ident"};
inline constexpr CBstrLiteral Group{L"$Group"};
inline constexpr CBstrLiteral FuncSig{L"$FuncSig"};
inline constexpr CBstrLiteral Delay{L"$Delay"};
inline constexpr CBstrLiteral TotalTime{L"$TotalTime"};
inline constexpr CBstrLiteral InternalThreadId{L"$ThreadID"};
// A VT_I8 that points to a platform::tagExceptionInfo, for as long as "PROCESS" runs.
inline constexpr CBstrLiteral ExceptionPointers{L"$EXCEPTION_POINTERS"};
// The error that this one wraps, as VT_DISPATCH.
inline constexpr CBstrLiteral Inner{L"$Inner"};
inline constexpr CBstrLiteral File{L"File"};
inline constexpr CBstrLiteral Line{L"Line"};
inline constexpr CBstrLiteral ThreadId{L"Thread ID"};
inline constexpr CBstrLiteral Function{L"Function"};
inline constexpr CBstrLiteral Object{L"Object"};
inline constexpr CBstrLiteral Count{L"Count"};
inline constexpr CBstrLiteral OutFile{L"OutFile"};
inline constexpr CBstrLiteral AssertMark{L"<<ASSERT>>"};
inline constexpr CBstrLiteral ErrorMark{L"<<ERROR>>"};
inline constexpr CBstrLiteral ExceptionMark{L"<<EXCEPTION>>"};
inline constexpr CBstrLiteral LastErrorCode{L"Last Error Code"};
inline constexpr CBstrLiteral Status{L"HRESULT"};
inline constexpr CBstrLiteral Description{L"Description"};
inline constexpr CBstrLiteral ExceptionType{L"ExceptionType"};
inline constexpr CBstrLiteral ErrorCode{L"ErrorCode"};
inline constexpr CBstrLiteral Code{L"Code"};
inline constexpr CBstrLiteral Continuable{L"Continuable"};
inline constexpr CBstrLiteral Address{L"Address"};
inline constexpr CBstrLiteral LogDirectory{L"LogDirectory"};
inline constexpr CBstrLiteral ModuleAddr{L"ModuleAddr"};
inline constexpr CBstrLiteral ModuleName{L"ModuleName"};
inline constexpr CBstrLiteral ReleaseMode{L"ReleaseMode"};
inline constexpr CBstrLiteral ClientVersion{L"ClientVersion"};
// Asked of the root object: the full path of the log.
inline constexpr CBstrLiteral LogFile{L"LogFile"};
} // namespace Name

// "Code" of the exception record that an invalid parameter makes; any other is the system's own.
inline constexpr DWORD InvalidParameterCode = 0xC000000D;

} // namespace BugSlayerUtil
