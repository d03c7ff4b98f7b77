#include "platform/com/apartment.h"

#include "platform/message_queue.h"

namespace {

thread_local int t_Calls = 0;

} // namespace

HRESULT CoInitialize(void* reserved) {
    if (reserved != nullptr)
        return E_INVALIDARG;
    if (!platform::OpenMessageQueue())
        return E_OUTOFMEMORY;
    return t_Calls++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
    if (t_Calls > 0)
        --t_Calls;
}
