#include "unicomp/LocalRPC/interface/EventUtils.h"

#include "Help.h"

namespace MTUtils {
namespace {

using ::testing::ElementsAre;

class EventUtils : public LocalRPC::CRecordedTest {};

TEST_F(EventUtils, AnEventIsSetWaitedForAndReset) {
    CMTUEvent event(true);
    EXPECT_EQ(event.Wait(0), platform::WaitTimeout);
    EXPECT_TRUE(event.Set());
    EXPECT_EQ(event.Wait(0), platform::WaitSignalled);
    EXPECT_TRUE(event.Reset());
    EXPECT_EQ(event.Wait(0), platform::WaitTimeout);
    EXPECT_EQ(CMTUEvent(false, true).Wait(0), platform::WaitSignalled);
}

TEST_F(EventUtils, AFreedEventAnswersFalse) {
    CMTUEvent event(true);
    event._free();
    EXPECT_FALSE(event.Set());
    EXPECT_FALSE(event.Reset());
    event._free();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre());
}

TEST_F(EventUtils, AnEventThatCannotBeClosedIsReported) {
    {
        const CMTUEvent event(true);
        platform_tests::CloseDescriptor(event.Event().Descriptor());
    }
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"1==_res"));
}

TEST_F(EventUtils, AnEventThatCannotBeMadeThrows) {
    EXPECT_EQ(LocalRPC::WhatOfWithoutDescriptors<std::exception>([] { const CMTUEvent event(true); }),
              "can't create event");
    EXPECT_EQ(LocalRPC::WhatOf<std::exception>([] { const CMTUEvent event(true, false, L"name"); }),
              "can't create event");
}

TEST_F(EventUtils, AStateComesWithItsSignal) {
    CStateEvent event(false, 5);
    EXPECT_EQ(event.Wait(0), 5);
    EXPECT_TRUE(event.Set(7));
    EXPECT_EQ(event.Wait(platform::Infinite), 7);
    EXPECT_EQ(event.CMTUEvent::Wait(0), platform::WaitTimeout);
    EXPECT_FALSE(event.Change(5, 6));
    EXPECT_TRUE(event.Change(7, 6));
    EXPECT_EQ(event.State(), 6);
    EXPECT_EQ(event.CMTUEvent::Wait(0), platform::WaitTimeout);
}

} // namespace
} // namespace MTUtils
