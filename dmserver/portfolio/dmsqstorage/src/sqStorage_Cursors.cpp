#include "sqStorage.h"

#include "Requestes.h"
#include "diagnostics/interface/BugSlayer.h"

namespace sqStorage {

LONG CStorage::Open(LONG Mode, IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    if (!scope.Assert(static_cast<bool>(m_Database), L"m_Database") || !m_Requestes || !Request || !Table)
        return 0;
    return m_Requestes->Add(Mode, Request, Table);
}

void CStorage::Close(LONG Id) {
    const BugSlayerUtil::CScope scope(this);
    if (m_Requestes)
        m_Requestes->Delete(Id);
}

LONG CStorage::Fetch(LONG Id, LONG Count) {
    const BugSlayerUtil::CScope scope(this);
    return m_Requestes ? m_Requestes->Fetch(Id, Count) : 0;
}

} // namespace sqStorage
