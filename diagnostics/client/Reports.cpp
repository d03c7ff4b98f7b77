#include "diagnostics/interface/BugSlayer.h"

#include "Failures.h"
#include "RecordWriter.h"
#include "ToWide.h"
#include "diagnostics/interface/FunctionName.h"
#include "platform/clock.h"
#include "platform/crash.h"
#include "platform/thread.h"

#include <algorithm>
#include <string>

namespace BugSlayerUtil {

namespace {

LONG ThreadNumber() { return static_cast<LONG>(platform::CurrentThreadId()); }

std::string_view ViewOf(const char* text) { return text ? std::string_view(text) : std::string_view(); }

// No fault of the processor: the code is 0, and the context is that of the report.
platform::tagExceptionInfo DescribePlace(const platform::CThreadContext& context) {
    return {.Code = 0,
            .Address = reinterpret_cast<const void*>(context.InstructionPointer),
            .Data = nullptr,
            .Continuable = true,
            .Context = &context};
}

// A report must not fail its caller, whatever the library or the memory does.
template <class Body>
HRESULT WithoutException(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return E_FAIL;
    }
}

// Keeps a thrown text alive until it has long been caught.
const wchar_t* KeepThrownText(std::wstring_view text) {
    constexpr std::size_t kept = 16;
    thread_local std::array<std::wstring, kept> texts;
    thread_local std::size_t next = 0;
    std::wstring& place = texts[next];
    next = (next + 1) % kept;
    place = text;
    return place.c_str();
}

} // namespace

// What a trace record says beyond the fields of its tracer.
struct TracerClass::tagTrace {
    LONG Ident;
    UINT Line;
    std::wstring_view Message;
    const wchar_t* OutFile = nullptr;
    double Delay = 0;
    LONG Count = 0;
    double TotalTime = 0;
};

TracerClass::TracerClass(BugSlayerClient& client, const char* file, UINT line, LONG group, const char* function,
                         const char* signature, const void* object, std::atomic<LONG>* counter,
                         std::atomic<double>* totalTime, bool traceEnter, bool traceLeave) noexcept
    : m_LastError(platform::GetLastError()), m_Client(client), m_File(file), m_Line(line), m_Group(group),
      m_Function(function), m_Signature(signature), m_TraceEnter(traceEnter), m_TraceLeave(traceLeave),
      m_Object(object), m_Counter(counter), m_TotalTime(totalTime) {
    if (m_TraceLeave)
        m_StartTime = platform::MillisecondClock();
    if (m_Counter)
        m_Counter->fetch_add(1, std::memory_order_relaxed);
    if (m_TraceEnter && (m_TraceLeave ? m_Client.Wants(1, m_StartTime) : m_Client.Wants(1)))
        WriteTrace({.Ident = 1, .Line = m_Line, .Message = {}});
}

TracerClass::~TracerClass() {
    if (m_TraceLeave)
        TraceLeave();
    platform::SetLastError(m_LastError);
}

void TracerClass::TraceLeave() const noexcept {
    const bool wanted = m_TraceEnter ? m_Client.StillWants(-1) : m_Client.Wants(-1);
    if (!wanted && !m_TotalTime)
        return;
    const double delay = platform::MillisecondClock() - m_StartTime;
    const double total = m_TotalTime ? m_TotalTime->fetch_add(delay) + delay : 0;
    if (wanted)
        WriteTrace({.Ident = -1,
                    .Line = m_Line,
                    .Message = {},
                    .Delay = delay,
                    .Count = m_Counter ? m_Counter->load() : 0,
                    .TotalTime = total});
}

void TracerClass::TraceLine(const wchar_t* outFile, const CFormat& format,
                            std::span<const CArgument> arguments) const noexcept {
    // Expanding the text may disturb it too.
    const platform::CLastErrorKeeper keeper;
    WithoutException([&] {
        const std::wstring message = FormatReport(format.Text(), arguments);
        if (m_Client.Wants(0))
            WriteTrace({.Ident = 0, .Line = format.Place().line(), .Message = message, .OutFile = outFile});
        return S_OK;
    });
}

