#include "sqStorage.h"

#include "platform/com/com_error.h"

namespace sqStorage {

void CStorage::SelectPortfolio(LONG, IdmRequest*, IdmTable*) {
    platform::ThrowStatus(E_NOTIMPL, L"SelectPortfolio");
}

LONG CStorage::SelectRootSettings(IdmRequest*, IdmTable*) { return E_NOTIMPL; }

LONG CStorage::SelectExpirationRule(IdmRequest*, IdmTable*) { return E_NOTIMPL; }

} // namespace sqStorage
