#pragma once
// What a test program takes through new: counted, and refused on demand. A program that links
// sqstorage::platform_test_heap has every allocation function replaced, so that whatever one of them gives another
// takes back, under a sanitizer too. Only those for types aligned more strictly than any plain one are the
// library's own, both ways, and are neither counted nor refused.

#include <cstddef>

namespace HeapProbe {

// Of the whole program.
std::size_t BytesInUse();
std::size_t Allocations(); // since it began

// Asked before an allocation of this size; false makes it fail. It must not allocate.
using Judge = bool (*)(std::size_t size);

// Asks the judge before every allocation of this thread. One at a time.
class CJudged {
public:
    explicit CJudged(Judge judge);
    ~CJudged();
    CJudged(const CJudged&) = delete;
    CJudged& operator=(const CJudged&) = delete;
};

} // namespace HeapProbe