void TracerClass::WriteTrace(const tagTrace& trace) const noexcept {
    const platform::CLastErrorKeeper keeper;
    WithoutException([&] {
        const auto root = m_Client.Object.Get();
        CRecordWriter record(root.Get(), RecordType::Trace);
        if (!trace.Message.empty())
            record.Text(Name::Message.Get(), trace.Message);
        record.Number(Name::Ident.Get(), trace.Ident);
        record.Utf8(Name::File.Get(), ViewOf(m_File));
        record.Number(Name::Line.Get(), static_cast<LONG>(trace.Line));
        if (m_Group != 0)
            record.Number(Name::Group.Get(), m_Group);
        record.Number(Name::ThreadId.Get(), ThreadNumber());
        record.Utf8(Name::Function.Get(), FunctionText());
        record.Utf8(Name::FuncSig.Get(), ViewOf(m_Signature));
        if (m_Object)
            record.Pointer(Name::Object.Get(), m_Object);
        if (trace.Delay != 0)
            record.Real(Name::Delay.Get(), trace.Delay);
        if (trace.Count != 0)
            record.Number(Name::Count.Get(), trace.Count);
        if (trace.TotalTime != 0)
            record.Real(Name::TotalTime.Get(), trace.TotalTime);
        if (trace.OutFile)
            record.Text(Name::OutFile.Get(), trace.OutFile);
        m_Client.ApplyAction(record.Process());
        return S_OK;
    });
}

std::string_view TracerClass::FunctionText() const noexcept {
    return m_Function ? std::string_view(m_Function) : FunctionName(ViewOf(m_Signature));
}

AsserterClass::AsserterClass(BugSlayerClient& client, const char* file, UINT line, LONG group, const char* function,
                             const char* signature) noexcept
    : TracerClass(client, file, line, group, function, signature, nullptr, nullptr, nullptr, false, false),
      m_AsserterError(platform::GetLastError()) {}

AsserterClass::~AsserterClass() { platform::SetLastError(m_AsserterError); }

HRESULT AsserterClass::operator()(std::wstring_view text) noexcept { return Submit(text, std::nullopt); }

HRESULT AsserterClass::operator()(std::wstring_view text, HRESULT status) noexcept { return Submit(text, status); }

HRESULT AsserterClass::Submit(std::wstring_view text, std::optional<HRESULT> status) noexcept {
    NoteFailure(FunctionText(), text, status);
    if (!m_Client.Ready())
        return E_FAIL;
    return WithoutException([&] {
        const auto root = m_Client.Object.Get();
        const platform::CThreadContext context = platform::CaptureThreadContext();
        const platform::tagExceptionInfo pointers = DescribePlace(context);
        CRecordWriter record(root.Get(), RecordType::Assert);
        record.Text(Name::AssertMark.Get(), L"");
        if (m_LastError != 0)
            record.Number(Name::LastErrorCode.Get(), static_cast<LONG>(m_LastError));
        if (status)
            record.Number(Name::Status.Get(), *status);
        record.Text(Name::Description.Get(), text);
        record.Number(Name::ThreadId.Get(), ThreadNumber());
        record.Utf8(Name::File.Get(), ViewOf(m_File));
        record.Number(Name::Line.Get(), static_cast<LONG>(m_Line));
        if (m_Group != 0)
            record.Number(Name::Group.Get(), m_Group);
        record.Utf8(Name::Function.Get(), FunctionText());
        record.Utf8(Name::FuncSig.Get(), ViewOf(m_Signature));
        record.Pointer(Name::ExceptionPointers.Get(), &pointers);
        record.Filter();
        return record.Process();
    });
}

