// The registered change sinks, one list for each kind of change.
//
// A sink is known by its raw pointer and stands at most once in a list, in the order of registration; each entry
// holds one reference. Bits from NotifyBitCount on do not exist.
//
// Threads: any may change the lists while another walks them. The lock is never held over a call into a sink, not
// even over the counting of its references.
#pragma once

#include "platform/com/com_ptr.h"
#include "platform/com/dispatch.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace sqStorage {

// The kinds of change: bits 0 to 19.
inline constexpr std::size_t NotifyBitCount = 20;

class CNotifySinks {
public:
    // A sink that is registered, or a null one. It stays alive while anyone holds this.
    using Sink = std::shared_ptr<const platform::CComPtr<IDispatch>>;

    // Appends the sink unless the list has it. True when it was appended.
    // Raises platform::CComError with E_OUTOFMEMORY when the list cannot grow.
    bool Add(std::size_t bit, IDispatch* sink);
    // Takes the sink off the list. True when it was there.
    bool Remove(std::size_t bit, IDispatch* sink);

    // False past the end of the list, which costs no lock.
    bool At(std::size_t bit, std::size_t index, Sink& sink) const;

private:
    struct tagList {
        std::vector<Sink> Sinks;           // guarded by m_Lock
        std::atomic<std::size_t> Count{0}; // of the sinks, for a look without the lock
    };

    mutable std::mutex m_Lock;
    std::array<tagList, NotifyBitCount> m_Lists;
};

} // namespace sqStorage
