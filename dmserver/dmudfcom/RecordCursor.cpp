#include "RecordCursor.h"

namespace IDM_dmudfcom {

void CRecordCursor::Sync() {
    if (m_Version != m_Store->Version())
        Resync();
}

void CRecordCursor::Resync() {
    m_Version = m_Store->Version();
    if (m_Place != EPlace::On)
        return;
    const ULONG count = m_Store->RecordCount();
    if (m_Row != NoRow && m_Position < count && m_Store->RowAt(m_Position, Index()) == m_Row)
        return;
    const ULONG found = m_Row == NoRow ? NoRow : m_Store->PositionOf(m_Row, Index());
    if (found != NoRow)
        m_Position = found;
    else
        MoveTo(m_Position); // the record is gone: on to the next one
}

void CRecordCursor::MoveTo(ULONG position) {
    const ULONG count = m_Store->RecordCount();
    m_Version = m_Store->Version();
    m_Position = position;
    m_Row = NoRow;
    m_Place = position < count || position == 0 ? EPlace::On : EPlace::Past;
    if (position < count)
        m_Row = m_Store->RowAt(position, Index());
}

void CRecordCursor::MoveToRow(Row row) {
    m_Place = EPlace::On;
    m_Row = row;
    m_Version = 0;
}

void CRecordCursor::SetIndex(std::optional<LONG> id) {
    Sync();
    m_Index = id;
    m_Version = 0;
}

Row CRecordCursor::Current() {
    Sync();
    return m_Place == EPlace::On ? m_Row : NoRow;
}

ULONG CRecordCursor::Position() {
    Sync();
    return m_Position;
}

bool CRecordCursor::IsEof() {
    Sync();
    return m_Place == EPlace::Past || m_Store->RecordCount() == 0;
}

bool CRecordCursor::IsBof() {
    Sync();
    return m_Place == EPlace::Before || m_Store->RecordCount() == 0;
}

void CRecordCursor::First() { MoveTo(0); }

void CRecordCursor::Last() {
    const ULONG count = m_Store->RecordCount();
    MoveTo(count == 0 ? 0 : count - 1);
}

void CRecordCursor::Next() {
    Sync();
    if (m_Place == EPlace::Before)
        First();
    else if (m_Place == EPlace::On && m_Row != NoRow)
        MoveTo(m_Position + 1);
}

void CRecordCursor::Prev() {
    Sync();
    if (m_Place == EPlace::Past)
        Last();
    else if (m_Place == EPlace::On && m_Position > 0)
        MoveTo(m_Position - 1);
    else if (m_Row != NoRow)
        m_Place = EPlace::Before;
}

} // namespace IDM_dmudfcom
