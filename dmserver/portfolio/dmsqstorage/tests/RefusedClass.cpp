#include "RefusedClass.h"

#include <atomic>

namespace {

struct tagRefusal {
    CLSID Class;
    HRESULT Status;
};

std::atomic<const tagRefusal*> g_Refusal{nullptr};

} // namespace

namespace tests {

CRefusedClass::CRefusedClass(REFCLSID clsid, HRESULT status) {
    static tagRefusal refusal;
    refusal = {clsid, status};
    g_Refusal = &refusal;
}

CRefusedClass::~CRefusedClass() { g_Refusal = nullptr; }

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
    return FAILED(status) ? status : factory->CreateInstance(outer, iid, object);
}
