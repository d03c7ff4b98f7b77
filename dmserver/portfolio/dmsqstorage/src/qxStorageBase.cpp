#include "qxStorageBase.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/com_error.h"

HRESULT CqxStorageBase::Create(IUnknown* outer, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (outer)
        return CLASS_E_NOAGGREGATION;
    return BugSlayerUtil::Guard(
        [&]() -> HRESULT {
            const auto instance = platform::MakeObject<CqxStorageBase>();
            const HRESULT status = instance->FinalConstruct();
            return FAILED(status) ? status : instance->QueryInterface(iid, object);
        },
        E_FAIL);
}

LONG CqxStorageBase::FinalConstruct() {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            m_Holder = std::make_unique<sqStorage::CStorageHolder>();
            return m_Holder->GetObject()->DatabaseOpened() > 0 ? S_OK : E_FAIL;
        },
        LONG{E_FAIL});
}

sqStorage::CStorage& CqxStorageBase::StorageOrRaise() const {
    if (!m_Holder)
        platform::ThrowStatus(E_POINTER, L"the object has no storage");
    return *m_Holder->GetObject();
}

void CqxStorageBase::FinalRelease() {
    const BugSlayerUtil::CScope scope(this);
    m_Holder.reset();
}
