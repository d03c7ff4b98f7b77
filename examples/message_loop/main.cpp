// A host whose main thread has nothing else to do: it runs the message loop.
#include "ChangeHost.h"

int main() {
    CChangeHost host;
    if (!host.Open())
        return 1;
    host.ChangeOnAnotherThread();
    platform::RunMessageLoop();
    return host.Close();
}
