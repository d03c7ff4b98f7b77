// Records in the order of their values in some fields.
//
// Records of equal values stand in the order in which they were added. A change takes the record out of the order;
// it is put back where it belongs when the order is next asked for, so that filling a table sorts once.
#pragma once

#include "Column.h"

#include <span>
#include <vector>

namespace IDM_dmudfcom {

class CTableStore;

class CTableIndex {
public:
    CTableIndex(const CTableStore& store, LONG id, std::vector<ULONG> fields);

    LONG Id() const { return m_Id; }
    std::span<const ULONG> Fields() const { return m_Fields; }
    bool HasField(ULONG field) const;

    void Add(Row row) { m_Moved.push_back(row); }
    // Called before a value changes or the record goes.
    void TakeOut(Row row);
    // The record, taken out before, is gone from the table. Does not raise.
    void Remove(Row row) { std::erase(m_Moved, row); }
    void Clear();

    Row RowAt(ULONG position);
    // NoRow for a row that is no record.
    ULONG PositionOf(Row row);

    // The records whose first `fields` index fields equal those of the row `key`, as positions [First, Last).
    struct tagRange {
        ULONG First;
        ULONG Last;
    };
    tagRange Matches(Row key, std::size_t fields);

    std::size_t MemoryUse() const { return (m_Rows.capacity() + m_Moved.capacity()) * sizeof(Row); }

private:
    int Compare(Row left, Row right, std::size_t fields) const;
    bool IsBefore(Row left, Row right) const;
    void Settle();

    const CTableStore& m_Store;
    LONG m_Id;
    std::vector<ULONG> m_Fields;
    std::vector<Row> m_Rows;
    std::vector<Row> m_Moved; // records that have to be put in their place
};

} // namespace IDM_dmudfcom
