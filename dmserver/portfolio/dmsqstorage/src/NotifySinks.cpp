#include "NotifySinks.h"

#include "platform/com/com_error.h"

#include <algorithm>
#include <new>

namespace sqStorage {

namespace {

auto Is(const IDispatch* sink) {
    return [sink](const CNotifySinks::Sink& entry) { return entry->Get() == sink; };
}

} // namespace

bool CNotifySinks::Add(std::size_t bit, IDispatch* sink) {
    try {
        // Counted before the lock is taken; an entry that is not wanted is released after it.
        auto entry = std::make_shared<const platform::CComPtr<IDispatch>>(sink);
        const std::lock_guard lock(m_Lock);
        List& list = m_Lists[bit];
        if (std::ranges::any_of(list, Is(sink)))
            return false;
        list.push_back(std::move(entry));
        return true;
    } catch (const std::bad_alloc&) {
        platform::ThrowStatus(E_OUTOFMEMORY, L"the list of sinks cannot grow");
    }
}

bool CNotifySinks::Remove(std::size_t bit, IDispatch* sink) {
    Sink removed; // released after the lock
    const std::lock_guard lock(m_Lock);
    List& list = m_Lists[bit];
    const auto found = std::ranges::find_if(list, Is(sink));
    if (found == list.end())
        return false;
    removed = std::move(*found);
    list.erase(found);
    return true;
}

bool CNotifySinks::At(std::size_t bit, std::size_t index, Sink& sink) const {
    Sink found; // what was held before is released after the lock
    {
        const std::lock_guard lock(m_Lock);
        const List& list = m_Lists[bit];
        if (index >= list.size())
            return false;
        found = list[index];
    }
    sink = std::move(found);
    return true;
}

} // namespace sqStorage
