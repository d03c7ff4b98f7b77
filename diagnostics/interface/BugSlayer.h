#pragma once
// How every function reports: a scope at its head, through which it traces, asserts, checks, throws and guards.
//
//     HRESULT CStorage::InsertHoliday(const wchar_t* name) {
//         const BugSlayerUtil::CScope scope(this);
//         return scope.Guard([&] {
//             scope.Trace(L"sql = '%s'", sql);
//             if (!scope.Check(query.Execute(), L"Execute"))
//                 scope.Throw(L"Holiday");
//             return S_OK;
//         }, E_FAIL);
//     }
//
// Reports go to the debug library if there is one (BugSlayerClient.h) and are dropped otherwise; failures are also
// kept for RecentFailures() (Trail.h). A report never throws, except where it is asked to, and never changes the
// thread's last error. "File" and "Line" of a record name the place that gave the text or format, as far as one was
// given; "Function" is the scope's. A scope belongs to one thread; everything else may be used from any.
//
// Without a library, a scope costs reading the clock and some flags; Trace expands its text all the same. A library
// that says beforehand what it does not want (IDebugLevel) spares both.

#include "diagnostics/interface/BugSlayerClient.h"
#include "diagnostics/interface/RecordNames.h"
#include "diagnostics/interface/ReportText.h"
#include "platform/last_error.h"

#include <array>
#include <atomic>
#include <exception>
#include <optional>
#include <source_location>
#include <utility>

namespace BugSlayerUtil {

class CRecordWriter;

// Lines, and the enter and leave of a scope.
class TracerClass {
public:
    // `file`, `function` and `signature` are UTF-8 and outlive the object; a null `function` is taken out of the
    // signature. `counter` and `totalTime` (milliseconds) may be shared by threads and may be null.
    TracerClass(BugSlayerClient& client, const char* file, UINT line, LONG group, const char* function,
                const char* signature, const void* object, std::atomic<LONG>* counter,
                std::atomic<double>* totalTime, bool traceEnter, bool traceLeave) noexcept;
    ~TracerClass();
    TracerClass(const TracerClass&) = delete;
    TracerClass& operator=(const TracerClass&) = delete;

    template <class... Arguments>
    void Trace(CFormat format, const Arguments&... arguments) const noexcept {
        TraceTo(nullptr, format, arguments...);
    }
    // As Trace, with the name of an output file of its own in the record.
    template <class... Arguments>
    void TraceTo(const wchar_t* outFile, CFormat format, const Arguments&... arguments) const noexcept {
        if (IsDropped(format.Text()))
            return;
        const std::array<CArgument, sizeof...(Arguments)> list{CArgument(arguments)...};
        TraceLine(outFile, format, list);
    }

protected:
    struct tagPlace {
        const char* File;
        UINT Line;
    };
    struct tagTrace;

    [[nodiscard]] tagPlace OwnPlace() const noexcept { return {m_File, m_Line}; }
    void TellPlace(CRecordWriter& record, const tagPlace& place) const;
    void TellFunction(CRecordWriter& record) const;
    void WriteTrace(const tagTrace& trace) const noexcept;
    void TraceLeave() const noexcept;
    void TraceLine(const wchar_t* outFile, const CFormat& format,
                   std::span<const CArgument> arguments) const noexcept;
    // Whatever its arguments are.
    [[nodiscard]] bool IsDropped(const wchar_t* format) const noexcept {
        return m_Client.Drops(0) && (m_Client.Drops(IDM_BugSlayerUtil::WarningLine) || !MayBeWarning(format));
    }
    // Qualified name, UTF-8.
    [[nodiscard]] std::string_view FunctionText() const noexcept;

    DWORD m_LastError;
    BugSlayerClient& m_Client;
    const char* m_File;
    UINT m_Line;
    LONG m_Group;
    const char* m_Function;
    const char* m_Signature;
    bool m_TraceEnter;
    bool m_TraceLeave;
    double m_StartTime = 0; // milliseconds
    const void* m_Object;
    std::atomic<LONG>* m_Counter;
    std::atomic<double>* m_TotalTime;
};

// A failed assertion or check. Both answer with the action code.
class AsserterClass : public TracerClass {
public:
    AsserterClass(BugSlayerClient& client, const char* file, UINT line, LONG group, const char* function,
                  const char* signature) noexcept;
    ~AsserterClass();

    HRESULT operator()(std::wstring_view text) noexcept;
    HRESULT operator()(std::wstring_view text, HRESULT status) noexcept;

protected:
    HRESULT Submit(std::wstring_view text, std::optional<HRESULT> status) noexcept;

    DWORD m_AsserterError;
};

// An error raised as a record: thrown as an IDebugObject* whose reference goes to the catcher. Where no record can
// be made, the text is thrown as a const wchar_t*, which stays valid until its thread has raised 16 more, or ended.
class ThrowError : public AsserterClass {
public:
    ThrowError(BugSlayerClient& client, const char* file, UINT line, LONG group, const char* function,
               const char* signature) noexcept;
    ~ThrowError();

    // Null when the client is inactive.
    [[nodiscard]] platform::CComPtr<IDebugObject> MakeError(std::wstring_view text, std::optional<HRESULT> status,
                                                            IDebugObject* inner) noexcept;
    [[noreturn]] void operator()(CText text, IDebugObject* inner = nullptr);
    [[noreturn]] void operator()(CText text, HRESULT status);

