#include "platform/event.h"

#include "platform/last_error.h"
#include "platform/tests/support/ProcessLimits.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

namespace platform {
namespace {

CEvent MakeEvent(EEventReset reset, bool signalled = false) {
    auto event = CEvent::Create(reset, signalled);
    EXPECT_TRUE(event);
    return std::move(*event);
}

TEST(Event, AutomaticLetsOneWaitThrough) {
    CEvent event = MakeEvent(EEventReset::Automatic);
    EXPECT_EQ(event.Wait(0), WaitTimeout);
    EXPECT_TRUE(event.Set());
    EXPECT_TRUE(event.Set());
    EXPECT_EQ(event.Wait(Infinite), WaitSignalled);
    EXPECT_EQ(event.Wait(0), WaitTimeout);
}

TEST(Event, ManualStaysSignalledUntilReset) {
    CEvent event = MakeEvent(EEventReset::Manual);
    EXPECT_TRUE(event.Set());
    EXPECT_EQ(event.Wait(Infinite), WaitSignalled);
    EXPECT_EQ(event.Wait(0), WaitSignalled);
    EXPECT_TRUE(event.Reset());
    EXPECT_EQ(event.Wait(0), WaitTimeout);
    EXPECT_TRUE(event.Reset());
}

TEST(Event, IsMadeSignalledOnRequest) {
    EXPECT_EQ(MakeEvent(EEventReset::Automatic, true).Wait(0), WaitSignalled);
    EXPECT_EQ(MakeEvent(EEventReset::Manual, true).Wait(0), WaitSignalled);
}

TEST(Event, WaitsForTheTimeGiven) {
    const CEvent event = MakeEvent(EEventReset::Automatic);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(event.Wait(20), WaitTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST(Event, CarriesWhatWasWrittenBeforeTheSignal) {
    for (const EEventReset reset : {EEventReset::Automatic, EEventReset::Manual}) {
        CEvent event = MakeEvent(reset);
        int value = 0;
        std::thread writer([&] {
            value = 42;
            event.Set();
        });
        EXPECT_EQ(event.Wait(Infinite), WaitSignalled);
        EXPECT_EQ(value, 42);
        writer.join();
    }
}

TEST(Event, AutomaticGivesEachSignalToOneOfManyWaiters) {
    CEvent event = MakeEvent(EEventReset::Automatic);
    CEvent taken = MakeEvent(EEventReset::Automatic);
    std::atomic<int> woken{0};
    const auto wait = [&] {
        EXPECT_EQ(event.Wait(Infinite), WaitSignalled);
        ++woken;
        taken.Set();
    };
    std::thread first(wait);
    std::thread second(wait);
    event.Set();
    EXPECT_EQ(taken.Wait(Infinite), WaitSignalled);
    EXPECT_EQ(woken, 1);
    event.Set();
    first.join();
    second.join();
    EXPECT_EQ(woken, 2);
}

TEST(Event, RefusesWhatNeedsAnOpenOne) {
    CEvent event = MakeEvent(EEventReset::Automatic);
    EXPECT_TRUE(event.Close());
    EXPECT_FALSE(event.IsOpen());
    EXPECT_FALSE(event.Close());
    EXPECT_FALSE(event.Set());
    EXPECT_FALSE(event.Reset());
    EXPECT_EQ(event.Wait(0), WaitFailed);
    EXPECT_EQ(WaitForEventOrMessages(&event, 0), WaitFailed);
}

TEST(Event, ReportsThatTheSystemHasNoMore) {
    std::optional<CEvent> event;
    DWORD error = 0;
    {
        const platform_tests::CNoMoreDescriptors limit;
        event = CEvent::Create(EEventReset::Automatic, false);
        error = GetLastError();
    }
    EXPECT_FALSE(event);
    EXPECT_EQ(error, static_cast<DWORD>(EMFILE));
}

TEST(Event, GivesItsDescriptorBack) {
    const int before = platform_tests::OpenDescriptors();
    {
        CEvent event = MakeEvent(EEventReset::Automatic);
        CEvent moved = std::move(event);
        EXPECT_FALSE(event.IsOpen());
        moved = MakeEvent(EEventReset::Manual);
        EXPECT_TRUE(moved.IsOpen());
    }
    EXPECT_EQ(platform_tests::OpenDescriptors(), before);
}

} // namespace
} // namespace platform
