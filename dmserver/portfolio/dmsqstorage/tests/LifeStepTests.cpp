// The steps of a storage's beginning and end, one by one. Each test runs in a process of its own.
#include "PassingDatabase.h"
#include "PrivateMember.h"
#include "RecordingSink.h"
#include "RefusedClass.h"
#include "StorageHost.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/event.h"
#include "platform/message_queue.h"
#include "qxStorageBase.h"
#include "unicomp/LocalRPC/interface/TaskFactory.h"

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace tests {

struct InitImpl {
    using Member = void (sqStorage::CStorage::*)();
    friend Member MemberOf(InitImpl);
};
template struct CPrivateMember<InitImpl, &sqStorage::CStorage::init_impl>;

struct Initialized {
    using Member = std::atomic<int> sqStorage::CStorage::*;
    friend Member MemberOf(Initialized);
};
template struct CPrivateMember<Initialized, &sqStorage::CStorage::m_Initialized>;

struct NotifyObject {
    using Member = LocalRPC::CActiveObject_WndMsg sqStorage::CStorage::*;
    friend Member MemberOf(NotifyObject);
};
template struct CPrivateMember<NotifyObject, &sqStorage::CStorage::m_NotifyObject>;

} // namespace tests

namespace {

using namespace tests;
using sqStorage::CStorage;
using sqStorage::CStorageHolder;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// The test may come between before a transaction and before the close.
class CHookedDatabase final : public CPassingDatabase<CHookedDatabase> {
public:
    using Hook = std::function<HRESULT()>;
    CHookedDatabase(CComPtr<IDM_dmFirebird::IdmDatabase> database, Hook beforeTransaction, Hook beforeClose)
        : CPassingDatabase(std::move(database)), m_BeforeTransaction(std::move(beforeTransaction)),
          m_BeforeClose(std::move(beforeClose)) {}

    HRESULT Close() override {
        m_BeforeClose();
        return CPassingDatabase::Close();
    }
    HRESULT GetTransaction(IDM_dmFirebird::IdmDatabaseTransaction** Transaction) override {
        const HRESULT status = m_BeforeTransaction();
        return status == S_OK ? CPassingDatabase::GetTransaction(Transaction) : status;
    }

private:
    const Hook m_BeforeTransaction;
    const Hook m_BeforeClose;
};

class LifeSteps : public testing::Test {
protected:
    void SetUp() override { m_Host.Install(); }

    static HRESULT Create() {
        CComPtr<IqxStorage> storage;
        return CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid());
    }
    static long Entered(std::wstring_view function) {
        return std::ranges::count_if(Recorder::RecordsOf(L"TRACE"), [&](const auto& record) {
            return record.Ident == 1 && record.Function == function;
        });
    }
    // Puts the hooks between the storages of a scope and their databases.
    static CWatchedClass::Watch Hooked(CHookedDatabase::Hook beforeTransaction, CHookedDatabase::Hook beforeClose) {
        return [=](void** made) {
            const auto database =
                CComPtr<IDM_dmFirebird::IdmDatabase>::Adopt(static_cast<IDM_dmFirebird::IdmDatabase*>(*made));
            *made = static_cast<IDM_dmFirebird::IdmDatabase*>(
                platform::MakeObject<CHookedDatabase>(database, beforeTransaction, beforeClose).Detach());
            return S_OK;
        };
    }
    static HRESULT DoNothing() { return S_OK; }
    static std::vector<HRESULT> AssertedStatuses() {
        std::vector<HRESULT> statuses;
        for (const auto& record : Recorder::RecordsOf(L"ASSERT"))
            statuses.push_back(record.Status.value_or(S_OK));
        return statuses;
    }

    CStorageHost m_Host;
};

// ---- The beginning ----

// Clients that come at the same time all queue their starts.
TEST_F(LifeSteps, AStartBehindOneThatSucceededDoesNothing) {
    CStorage storage;
    storage.FinalConstruct();
    storage.init();
    Recorder::Clear();
    (storage.*MemberOf(InitImpl{}))();
    EXPECT_EQ(1, Entered(L"sqStorage::CStorage::init_impl"));
    EXPECT_THAT(Recorder::Messages(), Not(Contains(L"init ok")));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_EQ(0, Entered(L"sqStorage::CIdGenerator::CIdGenerator"));
}

