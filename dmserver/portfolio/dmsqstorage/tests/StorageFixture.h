// A fresh storage for each test: database, recorder of reports, recorder of announced changes.
#pragma once

#include "HostFixture.h"
#include "RecordingSink.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "dmserver/portfolio/dmsqstorage/interface/BroadcastObserver.h"

#include <gmock/gmock.h>
#include <mutex>
#include <utility>
#include <vector>

namespace tests {

class CBroadcastRecorder final : public sqStorage::IBroadcastObserver {
public:
    CBroadcastRecorder() : m_Previous(sqStorage::SetBroadcastObserver(this)) {}
    ~CBroadcastRecorder() { sqStorage::SetBroadcastObserver(m_Previous); }

    void OnBroadcast(ULONG Mask, LONG ValueID) noexcept override {
        const std::lock_guard lock(m_Lock);
        m_Changes.emplace_back(Mask, ValueID);
    }
    std::vector<Change> Take() {
        const std::lock_guard lock(m_Lock);
        return std::exchange(m_Changes, {});
    }

private:
    sqStorage::IBroadcastObserver* m_Previous;
    std::mutex m_Lock;
    std::vector<Change> m_Changes; // guarded by m_Lock
};

// The functions whose guards reported.
inline std::vector<std::wstring> Reporters() {
    std::vector<std::wstring> functions;
    for (const auto& record : Recorder::RecordsOf(L"ERROR"))
        functions.push_back(record.Inner.empty() ? L"" : record.Inner.front().Function);
    return functions;
}

// Its tables are emptied before each test.
class StorageTest : public HostTest {
protected:
    void SetUp() override {
        ASSERT_EQ(S_OK, CStorageHost::Create(m_Storage));
        std::wstring statements;
        for (const wchar_t* table :
             {L"HOLIDAYS", L"HOLIDAY_DETAILS", L"SETTINGS", L"DATA_FEEDS", L"EXCHANGES", L"SESSIONS",
              L"SESSION_DETAILS", L"CURRENCY", L"PORTFOLIO", L"DICTIONARY", L"CUSTOM_FUTURES"})
            statements += std::wstring(L"DELETE FROM ") + table + L"; ";
        Host().Sql(L"EXECUTE BLOCK AS BEGIN " + statements + L"END");
        TakeAll();
    }

    // The written statements, as traced.
    static std::vector<std::wstring> Statements() {
        std::vector<std::wstring> statements;
        for (const std::wstring& message : Recorder::Messages())
            if (message.starts_with(L"sql = "))
                statements.push_back(message);
        return statements;
    }

    // Forgets what was reported and announced so far.
    void TakeAll() {
        Recorder::Clear();
        m_Changes.Take();
    }

    CBroadcastRecorder m_Changes;
    CComPtr<IqxStorage> m_Storage;
};

} // namespace tests
