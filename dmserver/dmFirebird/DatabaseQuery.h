#pragma once

#include "DatabaseTransaction.h"
#include "Query.h"

namespace IDM_dmFirebird {

class CdmDatabaseQuery final : public platform::CObject<CdmDatabaseQuery, platform::ECounter::Interlocked,
                                                        platform::CDispatchImpl<IdmDatabaseQuery>> {
public:
    CdmDatabaseQuery(platform::CComPtr<CdmDatabaseTransaction> owner, std::shared_ptr<CTransaction> transaction)
        : m_Owner(std::move(owner)), m_Query(std::move(transaction)) {}

    HRESULT Open(BSTR Statement, IDispatch* Parameters, IDispatch* Result) override;
    HRESULT Close() override;
    HRESULT Fetch(LONG* Count) override;

private:
    const CLastErrors& Errors() const { return m_Owner->Errors(); }

    const platform::CComPtr<CdmDatabaseTransaction> m_Owner;
    CQuery m_Query;
};

} // namespace IDM_dmFirebird
