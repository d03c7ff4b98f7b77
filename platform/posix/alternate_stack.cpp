#include "platform/posix/alternate_stack.h"

#include <csignal>
#include <sys/mman.h>
#include <unistd.h>

namespace platform {

namespace {

class CAlternateStack {
public:
    CAlternateStack() noexcept {
        stack_t present{};
        if (sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0)
            return; // a sanitizer or the host has given it one
        void* const memory =
            mmap(nullptr, Size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (memory == MAP_FAILED)
            return;
        m_Memory = memory;
        // The lowest page stays untouchable, so that running over this stack too is a fault and not a corruption.
        const auto guard = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        mprotect(memory, guard, PROT_NONE);
        const stack_t mine{.ss_sp = static_cast<char*>(memory) + guard, .ss_flags = 0, .ss_size = Size - guard};
        sigaltstack(&mine, nullptr);
    }
    ~CAlternateStack() {
        if (m_Memory == nullptr)
            return;
        stack_t present{};
        const bool isMine = sigaltstack(nullptr, &present) == 0 && present.ss_sp > m_Memory &&
                            present.ss_sp < static_cast<char*>(m_Memory) + Size;
        const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
        if (isMine)
            sigaltstack(&none, nullptr);
        munmap(m_Memory, Size);
    }
    CAlternateStack(const CAlternateStack&) = delete;
    CAlternateStack& operator=(const CAlternateStack&) = delete;

private:
    // Filters write logs; the system's minimum is for handlers that set a flag.
    static constexpr std::size_t Size = std::size_t{256} * 1024;

    void* m_Memory = nullptr;
};

} // namespace

void EnsureAlternateStack() noexcept { thread_local const CAlternateStack stack; }

} // namespace platform
