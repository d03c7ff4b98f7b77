// A host on Boost.Asio: its io_context watches the thread's message queue beside everything else.
#include "ChangeHost.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>

// On the thread that runs the context. It keeps the context at work until the thread's messages ask to quit.
class CMessageQueueWatch {
public:
    explicit CMessageQueueWatch(boost::asio::io_context& context)
        : m_Descriptor(context, platform::MessageQueueDescriptor()) {
        Wait();
    }
    // It belongs to the queue, which closes it.
    ~CMessageQueueWatch() { m_Descriptor.release(); }

private:
    void Wait() {
        m_Descriptor.async_wait(m_Descriptor.wait_read, [this](const boost::system::error_code& error) {
            if (!error && platform::DispatchPendingMessages())
                Wait();
        });
    }

    boost::asio::posix::stream_descriptor m_Descriptor;
};

int main() {
    CChangeHost host;
    if (!host.Open())
        return 1;
    host.ChangeOnAnotherThread();
    boost::asio::io_context context;
    {
        const CMessageQueueWatch watch(context);
        context.run();
    }
    return host.Close();
}
