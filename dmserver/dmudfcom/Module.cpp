#include "dmTable.h"

#include "platform/com/activation.h"

#include <array>

namespace {

using namespace IDM_dmudfcom;

constexpr std::array Classes{
    platform::tagClassEntry{CLSID_dmTable, &platform::CreatePlain<CdmTable>},
};

const platform::CModuleClasses Module{Classes};

} // namespace

// Every module exports this name, and the first one loaded would answer for all of them if the body called by name.
extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid,
                                                                            void** object) {
    return Module.GetClassObject(clsid, iid, object);
}
