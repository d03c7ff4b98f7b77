#include "platform/tests/support/ProcessLimits.h"

#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

namespace platform_tests {

namespace {

std::uint64_t SetLimit(__rlimit_resource_t resource, std::uint64_t value) {
    rlimit limit{};
    getrlimit(resource, &limit);
    const std::uint64_t old = limit.rlim_cur;
    limit.rlim_cur = value;
    setrlimit(resource, &limit);
    return old;
}

std::uint64_t AddressSpace() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

CNoMoreDescriptors::CNoMoreDescriptors() : m_Limit(SetLimit(RLIMIT_NOFILE, 0)) {}
CNoMoreDescriptors::~CNoMoreDescriptors() { SetLimit(RLIMIT_NOFILE, m_Limit); }

CAddressSpaceLimit::CAddressSpaceLimit(std::uint64_t growth)
    : m_Limit(SetLimit(RLIMIT_AS, AddressSpace() + growth)) {}
CAddressSpaceLimit::~CAddressSpaceLimit() { SetLimit(RLIMIT_AS, m_Limit); }

int OpenDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

void CloseDescriptor(int descriptor) { close(descriptor); }

bool IsDescriptorReadable(int descriptor) { return WaitReadable(descriptor, 0); }

bool WaitReadable(int descriptor, int milliseconds) {
    pollfd entry{.fd = descriptor, .events = POLLIN, .revents = 0};
    return poll(&entry, 1, milliseconds) == 1 && (entry.revents & POLLIN) != 0;
}

} // namespace platform_tests
