#pragma once
// Running calls elsewhere: on a thread of their own, or on the thread whose message loop is served.
//
//     class CStore {
//     public:
//         CStore() : m_NotifyObject(true), m_InitObject(0) {}
//
//         // Waits until Init() has run on m_InitObject's thread, which starts with it.
//         void Open() { LocalRPC::CallSync(m_InitObject, [this] { Init(); }, platform::Infinite); }
//
//         // Returns at once; Notify() runs on the thread that made the store, when it serves its messages.
//         void Changed(LONG id) { m_NotifyObject.Post(LocalRPC::MakeAsyncTask([this, id] { Notify(id); })); }
//
//         ~CStore() { m_NotifyObject.Stop(true, true); }      // queued notifications are dropped
//
//     private:
//         LocalRPC::CActiveObject_WndMsg m_NotifyObject;      // owned by the thread that constructs the store
//         LocalRPC::CActiveObject_thread m_InitObject;
//     };
//
//     int main() {                                            // the thread's loop, or DispatchPendingMessages()
//         CStore store;
//         store.Open();
//         return platform::RunMessageLoop();
//     }
//
// A call that throws is reported and stays there; the object goes on with the next.

#include "unicomp/LocalRPC/interface/AO_ThreadTransport.h"
#include "unicomp/LocalRPC/interface/AO_WndMsgPumpTransport.h"
#include "unicomp/LocalRPC/interface/TaskFactory.h"
