// Creating an object by its class identifier.
//
// Classes that the loaded modules themselves offer are found first, so a component works in a fresh checkout with
// nothing registered. Then the registry's classes root is asked: CLSID\{...}\InprocServer32 names a module, which
// is loaded and asked through its export DllGetClassObject. A ProgID stands in the same root with a key CLSID.
//
// Every function may be called from any thread, and raises nothing. A null out pointer gives E_POINTER; otherwise
// it is set to null first. REGDB_E_CLASSNOTREG: nobody offers the class, or the context asks for no in-process
// server; REGDB_E_READREGDB: the registry's file is malformed or unreadable; CO_E_DLLNOTFOUND: the registered
// module cannot be loaded; CO_E_ERRORINDLL: it has no DllGetClassObject. Anything else is the class's own answer.
#pragma once

#include "platform/com/com_error.h"
#include "platform/com/object.h"

#include <span>

inline constexpr DWORD CLSCTX_INPROC_SERVER = 0x1;
inline constexpr DWORD CLSCTX_INPROC_HANDLER = 0x2;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 0x4;
inline constexpr DWORD CLSCTX_REMOTE_SERVER = 0x10;
// All server kinds: 23.
inline constexpr DWORD CLSCTX_ALL =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;

HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* reserved, REFIID iid, void** object);
HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** object);
// CO_E_CLASSSTRING, and the null identifier, for a ProgID that is not registered.
HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid);

namespace platform {

// One class of a module: how an instance is made. `Create` answers with a status and a counted pointer.
struct tagClassEntry {
    CLSID Class;
    HRESULT (*Create)(IUnknown* outer, REFIID iid, void** object);
};

// A module's object table. One static instance in a module offers its classes for as long as the module lives.
class CModuleClasses {
public:
    explicit CModuleClasses(std::span<const tagClassEntry> table);
    ~CModuleClasses();
    CModuleClasses(const CModuleClasses&) = delete;
    CModuleClasses& operator=(const CModuleClasses&) = delete;

    const tagClassEntry* Find(REFCLSID clsid) const;

    // The body of the module's DllGetClassObject: CLASS_E_CLASSNOTAVAILABLE for a class it does not have.
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) const;

private:
    std::span<const tagClassEntry> m_Table;
};

// A table entry's `Create` for a class that needs nothing but its constructor, which may throw. Aggregation is
// refused.
template <class Class>
HRESULT CreatePlain(IUnknown* outer, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (outer)
        return CLASS_E_NOAGGREGATION;
    try {
        return MakeObject<Class>()->QueryInterface(iid, object);
    } catch (...) {
        return StatusOfException();
    }
}

template <class I>
HRESULT CreateInstance(REFCLSID clsid, CComPtr<I>& object, DWORD context = CLSCTX_ALL) {
    return CoCreateInstance(clsid, nullptr, context, UuidOf<I>, object.PutVoid());
}

} // namespace platform
