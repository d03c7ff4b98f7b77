#include "TableIndex.h"

#include "TableStore.h"

#include <algorithm>

namespace IDM_dmudfcom {

namespace {
constexpr std::size_t SearchedMoves = 64;
}

CTableIndex::CTableIndex(const CTableStore& store, LONG id, std::vector<ULONG> fields)
    : m_Store(store), m_Id(id), m_Fields(std::move(fields)) {}

bool CTableIndex::HasField(ULONG field) const { return std::ranges::find(m_Fields, field) != m_Fields.end(); }

int CTableIndex::Compare(Row left, Row right, std::size_t fields) const {
    for (std::size_t i = 0; i < fields; ++i)
        if (const int order = m_Store.Column(m_Fields[i]).Compare(left, right))
            return order;
    return 0;
}

bool CTableIndex::IsBefore(Row left, Row right) const {
    const int order = Compare(left, right, m_Fields.size());
    return order != 0 ? order < 0 : m_Store.Serial(left) < m_Store.Serial(right);
}

void CTableIndex::Settle() {
    if (m_Moved.empty())
        return;
    const auto before = [this](Row left, Row right) { return IsBefore(left, right); };
    if (m_Moved.size() == 1) {
        m_Rows.insert(std::ranges::upper_bound(m_Rows, m_Moved.front(), before), m_Moved.front());
    } else {
        std::ranges::sort(m_Moved, before);
        const auto settled = static_cast<std::ptrdiff_t>(m_Rows.size());
        m_Rows.insert(m_Rows.end(), m_Moved.begin(), m_Moved.end());
        std::inplace_merge(m_Rows.begin(), m_Rows.begin() + settled, m_Rows.end(), before);
    }
    m_Moved.clear();
}

void CTableIndex::TakeOut(Row row) {
    // The record just added or changed is most often the one that changes next.
    if (!m_Moved.empty() && m_Moved.back() == row)
        return;
    if (m_Moved.size() > SearchedMoves)
        Settle();
    else if (std::ranges::find(m_Moved, row) != m_Moved.end())
        return;
    const auto found =
        std::ranges::lower_bound(m_Rows, row, [this](Row left, Row right) { return IsBefore(left, right); });
    if (found == m_Rows.end() || *found != row)
        return; // a reserved row
    m_Moved.push_back(row);
    m_Rows.erase(found);
}

void CTableIndex::Clear() {
    ClearRows(m_Rows);
    ClearRows(m_Moved);
}

Row CTableIndex::RowAt(ULONG position) {
    Settle();
    return m_Rows[position];
}

ULONG CTableIndex::PositionOf(Row row) {
    Settle();
    const auto found =
        std::ranges::lower_bound(m_Rows, row, [this](Row left, Row right) { return IsBefore(left, right); });
    return found != m_Rows.end() && *found == row ? static_cast<ULONG>(found - m_Rows.begin()) : NoRow;
}

CTableIndex::tagRange CTableIndex::Matches(Row key, std::size_t fields) {
    Settle();
    const auto [first, last] =
        std::equal_range(m_Rows.begin(), m_Rows.end(), key,
                         [this, fields](Row left, Row right) { return Compare(left, right, fields) < 0; });
    return {static_cast<ULONG>(first - m_Rows.begin()), static_cast<ULONG>(last - m_Rows.begin())};
}

} // namespace IDM_dmudfcom
