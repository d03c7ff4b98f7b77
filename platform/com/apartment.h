// A thread's apartment: where the objects made on it are called.
//
// Here it is the thread's message queue, which is there from the first CoInitialize on, so that others can send to
// the thread; nothing is marshalled. Calls are counted per thread, and each that did not fail is paired with a
// CoUninitialize on the same thread. The queue stays until the thread ends.
#pragma once

#include "platform/com/types.h"

// S_OK the first time on a thread, S_FALSE after that; E_INVALIDARG unless `reserved` is null; E_OUTOFMEMORY when
// the system has no queue to give.
HRESULT CoInitialize(void* reserved);
// Without effect on a thread without an apartment.
void CoUninitialize();
