// Registration of sinks and delivery of changes, on the thread that created the storage.
#include "RecordingSink.h"
#include "StorageFixture.h"
#include "platform/com/object.h"
#include "platform/message_queue.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using namespace tests;
using IDM_qxStorage::IqxStorageNotify;
using IDM_qxStorage::IqxStorageSmartNotify;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Has IDispatch and nothing else.
class CNoSink final
    : public platform::CObject<CNoSink, platform::ECounter::Interlocked,
                               platform::CDispatchImpl<IDM_qxStorage::IqxExpirationDateCalculator>> {
public:
    HRESULT Calculate(BSTR, BSTR, LONG, LONG*, LONG*) override { return E_NOTIMPL; }
};

class Notify : public StorageTest {
protected:
    void SetUp() override {
        StorageTest::SetUp();
        m_Notify = m_Storage.As<IqxStorageNotify>();
        m_Smart = m_Storage.As<IqxStorageSmartNotify>();
        platform::DispatchPendingMessages();
        Recorder::Clear();
    }
    void TearDown() override {
        for (const auto& sink : m_Sinks)
            m_Notify->UnadviseNotify(0xFFFFFFFF, sink.Get());
    }
    CComPtr<CRecordingSink> Sink() {
        m_Sinks.push_back(platform::MakeObject<CRecordingSink>());
        return m_Sinks.back();
    }
    void Deliver() { platform::DispatchPendingMessages(); }
    LONG InsertHoliday(const wchar_t* name) {
        LONG key = 0;
        EXPECT_EQ(S_OK, m_Storage->InsertHoliday(CBstr(name).Get(), &key));
        return key;
    }

    CComPtr<IqxStorageNotify> m_Notify;
    CComPtr<IqxStorageSmartNotify> m_Smart;
    std::vector<CComPtr<CRecordingSink>> m_Sinks;
};

TEST_F(Notify, AChangeReachesItsSinkOnTheCreatingThreadWhenItPumps) {
    const auto sink = Sink();
    ASSERT_EQ(S_OK, m_Notify->AdviseNotify(0x8, sink.Get()));
    std::thread([&] { InsertHoliday(L"From another thread"); }).join();
    EXPECT_THAT(sink->Calls, IsEmpty());
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x8, 0)));
    EXPECT_EQ(std::this_thread::get_id(), sink->Thread);
}

TEST_F(Notify, ADeletedCalendarIsToldTwiceAndItsDatesNot) {
    const LONG key = InsertHoliday(L"NYSE");
    Deliver();
    const auto sink = Sink();
    ASSERT_EQ(S_OK, m_Notify->AdviseNotify(0x18, sink.Get()));
    m_Storage->DeleteHoliday(key);
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x8, 0), Change(0x8, 0)));
}

TEST_F(Notify, AdviseOfNoExistingBitChangesNothing) {
    const auto sink = Sink();
    EXPECT_EQ(S_FALSE, m_Notify->AdviseNotify(0, sink.Get()));
    EXPECT_EQ(S_FALSE, m_Notify->AdviseNotify(0xFFF00000, sink.Get()));
    EXPECT_EQ(S_FALSE, m_Notify->UnadviseNotify(0xFFF00000, sink.Get()));
}

TEST_F(Notify, ASinkStandsOnceForEachBit) {
    const auto sink = Sink();
    EXPECT_EQ(S_OK, m_Notify->AdviseNotify(0x1, sink.Get()));
    EXPECT_EQ(S_FALSE, m_Notify->AdviseNotify(0x1, sink.Get()));
    EXPECT_EQ(S_OK, m_Notify->AdviseNotify(0x3, sink.Get()));
    m_Smart->SendNotify(0x3);
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x1, 0), Change(0x2, 0)));
    EXPECT_EQ(S_OK, m_Notify->UnadviseNotify(0x3, sink.Get()));
    EXPECT_EQ(S_FALSE, m_Notify->UnadviseNotify(0x3, sink.Get()));
    m_Smart->SendNotify(0x3);
    Deliver();
    EXPECT_EQ(2U, sink->Calls.size());
}

