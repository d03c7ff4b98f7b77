#include "Database.h"

#include "platform/com/activation.h"

namespace IDM_dmFirebird {

namespace {

constexpr platform::tagClassEntry Classes[] = {
    {CLSID_dmDatabase, &platform::CreatePlain<CdmDatabase>},
};

const platform::CModuleClasses& ModuleClasses() {
    static const platform::CModuleClasses classes(Classes);
    return classes;
}

// Offers the classes as soon as the module is loaded.
[[maybe_unused]] const platform::CModuleClasses& Offered = ModuleClasses();

// Behind a name of this module's own: the loader binds calls of an exported function to the first module that has
// one of that name.
HRESULT GetClassObjectOfThisModule(REFCLSID clsid, REFIID iid, void** object) {
    return ModuleClasses().GetClassObject(clsid, iid, object);
}

} // namespace

} // namespace IDM_dmFirebird

extern "C" HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return IDM_dmFirebird::GetClassObjectOfThisModule(clsid, iid, object);
}
