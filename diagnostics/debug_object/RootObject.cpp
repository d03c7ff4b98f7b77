#include "RootObject.h"

#include "LogText.h"
#include "diagnostics/interface/RecordNames.h"
#include "platform/message_box.h"

#include <array>
#include <exception>
#include <new>

namespace DebugLog {

namespace Name = BugSlayerUtil::Name;
namespace Verb = BugSlayerUtil::Verb;
namespace RecordType = BugSlayerUtil::RecordType;

namespace {

// A record of this library's making; null for none and for any other.
const CRecord* RecordOf(IDebugObject** record) { return record ? dynamic_cast<const CRecord*>(*record) : nullptr; }

// Of the kinds of trace records.
spdlog::level::level_enum LevelOf(LONG ident) {
    switch (ident) {
    case 0:
        return spdlog::level::info;
    case IDM_BugSlayerUtil::WarningLine:
        return spdlog::level::warn;
    default:
        return spdlog::level::trace;
    }
}

} // namespace

HRESULT CRootObject::Command(IDebugObject** record, BSTR verb) {
    using Action = HRESULT (CRootObject::*)(IDebugObject**);
    static const std::array<std::pair<std::wstring_view, Action>, 9> actions{{
        {platform::ViewOf(Verb::Create.Get()), &CRootObject::Create},
        {platform::ViewOf(Verb::Process.Get()), &CRootObject::Process},
        {platform::ViewOf(Verb::Filter.Get()), &CRootObject::Filter},
        {platform::ViewOf(Verb::Init.Get()), &CRootObject::Init},
        {platform::ViewOf(Verb::Deinit.Get()), &CRootObject::Deinit},
        {platform::ViewOf(Verb::Terminate.Get()), &CRootObject::Terminate},
        {platform::ViewOf(Verb::IsClean.Get()), &CRootObject::IsClean},
        {platform::ViewOf(Verb::DoClean.Get()), &CRootObject::DoClean},
        {platform::ViewOf(Verb::ReportDialog.Get()), &CRootObject::ReportDialog},
    }};
    for (const auto& [name, action] : actions)
        if (name == platform::ViewOf(verb))
            try {
                return (this->*action)(record);
            } catch (const std::exception&) {
                return E_FAIL;
            }
    return E_INVALIDARG;
}

HRESULT CRootObject::GetValue(BSTR name, VARIANT* value) {
    if (!value)
        return E_POINTER;
    VariantClear(value);
    const auto log = Log();
    if (platform::ViewOf(name) != platform::ViewOf(Name::LogFile.Get()) || !log)
        return S_FALSE;
    value->bstrVal = SysAllocStringLen(log->Path().data(), static_cast<UINT>(log->Path().size()));
    if (!value->bstrVal)
        return E_OUTOFMEMORY;
    value->vt = VT_BSTR;
    return S_OK;
}

HRESULT CRootObject::SetValue(BSTR, VARIANT) { return E_NOTIMPL; }

HRESULT CRootObject::SetOption(BSTR name, BSTR, LONG) {
    if (!platform::ViewOf(name).empty())
        return E_INVALIDARG;
    const std::lock_guard lock(m_Lock);
    return m_InitStatus;
}

HRESULT CRootObject::IsWanted(LONG ident) {
    const auto log = Log();
    return log && log->IsWanted(LevelOf(ident)) ? S_OK : S_FALSE;
}

std::shared_ptr<CLog> CRootObject::Log() const {
    const std::lock_guard lock(m_Lock);
    return m_Log;
}

HRESULT CRootObject::Create(IDebugObject** record) {
    if (!record)
        return E_POINTER;
    *record = platform::MakeObject<CRecord>().Detach();
    return S_OK;
}

HRESULT CRootObject::Filter(IDebugObject** record) { return RecordOf(record) ? S_OK : E_INVALIDARG; }

HRESULT CRootObject::Process(IDebugObject** record) {
    const auto log = Log();
    const CRecord* given = RecordOf(record);
    if (!log || !given)
        return S_OK;
    try {
        WriteRecord(*log, *given);
    } catch (const std::exception&) {
        // Whoever reports goes on, with or without its line in the log.
    }
    return S_OK;
}

HRESULT CRootObject::Init(IDebugObject** record) {
    const CRecord* start = RecordOf(record);
    if (!start)
        return E_INVALIDARG;
    std::shared_ptr<CLog> log;
    std::wstring reason;
    try {
        log = std::make_shared<CLog>(ReadLogSettings(start->Text(Name::LogDirectory.Get())),
                                     start->Text(Name::ModuleName.Get()));
    } catch (const std::exception& error) {
        reason = ToWideAlways(error.what());
    }
    const std::lock_guard lock(m_Lock);
    m_InitStatus = log ? S_OK : E_ACCESSDENIED;
    m_InitReason = std::move(reason);
    m_Log = std::move(log);
    return m_InitStatus;
}

HRESULT CRootObject::Deinit(IDebugObject**) {
    std::shared_ptr<CLog> log;
    {
        const std::lock_guard lock(m_Lock);
        log.swap(m_Log);
    }
    if (log)
        log->Flush();
    return S_OK;
}

HRESULT CRootObject::Terminate(IDebugObject**) {
    if (const auto log = Log()) {
        log->Write(spdlog::level::critical, "the process is ended after an unhandled exception");
        log->Flush();
    }
    return S_OK;
}

HRESULT CRootObject::IsClean(IDebugObject**) { return m_HasFailures ? S_FALSE : S_OK; }

HRESULT CRootObject::DoClean(IDebugObject**) {
    m_HasFailures = false;
    return S_OK;
}

HRESULT CRootObject::ReportDialog(IDebugObject**) {
    if (const auto log = Log()) {
        log->Flush();
        platform::ShowMessageBox(L"The log of this process is " + log->Path(), platform::EMessageIcon::Information);
        return S_OK;
    }
    // Shown outside the lock: a box may stand for hours, and reports must go on meanwhile.
    std::wstring text = L"There is no log of this process. ";
    {
        const std::lock_guard lock(m_Lock);
        text += m_InitReason;
    }
    platform::ShowMessageBox(text, platform::EMessageIcon::Warning);
    return S_FALSE;
}

void CRootObject::WriteRecord(CLog& log, const CRecord& record) {
    const std::wstring_view type = record.Text(Name::Type.Get());
    if (type == RecordType::Trace)
        WriteTrace(log, record);
    else if (type == RecordType::Assert)
        WriteFailure(log, spdlog::level::err, AssertText(record));
    else if (type == RecordType::Error)
        WriteFailure(log, spdlog::level::err, ErrorText(record));
    else if (type == RecordType::Exception)
        WriteFailure(log, spdlog::level::critical, ExceptionText(record));
}

void CRootObject::WriteTrace(CLog& log, const CRecord& record) {
    LONG ident = record.Number(Name::Ident.Get());
    if (ident == 0 && BugSlayerUtil::IsWarning(record.Text(Name::Message.Get())))
        ident = IDM_BugSlayerUtil::WarningLine;
    const spdlog::level::level_enum level = LevelOf(ident);
    if (log.IsWanted(level))
        log.Write(level, TraceText(record));
}

void CRootObject::WriteFailure(CLog& log, spdlog::level::level_enum level, const std::string& text) {
    m_HasFailures = true;
    log.Write(level, text);
}

} // namespace DebugLog
