#include "sqStorage.h"

#include "platform/com/com_error.h"

namespace sqStorage {

// The callers below the interface learn as a raised status what the interface answers directly.
void CStorage::SelectPortfolio(LONG, IdmRequest*, IdmTable*) {
    platform::ThrowStatus(E_NOTIMPL, L"SelectPortfolio");
}

void CStorage::SelectDataFeed(IdmRequest*, IdmTable*) { platform::ThrowStatus(E_NOTIMPL, L"SelectDataFeed"); }

LONG CStorage::SelectRootSettings(IdmRequest*, IdmTable*) { return E_NOTIMPL; }

LONG CStorage::SelectExpirationRule(IdmRequest*, IdmTable*) { return E_NOTIMPL; }

void CStorage::SelectExchange(IdmRequest*, IdmTable*) { platform::ThrowStatus(E_NOTIMPL, L"SelectExchange"); }

LONG CStorage::SelectExchange(const wchar_t*) { platform::ThrowStatus(E_NOTIMPL, L"SelectExchange"); }

} // namespace sqStorage
