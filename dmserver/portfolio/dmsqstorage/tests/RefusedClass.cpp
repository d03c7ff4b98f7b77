#include "RefusedClass.h"

#include <atomic>
#include <utility>

namespace {

struct tagRefusal {
    CLSID Class;
    HRESULT Status;
};

std::atomic<const tagRefusal*> g_Refusal{nullptr};

struct tagWatched {
    CLSID Class;
    tests::CWatchedClass::Watch Watch;
};

std::atomic<const tagWatched*> g_Watched{nullptr};

} // namespace

namespace tests {

CRefusedClass::CRefusedClass(REFCLSID clsid, HRESULT status) {
    static tagRefusal refusal;
    refusal = {clsid, status};
    g_Refusal = &refusal;
}

CRefusedClass::~CRefusedClass() { g_Refusal = nullptr; }

CWatchedClass::CWatchedClass(REFCLSID clsid, Watch watch) {
    static tagWatched watched;
    watched = {clsid, std::move(watch)};
    g_Watched = &watched;
}

CWatchedClass::~CWatchedClass() { g_Watched = nullptr; }

} // namespace tests

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (const tagRefusal* refusal = g_Refusal; refusal && refusal->Class == clsid)
        return refusal->Status;
    platform::CComPtr<IClassFactory> factory;
    const HRESULT status =
        CoGetClassObject(clsid, context, nullptr, platform::UuidOf<IClassFactory>, factory.PutVoid());
    const HRESULT made = FAILED(status) ? status : factory->CreateInstance(outer, iid, object);
    const tagWatched* const watched = g_Watched;
    return made == S_OK && watched && watched->Class == clsid ? watched->Watch(object) : made;
}
