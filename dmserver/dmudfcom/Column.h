// One column of cells of one type.
//
// Cells lie in chunks, so that appending never moves what is there: the first chunk grows by doubling, all others
// are of one size. A cell behind the last one written is null without being stored; a null between written ones
// costs a bit in its chunk. A text cell is a handle into the column's pool.
//
// A row is a place of the storage, not a position of the record order.
#pragma once

#include "TextPool.h"
#include "dmserver/dmudfcom/interface/TableRows.h"

#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace IDM_dmudfcom {

using Row = ULONG;
inline constexpr Row NoRow = ~Row{0};
inline constexpr Row KeptRoom = 64; // rows that a cleared table keeps room for

// A table that is filled again and again with a few rows takes its memory once.
template <class T>
void ClearRows(std::vector<T>& rows) {
    if (rows.capacity() > KeptRoom)
        rows = std::vector<T>();
    else
        rows.clear();
}

class CColumn {
public:
    explicit CColumn(EColumnType type);

    EColumnType Type() const { return m_Type; }
    // Of one cell as it is stored; a text's is its handle.
    ULONG Width() const { return m_Width; }

    bool IsNull(Row row) const {
        if (row >= m_Size)
            return true;
        const std::uint64_t* nulls = m_Chunks[row / ChunkRows].Nulls.get();
        return nulls && (nulls[row % ChunkRows / 64] >> row % 64 & 1) != 0;
    }
    // False, and 0 or an empty text, where the cell has no value of that kind. A null gives 0 or empty, and true.
    bool Integer(Row row, std::int64_t& value) const;
    bool Real(Row row, double& value) const;
    std::string_view Text(Row row, std::string& scratch) const;

    // Of a text cell that is not null: the same for the same stored text.
    CTextPool::Handle TextHandle(Row row) const { return Load<CTextPool::Handle>(row); }

    // False where the value cannot be converted to the column's type; the cell is then 0.
    bool SetInteger(Row row, std::int64_t value);
    bool SetReal(Row row, double value);
    // A blank text makes a cell null that is not of type Text.
    bool SetText(Row row, std::string_view text);
    void SetNull(Row row);
    // Takes the memory that SetNull of this row needs, which then does not raise.
    void PrepareNull(Row row);

    // The same, short for what is most common, and only for a cell that was never written.
    void PutLong(Row row, LONG value) {
        if (m_Type == EColumnType::Long) [[likely]]
            Store(row, value);
        else
            SetInteger(row, value);
    }
    void PutDay(Row row, LONG day) {
        if (m_Type == EColumnType::Date) [[likely]]
            Store(row, day);
        else
            WriteDay(row, day);
    }
    void PutDouble(Row row, double value) {
        if (m_Type == EColumnType::Double) [[likely]]
            Store(row, value);
        else
            SetReal(row, value);
    }
    void PutText(Row row, std::string_view text) {
        if (m_Pool) [[likely]]
            Store(row, m_Pool->Add(text));
        else
            SetText(row, text);
    }

    // Rows from `first` on. What cannot be converted is 0.
    void GetIntegers(Row first, std::span<LONG> values) const;
    void SetIntegers(Row first, std::span<const LONG> values);
    void SetReals(Row first, std::span<const double> values);
    void SetTexts(Row first, std::span<const tagSharedText* const> texts);

    // Null before all values, numbers by value, texts by code point.
    int Compare(Row left, Row right) const;

    // Rows from `size` on become null.
    void Truncate(Row size) noexcept;
    void Clear();
    // The longest text, in characters.
    ULONG LongestText() const;
    std::size_t MemoryUse() const;

private:
    static constexpr Row ChunkRows = 1024;
    struct tagChunk {
        std::unique_ptr<std::byte[]> Cells;
        std::unique_ptr<std::uint64_t[]> Nulls;
    };

    template <class T>
    T Load(Row row) const {
        T value;
        std::memcpy(&value, m_Chunks[row / ChunkRows].Cells.get() + row % ChunkRows * sizeof(T), sizeof(T));
        return value;
    }
    template <class T>
    void Store(Row row, T value) {
        if (row == m_Size && row < m_Capacity) [[likely]]
            ++m_Size;
        else if (row >= m_Size)
            Extend(row);
        tagChunk& chunk = m_Chunks[row / ChunkRows];
        if (chunk.Nulls)
            chunk.Nulls[row % ChunkRows / 64] &= ~(std::uint64_t{1} << row % 64);
        std::memcpy(chunk.Cells.get() + row % ChunkRows * sizeof(T), &value, sizeof(T));
    }
    template <class T>
    bool StoreWithin(Row row, std::int64_t value);
    // Makes the rows cells that are not null, and gives `fill` their bytes, piece by piece: (cells, offset, count).
    template <class Fill>
    void StoreRun(Row first, Row count, Fill&& fill);
    void Keep(const tagSharedText& text);

    void WriteDay(Row row, LONG day);
    void Extend(Row row);
    void AddRoom(Row needed);
    void MarkNull(Row row);
    void MakeRoomForNull(Row row);
    void ClearNulls(Row first, Row count);
    void StoreText(Row row, std::string_view text);
    struct tagTextInUse {
        CTextPool::Handle Handle;
        Row Cells;
        CTextPool::Handle Packed;
    };
    std::vector<tagTextInUse> TextsInUse() const; // by handle
    void CompactIfWorthIt() noexcept;
    void CompactTexts();
    int CompareValues(Row left, Row right) const;

    std::vector<tagChunk> m_Chunks;
    Row m_Size = 0;     // rows written
    Row m_Capacity = 0; // rows there is room for
    EColumnType m_Type;
    BYTE m_Width;
    std::unique_ptr<CTextPool> m_Pool; // of a text column
    std::size_t m_Replaced = 0;        // bytes of texts that were written over, or more: one for each cell
    std::size_t m_InUse = 0;           // bytes of texts that cells had when they were last looked at
};

} // namespace IDM_dmudfcom
