#include "platform/tests/heap/HeapProbe.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

// Before each block stands its size.
constexpr std::size_t HeaderSize = alignof(std::max_align_t);
std::atomic<std::size_t> Bytes{0};
std::atomic<std::size_t> Count{0};
thread_local HeapProbe::Judge t_Judge = nullptr;

void* TryTake(std::size_t size) noexcept {
    if (t_Judge && !t_Judge(size))
        return nullptr;
    if (size > std::numeric_limits<std::size_t>::max() - HeaderSize)
        return nullptr;
    void* const block = std::malloc(size + HeaderSize);
    if (!block)
        return nullptr;
    std::memcpy(block, &size, sizeof(size));
    Bytes += size;
    ++Count;
    return static_cast<std::byte*>(block) + HeaderSize;
}

void* Take(std::size_t size) {
    if (void* const pointer = TryTake(size))
        return pointer;
    throw std::bad_alloc();
}

void Give(void* pointer) noexcept {
    if (!pointer)
        return;
    void* const block = static_cast<std::byte*>(pointer) - HeaderSize;
    std::size_t size = 0;
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

namespace HeapProbe {

std::size_t BytesInUse() { return Bytes; }
std::size_t Allocations() { return Count; }

CJudged::CJudged(Judge judge) { t_Judge = judge; }
CJudged::~CJudged() { t_Judge = nullptr; }

} // namespace HeapProbe
