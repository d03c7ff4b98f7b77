#include "platform/com/activation.h"

#include "platform/module.h"
#include "platform/registry.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace platform {

namespace {

// The object tables of the modules in memory. A module adds its own when it is loaded.
struct tagModules {
    std::mutex Lock;
    std::vector<const CModuleClasses*> Tables; // guarded by Lock
};

tagModules& Modules() {
    static tagModules modules;
    return modules;
}

class CClassFactory final : public CObject<CClassFactory, ECounter::Interlocked, IClassFactory> {
public:
    explicit CClassFactory(const tagClassEntry& entry) : m_Entry(entry) {}

    HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        return object ? m_Entry.Create(outer, iid, object) : E_POINTER;
    }
    HRESULT LockServer(BOOL lock) override {
        lock ? CModuleCount::Add() : CModuleCount::Remove();
        return S_OK;
    }

private:
    tagClassEntry m_Entry;
};

const tagClassEntry* FindEntry(std::span<const tagClassEntry> table, REFCLSID clsid) {
    const auto found = std::ranges::find(table, clsid, &tagClassEntry::Class);
    return found == table.end() ? nullptr : &*found;
}

std::optional<tagClassEntry> FindLoadedClass(REFCLSID clsid) {
    tagModules& modules = Modules();
    const std::lock_guard lock(modules.Lock);
    for (const CModuleClasses* classes : modules.Tables)
        if (const tagClassEntry* entry = classes->Find(clsid))
            return *entry;
    return std::nullopt;
}

using GetClassObjectFunction = HRESULT (*)(REFCLSID, REFIID, void**);

// Runs what may throw; no exception passes an interface.
template <class Function>
HRESULT Guard(Function function) noexcept {
    try {
        return function();
    } catch (const CRegistryError&) {
        return REGDB_E_READREGDB;
    } catch (...) {
        return StatusOfException();
    }
}

HRESULT MakeFactory(const tagClassEntry& entry, REFIID iid, void** object) {
    return MakeObject<CClassFactory>(entry)->QueryInterface(iid, object);
}

// The default value of a key of the classes root.
std::optional<std::wstring> ReadClasses(const std::wstring& path) {
    const auto key = CRegistryKey::Open(ERegistryRoot::Classes, path);
    return key ? key->ReadText(L"") : std::nullopt;
}

// The module that the registry names for the class. It stays loaded.
HRESULT GetRegisteredClass(REFCLSID clsid, REFIID iid, void** object) {
    const auto path = ReadClasses(L"CLSID\\" + ToText(clsid) + L"\\InprocServer32");
    if (!path)
        return REGDB_E_CLASSNOTREG;
    const auto module = CModule::Load(*path);
    if (!module)
        return CO_E_DLLNOTFOUND;
    const auto getClassObject = reinterpret_cast<GetClassObjectFunction>(module->Symbol("DllGetClassObject"));
    return getClassObject ? getClassObject(clsid, iid, object) : CO_E_ERRORINDLL;
}

} // namespace

CModuleClasses::CModuleClasses(std::span<const tagClassEntry> table) : m_Table(table) {
    tagModules& modules = Modules();
    const std::lock_guard lock(modules.Lock);
    modules.Tables.push_back(this);
}

CModuleClasses::~CModuleClasses() {
    tagModules& modules = Modules();
    const std::lock_guard lock(modules.Lock);
    std::erase(modules.Tables, this);
}

const tagClassEntry* CModuleClasses::Find(REFCLSID clsid) const { return FindEntry(m_Table, clsid); }

HRESULT CModuleClasses::GetClassObject(REFCLSID clsid, REFIID iid, void** object) const {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    const tagClassEntry* entry = Find(clsid);
    return entry ? Guard([&] { return MakeFactory(*entry, iid, object); }) : CLASS_E_CLASSNOTAVAILABLE;
}

} // namespace platform

HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void*, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (!(context & CLSCTX_INPROC_SERVER))
        return REGDB_E_CLASSNOTREG;
    return platform::Guard([&] {
        const auto entry = platform::FindLoadedClass(clsid);
        return entry ? platform::MakeFactory(*entry, iid, object)
                     : platform::GetRegisteredClass(clsid, iid, object);
    });
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    // The loaded classes are asked without making a factory: this is on the path of every existence check.
    if (context & CLSCTX_INPROC_SERVER)
        if (const auto entry = platform::FindLoadedClass(clsid))
            return platform::Guard([&] { return entry->Create(outer, iid, object); });
    platform::CComPtr<IClassFactory> factory;
    const HRESULT status =
        CoGetClassObject(clsid, context, nullptr, platform::UuidOf<IClassFactory>, factory.PutVoid());
    if (FAILED(status))
        return status;
    return factory ? factory->CreateInstance(outer, iid, object) : CO_E_ERRORINDLL;
}

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid) {
    if (!progId || !clsid)
        return E_INVALIDARG;
    *clsid = platform::NullGuid;
    return platform::Guard([&] {
        const auto text = platform::ReadClasses(std::wstring(progId) + L"\\CLSID");
        const auto parsed = text ? platform::ParseGuid(*text) : std::nullopt;
        if (!parsed)
            return CO_E_CLASSSTRING;
        *clsid = *parsed;
        return S_OK;
    });
}