ThrowError::ThrowError(BugSlayerClient& client, const char* file, UINT line, LONG group, const char* function,
                       const char* signature) noexcept
    : AsserterClass(client, file, line, group, function, signature), m_ThrowError(platform::GetLastError()) {}

ThrowError::~ThrowError() { platform::SetLastError(m_ThrowError); }

platform::CComPtr<IDebugObject> ThrowError::MakeError(std::wstring_view text, std::optional<HRESULT> status,
                                                      IDebugObject* inner) noexcept {
    platform::CComPtr<IDebugObject> error;
    if (!m_Client.Ready())
        return error;
    WithoutException([&] {
        const auto root = m_Client.Object.Get();
        CRecordWriter record(root.Get(), RecordType::CreateError);
        record.Text(Name::ErrorMark.Get(), L"");
        record.Number(Name::InternalThreadId.Get(), ThreadNumber());
        if (m_LastError != 0)
            record.Number(Name::LastErrorCode.Get(), static_cast<LONG>(m_LastError));
        if (!text.empty())
            record.Text(Name::Description.Get(), text);
        if (status)
            record.Number(Name::Status.Get(), *status);
        record.Utf8(Name::File.Get(), ViewOf(m_File));
        record.Number(Name::Line.Get(), static_cast<LONG>(m_Line));
        if (m_Group != 0)
            record.Number(Name::Group.Get(), m_Group);
        record.Utf8(Name::Function.Get(), FunctionText());
        record.Utf8(Name::FuncSig.Get(), ViewOf(m_Signature));
        if (inner)
            record.Object(Name::Inner.Get(), inner);
        error = record.Detach();
        return S_OK;
    });
    return error;
}

void ThrowError::operator()(CText text, IDebugObject* inner) { Raise(text, std::nullopt, inner); }

void ThrowError::operator()(CText text, HRESULT status) { Raise(text, status, nullptr); }

void ThrowError::Raise(const CText& text, std::optional<HRESULT> status, IDebugObject* inner) {
    if (!text.View().empty() || status)
        NoteFailure(FunctionText(), text.View(), status);
    if (auto error = MakeError(text.View(), status, inner)) {
        // The catcher releases it.
        IDebugObject* const raised = error.Detach();
        throw raised;
    }
    throw KeepThrownText(text.View());
}

HRESULT ShowError::operator()(std::wstring_view text, IDebugObject* inner) noexcept {
    if (!m_Client.Ready())
        return E_FAIL;
    return WithoutException([&] {
        const auto error = MakeError(text, std::nullopt, inner);
        if (!error)
            return E_FAIL;
        const auto root = m_Client.Object.Get();
        const platform::CThreadContext context = platform::CaptureThreadContext();
        const platform::tagExceptionInfo pointers = DescribePlace(context);
        CRecordWriter shown(root.Get(), RecordType::Error);
        shown.Number(Name::ThreadId.Get(), ThreadNumber());
        shown.Pointer(Name::ExceptionPointers.Get(), &pointers);
        shown.Object(Name::Inner.Get(), error.Get());
        return shown.Process();
    });
}

void ShowError::Report(const CText& text, IDebugObject* inner) {
    m_Client.ApplyAction((*this)(text.View(), inner));
}

namespace detail {

std::wstring StandardExceptionText(std::wstring_view text, const char* what) {
    const std::array arguments{CArgument(text), CArgument(what)};
    return FormatReport(L"%s (stdexcept: \"%s\")", arguments);
}

void NoteCaught(const char* signature, std::wstring_view text) noexcept {
    // The guard's own text, which comes first in it, is empty nearly everywhere.
    text.remove_prefix(std::min(text.find_first_not_of(L' '), text.size()));
    NoteFailure(FunctionName(ViewOf(signature)), text.empty() ? L"an exception of unknown type" : text,
                std::nullopt);
}

} // namespace detail

} // namespace BugSlayerUtil
