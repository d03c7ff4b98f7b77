// The lists of sinks by themselves, and what becomes of a storage's notifications when something is missing: the
// memory, the storage, the transport.
#include "HostFixture.h"
#include "NotifySinks.h"
#include "PrivateMember.h"
#include "RecordingSink.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/com/com_error.h"
#include "platform/message_queue.h"
#include "platform/tests/heap/HeapProbe.h"
#include "qxStorageBase.h"

#include <gmock/gmock.h>

namespace tests {

struct NotifyObject {
    using Member = LocalRPC::CActiveObject_WndMsg sqStorage::CStorage::*;
    friend Member MemberOf(NotifyObject);
};
template struct CPrivateMember<NotifyObject, &sqStorage::CStorage::m_NotifyObject>;

} // namespace tests

namespace {

using namespace tests;
using sqStorage::CNotifySinks;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Sinks = std::vector<CComPtr<CRecordingSink>>;

// As many as fill a list to the place where it must grow by much.
Sinks MakeMany() {
    Sinks sinks;
    for (int i = 0; i < 1024; ++i)
        sinks.push_back(platform::MakeObject<CRecordingSink>());
    return sinks;
}

// No memory for the growth of a list that holds MakeMany(), but for all else.
class CLittleMemory : HeapProbe::CJudged {
public:
    CLittleMemory() : CJudged([](std::size_t size) { return size < 16 * 1024; }) {}
};

// Looks at the lists whenever it is counted, which a lock held meanwhile would not survive.
class CLookingSink final : public platform::CDispatchImpl<IDM_qxStorage::IqxStorageNotifySink> {
public:
    explicit CLookingSink(const CNotifySinks& sinks) : m_Sinks(sinks) {}

    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override {
        Look();
        return ++Count;
    }
    ULONG Release() override {
        Look();
        return --Count;
    }
    HRESULT DataChanged(ULONG, LONG) override { return S_OK; }

    ULONG Count = 0;
    int Looks = 0;

private:
    void Look() {
        CNotifySinks::Sink sink;
        m_Sinks.At(0, 0, sink);
        ++Looks;
    }

    const CNotifySinks& m_Sinks;
};

TEST(NotifySinks, NoLockIsHeldWhileASinkIsCounted) {
    CNotifySinks sinks;
    const auto first = platform::MakeObject<CRecordingSink>();
    CLookingSink looking(sinks);
    EXPECT_TRUE(sinks.Add(0, first.Get()));
    EXPECT_TRUE(sinks.Add(0, &looking));
    EXPECT_FALSE(sinks.Add(0, &looking));
    EXPECT_EQ(1U, looking.Count);
    EXPECT_TRUE(sinks.Remove(0, &looking));
    EXPECT_FALSE(sinks.Remove(0, &looking));
    EXPECT_EQ(0U, looking.Count);
    EXPECT_GE(looking.Looks, 4);
}

TEST(NotifySinks, AListThatCannotGrowRaisesOutOfMemoryAndStaysAsItWas) {
    CNotifySinks sinks;
    const Sinks many = MakeMany();
    for (const auto& sink : many)
        ASSERT_TRUE(sinks.Add(3, sink.Get()));
    const auto last = platform::MakeObject<CRecordingSink>();
    {
        const CLittleMemory little;
        try {
            sinks.Add(3, last.Get());
            FAIL() << "nothing was raised";
        } catch (const platform::CComError& error) {
            EXPECT_EQ(E_OUTOFMEMORY, error.Code());
        }
    }
    EXPECT_EQ(1U, last->Count());
    CNotifySinks::Sink found;
    EXPECT_TRUE(sinks.At(3, many.size() - 1, found));
    EXPECT_EQ(many.back().Get(), found->Get());
    EXPECT_FALSE(sinks.At(3, many.size(), found));
    EXPECT_TRUE(sinks.Add(3, last.Get()));
    EXPECT_TRUE(sinks.At(3, many.size(), found));
}

class Notifications : public HostTest {
protected:
    Notifications() { Recorder::Clear(); }
    sqStorage::CStorage& Storage() { return *m_Holder.GetObject(); }
    LONG InsertHoliday() { return Storage().InsertHoliday(L"x"); }

    sqStorage::CStorageHolder m_Holder;
    CComPtr<CRecordingSink> m_Sink = platform::MakeObject<CRecordingSink>();
};

TEST_F(Notifications, AnAdviseWithoutMemoryIsReportedAndAnswersWhatItHasReached) {
    const Sinks many = MakeMany();
    for (const auto& sink : many)
        ASSERT_EQ(S_OK, Storage().AdviseNotify(0x2, sink.Get()));
    Recorder::Clear();
    {
        const CLittleMemory little;
        EXPECT_EQ(S_OK, Storage().AdviseNotify(0x7, m_Sink.Get())) << "the first bit was reached";
    }
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"the list of sinks cannot grow")));
    EXPECT_EQ(S_OK, Storage().UnadviseNotify(0x1, m_Sink.Get()));
    EXPECT_EQ(S_FALSE, Storage().UnadviseNotify(0x6, m_Sink.Get()));
    {
        const CLittleMemory little;
        EXPECT_EQ(S_FALSE, Storage().AdviseNotify(0x6, m_Sink.Get()));
    }
    EXPECT_EQ(2U, Recorder::Errors().size());
    EXPECT_EQ(S_FALSE, Storage().UnadviseNotifyAllMasks(m_Sink.Get()));
}

TEST_F(Notifications, WithoutAStorageAdviseAndUnadviseAnswerFalse) {
    const auto object = platform::MakeObject<CqxStorageBase>();
    EXPECT_EQ(S_FALSE, object->AdviseNotify(0xFFFFF, m_Sink.Get()));
    EXPECT_EQ(S_FALSE, object->UnadviseNotify(0xFFFFF, m_Sink.Get()));
    EXPECT_EQ(1U, m_Sink->Count());
}

TEST_F(Notifications, ToABlockedOrStoppedTransportAreLostAndChangesGoOn) {
    ASSERT_EQ(S_OK, Storage().AdviseNotify(0x8, m_Sink.Get()));
    auto& transport = Storage().*MemberOf(NotifyObject{});
    transport.Block(false);
    EXPECT_GT(InsertHoliday(), 0);
    platform::DispatchPendingMessages();
    transport.Stop(true, true);
    EXPECT_GT(InsertHoliday(), 0);
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Sink->Calls, IsEmpty());
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    transport.Start();
    EXPECT_GT(InsertHoliday(), 0);
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Sink->Calls, ElementsAre(Change(0x8, 0)));
    Storage().UnadviseNotify(0x8, m_Sink.Get());
}

} // namespace
