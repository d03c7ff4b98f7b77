#include "Column.h"

#include "CellText.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <exception>
#include <limits>
#include <utility>

namespace IDM_dmudfcom {

namespace {

constexpr Row FirstRoom = 4;
constexpr std::size_t CompactFrom = 65536; // bytes of texts worth packing

BYTE WidthOf(EColumnType type) {
    switch (type) {
    case EColumnType::Short:
        return 2;
    case EColumnType::Int64:
    case EColumnType::Double:
        return 8;
    default:
        return 4;
    }
}

template <class T>
int Order(T left, T right) {
    return left < right ? -1 : right < left ? 1 : 0;
}

// What is no number stands before all numbers, or sorting would have no order to go by.
int OrderReal(double left, double right) {
    if (left != left || right != right)
        return Order(left == left, right == right);
    return Order(left, right);
}

ULONG CharactersOf(std::string_view text) {
    return static_cast<ULONG>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

} // namespace

CColumn::CColumn(EColumnType type) : m_Type(type), m_Width(WidthOf(type)) {
    if (type == EColumnType::Text)
        m_Pool = std::make_unique<CTextPool>();
}

bool CColumn::Integer(Row row, std::int64_t& value) const {
    value = 0;
    if (IsNull(row))
        return true;
    std::optional<std::int64_t> converted;
    switch (m_Type) {
    case EColumnType::Short:
        value = Load<SHORT>(row);
        return true;
    case EColumnType::Long:
    case EColumnType::Date:
    case EColumnType::Time:
        value = Load<LONG>(row);
        return true;
    case EColumnType::Int64:
        value = Load<std::int64_t>(row);
        return true;
    case EColumnType::Float:
        converted = ToInteger(Load<float>(row));
        break;
    case EColumnType::Double:
        converted = ToInteger(Load<double>(row));
        break;
    case EColumnType::Text:
        converted = ParseInteger(m_Pool->At(Load<CTextPool::Handle>(row)));
        break;
    }
    value = converted.value_or(0);
    return converted.has_value();
}

bool CColumn::Real(Row row, double& value) const {
    value = 0;
    if (IsNull(row))
        return true;
    switch (m_Type) {
    case EColumnType::Float:
        value = Load<float>(row);
        return true;
    case EColumnType::Double:
        value = Load<double>(row);
        return true;
    case EColumnType::Text: {
        const auto parsed = ParseReal(m_Pool->At(Load<CTextPool::Handle>(row)));
        value = parsed.value_or(0);
        return parsed.has_value();
    }
    default: {
        std::int64_t whole;
        const bool isWhole = Integer(row, whole);
        value = static_cast<double>(whole);
        return isWhole;
    }
    }
}

std::string_view CColumn::Text(Row row, std::string& scratch) const {
    if (IsNull(row))
        return {};
    switch (m_Type) {
    case EColumnType::Text:
        return m_Pool->At(Load<CTextPool::Handle>(row));
    case EColumnType::Short:
        return WriteInteger(Load<SHORT>(row), scratch);
    case EColumnType::Int64:
        return WriteInteger(Load<std::int64_t>(row), scratch);
    case EColumnType::Float:
        return WriteReal(Load<float>(row), scratch);
    case EColumnType::Double:
        return WriteReal(Load<double>(row), scratch);
    case EColumnType::Date:
        return WriteDate(Load<LONG>(row), scratch);
    case EColumnType::Time:
        return WriteTime(Load<LONG>(row), scratch);
    default:
        return WriteInteger(Load<LONG>(row), scratch);
    }
}

template <class T>
bool CColumn::StoreWithin(Row row, std::int64_t value) {
    const bool fits = value >= std::numeric_limits<T>::min() && value <= std::numeric_limits<T>::max();
    Store(row, fits ? static_cast<T>(value) : T{});
    return fits;
}

bool CColumn::SetInteger(Row row, std::int64_t value) {
    switch (m_Type) {
    case EColumnType::Short:
        return StoreWithin<SHORT>(row, value);
    case EColumnType::Int64:
        Store(row, value);
        return true;
    case EColumnType::Float:
        Store(row, static_cast<float>(value));
        return true;
    case EColumnType::Double:
        Store(row, static_cast<double>(value));
        return true;
    case EColumnType::Text: {
        std::string scratch;
        StoreText(row, WriteInteger(value, scratch));
        return true;
    }
    default:
        return StoreWithin<LONG>(row, value);
    }
}

bool CColumn::SetReal(Row row, double value) {
    switch (m_Type) {
    case EColumnType::Double:
        Store(row, value);
        return true;
    case EColumnType::Float: {
        // A finite value must not become infinite on the way.
        const bool fits = !(std::abs(value) > std::numeric_limits<float>::max()) || !std::isfinite(value);
        Store(row, fits ? static_cast<float>(value) : 0.0F);
        return fits;
    }
    case EColumnType::Text: {
        std::string scratch;
        StoreText(row, WriteReal(value, scratch));
        return true;
    }
    default: {
        const auto whole = ToInteger(value);
        return SetInteger(row, whole.value_or(0)) && whole.has_value();
    }
    }
}

bool CColumn::SetText(Row row, std::string_view text) {
    if (m_Type == EColumnType::Text) {
        StoreText(row, text);
        return true;
    }
    if (IsBlank(text)) {
        SetNull(row);
        return true;
    }
    if (m_Type == EColumnType::Float || m_Type == EColumnType::Double) {
        const auto value = ParseReal(text);
        return SetReal(row, value.value_or(0)) && value.has_value();
    }
    std::optional<std::int64_t> value;
    if (m_Type == EColumnType::Date)
        value = ParseDate(text);
    else if (m_Type == EColumnType::Time)
        value = ParseTime(text);
    else
        value = ParseInteger(text);
    return SetInteger(row, value.value_or(0)) && value.has_value();
}

void CColumn::StoreText(Row row, std::string_view text) {
    if (row < m_Size && !IsNull(row))
        m_Replaced += m_Pool->At(Load<CTextPool::Handle>(row)).size();
    Store(row, m_Pool->Add(text));
    CompactIfWorthIt();
}

void CColumn::GetIntegers(Row first, std::span<LONG> values) const {
    const bool isLong = m_Type == EColumnType::Long || m_Type == EColumnType::Date || m_Type == EColumnType::Time;
    std::size_t i = 0;
    while (i < values.size()) {
        const Row row = first + static_cast<Row>(i);
        const std::size_t inChunk = std::min<std::size_t>(ChunkRows - row % ChunkRows, values.size() - i);
        if (isLong && row + inChunk <= m_Size && !m_Chunks[row / ChunkRows].Nulls) {
            std::memcpy(&values[i], m_Chunks[row / ChunkRows].Cells.get() + row % ChunkRows * sizeof(LONG),
                        inChunk * sizeof(LONG));
            i += inChunk;
            continue;
        }
        for (const std::size_t end = i + inChunk; i < end; ++i) {
            std::int64_t value;
            Integer(first + static_cast<Row>(i), value);
            values[i] = std::in_range<LONG>(value) ? static_cast<LONG>(value) : 0;
        }
    }
}

template <class Fill>
void CColumn::StoreRun(Row first, Row count, Fill&& fill) {
    if (count == 0)
        return;
    const Row end = first + count;
    ClearNulls(first, std::min(end, m_Size) - std::min(first, m_Size));
    if (end > m_Size) {
        if (end > m_Capacity)
            AddRoom(end);
        for (; m_Size < first; ++m_Size)
            MarkNull(m_Size);
        // Rows that were truncated may have left their marks.
        ClearNulls(m_Size, end - m_Size);
        m_Size = end;
    }
    for (Row row = first; row < end;) {
        const Row inChunk = std::min(ChunkRows - row % ChunkRows, end - row);
        fill(m_Chunks[row / ChunkRows].Cells.get() + std::size_t{row % ChunkRows} * m_Width, row - first, inChunk);
        row += inChunk;
    }
}

void CColumn::ClearNulls(Row first, Row count) {
    for (Row row = first; row < first + count;) {
        tagChunk& chunk = m_Chunks[row / ChunkRows];
        const Row end = std::min(first + count, (row / ChunkRows + 1) * ChunkRows);
        for (; chunk.Nulls && row < end; ++row)
            chunk.Nulls[row % ChunkRows / 64] &= ~(std::uint64_t{1} << row % 64);
        row = end;
    }
}

void CColumn::SetIntegers(Row first, std::span<const LONG> values) {
    const auto count = static_cast<Row>(values.size());
    switch (m_Type) {
    case EColumnType::Long:
    case EColumnType::Date:
    case EColumnType::Time:
        return StoreRun(first, count, [values](std::byte* cells, Row offset, Row size) {
            std::memcpy(cells, &values[offset], size * sizeof(LONG));
        });
    default:
        for (Row i = 0; i < count; ++i)
            SetInteger(first + i, values[i]);
    }
}

void CColumn::SetReals(Row first, std::span<const double> values) {
    const auto count = static_cast<Row>(values.size());
    if (m_Type == EColumnType::Double)
        return StoreRun(first, count, [values](std::byte* cells, Row offset, Row size) {
            std::memcpy(cells, &values[offset], size * sizeof(double));
        });
    for (Row i = 0; i < count; ++i)
        SetReal(first + i, values[i]);
}

void CColumn::Keep(const tagSharedText& text) {
    if (text.Pool == m_Pool->Id())
        return;
    text.Handle = m_Pool->Add(text.Text);
    text.Pool = m_Pool->Id();
}

void CColumn::SetTexts(Row first, std::span<const tagSharedText* const> texts) {
    const auto count = static_cast<Row>(texts.size());
    if (m_Type != EColumnType::Text) {
        for (Row i = 0; i < count; ++i)
            SetText(first + i, texts[i]->Text);
        return;
    }
    for (const tagSharedText* const text : texts)
        Keep(*text);
    for (Row row = first; row < std::min(first + count, m_Size); ++row)
        if (!IsNull(row))
            m_Replaced += m_Pool->At(Load<CTextPool::Handle>(row)).size();
    StoreRun(first, count, [texts](std::byte* cells, Row offset, Row size) {
        for (Row i = 0; i < size; ++i)
            std::memcpy(cells + i * sizeof(CTextPool::Handle), &texts[offset + i]->Handle,
                        sizeof(CTextPool::Handle));
    });
    CompactIfWorthIt();
}

// Texts that were written over, or whose record is gone, are still in the pool. Packing only saves memory, and
// whoever has changed half a record could not go back: without memory for it the pool stays as it is.
void CColumn::CompactIfWorthIt() noexcept {
    if (!m_Pool || m_Replaced <= m_Pool->Bytes() / 2) [[likely]]
        return;
    // Looking at every cell must not cost more than the writing of the texts it may save.
    const std::size_t grown = std::max(CompactFrom, std::size_t{m_Size} * sizeof(CTextPool::Handle));
    if (m_Pool->Bytes() <= 2 * m_InUse + grown)
        return;
    try {
        CompactTexts();
    } catch (const std::exception&) {
        m_InUse = m_Pool->Bytes() / 2; // tried again when the pool has grown
    }
}

std::vector<CColumn::tagTextInUse> CColumn::TextsInUse() const {
    std::vector<CTextPool::Handle> handles;
    handles.reserve(m_Size);
    for (Row row = 0; row < m_Size; ++row)
        if (!IsNull(row))
            handles.push_back(TextHandle(row));
    std::ranges::sort(handles);
    std::vector<tagTextInUse> texts;
    for (auto each = handles.begin(); each != handles.end();) {
        const auto next = std::find_if(each, handles.end(), [each](auto handle) { return handle != *each; });
        texts.push_back({*each, static_cast<Row>(next - each), 0});
        each = next;
    }
    return texts;
}

// A text of many cells stays one text. The cells change when all of it has gone well.
void CColumn::CompactTexts() {
    std::vector<tagTextInUse> texts = TextsInUse();
    std::size_t inUse = 0;
    for (const tagTextInUse& text : texts)
        inUse += m_Pool->At(text.Handle).size();
    if (inUse > m_Pool->Bytes() / 2) { // what was replaced is in other cells still
        m_InUse = inUse;
        m_Replaced = m_Pool->Bytes() - inUse;
        return;
    }
    auto packed = std::make_unique<CTextPool>();
    for (tagTextInUse& text : texts)
        text.Packed = packed->Add(m_Pool->At(text.Handle), text.Cells);
    auto text = texts.cbegin();
    for (Row row = 0; row < m_Size; ++row) {
        if (IsNull(row))
            continue;
        const CTextPool::Handle handle = TextHandle(row);
        if (text->Handle != handle && text + 1 != texts.cend())
            ++text; // texts mostly stand in the order of their rows
        if (text->Handle != handle)
            text = std::ranges::lower_bound(std::as_const(texts), handle, {}, &tagTextInUse::Handle);
        Store(row, text->Packed);
    }
    m_Pool = std::move(packed);
    m_InUse = m_Pool->Bytes();
    m_Replaced = 0;
}

void CColumn::SetNull(Row row) {
    if (row >= m_Size)
        return;
    if (m_Pool && !IsNull(row))
        m_Replaced += m_Pool->At(Load<CTextPool::Handle>(row)).size();
    MarkNull(row);
    CompactIfWorthIt();
}

void CColumn::PrepareNull(Row row) {
    if (row < m_Size)
        MakeRoomForNull(row);
}

void CColumn::MarkNull(Row row) {
    MakeRoomForNull(row);
    m_Chunks[row / ChunkRows].Nulls[row % ChunkRows / 64] |= std::uint64_t{1} << row % 64;
}

void CColumn::MakeRoomForNull(Row row) {
    tagChunk& chunk = m_Chunks[row / ChunkRows];
    if (!chunk.Nulls)
        chunk.Nulls = std::make_unique<std::uint64_t[]>(ChunkRows / 64);
}

void CColumn::WriteDay(Row row, LONG day) {
    std::string scratch;
    if (m_Type == EColumnType::Text)
        SetText(row, WriteDate(day, scratch));
    else
        SetInteger(row, day);
}

void CColumn::Extend(Row row) {
    if (row >= m_Capacity)
        AddRoom(row + 1);
    for (; m_Size < row; ++m_Size)
        MarkNull(m_Size);
    m_Size = row + 1;
}

void CColumn::AddRoom(Row needed) {
    if (m_Capacity < ChunkRows) {
        const Row wanted = std::max({needed, 4 * m_Capacity, FirstRoom});
        const Row rows = wanted >= ChunkRows ? ChunkRows : std::bit_ceil(wanted);
        auto cells = std::make_unique_for_overwrite<std::byte[]>(std::size_t{rows} * m_Width);
        if (m_Chunks.empty())
            m_Chunks.emplace_back();
        if (m_Size != 0)
            std::memcpy(cells.get(), m_Chunks[0].Cells.get(), std::size_t{m_Size} * m_Width);
        m_Chunks[0].Cells = std::move(cells);
        m_Capacity = rows;
    }
    while (m_Capacity < needed) {
        tagChunk chunk;
        chunk.Cells = std::make_unique_for_overwrite<std::byte[]>(std::size_t{ChunkRows} * m_Width);
        m_Chunks.push_back(std::move(chunk));
        m_Capacity += ChunkRows;
    }
}

int CColumn::Compare(Row left, Row right) const {
    const bool leftNull = IsNull(left);
    const bool rightNull = IsNull(right);
    if (leftNull || rightNull)
        return Order(!leftNull, !rightNull);
    return CompareValues(left, right);
}

int CColumn::CompareValues(Row left, Row right) const {
    switch (m_Type) {
    case EColumnType::Short:
        return Order(Load<SHORT>(left), Load<SHORT>(right));
    case EColumnType::Int64:
        return Order(Load<std::int64_t>(left), Load<std::int64_t>(right));
    case EColumnType::Float:
        return OrderReal(Load<float>(left), Load<float>(right));
    case EColumnType::Double:
        return OrderReal(Load<double>(left), Load<double>(right));
    case EColumnType::Text: {
        // UTF-8 by bytes is the order of the code points.
        const auto leftHandle = Load<CTextPool::Handle>(left);
        const auto rightHandle = Load<CTextPool::Handle>(right);
        return leftHandle == rightHandle ? 0 : Order(m_Pool->At(leftHandle).compare(m_Pool->At(rightHandle)), 0);
    }
    default:
        return Order(Load<LONG>(left), Load<LONG>(right));
    }
}

void CColumn::Truncate(Row size) noexcept {
    std::string scratch;
    for (Row row = size; m_Pool && row < m_Size; ++row)
        m_Replaced += Text(row, scratch).size();
    m_Size = std::min(m_Size, size);
    CompactIfWorthIt();
}

void CColumn::Clear() {
    if (m_Capacity > KeptRoom) {
        m_Chunks = std::vector<tagChunk>();
        m_Capacity = 0;
    } else if (m_Capacity != 0) {
        m_Chunks.front().Nulls.reset();
    }
    m_Size = 0;
    m_Replaced = 0;
    m_InUse = 0;
    if (m_Pool)
        m_Pool->Clear();
}

ULONG CColumn::LongestText() const {
    ULONG longest = 0;
    std::string scratch;
    for (Row row = 0; row < m_Size; ++row)
        longest = std::max(longest, CharactersOf(Text(row, scratch)));
    return longest;
}

std::size_t CColumn::MemoryUse() const {
    std::size_t size = m_Chunks.capacity() * sizeof(tagChunk) + std::size_t{m_Capacity} * m_Width;
    for (const tagChunk& chunk : m_Chunks)
        size += chunk.Nulls ? ChunkRows / 8 : 0;
    return size + (m_Pool ? sizeof(CTextPool) + m_Pool->MemoryUse() : 0);
}

} // namespace IDM_dmudfcom
