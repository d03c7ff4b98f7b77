#include "platform/thread.h"

#include <pthread.h>
#include <unistd.h>

namespace platform {

namespace {

thread_local DWORD t_ThreadId = 0;

// The one thread that goes on in a forked child has another number there.
void ForgetThreadId() { t_ThreadId = 0; }

[[maybe_unused]] const int ForkWatch = pthread_atfork(nullptr, nullptr, ForgetThreadId);

} // namespace

DWORD CurrentThreadId() noexcept {
    if (t_ThreadId == 0)
        t_ThreadId = static_cast<DWORD>(gettid());
    return t_ThreadId;
}

} // namespace platform
