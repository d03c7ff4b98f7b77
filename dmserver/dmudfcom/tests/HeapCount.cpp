#include "HeapCount.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t HeaderSize = alignof(std::max_align_t);
std::atomic<std::size_t> Bytes{0};
std::atomic<std::size_t> Allocations{0};

void* TryTake(std::size_t size) noexcept {
    void* block = std::malloc(size + HeaderSize);
    if (!block)
        return nullptr;
    std::memcpy(block, &size, sizeof(size));
    Bytes += size;
    ++Allocations;
    return static_cast<std::byte*>(block) + HeaderSize;
}

void* Take(std::size_t size) {
    if (void* pointer = TryTake(size))
        return pointer;
    throw std::bad_alloc();
}

void Give(void* pointer) {
    if (!pointer)
        return;
    void* block = static_cast<std::byte*>(pointer) - HeaderSize;
    std::size_t size;
    std::memcpy(&size, block, sizeof(size));
    Bytes -= size;
    std::free(block);
}

} // namespace

void* operator new(std::size_t size) { return Take(size); }
void* operator new[](std::size_t size) { return Take(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return TryTake(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return TryTake(size); }
void operator delete(void* pointer) noexcept { Give(pointer); }
void operator delete[](void* pointer) noexcept { Give(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { Give(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { Give(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept { Give(pointer); }
void operator delete[](void* pointer, const std::nothrow_t&) noexcept { Give(pointer); }

namespace dmudfcom_tests {

std::size_t HeapBytes() { return Bytes; }
std::size_t HeapAllocations() { return Allocations; }

} // namespace dmudfcom_tests
