#pragma once
// Makes the system refuse, for the length of a scope, so that tests meet the failures that a full machine brings.
// For the whole process: other threads of the test should stand still meanwhile.

#include <cstdint>

namespace platform_tests {

// No file, event or socket can be opened.
class CNoMoreDescriptors {
public:
    CNoMoreDescriptors();
    ~CNoMoreDescriptors();
    CNoMoreDescriptors(const CNoMoreDescriptors&) = delete;
    CNoMoreDescriptors& operator=(const CNoMoreDescriptors&) = delete;

private:
    std::uint64_t m_Limit;
};

// The process cannot grow by more than this many bytes of address space.
class CAddressSpaceLimit {
public:
    explicit CAddressSpaceLimit(std::uint64_t growth);
    ~CAddressSpaceLimit();
    CAddressSpaceLimit(const CAddressSpaceLimit&) = delete;
    CAddressSpaceLimit& operator=(const CAddressSpaceLimit&) = delete;

private:
    std::uint64_t m_Limit;
};

// Descriptors that the process has open.
[[nodiscard]] int OpenDescriptors();
// Behind its owner's back, so that the owner's own attempt fails.
void CloseDescriptor(int descriptor);
// Readable right now.
[[nodiscard]] bool IsDescriptorReadable(int descriptor);
// Waits until it is; false when the milliseconds are over.
bool WaitReadable(int descriptor, int milliseconds);

} // namespace platform_tests
