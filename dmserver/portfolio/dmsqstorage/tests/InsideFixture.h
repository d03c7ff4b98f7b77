// A storage reached past its interface, whose database can be watched, broken and closed.
#pragma once

#include "StorageFixture.h"
#include "WatchedDatabase.h"
#include "qxStorageBase.h"

namespace tests {

// A new storage and emptied tables for each test.
class InsideTest : public HostTest {
protected:
    InsideTest();

    sqStorage::CStorage& Storage() { return *m_Holder.GetObject(); }
    // From now on every request on the database raises.
    void CloseDatabase();
    // From now on m_Watch sees what the database is asked; keys are drawn past it.
    void WatchDatabase();
    // From now on a statement that begins so raises.
    void BreakStatement(const std::wstring& beginning);
    // The statements since the database is watched; forgets them.
    std::vector<std::wstring> TakeStatements();

    tagWatch m_Watch; // outlives the storage
    CBroadcastRecorder m_Changes;
    sqStorage::CStorageHolder m_Holder;
    const CComPtr<CqxStorageBase> m_Object = platform::MakeObject<CqxStorageBase>();

private:
    bool m_IsWatched = false;
};

} // namespace tests
