// Being told of the changes of a store, in the process that makes them.
//
// The store delivers on the thread that opened it, when that thread dispatches its messages. All of this belongs to
// that thread.
#pragma once

#include "Store.h"

#include <exception>
#include <functional>

namespace sqCli {

class CChangeWatch {
public:
    // One call for each change and bit. What it raises ends the watch, and is raised again by Deliver() or Run().
    using Tell = std::function<void(ULONG mask, LONG value)>;

    // Of the kinds in `mask`. Raises CStoreRefusal when the store does not take the sink.
    CChangeWatch(CStore& store, ULONG mask, Tell tell);
    ~CChangeWatch();
    CChangeWatch(const CChangeWatch&) = delete;
    CChangeWatch& operator=(const CChangeWatch&) = delete;

    // Tells what has come by now.
    void Deliver();
    // Tells what comes, until the message loop is ended.
    void Run();

private:
    class CSink;

    void RaiseAgain();

    CStore& m_Store;
    ULONG m_Mask;
    Tell m_Tell;
    std::exception_ptr m_Raised;
    platform::CComPtr<CSink> m_Sink;
};

} // namespace sqCli
