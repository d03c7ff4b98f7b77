#include "platform/event.h"

#include "platform/posix/deadline.h"
#include "platform/posix/descriptor.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <utility>

namespace platform {

std::optional<CEvent> CEvent::Create(EEventReset reset, bool signalled) noexcept {
    CEvent event;
    event.m_Descriptor = eventfd(signalled ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
    event.m_Reset = reset;
    if (!event.IsOpen())
        return std::nullopt;
    return event;
}

CEvent::CEvent(CEvent&& other) noexcept
    : m_Descriptor(std::exchange(other.m_Descriptor, -1)), m_Reset(other.m_Reset) {}

CEvent& CEvent::operator=(CEvent&& other) noexcept {
    std::swap(m_Descriptor, other.m_Descriptor);
    std::swap(m_Reset, other.m_Reset);
    return *this;
}

CEvent::~CEvent() {
    if (IsOpen())
        Close();
}

bool CEvent::Close() noexcept {
    const int descriptor = std::exchange(m_Descriptor, -1);
    if (descriptor < 0)
        errno = EBADF;
    return descriptor >= 0 && close(descriptor) == 0;
}

bool CEvent::Set() noexcept {
    // Whom this wakes may close the event before the call is back.
    const int descriptor = m_Descriptor;
    m_Sets.fetch_add(1, std::memory_order_release);
    // A counter that is full is signalled as well.
    return RetryInterrupted([descriptor] { return eventfd_write(descriptor, 1); }) == 0 || errno == EAGAIN;
}

bool CEvent::Reset() noexcept {
    eventfd_t count = 0;
    return RetryInterrupted([&] { return eventfd_read(m_Descriptor, &count); }) == 0 || errno == EAGAIN;
}

bool CEvent::TakeSignal() const noexcept {
    eventfd_t count = 0;
    const bool taken =
        m_Reset == EEventReset::Manual || RetryInterrupted([&] { return eventfd_read(m_Descriptor, &count); }) == 0;
    m_Sets.load(std::memory_order_acquire);
    return taken;
}

DWORD CEvent::Wait(DWORD timeout) const noexcept {
    if (!IsOpen()) {
        errno = EBADF;
        return WaitFailed;
    }
    CDeadline deadline(timeout);
    for (;;) {
        pollfd entry{.fd = m_Descriptor, .events = POLLIN, .revents = 0};
        const int ready = ppoll(&entry, 1, deadline.Remaining(), nullptr);
        if (ready == 0)
            return WaitTimeout;
        if (ready < 0 && errno != EINTR)
            return WaitFailed;
        // Another waiter may have taken it meanwhile.
        if (ready > 0 && TakeSignal())
            return WaitSignalled;
    }
}

} // namespace platform
