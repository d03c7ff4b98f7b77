#pragma once
// What can be said of memory without touching it.

#include <cstddef>

namespace platform {

// Can the calling process read these bytes? Asks the system, so that a bad address does no harm. Where the system
// does not answer, every address but null passes.
[[nodiscard]] bool IsReadable(const void* address, std::size_t size) noexcept;

} // namespace platform
