#include "platform/memory.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <sys/uio.h>
#include <unistd.h>

namespace platform {

bool IsReadable(const void* address, std::size_t size) noexcept {
    if (address == nullptr)
        return size == 0;
    const int error = errno;
    bool readable = true;
    // One byte of each page will do.
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(address);
    for (std::uintptr_t at = begin; readable && at - begin < size; at = (at / page + 1) * page) {
        std::byte copy{};
        const iovec to{.iov_base = &copy, .iov_len = 1};
        const iovec from{.iov_base = reinterpret_cast<void*>(at), .iov_len = 1};
        readable = process_vm_readv(getpid(), &to, 1, &from, 1, 0) == 1 || errno != EFAULT;
    }
    errno = error;
    return readable;
}

} // namespace platform
