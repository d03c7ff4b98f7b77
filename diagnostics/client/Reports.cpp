#include "diagnostics/interface/BugSlayer.h"

#include "ExpandReport.h"
#include "Failures.h"
#include "RecordWriter.h"
#include "ToWide.h"
#include "WithoutException.h"
#include "diagnostics/interface/FunctionName.h"
#include "platform/clock.h"
#include "platform/crash.h"
#include "platform/thread.h"

#include <algorithm>
#include <string>

namespace BugSlayerUtil {

namespace {

constexpr std::wstring_view UnknownException = L"an exception of unknown type";

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

// The texts that the thread has thrown last, kept alive until they have long been caught.
struct tagThrownTexts {
    std::array<std::wstring, 16> Texts;
    std::size_t Next = 0;
};

tagThrownTexts& ThrownTexts() noexcept {
    thread_local tagThrownTexts texts;
    return texts;
}

const wchar_t* KeepThrownText(std::wstring_view text) noexcept {
    tagThrownTexts& kept = ThrownTexts();
    std::wstring& place = kept.Texts[kept.Next];
    kept.Next = (kept.Next + 1) % kept.Texts.size();
    const HRESULT status = WithoutException([&] {
        place = text;
        return S_OK;
    });
    return status == S_OK ? place.c_str() : L"an error for whose text there was no memory";
}

bool IsThrownHere(const wchar_t* text) noexcept {
    return std::ranges::any_of(ThrownTexts().Texts,
                               [text](const std::wstring& kept) { return kept.c_str() == text; });
}

} // namespace

// What a trace record says beyond the fields of its tracer.
struct TracerClass::tagTrace {
    LONG Ident;
    tagPlace Place;
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
    if (m_TraceLeave && (m_TotalTime || !m_Client.Drops(-1)))
        m_StartTime = platform::MillisecondClock();
    if (m_Counter)
        m_Counter->fetch_add(1, std::memory_order_relaxed);
    if (m_TraceEnter && m_Client.Wants(1))
        WriteTrace({.Ident = 1, .Place = OwnPlace(), .Message = {}});
}

TracerClass::~TracerClass() {
    if (m_TraceLeave)
        TraceLeave();
    platform::SetLastError(m_LastError);
}

void TracerClass::TraceLeave() const noexcept {
    const bool wanted = m_Client.Wants(-1);
    if (!wanted && !m_TotalTime)
        return;
    const double delay = platform::MillisecondClock() - m_StartTime;
    const double total = m_TotalTime ? m_TotalTime->fetch_add(delay) + delay : 0;
    if (wanted)
        WriteTrace({.Ident = -1,
                    .Place = OwnPlace(),
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
        CReportBuffer buffer;
        const std::wstring_view message = ExpandReport(buffer, format.Text(), arguments);
        if (m_Client.Wants(IsWarning(message) ? IDM_BugSlayerUtil::WarningLine : 0))
            WriteTrace({.Ident = 0,
                        .Place = {format.Place().file_name(), format.Place().line()},
                        .Message = message,
                        .OutFile = outFile});
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
        TellPlace(record, trace.Place);
        record.Number(Name::ThreadId.Get(), ThreadNumber());
        TellFunction(record);
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

void TracerClass::TellPlace(CRecordWriter& record, const tagPlace& place) const {
    record.Utf8(Name::File.Get(), ViewOf(place.File));
    record.Number(Name::Line.Get(), static_cast<LONG>(place.Line));
    if (m_Group != 0)
        record.Number(Name::Group.Get(), m_Group);
}

void TracerClass::TellFunction(CRecordWriter& record) const {
    record.Utf8(Name::Function.Get(), FunctionText());
    record.Utf8(Name::FuncSig.Get(), ViewOf(m_Signature));
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
        TellPlace(record, OwnPlace());
        TellFunction(record);
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
        TellPlace(record, OwnPlace());
        TellFunction(record);
        if (inner)
            record.Object(Name::Inner.Get(), inner);
        error = record.Detach();
        return S_OK;
    });
    return error;
}

void ThrowError::NoteCaught(std::wstring_view text) const noexcept {
    if (text.empty())
        NoteFailure(FunctionText(), UnknownException, std::nullopt);
}

void ThrowError::NoteThrown(const wchar_t* text) const noexcept {
    if (!text || !IsThrownHere(text))
        NoteFailure(FunctionText(), text ? std::wstring_view(text) : UnknownException, std::nullopt);
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

void ShowError::NoteCaught(std::wstring_view text) const noexcept {
    // The guard's own text, which comes first in it, is empty nearly everywhere.
    text.remove_prefix(std::min(text.find_first_not_of(L' '), text.size()));
    NoteFailure(FunctionText(), text.empty() ? UnknownException : text, std::nullopt);
}

void ShowError::Report(const CText& text, IDebugObject* inner) {
    m_Client.ApplyAction((*this)(text.View(), inner));
}

namespace detail {

std::wstring StandardExceptionText(std::wstring_view text, const char* what) noexcept {
    std::wstring described;
    WithoutException([&] {
        const std::array arguments{CArgument(text), CArgument(what)};
        described = FormatReport(L"%s (stdexcept: \"%s\")", arguments);
        return S_OK;
    });
    return described;
}

} // namespace detail

} // namespace BugSlayerUtil
