#pragma once
// A pump on the test's own thread, whose messages the test serves.

#include "../AO_WndMsgPumpTransport.h"

#include "Help.h"
#include "platform/event.h"
#include "platform/message_queue.h"
#include "platform/thread.h"

#include <functional>
#include <thread>
#include <vector>

namespace LocalRPC {

using details::CWndImpl;
using details::CWndMsgPump;

class CWndMsgPumpTest : public CRecordedTest {
protected:
    // A transport that runs holds itself by its window.
    void TearDown() override {
        if (m_Pump)
            m_Pump->Stop(true, true);
        m_Pump.reset();
        CRecordedTest::TearDown();
    }
    void Replace(CWndMsgPump* pump) {
        m_Pump->Stop(true, true);
        m_Pump.reset(pump);
    }
    bool PostNote(int number) {
        return m_Pump->Post(MakeAsyncTask([this, number] {
            m_Notes.push_back(number);
            m_NotesThread = platform::CurrentThreadId();
        }));
    }
    // The body on another thread, which has ended then.
    static void Elsewhere(const std::function<void()>& body) { std::thread(body).join(); }
    // The same, while this thread serves its messages.
    static void ElsewhereWhileServing(const std::function<void()>& body) {
        auto done = platform::CEvent::Create(platform::EEventReset::Manual, false);
        std::thread thread([&] {
            body();
            done->Set();
        });
        while (platform::WaitForEventOrMessages(&*done, platform::Infinite) == platform::WaitInput)
            platform::DispatchPendingMessages();
        thread.join();
    }
    // Numbers of the messages that wait, which are dispatched.
    static std::vector<DWORD> ServeAndList() {
        std::vector<DWORD> numbers;
        platform::tagMessage message;
        while (platform::TakeMessage(message)) {
            numbers.push_back(message.Message);
            platform::DispatchMessage(message);
        }
        return numbers;
    }

    boost::intrusive_ptr<CWndMsgPump> m_Pump{new CWndMsgPump(true)};
    std::vector<int> m_Notes;
    DWORD m_NotesThread = 0;
};

// Fills the calling thread's queue for the length of a scope.
class CFullQueue : public platform::CMessageWindow {
public:
    CFullQueue() {
        EXPECT_TRUE(Create());
        while (Handle().Post(platform::UserMessage)) {
        }
    }
    bool ProcessWindowMessage(DWORD, std::uintptr_t, std::uintptr_t, std::intptr_t&, DWORD) override {
        return true;
    }
};

inline constexpr DWORD NoThread = 0xFFFFFFFF;

} // namespace LocalRPC
