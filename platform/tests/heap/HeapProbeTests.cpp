// What the tests that count and refuse allocations go by.
#include "platform/tests/heap/HeapProbe.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

namespace {

// A size that the compiler does not know, or it would warn of it.
std::size_t AllBut(std::size_t bytes) {
    volatile std::size_t most = std::numeric_limits<std::size_t>::max();
    return most - bytes;
}

TEST(HeapProbe, CountsWhatIsTakenAndNotGivenBack) {
    const std::size_t bytes = HeapProbe::BytesInUse();
    const std::size_t count = HeapProbe::Allocations();
    void* const block = ::operator new(1000);
    EXPECT_EQ(HeapProbe::BytesInUse(), bytes + 1000);
    EXPECT_EQ(HeapProbe::Allocations(), count + 1);
    ::operator delete(block);
    EXPECT_EQ(HeapProbe::BytesInUse(), bytes);
    EXPECT_EQ(HeapProbe::Allocations(), count + 1);
}

TEST(HeapProbe, RefusesWhatTheJudgeRefuses) {
    void* small = nullptr;
    void* large = nullptr;
    {
        const HeapProbe::CJudged judged([](std::size_t size) { return size < 1000; });
        small = ::operator new(999, std::nothrow);
        large = ::operator new(1000, std::nothrow);
    }
    EXPECT_NE(small, nullptr);
    EXPECT_EQ(large, nullptr);
    ::operator delete(small);
    ::operator delete(large);
}

// What stands before a block must not make a size beyond all memory a small one.
TEST(HeapProbe, RefusesASizeThatLeavesNoRoomForItsHeader) {
    const std::size_t count = HeapProbe::Allocations();
    void* const block = ::operator new(AllBut(4), std::nothrow);
    EXPECT_EQ(block, nullptr);
    ::operator delete(block);
    EXPECT_EQ(HeapProbe::Allocations(), count);
    EXPECT_THROW(::operator delete(::operator new(AllBut(0))), std::bad_alloc);
}

} // namespace
