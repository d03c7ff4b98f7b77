#pragma once

#include "Database.h"
#include "Transaction.h"

namespace IDM_dmFirebird {

class CdmDatabaseTransaction final
    : public platform::CObject<CdmDatabaseTransaction, platform::ECounter::Interlocked,
                               platform::CDispatchImpl<IdmDatabaseTransaction>> {
public:
    CdmDatabaseTransaction(platform::CComPtr<CdmDatabase> database, std::shared_ptr<CTransaction> transaction)
        : m_Database(std::move(database)), m_Transaction(std::move(transaction)) {}

    HRESULT Begin(LONG Isolation) override;
    HRESULT Finish() override;
    HRESULT Rollback() override;
    HRESULT GetQuery(IdmDatabaseQuery** Query) override;

    const CLastErrors& Errors() const { return m_Database->Errors(); }

private:
    const platform::CComPtr<CdmDatabase> m_Database;
    const std::shared_ptr<CTransaction> m_Transaction;
};

} // namespace IDM_dmFirebird
