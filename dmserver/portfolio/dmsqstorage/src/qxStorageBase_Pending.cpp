// Methods whose subsystems are not part of this version. A caller learns so by E_NOTIMPL; slots and names stand.
#include "qxStorageBase.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

// IqxStorage
HRESULT CqxStorageBase::SelectCustomFutures(LONG, IdmRequest*, IdmTable*) { return E_NOTIMPL; }
HRESULT CqxStorageBase::InsertCustomFutures(BSTR, BSTR, BSTR, BSTR, LONG, LONG, LONG, LONG, LONG, LONG, LONG, LONG,
                                            LONG*) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::DeleteCustomFutures(LONG) { return E_NOTIMPL; }
HRESULT CqxStorageBase::UpdateCustomFutures(LONG, BSTR, BSTR, BSTR, BSTR, LONG, LONG, LONG, LONG, LONG, LONG, LONG,
                                            LONG) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::UpdateCustomFuturesFormula(LONG, BSTR, BSTR, BSTR) { return E_NOTIMPL; }

// IascStorage
HRESULT CqxStorageBase::Load(IdmTable*, IdmTable*) { return E_NOTIMPL; }
HRESULT CqxStorageBase::Save(IdmTable*, IdmTable*) { return E_NOTIMPL; }

// IqxStorageSmartNotify
HRESULT CqxStorageBase::DeletePortfolioSmart(LONG, LONG) { return E_NOTIMPL; }
HRESULT CqxStorageBase::InsertPortfolioSmart(BSTR, BSTR, BSTR, BSTR, LONG, LONG, LONG, LONG, LONG, LONG, LONG, LONG,
                                             LONG, LONG, double, LONG, LONG, LONG, LONG, LONG, LONG, LONG, LONG*,
                                             LONG) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::UpdatePortfolioSmart(LONG, BSTR, BSTR, BSTR, BSTR, LONG, LONG, LONG, LONG, LONG, LONG, LONG,
                                             LONG, LONG, LONG, double, LONG, LONG, LONG, LONG, LONG, LONG, LONG,
                                             LONG) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::InsertSymbols(IdmTable*, IdmTable*, LONG) { return E_NOTIMPL; }

// IqxNativePortfolio
HRESULT CqxStorageBase::UpdatePortfolioNative(LONG, BSTR, BSTR, BSTR, BSTR, LONG, LONG, LONG, LONG, LONG, LONG,
                                              LONG, LONG, LONG, LONG, double, LONG, LONG, LONG, LONG, LONG, LONG,
                                              LONG) {
    return E_NOTIMPL;
}

// IqxDictionary
HRESULT CqxStorageBase::SelectRootSettings(IdmRequest*, IdmTable*) { return E_NOTIMPL; }
HRESULT CqxStorageBase::InsertRootSettings(BSTR, BSTR, BSTR, BSTR, double, double, ULONG, ULONG, BSTR, BSTR, LONG,
                                           LONG) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::UpdateRootSettings(BSTR, BSTR, BSTR, BSTR, BSTR, double, double, ULONG, ULONG, BSTR, BSTR,
                                           LONG, LONG) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::DeleteRootSettings(BSTR, BSTR, LONG) { return E_NOTIMPL; }
HRESULT CqxStorageBase::GetRootDataFeedNameList(SAFEARRAY**) { return E_NOTIMPL; }
HRESULT CqxStorageBase::AdjustRootSettings(IdmTable*) { return E_NOTIMPL; }

// IqxExpirationRuleSettings
HRESULT CqxStorageBase::SelectExpirationRule(IdmRequest*, IdmTable*) { return E_NOTIMPL; }
HRESULT CqxStorageBase::InsertExpirationRule(BSTR, LONG, LONG, LONG, LONG, LONG, LONG, LONG, LONG, LONG*) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::UpdateExpirationRule(LONG, BSTR, LONG, LONG, LONG, LONG, LONG, LONG, LONG, LONG) {
    return E_NOTIMPL;
}
HRESULT CqxStorageBase::DeleteExpirationRule(LONG, LONG*) { return E_NOTIMPL; }

// IqxExpirationDateCalculator
HRESULT CqxStorageBase::Calculate(BSTR, BSTR, LONG, LONG*, LONG*) { return E_NOTIMPL; }
