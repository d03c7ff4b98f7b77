#include "sqStorage.h"

namespace sqStorage {

// The dictionary of roots is not part of this version, so it has no row for any symbol.
void CStorage::AdjustRootSettings(IdmTable*, bool) {}

LONG CStorage::SelectRootSettings(IdmRequest*, IdmTable*) { return E_NOTIMPL; }

LONG CStorage::SelectExpirationRule(IdmRequest*, IdmTable*) { return E_NOTIMPL; }

} // namespace sqStorage
