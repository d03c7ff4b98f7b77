// Claims success and gives nothing.
#include "platform/com/guid.h"

extern "C" HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object);
extern "C" HRESULT DllGetClassObject(REFCLSID, REFIID, void** object) {
    *object = nullptr;
    return S_OK;
}
