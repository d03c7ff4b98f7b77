// The steps of a stop and of an end, seen from the storage, from the facade, and from within.

#include "CountingStorage.h"
#include "Help.h"
#include "unicomp/LocalRPC/interface/LocalRPC.h"

#include <memory>
#include <thread>
#include <vector>

namespace LocalRPC {

// What no public function shows, or breaks.
template <class Key, typename Key::Member Pointer>
struct CPrivateMember {
    friend typename Key::Member MemberOf(Key) { return Pointer; }
};

struct References {
    using Member = std::atomic<LONG> details::IAOTransport::*;
    friend Member MemberOf(References);
};
template struct CPrivateMember<References, &details::IAOTransport::m_References>;

struct SharedRun {
    using Member = std::shared_ptr<details::CThreadRun> details::CThreadBase::*;
    friend Member MemberOf(SharedRun);
};
template struct CPrivateMember<SharedRun, &details::CThreadBase::m_Run>;

struct OwnThread {
    using Member = platform::CThreadHandle details::CThreadBase::*;
    friend Member MemberOf(OwnThread);
};
template struct CPrivateMember<OwnThread, &details::CThreadBase::m_Thread>;

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ThreadTransportSteps : public CRecordedTest {
protected:
    // The object's thread is within a task from here until mayEnd is opened.
    void Occupy(
        details::IAOTransport& transport, std::function<void()> atTheEnd = [] {}) {
        EXPECT_TRUE(transport.Post(MakeAsyncTask([this, atTheEnd = std::move(atTheEnd)] {
            m_Begun.Open();
            m_MayEnd.Pass();
            atTheEnd();
        })));
        m_Begun.Pass();
    }

    CGate m_Begun;
    CGate m_MayEnd;
    std::vector<int> m_Notes; // by the object's thread
    boost::intrusive_ptr<CCountingThread> m_Transport{new CCountingThread};
};

TEST_F(ThreadTransportSteps, TheStorageIsToldAfterEachTask) {
    std::vector<int> doneBefore;
    const auto note = [&] { doneBefore.push_back(m_Transport->Storage.Done); };
    m_Transport->Post(MakeAsyncTask(note));
    m_Transport->Post(MakeAsyncTask([&] {
        note();
        throw 1;
    }));
    m_Transport->Post(MakeSyncTask(note));
    EXPECT_TRUE(m_Transport->Stop(false, false));
    EXPECT_THAT(doneBefore, ElementsAre(0, 1, 2));
    EXPECT_EQ(m_Transport->Storage.Done, 3);
}

TEST_F(ThreadTransportSteps, AStopThatBlocksDoesNotClearForThat) {
    Occupy(*m_Transport);
    m_Transport->Post(MakeAsyncTask([&] { m_Notes.push_back(1); }));
    std::thread stopper([&] { EXPECT_TRUE(m_Transport->StopEx(false, platform::Infinite, true)); });
    while (!m_Transport->IsBlocked())
        std::this_thread::yield();
    m_MayEnd.Open();
    stopper.join();
    EXPECT_THAT(m_Notes, ElementsAre(1));
    EXPECT_EQ(m_Transport->Storage.Cleared, 0);
}

TEST_F(ThreadTransportSteps, AStopWithoutBlockLeavesItUnblocked) {
    m_Transport->Post(nullptr);
    EXPECT_TRUE(m_Transport->StopEx(true, platform::Infinite, false));
    EXPECT_FALSE(m_Transport->IsBlocked());
    EXPECT_EQ(m_Transport->Storage.Cleared, 1);
}

TEST_F(ThreadTransportSteps, ABlockedOneRefusesBothKindsFromItsOwnTasks) {
    m_Transport->Post(MakeAsyncTask([&] {
        m_Transport->Block(false);
        EXPECT_FALSE(m_Transport->Post(MakeAsyncTask([&] { m_Notes.push_back(1); })));
        EXPECT_FALSE(m_Transport->Post(MakeSyncTask([&] { m_Notes.push_back(2); })));
    }));
    EXPECT_TRUE(m_Transport->Stop(false, false));
    EXPECT_THAT(m_Notes, IsEmpty());
}

// ---- Ends ----

struct CFacade : CActiveObject_base {
    explicit CFacade(details::IAOTransport* transport) : CActiveObject_base(transport) {}
};

TEST_F(ThreadTransportSteps, TheFacadesEndStopsWithClearAndWithoutBlock) {
    struct tagStop {
        bool Clear;
        ULONG Timeout;
        bool Block;
        bool operator==(const tagStop&) const = default;
    };
    struct CNotingStops : CCountingThread {
        bool StopEx(const bool clear, const ULONG timeout, const bool block) override {
            Stops.push_back({clear, timeout, block});
            return CCountingThread::StopEx(clear, timeout, block);
        }
        std::vector<tagStop> Stops;
    };
    const boost::intrusive_ptr<CNotingStops> transport(new CNotingStops);
    auto facade = std::make_unique<CFacade>(transport.get());
    Occupy(*transport);
    const CTaskPtr dropped = MakeSyncTask([] { FAIL(); });
    EXPECT_TRUE(facade->Post(dropped));
    std::thread destroyer([&] { facade.reset(); });
    EXPECT_EQ(dropped->Wait(platform::Infinite, 0), platform::WaitAbandoned);
    EXPECT_FALSE(transport->IsBlocked());
    m_MayEnd.Open();
    destroyer.join();
    EXPECT_THAT(transport->Stops, ElementsAre(tagStop{true, platform::Infinite, false}));
    EXPECT_FALSE(transport->IsRunning());
}

TEST_F(ThreadTransportSteps, TheTransportsEndStopsWithClearAndBlock) {
    boost::intrusive_ptr<details::CThread> transport(new details::CThread(0));
    details::CThread* const inTask = transport.get();
    const CTaskPtr dropped = MakeSyncTask([] { FAIL(); });
    Occupy(*transport, [&] {
        EXPECT_EQ(dropped->Wait(platform::Infinite, 0), platform::WaitAbandoned);
        EXPECT_FALSE(inTask->Post(MakeAsyncTask([] { FAIL(); }))) << "blocked";
    });
    EXPECT_TRUE(transport->Post(dropped));
    m_MayEnd.Open();
    transport.reset();
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

// References that come and go in the destructor must not bring the count to 0 again.
TEST_F(ThreadTransportSteps, TheCountOfATransportThatGoesIsOverwritten) {
    struct CCountedAtItsEnd : CCountingThread {
        explicit CCountedAtItsEnd(std::vector<LONG>& counts) : Counts(&counts) {}
        ~CCountedAtItsEnd() override {
            Counts->push_back(this->*MemberOf(References{}));
            const boost::intrusive_ptr<IAOTransport> again(this);
        }
        std::vector<LONG>* Counts;
    };
    std::vector<LONG> counts;
    boost::intrusive_ptr<CCountedAtItsEnd> transport(new CCountedAtItsEnd(counts));
    EXPECT_EQ((*transport).*MemberOf(References{}), 1);
    transport.reset();
    EXPECT_THAT(counts, ElementsAre(static_cast<LONG>(0xC0000001U)));
}

// ---- What the system may refuse ----

TEST_F(ThreadTransportSteps, AnErrorWithoutATextOfTheSystemIsUnknown) {
    EXPECT_EQ(details::ThreadErrorText(11), "Resource temporarily unavailable");
    EXPECT_EQ(details::ThreadErrorText(0x8007000B), "Resource temporarily unavailable");
    EXPECT_EQ(details::ThreadErrorText(0x80004005), "create thread unknown error");
}

TEST_F(ThreadTransportSteps, AThreadWhoseEndIsNotToldIsReported) {
    Occupy(*m_Transport);
    // The wait for it fails at once, and the one for the thread itself lasts.
    ((*m_Transport).*MemberOf(SharedRun{}))->StatusEvent._free();
    std::thread stopper([&] { EXPECT_FALSE(m_Transport->Stop(false, false)); });
    while (Recorder::Asserts().empty())
        std::this_thread::yield();
    m_MayEnd.Open();
    stopper.join();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"eCSStop==_cs"));
    EXPECT_FALSE(m_Transport->IsRunning());
}

TEST_F(ThreadTransportSteps, AThreadThatCannotBeWaitedForIsReported) {
    EXPECT_TRUE(m_Transport->Post(nullptr));
    const auto run = (*m_Transport).*MemberOf(SharedRun{});
    EXPECT_TRUE(((*m_Transport).*MemberOf(OwnThread{})).Close());
    EXPECT_TRUE(m_Transport->Stop(false, false));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"((DWORD)0xFFFFFFFF)!=wfsoRes", L"_ch_result"));
    EXPECT_FALSE(m_Transport->IsRunning());
    // The thread lets go of what it shares when it is through.
    while (run.use_count() > 2)
        std::this_thread::yield();
}

} // namespace
} // namespace LocalRPC