TEST_F(Notify, EachRegistrationHoldsOneReference) {
    const auto sink = Sink();
    const ULONG before = sink->Count();
    m_Notify->AdviseNotify(0x7, sink.Get());
    EXPECT_EQ(before + 3, sink->Count());
    m_Notify->AdviseNotify(0x1, sink.Get());
    EXPECT_EQ(before + 3, sink->Count());
    m_Smart->SendNotify(0x7);
    Deliver();
    EXPECT_EQ(before + 3, sink->Count());
    m_Notify->UnadviseNotify(0x2, sink.Get());
    EXPECT_EQ(before + 2, sink->Count());
    m_Notify->UnadviseNotify(0xFFFFF, sink.Get());
    EXPECT_EQ(before, sink->Count());
}

TEST_F(Notify, EveryBitIsToldByItselfInRisingOrder) {
    const auto sink = Sink();
    m_Notify->AdviseNotify(0xFFFFFFFF, sink.Get());
    m_Smart->SendNotify(-1);
    Deliver();
    std::vector<Change> expected;
    for (ULONG bit = 0; bit < 20; ++bit)
        expected.emplace_back(1U << bit, 0);
    EXPECT_EQ(expected, sink->Calls);
}

TEST_F(Notify, SendOfNoBitRunsATaskThatCallsNobody) {
    const auto sink = Sink();
    m_Notify->AdviseNotify(0xFFFFF, sink.Get());
    EXPECT_EQ(S_OK, m_Smart->SendNotify(0));
    Deliver();
    EXPECT_THAT(sink->Calls, IsEmpty());
    EXPECT_THAT(Recorder::Messages(), Contains(L"Mask = 0"));
}

TEST_F(Notify, SinksAreCalledInTheOrderOfRegistration) {
    const auto first = Sink();
    const auto second = Sink();
    std::vector<int> order;
    first->OnCall = [&](ULONG) {
        order.push_back(1);
        return S_OK;
    };
    second->OnCall = [&](ULONG) {
        order.push_back(2);
        return S_OK;
    };
    m_Notify->AdviseNotify(0x1, second.Get());
    m_Notify->AdviseNotify(0x1, first.Get());
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_THAT(order, ElementsAre(2, 1));
}

TEST_F(Notify, ASinkTakenOffLeavesTheOthersInTheirOrder) {
    std::vector<int> order;
    std::vector<CComPtr<CRecordingSink>> sinks;
    for (int number = 0; number < 4; ++number) {
        sinks.push_back(Sink());
        sinks.back()->OnCall = [&order, number](ULONG) {
            order.push_back(number);
            return S_OK;
        };
        m_Notify->AdviseNotify(0x1, sinks.back().Get());
    }
    m_Notify->UnadviseNotify(0x1, sinks[1].Get());
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_THAT(order, ElementsAre(0, 2, 3));
}

TEST_F(Notify, ASinkThatAnswersFalseIsDroppedFromAllMasksAfterTheBroadcast) {
    const auto sink = Sink();
    sink->Answer = S_FALSE;
    m_Notify->AdviseNotify(0x13, sink.Get());
    m_Smart->SendNotify(0x3);
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x1, 0), Change(0x2, 0)));
    m_Smart->SendNotify(0x13);
    Deliver();
    EXPECT_EQ(2U, sink->Calls.size());
    EXPECT_EQ(S_FALSE, m_Notify->UnadviseNotify(0xFFFFF, sink.Get()));
}

TEST_F(Notify, AnObjectThatIsNoSinkIsDroppedAtItsFirstNotification) {
    const auto object = platform::MakeObject<CNoSink>();
    EXPECT_EQ(S_OK, m_Notify->AdviseNotify(0x9, object.Get()));
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_THAT(Recorder::Messages(), Contains(L"QueryInterface hr=80004002"));
    EXPECT_EQ(S_FALSE, m_Notify->UnadviseNotify(0x1, object.Get()));
    EXPECT_EQ(S_FALSE, m_Notify->UnadviseNotify(0x8, object.Get())) << "from all masks, not only the one sent";
}

TEST_F(Notify, ANullSinkIsAcceptedAndSkipped) {
    const auto sink = Sink();
    EXPECT_EQ(S_OK, m_Notify->AdviseNotify(0x1, nullptr));
    m_Notify->AdviseNotify(0x1, sink.Get());
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x1, 0)));
    EXPECT_EQ(S_OK, m_Notify->UnadviseNotify(0x1, nullptr));
}

TEST_F(Notify, ANullSinkIsTracedAndAskedForNothing) {
    ASSERT_EQ(S_OK, m_Notify->AdviseNotify(0x1, nullptr));
    Recorder::Clear();
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_THAT(Recorder::Messages(), ElementsAre(L"Mask = 1", testing::StartsWith(L"pSink=")));
    EXPECT_EQ(S_OK, m_Notify->UnadviseNotify(0x1, nullptr)) << "it stays";
}

