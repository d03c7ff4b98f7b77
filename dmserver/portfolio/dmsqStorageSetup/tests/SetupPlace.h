// A temporary place for a storage and its registry, and a look into the database that does not ask the code under
// test.
#pragma once

#include "dmserver/dmFirebird/interface/Database.h"
#include "dmserver/portfolio/dmsqStorageSetup/interface/StorageSetup.h"
#include "platform/com/com_ptr.h"
#include "platform/environment.h"
#include "platform/file.h"

#include <gtest/gtest.h>
#include <string>

namespace tests {

class CSetupPlace {
public:
    sqSetup::tagConnection Connection() const { return {Path(L"storage.fdb"), L"SYSDBA", L"masterkey", L""}; }
    std::wstring Path(std::wstring_view name) const {
        return platform::FromPath(m_Directory.Path() / platform::ToPath(name));
    }
    bool HasDatabase() const { return platform::Exists(platform::ToPath(Connection().Path)); }

    // A connection that the caller closes.
    platform::CComPtr<IDM_dmFirebird::IdmDatabase> Open() const;
    // A new database that holds nothing.
    void CreateEmptyDatabase() const;
    // Runs the statement in a transaction of its own. The first number of the first row, or -1.
    LONG Run(const wchar_t* statement) const;

private:
    platform::CTemporaryDirectory m_Directory;
    platform::CScopedEnvironment m_Registry{L"SQSTORAGE_REGISTRY_DIR", Path(L"registry")};
    platform::CScopedEnvironment m_State{L"SQSTORAGE_STATE_DIR", Path(L"state")};
};

// The text of the error that the call raises; empty when it raises none.
std::wstring ErrorOf(void (*call)(const sqSetup::tagConnection&), const sqSetup::tagConnection& connection);
std::wstring ErrorOf(LONG (*call)(const sqSetup::tagConnection&), const sqSetup::tagConnection& connection);

} // namespace tests
