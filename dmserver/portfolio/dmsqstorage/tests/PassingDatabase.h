// A storage's database that passes everything on to the real one, for a test to come between: derive from it and
// override what is to be different.
#pragma once

#include "StorageHost.h"
#include "platform/com/object.h"

#include <utility>

namespace tests {

template <class Derived>
class CPassingDatabase : public platform::CObject<Derived, platform::ECounter::Interlocked,
                                                  platform::CDispatchImpl<IDM_dmFirebird::IdmDatabase>> {
public:
    explicit CPassingDatabase(CComPtr<IDM_dmFirebird::IdmDatabase> database) : m_Database(std::move(database)) {}

    HRESULT Open(BSTR Path, BSTR UserName, BSTR Password) override {
        return m_Database->Open(Path, UserName, Password);
    }
    HRESULT Close() override { return m_Database->Close(); }
    HRESULT GetTransaction(IDM_dmFirebird::IdmDatabaseTransaction** Transaction) override {
        return m_Database->GetTransaction(Transaction);
    }
    HRESULT get_LastError(BSTR* Value) override { return m_Database->get_LastError(Value); }
    HRESULT Create(BSTR Path, BSTR UserName, BSTR Password) override {
        return m_Database->Create(Path, UserName, Password);
    }
    HRESULT get_Version(BSTR* Value) override { return m_Database->get_Version(Value); }
    HRESULT Drop() override { return m_Database->Drop(); }

private:
    const CComPtr<IDM_dmFirebird::IdmDatabase> m_Database;
};

} // namespace tests
