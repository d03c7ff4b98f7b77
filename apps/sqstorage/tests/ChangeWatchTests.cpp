// Being told of changes, from within the process that makes them: the part by itself, and the command that uses it.
#include "apps/sqstorage/store/ChangeWatch.h"

#include "HostFixture.h"
#include "apps/sqstorage/CommandLine.h"
#include "apps/sqstorage/store/ChangeKinds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxStorageSmartNotify.h"
#include "platform/message_queue.h"

#include <gmock/gmock.h>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

using IDM_qxStorage::IqxStorageSmartNotify;
using sqCli::CChangeWatch;
using sqCli::CStore;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using tests::CComPtr;

class ChangeWatch : public tests::HostTest {
protected:
    using Change = std::pair<ULONG, LONG>;

    // A change of each kind, in an instance of its own.
    static void RaiseAll() {
        CComPtr<tests::IqxStorage> storage;
        ASSERT_EQ(S_OK, tests::CStorageHost::Create(storage));
        ASSERT_EQ(S_OK, storage.As<IqxStorageSmartNotify>()->SendNotify(static_cast<LONG>(sqCli::AllChanges)));
    }
    CChangeWatch::Tell Note() {
        return [this](ULONG mask, LONG value) { m_Changes.emplace_back(mask, value); };
    }

    std::vector<Change> m_Changes;
};

TEST_F(ChangeWatch, OnlyTheKindsOfTheMaskAreToldAndEachByItself) {
    CStore store;
    CChangeWatch watch(store, sqCli::ParseChangeMask("settings,0x80008"), Note());
    RaiseAll();
    EXPECT_THAT(m_Changes, IsEmpty()) << "not before the messages are dispatched";
    watch.Deliver();
    EXPECT_THAT(m_Changes, ElementsAre(Change(0x8, 0), Change(0x20, 0), Change(0x80000, 0)));
}

TEST_F(ChangeWatch, EndsWithItsObject) {
    CStore store;
    { const CChangeWatch watch(store, sqCli::AllChanges, Note()); }
    RaiseAll();
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Changes, IsEmpty());
}

TEST_F(ChangeWatch, ACallOfTheStoreDeliversWhatItRaised) {
    CStore store;
    const CChangeWatch watch(store, 0x8, Note());
    LONG key = 0;
    store.Run(
        [&](tests::IqxStorage& storage) { return storage.InsertHoliday(tests::CBstr(L"Watched").Get(), &key); });
    EXPECT_THAT(m_Changes, ElementsAre(Change(0x8, 0)));
}

TEST_F(ChangeWatch, RunTellsWhatComesUntilTheLoopIsEnded) {
    CStore store;
    CChangeWatch watch(store, 0x18, Note());
    std::thread other([queue = platform::CMessageQueueHandle::Current()] {
        RaiseAll();
        EXPECT_TRUE(queue.PostQuit(0));
    });
    watch.Run();
    other.join();
    EXPECT_THAT(m_Changes, ElementsAre(Change(0x8, 0), Change(0x10, 0)));
}

TEST_F(ChangeWatch, RunRaisesAgainWhatTheTellingRaisedAndTellsNoMore) {
    CStore store;
    CChangeWatch watch(store, 0x18, [&](ULONG mask, LONG value) {
        m_Changes.emplace_back(mask, value);
        if (mask == 0x10)
            throw std::runtime_error("the output is gone");
    });
    std::thread other(RaiseAll);
    try {
        watch.Run();
        ADD_FAILURE() << "nothing was raised";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("the output is gone", error.what());
    }
    other.join();
    RaiseAll();
    EXPECT_NO_THROW(watch.Deliver());
    EXPECT_THAT(m_Changes, ElementsAre(Change(0x8, 0), Change(0x10, 0)));
}

TEST_F(ChangeWatch, TheCommandTellsTheKindsOfItsMask) {
    // Once the command dispatches: a change of each kind, and the end.
    struct CChanger : platform::CMessageWindow {
        bool ProcessWindowMessage(DWORD, std::uintptr_t, std::uintptr_t, std::intptr_t&, DWORD) override {
            RaiseAll();
            platform::PostQuitMessage(0);
            return true;
        }
    };
    CChanger changer;
    ASSERT_TRUE(changer.Create());
    ASSERT_TRUE(changer.Handle().Post(platform::UserMessage));
    const char* const arguments[] = {"sqstorage", "--quiet", "--format", "csv", "watch", "--mask", "0x20,holidays"};
    testing::internal::CaptureStdout();
    const int status = sqCli::RunCommandLine(std::size(arguments), arguments);
    EXPECT_EQ(0, status);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                MatchesRegex("TIME,CHANGE,VALUE\r?\n[^,]*,holidays,0\r?\n[^,]*,settings,0\r?\n"));
}

} // namespace
