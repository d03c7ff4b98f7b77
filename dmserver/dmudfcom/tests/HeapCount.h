// What this test program has on the heap through new, counted at every allocation.
#pragma once

#include <cstddef>

namespace dmudfcom_tests {

std::size_t HeapBytes();
std::size_t HeapAllocations(); // since the program began

} // namespace dmudfcom_tests
