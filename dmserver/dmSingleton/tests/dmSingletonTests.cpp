#include "dmserver/dmSingleton/interface/dmSingleton.h"

#include "diagnostics/tests/recorder/Recorder.h"
#include "dmserver/dmSingleton/interface/CriticalSection.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

struct CProbe;

// Opens the owner's pointer to the tests that break it; an explicit instantiation may name private members.
struct Owned {
    using Member = std::unique_ptr<CProbe> dm::CSingleton<CProbe>::*;
    friend Member MemberOf(Owned);
};
template <class Key, typename Key::Member Pointer>
struct CPrivateMember {
    friend typename Key::Member MemberOf(Key) { return Pointer; }
};
template struct CPrivateMember<Owned, &dm::CSingleton<CProbe>::m_Object>;

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Counts its kind; fails where it is told to.
struct CProbe {
    CProbe() {
        if (FailInConstructor)
            throw std::runtime_error("constructor");
        ++Alive;
        Number = ++Made;
    }
    ~CProbe() { --Alive; }
    void FinalConstruct() {
        if (FailInFinalConstruct)
            throw std::runtime_error("final construct");
        IsStarted = true;
    }
    void FinalRelease() {
        ++Released;
        if (OnFinalRelease)
            std::exchange(OnFinalRelease, nullptr)();
        if (FailInFinalRelease)
            throw std::runtime_error("final release");
    }

    static inline std::atomic<int> Alive{0};
    static inline std::atomic<int> Made{0};
    static inline std::atomic<int> Released{0};
    static inline std::function<void()> OnFinalRelease; // once
    static inline bool FailInConstructor = false;
    static inline bool FailInFinalConstruct = false;
    static inline bool FailInFinalRelease = false;

    int Number = 0;
    bool IsStarted = false;
    int State = 0;
};

