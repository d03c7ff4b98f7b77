// A host that waits for descriptors of its own with poll(), and for the store's changes among them.
#include "ChangeHost.h"

#include <poll.h>

int main() {
    CChangeHost host;
    if (!host.Open())
        return 1;
    host.ChangeOnAnotherThread();
    // Readable as long as there is something to dispatch. The host's own descriptors would stand beside it.
    pollfd watched[] = {{.fd = platform::MessageQueueDescriptor(), .events = POLLIN, .revents = 0}};
    do
        poll(watched, 1, -1);
    while (platform::DispatchPendingMessages());
    return host.Close();
}
