#pragma once
// An active object without a thread: tasks run on the thread that started it, by that thread's message loop
// (platform/message_queue.h). Without such a loop nothing runs.
//
//   Post    false while blocked or stopped, and when the owner thread has ended; it does not start the object. A
//           post that finds the thread's message queue full answers false, but the task stays and runs at the next wake.
//           On the owner thread a synchronous task runs at once.
//   Start   makes the calling thread the owner. A running object is stopped first, and its queue is lost. Unblocks.
//           Throws local_rpc_exception when the system refuses.
//   StopEx  with `block` set refuses posts, and lets the queue run to its end unless `clear` is set; without it the
//           queue is dropped in any case. The time-out is not used: from another thread the call lasts until the
//           owner thread's loop has seen to it. If a task serves the loop, the call lasts until that task is over,
//           with the sends to the caller's own windows handled meanwhile; so a task must not wait for a stop, or a
//           start, on another thread. Behind it no task runs any more. False when there is nothing to stop.
//
// While a task runs, no other runs within it, even if it serves the message queue itself.

#include "unicomp/LocalRPC/interface/AO_Transport.h"

namespace LocalRPC {

class CActiveObject_WndMsg : public CActiveObject_base {
public:
    // Starts if `autoStart` is set, and then throws as Start() does.
    explicit CActiveObject_WndMsg(bool autoStart);
};

} // namespace LocalRPC
