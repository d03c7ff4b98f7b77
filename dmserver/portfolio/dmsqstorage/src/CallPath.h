// How a call reaches the storage and becomes a status.
//
//     Run        argument tests, storage, operation:  S_OK
//     Insert     the same; the new key goes out:      S_OK, or S_FALSE when it is less than 1
//     Change     the same, and the row must exist:    S_OK, or S_FALSE when there is no such row
//     Notify     the operation's own status:          S_FALSE without a storage
//
// A failed argument test gives E_INVALIDARG, a missing storage E_POINTER, in that order, and an exception that
// comes this far ends in the error guard as E_FAIL.
#pragma once

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/com_error.h"
#include "qxStorageBase.h"

#include <utility>

class CCallPath {
public:
    CCallPath(const BugSlayerUtil::CScope& scope, CqxStorageBase& object) : m_Scope(scope), m_Object(object) {}

    // `operation` takes the storage.
    template <class Operation>
    HRESULT Run(bool argumentsAreGood, Operation&& operation) const {
        return Guarded(argumentsAreGood, [&](sqStorage::CStorage& storage) {
            operation(storage);
            return S_OK;
        });
    }

    // `operation` takes the storage and returns the new key.
    template <class Operation>
    HRESULT Insert(bool argumentsAreGood, LONG* key, Operation&& operation) const {
        return Guarded(argumentsAreGood && key, [&](sqStorage::CStorage& storage) {
            *key = operation(storage);
            return *key >= 1 ? S_OK : S_FALSE;
        });
    }

    // `exists` tells whether the row is there; without it `operation` is not called.
    template <class Exists, class Operation>
    HRESULT Change(bool argumentsAreGood, Exists&& exists, Operation&& operation) const {
        return Guarded(argumentsAreGood, [&](sqStorage::CStorage& storage) {
            if (!exists())
                return S_FALSE;
            operation(storage);
            return S_OK;
        });
    }

    // `operation` takes the storage and returns the status. Without a storage nothing is done.
    template <class Operation>
    HRESULT Notify(Operation&& operation) const {
        return m_Scope.Guard(
            [&]() -> HRESULT { return m_Object.m_Holder ? operation(*m_Object.m_Holder->GetObject()) : S_FALSE; },
            E_FAIL);
    }

    // For methods without a guard of their own: what fails here or below reaches the caller as an exception.
    sqStorage::CStorage& Storage() const {
        if (!m_Object.m_Holder)
            platform::ThrowStatus(E_POINTER, L"the object has no storage");
        return *m_Object.m_Holder->GetObject();
    }

private:
    template <class Call>
    HRESULT Guarded(bool argumentsAreGood, Call&& call) const {
        if (!argumentsAreGood)
            return E_INVALIDARG;
        return m_Scope.Guard(
            [&]() -> HRESULT {
                if (!m_Object.m_Holder)
                    return E_POINTER;
                return call(*m_Object.m_Holder->GetObject());
            },
            E_FAIL);
    }

    const BugSlayerUtil::CScope& m_Scope;
    CqxStorageBase& m_Object;
};

// A string that has characters.
inline bool IsNotEmpty(BSTR text) { return SysStringLen(text) > 0; }
