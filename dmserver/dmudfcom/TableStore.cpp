#include "TableStore.h"

#include "FieldMap.h"

#include <algorithm>
#include <new>
#include <numeric>
#include <utility>

namespace IDM_dmudfcom {

namespace {
constexpr std::size_t FirstFree = 4; // free rows there is room for, at the least
}

ULONG CTableStore::FindField(LONG id) const {
    const auto found = std::ranges::find(m_Fields, id, &tagField::Id);
    return found != m_Fields.end() ? static_cast<ULONG>(found - m_Fields.begin()) : NoField;
}

ULONG CTableStore::FindField(std::string_view name) const {
    const auto found =
        std::ranges::find_if(m_Fields, [&](const tagField& field) { return IsSameName(field.Name, name); });
    return found != m_Fields.end() ? static_cast<ULONG>(found - m_Fields.begin()) : NoField;
}

ULONG CTableStore::AddField(tagField field) {
    m_Columns.emplace_back(field.Type);
    m_Fields.push_back(std::move(field));
    return FieldCount() - 1;
}

Row CTableStore::RowAt(ULONG position, CTableIndex* index) {
    return index ? index->RowAt(position) : RecordRow(position);
}

ULONG CTableStore::PositionOf(Row row, CTableIndex* index) {
    if (index)
        return index->PositionOf(row);
    if (!m_IsOrdered)
        return row < m_Count ? row : NoRow;
    const auto found = std::ranges::find(m_Order, row);
    return found != m_Order.end() ? static_cast<ULONG>(found - m_Order.begin()) : NoRow;
}

Row CTableStore::TakeRow() {
    if (m_Free.empty()) {
        if (!m_Serials.empty())
            m_Serials.push_back(m_NextSerial++);
        return m_Rows++;
    }
    if (m_Serials.empty()) {
        m_Serials.resize(m_Rows);
        std::iota(m_Serials.begin(), m_Serials.end(), ULONGLONG{0});
        m_NextSerial = m_Rows;
    }
    const Row row = m_Free.back();
    m_Free.pop_back();
    m_Serials[row] = m_NextSerial++;
    return row;
}

// Takes the memory that GiveRow needs, which then does not raise.
void CTableStore::PrepareToGive(Row row) {
    if (IsLastRow(row))
        return;
    if (m_Free.size() == m_Free.capacity())
        m_Free.reserve(std::max<std::size_t>(2 * m_Free.size(), FirstFree));
    for (CColumn& column : m_Columns)
        column.PrepareNull(row);
}

void CTableStore::GiveRow(Row row) {
    if (IsLastRow(row)) {
        --m_Rows;
        for (CColumn& column : m_Columns)
            column.Truncate(m_Rows);
        return;
    }
    m_Free.push_back(row);
    for (CColumn& column : m_Columns)
        column.SetNull(row);
}

Row CTableStore::Reserve() { return TakeRow(); }

void CTableStore::Drop(Row row) {
    PrepareToGive(row);
    GiveRow(row);
}

void CTableStore::WriteOrder() {
    if (m_IsOrdered)
        return;
    m_Order.resize(m_Count);
    std::iota(m_Order.begin(), m_Order.end(), Row{0});
    m_IsOrdered = true;
}

Row CTableStore::AppendRecord() {
    const Row row = TakeRow();
    Post(row, RecordCount());
    return row;
}

void CTableStore::Post(Row row, ULONG position) {
    if (m_IsOrdered || row != m_Count || position != m_Count) {
        WriteOrder();
        m_Order.insert(m_Order.begin() + position, row);
    } else {
        ++m_Count;
    }
    for (const auto& index : m_Indexes)
        index->Add(row);
    ++m_Version;
}

// What needs memory comes before the first change: a record goes whole or not at all.
void CTableStore::Delete(ULONG position) {
    const Row row = RecordRow(position);
    PrepareToGive(row);
    for (const auto& index : m_Indexes)
        index->TakeOut(row);
    if (m_IsOrdered || position + 1 != m_Count) {
        WriteOrder();
        m_Order.erase(m_Order.begin() + position);
    } else {
        --m_Count;
    }
    for (const auto& index : m_Indexes)
        index->Remove(row);
    GiveRow(row);
    if (RecordCount() == 0 && m_Free.size() == m_Rows)
        ForgetRows();
    ++m_Version;
}

void CTableStore::Clear() {
    for (const auto& index : m_Indexes)
        index->Clear();
    ForgetRows();
    ++m_Version;
    ++m_Epoch;
}

void CTableStore::ForgetRows() {
    for (CColumn& column : m_Columns)
        column.Clear();
    ClearRows(m_Order);
    ClearRows(m_Free);
    ClearRows(m_Serials);
    m_IsOrdered = false;
    m_Rows = 0;
    m_Count = 0;
}

void CTableStore::AddRecords(ULONG count) {
    m_Rows = count;
    m_Count = count;
    ++m_Version;
}

void CTableStore::CreateIndex(LONG id, std::vector<ULONG> fields) {
    auto index = std::make_unique<CTableIndex>(*this, id, std::move(fields));
    for (ULONG position = 0; position < RecordCount(); ++position)
        index->Add(RecordRow(position));
    std::erase_if(m_Indexes, [id](const auto& existing) { return existing->Id() == id; });
    m_Indexes.push_back(std::move(index));
    ++m_Version;
}

CTableIndex* CTableStore::Index(LONG id) {
    const auto found = std::ranges::find_if(m_Indexes, [id](const auto& index) { return index->Id() == id; });
    return found != m_Indexes.end() ? found->get() : nullptr;
}

void CTableStore::BeforeChange(ULONG field, Row row) {
    for (const auto& index : m_Indexes) {
        if (!index->HasField(field))
            continue;
        index->TakeOut(row);
        ++m_Version;
    }
}

std::size_t CTableStore::MemoryUse() const {
    std::size_t size =
        sizeof(*this) + m_Fields.capacity() * sizeof(tagField) + m_Columns.capacity() * sizeof(CColumn) +
        (m_Order.capacity() + m_Free.capacity()) * sizeof(Row) + m_Serials.capacity() * sizeof(ULONGLONG);
    for (const CColumn& column : m_Columns)
        size += column.MemoryUse();
    for (const auto& index : m_Indexes)
        size += sizeof(CTableIndex) + index->MemoryUse();
    return size;
}

CReservedRow::CReservedRow(std::shared_ptr<CTableStore> store)
    : m_Store(std::move(store)), m_Row(m_Store->Reserve()), m_Epoch(m_Store->Epoch()) {}

CReservedRow::CReservedRow(CReservedRow&& other) noexcept
    : m_Store(std::move(other.m_Store)), m_Row(std::exchange(other.m_Row, NoRow)), m_Epoch(other.m_Epoch) {}

CReservedRow& CReservedRow::operator=(CReservedRow&& other) noexcept {
    std::swap(m_Store, other.m_Store);
    std::swap(m_Row, other.m_Row);
    std::swap(m_Epoch, other.m_Epoch);
    return *this;
}

CReservedRow::~CReservedRow() {
    try {
        Reset();
    } catch (const std::bad_alloc&) {
        // The row stays reserved for nobody until the table is cleared.
    }
}

Row CReservedRow::Detach() {
    const Row row = Get();
    m_Row = NoRow;
    return row;
}

void CReservedRow::Reset() {
    if (const Row row = Detach(); row != NoRow)
        m_Store->Drop(row);
}

} // namespace IDM_dmudfcom
