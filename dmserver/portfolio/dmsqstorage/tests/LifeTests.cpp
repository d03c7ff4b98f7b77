// Beginning and end of a storage from the inside. Each test runs in a process of its own.
#include "PassingDatabase.h"
#include "PrivateMember.h"
#include "RecordingSink.h"
#include "RefusedClass.h"
#include "StorageHost.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/message_queue.h"
#include "qxStorageBase.h"

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <thread>

namespace tests {

struct Database {
    using Member = platform::CComPtr<sqStorage::IdmDatabase> sqStorage::CStorage::*;
    friend Member MemberOf(Database);
};
template struct CPrivateMember<Database, &sqStorage::CStorage::m_Database>;

} // namespace tests

namespace {

using namespace tests;
using sqStorage::CStorage;
using sqStorage::CStorageHolder;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The storage's database, but for the end of its close.
class CBadlyClosed final : public CPassingDatabase<CBadlyClosed> {
public:
    CBadlyClosed(CComPtr<IDM_dmFirebird::IdmDatabase> database, std::function<HRESULT()> end)
        : CPassingDatabase(std::move(database)), m_End(std::move(end)) {}

    HRESULT Close() override {
        CPassingDatabase::Close();
        return m_End();
    }

private:
    const std::function<HRESULT()> m_End;
};

class Life : public testing::Test {
protected:
    static HRESULT Create() {
        CComPtr<IqxStorage> storage;
        return CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid());
    }
    static long Entered(const wchar_t* function) {
        return std::ranges::count_if(Recorder::RecordsOf(L"TRACE"), [&](const auto& record) {
            return record.Ident == 1 && record.Function == function;
        });
    }
    // From the opening of a storage to its end, whose close ends like this.
    void LiveAndClose(const std::function<HRESULT()>& end) {
        m_Host.Install();
        const CStorageHolder holder;
        auto& database = holder.GetObject()->*MemberOf(Database{});
        database = platform::MakeObject<CBadlyClosed>(database, end);
        Recorder::Clear();
    }

    CStorageHost m_Host;
    CComPtr<CRecordingSink> m_Sink = platform::MakeObject<CRecordingSink>();
};

TEST_F(Life, TheWindowBelongsToTheThreadThatEndsTheConstruction) {
    std::unique_ptr<CStorage> storage;
    std::thread([&] { storage = std::make_unique<CStorage>(); }).join();
    storage->FinalConstruct();
    ASSERT_EQ(S_OK, storage->AdviseNotify(0x8, m_Sink.Get()));
    std::thread([&] { storage->BroadcastNotifyToSinks(0x8, 5); }).join();
    EXPECT_THAT(m_Sink->Calls, IsEmpty());
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Sink->Calls, ElementsAre(Change(0x8, 5)));
    EXPECT_EQ(std::this_thread::get_id(), m_Sink->Thread);
}

// The storage is started twice, and the second start clears what the first window had before it.
TEST_F(Life, TheFirstWindowIsReplaced) {
    CStorage storage;
    ASSERT_EQ(S_OK, storage.AdviseNotify(0x8, m_Sink.Get()));
    storage.BroadcastNotifyToSinks(0x8, 1);
    storage.FinalConstruct();
    storage.BroadcastNotifyToSinks(0x8, 2);
    platform::DispatchPendingMessages();
    EXPECT_THAT(m_Sink->Calls, ElementsAre(Change(0x8, 2)));
}

TEST_F(Life, ADatabaseObjectThatIsNullLeavesTheStorageStartedAndFailedForAsLongAsItLives) {
    m_Host.Install();
    const CStorageHolder holder = [] {
        const CRefusedClass null(IDM_dmFirebird::CLSID_dmDatabase, S_OK);
        return CStorageHolder();
    }();
    EXPECT_THAT(Recorder::Asserts(), Contains(L"m_Database"));
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok"));
    EXPECT_EQ(0, holder.GetObject()->DatabaseOpened());
    EXPECT_EQ(E_FAIL, Create());
    EXPECT_EQ(1, Entered(L"sqStorage::CStorage::init_impl")) << "there is no second start";
}

TEST_F(Life, AnExceptionInTheCloseIsReportedAndTheRestGoes) {
    LiveAndClose([] { return S_OK; });
    const LONG before = platform::CModuleCount::Value();
    LiveAndClose([]() -> HRESULT { throw std::runtime_error("the close"); });
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"the close")));
    const auto reports = Recorder::RecordsOf(L"ERROR");
    ASSERT_EQ(1U, reports.size());
    ASSERT_FALSE(reports.front().Inner.empty());
    EXPECT_EQ(L"sqStorage::CStorage::~CStorage", reports.front().Inner.front().Function);
    EXPECT_EQ(before, platform::CModuleCount::Value());
    EXPECT_EQ(S_OK, Create());
}

TEST_F(Life, TheStatusOfTheCloseIsNotLookedAt) {
    LiveAndClose([] { return E_FAIL; });
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_EQ(S_OK, Create());
}

} // namespace