TEST_F(Notify, ASinkThatTakesItselfOffLetsTheNextOneMissThisNotification) {
    const auto first = Sink();
    const auto second = Sink();
    const auto third = Sink();
    for (const auto& sink : {first, second, third})
        m_Notify->AdviseNotify(0x1, sink.Get());
    first->OnCall = [&](ULONG) { return m_Notify->UnadviseNotify(0x1, first.Get()); };
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_EQ(1U, first->Calls.size());
    EXPECT_EQ(0U, second->Calls.size());
    EXPECT_EQ(1U, third->Calls.size());
}

// Who is to be dropped is looked up behind the call, at the place where the sink stood.
TEST_F(Notify, ASinkThatTakesItselfOffAndFailsHasTheNextOneDropped) {
    const auto first = Sink();
    const auto second = Sink();
    for (const auto& sink : {first, second})
        m_Notify->AdviseNotify(0x1, sink.Get());
    m_Notify->AdviseNotify(0x8, second.Get());
    first->OnCall = [&](ULONG) {
        m_Notify->UnadviseNotify(0x1, first.Get());
        return E_FAIL;
    };
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_THAT(second->Calls, IsEmpty());
    EXPECT_EQ(S_FALSE, m_Notify->UnadviseNotify(0xFFFFF, second.Get()));
    // With no next one, nobody is.
    m_Notify->AdviseNotify(0x1, second.Get());
    m_Notify->AdviseNotify(0x1, first.Get());
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_THAT(second->Calls, ElementsAre(Change(0x1, 0)));
    EXPECT_EQ(S_OK, m_Notify->UnadviseNotify(0x1, second.Get()));
}

TEST_F(Notify, ASinkAddedFromInsideACallIsToldOfThisChangeToo) {
    const auto first = Sink();
    const auto second = Sink();
    m_Notify->AdviseNotify(0x1, first.Get());
    first->OnCall = [&](ULONG) { return m_Notify->AdviseNotify(0x1, second.Get()); };
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_EQ(1U, second->Calls.size());
}

TEST_F(Notify, ASinkThatThrowsEndsTheBroadcastAndEveryoneStaysRegistered) {
    const auto dead = Sink();
    const auto thrower = Sink();
    const auto last = Sink();
    dead->Answer = S_FALSE;
    bool isFirst = true;
    thrower->OnCall = [&](ULONG) -> HRESULT {
        if (std::exchange(isFirst, false))
            throw std::runtime_error("sink");
        return S_OK;
    };
    for (const auto& sink : {dead, thrower, last})
        m_Notify->AdviseNotify(0x1, sink.Get());
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_EQ(0U, last->Calls.size());
    EXPECT_THAT(Recorder::Errors(), Contains(HasSubstr(L"(stdexcept: \"sink\")")));
    dead->Answer = S_OK;
    m_Smart->SendNotify(1);
    Deliver();
    EXPECT_EQ(2U, dead->Calls.size());
    EXPECT_EQ(1U, last->Calls.size());
}

TEST_F(Notify, RegistrationAndDeliveryAreTraced) {
    const auto sink = Sink();
    m_Notify->AdviseNotify(0x8, sink.Get());
    m_Smart->SendNotify(8);
    Deliver();
    m_Notify->UnadviseNotify(0x8, sink.Get());
    const auto messages = Recorder::Messages();
    ASSERT_EQ(6U, messages.size());
    EXPECT_THAT(messages[0], testing::StartsWith(L"AdviseNotify: Mask = 8, Sink = 0x"));
    EXPECT_EQ(L"Mask = 8", messages[1]);
    EXPECT_THAT(messages[2], testing::StartsWith(L"pSink=0x"));
    EXPECT_EQ(L"QueryInterface hr=0", messages[3]);
    EXPECT_EQ(L"DataChanged hr=0", messages[4]);
    EXPECT_THAT(messages[5], testing::StartsWith(L"UnadviseNotify: Mask = 8, Sink = 0x"));
}

TEST_F(Notify, AFailingSinkIsTakenOffWithATraceOfItsOwn) {
    const auto sink = Sink();
    sink->Answer = E_FAIL;
    m_Notify->AdviseNotify(0x8, sink.Get());
    m_Smart->SendNotify(8);
    Deliver();
    EXPECT_THAT(Recorder::Messages(), Contains(L"DataChanged hr=80004005"));
    EXPECT_THAT(Recorder::Messages(), Contains(testing::StartsWith(L"UnadviseNotifyAllMasks: Sink = 0x")));
}

