// What these hosts have in common: a store, a sink that prints what it is told, and a second thread that makes a
// change. The host's loop ends when the sink was told, or when there is nothing to wait for.
#pragma once

#include "diagnostics/interface/Trail.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorage.h"
#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/com/object.h"
#include "platform/message_queue.h"
#include "platform/text.h"

#include <cstdio>
#include <thread>

// Called on the thread that opened the store, when that thread dispatches its messages.
class CPrintingSink final : public platform::CObject<CPrintingSink, platform::ECounter::Interlocked,
                                                     platform::CDispatchImpl<IDM_qxStorage::IqxStorageNotifySink>> {
public:
    HRESULT DataChanged(ULONG Mask, LONG ValueID) override {
        std::printf("told of a change: mask 0x%X, value %d\n", Mask, ValueID);
        m_WasTold = true;
        platform::PostQuitMessage(0);
        return S_OK; // any other answer takes the sink off
    }
    [[nodiscard]] bool WasTold() const noexcept { return m_WasTold; }

private:
    bool m_WasTold = false;
};

class CChangeHost {
public:
    // Opens the store on the calling thread, which must go on to dispatch its messages. False when it does not
    // open, with the reasons told.
    [[nodiscard]] bool Open() {
        if (platform::CreateInstance(IDM_qxStorage::CLSID_qxStorage, m_Storage) != S_OK) {
            for (const std::wstring& failure : BugSlayerUtil::RecentFailures())
                std::fprintf(stderr, "%s\n", platform::ToUtf8(failure).c_str());
            return false;
        }
        return m_Storage.As<IDM_qxStorage::IqxStorageNotify>()->AdviseNotify(Holidays, m_Sink.Get()) == S_OK;
    }

    // Any thread may call the store. This one makes no references of its own, which one thread at a time may do.
    void ChangeOnAnotherThread() {
        m_Thread = std::thread([storage = m_Storage.Get(), loop = platform::CMessageQueueHandle::Current()] {
            LONG key = 0;
            if (storage->InsertHoliday(platform::CBstr(L"A market's calendar").Get(), &key) != S_OK)
                loop.PostQuit(0);
        });
    }

    // Behind the loop, on the same thread: first the other threads end, then the store is released. Gives the
    // program's exit status.
    [[nodiscard]] int Close() {
        m_Thread.join();
        m_Storage.As<IDM_qxStorage::IqxStorageNotify>()->UnadviseNotify(Holidays, m_Sink.Get());
        m_Storage.Reset();
        return m_Sink->WasTold() ? 0 : 1;
    }

private:
    static constexpr ULONG Holidays = 0x8;

    platform::CComPtr<CPrintingSink> m_Sink = platform::MakeObject<CPrintingSink>();
    platform::CComPtr<IDM_qxStorage::IqxStorage> m_Storage;
    std::thread m_Thread;
};
