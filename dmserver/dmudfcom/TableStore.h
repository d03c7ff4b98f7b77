// What the tables that show the same records share: fields, rows, their order and the indexes over them.
//
// A row is a place; a record is a row that stands in the record order. Rows that stand in no order are reserved: a
// record being appended, the values of a key. While records are only appended the order is that of the rows and
// takes no memory; the first deletion or insertion writes it down, and rows let go are used again.
//
// Threads: one at a time.
#pragma once

#include "Column.h"
#include "TableIndex.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace IDM_dmudfcom {

struct tagField {
    LONG Id = 0;
    std::string Name;
    EColumnType Type = EColumnType::Long;
    ULONG Size = 0; // the declared length of a text, in characters
    LONG BaseCode = 0;
    LONG HasStatus = 0;
    LONG Status = 0;
};

inline constexpr ULONG NoField = ~ULONG{0};

class CTableStore {
public:
    CTableStore() = default;
    CTableStore(const CTableStore&) = delete;
    CTableStore& operator=(const CTableStore&) = delete;

    ULONG FieldCount() const { return static_cast<ULONG>(m_Fields.size()); }
    const tagField& Field(ULONG field) const { return m_Fields[field]; }
    tagField& Field(ULONG field) { return m_Fields[field]; }
    ULONG FindField(LONG id) const;
    ULONG FindField(std::string_view name) const;
    // The caller sees to it that neither id nor name is there already. Records get nulls.
    ULONG AddField(tagField field);

    const CColumn& Column(ULONG field) const { return m_Columns[field]; }
    // For writing into `row`: keeps the indexes in step.
    CColumn& Edit(ULONG field, Row row) {
        if (!m_Indexes.empty()) [[unlikely]]
            BeforeChange(field, row);
        return m_Columns[field];
    }
    // For writing into a row that no index has, because the store is being filled for the first time.
    CColumn& Fill(ULONG field) { return m_Columns[field]; }

    ULONG RecordCount() const { return m_IsOrdered ? static_cast<ULONG>(m_Order.size()) : m_Count; }
    // In record order, or in that of the index.
    Row RowAt(ULONG position, CTableIndex* index = nullptr);
    // NoRow for a row that is no record.
    ULONG PositionOf(Row row, CTableIndex* index = nullptr);
    Row RecordRow(ULONG position) const { return m_IsOrdered ? m_Order[position] : position; }
    // The records are the rows from 0 on, in their order.
    bool IsInRowOrder() const { return !m_IsOrdered; }
    bool HasIndexes() const { return !m_Indexes.empty(); }

    Row AppendRecord();
    Row Reserve();
    void Post(Row row, ULONG position);
    void Drop(Row row);
    void Delete(ULONG position);
    // Every record and every reserved row goes; fields and index definitions stay.
    void Clear();
    void AddRecords(ULONG count); // to an empty store

    // An index of that id is replaced.
    void CreateIndex(LONG id, std::vector<ULONG> fields);
    CTableIndex* Index(LONG id);
    CTableIndex* Index(std::optional<LONG> id) { return id ? Index(*id) : nullptr; }

    // Rises when a position may have come to mean another record.
    ULONGLONG Version() const { return m_Version; }
    // Rises when reserved rows are gone.
    ULONG Epoch() const { return m_Epoch; }
    // Tells rows in the order in which they were taken.
    ULONGLONG Serial(Row row) const { return m_Serials.empty() ? row : m_Serials[row]; }

    std::size_t MemoryUse() const;

private:
    Row TakeRow();
    bool IsLastRow(Row row) const { return row + 1 == m_Rows && m_Serials.empty(); }
    void PrepareToGive(Row row);
    void GiveRow(Row row);
    void WriteOrder();
    void ForgetRows();
    void BeforeChange(ULONG field, Row row);

    std::vector<tagField> m_Fields;
    std::vector<CColumn> m_Columns;
    Row m_Rows = 0;    // rows in use and free ones
    ULONG m_Count = 0; // records, while they are the first rows in row order
    bool m_IsOrdered = false;
    std::vector<Row> m_Order;
    std::vector<Row> m_Free;
    std::vector<ULONGLONG> m_Serials; // empty while the row itself tells
    ULONGLONG m_NextSerial = 0;
    std::vector<std::unique_ptr<CTableIndex>> m_Indexes;
    ULONGLONG m_Version = 1;
    ULONG m_Epoch = 0;
};

// Owns a reserved row of a store.
class CReservedRow {
public:
    CReservedRow() = default;
    explicit CReservedRow(std::shared_ptr<CTableStore> store);
    CReservedRow(CReservedRow&& other) noexcept;
    CReservedRow& operator=(CReservedRow&& other) noexcept;
    ~CReservedRow();

    // NoRow when there is none, and when the store was cleared in the meantime.
    Row Get() const { return m_Row != NoRow && m_Epoch == m_Store->Epoch() ? m_Row : NoRow; }
    explicit operator bool() const { return Get() != NoRow; }
    // The row is the store's again, to be posted.
    Row Detach();
    void Reset();

private:
    std::shared_ptr<CTableStore> m_Store;
    Row m_Row = NoRow;
    ULONG m_Epoch = 0;
};

} // namespace IDM_dmudfcom