TEST_F(Notify, ASinkThatFailsOnTwoBitsIsTakenOffTwice) {
    const auto sink = Sink();
    sink->Answer = E_FAIL;
    m_Notify->AdviseNotify(0x3, sink.Get());
    m_Smart->SendNotify(3);
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x1, 0), Change(0x2, 0)));
    EXPECT_THAT(Recorder::Messages(), Contains(testing::StartsWith(L"UnadviseNotifyAllMasks: Sink = 0x")).Times(2));
}

TEST_F(Notify, QueuedNotificationsAreDroppedWithTheStorage) {
    const auto sink = Sink();
    m_Notify->AdviseNotify(0x8, sink.Get());
    m_Smart->SendNotify(8);
    m_Notify.Reset();
    m_Smart.Reset();
    m_Storage.Reset();
    Deliver();
    EXPECT_THAT(sink->Calls, IsEmpty());
    EXPECT_EQ(3U, sink->AddRef()) << "the fixture's reference, this test's and the one just taken";
    sink->Release();
    ASSERT_EQ(S_OK, CStorageHost::Create(m_Storage));
    m_Notify = m_Storage.As<IqxStorageNotify>();
    m_Smart = m_Storage.As<IqxStorageSmartNotify>();
}

TEST_F(Notify, AChangeReachesAllItsSinksAcrossInstances) {
    CComPtr<IqxStorage> other;
    ASSERT_EQ(S_OK, CStorageHost::Create(other));
    const auto sink = Sink();
    other.As<IqxStorageNotify>()->AdviseNotify(0x8, sink.Get());
    InsertHoliday(L"Shared");
    Deliver();
    EXPECT_EQ(1U, sink->Calls.size());
}

TEST_F(Notify, ARenamedExchangeIsToldBehindTheDictionary) {
    LONG key = 0;
    const CBstr zone(L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000");
    const CBstr text(L"x");
    m_Storage->InsertExchange(CBstr(L"NYSE").Get(), text.Get(), 0, 20, 30, 2, text.Get(), zone.Get(), &key);
    Deliver();
    const auto sink = Sink();
    m_Notify->AdviseNotify(0xFFFFF, sink.Get());
    m_Storage->UpdateExchange(key, CBstr(L"XNYS").Get(), text.Get(), 0, 20, 30, 2, text.Get(), zone.Get());
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x4000, 0), Change(0x80, 0)));
}

TEST_F(Notify, ADeletedExchangeIsToldBehindWhatItOwned) {
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE, SETTING, SESSION) VALUES (5,20,30)");
    const auto sink = Sink();
    m_Notify->AdviseNotify(0xFFFFF, sink.Get());
    LONG deleted = 0;
    m_Storage->DeleteExchange(5, &deleted);
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x20, 0), Change(0x200, 0), Change(0x100, 0), Change(0x80, 0)));
}

TEST_F(Notify, ACurrencyIsToldWithItsId) {
    const auto currency = m_Storage.As<IDM_qxStorage::IqxCurrency>();
    const auto sink = Sink();
    m_Notify->AdviseNotify(0xFFFFF, sink.Get());
    currency->SetCurrency(7, 840);
    currency->SetCurrency(7, 978);
    currency->DeleteCurrency(-1);
    Deliver();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x80000, 7), Change(0x80000, 7), Change(0x80000, -1)));
}

// Eight threads change, advise and unadvise while this one delivers.
TEST_F(Notify, ThreadsAdviseAndUnadviseWhileChangesAreDelivered) {
    constexpr int Rounds = 50;
    std::atomic<int> running{8};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&, t] {
            // An instance is counted by one thread at a time; the calls need none of its references.
            for (int i = 0; i < Rounds; ++i) {
                const auto sink = platform::MakeObject<CRecordingSink>();
                m_Notify->AdviseNotify(0xFFFFF, sink.Get());
                m_Smart->SendNotify(1 << t);
                if (i % 10 == 0)
                    InsertHoliday(L"Changed");
                m_Notify->UnadviseNotify(0xFFFFF, sink.Get());
            }
            --running;
        });
    while (running > 0)
        Deliver();
    for (std::thread& thread : threads)
        thread.join();
    Deliver();
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

} // namespace
