#include "StatementCache.h"

#include <algorithm>
#include <functional>

namespace IDM_dmFirebird {

std::unique_ptr<CPreparedStatement> CStatementCache::Take(std::wstring_view text) {
    const std::size_t hash = std::hash<std::wstring_view>()(text);
    const std::lock_guard lock(m_Mutex);
    for (tagEntry& entry : m_Idle) {
        if (entry.Hash != hash || entry.Statement->Key() != text)
            continue;
        std::unique_ptr<CPreparedStatement> statement = std::move(entry.Statement);
        if (&entry != &m_Idle.back())
            entry = std::move(m_Idle.back());
        m_Idle.pop_back();
        return statement;
    }
    return nullptr;
}

void CStatementCache::GiveBack(std::unique_ptr<CPreparedStatement> statement, std::uint64_t generation) {
    // Freeing calls the engine, so what is not kept dies outside the lock.
    std::unique_ptr<CPreparedStatement> superfluous;
    if (!statement->IsWorthKeeping())
        return;
    const std::lock_guard lock(m_Mutex);
    if (generation == m_Generation)
        superfluous = Put(std::move(statement));
    else
        superfluous = std::move(statement);
}

std::unique_ptr<CPreparedStatement> CStatementCache::Put(std::unique_ptr<CPreparedStatement> statement) {
    const std::size_t hash = std::hash<std::wstring_view>()(statement->Key());
    tagEntry entry{hash, ++m_Clock, std::move(statement)};
    if (m_Idle.size() < Capacity) {
        m_Idle.push_back(std::move(entry));
        return nullptr;
    }
    const auto oldest = std::min_element(
        m_Idle.begin(), m_Idle.end(), [](const tagEntry& a, const tagEntry& b) { return a.LastUse < b.LastUse; });
    std::swap(*oldest, entry);
    return std::move(entry.Statement);
}

void CStatementCache::Drop() {
    std::vector<tagEntry> dropped;
    const std::lock_guard lock(m_Mutex);
    ++m_Generation;
    dropped.swap(m_Idle);
}

std::uint64_t CStatementCache::Generation() const {
    const std::lock_guard lock(m_Mutex);
    return m_Generation;
}

std::size_t CStatementCache::IdleCount() const {
    const std::lock_guard lock(m_Mutex);
    return m_Idle.size();
}

} // namespace IDM_dmFirebird
