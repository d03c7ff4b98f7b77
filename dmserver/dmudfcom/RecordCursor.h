// Where a table stands among the records of its store, in record order or in that of an index.
//
// The cursor stays on its record when others are added, removed or change their places. A cursor that was never
// placed stands on the first record as soon as there is one.
#pragma once

#include "TableStore.h"

#include <memory>
#include <optional>

namespace IDM_dmudfcom {

class CRecordCursor {
public:
    explicit CRecordCursor(std::shared_ptr<CTableStore> store) : m_Store(std::move(store)) {}

    // Nothing for the record order. The cursor stays on its record.
    void SetIndex(std::optional<LONG> id);
    CTableIndex* Index() const { return m_Store->Index(m_Index); }

    // NoRow when the cursor stands on no record.
    Row Current();
    // In the order that the cursor runs in; only where Current is a record.
    ULONG Position();
    bool IsEof();
    bool IsBof();

    void First();
    void Last();
    void Next();
    void Prev();
    void MoveTo(ULONG position);
    void MoveToRow(Row row);

private:
    enum class EPlace { Before, On, Past };
    void Sync();
    void Resync();

    std::shared_ptr<CTableStore> m_Store;
    std::optional<LONG> m_Index;
    ULONGLONG m_Version = 0; // of the store, when the next three were right
    EPlace m_Place = EPlace::On;
    ULONG m_Position = 0;
    Row m_Row = NoRow;
};

} // namespace IDM_dmudfcom
