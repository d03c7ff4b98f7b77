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
        return m_Entry.Create(outer, iid, object);
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

// The module that the registry names for the class. It stays loaded.
HRESULT GetRegisteredClass(REFCLSID clsid, REFIID iid, void** object) {
    const auto key = CRegistryKey::Open(ERegistryRoot::Classes, L"CLSID\\" + ToText(clsid) + L"\\InprocServer32");
    const auto path = key ? key->ReadText(L"") : std::nullopt;
    if (!path)
        return REGDB_E_CLASSNOTREG;
    const auto module = CModule::Load(*path);
    if (!module)
        return REGDB_E_CLASSNOTREG;
    const auto getClassObject = reinterpret_cast<GetClassObjectFunction>(module->Symbol("DllGetClassObject"));
    return getClassObject ? getClassObject(clsid, iid, object) : CLASS_E_CLASSNOTAVAILABLE;
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
    return entry ? MakeObject<CClassFactory>(*entry)->QueryInterface(iid, object) : CLASS_E_CLASSNOTAVAILABLE;
}

} // namespace platform

HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void*, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (!(context & CLSCTX_INPROC_SERVER))
        return REGDB_E_CLASSNOTREG;
    if (const auto entry = platform::FindLoadedClass(clsid))
        return platform::MakeObject<platform::CClassFactory>(*entry)->QueryInterface(iid, object);
    return platform::GetRegisteredClass(clsid, iid, object);
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    // The loaded classes are asked without making a factory: this is on the path of every existence check.
    if (context & CLSCTX_INPROC_SERVER)
        if (const auto entry = platform::FindLoadedClass(clsid))
            return entry->Create(outer, iid, object);
    platform::CComPtr<IClassFactory> factory;
    const HRESULT status =
        CoGetClassObject(clsid, context, nullptr, platform::UuidOf<IClassFactory>, factory.PutVoid());
    return FAILED(status) ? status : factory->CreateInstance(outer, iid, object);
}

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid) {
    if (!progId || !clsid)
        return E_INVALIDARG;
    *clsid = platform::NullGuid;
    const auto key = platform::CRegistryKey::Open(platform::ERegistryRoot::Classes, std::wstring(progId) + L"\\CLSID");
    const auto text = key ? key->ReadText(L"") : std::nullopt;
    if (!text)
        return CO_E_CLASSSTRING;
    const auto parsed = platform::ParseGuid(*text);
    if (!parsed)
        return CO_E_CLASSSTRING;
    *clsid = *parsed;
    return S_OK;
}
