#include "dmAnswer.h"
#include "dmRequest.h"
#include "dmTable.h"

#include "platform/com/activation.h"

#include <array>

namespace {

using namespace IDM_dmudfcom;

constexpr std::array Classes{
    platform::tagClassEntry{CLSID_dmRequest, &platform::CreatePlain<CdmRequest>},
    platform::tagClassEntry{CLSID_dmTable, &platform::CreatePlain<CdmTable>},
    platform::tagClassEntry{CLSID_dmAnswer, &platform::CreatePlain<CdmAnswer>},
};

const platform::CModuleClasses Module{Classes};

} // namespace

// Every module exports this name, and the first one loaded would answer for all of them if the body called by name.
extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid,
                                                                            void** object) {
    return Module.GetClassObject(clsid, iid, object);
}
