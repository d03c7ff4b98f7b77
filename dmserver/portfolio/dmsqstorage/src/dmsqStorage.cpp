// The module: its object table and what it exports.
#include "qxStorageBase.h"

#include "platform/com/activation.h"

namespace {

constexpr platform::tagClassEntry ObjectTable[] = {
    {IDM_qxStorage::CLSID_qxStorage, &CqxStorageBase::Create},
};

const platform::CModuleClasses& Classes() {
    static const platform::CModuleClasses classes(ObjectTable);
    return classes;
}

// Offers the classes from the moment the module is loaded.
[[maybe_unused]] const auto& g_Classes = Classes();

} // namespace

extern "C" HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return Classes().GetClassObject(clsid, iid, object);
}
