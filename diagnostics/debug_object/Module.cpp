// The exports of the debug library.

#include "RootObject.h"
#include "platform/com/activation.h"

#include <array>
#include <exception>

namespace {

constexpr std::array ClassTable{
    platform::tagClassEntry{IDM_BugSlayerUtil::DebugObjectClass, &platform::CreatePlain<DebugLog::CRootObject>}};

const platform::CModuleClasses Classes(ClassTable);

} // namespace

extern "C" HRESULT BS_InitObject(IDM_BugSlayerUtil::IDebugObject** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    try {
        *object = platform::MakeObject<DebugLog::CRootObject>().Detach();
        return S_OK;
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}

extern "C" HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return Classes.GetClassObject(clsid, iid, object);
}
