#pragma once
// An open file of the system, closed at the end.

#include <cerrno>
#include <unistd.h>

#include <utility>

namespace platform {

class CDescriptor {
public:
    explicit CDescriptor(int descriptor = -1) noexcept : m_Descriptor(descriptor) {}
    CDescriptor(CDescriptor&& other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept {
        std::swap(m_Descriptor, other.m_Descriptor);
        return *this;
    }
    ~CDescriptor() {
        if (IsOpen())
            close(m_Descriptor);
    }

    [[nodiscard]] bool IsOpen() const noexcept { return m_Descriptor >= 0; }
    [[nodiscard]] int Get() const noexcept { return m_Descriptor; }
    [[nodiscard]] int Detach() noexcept { return std::exchange(m_Descriptor, -1); }

private:
    int m_Descriptor;
};

// Repeats a system call as long as a signal interrupts it.
template <class Call>
auto RetryInterrupted(Call call) noexcept(noexcept(call())) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace platform