namespace {

using Handle = dm::CProcessSingleton<CProbe>;

class ProcessSingleton : public testing::Test {
protected:
    void SetUp() override {
        CProbe::FailInConstructor = CProbe::FailInFinalConstruct = CProbe::FailInFinalRelease = false;
        CProbe::Released = 0;
        ASSERT_EQ(0, CProbe::Alive);
        Recorder::Clear();
    }
    void TearDown() override { EXPECT_EQ(0, CProbe::Alive); }
};

TEST(CriticalSection, TryEnterTakesAFreeLockAndNeverWaits) {
    dm::CCriticalSection lock;
    const auto another = [&] {
        return std::async(std::launch::async,
                          [&] {
                              const bool entered = lock.TryEnter();
                              if (entered)
                                  lock.Leave();
                              return entered;
                          })
            .get();
    };
    EXPECT_TRUE(another());
    EXPECT_TRUE(lock.TryEnter());
    EXPECT_TRUE(lock.TryEnter()) << "the owner may enter again";
    lock.Leave();
    EXPECT_FALSE(another()) << "entered twice and left once";
    lock.Leave();
    EXPECT_TRUE(another());
}

TEST_F(ProcessSingleton, AHandleIsTwoBytes) { EXPECT_EQ(2U, sizeof(Handle)); }

TEST_F(ProcessSingleton, TheFirstHandleBuildsAndStartsTheObject) {
    const Handle handle(false);
    EXPECT_TRUE(handle.IsHeld());
    ASSERT_NE(nullptr, handle.GetObject());
    EXPECT_TRUE(handle.GetObject()->IsStarted);
    EXPECT_EQ(1, CProbe::Alive);
}

TEST_F(ProcessSingleton, TheObjectDiesWithTheSecondHandleInWhateverOrder) {
    for (const bool firstGoesFirst : {true, false}) {
        std::optional<Handle> first(std::in_place, false);
        std::optional<Handle> second(std::in_place, false);
        EXPECT_EQ(first->GetObject(), second->GetObject());
        (firstGoesFirst ? first : second).reset();
        EXPECT_EQ(1, CProbe::Alive);
        (firstGoesFirst ? second : first).reset();
        EXPECT_EQ(0, CProbe::Alive);
    }
    EXPECT_EQ(2, CProbe::Released);
}

TEST_F(ProcessSingleton, AfterTheLastHandleTheNextGetsANewObject) {
    int before = 0;
    {
        const Handle handle(false);
        handle.GetObject()->State = 7;
        before = handle.GetObject()->Number;
    }
    const Handle handle(false);
    EXPECT_EQ(before + 1, handle.GetObject()->Number);
    EXPECT_EQ(0, handle.GetObject()->State);
}

TEST_F(ProcessSingleton, AHandleThatMayNotCreateStaysEmpty) {
    const Handle handle(true);
    EXPECT_FALSE(handle.IsHeld());
    EXPECT_EQ(nullptr, handle.GetObject());
    EXPECT_EQ(0, CProbe::Alive);
}

TEST_F(ProcessSingleton, AHandleThatMayNotCreateAttachesToWhatIsThere) {
    std::optional<Handle> maker(std::in_place, false);
    const Handle handle(true);
    EXPECT_TRUE(handle.IsHeld());
    maker.reset();
    EXPECT_EQ(1, CProbe::Alive);
    EXPECT_NE(nullptr, handle.GetObject());
}

TEST_F(ProcessSingleton, AnEmptyHandleStaysEmptyWhenAnObjectComesLater) {
    const Handle empty(true);
    const Handle maker(false);
    EXPECT_EQ(nullptr, empty.GetObject());
}

TEST_F(ProcessSingleton, GetObjectDoesNotRaiseTheCount) {
    {
        const Handle handle(false);
        for (int i = 0; i < 10; ++i)
            EXPECT_NE(nullptr, handle.GetObject());
    }
    EXPECT_EQ(0, CProbe::Alive);
}

TEST_F(ProcessSingleton, AFailedFinalConstructIsRaisedUnderTwoTextsAndLeavesNothing) {
    CProbe::FailInFinalConstruct = true;
    EXPECT_TRUE(Recorder::Raises([] { Handle handle(false); }));
    EXPECT_EQ(0, CProbe::Alive);
    EXPECT_FALSE(Handle(true).IsHeld());
    CProbe::FailInFinalConstruct = false;
    const Handle handle(false);
    EXPECT_NE(nullptr, handle.GetObject());
}

TEST_F(ProcessSingleton, TheRaisedErrorsNameTheClass) {
    CProbe::FailInFinalConstruct = true;
    const BugSlayerUtil::CScope scope;
    scope.Guard([] { Handle handle(false); });
    const std::vector<std::wstring> errors = Recorder::Errors();
    ASSERT_EQ(1U, errors.size());
    EXPECT_THAT(errors[0], HasSubstr(L"Create dm::CSingleton<"));
    EXPECT_THAT(errors[0], HasSubstr(L"CProbe> failed"));
    EXPECT_THAT(errors[0], HasSubstr(L"CProbe::FinalConstruct failed"));
    EXPECT_THAT(errors[0], HasSubstr(L"(stdexcept: \"final construct\")"));
}

TEST_F(ProcessSingleton, AFailedConstructorLeavesNothing) {
    CProbe::FailInConstructor = true;
    EXPECT_TRUE(Recorder::Raises([] { Handle handle(false); }));
    EXPECT_FALSE(Handle(true).IsHeld());
}

TEST_F(ProcessSingleton, AFailedFinalReleaseIsReportedAndTheObjectStillDies) {
    CProbe::FailInFinalRelease = true;
    { const Handle handle(false); }
    EXPECT_EQ(0, CProbe::Alive);
    EXPECT_THAT(Recorder::Errors(), Contains(HasSubstr(L"(stdexcept: \"final release\")")));
}

TEST_F(ProcessSingleton, AReleaseWithoutAnObjectIsAnAssertion) {
    const Handle handle(true);
    EXPECT_EQ(nullptr, handle.SingletonAccess(dm::tagSIGNLETONACCESS::Release));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Singleton"));
}

TEST_F(ProcessSingleton, ACountBelowZeroIsAnAssertionAndDestroysNothing) {
    dm::CSingleton<CProbe> singleton;
    dm::CSingleton<CProbe>* out = &singleton;
    EXPECT_EQ(-1, singleton.Release(nullptr, &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(1, CProbe::Alive);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Result>=0"));
}

TEST_F(ProcessSingleton, TheLastReleaseNullsThePointerAndHandsTheSingletonOut) {
    auto singleton = std::make_unique<dm::CSingleton<CProbe>>();
    dm::CSingleton<CProbe>* instance = singleton.get();
    dm::CSingleton<CProbe>* out = nullptr;
    singleton->AddRef();
    EXPECT_EQ(0, singleton->Release(&instance, &out));
    EXPECT_EQ(nullptr, instance);
    EXPECT_EQ(singleton.get(), out);
}

TEST_F(ProcessSingleton, WithNoOutputTheLastReleaseDestroysItThere) {
    auto* singleton = std::make_unique<dm::CSingleton<CProbe>>().release();
    singleton->AddRef();
    EXPECT_EQ(0, singleton->Release(nullptr, nullptr));
    EXPECT_EQ(0, CProbe::Alive);
}

TEST_F(ProcessSingleton, AHandleWhoseObjectIsGoneBuildsItAgain) {
    const Handle handle(false);
    const int before = handle.GetObject()->Number;
    // As a second release of the same reference would leave it.
    const std::unique_ptr<dm::CSingleton<CProbe>> gone(handle.SingletonAccess(dm::tagSIGNLETONACCESS::Release));
    EXPECT_EQ(before + 1, handle.GetObject()->Number);
    EXPECT_EQ(2, CProbe::Alive);
    handle.SingletonAccess(dm::tagSIGNLETONACCESS::Get)->AddRef();
}

TEST_F(ProcessSingleton, AnOwnerWithoutItsObjectIsAnErrorForWhoeverAsksForIt) {
    const Handle handle(false);
    auto& owned = handle.SingletonAccess(dm::tagSIGNLETONACCESS::Get)->*MemberOf(Owned{});
    auto object = std::move(owned);
    const BugSlayerUtil::CScope scope;
    scope.Guard([&] { handle.GetObject(); });
    EXPECT_THAT(Recorder::Errors(), ElementsAre(L"m_Object.get()"));
    // The lock was left.
    owned = std::move(object);
    std::thread([&] { EXPECT_NE(nullptr, handle.GetObject()); }).join();
}

TEST_F(ProcessSingleton, AnOwnerThatDiesWithoutItsObjectReportsIt) {
    {
        dm::CSingleton<CProbe> singleton;
        (singleton.*MemberOf(Owned{})).reset();
    }
    EXPECT_EQ(0, CProbe::Released);
    EXPECT_THAT(Recorder::Errors(), ElementsAre(L"m_Object.get()"));
}

// While the old object is in its last call, another thread's handle does not wait and builds the next one.
TEST_F(ProcessSingleton, OldAndNewObjectsStandSideBySideWhileTheOldOneDies) {
    int old = 0;
    std::optional<Handle> next;
    std::future<void> made;
    CProbe::OnFinalRelease = [&] {
        made = std::async(std::launch::async, [&] { next.emplace(false); });
        // Only a destruction inside the lock would keep it waiting.
        EXPECT_EQ(std::future_status::ready, made.wait_for(std::chrono::seconds(20)));
        EXPECT_EQ(2, CProbe::Alive);
    };
    {
        const Handle last(false);
        old = last.GetObject()->Number;
    }
    made.wait();
    ASSERT_TRUE(next.has_value());
    EXPECT_EQ(old + 1, next->GetObject()->Number);
    EXPECT_EQ(1, CProbe::Alive);
    EXPECT_EQ(1, CProbe::Released);
}

// Reports its own life.
struct CTraced {
    CTraced() { const BugSlayerUtil::CScope scope(this); }
    ~CTraced() { const BugSlayerUtil::CScope scope(this); }
    void FinalConstruct() { const BugSlayerUtil::CScope scope(this); }
    void FinalRelease() { const BugSlayerUtil::CScope scope(this); }
};

TEST_F(ProcessSingleton, TheTracesOfLifeComeInTheirOrder) {
    { const dm::CProcessSingleton<CTraced> handle(false); }
    std::vector<std::wstring> entered;
    for (const auto& record : Recorder::RecordsOf(L"TRACE"))
        if (record.Ident == 1)
            entered.push_back(record.Function.substr(record.Function.rfind(L"::") + 2));
    // FinalConstruct and FinalRelease are called under a trace of the owner's.
    EXPECT_THAT(entered, ElementsAre(L"CTraced", L"CSingleton", L"CSingleton", L"FinalConstruct", L"~CSingleton",
                                     L"~CSingleton", L"FinalRelease", L"~CTraced"));
}

TEST_F(ProcessSingleton, LifeIsTraced) {
    { const Handle handle(false); }
    std::vector<std::wstring> entered;
    for (const auto& record : Recorder::RecordsOf(L"TRACE"))
        if (record.Ident == 1)
            entered.push_back(record.Function);
    ASSERT_EQ(4U, entered.size());
    EXPECT_THAT(entered[0], HasSubstr(L"CSingleton"));
    EXPECT_THAT(entered[2], HasSubstr(L"~CSingleton"));
}

TEST_F(ProcessSingleton, ManyThreadsShareOneObject) {
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                const Handle handle(false);
                CProbe* object = handle.GetObject();
                if (!object || !object->IsStarted || object != handle.GetObject())
                    ++wrong;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, wrong);
}

} // namespace