TEST_F(LifeSteps, ADatabaseThatCannotBeMadeIsReportedWithItsStatusAndTheStartGoesOn) {
    const CRefusedClass refused(IDM_dmFirebird::CLSID_dmDatabase, E_OUTOFMEMORY);
    const CStorageHolder holder;
    const auto asserts = Recorder::Asserts();
    ASSERT_LE(2U, asserts.size());
    EXPECT_EQ(L"p == 0", asserts[0]);
    EXPECT_EQ(L"m_Database", asserts[1]);
    EXPECT_EQ(E_OUTOFMEMORY, AssertedStatuses()[0]);
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok"));
    EXPECT_EQ(0, holder.GetObject()->DatabaseOpened());
    EXPECT_EQ(E_FAIL, Create());
}

TEST_F(LifeSteps, ATableForSymbolsThatCannotBeMadeIsReportedWithItsStatusAndTheStartGoesOn) {
    // Behind those of the version and of the keys.
    int tables = 0;
    const CWatchedClass watched(IDM_dmudfcom::CLSID_dmTable, [&](void** made) {
        if (++tables != 3)
            return S_OK;
        CComPtr<IdmTable>::Adopt(static_cast<IdmTable*>(*made)).Reset();
        *made = nullptr;
        return E_OUTOFMEMORY;
    });
    const CStorageHolder holder;
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"m_SymbolTable"));
    EXPECT_THAT(AssertedStatuses(), ElementsAre(E_OUTOFMEMORY));
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok"));
    EXPECT_GT(holder.GetObject()->DatabaseOpened(), 0);
}

TEST_F(LifeSteps, AStorageWhoseKeysCannotBeReadIsOpenAndMakesUpForItAtTheNextCreation) {
    int transactions = 0;
    const CWatchedClass watched(IDM_dmFirebird::CLSID_dmDatabase,
                                Hooked([&] { return ++transactions == 2 ? E_OUTOFMEMORY : S_OK; }, DoNothing));
    CComPtr<IqxStorage> first;
    EXPECT_EQ(S_OK, CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, first.PutVoid()));
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"GetTransaction")));
    EXPECT_THAT(Recorder::Messages(), Not(Contains(L"init ok")));
    LONG key = 7;
    EXPECT_EQ(S_FALSE, first->InsertHoliday(CBstr(L"Keyless").Get(), &key));
    EXPECT_EQ(0, key);
    EXPECT_EQ(S_OK, Create());
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(1));
    EXPECT_THAT(Recorder::Asserts(), Not(Contains(L"p == 0"))) << "the database is the first one";
    EXPECT_EQ(S_OK, first->InsertHoliday(CBstr(L"Kept").Get(), &key));
    EXPECT_GT(key, 0);
}

TEST_F(LifeSteps, AStorageWhoseZonesCannotBeReadIsOpenAndReadsThemAtTheNextCreation) {
    int transactions = 0;
    // Behind those of the version and of the keys.
    const CWatchedClass watched(IDM_dmFirebird::CLSID_dmDatabase,
                                Hooked([&] { return ++transactions == 3 ? E_OUTOFMEMORY : S_OK; }, DoNothing));
    const CStorageHolder holder;
    EXPECT_GT(holder.GetObject()->DatabaseOpened(), 0);
    EXPECT_EQ(0, (holder.GetObject()->*MemberOf(Initialized{})).load());
    EXPECT_THAT(Recorder::Errors(), ElementsAre(HasSubstr(L"GetTransaction")));
    EXPECT_EQ(S_OK, Create());
    EXPECT_EQ(1, (holder.GetObject()->*MemberOf(Initialized{})).load());
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(1));
    EXPECT_EQ(1, Entered(L"sqStorage::CIdGenerator::CIdGenerator"));
    EXPECT_TRUE(
        m_Host.HasPrepared(L"SELECT EXCHANGE_NAME, EXCHANGE_TIME_ZONE_INFORMATION FROM SELECT_EXCHANGE(0)"));
}

// ---- The end ----

