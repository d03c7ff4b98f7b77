#include "platform/interrupt.h"

#include "platform/message_queue.h"
#include "platform/posix/descriptor.h"

#include <array>
#include <csignal>
#include <pthread.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <system_error>

namespace platform {

namespace {

constexpr std::array Requests{SIGINT, SIGTERM};

std::atomic<bool> g_Watched{false};
std::atomic<bool> g_Requested{false};
std::atomic<int> g_Bell{-1};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void Ring() noexcept {
    RetryInterrupted([] { return eventfd_write(g_Bell, 1); });
}

void OnRequest(int) {
    const int error = errno;
    g_Requested = true;
    Ring();
    errno = error;
}

// Kept until the process ends: a handler may be about to ring while its watch goes.
void OpenBell() {
    static const CDescriptor bell(eventfd(0, EFD_CLOEXEC));
    if (!bell.IsOpen())
        throw std::system_error(errno, std::generic_category(), "cannot watch for interrupts");
    g_Bell = bell.Get();
}

void AwaitBell() {
    eventfd_t count = 0;
    RetryInterrupted([&] { return eventfd_read(g_Bell, &count); });
}

// Requests are handled by the threads that were there before.
class CNoSignals {
public:
    CNoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_Previous);
    }
    ~CNoSignals() { pthread_sigmask(SIG_SETMASK, &m_Previous, nullptr); }
    CNoSignals(const CNoSignals&) = delete;
    CNoSignals& operator=(const CNoSignals&) = delete;

private:
    sigset_t m_Previous;
};

} // namespace

// The handlers of the requests, as long as it lives.
class CInterruptWatch::CTakeOver {
public:
    CTakeOver() {
        if (g_Watched.exchange(true))
            throw std::logic_error("interrupts are watched already");
        g_Requested = false;
    }
    ~CTakeOver() {
        GiveBack();
        g_Watched = false;
    }
    CTakeOver(const CTakeOver&) = delete;
    CTakeOver& operator=(const CTakeOver&) = delete;

    void Take() {
        struct sigaction action {};
        action.sa_handler = OnRequest;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        for (std::size_t i = 0; i < Requests.size(); ++i)
            sigaction(Requests[i], &action, &m_Previous[i]);
        m_Taken = true;
    }
    void GiveBack() noexcept {
        for (std::size_t i = 0; m_Taken && i < Requests.size(); ++i)
            sigaction(Requests[i], &m_Previous[i], nullptr);
        m_Taken = false;
    }

private:
    bool m_Taken = false;
    std::array<struct sigaction, Requests.size()> m_Previous{};
};

CInterruptWatch::CInterruptWatch(int exitCode) : m_TakeOver(std::make_unique<CTakeOver>()) {
    OpenBell();
    const CMessageQueueHandle loop = CMessageQueueHandle::Current();
    if (!loop)
        throw std::system_error(errno, std::generic_category(), "cannot watch for interrupts");
    {
        const CNoSignals none;
        // A queue's lock is nothing for a handler of signals.
        m_Thread = std::thread([this, loop, exitCode] {
            while (!m_Ending) {
                AwaitBell();
                if (!g_Requested.exchange(false))
                    continue;
                m_Interrupted = true;
                loop.PostQuit(exitCode);
            }
        });
    }
    m_TakeOver->Take();
}

CInterruptWatch::~CInterruptWatch() {
    m_TakeOver->GiveBack();
    m_Ending = true;
    Ring();
    m_Thread.join();
}

} // namespace platform
