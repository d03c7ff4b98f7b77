#include "platform/com/object.h"

namespace platform {

namespace {

std::atomic<LONG>& Count() {
    static std::atomic<LONG> count{0};
    return count;
}

} // namespace

void CModuleCount::Add() { Count().fetch_add(1, std::memory_order_relaxed); }
void CModuleCount::Remove() { Count().fetch_sub(1, std::memory_order_relaxed); }
LONG CModuleCount::Value() { return Count().load(std::memory_order_relaxed); }

} // namespace platform
