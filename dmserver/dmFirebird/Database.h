#pragma once

#include "LastErrors.h"

#include "dmserver/dmFirebird/interface/Database.h"
#include "platform/com/object.h"

#include <memory>
#include <mutex>

namespace IDM_dmFirebird {

class CConnection;

class CdmDatabase final
    : public platform::CObject<CdmDatabase, platform::ECounter::Interlocked, platform::CDispatchImpl<IdmDatabase>> {
public:
    HRESULT Open(BSTR Path, BSTR UserName, BSTR Password) override;
    HRESULT Close() override;
    HRESULT GetTransaction(IdmDatabaseTransaction** Transaction) override;
    HRESULT get_LastError(BSTR* Value) override;
    HRESULT Create(BSTR Path, BSTR UserName, BSTR Password) override;
    HRESULT get_Version(BSTR* Value) override;
    HRESULT Drop() override;

    const CLastErrors& Errors() const { return m_Errors; }

private:
    using Connect = std::shared_ptr<CConnection> (*)(std::wstring_view path, std::wstring_view userName,
                                                     std::wstring_view password);

    HRESULT ConnectBy(Connect connect, BSTR path, BSTR userName, BSTR password);
    std::shared_ptr<CConnection> Connection();
    // Leaves the database without a connection; null when it had none.
    std::shared_ptr<CConnection> TakeConnection();

    CLastErrors m_Errors;
    std::mutex m_Mutex; // guards the connection
    std::shared_ptr<CConnection> m_Connection;
};

} // namespace IDM_dmFirebird
