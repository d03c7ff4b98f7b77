#pragma once
// An active object with a thread of its own. The thread starts with the first task, or with Start(), sleeps while
// there is nothing to do, and also serves the messages of windows that tasks make on it.
//
//   Post    false while blocked. Starts the thread when it is stopped: a stopped object comes back to life. On the
//           object's own thread a synchronous task runs at once. Throws local_rpc_exception when the thread cannot
//           be started.
//   Start   a running object is stopped first, and its queue is lost. Unblocks.
//   StopEx  lets the queue run to its end, unless `clear` is set, and ends the thread; `block` refuses posts from
//           then on. True also when there is nothing to stop; from the own thread an assertion, and false. A thread that
//           has not ended within twice a finite time-out is abandoned: it finishes the task it is in, runs no
//           other, and ends by itself; what that task uses must live as long.

#include "unicomp/LocalRPC/interface/AO_Transport.h"

namespace LocalRPC {

class CActiveObject_thread : public CActiveObject_base {
public:
    // Bytes; 0 stands for the system's default. Throws std::runtime_error "can't create event".
    explicit CActiveObject_thread(DWORD stackSize = 0);
};

// Stops, and waits for the end of the thread, before anything of a class derived from it is gone for its tasks.
class CTerminate_Local_RPC_Proxy : public CActiveObject_thread {
public:
    using CActiveObject_thread::CActiveObject_thread;
    ~CTerminate_Local_RPC_Proxy() override;
};

} // namespace LocalRPC
