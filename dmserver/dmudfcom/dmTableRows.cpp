// The part of CdmTable that moves rows in bulk.

#include "CellText.h"
#include "FieldMap.h"
#include "dmTable.h"

#include <cstring>

namespace IDM_dmudfcom {

LONG CdmTable::FindColumn(std::string_view name) const {
    const ULONG field = m_Store->FindField(name);
    return field == NoField ? -1 : static_cast<LONG>(field);
}

EColumnType CdmTable::ColumnType(ULONG column) const { return m_Store->Field(column).Type; }
std::string_view CdmTable::ColumnName(ULONG column) const { return m_Store->Field(column).Name; }

ULONG CdmTable::AddColumn(std::string_view name, EColumnType fallback) {
    if (const ULONG existing = m_Store->FindField(name); existing != NoField)
        return existing;
    const tagFieldInfo* info = FindField(name);
    tagField field;
    field.Id = info ? info->Id : FreeId(name);
    field.Name = info ? info->Name : name;
    field.Type = info ? info->Type : fallback;
    field.Size = info ? info->Size : 0;
    const ULONG added = m_Store->AddField(std::move(field));
    BindObjects();
    return added;
}

void CdmTable::AppendRow() { m_BulkRow = m_Store->AppendRecord(); }

void CdmTable::PutText(ULONG column, std::string_view text) { BulkColumn(column).SetText(m_BulkRow, text); }
void CdmTable::PutInteger(ULONG column, std::int64_t value) { BulkColumn(column).SetInteger(m_BulkRow, value); }
void CdmTable::PutReal(ULONG column, double value) { BulkColumn(column).SetReal(m_BulkRow, value); }

void CdmTable::PutDay(ULONG column, std::int64_t day) {
    std::string scratch;
    if (ColumnType(column) == EColumnType::Text)
        PutText(column, WriteDate(day, scratch));
    else
        PutInteger(column, day);
}

void CdmTable::PutSeconds(ULONG column, std::int64_t seconds) {
    std::string scratch;
    if (ColumnType(column) == EColumnType::Text)
        PutText(column, WriteTime(seconds, scratch));
    else
        PutInteger(column, seconds);
}

Row CdmTable::PlaceOf(ULONG row, ULONG column) const {
    assert(row < m_Store->RecordCount() && column < m_Store->FieldCount());
    (void)column;
    return m_Store->RecordRow(row);
}

bool CdmTable::IsNull(ULONG row, ULONG column) const {
    return m_Store->Column(column).IsNull(PlaceOf(row, column));
}

std::string_view CdmTable::Text(ULONG row, ULONG column, std::string& scratch) const {
    return m_Store->Column(column).Text(PlaceOf(row, column), scratch);
}

std::int64_t CdmTable::Integer(ULONG row, ULONG column) const {
    std::int64_t value;
    m_Store->Column(column).Integer(PlaceOf(row, column), value);
    return value;
}

double CdmTable::Real(ULONG row, ULONG column) const {
    double value;
    m_Store->Column(column).Real(PlaceOf(row, column), value);
    return value;
}

void CdmTable::SetNull(ULONG row, ULONG column) {
    const Row place = PlaceOf(row, column);
    m_Store->Edit(column, place).SetNull(place);
}

void CdmTable::SetText(ULONG row, ULONG column, std::string_view text) {
    const Row place = PlaceOf(row, column);
    m_Store->Edit(column, place).SetText(place, text);
}

void CdmTable::SetInteger(ULONG row, ULONG column, std::int64_t value) {
    const Row place = PlaceOf(row, column);
    m_Store->Edit(column, place).SetInteger(place, value);
}

void CdmTable::SetReal(ULONG row, ULONG column, double value) {
    const Row place = PlaceOf(row, column);
    m_Store->Edit(column, place).SetReal(place, value);
}

namespace {

template <class T>
T Load(const unsigned char* place) {
    T value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

inline void PutPacked(CColumn& column, Row row, const tagPackedCell& cell, const unsigned char* value) {
    switch (cell.Form) {
    case EPackedForm::Text:
        column.PutText(row, {reinterpret_cast<const char*>(value + sizeof(WORD)), Load<WORD>(value)});
        return;
    case EPackedForm::Short:
        column.PutLong(row, Load<SHORT>(value));
        return;
    case EPackedForm::Long:
        column.PutLong(row, Load<LONG>(value));
        return;
    case EPackedForm::Int64:
        column.SetInteger(row, Load<std::int64_t>(value));
        return;
    case EPackedForm::Float:
        column.PutDouble(row, static_cast<double>(Load<float>(value)));
        return;
    case EPackedForm::Double:
        column.PutDouble(row, Load<double>(value));
        return;
    case EPackedForm::Day:
        column.PutDay(row, static_cast<LONG>(std::int64_t{Load<LONG>(value)} + cell.Shift));
        return;
    }
}

} // namespace

void CdmTable::AppendPacked(const unsigned char* record, std::span<const tagPackedCell> cells) {
    CTableStore& store = *m_Store;
    const Row row = m_BulkRow = store.AppendRecord();
    const bool isWatched = store.HasIndexes();
    for (const tagPackedCell& cell : cells) {
        if (Load<std::int16_t>(record + cell.NullOffset) != 0)
            continue;
        assert(cell.Column < store.FieldCount());
        CColumn& column = isWatched ? store.Edit(cell.Column, row) : store.Fill(cell.Column);
        PutPacked(column, row, cell, record + cell.Offset);
    }
}

void CdmTable::GetIntegers(ULONG column, ULONG first, std::span<LONG> values) const {
    assert(first + values.size() <= m_Store->RecordCount() && column < m_Store->FieldCount());
    const CColumn& cells = m_Store->Column(column);
    if (m_Store->IsInRowOrder())
        return cells.GetIntegers(first, values);
    for (std::size_t i = 0; i < values.size(); ++i)
        cells.GetIntegers(m_Store->RecordRow(first + static_cast<ULONG>(i)), values.subspan(i, 1));
}

// All at once where the records lie one after another and no index has to hear of it; else one by one.
template <class Value>
void CdmTable::WriteRun(ULONG column, ULONG first, std::span<Value> values,
                        void (CColumn::*write)(Row, std::span<Value>)) {
    assert(first + values.size() <= m_Store->RecordCount() && column < m_Store->FieldCount());
    if (m_Store->IsInRowOrder() && !m_Store->HasIndexes())
        return (m_Store->Fill(column).*write)(first, values);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Row place = m_Store->RecordRow(first + static_cast<ULONG>(i));
        (m_Store->Edit(column, place).*write)(place, values.subspan(i, 1));
    }
}

void CdmTable::SetIntegers(ULONG column, ULONG first, std::span<const LONG> values) {
    WriteRun(column, first, values, &CColumn::SetIntegers);
}

void CdmTable::SetReals(ULONG column, ULONG first, std::span<const double> values) {
    WriteRun(column, first, values, &CColumn::SetReals);
}

void CdmTable::SetTexts(ULONG column, ULONG first, std::span<const tagSharedText* const> texts) {
    WriteRun(column, first, texts, &CColumn::SetTexts);
}

std::size_t CdmTable::MemoryUse() const {
    return sizeof(*this) + m_Store->MemoryUse() + m_Fields.capacity() * sizeof(m_Fields[0]) +
           m_Fields.size() * sizeof(CdmField) + m_FieldObjects.capacity() * sizeof(CdmField*);
}

} // namespace IDM_dmudfcom
