// A fresh storage for each test: database, recorder of reports, recorder of announced changes.
#pragma once

#include "StorageHost.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "dmserver/portfolio/dmsqstorage/interface/BroadcastObserver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <utility>
#include <vector>

namespace tests {

// A change as it was announced: mask and value.
using Change = std::pair<ULONG, LONG>;

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

// One database for the program, because a process reads its connection once; emptied before each test.
class StorageTest : public testing::Test {
protected:
    static void SetUpTestSuite() { Host().Install(); }

    void SetUp() override {
        ASSERT_EQ(S_OK, CStorageHost::Create(m_Storage));
        for (const wchar_t* table : {L"HOLIDAYS", L"HOLIDAY_DETAILS", L"SETTINGS"})
            Host().Sql(std::wstring(L"DELETE FROM ") + table);
        Recorder::Clear();
        m_Changes.Take();
    }

    static CStorageHost& Host() {
        static CStorageHost host;
        return host;
    }

    // The written statements, as traced.
    static std::vector<std::wstring> Statements() {
        std::vector<std::wstring> statements;
        for (const std::wstring& message : Recorder::Messages())
            if (message.starts_with(L"sql = "))
                statements.push_back(message);
        return statements;
    }

    std::vector<Row> Sql(const std::wstring& statement) { return Host().Sql(statement); }

    CBroadcastRecorder m_Changes;
    CComPtr<IqxStorage> m_Storage;
};

} // namespace tests