// How much is traced tells the order: what is dropped with the queue, and the close, look at the recorder.
TEST_F(LifeSteps, AtItsEndItStopsTellingThenLetsGoOfCursorsKeysAndDatabase) {
    struct CNotesItsEnd {
        explicit CNotesItsEnd(std::vector<std::wstring>& notes) : Notes(&notes) {}
        CNotesItsEnd(CNotesItsEnd&& other) noexcept : Notes(std::exchange(other.Notes, nullptr)) {}
        ~CNotesItsEnd() {
            if (Notes != nullptr)
                Note(*Notes, L"news dropped");
        }
        void operator()() const { ADD_FAILURE() << "dropped news are not delivered"; }
        // Behind what has begun to go till now.
        static void Note(std::vector<std::wstring>& notes, const wchar_t* text) {
            for (const wchar_t* gone : {L"~CRequestes", L"~CDatabaseRequest"})
                if (Entered(std::wstring(L"sqStorage::") + (gone + 1) + L"::" + gone) > 0)
                    notes.emplace_back(gone);
            notes.emplace_back(text);
            Recorder::Clear();
        }
        std::vector<std::wstring>* Notes;
    };
    std::vector<std::wstring> notes;
    const CWatchedClass watched(IDM_dmFirebird::CLSID_dmDatabase, Hooked(DoNothing, [&] {
                                    CNotesItsEnd::Note(notes, L"close");
                                    return S_OK;
                                }));
    {
        const CStorageHolder holder;
        CStorage& storage = *holder.GetObject();
        EXPECT_TRUE((storage.*MemberOf(NotifyObject{})).Post(LocalRPC::MakeAsyncTask(CNotesItsEnd(notes))));
        Recorder::Clear();
    }
    EXPECT_THAT(notes, ElementsAre(L"news dropped", L"~CRequestes", L"~CDatabaseRequest", L"close"));
}

TEST_F(LifeSteps, AtItsEndCursorsGoBeforeTheKeys) {
    { const CStorageHolder holder; }
    std::vector<std::wstring> gone;
    for (const auto& record : Recorder::RecordsOf(L"TRACE"))
        if (record.Ident == 1 && record.Function == L"sqStorage::CRequestes::~CRequestes")
            gone = {L"cursors"};
        else if (record.Ident == 1 && record.Function == L"sqStorage::CDatabaseRequest::~CDatabaseRequest")
            gone.emplace_back(L"a request");
    EXPECT_THAT(gone, ElementsAre(L"cursors", L"a request")) << "the request is that of the keys";
}

// ---- A release while a sink runs ----

TEST_F(LifeSteps, ALastReleaseOnAnotherThreadWaitsForADeliveryWhoseSinkDispatches) {
    CComPtr<IqxStorage> storage;
    ASSERT_EQ(S_OK, CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid()));
    const auto sink = platform::MakeObject<CRecordingSink>();
    const auto behind = platform::MakeObject<CRecordingSink>();
    CComPtr<IDM_qxStorage::IqxStorageNotify> notify = storage.As<IDM_qxStorage::IqxStorageNotify>();
    ASSERT_EQ(S_OK, notify->AdviseNotify(0x8, sink.Get()));
    ASSERT_EQ(S_OK, notify->AdviseNotify(0x8, behind.Get()));
    LONG key = 0;
    ASSERT_EQ(S_OK, storage->InsertHoliday(CBstr(L"Told").Get(), &key));
    notify.Reset();
    std::thread releaser;
    sink->OnCall = [&](ULONG) {
        releaser = std::thread([&] { storage.Reset(); });
        // Nothing else comes now.
        EXPECT_EQ(platform::WaitInput, platform::WaitForEventOrMessages(nullptr, platform::Infinite));
        platform::DispatchPendingMessages();
        return S_OK;
    };
    platform::DispatchPendingMessages();
    releaser.join();
    EXPECT_THAT(sink->Calls, ElementsAre(Change(0x8, 0)));
    EXPECT_THAT(behind->Calls, ElementsAre(Change(0x8, 0))) << "the delivery came to its end";
    EXPECT_EQ(1U, behind->Count());
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
}

} // namespace
