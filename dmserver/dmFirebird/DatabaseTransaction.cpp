#include "DatabaseTransaction.h"

#include "DatabaseQuery.h"

namespace IDM_dmFirebird {

HRESULT CdmDatabaseTransaction::Begin(LONG Isolation) {
    return Guard(Errors(), [&] { m_Transaction->Begin(Isolation); });
}

HRESULT CdmDatabaseTransaction::Finish() {
    return Guard(Errors(), [this] { m_Transaction->Finish(); });
}

HRESULT CdmDatabaseTransaction::Rollback() {
    return Guard(Errors(), [this] { m_Transaction->Rollback(); });
}

HRESULT CdmDatabaseTransaction::GetQuery(IdmDatabaseQuery** Query) {
    if (!Query)
        return E_POINTER;
    *Query = nullptr;
    return Guard(Errors(), [&] {
        const auto lock = m_Transaction->Enter();
        *Query = platform::MakeObject<CdmDatabaseQuery>(this, m_Transaction).Detach();
    });
}

} // namespace IDM_dmFirebird
