// How a call reaches the storage and becomes a status.
//
//     Run        argument tests, storage, operation:  S_OK
//     Insert     the same; the new key goes out:      S_OK, or S_FALSE when it is less than 1
//     Change     the same, and the row must exist:    S_OK, or S_FALSE when there is no such row
//     Lookup     as Run; the value found goes out:    S_OK
//     Delete     as Change; what was done goes out:   S_OK, or S_FALSE when there is no such row
//     Notify     the operation's own status:          S_FALSE without a storage
//     Result     as Run; the operation's own status
//     Find       as Lookup, and whatever fails gives 0
//
// A failed argument test gives E_INVALIDARG, a missing storage E_POINTER, in that order, and an exception that
// comes this far ends in the error guard as E_FAIL. Find alone reports no exception.
#pragma once

#include "diagnostics/interface/BugSlayer.h"
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

    // `operation` takes the storage and returns what was asked for.
    template <class Operation>
    HRESULT Lookup(bool argumentsAreGood, LONG* value, Operation&& operation) const {
        return Run(argumentsAreGood && value, [&](sqStorage::CStorage& storage) { *value = operation(storage); });
    }

    // As Change; `operation` tells whether it deleted. A null `deleted` is the caller's mistake: it is reported,
    // and the call goes on without it.
    template <class Exists, class Operation>
    HRESULT Delete(LONG* deleted, Exists&& exists, Operation&& operation) const {
        LONG unwanted = 0;
        LONG& result = m_Scope.Assert(deleted != nullptr, L"Deleted") ? *deleted : unwanted;
        result = 0;
        return Change(true, exists, [&](sqStorage::CStorage& storage) { result = operation(storage); });
    }

    // `operation` takes the storage and returns the status. Without a storage nothing is done.
    template <class Operation>
    HRESULT Notify(Operation&& operation) const {
        return m_Scope.Guard(
            [&]() -> HRESULT { return m_Object.m_Holder ? operation(*m_Object.m_Holder->GetObject()) : S_FALSE; },
            E_FAIL);
    }

    // `operation` takes the storage and returns the status.
    template <class Operation>
    HRESULT Result(bool argumentsAreGood, Operation&& operation) const {
        return Guarded(argumentsAreGood, operation);
    }

    // `operation` takes the storage and returns what was asked for.
    template <class Operation>
    HRESULT Find(bool argumentsAreGood, LONG* value, Operation&& operation) const {
        if (!value)
            return E_INVALIDARG;
        *value = 0;
        if (!argumentsAreGood)
            return E_INVALIDARG;
        try {
            if (!m_Object.m_Holder)
                return E_POINTER;
            *value = operation(*m_Object.m_Holder->GetObject());
            return S_OK;
        } catch (BugSlayerUtil::IDebugObject* error) {
            // A raised record comes with its reference.
            platform::CComPtr<BugSlayerUtil::IDebugObject>::Adopt(error);
        } catch (...) {
        }
        return E_FAIL;
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
