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
        tagList& list = m_Lists[bit];
        if (std::ranges::any_of(list.Sinks, Is(sink)))
            return false;
        list.Sinks.push_back(std::move(entry));
        ++list.Count;
        return true;
    } catch (const std::bad_alloc&) {
        platform::ThrowStatus(E_OUTOFMEMORY, L"the list of sinks cannot grow");
    }
}

bool CNotifySinks::Remove(std::size_t bit, IDispatch* sink) {
    Sink removed; // released after the lock
    const std::lock_guard lock(m_Lock);
    tagList& list = m_Lists[bit];
    const auto found = std::ranges::find_if(list.Sinks, Is(sink));
    if (found == list.Sinks.end())
        return false;
    removed = std::move(*found);
    list.Sinks.erase(found);
    --list.Count;
    return true;
}

bool CNotifySinks::At(std::size_t bit, std::size_t index, Sink& sink) const {
    const tagList& list = m_Lists[bit];
    if (index >= list.Count)
        return false;
    Sink found; // what was held before is released after the lock
    {
        const std::lock_guard lock(m_Lock);
        if (index >= list.Sinks.size())
            return false;
        found = list.Sinks[index];
    }
    sink = std::move(found);
    return true;
}

} // namespace sqStorage
