// A module as the registry names it. It offers its classes by its export alone, so that what is found was found
// through the registry.
#include "platform/com/activation.h"
#include "platform/com/tests/Thing.h"
#include "platform/com/tests/modules/Classes.h"

namespace {

using namespace platform;
using namespace platform::tests;

class CModulePart final : public CObject<CModulePart, ECounter::Interlocked, CDispatchImpl<IPart>> {
public:
    HRESULT get_Number(LONG* Value) override {
        *Value = NumberOfModulePart;
        return S_OK;
    }
};

class CFactory final : public CObject<CFactory, ECounter::Interlocked, IClassFactory> {
public:
    HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        return CreatePlain<CModulePart>(outer, iid, object);
    }
    HRESULT LockServer(BOOL) override { return S_OK; }
};

} // namespace

extern "C" HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    *object = nullptr;
    return clsid == ModulePartClass ? MakeObject<CFactory>()->QueryInterface(iid, object)
                                    : CLASS_E_CLASSNOTAVAILABLE;
}
