#pragma once
// The debug library's root object: creates records and writes those that it is given to the log.
//
//   enter, leave    trace                    assertion   error
//   line            info, or warning when    error       error, with all that it wraps
//                   it begins "[Warning]"    exception   critical
//
// "PROCESS" always answers 0. "INIT" answers E_ACCESSDENIED when no log can be written, and tells why on
// "REPORTDIALOG". "IS CLEAN" answers S_FALSE after an assertion, error or exception until the next "DO CLEAN".
// Any thread may call; before "INIT" and after "DEINIT" records are dropped.

#include "Log.h"
#include "Record.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace DebugLog {

class CRootObject final
    : public platform::CObject<CRootObject, platform::ECounter::Interlocked, platform::CDispatchImpl<IDebugObject>,
                               IDM_BugSlayerUtil::IDebugLevel> {
public:
    HRESULT Command(IDebugObject** record, BSTR verb) override;
    // "LogFile": the full path of the log.
    HRESULT GetValue(BSTR name, VARIANT* value) override;
    HRESULT SetValue(BSTR name, VARIANT value) override;
    // The empty name follows an "INIT" that failed; the answer is that of "INIT".
    HRESULT SetOption(BSTR name, BSTR text, LONG flag) override;
    HRESULT IsWanted(LONG ident) override;

private:
    HRESULT Create(IDebugObject** record);
    HRESULT Filter(IDebugObject** record);
    HRESULT Process(IDebugObject** record);
    HRESULT Init(IDebugObject** record);
    HRESULT Deinit(IDebugObject** record);
    HRESULT Terminate(IDebugObject** record);
    HRESULT IsClean(IDebugObject** record);
    HRESULT DoClean(IDebugObject** record);
    HRESULT ReportDialog(IDebugObject** record);

    void WriteRecord(CLog& log, const CRecord& record);
    void WriteTrace(CLog& log, const CRecord& record);
    void WriteFailure(CLog& log, spdlog::level::level_enum level, const std::string& text);
    [[nodiscard]] std::shared_ptr<CLog> Log() const;

    mutable std::mutex m_Lock;
    std::shared_ptr<CLog> m_Log; // guarded by m_Lock; null before "INIT" and after "DEINIT"
    HRESULT m_InitStatus = S_OK; // guarded by m_Lock
    std::wstring m_InitReason;   // guarded by m_Lock
    std::atomic<bool> m_HasFailures{false};
};

} // namespace DebugLog