    [[noreturn]] void Report(const CText& text, IDebugObject* inner) { (*this)(text, inner); }

protected:
    // Places in the trail for what a guard caught: only for a text that raising it does not put there anyway.
    void NoteCaught(std::wstring_view text) const noexcept;
    void NoteThrown(const wchar_t* text) const noexcept;
    [[noreturn]] void Raise(const CText& text, std::optional<HRESULT> status, IDebugObject* inner);

    DWORD m_ThrowError;
};

// An error that ends here: shown, and acted upon as the library says.
class ShowError : public ThrowError {
public:
    using ThrowError::ThrowError;

    // The action code; E_FAIL when the client is inactive.
    HRESULT operator()(std::wstring_view text, IDebugObject* inner) noexcept;
    void Report(const CText& text, IDebugObject* inner);

protected:
    void NoteCaught(std::wstring_view text) const noexcept;
};

namespace detail {
// "%s (stdexcept: \"%s\")"; empty when there is no memory for it.
[[nodiscard]] std::wstring StandardExceptionText(std::wstring_view text, const char* what) noexcept;
} // namespace detail

// Called within a catch-all: sorts the exception in flight and reports it as `Action` does. Nothing but what
// `Action` throws gets out.
template <class Action>
class CatchAndCall : public Action {
public:
    using Action::Action;

    void operator()(CText text) {
        try {
            throw;
        } catch (IDebugObject* error) {
            // Already in the trail, since whoever raised it put it there.
            const auto inner = platform::CComPtr<IDebugObject>::Adopt(error);
            Action::Report(text, inner.Get());
        } catch (const wchar_t* thrown) {
            this->NoteThrown(thrown);
            Action::Report(text, nullptr);
        } catch (const std::exception& error) {
            const std::wstring described = detail::StandardExceptionText(text.View(), error.what());
            const CText told = described.empty() ? text : CText(described);
            this->NoteCaught(told.View());
            Action::Report(told, nullptr);
        } catch (...) {
            this->NoteCaught(text.View());
            Action::Report(text, nullptr);
        }
    }
};

// The guards of whatever can report (ReportCaught) and raise (RaiseCaught) what was caught.
template <class Reporter>
class CGuards {
public:
    // The error guard: runs the body and answers its result; an exception is reported and ends here, and the answer
    // is then the fallback.
    template <class Body, class Result>
    Result Guard(Body&& body, Result fallback) const {
        try {
            return std::forward<Body>(body)();
        } catch (...) {
            Self().ReportCaught();
        }
        return fallback;
    }
    template <class Body>
    void Guard(Body&& body) const {
        try {
            std::forward<Body>(body)();
        } catch (...) {
            Self().ReportCaught();
        }
    }
    // Turns any exception of the body into a raised error with this text and the first exception as its inner one.
    template <class Body>
    decltype(auto) Rethrowing(Body&& body, CText text) const {
        try {
            return std::forward<Body>(body)();
        } catch (...) {
            Self().RaiseCaught(text);
        }
    }

private:
    [[nodiscard]] const Reporter& Self() const noexcept { return static_cast<const Reporter&>(*this); }
};

// The scope of a function.
class CScope : public TracerClass, public CGuards<CScope> {
public:
    explicit CScope(std::source_location place = std::source_location::current()) noexcept
        : CScope(nullptr, 0, place) {}
    explicit CScope(const void* object, LONG group = 0,
                    std::source_location place = std::source_location::current()) noexcept
        : TracerClass(GetClient(), place.file_name(), place.line(), group, nullptr, place.function_name(), object,
                      nullptr, nullptr, true, true) {}

    // Reports `text` unless the condition holds, and answers with the condition: execution goes on.
    bool Assert(bool condition, CText text) const {
        if (!condition) [[unlikely]]
            AssertFailed(text, std::nullopt);
        return condition;
    }
    // Reports a status other than S_OK; true when it is S_OK.
    bool Check(HRESULT status, CText text) const {
        if (status != S_OK) [[unlikely]]
            AssertFailed(text, status);
        return status == S_OK;
    }
    [[noreturn]] void Throw(CText text) const;

    // For a catch-all written out by hand.
    void ReportCaught(const CText& text = nullptr) const;
    [[noreturn]] void RaiseCaught(const CText& text = nullptr) const;

private:
    void AssertFailed(const CText& text, std::optional<HRESULT> status) const;
};

// The same for code without a scope; the function is the one that calls.
bool Assert(bool condition, CText text);
bool Check(HRESULT status, CText text);
[[noreturn]] void Throw(CText text);
// To be called within a catch-all.
void ReportCaught(CText text);
[[noreturn]] void RaiseCaught(CText text);

namespace detail {
// A place without a scope.
class CPlace : public CGuards<CPlace> {
public:
    explicit CPlace(const std::source_location& place) noexcept : m_Place(place) {}

    void ReportCaught() const { BugSlayerUtil::ReportCaught(CText(nullptr, m_Place)); }
    [[noreturn]] void RaiseCaught(const CText& text) const { BugSlayerUtil::RaiseCaught(text); }

private:
    std::source_location m_Place;
};
} // namespace detail

template <class Body, class Result>
Result Guard(Body&& body, Result fallback, std::source_location place = std::source_location::current()) {
    return detail::CPlace(place).Guard(std::forward<Body>(body), std::move(fallback));
}
template <class Body>
void Guard(Body&& body, std::source_location place = std::source_location::current()) {
    detail::CPlace(place).Guard(std::forward<Body>(body));
}
template <class Body>
decltype(auto) Rethrowing(Body&& body, CText text) {
    return detail::CPlace(text.Place()).Rethrowing(std::forward<Body>(body), text);
}

} // namespace BugSlayerUtil
